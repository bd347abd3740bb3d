// SPDX-License-Identifier: Apache-2.0
/// @file
/// StepStrings: between UTF-8 and the 7-bit text of a STEP string (ISO 10303-21, clause 6.4.3).
///
/// - For: the string cells, their writers, and the header. Library users who handle STEP text of their own.
/// - Reading takes what any exporter may have written and never fails: what means nothing is dropped, 8-bit bytes are
///   kept. Writing has one canonical form. Hence the two are no mirror of each other.
/// - Threads: any number at once; the reader's scratch buffer belongs to the thread and keeps its capacity.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/Export.h"

namespace oxa::ifc {

/// Reads the inside of a STEP string.
///
/// @param out  cleared, then the text in UTF-8; may hold NUL bytes (from `\X\00`), and other bytes than UTF-8 where the
///   input had 8-bit bytes.
/// @param text  first byte behind the opening quote; not null unless length is 0. Must not lie in "out".
/// @param length  in bytes, without the quotes. text[length] must be readable too: the closing quote stands there, and
///   a directive that lacks its last byte takes it. Nothing behind it is looked at.
///
/// The directives `\S\`, `\X\`, `\X2\` and `\X4\` are decoded, `\P.\` raises an assertion and selects nothing, others
/// are dropped. There is one assertion a string for 8-bit bytes, which ISO 10303-21 forbids, and one for code points
/// that are none.
OXA_IFC_API void vIfcStrToUtf8(std::string& out, const char* text, std::size_t length);

/// Writes the inside of a STEP string, in bytes from 32 to 126 only.
///
/// @param out  cleared, filled and returned; without quotes around it. Must not be where "text" lies.
/// @param text  UTF-8; "length" bytes of it.
/// @throws oxa::str::exception where the text is no UTF-8; "out" is then empty.
///
/// `\X\` stands for U+0000 to U+001F and U+007F to U+00FF, `\X2\` up to U+FFFF, `\X4\` beyond; a block stays open until
/// a printable character or the end.
OXA_IFC_API const std::string& sIfcStrFromUtf8(std::string& out, const char* text, std::size_t length);

/// The same for a text that a file may have brought: 8-bit bytes that are no UTF-8 count as Latin-1, and nothing is
/// thrown. So a model that could be read can be written.
OXA_IFC_API const std::string& sIfcStrFromText(std::string& out, std::string_view text);

}   // namespace oxa::ifc
