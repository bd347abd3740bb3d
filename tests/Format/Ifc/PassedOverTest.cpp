// What the rules of reading pass over without a record is counted, so that nobody calls the model whole.
#include <gtest/gtest.h>

#include <string>

#include "RuleModel.h"

namespace oxa::ifc {

namespace {

TEST(PassedOver, CountsEachPlaceAndKeepsTheFirstLine) {
    const std::string sHead = "ISO-10303-21;\nHEADER;\nFILE_SCHEMA(('R'));\nENDSEC;\n";
    const std::string sItem = "#1=IFCITEM('a',$,$,$);\n";
    const std::string sEnd = "ENDSEC;\nEND-ISO-10303-21;\n";
    const std::string sWhole = sHead + "DATA;\n" + sItem + sEnd;
    const struct {
        const char* sRule;
        std::string sText;
        std::size_t iPlaces;
        unsigned iFirstLine;
        std::size_t iEntities;
    } rows[] = {
        {"nothing", sWhole, 0, 0, 1},
        {"blanks, tabs, comments and empty statements are nothing",
         sHead + "/* ; */ DATA;\n;; \t;\n#1=IFCITEM('a',$,$,$)\t ;/* #2=( ; */\n" + sEnd, 0, 0, 1},
        {"a statement without a closing parenthesis",
         sHead + "DATA;\n" + sItem + "#2=IFCITEM('a',$;\n" + sEnd, 1, 7, 1},
        {"one without a number", sHead + "DATA;\n" + sItem + "IFCITEM('a',$,$,$);\n" + sEnd, 1, 7, 1},
        {"text behind a parameter list", sHead + "DATA;\n#1=IFCITEM('a',$,$,$)x;\n" + sEnd, 1, 6, 1},
        {"each, and the first line",
         sHead + "DATA;\nx;\n\ny;#2=IFCITEM(;\n" + sItem + "#3=IFCITEM('a',$,$,$),#4;\n" + sEnd, 4, 6, 2},
        {"the line on which it ends", sHead + "DATA;\nx\n\n;\n" + sItem + sEnd, 1, 8, 1},
        {"a section in front of the data", sHead + "ANCHOR;\n<a>=#1;\nENDSEC;\nDATA;\n" + sItem + sEnd, 2, 5, 1},
        {"a second section of data",
         sHead + "DATA;\n" + sItem + "ENDSEC;\n/*\n*/\nDATA;\n#2=IFCITEM('b',$,$,$);\n" + sEnd, 1, 10, 1},
        {"a second file", sWhole + "\n" + sWhole, 1, 10, 1},
        {"other text behind the end is none of the file", sWhole + "Yours, A. B.\n#7=IFCITEM('b',$,$,$);\n", 0, 0, 1},
        {"a file that ends with its data", sHead + "DATA;\n" + sItem + "ENDSEC;", 0, 0, 1},
        {"a mark that is cut off", sHead + "DATA;\n" + sItem + "ENDSEC;\nEND-ISO-1", 0, 0, 1},
        {"text in front of the file is none of it", "Dear B.;\n" + sWhole, 0, 0, 1},
        {"no header", "ISO-10303-21;\nDATA;\n" + sItem + "#2=IFCNONE();\n" + sEnd, 2, 3, 0},
        {"a report is enough", sHead + "DATA;\n" + sItem + "#2=IFCNONE('a';\n" + sEnd, 0, 0, 1},
    };
    for (const auto& row : rows)
        for (const bool boSingleThreaded : {true, false}) {
            SCOPED_TRACE(row.sRule);
            const ReadFileModel model(row.sText, boSingleThreaded, schemaIs(ruleSchema()));
            EXPECT_TRUE(model.boRead);
            EXPECT_EQ(model.errors.passedOver().iCount, row.iPlaces);
            EXPECT_EQ(model.errors.passedOver().iFirstLine, row.iFirstLine);
            EXPECT_EQ(model.errors.lostStatements().iCount, 0U);
            EXPECT_EQ(model.file.data().entities().size(), row.iEntities);
        }
}

}   // namespace

}   // namespace oxa::ifc
