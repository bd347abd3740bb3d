// SPDX-License-Identifier: Apache-2.0
// Values as people write them, into the attribute of an entity. Everything is parsed and checked before the cell is
// written; the first fault ends it, as an exception inside of this file and as a Refusal outside.
#include "Convert/ValueFromText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <set>
#include <utility>

#include "Convert/EntityFromText.h"
#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcGuid.h"
#include "Format/Ifc/IfcNumbers.h"
#include "Format/Ifc/IfcTypeSelectBase.h"
#include "platform/String.h"

namespace oxa::convert {

namespace schema = ifc::def::schema;
using ifc::types::IfcSelectBase;
using schema::DataKind;

namespace {

// What ends the reading of a text, wherever it stands.
struct RefusedText {
    Refusal refusal;
};

// "1,234 items".
std::string sItems(std::size_t iCount) {
    std::string sCount = std::to_string(iCount);
    for (std::size_t i = sCount.size(); i > 3;) sCount.insert(i -= 3, ",");
    return sCount + (iCount == 1 ? " item" : " items");
}

std::string_view unspaced(std::string_view text) {
    const std::size_t iFirst = text.find_first_not_of(' ');
    if (iFirst == std::string_view::npos) return {};
    return text.substr(iFirst, text.find_last_not_of(' ') - iFirst + 1);
}

bool boQuoted(std::string_view text) { return text.size() >= 2 && text.front() == '\'' && text.back() == '\''; }

// An enumerator, a truth value or a type's keyword, with or without dots: upper case, no dots.
std::string sWord(std::string_view text) {
    if (text.size() > 2 && text.front() == '.' && text.back() == '.') text = text.substr(1, text.size() - 2);
    return schema::sUpper(text);
}

template <class Texts>
std::vector<std::string> texts(const Texts& all) {
    return {all.begin(), all.end()};
}

// What a type is, for messages.
std::string sKind(const schema::ObjectBase* pObject) {
    std::string sType = schema::sTypeText(pObject);
    const schema::Type* pType = schema::pAsType(pObject);
    if (pType && pType->pDataType && pType->pDataType->kind < DataKind::Enumeration)
        sType += " (" + schema::sTypeText(pType->pDataType) + ')';
    return sType;
}

// The readers of single values. "m_sWhere" begins all messages: type and name of the attribute.
class Reader {
public:
    Reader(const ifc::Data& data, std::string sWhere) : m_data(data), m_sWhere(std::move(sWhere)) {}

    [[noreturn]] void vRefuse(std::string_view value, std::string sReason,
                              Refusal::Why eWhy = Refusal::Why::Value) const {
        throw RefusedText{{eWhy, m_sWhere, std::string(value), std::move(sReason)}};
    }

