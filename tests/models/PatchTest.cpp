// SPDX-License-Identifier: Apache-2.0
// Every real file is changed and written as a patch: the other statements are those of the file, byte for byte, the
// result reads as the changed model, and the same change once more changes nothing.

#include <fstream>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "Convert/Assignment.h"
#include "Convert/Patch.h"
#include "Format/Ifc/IfcFile.h"
#include "Model/Model.h"
#include "Model/Relations.h"
#include "models/ModelFiles.h"

namespace oxa::convert {
namespace {

namespace models = ifc::models;

class Patches : public testing::TestWithParam<std::string> {};

// A file with the model that it is read as; numbers kept.
struct File {
    explicit File(const std::string& sBytes) : sText(sBytes), model(Model::fromBuffer(sText)) {}

    // Sets the property of all doors and walls, and gives the text then.
    std::string sChanged(Patched& patched) {
        std::vector<Element> elements;
        for (const char* pType : {"IfcDoor", "IfcWall", "IfcBuilding"})
            for (const Element element : model.all(pType)) elements.push_back(element);
        const Snapshot before(model.core().dataBase());
        for (const char* pText : {"Oxa_Patch.Checked=TRUE", "Pset_WallCommon.FireRating=F 91", "Description=\u00fc'"})
            EXPECT_FALSE(assign(model, elements, std::get<Assignment>(assignmentFromText(pText)))) << pText;
        const Edits edits = before.edits();
        std::istringstream first(sText);
        const std::size_t iHighest = highestNumber(first);
        std::istringstream again(sText);
        std::ostringstream out;
        patched = patch(again, out, model.core().dataBase(), edits, iHighest);
        EXPECT_FALSE(patched.refusal) << patched.refusal->sReason;
        EXPECT_EQ(patched.iChanged, edits.changed.size());
        EXPECT_EQ(patched.iAdded, edits.added.size());
        return out.str();
    }

    std::string sText;
    Model model;
};

// Where two texts differ, line by line of the first: the count of lines of "after" that are not the next of "before".
std::size_t iLinesChanged(std::string_view before, std::string_view after) {
    std::multimap<std::string_view, bool> old;
    for (std::size_t i = 0, iEnd; i < before.size(); i = iEnd) {
        iEnd = std::min(before.find('\n', i), before.size() - 1) + 1;
        old.emplace(before.substr(i, iEnd - i), true);
    }
    std::size_t iChanged = 0;
    for (std::size_t i = 0, iEnd; i < after.size(); i = iEnd) {
        iEnd = std::min(after.find('\n', i), after.size() - 1) + 1;
        const auto found = old.find(after.substr(i, iEnd - i));
        if (found == old.end())
            ++iChanged;
        else
            old.erase(found);
    }
    return iChanged;
}

TEST_P(Patches, ChangeTheirStatementsAndNoOther) {
    if (GetParam().empty()) GTEST_SKIP() << "no models in " << models::folder();
    if (std::filesystem::file_size(models::folder() / GetParam()) > 40'000'000) GTEST_SKIP() << "large";
    std::optional<File> read;
    try {
        read.emplace(models::sContent(GetParam()));
    } catch (const FileError& error) {
        GTEST_SKIP() << "no model: " << error.what();
    }
    File& file = *read;
    Patched patched;
    const std::string sChanged = file.sChanged(patched);
    // A statement is a line, or a few of them, in all of these files.
    EXPECT_LE(iLinesChanged(file.sText, sChanged), patched.iChanged + patched.iAdded);

    File again(sChanged);
    EXPECT_EQ(again.model.size(), file.model.size());
    EXPECT_EQ(again.model.errors().size(), file.model.errors().size());
    for (const Element wall : again.model.all("IfcWall")) {
        EXPECT_EQ(property(wall, "Pset_WallCommon", "FireRating")->value.toString(), "F 91");
        EXPECT_EQ(property(wall, "Oxa_Patch", "Checked")->value.boolean(), true);
        EXPECT_EQ(wall.text("Description"), "\u00fc'");
    }
    EXPECT_TRUE(again.sChanged(patched) == sChanged) << "the second time";
    EXPECT_EQ(patched.iChanged + patched.iAdded + patched.iRemoved, 0U);
}

INSTANTIATE_TEST_SUITE_P(Models, Patches, testing::ValuesIn(models::namesOrNone()), models::sTestName);

}   // namespace
}   // namespace oxa::convert
