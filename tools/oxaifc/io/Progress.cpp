// SPDX-License-Identifier: Apache-2.0
#include "oxaifc/io/Progress.h"

#include <cstdio>
#include <utility>

#include <fmt/format.h>

#include "oxaifc/io/System.h"

namespace oxa::tool {

namespace {

constexpr auto g_firstAfter = std::chrono::milliseconds(500);   // nothing flickers for small files
constexpr auto g_interval = std::chrono::milliseconds(100);

}   // namespace

Progress::Progress(std::function<std::string(unsigned)> text)
    : m_text(std::move(text)),
      m_boTerminal(boIsTerminal(stderr)),
      m_next(std::chrono::steady_clock::now() + g_firstAfter) {}

Progress::~Progress() {
    if (m_boShown) std::fputs("\r\x1b[K", stderr);
}

std::function<void(unsigned)> Progress::function() {
    if (!m_boTerminal) return {};
    return [this](unsigned iPosition) { vShow(iPosition); };
}

void Progress::vShow(unsigned iPosition) {
    const auto now = std::chrono::steady_clock::now();
    if (now < m_next) return;
    m_next = now + g_interval;
    m_boShown = true;
    std::fputs(fmt::format("\r{}\x1b[K", m_text(iPosition)).c_str(), stderr);
}

}   // namespace oxa::tool
