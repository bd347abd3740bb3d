// SPDX-License-Identifier: Apache-2.0
#include "Job.h"

#include <nanobind/stl/optional.h>
#include <nanobind/stl/string.h>

#include <cstdint>

namespace oxa::python {

namespace {
constexpr std::chrono::milliseconds g_interval{50};
}   // namespace

Job::Job(nb::handle progress, const char* pUnit, const std::string& sWhat) {
    if (!progress.is_none()) m_bar = nb::module_::import_("oxaifc._progress").attr("Bar")(progress, pUnit, sWhat);
}

void Job::vTell(const oxa::Progress& now) {
    const auto time = std::chrono::steady_clock::now();
    if (time - m_told < g_interval && now.done != now.total) return;
    m_told = time;
    boCall([&] {
        if (PyErr_CheckSignals() != 0) throw nb::python_error();
        if (m_bar.is_valid()) m_bar.attr("to")(now.done, now.total);
    });
}

void Job::vEnd() {
    if (m_bar.is_valid()) m_bar.attr("close")();
    if (!m_raised) return;
    nb::python_error error(std::move(*m_raised));
    m_raised.reset();
    throw error;   // NOLINT: as it was caught
}

}   // namespace oxa::python
