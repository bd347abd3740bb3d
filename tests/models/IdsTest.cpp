// SPDX-License-Identifier: Apache-2.0
// The test cases of the IDS standard, each by its name: pass, fail or invalid; and its table of types.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Check/Ids.h"
#include "Model/Model.h"

namespace oxa {
namespace {

namespace fs = std::filesystem;

fs::path folder() {
    const char* sSet = std::getenv("OXAIFC_IDS");
    return sSet ? fs::path(sSet) : fs::path(OXA_SOURCE_DIR) / ".." / "shared" / "ids";
}

TEST(IdsStandard, CasesAreWhatTheirNamesSay) {
    std::vector<fs::path> cases;
    std::error_code error;
    for (const auto& entry : fs::recursive_directory_iterator(folder() / "testcases", error))
        if (entry.path().extension() == ".ids") cases.push_back(entry.path());
    if (cases.empty()) GTEST_SKIP() << "no test cases in " << folder();
    std::ranges::sort(cases);
    std::set<std::string> kinds;
    for (const fs::path& file : cases) {
        const std::string sName = file.filename().string();
        SCOPED_TRACE(sName);
        const ids::Requirements wanted = ids::Requirements::open(file);
        const Model model = Model::open(fs::path(file).replace_extension(".ifc"));
        const ids::Result result = ids::check(model, wanted);
        const std::string sGot = !wanted.valid() ? "invalid" : result.verdict == ids::Verdict::Passed ? "pass" : "fail";
        kinds.insert(sGot);
        EXPECT_EQ(sName.substr(0, sName.find('-')), sGot)
            << (wanted.faults().empty() ? result.specifications.front().reason : wanted.faults().front().message);
    }
    EXPECT_EQ(kinds, (std::set<std::string>{"fail", "invalid", "pass"}));
}

// Each row of the table says of a type in which schemas it is one of values, and what restricts it.
TEST(IdsStandard, TypesAreThoseOfTheTable) {
    std::ifstream table(folder() / "documentation" / "DataTypes.md");
    if (!table) GTEST_SKIP() << "no table in " << folder();
    const char* const versions[] = {"IFC2X3", "IFC4", "IFC4X3_ADD2"};
    std::size_t iRows = 0;
    for (std::string sLine; std::getline(table, sLine);) {
        std::vector<std::string> cells;
        for (std::size_t i = 1; i < sLine.size();) {
            const std::size_t iEnd = std::min(sLine.find('|', i), sLine.size());
            std::string sCell = sLine.substr(i, iEnd - i);
            std::erase(sCell, ' ');
            cells.push_back(sCell);
            i = iEnd + 1;
        }
        if (cells.size() < 5 || !cells[0].starts_with("IFC")) continue;
        ++iRows;
        for (int iVersion = 0; iVersion < 3; ++iVersion) {
            const bool boKnown =
                cells[static_cast<std::size_t>(iVersion) + 1].find("\xE2\x9C\x94") != std::string::npos;
            const std::string& sBase = cells[4];
            SCOPED_TRACE(cells[0] + " " + versions[iVersion]);
            const std::string sText =
                "<ids xmlns='http://standards.buildingsmart.org/IDS' xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
                "<info><title/></info><specifications><specification name='' ifcVersion='" +
                std::string(versions[iVersion]) +
                "'><applicability maxOccurs='unbounded'/><requirements><property dataType='" + cells[0] +
                "'><propertySet><simpleValue>A</simpleValue></propertySet><baseName><simpleValue>B</simpleValue>"
                "</baseName>" +
                (sBase.empty() ? std::string() : "<value><xs:restriction base='" + sBase + "'/></value>") +
                "</property></requirements></specification></specifications></ids>";
            const ids::Requirements read = ids::Requirements::fromBuffer(sText);
            EXPECT_EQ(read.valid(), boKnown) << (read.faults().empty() ? "" : read.faults().back().message);
        }
    }
    EXPECT_GT(iRows, 300U);
}

}   // namespace
}   // namespace oxa
