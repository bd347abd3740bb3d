// SPDX-License-Identifier: Apache-2.0
// Typed access: values by attribute name and caller's type, one implementation a family.
//
// What a type of value needs beside the family's shape is in one trait: how it is walked, and where it is stored.
#include <cassert>
#include <cstring>
#include <set>
#include <type_traits>

#include "Format/Ifc/Cells/ValueTypes.h"
#include "Format/Ifc/Cells/ValueWalk.h"
#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "Format/Ifc/IfcMissingType.h"
#include "platform/Assert.h"

namespace oxa::ifc {

using def::schema::Attribute;
using def::schema::AttributeName;
using types::IfcSelectBase;

namespace {

const def::schema::ObjectBase& typeOf(const Attribute& attribute) {
    if (!attribute.pType()) throw MissingType();
    return *attribute.pType();
}

// The cell as what its class says.
template <class Cell>
Cell& as(AttributeBase& cell) noexcept {
    return static_cast<Cell&>(cell);
}

// How the walker meets a T, and how its item becomes one. By default T is walked as itself.
template <class T>
struct Walked {
    using Item = T;
    static constexpr bool boSingle = true;   // else T is a whole list
    static void vStore(T& value, Item& item) { value = item; }
};
template <>
struct Walked<const char*> {
    using Item = char*;
    static constexpr bool boSingle = true;
    static void vStore(const char*& value, char*& pText) { value = pText; }
};
template <>
struct Walked<std::string> {
    using Item = char*;
    static constexpr bool boSingle = true;
    static void vStore(std::string& sValue, char*& pText) { sValue = pText ? pText : ""; }
};
template <>
struct Walked<Bytes> {
    using Item = BytesView;
    static constexpr bool boSingle = true;
    static void vStore(Bytes& bytes, BytesView& view) { bytes.assign(view.first, view.first + view.second); }
};
template <>
struct Walked<IfcSelectBase> {
    using Item = AttributeSelect;
    static void vStore(IfcSelectBase& value, const AttributeSelect& cell) { static_cast<void>(cell.boValueGet(value)); }
};
template <std::size_t N, class Tag>
struct Walked<math::Coordinates<N, Tag>> {
    using Item = math::Coordinates<N, Tag>;
    static constexpr bool boSingle = false;
    static void vStore(Item& value, Item& item) { value = item; }
};

// Stores a T in a cell of that class; false where the class takes none.
bool boStore(CellClass eClass, AttributeBase& cell, const Attribute&, Data&, double value) {
    if (eClass != CellClass::Real && eClass != CellClass::Number) return false;
    as<AttributeReal>(cell).m_value = value;
    return true;
}
bool boStore(CellClass eClass, AttributeBase& cell, const Attribute&, Data&, long long iValue) {
    if (eClass != CellClass::Integer) return false;
    as<AttributeInteger>(cell).m_value = iValue;
    return true;
}
bool boStore(CellClass, AttributeBase&, const Attribute&, Data&, unsigned long long) { return false; }
bool boStore(CellClass eClass, AttributeBase& cell, const Attribute&, Data&, bool boValue) {
    if (eClass != CellClass::Boolean) return false;
    as<AttributeBoolean>(cell).m_value = boValue ? 1 : 0;
    return true;
}
bool boStore(CellClass eClass, AttributeBase& cell, const Attribute&, Data&, LogicalValue value) {
    if (eClass != CellClass::Logical) return false;
    as<AttributeLogical>(cell).m_value = value;
    return true;
}
bool boStore(CellClass eClass, AttributeBase& cell, const Attribute&, Data&, const Guid& guid) {
    if (eClass != CellClass::Guid) return false;
    if (guid.boIsNull()) {
        Assert::vTell("Format/Ifc/IfcFileAttribute", "oxa::ifc::AttributeGuid::boValueSet",
                      "Not allowed to set null guid");
        return false;
    }
    as<AttributeGuid>(cell).m_value = guid;
    return true;
}
bool boStore(CellClass eClass, AttributeBase& cell, const Attribute& attribute, Data& data, const char* pText) {
    if (eClass == CellClass::String && pText)
        return as<AttributeString>(cell).boValueSet(pText, std::strlen(pText) + 1, data.pool());
    return eClass == CellClass::Enumeration && as<AttributeEnumeration>(cell).boValueSet(pText, attribute, data);
}
bool boStore(CellClass eClass, AttributeBase& cell, const Attribute&, Data& data, const std::string& sText) {
    return eClass == CellClass::String &&
           as<AttributeString>(cell).boValueSet(sText.c_str(), sText.size() + 1, data.pool());
}
bool boStore(CellClass eClass, AttributeBase& cell, const Attribute&, Data& data, const Bytes& bytes) {
    return eClass == CellClass::Binary && !bytes.empty() &&
           as<AttributeBinary>(cell).boValueSet(bytes.data(), bytes.size(), data.pool());
}
bool boStore(CellClass eClass, AttributeBase& cell, const Attribute& attribute, Data& data,
             const IfcSelectBase& value) {
    return eClass == CellClass::Select && as<AttributeSelect>(cell).boValueSet(value, &typeOf(attribute), data.pool());
}
bool boStore(CellClass eClass, AttributeBase& cell, const Attribute& attribute, Data& data, const Entity* pEntity) {
    auto* pStored = const_cast<Entity*>(pEntity);
    if (eClass == CellClass::Select) return boStore(eClass, cell, attribute, data, IfcSelectBase(pStored));
    if (eClass != CellClass::Entity) return false;
    as<AttributeEntity>(cell).m_value = pStored;
    return true;
}
template <std::size_t N, class Tag>
bool boStore(CellClass, AttributeBase&, const Attribute&, Data&, const math::Coordinates<N, Tag>&) {
    return false;   // a list, and nothing else
}

}   // namespace

// A getter finds no value in an attribute whose type the schema lacks; a setter has to refuse it, by the exception that
// says so.
Entity::Found Entity::findToSet(const AttributeName& name, Data& data) const {
    data.vChange();
    const Found found = find(name);
    if (found.pCell && found.pPlace->eClass == CellClass::Unresolved) (void)typeOf(*found.pPlace->pAttribute);
    return found;
}

namespace {

// The values of the cell that a name stands for. "function" is called with each, as its Item.
template <class Item, class Function>
bool boWalk(const DataSizeEntity::Cell* pPlace, const AttributeBase* pCell, const Function& function, Wanted wanted) {
    if (!pCell || !pCell->boHasValue()) return false;
    if (pPlace->pAttribute->types.empty()) throw MissingType();
    return boWalkValues<Item>(*pCell, pPlace->eClass, function, wanted);
}

}   // namespace

template <class T>
bool Entity::boValueGet(const AttributeName& name, T& value) const {
    const auto [pPlace, pCell] = find(name);
    if constexpr (std::is_same_v<T, IfcSelectBase>) {
        return pCell && AttributeSelect::boValueGetFromCell(*pCell, *pPlace->pAttribute, value);
    } else {
        const auto store = [&value](typename Walked<T>::Item& item) {
            Walked<T>::vStore(value, item);
            return true;
        };
        constexpr bool boSingle = Walked<T>::boSingle;
        return boWalk<typename Walked<T>::Item>(pPlace, pCell, store, {boSingle, !boSingle});
    }
}

template <class T>
bool Entity::boListValueGet(const AttributeName& name, std::vector<T>& values) const {
    const auto [pPlace, pCell] = find(name);
    values.clear();
    const auto append = [&values](typename Walked<T>::Item& item) {
        T value{};
        Walked<T>::vStore(value, item);
        values.push_back(std::move(value));
        return true;
    };
    return boWalk<typename Walked<T>::Item>(pPlace, pCell, append, {false, true});
}

template <class T, std::size_t N>
bool Entity::boFixedArrayValueGet(const AttributeName& name, IfcArray<T, N>& value) const {
    const auto [pPlace, pCell] = find(name);
    std::size_t iCount = 0;
    const auto store = [&](T& item) {
        value[iCount++] = item;
        return iCount < N;
    };
    return boWalk<T>(pPlace, pCell, store, {false, true}) && iCount == N;
}

// A list cell takes a value that is a list as a whole, as coordinates are. A select value is never one: it goes to the
// overload of its class, which refuses lists.
template <class T>
bool Entity::boValueSet2(const AttributeName& name, const T& value, Data& data) {
    const auto [pPlace, pCell] = findToSet(name, data);
    if (!pCell) return false;
    const Attribute& attribute = *pPlace->pAttribute;
    const bool boStored = pPlace->eClass == CellClass::List && !std::is_same_v<T, IfcSelectBase>
                              ? as<AttributeList>(*pCell).boValueSet(value, attribute.pType(), data.pool())
                              : boStore(pPlace->eClass, *pCell, attribute, data, value);
    if (boStored) pCell->vDefined();
    return boStored;
}

// Bytes are the exception: a vector of them is one binary value, no list of numbers.
template <class T>
bool Entity::boListValueSet(const AttributeName& name, const std::vector<T>& values, Data& data) {
    if constexpr (std::is_same_v<T, unsigned char>) {
        return boValueSet2(name, values, data);
    } else {
        const auto [pPlace, pCell] = findToSet(name, data);
        if (!pCell || pPlace->eClass != CellClass::List) return false;
        if (!as<AttributeList>(*pCell).boValueSet(values, pPlace->pAttribute->pType(), data.pool())) return false;
        pCell->vDefined();
        return true;
    }
}

template <class T>
bool Entity::boListValuePushBack(const AttributeName& name, const T& value, Data& data) {
    const auto [pPlace, pCell] = findToSet(name, data);
    if (!pCell || pPlace->eClass != CellClass::List) return false;
    if (!as<AttributeList>(*pCell).boPushBackValue(value, *pPlace->pAttribute, data)) return false;
    pCell->vDefined();
    return true;
}

bool Entity::boValuePushBack(const AttributeName& name, const Entity* pEntity, Data& data) {
    return boListValuePushBack<const Entity*>(name, pEntity, data);
}

bool Entity::boValueRemove(const AttributeName& name, const Entity* pEntity, Data& data) {
    const auto [pPlace, pCell] = findToSet(name, data);
    if (!pCell || pPlace->eClass != CellClass::List) return false;
    auto& list = as<AttributeList>(*pCell);
    if (list.m_eItemType.load() != AttributeType::Entity) return false;
    EntityList* pHead = list.pEntities();
    const bool boRemoved = boListRemove(pHead, const_cast<Entity*>(pEntity));
    list.m_pItems = pHead;
    return boRemoved;
}

template <class T, std::size_t N>
bool Entity::boFixedArrayValueSet(const AttributeName& name, const IfcArray<T, N>& value, Data& data) {
    assert(false && "boFixedArrayValueSet is not to be used");
    return boListValueSet(name, std::vector<T>(value.m_values.begin(), value.m_values.end()), data);
}

// The text forms, with which the cell does the work.

bool Entity::boValueAsXmlStringSet(const AttributeName& name, const std::string& text, Data& data,
                                   const std::vector<const def::schema::ObjectBase*>& path) {
    const auto [pPlace, pCell] = find(name);
    return pCell && pCell->boValueAsXmlStringSet(typeOf(*pPlace->pAttribute), text, *pPlace->pAttribute, data, path);
}

bool Entity::boValueAsXmlStringsSet(const AttributeName& name, const std::vector<std::string>& texts, Data& data,
                                    const std::vector<const def::schema::ObjectBase*>& path) {
    const auto [pPlace, pCell] = find(name);
    return pCell && pCell->boValueAsXmlStringsSet(typeOf(*pPlace->pAttribute), texts, *pPlace->pAttribute, data, path);
}

bool Entity::boValueAsXmlStringGet(const AttributeName& name, std::string& text, const Data* data) const {
    const auto [pPlace, pCell] = find(name);
    return pCell && pCell->boValueAsXmlStringGet(typeOf(*pPlace->pAttribute), text, *pPlace->pAttribute, data);
}

bool Entity::boValueAsXmlStringsGet(const AttributeName& name, std::vector<std::string>& texts,
                                    const Data* data) const {
    const auto [pPlace, pCell] = find(name);
    return pCell && pCell->boValueAsXmlStringsGet(typeOf(*pPlace->pAttribute), texts, *pPlace->pAttribute, data);
}

#define OXA_GET_Yes(T) template OXA_IFC_API bool Entity::boValueGet(const AttributeName&, T&) const;
#define OXA_GET_No(T)
#define OXA_GET_LIST_Yes(T) \
    template OXA_IFC_API bool Entity::boListValueGet(const AttributeName&, std::vector<T>&) const;
#define OXA_GET_LIST_No(T)
#define OXA_SET_Yes(T) template OXA_IFC_API bool Entity::boValueSet2(const AttributeName&, const T&, Data&);
#define OXA_SET_No(T)
#define OXA_SET_LIST_Yes(T) \
    template OXA_IFC_API bool Entity::boListValueSet(const AttributeName&, const std::vector<T>&, Data&);
#define OXA_SET_LIST_Name(T) OXA_SET_LIST_Yes(T)
#define OXA_SET_LIST_No(T)
#define OXA_APPEND_Yes(T) template OXA_IFC_API bool Entity::boListValuePushBack(const AttributeName&, const T&, Data&);
#define OXA_APPEND_List(T)
#define OXA_APPEND_No(T)
#define OXA_ACCESS(T, eGet, eGetList, eSet, eSetList, eAppend, eWalk, sName) \
    OXA_GET_##eGet(T) OXA_GET_LIST_##eGetList(T) OXA_SET_##eSet(T) OXA_SET_LIST_##eSetList(T) OXA_APPEND_##eAppend(T)
OXA_VALUE_TYPES(OXA_ACCESS)

#define OXA_FIXED(Got, Stored, N)                                                                          \
    template OXA_IFC_API bool Entity::boFixedArrayValueGet(const AttributeName&, IfcArray<Got, N>&) const; \
    template OXA_IFC_API bool Entity::boFixedArrayValueSet(const AttributeName&, const IfcArray<Stored, N>&, Data&);
OXA_FIXED_ARRAYS(OXA_FIXED)

}   // namespace oxa::ifc
