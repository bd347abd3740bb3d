// SPDX-License-Identifier: Apache-2.0
// The usual questions to real models: what "oxaifc list", "props", "tree" and "info" answer, held against a script that
// reads the text of the file by itself (rule_answers.py). Skips where there is no python3.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "models/ModelFiles.h"
#include "tools/ProgramRun.h"

namespace oxa::test {
namespace {

ProgramRun runPython(std::vector<std::string> words) {
    words.insert(words.begin(), "python3");
    return runProgramAt("/usr/bin/env", words);
}

void vCompare(const std::filesystem::path& path) {
    if (runPython({"--version"}).iCode != 0) GTEST_SKIP() << "there is no python3";
    if (!std::filesystem::exists(path)) GTEST_SKIP() << "there is no " << path;
    const ProgramRun run = runPython({OXA_SOURCE_DIR "/tests/models/rule_answers.py", OXAIFC_PROGRAM, path.string()});
    EXPECT_EQ(run.iCode, 0) << run.sOut << run.sError;
    EXPECT_TRUE(run.sOut.ends_with(" answers compared\n")) << run.sOut << run.sError;
}

TEST(RuleAnswers, SampleHouseInIfc2x3) { vCompare(sExample("house-ifc2x3.ifc")); }
TEST(RuleAnswers, SampleHouseInIfc4) { vCompare(sExample("house-ifc4.ifc")); }
TEST(RuleAnswers, DuplexInIfc2x3) { vCompare(ifc::models::folder() / "revit2011-duplex-architecture.ifc"); }
TEST(RuleAnswers, SampleHouseOfAnEditorInIfc4) { vCompare(ifc::models::folder() / "revit2015-sample-house-ifc4.ifc"); }
TEST(RuleAnswers, HouseWithQuantitiesInIfc4) { vCompare(ifc::models::folder() / "bonsai-example-hom-ifc4.ifc"); }
TEST(RuleAnswers, BridgeInIfc4x3) { vCompare(ifc::models::folder() / "bridgelink-materials-ifc4x3add2.ifc"); }

}   // namespace
}   // namespace oxa::test
