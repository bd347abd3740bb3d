// SPDX-License-Identifier: Apache-2.0
#include "Model/ValueCheck.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <unordered_set>

#include "Format/Ifc/IfcGuid.h"
#include "Model/Error.h"
#include "Model/Names.h"
#include "platform/String.h"

namespace oxa::detail {

namespace schema = ifc::def::schema;
using schema::DataKind;
using schema::ObjectBase;

namespace {

constexpr std::size_t g_iMostShown = 100;   // bytes of a text in a message

// What an attribute takes: "a number (IfcLengthMeasure)", "an IfcWall".
std::string sTaken(const ObjectBase* pType) {
    if (schema::pAsEntity(pType)) return "an element of type " + pType->sName;
    const schema::DataTypeBase* pDataType = schema::pDataTypeOf(pType);
    constexpr std::string_view kinds[] = {"a number", "a truth value", "an integer",
                                          "a number", "a text",        "a truth value or unknown",
                                          "a binary", "an enumerator"};
    const auto iKind = pDataType ? static_cast<std::size_t>(pDataType->kind) : std::size(kinds);
    if (iKind >= std::size(kinds)) return schema::sTypeText(pType);
    std::string sText(kinds[iKind]);
    return pType->sName.empty() ? sText : sText + " (" + pType->sName + ")";
}

std::string_view givenKind(const NewValue& value) {
    constexpr std::string_view kinds[] = {"nothing",  "a derived value", "a truth value", "a truth value", "an integer",
                                          "a number", "a text",          "a binary",      "an element",    "a list"};
    return kinds[value.content().index()];
}

std::string sQuoted(std::string_view text) {
    std::string sText(text.substr(0, g_iMostShown));
    for (char& c : sText)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) c = '?';
    return "\"" + sText + (text.size() > g_iMostShown ? "...\"" : "\"");
}

std::string sItems(std::size_t iCount) { return std::to_string(iCount) + (iCount == 1 ? " item" : " items"); }

// The names of the types that a select takes beside entities, nested selects looked through.
void vTypeNames(const ObjectBase* pSelect, std::vector<std::string_view>& names, int iDepth = 0) {
    const auto* pMembers = dynamic_cast<const schema::DataTypeSelect*>(schema::pDataTypeOf(pSelect));
    if (!pMembers || iDepth > 16) return;   // a schema of the user's own may go in circles
    for (const ObjectBase* pMember : pMembers->members) {
        const schema::DataTypeBase* pDataType = schema::pDataTypeOf(pMember);
        if (pDataType && pDataType->kind == DataKind::Select)
            vTypeNames(pMember, names, iDepth + 1);
        else if (schema::pAsType(pMember))
            names.push_back(pMember->sName);
    }
}

// Whether an item may stand there once only.
bool boOnce(const ObjectBase* pAggregate) {
    const auto* pType = dynamic_cast<const schema::DataTypeAggregate*>(schema::pDataTypeOf(pAggregate));
    return pType && !pType->boBag && (pType->kind == DataKind::Set || pType->boUnique);
}

std::optional<long long> bound(std::string_view text) {
    long long iBound = 0;
    const auto [pEnd, error] = std::from_chars(text.data(), text.data() + text.size(), iBound);
    return error == std::errc() && pEnd == text.data() + text.size() ? std::optional(iBound) : std::nullopt;
}

}   // namespace

void ValueCheck::vRefuse(const std::string& sText) const { throw ValueError(m_sWhere + " " + sText); }

void ValueCheck::vWrongKind(const NewValue& value, const ObjectBase* pType) const {
    vRefuse("takes " + sTaken(pType) + ", not " + std::string(givenKind(value)));
}

double ValueCheck::number(const NewValue& value, const ObjectBase* pType) const {
    double number = 0;
    if (const auto* piInteger = std::get_if<std::int64_t>(&value.content()))
        number = static_cast<double>(*piInteger);
    else if (const auto* pNumber = std::get_if<double>(&value.content()))
        number = *pNumber;
    else
        vWrongKind(value, pType);
    if (!std::isfinite(number)) vRefuse("takes no infinite number and none that is no number");
    return number;
}

