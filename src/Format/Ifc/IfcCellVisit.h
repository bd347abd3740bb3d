// SPDX-License-Identifier: Apache-2.0
/// @file
/// IfcCellVisit: a cell as the class that it is of, and the items of a list as they are stored.
///
/// - For: whatever does something else with a real than with a text: writing, comparing, copying, showing, counting.
/// - Visitor: a set of overloads of operator(), one for each class that it tells apart. A class that is added here and
///   forgotten in a visitor does not compile; const AttributeBase& and AnyItems take what is left over.
/// - Result: what the overloads give, all of one type; what has no cell gives a default one: nothing, false, 0, null.
/// - Not for: the flags: cells without a value are visited like all others, since setters and destructors ask for them.
/// - Cost: one jump. The overloads are inlined where the visit stands.
/// - Threads: none of its own: a cell belongs to the owner of its entity.
#pragma once

#include <cstddef>
#include <type_traits>

#include "Format/Ifc/IfcFileAttribute.h"

namespace oxa::ifc {

/// What a list without items passes: one of an item type that is not known yet, or that no list stores.
struct NoItems {
    AttributeType eType;   ///< of the items, as the list has it
};

/// Takes the items that no other overload takes, and NoItems.
struct AnyItems {
    /// From items of any class, which are not kept.
    template <class Items>
    AnyItems(const Items&) noexcept {}
};

/// A visitor from functions, such as Overloads{[](const AttributeReal&) {...}, [](const AttributeBase&) {...}}.
template <class... Functions>
struct Overloads : Functions... {
    using Functions::operator()...;
};
/// The types of the functions follow from the functions.
template <class... Functions>
Overloads(Functions...) -> Overloads<Functions...>;

/// Calls function(std::type_identity<AttributeReal>()), or what else cells of that class are.
template <class Function>
auto visitCellClass(CellClass eClass, Function&& function) {
    switch (eClass) {
    case CellClass::Real: return function(std::type_identity<AttributeReal>());
    case CellClass::Boolean: return function(std::type_identity<AttributeBoolean>());
    case CellClass::Integer: return function(std::type_identity<AttributeInteger>());
    case CellClass::Number: return function(std::type_identity<AttributeNumber>());
    case CellClass::String: return function(std::type_identity<AttributeString>());
    case CellClass::Guid: return function(std::type_identity<AttributeGuid>());
    case CellClass::Logical: return function(std::type_identity<AttributeLogical>());
    case CellClass::Binary: return function(std::type_identity<AttributeBinary>());
    case CellClass::Enumeration: return function(std::type_identity<AttributeEnumeration>());
    case CellClass::Select: return function(std::type_identity<AttributeSelect>());
    case CellClass::List: return function(std::type_identity<AttributeList>());
    case CellClass::Entity: return function(std::type_identity<AttributeEntity>());
    case CellClass::Unresolved:
    case CellClass::Illegal: break;   // no cell
    }
    return decltype(function(std::type_identity<AttributeReal>()))();
}

/// T, or const T where Like is const.
template <class Like, class T>
using ConstLike = std::conditional_t<std::is_const_v<Like>, const T, T>;

/// Calls visitor(cell) with the cell as its class. For the two classes of texts the cell's own flag says which it is.
template <class Base, class Visitor>
auto visitCell(Base& base, CellClass eClass, Visitor&& visitor) {
    ConstLike<Base, AttributeBase>& cell = base;
    return visitCellClass(eClass, [&cell, &visitor]<class Cell>(std::type_identity<Cell>) {
        if constexpr (std::is_same_v<Cell, AttributeString> || std::is_same_v<Cell, AttributeGuid>)
            return cell.m_boGuid ? visitor(static_cast<ConstLike<Base, AttributeGuid>&>(cell))
                                 : visitor(static_cast<ConstLike<Base, AttributeString>&>(cell));
        else
            return visitor(static_cast<ConstLike<Base, Cell>&>(cell));
    });
}

/// The same with the cell that holds the value of a select; of an empty select as of what has no cell.
template <class Select, class Visitor>
auto visitSelected(Select& select, Visitor&& visitor) {
    ConstLike<Select, AttributeBase>* const pValue = select.m_pValue;
    if (!pValue) return visitCell(select, CellClass::Unresolved, visitor);
    const bool boEntity = select.m_eType.load() == AttributeType::Entity;
    return visitCell(*pValue, boEntity ? CellClass::Entity : AttributeBase::cellClass(select.m_pType.load()), visitor);
}

/// The select inside of a select, for whoever goes down to the value without a level of the stack for each; null where
/// the value is no select.
template <class Select>
Select* pSelectInside(Select& select) {
    return visitSelected(select, Overloads{
                                     [](Select& inner) { return &inner; },
                                     [](const AttributeBase&) { return static_cast<Select*>(nullptr); },
                                 });
}

/// Calls function(std::type_identity<double>()), or what else items of that type are, or function(NoItems).
template <class Function>
auto visitItemType(AttributeType eType, Function&& function) {
    switch (eType) {
    case AttributeType::Real: return function(std::type_identity<double>());
    case AttributeType::Integer: return function(std::type_identity<long long>());
    case AttributeType::String: return function(std::type_identity<char*>());
    case AttributeType::Binary: return function(std::type_identity<AttributeBinary>());
    case AttributeType::Select: return function(std::type_identity<AttributeSelect>());
    case AttributeType::List: return function(std::type_identity<AttributeList>());
    case AttributeType::Entity: return function(std::type_identity<Entity*>());
    case AttributeType::Unknown:
    case AttributeType::Boolean:
    case AttributeType::Number:   // stored as reals
    case AttributeType::Logical:
    case AttributeType::Enumeration:
    case AttributeType::Array:
    case AttributeType::Set: break;   // stored nowhere
    }
    return function(NoItems{eType});
}

/// Calls visitor(items) with an Array<T>* of double, long long, char*, AttributeBinary, AttributeSelect or
/// AttributeList, or with an EntityList*: null for a list that was never filled. Or visitor(NoItems).
template <class List, class Visitor>
auto visitItems(List& list, Visitor&& visitor) {
    void* const pItems = list.m_pItems;
    return visitItemType(list.m_eItemType, [pItems, &visitor]<class T>(T item) {
        if constexpr (std::is_same_v<T, NoItems>)
            return visitor(item);
        else if constexpr (std::is_same_v<T, std::type_identity<Entity*>>)
            return visitor(static_cast<ConstLike<List, EntityList>*>(pItems));
        else
            return visitor(static_cast<ConstLike<List, Array<typename T::type>>*>(pItems));
    });
}

}   // namespace oxa::ifc
