// SPDX-License-Identifier: Apache-2.0
/// @file
/// IfcValueVisit: the values of a cell in the order of its text, told one by one, apart from how they lie in memory.
///
/// - For: what hashes, shows or gathers values. Who needs the cells themselves takes visitCell of IfcCellVisit.h.
/// - Visitor: a set of overloads of operator() for double, long long, bool, LogicalValue, const Guid&, the structs of
///   namespace visit, and const Entity*: a reference, null where a file had none that could be read. What tells only
///   some of them apart has a template for the others.
/// - Threads: none of its own: a cell belongs to the owner of its entity.
#pragma once

#include <cstddef>

#include "Format/Ifc/IfcCellVisit.h"

namespace oxa::ifc {

/// What a visitor of values gets besides plain values.
namespace visit {

/// A value that a file has as "$" or "*".
struct Null {
    bool boDerived;   ///< it is "*"
};
/// A select or an attribute that has neither value nor "$".
struct Nothing {};
/// A STRING.
struct Text {
    const char* pText;   ///< UTF-8 with a NUL behind it, not owned; null where a file had none that could be read
};
/// A value of an enumeration.
struct Enumerator {
    const char* pText;   ///< the enumerator, not owned; null where a file had none that could be read
};
/// A BINARY.
struct Binary {
    const unsigned char* pBytes;   ///< not owned; may be null for no bytes
    std::size_t iCount;            ///< of the bytes
};
/// Stands in front of the items of an aggregate.
struct ListBegin {
    bool boSet;   ///< the aggregate is a SET: the order of its items means nothing
};
/// Stands behind the items of an aggregate.
struct ListEnd {};
/// Stands in front of the typed value of a select.
struct TypeBegin {
    const def::schema::Type& type;   ///< the type that the file names
};
/// Stands behind the typed value of a select.
struct TypeEnd {};

}   // namespace visit

template <class Visitor>
void visitValues(const AttributeBase& cell, const def::schema::ObjectBase* pObject, Visitor& visitor);

namespace details {

// The values of one cell of some class, and of the items of a list.
template <class Visitor>
struct ValueVisit {
    Visitor& visitor;
    const def::schema::DataTypeBase* pDataType;   // of the cell in hand; null for a reference

    void operator()(const AttributeReal& cell) const { visitor(cell.m_value.load()); }
    void operator()(const AttributeInteger& cell) const { visitor(cell.m_value.load()); }
    void operator()(const AttributeBoolean& cell) const { visitor(cell.m_value != 0); }
    void operator()(const AttributeLogical& cell) const { visitor(cell.m_value.load()); }
    void operator()(const AttributeString& cell) const { visitor(visit::Text{cell.m_value}); }
    void operator()(const AttributeGuid& cell) const {
        const Guid guid = cell.m_value;
        visitor(guid);
    }
    void operator()(const AttributeBinary& cell) const {
        visitor(visit::Binary{cell.m_value, static_cast<std::size_t>(cell.m_iCount.load())});
    }
    void operator()(const AttributeEnumeration& cell) const { visitor(visit::Enumerator{cell.m_value}); }
    void operator()(const AttributeEntity& cell) const { vReference(cell.m_value); }
    void operator()(const AttributeSelect& select) const {
        const AttributeBase* pValue = select.m_pValue;
        const def::schema::Type* pType = select.m_pType;
        const bool boReference = pValue && select.m_eType.load() == AttributeType::Entity;
        if (boReference) return vItem(static_cast<const AttributeEntity&>(*pValue));
        if (!pValue || !pType) return visitor(visit::Nothing{});
        visitor(visit::TypeBegin{*pType});
        visitValues(*pValue, pType, visitor);
        visitor(visit::TypeEnd{});
    }
    void operator()(const AttributeList& list) const {
        visitor(visit::ListBegin{pDataType->kind == def::schema::DataKind::Set});
        visitItems(list, *this);
        visitor(visit::ListEnd{});
    }

    void operator()(const Array<double>* pItems) const {
        vEach(pItems, [this](double item) { visitor(item); });
    }
    void operator()(const Array<long long>* pItems) const {
        vEach(pItems, [this](long long iItem) { visitor(iItem); });
    }
    void operator()(const Array<char*>* pItems) const {
        vEach(pItems, [this](const char* pItem) { visitor(visit::Text{pItem}); });
    }
    void operator()(const Array<AttributeBinary>* pItems) const {
        vEach(pItems, [this](const AttributeBinary& item) { vItem(item); });
    }
    void operator()(const Array<AttributeSelect>* pItems) const {
        vEach(pItems, [this](const AttributeSelect& item) { vItem(item); });
    }
    void operator()(const Array<AttributeList>* pItems) const {
        vEach(pItems, [this](const AttributeList& row) { visitValues(row, pDataType->pElementGet(), visitor); });
    }
    void operator()(const EntityList* pItems) const {
        vEach(pItems, [this](const Entity* pEntity) { vReference(pEntity); });
    }
    void operator()(NoItems) const {}

private:
    void vReference(const Entity* pEntity) const { visitor(pEntity); }
    template <class Cell>
    void vItem(const Cell& cell) const {
        if (cell.boHasValue())
            (*this)(cell);
        else
            visitor(visit::Null{cell.m_boDerived});
    }
    template <class Items, class Each>
    static void vEach(const Items* pItems, Each&& each) {
        if (pItems)
            for (const auto& item : *pItems) each(item);
    }
};

}   // namespace details

/// Calls visitor(value) for each value of the cell. "pObject": the type of the cell, as Attribute::pType gives it.
template <class Visitor>
void visitValues(const AttributeBase& cell, const def::schema::ObjectBase* pObject, Visitor& visitor) {
    const CellClass eClass = AttributeBase::cellClass(pObject);
    if (eClass == CellClass::Unresolved) return visitor(visit::Nothing{});
    if (!cell.boHasValue()) return visitor(visit::Null{cell.m_boDerived});
    if (eClass == CellClass::Illegal) return visitor(visit::Nothing{});
    visitCell(cell, eClass, details::ValueVisit<Visitor>{visitor, def::schema::pDataTypeOf(pObject)});
}

}   // namespace oxa::ifc
