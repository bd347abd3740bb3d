// SPDX-License-Identifier: Apache-2.0
// UTF-8 by utfcpp, whose own iterators and exceptions stay in here. A text that can't be converted leaves its target as
// it was.
#include "platform/String.h"

#include <utf8.h>

#include <charconv>
#include <iterator>

namespace oxa::str {

exception::~exception() = default;

namespace details {

namespace {

// Runs "convert" on "out"; puts it back and names the fault when the library refuses.
template <class Text, class Convert>
void vGuarded(Text& out, Convert&& convert) {
    const std::size_t iBefore = out.size();
    try {
        convert();
    } catch (const utf8::not_enough_room&) {
        out.resize(iBefore);
        throw exception("Truncated UTF-8");   // the library's own text tells of room, which is not what lacks
    } catch (const utf8::exception& fault) {
        out.resize(iBefore);
        throw exception(fault.what());
    }
}

}   // namespace

void vUtfConvertImpl(std::u32string& out, const char* text, std::size_t length) {
    out.reserve(out.size() + length);   // as many code points at the most
    vGuarded(out, [&] { utf8::utf8to32(text, text + length, std::back_inserter(out)); });
}

void vUtfConvertImpl(std::string& out, const char32_t* text, std::size_t length) {
    out.reserve(out.size() + length);   // as many bytes at the least
    vGuarded(out, [&] { utf8::utf32to8(text, text + length, std::back_inserter(out)); });
}

}   // namespace details

bool boIsValidUtf8(std::string_view text) noexcept { return utf8::is_valid(text.begin(), text.end()); }

std::string Converter::to_utf8(std::string_view raw) {
    std::string sText;
    sText.reserve(raw.size());
    while (!raw.empty()) {
        const auto iValid = static_cast<std::size_t>(utf8::find_invalid(raw.begin(), raw.end()) - raw.begin());
        sText.append(raw.substr(0, iValid));
        raw.remove_prefix(iValid);
        if (raw.empty()) break;
        utf8::append(static_cast<unsigned char>(raw.front()), std::back_inserter(sText));
        raw.remove_prefix(1);
    }
    return sText;
}

std::string Manip::valueFormatDefault(double value) {
    std::string sText;
    vValueFormatDefaultAppend(sText, value);
    return sText;
}

void Manip::vValueFormatDefaultAppend(std::string& sText, double value) {
    char buffer[32];   // 24 are needed at the most: "-1.7976931348623157e+308"
    sText.append(buffer, std::to_chars(buffer, buffer + sizeof buffer, value).ptr);
}

}   // namespace oxa::str
