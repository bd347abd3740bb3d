// SPDX-License-Identifier: Apache-2.0
// InverseBuilder: announces instances to everything that they refer to.
//
// For      the completion of a read, which does it for each instance of a model, and single new instances.
// Shape    memory is what it waits for, so each step of the way is fetched while the builder works elsewhere. In a row of
//          instances it looks ahead, to the slot, the cells and the lists of those to come; and a reference passes two
//          short queues, for its target's slot and list head. Within a list the order is as if each had been entered at
//          once.
// Threads  one; the lists of other instances are written. Several builders may be at work where each enters references to
//          targets of its own.
#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "Format/Ifc/Cells/CellWalk.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "Format/Ifc/Memory/PoolArena.h"
#include "platform/Assert.h"
#include "platform/Compiler.h"

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
    // Each of them, in their order.
    void vAdd(std::span<Entity* const> entities);
    // Enters one of what vForEachReference finds, at the latest with vFlush.
    //
    // Two cache lines of the target are needed, the second found through the first: its slot, for the type and the
    // inverse block, and then the list head in that block. In a large model both are misses of some hundred cycles, and
    // one after the other they would be nearly all of the completion. So a reference waits in m_references while a
    // prefetch fetches its slot, then in m_entries while another one fetches the list head. The queues are first in,
    // first out, so the entries of one list keep their order.
    void vEnter(const Reference& reference);
    // Enters what is still on its way.
    void vFlush();
    // The entries made so far.
    [[nodiscard]] std::size_t iEntered() const noexcept { return m_iEntered; }

    // Calls visit(reference) for each place of each instance, in their order, that may feed the inverse list of another
    // one. Throws and asserts as vAdd does.
    template <class Visit>
    static void vForEachReference(std::span<Entity* const> entities, Visit&& visit);

private:
    // How many instances lie between one step of the look ahead and the next one.
    static constexpr std::size_t g_iAhead = 8;

    // The layout of an instance to come, where it is known; one without feeds for a type that has none. Null for an
    // instance that has yet to say.
    [[nodiscard]] static const DataSizeEntity* pLayoutAhead(const Entity& entity) noexcept;
    // The same, made where it has to be, and with whatever is to be told.
    [[nodiscard]] static const DataSizeEntity& layout(const Entity& entity);
    // The cells that feed lists, then the items of those that are lists.
    static void vFetchCells(const Entity& entity, const DataSizeEntity& layout) noexcept;
    static void vFetchItems(const Entity& entity, const DataSizeEntity& layout) noexcept;
    template <class Visit>
    static void vForEachFed(Entity& entity, const DataSizeEntity& layout, Visit&& visit);
    // Of an instance, which has cells.
    [[nodiscard]] static const AttributeBase& cell(const Entity& entity, const DataSizeEntity::Cell& place) noexcept {
        return *reinterpret_cast<const AttributeBase*>(static_cast<const char*>(entity.m_pAttributes) + place.iOffset);
    }

    struct Entry {
        Unaligned<EntityList*>* pHead;
        Entity* pSource;
    };

    // First in, first out. Each end counts for itself: counts that were written apart and read together would make each
    // step wait for the one before it.
    template <class Item>
    struct Ring {
        static constexpr std::size_t g_iSize = 32;
        std::array<Item, g_iSize> items;
        std::size_t iIn = 0;
        std::size_t iOut = 0;

        [[nodiscard]] bool boEmpty() const noexcept { return iIn == iOut; }
        [[nodiscard]] bool boFull() const noexcept { return iIn - iOut == g_iSize; }
        void vPush(const Item& item) noexcept { items[iIn++ % g_iSize] = item; }
        [[nodiscard]] Item pop() noexcept { return items[iOut++ % g_iSize]; }
    };

    // Enters what "find" visits.
    template <class Find>
    void vAddFrom(Find&& find);
    void vTargetLook();
    void vNodeEnter();

    Pool& m_pool;
    PoolArena* m_pArena;
    std::size_t m_iEntered = 0;
    Ring<Reference> m_references;   // the target's slot is being prefetched
    Ring<Entry> m_entries;          // the list head is being prefetched
};

// An instance is visited three steps after its slot was fetched, two after its cells and one after its lists. What the
// second step learnt of its type the others need not ask for again.
template <class Visit>
void InverseBuilder::vForEachReference(std::span<Entity* const> entities, Visit&& visit) {
    std::array<const DataSizeEntity*, 4 * g_iAhead> layouts{};   // of those between the second step and the visit
    const std::size_t iLast = entities.size() + 3 * g_iAhead;
    for (std::size_t i = 0; i < iLast; ++i) {
        if (i < entities.size()) platform::vFetchToRead(entities[i]);
        if (const std::size_t iCells = i - g_iAhead; iCells < entities.size()) {   // below 0: a large number
            const DataSizeEntity* pLayout = layouts[iCells % layouts.size()] = pLayoutAhead(*entities[iCells]);
            if (pLayout) vFetchCells(*entities[iCells], *pLayout);
        }
        if (const std::size_t iItems = i - 2 * g_iAhead; iItems < entities.size())
            if (const DataSizeEntity* pLayout = layouts[iItems % layouts.size()])
                vFetchItems(*entities[iItems], *pLayout);
        if (const std::size_t iVisit = i - 3 * g_iAhead; iVisit < entities.size()) {
            const DataSizeEntity* pLayout = layouts[iVisit % layouts.size()];
            vForEachFed(*entities[iVisit], pLayout ? *pLayout : layout(*entities[iVisit]), visit);
        }
    }
}

// The attributes that feed inverse lists are noted in the layout of the type, so only those are visited.
template <class Visit>
void InverseBuilder::vForEachFed(Entity& entity, const DataSizeEntity& layout, Visit&& visit) {
    for (const DataSizeEntity::Feed& feed : layout.feeds) {
        if (feed.iCell == DataSizeEntity::Feed::g_iNone || !entity.m_pAttributes) {
            Assert::vTell("Format/Ifc/IfcFileEntity", "oxa::ifc::Entity::vAttributeInverseInit",
                          "Not able to find attribute");
            continue;
        }
        if (feed.iPosition == DataSizeEntity::Feed::g_iNone) continue;   // no type has such a list
        const DataSizeEntity::Cell& place = layout.cells[feed.iCell];
        vForEachEntity(cell(entity, place), place.eClass, [&](Entity* pTarget) {
            if (pTarget) visit(Reference{pTarget, &entity, &feed});
        });
    }
}

}   // namespace oxa::ifc
