// SPDX-License-Identifier: Apache-2.0
// Walking the values of a cell as a caller's type, one implementation for all types.
//
// What a type is read from stands in the overloads of boExtract; what it is in a list, in those of ItemsWalk.
#include "Format/Ifc/Cells/CellWalk.h"

#include <string>
#include <type_traits>
#include <utility>

#include "Format/Ifc/Cells/ValueTypes.h"
#include "Format/Ifc/Cells/ValueWalk.h"
#include "Format/Ifc/IfcMissingType.h"

namespace oxa::ifc {

namespace {

// The value of a cell as T; false where the cell's class is none of T's natural ones.
template <class T>
bool boExtract(const AttributeBase&, T&) {
    return false;
}
bool boExtract(const AttributeReal& cell, double& value) {
    value = cell.m_value;
    return true;
}
bool boExtract(const AttributeInteger& cell, long long& iValue) {
    iValue = cell.m_value;
    return true;
}
bool boExtract(const AttributeBoolean& cell, bool& boValue) {
    boValue = cell.m_value != 0;
    return true;
}
bool boExtract(const AttributeLogical& cell, LogicalValue& value) {
    value = cell.m_value;
    return true;
}
bool boExtract(const AttributeGuid& cell, Guid& guid) {
    guid = cell.m_value;
    return true;
}
bool boExtract(const AttributeEnumeration& cell, char*& pText) {
    pText = const_cast<char*>(cell.m_value.load());
    return true;
}
bool boExtract(const AttributeString& cell, char*& pText) {
    pText = cell.m_value;
    return true;
}
bool boExtract(const AttributeBinary& cell, BytesView& view) {
    view = {cell.m_value, static_cast<std::size_t>(cell.m_iCount)};
    return true;
}
bool boExtract(const AttributeBinary& cell, Bytes& bytes) {
    BytesView view;
    boExtract(cell, view);
    bytes.assign(view.first, view.first + view.second);
    return true;
}
bool boExtract(const AttributeEntity& cell, Entity*& pEntity) {
    pEntity = cell.m_value;
    return true;
}

template <class T>
bool boWalkItems(const AttributeListValueBase& list, ValueFunction<T> function);

// The values of one cell that has a value.
template <class T>
struct CellValues {
    ValueFunction<T> function;
    Wanted wanted;

    template <class Cell>
    bool operator()(const Cell& cell) const {
        if constexpr (std::is_same_v<T, AttributeSelect>) {
            return false;   // an item of lists alone
        } else {
            T item{};
            return wanted.boSingle && boExtract(cell, item) && function(item);
        }
    }
    bool operator()(const AttributeList& list) const { return wanted.boList && boWalkItems<T>(list, function); }
    // A loop and no recursion, since selects can nest in each other.
    bool operator()(const AttributeSelect& select) const {
        bool boAnswer = false;
        const AttributeSelect* pSelect = &select;
        while (pSelect && pSelect->boHasValue())
            pSelect = visitSelected(*pSelect, Overloads{
                                                  [](const AttributeSelect& inner) { return &inner; },
                                                  [&](const auto& value) {
                                                      boAnswer = value.boHasValue() && (*this)(value);
                                                      return static_cast<const AttributeSelect*>(nullptr);
                                                  },
                                              });
        return boAnswer;
    }
};

// A whole list of N numbers as one value.
template <class T>
struct FixedSize : std::false_type {
    using Number = void;
};
template <std::size_t N, class Tag>
struct FixedSize<math::Coordinates<N, Tag>> : std::true_type {
    using Number = double;
};
template <class T, std::size_t N>
struct FixedSize<IfcArray<T, N>> : std::true_type {
    using Number = T;
};

// A vector of T is a row of a list of lists.
template <class T>
struct RowOf {
    using Item = void;
};
template <class T>
struct RowOf<std::vector<T>> {
    using Item = std::conditional_t<std::is_same_v<T, unsigned char>, void, T>;
};

// How the message about a list of lists calls a T that is no row.
template <class T>
constexpr const char* sItemName() noexcept {
#define OXA_NAME(Other, eGet, eGetList, eSet, eSetList, eAppend, eWalk, sName) \
    if (std::is_same_v<T, Other>) return sName;
    OXA_VALUE_TYPES(OXA_NAME)
#undef OXA_NAME
    return nullptr;
}

// The items of one list.
template <class T>
struct ItemsWalk {
    const AttributeListValueBase& list;
    ValueFunction<T> function;

