// SPDX-License-Identifier: Apache-2.0
/// @file
/// List: the two shapes in which a list lies in pool memory.
///
///     Array<T>                 offset 0  uint64 count, offset 8  the items in a row (room for one at least)
///     ForwardListHead<T>       offset 0  value, 8 next, 16 tail; every further node has value and next only
///
/// Threads  none of its own: a list belongs to the owner of its entity.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Format/Ifc/Memory/SimplePool.h"
#include "Format/Ifc/Memory/Unaligned.h"

namespace oxa::ifc {

/// The item of an Array as it is stored: plain values unaligned, cells (alignment 1 by themselves) as they are.
template <class T>
using ArrayItem = std::conditional_t<alignof(T) == 1, T, Unaligned<T>>;

/// A list as one block: a count, and the items behind it. It is never made or destroyed: it lies in zeroed memory of a
/// pool.
template <class T>
class Array {
public:
    /// An item as it is stored.
    using Item = ArrayItem<T>;

    /// Bytes of the block for iCount items.
    [[nodiscard]] static constexpr std::size_t iBlockSize(std::size_t iCount) noexcept {
        return 8 + sizeof(Item) * (iCount ? iCount : 1);
    }
    /// Turns zeroed pool memory of at least iBlockSize(iCount) bytes into a list of iCount zero items.
    [[nodiscard]] static Array* pFromBytes(void* pBytes, std::size_t iCount) noexcept {
        auto* pArray = static_cast<Array*>(pBytes);
        pArray->m_iCount = iCount;
        return pArray;
    }

    ///@{
    /// The number of items.
    [[nodiscard]] std::size_t size() const noexcept { return m_iCount.load(); }
    [[nodiscard]] bool empty() const noexcept { return size() == 0; }
    ///@}

    /// A setter that reuses a block only writes a new, smaller count.
    void vCountSet(std::size_t iCount) noexcept { m_iCount = iCount; }

    ///@{
    /// The items in their order; no index is checked.
    [[nodiscard]] Item* begin() noexcept { return reinterpret_cast<Item*>(this + 1); }
    [[nodiscard]] Item* end() noexcept { return begin() + size(); }
    [[nodiscard]] const Item* begin() const noexcept { return reinterpret_cast<const Item*>(this + 1); }
    [[nodiscard]] const Item* end() const noexcept { return begin() + size(); }
    [[nodiscard]] Item& operator[](std::size_t i) noexcept { return begin()[i]; }
    [[nodiscard]] const Item& operator[](std::size_t i) const noexcept { return begin()[i]; }
    ///@}

private:
    Unaligned<std::uint64_t> m_iCount;
};

/// A node of a list in pool memory, at any byte address.
template <class T>
struct ForwardListNode {
    Unaligned<T> value;                 ///< the item
    Unaligned<ForwardListNode*> next;   ///< null behind the last one
};

/// The first node, with a hint at the last one: null means unknown, and it may be the head itself.
template <class T>
struct ForwardListHead : ForwardListNode<T> {
    Unaligned<ForwardListNode<T>*> tail;   ///< the hint

    /// Every node but the first.
    using Node = ForwardListNode<T>;

    /// Walks over values, in the order of the nodes; good while the list stays as it is.
    class Iterator {
    public:
        /// At that node; null is the end.
        explicit Iterator(const Node* pNode) noexcept : m_pNode(pNode) {}
        /// A copy of the value.
        T operator*() const noexcept { return m_pNode->value; }
        /// On to the next node; not at the end.
        Iterator& operator++() noexcept {
            m_pNode = m_pNode->next;
            return *this;
        }
        friend bool operator==(const Iterator&, const Iterator&) = default;

    private:
        const Node* m_pNode;
    };