    double real(std::string_view text) const {
        const std::optional<double> number = ifc::toDouble(text.data(), text.data() + text.size());
        if (!number || !std::isfinite(*number)) vRefuse(text, "is no number");
        return *number;
    }
    // What a read takes: a larger one would be lost with the next.
    long long iInteger(std::string_view text) const {
        const std::optional<int> number = ifc::toInt(text.data(), text.data() + text.size());
        if (!number) vRefuse(text, "is no whole number of 32 bits");
        return *number;
    }
    LogicalValue logical(std::string_view text, bool boWithUnknown) const {
        const std::string sText = sWord(text);
        if (sText == "T" || sText == "TRUE") return LogicalValue::True;
        if (sText == "F" || sText == "FALSE") return LogicalValue::False;
        if (boWithUnknown && (sText == "U" || sText == "UNKNOWN")) return LogicalValue::Unknown;
        vRefuse(text, boWithUnknown ? "is none of true, false, unknown" : "is neither true nor false");
    }
    std::string sText(std::string_view text) const {
        if (!str::boIsValidUtf8(text)) vRefuse("the text", "is no UTF-8");
        if (!boQuoted(text)) return std::string(text);
        std::string sResult;
        const std::string_view inside = text.substr(1, text.size() - 2);
        for (std::size_t i = 0; i < inside.size(); ++i) {
            if (inside[i] == '\'' && inside.substr(i + 1, 1) != "'")
                vRefuse(text, "has a single quote inside; write ''");
            if (inside[i] == '\'') ++i;
            sResult += inside[i];
        }
        return sResult;
    }
    Guid guid(std::string_view text, const ifc::Entity& entity) const {
        const std::string sGuid = sText(text);
        const std::optional<Guid> guid =
            sGuid.size() == ifc::IfcGuid::Length ? ifc::IfcGuid::fromIfcGuid(sGuid) : std::nullopt;
        // The first of 22 characters stands for two bits only.
        if (!guid || guid->boIsNull() || ifc::IfcGuid::toIfcGuid(*guid) != sGuid)
            vRefuse(text, "is no GlobalId of 22 characters");
        const ifc::Entity* pOther = pEntityFromGlobalId(m_data, *guid);
        if (pOther && pOther != &entity)
            vRefuse(text, "is the GlobalId of #" + std::to_string(m_data.iIdFromEntity(*pOther)));
        return *guid;
    }
    std::vector<unsigned char> bytes(std::string_view text) const {
        std::vector<unsigned char> result;
        for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
            const auto [pEnd, error] = std::from_chars(&text[i], &text[i] + 2, result.emplace_back(), 16);
            if (pEnd != &text[i] + 2) result.clear(), i = text.size();
        }
        if (result.empty() || result.size() * 2 != text.size())
            vRefuse(text, "is no row of pairs of hexadecimal digits");
        return result;
    }
    const std::string& sEnumerator(std::string_view text, const schema::DataTypeBase& type) const {
        const auto& enumeration = dynamic_cast<const schema::DataTypeEnum&>(type);
        const auto it = enumeration.items.find(std::string_view(sWord(text)));
        if (it == enumeration.items.end())
            throw RefusedText{{Refusal::Why::Enumerator, m_sWhere, std::string(text),
                               "is no enumerator of " + type.sName, type.sName, texts(enumeration.declared)}};
        return **it;
    }
    ifc::Entity* pEntity(std::string_view text, const schema::ObjectBase* pTarget) const {
        if (!text.starts_with('#')) vRefuse(text, "is no " + sKind(pTarget) + ", which is named by a number as #12");
        const std::optional<std::size_t> number = numberFromText(text);
        if (!number) vRefuse(text, "is no number of an entity, as #12 is", Refusal::Why::Number);
        ifc::Entity* pEntity = m_data.pEntityFromId(*number);
        if (!pEntity) vRefuse(text, "does not exist");
        if (!boFits(*pEntity->pSchemaEntity(), pTarget))
            vRefuse(text, "is an " + pEntity->pSchemaEntity()->sName + ", no " + sKind(pTarget));
        return pEntity;
    }
    IfcSelectBase select(std::string_view text, const schema::ObjectBase* pSelect) const;
    // The items between the parentheses of a list.
    std::vector<std::string_view> items(std::string_view text, const schema::ObjectBase* pAggregate) const;

private:
    static bool boFits(const schema::Entity& type, const schema::ObjectBase* pTarget) {
        if (const schema::Entity* pWanted = schema::pAsEntity(pTarget)) return schema::boIsSubtype(&type, pWanted);
        const auto* pSelect = dynamic_cast<const schema::DataTypeSelect*>(schema::pDataTypeOf(pTarget));
        return pSelect && pSelect->isCompatible(type);
    }
    void vCountCheck(std::string_view text, std::size_t iCount, const schema::ObjectBase* pAggregate) const;
    [[noreturn]] void vUntyped(std::string_view text, const schema::ObjectBase* pSelect) const;
    IfcSelectBase typedList(const schema::Type& type, std::string_view text) const;

