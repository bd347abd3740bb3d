// SPDX-License-Identifier: Apache-2.0
// FirstBytes: what a file is that can't be read, by the way it begins.
//
// For      FileOpen, which refuses such a file before anybody reads it, and Model.
// Not for  telling a STEP file from the simple text form or ifcXML: Format.h knows these.
#pragma once

#include <string>
#include <string_view>

namespace oxa::tool {

// What messages say behind the name of a file that is no text this program could take: compressed, a program, text in
// UTF-16 that is no XML. Empty where nothing is known against it.
[[nodiscard]] std::string sForeignForm(std::string_view bytes);

// True for a page of the web, as a server sends it in the place of a file that it does not have.
[[nodiscard]] bool boBeginsAsHtml(std::string_view bytes);

// True where the keyword that opens an exchange structure (ISO 10303-21, 7.1) stands among the bytes.
[[nodiscard]] bool boHasStepKeyword(std::string_view bytes) noexcept;

// The first words, in quotes and on one line.
[[nodiscard]] std::string sFirstWords(std::string_view bytes);

}   // namespace oxa::tool
