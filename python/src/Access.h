// SPDX-License-Identifier: Apache-2.0
// Access: who may look at a model and who may change it, while other threads of Python run.
//
// For      every binding that touches a model. The interpreter's lock keeps short operations apart; long ones release it,
//          and say here that they are there.
// Rule     any number may look at a model at one time; who changes or writes it is alone. Others wait for their turn,
//          with the interpreter's lock released.
// Errors   a thread that would wait for itself, as a progress function that changes the model which is being read, gets
//          an Error. Ctrl-C ends a wait.
// Threads  all members are used with the interpreter's lock held.
#pragma once

#include <nanobind/nanobind.h>

#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace oxa::python {

namespace nb = nanobind;

class Access {
public:
    // Before a look, or a change, during which the interpreter's lock is kept.
    void vLook() {
        if (m_boAlone) vWait(false);
    }
    void vChange() {
        if (m_boAlone || !m_busy.empty()) vWait(true);
    }

private:
    friend class Reading;
    friend class Alone;
    friend class AloneWithBoth;
    void vEnter(bool boAlone);
    void vLeave();
    void vWait(bool boAlone);
    [[nodiscard]] bool boFree(bool boAlone) const { return !m_boAlone && (!boAlone || m_busy.empty()); }

    std::vector<std::thread::id> m_busy;   // threads in long operations
    bool m_boAlone = false;                // which are one that changes
    std::mutex m_mutex;
    std::condition_variable m_left;
};

// A long look: as long as this lives, the interpreter's lock is released and nobody changes the model.
class Reading {
public:
    explicit Reading(Access& access) : m_access(access) {
        m_access.vEnter(false);
        m_released.emplace();
    }
    ~Reading() {
        m_released.reset();
        m_access.vLeave();
    }
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;

private:
    Access& m_access;
    std::optional<nb::gil_scoped_release> m_released;
};

// A long change, or a write: nobody else is at the model.
class Alone {
public:
    explicit Alone(Access& access) : m_access(access) {
        m_access.vEnter(true);
        m_released.emplace();
    }
    ~Alone() {
        m_released.reset();
        m_access.vLeave();
    }
    Alone(const Alone&) = delete;
    Alone& operator=(const Alone&) = delete;

private:
    Access& m_access;
    std::optional<nb::gil_scoped_release> m_released;
};

// The same for two models, which may be one: both are taken at once, so that two threads never wait for each other.
class AloneWithBoth {
public:
    AloneWithBoth(Access& first, Access& second);
    ~AloneWithBoth() {
        m_released.reset();
        if (&m_first != &m_second) m_second.vLeave();
        m_first.vLeave();
    }
    AloneWithBoth(const AloneWithBoth&) = delete;
    AloneWithBoth& operator=(const AloneWithBoth&) = delete;

private:
    Access& m_first;
    Access& m_second;
    std::optional<nb::gil_scoped_release> m_released;
};

}   // namespace oxa::python
