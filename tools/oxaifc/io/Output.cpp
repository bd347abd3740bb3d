// SPDX-License-Identifier: Apache-2.0
// Standard output in one buffer, and texts made fit for a terminal.
#include "oxaifc/io/Output.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "oxaifc/io/Failure.h"
#include "oxaifc/io/System.h"

namespace oxa::tool {

namespace {

// https://no-color.org: any value but an empty one.
bool boColoursWanted() {
    const char* pNoColor = std::getenv("NO_COLOR");
    const char* pTerminal = std::getenv("TERM");
    return !(pNoColor && *pNoColor) && !(pTerminal && std::string_view(pTerminal) == "dumb");
}

}   // namespace

Output::Output()
    : m_boTerminal(boIsTerminal(stdout)),
      m_boTinted(m_boTerminal && boColoursWanted() && boShowsColours(stdout)) {}

std::string Output::sTinted(Tint eTint, std::string_view text) const {
    if (!m_boTinted) return std::string(text);
    constexpr std::array codes{31, 32, 33, 1};   // SGR, ECMA-48
    return fmt::format("\x1b[{}m{}\x1b[0m", codes.at(static_cast<std::size_t>(eTint)), text);
}

void Output::vJson(const Json& value) { vPrint("{}\n", value.dump(2, ' ', false, Json::error_handler_t::replace)); }

void Output::vJsonBegin() {
    m_boFirstItem = true;
    vPrint("[");
}

void Output::vJsonItem(const Json& value) {
    vPrint("{}{}", m_boFirstItem ? "\n" : ",\n", sJson(value));
    m_boFirstItem = false;
}

void Output::vJsonEnd() { vPrint("{}", m_boFirstItem ? "]\n" : "\n]\n"); }

void Output::vFlush() {
    const std::size_t iSize = m_buffer.size();
    const bool boWritten =
        !m_boWanted || (std::fwrite(m_buffer.data(), 1, iSize, stdout) == iSize && std::fflush(stdout) == 0);
    const int iError = errno;
    m_buffer.clear();
    if (boWritten) return;
    m_boWanted = false;
    if (!boReaderGone(iError)) throw Failure(fmt::format("can't write the output: {}", std::strerror(iError)));
}

std::string sJson(const Json& value) { return value.dump(-1, ' ', false, Json::error_handler_t::replace); }

std::string sPrintable(std::string_view text) {
    std::string sText(text);
    for (char& c : sText) {
        if (c == '\n' || c == '\r' || c == '\t') c = ' ';
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) c = '?';
    }
    // U+0080 to U+009F are control characters too: some terminals take U+009B for the start of a command.
    for (std::size_t i = 0; i + 1 < sText.size(); ++i)
        if (sText[i] == '\xc2' && static_cast<unsigned char>(sText[i + 1]) < 0xa0) sText.replace(i, 2, "?");
    return sText;
}

std::string sShortened(std::string_view text, std::size_t iLength) {
    if (text.size() <= iLength) return sPrintable(text);
    std::size_t iEnd = iLength;
    while (iEnd > 0 && (static_cast<unsigned char>(text[iEnd]) & 0xc0) == 0x80) --iEnd;   // no half character
    return fmt::format("{}... ({} bytes)", sPrintable(text.substr(0, iEnd)), sGrouped(text.size()));
}

std::string sGrouped(std::uint64_t iNumber) {
    std::string sNumber = std::to_string(iNumber);
    for (std::size_t i = sNumber.size(); i > 3;) sNumber.insert(i -= 3, ",");
    return sNumber;
}

std::string sCounted(std::uint64_t iNumber, std::string_view noun) {
    return fmt::format("{} {}{}", sGrouped(iNumber), noun, iNumber == 1 ? "" : "s");
}

}   // namespace oxa::tool
