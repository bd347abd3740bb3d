// SPDX-License-Identifier: Apache-2.0
// Setting list cells from a caller's values, appending to them, and preparing them for an import.
//
// Which item type takes which value is in the overloads of ListSetter: one for each family of values. What none
// of them takes is refused, silently where the item type is known, else with an assertion.
#include <array>
#include <cstdlib>
#include <cstring>
#include <new>
#include <set>
#include <string>
#include <type_traits>

#include "Format/Ifc/Cells/ItemBlock.h"
#include "Format/Ifc/Cells/ValueTypes.h"
#include "Format/Ifc/IfcCellVisit.h"
#include "Format/Ifc/IfcFileDataSimple.h"
#include "platform/Assert.h"
#include "platform/String.h"

namespace oxa::ifc {

using def::schema::ObjectBase;
using types::IfcSelectBase;

namespace {

bool boRefuse(const char* sFunction, const char* sText) {
    Assert::vTell("Format/Ifc/IfcFileAttribute", sFunction, sText);
    return false;
}

constexpr char g_sValueSet[] = "oxa::ifc::AttributeListValueBase::boValueSet";
constexpr char g_sPushBack[] = "oxa::ifc::AttributeListValueBase::boPushBackValue";

// The item types that a list can have besides none at all.
constexpr bool boKnown(AttributeType eType) noexcept {
    return eType >= AttributeType::Real && eType <= AttributeType::Entity;
}

// Those for which an overload of boPushBackValue is defined, if only to return false; a list of sets is none of them,
// and a select or a reference is at home only where it can be an item.
template <class Value>
constexpr bool boAppendable(AttributeType eType) noexcept {
    if constexpr (std::is_same_v<Value, const Entity*>) {
        return eType == AttributeType::Entity;
    } else if constexpr (std::is_same_v<Value, IfcSelectBase>) {
        return eType == AttributeType::Select || eType == AttributeType::Entity;
    } else {
        constexpr std::array g_types{AttributeType::Real,   AttributeType::Integer, AttributeType::String,
                                     AttributeType::Binary, AttributeType::Select,  AttributeType::List,
                                     AttributeType::Entity};
        for (const AttributeType eKnown : g_types)
            if (eKnown == eType) return true;
        return false;
    }
}

char* pTextCopy(std::string_view text, Pool& pool) {
    auto* pText = static_cast<char*>(pool.pAllocate(text.size() + 1));
    std::memcpy(pText, text.data(), text.size());
    return pText;
}

void vUtf8Check(std::string_view text) {
    if (Assert::isEnabled() && !str::boIsValidUtf8(text))
        Assert::vTell("Format/Ifc/IfcFileAttribute", "oxa::ifc::Array<char *>::boValueSet", "Not a valid string");
}

}   // namespace

// One overload a family of values: boSet() for a whole list, boPush() for one item more. Each first asks whether the
// item type is its own, and refuses by false before anything is written. A block that is large enough is used again,
// whose cells then have a header already (boNew).
struct ListSetter {
    AttributeListValueBase& list;
    const ObjectBase* pElement;   // of the aggregate in hand; null where it has none
    Pool& pool;

    [[nodiscard]] bool boIs(AttributeType eType) const noexcept { return list.m_eItemType.load() == eType; }

    template <class T>
    [[nodiscard]] ItemBlock<T> blockFor(std::size_t iCount) const {
        return itemBlock<T>(list, iCount, pool);
    }

    template <class T>
    bool boNumbers(AttributeType eType, const T* pFirst, std::size_t iCount) {
        if (!boIs(eType)) return false;
        Array<T>& array = blockFor<T>(iCount).items;
        for (std::size_t i = 0; i < iCount; ++i) array[i] = pFirst[i];
        return true;
    }

    template <class Iterator>
    bool boEntities(Iterator first, Iterator last) {
        if (!boIs(AttributeType::Entity)) return false;
        EntityList* pHead = list.pEntities();
        vListAssign(pHead, first, last, [this](std::size_t iBytes) { return pool.pAllocate(iBytes); });
        list.m_pItems = pHead;
        return true;
    }

