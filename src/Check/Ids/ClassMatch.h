// SPDX-License-Identifier: Apache-2.0
// ClassMatch: whether an instance is of a class and a predefined type that a facet means. Subclasses are not meant.
//
// Threads  any number at once.
#pragma once

#include <string>
#include <vector>

#include "Check/Ids/ModelView.h"
#include "Check/Ids/Program.h"

namespace oxa::ids::detail {

class ClassMatch {
public:
    ClassMatch(const ModelView& view, const FacetProgram& facet);

    /// Whether an instance of that type may be one.
    [[nodiscard]] bool boMay(const schema::Entity& type) const noexcept {
        return m_types[type.iTypeOrdinal] != Answer::No;
    }
    [[nodiscard]] bool boClass(Entity& entity) const;
    [[nodiscard]] bool boPredefinedType(Entity& entity) const;
    [[nodiscard]] bool boMatches(Entity& entity) const { return boClass(entity) && boPredefinedType(entity); }

    /// Types of which instances may match.
    [[nodiscard]] std::vector<const schema::Entity*> types() const;

private:
    enum class Answer : std::uint8_t { No, Yes, ByType };

    const ModelView& m_view;
    const FacetProgram& m_facet;
    std::vector<Answer> m_types;                    // by ordinal
    std::vector<const TypedOccurrence*> m_wanted;   // of ByType
};

}   // namespace oxa::ids::detail
