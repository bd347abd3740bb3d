// SPDX-License-Identifier: Apache-2.0
// Walking the values of a cell as a caller's type, one implementation for all types.
//
// What a type is read from stands in the overloads of boExtract; what it is in a list, in ItemOf.
#include "Format/Ifc/Cells/CellWalk.h"

#include <string>
#include <type_traits>
#include <utility>

#include "Format/Ifc/IfcMissingType.h"

namespace oxa::ifc {

namespace {

using Bytes = std::vector<unsigned char>;
using BytesView = std::pair<unsigned char*, std::size_t>;

// The value of a cell as T; false where the cell's class is none of T's natural ones.
template <class T>
bool boExtract(CellClass, const AttributeBase&, T&) {
    return false;
}
bool boExtract(CellClass eClass, const AttributeBase& cell, double& value) {
    if (eClass != CellClass::Real && eClass != CellClass::Number) return false;
    value = static_cast<const AttributeReal&>(cell).m_value;
    return true;
}
bool boExtract(CellClass eClass, const AttributeBase& cell, long long& iValue) {
    if (eClass != CellClass::Integer) return false;
    iValue = static_cast<const AttributeInteger&>(cell).m_value;
    return true;
}
bool boExtract(CellClass eClass, const AttributeBase& cell, bool& boValue) {
    if (eClass != CellClass::Boolean) return false;
    boValue = static_cast<const AttributeBoolean&>(cell).m_value != 0;
    return true;
}
bool boExtract(CellClass eClass, const AttributeBase& cell, LogicalValue& value) {
    if (eClass != CellClass::Logical) return false;
    value = static_cast<const AttributeLogical&>(cell).m_value;
    return true;
}
bool boExtract(CellClass, const AttributeBase& cell, Guid& guid) {
    if (!cell.m_boGuid) return false;
    guid = static_cast<const AttributeGuid&>(cell).m_value;
    return true;
}
bool boExtract(CellClass eClass, const AttributeBase& cell, char*& pText) {
    if (eClass == CellClass::Enumeration)
        pText = const_cast<char*>(static_cast<const AttributeEnumeration&>(cell).m_value.load());
    else if (eClass == CellClass::String && !cell.m_boGuid)
        pText = static_cast<const AttributeString&>(cell).m_value;
    else
        return false;
    return true;
}
bool boExtract(CellClass eClass, const AttributeBase& cell, BytesView& view) {
    if (eClass != CellClass::Binary) return false;
    const auto& binary = static_cast<const AttributeBinary&>(cell);
    view = {binary.m_value, static_cast<std::size_t>(binary.m_iCount)};
    return true;
}
bool boExtract(CellClass eClass, const AttributeBase& cell, Bytes& bytes) {
    BytesView view;
    if (!boExtract(eClass, cell, view)) return false;
    bytes.assign(view.first, view.first + view.second);
    return true;
}
bool boExtract(CellClass eClass, const AttributeBase& cell, Entity*& pEntity) {
    if (eClass != CellClass::Entity) return false;
    pEntity = static_cast<const AttributeEntity&>(cell).m_value;
    return true;
}

// The class of the value that a select cell holds.
CellClass classOfSelected(const AttributeSelect& select, const def::schema::Attribute& attribute) noexcept {
    if (select.m_eType.load() == AttributeType::Entity) return CellClass::Entity;
    const CellClass eClass = AttributeBase::cellClass(select.m_pType.load(), attribute);
    return eClass == CellClass::Guid ? CellClass::String : eClass;   // its own flag says whether it is a GUID
}

template <class T>
bool boWalkCell(CellClass eClass, const AttributeBase* pCell, const def::schema::Attribute& attribute,
                const std::function<bool(T&)>& function, bool boSingle, bool boList) {
    for (;;) {
        if (!pCell || !pCell->boHasValue()) return false;
        if (eClass != CellClass::Select) break;
        const auto& select = *static_cast<const AttributeSelect*>(pCell);
        eClass = classOfSelected(select, attribute);
        pCell = select.m_pValue;
    }
    if (eClass == CellClass::List)
        return boList && static_cast<const AttributeListValueBase*>(pCell)->boForEach<T>(attribute, function);
    if constexpr (std::is_same_v<T, AttributeSelect>) {
        return false;   // an item of lists alone
    } else {
        T item{};
        return boSingle && boExtract(eClass, *pCell, item) && function(item);
    }
}

// A whole list of N numbers as one value.
template <class T>
struct FixedSize : std::false_type {};
template <std::size_t N, class Tag>
struct FixedSize<math::Coordinates<N, Tag>> : std::true_type {
    using Number = double;
};
template <class T, std::size_t N>
struct FixedSize<IfcArray<T, N>> : std::true_type {
    using Number = T;
};

template <class T>
bool boWalkFixed(const AttributeListValueBase& list, const std::function<bool(T&)>& function) {
    using Number = typename FixedSize<T>::Number;
    const Array<Number>* pArray = list.pArray<Number>();
    if (!pArray || pArray->size() != T::iSize) return false;
    T value{};
    for (std::size_t i = 0; i < T::iSize; ++i) value[i] = (*pArray)[i];
    return function(value);
}

// Each item as it lies.
template <class T>
bool boWalkItems(const AttributeListValueBase& list, const std::function<bool(T&)>& function) {
    if (Array<T>* pArray = list.pArray<T>())
        for (auto& stored : *pArray) {
            if constexpr (std::is_same_v<T, AttributeSelect>) {
                if (!function(stored)) return false;
            } else {
                T item = stored;
                if (!function(item)) return false;
            }
        }
    return true;
}

// Every select is looked at; the answer is false when one of them held no T, or the function stopped the walk.
template <class T>
bool boWalkSelects(const AttributeListValueBase& list, const def::schema::Attribute& attribute,
                   const std::function<bool(T&)>& function) {
    const Array<AttributeSelect>* pArray = list.pArray<AttributeSelect>();
    if (!pArray) return true;
    bool boAll = true;
    bool boStopped = false;
    const std::function<bool(T&)> guarded = [&](T& item) {
        boStopped = !function(item);
        return !boStopped;
    };
    for (const AttributeSelect& item : *pArray) {
        if (!boWalkCell<T>(CellClass::Select, &item, attribute, guarded, true, true)) boAll = false;
        if (boStopped) break;
    }
    return boAll;
}

template <class T>
bool boWalkBinaries(const AttributeListValueBase& list, const std::function<bool(T&)>& function) {
    const Array<AttributeBinary>* pArray = list.pArray<AttributeBinary>();
    if (!pArray || pArray->empty()) return true;
    if constexpr (std::is_same_v<T, BytesView> || std::is_same_v<T, Bytes>) {
        for (const AttributeBinary& cell : *pArray) {
            T item{};
            if (!boExtract(CellClass::Binary, cell, item) || !function(item)) return false;
        }
        return true;
    } else {
        return false;
    }
}

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
constexpr const char* g_sItemName = nullptr;
template <>
constexpr const char* g_sItemName<int> = "int";
template <>
constexpr const char* g_sItemName<char> = "char";
template <>
constexpr const char* g_sItemName<unsigned char> = "unsigned char";
template <>
constexpr const char* g_sItemName<long long> = "long long";
template <>
constexpr const char* g_sItemName<unsigned long long> = "unsigned long long";
template <>
constexpr const char* g_sItemName<double> = "double";
template <>
constexpr const char* g_sItemName<bool> = "bool";
template <>
constexpr const char* g_sItemName<char*> = "char *";
template <>
constexpr const char* g_sItemName<std::string> = "std::string";
template <>
constexpr const char* g_sItemName<Bytes> = "std::vector<unsigned char>";
template <>
constexpr const char* g_sItemName<BytesView> = "std::pair<unsigned char *,std::size_t>";
template <>
constexpr const char* g_sItemName<Guid> = "Guid";
template <>
constexpr const char* g_sItemName<LogicalValue> = "LogicalValue";
template <>
constexpr const char* g_sItemName<AttributeSelect> = "AttributeSelect";
template <>
constexpr const char* g_sItemName<Entity*> = "Entity *";

template <class T>
bool boWalkRows(const AttributeListValueBase& list, const def::schema::Attribute& attribute,
                const std::function<bool(T&)>& function) {
    using Item = typename RowOf<T>::Item;
    if constexpr (FixedSize<T>::value || !std::is_void_v<Item>) {
        const Array<AttributeList>* pArray = list.pArray<AttributeList>();
        if (!pArray) return true;
        for (const AttributeList& row : *pArray) {
            if constexpr (FixedSize<T>::value) {
                if (!row.boForEach<T>(attribute, function)) return false;
            } else {
                T values;
                const std::function<bool(Item&)> append = [&values](Item& item) {
                    values.push_back(item);
                    return true;
                };
                if (!row.boForEach<Item>(attribute, append) || !function(values)) return false;
            }
        }
        return true;
    } else {
        static_assert(g_sItemName<T>);
        vListWalkRefuse((std::string("ListOfList::ListAdd<") + g_sItemName<T> + ",0>::operator ()").c_str(),
                        "ListOfList::ListAdd not implemented for this datatype");
        return false;
    }
}

}   // namespace

template <class T>
bool AttributeListValueBase::boForEach(const def::schema::Attribute& attribute,
                                       std::function<bool(T&)> function) const {
    switch (m_eItemType.load()) {
    case AttributeType::Real:
        if constexpr (std::is_same_v<T, double>) return boWalkItems<T>(*this, function);
        if constexpr (FixedSize<T>::value)
            if constexpr (std::is_same_v<typename FixedSize<T>::Number, double>) return boWalkFixed<T>(*this, function);
        return false;
    case AttributeType::Integer:
        if constexpr (std::is_same_v<T, long long>) return boWalkItems<T>(*this, function);
        if constexpr (FixedSize<T>::value)
            if constexpr (std::is_same_v<typename FixedSize<T>::Number, long long>)
                return boWalkFixed<T>(*this, function);
        return false;
    case AttributeType::String:
        if constexpr (std::is_same_v<T, char*>) return boWalkItems<T>(*this, function);
        return false;
    case AttributeType::Binary: return boWalkBinaries<T>(*this, function);
    case AttributeType::Select:
        if constexpr (std::is_same_v<T, AttributeSelect>)
            return boWalkItems<T>(*this, function);
        else
            return boWalkSelects<T>(*this, attribute, function);
    case AttributeType::List: return boWalkRows<T>(*this, attribute, function);
    case AttributeType::Entity:
        if constexpr (std::is_same_v<T, Entity*>)
            if (const EntityList* pHead = pEntities())
                for (Entity* pEntity : *pHead)
                    if (!function(pEntity)) return false;
        return std::is_same_v<T, Entity*>;
    default:
        vListWalkRefuse("oxa::ifc::AttributeListValueBase::boForEach", "boForEach not implemented for this item type");
        return false;
    }
}

template <class T>
bool AttributeBase::boForEach(const AttributeBase& cell, const def::schema::Attribute& attribute,
                              std::function<bool(T&)> function, bool boSingle, bool boList) {
    if (!cell.boHasValue()) return false;
    if (attribute.types.empty()) throw MissingType();
    return boWalkCell<T>(cellClass(attribute.types.front(), attribute), &cell, attribute, function, boSingle, boList);
}

// The closed list of types.
template OXA_IFC_API bool AttributeListValueBase::boForEach(const def::schema::Attribute&,
                                                            std::function<bool(int&)>) const;
template OXA_IFC_API bool AttributeBase::boForEach(const AttributeBase&, const def::schema::Attribute&,
                                                   std::function<bool(int&)>, bool, bool);
template OXA_IFC_API bool AttributeListValueBase::boForEach(const def::schema::Attribute&,
                                                            std::function<bool(char&)>) const;
template OXA_IFC_API bool AttributeBase::boForEach(const AttributeBase&, const def::schema::Attribute&,
                                                   std::function<bool(char&)>, bool, bool);
template OXA_IFC_API bool AttributeListValueBase::boForEach(const def::schema::Attribute&,
                                                            std::function<bool(unsigned char&)>) const;
template OXA_IFC_API bool AttributeBase::boForEach(const AttributeBase&, const def::schema::Attribute&,
                                                   std::function<bool(unsigned char&)>, bool, bool);
template OXA_IFC_API bool AttributeListValueBase::boForEach(const def::schema::Attribute&,
                                                            std::function<bool(long long&)>) const;
template OXA_IFC_API bool AttributeBase::boForEach(const AttributeBase&, const def::schema::Attribute&,
                                                   std::function<bool(long long&)>, bool, bool);
template OXA_IFC_API bool AttributeListValueBase::boForEach(const def::schema::Attribute&,
                                                            std::function<bool(unsigned long long&)>) const;
template OXA_IFC_API bool AttributeBase::boForEach(const AttributeBase&, const def::schema::Attribute&,
                                                   std::function<bool(unsigned long long&)>, bool, bool);
template OXA_IFC_API bool AttributeListValueBase::boForEach(const def::schema::Attribute&,
                                                            std::function<bool(double&)>) const;
template OXA_IFC_API bool AttributeBase::boForEach(const AttributeBase&, const def::schema::Attribute&,
                                                   std::function<bool(double&)>, bool, bool);
template OXA_IFC_API bool AttributeListValueBase::boForEach(const def::schema::Attribute&,
                                                            std::function<bool(bool&)>) const;
template OXA_IFC_API bool AttributeBase::boForEach(const AttributeBase&, const def::schema::Attribute&,
                                                   std::function<bool(bool&)>, bool, bool);
template OXA_IFC_API bool AttributeListValueBase::boForEach(const def::schema::Attribute&,
                                                            std::function<bool(char*&)>) const;
template OXA_IFC_API bool AttributeBase::boForEach(const AttributeBase&, const def::schema::Attribute&,
                                                   std::function<bool(char*&)>, bool, bool);
template OXA_IFC_API bool AttributeListValueBase::boForEach(const def::schema::Attribute&,
                                                            std::function<bool(std::string&)>) const;
template OXA_IFC_API bool AttributeBase::boForEach(const AttributeBase&, const def::schema::Attribute&,
                                                   std::function<bool(std::string&)>, bool, bool);
template OXA_IFC_API bool AttributeListValueBase::boForEach(const def::schema::Attribute&,
                                                            std::function<bool(Bytes&)>) const;
template OXA_IFC_API bool AttributeBase::boForEach(const AttributeBase&, const def::schema::Attribute&,
                                                   std::function<bool(Bytes&)>, bool, bool);
template OXA_IFC_API bool AttributeListValueBase::boForEach(const def::schema::Attribute&,
                                                            std::function<bool(BytesView&)>) const;
template OXA_IFC_API bool AttributeBase::boForEach(const AttributeBase&, const def::schema::Attribute&,
                                                   std::function<bool(BytesView&)>, bool, bool);
template OXA_IFC_API bool AttributeListValueBase::boForEach(const def::schema::Attribute&,
                                                            std::function<bool(Guid&)>) const;
template OXA_IFC_API bool AttributeBase::boForEach(const AttributeBase&, const def::schema::Attribute&,
                                                   std::function<bool(Guid&)>, bool, bool);
template OXA_IFC_API bool AttributeListValueBase::boForEach(const def::schema::Attribute&,
                                                            std::function<bool(LogicalValue&)>) const;
template OXA_IFC_API bool AttributeBase::boForEach(const AttributeBase&, const def::schema::Attribute&,
                                                   std::function<bool(LogicalValue&)>, bool, bool);
template OXA_IFC_API bool AttributeListValueBase::boForEach(const def::schema::Attribute&,
                                                            std::function<bool(math::_2d::Point&)>) const;
template OXA_IFC_API bool AttributeBase::boForEach(const AttributeBase&, const def::schema::Attribute&,
                                                   std::function<bool(math::_2d::Point&)>, bool, bool);
template OXA_IFC_API bool AttributeListValueBase::boForEach(const def::schema::Attribute&,
                                                            std::function<bool(math::_2d::Vector&)>) const;
template OXA_IFC_API bool AttributeBase::boForEach(const AttributeBase&, const def::schema::Attribute&,
                                                   std::function<bool(math::_2d::Vector&)>, bool, bool);
template OXA_IFC_API bool AttributeListValueBase::boForEach(const def::schema::Attribute&,
                                                            std::function<bool(math::_3d::Point&)>) const;
template OXA_IFC_API bool AttributeBase::boForEach(const AttributeBase&, const def::schema::Attribute&,
                                                   std::function<bool(math::_3d::Point&)>, bool, bool);
template OXA_IFC_API bool AttributeListValueBase::boForEach(const def::schema::Attribute&,
                                                            std::function<bool(math::_3d::Vector&)>) const;
template OXA_IFC_API bool AttributeBase::boForEach(const AttributeBase&, const def::schema::Attribute&,
                                                   std::function<bool(math::_3d::Vector&)>, bool, bool);
template OXA_IFC_API bool AttributeListValueBase::boForEach(const def::schema::Attribute&,
                                                            std::function<bool(IfcArray<double, 2>&)>) const;
template OXA_IFC_API bool AttributeBase::boForEach(const AttributeBase&, const def::schema::Attribute&,
                                                   std::function<bool(IfcArray<double, 2>&)>, bool, bool);
template OXA_IFC_API bool AttributeListValueBase::boForEach(const def::schema::Attribute&,
                                                            std::function<bool(IfcArray<double, 3>&)>) const;
template OXA_IFC_API bool AttributeBase::boForEach(const AttributeBase&, const def::schema::Attribute&,
                                                   std::function<bool(IfcArray<double, 3>&)>, bool, bool);
template OXA_IFC_API bool AttributeListValueBase::boForEach(const def::schema::Attribute&,
                                                            std::function<bool(IfcArray<long long, 2>&)>) const;
template OXA_IFC_API bool AttributeBase::boForEach(const AttributeBase&, const def::schema::Attribute&,
                                                   std::function<bool(IfcArray<long long, 2>&)>, bool, bool);
template OXA_IFC_API bool AttributeListValueBase::boForEach(const def::schema::Attribute&,
                                                            std::function<bool(IfcArray<long long, 3>&)>) const;
template OXA_IFC_API bool AttributeBase::boForEach(const AttributeBase&, const def::schema::Attribute&,
                                                   std::function<bool(IfcArray<long long, 3>&)>, bool, bool);
template OXA_IFC_API bool AttributeListValueBase::boForEach(const def::schema::Attribute&,
                                                            std::function<bool(AttributeSelect&)>) const;
template OXA_IFC_API bool AttributeBase::boForEach(const AttributeBase&, const def::schema::Attribute&,
                                                   std::function<bool(AttributeSelect&)>, bool, bool);
template OXA_IFC_API bool AttributeListValueBase::boForEach(const def::schema::Attribute&,
                                                            std::function<bool(Entity*&)>) const;
template OXA_IFC_API bool AttributeBase::boForEach(const AttributeBase&, const def::schema::Attribute&,
                                                   std::function<bool(Entity*&)>, bool, bool);
template OXA_IFC_API bool AttributeListValueBase::boForEach(const def::schema::Attribute&,
                                                            std::function<bool(std::vector<char>&)>) const;
template OXA_IFC_API bool AttributeBase::boForEach(const AttributeBase&, const def::schema::Attribute&,
                                                   std::function<bool(std::vector<char>&)>, bool, bool);
template OXA_IFC_API bool AttributeListValueBase::boForEach(const def::schema::Attribute&,
                                                            std::function<bool(std::vector<double>&)>) const;
template OXA_IFC_API bool AttributeBase::boForEach(const AttributeBase&, const def::schema::Attribute&,
                                                   std::function<bool(std::vector<double>&)>, bool, bool);
template OXA_IFC_API bool AttributeListValueBase::boForEach(const def::schema::Attribute&,
                                                            std::function<bool(std::vector<long long>&)>) const;
template OXA_IFC_API bool AttributeBase::boForEach(const AttributeBase&, const def::schema::Attribute&,
                                                   std::function<bool(std::vector<long long>&)>, bool, bool);
template OXA_IFC_API bool AttributeListValueBase::boForEach(const def::schema::Attribute&,
                                                            std::function<bool(std::vector<Entity*>&)>) const;
template OXA_IFC_API bool AttributeBase::boForEach(const AttributeBase&, const def::schema::Attribute&,
                                                   std::function<bool(std::vector<Entity*>&)>, bool, bool);

}   // namespace oxa::ifc
