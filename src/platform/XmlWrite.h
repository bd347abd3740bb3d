// SPDX-License-Identifier: Apache-2.0
// XmlWrite: the tree of a document as text.
//
// For      Xml.cpp alone.
// Threads  one at a time for each document.
#pragma once

#include <iosfwd>

#include "platform/XmlTree.h"

namespace oxa::xml::details {

// The whole document, which has a root, indented where that changes no text. False when the stream does not take all of it.
[[nodiscard]] bool boWrite(std::ostream& out, const Document& document);

}   // namespace oxa::xml::details
