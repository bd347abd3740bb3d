// SPDX-License-Identifier: Apache-2.0
// The plain way. What it does not know it gives up at once, whether that is a fault or only rare: the other way decides.
#include "platform/XmlParse.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <istream>
#include <memory>
#include <new>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "platform/XmlText.h"

namespace oxa::xml::details {

namespace {

enum Kind : std::uint8_t {
    NameStart = 1,   // of ASCII; a name with others is not plain
    Name = 2,
    Blank = 4,
    TextStop = 8,         // ends a text, or has it copied
    AttributeStop = 16,   // the same of a value; both quotes are told apart by the caller
};

constexpr std::array<std::uint8_t, 256> g_kinds = [] {
    std::array<std::uint8_t, 256> table{};
    const auto vAdd = [&table](std::string_view characters, unsigned uKind) {
        for (const char c : characters) table[static_cast<unsigned char>(c)] |= static_cast<std::uint8_t>(uKind);
    };
    vAdd("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_:", NameStart | Name);
    vAdd("0123456789-.", Name);
    vAdd(" \t\r\n", Blank);
    vAdd("<&\r", TextStop);
    vAdd("<&\r\t\n\"'", AttributeStop);
    for (char c = 1; TreeBytes::iBlanksOf(c); ++c) vAdd({&c, 1}, Blank | TextStop | AttributeStop);
    table[0] |= TextStop | AttributeStop;
    return table;
}();

bool boIs(char c, unsigned uKind) noexcept { return g_kinds[static_cast<unsigned char>(c)] & uKind; }

// Blanks; eight at a time.
std::size_t iBlanksAtStart(std::string_view text) noexcept {
    constexpr std::uint64_t g_uBlanks = 0x2020202020202020U;
    std::size_t i = 0;
    for (; i + sizeof g_uBlanks <= text.size(); i += sizeof g_uBlanks)
        if (std::memcmp(text.data() + i, &g_uBlanks, sizeof g_uBlanks) != 0) break;
    while (i < text.size() && text[i] == ' ') ++i;
    return i;
}

class PlainParser {
public:
    PlainParser(std::string_view squeezed, Document& document, std::size_t iDepthLimit)
        : m_p(squeezed.data()),
          m_pBegin(squeezed.data()),
          m_pEnd(squeezed.data() + squeezed.size()),
          m_memory(document.memory),
          m_names(document.names),
          m_iDepthLimit(iDepthLimit) {}

    TreeRef uParse() {
        if (!boDeclaration()) return 0;
        while (m_p != m_pEnd)
            if (!boContent()) return 0;
        return m_uOpen ? 0 : m_uRoot;
    }

private:
    bool boNext(std::string_view text) noexcept {
        if (static_cast<std::size_t>(m_pEnd - m_p) < text.size() || std::memcmp(m_p, text.data(), text.size()) != 0)
            return false;
        m_p += text.size();
        return true;
    }
    void vBlanksSkip() noexcept {
        for (; boIs(*m_p, Blank); ++m_p) vSqueezedCount(*m_p);
    }
    // What a character stands for beside itself.
    void vSqueezedCount(char c) noexcept {
        if (const std::size_t iBlanks = TreeBytes::iBlanksOf(c)) m_iSqueezed += iBlanks - 1;
    }
    void vSqueezedCount(std::string_view text) noexcept {
        for (const char c : text) vSqueezedCount(c);
    }

    // The mark of UTF-8, and a declaration that names no other encoding. What else it says is of no account.
    bool boDeclaration() noexcept {
        static_cast<void>(boNext("\xEF\xBB\xBF"));
        if (!boNext("<?xml ")) return true;
        const std::string_view rest(m_p, static_cast<std::size_t>(m_pEnd - m_p));
        const std::size_t iEnd = rest.find("?>");
        if (iEnd == std::string_view::npos) return false;
        m_p += iEnd + 2;
        const std::string_view declaration = rest.substr(0, iEnd);
        vSqueezedCount(declaration);
        const std::size_t iEncoding = declaration.find("encoding");
        if (iEncoding == std::string_view::npos) return true;
        const std::string_view encoding = declaration.substr(iEncoding);
        return encoding.find("UTF-8") != std::string_view::npos || encoding.find("utf-8") != std::string_view::npos;
    }

    // A text, a tag, a comment, or the end.
    bool boContent() {
        const char* pStart = m_p;
        const std::size_t iSqueezed = m_iSqueezed;
        vBlanksSkip();
        if (*m_p != '<') {
            m_iSqueezed = iSqueezed;   // counted again with the text
            return m_p == m_pEnd ? true : boText(pStart);
        }
        // White space alone is a text only where it is all that an element holds.
        if (m_p != pStart && m_p[1] == '/' && m_uOpen && !m_memory.element(m_uOpen).uFirst) {
            m_iSqueezed = iSqueezed;
            if (!boText(pStart)) return false;
        }
        ++m_p;
        if (boIs(*m_p, NameStart)) return boStart();
        if (*m_p == '/') return boEnd();
        return boNext("!--") && boComment();
    }
    bool boComment() noexcept {
        const std::string_view rest(m_p, static_cast<std::size_t>(m_pEnd - m_p));
        const std::size_t iEnd = rest.find("-->");
        if (iEnd == std::string_view::npos) return false;
        m_p += iEnd + 3;
        vSqueezedCount(rest.substr(0, iEnd));
        return true;
    }

