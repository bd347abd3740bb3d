// SPDX-License-Identifier: Apache-2.0
// AssertLog: collects the texts of the assertions that a test raises.
//
// For      tests that expect an assertion, or none. While one lives, no assertion reaches anybody else,
//          save a handler that its thread has.
// Threads  any number at once.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "platform/Assert.h"

namespace oxa::ifc {

class AssertLog {
public:
    explicit AssertLog(bool boEnabled = true) : m_boEnabledBefore(Assert::isEnabled()) {
        Assert::setEnabled(boEnabled);
        Assert::setHandler([this](const AssertInfo& info) {
            const std::lock_guard lock(m_mutex);
            m_texts.emplace_back(info.text);
        });
    }
    ~AssertLog() {
        Assert::setHandler({});
        Assert::setEnabled(m_boEnabledBefore);
    }
    AssertLog(const AssertLog&) = delete;
    AssertLog& operator=(const AssertLog&) = delete;

    [[nodiscard]] std::vector<std::string> texts() const {
        const std::lock_guard lock(m_mutex);
        return m_texts;
    }

private:
    bool m_boEnabledBefore;
    mutable std::mutex m_mutex;
    std::vector<std::string> m_texts;   // guarded by m_mutex
};

}   // namespace oxa::ifc
