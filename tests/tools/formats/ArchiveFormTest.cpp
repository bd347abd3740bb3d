// SPDX-License-Identifier: Apache-2.0
// Packed files, .ifczip and .gz, where a verb takes or writes one: the answers are those of what is inside. What is said of
// archives that hold no model stands in tests/Model/ArchiveTest.cpp.

#include <algorithm>
#include <utility>

#include <gtest/gtest.h>

#include "PackedText.h"
#include "tools/ProgramRun.h"
#include "tools/WrittenFile.h"

namespace oxa::test {
namespace {

std::string sHouse() { return sContent(sExample("house-ifc4.ifc")); }

std::string sReplaced(std::string sText, std::string_view what, std::string_view by) {
    for (std::size_t i = 0; (i = sText.find(what, i)) != std::string::npos; i += by.size())
        sText.replace(i, what.size(), by);
    return sText;
}

// What a verb says of the three files; the first word behind the verb is the file.
TEST(ArchiveForm, EveryVerbTakesOne) {
    const TestFolder folder;
    const std::string sPlain = folder.sFile("house.ifc", sHouse());
    const std::string sGz = folder.sFile("house.ifc.gz", sGzip(sHouse()));
    const std::string sZipped = folder.sFile("house.ifczip", sZip({{"h.png", "x"}, {"house.ifc", sHouse()}}));
    const std::vector<std::string> calls[] = {
        {"info", "FILE", "--full"},
        {"check", "FILE"},
        {"check", "FILE", "--json"},
        {"show", "FILE", "IfcWall", "--single-threaded"},
        {"list", "FILE", "IfcDoor", "-f", "csv"},
        {"props", "FILE", "IfcDoor"},
        {"tree", "FILE", "--counts"},
        {"diff", "FILE", sPlain},
        {"diff", sPlain, "FILE"},
        {"convert", "FILE", "-"},
        {"convert", "FILE", "-", "--order", "file", "--single-threaded"},
        {"extract", "FILE", "712", "-"},
        {"set", "FILE", "712", "Name", "x", "-"},
        {"header", "FILE"},
        {"header", "FILE", "--set", "name=x", "-"},
        {"schema", "--file", "FILE"},
    };
    for (const std::vector<std::string>& call : calls) {
        SCOPED_TRACE(testing::PrintToString(call));
        const auto run = [&call](const std::string& sFile, std::string_view standardInput = {}) {
            std::vector<std::string> words = call;
            std::replace(words.begin(), words.end(), std::string("FILE"), sFile);
            ProgramRun result = runProgram(words, standardInput);
            for (std::string* pText : {&result.sOut, &result.sError}) {
                *pText = sReplaced(*pText, sReplaced(sFile, "\\", "\\\\"), sFile);   // in JSON
                *pText =
                    sReplaced(sReplaced(*pText, sFile == "-" ? "standard input" : sFile, "FILE"), "\"-\"", "\"FILE\"");
            }
            // What no two runs have in common: the last row.
            if (call.front() == "info") result.sOut.erase(result.sOut.find("\ntime "));
            return result;
        };
        const ProgramRun plain = run(sPlain);
        for (const ProgramRun& packed :
             {run(sGz), run(sZipped), run("-", sContent(sGz)), run("-", sContent(sZipped))}) {
            EXPECT_EQ(packed.iCode, plain.iCode);
            EXPECT_EQ(packed.sOut, plain.sOut);
            EXPECT_EQ(packed.sError, plain.sError);
        }
    }
}

struct OutRow {
    const char* pRule;
    std::vector<std::string> words;   // OUT stands for the file
    const char* pOut;
    const char* pInside;   // of an archive
};

TEST(ArchiveForm, EveryVerbWritesOne) {
    const std::string sHouseFile = sExample("house-ifc4.ifc");
    const OutRow rows[] = {
        {"an archive", {"convert", sHouseFile, "OUT"}, "a.ifczip", "a.ifc"},
        {"of ifcXML", {"convert", sHouseFile, "OUT", "--format", "ifcxml"}, "b.IFCZIP", "b.ifcxml"},
        {"gzip", {"convert", sHouseFile, "OUT"}, "a.ifc.gz", nullptr},
        {"gzip of ifcXML", {"convert", sHouseFile, "OUT"}, "a.ifcxml.gz", nullptr},
        {"gzip and no more", {"convert", sHouseFile, "OUT"}, "a.gz", nullptr},
        {"extract", {"extract", sHouseFile, "712", "OUT"}, "a.ifczip", "a.ifc"},
        {"set", {"set", sHouseFile, "712", "Name", "x", "OUT"}, "a.ifczip", "a.ifc"},
        {"header", {"header", sHouseFile, "--set", "name=x", "OUT"}, "a.ifczip", "a.ifc"},
        {"a page", {"check", sHouseFile, "--html", "OUT"}, "a.html.gz", nullptr},
    };
    for (const OutRow& row : rows) {
        SCOPED_TRACE(row.pRule);
        const TestFolder folder;
        const std::string sOut = (folder.path() / row.pOut).string();
        std::vector<std::string> words = row.words;
        std::replace(words.begin(), words.end(), std::string("OUT"), sOut);
        const ProgramRun run = runProgram(words);
        EXPECT_EQ(run.iCode, 0) << run.sError;
        const std::string sBytes = sContent(sOut);
        EXPECT_TRUE(sBytes.starts_with(row.pInside ? "PK\x03\x04" : "\x1f\x8b"));
        if (const std::string sInside = row.pInside ? row.pInside : ""; !sInside.empty()) {
            EXPECT_EQ(sBytes.substr(30, sInside.size()), sInside);
        }
        EXPECT_EQ(filesIn(folder.path()), std::vector<std::string>{row.pOut});
        if (row.words.front() != "check") {
            EXPECT_GT(runProgram({"info", sOut, "--json"}).json()["entities"], 10);
        }
    }
}

TEST(ArchiveForm, MayBeReplacedByItself) {
    const TestFolder folder;
    for (const auto& [pName, sBytes] :
         {std::pair{"a.ifczip", sZip({{"a.ifc", sHouse()}})}, {"a.ifc.gz", sGzip(sHouse())}}) {
        SCOPED_TRACE(pName);
        const std::string sFile = folder.sFile(pName, sBytes);
        EXPECT_EQ(runProgram({"header", sFile, "--set", "name=other", sFile}).iCode, 0);
        EXPECT_EQ(runProgram({"header", sFile, "--json"}).json()["name"], "other");
        EXPECT_EQ(runProgram({"convert", "--all", sFile, sFile}).iCode, 0);
        EXPECT_EQ(runProgram({"info", sFile}).iCode, 0);
    }
}

// A read that failed looks at the text once more.
TEST(ArchiveForm, TheSecondLookHasTheSameBytes) {
    const std::string sText = sExchangeFile("IFC4", "#1=IFCWALL('open");
    const TestFolder folder;
    const std::string sExpected =
        runProgram({"check", folder.sFile("a.ifc", sText), "--json"}).json()["records"].dump();
    for (const auto& [pName, sBytes] : {std::pair{"a.ifczip", sZip({{"a.ifc", sText}})}, {"a.ifc.gz", sGzip(sText)}})
        EXPECT_EQ(runProgram({"check", folder.sFile(pName, sBytes), "--json"}).json()["records"].dump(), sExpected);
}

TEST(ArchiveForm, WhatIsWrongIsOneLineAndTwo) {
    const std::string sBomb = [] {
        const TestFolder folder;
        const std::string sOut = (folder.path() / "a.ifc.gz").string();
        const std::string sLong = "ISO-10303-21;" + std::string((std::size_t{64} << 20) + (1 << 17), ' ');
        (void)runProgram({"header", "-", "--set", "name=x", sOut},
                         "ISO-10303-21;HEADER;FILE_NAME('','',(''),(''),'','','');ENDSEC;" + sLong);
        return sContent(sOut);
    }();
    const struct {
        const char* pRule;
        std::string sBytes;
        const char* pError;
    } rows[] = {
        {"several", sZip({{"a.ifc", sHouse()}, {"b.ifc", sHouse()}}),
         "is a ZIP archive with several models, a.ifc, b.ifc; unpack it and name one"},
        {"a damaged one", sZip({{"a.ifc", sHouse(), 0, 0, true}}),
         "is a ZIP archive whose a.ifc is damaged: its check sum is that of other bytes"},
        {"cut", sGzip(sHouse()).substr(0, 20000), "is compressed with gzip and was cut: its end is missing"},
        {"what is inside is no text", sZip({{"a.ifc", "%PDF-1.7"}}), "is a PDF document"},
        {"a bomb", sBomb, "holds more than 200 times its bytes, more than a model needs; --unpack-all reads it"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.pRule);
        const ProgramRun run = runProgram({"check", "-"}, row.sBytes);
        EXPECT_EQ(run.iCode, 2);
        EXPECT_EQ(run.sOut, "");
        EXPECT_EQ(run.sError, std::string("oxaifc: standard input: ") + row.pError + "\n");
    }
    EXPECT_EQ(runProgram({"check", "-", "--unpack-all"}, sBomb).iCode, 1);
    EXPECT_EQ(runProgram({"header", "-"}, sBomb).iCode, 0) << "the header is told before that";
}

}   // namespace
}   // namespace oxa::test
