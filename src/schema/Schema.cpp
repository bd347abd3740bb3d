// SPDX-License-Identifier: Apache-2.0
// The schema graph: names, inherited lists, and the text of types. What follows from the declarations is computed on
// first use and kept (SchemaCache).
#include "schema/Schema.h"

#include <algorithm>
#include <bit>
#include <set>
#include <tuple>

namespace oxa::ifc::def::schema {

namespace {

constexpr char cUpper(char c) noexcept { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

// The first of the own records of "entity", then of its supertypes when asked, that bears the name.
template <class Record>
const Record* pFromName(const Entity* pEntity, std::vector<Record> Entity::*own, const HashedName& name,
                        bool boSupertypes) noexcept {
    for (; pEntity; pEntity = boSupertypes ? pEntity->pParent : nullptr)
        for (const Record& record : pEntity->*own)
            if (record.uNameHash == name.hash && record.sName == name.name) return &record;
    return nullptr;
}

// The supertype's list, then one pointer for each own record. Asking the supertype while the own cache is
// locked keeps the lock order of SchemaCache: subtype before supertype.
template <class Record>
std::vector<const Record*> inheritedAndOwn(const Entity& entity, std::vector<Record> Entity::*own,
                                           const std::vector<const Record*>& (Entity::*all)() const) {
    std::vector<const Record*> list;
    if (entity.pParent) list = (entity.pParent->*all)();
    list.reserve(list.size() + (entity.*own).size());
    for (const Record& record : entity.*own) list.push_back(&record);
    return list;
}

const char* sKeyword(const DataTypeAggregate& aggregate) noexcept {
    if (aggregate.boBag) return "BAG";
    if (aggregate.kind == DataKind::Array) return "ARRAY";
    return aggregate.kind == DataKind::List ? "LIST" : "SET";
}

// The kinds that are base types, in the order of DataKind.
constexpr std::array<std::string_view, 7> g_baseTypes = {"REAL",   "BOOLEAN", "INTEGER", "NUMBER",
                                                         "STRING", "LOGICAL", "BINARY"};

template <class Range, class Text>
std::string sInParentheses(const char* sBefore, const Range& range, Text&& sText) {
    std::string sResult = sBefore;
    const char* sSeparator = "(";
    for (const auto& item : range) {
        sResult.append(sSeparator).append(sText(item));
        sSeparator = ", ";
    }
    return sResult + ')';
}

// Everything but an aggregate.
std::string sLeafText(const ObjectBase& object) {
    if (object.eClassTag != ClassTag::DataType) return object.sName;
    const auto& dataType = static_cast<const DataTypeBase&>(object);
    if (const auto* pEnum = dynamic_cast<const DataTypeEnum*>(&object))
        return sInParentheses("ENUMERATION OF ", pEnum->declared,
                              [](const std::string& sItem) -> const std::string& { return sItem; });
    if (const auto* pSelect = dynamic_cast<const DataTypeSelect*>(&object))
        return sInParentheses("SELECT ", pSelect->members,
                              [](const ObjectBase* pMember) { return pMember ? pMember->sName : "?"; });
    std::string sResult(baseTypeText(dataType.kind));
    if (const auto* pSimple = dynamic_cast<const DataTypeSimple*>(&object); pSimple && pSimple->iWidth) {
        sResult += '(' + std::to_string(pSimple->iWidth) + ')';
        if (pSimple->boFixed) sResult += " FIXED";
    }
    return sResult;
}

}   // namespace

std::string sUpper(std::string_view text) {
    std::string sResult(text);
    std::transform(sResult.begin(), sResult.end(), sResult.begin(), cUpper);
    return sResult;
}

ObjectBase::ObjectBase(ClassTag tag, std::string name)
    : eClassTag(tag),
      sName(std::move(name)),
      sNameUpper(sUpper(sName)),
      uNameHash(NameHash(sNameUpper)) {}

ObjectBase::~ObjectBase() = default;

DataTypeBase::DataTypeBase(DataKind eKind, std::string name)
    : ObjectBase(ClassTag::DataType, std::move(name)),
      kind(eKind) {}

DataTypeBase::~DataTypeBase() = default;

const ObjectBase* DataTypeBase::pElementGet() const noexcept { return nullptr; }

DataTypeSimple::~DataTypeSimple() = default;

DataTypeAggregate::~DataTypeAggregate() = default;

DataTypeEnum::DataTypeEnum(std::vector<std::string> enumerators, std::string name)
    : DataTypeBase(DataKind::Enumeration, std::move(name)),
      declared(std::move(enumerators)) {
    for (std::string& sItem : declared) std::transform(sItem.begin(), sItem.end(), sItem.begin(), cUpper);
    items = Items(declared);
}

DataTypeEnum::Items::Items(const std::vector<std::string>& texts) {
    m_sorted.reserve(texts.size());
    for (const std::string& sText : texts) m_sorted.push_back(&sText);
    // Of two with one text the first one stays.
    std::sort(m_sorted.begin(), m_sorted.end(), [](value_type a, value_type b) {
        const int iOrder = a->compare(*b);
        return iOrder != 0 ? iOrder < 0 : a < b;
    });
    m_sorted.erase(std::unique(m_sorted.begin(), m_sorted.end(), [](value_type a, value_type b) { return *a == *b; }),
                   m_sorted.end());
}

DataTypeEnum::Items::const_iterator DataTypeEnum::Items::find(std::string_view text) const noexcept {
    const auto itFound = std::lower_bound(m_sorted.begin(), m_sorted.end(), text,
                                          [](value_type pItem, std::string_view wanted) { return *pItem < wanted; });
    return itFound != m_sorted.end() && **itFound == text ? itFound : m_sorted.end();
}

DataTypeEnum::~DataTypeEnum() = default;

DataTypeSelect::DataTypeSelect(std::string name) : DataTypeBase(DataKind::Select, std::move(name)) {}

DataTypeSelect::~DataTypeSelect() = default;

// Whether the object, or for an entity one of its supertypes, is among the members, nested selects looked through. All
// that can be reached is gathered once, sorted by address.
bool DataTypeSelect::isCompatible(const ObjectBase& object) const {
    const auto& reachable = m_reachable.get([this] {
        // Breadth first, each object once: a select that contains itself ends, too.
        std::vector<const ObjectBase*> found;
        std::set<const ObjectBase*> seen;
        const auto vTake = [&](const std::vector<const ObjectBase*>& from) {
            for (const ObjectBase* pMember : from)
                if (pMember && seen.insert(pMember).second) found.push_back(pMember);
        };
        vTake(members);
        for (std::size_t i = 0; i < found.size(); ++i) {
            const Type* pType = pAsType(found[i]);
            if (!pType || !pType->pDataType || pType->pDataType->kind != DataKind::Select) continue;
            vTake(static_cast<const DataTypeSelect*>(pType->pDataType)->members);
        }
        std::sort(found.begin(), found.end(), std::less<>{});
        return found;
    });
    const auto boReached = [&](const ObjectBase* pObject) {
        return std::binary_search(reachable.begin(), reachable.end(), pObject, std::less<>{});
    };
    if (boReached(&object)) return true;
    const Entity* pEntity = pAsEntity(&object);
    while (pEntity && (pEntity = pEntity->pParent))
        if (boReached(pEntity)) return true;
    return false;
}

Type::Type(std::string name) : ObjectBase(ClassTag::Type, std::move(name)) {}

Type::~Type() = default;

Entity::Entity(std::string name) : ObjectBase(ClassTag::Entity, std::move(name)) {}

Entity::~Entity() = default;

const Entity::AttributeList& Entity::allAttributes() const {
    return m_allAttributes.get(
        [this] { return inheritedAndOwn(*this, &Entity::ownAttributes, &Entity::allAttributes); });
}

const Entity::InverseList& Entity::allInverseAttributes() const {
    return m_allInverseAttributes.get(
        [this] { return inheritedAndOwn(*this, &Entity::ownInverseAttributes, &Entity::allInverseAttributes); });
}

const Entity::InverseList& Entity::inverseTargets() const {
    return m_inverseTargets.get([this] {
        InverseList list;
        if (boHasInverse)
            for (const Attribute* pAttribute : allAttributes())
                list.insert(list.end(), pAttribute->inverses.begin(), pAttribute->inverses.end());
        return list;
    });
}

const Attribute* Entity::pAttributeFromName(const AttributeName& name, bool boSupertypes) const {
    return pFromName(this, &Entity::ownAttributes, name, boSupertypes);
}

const AttributeInverse* Entity::pAttributeInverseFromName(const std::string& sInverse, bool boSupertypes) const {
    return pFromName(this, &Entity::ownInverseAttributes, AttributeName(sInverse), boSupertypes);
}

Schema::Schema(std::string name) : sName(std::move(name)) {}

Schema::~Schema() = default;

// Open addressing over indices. The objects stand sorted by hash, length and name, which is what callers may walk; the
// table beside them holds 32-bit indices, plus one so that 0 is free. Built once; read by any number of threads.
void Schema::vFinish() {
    struct Named {
        std::uint32_t uHash;
        std::uint32_t iPlace;   // among m_owned
    };
    std::vector<Named> named;
    named.reserve(m_owned.size());
    for (std::uint32_t i = 0; i < m_owned.size(); ++i)
        if (m_owned[i]->eClassTag != ClassTag::DataType && !m_owned[i]->sName.empty())
            named.push_back({m_owned[i]->uNameHash, i});
    // Of two objects with one name the first one adopted is found.
    std::sort(named.begin(), named.end(), [this](Named a, Named b) {
        if (a.uHash != b.uHash) return a.uHash < b.uHash;
        const auto order =
            ObjectName(m_owned[a.iPlace]->sNameUpper, a.uHash) <=> ObjectName(m_owned[b.iPlace]->sNameUpper, b.uHash);
        return order != 0 ? order < 0 : a.iPlace < b.iPlace;
    });
    objects.clear();
    objects.reserve(named.size());
    for (const Named& one : named) objects.push_back({m_owned[one.iPlace]->sNameUpper, m_owned[one.iPlace].get()});

    // At most half full: a look-up takes one probe and a half on average, and always meets an empty slot.
    m_slots.assign(std::bit_ceil(objects.size() * 2 + 2), 0);
    const std::size_t iMask = m_slots.size() - 1;
    for (std::size_t i = 0; i < objects.size(); ++i) {
        std::size_t iSlot = objects[i].pObject->uNameHash & iMask;
        while (m_slots[iSlot] != 0) iSlot = (iSlot + 1) & iMask;
        m_slots[iSlot] = static_cast<std::uint32_t>(i + 1);
    }
}

const ObjectBase* Schema::pObjectFromName(const ObjectName& name) const noexcept {
    if (m_slots.empty()) return nullptr;
    const std::size_t iMask = m_slots.size() - 1;
    for (std::size_t iSlot = name.hash & iMask; m_slots[iSlot] != 0; iSlot = (iSlot + 1) & iMask) {
        const Record& record = objects[m_slots[iSlot] - 1];
        if (record.pObject->uNameHash == name.hash && record.key == name.name) return record.pObject;
    }
    return nullptr;
}

const ObjectBase* Schema::pObjectFromName(std::string_view name) const {
    std::array<char, 128> buffer;   // every published name fits; a longer one takes the heap
    if (name.size() > buffer.size()) return pObjectFromName(ObjectName(sUpper(name)));
    std::transform(name.begin(), name.end(), buffer.begin(), cUpper);
    return pObjectFromName(ObjectName(std::string_view(buffer.data(), name.size())));
}

const Entity* Schema::pEntityFromName(const ObjectName& name) const noexcept {
    return pAsEntity(pObjectFromName(name));
}

const Type* Schema::pTypeFromName(const ObjectName& name) const noexcept { return pAsType(pObjectFromName(name)); }

const DataTypeBase* pDataTypeOf(const ObjectBase* pObject) noexcept {
    if (!pObject) return nullptr;
    switch (pObject->eClassTag) {
    case ClassTag::DataType: return static_cast<const DataTypeBase*>(pObject);
    case ClassTag::Type: return static_cast<const Type*>(pObject)->pDataType;
    case ClassTag::Entity: break;
    }
    return nullptr;
}

const ObjectBase* pElementOf(const ObjectBase* pObject) noexcept {
    const DataTypeBase* pDataType = pDataTypeOf(pObject);
    return pDataType ? pDataType->pElementGet() : nullptr;
}

std::string_view baseTypeText(DataKind kind) noexcept {
    const auto iKind = static_cast<std::size_t>(kind);
    return iKind < g_baseTypes.size() ? g_baseTypes[iKind] : "?";
}

std::string sTypeText(const ObjectBase* pObject) {
    std::string sResult;
    while (const auto* pAggregate = dynamic_cast<const DataTypeAggregate*>(pObject)) {
        sResult += sKeyword(*pAggregate);
        if (!pAggregate->sBounds.empty()) sResult.append(" ").append(pAggregate->sBounds);
        sResult += " OF ";
        if (pAggregate->boOptional) sResult += "OPTIONAL ";
        if (pAggregate->boUnique) sResult += "UNIQUE ";
        pObject = pAggregate->pElement;
    }
    return sResult + (pObject ? sLeafText(*pObject) : "?");
}

}   // namespace oxa::ifc::def::schema

namespace oxa::ifc::def {

SchemaPset::~SchemaPset() = default;

}   // namespace oxa::ifc::def
