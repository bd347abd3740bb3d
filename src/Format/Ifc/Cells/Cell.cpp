// SPDX-License-Identifier: Apache-2.0
// What all cells share: which class of cell an attribute gets, how large it is, and how one is made.
#include "Format/Ifc/IfcFileAttribute.h"

#include <array>
#include <new>

#include "Format/Ifc/IfcCellVisit.h"
#include "Format/Ifc/IfcMissingType.h"

namespace oxa::ifc {

using def::schema::Attribute;
using def::schema::DataKind;
using def::schema::ObjectBase;

namespace {

// For each kind the class of its cells, in the order of DataKind.
constexpr std::array<CellClass, 12> g_classes{
    CellClass::Real,   CellClass::Boolean, CellClass::Integer, CellClass::Number,
    CellClass::String, CellClass::Logical, CellClass::Binary,  CellClass::Enumeration,
    CellClass::Select, CellClass::List,    CellClass::List,    CellClass::List,
};
static_assert(static_cast<std::size_t>(DataKind::Set) + 1 == g_classes.size());

// The GUID test is one of the attribute and not of the object in hand: an IFCGLOBALLYUNIQUEID that a select reaches is
// an ordinary string.
bool boIsGuidAttribute(const Attribute& attribute) noexcept {
    constexpr def::schema::ObjectName g_guid("IFCGLOBALLYUNIQUEID");
    const ObjectBase* pFirst = attribute.pType();
    return pFirst && pFirst->uNameHash == g_guid.hash && pFirst->sNameUpper == g_guid.name;
}

// Of an object that has a cell: the kind tells Array, List and Set apart, which have one class.
AttributeType typeOf(const ObjectBase* pObject) noexcept {
    if (def::schema::pAsEntity(pObject)) return AttributeType::Entity;
    return attributeType(def::schema::pDataTypeOf(pObject)->kind);
}

// Throws where there is no cell.
void vCellCheck(CellClass eClass, const char* sIllegal) {
    if (eClass == CellClass::Unresolved) throw MissingType();
    if (eClass == CellClass::Illegal) throw sIllegal;
}

// Without a token: the default state. Logical and enumeration cells get their header alone: their value stays what the
// memory holds.
template <class Cell>
void vConstruct(void* pCell, AttributeBase::StepReadInfoAttribute* pInfo) {
    constexpr bool boHeaderAlone = std::is_same_v<Cell, AttributeLogical> || std::is_same_v<Cell, AttributeEnumeration>;
    if (pInfo)
        ::new (pCell) Cell(*pInfo);
    else
        ::new (pCell) std::conditional_t<boHeaderAlone, AttributeBase, Cell>;
}

}   // namespace

CellClass AttributeBase::cellClass(const ObjectBase* pObject) noexcept {
    if (def::schema::pAsEntity(pObject)) return CellClass::Entity;
    const def::schema::DataTypeBase* pDataType = def::schema::pDataTypeOf(pObject);
    if (!pDataType) return CellClass::Unresolved;
    const auto iKind = static_cast<std::size_t>(pDataType->kind);
    return iKind < g_classes.size() ? g_classes[iKind] : CellClass::Illegal;
}

CellClass AttributeBase::cellClass(const ObjectBase* pObject, const Attribute& attribute) noexcept {
    const CellClass eClass = cellClass(pObject);
    return eClass == CellClass::String && boIsGuidAttribute(attribute) ? CellClass::Guid : eClass;
}

unsigned int AttributeBase::iAttributeSizeFromSchemaAttribute(const ObjectBase& object, const Attribute& attribute) {
    const CellClass eClass = cellClass(&object, attribute);
    vCellCheck(eClass, "Illegal value");
    return visitCellClass(eClass, []<class Cell>(std::type_identity<Cell>) { return unsigned{sizeof(Cell)}; });
}

AttributeType AttributeBase::TypeFromSchemaAttribute(const Attribute& attribute) {
    vCellCheck(cellClass(attribute.pType()), "illegal type");
    return typeOf(attribute.pType());
}

void AttributeBase::vAttributeNew(const ObjectBase& object, const Attribute& attribute, void* pCell,
                                  StepReadInfoAttribute* pInfo, AttributeType* pType) {
    const CellClass eClass = cellClass(&object, attribute);
    vCellCheck(eClass, "illegal type");
    visitCellClass(eClass, [&]<class Cell>(std::type_identity<Cell>) { vConstruct<Cell>(pCell, pInfo); });
    if (pType) *pType = typeOf(&object);
}

AttributeType AttributeListValueBase::itemType(const ObjectBase* pObject) noexcept {
    const ObjectBase* pElement = def::schema::pElementOf(pObject);
    if (def::schema::pAsEntity(pElement)) return AttributeType::Entity;
    const def::schema::DataTypeBase* pDataType = def::schema::pDataTypeOf(pElement);
    if (!pDataType) return AttributeType::Unknown;
    switch (pDataType->kind) {
    case DataKind::Real:
    case DataKind::Number: return AttributeType::Real;
    case DataKind::Integer: return AttributeType::Integer;
    case DataKind::String: return AttributeType::String;
    case DataKind::Binary: return AttributeType::Binary;
    case DataKind::Select:
        return static_cast<const def::schema::DataTypeSelect*>(pDataType)->boAllEntities ? AttributeType::Entity
                                                                                         : AttributeType::Select;
    case DataKind::List: return AttributeType::List;
    case DataKind::Set: return AttributeType::Set;
    case DataKind::Boolean:
    case DataKind::Logical:
    case DataKind::Enumeration:
    case DataKind::Array: break;   // are no items
    }
    return AttributeType::Unknown;
}

// The header alone, whatever the class: the value behind it stays what the memory holds.
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