    // One row for each element; every row is set by the overload of its own type, with the element as its aggregate.
    template <class Row>
    bool boRows(const std::vector<Row>& rows) {
        if (!boIs(AttributeType::List)) return false;
        const auto [array, boNew] = blockFor<AttributeList>(rows.size());
        for (std::size_t i = 0; i < rows.size(); ++i) {
            AttributeList& row = array[i];
            if (boNew) ::new (&row) AttributeList;
            if (ListSetter::boRow(row, rows[i], pElement, pool)) row.vDefined();
        }
        return true;
    }
    template <class Row>
    static bool boRow(AttributeList& row, const Row& value, const ObjectBase* pObject, Pool& pool) {
        return row.boValueSet(value, pObject, pool);
    }
    template <class T, std::size_t N>
    static bool boRow(AttributeList& row, const IfcArray<T, N>& value, const ObjectBase* pObject, Pool& pool) {
        if (row.m_eItemType.load() == AttributeType::Unknown) row.boInitTypeFromAttribute(pObject);
        return ListSetter{row, nullptr, pool}.boNumbers(
            std::is_same_v<T, double> ? AttributeType::Real : AttributeType::Integer, value.m_values.data(), N);
    }

    bool boSet(const std::vector<double>& values) {
        return boNumbers(AttributeType::Real, values.data(), values.size());
    }
    bool boSet(const std::vector<long long>& values) {
        return boNumbers(AttributeType::Integer, values.data(), values.size());
    }
    bool boSet(const std::vector<std::string>& values) {
        if (!boIs(AttributeType::String)) return false;
        Array<char*>& array = blockFor<char*>(values.size()).items;
        for (std::size_t i = 0; i < values.size(); ++i) {
            array[i] = pTextCopy(values[i], pool);
            vUtf8Check(values[i]);
        }
        return true;
    }
    bool boSet(const std::vector<Bytes>& values) {
        if (!boIs(AttributeType::Binary)) return false;
        const auto [array, boNew] = blockFor<AttributeBinary>(values.size());
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (boNew) ::new (&array[i]) AttributeBinary;
            array[i].boValueSet(values[i].data(), values[i].size(), pool);
            array[i].vDefined();
        }
        return true;
    }
    bool boSet(const std::set<Entity*>& values) { return boEntities(values.begin(), values.end()); }
    bool boSet(const std::vector<Entity*>& values) { return boEntities(values.begin(), values.end()); }
    bool boSet(const std::vector<const Entity*>& values) {
        std::vector<Entity*> entities;
        for (const Entity* pEntity : values) entities.push_back(const_cast<Entity*>(pEntity));
        return boSet(entities);
    }
    bool boSet(const std::vector<IfcSelectBase>& values) {
        if (boIs(AttributeType::Entity)) {
            std::vector<Entity*> entities;
            for (const IfcSelectBase& value : values) entities.push_back(value.pEntityGet());
            return boSet(entities);
        }
        if (!boIs(AttributeType::Select)) return false;
        const auto [array, boNew] = blockFor<AttributeSelect>(values.size());
        if (boNew) ::new (array.begin()) AttributeSelect;   // the others stay zero until they are filled
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (!array[i].boValueSet(values[i], pElement, pool)) continue;   // refused: it stays as it was
            if (boNew) array[i].m_boPooled = true;
            array[i].vDefined();
        }
        return true;
    }
    template <std::size_t N, class Tag>
    bool boSet(const math::Coordinates<N, Tag>& value) {
        return boNumbers(AttributeType::Real, value.m_values.data(), N);
    }
    template <std::size_t N, class Tag>
        requires std::is_same_v<Tag, math::PointTag>
    bool boSet(const std::vector<math::Coordinates<N, Tag>>& values) { return boRows(values); }
    template <std::size_t N>
    bool boSet(const std::vector<IfcArray<double, N>>& values) {
        return boRows(values);
    }
    bool boSet(const std::vector<IfcArray<long long, 3>>& values) { return boRows(values); }
    bool boSet(const std::vector<std::vector<double>>& values) { return boRows(values); }
    bool boSet(const std::vector<std::vector<long long>>& values) { return boRows(values); }
    bool boSet(const std::vector<std::vector<const Entity*>>& values) { return boRows(values); }
    template <class Other>
    bool boSet(const Other&) {
        return false;
    }

    // A new block with one item more; the old items' bytes move, the old block stays behind.
    //
    // A block stores no capacity, so it can't grow in place: n appends copy n*n/2 items and leave as much behind in the
    // pool. Lists are mostly set as a whole, and a capacity would cost every list of every model eight bytes more;
    // callers that append often collect in a vector and set once.
    template <class T>
    typename Array<T>::Item& append() {
        const Array<T>* pOld = list.pArray<T>();
        const std::size_t iOld = pOld ? pOld->size() : 0;
        auto* pNew = Array<T>::pFromBytes(pool.pAllocate(Array<T>::iBlockSize(iOld + 1)), iOld + 1);
        if (iOld) std::memcpy(static_cast<void*>(pNew->begin()), pOld->begin(), iOld * sizeof(typename Array<T>::Item));
        list.m_pItems = pNew;
        return (*pNew)[iOld];
    }

    bool boAppendEntity(Entity* pEntity) {
        if (!boIs(AttributeType::Entity)) return false;
        EntityList* pHead = list.pEntities();
        vListAppend(pHead, pEntity, [this](std::size_t iBytes) { return pool.pAllocate(iBytes); });
        list.m_pItems = pHead;
        return true;
    }

    bool boPush(double value, const def::schema::Attribute&) {
        if (!boIs(AttributeType::Real)) return false;
        append<double>() = value;
        return true;
    }
    bool boPush(long long iValue, const def::schema::Attribute&) {
        if (!boIs(AttributeType::Integer)) return false;
        append<long long>() = iValue;
        return true;
    }
    bool boPush(const std::string& sValue, const def::schema::Attribute&) {
        if (!boIs(AttributeType::String)) return false;
        append<char*>() = pTextCopy(sValue, pool);
        return true;
    }
    bool boPush(const char* const& pText, const def::schema::Attribute& attribute) {
        return pText && boPush(std::string(pText), attribute);
    }
    bool boPush(const Bytes& bytes, const def::schema::Attribute&) {
        if (!boIs(AttributeType::Binary)) return false;
        AttributeBinary* pCell = ::new (&append<AttributeBinary>()) AttributeBinary;
        return pCell->boValueSet(bytes.data(), bytes.size(), pool);
    }
    bool boPush(const IfcSelectBase& value, const def::schema::Attribute& attribute) {
        if (boIs(AttributeType::Entity)) return boAppendEntity(value.pEntityGet());
        if (!boIs(AttributeType::Select)) return false;
        AttributeSelect* pCell = ::new (&append<AttributeSelect>()) AttributeSelect;
        pCell->boValueSet(value, attribute.pType(), pool);
        return true;
    }
    bool boPush(const Entity* const& pEntity, const def::schema::Attribute&) {
        return boAppendEntity(const_cast<Entity*>(pEntity));
    }
    template <class Other>
    bool boPush(const Other&, const def::schema::Attribute&) {
        return false;
    }
};

