// SPDX-License-Identifier: Apache-2.0
// The published ifcXML configuration of IFC4 ADD2, as the few facts in which it departs from its own rule.
//
// The rule (ISO 10303-28, concrete-attribute="attribute-content", no keys): a value of a simple type is an XML
// attribute, an instance an element named after the attribute. A list of numbers or texts is an XML attribute with
// blanks between the items.
#include "provider/XmlMapping.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

#include "schema/XmlSchema.h"

namespace oxa::ifc::def::express {

using schema::DataKind;
using schema::ObjectBase;

namespace {

constexpr xmlschema::Defaults g_defaults{2, 1};   // values as XML attributes, instances as nested elements
constexpr xmlschema::Attribute g_listAsText{2, true, true};
constexpr xmlschema::Attribute g_itemElements{2, false, true};
constexpr xmlschema::Attribute g_leftOut{2, false, false};
constexpr std::uint32_t g_elements = 1;    // an element named after the inverse attribute for each relation
constexpr std::uint32_t g_container = 2;   // one such element around all relations, which are named by their types

struct AttributeRow {
    std::string_view entity;
    std::string_view attribute;
    const xmlschema::Attribute* pRecord;
};
constexpr AttributeRow g_attributes[] = {
    // Left out (keep="false"), because the instance stands inside the one that the attribute refers to. Beside each
    // the inverse attribute whose element it is that carries it.
    {"IfcClassificationReference", "ReferencedSource", &g_leftOut},               // HasReferences
    {"IfcCoordinateOperation", "SourceCRS", &g_leftOut},                          // HasCoordinateOperation
    {"IfcGeometricRepresentationSubContext", "ParentContext", &g_leftOut},        // HasSubContexts
    {"IfcIndexedColourMap", "MappedTo", &g_leftOut},                              // HasColours
    {"IfcIndexedTextureMap", "MappedTo", &g_leftOut},                             // HasTextures
    {"IfcMaterialDefinitionRepresentation", "RepresentedMaterial", &g_leftOut},   // HasRepresentation
    {"IfcMaterialProperties", "Material", &g_leftOut},                            // HasProperties
    {"IfcProfileProperties", "ProfileDefinition", &g_leftOut},                    // HasProperties
    {"IfcRelAggregates", "RelatingObject", &g_leftOut},                           // IsDecomposedBy
    {"IfcRelContainedInSpatialStructure", "RelatingStructure", &g_leftOut},       // ContainsElements
    {"IfcRelDeclares", "RelatingContext", &g_leftOut},                            // Declares
    {"IfcRelDefinesByProperties", "RelatedObjects", &g_leftOut},                  // IsDefinedBy
    {"IfcRelDefinesByType", "RelatedObjects", &g_leftOut},                        // IsTypedBy
    {"IfcRelFillsElement", "RelatingOpeningElement", &g_leftOut},                 // HasFillings
    {"IfcRelNests", "RelatingObject", &g_leftOut},                                // IsNestedBy
    {"IfcRelProjectsElement", "RelatingElement", &g_leftOut},                     // HasProjections
    {"IfcRelReferencedInSpatialStructure", "RelatingStructure", &g_leftOut},      // ReferencesElements
    {"IfcRelVoidsElement", "RelatingBuildingElement", &g_leftOut},                // HasOpenings
    {"IfcShapeAspect", "PartOfProductDefinitionShape", &g_leftOut},               // HasShapeAspects
    {"IfcStyledItem", "Item", &g_leftOut},                                        // StyledByItem
    // The configuration has an element for the other side of the relation, IsDeclaredBy, and leaves this one out all
    // the same: the published XSD has no place for it.
    {"IfcRelDefinesByObject", "RelatingObject", &g_leftOut},

    // Lists of texts whose items may have blanks in them (exp-attribute="double-tag"): as one text they would be
    // other items.
    {"IfcClassification", "ReferenceTokens", &g_itemElements},
    {"IfcPostalAddress", "AddressLines", &g_itemElements},
    {"IfcTextStyleFontModel", "FontFamily", &g_itemElements},
};

struct InverseRow {
    std::string_view entity;
    std::string_view inverse;
    const std::uint32_t* pMode;
};
constexpr InverseRow g_inverses[] = {
    // At most one relation, or one of a kind that the configuration writes without a container
    // (exp-attribute="attribute-tag").
    {"IfcElement", "HasOpenings", &g_elements},      // [0:?] in EXPRESS
    {"IfcElement", "HasProjections", &g_elements},   // [0:?] in EXPRESS
    {"IfcMaterial", "HasRepresentation", &g_elements},
    {"IfcObject", "IsDeclaredBy", &g_elements},
    {"IfcObject", "IsTypedBy", &g_elements},
    {"IfcOpeningElement", "HasFillings", &g_elements},   // [0:?] in EXPRESS
    {"IfcRepresentationItem", "StyledByItem", &g_elements},
    {"IfcTessellatedFaceSet", "HasColours", &g_elements},

    // Any number of relations, in one element (exp-attribute="double-tag").
    {"IfcClassification", "HasReferences", &g_container},
    {"IfcClassificationReference", "HasReferences", &g_container},
    {"IfcContext", "Declares", &g_container},
    {"IfcContext", "IsDefinedBy", &g_container},
    {"IfcGeometricRepresentationContext", "HasSubContexts", &g_container},
    {"IfcMaterialDefinition", "HasProperties", &g_container},
    {"IfcObject", "IsDefinedBy", &g_container},
    {"IfcObjectDefinition", "IsDecomposedBy", &g_container},
    {"IfcObjectDefinition", "IsNestedBy", &g_container},
    {"IfcProductDefinitionShape", "HasShapeAspects", &g_container},
    {"IfcProfileDef", "HasProperties", &g_container},
    {"IfcSpatialElement", "ContainsElements", &g_container},
    {"IfcSpatialElement", "ReferencesElements", &g_container},
    {"IfcTessellatedFaceSet", "HasTextures", &g_container},

    // The configuration has one element named after the inverse attribute. That would not say which operation it is, and
    // the type that it stands for is abstract: an IfcMapConversion would not come back.
    {"IfcGeometricRepresentationContext", "HasCoordinateOperation", &g_container},
};

// Finds, for an attribute's type, whether a value of it may be a list that has one text: a list of numbers or texts,
// itself or among the members of a select, as IfcComplexNumber is one of IfcValue's.
class ListText {
public:
    bool boMay(const ObjectBase* pObject) {
        const schema::DataTypeBase* pDataType = schema::pDataTypeOf(pObject);
        if (!pDataType) return false;
        if (pDataType->kind == DataKind::Select) return boMayHold(*pDataType);
        const schema::DataTypeBase* pElement = schema::pDataTypeOf(pDataType->pElementGet());
        return pElement && (boPlain(pElement->kind) || (pElement->kind == DataKind::Select && boMayHold(*pElement)));
    }

private:
    static bool boPlain(DataKind kind) {
        return kind == DataKind::Real || kind == DataKind::Number || kind == DataKind::Integer ||
               kind == DataKind::String;
    }
    bool boMayHold(const schema::DataTypeBase& select) {
        const auto itKnown = m_known.find(&select);
        if (itKnown != m_known.end()) return itKnown->second;
        const auto& members = static_cast<const schema::DataTypeSelect&>(select).members;
        return m_known[&select] =
                   std::any_of(members.begin(), members.end(), [this](const ObjectBase* p) { return boMay(p); });
    }

