// SPDX-License-Identifier: Apache-2.0
// EntityBlocks: taking an instance's two blocks from memory.
//
// For      the units of Entity, which differ in where the memory comes from: the pool, or a thread's share of it.
#pragma once

#include "Format/Ifc/IfcFileEntity.h"

namespace oxa::ifc {

// The attribute block, then the inverse block behind it, in one request: they are used together. Memory comes
// zeroed, so every inverse list is empty. Null for a type without attributes, whose layout is not needed here.
template <class Allocate>
const DataSizeEntity* Entity::pBlocksAllocate(const def::schema::Entity& schema, Allocate&& alloc) {
    // A layout that is there says all; one without cells may be what a caller asked for.
    const DataSizeEntity* pSize = schema.pDataSize.boReady() ? schema.pDataSize.value().get() : nullptr;
    if (!pSize || pSize->cells.empty()) pSize = schema.allAttributes().empty() ? nullptr : &getDataSize(schema);
    const std::size_t iAttributes = pSize ? pSize->iSize : 0;
    const std::size_t iInverse =
        sizeof(InverseEntry) * (pSize ? pSize->iInverses : schema.allInverseAttributes().size());
    auto* pBytes = static_cast<char*>(alloc(iAttributes + iInverse));
    if (pSize) m_pAttributes = pBytes;
    m_ppAttributesInverse = reinterpret_cast<EntityList**>(pBytes + iAttributes);
    return pSize;
}

}   // namespace oxa::ifc
