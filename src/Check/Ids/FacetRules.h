// SPDX-License-Identifier: Apache-2.0
// FacetRules: what the standard says of facets beyond the schema of its files: names have to be those of the schemas that a
// specification is for, values have to have the forms of their types, and what means nothing is told.
//
// For      the reader of requirements.
// Threads  one.
#pragma once

#include <string>
#include <vector>

#include "Check/Ids.h"
#include "Check/Ids/ConditionReader.h"
#include "Check/Ids/SchemaNames.h"

namespace oxa::ids::detail {

class FacetRules {
public:
    FacetRules(Faults& faults, Patterns& patterns, ConditionReader& conditions)
        : m_faults(faults),
          m_patterns(patterns),
          m_conditions(conditions) {}

    /// For the next facets.
    void vBegin(const Specification& specification);
    /// One facet; that of the class in an applicability comes before those whose attributes it decides on.
    void vCheck(const Facet& facet, const Node& node, bool boRequirement);

private:
    // The classes of one schema that a condition means.
    struct Classes {
        const SchemaNames* pNames;
        std::vector<const ifc::def::schema::Entity*> found;
        std::vector<const TypedOccurrence*> typed;
        [[nodiscard]] bool boNone() const noexcept { return found.empty() && typed.empty(); }
    };
    // "; did you mean X?", or nothing.
    template <class Names>
    [[nodiscard]] std::string near(std::string_view wanted, const Names& names);
    [[nodiscard]] Classes classesOf(const SchemaNames& names, const Condition& condition);
    std::vector<Classes> checkClass(const Node& node, const Condition& condition);
    void vCheckName(const Node& node, const std::string& sName, const std::vector<Classes>& classes, bool boAll);
    void vCheckPredefinedType(const Node& node, const Condition& condition, const std::vector<Classes>& classes);
    void vCheckCase(const Node& place, const std::string& sName,
                    const std::vector<const ifc::def::schema::DataTypeEnum*>& types);
    void vEntity(const Facet& facet, const Node& node, bool boApplicability);
    void vAttribute(const Facet& facet, const Node& node);
    static bool boOfAny(const SchemaNames& names, const Condition& condition, const Matcher& matcher,
                        std::vector<const ifc::def::schema::Attribute*>& attributes);
    static bool boOfClasses(const Classes& classes, const Matcher& matcher,
                            std::vector<const ifc::def::schema::Attribute*>& attributes);
    void vUnknownAttribute(const SchemaNames& names, const Facet& facet, const Node& node, bool boInverse);
    void vAttributeValue(const Facet& facet, const Node& node,
                         const std::vector<const ifc::def::schema::Attribute*>& attributes);
    void vProperty(const Facet& facet, const Node& node);
    void vNeverFails(const Facet& facet, const Node& node);

    Faults& m_faults;
    Patterns& m_patterns;
    ConditionReader& m_conditions;
    std::vector<const SchemaNames*> m_schemas;   // of the specification
    std::vector<Classes> m_applicable;           // one a schema; empty where nothing limits them
    std::size_t m_iHints = 0;
};

}   // namespace oxa::ids::detail
