// SPDX-License-Identifier: Apache-2.0
// The text of a file after changes of its model: what changed, and not a byte more.

#include "Convert/Patch.h"

#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Convert/ValueFromText.h"
#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileError.h"

namespace oxa::convert {
namespace {

// A model with the text that it was read from.
struct Source {
    explicit Source(std::string text) : sText(std::move(text)) {
        std::istringstream stream(sText);
        (void)file.boRead(stream, {}, *pErrors, true, {}, true);
        (void)file.data().boNumbersAbove();
    }

    [[nodiscard]] ifc::Entity& entity(std::size_t iNumber) { return *file.data().pEntityFromId(iNumber); }
    void vSet(std::size_t iNumber, const char* pName, const char* pValue) {
        EXPECT_FALSE(setFromText(file.data(), entity(iNumber), pName, pValue)) << pName;
    }
    void vMaterialAdd(const char* pName) {
        ifc::Entity* const pMaterial = file.data().pEntityCreate(ifc::def::schema::ObjectName("IFCMATERIAL"));
        (void)file.data().iIdFromEntity(*pMaterial);
        EXPECT_TRUE(pMaterial->boValueSet(ifc::def::schema::AttributeName("Name"), std::string(pName), file.data()));
    }

    std::string sText;
    ifc::File file;
    std::unique_ptr<ifc::io::ReadError> pErrors = ifc::io::ReadError::pAllocate();
};

struct Result {
    std::string sText;
    Patched patched;
};

Result patched(Source& source, const std::function<void(Source&)>& change) {
    const Snapshot before(source.file.data());
    change(source);
    const Edits edits = before.edits();
    std::istringstream first(source.sText);
    const std::size_t iHighest = edits.added.empty() ? 0 : highestNumber(first);
    std::istringstream again(source.sText);
    std::ostringstream out;
    Patched result = patch(again, out, source.file.data(), edits, iHighest);
    return {out.str(), std::move(result)};
}

constexpr const char* g_pHead = "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\n"
                                "FILE_NAME('a;b','2020-01-01T00:00:00',(''),(''),'','','');\n"
                                "FILE_SCHEMA(('IFC4'));\nENDSEC;\n/* DATA; */ DATA;\n";
constexpr const char* g_pTail = "ENDSEC;\nEND-ISO-10303-21;\n";

struct PatchRow {
    const char* pRule;
    const char* pData;
    std::function<void(Source&)> change;
    const char* pExpected;
};

void vNameSet(Source& source) { source.vSet(1, "Name", "new"); }

void vExpect(const std::vector<PatchRow>& rows, const std::string& sHead = g_pHead,
             const std::string& sTail = g_pTail) {
    for (const PatchRow& row : rows) {
        SCOPED_TRACE(row.pRule);
        Source source(sHead + row.pData + sTail);
        const Result result = patched(source, row.change);
        EXPECT_FALSE(result.patched.refusal) << result.patched.refusal->sReason;
        EXPECT_EQ(result.sText, sHead + row.pExpected + sTail);
    }
}

TEST(Patch, WritesChangedParametersInTheirPlaces) {
    vExpect({
        {"one in the middle of others as they stand", "#1=IFCMATERIAL('a',$,$);\n#2= IFCMATERIAL( 'b' , $,$ ) ;\n",
         vNameSet, "#1=IFCMATERIAL('new',$,$);\n#2= IFCMATERIAL( 'b' , $,$ ) ;\n"},
        {"blanks and comments around it stay", "#1 = IFCMATERIAL ( /* the ; name */ 'a' /* ' */, $ ,$ ) ;\n", vNameSet,
         "#1 = IFCMATERIAL ( /* the ; name */ 'new' /* ' */, $ ,$ ) ;\n"},
        {"a number with blanks in it", "# 1 /**/ =IFCMATERIAL('a',$,$);\n", vNameSet,
         "# 1 /**/ =IFCMATERIAL('new',$,$);\n"},
        {"several statements on a line", "#2=IFCMATERIAL('b',$,$);#1=IFCMATERIAL('a',$,$);#3=IFCMATERIAL('c',$,$);\n",
         vNameSet, "#2=IFCMATERIAL('b',$,$);#1=IFCMATERIAL('new',$,$);#3=IFCMATERIAL('c',$,$);\n"},
        {"one on several lines", "#1=IFCMATERIAL(\n  'a',\n  $,$);\n", vNameSet,
         "#1=IFCMATERIAL(\n  'new',\n  $,$);\n"},
        {"texts with quotes, parentheses and ends in them", "#1=IFCMATERIAL('a'');#9=(','\\S\\'',$);\n",
         [](Source& source) { source.vSet(1, "Category", "c"); }, "#1=IFCMATERIAL('a'');#9=(','\\S\\'','c');\n"},
        {"two of one statement", "#1=IFCMATERIAL('a',$,$);\n",
         [](Source& source) {
             source.vSet(1, "Name", "n");
             source.vSet(1, "Category", "c");
         },
         "#1=IFCMATERIAL('n',$,'c');\n"},
        {"lists with commas", "#1=IFCCARTESIANPOINT((1.E-05,2.));\n#2=IFCPOLYLINE((#1,#1));\n",
         [](Source& source) { source.vSet(2, "Points", "(#1,#1,#1)"); },
         "#1=IFCCARTESIANPOINT((1.E-05,2.));\n#2=IFCPOLYLINE((#1,#1,#1));\n"},
        {"a value that could not be read, beside",
         "#1=IFCBOOLEANRESULT(.NO.,#1,#1);\n#2=IFCSIUNIT(*,.NO.,$,.METRE.);\n",
         [](Source& source) { source.vSet(2, "Prefix", "milli"); },
         "#1=IFCBOOLEANRESULT(.NO.,#1,#1);\n#2=IFCSIUNIT(*,.NO.,.MILLI.,.METRE.);\n"},
        {"a reference to nothing, beside", "#1=IFCSTYLEDITEM(#77,(#78),$);\n",
         [](Source& source) { source.vSet(1, "Name", "n"); }, "#1=IFCSTYLEDITEM(#77,(#78),'n');\n"},
        {"parameters that are missing", "#1=IFCMATERIAL('a');\n",
         [](Source& source) { source.vSet(1, "Category", "c"); }, "#1=IFCMATERIAL('a',$,'c');\n"},
        {"all parameters missing", "#1=IFCMATERIAL();\n", vNameSet, "#1=IFCMATERIAL('new');\n"},
        {"too many parameters", "#1=IFCMATERIAL('a',$,$,'x');\n", vNameSet, "#1=IFCMATERIAL('new',$,$,'x');\n"},
        {"what was set to what it is", "#1=IFCMATERIAL( 'a' ,$,$);\n",
         [](Source& source) { source.vSet(1, "Name", "a"); }, "#1=IFCMATERIAL( 'a' ,$,$);\n"},
        {"what the read could not take", "#3=IFCTEAPOT(#1);\n#4=(IFCA()IFCB());\ngarbage;\n#1=IFCMATERIAL('a',$,$);\n",
         vNameSet, "#3=IFCTEAPOT(#1);\n#4=(IFCA()IFCB());\ngarbage;\n#1=IFCMATERIAL('new',$,$);\n"},
        {"another number twice", "#2=IFCMATERIAL('b',$,$);\n#1=IFCMATERIAL('a',$,$);\n#2=IFCMATERIAL('c',$,$);\n",
         vNameSet, "#2=IFCMATERIAL('b',$,$);\n#1=IFCMATERIAL('new',$,$);\n#2=IFCMATERIAL('c',$,$);\n"},
        {"a negative number", "#-1=IFCMATERIAL('a',$,$);\n",
         [](Source& source) { source.vSet(4294967295U, "Name", "n"); }, "#-1=IFCMATERIAL('n',$,$);\n"},
        {"ENDSEC in a text", "#1=IFCMATERIAL('ENDSEC;',$,$);\n", vNameSet, "#1=IFCMATERIAL('new',$,$);\n"},
    });
}

TEST(Patch, LeavesAllBehindTheSectionAsItIs) {
    const std::string sTail = "ENDSEC;\n\nDATA ;\n#1=IFCMATERIAL('other',$,$);\n#90=IFCMATERIAL('far',$,$);\n"
                              "ENDSEC;\nEND-ISO-10303-21;\nrest 'without end";
    vExpect({{"another DATA section", "#1=IFCMATERIAL('a',$,$);\n", vNameSet, "#1=IFCMATERIAL('new',$,$);\n"},
             {"whose numbers count too", "#1=IFCMATERIAL('a',$,$);\n", [](Source& source) { source.vMaterialAdd("m"); },
              "#1=IFCMATERIAL('a',$,$);\n#91=IFCMATERIAL('m',$,$);\n"}},
            g_pHead, sTail);
    vExpect(
        {{"what stands in front of the file", "#1=IFCMATERIAL('a',$,$);\n", vNameSet, "#1=IFCMATERIAL('new',$,$);\n"}},
        std::string("\xef\xbb\xbf#1=IFCMATERIAL('mail',$,$);\n") + g_pHead);
}

TEST(Patch, PutsNewStatementsInFrontOfTheEnd) {
    const auto vAdd = [](Source& source) { source.vMaterialAdd("m"); };
    vExpect({
        {"above the highest number", "#7=IFCMATERIAL('a',$,$);\n#5=IFCMATERIAL('a',$,$);\n", vAdd,
         "#7=IFCMATERIAL('a',$,$);\n#5=IFCMATERIAL('a',$,$);\n#8=IFCMATERIAL('m',$,$);\n"},
        {"of what could not be read too", "#7=IFCMATERIAL('a',$,$);\n#12=IFCTEAPOT();\n", vAdd,
         "#7=IFCMATERIAL('a',$,$);\n#12=IFCTEAPOT();\n#13=IFCMATERIAL('m',$,$);\n"},
        {"and of references to nothing", "#7=IFCPOLYLINE((#20,#7));\n", vAdd,
         "#7=IFCPOLYLINE((#20,#7));\n#21=IFCMATERIAL('m',$,$);\n"},
        {"not those in texts and comments", "#7=IFCMATERIAL('#30',$,$);/* #40 */\n", vAdd,
         "#7=IFCMATERIAL('#30',$,$);/* #40 */\n#8=IFCMATERIAL('m',$,$);\n"},
        {"in an empty section", "", vAdd, "#1=IFCMATERIAL('m',$,$);\n"},
        {"behind a comment", "#1=IFCMATERIAL('a',$,$);\n/* the end */\n", vAdd,
         "#1=IFCMATERIAL('a',$,$);\n/* the end */\n#2=IFCMATERIAL('m',$,$);\n"},
        {"and what they are named by has their numbers",
         "#1=IFCMATERIALLIST((#2));\n#2=IFCMATERIAL('#4',$,$);\n#9=IFCX();\n",
         [](Source& source) {
             source.vMaterialAdd("#3");
             ifc::Entity* const pNew = source.file.data().entities().back();
             ifc::Entity& list = source.entity(1);
             std::vector<const ifc::Entity*> both;
             for (const ifc::Entity* pEntity : source.file.data().entities())
                 if (pEntity != &list) both.push_back(pEntity);
             EXPECT_NE(pNew, nullptr);
             EXPECT_TRUE(list.boListValueSet(ifc::def::schema::AttributeName("Materials"), both, source.file.data()));
         },
         "#1=IFCMATERIALLIST((#2,#10));\n#2=IFCMATERIAL('#4',$,$);\n#9=IFCX();\n#10=IFCMATERIAL('#3',$,$);\n"},
    });
    vExpect({{"on a line of its own", "#1=IFCMATERIAL('a',$,$);", vAdd,
              "#1=IFCMATERIAL('a',$,$);\n#2=IFCMATERIAL('m',$,$);\n"}});
    vExpect({{"before the blanks in front of ENDSEC", "#1=IFCMATERIAL('a',$,$);\n", vAdd,
              "#1=IFCMATERIAL('a',$,$);\n#2=IFCMATERIAL('m',$,$);\n"}},
            g_pHead, "  ENDSEC;\nEND-ISO-10303-21;\n");
}

// The line ends of a file are those of its first line.
TEST(Patch, LineEndsAreThoseOfTheFile) {
    const auto vAll = [](Source& source) {
        vNameSet(source);
        source.vMaterialAdd("m");
    };
    for (const std::string sEnd : {"\r\n", "\r", "\n", ""}) {
        const auto sFile = [&sEnd](std::string sText) {
            for (std::size_t i = 0; (i = sText.find('\n', i)) != std::string::npos; i += sEnd.size())
                sText.replace(i, 1, sEnd);
            return sText;
        };
        Source source(sFile(std::string(g_pHead) + "#1=IFCMATERIAL('a',$,$);\n" + g_pTail));
        const Result result = patched(source, vAll);
        std::string sExpected =
            sFile(std::string(g_pHead) + "#1=IFCMATERIAL('new',$,$);\n#2=IFCMATERIAL('m',$,$);\n" + g_pTail);
        if (sEnd.empty()) sExpected.insert(sExpected.find("ENDSEC;END-ISO"), "\n");
        EXPECT_EQ(result.sText, sExpected);
        EXPECT_EQ(result.patched.iChanged, 1U);
        EXPECT_EQ(result.patched.iAdded, 1U);
        EXPECT_EQ(result.patched.iRemoved, 0U);
    }
}

TEST(Patch, RemovedStatementsGoWithTheirLines) {
    const auto vRemove = [](Source& source) { EXPECT_TRUE(source.file.data().boEntityRemove(&source.entity(1))); };
    vExpect({
        {"a line", "#1=IFCMATERIAL('a',$,$);\n#2=IFCMATERIAL('b',$,$);\n", vRemove, "#2=IFCMATERIAL('b',$,$);\n"},
        {"with blanks around it", "  #1=IFCMATERIAL('a',$,$);  \n#2=IFCMATERIAL('b',$,$);\n", vRemove,
         "#2=IFCMATERIAL('b',$,$);\n"},
        {"two in a row", "#1=IFCMATERIAL('a',$,$);\n#2=IFCMATERIAL('b',$,$);\n",
         [&](Source& source) {
             EXPECT_TRUE(source.file.data().boEntityRemove(&source.entity(2)));
             vRemove(source);
         },
         ""},
        {"a part of a line", "#1=IFCMATERIAL('a',$,$); #2=IFCMATERIAL('b',$,$);\n", vRemove,
         " #2=IFCMATERIAL('b',$,$);\n"},
        {"behind another", "#2=IFCMATERIAL('b',$,$); #1=IFCMATERIAL('a',$,$);\n", vRemove,
         "#2=IFCMATERIAL('b',$,$); \n"},
        {"a comment stays", "/* a */ #1=IFCMATERIAL('a',$,$); /* b */\n", vRemove, "/* a */  /* b */\n"},
        {"who named it is changed",
         "#1=IFCMATERIAL('a',$,$);\n#2=IFCMATERIALLIST((#1,#3));\n#3=IFCMATERIAL('b',$,$);\n", vRemove,
         "#2=IFCMATERIALLIST((#3));\n#3=IFCMATERIAL('b',$,$);\n"},
    });
}

TEST(Patch, AnotherTypeIsAnotherStatement) {
    vExpect({{"as a whole", "#1= IFCMATERIAL('a',$,$) ;\n",
              [](Source& source) {
                  source.entity(1).vSchemaEntitySet(
                      source.file.data(),
                      *source.file.data().pEntitySchemaFromName(ifc::def::schema::ObjectName("IFCPERSON")), true);
                  source.vSet(1, "FamilyName", "p");
              },
              "#1=IFCPERSON($,'p',$,$,$,$,$,$);\n"}});
}

TEST(Patch, TextsAreCutByBlocksAnywhere) {
    std::string sData, sExpected;
    for (int i = 1; i <= 20000; ++i) {
        const std::string sRest = "=IFCMATERIAL(" + std::string(static_cast<std::size_t>(i % 7), ' ') + "'" +
                                  std::string(static_cast<std::size_t>(i % 17), ';') + "',$,";
        sData += "#" + std::to_string(i) + sRest + "$);/*;'*/\n";
        sExpected += "#" + std::to_string(i) + sRest + (i % 3 ? "$" : "'c'") + ");/*;'*/\n";
    }
    sData += "#30000=IFCMATERIAL('" + std::string(700000, 'x') + "',$,$);\n";
    sExpected += "#30000=IFCMATERIAL('" + std::string(700000, 'x') + "',$,'c');\n";
    Source source(g_pHead + sData + g_pTail);
    const Result result = patched(source, [](Source& all) {
        for (std::size_t i = 3; i <= 20000; i += 3) all.vSet(i, "Category", "c");
        all.vSet(30000, "Category", "c");
    });
    EXPECT_EQ(result.patched.iChanged, 6667U);
    EXPECT_TRUE(result.sText == g_pHead + sExpected + g_pTail);
}

struct RefusePatchRow {
    const char* pRule;
    std::string sData;
    std::function<void(Source&)> change;
    PatchRefusal::Why eWhy;
    const char* pReason;
};

TEST(Patch, TellsWhyATextCantBePatched) {
    using Why = PatchRefusal::Why;
    const RefusePatchRow rows[] = {
        {"a number twice", "#1=IFCMATERIAL('a',$,$);\n#2=IFCMATERIAL('b',$,$);\n#1=IFCMATERIAL('c',$,$);\n", vNameSet,
         Why::NumberTwice, "#1 stands twice, in line 8 and in line 10, so it can't be changed"},
        {"no number left", "#1=IFCMATERIAL('a',$,$);\n#-1=IFCTEAPOT();\n",
         [](Source& source) { source.vMaterialAdd("m"); }, Why::NumbersUsedUp,
         "it has #4294967295, and no number is left above that"},
        {"a value with a reference to nothing", "#1=IFCPOLYLINE((#2,#9));\n#2=IFCCARTESIANPOINT((1.,2.));\n",
         [](Source& source) {
             std::vector<ifc::Entity*> points;
             EXPECT_TRUE(source.entity(1).boListValueGet(ifc::def::schema::AttributeName("Points"), points));
             const std::vector<const ifc::Entity*> turned{points.rbegin(), points.rend()};
             EXPECT_TRUE(source.entity(1).boListValueSet(ifc::def::schema::AttributeName("Points"), turned,
                                                         source.file.data()));
         },
         Why::Undefined, "#1: Points refers to an instance that is not defined, so it can't be written anew"},
        {"another text", "#1=IFCMATERIAL('a',$,$);\n",
         [](Source& source) {
             vNameSet(source);
             source.sText = std::string(g_pHead) + g_pTail;
         },
         Why::NotThere, "it has no statement #1, unlike the model"},
        {"a text without end", "#1=IFCMATERIAL('a',$,$);\n",
         [](Source& source) {
             vNameSet(source);
             source.sText.resize(source.sText.find("ENDSEC;\nEND-ISO"));
         },
         Why::NoEnd, "its DATA section has no ENDSEC"},
    };
    for (const RefusePatchRow& row : rows) {
        SCOPED_TRACE(row.pRule);
        Source source(g_pHead + row.sData + g_pTail);
        const Result result = patched(source, row.change);
        ASSERT_TRUE(result.patched.refusal);
        EXPECT_EQ(result.patched.refusal->eWhy, row.eWhy);
        EXPECT_EQ(result.patched.refusal->sReason, row.pReason);
    }
}

TEST(Snapshot, TellsWhatChanged) {
    Source source(std::string(g_pHead) +
                  "#1=IFCMATERIAL('a',$,$);\n#2=IFCMATERIAL('b',$,$);\n#3=IFCMATERIAL('c',$,$);\n" + g_pTail);
    const Snapshot before(source.file.data());
    EXPECT_TRUE(before.edits().boEmpty());
    source.vSet(2, "Category", "c");
    source.vSet(2, "Category", "$");
    EXPECT_TRUE(before.edits().boEmpty()) << "there and back";
    source.vSet(2, "Name", "x");
    source.vSet(2, "Category", "y");
    source.vMaterialAdd("new");
    EXPECT_TRUE(source.file.data().boEntityRemove(&source.entity(1)));
    const Edits edits = before.edits();
    ASSERT_EQ(edits.changed.size(), 1U);
    EXPECT_EQ(edits.changed[0].pEntity, &source.entity(2));
    EXPECT_EQ(edits.changed[0].attributes, (std::vector<unsigned>{0, 2}));
    EXPECT_FALSE(edits.changed[0].boType);
    ASSERT_EQ(edits.added.size(), 1U);
    EXPECT_EQ(source.file.data().iIdFromEntity(*edits.added[0]), 4U);
    EXPECT_EQ(edits.removed, std::vector<std::size_t>{1});
}

}   // namespace
}   // namespace oxa::convert
