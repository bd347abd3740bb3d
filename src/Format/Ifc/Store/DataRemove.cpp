// SPDX-License-Identifier: Apache-2.0
// Removal of entities from a container, with everything that names them.
//
// First it is settled what goes, by counting, while nothing is changed: one pass over the model notes who names the
// entities in question and the relationships among the rest; from there each end of a relationship counts down with the
// entities that go, so that no list is walked twice. Then cells, inverse lists and the container's own lists let go of
// them, which takes no memory: an exception leaves the model as it was.
#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "Format/Ifc/Cells/CellWalk.h"
#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/Store/ReferenceTaker.h"

namespace oxa::ifc {

namespace {

using def::schema::DataKind;
using def::schema::DataTypeBase;
using def::schema::ObjectBase;

// The fewest items that an aggregate may have, 0 where the bounds say nothing.
std::size_t iFewestItems(const ObjectBase* pObject) {
    const auto* pAggregate = dynamic_cast<const def::schema::DataTypeAggregate*>(def::schema::pDataTypeOf(pObject));
    const std::string_view bounds = pAggregate ? std::string_view(pAggregate->sBounds) : std::string_view();
    long long iLow = 0;
    if (!bounds.starts_with('[')) return 0;
    const char* const pEnd = bounds.data() + bounds.size();
    const auto low = std::from_chars(bounds.data() + 1, pEnd, iLow);
    if (low.ec != std::errc()) return 0;
    if (pAggregate->kind != DataKind::Array) return iLow < 0 ? 0 : static_cast<std::size_t>(iLow);
    long long iHigh = 0;   // an array has all its items, and indices from any number on
    if (low.ptr == pEnd || std::from_chars(low.ptr + 1, pEnd, iHigh).ec != std::errc()) return 0;
    return iHigh < iLow ? 0 : static_cast<std::size_t>(iHigh - iLow) + 1;
}

// Whether a cell of that type can hold a reference at all.
bool boMayRefer(const ObjectBase* pObject) {
    while (const DataTypeBase* pDataType = def::schema::pDataTypeOf(pObject)) {
        if (pDataType->kind == DataKind::Select) return true;
        pObject = def::schema::boIsAggregate(pDataType->kind) ? pDataType->pElementGet() : nullptr;
    }
    return def::schema::pAsEntity(pObject) != nullptr;
}

// The type, of the supertypes and itself, that makes a type a relationship; null where there is none.
const def::schema::Entity* pRelationshipOf(const def::schema::Entity& schema) {
    const auto boEnd = [](const def::schema::Attribute& attribute) {
        return !attribute.boOptional && !attribute.inverses.empty();
    };
    const def::schema::Entity* pFirst = nullptr;
    for (const def::schema::Entity* pType = &schema; pType; pType = pType->pParent)
        if (std::ranges::any_of(pType->ownAttributes, boEnd)) pFirst = pType;
    return pFirst && pFirst->allInverseAttributes().empty() ? pFirst : nullptr;
}

// The items of a list that count; 1 for all else.
std::size_t iItemsOf(const AttributeBase& cell, CellClass eClass) {
    if (eClass != CellClass::List) return 1;
    const auto iSize = [](const auto* pItems) { return pItems ? pItems->size() : 0; };
    return visitItems(static_cast<const AttributeList&>(cell),
                      Overloads{
                          [](const EntityList* pHead) {
                              std::size_t iCount = 0;
                              if (pHead)
                                  for (const Entity* pEntity : *pHead) iCount += pEntity ? 1 : 0;
                              return iCount;
                          },
                          [&](const Array<AttributeSelect>* pItems) { return iSize(pItems); },
                          [&](const Array<AttributeList>* pItems) { return iSize(pItems); },
                          [](AnyItems) { return std::size_t{0}; },
                      });
}

template <class Visit>
void vForEachReference(const AttributeBase& cell, CellClass eClass, Visit&& visit) {
    vForEachEntity<Rows::Walked>(cell, eClass, [&visit](Entity* pEntity) {
        if (pEntity) visit(pEntity);
    });
}

// What counts down: the items, or the references where some of the items hold several.
std::size_t iCountOf(const AttributeBase& cell, CellClass eClass) {
    std::size_t iReferences = 0;
    vForEachReference(cell, eClass, [&iReferences](const Entity*) { ++iReferences; });
    return std::max(iReferences, iItemsOf(cell, eClass));
}

}   // namespace

// A relationship goes when one of its mandatory ends has lost too much, and its going may take others along. Walking
// each list again whenever one of its entities goes would be quadratic for a relationship with many members, which is
// what a container or a type relation is. So the first pass notes, for everything that may go, who refers to it from
// which attribute, as chains through one vector. Each end then has a count of what is left, made when it is first
// touched; an entity that goes counts down the ends of its chain, and an end that falls below its minimum sends its
// relationship after. Each reference is visited once.
class Data::Remover {
public:
    explicit Remover(Data& data) noexcept : m_data(data) {}

