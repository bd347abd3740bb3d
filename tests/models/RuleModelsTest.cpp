// SPDX-License-Identifier: Apache-2.0
// The rules of their schema over real files: all can be evaluated, threads change nothing, and what fails is what the table
// says. Each rule was read in the schema's text and held against an instance that fails; a comment says what that has. Those
// that fail in the files of several exporters are in docs/checking.md too.
#include <map>
#include <sstream>

#include "Check/Rules/BuiltInRules.h"
#include "Check/Rules/RuleCheck.h"
#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileError.h"
#include "ModelFiles.h"

namespace oxa::ifc::models {
namespace {

namespace rules = check::rules;

struct RuleModelsRow {
    const char* sFile;
    const char* sRule;
    std::size_t iCount;
};
// clang-format off
const RuleModelsRow g_rows[] = {
    // ADDED without the date of the change, which all but NOTDEFINED and NOCHANGE ask for.
    {"archicad20-fzk-haus-ifc4.ifc", "IfcOwnerHistory.CorrectChangeAction", 1},
    {"odd/sfp-fail-double-comma.ifc", "IfcOwnerHistory.CorrectChangeAction", 1},
    {"odd/sfp-fail-duplicate-id.ifc", "IfcOwnerHistory.CorrectChangeAction", 1},
    {"odd/sfp-fail-reverse-string.ifc", "IfcOwnerHistory.CorrectChangeAction", 1},
    {"odd/sfp-pass-1.ifc", "IfcOwnerHistory.CorrectChangeAction", 1},
    {"odd/sfp-pass-reverse-comment.ifc", "IfcOwnerHistory.CorrectChangeAction", 1},
    // Both a product's own representation and mapped: exactly one of the two may be.
    {"archicad18-kalkzandsteen.ifc", "IfcShapeModel.WR11", 403},
    {"archicad20-fzk-haus-ifc4.ifc", "IfcShapeModel.WR11", 140},
    // Of two products, of two or three maps.
    {"bsi-ifc4/element-standard-case.ifc", "IfcShapeModel.WR11", 3},
    {"carf-hvac-heating-ifc4.ifc", "IfcShapeModel.WR11", 15},
    // Of no product, map or aspect.
    {"revit2011-office-a-optimized.ifc", "IfcShapeModel.WR11", 4},
    // A conversion-based unit of time whose exponents are all 0.
    {"archicad18-kalkzandsteen.ifc", "IfcNamedUnit.WR1", 1},
    {"archicad21-russian-building1.ifc", "IfcNamedUnit.WR1", 1},
    {"odd/xb-invalid-type.ifc", "IfcNamedUnit.WR1", 1},
    // FARAD: the two functions of IFC2X3 differ in the exponents of a capacitance, so that no such unit passes.
    {"xbim-large-triangulated.ifc", "IfcNamedUnit.WR1", 1},
    // Quantities below zero.
    {"advance-steel-beam.ifc", "IfcQuantityCount.WR21", 1},
    {"archicad18-kalkzandsteen.ifc", "IfcQuantityLength.WR22", 419},
    {"archicad20-fzk-haus-ifc4.ifc", "IfcQuantityLength.WR22", 9},
    {"archicad21-russian-building1.ifc", "IfcQuantityLength.WR22", 25},
    {"tekla2019i-mini-project.ifc", "IfcQuantityWeight.WR22", 2},
    // Types and proxies without a name.
    {"archicad20-fzk-haus-ifc4.ifc", "IfcTypeObject.NameRequired", 2},
    {"bsi-ifc4/tessellation-with-blob-texture.ifc", "IfcTypeObject.NameRequired", 1},
    {"bsi-ifc4/tessellation-with-image-texture.ifc", "IfcTypeObject.NameRequired", 1},
    {"geometrygym-great-court-roof.ifc", "IfcTypeObject.WR1", 5178},
    {"texture-long-line.ifc", "IfcBuildingElementProxy.WR1", 1},
    // Several properties of a set, or one property twice, with one name.
    {"revit2011-office-a-optimized.ifc", "IfcPropertySet.WR32", 3},
    {"tekla2020-bridge-norway.ifc", "IfcPropertySet.WR32", 3},
    {"vdi3805-wilfer.ifc", "IfcComplexProperty.WR22", 1},
    // Several property sets of an object or a type with one name.
    {"magicad-duct-fitting.ifc", "IfcTypeObject.UniquePropertySetNames", 1},
    {"revit2015-sample-house-ifc4.ifc", "IfcObject.UniquePropertySetNames", 28},
    // Walls of the standard case without a usage of material layers.
    {"odd/vectorworks2013-japanese-cr-only.ifc", "IfcWallStandardCase.WR1", 8},
    {"odd/xb-invalid-type.ifc", "IfcWallStandardCase.WR1", 1},
    {"sema-wall.ifc", "IfcWallStandardCase.WR1", 1},
    // One element with the exponent 1 is the unit itself.
    {"bsi-ifc4/structural-curve-member.ifc", "IfcDerivedUnit.WR1", 2},
    {"sema-wall.ifc", "IfcDerivedUnit.WR1", 1},
    // 0 as a positive length, ratio or index; where the file has "0." or what is no number, the model has 0.
    {"archicad20-fzk-haus-ifc4.ifc", "IfcPositiveRatioMeasure.WR1", 8},
    {"bsi-ifc4/tessellation-with-blob-texture.ifc", "IfcPositiveInteger.WR1", 64},
    {"bsi-ifc4/tessellation-with-image-texture.ifc", "IfcPositiveInteger.WR1", 64},
    {"geometrygym-great-court-roof.ifc", "IfcPositiveLengthMeasure.WR1", 2},
    {"odd/xb-newlines-in-strings.ifc", "IfcPositiveLengthMeasure.WR1", 3},
    // A site or a storey that no relationship connects with the project, in files that were cut down.
    {"odd/sfp-fail-too-many-header-entity-fields.ifc", "IfcSpatialStructureElement.WR41", 1},
    {"odd/sfp-passing-header.ifc", "IfcSpatialStructureElement.WR41", 1},
    {"odd/xb-badly-formed.ifc", "IfcSpatialStructureElement.WR41", 1},
    {"odd/xb-invalid-type.ifc", "IfcSpatialStructureElement.WR41", 1},
    // A north of three dimensions.
    {"odd/sfp-fail-double-comma.ifc", "IfcGeometricRepresentationContext.North2D", 1},
    {"odd/sfp-fail-duplicate-id.ifc", "IfcGeometricRepresentationContext.North2D", 1},
    {"odd/sfp-fail-reverse-string.ifc", "IfcGeometricRepresentationContext.North2D", 1},
    {"odd/sfp-pass-1.ifc", "IfcGeometricRepresentationContext.North2D", 1},
    {"odd/sfp-pass-reverse-comment.ifc", "IfcGeometricRepresentationContext.North2D", 1},
    // Two statements with the number of the project, which both became it.
    {"odd/sfp-fail-duplicate-id.ifc", "IfcSingleProjectInstance.WR1", 1},
    // VIRTUAL, with no virtual element or opening.
    {"archicad20-fzk-haus-ifc4.ifc", "IfcRelSpaceBoundary.CorrectPhysOrVirt", 5},
    // Spaces have no material.
    {"bonsai-example-hom-ifc4.ifc", "IfcRelAssociatesMaterial.AllowedElements", 1},
    // A profile of a curve that is an AREA; a surface of it.
    {"bsi-ifc4/element-standard-case.ifc", "IfcArbitraryOpenProfileDef.WR11", 4},
    {"bsi-ifc4/element-standard-case.ifc", "IfcSweptSurface.SweptCurveType", 4},
    // Properties of doors that no type has.
    {"bsi-ifc4/element-standard-case.ifc", "IfcDoorLiningProperties.WR35", 1},
    {"bsi-ifc4/element-standard-case.ifc", "IfcDoorPanelProperties.ApplicableToType", 1},
    // A proxy whose type is that of a reinforcing bar.
    {"bsi-ifc4/reinforcing-stirrup.ifc", "IfcBuildingElementProxy.CorrectTypeAssigned", 1},
    // CSG of tessellated items.
    {"bsi-ifc4/tessellation-with-blob-texture.ifc", "IfcShapeRepresentation.CorrectItemsForType", 1},
    {"bsi-ifc4/tessellation-with-image-texture.ifc", "IfcShapeRepresentation.CorrectItemsForType", 1},
    // 32768 pixels of 256 times 256.
    {"texture-long-line.ifc", "IfcPixelTexture.WR24", 1},
    // Copied statements: identifiers of objects and applications, names of enumerations.
    {"bridgelink-materials-ifc4x3add2.ifc", "IfcPropertyEnumeration.UR1", 8},
    {"odd/archicad14-double-guids.ifc", "IfcRoot.UR1", 3},
    {"odd/sfp-fail-duplicate-id.ifc", "IfcRoot.UR1", 1},
    {"odd/sfp-pass-1.ifc", "IfcApplication.UR1", 1},
};
// clang-format on

class RuleModelsTest : public testing::TestWithParam<std::string> {
protected:
    void SetUp() override {
        if (GetParam().empty()) GTEST_SKIP() << folder() << " is not at hand";
        std::istringstream stream(sContent(GetParam()));
        io::ReadError errors;
        static_cast<void>(m_file.boRead(stream, {}, errors, true, {}, true));
        if (!m_file.data().pSchema()) GTEST_SKIP() << "no built-in schema";
        m_pProgram = rules::programOf(*m_file.data().pSchema()).pProgram;
        if (!m_pProgram) GTEST_SKIP() << "no rules of " << m_file.data().pSchema()->sName << " are built in";
    }
    std::vector<std::string> found(unsigned iThreads, std::map<std::string, std::size_t>* pCounts = nullptr) {
        rules::RuleOptions options;
        options.iThreads = iThreads;
        std::vector<std::string> result;
        for (const rules::RuleFinding& finding : rules::checkRules(*m_pProgram, m_file.data(), options).findings) {
            EXPECT_EQ(finding.sort, rules::RuleFinding::Sort::Violated)
                << m_pProgram->rules[finding.iRule].sName << ": " << finding.sReason;
            if (pCounts) ++(*pCounts)[m_pProgram->rules[finding.iRule].sName];
            result.push_back(m_pProgram->rules[finding.iRule].sName + ": " + finding.sReason);
        }
        return result;
    }

    File m_file;
    const rules::Program* m_pProgram = nullptr;
};

TEST_P(RuleModelsTest, FailByWhatIsWrongAndByThatWithAnyNumberOfThreads) {
    std::map<std::string, std::size_t> counts;
    const std::vector<std::string> one = found(1, &counts);
    EXPECT_EQ(found(3), one);
    // The table is about the releases that are standards.
    const std::string& sSchema = m_file.data().pSchema()->sName;
    if (sSchema != "IFC2X3" && sSchema != "IFC4" && sSchema != "IFC4X3_ADD2") return;
    std::map<std::string, std::size_t> expected;
    for (const RuleModelsRow& row : g_rows)
        if (GetParam() == row.sFile) expected[row.sRule] = row.iCount;
    EXPECT_EQ(counts, expected);
}

INSTANTIATE_TEST_SUITE_P(Files, RuleModelsTest, testing::ValuesIn(namesOrNone()), sTestName);

}   // namespace
}   // namespace oxa::ifc::models