    // Plain items: each as it lies, or all of them as one value.
    template <class Stored>
    bool operator()(const Array<Stored>* pItems) const {
        if constexpr (std::is_same_v<T, Stored>)
            return boEach(pItems);
        else if constexpr (std::is_same_v<typename FixedSize<T>::Number, Stored>)
            return boAll(pItems);
        else
            return false;
    }
    bool operator()(const Array<AttributeBinary>* pItems) const {
        if (!pItems || pItems->empty()) return true;
        if constexpr (std::is_same_v<T, BytesView> || std::is_same_v<T, Bytes>) {
            for (const AttributeBinary& cell : *pItems) {
                T item{};
                boExtract(cell, item);
                if (!function(item)) return false;
            }
            return true;
        } else {
            return false;
        }
    }
    bool operator()(const Array<AttributeSelect>* pItems) const {
        if constexpr (std::is_same_v<T, AttributeSelect>)
            return boSelects(list.pArray<AttributeSelect>());
        else
            return boSelected(pItems);
    }
    bool operator()(const Array<AttributeList>* pItems) const {
        using Item = typename RowOf<T>::Item;
        if constexpr (FixedSize<T>::value)
            return boRows(pItems, [this](const AttributeList& row) { return boWalkItems<T>(row, function); });
        else if constexpr (!std::is_void_v<Item>)
            return boRows(pItems, [this](const AttributeList& row) {
                T values;
                const auto append = [&values](Item& item) {
                    values.push_back(item);
                    return true;
                };
                return boWalkItems<Item>(row, append) && function(values);
            });
        else {
            static_assert(sItemName<T>());
            vListWalkRefuse((std::string("ListOfList::ListAdd<") + sItemName<T>() + ",0>::operator ()").c_str(),
                            "ListOfList::ListAdd not implemented for this datatype");
            return false;
        }
    }
    bool operator()(const EntityList* pItems) const {
        if constexpr (std::is_same_v<T, Entity*>)
            if (pItems)
                for (Entity* pEntity : *pItems)
                    if (!function(pEntity)) return false;
        return std::is_same_v<T, Entity*>;
    }
    bool operator()(NoItems) const {
        vListWalkRefuse("oxa::ifc::AttributeListValueBase::boForEach", "boForEach not implemented for this item type");
        return false;
    }

private:
    bool boEach(const Array<T>* pItems) const {
        if (pItems)
            for (const auto& stored : *pItems) {
                T item = stored;
                if (!function(item)) return false;
            }
        return true;
    }
    bool boSelects(Array<T>* pItems) const {
        if (pItems)
            for (T& item : *pItems)
                if (!function(item)) return false;
        return true;
    }
    // A list of exactly as many numbers as the value has.
    template <class Number>
    bool boAll(const Array<Number>* pItems) const {
        if (!pItems || pItems->size() != T::iSize) return false;
        T value{};
        for (std::size_t i = 0; i < T::iSize; ++i) value[i] = (*pItems)[i];
        return function(value);
    }
    // Visits every select; false when one of them held no T, or the function stopped the walk.
    bool boSelected(const Array<AttributeSelect>* pItems) const {
        if (!pItems) return true;
        bool boAll = true;
        bool boStopped = false;
        const auto guarded = [&](T& item) {
            boStopped = !function(item);
            return !boStopped;
        };
        const CellValues<T> values{guarded, {true, true}};
        for (const AttributeSelect& item : *pItems) {
            if (!values(item)) boAll = false;
            if (boStopped) break;
        }
        return boAll;
    }
    template <class Row>
    bool boRows(const Array<AttributeList>* pItems, Row&& boRow) const {
        if (pItems)
            for (const AttributeList& row : *pItems)
                if (!boRow(row)) return false;
        return true;
    }
};

template <class T>
bool boWalkItems(const AttributeListValueBase& list, ValueFunction<T> function) {
    return visitItems(list, ItemsWalk<T>{list, function});
}

}   // namespace

template <class T>
bool boWalkValues(const AttributeBase& cell, CellClass eClass, ValueFunction<T> function, Wanted wanted) {
    return cell.boHasValue() && visitCell(cell, eClass, CellValues<T>{function, wanted});
}

template <class T>
bool AttributeListValueBase::boForEach(const def::schema::Attribute&, std::function<bool(T&)> function) const {
    return boWalkItems<T>(*this, function);
}

template <class T>
bool AttributeBase::boForEach(const AttributeBase& cell, const def::schema::Attribute& attribute,
                              std::function<bool(T&)> function, bool boSingle, bool boList) {
    if (!cell.boHasValue()) return false;
    if (attribute.types.empty()) throw MissingType();
    return boWalkValues<T>(cell, cellClass(attribute.pType()), function, {boSingle, boList});
}

#define OXA_WALK_Yes(T)                                                                                     \
    template bool boWalkValues(const AttributeBase&, CellClass, ValueFunction<T>, Wanted);                  \
    template OXA_IFC_API bool AttributeListValueBase::boForEach(const def::schema::Attribute&,              \
                                                                std::function<bool(T&)>) const;             \
    template OXA_IFC_API bool AttributeBase::boForEach(const AttributeBase&, const def::schema::Attribute&, \
                                                       std::function<bool(T&)>, bool, bool);
#define OXA_WALK_No(T)
#define OXA_WALK(T, eGet, eGetList, eSet, eSetList, eAppend, eWalk, sName) OXA_WALK_##eWalk(T)
OXA_VALUE_TYPES(OXA_WALK)

}   // namespace oxa::ifc