    EntityRemoval remove(const std::vector<Entity*>& entities) {
        m_asked.insert(entities.begin(), entities.end());
        m_asked.erase(nullptr);
        if (m_asked.empty()) return {};
        for (Entity* pEntity : m_data.m_entities) vNote(*pEntity);
        for (Entity* pEntity : entities)
            if (m_here.contains(pEntity)) vGoes(*pEntity);
        for (std::size_t i = 0; i < m_removal.removed.size(); ++i) vCountDown(*m_removal.removed[i]);
        if (m_removal.removed.empty()) return {};
        m_removal.incomplete.reserve(m_referrers.size());
        vTakeOut();
        return std::move(m_removal);
    }

private:
    // An attribute that may hold references.
    struct End {
        std::size_t iCell;
        CellClass eClass;
        bool boOptional;
        bool boRelates;        // a mandatory end of a relationship
        std::size_t iFewest;   // items, of a list
    };
    struct TypeEnds {
        std::vector<End> ends;
        bool boRelationship = false;
    };
    struct Referrer {
        Entity* pEntity;
        const TypeEnds* pType;
        bool boAffected = false;
    };
    // One reference to an entity that may go; those to the same one are a chain.
    struct Reference {
        std::size_t iReferrer;
        std::size_t iEnd;
        std::size_t iNext;
    };
    static constexpr std::size_t g_iNone = std::numeric_limits<std::size_t>::max();

    const TypeEnds& endsOf(const def::schema::Entity& schema) {
        const auto [place, boNew] = m_types.try_emplace(&schema);
        TypeEnds& type = place->second;
        if (!boNew) return type;
        const def::schema::Entity* pRelationship = pRelationshipOf(schema);
        type.boRelationship = pRelationship != nullptr;
        const auto& cells = Entity::getDataSize(schema).cells;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            const def::schema::Attribute& attribute = *cells[i].pAttribute;
            const ObjectBase* pObject = attribute.pType();
            if (cells[i].eClass >= CellClass::Unresolved || !boMayRefer(pObject)) continue;
            const bool boRelates =
                pRelationship && !attribute.boOptional && def::schema::boIsSubtype(attribute.pOwner, pRelationship);
            type.ends.push_back({i, cells[i].eClass, attribute.boOptional, boRelates, iFewestItems(pObject)});
        }
        return type;
    }

    [[nodiscard]] static AttributeBase& cellOf(const Entity& entity, const End& end) {
        return *entity.pAttributeFromIndex(static_cast<unsigned>(end.iCell)).second;
    }

    // Notes whom of those in question an entity names.
    void vNote(Entity& entity) {
        if (!entity.pSchemaEntity()) return;
        if (m_asked.contains(&entity)) m_here.insert(&entity);
        if (!entity.m_pAttributes) return;
        const TypeEnds& type = endsOf(entity.schemaEntity());
        std::size_t iReferrer = g_iNone;
        for (std::size_t iEnd = 0; iEnd < type.ends.size(); ++iEnd)
            vForEachReference(cellOf(entity, type.ends[iEnd]), type.ends[iEnd].eClass, [&](Entity* pTarget) {
                if (!pTarget->pSchemaEntity()) return;
                if (!m_asked.contains(pTarget) && !endsOf(pTarget->schemaEntity()).boRelationship) return;
                if (iReferrer == g_iNone) iReferrer = iReferrerOf(entity, type);
                if (iReferrer == m_referrers.size()) return;   // met before: the list has it twice
                Reference reference{iReferrer, iEnd, g_iNone};
                const auto [first, boFirst] = m_firstOf.try_emplace(pTarget, m_references.size());
                if (!boFirst) reference.iNext = std::exchange(first->second, m_references.size());
                m_references.push_back(reference);
            });
    }

    // A new place among the referrers; their count for an entity that has one.
    std::size_t iReferrerOf(Entity& entity, const TypeEnds& type) {
        if (!m_known.insert(&entity).second) return m_referrers.size();
        m_referrers.push_back({&entity, &type});
        return m_referrers.size() - 1;
    }

    void vGoes(Entity& entity) {
        if (m_gone.insert(&entity).second) m_removal.removed.push_back(&entity);
    }