    std::unordered_map<const schema::DataTypeBase*, bool> m_known;   // selects
};

// The graph is still the provider's own, and made of objects that are no constants.
schema::Entity* pEntityOf(const ObjectBase* pObject) { return const_cast<schema::Entity*>(schema::pAsEntity(pObject)); }

// The one of that name among those that the entity declares; null when there is none.
template <class Member>
Member* pOwn(std::vector<Member>& members, std::string_view name) {
    const auto itFound =
        std::find_if(members.begin(), members.end(), [&](const Member& member) { return member.sName == name; });
    return itFound == members.end() ? nullptr : &*itFound;
}

schema::Attribute* pAttributeOf(const SchemaPset& schema, const AttributeRow& row) {
    schema::Entity* pEntity = pEntityOf(schema.pObjectFromName(row.entity));
    return pEntity ? pOwn(pEntity->ownAttributes, row.attribute) : nullptr;
}

schema::AttributeInverse* pInverseOf(const SchemaPset& schema, const InverseRow& row) {
    schema::Entity* pEntity = pEntityOf(schema.pObjectFromName(row.entity));
    return pEntity ? pOwn(pEntity->ownInverseAttributes, row.inverse) : nullptr;
}

}   // namespace

bool boXmlMappingAttach(SchemaPset& schema) {
    if (schema.sName != "IFC4") return true;
    // All or nothing: half of the records would leave relations out that no inverse element carries.
    const bool boShaped =
        std::ranges::all_of(g_attributes, [&](const AttributeRow& row) { return pAttributeOf(schema, row); }) &&
        std::ranges::all_of(g_inverses, [&](const InverseRow& row) { return pInverseOf(schema, row); });
    if (!boShaped) return false;
    schema.pXmlDefaults = &g_defaults;
    ListText listText;
    for (const schema::Schema::Record& record : schema.objects) {
        schema::Entity* pEntity = pEntityOf(record.pObject);
        if (!pEntity) continue;
        for (schema::Attribute& attribute : pEntity->ownAttributes)
            if (listText.boMay(attribute.types.front())) attribute.pXml = &g_listAsText;
    }
    for (const AttributeRow& row : g_attributes) pAttributeOf(schema, row)->pXml = row.pRecord;
    for (const InverseRow& row : g_inverses) pInverseOf(schema, row)->pXmlInverse = row.pMode;
    return true;
}

}   // namespace oxa::ifc::def::express
