// SPDX-License-Identifier: Apache-2.0
// InverseBuilder: announces instances to everything that they refer to.
//
// For      the completion of a read, which does it for each instance of a model, and single new instances.
// Shape    a reference passes two short queues with a prefetch each: while the cache lines of its target are fetched,
//          the builder works on other references. Within a list the order is as if each had been entered at once.
// Threads  one; the lists of other instances are written.
#pragma once

#include <array>
#include <cstddef>

#include "Format/Ifc/IfcFileEntity.h"
#include "Format/Ifc/Memory/PoolArena.h"

namespace oxa::ifc {

class InverseBuilder {
public:
    // Nodes come from the arena where there is one, which pays for many.
    explicit InverseBuilder(Pool& pool, PoolArena* pArena = nullptr) noexcept : m_pool(pool), m_pArena(pArena) {}
    InverseBuilder(const InverseBuilder&) = delete;
    InverseBuilder& operator=(const InverseBuilder&) = delete;
    ~InverseBuilder() = default;

    // Puts "entity" in front of the inverse lists of its targets, at the latest with vFlush. Throws MissingType
    // for an empty instance; whatever is thrown, earlier instances have been entered. The assertion "Not able to find
    // attribute" tells of an inverse attribute that names none of the type.
    void vAdd(Entity& entity);
    // Enters what is still on its way.
    void vFlush();

private:
    struct Reference {
        Entity* pTarget;
        Entity* pSource;
        const DataSizeEntity::Feed* pFeed;
    };
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

    void vAnnounce(Entity& entity);
    // Entering one reference needs two cache lines of the target, the second found through the first: its slot, for the
    // type and the inverse block, and then the list head in that block. In a large model both are misses of some
    // hundred cycles, and one after the other they would be nearly all of the completion. So a reference waits in
    // m_references while a prefetch fetches its slot, then in m_entries while another one fetches the list head: up to
    // sixteen are in flight in each. The queues are first in, first out, so the entries of one list keep their order.
    void vReference(const Reference& reference);
    void vTargetLook();
    void vNodeEnter();

    Pool& m_pool;
    PoolArena* m_pArena;
    Ring<Reference> m_references;   // the target's slot is being prefetched
    Ring<Entry> m_entries;          // the list head is being prefetched
};

}   // namespace oxa::ifc
