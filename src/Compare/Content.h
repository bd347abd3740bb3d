// SPDX-License-Identifier: Apache-2.0
// Content: what the entities of a model stand for, apart from their numbers.
//
// For      comparing two models: equal content has equal hashes, in any model of any schema.
// Content  an entity with a GlobalId is that GlobalId; any other is its type and its attributes by name, those without
//          a value aside, references followed. Items of a SET count in any order, -0 is 0, and a NaN is a NaN.
// Cycles   of entities without GlobalId: a member's content takes in what all members see within g_iRounds references,
//          or further than that where nothing new is to be seen. Going round once or twice is the same content.
// Hashes   have 128 bits and no key: enough against accidents, nothing against those who look for a collision.
// Cost     a few passes over the model; memory for a number a reference. Nothing recurses along references.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stop_token>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "platform/Export.h"
#include "platform/Id.h"

namespace oxa::compare {

struct OXA_COMPARE_API ContentHash {
    std::uint64_t iHigh = 0;
    std::uint64_t iLow = 0;

    friend auto operator<=>(const ContentHash&, const ContentHash&) noexcept = default;

    // Takes a value in; what was taken in before it matters.
    void vAdd(std::uint64_t iValue) noexcept;
    void vAdd(std::string_view text) noexcept;
    void vAdd(const ContentHash& hash) noexcept;
};

struct ContentHashHash {
    std::size_t operator()(const ContentHash& hash) const noexcept { return static_cast<std::size_t>(hash.iLow); }
};
using ContentCounts = std::unordered_map<ContentHash, std::size_t, ContentHashHash>;

class OXA_COMPARE_API Content {
public:
    using Index = std::uint32_t;

    // "withoutGuid": entities whose GlobalId is not that of the file. The model must stay as it is.
    Content(const ifc::Data& data, const std::unordered_set<const ifc::Entity*>& withoutGuid,
            std::stop_token stop = {});

    // Throws Stopped where somebody asked for the end. Every hash of an entity's attributes asks.
    void vStopCheck() const;

    // Entities with a type, in the order of the model.
    [[nodiscard]] std::size_t iCount() const noexcept { return m_entities.size(); }
    [[nodiscard]] const ifc::Entity& entity(Index i) const noexcept { return *m_entities[i]; }
    // The GlobalId; null for an entity that has none.
    [[nodiscard]] const Guid* pGuid(Index i) const noexcept { return m_guids[i] ? &*m_guids[i] : nullptr; }
    [[nodiscard]] const Guid* pGuid(const ifc::Entity& entity) const noexcept;

    [[nodiscard]] const ContentHash& content(Index i) const noexcept { return m_contents[i]; }
    // For a null reference and for an instance that the file does not define too.
    [[nodiscard]] ContentHash content(const ifc::Entity* pEntity) const noexcept { return hashOf(pEntity, m_contents); }
    // Of an entity's attributes, whether or not it has a GlobalId.
    [[nodiscard]] ContentHash attributes(Index i) const { return attributes(i, m_contents); }
    // Of one value. Without references all of them count as one and the same.
    [[nodiscard]] ContentHash value(const ifc::AttributeBase& cell, const ifc::def::schema::Attribute& attribute,
                                    bool boReferences) const;

    // Entities with a GlobalId, and what they lead to.
    [[nodiscard]] bool boReached(Index i) const noexcept { return m_reached[i]; }
    // True for an entity that is not reached, nor named by any other but those that it leads to itself: nothing else
    // tells of it.
    [[nodiscard]] bool boApart(Index i) const noexcept { return m_apart[i]; }
    // The content of an entity that is not reached, from which of what is reached only the types are taken.
    [[nodiscard]] const ContentHash& outside(Index i) const noexcept { return m_outsides[i]; }
    // Entities without GlobalId that are reached, and to which "i", which is not, or what it leads to refers; with
    // each reference.
    [[nodiscard]] std::vector<Index> borders(Index i) const;

private:
    using Contents = std::vector<ContentHash>;
    static constexpr int g_iRounds = 16;
    class HashVisitor;
    [[nodiscard]] ContentHash hashOf(const ifc::Entity* pEntity, const Contents& contents) const noexcept;

    class Components;

    void vTargetsGather();
    // The contents of all components for which "boWanted" says so of a member.
    template <class Wanted>
    void vContentsSettle(const Components& components, Contents& contents, Wanted&& boWanted) const;
    void vCycleSettle(const std::vector<Index>& members, Contents& contents) const;
    void vReachedSettle();
    void vApartSettle(const Components& components);
    [[nodiscard]] ContentHash attributes(Index i, const Contents& contents) const;

    std::stop_token m_stop;
    std::vector<const ifc::Entity*> m_entities;
    std::unordered_map<const ifc::Entity*, Index> m_indices;
    std::vector<std::optional<Guid>> m_guids;
    Contents m_contents;
    Contents m_outsides;
    std::vector<std::size_t> m_firstTarget;   // of each entity in m_targets; one more at the end
    std::vector<Index> m_targets;             // what the entities refer to, one after the other
    std::vector<bool> m_reached;
    std::vector<bool> m_apart;
};

}   // namespace oxa::compare
