// Progress: how far a read is, on standard error when that is a terminal.
//
// Threads  one, the caller's of the read.
#pragma once

#include <chrono>
#include <functional>

namespace oxa::tool {

class Input;

class Progress {
public:
    explicit Progress(const Input& input);
    // Wipes the line.
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // What a read calls; empty when nobody would see it. Not to be called after this object's end.
    [[nodiscard]] std::function<void(unsigned)> function();

private:
    void vShow();

    const Input& m_input;
    bool m_boTerminal;
    bool m_boShown = false;
    std::chrono::steady_clock::time_point m_next;
};

}   // namespace oxa::tool
