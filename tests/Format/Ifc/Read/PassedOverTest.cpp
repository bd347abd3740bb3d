// SPDX-License-Identifier: Apache-2.0
// What the rules of reading pass over without a record is counted, so that nobody calls the model whole.
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "Format/Ifc/RuleModel.h"

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
        {"a statement without a closing parenthesis", sHead + "DATA;\n" + sItem + "#2=IFCITEM('a',$;\n" + sEnd, 1, 7,
         1},
        {"one without a number", sHead + "DATA;\n" + sItem + "IFCITEM('a',$,$,$);\n" + sEnd, 1, 7, 1},
        {"text behind a parameter list", sHead + "DATA;\n#1=IFCITEM('a',$,$,$)x;\n" + sEnd, 1, 6, 1},
        {"each, and the first line",
         sHead + "DATA;\nx;\n\ny;#2=IFCITEM(;\n" + sItem + "#3=IFCITEM('a',$,$,$),#4;\n" + sEnd, 4, 6, 2},
        {"the line on which it ends", sHead + "DATA;\nx\n\n;\n" + sItem + sEnd, 1, 8, 1},
        {"a section in front of the data", sHead + "ANCHOR;\n<a>=#1;\nENDSEC;\nDATA;\n" + sItem + sEnd, 2, 5, 1},
        {"a second section of data",
         sHead + "DATA;\n" + sItem + "ENDSEC;\n/*\n*/\nDATA;\n#2=IFCITEM('b',$,$,$);\n" + sEnd, 1, 10, 1},
        {"a surplus field of each header statement, and no field behind a comma",
         "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION(('d','e'),'2;1',$);\n"
         "FILE_NAME('n','t',('a','b'),('o'),'p','s','z',$,$);\nFILE_SCHEMA(('R'),('S'));\nENDSEC;\nDATA;\n" +
             sItem + sEnd,
         3, 3, 1},
        {"the fields that they have",
         "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION(('d','e'),'2;1');\n"
         "FILE_NAME('n,m','t',('a','b'),('o'),'p','s','z',);\nFILE_SCHEMA(('R'));\nENDSEC;\nDATA;\n" +
             sItem + sEnd,
         0, 0, 1},
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

TEST(PassedOver, CountsWhatTheSimpleFormLacksAtItsEnd) {
    const struct {
        const char* sRule;
        std::string sText;
        std::size_t iPlaces;
        unsigned iFirstLine;   // from the data on
        std::size_t iEntities;
    } rows[] = {
        {"nothing", "#1=IFCITEM('a',$,$,$);", 0, 0, 1},
        {"blanks, a comment and the end of a C string", "#1=IFCITEM('a',$,$,$);\n\t /* a */\n" + std::string(1, '\0'),
         0, 0, 1},
        {"a statement without its end", "#1=IFCITEM('a',$,$,$);\n#2=IFCITEM('a',$,", 1, 2, 1},
        {"a text without its end", "#1=IFCITEM('a',$,$,$);\n#2=IFCITEM('a\n;", 1, 3, 1},
        {"what a backslash keeps from being read", "#1=IFCITEM('a',$,$,$);\n\\#2=IFCITEM('a',$,$,$);", 1, 2, 1},
        {"the same, at the end of a statement", "#1=IFCITEM('a',$,$,$)\\;", 1, 1, 0},
        {"a statement without a number", "IFCITEM('a',$,$,$);", 1, 1, 0},
    };
    for (const auto& row : rows)
        for (const bool boSingleThreaded : {true, false}) {
            SCOPED_TRACE(row.sRule);
            std::istringstream in("Ifc file simple;\nR;\n*;\n" + row.sText);
            FileSimple file(ruleSchema());
            io::ReadError errors;
            EXPECT_TRUE(file.boRead(in, schemaIs(ruleSchema()), errors, {}, boSingleThreaded));
            EXPECT_TRUE(errors.records().empty());
            EXPECT_EQ(errors.passedOver().iCount, row.iPlaces);
            EXPECT_EQ(errors.passedOver().iFirstLine, row.iFirstLine);
            EXPECT_EQ(file.data().entities().size(), row.iEntities);
        }
}

}   // namespace

}   // namespace oxa::ifc
