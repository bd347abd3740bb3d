// SPDX-License-Identifier: Apache-2.0
// SchemaNames: what the schemas that requirements may name have names for.
//
// For      the reader of requirements. A model's own schema is asked elsewhere.
// Life     made on first use, and kept for the life of the process.
// Threads  any number at once.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Check/Ids/TypedOccurrences.h"
#include "schema/Schema.h"

namespace oxa::ids::detail {

class SchemaNames {
public:
    /// By the name that requirements have for it; null for another one.
    [[nodiscard]] static const SchemaNames* pOf(std::string_view version);

    [[nodiscard]] const ifc::def::schema::Schema& schema() const noexcept { return *m_pSchema; }
    /// All entity types.
    [[nodiscard]] const std::vector<const ifc::def::schema::Entity*>& classes() const noexcept { return m_classes; }
    [[nodiscard]] const std::vector<TypedOccurrence>& typed() const noexcept { return m_typed; }
    /// Null where there is none.
    [[nodiscard]] const TypedOccurrence* pTyped(std::string_view upper) const noexcept;

    /// The attributes of that exact name that instances tell by themselves; null where there is none.
    [[nodiscard]] const std::vector<const ifc::def::schema::Attribute*>* pAttributes(std::string_view name) const;
    /// All their names, ascending; and those of inverse attributes.
    [[nodiscard]] const std::map<std::string_view, std::vector<const ifc::def::schema::Attribute*>>& attributes()
        const noexcept {
        return m_attributes;
    }
    [[nodiscard]] const std::set<std::string_view>& inverses() const noexcept { return m_inverses; }

    /// The type of a property's values by its name in upper case; null for what no property has.
    [[nodiscard]] const ifc::def::schema::Type* pDataType(std::string_view upper) const;

private:
    explicit SchemaNames(const ifc::def::schema::Schema& schema);

    const ifc::def::schema::Schema* m_pSchema;
    std::vector<const ifc::def::schema::Entity*> m_classes;
    std::vector<TypedOccurrence> m_typed;
    std::map<std::string_view, std::vector<const ifc::def::schema::Attribute*>> m_attributes;
    std::set<std::string_view> m_inverses;
};

/// The name of the attribute in which classes tell their predefined type.
inline constexpr std::string_view g_predefinedType = "PredefinedType";
/// An attribute by its exact name that instances tell by themselves, neither inverse nor derived; null where there is none.
[[nodiscard]] const ifc::def::schema::Attribute* pOwnAttribute(const ifc::def::schema::Entity& type,
                                                               std::string_view name);
/// Whether the class, or one above, says that the attribute is derived.
[[nodiscard]] bool boDerived(const ifc::def::schema::Entity& type, const ifc::def::schema::Attribute& attribute);

}   // namespace oxa::ids::detail
