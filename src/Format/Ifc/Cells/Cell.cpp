// SPDX-License-Identifier: Apache-2.0
// What all cells share: which class of cell an attribute gets, how large it is, and how one is made.
#include "Format/Ifc/IfcFileAttribute.h"

#include <array>
#include <new>

#include "platform/Utilities.h"

namespace oxa::ifc {

using def::schema::Attribute;
using def::schema::DataKind;
using def::schema::ObjectBase;

namespace {

// One row a class of cell, in the order of CellClass.
struct CellRow {
    unsigned iSize;
    AttributeType eType;
};
constexpr std::array<CellRow, 12> g_cells{{
    {sizeof(AttributeReal), AttributeType::Real},
    {sizeof(AttributeBoolean), AttributeType::Boolean},
    {sizeof(AttributeInteger), AttributeType::Integer},
    {sizeof(AttributeNumber), AttributeType::Number},
    {sizeof(AttributeString), AttributeType::String},
    {sizeof(AttributeGuid), AttributeType::String},
    {sizeof(AttributeLogical), AttributeType::Logical},
    {sizeof(AttributeBinary), AttributeType::Binary},
    {sizeof(AttributeEnumeration), AttributeType::Enumeration},
    {sizeof(AttributeSelect), AttributeType::Select},
    {sizeof(AttributeList), AttributeType::List},   // the kind tells Array, List and Set apart
    {sizeof(AttributeEntity), AttributeType::Entity},
}};

// The GUID test looks at the attribute and not at the object in hand: an IFCGLOBALLYUNIQUEID that a select
// reaches is an ordinary string.
bool boIsGuidAttribute(const Attribute& attribute) noexcept {
    constexpr def::schema::ObjectName g_guid("IFCGLOBALLYUNIQUEID");
    const ObjectBase* pFirst = attribute.types.empty() ? nullptr : attribute.types.front();
    return pFirst && pFirst->uNameHash == g_guid.hash && pFirst->sNameUpper == g_guid.name;
}

AttributeType typeOf(CellClass eClass, const ObjectBase* pObject) noexcept {
    if (eClass != CellClass::List) return g_cells[static_cast<std::size_t>(eClass)].eType;
    return static_cast<AttributeType>(static_cast<int>(def::schema::pDataTypeOf(pObject)->kind) + 1);
}

// Without a token: the default state, of which "Default" is all that is written.
template <class Cell, class Default = Cell>
void vConstruct(void* pCell, AttributeBase::StepReadInfoAttribute* pInfo) {
    if (pInfo)
        ::new (pCell) Cell(*pInfo);
    else
        ::new (pCell) Default;
}

using Construct = void (*)(void*, AttributeBase::StepReadInfoAttribute*);
// Logical and enumeration cells get their header alone: their value stays what the memory holds.
constexpr std::array<Construct, 12> g_construct{
    vConstruct<AttributeReal>,
    vConstruct<AttributeBoolean>,
    vConstruct<AttributeInteger>,
    vConstruct<AttributeNumber>,
    vConstruct<AttributeString>,
    vConstruct<AttributeGuid>,
    vConstruct<AttributeLogical, AttributeBase>,
    vConstruct<AttributeBinary>,
    vConstruct<AttributeEnumeration, AttributeBase>,
    vConstruct<AttributeSelect>,
    vConstruct<AttributeList>,
    vConstruct<AttributeEntity>,
};

constexpr bool boCell(CellClass eClass) noexcept { return eClass < CellClass::Unresolved; }

}   // namespace

CellClass AttributeBase::cellClass(const ObjectBase* pObject, const Attribute& attribute) noexcept {
    if (def::schema::pAsEntity(pObject)) return CellClass::Entity;
    const def::schema::DataTypeBase* pDataType = def::schema::pDataTypeOf(pObject);
    if (!pDataType) return CellClass::Unresolved;
    switch (pDataType->kind) {
    case DataKind::Real: return CellClass::Real;
    case DataKind::Boolean: return CellClass::Boolean;
    case DataKind::Integer: return CellClass::Integer;
    case DataKind::Number: return CellClass::Number;
    case DataKind::String: return boIsGuidAttribute(attribute) ? CellClass::Guid : CellClass::String;
    case DataKind::Logical: return CellClass::Logical;
    case DataKind::Binary: return CellClass::Binary;
    case DataKind::Enumeration: return CellClass::Enumeration;
    case DataKind::Select: return CellClass::Select;
    case DataKind::Array:
    case DataKind::List:
    case DataKind::Set: return CellClass::List;
    }
    return CellClass::Illegal;
}

unsigned int AttributeBase::iAttributeSizeFromSchemaAttribute(const ObjectBase& object, const Attribute& attribute) {
    const CellClass eClass = cellClass(&object, attribute);
    if (eClass == CellClass::Unresolved) throw oxa::exception("returning nullptr");
    if (!boCell(eClass)) throw "Illegal value";
    return g_cells[static_cast<std::size_t>(eClass)].iSize;
}

AttributeType AttributeBase::TypeFromSchemaAttribute(const Attribute& attribute) {
    const ObjectBase* pFirst = attribute.types.empty() ? nullptr : attribute.types.front();
    const CellClass eClass = cellClass(pFirst, attribute);
    if (eClass == CellClass::Unresolved) throw oxa::exception("returning nullptr");
    if (!boCell(eClass)) throw "illegal type";
    return typeOf(eClass, pFirst);
}

void AttributeBase::vAttributeNew(const ObjectBase& object, const Attribute& attribute, void* pCell,
                                  StepReadInfoAttribute* pInfo, AttributeType* pType) {
    const CellClass eClass = cellClass(&object, attribute);
    if (eClass == CellClass::Unresolved) throw oxa::exception("returning nullptr");
    if (!boCell(eClass)) throw "illegal type";
    g_construct[static_cast<std::size_t>(eClass)](pCell, pInfo);
    if (pType) *pType = typeOf(eClass, &object);
}

void AttributeBase::vAttributeUndefined(CellClass eClass, void* pCell) {
    if (eClass == CellClass::Illegal) throw "illegal type";
    if (eClass == CellClass::Unresolved) return;
    auto* pBase = ::new (pCell) AttributeBase;
    pBase->m_boUndefined = true;
    pBase->m_boGuid = eClass == CellClass::Guid;
}

bool AttributeBase::copyBaseTo(AttributeBase& target) const noexcept {
    target.m_boDerived = m_boDerived;
    target.m_boUndefined = m_boUndefined;
    target.m_boGuid = m_boGuid;
    return boHasValue();
}

}   // namespace oxa::ifc