    const ifc::Data& m_data;
    std::string m_sWhere;
};

// The names of the types that a select takes, nested selects looked through.
void vTypeNames(const schema::ObjectBase* pSelect, std::vector<std::string_view>& names, int iDepth = 0) {
    const auto* pMembers = dynamic_cast<const schema::DataTypeSelect*>(schema::pDataTypeOf(pSelect));
    if (!pMembers || iDepth > 16) return;   // a schema of the user's own may go in circles
    for (const schema::ObjectBase* pMember : pMembers->members) {
        const schema::DataTypeBase* pDataType = schema::pDataTypeOf(pMember);
        if (pDataType && pDataType->kind == DataKind::Select)
            vTypeNames(pMember, names, iDepth + 1);
        else if (schema::pAsType(pMember))
            names.push_back(pMember->sNameUpper);
    }
}

void Reader::vUntyped(std::string_view text, const schema::ObjectBase* pSelect) const {
    std::vector<std::string_view> names;
    vTypeNames(pSelect, names);
    if (names.empty()) vRefuse(text, "is no " + sKind(pSelect) + ", which is named by a number as #12");
    const std::string sReason =
        "has no type of " + sKind(pSelect) + " in front, as in " + std::string(names.front()) + "(value)";
    throw RefusedText{
        {Refusal::Why::SelectType, m_sWhere, std::string(text), sReason, schema::sTypeText(pSelect), texts(names)}};
}

// "#12", or the type's name and the value in parentheses: IFCLABEL(text).
IfcSelectBase Reader::select(std::string_view text, const schema::ObjectBase* pSelect) const {
    if (text.starts_with('#')) return IfcSelectBase(pEntity(text, pSelect));
    const std::size_t iOpen = text.find('(');
    if (iOpen == std::string_view::npos || !text.ends_with(')')) vUntyped(text, pSelect);
    const ifc::def::SchemaPset* pSchema = m_data.pSchema();
    const schema::Type* pType = schema::pAsType(pSchema->pObjectFromName(unspaced(text.substr(0, iOpen))));
    const auto* pMembers = dynamic_cast<const schema::DataTypeSelect*>(schema::pDataTypeOf(pSelect));
    if (!pType || !pType->pDataType || !pMembers || !pMembers->isCompatible(*pType)) vUntyped(text, pSelect);
    const std::string_view inside = unspaced(text.substr(iOpen + 1, text.size() - iOpen - 2));
    switch (pType->pDataType->kind) {
    case DataKind::Real:
    case DataKind::Number: return {pType, real(inside)};
    case DataKind::Integer: return {pType, iInteger(inside)};
    case DataKind::Boolean: return {pType, logical(inside, false) == LogicalValue::True};
    case DataKind::Logical: return {pType, logical(inside, true)};
    case DataKind::String: return {pType, sText(inside)};
    case DataKind::Enumeration: return {pType, sEnumerator(inside, *pType->pDataType).c_str()};
    case DataKind::Array:
    case DataKind::List:
    case DataKind::Set: return typedList(*pType, inside);
    case DataKind::Binary:
    case DataKind::Select: break;
    }
    vRefuse(text, "can't be set: " + pType->sName + " is " + schema::sTypeText(pType->pDataType));
}

IfcSelectBase Reader::typedList(const schema::Type& type, std::string_view text) const {
    const schema::ObjectBase* pElement = pElementOf(&type);
    const schema::DataTypeBase* pItem = schema::pDataTypeOf(pElement);
    const std::vector<std::string_view> all = items(text, &type);
    if (schema::pAsEntity(pElement)) {
        std::set<ifc::Entity*> entities;
        for (const std::string_view item : all) entities.insert(pEntity(item, pElement));
        return {&type, std::move(entities)};
    }
    if (pItem && pItem->kind == DataKind::Integer) {
        std::vector<long long> integers;
        for (const std::string_view item : all) integers.push_back(iInteger(item));
        return {&type, std::move(integers)};
    }
    std::vector<double> reals;
    for (const std::string_view item : all) reals.push_back(real(item));
    return {&type, std::move(reals)};
}

// "[1:?]" and the like: as many items as that, for an ARRAY exactly its indices. Bounds that are no numbers are not
// tested.
void Reader::vCountCheck(std::string_view text, std::size_t iCount, const schema::ObjectBase* pAggregate) const {
    const auto* pType = dynamic_cast<const schema::DataTypeAggregate*>(schema::pDataTypeOf(pAggregate));
    if (!pType || pType->sBounds.size() < 5) return;
    const std::string& sBounds = pType->sBounds;
    const std::size_t iColon = sBounds.find(':');
    if (iColon == std::string::npos) return;
    const std::optional<int> lower = ifc::toInt(sBounds.data() + 1, sBounds.data() + iColon);
    const std::optional<int> upper = ifc::toInt(sBounds.data() + iColon + 1, sBounds.data() + sBounds.size() - 1);
    if (!lower) return;
    const bool boArray = pType->kind == DataKind::Array;
    if (boArray && !upper) return;
    const auto iItems = static_cast<long long>(iCount);
    const long long iLeast = boArray ? 1LL + *upper - *lower : *lower;
    const long long iMost = boArray ? iLeast : upper ? *upper : std::numeric_limits<long long>::max();
    if (iItems < iLeast || iItems > iMost)
        vRefuse(text, "has " + sItems(iCount) + "; its type is " + schema::sTypeText(pType));
}

// Commas inside of quotes and of nested parentheses cut nothing. "()" is an empty list.
std::vector<std::string_view> Reader::items(std::string_view text, const schema::ObjectBase* pAggregate) const {
    if (!text.starts_with('(') || !text.ends_with(')') || text.size() < 2)
        vRefuse(text, "is no " + sKind(pAggregate) + ", which is written (a,b,c)");
    const std::string_view inside = text.substr(1, text.size() - 2);
    std::vector<std::string_view> result;
    bool boInQuotes = false;
    int iDepth = 0;
    std::size_t iStart = 0;
    for (std::size_t i = 0; i < inside.size(); ++i) {
        const char c = inside[i];
        if (c == '\'') boInQuotes = !boInQuotes;
        if (boInQuotes) continue;
        if (c == '(') ++iDepth;
        if (c == ')' && --iDepth < 0) break;
        if (c != ',' || iDepth) continue;
        result.push_back(unspaced(inside.substr(iStart, i - iStart)));
        iStart = i + 1;
    }
    if (boInQuotes || iDepth) vRefuse(text, "has a quote or a parenthesis without its partner");
    if (!unspaced(inside).empty()) result.push_back(unspaced(inside.substr(iStart)));
    vCountCheck(text, result.size(), pAggregate);
    return result;
}

// Stores one value by the kind of the attribute.
class Setter {
public:
    Setter(ifc::Data& data, ifc::Entity& entity, const schema::Attribute& attribute)
        : m_data(data),
          m_entity(entity),
          m_attribute(attribute),
          m_name(attribute),
          m_pType(attribute.pType()),
          m_reader(data, entity.schemaEntity().sName + '.' + attribute.sName) {}

