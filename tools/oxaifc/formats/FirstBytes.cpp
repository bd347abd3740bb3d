// SPDX-License-Identifier: Apache-2.0
// What a file is that is no IFC file, told by its first bytes, so that the message can say what to do with it.
#include "oxaifc/formats/FirstBytes.h"

#include <algorithm>
#include <cstddef>

#include <fmt/format.h>

#include "oxaifc/formats/XmlDocument.h"
#include "oxaifc/io/NearNames.h"
#include "oxaifc/io/Output.h"

namespace oxa::tool {

using namespace std::string_view_literals;

namespace {

struct Signature {
    std::string_view bytes;
    std::string_view text;
};
constexpr std::string_view g_program = "is a program, not a text";
constexpr Signature g_signatures[] = {
    {"BZh"sv, "is compressed with bzip2; unpack it (bunzip2) and name the file that comes out"},
    {"\xfd"
     "7zXZ\0"sv,
     "is compressed with xz; unpack it (unxz) and name the file that comes out"},
    {"\x28\xb5\x2f\xfd"sv, "is compressed with zstd; unpack it (unzstd) and name the file that comes out"},
    {"7z\xbc\xaf\x27\x1c"sv, "is a 7z archive; unpack it and name the file inside"},
    {"Rar!\x1a\x07"sv, "is a RAR archive; unpack it and name the file inside"},
    {"\x7f"
     "ELF"sv,
     g_program},
    {"\xfe\xed\xfa\xce"sv, g_program},
    {"\xfe\xed\xfa\xcf"sv, g_program},
    {"\xce\xfa\xed\xfe"sv, g_program},
    {"\xcf\xfa\xed\xfe"sv, g_program},
    {"\xca\xfe\xba\xbe"sv, g_program},
    {"%PDF-"sv, "is a PDF document"},
};

// Windows marks its programs with two letters, which a text may begin with too; no text has a zero among its first
// bytes.
bool boWindowsProgram(std::string_view bytes) {
    return bytes.starts_with("MZ") && bytes.substr(0, 64).find('\0') != std::string_view::npos;
}

// The order of the bytes of UTF-16, by the mark or by two ASCII characters at the begin.
std::string_view utf16(std::string_view bytes) {
    if (bytes.starts_with("\xff\xfe"sv)) return "little endian";
    if (bytes.starts_with("\xfe\xff"sv)) return "big endian";
    if (bytes.size() < 4) return {};
    const auto boAscii = [&bytes](std::size_t i) { return bytes[i] >= '\t' && bytes[i] <= '~'; };
    if (boAscii(0) && boAscii(2) && !bytes[1] && !bytes[3]) return "little endian";
    if (boAscii(1) && boAscii(3) && !bytes[0] && !bytes[2]) return "big endian";
    return {};
}

}   // namespace

std::string sForeignForm(std::string_view bytes) {
    for (const Signature& signature : g_signatures)
        if (bytes.starts_with(signature.bytes)) return std::string(signature.text);
    if (boWindowsProgram(bytes)) return std::string(g_program);
    const std::string_view order = utf16(bytes);
    if (order.empty() || boBeginsAsXml(bytes)) return {};
    return fmt::format("is text in UTF-16 ({}), which no IFC file is in; make it UTF-8: iconv -f UTF-16{} -t UTF-8",
                       order, order == "big endian" ? "BE" : "LE");
}

bool boBeginsAsHtml(std::string_view bytes) {
    const std::size_t iFirst = bytes.find_first_not_of("\xef\xbb\xbf \t\r\n");
    if (iFirst == std::string_view::npos) return false;
    return sUpper(bytes.substr(iFirst, 14)) == "<!DOCTYPE HTML";
}

bool boHasStepKeyword(std::string_view bytes) noexcept {
    constexpr std::string_view keyword = "ISO-10303-21";
    for (std::size_t i = bytes.find(keyword); i != std::string_view::npos; i = bytes.find(keyword, i + 1))
        if (!bytes.substr(0, i).ends_with("END-")) return true;   // that one closes it
    return false;
}

std::string sFirstWords(std::string_view bytes) {
    constexpr std::size_t g_iMost = 30;
    if (bytes.starts_with("\xef\xbb\xbf")) bytes.remove_prefix(3);
    bytes.remove_prefix(std::min(bytes.find_first_not_of(" \t\r\n"), bytes.size()));
    const std::string_view line = bytes.substr(0, bytes.find_first_of("\r\n"));
    return fmt::format("\"{}\"{}", sPrintable(line.substr(0, g_iMost)), line.size() > g_iMost ? "..." : "");
}

}   // namespace oxa::tool