template <class Value>
bool AttributeListValueBase::boValueSet(const Value& value, const ObjectBase* pObject, Pool& pool) {
    if (m_eItemType.load() == AttributeType::Unknown) boInitTypeFromAttribute(pObject);
    const def::schema::DataTypeBase* pDataType = def::schema::pDataTypeOf(pObject);
    if (pDataType && !def::schema::pAsType(pObject) && !def::schema::boIsAggregate(pDataType->kind))
        boRefuse(g_sValueSet, "Unimplemented list type.");
    if (!boKnown(m_eItemType)) return boRefuse(g_sValueSet, "boValueSet not implemented for this list item type.");
    return ListSetter{*this, pDataType ? pDataType->pElementGet() : nullptr, pool}.boSet(value);
}

template <class Value>
bool AttributeListValueBase::boValueSet(const Value& value, const def::schema::Attribute& attribute, Data& data) {
    return boValueSet(value, attribute.pType(), data.pool());
}

template <class Value>
bool AttributeListValueBase::boPushBackValue(const Value& value, const def::schema::Attribute& attribute, Data& data) {
    if (m_eItemType.load() == AttributeType::Unknown) boInitTypeFromAttribute(attribute.pType());
    if (!boAppendable<Value>(m_eItemType))
        return boRefuse(g_sPushBack, std::is_same_v<Value, IfcSelectBase>
                                         ? "boPushBackValue is not implemented for this list type"
                                         : "boPushBackValue not implemented for this list type");
    if constexpr (std::is_same_v<Value, std::vector<Entity*>>)
        return static_cast<AttributeList*>(this)->boValuePushBack(value, attribute, data);
    else
        return ListSetter{*this, nullptr, data.pool()}.boPush(value, attribute);
}

