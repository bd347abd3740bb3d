// SPDX-License-Identifier: Apache-2.0
// Job: a long operation as Python sees it: it tells a progress bar how far it is, and ends at Ctrl-C.
//
// How      the library calls back on the thread of the caller; now and then that takes the interpreter's lock, hands the
//          counts to oxaifc._progress.Bar, and asks whether a signal came. What is raised there ends the operation, and
//          is raised again by run(). Where the library only takes a token, beside() looks for signals.
// Threads  made and asked with the interpreter's lock held; the callbacks take it.
#pragma once

#include <nanobind/nanobind.h>

#include <chrono>
#include <functional>
#include <future>
#include <optional>
#include <stop_token>
#include <string>
#include <utility>

#include "Model/Error.h"
#include "Model/Options.h"

namespace oxa::python {

namespace nb = nanobind;

class Job {
public:
    // "progress" is what the user gave, None too; "unit" what is counted.
    Job(nb::handle progress, const char* pUnit, const std::string& sWhat);
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;

    [[nodiscard]] std::stop_token token() const { return m_stop.get_token(); }
    [[nodiscard]] std::function<void(const oxa::Progress&)> progress() {
        return [this](const oxa::Progress& now) { vTell(now); };
    }

    // Calls something of Python, without the interpreter's lock. What it raises ends the operation; then this is false.
    template <class Call>
    bool boCall(Call&& call) {
        const nb::gil_scoped_acquire acquired;
        try {
            if (!m_raised) call();
        } catch (nb::python_error& error) {
            m_raised.emplace(std::move(error));
            m_stop.request_stop();
        }
        return !m_raised;
    }

    // "work" with the lock held, which lets it go itself. Raises what was raised on the way.
    template <class Work>
    auto run(Work&& work) {
        try {
            auto result = work();
            vEnd();
            return result;
        } catch (const oxa::Stopped&) {
            vEnd();
            throw;
        } catch (const oxa::FileError&) {   // of a file object that raised
            vEnd();
            throw;
        }
    }

    // Runs "work", which only looks at its token, on a thread of its own, and looks for Ctrl-C meanwhile. To be called
    // without the interpreter's lock.
    template <class Work>
    auto beside(Work&& work) {
        std::future<decltype(work())> result = std::async(std::launch::async, std::forward<Work>(work));
        while (result.wait_for(g_look) != std::future_status::ready)
            boCall([] {
                if (PyErr_CheckSignals() != 0) throw nb::python_error();
            });
        return result.get();
    }

private:
    static constexpr std::chrono::milliseconds g_look{50};

    void vTell(const oxa::Progress& now);
    void vEnd();

    nb::object m_bar;
    std::stop_source m_stop;
    std::optional<nb::python_error> m_raised;
    std::chrono::steady_clock::time_point m_told{};
};

}   // namespace oxa::python
