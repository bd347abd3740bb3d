// SPDX-License-Identifier: Apache-2.0
#include "Model/Value.h"

#include <limits>
#include <utility>

#include "Format/Ifc/IfcCellVisit.h"
#include "Format/Ifc/IfcFileAttribute.h"
#include "Format/Ifc/IfcGuid.h"
#include "Model/Error.h"
#include "Model/ModelState.h"
#include "platform/String.h"

namespace oxa {

namespace schema = ifc::def::schema;
using detail::ModelState;

namespace {

template <class Cell>
const Cell& as(const ifc::AttributeBase& cell) {
    return static_cast<const Cell&>(cell);
}

constexpr std::string_view g_kindNames[] = {"no value",   "a derived value", "a text",          "a number",
                                            "an integer", "a boolean",       "a logical value", "an enumerator",
                                            "a binary",   "an element",      "a list"};

}   // namespace

std::string_view kindName(Kind kind) noexcept { return g_kindNames[static_cast<std::size_t>(kind)]; }

// What a value is, once selects and flags are looked through.
struct Value::Seen {
    Kind eKind = Kind::Null;
    const schema::ObjectBase* pType = nullptr;   // of what is told, inside of selects
    bool boTyped = false;                        // a select wraps it
    const ifc::AttributeBase* pCell = nullptr;   // of a list, a binary or a GlobalId
    double number = 0;
    std::int64_t iInteger = 0;   // the truth values too
    const char* pText = nullptr;
    ifc::Entity* pEntity = nullptr;

