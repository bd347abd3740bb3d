// SPDX-License-Identifier: Apache-2.0
// "--order": how the statements of a written file stand, the same each time.

#include <algorithm>
#include <sstream>

#include <gtest/gtest.h>

#include "tools/ProgramRun.h"
#include "tools/WrittenFile.h"

namespace oxa::test {
namespace {

constexpr const char* g_p10 = "#10=IFCPROJECT('0TdSR4dSbLuwdbL5HLUvM0',$,$,$,$,$,$,$,$);\n";
constexpr const char* g_p7 = "#7=IFCRELAGGREGATES('1CCJ9i1$jSdgYVC2yzHPtC',$,$,$,#10,(#300));\n";
constexpr const char* g_p300 = "#300=IFCSITE('2cp60asVrO3R4Q9IgcHKIk',$,$,$,$,$,$,$,$,$,$,$,$,$);\n";
constexpr const char* g_p4 = "#4=IFCMATERIAL('a',$,$);\n";

struct OrderRow {
    const char* pRule;
    const char* pOrder;   // "" for none
    std::string sData;
    std::string sWritten;
};

std::string sJoined(std::initializer_list<const char*> lines) {
    std::string sText;
    for (const char* pLine : lines) sText += pLine;
    return sText;
}

std::vector<OrderRow> orderRows() {
    const std::string sData = sJoined({g_p10, g_p300, g_p4, g_p7});
    const std::string sNumbers = sJoined({g_p4, g_p7, g_p10, g_p300});
    return {
        {"numbers without the option", "", sData, sNumbers},
        {"numbers", "number", sData, sNumbers},
        {"as in the file", "file", sData, sData},
        {"as in the file, the other way round", "file", sJoined({g_p7, g_p4, g_p300, g_p10}),
         sJoined({g_p7, g_p4, g_p300, g_p10})},
        {"statements on one line", "file",
         "#300=IFCSITE('2cp60asVrO3R4Q9IgcHKIk',$,$,$,$,$,$,$,$,$,$,$,$,$);" + sJoined({g_p4}),
         sJoined({g_p300, g_p4})},
        {"blanks within", "file", "#4 =\nIFCMATERIAL ('a' , $,$ ) ; # 1\n\r = IFCMATERIAL('b',$,$);\n",
         sJoined({g_p4, "#1=IFCMATERIAL('b',$,$);\n"})},
        {"comments within and between, and what looks like statements there", "file",
         "/* #1=IFCMATERIAL(';',$,$); */#4/* it's "
         "*/=IFCMATERIAL('a',$,$);/*/#2=X();*/\n#1/***/=IFCMATERIAL('b',$,$);\n",
         sJoined({g_p4, "#1=IFCMATERIAL('b',$,$);\n"})},
        {"what looks like statements and comments in texts", "file",
         "#4=IFCMATERIAL('a;#1=IFC''/*',$,$);\n#3=IFCMATERIAL('*/;#2=',$,$);\n#1=IFCMATERIAL('b',$,$);\n",
         "#4=IFCMATERIAL('a;#1=IFC''/*',$,$);\n#3=IFCMATERIAL('*/;#2=',$,$);\n#1=IFCMATERIAL('b',$,$);\n"},
        {"references are no statements", "file",
         "#9=IFCPOLYLINE((#3,#1));\n#1=IFCCARTESIANPOINT((1.));\n#3=IFCCARTESIANPOINT((3.));\n",
         "#9=IFCPOLYLINE((#3,#1));\n#1=IFCCARTESIANPOINT((1.));\n#3=IFCCARTESIANPOINT((3.));\n"},
        {"the largest number, and negative ones", "file",
         "#-2=IFCMATERIAL('b',$,$);\n#2147483647=IFCMATERIAL('c',$,$);\n#-1=IFCMATERIAL('d',$,$);\n#4=IFCMATERIAL('a',$"
         ",$);\n",
         "#4294967294=IFCMATERIAL('b',$,$);\n#2147483647=IFCMATERIAL('c',$,$);\n#4294967295=IFCMATERIAL('d',$,$);\n"
         "#4=IFCMATERIAL('a',$,$);\n"},
    };
}

TEST(StatementOrder, IsAsAskedFor) {
    for (const OrderRow& row : orderRows())
        for (const char* pThreads : {"--single-threaded", ""}) {
            SCOPED_TRACE(std::string(row.pRule) + pThreads);
            std::vector<std::string> words{"convert", "--all", "-", "-"};
            if (*row.pOrder) words.insert(words.end(), {"--order", row.pOrder});
            if (*pThreads) words.emplace_back(pThreads);
            const ProgramRun run = runProgram(words, sExchangeFile("IFC4", row.sData));
            EXPECT_EQ(run.iCode, 0) << run.sError;
            EXPECT_EQ(run.sOut, sExchangeFile("IFC4", row.sWritten));
        }
}

// A reader takes no quote in an escape for the end of a text. What such a text is worth is told.
TEST(StatementOrder, IsThatOfAReaderWhereATextHasAFault) {
    const std::string sRest = "#3=IFCMATERIAL('b',$,$);\n#1=IFCMATERIAL('c',$,$);\n";
    for (const char* pEscape : {"\\S\\'", "\\X2\\00E'\\X0\\", "\\'"}) {
        SCOPED_TRACE(pEscape);
        const ProgramRun run =
            runProgram({"convert", "--all", "--order", "file", "-", "-"},
                       sExchangeFile("IFC4", "#4=IFCMATERIAL('" + std::string(pEscape) + "',$,$);\n" + sRest));
        EXPECT_EQ(run.iCode, 1);
        EXPECT_EQ(run.sOut, sExchangeFile("IFC4", "#4=IFCMATERIAL('',$,$);\n" + sRest));
    }
}

// Longer than what is read at once, so that statements, texts and comments are cut apart.
TEST(StatementOrder, DoesNotDependOnWhereBuffersEnd) {
    std::string sData;
    for (int i = 20000; i > 0; --i)
        sData += "#" + std::to_string(i) + "=IFCMATERIAL('" + std::string(static_cast<std::size_t>(i % 17), ';') +
                 "',$,$);\n";
    EXPECT_EQ(runProgram({"convert", "--all", "--order", "file", "-", "-"}, sExchangeFile("IFC4", sData)).sOut,
              sExchangeFile("IFC4", sData));
}

TEST(StatementOrder, NoStatementsAreInAnyOrder) {
    for (const char* pOrder : {"number", "file", "any"})
        for (const bool boSingleThreaded : {false, true}) {
            SCOPED_TRACE(testing::Message() << pOrder << ' ' << boSingleThreaded);
            std::vector<std::string> words{"convert", "--all", "--order", pOrder, "-", "-"};
            if (boSingleThreaded) words.emplace_back("--single-threaded");
            const ProgramRun run = runProgram(words, sExchangeFile("IFC4", ""));
            EXPECT_EQ(run.iCode, 0) << run.sError;
            EXPECT_EQ(run.sOut, sExchangeFile("IFC4", ""));
        }
}

TEST(StatementOrder, AnyHasTheSameStatements) {
    const std::string sData = sJoined({g_p10, g_p300, g_p4, g_p7});
    const ProgramRun run = runProgram({"convert", "--all", "--order", "any", "-", "-"}, sExchangeFile("IFC4", sData));
    EXPECT_EQ(statements(run.sOut), statements(sData));
    const ProgramRun walk =
        runProgram({"convert", "--single-threaded", "--order", "any", "-", "-"}, sExchangeFile("IFC4", sData));
    EXPECT_EQ(walk.sOut, sExchangeFile("IFC4", sJoined({g_p10, g_p7, g_p300})));
}

TEST(StatementOrder, IsTheSameEachTime) {
    for (const char* pName : {"house-ifc4.ifc", "house-ifc2x3.ifc"})
        for (const std::vector<std::string>& options :
             {std::vector<std::string>{}, {"--order", "file"}, {"--renumber"}, {"--all"}, {"--all", "--renumber"}}) {
            std::vector<std::string> words{"convert", sExample(pName), "-"};
            words.insert(words.end(), options.begin(), options.end());
            const std::string sFirst = runProgram(words).sOut;
            ASSERT_FALSE(sFirst.empty());
            for (int i = 0; i < 2; ++i) EXPECT_EQ(runProgram(words).sOut, sFirst);
            words.emplace_back("--single-threaded");
            EXPECT_EQ(runProgram(words).sOut, sFirst);
        }
}

// A change of one value is a change of one line, once the file is as the program writes it.
TEST(StatementOrder, LeavesAllLinesButTheChangedOne) {
    const std::string sBefore = runProgram({"convert", "--all", sExample("house-ifc4.ifc"), "-"}).sOut;
    for (const char* pOrder : {"number", "file"}) {
        const ProgramRun run = runProgram({"set", "-", "#306", "Name", "another", "-", "--order", pOrder}, sBefore);
        EXPECT_EQ(run.iCode, 0) << run.sError;
        EXPECT_EQ(std::count(run.sOut.begin(), run.sOut.end(), '\n'), std::count(sBefore.begin(), sBefore.end(), '\n'));
        std::istringstream before(sBefore);
        std::istringstream after(run.sOut);
        int iChanged = 0;
        for (std::string sOld, sNew; std::getline(before, sOld) && std::getline(after, sNew);) iChanged += sOld != sNew;
        EXPECT_EQ(iChanged, 1);
    }
}

TEST(StatementOrder, IsOneOfTheSimpleFormToo) {
    const std::string sSimple = "Ifc file "
                                "simple;\nIFC4;\n7;\n#9=IFCCARTESIANPOINT((1.,2.));\n#7=IFCPOLYLINE((#9,#8));\n#8="
                                "IFCCARTESIANPOINT((3.,4.));\n";
    EXPECT_EQ(runProgram({"set", "-", "#9", "Coordinates", "(1,2)", "-", "--order", "file"}, sSimple).sOut, sSimple);
    EXPECT_EQ(runProgram({"extract", "-", "#7", "-"}, sSimple).sOut,
              "Ifc file simple;\nIFC4;\n7;\n#7=IFCPOLYLINE((#9,#8));\n#8=IFCCARTESIANPOINT((3.,4.));\n"
              "#9=IFCCARTESIANPOINT((1.,2.));\n");
}

TEST(StatementOrder, IsOneOfThree) {
    const ProgramRun run = runProgram({"convert", "--order", "size", "-", "-"}, "");
    EXPECT_EQ(run.iCode, 2);
    EXPECT_NE(run.sError.find("--order: size not in {number,file,any}"), std::string::npos) << run.sError;
}

}   // namespace
}   // namespace oxa::test
