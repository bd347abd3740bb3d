// SPDX-License-Identifier: Apache-2.0
#include "Access.h"

#include <algorithm>
#include <chrono>

#include "Model/Error.h"

namespace oxa::python {

namespace {
constexpr std::chrono::milliseconds g_look{50};   // how often a wait looks for Ctrl-C
}   // namespace

void Access::vEnter(bool boAlone) {
    if (!boFree(boAlone)) vWait(boAlone);
    m_busy.push_back(std::this_thread::get_id());
    m_boAlone = boAlone;
}

void Access::vLeave() {
    m_busy.erase(std::ranges::find(m_busy, std::this_thread::get_id()));
    m_boAlone = false;
    const std::lock_guard lock(m_mutex);
    m_left.notify_all();
}

AloneWithBoth::AloneWithBoth(Access& first, Access& second) : m_first(first), m_second(second) {
    for (;;) {   // each wait lets others run, who may take the one that was free
        m_first.vChange();
        if (m_second.boFree(true)) break;
        m_second.vChange();
    }
    m_first.vEnter(true);
    if (&m_first != &m_second) m_second.vEnter(true);
    m_released.emplace();
}

void Access::vWait(bool boAlone) {
    while (!boFree(boAlone)) {
        if (std::ranges::find(m_busy, std::this_thread::get_id()) != m_busy.end())
            throw Error("the model is in use by the call that this one is part of");
        {
            const nb::gil_scoped_release released;
            std::unique_lock lock(m_mutex);
            m_left.wait_for(lock, g_look);   // who leaves in between is seen at the next look
        }
        if (PyErr_CheckSignals() != 0) throw nb::python_error();
    }
}

}   // namespace oxa::python
