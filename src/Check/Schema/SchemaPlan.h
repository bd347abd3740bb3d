// SPDX-License-Identifier: Apache-2.0
// SchemaPlan: a schema in the form in which statements are held to it: by number, without names, nothing to be looked for.
//
// For      SchemaLevel, one plan a check. Entities and types are compiled when a file first has them.
// Owner    of all that it hands out; points into the schema, which has to outlive it.
// Threads  one.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "schema/Schema.h"

namespace oxa::check {

inline constexpr std::uint64_t g_iUnbounded = std::numeric_limits<std::uint64_t>::max();

enum class ValueKind : std::uint8_t {
    Real,
    Integer,
    Number,
    Boolean,
    Logical,
    String,
    Binary,
    Enumeration,
    Entity,
    Select,
    Aggregate,
    Unknown,   // of a schema at fault: anything will do
};

struct SelectPlan;

// How a value of a type is written.
struct ValueType {
    ValueKind kind = ValueKind::Unknown;
    bool boFixed = false;       // of String and Binary: the width is that of every value
    bool boUnique = false;      // of Aggregate: no two items are equal
    bool boOptional = false;    // of Aggregate: an item may be unset
    bool boGlobalId = false;    // of String: 22 characters that stand for 128 bits (ISO 16739, IfcGloballyUniqueId)
    std::uint32_t iWidth = 0;   // of String and Binary, at the most; 0 for any
    std::uint64_t iLow = 0;     // of Aggregate: the number of items
    std::uint64_t iHigh = g_iUnbounded;
    const ValueType* pItem = nullptr;                               // of Aggregate
    const ifc::def::schema::DataTypeEnum* pEnumeration = nullptr;   // of Enumeration
    const ifc::def::schema::Entity* pEntity = nullptr;              // of Entity
    const SelectPlan* pSelect = nullptr;                            // of Select
    std::string sText;                                              // as a declaration has it
};

// What a SELECT takes, nested selects looked through.
struct SelectPlan {
    std::vector<bool> entities;                                     // by type ordinal, subtypes included
    std::unordered_map<std::string_view, const ValueType*> types;   // by keyword
};

struct InversePlan {
    const ifc::def::schema::AttributeInverse* pInverse = nullptr;
    std::uint64_t iLow = 0;
    std::uint64_t iHigh = g_iUnbounded;
    std::string sExpected;
};

struct UniquePlan {
    const ifc::def::schema::UniqueRule* pRule = nullptr;
    const ifc::def::schema::Entity* pOwner = nullptr;
    std::string sRule;   // as in "IfcRoot.UR1"
    std::string sAttributes;
};

// One parameter of an entity.
struct ParameterPlan {
    const ifc::def::schema::Attribute* pAttribute = nullptr;
    const ValueType* pType = nullptr;
    bool boOptional = false;
    bool boDerived = false;
    bool boUnique = false;                 // a UNIQUE rule asks for its value
    std::vector<std::uint32_t> inverses;   // those with bounds that it feeds
    std::string sRule;                     // as in "IfcRoot.GlobalId"
};

struct EntityPlan {
    struct Unique {
        std::uint32_t iRule = 0;
        std::vector<std::size_t> parameters;
    };

    const ifc::def::schema::Entity* pEntity = nullptr;
    std::vector<ParameterPlan> parameters;
    std::vector<Unique> unique;
    std::vector<std::uint32_t> leastInverses;   // those with a lower bound that an instance has to meet
};

class SchemaPlan {
public:
    explicit SchemaPlan(const ifc::def::schema::Schema& schema);

    // Null where the keyword is no entity's.
    [[nodiscard]] const EntityPlan* pEntity(std::string_view keyword);
    // Of an entity alone, as a record of a complex instance has them.
    [[nodiscard]] const EntityPlan& partOf(const ifc::def::schema::Entity& entity);
    // By type ordinal; null where there is none.
    [[nodiscard]] const ifc::def::schema::Entity* pByOrdinal(std::uint16_t iOrdinal) const noexcept {
        return m_byOrdinal[iOrdinal];
    }
    [[nodiscard]] const EntityPlan& planOf(const ifc::def::schema::Entity& entity);
    [[nodiscard]] const std::deque<InversePlan>& inverses() const noexcept { return m_inverses; }
    [[nodiscard]] const std::deque<UniquePlan>& unique() const noexcept { return m_unique; }
    [[nodiscard]] const ifc::def::schema::Schema& schema() const noexcept { return m_schema; }

private:
    EntityPlan compiled(const ifc::def::schema::Entity& entity, bool boInherited);
    ParameterPlan parameter(const ifc::def::schema::Entity& entity, const ifc::def::schema::Attribute& attribute);
    void vUnique(EntityPlan& plan, const ifc::def::schema::Entity& entity);
    const ValueType* pType(const ifc::def::schema::ObjectBase* pObject);
    void vFill(ValueType& type, const ifc::def::schema::ObjectBase& object);
    const SelectPlan* pSelect(const ifc::def::schema::DataTypeSelect& select);
    [[nodiscard]] std::uint32_t iInverse(const ifc::def::schema::AttributeInverse& inverse);

    using Entities = std::unordered_map<std::string, EntityPlan>;

    const ifc::def::schema::Schema& m_schema;
    std::vector<const ifc::def::schema::Entity*> m_byOrdinal;
    Entities m_entities;   // by keyword
    // The last ones, by a hash that costs next to nothing: a file names few types, mostly one of those.
    std::array<const Entities::value_type*, 64> m_last{};
    std::unordered_map<const ifc::def::schema::Entity*, EntityPlan> m_parts;
    std::unordered_map<const ifc::def::schema::ObjectBase*, ValueType> m_types;
    std::unordered_map<const ifc::def::schema::DataTypeSelect*, SelectPlan> m_selects;
    std::deque<InversePlan> m_inverses;
    std::unordered_map<const ifc::def::schema::AttributeInverse*, std::uint32_t> m_inverseIndex;
    std::deque<UniquePlan> m_unique;
    std::unordered_map<const ifc::def::schema::UniqueRule*, std::uint32_t> m_uniqueIndex;
    std::string m_sUpper;   // kept for its memory
};

}   // namespace oxa::check
