// SPDX-License-Identifier: Apache-2.0
// MergeKeys: by what entities of two models are told to be the same, as hashes.
//
// Key      an entity with a GlobalId: its attributes but that. Others: their content. In both the lists that a merge
//          unites, and ends that can be without a value, do not count: parts of one model differ there.
// Threads  one.
#pragma once

#include <unordered_map>
#include <vector>

#include "Compare/Content.h"
#include "Convert/ModelGraph.h"

namespace oxa::convert {

class MergeKeys {
public:
    using Hash = compare::ContentHash;

    MergeKeys(const ifc::Data& data, const detail::RelationTable& table) : m_content(data, {}), m_table(table) {}

    // Null for an entity without one.
    [[nodiscard]] const Guid* pGuid(const ifc::Entity& entity) const noexcept { return m_content.pGuid(entity); }
    [[nodiscard]] Hash key(const ifc::Entity& entity);
    // Whether a merge unites some of the entity's lists.
    [[nodiscard]] bool boUnites(const ifc::Entity& entity) { return ofType(*entity.pSchemaEntity()).boUnites; }

private:
    struct TypeRow {
        std::vector<bool> counts;   // attributes
        bool boUnites = false;
    };
    const TypeRow& ofType(const ifc::def::schema::Entity& type);

    compare::Content m_content;
    const detail::RelationTable& m_table;
    std::unordered_map<const ifc::def::schema::Entity*, TypeRow> m_types;
};

}   // namespace oxa::convert