    // The ends of relationships that name the entity have one less.
    void vCountDown(const Entity& entity) {
        const auto first = m_firstOf.find(&entity);
        for (std::size_t i = first == m_firstOf.end() ? g_iNone : first->second; i != g_iNone;
             i = m_references[i].iNext) {
            Referrer& referrer = m_referrers[m_references[i].iReferrer];
            referrer.boAffected = true;
            const End& end = referrer.pType->ends[m_references[i].iEnd];
            if (!end.boRelates || m_gone.contains(referrer.pEntity)) continue;
            AttributeBase& cell = cellOf(*referrer.pEntity, end);
            const auto [left, boNew] = m_left.try_emplace(&cell, 0);
            if (boNew) left->second = iCountOf(cell, end.eClass);
            --left->second;   // its references are counted, each of them goes once
            if (left->second < std::max(end.iFewest, std::size_t{1})) vGoes(*referrer.pEntity);
        }
    }

    // Only here the model changes. What this needs in memory was reserved before, and everything else shortens lists in
    // place, so nothing can throw half-way.
    void vTakeOut() noexcept {
        const auto boGone = [this](const Entity* pEntity) { return m_gone.contains(pEntity); };
        for (const Referrer& referrer : m_referrers)
            if (referrer.boAffected && !boGone(referrer.pEntity)) vTakeFrom(referrer, boGone);
        std::erase_if(m_data.m_entities, boGone);
        std::erase_if(m_data.m_pendingGuid, boGone);
        for (Entity* pEntity : m_data.m_entities) vInverseTakeFrom(*pEntity, boGone);
        for (Entity* pEntity : m_removal.removed) {
            vInverseTakeFrom(*pEntity, [](const Entity*) { return true; });
            const AttributeBase* pGuid = pEntity->m_pAttributes ? pEntity->find(g_globalId).pCell : nullptr;
            if (pGuid && pGuid->m_boGuid) {
                const Guid guid = static_cast<const AttributeGuid*>(pGuid)->m_value;
                if (m_data.m_guidEntityMap.pFind(guid) == pEntity) m_data.m_guidEntityMap.boErase(guid);
            }
            if (pEntity == m_data.pProject()) m_data.m_pProject.store(nullptr, std::memory_order_relaxed);
        }
    }

    // Out of the cells of an entity that stays. It is told as incomplete when a mandatory attribute has lost its value,
    // or a list has fewer items than its bounds ask for.
    template <class Gone>
    void vTakeFrom(const Referrer& referrer, const Gone& boGone) {
        bool boLacks = false;
        for (const End& end : referrer.pType->ends) {
            AttributeBase& cell = cellOf(*referrer.pEntity, end);
            if (!ReferenceTaker(boGone).boCell(cell, end.eClass)) continue;
            const std::size_t iLeft = cell.boHasValue() ? iItemsOf(cell, end.eClass) : 0;
            if (end.boOptional && iLeft == 0) cell.m_boUndefined = true;
            if (cell.boHasValue() ? end.eClass == CellClass::List && iLeft < end.iFewest : !end.boOptional)
                boLacks = true;
        }
        if (boLacks) m_removal.incomplete.push_back(referrer.pEntity);
    }

    template <class Gone>
    static void vInverseTakeFrom(Entity& entity, const Gone& boGone) {
        if (!entity.pSchemaEntity() || !entity.m_ppAttributesInverse) return;
        const std::size_t iCount = entity.schemaEntity().allInverseAttributes().size();
        for (std::size_t i = 0; i < iCount; ++i) {
            EntityList* pHead = entity.pInverseEntries()[i];
            if (boListRemoveIf(pHead, boGone)) entity.pInverseEntries()[i] = pHead;
        }
    }

    static constexpr def::schema::AttributeName g_globalId{"GlobalId"};

    Data& m_data;
    EntityRemoval m_removal;
    std::unordered_set<const Entity*> m_asked;
    std::unordered_set<const Entity*> m_here;   // those of them that the list has
    std::unordered_set<const Entity*> m_gone;
    std::unordered_map<const def::schema::Entity*, TypeEnds> m_types;
    std::vector<Referrer> m_referrers;
    std::unordered_set<const Entity*> m_known;   // all of m_referrers
    std::vector<Reference> m_references;
    std::unordered_map<const Entity*, std::size_t> m_firstOf;       // of its references
    std::unordered_map<const AttributeBase*, std::size_t> m_left;   // items of an end that stay
};

EntityRemoval Data::entitiesRemove(const std::vector<Entity*>& entities) { return Remover(*this).remove(entities); }

bool Data::boEntityRemove(Entity* pEntity) { return !entitiesRemove({pEntity}).removed.empty(); }

}   // namespace oxa::ifc
