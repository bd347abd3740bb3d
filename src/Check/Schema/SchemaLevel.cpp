// SPDX-License-Identifier: Apache-2.0
// Statements as they come. m_pRecord is the plan of the record that is read, null where its keyword is no entity's:
// then nothing can be said of its parameters. What a value is held to follows from m_frames, or from the parameter.
#include "Check/Schema/SchemaLevel.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>

#include "Check/Schema/ValueHash.h"

namespace oxa::check {

using namespace ifc::def::schema;
using ifc::def::schema::Attribute;   // not that of the model

namespace {

// Bits of Instance::iMore.
constexpr std::uint16_t g_iComplex = 1;

}   // namespace

SchemaLevel::SchemaLevel(const ifc::def::SchemaPset& schema, Collector& collector, InstanceTable& instances)
    : m_schema(schema),
      m_plan(schema),
      m_collector(collector),
      m_instances(instances) {}

void SchemaLevel::vTell(const Message& message, Place place) {
    m_collector.vAdd(
        {.level = CheckLevel::Schema,
         .weight = message.weight,
         .key = message.key,
         .rule = m_pParameter ? std::string_view(m_pParameter->sRule) : std::string_view(m_sType),
         .type = m_sType,
         .attribute = m_pParameter ? std::string_view(m_pParameter->pAttribute->sName) : std::string_view(),
         .message = message.message,
         .expected = message.expected,
         .line = place.iLine,
         .column = place.iColumn,
         .id = m_head.iNumber,
         .found = message.found.substr(0, g_iMostFound)});
}

// ---- Statements and records

void SchemaLevel::vStatement(const StatementHead& head) {
    m_head = head;
    m_frames.clear();
    m_items.clear();
    m_records.clear();
    m_complexParameters.clear();
    m_iHashing = 0;
    m_pParameter = nullptr;
    m_pRecord = nullptr;
}

void SchemaLevel::vRecord(const Token& keyword) {
    m_pParameter = nullptr;
    m_iParameters = 0;
    m_pRecord = nullptr;
    if (m_head.iNumber == 0) return;   // the parameters of a data section
    const EntityPlan* pPlan = m_plan.pEntity(keyword.text);
    m_sType = pPlan ? pPlan->pEntity->sName : std::string(keyword.text.substr(0, g_iMostFound));
    if (!pPlan)
        return vTell(
            {"Schema_UnknownType", "the schema has no entity of that name", "an entity of " + m_plan.schema().sName},
            keyword.place);
    const Entity& entity = *pPlan->pEntity;
    if (m_head.boComplex) {
        m_records.push_back(&entity);
        m_pRecord = &m_plan.partOf(entity);
        return;
    }
    m_pRecord = pPlan;
    m_values.assign(pPlan->unique.empty() ? 0 : pPlan->parameters.size(), std::nullopt);
    if (entity.boAbstract)
        vTell({"Schema_Abstract", "an abstract entity has no instances", "a subtype"}, keyword.place);
    if (m_head.boDouble) return;
    if (Instance* pInstance = m_instances.pFind(m_head.iNumber)) pInstance->iType = entity.iTypeOrdinal;
}

void SchemaLevel::vRecordEnd(const Token& close) {
    m_pParameter = nullptr;
    if (!m_pRecord) return;
    const std::size_t iWanted = m_pRecord->parameters.size();
    if (m_iParameters != iWanted)
        vTell({"Schema_ParameterCount", "the statement has another number of parameters", std::to_string(iWanted),
               std::to_string(m_iParameters)},
              close.place);
    vUniqueValues();
}

void SchemaLevel::vStatementEnd(bool boFine) {
    if (m_head.iNumber == 0) return;
    if (!boFine) ++m_iFaulty;
    if (boFine && m_head.boComplex) vComplexEnd();
}

// ISO 10303-21, External mapping: a record for each entity type, in the order of the alphabet, supertypes too.
void SchemaLevel::vComplexEnd() {
    m_pParameter = nullptr;
    if (Instance* pInstance = m_instances.pFind(m_head.iNumber); pInstance && !m_head.boDouble) {
        pInstance->iMore |= g_iComplex;
        m_complex[m_head.iNumber] = m_records;
    }
    std::size_t iLeaves = 0;
    for (std::size_t i = 0; i < m_records.size(); ++i) {
        const Entity& entity = *m_records[i];
        m_sType = entity.sName;
        if (i > 0 && entity.sNameUpper <= m_records[i - 1]->sNameUpper)
            vTell({"Schema_ComplexOrder", "records of a complex instance stand in the order of the alphabet, each once",
                   "behind " + m_records[i - 1]->sName},
                  m_head.place);
        if (entity.pParent && std::find(m_records.begin(), m_records.end(), entity.pParent) == m_records.end())
            vTell(
                {"Schema_ComplexSupertype", "a complex instance has a record of each supertype", entity.pParent->sName},
                m_head.place);
        vTogether(entity);
        iLeaves += std::none_of(m_records.begin(), m_records.end(),
                                [&](const Entity* pOther) { return pOther->pParent == &entity; });
    }
    vComplexDerived();
    if (iLeaves == 1)
        vTell({"Schema_ComplexMapping", "an instance of one entity type is no complex one", "one record"},
              m_head.place);
}

// Of the records those of direct subtypes of one of them.
void SchemaLevel::vTogether(const Entity& supertype) {
    std::vector<const Entity*> subtypes;
    std::copy_if(m_records.begin(), m_records.end(), std::back_inserter(subtypes),
                 [&](const Entity* pOther) { return pOther->pParent == &supertype; });
    if (subtypes.empty()) return;
    if (!m_supertypes) m_supertypes.emplace(m_schema);
    if (m_supertypes->boTogether(supertype, subtypes)) return;
    std::string sFound;
    for (const Entity* pSubtype : subtypes) sFound.append(sFound.empty() ? "" : ", ").append(pSubtype->sName);
    vTell({"Schema_ComplexSubtypes", "no instance is of all these subtypes and of no other one",
           "subtypes as the schema combines them", sFound},
          m_head.place);
}

// A record of another subtype may derive what the record of a supertype has a place for.
void SchemaLevel::vComplexDerived() {
    for (const ComplexParameter& parameter : m_complexParameters) {
        const Attribute* pAttribute = parameter.pParameter->pAttribute;
        const bool boDerived = std::any_of(m_records.begin(), m_records.end(), [pAttribute](const Entity* pRecord) {
            return std::any_of(pRecord->redeclared.begin(), pRecord->redeclared.end(), [pAttribute](const auto& again) {
                return again.pAttribute == pAttribute && again.boDerived;
            });
        });
        if (boDerived == parameter.boStar) continue;
        m_pParameter = parameter.pParameter;
        m_sType = pAttribute->pOwner->sName;
        if (boDerived)
            vTell({"Schema_Derived", "the attribute is derived: it has no value in a statement", "*", parameter.sText},
                  parameter.place);
        else
            vTell({"Schema_NotDerived", "the attribute is not derived", parameter.pParameter->pType->sText, "*"},
                  parameter.place);
    }
    m_pParameter = nullptr;
}

// ---- What a value is held to

// Of a parameter of the record; null where nothing is to be said, or where it was said.
const ValueType* SchemaLevel::pParameterType(const Token& token, bool boValue) {
    const std::size_t iIndex = m_iParameters++;
    m_pParameter = nullptr;
    if (!m_pRecord || iIndex >= m_pRecord->parameters.size()) return nullptr;
    m_pParameter = &m_pRecord->parameters[iIndex];
    if (m_head.boComplex) {
        const bool boStar = boValue && token.kind == TokenKind::Derived;
        m_complexParameters.push_back(
            {m_pParameter, boStar, token.place, std::string(token.text.substr(0, g_iMostFound))});
        if (boStar) return nullptr;
    }
    if (m_pParameter->boDerived) {
        if (token.kind != TokenKind::Derived)
            vTell({"Schema_Derived", "the attribute is derived: it has no value in a statement", "*", token.text},
                  token.place);
        return nullptr;
    }
    if (boValue && token.kind == TokenKind::Derived) {
        vTell({"Schema_NotDerived", "the attribute is not derived", m_pParameter->pType->sText, "*"}, token.place);
        return nullptr;
    }
    if (boValue && token.kind == TokenKind::Omitted) {
        if (!m_pParameter->boOptional)
            vTell({"Schema_Mandatory", "the attribute is not optional", m_pParameter->pType->sText, "$"}, token.place);
        return nullptr;
    }
    return m_pParameter->pType;
}

// Of what follows, be it a parameter or what stands in one.
const ValueType* SchemaLevel::pExpected(const Token& token, bool boValue) {
    if (m_frames.empty()) {
        const ValueType* pType = pParameterType(token, boValue);
        m_iHashing = pType && m_pParameter->boUnique && !m_pRecord->unique.empty() ? 1 : 0;
        return pType;
    }
    Frame& frame = m_frames.back();
    switch (frame.kind) {
    case Frame::Kind::Ignored: return nullptr;
    case Frame::Kind::Typed: break;
    case Frame::Kind::Aggregate: ++frame.iCount; break;
    }
    const bool boAggregate = frame.kind == Frame::Kind::Aggregate;
    const ValueType* pType = boAggregate ? frame.pType->pItem : frame.pType;
    if (!boValue || (token.kind != TokenKind::Omitted && token.kind != TokenKind::Derived)) return pType;
    const bool boMayBeUnset = boAggregate && frame.pType->boOptional && token.kind == TokenKind::Omitted;
    if (!boMayBeUnset)
        vTell({"Schema_ItemUnset", "an item or a typed value is never unset", pType->sText, token.text}, token.place);
    return nullptr;
}

void SchemaLevel::vValue(const Token& value) {
    const ValueType* pType = pExpected(value, true);
    if (!pType) return;
    vScalar(*pType, value);
    if (m_iHashing > 0) vItem(valueHash(value));
}

void SchemaLevel::vOpenList(const Token& open) {
    const ValueType* pType = pExpected(open, false);
    Frame& frame = m_frames.emplace_back();
    frame.place = open.place;
    if (!pType) return;
    if (pType->kind == ValueKind::Unknown) return;
    if (pType->kind != ValueKind::Aggregate) return vWrong(*pType, open);
    frame.kind = Frame::Kind::Aggregate;
    frame.pType = pType;
    frame.iHash = g_listHash;
    frame.iFirstItem = m_items.size();
    if (m_iHashing > 0 || pType->boUnique) ++m_iHashing;
}

void SchemaLevel::vOpenTyped(const Token& keyword) {
    const ValueType* pType = pExpected(keyword, false);
    Frame& frame = m_frames.emplace_back();
    frame.place = keyword.place;
    if (!pType || pType->kind == ValueKind::Unknown) return;
    if (pType->kind != ValueKind::Select)
        return vTell(
            {"Schema_TypedValue", "a value has the name of a type in a SELECT alone", pType->sText, keyword.text},
            keyword.place);
    const auto it = pType->pSelect->types.find(keyword.text);
    if (it == pType->pSelect->types.end())
        return vTell({"Schema_SelectType", "the SELECT has no such type", "a member of " + pType->sText, keyword.text},
                     keyword.place);
    frame.kind = Frame::Kind::Typed;
    frame.pType = it->second;
    frame.iHash = bytesHash(keyword.text);
    if (m_iHashing > 0) ++m_iHashing;
}

void SchemaLevel::vClose(const Token&) {
    const Frame frame = m_frames.back();
    m_frames.pop_back();
    if (frame.kind == Frame::Kind::Ignored) return;
    if (frame.kind == Frame::Kind::Aggregate) vAggregateEnd(frame);
    if (m_iHashing == 0) return;
    --m_iHashing;
    if (m_iHashing > 0) vItem(frame.iHash);
}

// The hash of a value that ended belongs to what it stands in.
void SchemaLevel::vItem(std::uint64_t iHash) {
    if (m_frames.empty()) {
        const std::size_t iIndex = m_iParameters - 1;
        if (iIndex < m_values.size()) m_values[iIndex] = iHash;
        return;
    }
    Frame& frame = m_frames.back();
    frame.iHash = mixedHash(frame.iHash, iHash);
    if (frame.kind == Frame::Kind::Aggregate && frame.pType->boUnique) m_items.push_back(iHash);
}

void SchemaLevel::vAggregateEnd(const Frame& frame) {
    const ValueType& type = *frame.pType;
    if (frame.iCount < type.iLow || frame.iCount > type.iHigh)
        vTell({"Schema_Bounds", "an aggregate has another number of items", type.sText, std::to_string(frame.iCount)},
              frame.place);
    if (!type.boUnique) return;
    const auto itFirst = m_items.begin() + static_cast<std::ptrdiff_t>(frame.iFirstItem);
    std::sort(itFirst, m_items.end());
    if (std::adjacent_find(itFirst, m_items.end()) != m_items.end())
        vTell({"Schema_NotUnique", "an aggregate has an item twice", type.sText}, frame.place);
    m_items.resize(frame.iFirstItem);
}

// ---- Values

void SchemaLevel::vWrong(const ValueType& type, const Token& value) {
    vTell({"Schema_ValueType", "the value is of another type", type.sText, value.text}, value.place);
}

void SchemaLevel::vScalar(const ValueType& type, const Token& value) {
    // Of edition 3: a value that is given elsewhere.
    if (value.kind == TokenKind::ValueName || value.kind == TokenKind::Resource) return;
    const auto boOf = [&value](TokenKind kind) { return value.kind == kind; };
    switch (type.kind) {
    case ValueKind::Real: return boOf(TokenKind::Real) ? void() : vWrong(type, value);
    case ValueKind::Integer: return boOf(TokenKind::Integer) ? void() : vWrong(type, value);
    case ValueKind::Number: return boOf(TokenKind::Integer) || boOf(TokenKind::Real) ? void() : vWrong(type, value);
    case ValueKind::Boolean: return value.text == ".T." || value.text == ".F." ? void() : vWrong(type, value);
    case ValueKind::Logical:
        return value.text == ".T." || value.text == ".F." || value.text == ".U." ? void() : vWrong(type, value);
    case ValueKind::String: return boOf(TokenKind::String) ? vWidth(type, value) : vWrong(type, value);
    case ValueKind::Binary: return boOf(TokenKind::Binary) ? vWidth(type, value) : vWrong(type, value);
    case ValueKind::Enumeration: return vEnumeration(type, value);
    case ValueKind::Entity: return boOf(TokenKind::InstanceName) ? vReference(type, value) : vWrong(type, value);
    case ValueKind::Select:
        if (boOf(TokenKind::InstanceName)) return vReference(type, value);
        return vTell({"Schema_SelectUntyped", "a value in a SELECT has the name of its type",
                      "a member of " + type.sText, value.text},
                     value.place);
    case ValueKind::Aggregate: return vWrong(type, value);
    case ValueKind::Unknown: return;
    }
}

void SchemaLevel::vEnumeration(const ValueType& type, const Token& value) {
    if (value.kind != TokenKind::Enumeration) return vWrong(type, value);
    const std::string_view name = value.text.size() > 2 ? value.text.substr(1, value.text.size() - 2) : value.text;
    if (type.pEnumeration->items.contains(name)) return;
    vTell({"Schema_Enumerator", "the enumeration has no such value", type.sText, value.text}, value.place);
}

void SchemaLevel::vWidth(const ValueType& type, const Token& value) {
    if (type.iWidth == 0 || (type.boFixed ? value.iLength == type.iWidth : value.iLength <= type.iWidth))
        return type.boGlobalId ? vGlobalId(value) : void();
    vTell({"Schema_Width", "the value has another length", type.sText, value.text}, value.place);
}

// The schema says no more than how long it is: a file with another form is valid, and who reads it may lose the identifier.
void SchemaLevel::vGlobalId(const Token& value) {
    constexpr std::string_view digits = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_$";
    const std::string_view text = value.text.substr(1, value.text.size() - 2);
    if (text.find_first_not_of(digits) == std::string_view::npos && text.find_first_of("0123") == 0) return;
    vTell({"Schema_GlobalIdForm", "the identifier does not stand for 128 bits",
           "22 of 0 to 9, A to Z, a to z, _ and $, the first of them 0 to 3", value.text, CheckWeight::Note},
          value.place);
}

// ---- References

void SchemaLevel::vReference(const ValueType& type, const Token& value) {
    for (const std::uint32_t iInverse : m_pParameter->inverses)
        if (!m_head.boDouble) m_uses.push_back({iInverse, value.iNumber, m_head.iNumber});
    const Instance* pInstance = value.iNumber ? m_instances.pFind(value.iNumber) : nullptr;
    const bool boThere = pInstance && (pInstance->iType != 0 || (pInstance->iMore & g_iComplex));
    if (!boThere) return vReferenceAhead(type, value);
    if (boAccepts(type, *pInstance, value.iNumber)) return;
    vTell({"Schema_ReferenceType", "the reference leads to an instance of another type", type.sText,
           sTypeOf(*pInstance, value.iNumber)},
          value.place);
}

void SchemaLevel::vReferenceAhead(const ValueType& type, const Token& value) {
    const HeldTo heldTo{&type, m_pParameter};
    const bool boLast = !m_heldTo.empty() && m_heldTo[m_iHeldTo] == heldTo;
    if (!boLast) {
        const auto [it, boNew] = m_heldToIndex.try_emplace(heldTo, static_cast<std::uint32_t>(m_heldTo.size()));
        if (boNew) m_heldTo.push_back(heldTo);
        m_iHeldTo = it->second;
    }
    const auto iShort = [](std::uint64_t i) {
        return static_cast<std::uint32_t>(std::min<std::uint64_t>(i, std::numeric_limits<std::uint32_t>::max()));
    };
    m_references.push_back(
        {value.iNumber, m_head.iNumber, m_iHeldTo, iShort(value.place.iLine), iShort(value.place.iColumn)});
}

bool SchemaLevel::boIsOf(const Entity& entity, const Instance& instance, std::uint64_t iNumber) const {
    if (!(instance.iMore & g_iComplex))
        return instance.iType >= entity.iTypeOrdinal && instance.iType <= entity.iTypeOrdinalLast;
    const auto& records = m_complex.at(iNumber);
    return std::find(records.begin(), records.end(), &entity) != records.end();
}

bool SchemaLevel::boAccepts(const ValueType& type, const Instance& instance, std::uint64_t iNumber) const {
    if (type.kind == ValueKind::Entity) return boIsOf(*type.pEntity, instance, iNumber);
    const auto& entities = type.pSelect->entities;
    if (!(instance.iMore & g_iComplex)) return entities[instance.iType];
    const auto& records = m_complex.at(iNumber);
    return std::any_of(records.begin(), records.end(),
                       [&](const Entity* pRecord) { return entities[pRecord->iTypeOrdinal]; });
}

// "#12 IfcWall"
std::string SchemaLevel::sTypeOf(const Instance& instance, std::uint64_t iNumber) const {
    std::string sText = InstanceTable::sName(iNumber);
    if (instance.iMore & g_iComplex) {
        for (const Entity* pRecord : m_complex.at(iNumber)) sText.append(" ").append(pRecord->sName);
    } else if (const Entity* pOf = m_plan.pByOrdinal(instance.iType)) {
        sText.append(" ").append(pOf->sName);
    }
    return sText;
}

}   // namespace oxa::check
