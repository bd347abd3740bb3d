// SPDX-License-Identifier: Apache-2.0
// ReadThread: what a parsing thread keeps from statement to statement.
//
// For      the scanner and the line workers, inside this folder.
// Threads  one each.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Format/Ifc/Memory/PoolArena.h"
#include "Format/Ifc/Store/EntityTable.h"
#include "Format/Ifc/Store/NumberSet.h"
#include "Format/Ifc/Text/Keyword.h"
#include "platform/Compiler.h"
#include "schema/Schema.h"

namespace oxa::ifc {

class alignas(memory::g_iApart) StepReadThread {
public:
    explicit StepReadThread(Pool& pool) noexcept : m_arena(pool) {}

    // As Schema::pEntityFromName. A file names few types, mostly one of the last: those are found without hashing.
    [[nodiscard]] const def::schema::Entity* pEntityFromKeyword(const def::schema::Schema& schema,
                                                                std::string_view keyword) {
        if (keyword.empty()) return nullptr;
        vSchema(schema);
        const def::schema::Entity*& pType = m_types[iPlace(keyword)];
        if (!pType || !details::boSameText(pType->sNameUpper, keyword))
            pType = schema.pEntityFromName(def::schema::ObjectName(keyword));
        return pType;
    }
    // The type whose keyword stands at p with "(" behind it, where it is the one that followed the last type before, too, as
    // the instances of a model mostly do: faces their bounds, points points. Null where it is another one.
    [[nodiscard]] const def::schema::Entity* pEntityExpected(const def::schema::Schema& schema, const char* p,
                                                             const char* last) noexcept {
        const def::schema::Entity* const pType = m_following[m_iLast];
        if (!pType || m_pSchema != &schema) return nullptr;
        const std::string& sName = pType->sNameUpper;
        if (static_cast<std::size_t>(last - p) <= sName.size() || p[sName.size()] != '(' ||
            !details::boSameText(sName, {p, sName.size()}))
            return nullptr;
        m_iLast = pType->iTypeOrdinal % g_iPlaces;
        return pType;
    }
    // Of the same schema: this one has followed instead.
    void vEntityMet(const def::schema::Entity& type) noexcept {
        m_following[m_iLast] = &type;
        m_iLast = type.iTypeOrdinal % g_iPlaces;
    }
    // As Schema::pTypeFromName, for a value inside of a select. No name holds a comma, and looking for one ends with the
    // item: hashing all the text up to a parenthesis far away would make a long list of bare values quadratic.
    [[nodiscard]] const def::schema::Type* pTypeFromKeyword(const def::schema::Schema& schema,
                                                            std::string_view keyword) {
        if (keyword.empty()) return nullptr;
        vSchema(schema);
        const def::schema::Type*& pType = m_valueTypes[iPlace(keyword)];
        if (pType && details::boSameText(pType->sNameUpper, keyword)) return pType;
        if (keyword.find(',') != std::string_view::npos) return nullptr;
        pType = schema.pTypeFromName(def::schema::ObjectName(keyword));
        return pType;
    }
    // The enumerator of that text, without its dots; null where the enumeration has none.
    [[nodiscard]] const std::string* pEnumerator(const def::schema::DataTypeEnum& type, std::string_view text) {
        if (text.empty()) return nullptr;
        Enumerator& found = m_enumerators[(iPlace(text) + type.uNameHash) % g_iPlaces];
        if (found.pType == &type && details::boSameText(*found.pText, text)) return found.pText;
        const auto item = type.items.find(text);
        if (item == type.items.end()) return nullptr;
        found = {&type, *item};
        return *item;
    }

    // The place of a number that a statement names. That it does is kept here, for the completion: to note it at that place
    // would be a cache line to fetch, mostly from another processor. Null where it can't be kept.
    [[nodiscard]] Entity* pNamed(ReadInfoCommon& info, Data& data, std::uint32_t iNumber) {
        const std::size_t iChunk = iNumber / details::NumberSet::g_iNumbers;
        const std::size_t i = iNumber % details::NumberSet::g_iNumbers;
        if (iChunk >= m_places.size()) return nullptr;
        const NamedChunk& chunk = m_places[iChunk];
        if (!chunk.pBits && !boPlaceFind(info, data, iChunk)) return nullptr;
        (*chunk.pBits)[i / 64] |= std::uint64_t{1} << i % 64;
        return &chunk.pSlots[i].entity;
    }
    // Hands what was kept over, when nothing is read any more.
    void vNamedInto(details::NumberSet& all) noexcept { static_cast<void>(all.boMerge(m_named)); }

    PoolArena m_arena;   // its share of the model's memory

private:
    // Direct-mapped caches. The place comes from the length, the last and the middle byte of the text, which tell the
    // types of a file apart well: IFCCARTESIANPOINT and IFCDIRECTION differ in the length, IFCWALL and IFCSLAB in the
    // other two. A wrong hit is found by comparing the text, and only replaces the entry.
    static constexpr std::size_t g_iPlaces = 64;
    static std::size_t iPlace(std::string_view text) noexcept {
        const auto cAt = [&](std::size_t i) { return static_cast<std::size_t>(static_cast<unsigned char>(text[i])); };
        return (text.size() * 7 + cAt(text.size() - 1) + cAt(text.size() / 2) * 3) % g_iPlaces;
    }

    struct NamedChunk {
        EntitySlot* pSlots = nullptr;
        details::NumberSet::Chunk* pBits = nullptr;   // null: neither is known yet
    };
    OXA_NEVER_INLINE bool boPlaceFind(ReadInfoCommon& info, Data& data, std::size_t iChunk) {
        static_assert(details::NumberSet::g_iNumbers == ReadInfoCommon::g_iSlotsPerChunk);
        details::NumberSet::Chunk* const pBits = m_named.pMade(iChunk);
        if (!pBits) return false;
        m_places[iChunk] = {info.pSlots(data, iChunk), pBits};
        return true;
    }

    void vSchema(const def::schema::Schema& schema) noexcept {
        if (m_pSchema == &schema) return;
        m_pSchema = &schema;
        m_types = {};
        m_following = {};
        m_valueTypes = {};
        m_enumerators = {};
    }

    struct Enumerator {
        const def::schema::DataTypeEnum* pType = nullptr;
        const std::string* pText = nullptr;
    };

    details::NumberSet m_named;
    std::array<NamedChunk, ReadInfoCommon::g_iFirstChunks> m_places{};   // of m_named
    const def::schema::Schema* m_pSchema = nullptr;
    std::array<const def::schema::Entity*, g_iPlaces> m_types{};
    std::array<const def::schema::Entity*, g_iPlaces> m_following{};   // by the type before
    std::size_t m_iLast = 0;                                           // place of the last one in it
    std::array<const def::schema::Type*, g_iPlaces> m_valueTypes{};
    std::array<Enumerator, g_iPlaces> m_enumerators{};
};

}   // namespace oxa::ifc
