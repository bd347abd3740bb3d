// SPDX-License-Identifier: Apache-2.0
// InverseBuilder: announces instances to everything that they refer to.
//
// For      the completion of a read, which does it for each instance of a model, and single new instances.
// Shape    a reference passes two short queues with a prefetch each: while the cache lines of its target are fetched,
//          the builder works on other references. Within a list the order is as if each had been entered at once.
// Threads  one; the lists of other instances are written. Several builders may be at work where each enters references to
//          targets of its own.
#pragma once

#include <array>
#include <cstddef>

#include "Format/Ifc/Cells/CellWalk.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "Format/Ifc/Memory/PoolArena.h"
#include "platform/Assert.h"

namespace oxa::ifc {

class InverseBuilder {
public:
    // Nodes come from the arena where there is one, which pays for many.
    explicit InverseBuilder(Pool& pool, PoolArena* pArena = nullptr) noexcept : m_pool(pool), m_pArena(pArena) {}
    // What an instance says of another one.
    struct Reference {
        Entity* pTarget;
        Entity* pSource;
        const DataSizeEntity::Feed* pFeed;
    };

    InverseBuilder(const InverseBuilder&) = delete;
    InverseBuilder& operator=(const InverseBuilder&) = delete;
    ~InverseBuilder() = default;

    // Puts "entity" in front of the inverse lists of its targets, at the latest with vFlush. Throws MissingType
    // for an empty instance; whatever is thrown, earlier instances have been entered. The assertion "Not able to find
    // attribute" tells of an inverse attribute that names none of the type.
    void vAdd(Entity& entity);
    // Enters one of what vForEachReference finds, at the latest with vFlush.
    //
    // Two cache lines of the target are needed, the second found through the first: its slot, for the type and the
    // inverse block, and then the list head in that block. In a large model both are misses of some hundred cycles, and
    // one after the other they would be nearly all of the completion. So a reference waits in m_references while a
    // prefetch fetches its slot, then in m_entries while another one fetches the list head: up to sixteen are in flight
    // in each. The queues are first in, first out, so the entries of one list keep their order.
    void vEnter(const Reference& reference);
    // Enters what is still on its way.
    void vFlush();
    // The entries made so far.
    [[nodiscard]] std::size_t iEntered() const noexcept { return m_iEntered; }

    // Calls visit(reference) for each place of "entity" that may feed the inverse list of another instance. Throws and
    // asserts as vAdd does.
    template <class Visit>
    static void vForEachReference(Entity& entity, Visit&& visit);

private:
    struct Entry {
        Unaligned<EntityList*>* pHead;
        Entity* pSource;
    };

    // First in, first out.
    template <class Item>
    struct Ring {
        static constexpr std::size_t g_iSize = 16;
        std::array<Item, g_iSize> items;
        std::size_t iFirst = 0;
        std::size_t iCount = 0;

        [[nodiscard]] bool boFull() const noexcept { return iCount == g_iSize; }
        void vPush(const Item& item) noexcept { items[(iFirst + iCount++) % g_iSize] = item; }
        [[nodiscard]] Item pop() noexcept {
            --iCount;
            return items[iFirst++ % g_iSize];
        }
    };

    void vTargetLook();
    void vNodeEnter();

    Pool& m_pool;
    PoolArena* m_pArena;
    std::size_t m_iEntered = 0;
    Ring<Reference> m_references;   // the target's slot is being prefetched
    Ring<Entry> m_entries;          // the list head is being prefetched
};

// The attributes that feed inverse lists are noted in the layout of the type, so an instance that feeds none is done
// with the first tests, and of the others only those attributes are visited.
template <class Visit>
void InverseBuilder::vForEachReference(Entity& entity, Visit&& visit) {
    const def::schema::Entity& schema = entity.schemaEntity();
    if (!schema.boHasInverse || schema.inverseTargets().empty()) return;
    const DataSizeEntity& size = Entity::getDataSize(schema);
    for (const DataSizeEntity::Feed& feed : size.feeds) {
        if (feed.iCell == DataSizeEntity::Feed::g_iNone || !entity.m_pAttributes) {
            Assert::vTell("Format/Ifc/IfcFileEntity", "oxa::ifc::Entity::vAttributeInverseInit",
                          "Not able to find attribute");
            continue;
        }
        if (feed.iPosition == DataSizeEntity::Feed::g_iNone) continue;   // no type has such a list
        const DataSizeEntity::Cell& place = size.cells[feed.iCell];
        const auto& cell =
            *reinterpret_cast<const AttributeBase*>(static_cast<const char*>(entity.m_pAttributes) + place.iOffset);
        vForEachEntity(cell, place.eClass, [&](Entity* pTarget) {
            if (pTarget) visit(Reference{pTarget, &entity, &feed});
        });
    }
}

}   // namespace oxa::ifc
