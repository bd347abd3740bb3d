// SPDX-License-Identifier: Apache-2.0
#include "Check/Ids/SchemaNames.h"

#include <algorithm>

#include "provider/SchemaLoader.h"

namespace oxa::ids::detail {

namespace schema = ifc::def::schema;

const SchemaNames* SchemaNames::pOf(std::string_view version) {
    if (version == "IFC2X3") {
        static const SchemaNames names(*ifc::SchemaLoader::pBuiltIn("IFC2X3"));
        return &names;
    }
    if (version == "IFC4") {
        static const SchemaNames names(*ifc::SchemaLoader::pBuiltIn("IFC4"));
        return &names;
    }
    if (version != "IFC4X3_ADD2") return nullptr;
    static const SchemaNames names(*ifc::SchemaLoader::pBuiltIn("IFC4X3_ADD2"));
    return &names;
}

SchemaNames::SchemaNames(const schema::Schema& schema) : m_pSchema(&schema), m_typed(typedOccurrences(schema)) {
    for (const schema::Schema::Record& record : schema.objects)
        if (const schema::Entity* pType = schema::pAsEntity(record.pObject)) m_classes.push_back(pType);
    for (const schema::Entity* pType : m_classes) {
        for (const schema::Attribute* pAttribute : pType->allAttributes()) {
            if (boDerived(*pType, *pAttribute)) continue;
            auto& same = m_attributes[pAttribute->sName];
            if (std::ranges::find(same, pAttribute) == same.end()) same.push_back(pAttribute);
        }
        for (const schema::AttributeInverse& inverse : pType->ownInverseAttributes) m_inverses.insert(inverse.sName);
    }
}

const std::vector<const schema::Attribute*>* SchemaNames::pAttributes(std::string_view name) const {
    const auto found = m_attributes.find(name);
    return found == m_attributes.end() ? nullptr : &found->second;
}

const TypedOccurrence* SchemaNames::pTyped(std::string_view upper) const noexcept {
    const auto found = std::ranges::find(m_typed, upper, &TypedOccurrence::sNameUpper);
    return found == m_typed.end() ? nullptr : &*found;
}

namespace {

// Types that the standard's list has for a schema which has them by another name, or not yet.
struct ListedRow {
    std::string_view sSchema;
    std::string_view sName;
    std::string_view sFrom;   // the schema that has it
    std::string_view sThere;
};
constexpr ListedRow g_listed[] = {
    {"IFC2X3", "IFCNULLSTYLEENUM", "IFC2X3", "IFCNULLSTYLE"},
    {"IFC4", "IFCNULLSTYLEENUM", "IFC4", "IFCNULLSTYLE"},
    {"IFC4", "IFCALIGNMENTTYPEENUM", "IFC4X3_ADD2", "IFCALIGNMENTTYPEENUM"},
    {"IFC4", "IFCREFERENTTYPEENUM", "IFC4X3_ADD2", "IFCREFERENTTYPEENUM"},
    {"IFC4", "IFCSTRIPPEDOPTIONAL", "IFC4X3_ADD2", "IFCSTRIPPEDOPTIONAL"},
};

}   // namespace

const schema::Type* SchemaNames::pDataType(std::string_view upper) const {
    for (const ListedRow& row : g_listed)
        if (row.sSchema == m_pSchema->sName && row.sName == upper)
            return schema::pAsType(pOf(row.sFrom)->schema().pObjectFromName(row.sThere));
    const schema::Type* pType = schema::pAsType(m_pSchema->pObjectFromName(upper));
    const schema::DataTypeBase* pData = schema::pDataTypeOf(pType);
    if (!pData || schema::boIsAggregate(pData->kind) || pData->kind == schema::DataKind::Select) return nullptr;
    return pType->sNameUpper == upper ? pType : nullptr;
}

const schema::Attribute* pOwnAttribute(const schema::Entity& type, std::string_view name) {
    for (const schema::Attribute* pAttribute : type.allAttributes())
        if (pAttribute->sName == name) return boDerived(type, *pAttribute) ? nullptr : pAttribute;
    return nullptr;
}

bool boDerived(const schema::Entity& type, const schema::Attribute& attribute) {
    for (const schema::Entity* pType = &type; pType; pType = pType->pParent)
        for (const schema::Redeclaration& one : pType->redeclared)
            if (one.pAttribute == &attribute && one.boDerived) return true;
    return false;
}

}   // namespace oxa::ids::detail
