// SPDX-License-Identifier: Apache-2.0
// Access: values of the model and of what an evaluation made: attributes of instances, items of aggregates.
//
// For      the handlers of nodes.
// Threads  as the evaluator that is handed in.
#pragma once

#include <cstddef>
#include <string_view>

#include "Check/Rules/Evaluator.h"
#include "Check/Rules/Value.h"
#include "Format/Ifc/IfcCellVisit.h"

namespace oxa::check::rules {

// The value of a cell of an attribute of that type.
[[nodiscard]] Value valueOfCell(Evaluator& evaluator, const ifc::AttributeBase& cell, ifc::CellClass eClass,
                                const schema::ObjectBase* pType);
// Of an instance by the name of an attribute; "?" for what has no such attribute.
[[nodiscard]] Value attributeOf(Evaluator& evaluator, const Value& instance, std::uint32_t iName);
// Over the table's entry for the type of the instance.
[[nodiscard]] Value valueOfAccess(Evaluator& evaluator, const Access& access, const Value& instance);

// Of an instance by the place among the explicit attributes of its type; where a subtype derives it, what that gives.
[[nodiscard]] Value explicitAt(Evaluator& evaluator, const Value& instance, std::size_t iPosition);

// The type of an instance; null for any other value.
[[nodiscard]] const schema::Entity* pEntityTypeOf(const Value& value) noexcept;
// Whether an instance is of the type or a subtype of it.
[[nodiscard]] bool boIsOf(const Value& value, const schema::Entity& type) noexcept;

// Aggregates of either sort.
[[nodiscard]] AggregateKind aggregateKind(const Value& aggregate) noexcept;
[[nodiscard]] std::size_t iItems(Evaluator& evaluator, const Value& aggregate);
[[nodiscard]] Value itemAt(Evaluator& evaluator, const Value& aggregate, std::size_t iItem);
// Declared bounds, where they are: an upper one of -1 is none.
struct Bounds {
    long long iLow = 0;
    long long iHigh = -1;
    bool boDeclared = false;
};
[[nodiscard]] Bounds boundsOf(const Value& aggregate) noexcept;
// The index of the first item.
[[nodiscard]] long long iFirstIndex(const Value& aggregate) noexcept;

// Calls each(item) for the items until it answers false.
template <class Each>
void vForEachItem(Evaluator& evaluator, const Value& aggregate, Each&& each) {
    if (aggregate.kind == Kind::Aggregate) {
        for (std::uint32_t i = 0; i < aggregate.pAggregate->iCount; ++i)
            if (!evaluator.boStep() || !each(aggregate.pAggregate->pItems[i])) return;
        return;
    }
    if (aggregate.pItems->m_eItemType == ifc::AttributeType::Entity) {
        const ifc::EntityList* pList = aggregate.pItems->pEntities();
        if (!pList) return;
        for (ifc::Entity* pEntity : *pList)
            if (!evaluator.boStep() || !each(pEntity && pEntity->pSchemaEntity() ? valueOf(pEntity) : Value())) return;
        return;
    }
    const std::size_t iCount = iItems(evaluator, aggregate);
    for (std::size_t i = 0; i < iCount; ++i)
        if (!evaluator.boStep() || !each(itemAt(evaluator, aggregate, i))) return;
}

// Counts what it costs to look at the whole of a text.
inline bool boStepText(Evaluator& evaluator, const Value& value) {
    constexpr std::size_t g_iBytesOfStep = 128;
    const std::size_t iBytes = value.kind == Kind::String ? value.text().size() : 0;
    return iBytes < g_iBytesOfStep || evaluator.boStep(iBytes / g_iBytesOfStep);
}
// Where texts are made of code points.
[[nodiscard]] std::size_t iCharacters(std::string_view text) noexcept;
// Characters iFirst to iLast, from 0, of UTF-8; nothing outside.
[[nodiscard]] std::string_view charactersOf(std::string_view text, std::size_t iFirst, std::size_t iLast) noexcept;

}   // namespace oxa::check::rules