    [[nodiscard]] bool boNothing() const noexcept { return eKind == Kind::Null || eKind == Kind::Derived; }
    // Each answers where to look next, which is nowhere.
    using Next = const ifc::AttributeBase*;
    Next told(Kind eNew) {
        eKind = eNew;
        return nullptr;
    }
    Next told(const ifc::AttributeBase& cell, Kind eNew) {
        pCell = &cell;
        return told(eNew);
    }
    Next told(const char* pNew, Kind eNew) {
        pText = pNew;
        return pNew ? told(eNew) : nullptr;   // else it could not be read
    }
    Next told(std::int64_t iNew, Kind eNew) {
        iInteger = iNew;
        return told(eNew);
    }
    Next told(double newNumber) {
        number = newNumber;
        return told(Kind::Number);
    }
    Next told(ifc::Entity* pNew) {
        pEntity = pNew;
        return pNew && pNew->pSchemaEntity() ? told(Kind::Element) : nullptr;   // else the file does not define it
    }
    void vCell(const ifc::AttributeBase& cell);
};

// Selects in selects are gone through one after the other: a file decides how deep they are.
void Value::Seen::vCell(const ifc::AttributeBase& cell) {
    ifc::CellClass eClass = ifc::AttributeBase::cellClass(pType);
    const ifc::Overloads visitor{
        [&](const ifc::AttributeReal& real) { return told(real.m_value.load()); },
        [&](const ifc::AttributeInteger& integer) { return told(integer.m_value.load(), Kind::Integer); },
        [&](const ifc::AttributeBoolean& boolean) { return told(std::int64_t{boolean.m_value}, Kind::Boolean); },
        [&](const ifc::AttributeLogical& logical) {
            return told(static_cast<std::int64_t>(logical.m_value.load()), Kind::Logical);
        },
        [&](const ifc::AttributeString& text) { return told(text.m_value.load(), Kind::Text); },
        [&](const ifc::AttributeGuid& guid) {
            return guid.m_value.load().boIsNull() ? Next() : told(guid, Kind::Text);
        },
        [&](const ifc::AttributeEnumeration& text) { return told(text.m_value.load(), Kind::Enumerator); },
        [&](const ifc::AttributeBinary& binary) { return told(binary, Kind::Binary); },
        [&](const ifc::AttributeListValueBase& list) { return told(list, Kind::List); },
        [&](const ifc::AttributeEntity& entity) { return told(entity.m_value.load()); },
        [&](const ifc::AttributeSelect& select) -> Next {
            const bool boEntity = select.m_eType.load() == ifc::AttributeType::Entity;
            boTyped = !boEntity;
            if (boTyped) pType = select.m_pType.load();
            eClass = boEntity ? ifc::CellClass::Entity : ifc::AttributeBase::cellClass(pType);
            return select.m_pValue;
        }};
    for (Next pHere = &cell; pHere;) {
        if (!pHere->boHasValue()) {
            eKind = pHere->m_boDerived ? Kind::Derived : Kind::Null;
            return;
        }
        pHere = ifc::visitCell(*pHere, eClass, visitor);
    }
}

Value::Value(const Element& owner, const schema::Attribute& attribute, const ifc::AttributeBase& cell) noexcept
    : m_owner(owner),
      m_pAttribute(&attribute),
      m_pType(attribute.types.empty() ? nullptr : attribute.types.front()),
      m_pCell(&cell),
      m_ePlace(m_pType ? Place::Cell : Place::Nothing) {}

Value::Seen Value::seen() const {
    Seen value;
    if (m_ePlace == Place::Nothing && !m_pAttribute) return value;   // of nobody
    static_cast<void>(ModelState::of(m_owner));
    value.pType = m_pType;
    switch (m_ePlace) {
    case Place::Nothing: break;
    case Place::Cell: value.vCell(*m_pCell); break;
    case Place::Number: value.told(m_number); break;
    case Place::Integer: value.told(m_iInteger, Kind::Integer); break;
    case Place::Text: value.told(m_pText, Kind::Text); break;
    case Place::Entity: value.told(m_pEntity); break;
    }
    return value;
}

template <class Visit>
void Value::forEachItem(const Seen& value, Visit&& visit) const {
    Value each(*this);
    each.m_pType = schema::pElementOf(value.pType);
    const auto vTell = [&](Place ePlace) {
        each.m_ePlace = ePlace;
        visit(std::as_const(each));
    };
    const ifc::Overloads tell{[&](double number) { each.m_number = number, vTell(Place::Number); },
                              [&](long long iInteger) { each.m_iInteger = iInteger, vTell(Place::Integer); },
                              [&](const char* pText) { each.m_pText = pText, vTell(Place::Text); },
                              [&](ifc::Entity* pEntity) { each.m_pEntity = pEntity, vTell(Place::Entity); },
                              [&](const ifc::AttributeBase& cell) { each.m_pCell = &cell, vTell(Place::Cell); }};
    const ifc::Overloads all{[&]<class T>(const ifc::Array<T>* pItems) {
                                 if (!pItems) return;
                                 for (const auto& item : *pItems)
                                     if constexpr (std::is_base_of_v<ifc::AttributeBase, T>)
                                         tell(item);
                                     else
                                         tell(item.load());
                             },
                             [&](const ifc::EntityList* pItems) {
                                 if (!pItems) return;
                                 for (ifc::Entity* pEntity : *pItems) tell(pEntity);
                             },
                             [](ifc::NoItems) {}};
    ifc::visitItems(as<ifc::AttributeListValueBase>(*value.pCell), all);
}

std::string Value::where() const {
    return ModelState::of(m_owner).sNameOf(ModelState::entityOf(m_owner)) + ": " + m_pAttribute->sName;
}

void Value::wrongKind(const Seen& value, std::string_view wanted) const {
    std::string sText = where() + " is " + std::string(kindName(value.eKind));
    if (const schema::Type* pType = schema::pAsType(value.pType)) sText += " (" + pType->sName + ")";
    throw TypeError(sText + ", not " + std::string(wanted));
}

void Value::noValue() const { throw ValueError(m_pAttribute ? where() + " has no value" : "there is no value"); }

Kind Value::kind() const { return seen().eKind; }

std::optional<std::string> Value::text() const {
    const Seen value = seen();
    if (value.boNothing()) return std::nullopt;
    if (value.eKind == Kind::Enumerator) return value.pText;
    if (value.eKind != Kind::Text) wrongKind(value, "a text");
    return value.pCell ? ifc::IfcGuid::toIfcGuid(as<ifc::AttributeGuid>(*value.pCell).m_value) : value.pText;
}

std::optional<double> Value::number() const {
    const Seen value = seen();
    if (value.boNothing()) return std::nullopt;
    if (value.eKind == Kind::Integer) return static_cast<double>(value.iInteger);
    if (value.eKind != Kind::Number) wrongKind(value, "a number");
    return value.number;
}

std::optional<std::int64_t> Value::integer() const {
    const Seen value = seen();
    if (value.boNothing()) return std::nullopt;
    if (value.eKind != Kind::Integer) wrongKind(value, "an integer");
    return value.iInteger;
}

std::optional<LogicalValue> Value::logical() const {
    const Seen value = seen();
    if (value.boNothing()) return std::nullopt;
    if (value.eKind != Kind::Boolean && value.eKind != Kind::Logical) wrongKind(value, "a truth value");
    return static_cast<LogicalValue>(value.iInteger);
}

std::optional<bool> Value::boolean() const {
    const std::optional<LogicalValue> value = logical();
    if (!value || *value == LogicalValue::Unknown) return std::nullopt;
    return *value == LogicalValue::True;
}

std::optional<Bytes> Value::binary() const {
    const Seen value = seen();
    if (value.boNothing()) return std::nullopt;
    if (value.eKind != Kind::Binary) wrongKind(value, "a binary");
    const auto& cell = as<ifc::AttributeBinary>(*value.pCell);
    const unsigned char* pBytes = cell.m_value;
    return pBytes ? Bytes(pBytes, pBytes + cell.m_iCount.load()) : Bytes();
}

Element Value::element() const {
    const Seen value = seen();
    if (value.boNothing()) return {};
    if (value.eKind != Kind::Element) wrongKind(value, "an element");
    return ModelState::of(m_owner).elementOf(value.pEntity);
}

void Value::elementsAdd(std::vector<ifc::Entity*>& entities) const {
    const Seen value = seen();
    if (value.eKind == Kind::Element) return entities.push_back(value.pEntity);
    if (value.eKind == Kind::List) return forEachItem(value, [&](const Value& each) { each.elementsAdd(entities); });
    if (!value.boNothing() && !value.boTyped)   // a select may hold elements beside values
        throw TypeError(where() + " holds " + std::string(kindName(value.eKind)) + ", not an element");
}

Elements Value::elements() const {
    const Seen value = seen();
    if (value.boNothing()) return {};
    if (value.eKind != Kind::Element && value.eKind != Kind::List) wrongKind(value, "an element or a list of them");
    std::vector<ifc::Entity*> entities;
    elementsAdd(entities);
    return ModelState::of(m_owner).elementsOf(std::move(entities));
}

std::vector<Value> Value::items() const {
    const Seen value = seen();
    std::vector<Value> items;
    if (value.boNothing()) return items;
    if (value.eKind != Kind::List) wrongKind(value, "a list");
    forEachItem(value, [&](const Value& each) { items.push_back(each); });
    return items;
}

std::size_t Value::size() const {
    const Seen value = seen();
    std::size_t iCount = 0;
    if (value.boNothing()) return iCount;
    if (value.eKind != Kind::List) wrongKind(value, "a list");
    forEachItem(value, [&](const Value&) { ++iCount; });
    return iCount;
}

std::string_view Value::typeName() const {
    const Seen value = seen();
    if (value.eKind == Kind::Element) return value.pEntity->schemaEntity().sName;
    const schema::Type* pType = schema::pAsType(value.pType);
    return pType ? std::string_view(pType->sName) : std::string_view();
}

bool Value::isTyped() const { return seen().boTyped; }

std::string Value::declaredType() const {
    static_cast<void>(seen());   // throws where there is nothing to ask any more
    return schema::sTypeText(m_pType);
}

namespace {

std::string sHexadecimal(const Bytes& bytes) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string sText;
    for (const unsigned char c : bytes) {
        sText += digits[c >> 4];
        sText += digits[c & 15];
    }
    return sText;
}

}   // namespace

