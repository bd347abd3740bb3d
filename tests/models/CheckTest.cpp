// SPDX-License-Identifier: Apache-2.0
// Real files, and files named for what is wrong with them, through the levels syntax, header and schema.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "Check/Check.h"
#include "ModelFiles.h"

namespace oxa {
namespace {

namespace fs = std::filesystem;

CheckResult checked(const fs::path& file) {
    CheckOptions options;
    options.levels = {true, true, true, false};
    return checkFile(file, options);
}

// Failures of the three levels; every file that is not named here has none. What stands behind the figures: empty lists of
// authors; byte order marks; values of other types than the schema's, missing ones, doors of IFC4 with the parameters of
// IFC2X3; GlobalIds of another length or given twice; placements that no product has, property sets of several types,
// items with two styles (inverse cardinality).
struct CheckRow {
    std::string_view name;
    std::uint64_t iSyntax;
    std::uint64_t iHeader;
    std::uint64_t iSchema;
};
// clang-format off
const CheckRow g_rows[] = {
    {"acca-rail-track-01.ifc", 0, 3, 0},
    {"acca-rail-track-05.ifc", 0, 3, 0},
    {"advance-steel-beam.ifc", 0, 0, 1},
    {"archicad20-fzk-haus-ifc4.ifc", 0, 0, 5},
    {"autocad-gts-vogel-gesamt-ifc2x.ifc", 0, 1, 0},
    {"bonsai-example-hom-ifc4.ifc", 0, 2, 5},
    {"bridgelink-materials-ifc4x3add2.ifc", 0, 0, 8},
    {"bsi-ifc4/bath-csg-solid.ifc", 1, 0, 0},
    {"bsi-ifc4/beam-curved-i-shape-tessellated.ifc", 1, 0, 0},
    {"bsi-ifc4/beam-extruded-solid.ifc", 1, 0, 0},
    {"bsi-ifc4/beam-revolved-solid.ifc", 1, 0, 1},
    {"bsi-ifc4/beam-standard-case.ifc", 1, 0, 0},
    {"bsi-ifc4/beam-straight-i-shape-tessellated.ifc", 1, 0, 0},
    {"bsi-ifc4/brep-model.ifc", 1, 0, 0},
    {"bsi-ifc4/column-straight-rectangle-tessellation.ifc", 1, 0, 0},
    {"bsi-ifc4/csg-primitive.ifc", 1, 0, 0},
    {"bsi-ifc4/cube-advanced-brep.ifc", 1, 0, 0},
    {"bsi-ifc4/element-standard-case.ifc", 1, 0, 36},
    {"bsi-ifc4/grid-placement.ifc", 1, 0, 0},
    {"bsi-ifc4/horizontal-alignment.ifc", 1, 0, 0},
    {"bsi-ifc4/mapped-shape-with-multiple-items.ifc", 1, 0, 0},
    {"bsi-ifc4/mapped-shape-with-transformation.ifc", 1, 0, 0},
    {"bsi-ifc4/reinforcing-stirrup.ifc", 1, 0, 0},
    {"bsi-ifc4/slab-openings.ifc", 1, 0, 0},
    {"bsi-ifc4/slab-tessellated-unique-vertices.ifc", 1, 0, 0},
    {"bsi-ifc4/structural-curve-member.ifc", 1, 0, 0},
    {"bsi-ifc4/surface-model.ifc", 1, 0, 0},
    {"bsi-ifc4/tessellated-item.ifc", 1, 0, 0},
    {"bsi-ifc4/tessellation-with-blob-texture.ifc", 1, 0, 65},
    {"bsi-ifc4/tessellation-with-image-texture.ifc", 1, 0, 65},
    {"bsi-ifc4/vertical-alignment.ifc", 1, 0, 0},
    {"bsi-ifc4/wall-elemented-case.ifc", 1, 1, 0},
    {"carf-hvac-heating-ifc4.ifc", 0, 0, 16},
    {"odd/archicad14-double-guids.ifc", 0, 0, 4},
    {"odd/encoding-mixed.ifc", 0, 2, 0},
    {"odd/guid-invalid-length.ifc", 0, 0, 5},
    {"odd/header-example-utf8-bytes.ifc", 2, 0, 0},
    {"odd/invalid-schema-ifc99.ifc", 0, 1, 0},
    {"odd/sfp-fail-double-comma.ifc", 1, 0, 0},
    {"odd/sfp-fail-duplicate-id.ifc", 1, 0, 0},
    {"odd/sfp-fail-invalid-0.ifc", 1, 0, 0},
    {"odd/sfp-fail-no-header.ifc", 1, 0, 0},
    {"odd/sfp-fail-reverse-string.ifc", 1, 0, 1},
    {"odd/sfp-fail-too-many-header-entity-fields.ifc", 0, 1, 0},
    {"odd/sfp-fail-utf8-with-bom.ifc", 1, 0, 0},
    {"odd/sfp-pass-1.ifc", 0, 0, 1},
    {"odd/sfp-pass-reverse-comment.ifc", 0, 0, 1},
    {"odd/xb-abstract-class.ifc", 0, 0, 4},
    {"odd/xb-badly-formed.ifc", 0, 0, 4},
    {"odd/xb-double-backslash-name.ifc", 0, 0, 2},
    {"odd/xb-invalid-header-file-name.ifc", 3, 2, 0},
    {"odd/xb-invalid-type.ifc", 1, 0, 5},
    {"odd/xb-newlines-in-strings.ifc", 2, 0, 3},
    {"odd/xb-real-with-exponent.ifc", 1, 1, 0},
    {"odd/xb-schema-ifc2x3-final.ifc", 0, 0, 1},
    {"openroads-test1-ifc4x3rc4.ifc", 0, 0, 29},
    {"psets-ifc2x3.ifc", 0, 0, 23},
    {"railcomplete-al01-ifc4x3.ifc", 0, 0, 10},
    {"revit2013-japanese.ifc", 0, 1, 0},
    {"revit2015-sample-house-ifc4.ifc", 0, 0, 15},
    {"revit2021-large-building.ifc", 0, 0, 20},
    {"sema-wall.ifc", 0, 0, 5},
    {"sketchup-kit-simple-road-ifc4x3rc2.ifc", 0, 0, 27},
    {"tekla-beam.ifc", 0, 0, 4},
    {"tekla2019i-mini-project.ifc", 0, 0, 6},
    {"tekla2020-bridge-norway.ifc", 0, 0, 3},
    {"texture-long-line.ifc", 32768, 2, 1},
    {"vdi3805-wilfer.ifc", 79, 0, 2},
    {"xbim-large-triangulated.ifc", 0, 0, 1},
};
// clang-format on

class CheckModels : public testing::TestWithParam<std::string> {};

TEST_P(CheckModels, FailWhereTheyAreWrong) {
    const std::string& sName = GetParam();
    if (sName.empty()) GTEST_SKIP() << "no models in " << ifc::models::folder();
    const auto* pRow =
        std::find_if(std::begin(g_rows), std::end(g_rows), [&](const CheckRow& row) { return row.name == sName; });
    const CheckRow row = pRow == std::end(g_rows) ? CheckRow{sName, 0, 0, 0} : *pRow;
    const CheckResult result = checked(ifc::models::folder() / sName);
    EXPECT_EQ(result.level(CheckLevel::Syntax).failures, row.iSyntax);
    EXPECT_EQ(result.level(CheckLevel::Header).failures, row.iHeader);
    EXPECT_EQ(result.level(CheckLevel::Schema).failures, row.iSchema);
    EXPECT_EQ(result.bytes, fs::file_size(ifc::models::folder() / sName));
    const bool boFails = row.iSyntax + row.iHeader + row.iSchema > 0;
    EXPECT_EQ(result.verdict() == CheckVerdict::NotValid, boFails);
}
INSTANTIATE_TEST_SUITE_P(All, CheckModels, testing::ValuesIn(ifc::models::namesOrNone()), ifc::models::sTestName);

// Whether a name says that the file passes: "pass-", "sfp-passing-".
bool boNamedForPassing(std::string_view name) { return name.starts_with("pass") || name.starts_with("sfp-pass"); }

// Files whose names say more than the three levels together do.
struct Exception {
    std::string_view name;
    std::string_view reason;
};
const Exception g_exceptions[] = {
    {"sfp-pass-1.ifc", "named for its syntax; two applications have one identifier"},
    {"sfp-pass-reverse-comment.ifc", "named for its syntax; a person has seven parameters"},
};

void vByName(const fs::path& folder, std::string_view prefix) {
    std::size_t iFiles = 0;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
        const std::string sName = entry.path().filename().string();
        if (!sName.starts_with(prefix)) continue;
        ++iFiles;
        const CheckResult result = checked(entry.path());
        const bool boException = std::any_of(std::begin(g_exceptions), std::end(g_exceptions),
                                             [&](const Exception& exception) { return exception.name == sName; });
        EXPECT_EQ(result.verdict() == CheckVerdict::Valid, boNamedForPassing(sName) && !boException) << sName;
        if (!boException) continue;
        EXPECT_EQ(result.level(CheckLevel::Syntax).failures, 0U) << sName;
        EXPECT_EQ(result.level(CheckLevel::Header).failures, 0U) << sName;
    }
    if (iFiles == 0) GTEST_SKIP() << "no such files in " << folder;
}

TEST(CheckFiles, OfSyntaxAreAsTheirNamesSay) { vByName(ifc::models::folder() / "odd", "sfp-"); }

TEST(CheckFiles, OfHeaderAndSchemaAreAsTheirNamesSay) {
    vByName(ifc::models::folder().parent_path() / "rules" / "validate", "");
}

// Of the published rules for headers: files that name a release that was replaced are told so, and stay valid by the header.
TEST(CheckFiles, OfReplacedReleasesHaveANote) {
    const fs::path folder = ifc::models::folder().parent_path() / "rules" / "service";
    std::size_t iFiles = 0;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
        const std::string sName = entry.path().filename().string();
        if (sName.find("-ifc101-") == std::string::npos) continue;
        ++iFiles;
        const CheckResult result = checked(entry.path());
        const bool boNote = std::any_of(result.groups.begin(), result.groups.end(),
                                        [](const CheckGroup& group) { return group.key == "Header_SchemaStatus"; });
        EXPECT_EQ(boNote, sName.starts_with("fail-")) << sName;
        EXPECT_EQ(result.level(CheckLevel::Header).failures, 0U) << sName;
    }
    if (iFiles == 0) GTEST_SKIP() << "no such files in " << folder;
}

}   // namespace
}   // namespace oxa
