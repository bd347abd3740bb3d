// SPDX-License-Identifier: Apache-2.0
// CellVisit: the values of a cell in the order of its text, told one by one.
//
// For      what hashes, shows or gathers values and wants them apart from how they lie in memory.
//
// A visitor has these functions:
//   vNull(bool boDerived)                          "$" or "*"
//   vReal(double) vInteger(long long) vBoolean(bool) vLogical(LogicalValue) vGuid(const Guid&)
//   vText(const char*) vEnumerator(const char*)    null where a file had none that could be read
//   vBinary(const unsigned char*, std::size_t)
//   vEntity(const ifc::Entity*)                    null the same way
//   vListBegin(bool boSet) vListEnd()              around the items of an aggregate
//   vTypeBegin(const Type&) vTypeEnd()             around the typed value of a select
//   vNothing()                                     a select or an attribute that has neither value nor "$"
#pragma once

#include <cstddef>

#include "Format/Ifc/IfcFileAttribute.h"
#include "Format/Ifc/IfcFileEntity.h"

namespace oxa::compare {

template <class Visitor>
class CellVisit {
public:
    explicit CellVisit(Visitor& visitor) : m_visitor(visitor) {}

    // "pObject": the type of the cell, as the first of an attribute's types.
    void vCell(const ifc::AttributeBase& cell, const ifc::def::schema::ObjectBase* pObject) {
        using ifc::def::schema::DataKind;
        const ifc::def::schema::DataTypeBase* pDataType = ifc::def::schema::pDataTypeOf(pObject);
        if (!ifc::def::schema::pAsEntity(pObject) && !pDataType) return m_visitor.vNothing();
        if (!cell.boHasValue()) return m_visitor.vNull(cell.m_boDerived);
        if (!pDataType) return m_visitor.vEntity(as<ifc::AttributeEntity>(cell).m_value);
        switch (pDataType->kind) {
        case DataKind::Real:
        case DataKind::Number: return m_visitor.vReal(as<ifc::AttributeReal>(cell).m_value);
        case DataKind::Boolean: return m_visitor.vBoolean(as<ifc::AttributeBoolean>(cell).m_value != 0);
        case DataKind::Integer: return m_visitor.vInteger(as<ifc::AttributeInteger>(cell).m_value);
        case DataKind::Logical: return m_visitor.vLogical(as<ifc::AttributeLogical>(cell).m_value);
        case DataKind::String:
            if (cell.m_boGuid) return m_visitor.vGuid(as<ifc::AttributeGuid>(cell).m_value.load());
            return m_visitor.vText(as<ifc::AttributeString>(cell).m_value);
        case DataKind::Binary: return vBinary(as<ifc::AttributeBinary>(cell));
        case DataKind::Enumeration: return m_visitor.vEnumerator(as<ifc::AttributeEnumeration>(cell).m_value);
        case DataKind::Select: return vSelect(as<ifc::AttributeSelect>(cell));
        case DataKind::Array:
        case DataKind::List:
        case DataKind::Set: return vList(as<ifc::AttributeListValueBase>(cell), *pDataType);
        }
        m_visitor.vNothing();
    }

private:
    template <class Cell>
    static const Cell& as(const ifc::AttributeBase& cell) {
        return static_cast<const Cell&>(cell);
    }

    void vBinary(const ifc::AttributeBinary& cell) {
        if (!cell.boHasValue()) return m_visitor.vNull(cell.m_boDerived);
        m_visitor.vBinary(cell.m_value, static_cast<std::size_t>(cell.m_iCount.load()));
    }

    void vSelect(const ifc::AttributeSelect& cell) {
        if (!cell.boHasValue()) return m_visitor.vNull(cell.m_boDerived);
        const ifc::AttributeBase* pValue = cell.m_pValue;
        const ifc::def::schema::Type* pType = cell.m_pType;
        if (!pValue) return m_visitor.vNothing();
        if (cell.m_eType.load() == ifc::AttributeType::Entity) {
            if (!pValue->boHasValue()) return m_visitor.vNull(pValue->m_boDerived);
            return m_visitor.vEntity(as<ifc::AttributeEntity>(*pValue).m_value);
        }
        if (!pType) return m_visitor.vNothing();
        m_visitor.vTypeBegin(*pType);
        vCell(*pValue, pType);
        m_visitor.vTypeEnd();
    }

    void vList(const ifc::AttributeListValueBase& list, const ifc::def::schema::DataTypeBase& type) {
        using ifc::AttributeType;
        m_visitor.vListBegin(type.kind == ifc::def::schema::DataKind::Set);
        switch (list.m_eItemType.load()) {
        case AttributeType::Real: vItems<double>(list, [this](double item) { m_visitor.vReal(item); }); break;
        case AttributeType::Integer:
            vItems<long long>(list, [this](long long iItem) { m_visitor.vInteger(iItem); });
            break;
        case AttributeType::String: vItems<char*>(list, [this](const char* pItem) { m_visitor.vText(pItem); }); break;
        case AttributeType::Binary:
            vItems<ifc::AttributeBinary>(list, [this](const ifc::AttributeBinary& item) { vBinary(item); });
            break;
        case AttributeType::Select:
            vItems<ifc::AttributeSelect>(list, [this](const ifc::AttributeSelect& item) { vSelect(item); });
            break;
        case AttributeType::List: {
            const ifc::def::schema::ObjectBase* pElement = type.pElementGet();
            vItems<ifc::AttributeList>(list,
                                       [this, pElement](const ifc::AttributeList& item) { vCell(item, pElement); });
            break;
        }
        case AttributeType::Entity:
            if (const ifc::EntityList* pHead = list.pEntities())
                for (const ifc::Entity* pEntity : *pHead) m_visitor.vEntity(pEntity);
            break;
        default: break;   // items that a model does not hold
        }
        m_visitor.vListEnd();
    }

    template <class T, class Item>
    static void vItems(const ifc::AttributeListValueBase& list, Item&& item) {
        if (const ifc::Array<T>* pArray = list.pArray<T>())
            for (const auto& each : *pArray) item(each);
    }

    Visitor& m_visitor;
};

template <class Visitor>
void vVisitCell(const ifc::AttributeBase& cell, const ifc::def::schema::ObjectBase* pObject, Visitor& visitor) {
    CellVisit<Visitor>(visitor).vCell(cell, pObject);
}

}   // namespace oxa::compare