// A file with a larger one could not be read as it was written.
long long ValueCheck::iInteger(const NewValue& value, const ObjectBase* pType) const {
    const auto* piInteger = std::get_if<std::int64_t>(&value.content());
    if (!piInteger) vWrongKind(value, pType);
    if (!std::in_range<std::int32_t>(*piInteger))
        vRefuse("takes an integer of 32 bits, not " + std::to_string(*piInteger));
    return *piInteger;
}

LogicalValue ValueCheck::logical(const NewValue& value, const ObjectBase* pType) const {
    if (const auto* pboTruth = std::get_if<bool>(&value.content()))
        return *pboTruth ? LogicalValue::True : LogicalValue::False;
    const auto* pLogical = std::get_if<LogicalValue>(&value.content());
    if (!pLogical) vWrongKind(value, pType);
    return *pLogical;
}

bool ValueCheck::boTruth(const NewValue& value, const ObjectBase* pType) const {
    const LogicalValue truth = logical(value, pType);
    if (truth == LogicalValue::Unknown) vRefuse("takes " + sTaken(pType) + ", not unknown");
    return truth == LogicalValue::True;
}

const std::string& ValueCheck::sText(const NewValue& value, const ObjectBase* pType) const {
    const auto* psText = std::get_if<std::string>(&value.content());
    if (!psText) vWrongKind(value, pType);
    if (!str::boIsValidUtf8(*psText))
        vRefuse("takes UTF-8, which this text is not: " + str::Converter::to_utf8(*psText));
    if (psText->find('\0') != std::string::npos) vRefuse("takes no text with a NUL in it");
    return *psText;
}

const std::string& ValueCheck::sEnumerator(const NewValue& value, const ObjectBase* pType) const {
    const auto* psText = std::get_if<std::string>(&value.content());
    if (!psText) vWrongKind(value, pType);
    const auto& enumeration = dynamic_cast<const schema::DataTypeEnum&>(*schema::pDataTypeOf(pType));
    const auto found = enumeration.items.find(std::string_view(schema::sUpper(*psText)));
    if (found != enumeration.items.end()) return **found;
    const std::vector<std::string_view> names(enumeration.declared.begin(), enumeration.declared.end());
    const std::vector<std::string> near = nearNames(*psText, names);
    std::string sText = "takes an enumerator of " + pType->sName + ", not " + sQuoted(*psText);
    const char* pBefore = near.empty() ? "; there are: " : "; did you mean ";
    for (const auto& name : near.empty() ? enumeration.declared : near) {
        sText += pBefore + name;
        pBefore = ", ";
    }
    vRefuse(near.empty() ? sText : sText + "?");
}

const Bytes& ValueCheck::binary(const NewValue& value, const ObjectBase* pType) const {
    const auto* pBytes = std::get_if<Bytes>(&value.content());
    if (!pBytes) vWrongKind(value, pType);
    if (pBytes->empty()) vRefuse("takes a binary of one byte or more");
    return *pBytes;
}

Guid ValueCheck::guid(const NewValue& value, const ObjectBase* pType, const ifc::Entity& owner) const {
    const std::string& sGuid = sText(value, pType);
    const std::optional<Guid> guid =
        sGuid.size() == ifc::IfcGuid::Length ? ifc::IfcGuid::fromIfcGuid(sGuid) : std::nullopt;
    // The first of 22 characters stands for two bits only.
    if (!guid || guid->boIsNull() || ifc::IfcGuid::toIfcGuid(*guid) != sGuid)
        vRefuse("takes a GlobalId of 22 characters, not " + sQuoted(sGuid));
    const ifc::Entity* pOther = m_state.pFromGuid(*guid);
    if (pOther && pOther != &owner) vRefuse("can't be " + sGuid + ": that is " + m_state.sNameOf(*pOther));
    return *guid;
}

