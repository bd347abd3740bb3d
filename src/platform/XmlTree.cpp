// SPDX-License-Identifier: Apache-2.0
#include "platform/XmlTree.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <stdexcept>

#include "platform/XmlText.h"

namespace oxa::xml::details {

namespace {

std::uint32_t uSizeOf(std::string_view text) {
    if (text.size() >= TreeAttribute::g_uMoved) throw std::length_error("a text of 4 GiB");
    return static_cast<std::uint32_t>(text.size());
}

template <class Number>
std::uint64_t uLoaded(const char* p) noexcept {
    Number number = 0;
    std::memcpy(&number, p, sizeof number);
    return number;
}

// By all bytes, eight at a time; the last ones overlap.
std::uint32_t uHashOf(std::string_view name) noexcept {
    std::uint64_t uHash = name.size();
    const auto vMix = [&uHash](std::uint64_t uBytes) {
        uHash = (uHash ^ uBytes) * 0x9E3779B97F4A7C15U;
        uHash ^= uHash >> 32;
    };
    const char* p = name.data();
    const char* pEnd = p + name.size();
    if (name.size() >= 8) {
        for (; pEnd - p > 8; p += 8) vMix(uLoaded<std::uint64_t>(p));
        vMix(uLoaded<std::uint64_t>(pEnd - 8));
    } else if (name.size() >= 4) {
        vMix(uLoaded<std::uint32_t>(p) << 32 | uLoaded<std::uint32_t>(pEnd - 4));
    } else if (!name.empty()) {
        vMix(uLoaded<std::uint8_t>(p) << 16 | uLoaded<std::uint8_t>(p + name.size() / 2) << 8 |
             uLoaded<std::uint8_t>(pEnd - 1));
    }
    return static_cast<std::uint32_t>(uHash);
}

}   // namespace

TreeRef TreeMemory::uText(std::string_view text) {
    const std::uint32_t uSize = uSizeOf(text);
    const auto [uRef, pWords] = allocate((sizeof(TreeText) + text.size() + g_iWord - 1) / g_iWord);
    ::new (pWords) TreeText{{TreeNode::g_uText, 0}, uSize};
    if (uSize) std::memcpy(pWords + sizeof(TreeText) / g_iWord, text.data(), text.size());
    return uRef;
}

// There is room for a reference at least, should the value move.
TreeRef TreeMemory::uAttribute(std::uint32_t uName, std::string_view value) {
    const std::uint32_t uSize = uSizeOf(value);
    const std::size_t iBytes = std::max(value.size(), g_iWord);
    const auto [uRef, pWords] = allocate((sizeof(TreeAttribute) + iBytes + g_iWord - 1) / g_iWord);
    ::new (pWords) TreeAttribute{uName, 0, uSize};
    if (uSize) std::memcpy(pWords + sizeof(TreeAttribute) / g_iWord, value.data(), value.size());
    return uRef;
}

std::string_view TreeMemory::text(TreeRef uRef) const noexcept {
    const std::uint32_t* pWords = pWordsOf(uRef);
    return {reinterpret_cast<const char*>(pWords + sizeof(TreeText) / g_iWord), at<TreeText>(uRef).uSize};
}

std::string_view TreeMemory::value(TreeRef uRef) const noexcept {
    const std::uint32_t* pValue = pWordsOf(uRef) + sizeof(TreeAttribute) / g_iWord;
    const std::uint32_t uSize = attribute(uRef).uSize;
    if (uSize == TreeAttribute::g_uMoved) return text(*pValue);
    return {reinterpret_cast<const char*>(pValue), uSize};
}

void TreeMemory::vValueSet(TreeRef uAttribute, std::string_view value) {
    const TreeRef uMoved = uText(value);
    pWordsOf(uAttribute)[sizeof(TreeAttribute) / g_iWord] = uMoved;
    attribute(uAttribute).uSize = TreeAttribute::g_uMoved;
}

bool TreeMemory::boRemove(TreeRef uParent, TreeRef uChild) noexcept {
    TreeElement& parent = element(uParent);
    TreeRef uBefore = 0;
    TreeRef uOther = parent.uFirst;
    for (; uOther && uOther != uChild; uOther = node(uOther).uSibling()) uBefore = uOther;
    if (!uOther) return false;
    TreeNode& child = node(uChild);
    if (uBefore)
        node(uBefore).uNext = child.uNext;
    else
        parent.uFirst = child.uSibling();
    if (parent.uLast == uChild) parent.uLast = uBefore;
    child.uNext = 0;
    return true;
}

// Small documents take little, large ones few pieces. A text that is large by itself gets a piece of its own: only its
// first word has to be told by a reference.
void TreeMemory::vPieceAdd(std::size_t iWords) {
    constexpr std::size_t g_iSmallest = 1024;
    constexpr std::size_t g_iLargest = std::size_t{1} << g_iPieceBits;
    if (m_pieces.size() >= g_iPieces) throw std::bad_alloc();
    const std::size_t iFirst = m_pieces.empty() ? 1 : 0;   // no record has the reference 0
    const std::size_t iPiece = std::max(std::clamp(m_iEnd * 4, g_iSmallest, g_iLargest), iFirst + iWords);
    m_pieces.push_back(std::unique_ptr<std::uint32_t[]>(new std::uint32_t[iPiece]));
    m_iNext = iFirst;
    m_iEnd = iPiece;
}

std::uint32_t TreeNames::uFind(std::string_view name, std::uint32_t uHash) const noexcept {
    if (m_slots.empty()) return g_uNone;
    const std::size_t iMask = m_slots.size() - 1;
    for (std::size_t iSlot = uHash & iMask; m_slots[iSlot].uNumber; iSlot = (iSlot + 1) & iMask)
        if (m_slots[iSlot].uHash == uHash && m_names[m_slots[iSlot].uNumber - 1] == name)
            return m_slots[iSlot].uNumber - 1;
    return g_uNone;
}

std::uint32_t TreeNames::uKept(std::string_view name) {
    const std::uint32_t uHash = uHashOf(name);
    const std::uint32_t uName = uFind(name, uHash);
    return uName != g_uNone ? uName : uAdd(name, uHash);
}

// Memory first: a name is in both tables or in none.
std::uint32_t TreeNames::uAdd(std::string_view name, std::uint32_t uHash) {
    if (!boIsName(name)) return g_uNone;
    const auto vEnter = [](std::vector<Slot>& slots, const Slot& entry) {
        const std::size_t iMask = slots.size() - 1;
        std::size_t iSlot = entry.uHash & iMask;
        while (slots[iSlot].uNumber) iSlot = (iSlot + 1) & iMask;
        slots[iSlot] = entry;
    };
    if (m_slots.size() <= (m_names.size() + 1) * 2) {
        std::vector<Slot> slots(std::max<std::size_t>(128, m_slots.size() * 2));
        for (const Slot& entry : m_slots)
            if (entry.uNumber) vEnter(slots, entry);
        m_slots = std::move(slots);
    }
    m_names.emplace_back(name);
    vEnter(m_slots, {uHash, static_cast<std::uint32_t>(m_names.size())});
    return static_cast<std::uint32_t>(m_names.size() - 1);
}

}   // namespace oxa::xml::details