std::string Value::toString() const {
    const Seen value = seen();
    switch (value.eKind) {
    case Kind::Null: return {};
    case Kind::Derived: return "*";
    case Kind::Text:
    case Kind::Enumerator: return *text();
    case Kind::Number: return str::Manip::valueFormatDefault(value.number);
    case Kind::Integer: return std::to_string(value.iInteger);
    case Kind::Boolean:
    case Kind::Logical: return value.iInteger < 0 ? "unknown" : value.iInteger ? "true" : "false";
    case Kind::Binary: return sHexadecimal(*binary());
    case Kind::Element: return "#" + std::to_string(ModelState::of(m_owner).iNumberOf(*value.pEntity));
    case Kind::List: break;
    }
    std::string sText;
    forEachItem(value, [&](const Value& each) { sText += (sText.empty() ? "" : ",") + each.toString(); });
    return "(" + sText + ")";
}

// The same by type.
template <>
std::optional<bool> Value::optional() const {
    return boolean();
}
template <>
std::optional<double> Value::optional() const {
    return number();
}
template <>
std::optional<LogicalValue> Value::optional() const {
    return logical();
}
template <>
std::optional<std::string> Value::optional() const {
    return text();
}
template <>
std::optional<Bytes> Value::optional() const {
    return binary();
}
namespace {

// A long has 32 bits on some systems.
template <class Number, class Where>
std::optional<Number> narrowed(std::optional<std::int64_t> number, const Where& where) {
    if (!number) return std::nullopt;
    if (!std::in_range<Number>(*number)) throw ValueError(where() + std::to_string(*number));
    return static_cast<Number>(*number);
}

}   // namespace

