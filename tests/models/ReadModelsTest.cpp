// SPDX-License-Identifier: Apache-2.0
// Real files of many exporters, read whole and held against a plain count of their text.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileError.h"
#include "models/ModelFiles.h"
#include "models/PlainCount.h"

namespace oxa::ifc::models {
namespace {

using testing::IsEmpty;

// What a read reported, by key.
using Reports = std::map<std::string, std::size_t>;

struct Model {
    File file;
    io::ReadError errors;
    bool boRead = false;

    explicit Model(const std::string& text) {
        std::istringstream in(text);
        boRead = file.boRead(in, {}, errors, true, {}, true);
    }
    [[nodiscard]] Reports reports() const {
        Reports found;
        for (const ErrorRecord& record : errors.records()) ++found[record.key.value_or({})];
        return found;
    }
};

// References that the cells of the model hold, counted through the cells' own fields.
std::size_t iReferencesOf(const AttributeListValueBase& list);

std::size_t iReferencesOf(const AttributeSelect& cell, const AttributeBase* pValue) {
    if (!pValue || !cell.boHasValue()) return 0;
    if (cell.m_eType.load() == AttributeType::Entity)
        return static_cast<const AttributeEntity*>(pValue)->m_value.load() ? 1 : 0;
    const def::schema::DataTypeBase* pType = def::schema::pDataTypeOf(cell.m_pType.load());
    if (!pType) return 0;
    if (def::schema::boIsAggregate(pType->kind))
        return iReferencesOf(*static_cast<const AttributeListValueBase*>(pValue));
    if (pType->kind != def::schema::DataKind::Select) return 0;
    const auto& nested = *static_cast<const AttributeSelect*>(pValue);
    return iReferencesOf(nested, nested.m_pValue);
}

std::size_t iReferencesOf(const AttributeListValueBase& list) {
    std::size_t iCount = 0;
    switch (list.m_eItemType.load()) {
    case AttributeType::Entity:
        if (const EntityList* pHead = list.pEntities())
            for (const Entity* pEntity : *pHead) iCount += pEntity ? 1 : 0;
        break;
    case AttributeType::Select:
        if (const auto* pArray = list.pArray<AttributeSelect>())
            for (const AttributeSelect& item : *pArray) iCount += iReferencesOf(item, item.m_pValue);
        break;
    case AttributeType::List:
        if (const auto* pArray = list.pArray<AttributeList>())
            for (const AttributeList& item : *pArray) iCount += iReferencesOf(item);
        break;
    default: break;
    }
    return iCount;
}

std::size_t iReferencesOf(const Data& data) {
    std::size_t iCount = 0;
    for (const Entity* pEntity : data.entities())
        pEntity->boForEachAttribute([&](const def::schema::Attribute& attribute, const AttributeBase& cell) {
            switch (AttributeBase::cellClass(attribute.types.front(), attribute)) {
            case CellClass::Entity: iCount += static_cast<const AttributeEntity&>(cell).m_value.load() ? 1 : 0; break;
            case CellClass::Select: {
                const auto& select = static_cast<const AttributeSelect&>(cell);
                iCount += iReferencesOf(select, select.m_pValue);
                break;
            }
            case CellClass::List: iCount += iReferencesOf(static_cast<const AttributeListValueBase&>(cell)); break;
            default: break;
            }
            return false;
        });
    return iCount;
}

// Files that are not clean, and what is to be said of them. iDropped: statements that make no entity. Every other
// file is to be read without a report.
struct ReportRow {
    const char* sName;
    bool boRead;
    std::size_t iDropped;
    Reports reports;
};
const ReportRow g_reportRows[] = {
    {"advance-steel-beam.ifc", true, 0, {{"Error_InvalidNullAttribute", 1}}},
    // A \S\' whose quote ends the string for the parameter splitter.
    {"archicad16-japanese-sjis.ifc", true, 0, {{"Error_ExpectedValidStringValueFor", 1}}},
    {"archicad20-fzk-haus-ifc4.ifc", true, 0, {{"Error_InvalidNullAttribute", 5}}},
    {"autocad-gts-vogel-gesamt-ifc2x.ifc", false, 17335, {{"Error_UnknownSchemaName", 1}}},
    {"bonsai-example-hom-ifc4.ifc", true, 0, {{"Error_InvalidNullAttribute", 1}}},
    {"bsi-ifc4/beam-revolved-solid.ifc", true, 0, {{"Error_ExpectedValidIntegerValueFor", 1}}},
    {"bsi-ifc4/element-standard-case.ifc", true, 0, {{"Error_InvalidNullAttribute", 28}}},
    {"bsi-ifc4/tessellation-with-blob-texture.ifc",
     true,
     0,
     {{"Error_ExpectedValidIntegersInListFor", 1}, {"Error_InvalidNullAttribute", 1}}},
    {"bsi-ifc4/tessellation-with-image-texture.ifc",
     true,
     0,
     {{"Error_ExpectedValidIntegersInListFor", 1}, {"Error_InvalidNullAttribute", 1}}},
    {"carf-hvac-heating-ifc4.ifc", true, 0, {{"Error_NotValidEnumerationValue", 1}}},
    // Fingerprints of 64 bits.
    {"civil3d-alx4-ifc4x3.ifc", true, 0, {{"Error_ExpectedValidIntegerValueFor", 11}}},
    {"odd/archicad14-double-guids.ifc", true, 0, {{"Error_DuplicateGuids", 3}, {"Error_ExpectedValidGuidValueFor", 1}}},
    {"odd/guid-invalid-characters.ifc", true, 0, {{"Error_ExpectedValidGuidValueFor", 1}}},
    {"odd/guid-invalid-length.ifc",
     true,
     0,
     {{"Error_ExpectedValidGuidValueFor", 1}, {"Error_MissingEntityWithId", 4}}},
    {"odd/header-example-utf8-bytes.ifc", true, 1, {{"Error_UnknownEntityType", 1}}},
    {"odd/invalid-schema-ifc99.ifc", false, 1, {{"Error_UnknownSchemaName", 1}}},
    // A schema is named in the header alone, and without one nothing is read and nothing said.
    {"odd/sfp-fail-no-header.ifc", true, 20, {}},
    {"odd/sfp-fail-duplicate-id.ifc", true, 0, {{"Error_EntityIdReused", 1}}},
    {"odd/xb-abstract-class.ifc", true, 0, {{"Error_EntityIsAbstract", 1}}},
    {"odd/xb-badly-formed.ifc", true, 0, {{"Error_InvalidNullAttribute", 1}}},
    {"odd/xb-invalid-type.ifc", true, 0, {{"Error_NotValidEnumerationValue", 1}}},
    {"odd/xb-large-entity-label.ifc", false, 1, {{"Error_ExpectedLeftParenthesis", 1}}},
    // Enumerators written as typed values, and units without dimensions.
    {"openroads-test1-ifc4x3rc4.ifc",
     true,
     0,
     {{"Error_InvalidNullAttribute", 8}, {"Error_NotValidEnumerationValue", 19}}},
    {"psets-ifc2x3.ifc", true, 0, {{"Error_ExpectedValidGuidValueFor", 23}}},
    {"railcomplete-al01-ifc4x3.ifc", true, 0, {{"Error_DuplicateGuids", 10}}},
    {"revit2021-large-building.ifc", true, 0, {{"Error_InvalidNullAttribute", 1}}},
    {"sema-wall.ifc", true, 0, {{"Error_InvalidNullAttribute", 5}}},
    {"sketchup-kit-simple-road-ifc4x3rc2.ifc", true, 0, {{"Error_InvalidNullAttribute", 27}}},
    {"texture-long-line.ifc", true, 0, {{"Error_InvalidNullAttribute", 1}}},
    {"xbim-large-triangulated.ifc", true, 0, {{"Error_InvalidNullAttribute", 1}}},
};

ReportRow rowOf(const std::string& sName) {
    for (const ReportRow& row : g_reportRows)
        if (sName == row.sName) return row;
    return {"", true, 0, {}};
}

class ReadModels : public testing::TestWithParam<std::string> {};

TEST_P(ReadModels, AgreesWithAPlainCountOfTheText) {
    if (GetParam().empty()) GTEST_SKIP() << "no models: set OXAIFC_MODELS to a folder of IFC files";
    const ReportRow row = rowOf(GetParam());
    const std::string text = sContent(GetParam());
    const PlainCount plain(text);
    const Model model(text);

    EXPECT_EQ(model.boRead, row.boRead);
    EXPECT_EQ(model.reports(), row.reports);
    EXPECT_EQ(model.file.data().entities().size(), plain.iStatements - row.iDropped);
    if (row.boRead && row.reports.empty() && row.iDropped == 0) {
        std::set<std::uint64_t> missing;
        std::ranges::set_difference(plain.referenced, plain.defined, std::inserter(missing, missing.end()));
        EXPECT_THAT(missing, IsEmpty());
        EXPECT_EQ(iReferencesOf(model.file.data()), plain.iReferences);
        for (const auto& [sKeyword, iCount] : plain.byKeyword) {
            const auto [first, last] = model.file.data().range(def::schema::ObjectName(sKeyword), false);
            EXPECT_EQ(static_cast<std::size_t>(last - first), iCount) << sKeyword;
        }
        for (const std::uint64_t iId : plain.defined)
            ASSERT_NE(model.file.data().pEntityFromId(iId), nullptr) << "#" << iId;
    }
}

INSTANTIATE_TEST_SUITE_P(Files, ReadModels, testing::ValuesIn(namesOrNone()), sTestName);

}   // namespace
}   // namespace oxa::ifc::models
