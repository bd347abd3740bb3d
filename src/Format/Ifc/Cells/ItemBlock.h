// SPDX-License-Identifier: Apache-2.0
// ItemBlock: room for what a setter stores, in the block that a cell has already where that is large enough.
//
// For      setters, copies and imports: a value that is replaced leaves its block to the next one.
// Memory   a new block is zeroed and of the pool; the one that was too small stays behind there.
#pragma once

#include <cstddef>

#include "Format/Ifc/IfcFileAttribute.h"

namespace oxa::ifc {

// The present block where it holds so much, else what pNew() gives.
template <class Block, class New>
Block* pBlockOrNew(Block* pPresent, std::size_t iHeld, std::size_t iNeeded, New&& pNew) {
    return pPresent && iHeld >= iNeeded ? pPresent : pNew();
}

template <class T>
struct ItemBlock {
    Array<T>& items;   // with the new count
    bool boNew;        // its items are zeros: cells among them have no header yet
};

// The block of a list for iCount items; it is the list's from here on.
template <class T>
ItemBlock<T> itemBlock(AttributeListValueBase& list, std::size_t iCount, Pool& pool) {
    Array<T>* const pPresent = list.pArray<T>();
    Array<T>* const pItems = pBlockOrNew(pPresent, pPresent ? pPresent->size() : 0, iCount, [iCount, &pool] {
        return Array<T>::pFromBytes(pool.pAllocate(Array<T>::iBlockSize(iCount)), iCount);
    });
    pItems->vCountSet(iCount);
    list.m_pItems = pItems;
    return {*pItems, pItems != pPresent};
}

}   // namespace oxa::ifc
