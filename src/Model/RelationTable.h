// SPDX-License-Identifier: Apache-2.0
// RelationTable: which classes and attributes of IFC say what an element is related to, resolved for one schema.
//
// For      the sources of this folder, and of libraries on it. No other place in them knows a class of IFC by its name.
// Table    one for IFC2X3, IFC4, IFC4X3 and those between (RelationTable.cpp): a row that a schema has no class or no
//          attribute for does not count there, and of several rows for one thing the first that counts does.
// Inverse  which inverse list of a type leads to a relationship, the schema itself tells: the list that is declared FOR
//          the relationship's attribute. So a walk costs one look into a block, whatever the schema calls the list.
// Threads  any number at once.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "Format/Ifc/IfcFileAttribute.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "platform/Export.h"
#include "schema/Schema.h"

namespace oxa::detail {

// Relationships between a whole and its parts: a type and its instances, a storey and the walls in it.
enum class Relation : std::uint8_t {
    Type,
    Sets,
    Content,
    Aggregate,
    Nest,
    Void,
    Filling,
    Projection,
    Surface,
    Port,
    Material,
    Classification,
    Group,
    // What has no relationship of its own: the class that has the list stands for one, and is its whole.
    TypeSets,
    SetProperties,
    ComplexProperties,
    ComplexQuantities,
    Count
};

enum class Class : std::uint8_t {
    Root,
    Relationship,
    ObjectDefinition,
    TypeObject,
    Context,
    Project,
    PhysicalElement,
    RepresentationContext,
    SpatialElement,
    Storey,
    Building,
    Group,
    SetDefinition,
    PropertySet,
    QuantitySet,
    SingleValue,
    BoundedValue,
    EnumeratedValue,
    ListValue,
    TableValue,
    ReferenceValue,
    ComplexProperty,
    SimpleQuantity,
    ComplexQuantity,
    Material,
    MaterialList,
    LayerSetUsage,
    LayerSet,
    Layer,
    ProfileSetUsage,
    ProfileSet,
    Profile,
    ConstituentSet,
    Constituent,
    Reference,
    Classification,
    Notation,
    ReferenceOf,
    ExtendedProperties,
    SiUnit,
    ConversionUnit,
    ContextUnit,
    DerivedUnit,
    MonetaryUnit,
    Count
};

enum class Slot : std::uint8_t {
    RootName,
    RepresentationContexts,
    OwnerHistory,
    TypeSets,
    SetProperties,
    SetQuantities,
    PropertyName,
    SingleValue,
    SingleUnit,
    SetPoint,
    LowerBound,
    UpperBound,
    BoundedUnit,
    EnumeratedValues,
    Enumeration,
    EnumerationUnit,
    ListValues,
    ListUnit,
    DefiningValues,
    DefiningUnit,
    DefinedValues,
    DefinedUnit,
    PropertyReference,
    ComplexProperties,
    QuantityName,
    QuantityUnit,
    ComplexQuantities,
    MaterialName,
    MaterialCategory,
    ListedMaterials,
    UsedLayerSet,
    Layers,
    LayerSetName,
    LayerMaterial,
    LayerThickness,
    LayerName,
    LayerCategory,
    UsedProfileSet,
    Profiles,
    ProfileSetName,
    ProfileMaterial,
    ProfileName,
    ProfileCategory,
    Constituents,
    ConstituentSetName,
    ConstituentMaterial,
    ConstituentName,
    ConstituentCategory,
    ConstituentFraction,
    ReferenceCode,
    ReferenceName,
    ReferencedSource,
    ClassificationName,
    NotationFacets,
    FacetValue,
    GivenReference,
    ReferredObjects,
    ExtendedName,
    ExtendedProperties,
    ExtendedMaterial,
    ExtendedProfile,
    UnitsInContext,
    AssignedUnits,
    UnitType,
    SiPrefix,
    SiName,
    ConversionName,
    ConversionFactor,
    ConversionOffset,
    FactorValue,
    FactorUnit,
    ContextUnitName,
    DerivedElements,
    DerivedType,
    DerivedUserType,
    ElementUnit,
    ElementExponent,
    Currency,
    Count
};

enum class Side : std::uint8_t { Whole, Part };

class OXA_MODEL_API RelationTable {
public:
    explicit RelationTable(const ifc::def::schema::Schema& schema);

