// SPDX-License-Identifier: Apache-2.0
#include "Model/ElementKey.h"

#include <algorithm>
#include <set>
#include <utility>

#include "Model/Names.h"

namespace oxa::detail {

namespace schema = ifc::def::schema;
using ifc::Entity;

namespace {

struct WordRow {
    std::string_view word;
    KeyKind eKind;
};
constexpr WordRow g_words[] = {
    {"class", KeyKind::Class},       {"id", KeyKind::Id},
    {"type", KeyKind::Type},         {"container", KeyKind::Container},
    {"storey", KeyKind::Storey},     {"building", KeyKind::Building},
    {"parent", KeyKind::Parent},     {"location", KeyKind::Location},
    {"material", KeyKind::Material}, {"classification", KeyKind::Classification},
    {"group", KeyKind::Group},
};

void vTextAdd(const char* pText, std::vector<Cell>& values) {
    if (pText && *pText) values.emplace_back(std::string(pText));
}

}   // namespace

KeyKind keyKindFromWord(std::string_view word) noexcept {
    const auto found = std::ranges::find(g_words, word, &WordRow::word);
    return found == std::end(g_words) ? KeyKind::Attribute : found->eKind;
}

std::string_view wordOf(KeyKind eKind) noexcept {
    const auto found = std::ranges::find(g_words, eKind, &WordRow::eKind);
    return found == std::end(g_words) ? std::string_view() : found->word;
}

Key keyFromParts(KeyName first, bool boFirstQuoted, KeyName second, bool boTwo) {
    const KeyKind eWord =
        boFirstQuoted || first.pPattern ? KeyKind::Attribute : keyKindFromWord(std::string_view(first.sText));
    const bool boRelated = eWord != KeyKind::Attribute && eWord != KeyKind::Class && eWord != KeyKind::Id;
    if (boTwo && boRelated) return {eWord, {}, std::move(second)};
    if (boTwo) return {KeyKind::Property, std::move(first), std::move(second)};
    if (eWord != KeyKind::Attribute) return {eWord, {}, {}};
    return {KeyKind::Attribute, {}, std::move(first)};
}

void vCellsAdd(const Value& value, std::vector<Cell>& cells) {
    switch (value.kind()) {
    case Kind::Null:
    case Kind::Derived: return;
    case Kind::Number: return static_cast<void>(cells.emplace_back(*value.number()));
    case Kind::Integer: return static_cast<void>(cells.emplace_back(*value.integer()));
    case Kind::List:
        for (const Value& item : value.items()) vCellsAdd(item, cells);
        return;
    case Kind::Boolean:
    case Kind::Logical:
        if (const std::optional<bool> boValue = value.boolean()) return static_cast<void>(cells.emplace_back(*boValue));
        break;
    case Kind::Text:
    case Kind::Enumerator:
    case Kind::Binary:
    case Kind::Element: break;
    }
    cells.emplace_back(value.toString());
}

// Names of attributes in any case of letters, where they are no expression.
BoundKey::Positions::Positions(const schema::Schema& schema, const KeyName& name) {
    bool boAny = false;
    std::set<std::string_view> names;
    for (const schema::Schema::Record& record : schema.objects) {
        const schema::Entity* pType = schema::pAsEntity(record.pObject);
        if (!pType) continue;
        if (m_byType.size() <= pType->iTypeOrdinal) m_byType.resize(pType->iTypeOrdinal + std::size_t{1});
        auto& positions = m_byType[pType->iTypeOrdinal];
        const auto& attributes = pType->allAttributes();
        if (!name.pPattern) {
            const std::size_t iFound = iAttributeFind(*pType, name.sText);
            if (iFound != g_iNoName) positions.push_back(static_cast<std::uint16_t>(iFound));
        } else
            for (std::size_t i = 0; i < attributes.size(); ++i)
                if (name.pPattern->boMatches(attributes[i]->sName)) positions.push_back(static_cast<std::uint16_t>(i));
        boAny = boAny || !positions.empty();
        for (const schema::Attribute& attribute : pType->ownAttributes) names.insert(attribute.sName);
    }
    if (!boAny)
        vThrowName("no type of " + schema.sName + " has an attribute " + name.shown(), name.sText,
                   {names.begin(), names.end()});
}

const std::vector<std::uint16_t>& BoundKey::Positions::at(const Entity& entity) const {
    static const std::vector<std::uint16_t> none;
    const std::size_t iType = entity.schemaEntity().iTypeOrdinal;
    return iType < m_byType.size() ? m_byType[iType] : none;
}

BoundKey::BoundKey(const RelationWalk& walk, Key key, bool boColumn)
    : m_walk(walk),
      m_reader(m_walk),
      m_key(std::move(key)),
      m_boColumn(boColumn) {
    const schema::Schema& schema = m_walk.state().schema();
    if (m_key.eKind == KeyKind::Property || m_key.eKind == KeyKind::Class || m_key.eKind == KeyKind::Id) return;
    if (!m_key.name.sText.empty()) {
        m_positions = Positions(schema, m_key.name);
        return;
    }
    m_names = Positions(schema, {"Name"});
    m_guids = Positions(schema, {"GlobalId"});
}

std::vector<Entity*> BoundKey::related(Entity& entity) const {
    std::vector<Entity*> found;
    const auto vAdd = [&](Entity* pEntity) {
        if (pEntity) found.push_back(pEntity);
    };
    bool boOfType = false;
    switch (m_key.eKind) {
    case KeyKind::Type: vAdd(m_walk.pType(entity)); break;
    case KeyKind::Container: vAdd(m_walk.pAbove(entity, Class::SpatialElement)); break;
    case KeyKind::Storey: vAdd(m_walk.pAbove(entity, Class::Storey)); break;
    case KeyKind::Building: vAdd(m_walk.pAbove(entity, Class::Building)); break;
    case KeyKind::Parent:
    case KeyKind::Location:
        m_walk.forEachAbove(entity, [&](Entity& above) {
            if (m_key.eKind == KeyKind::Parent || m_walk.table().boIs(above, Class::SpatialElement)) vAdd(&above);
            return m_key.eKind == KeyKind::Location || (!m_boColumn && m_key.name.sText.empty());
        });
        break;
    case KeyKind::Material:
        for (const Entity* pDefinition : m_walk.materials(entity, boOfType)) m_walk.vMaterialsAdd(*pDefinition, found);
        break;
    case KeyKind::Classification: return m_walk.classifications(entity);
    case KeyKind::Group: return m_walk.others(entity, Relation::Group, Side::Part);
    case KeyKind::Class:
    case KeyKind::Id:
    case KeyKind::Attribute:
    case KeyKind::Property: break;   // of the element itself
    }
    return found;
}

void BoundKey::vAttributesRead(Entity& entity, const Positions& positions, std::vector<Cell>& values) const {
    for (const std::uint16_t iPosition : positions.at(entity))
        vCellsAdd(m_walk.state().valueOf(entity, iPosition), values);
}

// In a comparison an element goes by its name or by its GlobalId.
void BoundKey::vNamesRead(Entity& entity, std::vector<Cell>& values) const {
    vAttributesRead(entity, m_names, values);
    if (!m_boColumn) vAttributesRead(entity, m_guids, values);
}

void BoundKey::vClassificationRead(Entity& reference, std::vector<Cell>& values) const {
    std::string sCode = m_walk.classificationCode(reference);
    const bool boCode = !sCode.empty();
    if (boCode) values.emplace_back(std::move(sCode));
    if (m_boColumn && boCode) return;
    vTextAdd(m_walk.table().pText(reference, Slot::ReferenceName), values);
    const Entity* pSystem = m_walk.pSystem(reference);
    if (pSystem && (!m_boColumn || pSystem == &reference))
        vTextAdd(m_walk.table().pText(*pSystem, Slot::ClassificationName), values);
}

// In a comparison the names of layers and sets count as well.
void BoundKey::vMaterialsRead(Entity& entity, std::vector<Cell>& values) const {
    for (Entity* pMaterial : related(entity)) vTextAdd(m_walk.table().pText(*pMaterial, Slot::MaterialName), values);
    if (m_boColumn) return;
    for (const Material& one : materials(m_walk.state().elementOf(&entity))) {
        vTextAdd(one.part.c_str(), values);
        vTextAdd(one.setName.c_str(), values);
    }
}

void BoundKey::vPropertyRead(Entity& entity, std::vector<Cell>& values) {
    const auto vAdd = [&](const FoundProperty& found) {
        m_boFound = true;
        const std::size_t iBefore = values.size();
        vCellsAdd(m_reader.value(found), values);
        if (values.size() != iBefore || !found.pProperty) return;
        if (!m_walk.table().boIs(*found.pProperty, Class::BoundedValue)) return;
        const Property bounded = m_reader.property(found);
        vCellsAdd(bounded.lower, values);
        vCellsAdd(bounded.upper, values);
    };
    if (m_key.set.pPattern || m_key.name.pPattern) {
        m_reader.forEachMatch(
            entity, [this](std::string_view set) { return m_key.set.boMatches(set); },
            [this](std::string_view name) { return m_key.name.boMatches(name); }, vAdd);
    } else if (const FoundProperty found = m_reader.find(entity, m_key.set.sText, m_key.name.sText))
        vAdd(found);
}

void BoundKey::vRead(Entity& entity, std::vector<Cell>& values) {
    if (m_key.eKind == KeyKind::Attribute) return vAttributesRead(entity, m_positions, values);
    if (m_key.eKind == KeyKind::Property) return vPropertyRead(entity, values);
    if (m_key.eKind == KeyKind::Class) return static_cast<void>(values.emplace_back(entity.schemaEntity().sName));
    if (m_key.eKind == KeyKind::Id)
        return static_cast<void>(values.emplace_back(static_cast<std::int64_t>(m_walk.state().iNumberOf(entity))));
    const bool boAttribute = !m_key.name.sText.empty();
    if (m_key.eKind == KeyKind::Material && !boAttribute) return vMaterialsRead(entity, values);
    for (Entity* pRelated : related(entity)) {
        if (boAttribute)
            vAttributesRead(*pRelated, m_positions, values);
        else if (m_key.eKind == KeyKind::Classification)
            vClassificationRead(*pRelated, values);
        else
            vNamesRead(*pRelated, values);
    }
}

namespace {

std::string sHint(const std::string& sMessage, const KeyName& wanted, const std::set<std::string_view>& names) {
    std::string sText = sMessage;
    if (wanted.pPattern) return sText;
    const char* pBefore = "; did you mean ";
    for (const std::string& sName : nearNames(wanted.sText, {names.begin(), names.end()})) {
        sText += pBefore + sName;
        pBefore = ", ";
    }
    return sText == sMessage ? sText : sText + "?";
}

}   // namespace

std::string BoundKey::hint() const {
    if (m_boFound || m_key.eKind != KeyKind::Property) return {};
    const schema::Entity* pSets = m_walk.table().pClass(Class::SetDefinition);
    if (!pSets) return {};
    std::set<std::string_view> sets;
    std::set<std::string_view> names;
    bool boSet = false;
    bool boName = false;
    for (Entity* pSet : m_walk.state().all(*pSets, true)) {
        const std::string_view set = m_reader.setName(*pSet);
        sets.insert(set);
        if (!m_key.set.boMatches(set)) continue;
        boSet = true;
        m_reader.forEachIn(*pSet, [&](std::string_view name, const FoundProperty&) {
            names.insert(name);
            boName = boName || m_key.name.boMatches(name);
        });
    }
    if (!boSet) return sHint("no element has a set " + m_key.set.shown(), m_key.set, sets);
    if (!boName) return sHint("no set " + m_key.set.shown() + " has " + m_key.name.shown(), m_key.name, names);
    return {};
}

}   // namespace oxa::detail