template <>
std::optional<long> Value::optional() const {
    return narrowed<long>(integer(), [this] { return where() + " is too large for a long: "; });
}
template <>
std::optional<long long> Value::optional() const {
    const std::optional<std::int64_t> value = integer();
    return value ? std::optional(static_cast<long long>(*value)) : std::nullopt;
}
template <>
std::optional<int> Value::optional() const {
    return narrowed<int>(integer(), [this] { return where() + " is too large for an int: "; });
}
template <>
std::optional<Element> Value::optional() const {
    const Element found = element();
    return found ? std::optional(found) : std::nullopt;
}
template <>
std::optional<Elements> Value::optional() const {
    return isNull() ? std::nullopt : std::optional(elements());
}

namespace {

// Empty where there is no list.
template <class T, class Get>
std::optional<std::vector<T>> vectorOf(const Value& value, Get&& get) {
    if (const Kind kind = value.kind(); kind == Kind::Null || kind == Kind::Derived) return std::nullopt;
    std::vector<T> result;
    for (const Value& item : value.items()) result.push_back(get(item));
    return result;
}

}   // namespace

template <>
std::optional<std::vector<double>> Value::optional() const {
    return vectorOf<double>(*this, [](const Value& item) { return item.get<double>(); });
}
template <>
std::optional<std::vector<std::int64_t>> Value::optional() const {
    return vectorOf<std::int64_t>(*this, [](const Value& item) { return item.get<std::int64_t>(); });
}
template <>
std::optional<std::vector<std::string>> Value::optional() const {
    return vectorOf<std::string>(*this, [](const Value& item) { return item.get<std::string>(); });
}
template <>
std::optional<std::vector<Element>> Value::optional() const {
    return vectorOf<Element>(*this, [](const Value& item) { return item.get<Element>(); });
}

}   // namespace oxa