    /// Null where the schema has none.
    [[nodiscard]] const ifc::def::schema::Entity* pClass(Class eClass) const noexcept {
        return m_classes[static_cast<std::size_t>(eClass)];
    }
    [[nodiscard]] bool boIs(const ifc::Entity& entity, Class eClass) const noexcept {
        return boIn(entity.pSchemaEntity(), pClass(eClass));
    }

    // Where a slot's value lies; null in "pCell" for an instance of a class that does not have it.
    struct Place {
        unsigned iIndex = 0;
        const ifc::AttributeBase* pCell = nullptr;
        ifc::CellClass eClass = ifc::CellClass::Unresolved;
    };
    [[nodiscard]] Place place(const ifc::Entity& entity, Slot eSlot) const;
    /// A text as it lies in the model; null where there is none.
    [[nodiscard]] const char* pText(const ifc::Entity& entity, Slot eSlot) const;
    /// Calls visit(Entity&) for each entity that the attribute refers to, itself or in a list.
    template <class Visit>
    void forEachNamed(const ifc::Entity& entity, Slot eSlot, Visit&& visit) const {
        const Place found = place(entity, eSlot);
        if (found.pCell) vCellWalk(*found.pCell, found.eClass, visit);
    }

    /// Calls visit(Entity&) for each relationship in which the entity stands on that side, last of the file first.
    template <class Visit>
    void forEachRelationship(const ifc::Entity& entity, Relation eRelation, Side eSide, Visit&& visit) const;
    /// Calls visit(Entity&) for each entity on that side of a relationship.
    template <class Visit>
    void forEachOn(const ifc::Entity& relationship, Relation eRelation, Side eSide, Visit&& visit) const {
        const Place found = placeOf(relationship, m_relations[static_cast<std::size_t>(eRelation)].sides[iSide(eSide)]);
        if (found.pCell) vCellWalk(*found.pCell, found.eClass, visit);
    }

    /// Whether an instance tells by an inverse list in which relationships it stands on that side.
    [[nodiscard]] bool boTells(const ifc::Entity& entity, Relation eRelation, Side eSide) const noexcept {
        return entity.pSchemaEntity() && boTells(*entity.pSchemaEntity(), eRelation, eSide);
    }
    [[nodiscard]] bool boTells(const ifc::def::schema::Entity& type, Relation eRelation, Side eSide) const noexcept {
        return type.iTypeOrdinal < m_inverses.size() &&
               m_inverses[type.iTypeOrdinal][static_cast<std::size_t>(eRelation)][iSide(eSide)] != g_iNone;
    }
    /// The class of the relationship, null where the schema has none; and the name of its attribute for a side.
    [[nodiscard]] const ifc::def::schema::Entity* pRelationship(Relation eRelation) const noexcept {
        return m_relations[static_cast<std::size_t>(eRelation)].pClass;
    }
    [[nodiscard]] std::string_view attributeName(Relation eRelation, Side eSide) const noexcept;
    [[nodiscard]] std::string_view attributeName(Slot eSlot) const noexcept;

    // An attribute of a class; subtypes have it at the same position.
    struct Resolved {
        const ifc::def::schema::Entity* pClass = nullptr;
        unsigned iIndex = 0;
    };
    /// Attributes whose entities the class only adds something to: a property set to walls, a style to a solid, a layer
    /// to its members. Where one of them goes, the instance goes along.
    [[nodiscard]] std::span<const Resolved> followers() const noexcept { return m_followers; }

private:
    static constexpr std::size_t g_iRelations = static_cast<std::size_t>(Relation::Count);
    static constexpr std::uint16_t g_iNone = 0xffff;

    struct ResolvedRelation {
        const ifc::def::schema::Entity* pClass = nullptr;
        std::array<Resolved, 2> sides;
    };
    // Positions of inverse lists, by relation and side.
    using Inverses = std::array<std::array<std::uint16_t, 2>, g_iRelations>;

