// SPDX-License-Identifier: Apache-2.0
// What is written of a model that a caller has changed, and of one with faults, on the caller's thread and on several.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "Format/Ifc/RuleModel.h"
#include "Format/Ifc/WrittenText.h"

namespace oxa::ifc::io {

namespace {

using def::schema::AttributeName;
using def::schema::ObjectName;

const std::string g_sElement = "IFCELEMENT('" + sGuidOf(1) + "',$,#7,.RED.);\n";
const std::string g_sLink = "IFCRELLINK('" + sGuidOf(2) + "',$,#1,(#4));\n";

// Numbers with gaps, and in the file in another order than that of numbers and that of the walk.
std::string sGaps() {
    return "#9=IFCPOINT((9.));\n#4=" + g_sElement + "#7=IFCPOINT((7.));\n#1=IFCPROJECT('" + sGuidOf(0) +
           "',$,(#9));\n#3=" + g_sLink;
}

Entity* pPointCreate(Data& data, double x) {
    Entity* pPoint = data.pEntityCreate(ObjectName("IFCPOINT"));
    EXPECT_TRUE(pPoint->boListValueSet(AttributeName("Coordinates"), std::vector<double>{x}, data));
    data.entityAdd(pPoint);
    return pPoint;
}

// Numbers above those of a file end with the numbers: what is dealt anew begins with 1.
TEST(RuleWrite, NumbersDealtAnewAreAboveNone) {
    ReadFileModel model = modelOf(sGaps());
    Data& data = model.file.data();
    EXPECT_TRUE(data.boNumbersAbove());
    EXPECT_EQ(data.iIdFromEntity(*pPointCreate(data, 1)), 10U);
    static_cast<void>(data.entityIdMap(true));
    EXPECT_EQ(data.iIdFromEntity(*pPointCreate(data, 2)), 1U);
    EXPECT_TRUE(data.boNumbersAbove());
    EXPECT_EQ(data.iIdFromEntity(*pPointCreate(data, 3)), 2U);
}

TEST(RuleWrite, DeletedAndRemovedEntities) {
    const std::string sProject = "#1=IFCPROJECT('" + sGuidOf(0) + "',$,(#9));";
    const std::string sElement = "#4=IFCELEMENT('" + sGuidOf(1) + "',$,#7,.RED.);";
    const std::string sLink = "#3=IFCRELLINK('" + sGuidOf(2) + "',$,#1,(#4));";
    const struct {
        const char* sRule;
        std::uint32_t iNumber;
        bool boRemove;   // and not only deleted
        Lines file;      // what the project reaches, by number
        Lines all;
    } rows[] = {
        {"a deleted end is reached over the link",
         4,
         false,
         {sProject, sLink, sElement, "#7=IFCPOINT((7.));", "#9=IFCPOINT((9.));"},
         {sProject, sLink, sElement, "#7=IFCPOINT((7.));", "#9=IFCPOINT((9.));"}},
        {"a deleted link is reached over the inverse lists",
         3,
         false,
         {sProject, sLink, sElement, "#7=IFCPOINT((7.));", "#9=IFCPOINT((9.));"},
         {sProject, sLink, sElement, "#7=IFCPOINT((7.));", "#9=IFCPOINT((9.));"}},
        {"a removed end takes its link along",
         4,
         true,
         {sProject, "#9=IFCPOINT((9.));"},
         {sProject, "#7=IFCPOINT((7.));", "#9=IFCPOINT((9.));"}},
        {"a removed link leaves both ends",
         3,
         true,
         {sProject, "#9=IFCPOINT((9.));"},
         {sProject, sElement, "#7=IFCPOINT((7.));", "#9=IFCPOINT((9.));"}},
        {"an optional reference has no value any more",
         7,
         true,
         {sProject, sLink, "#4=IFCELEMENT('" + sGuidOf(1) + "',$,$,.RED.);", "#9=IFCPOINT((9.));"},
         {sProject, sLink, "#4=IFCELEMENT('" + sGuidOf(1) + "',$,$,.RED.);", "#9=IFCPOINT((9.));"}},
        {"an optional list that is left empty has none",
         9,
         true,
         {g_sProject, sLink, sElement, "#7=IFCPOINT((7.));"},
         {g_sProject, sLink, sElement, "#7=IFCPOINT((7.));"}},
    };
    for (const auto& row : rows)
        for (const bool boSingle : {true, false}) {
            SCOPED_TRACE(row.sRule);
            ReadFileModel model = modelOf(sGaps());
            Data& data = model.file.data();
            Entity* pEntity = data.pEntityFromId(row.iNumber);
            EXPECT_TRUE(row.boRemove ? data.boEntityRemove(pEntity) : data.boEntityDelete(pEntity));
            const WriteOptions options{
                .boSingleThreaded = boSingle, .eOrder = WriteOrder::Number, .boTellNumbersTwice = true};
            const Written file = fileOf(model.file, options);
            Lines lines = linesOf(file.text);
            std::erase_if(lines, [](const std::string& sLine) { return !sLine.starts_with('#'); });
            EXPECT_EQ(lines, row.file);
            EXPECT_EQ(linesOf(dataOf(data, options).text), row.all);
            EXPECT_TRUE(file.records.empty());
            EXPECT_FALSE(row.boRemove ? data.boEntityRemove(pEntity) : data.boEntityDelete(pEntity)) << "again";
        }
}

// Without the project there is no file.
TEST(RuleWrite, RemovedProject) {
    ReadFileModel model = modelOf(sGaps());
    Data& data = model.file.data();
    const EntityRemoval removal = data.entitiesRemove({data.pProject(), nullptr, data.pProject()});
    std::vector<std::size_t> numbers;
    for (const Entity* pEntity : removal.removed) numbers.push_back(data.iIdFromEntity(*pEntity));
    EXPECT_EQ(numbers, (std::vector<std::size_t>{1, 3}));
    EXPECT_TRUE(removal.incomplete.empty());
    EXPECT_EQ(data.pProject(), nullptr);
    const Written file = fileOf(model.file, {.eOrder = WriteOrder::Number});
    EXPECT_FALSE(file.boResult);
    EXPECT_EQ(file.text, "");
    EXPECT_EQ(dataOf(data, {.eOrder = WriteOrder::Number}).text,
              "#4=" + g_sElement + "#7=IFCPOINT((7.));\n#9=IFCPOINT((9.));\n");
}

// What a statement is told with: severity, category, number, key with argument, the statement so far.
TEST(RuleWrite, FaultsOfStatements) {
    const struct {
        const char* sRule;
        std::string sStatement;
        std::string sWritten;
        Texts reports;
    } rows[] = {
        {"a mandatory list",
         "#2=IFCPOINT($);",
         "#2=IFCPOINT($);",
         {"Fatal Null 2 Error_InvalidNullAttribute(Coordinates) | #2=IFCPOINT("}},
        {"an optional value", g_sProject, g_sProject, {}},
        {"each of a statement",
         "#2=IFCPROPERTY($,$,$,$);",
         "#2=IFCPROPERTY($,$,$,$);",
         {"Fatal Null 2 Error_InvalidNullAttribute(Name) | #2=IFCPROPERTY(",
          "Fatal Null 2 Error_InvalidNullAttribute(Values) | #2=IFCPROPERTY($,$,"}},
        {"an item of a list of selects",
         "#2=IFCPROPERTY('a',$,(IFCLABEL('b'),$),$);",
         "#2=IFCPROPERTY('a',$,(IFCLABEL('b'),$),$);",
         {"Fatal Null 2 Error_InvalidNullAttribute(Values) | #2=IFCPROPERTY('a',$,(IFCLABEL('b'),"}},
        {"a derived value is none that is missing", "#2=IFCPROPERTY(*,*,(*),*);", "#2=IFCPROPERTY(*,*,(*),*);", {}},
        {"a typed value in an optional select",
         "#2=IFCPROPERTY('a',IFCLABEL($),(),$);",
         "#2=IFCPROPERTY('a',IFCLABEL($),(),$);",
         {}},
    };
    for (const auto& row : rows)
        for (const bool boSingle : {true, false}) {
            SCOPED_TRACE(row.sRule);
            const ReadFileModel model = modelOf(row.sStatement + "\n");
            std::ostringstream out;
            WriteError errors;
            EXPECT_TRUE(model.file.data().boWrite(out, errors, boSingle));
            EXPECT_EQ(out.str(), row.sWritten + "\n");
            EXPECT_EQ(reports(errors), row.reports);
        }
}

}   // namespace

}   // namespace oxa::ifc::io
