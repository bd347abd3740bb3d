// SPDX-License-Identifier: Apache-2.0
// IfcXmlIdTable: the instances that numbers of documents stand for, over all imports of a process.
//
// For      IfcXmlImport.cpp.
// Shape    numbers of a document are mostly dense: pages of 64, found by their number.
// Life     an entry is good while the memory of its model lives. What has died is thrown out when it is more than half.
// Threads  one import at a time.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Format/Ifc/Memory/SimplePool.h"

namespace oxa::ifc {
class Entity;
}   // namespace oxa::ifc

namespace oxa::ifc::xml {

class IdTable {
public:
    // Of the models of one import.
    using Life = std::uint32_t;

    // From here on entries belong to that memory.
    [[nodiscard]] Life lifeBegin(std::weak_ptr<const Pool> memory) {
        vTidy();
        // Numbers of lives without entries are used again; 0 is no life.
        for (std::size_t i = 1; i < m_lives.size(); ++i)
            if (!m_lives[i].iEntries && m_lives[i].memory.expired()) {
                m_lives[i].memory = std::move(memory);
                return static_cast<Life>(i);
            }
        if (m_lives.empty()) m_lives.emplace_back();
        m_lives.push_back({std::move(memory), 0});
        return static_cast<Life>(m_lives.size() - 1);
    }
    void vSet(std::uint64_t iId, Entity* pEntity, Life life) {
        Page& page = *pPageOf(iId, true);
        Life& entry = page.lives[iId % g_iPage];
        if (entry != life) {
            if (entry)
                --m_lives[entry].iEntries;
            else
                ++m_iEntries;
            ++m_lives[life].iEntries;
            entry = life;
        }
        page.entities[iId % g_iPage] = pEntity;
    }
    // Null for a number that stands for nothing, or for nothing any more.
    [[nodiscard]] Entity* pGet(std::uint64_t iId, Life now) {
        const Page* pPage = pPageOf(iId, false);
        const Life life = pPage ? pPage->lives[iId % g_iPage] : 0;
        if (!life || (life != now && m_lives[life].memory.expired())) return nullptr;
        return pPage->entities[iId % g_iPage];
    }

private:
    static constexpr std::uint64_t g_iPage = 64;
    struct Page {
        std::array<Entity*, g_iPage> entities{};
        std::array<Life, g_iPage> lives{};
    };
    struct Owner {
        std::weak_ptr<const Pool> memory;
        std::size_t iEntries = 0;
    };

    // The last one again and again, mostly.
    Page* pPageOf(std::uint64_t iId, bool boMake) {
        if (m_pNear && m_iNear == iId / g_iPage) return m_pNear;
        if (!boMake) {
            const auto found = m_pages.find(iId / g_iPage);
            if (found == m_pages.end()) return nullptr;
            m_pNear = &found->second;
        } else {
            m_pNear = &m_pages[iId / g_iPage];
        }
        m_iNear = iId / g_iPage;
        return m_pNear;
    }

    void vTidy() {
        std::size_t iDead = 0;
        for (const Owner& owner : m_lives)
            if (owner.memory.expired()) iDead += owner.iEntries;
        if (!iDead || iDead * 2 < m_iEntries) return;
        m_pNear = nullptr;
        for (auto place = m_pages.begin(); place != m_pages.end();) {
            bool boAny = false;
            for (Life& life : place->second.lives) {
                if (life && m_lives[life].memory.expired()) life = 0;
                boAny = boAny || life;
            }
            place = boAny ? std::next(place) : m_pages.erase(place);
        }
        for (Owner& owner : m_lives)
            if (owner.memory.expired()) owner = {};
        m_iEntries -= iDead;
    }

    std::unordered_map<std::uint64_t, Page> m_pages;   // by number of the first entry / 64
    std::vector<Owner> m_lives;                        // by their number
    std::size_t m_iEntries = 0;
    Page* m_pNear = nullptr;
    std::uint64_t m_iNear = 0;
};

}   // namespace oxa::ifc::xml