    [[nodiscard]] static constexpr std::size_t iSide(Side eSide) noexcept { return static_cast<std::size_t>(eSide); }
    [[nodiscard]] static bool boIn(const ifc::def::schema::Entity* pType,
                                   const ifc::def::schema::Entity* pWanted) noexcept {
        return pType && pWanted && pType->iTypeOrdinal >= pWanted->iTypeOrdinal &&
               pType->iTypeOrdinal <= pWanted->iTypeOrdinalLast;
    }
    [[nodiscard]] static Place placeOf(const ifc::Entity& entity, const Resolved& resolved);
    template <class Visit>
    static void vCellWalk(const ifc::AttributeBase& cell, ifc::CellClass eClass, Visit& visit);
    void vInversesResolve(const ifc::def::schema::Entity& type);

    std::array<const ifc::def::schema::Entity*, static_cast<std::size_t>(Class::Count)> m_classes{};
    std::array<Resolved, static_cast<std::size_t>(Slot::Count)> m_slots{};
    std::array<ResolvedRelation, g_iRelations> m_relations{};
    std::vector<Resolved> m_followers;
    std::vector<Inverses> m_inverses;   // by the ordinal of a type
};

template <class Visit>
void RelationTable::vCellWalk(const ifc::AttributeBase& cell, ifc::CellClass eClass, Visit& visit) {
    const auto vEntity = [&visit](ifc::Entity* pEntity) {
        if (pEntity && pEntity->pSchemaEntity()) visit(*pEntity);   // else the file does not define it
    };
    const auto vList = [&](const ifc::AttributeListValueBase& list) {
        if (list.m_eItemType.load() == ifc::AttributeType::Entity) {
            if (const ifc::EntityList* pHead = list.pEntities())
                for (ifc::Entity* pEntity : *pHead) vEntity(pEntity);
        } else if (list.m_eItemType.load() == ifc::AttributeType::Select) {
            if (const auto* pItems = list.pArray<ifc::AttributeSelect>())
                for (const ifc::AttributeSelect& item : *pItems) vCellWalk(item, ifc::CellClass::Select, visit);
        }
    };
    if (!cell.boHasValue()) return;
    if (eClass == ifc::CellClass::Entity) return vEntity(static_cast<const ifc::AttributeEntity&>(cell).m_value);
    if (eClass == ifc::CellClass::List) return vList(static_cast<const ifc::AttributeListValueBase&>(cell));
    if (eClass != ifc::CellClass::Select) return;
    const auto& select = static_cast<const ifc::AttributeSelect&>(cell);
    const ifc::AttributeBase* pValue = select.m_pValue;
    if (!pValue || !pValue->boHasValue()) return;
    const ifc::AttributeType eType = select.m_eType;   // a value otherwise, no reference
    if (eType == ifc::AttributeType::Entity) return vEntity(static_cast<const ifc::AttributeEntity&>(*pValue).m_value);
    if (eType == ifc::AttributeType::Array || eType == ifc::AttributeType::List || eType == ifc::AttributeType::Set)
        vList(static_cast<const ifc::AttributeListValueBase&>(*pValue));
}

template <class Visit>
void RelationTable::forEachRelationship(const ifc::Entity& entity, Relation eRelation, Side eSide,
                                        Visit&& visit) const {
    const ifc::def::schema::Entity* pType = entity.pSchemaEntity();
    if (!pType || pType->iTypeOrdinal >= m_inverses.size()) return;
    const auto iRelation = static_cast<std::size_t>(eRelation);
    const std::uint16_t iPosition = m_inverses[pType->iTypeOrdinal][iRelation][iSide(eSide)];
    const auto* pLists = reinterpret_cast<const ifc::Unaligned<ifc::EntityList*>*>(entity.unsafeAttributesInverseRaw());
    if (iPosition == g_iNone || !pLists) return;
    if (const ifc::EntityList* pHead = pLists[iPosition])
        for (ifc::Entity* pRelationship : *pHead)
            if (boIn(pRelationship->pSchemaEntity(), m_relations[iRelation].pClass)) visit(*pRelationship);
}

}   // namespace oxa::detail
