// SPDX-License-Identifier: Apache-2.0
// Context: one model as the makers of rows see it, with what they look up again and again.
//
// For      the makers of rows; one Context serves all tables of one model.
// Threads  one: it remembers.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Format/Ifc/IfcCellVisit.h"
#include "Model/Model.h"
#include "Model/PropertyReader.h"
#include "Model/RelationWalk.h"
#include "Model/Units.h"
#include "Tables/Tables.h"

namespace oxa::tables::detail {

namespace schema = ifc::def::schema;

// Positions of attributes by name, looked up once a type.
class AttributePlaces {
public:
    explicit AttributePlaces(std::vector<std::string_view> names) : m_names(std::move(names)) {}

    static constexpr int g_iNone = -1;
    // A position a name; g_iNone for what the type does not have.
    [[nodiscard]] const std::vector<int>& of(const schema::Entity& type);

private:
    std::vector<std::string_view> m_names;
    std::unordered_map<const schema::Entity*, std::vector<int>> m_places;
};

// Where an element stands.
struct Placement {
    ifc::Entity* pParent = nullptr;
    ifc::Entity* pContainer = nullptr;
    ifc::Entity* pStorey = nullptr;
};

class Context {
public:
    // What the model holds must stay; the object itself may be moved.
    Context(const oxa::Model& model, FileInfo file);
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;
    ~Context() = default;

    [[nodiscard]] oxa::detail::ModelState& state() const noexcept { return m_state; }
    [[nodiscard]] const FileInfo& file() const noexcept { return m_file; }
    [[nodiscard]] const oxa::detail::RelationWalk& walk() const noexcept { return m_walk; }
    [[nodiscard]] const oxa::detail::RelationTable& table() const noexcept { return m_walk.table(); }
    [[nodiscard]] const oxa::detail::PropertyReader& properties() const noexcept { return m_properties; }
    [[nodiscard]] const oxa::Units& units() const noexcept { return m_units; }

    [[nodiscard]] std::int64_t iNumber(const ifc::Entity& entity) const {
        return static_cast<std::int64_t>(m_state.iNumberOf(entity));
    }
    // All of a class and its subtypes, by number; none where the schema has no such class.
    [[nodiscard]] std::vector<ifc::Entity*> all(const schema::Entity* pType) const;
    [[nodiscard]] std::vector<ifc::Entity*> all(std::initializer_list<std::string_view> classes) const;

    // What container(), storey() and parent() of Relations.h say. What stands below one parent is asked for once.
    [[nodiscard]] Placement placement(const ifc::Entity& entity);
    [[nodiscard]] ifc::Entity* pType(const ifc::Entity& entity) const { return m_walk.pType(entity); }

    // The unit of a property's value, at "place" of "entity": of its own where "pOwn" names one, else as the project
    // assigns it. Null where there is none.
    [[nodiscard]] const oxa::Unit* pUnit(const ifc::Entity* pOwn, const schema::ObjectBase* pValueType,
                                         ifc::Entity& entity, unsigned iPlace);

private:
    [[nodiscard]] Placement above(const ifc::Entity& parent, int iStep);

    oxa::detail::ModelState& m_state;
    FileInfo m_file;
    oxa::detail::RelationWalk m_walk;
    oxa::detail::PropertyReader m_properties;
    oxa::Units m_units;
    std::unordered_map<const ifc::Entity*, Placement> m_below;   // what is true of all parts of a whole
    std::unordered_map<const ifc::Entity*, std::optional<oxa::Unit>> m_ownUnits;
    std::unordered_map<const schema::ObjectBase*, const oxa::Unit*> m_unitsByType;
};

// The cell of an attribute, with its type.
struct CellPlace {
    const schema::Attribute* pAttribute = nullptr;
    const ifc::AttributeBase* pCell = nullptr;

    [[nodiscard]] explicit operator bool() const noexcept { return pCell != nullptr; }
};
[[nodiscard]] inline CellPlace cellAt(const ifc::Entity& entity, int iPlace) {
    if (iPlace < 0) return {};
    const auto [pAttribute, pCell] = entity.pAttributeFromIndex(static_cast<unsigned>(iPlace));
    return {pAttribute, pCell};
}
// A text or an enumerator; null where there is none.
[[nodiscard]] const char* pTextAt(const ifc::Entity& entity, int iPlace);
// The GlobalId, 22 characters; empty for a class that has none.
[[nodiscard]] std::string sGuidOf(const ifc::Entity& entity);

}   // namespace oxa::tables::detail