    bool boText(const char* pStart) {
        if (!m_uOpen) return false;
        m_p = pStart;
        bool boAsItStands = true;
        for (;; ++m_p) {
            while (!boIs(*m_p, TextStop)) ++m_p;
            if (*m_p == '<') break;
            if (*m_p == 0) return false;
            vSqueezedCount(*m_p);
            boAsItStands = false;
        }
        std::string_view text(pStart, static_cast<std::size_t>(m_p - pStart));
        if (!boAsItStands && !boDecode(text, false)) return false;
        m_memory.vAppend(m_uOpen, m_memory.uText(text));
        return true;
    }

    // In a text line ends become LF, in an attribute white space becomes blanks; then references are decoded. The result
    // stands in m_sText.
    bool boDecode(std::string_view& text, bool boAttribute) {
        m_sText.clear();
        for (std::size_t i = 0; i < text.size(); ++i) {
            const char c = text[i];
            if (const std::size_t iBlanks = TreeBytes::iBlanksOf(c)) {
                m_sText.append(iBlanks, ' ');
                continue;
            }
            if (c == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
            m_sText += boAttribute && boIs(c, Blank) ? ' ' : c == '\r' ? '\n' : c;
        }
        if (m_sText.find('&') != std::string::npos && !boReferencesDecode(m_sText)) return false;
        text = m_sText;
        return true;
    }

    std::string_view name() noexcept {
        const char* pStart = m_p;
        while (boIs(*m_p, Name)) ++m_p;
        return {pStart, static_cast<std::size_t>(m_p - pStart)};
    }

    bool boStart() {
        if (m_uOpen ? m_offsets.size() >= m_iDepthLimit : m_uRoot != 0) return false;
        const auto uOffset = static_cast<std::uint32_t>(static_cast<std::size_t>(m_p - m_pBegin) + m_iSqueezed);
        const TreeRef uElement = m_memory.uElement(m_names.uKept(name()));
        if (m_uOpen)
            m_memory.vAppend(m_uOpen, uElement);
        else
            m_uRoot = uElement;
        if (boIs(*m_p, Blank) && !boAttributes(uElement)) return false;
        if (*m_p == '>') {
            ++m_p;
            m_uOpen = uElement;
            m_offsets.push_back(uOffset);
            return true;
        }
        m_memory.element(uElement).uLast = uOffset;
        return boNext("/>");
    }
    // Up to what is neither blank nor name.
    bool boAttributes(TreeRef uElement) {
        m_ofElement.clear();
        TreeRef uLast = 0;
        for (;;) {
            const char* pBlanks = m_p;
            vBlanksSkip();
            if (!boIs(*m_p, NameStart)) return true;
            if (m_p == pBlanks) return false;   // no blank between two
            const std::uint32_t uName = m_names.uKept(name());
            std::string_view value;
            if (boTwice(uName) || !boValue(value)) return false;
            const TreeRef uAttribute = m_memory.uAttribute(uName, value);
            (uLast ? m_memory.attribute(uLast).uNext : m_memory.element(uElement).uAttributes) = uAttribute;
            uLast = uAttribute;
        }
    }
    // Few are compared with each other, many are put into a set.
    bool boTwice(std::uint32_t uName) {
        constexpr std::size_t g_iFew = 16;
        const std::size_t iBefore = m_ofElement.size();
        if (iBefore == g_iFew) m_known = {m_ofElement.begin(), m_ofElement.end()};
        const bool boKnown = iBefore < g_iFew ? std::ranges::find(m_ofElement, uName) != m_ofElement.end()
                                              : !m_known.insert(uName).second;
        m_ofElement.push_back(uName);
        return boKnown;
    }
    bool boValue(std::string_view& value) {
        vBlanksSkip();
        if (*m_p != '=') return false;
        ++m_p;
        vBlanksSkip();
        const char cQuote = *m_p;
        if (cQuote != '"' && cQuote != '\'') return false;
        const char* pStart = ++m_p;
        bool boAsItStands = true;
        for (;; ++m_p) {
            while (!boIs(*m_p, AttributeStop)) ++m_p;
            if (*m_p == cQuote) break;
            if (*m_p == 0 || *m_p == '<') return false;
            vSqueezedCount(*m_p);
            if (*m_p != '"' && *m_p != '\'') boAsItStands = false;
        }
        value = {pStart, static_cast<std::size_t>(m_p - pStart)};
        ++m_p;
        return boAsItStands || boDecode(value, true);
    }

    bool boEnd() noexcept {
        if (!m_uOpen) return false;
        ++m_p;
        TreeElement& open = m_memory.element(m_uOpen);
        if (!boNext(m_names.name(open.uName))) return false;
        vBlanksSkip();
        if (*m_p != '>') return false;   // also where the name goes on
        ++m_p;
        m_uOpen = open.uParentOfLast();
        open.uLast = m_offsets.back();
        m_offsets.pop_back();
        return true;
    }

    const char* m_p;   // what comes next
    const char* m_pBegin;
    const char* m_pEnd;
    std::size_t m_iSqueezed = 0;   // blanks in front of it that were squeezed
    TreeMemory& m_memory;
    TreeNames& m_names;
    std::size_t m_iDepthLimit;
    TreeRef m_uRoot = 0;
    TreeRef m_uOpen = 0;                         // the innermost element without its end; the last child of its parent
    std::vector<std::uint32_t> m_offsets;        // of the elements without their end
    std::vector<std::uint32_t> m_ofElement;      // the names of its attributes
    std::unordered_set<std::uint32_t> m_known;   // the same, where there are many
    std::string m_sText;
};

}   // namespace

TreeBytes::~TreeBytes() { std::free(m_pBytes); }

// As realloc does it: a large block is moved by its pages, so that there are never two.
void TreeBytes::vRoomMake(std::size_t iRoom) {
    if (m_iCapacity - m_iUsed >= iRoom) return;
    const std::size_t iCapacity = m_iUsed + std::max(iRoom, m_iUsed / 2);
    void* pBytes = std::realloc(m_pBytes, iCapacity);
    if (!pBytes) throw std::bad_alloc();
    m_pBytes = static_cast<char*>(pBytes);
    m_iCapacity = iCapacity;
}

bool TreeBytes::boRead(std::istream& in, std::size_t iLimit) {
    constexpr std::size_t g_iPiece = std::size_t{1} << 18;
    const std::unique_ptr<char[]> pPiece(new char[g_iPiece]);
    while (in.good() && m_iSize <= iLimit) {
        in.read(pPiece.get(), g_iPiece);
        const std::string_view piece(pPiece.get(), static_cast<std::size_t>(in.gcount()));
        m_iSize += piece.size();
        if (m_boSqueezed && boHasControls(piece)) vExpand();
        vRoomMake(piece.size() + 1);
        if (m_boSqueezed)
            vSqueeze(piece);
        else
            vAppend(piece);
        m_pBytes[m_iUsed] = 0;
    }
    return in.eof() && !in.bad() && m_iSize <= iLimit;
}

void TreeBytes::vAppend(std::string_view text) noexcept {
    std::memcpy(m_pBytes + m_iUsed, text.data(), text.size());
    m_iUsed += text.size();
}

// Never longer than the text, for which there is room. What the end of a piece parts stays as it is.
void TreeBytes::vSqueeze(std::string_view text) noexcept {
    for (std::size_t iLine = text.find('\n'); iLine != std::string_view::npos; iLine = text.find('\n')) {
        vAppend(text.substr(0, iLine + 1));
        text.remove_prefix(iLine + 1);
        std::size_t iBlanks = iBlanksAtStart(text);
        text.remove_prefix(iBlanks);
        for (char c = g_cLast; c > 0; --c)
            for (; iBlanks >= iBlanksOf(c); iBlanks -= iBlanksOf(c)) m_pBytes[m_iUsed++] = c;
        for (; iBlanks; --iBlanks) m_pBytes[m_iUsed++] = ' ';
    }
    vAppend(text);
}

void TreeBytes::vExpand() {
    if (!std::exchange(m_boSqueezed, false)) return;
    std::size_t iExpanded = 0;
    for (const char c : std::string_view(m_pBytes, m_iUsed)) iExpanded += std::max<std::size_t>(1, iBlanksOf(c));
    TreeBytes expanded;
    expanded.vRoomMake(iExpanded + 1);
    for (const char c : std::string_view(m_pBytes, m_iUsed)) {
        const std::size_t iBlanks = iBlanksOf(c);
        std::memset(expanded.m_pBytes + expanded.m_iUsed, iBlanks ? ' ' : c, std::max<std::size_t>(1, iBlanks));
        expanded.m_iUsed += std::max<std::size_t>(1, iBlanks);
    }
    expanded.m_pBytes[iExpanded] = 0;
    std::swap(m_pBytes, expanded.m_pBytes);
    std::swap(m_iCapacity, expanded.m_iCapacity);
    m_iUsed = iExpanded;
}

std::string_view TreeBytes::squeezed() const noexcept {
    return m_boSqueezed && m_pBytes ? std::string_view(m_pBytes, m_iUsed) : std::string_view();
}

std::span<char> TreeBytes::expanded() {
    vExpand();
    return {m_pBytes, m_iUsed};
}

TreeRef uParsedPlain(std::string_view squeezed, Document& document, std::size_t iDepthLimit) {
    if (squeezed.empty() || !boIsUtf8Text(squeezed)) return 0;
    document.boOffsets = true;
    return PlainParser(squeezed, document, iDepthLimit).uParse();
}

}   // namespace oxa::xml::details
