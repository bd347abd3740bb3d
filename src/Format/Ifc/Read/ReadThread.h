// SPDX-License-Identifier: Apache-2.0
// ReadThread: what a parsing thread keeps from statement to statement.
//
// For      the scanner and the line workers, inside this folder.
// Threads  one each.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "Format/Ifc/Memory/PoolArena.h"
#include "Format/Ifc/Text/Keyword.h"
#include "schema/Schema.h"

namespace oxa::ifc {

class alignas(memory::g_iApart) StepReadThread {
public:
    explicit StepReadThread(Pool& pool) noexcept : m_arena(pool) {}

    // As Schema::pEntityFromName. A file names few types, mostly one of the last: those are found without hashing.
    //
    // A direct-mapped cache of 64 places. The place comes from the length, the last and the middle byte of the keyword,
    // which tell the types of a file apart well: IFCCARTESIANPOINT and IFCDIRECTION differ in the length, IFCWALL and
    // IFCSLAB in the other two. A wrong hit is found by comparing the name, and only replaces the entry.
    [[nodiscard]] const def::schema::Entity* pEntityFromKeyword(const def::schema::Schema& schema,
                                                                std::string_view keyword) {
        if (keyword.empty()) return nullptr;
        if (m_pSchema != &schema) {
            m_pSchema = &schema;
            m_types = {};
        }
        const auto cAt = [&](std::size_t i) {
            return static_cast<std::size_t>(static_cast<unsigned char>(keyword[i]));
        };
        const std::size_t iPlace = keyword.size() * 7 + cAt(keyword.size() - 1) + cAt(keyword.size() / 2) * 3;
        const def::schema::Entity*& pType = m_types[iPlace % m_types.size()];
        if (!pType || !details::boSameText(pType->sNameUpper, keyword))
            pType = schema.pEntityFromName(def::schema::ObjectName(keyword));
        return pType;
    }

    PoolArena m_arena;   // its share of the model's memory

private:
    const def::schema::Schema* m_pSchema = nullptr;
    std::array<const def::schema::Entity*, 64> m_types{};
};

}   // namespace oxa::ifc
