// SPDX-License-Identifier: Apache-2.0
// "oxaifc info": the figures of a file, as JSON and as text.

#include <gtest/gtest.h>

#include "PackedText.h"
#include "tools/ProgramRun.h"

namespace oxa::test {
namespace {

constexpr const char* g_pTwoPoints = "#1=IFCCARTESIANPOINT((0.,0.));\n#2=IFCCARTESIANPOINT((1.,0.));\n"
                                     "#3=IFCPOLYLINE((#1,#2));\n";

std::vector<std::string> infoKeys(const Json& object) {
    std::vector<std::string> result;
    for (const auto& item : object.items()) result.push_back(item.key());
    return result;
}

// Takes what differs from run to run out of the object.
Json comparable(Json value) {
    EXPECT_GE(value["seconds"].get<double>(), 0.0);
    value.erase("seconds");
    EXPECT_EQ(infoKeys(value["memory"]), (std::vector<std::string>{"model", "process"}));
    if (value["full"]) {
        EXPECT_GT(value["memory"]["model"], 0);
        EXPECT_GT(value["memory"]["process"], value["memory"]["model"]);
    } else {
        EXPECT_TRUE(value["memory"]["model"].is_null());
        EXPECT_GT(value["memory"]["process"], 0);
    }
    value.erase("memory");
    return value;
}

TEST(InfoVerb, JsonHasItsKeysInOrder) {
    const Json value = runProgram({"info", "--json", sExample("house-ifc4.ifc")}).json();
    EXPECT_EQ(infoKeys(value),
              (std::vector<std::string>{"file", "schema", "header", "entities", "byType", "rooted", "inverses",
                                        "missingReferences", "errors", "fatal", "ok", "lostStatements", "full",
                                        "fullReason", "seconds", "bytes", "memory"}));
    EXPECT_EQ(infoKeys(value["header"]),
              (std::vector<std::string>{"description", "implementationLevel", "name", "timeStamp", "author",
                                        "organization", "preprocessorVersion", "originatingSystem", "authorization"}));
}

TEST(InfoVerb, JsonTellsAllOfASmallFile) {
    const TestFolder folder;
    const std::string sText = sExchangeFile("IFC4", g_pTwoPoints);
    const std::string sPath = folder.sFile("small.ifc", sText);
    Json expected = {
        {"file", sPath},
        {"schema", "IFC4"},
        {"header",
         {{"description", {"d"}},
          {"implementationLevel", "2;1"},
          {"name", "n"},
          {"timeStamp", "2024-05-17T09:30:00"},
          {"author", {"a"}},
          {"organization", {"o"}},
          {"preprocessorVersion", "p"},
          {"originatingSystem", "s"},
          {"authorization", "z"}}},
        {"entities", 3},
        {"byType", {{"IFCCARTESIANPOINT", 2}, {"IFCPOLYLINE", 1}}},
        {"rooted", 0},
        {"inverses", 0},
        {"missingReferences", 0},
        {"errors", 0},
        {"fatal", 0},
        {"ok", true},
        {"lostStatements", 0},
        {"full", true},
        {"fullReason", "as --full asks"},
        {"bytes", sText.size()},
    };
    const ProgramRun full = runProgram({"info", sPath, "--json", "--full"});
    EXPECT_EQ(full.iCode, 0);
    EXPECT_EQ(full.sError, "");
    EXPECT_EQ(comparable(full.json()), expected);
    // What a count does not look for is null.
    for (const char* pKey : {"inverses", "missingReferences", "errors", "fullReason"}) expected[pKey] = nullptr;
    expected["full"] = false;
    const ProgramRun counted = runProgram({"info", sPath, "--json"});
    EXPECT_EQ(counted.iCode, 0);
    EXPECT_EQ(counted.sError, "");
    EXPECT_EQ(comparable(counted.json()), expected);
}

// The same figures, whatever form the model came in.
TEST(InfoVerb, CountsTheSameInIfcXml) {
    const std::string sXml = runProgram({"convert", sExample("house-ifc4.ifc"), "-", "--format", "ifcxml"}).sOut;
    const Json step = runProgram({"info", sExample("house-ifc4.ifc"), "--json"}).json();
    const Json xml = runProgram({"info", "-", "--json"}, sXml).json();
    EXPECT_GT(step["rooted"].get<int>(), 0);
    for (const char* pKey : {"entities", "byType", "rooted"}) EXPECT_EQ(xml[pKey], step[pKey]) << pKey;
    const std::string sRow = "GlobalIds             " + step["rooted"].dump() + "\n";
    EXPECT_NE(runProgram({"info", "-"}, sXml).sOut.find(sRow), std::string::npos) << sRow;
}

TEST(InfoVerb, TypesStandByCountThenByKeyword) {
    const TestFolder folder;
    const std::string sPath = folder.sFile("a.ifc", sExchangeFile("IFC4", "#1=IFCDIRECTION((1.,0.));\n"
                                                                          "#2=IFCCARTESIANPOINT((1.,0.));\n"
                                                                          "#3=IFCMATERIAL('a',$,$);\n"
                                                                          "#4=IFCMATERIAL('b',$,$);\n"));
    EXPECT_EQ(infoKeys(runProgram({"info", sPath, "--json"}).json()["byType"]),
              (std::vector<std::string>{"IFCMATERIAL", "IFCCARTESIANPOINT", "IFCDIRECTION"}));
}

struct ResultRow {
    const char* pRule;
    std::string sText;
    const char* pSchema;
    int iEntities, iErrors, iFatal;
    bool boOk;
    int iCode;
};

void vExpectResult(const ResultRow& row, const ProgramRun& run) {
    const Json value = run.json();
    ASSERT_TRUE(value.is_object()) << run.sOut;
    EXPECT_EQ(run.iCode, row.iCode);
    EXPECT_EQ(run.sError, "");
    EXPECT_EQ(value["schema"], row.pSchema);
    EXPECT_EQ(value["entities"], row.iEntities);
    EXPECT_EQ(value["errors"], row.iErrors);
    EXPECT_EQ(value["fatal"], row.iFatal);
    EXPECT_EQ(value["ok"], row.boOk);
    EXPECT_EQ(value["bytes"], row.sText.size());
}

TEST(InfoVerb, ErrorsOfTheTextGiveOne) {
    const std::string sWhole = sExchangeFile("IFC4", g_pTwoPoints);
    const ResultRow rows[] = {
        {"nothing wrong", sWhole, "IFC4", 3, 0, 0, true, 0},
        {"a header and no data", sExchangeFile("IFC2X3", ""), "IFC2X3", 0, 0, 0, true, 0},
        {"another spelling of the schema", sExchangeFile("IFC2X3_TC1", ""), "IFC2X3", 0, 0, 0, true, 0},
        {"a reference to nothing", sExchangeFile("IFC4", "#3=IFCPOLYLINE((#1,#2));\n"), "IFC4", 1, 2, 0, true, 1},
        {"an unknown type", sExchangeFile("IFC4", "#3=IFCTEAPOT();\n"), "IFC4", 0, 1, 0, true, 1},
        {"an unknown schema", sExchangeFile("IFC99", g_pTwoPoints), "IFC99", 0, 0, 1, false, 1},
        {"the end is missing", sWhole.substr(0, sWhole.find("ENDSEC;\nEND-ISO")), "IFC4", 3, 0, 1, false, 1},
        {"a semicolon is missing", sExchangeFile("IFC4", "#1=IFCCARTESIANPOINT((0.))\n#2=IFCDIRECTION((1.));\n"),
         "IFC4", 0, 0, 1, false, 1},
        {"no exchange structure at all", "Dear Sir or Madam,\n", "", 0, 0, 1, false, 1},
        {"the simple form", "Ifc file simple;\nIFC4;\n*;\n" + std::string(g_pTwoPoints), "IFC4", 3, 0, 0, true, 0},
        {"the simple form, unknown schema", "Ifc file simple;\nIFC99;\n*;\n", "IFC99", 0, 0, 1, false, 1},
    };
    const TestFolder folder;
    for (const ResultRow& row : rows) {
        SCOPED_TRACE(row.pRule);
        const std::string sPath = folder.sFile("a.ifc", row.sText);
        vExpectResult(row, runProgram({"info", sPath, "--json", "--full"}));
        vExpectResult(row, runProgram({"info", sPath, "--json", "--full", "--single-threaded"}));
        vExpectResult(row, runProgram({"info", "-", "--json"}, row.sText));
    }
}

// A STEP file of the disk is counted where nothing about it is doubtful; all else is read, and the reason told.
TEST(InfoVerb, WhatIsDoubtfulIsReadInFull) {
    const TestFolder folder;
    const std::string sWhole = sExchangeFile("IFC4", g_pTwoPoints);
    const struct {
        const char* pRule;
        std::string sPath;
        const char* pReason;   // null: counted
        int iEntities;
        int iCode;
    } rows[] = {
        {"plain", folder.sFile("a.ifc", sWhole), nullptr, 3, 0},
        {"another end of the name", folder.sFile("a.txt", sWhole), nullptr, 3, 0},
        {"faults that only a read finds", folder.sFile("b.ifc", sExchangeFile("IFC4", "#3=IFCPOLYLINE((#1,x));\n")),
         nullptr, 1, 0},
        {"an unknown type", folder.sFile("c.ifc", sExchangeFile("IFC4", "#3=IFCTEAPOT();\n")),
         "a keyword that no instance of its schema has", 0, 1},
        {"a number twice", folder.sFile("d.ifc", sExchangeFile("IFC4", "#1=IFCDIRECTION((1.));#1=IFCDIRECTION((1.));")),
         "a number that stands twice or is too large", 2, 1},
        {"an unknown schema", folder.sFile("e.ifc", sExchangeFile("IFC99", g_pTwoPoints)),
         "its header is not without fault", 0, 1},
        {"the simple form", folder.sFile("f.txt", "Ifc file simple;\nIFC4;\n*;\n" + std::string(g_pTwoPoints)),
         "no STEP file", 3, 0},
        {"packed", folder.sFile("a.ifc.gz", sGzip(sWhole)), "packed", 3, 0},
        {"standard input", "-", "no file of the disk", 3, 0},
    };
    for (const auto& row : rows)
        for (const char* pThreads : {"--json", "--single-threaded"}) {
            SCOPED_TRACE(row.pRule);
            const ProgramRun run = runProgram({"info", row.sPath, "--json", pThreads}, sWhole);
            EXPECT_EQ(run.iCode, row.iCode);
            EXPECT_EQ(run.sError, "");
            const Json value = run.json();
            EXPECT_EQ(value["full"], row.pReason != nullptr);
            EXPECT_EQ(value["fullReason"], row.pReason ? Json(row.pReason) : Json());
            EXPECT_EQ(value["errors"].is_null(), row.pReason == nullptr);
            EXPECT_EQ(value["entities"], row.iEntities);
            EXPECT_EQ(runProgram({"info", row.sPath, "--full", "--json"}, sWhole).json()["entities"], row.iEntities);
        }
}

TEST(InfoVerb, TextTellsWhichItWas) {
    const TestFolder folder;
    const std::string sPath = folder.sFile("a.ifc", sExchangeFile("IFC4", g_pTwoPoints));
    const ProgramRun counted = runProgram({"info", sPath});
    EXPECT_NE(
        counted.sOut.find("GlobalIds             0\nread                  statements counted, to the end; errors, "
                          "missing references and inverse entries with --full\ntime "),
        std::string::npos)
        << counted.sOut;
    const ProgramRun full = runProgram({"info", sPath, "--full"});
    EXPECT_NE(full.sOut.find("GlobalIds             0\ninverse entries       0\nmissing references    0\n"
                             "errors                0, fatal 0\nread                  to the end\n"
                             "in full               as --full asks\ntime "),
              std::string::npos)
        << full.sOut;
    EXPECT_NE(runProgram({"info", "-"}, sExchangeFile("IFC4", g_pTwoPoints))
                  .sOut.find("\nin full               no file of the disk\n"),
              std::string::npos);
}

TEST(InfoVerb, MissingReferencesAreCountedByNumber) {
    const Json value =
        runProgram({"info", "-", "--json"}, sExchangeFile("IFC4", "#3=IFCPOLYLINE((#1,#2,#1));\n#4=IFCTEAPOT();\n"))
            .json();
    EXPECT_EQ(value["missingReferences"], 2);
    EXPECT_EQ(value["errors"], 3);
}

// Only a read of an exchange structure makes a map of them.
TEST(InfoVerb, GlobalIdsAreCountedInEveryForm) {
    const std::string sData = "#1=IFCWALL('3qt5KnRY9OSu4BNT4B7kwi',$,$,$,$,$,$,$,$);\n"
                              "#2=IFCSLAB('0qltlX545U7f6hmhHOJBDu',$,$,$,$,$,$,$,$);\n#3=IFCMATERIAL('a',$,$);\n";
    EXPECT_EQ(runProgram({"info", "-", "--json"}, sExchangeFile("IFC4", sData)).json()["rooted"], 2);
    EXPECT_EQ(runProgram({"info", "-", "--json"}, "Ifc file simple;\nIFC4;\n*;\n" + sData).json()["rooted"], 2);
    const ProgramRun xml = runProgram({"convert", sExample("house-ifc4.ifc"), "-", "--format", "ifcxml"});
    const Json house = runProgram({"info", sExample("house-ifc4.ifc"), "--json"}).json();
    const Json there = runProgram({"info", "-", "--json"}, xml.sOut).json();
    EXPECT_EQ(there["rooted"], 95);
    EXPECT_EQ(house["rooted"], 95);
    const ProgramRun text = runProgram({"info", "-"}, xml.sOut);
    EXPECT_NE(text.sOut.find("GlobalIds             " + there["rooted"].dump() + "\n"), std::string::npos) << text.sOut;
}

// A null GUID is none.
TEST(InfoVerb, NullGlobalIdsAreNotCounted) {
    EXPECT_EQ(runProgram({"info", "-", "--json"},
                         "Ifc file simple;\nIFC4;\n*;\n#1=IFCWALL('0000000000000000000000',$,$,$,$,$,$,$,$);\n"
                         "#2=IFCWALL('3qt5KnRY9OSu4BNT4B7kwi',$,$,$,$,$,$,$,$);\n")
                  .json()["rooted"],
              1);
}

TEST(InfoVerb, InverseEntriesAreThoseOfAllLists) {
    const Json value =
        runProgram({"info", "-", "--json"},
                   sExchangeFile("IFC4", "#1=IFCWALL('3qt5KnRY9OSu4BNT4B7kwi',$,$,$,$,$,$,$,$);\n"
                                         "#2=IFCSLAB('0qltlX545U7f6hmhHOJBDu',$,$,$,$,$,$,$,$);\n"
                                         "#3=IFCSLAB('2cp60asVrO3R4Q9IgcHKIk',$,$,$,$,$,$,$,$);\n"
                                         "#4=IFCRELAGGREGATES('00MPTWCfrN7ReR2sdMzhiQ',$,$,$,#1,(#2,#3));\n"))
            .json();
    EXPECT_EQ(value["inverses"], 3);
}

// What stands behind the end, and what does not fit into one piece of it.
TEST(InfoVerb, SizeIsThatOfTheWholeFile) {
    std::string sData;
    for (int i = 1; i <= 30000; ++i) sData += "#" + std::to_string(i) + "=IFCDIRECTION((1.));\n";
    const std::string sText = sExchangeFile("IFC4", sData) + std::string(600000, ' ');
    const TestFolder folder;
    for (const std::string& sPath : {folder.sFile("a.ifc", sText), std::string("-")}) {
        const Json value = runProgram({"info", sPath, "--json"}, sText).json();
        EXPECT_EQ(value["bytes"], sText.size());
        EXPECT_EQ(value["entities"], 30000);
    }
    const ProgramRun text = runProgram({"info", "-"}, sText);
    EXPECT_NE(text.sOut.find("entities              30,000\n"), std::string::npos) << text.sOut;
}

TEST(InfoVerb, NumbersOfThreeDigitsHaveNoComma) {
    std::string sData;
    for (int i = 1; i <= 100; ++i) sData += "#" + std::to_string(i) + "=IFCDIRECTION((1.));\n";
    EXPECT_NE(runProgram({"info", "-"}, sExchangeFile("IFC4", sData)).sOut.find("entities              100\n"),
              std::string::npos);
}

TEST(InfoVerb, FurtherFaultsOfAnExpressFileAreCounted) {
    const TestFolder folder;
    const std::string sPath = folder.sFile("bad.exp", "SCHEMA A;\nENTITY B SUBTYPE OF (C); END_ENTITY;\n"
                                                      "ENTITY D SUBTYPE OF (E); END_ENTITY;\nEND_SCHEMA;\n");
    const ProgramRun run = runProgram({"info", "-", "--schema-file", sPath}, sExchangeFile("A", ""));
    EXPECT_EQ(run.iCode, 2);
    EXPECT_TRUE(run.sError.ends_with(" (and 1 more)\n")) << run.sError;
}

TEST(InfoVerb, EndThatIsMissingIsToldWithItsReason) {
    const ProgramRun run = runProgram({"info", "-"}, "Dear Sir or Madam,\n");
    EXPECT_NE(run.sOut.find("read                  not to the end: The file begins with \"Dear Sir or Madam,\", not "
                            "with ISO-10303-21;.\n"),
              std::string::npos)
        << run.sOut;
}

TEST(InfoVerb, StandardInputIsCalledMinus) {
    const ProgramRun run = runProgram({"info", "-", "--json"}, sExchangeFile("IFC4", ""));
    EXPECT_EQ(run.json()["file"], "-");
}

TEST(InfoVerb, SimpleFormTellsItsRoot) {
    const std::string sData = g_pTwoPoints;
    const ProgramRun one = runProgram({"info", "-", "--json"}, "Ifc file simple;\nIFC4;\n3;\n" + sData);
    EXPECT_EQ(one.json()["header"], (Json{{"root", 3}}));
    const ProgramRun all = runProgram({"info", "-", "--json"}, "Ifc file simple;\nIFC4;\n*;\n" + sData);
    EXPECT_EQ(all.json()["header"], (Json{{"root", "*"}}));
}

constexpr const char* g_pExpress = "SCHEMA TEASHOP;\nENTITY Teapot; Volume : REAL; END_ENTITY;\nEND_SCHEMA;\n";
constexpr const char* g_pOtherExpress = "SCHEMA MUSEUM;\nENTITY Vase; Age : REAL; END_ENTITY;\nEND_SCHEMA;\n";

TEST(InfoVerb, SchemaFileServesFilesOfItsName) {
    const TestFolder folder;
    const std::string sOne = folder.sFile("teashop.exp", g_pExpress);
    const std::string sTwo = folder.sFile("museum.exp", g_pOtherExpress);
    struct Row {
        const char* pRule;
        const char* pSchemaOfFile;
        const char* pData;
        std::vector<std::string> paths;
        const char* pSchema;
        int iEntities;
        int iCode;
    };
    const Row rows[] = {
        {"its name", "TEASHOP", "#1=TEAPOT(1.5);\n", {sOne}, "TEASHOP", 1, 0},
        {"its name in other letters", "TeaShop", "#1=TEAPOT(1.5);\n", {sOne}, "TEASHOP", 1, 0},
        {"another name, but the only one", "IFC4", "#1=TEAPOT(1.5);\n", {sOne}, "TEASHOP", 1, 0},
        {"the second of two", "MUSEUM", "#1=VASE(2000.);\n", {sOne, sTwo}, "MUSEUM", 1, 0},
        {"none of two, but built in", "IFC4", g_pTwoPoints, {sOne, sTwo}, "IFC4", 3, 0},
        {"none of two", "TEAROOM", "#1=TEAPOT(1.5);\n", {sOne, sTwo}, "TEAROOM", 0, 1},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.pRule);
        std::vector<std::string> words{"info", "--json"};
        for (const std::string& sPath : row.paths) words.insert(words.end(), {"--schema-file", sPath});
        words.push_back(folder.sFile("a.ifc", sExchangeFile(row.pSchemaOfFile, row.pData)));
        const ProgramRun run = runProgram(words);
        EXPECT_EQ(run.iCode, row.iCode);
        const Json value = run.json();
        EXPECT_EQ(value["schema"], row.pSchema);
        EXPECT_EQ(value["entities"], row.iEntities);
    }
}

TEST(InfoVerb, FaultyExpressIsToldWithItsPlace) {
    const TestFolder folder;
    const std::string sPath = folder.sFile("bad.exp", "SCHEMA A;\nENTITY ;\nEND_SCHEMA;\n");
    const ProgramRun run = runProgram({"info", "-", "--schema-file", sPath}, sExchangeFile("A", ""));
    EXPECT_EQ(run.iCode, 2);
    EXPECT_TRUE(run.sError.starts_with("oxaifc: " + sPath + ":2:8: ")) << run.sError;
    EXPECT_EQ(run.sError.find('\n'), run.sError.size() - 1);
}

TEST(InfoVerb, TextTellsTheSame) {
    const ProgramRun run =
        runProgram({"info", "-"}, sExchangeFile("IFC4", std::string(g_pTwoPoints) + "#4=IFCPOLYLINE((#1,#9));\n"));
    EXPECT_EQ(run.iCode, 1);
    for (const char* pLine : {"file                  standard input\n", "schema                IFC4\n",
                              "Description\n Description          d\n ImplementationLevel  2;1\n"
                              "Name\n Name                 n\n TimeStamp            2024-05-17T09:30:00\n"
                              " Author               a\n Organization         o\n IfcToolbox           p\n"
                              " OriginatingSystem    s\n Authorisation        z\n"
                              "Schema\n Schema               IFC4\n",
                              "entities              4\n", "                   2  IFCCARTESIANPOINT\n",
                              "                   2  IFCPOLYLINE\n", "missing references    1\n",
                              "errors                1, fatal 0\n", "read                  to the end\n"})
        EXPECT_NE(run.sOut.find(pLine), std::string::npos) << pLine << run.sOut;
}

TEST(InfoVerb, TextOfTheSimpleFormTellsItsRoot) {
    const ProgramRun run = runProgram({"info", "-"}, "Ifc file simple;\nIFC4;\n3;\n" + std::string(g_pTwoPoints));
    EXPECT_NE(run.sOut.find("schema                IFC4\nroot                  3\nentities"), std::string::npos)
        << run.sOut;
}

TEST(InfoVerb, HeaderBytesOutsideUtf8StayValidJson) {
    std::string sText = sExchangeFile("IFC4", "");
    sText.replace(sText.find("'s'"), 3, "'\xe4\xff'");
    const ProgramRun run = runProgram({"info", "-", "--json"}, sText);
    const Json value = run.json();
    ASSERT_TRUE(value.is_object()) << run.sOut;
    EXPECT_EQ(value["ok"], true);
    EXPECT_TRUE(value["header"]["originatingSystem"].is_string());
}

}   // namespace
}   // namespace oxa::test
