// SPDX-License-Identifier: Apache-2.0
#include "Check/Ids/ClassMatch.h"

#include <algorithm>

namespace oxa::ids::detail {

ClassMatch::ClassMatch(const ModelView& view, const FacetProgram& facet)
    : m_view(view),
      m_facet(facet),
      m_types(view.iOrdinals(), Answer::No) {
    const Matcher& names = facet.entity;
    for (const TypedOccurrence& one : view.typed()) {
        if (!names.boText(one.sNameUpper)) continue;
        m_wanted.push_back(&one);
        for (std::size_t i = one.pOccurrence->iTypeOrdinal; i <= one.pOccurrence->iTypeOrdinalLast; ++i)
            m_types[i] = Answer::ByType;
    }
    const Condition* pCondition = names.pCondition();
    if (pCondition && pCondition->simple) {   // most are; a look instead of one at each class
        const auto* pType = schema::pAsEntity(view.schema().pObjectFromName(*pCondition->simple));
        if (pType && names.boText(pType->sNameUpper)) m_types[pType->iTypeOrdinal] = Answer::Yes;
        return;
    }
    for (const schema::Schema::Record& record : view.schema().objects)
        if (const auto* pType = schema::pAsEntity(record.pObject); pType && names.boText(pType->sNameUpper))
            m_types[pType->iTypeOrdinal] = Answer::Yes;
}

bool ClassMatch::boClass(Entity& entity) const {
    const schema::Entity& type = entity.schemaEntity();
    const Answer eAnswer = m_types[type.iTypeOrdinal];
    if (eAnswer != Answer::ByType) return eAnswer == Answer::Yes;
    const Entity* pOfType = m_view.walk().pType(entity);
    return pOfType && std::ranges::any_of(m_wanted, [&](const TypedOccurrence* pOne) {
               return pOfType->pSchemaEntity() == pOne->pType && schema::boIsSubtype(&type, pOne->pOccurrence);
           });
}

bool ClassMatch::boPredefinedType(Entity& entity) const {
    if (m_facet.predefinedType.boAny()) return true;
    const std::vector<std::string> names = m_view.predefinedTypes(entity);
    return std::ranges::any_of(names, [&](const std::string& sName) { return m_facet.predefinedType.boText(sName); });
}

std::vector<const schema::Entity*> ClassMatch::types() const {
    std::vector<const schema::Entity*> found;
    for (const schema::Schema::Record& record : m_view.schema().objects)
        if (const auto* pType = schema::pAsEntity(record.pObject); pType && boMay(*pType)) found.push_back(pType);
    return found;
}

}   // namespace oxa::ids::detail
