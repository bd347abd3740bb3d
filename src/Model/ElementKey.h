// SPDX-License-Identifier: Apache-2.0
// ElementKey: what a column shows and what a term of a selector compares, from a name to values.
//
// For      Columns and Selector.
// Two      Key is what was written, without a schema. BoundKey knows where that lies in one model: positions of
//          attributes are looked up once a type, not once an element.
// Threads  a BoundKey belongs to one thread: it remembers whether it has found anything.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Model/Columns.h"
#include "Model/Pattern.h"
#include "Model/PropertyReader.h"
#include "Model/RelationWalk.h"

namespace oxa::detail {

// A name, or an expression that names match.
struct KeyName {
    std::string sText;
    std::shared_ptr<const Pattern> pPattern{};

    [[nodiscard]] bool boMatches(std::string_view name) const {
        return pPattern ? pPattern->boMatches(name) : name == sText;
    }
    [[nodiscard]] std::string shown() const { return pPattern ? "/" + sText + "/" : sText; }
};

enum class KeyKind : std::uint8_t {
    Class,
    Id,
    Attribute,
    Type,
    Container,
    Storey,
    Building,
    Parent,
    Location,   // all spatial elements above
    Material,
    Classification,
    Group,
    Property
};

struct Key {
    KeyKind eKind = KeyKind::Attribute;
    KeyName set{};    // of a property
    KeyName name{};   // of an attribute or a property; empty for what Kind itself says, as in "type"
};

/// The kind that a word stands for, as in "storey"; Attribute where it is none of them.
[[nodiscard]] KeyKind keyKindFromWord(std::string_view word) noexcept;
[[nodiscard]] std::string_view wordOf(KeyKind eKind) noexcept;
/// From the parts of a name, written "set.name" or "name".
[[nodiscard]] Key keyFromParts(KeyName first, bool boFirstQuoted, KeyName second, bool boTwo);

class BoundKey {
public:
    /// For a column a related element without an attribute tells its name alone; for a comparison all that it may be
    /// called. NameError for an attribute that no type of the schema has.
    BoundKey(const RelationWalk& walk, Key key, bool boColumn);
    BoundKey(const BoundKey&) = delete;
    BoundKey& operator=(const BoundKey&) = delete;
    ~BoundKey() = default;

    [[nodiscard]] const Key& key() const noexcept { return m_key; }
    /// Appends the values; nothing where there is none.
    void vRead(ifc::Entity& entity, std::vector<Cell>& values);
    /// Why it has found no property so far, where no element of the model has one of that name; else empty.
    [[nodiscard]] std::string hint() const;

private:
    // Positions of one attribute, or of all that match, by the ordinal of a type.
    class Positions {
    public:
        Positions() = default;
        Positions(const ifc::def::schema::Schema& schema, const KeyName& name);
        [[nodiscard]] const std::vector<std::uint16_t>& at(const ifc::Entity& entity) const;

    private:
        std::vector<std::vector<std::uint16_t>> m_byType;
    };

    [[nodiscard]] std::vector<ifc::Entity*> related(ifc::Entity& entity) const;
    void vAttributesRead(ifc::Entity& entity, const Positions& positions, std::vector<Cell>& values) const;
    void vNamesRead(ifc::Entity& entity, std::vector<Cell>& values) const;
    void vPropertyRead(ifc::Entity& entity, std::vector<Cell>& values);
    void vClassificationRead(ifc::Entity& reference, std::vector<Cell>& values) const;
    void vMaterialsRead(ifc::Entity& entity, std::vector<Cell>& values) const;

    RelationWalk m_walk;
    PropertyReader m_reader;
    Key m_key;
    bool m_boColumn;
    bool m_boFound = false;
    Positions m_positions;   // of the attribute
    Positions m_names;       // of Name, and of GlobalId, of what is related
    Positions m_guids;
};

/// What a value shows; the items of a list one by one, nothing for no value.
void vCellsAdd(const Value& value, std::vector<Cell>& cells);

}   // namespace oxa::detail