bool AttributeList::boValuePushBack(const std::vector<Entity*>& row, const def::schema::Attribute& attribute,
                                    Data& data) {
    if (m_eItemType.load() != AttributeType::List) return false;
    if (attribute.types.size() != 3)
        return boRefuse("oxa::ifc::Array<oxa::ifc::AttributeList>::boValuePushBack", "Unexpected attribute type");
    AttributeList* pRow = ::new (&ListSetter{*this, nullptr, data.pool()}.append<AttributeList>()) AttributeList;
    pRow->boValueSet(row, attribute.types[1], data.pool());
    return true;
}

void AttributeListValueBase::vTypeListCreate(const std::vector<const ObjectBase*>& path, std::size_t iCount,
                                             Pool& pool) {
    const ObjectBase* pLast = path.empty() ? nullptr : path.back();
    if (def::schema::pAsEntity(pLast)) {
        if (m_eItemType.load() != AttributeType::Entity) m_pItems = nullptr;
        m_eItemType = AttributeType::Entity;
        return;
    }
    const def::schema::Type* pType = def::schema::pAsType(pLast);
    if (!pType || !pType->pDataType) return;
    const AttributeType eItems = attributeType(pType->pDataType->kind);
    if (eItems == AttributeType::String && m_boGuid) {
        boRefuse("oxa::ifc::AttributeListValueBase::vTypeListCreate", "Not implemented");
        return;
    }
    if (eItems == m_eItemType.load()) return;
    // A block of zeroed items; cells get a header on the first one alone.
    const auto vCreate = [&]<class T>(std::type_identity<T>) {
        m_eItemType = eItems;
        auto* pArray = Array<T>::pFromBytes(pool.pAllocate(Array<T>::iBlockSize(iCount)), iCount);
        m_pItems = pArray;
        if constexpr (std::is_base_of_v<AttributeBase, T>) ::new (pArray->begin()) T;
    };
    visitItemType(eItems, Overloads{vCreate, [](std::type_identity<Entity*>) {}, [](NoItems) {}});
}

AttributeListValueBase::~AttributeListValueBase() {
    const auto vEach = [](auto* pItems, auto&& end) {
        if (pItems)
            for (auto& item : *pItems) end(item);
    };
    visitItems(*this, Overloads{
                          [&](Array<AttributeBinary>* pItems) {
                              vEach(pItems, [](AttributeBinary& cell) {
                                  if (!cell.m_boPooled) std::free(cell.m_value.load());
                              });
                          },
                          [&](Array<AttributeSelect>* pItems) {
                              vEach(pItems, [](AttributeSelect& cell) { cell.~AttributeSelect(); });
                          },
                          [&](Array<AttributeList>* pItems) {
                              vEach(pItems, [](AttributeList& cell) { cell.~AttributeList(); });
                          },
                          [](AnyItems) {},
                      });
}

#define OXA_LIST_SET_Yes(T)                                                                           \
    template OXA_IFC_API bool AttributeListValueBase::boValueSet(const T&, const ObjectBase*, Pool&); \
    template OXA_IFC_API bool AttributeListValueBase::boValueSet(const T&, const def::schema::Attribute&, Data&);
#define OXA_LIST_SET_No(T)
#define OXA_LIST_SET_LIST_Yes(T) OXA_LIST_SET_Yes(std::vector<T>)
#define OXA_LIST_SET_LIST_Name(T)
#define OXA_LIST_SET_LIST_No(T)
#define OXA_LIST_APPEND_Yes(T) \
    template OXA_IFC_API bool AttributeListValueBase::boPushBackValue(const T&, const def::schema::Attribute&, Data&);
#define OXA_LIST_APPEND_List(T) OXA_LIST_APPEND_Yes(T)
#define OXA_LIST_APPEND_No(T)
#define OXA_STORE(T, eGet, eGetList, eSet, eSetList, eAppend, eWalk, sName) \
    OXA_LIST_SET_##eSet(T) OXA_LIST_SET_LIST_##eSetList(T) OXA_LIST_APPEND_##eAppend(T)
OXA_VALUE_TYPES(OXA_STORE)
OXA_LIST_SET_Yes(std::set<Entity*>)   // what a select holds of a set

}   // namespace oxa::ifc