    void vSet(std::string_view value) {
        if (m_entity.boIsDerived(m_name))
            m_reader.vRefuse(value, "is derived from other attributes", Refusal::Why::Fixed);
        if (value == "$" && !m_attribute.boOptional) m_reader.vRefuse(value, "is mandatory", Refusal::Why::Fixed);
        const bool boDone = value == "$" ? m_entity.boUndefinedSet(m_name, true) : boSet(value);
        if (!boDone) m_reader.vRefuse(value, "can't be set: its type is " + sKind(m_pType));
    }

private:
    template <class T>
    bool boStore(const T& value) {
        return m_entity.boValueSet(m_name, value, m_data);
    }

    bool boSet(std::string_view value) {
        if (schema::pAsEntity(m_pType)) return boStore<const ifc::Entity*>(m_reader.pEntity(value, m_pType));
        const schema::DataTypeBase* pDataType = schema::pDataTypeOf(m_pType);
        if (!pDataType) return false;
        switch (pDataType->kind) {
        case DataKind::Real:
        case DataKind::Number: return boStore(m_reader.real(value));
        case DataKind::Integer: return boStore(m_reader.iInteger(value));
        case DataKind::Boolean: return boStore(m_reader.logical(value, false) == LogicalValue::True);
        case DataKind::Logical: return boStore(m_reader.logical(value, true));
        case DataKind::String:
            return boGuid() ? boStore(m_reader.guid(value, m_entity)) : boStore(m_reader.sText(value));
        case DataKind::Binary: return boStore(m_reader.bytes(value));
        case DataKind::Enumeration: return boStore(m_reader.sEnumerator(value, *pDataType).c_str());
        case DataKind::Select: {
            auto& select = static_cast<ifc::AttributeSelect&>(cell());
            if (!boSelectStore(select, m_reader.select(value, m_pType))) return false;
            select.vDefined();
            return true;
        }
        case DataKind::Array:
        case DataKind::List:
        case DataKind::Set: break;
        }
        return boListSet(m_reader.items(value, m_pType), pElementOf(m_pType));
    }

    ifc::AttributeBase& cell() const {
        return *m_entity.pAttributeFromIndex(static_cast<unsigned>(m_entity.indexFromName(m_name))).second;
    }
    bool boGuid() const { return cell().m_boGuid; }

    // With the type of the value, which says what the items of a list inside are; the attribute's does not.
    bool boSelectStore(ifc::AttributeSelect& select, const IfcSelectBase& value) {
        const IfcSelectBase::TypeDataBase* pTyped = value.pTypeDataGet();
        return select.boValueSet(value, pTyped ? pTyped->pTypeGet() : nullptr, m_data.pool());
    }

