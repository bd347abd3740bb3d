// SPDX-License-Identifier: Apache-2.0
// ConditionReader: what a parameter of a facet may be, from the XML, with what is wrong with it.
//
// For      the reader of requirements.
// Threads  one.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "Check/Ids.h"
#include "Check/Ids/Document.h"
#include "Check/Ids/Faults.h"
#include "Check/Ids/Forms.h"
#include "Check/Ids/Matcher.h"

namespace oxa::ids::detail {

class ConditionReader {
public:
    ConditionReader(Faults& faults, Patterns& patterns) : m_faults(faults), m_patterns(patterns) {}

    /// Of the child of that name; empty where there is none.
    [[nodiscard]] std::optional<Condition> read(const Node& facet, std::string_view child);
    /// A condition on texts: names of sets, systems and so on. What is empty means nothing.
    void vCheckText(const Node& facet, std::string_view child, const Condition& condition);
    /// A condition on values that have one of these forms; "what" is told of them, as in "IfcReal".
    void vCheckValue(const Node& facet, const Condition& condition, std::span<const Base> bases, std::string_view what);

private:
    void vRestriction(const Node& restriction, Condition& condition);
    void vFacet(const Node& facet, Condition& condition);
    void vCheckRestriction(const Node& restriction, const Condition& condition, Base eBase);
    void vCheckRange(const Node& restriction, const Condition& condition, Base eBase);

    Faults& m_faults;
    Patterns& m_patterns;
};

}   // namespace oxa::ids::detail
