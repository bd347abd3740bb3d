// SPDX-License-Identifier: Apache-2.0
#include "Model/RelationTable.h"

#include <algorithm>

#include "Model/Names.h"

namespace oxa::detail {

namespace schema = ifc::def::schema;

namespace {

struct ClassRow {
    Class eClass;
    const char* pName;
};
struct SlotRow {
    Slot eSlot;
    const char* pClass;
    const char* pAttribute;
};
struct FollowerRow {
    const char* pClass;
    const char* pAttribute;
};
struct RelationRow {
    Relation eRelation;
    const char* pClass;
    const char* pWhole;
    const char* pPart;
};

// clang-format off
constexpr ClassRow g_classes[] = {
    {Class::Root,             "IfcRoot"},
    {Class::Relationship,     "IfcRelationship"},
    {Class::ObjectDefinition, "IfcObjectDefinition"},
    {Class::TypeObject,       "IfcTypeObject"},
    {Class::Context,          "IfcContext"},                     // IFC4 on: the project, and libraries
    {Class::Context,          "IfcProject"},
    {Class::Project,          "IfcProject"},
    {Class::PhysicalElement,  "IfcElement"},
    {Class::RepresentationContext, "IfcRepresentationContext"},
    {Class::SpatialElement,   "IfcSpatialElement"},              // IFC4 on
    {Class::SpatialElement,   "IfcSpatialStructureElement"},
    {Class::Storey,           "IfcBuildingStorey"},
    {Class::Building,         "IfcFacility"},                    // IFC4X2 on: bridges and roads as well
    {Class::Building,         "IfcBuilding"},
    {Class::Group,            "IfcGroup"},
    {Class::SetDefinition,    "IfcPropertySetDefinition"},
    {Class::PropertySet,      "IfcPropertySet"},
    {Class::QuantitySet,      "IfcElementQuantity"},
    {Class::SingleValue,      "IfcPropertySingleValue"},
    {Class::BoundedValue,     "IfcPropertyBoundedValue"},
    {Class::EnumeratedValue,  "IfcPropertyEnumeratedValue"},
    {Class::ListValue,        "IfcPropertyListValue"},
    {Class::TableValue,       "IfcPropertyTableValue"},
    {Class::ReferenceValue,   "IfcPropertyReferenceValue"},
    {Class::ComplexProperty,  "IfcComplexProperty"},
    {Class::SimpleQuantity,   "IfcPhysicalSimpleQuantity"},
    {Class::ComplexQuantity,  "IfcPhysicalComplexQuantity"},
    {Class::Material,         "IfcMaterial"},
    {Class::MaterialList,     "IfcMaterialList"},
    {Class::LayerSetUsage,    "IfcMaterialLayerSetUsage"},
    {Class::LayerSet,         "IfcMaterialLayerSet"},
    {Class::Layer,            "IfcMaterialLayer"},
    {Class::ProfileSetUsage,  "IfcMaterialProfileSetUsage"},     // profiles and constituents: IFC4 on
    {Class::ProfileSet,       "IfcMaterialProfileSet"},
    {Class::Profile,          "IfcMaterialProfile"},
    {Class::ConstituentSet,   "IfcMaterialConstituentSet"},
    {Class::Constituent,      "IfcMaterialConstituent"},
    {Class::Reference,        "IfcClassificationReference"},
    {Class::Classification,   "IfcClassification"},
    {Class::Notation,         "IfcClassificationNotation"},      // IFC2X3
    {Class::ReferenceOf,      "IfcExternalReferenceRelationship"},        // IFC4 on
    {Class::ReferenceOf,      "IfcMaterialClassificationRelationship"},   // IFC2X3
    {Class::ExtendedProperties, "IfcExtendedProperties"},                 // IFC4 on: of materials and profiles
    {Class::ExtendedProperties, "IfcExtendedMaterialProperties"},         // IFC2X3
    {Class::SiUnit,           "IfcSIUnit"},
    {Class::ConversionUnit,   "IfcConversionBasedUnit"},
    {Class::ContextUnit,      "IfcContextDependentUnit"},
    {Class::DerivedUnit,      "IfcDerivedUnit"},
    {Class::MonetaryUnit,     "IfcMonetaryUnit"},
};

constexpr SlotRow g_slots[] = {
    {Slot::RootName,            "IfcRoot",                    "Name"},
    {Slot::RepresentationContexts, "IfcContext",              "RepresentationContexts"},   // IFC4 on
    {Slot::RepresentationContexts, "IfcProject",              "RepresentationContexts"},
    {Slot::OwnerHistory,        "IfcRoot",                    "OwnerHistory"},
    {Slot::TypeSets,            "IfcTypeObject",              "HasPropertySets"},
    {Slot::SetProperties,       "IfcPropertySet",             "HasProperties"},
    {Slot::SetQuantities,       "IfcElementQuantity",         "Quantities"},
    {Slot::PropertyName,        "IfcProperty",                "Name"},
    {Slot::SingleValue,         "IfcPropertySingleValue",     "NominalValue"},
    {Slot::SingleUnit,          "IfcPropertySingleValue",     "Unit"},
    {Slot::SetPoint,            "IfcPropertyBoundedValue",    "SetPointValue"},   // IFC4 on
    {Slot::LowerBound,          "IfcPropertyBoundedValue",    "LowerBoundValue"},
    {Slot::UpperBound,          "IfcPropertyBoundedValue",    "UpperBoundValue"},
    {Slot::BoundedUnit,         "IfcPropertyBoundedValue",    "Unit"},
    {Slot::EnumeratedValues,    "IfcPropertyEnumeratedValue", "EnumerationValues"},
    {Slot::Enumeration,         "IfcPropertyEnumeratedValue", "EnumerationReference"},
    {Slot::EnumerationUnit,     "IfcPropertyEnumeration",     "Unit"},
    {Slot::ListValues,          "IfcPropertyListValue",       "ListValues"},
    {Slot::ListUnit,            "IfcPropertyListValue",       "Unit"},
    {Slot::DefiningValues,      "IfcPropertyTableValue",      "DefiningValues"},
    {Slot::DefiningUnit,        "IfcPropertyTableValue",      "DefiningUnit"},
    {Slot::DefinedValues,       "IfcPropertyTableValue",      "DefinedValues"},
    {Slot::DefinedUnit,         "IfcPropertyTableValue",      "DefinedUnit"},
    {Slot::PropertyReference,   "IfcPropertyReferenceValue",  "PropertyReference"},
    {Slot::ComplexProperties,   "IfcComplexProperty",         "HasProperties"},
    {Slot::QuantityName,        "IfcPhysicalQuantity",        "Name"},
    {Slot::QuantityUnit,        "IfcPhysicalSimpleQuantity",  "Unit"},
    {Slot::ComplexQuantities,   "IfcPhysicalComplexQuantity", "HasQuantities"},
    {Slot::MaterialName,        "IfcMaterial",                "Name"},
    {Slot::MaterialCategory,    "IfcMaterial",                "Category"},        // categories: IFC4 on
    {Slot::ListedMaterials,     "IfcMaterialList",            "Materials"},
    {Slot::UsedLayerSet,        "IfcMaterialLayerSetUsage",   "ForLayerSet"},
    {Slot::Layers,              "IfcMaterialLayerSet",        "MaterialLayers"},
    {Slot::LayerSetName,        "IfcMaterialLayerSet",        "LayerSetName"},
    {Slot::LayerMaterial,       "IfcMaterialLayer",           "Material"},
    {Slot::LayerThickness,      "IfcMaterialLayer",           "LayerThickness"},
    {Slot::LayerName,           "IfcMaterialLayer",           "Name"},            // IFC4 on
    {Slot::LayerCategory,       "IfcMaterialLayer",           "Category"},
    {Slot::UsedProfileSet,      "IfcMaterialProfileSetUsage", "ForProfileSet"},
    {Slot::Profiles,            "IfcMaterialProfileSet",      "MaterialProfiles"},
    {Slot::ProfileSetName,      "IfcMaterialProfileSet",      "Name"},
    {Slot::ProfileMaterial,     "IfcMaterialProfile",         "Material"},
    {Slot::ProfileName,         "IfcMaterialProfile",         "Name"},
    {Slot::ProfileCategory,     "IfcMaterialProfile",         "Category"},
    {Slot::Constituents,        "IfcMaterialConstituentSet",  "MaterialConstituents"},
    {Slot::ConstituentSetName,  "IfcMaterialConstituentSet",  "Name"},
    {Slot::ConstituentMaterial, "IfcMaterialConstituent",     "Material"},
    {Slot::ConstituentName,     "IfcMaterialConstituent",     "Name"},
    {Slot::ConstituentCategory, "IfcMaterialConstituent",     "Category"},
    {Slot::ConstituentFraction, "IfcMaterialConstituent",     "Fraction"},
    {Slot::ReferenceCode,       "IfcExternalReference",       "Identification"},  // IFC4 on
    {Slot::ReferenceCode,       "IfcExternalReference",       "ItemReference"},   // IFC2X3
    {Slot::ReferenceName,       "IfcExternalReference",       "Name"},
    {Slot::ReferencedSource,    "IfcClassificationReference", "ReferencedSource"},
    {Slot::ClassificationName,  "IfcClassification",          "Name"},
    {Slot::NotationFacets,      "IfcClassificationNotation",  "NotationFacets"},
    {Slot::FacetValue,          "IfcClassificationNotationFacet", "NotationValue"},
    {Slot::GivenReference,      "IfcExternalReferenceRelationship",      "RelatingReference"},       // IFC4 on
    {Slot::GivenReference,      "IfcMaterialClassificationRelationship", "MaterialClassifications"}, // IFC2X3
    {Slot::ReferredObjects,     "IfcExternalReferenceRelationship",      "RelatedResourceObjects"},  // IFC4 on
    {Slot::ReferredObjects,     "IfcMaterialClassificationRelationship", "ClassifiedMaterial"},      // IFC2X3
    {Slot::ExtendedName,        "IfcExtendedProperties",      "Name"},                               // IFC4 on
    {Slot::ExtendedName,        "IfcExtendedMaterialProperties", "Name"},                            // IFC2X3
    {Slot::ExtendedProperties,  "IfcExtendedProperties",      "Properties"},                         // IFC4 on
    {Slot::ExtendedProperties,  "IfcExtendedMaterialProperties", "ExtendedProperties"},              // IFC2X3
    {Slot::ExtendedMaterial,    "IfcMaterialProperties",      "Material"},
    {Slot::ExtendedProfile,     "IfcProfileProperties",       "ProfileDefinition"},
    {Slot::UnitsInContext,      "IfcContext",                 "UnitsInContext"},  // IFC4 on
    {Slot::UnitsInContext,      "IfcProject",                 "UnitsInContext"},
    {Slot::AssignedUnits,       "IfcUnitAssignment",          "Units"},
    {Slot::UnitType,            "IfcNamedUnit",               "UnitType"},
    {Slot::SiPrefix,            "IfcSIUnit",                  "Prefix"},
    {Slot::SiName,              "IfcSIUnit",                  "Name"},
    {Slot::ConversionName,      "IfcConversionBasedUnit",     "Name"},
    {Slot::ConversionFactor,    "IfcConversionBasedUnit",     "ConversionFactor"},
    {Slot::ConversionOffset,    "IfcConversionBasedUnitWithOffset", "ConversionOffset"},   // IFC4 on
    {Slot::FactorValue,         "IfcMeasureWithUnit",         "ValueComponent"},
    {Slot::FactorUnit,          "IfcMeasureWithUnit",         "UnitComponent"},
    {Slot::ContextUnitName,     "IfcContextDependentUnit",    "Name"},
    {Slot::DerivedElements,     "IfcDerivedUnit",             "Elements"},
    {Slot::DerivedType,         "IfcDerivedUnit",             "UnitType"},
    {Slot::DerivedUserType,     "IfcDerivedUnit",             "UserDefinedType"},
    {Slot::ElementUnit,         "IfcDerivedUnitElement",      "Unit"},
    {Slot::ElementExponent,     "IfcDerivedUnitElement",      "Exponent"},
    {Slot::Currency,            "IfcMonetaryUnit",            "Currency"},
};

constexpr RelationRow g_relations[] = {
    {Relation::Type,           "IfcRelDefinesByType",               "RelatingType",               "RelatedObjects"},
    {Relation::Sets,           "IfcRelDefinesByProperties",         "RelatingPropertyDefinition", "RelatedObjects"},
    {Relation::Content,        "IfcRelContainedInSpatialStructure", "RelatingStructure",          "RelatedElements"},
    {Relation::Aggregate,      "IfcRelAggregates",                  "RelatingObject",             "RelatedObjects"},
    {Relation::Nest,           "IfcRelNests",                       "RelatingObject",             "RelatedObjects"},
    {Relation::Void,           "IfcRelVoidsElement",                "RelatingBuildingElement",    "RelatedOpeningElement"},
    {Relation::Filling,        "IfcRelFillsElement",                "RelatingOpeningElement",     "RelatedBuildingElement"},
    {Relation::Projection,     "IfcRelProjectsElement",             "RelatingElement",            "RelatedFeatureElement"},
    {Relation::Surface,        "IfcRelAdheresToElement",            "RelatingElement",            "RelatedSurfaceFeatures"},
    {Relation::Port,           "IfcRelConnectsPortToElement",       "RelatedElement",             "RelatingPort"},
    {Relation::Material,       "IfcRelAssociatesMaterial",          "RelatingMaterial",           "RelatedObjects"},
    {Relation::Classification, "IfcRelAssociatesClassification",    "RelatingClassification",     "RelatedObjects"},
    {Relation::Group,          "IfcRelAssignsToGroup",              "RelatingGroup",              "RelatedObjects"},
    {Relation::TypeSets,       "IfcTypeObject",                     "HasPropertySets",            "HasPropertySets"},
    {Relation::SetProperties,  "IfcPropertySet",                    "HasProperties",              "HasProperties"},
    {Relation::ComplexProperties, "IfcComplexProperty",             "HasProperties",              "HasProperties"},
    {Relation::ComplexQuantities, "IfcPhysicalComplexQuantity",     "HasQuantities",              "HasQuantities"},
};

constexpr FollowerRow g_followers[] = {
    {"IfcRelDefines",                       "RelatedObjects"},            // IFC2X3
    {"IfcRelDefinesByProperties",           "RelatedObjects"},
    {"IfcRelDefinesByType",                 "RelatedObjects"},
    {"IfcRelDefinesByObject",               "RelatedObjects"},            // IFC4 on
    {"IfcRelDefinesByTemplate",             "RelatedPropertySets"},       // IFC4 on
    {"IfcRelAssociates",                    "RelatedObjects"},
    {"IfcRelAssignsToGroup",                "RelatedObjects"},
    {"IfcRelDeclares",                      "RelatedDefinitions"},        // IFC4 on
    {"IfcStyledItem",                       "Item"},
    {"IfcPresentationLayerAssignment",      "AssignedItems"},
    {"IfcShapeAspect",                      "PartOfProductDefinitionShape"},
    {"IfcIndexedColourMap",                 "MappedTo"},                  // IFC4 on
    {"IfcIndexedTextureMap",                "MappedTo"},                  // IFC4 on
    {"IfcTextureMap",                       "MappedTo"},                  // IFC4 on
    {"IfcGeometricRepresentationSubContext", "ParentContext"},
    {"IfcCoordinateOperation",              "SourceCRS"},                 // IFC4 on
    {"IfcWellKnownText",                    "CoordinateReferenceSystem"}, // IFC4X3
    {"IfcMaterialDefinitionRepresentation", "RepresentedMaterial"},
    {"IfcMaterialProperties",               "Material"},
    {"IfcMaterialRelationship",             "RelatingMaterial"},          // IFC4 on
    {"IfcMaterialClassificationRelationship", "ClassifiedMaterial"},      // IFC2X3
    {"IfcProfileProperties",                "ProfileDefinition"},
    {"IfcExternalReferenceRelationship",    "RelatedResourceObjects"},    // IFC4 on
    {"IfcResourceApprovalRelationship",     "RelatedResourceObjects"},    // IFC4 on
    {"IfcResourceConstraintRelationship",   "RelatedResourceObjects"},    // IFC4 on
    {"IfcApprovalPropertyRelationship",     "ApprovedProperties"},        // IFC2X3
    {"IfcPropertyConstraintRelationship",   "RelatedProperties"},         // IFC2X3
    {"IfcReferencesValueDocument",          "ReferencingValues"},         // IFC2X3
    {"IfcPropertyDependencyRelationship",   "DependingProperty"},
    {"IfcOrganizationRelationship",         "RelatedOrganizations"},
};
// clang-format on

const schema::Entity* pEntityOf(const schema::Schema& schema, const char* pName) {
    return schema::pAsEntity(schema.pObjectFromName(pName));
}

// The first of one name: a table has one row a name, but for what schemas call differently.
template <class Rows, class Key>
const auto* pRow(const Rows& rows, Key eKey, Key std::remove_cvref_t<decltype(rows[0])>::*pKey) {
    const auto found = std::ranges::find(rows, eKey, pKey);
    return found == std::end(rows) ? nullptr : &*found;
}

}   // namespace

RelationTable::RelationTable(const schema::Schema& schema) {
    const auto resolve = [&schema](const char* pClass, const char* pAttribute) {
        const schema::Entity* pType = pEntityOf(schema, pClass);
        const std::size_t iIndex = pType ? iAttributeFind(*pType, pAttribute) : g_iNoName;
        return iIndex == g_iNoName ? Resolved() : Resolved{pType, static_cast<unsigned>(iIndex)};
    };
    for (const ClassRow& row : g_classes) {
        auto& pFound = m_classes[static_cast<std::size_t>(row.eClass)];
        if (!pFound) pFound = pEntityOf(schema, row.pName);
    }
    for (const SlotRow& row : g_slots) {
        Resolved& slot = m_slots[static_cast<std::size_t>(row.eSlot)];
        if (!slot.pClass) slot = resolve(row.pClass, row.pAttribute);
    }
    for (const FollowerRow& row : g_followers)
        if (const Resolved follower = resolve(row.pClass, row.pAttribute); follower.pClass)
            m_followers.push_back(follower);
    for (const RelationRow& row : g_relations)
        m_relations[static_cast<std::size_t>(row.eRelation)] = {
            pEntityOf(schema, row.pClass), {resolve(row.pClass, row.pWhole), resolve(row.pClass, row.pPart)}};
    for (const schema::Schema::Record& record : schema.objects)
        if (const schema::Entity* pType = schema::pAsEntity(record.pObject)) vInversesResolve(*pType);
}

// An inverse list serves a relation when it is declared for the attribute of the relation's class, or of a supertype
// that has the attribute: IFC2X3 declares IfcObject.IsDefinedBy for all of IfcRelDefines.
void RelationTable::vInversesResolve(const schema::Entity& type) {
    if (m_inverses.size() <= type.iTypeOrdinal) {
        Inverses none;
        for (auto& sides : none) sides.fill(g_iNone);
        m_inverses.resize(type.iTypeOrdinal + std::size_t{1}, none);
    }
    const auto& lists = type.allInverseAttributes();
    for (std::size_t i = 0; i < lists.size(); ++i)
        for (const RelationRow& row : g_relations) {
            const auto iRelation = static_cast<std::size_t>(row.eRelation);
            if (!boIn(m_relations[iRelation].pClass, lists[i]->pForEntity)) continue;
            auto& sides = m_inverses[type.iTypeOrdinal][iRelation];
            const std::string& sFor = lists[i]->sForAttribute;
            if (boSameName(sFor, row.pWhole)) sides[iSide(Side::Whole)] = static_cast<std::uint16_t>(i);
            if (boSameName(sFor, row.pPart)) sides[iSide(Side::Part)] = static_cast<std::uint16_t>(i);
        }
}

RelationTable::Place RelationTable::placeOf(const ifc::Entity& entity, const Resolved& resolved) {
    if (!boIn(entity.pSchemaEntity(), resolved.pClass)) return {};
    const auto [pAttribute, pCell] = entity.pAttributeFromIndex(resolved.iIndex);
    if (!pCell) return {};
    return {resolved.iIndex, pCell, ifc::Entity::getDataSize(*entity.pSchemaEntity()).cells[resolved.iIndex].eClass};
}

RelationTable::Place RelationTable::place(const ifc::Entity& entity, Slot eSlot) const {
    return placeOf(entity, m_slots[static_cast<std::size_t>(eSlot)]);
}

const char* RelationTable::pText(const ifc::Entity& entity, Slot eSlot) const {
    const Place found = place(entity, eSlot);
    if (!found.pCell || found.eClass != ifc::CellClass::String || !found.pCell->boHasValue()) return nullptr;
    return static_cast<const ifc::AttributeString&>(*found.pCell).m_value;
}

std::string_view RelationTable::attributeName(Relation eRelation, Side eSide) const noexcept {
    const RelationRow* pFound = pRow(g_relations, eRelation, &RelationRow::eRelation);
    return eSide == Side::Whole ? pFound->pWhole : pFound->pPart;
}

std::string_view RelationTable::attributeName(Slot eSlot) const noexcept {
    const Resolved& slot = m_slots[static_cast<std::size_t>(eSlot)];
    return slot.pClass ? std::string_view(slot.pClass->allAttributes()[slot.iIndex]->sName) : std::string_view();
}

}   // namespace oxa::detail
