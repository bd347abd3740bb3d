// SPDX-License-Identifier: Apache-2.0
// XmlParse: from bytes to the tree of a document, by one of two ways with one result.
//
// For      Xml.cpp alone.
// Plain    what programs write: UTF-8, elements, attributes, texts, comments. In one pass over the bytes.
// Any      all else that is XML, and all that is none: other encodings, document types, sections, instructions. By pugixml,
//          which also says what is wrong and where.
// Threads  one at a time for each document.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <span>
#include <string_view>

#include "platform/XmlTree.h"

namespace oxa::xml::details {

// The bytes of a document. Indentation is often more than half of them: of a text, blanks at the start of a line are
// squeezed into control characters, which no document has.
class TreeBytes {
public:
    TreeBytes() = default;
    ~TreeBytes();
    TreeBytes(const TreeBytes&) = delete;
    TreeBytes& operator=(const TreeBytes&) = delete;

    // All that the stream has. False when it fails or has more than "iLimit"; size() says how far it came.
    [[nodiscard]] bool boRead(std::istream& in, std::size_t iLimit);
    // As they came.
    [[nodiscard]] std::size_t size() const noexcept { return m_iSize; }

    // How many blanks a character stands for; 0 for all that stand for themselves.
    [[nodiscard]] static constexpr std::size_t iBlanksOf(char c) noexcept {
        return c >= 1 && c <= g_cLast ? std::size_t{2} << c : 0;
    }
    // The bytes, squeezed, with a 0 behind them; nothing where they have a control character of their own.
    [[nodiscard]] std::string_view squeezed() const noexcept;
    // The bytes as they came.
    [[nodiscard]] std::span<char> expanded();

private:
    static constexpr char g_cLast = 5;   // 64 blanks; one less stands for half as many

    void vRoomMake(std::size_t iRoom);
    void vAppend(std::string_view text) noexcept;
    void vSqueeze(std::string_view text) noexcept;
    void vExpand();

    char* m_pBytes = nullptr;
    std::size_t m_iUsed = 0;
    std::size_t m_iCapacity = 0;
    std::size_t m_iSize = 0;
    bool m_boSqueezed = true;
};

// The root. 0, with a document to be thrown away, for what is not plain or nests deeper than that.
[[nodiscard]] TreeRef uParsedPlain(std::string_view squeezed, Document& document, std::size_t iDepthLimit);

struct Fault {
    const char* sText;     // null: none
    std::size_t iOffset;   // the byte where it was noticed; 0 where that says nothing
};
// Sets the root. The bytes are changed.
[[nodiscard]] Fault parseAny(std::span<char> bytes, Document& document, std::size_t iDepthLimit);

}   // namespace oxa::xml::details
