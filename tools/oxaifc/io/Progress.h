// SPDX-License-Identifier: Apache-2.0
// Progress: how far a read or a write is, on standard error when that is a terminal.
//
// Threads  one, the caller's of the read or the write.
#pragma once

#include <chrono>
#include <functional>
#include <string>

namespace oxa::tool {

class Progress {
public:
    // The line that tells where the work is, from the number that it called with.
    explicit Progress(std::function<std::string(unsigned)> text);
    // Wipes the line.
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // What the work calls; empty when nobody would see it. Not to be called after this object's end.
    [[nodiscard]] std::function<void(unsigned)> function();

private:
    void vShow(unsigned iPosition);

    std::function<std::string(unsigned)> m_text;
    bool m_boTerminal;
    bool m_boShown = false;
    std::chrono::steady_clock::time_point m_next;
};

}   // namespace oxa::tool
