// SPDX-License-Identifier: Apache-2.0
// Files that pass or fail one rule each, where these are at hand: whoever is named "pass-" violates none, whoever is named
// "fail-" the rule of its row and no other.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <map>

#include "Check/Check.h"

namespace {

struct RuleFileRow {
    const char* sFile;
    const char* sRule;
};
// clang-format off
const RuleFileRow g_rows[] = {
    {"fail-2-box-alignment-invalid-ifc2x3.ifc", "IfcBoxAlignment.WR1"},
    {"fail-2-projects-ifc2x3.ifc", "IfcSingleProjectInstance.WR1"},
    {"fail-IfcTelecomAddress-USERDEFINED-None-ifc2x3.ifc", "IfcAddress.WR1"},
    {"fail-IfcTelecomAddress-all-unset-ifc2x3.ifc", "IfcTelecomAddress.WR1"},
    {"fail-actor-role-USERDEFINED-None-ifc2x3.ifc", "IfcActorRole.WR1"},
    {"fail-annotation-curve-occurence-IfcCartesianPoint-ifc2x3.ifc", "IfcAnnotationCurveOccurrence.WR31"},
    {"fail-annotation-surface-IfcPolyline-ifc2x3.ifc", "IfcAnnotationSurface.WR01"},
    {"fail-arbitrary-profile-with-voids-curve-ifc2x3.ifc", "IfcArbitraryProfileDefWithVoids.WR1"},
    {"fail-assoc-material-IfcTask-IFC4.ifc", "IfcRelAssociatesMaterial.AllowedElements"},
    {"fail-axis2-2d-pos-ifc2x3.ifc", "IfcAxis2Placement3D.WR1"},
    {"fail-axis2-anti-parallel-axes.ifc", "IfcAxis2Placement3D.WR4"},
    {"fail-axis2-only-ref-ifc2x3.ifc", "IfcAxis2Placement3D.WR5"},
    {"fail-conv-unit-1-ifc2x3.ifc", "IfcNamedUnit.WR1"},
    {"fail-extrusion-depth--1.0-ifc2x3.ifc", "IfcPositiveLengthMeasure.WR1"},
    {"fail-extrusion-dir-0.0-0.0-ifc4.ifc", "IfcDirection.MagnitudeGreaterZero"},
    {"fail-lining-properties-1.0-None.ifc", "IfcWindowLiningProperties.WR31"},
    {"fail-poly-curve-1-2-1-2-ifc4.ifc", "IfcIndexedPolyCurve.Consecutive"},
    {"fail-rigid-op-IfcPlaneAngleMeasure-IfcLengthMeasure-ifc4x3_add2.ifc", "IfcRigidOperation.SameCoordinateType"},
    {"fail-shaperep-boundingbox-multiple-bbox-ifc2x3.ifc", "IfcShapeRepresentation.WR24"},
    {"fail-shaperep-sweptsolid-3d-polyline-ifc2x3.ifc", "IfcShapeRepresentation.WR24"},
    {"fail-site-latitude-0-ifc2x3.ifc", "IfcCompoundPlaneAngleMeasure.WR1"},
    {"fail-site-latitude-1-ifc2x3.ifc", "IfcCompoundPlaneAngleMeasure.WR1"},
    {"fail-site-latitude-13-ifc2x3.ifc", "IfcCompoundPlaneAngleMeasure.WR4"},
    {"fail-site-latitude-14-ifc2x3.ifc", "IfcCompoundPlaneAngleMeasure.WR4"},
    {"fail-site-latitude-8-ifc2x3.ifc", "IfcCompoundPlaneAngleMeasure.WR3"},
    {"fail-site-latitude-9-ifc2x3.ifc", "IfcCompoundPlaneAngleMeasure.WR3"},
    {"fail-wall-2-same-psets.ifc", "IfcObject.UniquePropertySetNames"},
    {"fail-wall-mls-ifc2x3.ifc", "IfcWallStandardCase.WR1"},
    {"fail-wall-no-mls-ifc2x3.ifc", "IfcWallStandardCase.WR1"},
    {"fail-zone-with-IfcWall-IfcSpace-ifc2x3.ifc", "IfcZone.WR1"},
    {"fail-zone-with-IfcWall-ifc2x3.ifc", "IfcZone.WR1"},
};
// clang-format on

std::filesystem::path folder() {
    const char* sFolder = std::getenv("OXAIFC_RULE_FILES");
    return sFolder ? sFolder : OXA_SOURCE_DIR "/../shared/rules/rules";
}

oxa::CheckResult checked(const std::filesystem::path& path) {
    oxa::CheckOptions options;
    options.levels = {false, false, false, true};
    return oxa::checkFile(path, options);
}

TEST(RuleFiles, FailByTheRuleThatTheyAreNamedFor) {
    if (!std::filesystem::exists(folder())) GTEST_SKIP() << folder() << " is not at hand";
    for (const RuleFileRow& row : g_rows) {
        SCOPED_TRACE(row.sFile);
        const oxa::CheckResult result = checked(folder() / row.sFile);
        ASSERT_EQ(result.groups.size(), 1U);
        EXPECT_EQ(result.groups[0].rule, row.sRule);
        EXPECT_EQ(result.verdict(), oxa::CheckVerdict::NotValid);
        ASSERT_EQ(result.rules.size(), 1U);
        EXPECT_EQ(result.rules[0].notEvaluated, 0U);
    }
}

TEST(RuleFiles, PassAllRules) {
    if (!std::filesystem::exists(folder())) GTEST_SKIP() << folder() << " is not at hand";
    std::size_t iPassed = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder())) {
        const std::string sName = entry.path().filename().string();
        if (!sName.starts_with("pass-")) continue;
        SCOPED_TRACE(sName);
        const oxa::CheckResult result = checked(entry.path());
        EXPECT_TRUE(result.groups.empty()) << result.groups[0].rule;
        EXPECT_EQ(result.verdict(), oxa::CheckVerdict::Valid);
        ++iPassed;
    }
    EXPECT_EQ(iPassed, 42U);
}

}   // namespace
