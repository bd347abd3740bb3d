// SPDX-License-Identifier: Apache-2.0
// Output: standard output, buffered, as text or JSON.
//
// For      verbs. A reader who goes away early ("| head") is no failure: what follows is dropped.
// Threads  one.
#pragma once

#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace oxa::tool {

using Json = nlohmann::ordered_json;   // keys stay in the order in which they were entered

// How a word stands out on a terminal.
enum class Tint { Red, Green, Yellow, Bold };

class Output {
public:
    // printf with fmt's placeholders. Text of a file goes through sPrintable first.
    template <class... Args>
    void vPrint(fmt::format_string<Args...> format, Args&&... args) {
        fmt::format_to(std::back_inserter(m_buffer), format, std::forward<Args>(args)...);
        if (m_buffer.size() > g_iBufferSize) vFlush();
    }
    // One value and a line end. Bytes that are no UTF-8 become U+FFFD.
    void vJson(const Json& value);

    // An array of JSON values, one a line, none of which is kept: vJsonBegin, any number of vJsonItem, vJsonEnd.
    void vJsonBegin();
    void vJsonItem(const Json& value);
    void vJsonEnd();

    // Hands on what is buffered. Throws Failure when it can't be written, except to a closed pipe.
    void vFlush();
    // False once nobody reads any more, so that a long output may end early.
    [[nodiscard]] bool boWanted() const noexcept { return m_boWanted; }
    [[nodiscard]] bool boTerminal() const noexcept { return m_boTerminal; }
    // The text in a colour, on a terminal whose user wants them (NO_COLOR, TERM); else as it is.
    [[nodiscard]] std::string sTinted(Tint eTint, std::string_view text) const;

    Output();

private:
    static constexpr std::size_t g_iBufferSize = 64 * 1024;

    fmt::memory_buffer m_buffer;
    bool m_boWanted = true;
    bool m_boTerminal;
    bool m_boTinted;
    bool m_boFirstItem = true;
};

// A value on one line. Bytes that are no UTF-8 become U+FFFD.
[[nodiscard]] std::string sJson(const Json& value);
// The text on one line and harmless for a terminal: a control character becomes "?", a blank one a space.
[[nodiscard]] std::string sPrintable(std::string_view text);
// The same, and of at most iLength bytes: a longer text ends in "..." and its length.
[[nodiscard]] std::string sShortened(std::string_view text, std::size_t iLength);
// A number with a comma behind every third digit from the right.
[[nodiscard]] std::string sGrouped(std::uint64_t iNumber);
// "1 file", "2 files".
[[nodiscard]] std::string sCounted(std::uint64_t iNumber, std::string_view noun);

}   // namespace oxa::tool