    bool boSelectsStore(const std::vector<IfcSelectBase>& values) {
        // First the room for them: empty values, which are stored nowhere.
        if (!m_entity.boListValueSet(m_name, std::vector<IfcSelectBase>(values.size()), m_data)) return false;
        auto& list = static_cast<ifc::AttributeList&>(cell());
        if (list.m_eItemType.load() == ifc::AttributeType::Entity)
            return m_entity.boListValueSet(m_name, values, m_data);
        ifc::Array<ifc::AttributeSelect>& items = *list.pArray<ifc::AttributeSelect>();
        for (std::size_t i = 0; i < values.size(); ++i)
            if (!boSelectStore(items[i], values[i])) return false;
        return true;
    }

    template <class T, class Read>
    bool boStoreList(const std::vector<std::string_view>& items, Read&& read) {
        std::vector<T> values;
        for (const std::string_view item : items) values.push_back(read(item));
        return m_entity.boListValueSet(m_name, values, m_data);
    }

    bool boListSet(const std::vector<std::string_view>& items, const schema::ObjectBase* pElement) {
        const auto entity = [&](std::string_view item) { return m_reader.pEntity(item, pElement); };
        if (schema::pAsEntity(pElement)) return boStoreList<const ifc::Entity*>(items, entity);
        const schema::DataTypeBase* pItem = schema::pDataTypeOf(pElement);
        if (!pItem) return false;
        switch (pItem->kind) {
        case DataKind::Real: return boStoreList<double>(items, [&](auto item) { return m_reader.real(item); });
        case DataKind::Integer:
            return boStoreList<long long>(items, [&](auto item) { return m_reader.iInteger(item); });
        case DataKind::String: return boStoreList<std::string>(items, [&](auto item) { return m_reader.sText(item); });
        case DataKind::Binary:
            return boStoreList<std::vector<unsigned char>>(items, [&](auto item) { return m_reader.bytes(item); });
        case DataKind::Select: {
            std::vector<IfcSelectBase> values;
            for (const std::string_view item : items) values.push_back(m_reader.select(item, pElement));
            return boSelectsStore(values);
        }
        case DataKind::Array:
        case DataKind::List:
        case DataKind::Set: return boRowsSet(items, pElement);
        case DataKind::Number:
        case DataKind::Boolean:
        case DataKind::Logical:
        case DataKind::Enumeration: break;
        }
        return false;
    }

    template <class T, class Read>
    bool boStoreRows(const std::vector<std::string_view>& rows, const schema::ObjectBase* pRow, Read&& read) {
        return boStoreList<std::vector<T>>(rows, [&](std::string_view row) {
            std::vector<T> values;
            for (const std::string_view item : m_reader.items(row, pRow)) values.push_back(read(item));
            return values;
        });
    }

    bool boRowsSet(const std::vector<std::string_view>& rows, const schema::ObjectBase* pRow) {
        const schema::ObjectBase* pElement = pElementOf(pRow);
        const schema::DataTypeBase* pItem = schema::pDataTypeOf(pElement);
        if (schema::pAsEntity(pElement))
            return boStoreRows<const ifc::Entity*>(rows, pRow,
                                                   [&](auto item) { return m_reader.pEntity(item, pElement); });
        if (pItem && pItem->kind == DataKind::Real)
            return boStoreRows<double>(rows, pRow, [&](auto item) { return m_reader.real(item); });
        if (pItem && pItem->kind == DataKind::Integer)
            return boStoreRows<long long>(rows, pRow, [&](auto item) { return m_reader.iInteger(item); });
        return false;
    }

    ifc::Data& m_data;
    ifc::Entity& m_entity;
    const schema::Attribute& m_attribute;
    schema::AttributeName m_name;
    const schema::ObjectBase* m_pType;
    Reader m_reader;
};

const schema::Attribute& attributeFromName(const schema::Entity& type, std::string_view name) {
    std::vector<std::string> names;
    const std::string sWanted = schema::sUpper(name);
    for (const schema::Attribute* pAttribute : type.allAttributes()) {
        if (schema::sUpper(pAttribute->sName) == sWanted) return *pAttribute;
        names.push_back(pAttribute->sName);
    }
    throw RefusedText{
        {Refusal::Why::Attribute, type.sName, std::string(name), "is none of its attributes", {}, std::move(names)}};
}

}   // namespace

std::optional<Refusal> setFromText(ifc::Data& data, ifc::Entity& entity, std::string_view sName,
                                   std::string_view text) {
    try {
        Setter(data, entity, attributeFromName(entity.schemaEntity(), sName)).vSet(text);
        return std::nullopt;
    } catch (RefusedText& refused) {
        return std::move(refused.refusal);
    }
}

}   // namespace oxa::convert