    ///@{
    /// From the first node, which is there always, to behind the last one.
    [[nodiscard]] Iterator begin() const noexcept { return Iterator(this); }
    [[nodiscard]] Iterator end() const noexcept { return Iterator(nullptr); }
    ///@}
};

class Entity;
/// Entities that an attribute names, or that refer to an entity over an inverse attribute.
using EntityList = ForwardListHead<Entity*>;
static_assert(sizeof(EntityList) == 24 && sizeof(EntityList::Node) == 16 && alignof(EntityList) == 1);

/// Appends at the end of *ppHead, which may be null for an empty list. From the tail hint where there is one,
/// else from the head; either way next pointers are followed to the true end. "alloc(bytes)" gives zeroed memory.
template <class T, class Allocate>
void vListAppend(ForwardListHead<T>*& pHead, T value, Allocate&& alloc) {
    using Node = ForwardListNode<T>;
    if (!pHead) {
        pHead = static_cast<ForwardListHead<T>*>(alloc(sizeof(ForwardListHead<T>)));
        pHead->value = value;
        return;
    }
    Node* pLast = pHead->tail ? pHead->tail.load() : pHead;
    while (Node* pNext = pLast->next) pLast = pNext;
    auto* pNode = static_cast<Node*>(alloc(sizeof(Node)));
    pNode->value = value;
    pLast->next = pNode;
    pHead->tail = pNode;
}

/// Makes the list hold exactly [first, last) in order. Existing nodes are reused from the front, missing ones
/// allocated, the rest cut off; the tail becomes the last used node. An empty range makes the list empty.
template <class T, class Iterator, class Allocate>
void vListAssign(ForwardListHead<T>*& pHead, Iterator first, Iterator last, Allocate&& alloc) {
    using Node = ForwardListNode<T>;
    if (first == last) {
        pHead = nullptr;
        return;
    }
    if (!pHead) pHead = static_cast<ForwardListHead<T>*>(alloc(sizeof(ForwardListHead<T>)));
    Node* pNode = pHead;
    pNode->value = *first;
    for (++first; first != last; ++first) {
        if (!pNode->next) pNode->next = static_cast<Node*>(alloc(sizeof(Node)));
        pNode = pNode->next;
        pNode->value = *first;
    }
    pNode->next = nullptr;
    pHead->tail = pNode;
}

/// Removes the first node that holds "value"; false when there is none. Nodes are only unlinked.
template <class T>
bool boListRemove(ForwardListHead<T>*& pHead, T value) {
    using Node = ForwardListNode<T>;
    if (!pHead) return false;
    if (pHead->value.load() == value) {
        Node* pSecond = pHead->next;
        if (!pSecond) {
            pHead = nullptr;
            return true;
        }
        if (pHead->tail.load() == pSecond) pHead->tail = nullptr;
        pHead->value = pSecond->value.load();
        pHead->next = pSecond->next.load();
        return true;
    }
    Node* pBefore = pHead;
    for (Node* pNode = pHead->next; pNode; pBefore = pNode, pNode = pNode->next) {
        if (pNode->value.load() != value) continue;
        pBefore->next = pNode->next.load();
        if (!pBefore->next) pHead->tail = pBefore;
        return true;
    }
    return false;
}

/// Removes every node for whose value boGone(value) returns true; true when there was one. The tail becomes the last
/// node that is left.
template <class T, class Gone>
bool boListRemoveIf(ForwardListHead<T>*& pHead, Gone&& boGone) {
    using Node = ForwardListNode<T>;
    Node* pLast = nullptr;   // of those that stay
    bool boAny = false;
    for (Node* pNode = pHead; pNode; pNode = pNode->next) {
        const T value = pNode->value;
        if (boGone(value)) {
            boAny = true;
            continue;
        }
        // Values move to the front: the head, larger than the others, always is the first node.
        pLast = pLast ? pLast->next.load() : pHead;
        pLast->value = value;
    }
    if (!boAny) return false;
    if (pLast) {
        pLast->next = nullptr;
        pHead->tail = pLast;
    } else {
        pHead = nullptr;
    }
    return true;
}

}   // namespace oxa::ifc
