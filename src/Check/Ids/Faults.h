// SPDX-License-Identifier: Apache-2.0
// Faults: what is wrong with a file of requirements, as it is found.
//
// For      the reader of such files.
// Order    that of the file, whatever the order in which things are looked at.
// Threads  one.
#pragma once

#include <algorithm>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "Check/Ids.h"
#include "Check/Ids/Document.h"

namespace oxa::ids::detail {

class Faults {
public:
    void vAdd(const Node& node, std::string key, std::string message, std::string found = {}) {
        vAdd(node, FaultWeight::Fault, std::move(key), std::move(message), std::move(found));
    }
    void vNote(const Node& node, std::string key, std::string message, std::string found = {}) {
        vAdd(node, FaultWeight::Note, std::move(key), std::move(message), std::move(found));
    }
    void vAdd(Fault fault) { m_faults.push_back(std::move(fault)); }

    [[nodiscard]] std::vector<Fault> take() {
        std::ranges::stable_sort(m_faults, {}, [](const Fault& one) { return std::tuple(one.line, one.column); });
        return std::move(m_faults);
    }

private:
    void vAdd(const Node& node, FaultWeight weight, std::string key, std::string message, std::string found) {
        m_faults.push_back({.key = std::move(key),
                            .weight = weight,
                            .line = node.iLine,
                            .column = node.iColumn,
                            .path = node.path(),
                            .message = std::move(message),
                            .found = std::move(found),
                            .specification = node.specification()});
    }

    std::vector<Fault> m_faults;
};

}   // namespace oxa::ids::detail
