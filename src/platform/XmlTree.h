// SPDX-License-Identifier: Apache-2.0
// XmlTree: what a document is in memory: records of elements, attributes and texts, in pieces that go all at once.
//
// For      Xml*.cpp alone.
// Shape    records name each other by 32 bits, and names by their number, which keeps a document at about its own size:
//
//     element     name, next, first child, last child, first attribute      20 bytes
//     text        mark, next, size, then the text itself                    12 bytes and the text
//     attribute   name, next, size, then the value itself                   12 bytes and the value
//
//          "next" of a last child is its parent, with a mark: so the way up needs no memory of its own.
// Threads  one at a time for each document.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace oxa::xml::details {

// A record; 0 is none.
using TreeRef = std::uint32_t;

struct TreeNode {
    std::uint32_t uName;   // its number; g_uText for a text
    TreeRef uNext;         // sibling; marked, the parent of a last child; 0 for what has no parent

    static constexpr std::uint32_t g_uText = ~std::uint32_t{0};
    static constexpr std::uint32_t g_uParent = std::uint32_t{1} << 31;   // the mark

    [[nodiscard]] bool boElement() const noexcept { return uName != g_uText; }
    [[nodiscard]] TreeRef uSibling() const noexcept { return uNext & g_uParent ? 0 : uNext; }
    // Of a last child; 0 for all others.
    [[nodiscard]] TreeRef uParentOfLast() const noexcept { return uNext & g_uParent ? uNext & ~g_uParent : 0; }
};
struct TreeElement : TreeNode {
    TreeRef uFirst;        // child
    std::uint32_t uLast;   // child, as long as it may get more; of a document that was parsed the byte of its name
    TreeRef uAttributes;
};
struct TreeText : TreeNode {
    std::uint32_t uSize;
};
struct TreeAttribute {
    std::uint32_t uName;
    TreeRef uNext;
    std::uint32_t uSize;   // g_uMoved: where the value would begin stands the text that it has now

    static constexpr std::uint32_t g_uMoved = ~std::uint32_t{0};
};

// The records of one document. They stay where they are until all go with this object.
class TreeMemory {
public:
    TreeMemory() = default;
    TreeMemory(const TreeMemory&) = delete;
    TreeMemory& operator=(const TreeMemory&) = delete;

    ///@{
    // New records, in no tree so far. A text of 4 GiB or more is refused with std::length_error.
    [[nodiscard]] TreeRef uElement(std::uint32_t uName) {
        const auto [uRef, pWords] = allocate(sizeof(TreeElement) / g_iWord);
        ::new (pWords) TreeElement{{uName, 0}, 0, 0, 0};
        return uRef;
    }
    [[nodiscard]] TreeRef uText(std::string_view text);
    [[nodiscard]] TreeRef uAttribute(std::uint32_t uName, std::string_view value);
    ///@}

    [[nodiscard]] TreeNode& node(TreeRef uRef) const noexcept { return at<TreeNode>(uRef); }
    // Of a node that is one.
    [[nodiscard]] TreeElement& element(TreeRef uRef) const noexcept { return at<TreeElement>(uRef); }
    [[nodiscard]] TreeAttribute& attribute(TreeRef uRef) const noexcept { return at<TreeAttribute>(uRef); }
    // Of a text, of an attribute.
    [[nodiscard]] std::string_view text(TreeRef uRef) const noexcept;
    [[nodiscard]] std::string_view value(TreeRef uRef) const noexcept;

    // Makes "uChild", which is in no tree, the last child.
    void vAppend(TreeRef uParent, TreeRef uChild) noexcept {
        TreeElement& parent = element(uParent);
        node(uChild).uNext = uParent | TreeNode::g_uParent;
        (parent.uLast ? node(parent.uLast).uNext : parent.uFirst) = uChild;
        parent.uLast = uChild;
    }
    // Takes a child out. False when it is none of that parent.
    [[nodiscard]] bool boRemove(TreeRef uParent, TreeRef uChild) noexcept;
    void vValueSet(TreeRef uAttribute, std::string_view value);

    // Visits everything below "uTop" in document order, in no recursion. boEnter(ref, depth) and vLeave(ref, depth) go
    // around the children of each; depth 0 is that of the children of "uTop". boEnter ends the walk with false.
    template <class Enter, class Leave>
    bool boWalk(TreeRef uTop, Enter&& boEnter, Leave&& vLeave) const {
        std::size_t iDepth = 0;
        for (TreeRef uNode = element(uTop).uFirst; uNode;) {
            if (!boEnter(uNode, iDepth)) return false;
            if (const TreeRef uFirst = node(uNode).boElement() ? element(uNode).uFirst : 0) {
                uNode = uFirst;
                ++iDepth;
                continue;
            }
            vLeave(uNode, iDepth);
            while (const TreeRef uParent = node(uNode).uParentOfLast()) {
                uNode = uParent;
                if (uNode == uTop) return true;
                vLeave(uNode, --iDepth);
            }
            uNode = node(uNode).uNext;
        }
        return true;
    }

private:
    static constexpr std::size_t g_iWord = sizeof(std::uint32_t);
    static constexpr unsigned g_iPieceBits = 16;   // words that a reference tells within a piece
    static constexpr std::size_t g_iPieces = std::size_t{1} << (31 - g_iPieceBits);

    struct New {
        TreeRef uRef;
        std::uint32_t* pWords;
    };
    New allocate(std::size_t iWords) {
        if (m_iEnd - m_iNext < iWords) vPieceAdd(iWords);
        const auto uRef = static_cast<TreeRef>((m_pieces.size() - 1) << g_iPieceBits | m_iNext);
        std::uint32_t* pWords = m_pieces.back().get() + m_iNext;
        m_iNext += iWords;
        return {uRef, pWords};
    }
    void vPieceAdd(std::size_t iWords);

    [[nodiscard]] std::uint32_t* pWordsOf(TreeRef uRef) const noexcept {
        return m_pieces[uRef >> g_iPieceBits].get() + (uRef & ((std::uint32_t{1} << g_iPieceBits) - 1));
    }
    template <class Record>
    [[nodiscard]] Record& at(TreeRef uRef) const noexcept {
        return *reinterpret_cast<Record*>(pWordsOf(uRef));
    }

    std::vector<std::unique_ptr<std::uint32_t[]>> m_pieces;
    std::size_t m_iNext = 0;   // free word of the last piece
    std::size_t m_iEnd = 0;    // its words
};

// The names of a document, each proven and kept once.
class TreeNames {
public:
    static constexpr std::uint32_t g_uNone = ~std::uint32_t{0};

    // The number of a name; g_uNone for what is no name of XML.
    [[nodiscard]] std::uint32_t uKept(std::string_view name);
    [[nodiscard]] std::string_view name(std::uint32_t uName) const noexcept { return m_names[uName]; }

private:
    struct Slot {
        std::uint32_t uHash = 0;
        std::uint32_t uNumber = 0;   // plus 1; 0 is an empty slot
    };

    [[nodiscard]] std::uint32_t uFind(std::string_view name, std::uint32_t uHash) const noexcept;
    [[nodiscard]] std::uint32_t uAdd(std::string_view name, std::uint32_t uHash);

    std::deque<std::string> m_names;
    std::vector<Slot> m_slots;   // open addressing; at most half full
};

struct Document {
    TreeMemory memory;
    TreeNames names;
    TreeRef uRoot = 0;
    bool boOffsets = false;   // TreeElement::uLast tells where the elements began
};

}   // namespace oxa::xml::details