ifc::Entity* ValueCheck::pEntity(const NewValue& value, const ObjectBase* pType) const {
    const auto* pElement = std::get_if<Element>(&value.content());
    if (!pElement) vWrongKind(value, pType);
    ifc::Entity& entity = m_state.entityHere(*pElement);
    const auto* pSelect = dynamic_cast<const schema::DataTypeSelect*>(schema::pDataTypeOf(pType));
    const bool boFits = pSelect ? pSelect->isCompatible(entity.schemaEntity())
                                : schema::boIsSubtype(entity.pSchemaEntity(), schema::pAsEntity(pType));
    if (!boFits) vRefuse("takes " + sTaken(pType) + ", not " + m_state.sNameOf(entity));
    return &entity;
}

const NewValue::List& ValueCheck::list(const NewValue& value, const ObjectBase* pType) const {
    const auto* pList = std::get_if<NewValue::List>(&value.content());
    if (!pList) vWrongKind(value, pType);
    vCountCheck(pList->size(), pType);
    vTwiceCheck(*pList, pType);
    return *pList;
}

// "[1:?]" and the like: as many items as that, for an ARRAY exactly its indices. Bounds that are no numbers say nothing.
void ValueCheck::vCountCheck(std::size_t iCount, const ObjectBase* pAggregate) const {
    const auto* pType = dynamic_cast<const schema::DataTypeAggregate*>(schema::pDataTypeOf(pAggregate));
    const std::string_view bounds = pType ? std::string_view(pType->sBounds) : std::string_view();
    const std::size_t iColon = bounds.find(':');
    if (iColon == std::string_view::npos || !bounds.starts_with('[') || !bounds.ends_with(']')) return;
    const std::optional<long long> lower = bound(bounds.substr(1, iColon - 1));
    const std::optional<long long> upper = bound(bounds.substr(iColon + 1, bounds.size() - iColon - 2));
    const bool boArray = pType->kind == DataKind::Array;
    if (!lower || (boArray && !upper)) return;
    const long long iLeast = boArray ? 1 + *upper - *lower : *lower;
    const long long iMost = boArray ? iLeast : upper.value_or(std::numeric_limits<long long>::max());
    const auto iItems = static_cast<long long>(iCount);
    if (iItems < iLeast || iItems > iMost) vRefuse("takes " + schema::sTypeText(pType) + ", not " + sItems(iCount));
}

void ValueCheck::vTwiceCheck(const NewValue::List& items, const ObjectBase* pAggregate) const {
    if (!boOnce(pAggregate)) return;
    std::unordered_set<Element> seen;
    for (const NewValue& item : items)
        if (const auto* pElement = std::get_if<Element>(&item.content()))
            if (!seen.insert(*pElement).second) vTwiceRefuse(m_state.entityHere(*pElement));
}

void ValueCheck::vTwiceRefuse(const ifc::Entity& entity) const {
    vRefuse("takes each element once, and " + m_state.sNameOf(entity) + " stands there twice");
}

void ValueCheck::vAppendCheck(const std::vector<ifc::Entity*>& present, const ifc::Entity& item,
                              const ObjectBase* pType) const {
    vCountCheck(present.size() + 1, pType);
    if (boOnce(pType) && std::ranges::find(present, &item) != present.end()) vTwiceRefuse(item);
}

const schema::Type* ValueCheck::pTypeOf(const NewValue& value, const ObjectBase* pSelect) const {
    if (std::holds_alternative<Element>(value.content())) return nullptr;
    std::vector<std::string_view> names;
    vTypeNames(pSelect, names);
    if (names.empty()) vWrongKind(value, pSelect);
    if (value.typeName().empty()) {
        if (names.size() > 1)
            vRefuse("takes " + pSelect->sName + ": the value needs its type, as in typed(\"" + std::string(names[0]) +
                    "\", value)");
        return schema::pAsType(m_state.schema().pObjectFromName(names[0]));
    }
    const ObjectBase* pObject = m_state.schema().pObjectFromName(value.typeName());
    const auto* pMembers = dynamic_cast<const schema::DataTypeSelect*>(schema::pDataTypeOf(pSelect));
    const schema::Type* pType = schema::pAsType(pObject);
    if (!pType || !pType->pDataType || !pMembers->isCompatible(*pType))
        vThrowName(m_sWhere + " takes " + pSelect->sName + ", which has no type " + value.typeName(), value.typeName(),
                   names);
    return pType;
}

}   // namespace oxa::detail
