// SPDX-License-Identifier: Apache-2.0
// What two models say differently, by element.

#include "Compare/Compare.h"

#include <map>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Model/Error.h"
#include "StatementModel.h"

namespace oxa::compare {
namespace {

using test::StatementModel;

// Two walls that share a placement, a property set of the first, a material and a line on their own.
std::map<int, std::string> base() {
    return {
        {1, "IFCWALL('1CCJ9i1$jSdgYVC2yzHPtC',$,'A',$,$,#40,$,'tag',$)"},
        {2, "IFCWALL('2cp60asVrO3R4Q9IgcHKIk',$,'B',$,$,#40,$,$,$)"},
        {3, "IFCRELDEFINESBYPROPERTIES('0e_8SiFPnIEh3pPRu4cB6E',$,$,$,(#1,#2),#4)"},
        {4, "IFCPROPERTYSET('1XxWclp6bOHAdQixVqmAPd',$,'P',$,(#5,#6))"},
        {5, "IFCPROPERTYSINGLEVALUE('Fire',$,IFCLABEL('F30'),$)"},
        {6, "IFCPROPERTYSINGLEVALUE('Width',$,IFCLENGTHMEASURE(115.),$)"},
        {40, "IFCLOCALPLACEMENT($,#41)"},
        {41, "IFCAXIS2PLACEMENT3D(#42,$,$)"},
        {42, "IFCCARTESIANPOINT((0.,0.,0.))"},
        {70, "IFCMATERIAL('Oak',$,$)"},
        {71, "IFCPOLYLINE((#72,#73))"},
        {72, "IFCCARTESIANPOINT((1.,1.))"},
        {73, "IFCCARTESIANPOINT((2.,1.))"},
    };
}

std::string sStatements(const std::map<int, std::string>& all) {
    std::string sText;
    for (const auto& [iNumber, sStatement] : all) sText += '#' + std::to_string(iNumber) + '=' + sStatement + ";\n";
    return sText;
}

std::string sElement(const Element& element) {
    return '#' + std::to_string(element.iNumber) + ' ' + element.sType +
           (element.sGlobalId.empty() ? "" : ' ' + element.sGlobalId) +
           (element.sText.empty() ? "" : ' ' + element.sText);
}

// A line each: "- #1 ...", "+ #1 ...", "~ #1 ... Name: 'A' -> 'B'"; "(no)" for an attribute that a type lacks.
std::vector<std::string> lines(const Result& result) {
    std::vector<std::string> lines;
    for (const Element& element : result.removed) lines.push_back("- " + sElement(element));
    for (const Element& element : result.added) lines.push_back("+ " + sElement(element));
    for (const Change& change : result.changed)
        for (const Difference& value : change.differences)
            lines.push_back("~ #" + std::to_string(change.before.iNumber) + " #" +
                            std::to_string(change.after.iNumber) + ' ' + value.sAttribute + ": " +
                            value.sOld.value_or("(no)") + " -> " + value.sNew.value_or("(no)") +
                            (value.boMore ? " and more" : ""));
    return lines;
}

std::vector<std::string> told(const std::string& sOld, const std::string& sNew, const Options& options = {}) {
    StatementModel before(sOld);
    StatementModel after(sNew);
    const Result result = differences({before.data(), "IFC4", before.pErrors->records()},
                                      {after.data(), "IFC4", after.pErrors->records()}, options);
    std::vector<std::string> all = lines(result);
    EXPECT_EQ(result.boEqual(), all.empty());
    return all;
}

struct CompareRow {
    const char* pRule;
    std::vector<std::pair<int, std::string>> edits;   // a new statement for a number; an empty one takes it away
    std::vector<std::string> told;
};

TEST(Compare, TellsEachChangeWhereItLies) {
    // clang-format off
    const CompareRow rows[] = {
        {"the same twice", {}, {}},
        {"a value", {{1, "IFCWALL('1CCJ9i1$jSdgYVC2yzHPtC',$,'Z',$,$,#40,$,'tag',$)"}}, {"~ #1 #1 Name: 'A' -> 'Z'"}},
        {"a value that goes and one that comes",
         {{1, "IFCWALL('1CCJ9i1$jSdgYVC2yzHPtC',$,'A','d',$,#40,$,$,$)"}},
         {"~ #1 #1 Description: $ -> 'd'", "~ #1 #1 Tag: 'tag' -> $"}},
        {"what two share is told of both",
         {{42, "IFCCARTESIANPOINT((0.,0.,5.5))"}},
         {"~ #1 #1 ObjectPlacement.RelativePlacement.Location.Coordinates: (0.,0.,0.) -> (0.,0.,5.5)",
          "~ #2 #2 ObjectPlacement.RelativePlacement.Location.Coordinates: (0.,0.,0.) -> (0.,0.,5.5)"}},
        {"a member of a SET",
         {{5, "IFCPROPERTYSINGLEVALUE('Fire',$,IFCLABEL('F90'),$)"}},
         {"~ #4 #4 HasProperties[].NominalValue: IFCLABEL('F30') -> IFCLABEL('F90')"}},
        {"a member more",
         {{4, "IFCPROPERTYSET('1XxWclp6bOHAdQixVqmAPd',$,'P',$,(#5,#6,#7))"},
          {7, "IFCPROPERTYSINGLEVALUE('New',$,$,$)"}},
         {"~ #4 #4 HasProperties: () -> (IFCPROPERTYSINGLEVALUE('New',$,$,$))"}},
        {"order within a SET", {{3, "IFCRELDEFINESBYPROPERTIES('0e_8SiFPnIEh3pPRu4cB6E',$,$,$,(#2,#1),#4)"}}, {}},
        {"another number", {{70, ""}, {700, "IFCMATERIAL('Oak',$,$)"}}, {}},
        {"an entity less, on its own", {{70, ""}}, {"- #70 IFCMATERIAL IFCMATERIAL('Oak',$,$)"}},
        {"one more of equal content", {{69, "IFCMATERIAL('Oak',$,$)"}}, {"+ #70 IFCMATERIAL IFCMATERIAL('Oak',$,$)"}},
        {"content with what it leads to",
         {{73, "IFCCARTESIANPOINT((2.,3.))"}},
         {"- #71 IFCPOLYLINE IFCPOLYLINE((IFCCARTESIANPOINT((1.,1.)),IFCCARTESIANPOINT((2.,1.))))",
          "+ #71 IFCPOLYLINE IFCPOLYLINE((IFCCARTESIANPOINT((1.,1.)),IFCCARTESIANPOINT((2.,3.))))"}},
        {"an entity with a GlobalId less",
         {{2, ""}, {3, "IFCRELDEFINESBYPROPERTIES('0e_8SiFPnIEh3pPRu4cB6E',$,$,$,(#1),#4)"}},
         {"- #2 IFCWALL 2cp60asVrO3R4Q9IgcHKIk 'B'", "~ #3 #3 RelatedObjects: (IFCWALL 2cp60asVrO3R4Q9IgcHKIk) -> ()"}},
        {"another type",
         {{2, "IFCSLAB('2cp60asVrO3R4Q9IgcHKIk',$,'B',$,$,#40,$,$,$)"}},
         {"~ #2 #2 type: IFCWALL -> IFCSLAB"}},
    };
    // clang-format on
    for (const CompareRow& row : rows) {
        SCOPED_TRACE(row.pRule);
        std::map<int, std::string> edited = base();
        for (const auto& [iNumber, sStatement] : row.edits) edited[iNumber] = sStatement;
        std::erase_if(edited, [](const auto& statement) { return statement.second.empty(); });
        EXPECT_EQ(told(sStatements(base()), sStatements(edited)), row.told);
    }
}

TEST(Compare, SchemasOfTwoNamesAreNotEqual) {
    StatementModel before("#1=IFCMATERIAL('Oak');\n", "IFC2X3");
    StatementModel after("#1=IFCMATERIAL('Oak',$,$);\n");
    const Result result = differences({before.data(), "IFC2X3"}, {after.data(), "IFC4"});
    EXPECT_EQ(lines(result), std::vector<std::string>());   // what has no value is as what there is not
    EXPECT_FALSE(result.boEqual());
    EXPECT_EQ(result.sSchemaOld, "IFC2X3");
    EXPECT_EQ(result.sSchemaNew, "IFC4");
}

TEST(Compare, GlobalIdThatCouldNotBeReadIsNone) {
    const std::string sModel = "#1=IFCSITE('no GlobalId',$,'S',$,$,$,$,$,$,$,$,$,$,$);\n";
    EXPECT_EQ(told(sModel, sModel), std::vector<std::string>());
    // Without the records the two GlobalIds are those that the reads made up.
    StatementModel before(sModel);
    StatementModel after(sModel);
    const Result result = differences({before.data()}, {after.data()});
    EXPECT_EQ(result.removed.size(), 1U);
    EXPECT_EQ(result.added.size(), 1U);
}

TEST(Compare, OptionsLimitTextsAndCounts) {
    const std::string sOld = "#1=IFCWALL('1CCJ9i1$jSdgYVC2yzHPtC',$,'" + std::string(50, 'a') + "1" +
                             std::string(50, 'z') + "',$,$,$,$,$,$);\n";
    const std::string sNew = "#1=IFCWALL('1CCJ9i1$jSdgYVC2yzHPtC',$,'" + std::string(50, 'a') + "2" +
                             std::string(50, 'z') + "',$,$,$,$,$,$);\n";
    EXPECT_EQ(told(sOld, sNew, {.iMostText = 10}),
              std::vector<std::string>{"~ #1 #1 Name: ...aaaaa1zzzz... -> ...aaaaa2zzzz..."});
    const auto sSet = [](const char* pValue) {
        std::string sText = "#1=IFCPROPERTYSET('1XxWclp6bOHAdQixVqmAPd',$,$,$,(#2,#3,#4));\n";
        for (const char* pNumber : {"2", "3", "4"})
            sText += "#" + std::string(pNumber) + "=IFCPROPERTYSINGLEVALUE('" + pNumber + "',$,IFCLABEL('" + pValue +
                     "'),$);\n";
        return sText;
    };
    EXPECT_EQ(
        told(sSet("a"), sSet("b"), {.iMostDifferences = 2}),
        (std::vector<std::string>{"~ #1 #1 HasProperties[].NominalValue: IFCLABEL('a') -> IFCLABEL('b')",
                                  "~ #1 #1 HasProperties[].NominalValue: IFCLABEL('a') -> IFCLABEL('b') and more"}));
}

TEST(Compare, ModelIsEqualToItself) {
    StatementModel model(sStatements(base()));
    EXPECT_TRUE(differences({model.data()}, {model.data()}).boEqual());
}

TEST(Compare, EndsWhereItIsAskedTo) {
    StatementModel model(sStatements(base()));
    std::stop_source stop;
    EXPECT_TRUE(differences({model.data()}, {model.data()}, {.stop = stop.get_token()}).boEqual());
    stop.request_stop();
    EXPECT_THROW(static_cast<void>(differences({model.data()}, {model.data()}, {.stop = stop.get_token()})), Stopped);
}

}   // namespace
}   // namespace oxa::compare
