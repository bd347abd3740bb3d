#include "oxaifc/Progress.h"

#include <cstdio>

#include <fmt/format.h>

#include "oxaifc/Input.h"
#include "oxaifc/Output.h"
#include "oxaifc/System.h"

namespace oxa::tool {

namespace {

constexpr auto g_firstAfter = std::chrono::milliseconds(500);   // nothing flickers for small files
constexpr auto g_interval = std::chrono::milliseconds(100);

}   // namespace

Progress::Progress(const Input& input)
    : m_input(input), m_boTerminal(boIsTerminal(stderr)),
      m_next(std::chrono::steady_clock::now() + g_firstAfter) {}

Progress::~Progress() {
    if (m_boShown) std::fputs("\r\x1b[K", stderr);
}

std::function<void(unsigned)> Progress::function() {
    if (!m_boTerminal) return {};
    // The position that the read tells ends at 4 GiB; the input's own count does not.
    return [this](unsigned) { vShow(); };
}

void Progress::vShow() {
    const auto now = std::chrono::steady_clock::now();
    if (now < m_next) return;
    m_next = now + g_interval;
    m_boShown = true;
    const std::uint64_t iRead = m_input.iBytesRead();
    const std::uint64_t iAll = m_input.iBytesExpected();
    const std::string sDone = iAll ? fmt::format("{} %", iRead * 100 / iAll) : sGrouped(iRead) + " bytes";
    std::fputs(fmt::format("\rreading {}: {}\x1b[K", sPrintable(m_input.sName()), sDone).c_str(), stderr);
}

}   // namespace oxa::tool
