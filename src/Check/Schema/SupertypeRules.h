// SPDX-License-Identifier: Apache-2.0
// SupertypeRules: which subtypes of an entity one instance may be of together (ISO 10303-11, 9.2.5: ONEOF, AND, ANDOR).
//
// For      SchemaLevel, for the complex instances of a file.
// Source   the text of the schema, heads of entities and SUBTYPE_CONSTRAINTs; in all built-in schemas each supertype has its subtypes in one ONEOF.
// Threads  one.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "schema/Schema.h"

namespace oxa::check {

class SupertypeRules {
public:
    // The schema has to outlive this.
    explicit SupertypeRules(const ifc::def::SchemaPset& schema);

    // Whether one instance may be of all these direct subtypes of the entity, and of no other one.
    [[nodiscard]] bool boTogether(const ifc::def::schema::Entity& supertype,
                                  const std::vector<const ifc::def::schema::Entity*>& subtypes) const;

private:
    // "a ANDOR b" and so on; a name where there are no operands.
    struct Expression {
        enum class Kind : std::uint8_t { Name, OneOf, And, AndOr };
        Kind kind = Kind::Name;
        std::string sName;   // in capitals
        std::vector<Expression> operands;
    };
    using Names = std::vector<std::string>;
    using Constraints = std::map<std::string, std::vector<Expression>, std::less<>>;   // by supertype, in capitals
    class Reader;

    [[nodiscard]] static bool boNames(const Expression& expression, const std::string& sName);
    [[nodiscard]] static bool boHolds(const Expression& expression, const Names& names);

    bool m_boAllOneOf;
    Constraints m_constraints;
};

}   // namespace oxa::check
