// SPDX-License-Identifier: Apache-2.0
// "oxaifc check --html": the page about the errors of a file; and "--template", what a user's template makes of
// them.

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "tools/ProgramRun.h"
#include "tools/WrittenFile.h"

namespace oxa::test {
namespace {

std::size_t iCount(std::string_view text, std::string_view part) {
    std::size_t iResult = 0;
    for (std::size_t i = text.find(part); i != std::string_view::npos; i = text.find(part, i + part.size())) ++iResult;
    return iResult;
}

bool boHolds(std::string_view text, std::string_view part) { return text.find(part) != std::string_view::npos; }

// The page of a file, from standard output.
std::string sPage(const std::string& sFile, int iCode = 1) {
    const TestFolder folder;
    const ProgramRun run = runProgram({"check", folder.sFile("model.ifc", sFile), "--html", "-"});
    EXPECT_EQ(run.iCode, iCode);
    EXPECT_EQ(run.sError, "");
    EXPECT_TRUE(run.sOut.starts_with("<!DOCTYPE html>\n<html lang=\"en\">\n")) << run.sOut.substr(0, 200);
    EXPECT_TRUE(run.sOut.ends_with("</html>\n"));
    return run.sOut;
}

// Two messages, one with two records, one without a line.
const std::string g_threeErrors =
    sExchangeFile("IFC4", "#1=IFCMATERIAL($,$,$);\n#2=IFCMATERIAL($,'x',$);\n#3=IFCPOLYLINE((#4));\n");

TEST(ReportPage, TellsTheFileItsVerdictAndItsErrors) {
    const std::string sText = sPage(g_threeErrors);
    for (const char* pPart : {"<h1>model.ifc</h1>",
                              "<p class=\"verdict error\" id=\"verdict\">3 errors</p>",
                              "<title>model.ifc: 3 errors</title>",
                              "<dt>Schema</dt><dd>IFC4</dd>",
                              "<dt>Entities</dt><dd>3</dd>",
                              "<dt>Description</dt><dd>d</dd>",
                              "<dt>ImplementationLevel</dt><dd>2;1</dd>",
                              "<dt>Name</dt><dd>n</dd>",
                              "<dt>TimeStamp</dt><dd>2024-05-17T09:30:00</dd>",
                              "<dt>Author</dt><dd>a</dd>",
                              "<dt>Organization</dt><dd>o</dd>",
                              "<dt>IfcToolbox</dt><dd>p</dd>",
                              "<dt>OriginatingSystem</dt><dd>s</dd>",
                              "<dt>Authorisation</dt><dd>z</dd>",
                              "<th scope=\"row\">error: null</th><td>2</td>",
                              "<th scope=\"row\">error: reference</th><td>1</td>",
                              "<span class=\"count\">2 times</span>",
                              "<span class=\"count\">1 time</span>",
                              "<span class=\"line\">line 8</span><span "
                              "class=\"error\">error</span><code>#1=IFCMATERIAL($,$,$);</code>",
                              "<span class=\"line\">line 9</span><span "
                              "class=\"error\">error</span><code>#2=IFCMATERIAL($,&#39;x&#39;,$);</code>",
                              "<span class=\"line\">no line</span><span class=\"error\">error</span><code></code>"})
        EXPECT_TRUE(boHolds(sText, pPart)) << pPart;
    EXPECT_EQ(iCount(sText, "<dt>Schema</dt>"), 1U);
    EXPECT_EQ(iCount(sText, "<details"), 2U);
    EXPECT_EQ(iCount(sText, "<li "), 3U);
    EXPECT_FALSE(boHolds(sText, "not listed"));

    std::string sWithoutAuthorisation = g_threeErrors;
    sWithoutAuthorisation.replace(sWithoutAuthorisation.find("'z'"), 3, "''");
    EXPECT_FALSE(boHolds(sPage(sWithoutAuthorisation), "<dt>Authorisation</dt>"));
}

struct VerdictRow {
    const char* pRule;
    std::string sFile;
    int iCode;
    const char* pVerdict;
    std::size_t iRows;
};

TEST(ReportPage, VerdictFitsTheRead) {
    const VerdictRow rows[] = {
        {"nothing wrong", sExchangeFile("IFC4", "#1=IFCMATERIAL('a',$,$);\n"), 0,
         "<p class=\"verdict ok\" id=\"verdict\">Read without loss</p>", 0},
        {"an error", sExchangeFile("IFC4", "#1=IFCTEAPOT();\n"), 1,
         "<p class=\"verdict error\" id=\"verdict\">1 error</p>", 1},
        {"given up", sExchangeFile("IFC99", ""), 1,
         "<p class=\"verdict fatal\" id=\"verdict\">1 fatal error: not read to the end</p>", 1},
        {"given up after an error", sExchangeFile("IFC4", "#1=IFCTEAPOT();\nIFCPOLYLINE(#2);\n"), 1,
         "<p class=\"verdict fatal\" id=\"verdict\">1 error, 1 fatal error: not read to the end</p>", 2},
        {"the simple form", "Ifc file simple;\nIFC4;\n*;\n#1=IFCTEAPOT();\n", 1,
         "<p class=\"verdict error\" id=\"verdict\">1 error</p>", 1},
    };
    for (const VerdictRow& row : rows) {
        SCOPED_TRACE(row.pRule);
        const std::string sText = sPage(row.sFile, row.iCode);
        EXPECT_TRUE(boHolds(sText, row.pVerdict)) << sText.substr(sText.find("<body>"), 400);
        EXPECT_EQ(iCount(sText, "<li "), row.iRows);
        EXPECT_EQ(boHolds(sText, "<form "), row.iRows > 0);
    }
}

TEST(ReportPage, MostFrequentGroupComesFirst) {
    std::string sData = "#1=IFCPOLYLINE((#2,#77,#78));\n#2=IFCTEAPOT();\n#3=IFCPOLYLINE((#4));\n#4=IFCTEAPOT();\n"
                        "#5=IFCMATERIAL($,$,$);\n#6=IFCMATERIALLAYER($,$,$,$,$,$,$);\n#7=IFCTEAPOT();\n"
                        "#8=IFCMATERIAL($,$,$);\n#9=IFCTEAPOT();\n";
    const std::string sText = sPage(sExchangeFile("IFC4", sData));
    const std::vector<std::string> titles = {
        "<b>The schema has no entity type of this name; the statement was skipped.</b> "
        "<span class=\"count\">4 times</span>",
        "<b>The mandatory attribute ... has no value.</b> <span class=\"count\">3 times</span>",
        "<b>The instance #... is referred to, but not defined.</b> <span class=\"count\">2 times</span>"};
    std::size_t iBefore = 0;
    for (const std::string& sTitle : titles) {
        const std::size_t i = sText.find(sTitle);
        ASSERT_NE(i, std::string::npos) << sTitle << sText.substr(sText.find("<details"));
        EXPECT_GT(i, iBefore);
        iBefore = i;
    }
    EXPECT_TRUE(boHolds(sText, "<p class=\"note\">and 2 missing references to what was skipped for that</p>"));
    EXPECT_EQ(iCount(sText, "to what was skipped for that"), 1U);
    EXPECT_TRUE(boHolds(sText, "<code>#5=IFCMATERIAL($,$,$);</code><span class=\"message\">The mandatory attribute "
                               "Name has no value.</span>"));
    EXPECT_TRUE(boHolds(sText, "<code>#2=IFCTEAPOT();</code></li>"));
    EXPECT_TRUE(boHolds(sText, "<span class=\"message\">The instance #77 is referred to, but not defined.</span>"));
    EXPECT_FALSE(boHolds(sText, "#4 is referred"));
    EXPECT_TRUE(boHolds(sText, ">9 of 11 errors are listed. oxaifc check --all prints all of them.<"));
    EXPECT_TRUE(boHolds(sText, ">11 errors</p>"));
}

// One message, told by a statement each, and nothing else: a thousand rows of it.
TEST(ReportPage, AThousandRowsOfOneMessage) {
    for (const int iCount : {1000, 1001}) {
        std::string sData;
        for (int i = 1; i <= iCount; ++i) sData += "#" + std::to_string(i) + "=IFCTEAPOT();\n";
        const std::string sText = sPage(sExchangeFile("IFC4", sData));
        EXPECT_EQ(::oxa::test::iCount(sText, "<li "), 1000U);
        EXPECT_EQ(boHolds(sText, "<p class=\"note\">1 more not listed</p>"), iCount == 1001);
        EXPECT_EQ(boHolds(sText, "id=\"hidden\""), iCount == 1001);
    }
}

TEST(ReportPage, FatalMessagesComeFirst) {
    const std::string sText = sPage(sExchangeFile("IFC4", "#1=IFCTEAPOT();\nIFCPOLYLINE(#2);\n"));
    EXPECT_LT(sText.find("<li data-severity=\"fatal\">"), sText.find("<li data-severity=\"error\">"));
    EXPECT_LT(sText.find("<th scope=\"row\">fatal: syntax</th>"), sText.find("<th scope=\"row\">error: value</th>"));
}

// A page names no other address, so that it is whole wherever it goes.
TEST(ReportPage, AsksForNothingElse) {
    const std::string sText = sPage(g_threeErrors);
    for (const char* pPart : {"http:", "https:", "//cdn", "src=", "@import", "url(", "fetch(", "XMLHttpRequest"})
        EXPECT_FALSE(boHolds(sText, pPart)) << pPart;
    EXPECT_TRUE(boHolds(sText, "default-src 'none'"));
    EXPECT_TRUE(boHolds(sText, "@media print"));
    EXPECT_TRUE(boHolds(sText, "prefers-color-scheme: dark"));
}

struct HostileRow {
    const char* pRule;
    std::string sInFile;   // in a string of the file, in its header and in its DATA section
    std::string sOnPage;
};
const HostileRow g_hostileRows[] = {
    {"a script", "<script>alert(1)</script>", "&lt;script&gt;alert(1)&lt;/script&gt;"},
    {"an image", "<img src=x onerror=alert(1)>", "&lt;img src=x onerror=alert(1)&gt;"},
    {"a comment", "</code><!--", "&lt;/code&gt;&lt;!--"},
    {"an attribute", "\" onclick=\"a()", "&quot; onclick=&quot;a()"},
    {"an entity", "&lt;&amp;&#60;", "&amp;lt;&amp;amp;&amp;#60;"},
    {"marks of the template", "{{ nonsense }}{% include x %}{# ## #}", "{{ nonsense }}{% include x %}{# ## #}"},
    {"ends of the template's strings", "%} \" }} ] } ) ", "%} &quot; }} ] } ) "},
    {"the end of a C string", std::string("a\x01z", 3), "a?z"},
};

TEST(ReportPage, TextOfTheFileIsNoMark) {
    for (const HostileRow& row : g_hostileRows) {
        SCOPED_TRACE(row.pRule);
        std::string sFile = sExchangeFile("IFC4", "#1=IFCMATERIAL($,'" + row.sInFile + "',$);\n");
        if (row.sInFile[1] != '\x01') sFile.replace(sFile.find("('a')"), 5, "('" + row.sInFile + "')");
        const std::string sText = sPage(sFile);
        EXPECT_TRUE(boHolds(sText, "<code>#1=IFCMATERIAL($,&#39;" + row.sOnPage + "&#39;,$);</code>"))
            << sText.substr(sText.find("<body>"));
        if (row.sInFile[1] != '\x01') {
            EXPECT_TRUE(boHolds(sText, "<dt>Author</dt><dd>" + row.sOnPage + "</dd>"));
        }
        EXPECT_EQ(iCount(sText, "<script>"), 1U);
        EXPECT_EQ(iCount(sText, "<!--"), 0U);
    }
}

TEST(ReportPage, NamesOfFilesAreNoMark) {
    constexpr const char* pName = "<b>&{{x}}\".ifc";
    if (!boTakesName(pName)) GTEST_SKIP() << "no file can be called so";
    const TestFolder folder;
    const ProgramRun run = runProgram({"check", folder.sFile(pName, g_threeErrors), "--html", "-"});
    EXPECT_EQ(run.iCode, 1);
    EXPECT_TRUE(boHolds(run.sOut, "<h1>&lt;b&gt;&amp;{{x}}&quot;.ifc</h1>")) << run.sError;
}

TEST(ReportPage, BytesOutsideUtf8AreLatin1) {
    const std::string sText = sPage(sExchangeFile("IFC4", "#1=IFCMATERIAL($,'\xe4\xff \xe2\x82\xac',$);\n"));
    EXPECT_TRUE(boHolds(sText, "&#39;\xc3\xa4\xc3\xbf \xe2\x82\xac&#39;"));
}

TEST(ReportPage, LongSourceTextIsShort) {
    const std::string sText = sPage(sExchangeFile("IFC4", "#1=IFCMATERIAL($,'" + std::string(100000, 'x') + "',$);\n"));
    EXPECT_TRUE(boHolds(sText, "xxx... (100,023 bytes)</code>"));
    EXPECT_LT(sText.size(), 20000U);
}

// Many of two messages, and then many messages of one record each.
std::string sManyErrors(int iCount) {
    std::string sData;
    for (int i = 1; i <= iCount; ++i) {
        const std::string sNumber = std::to_string(i);
        sData += "#" + sNumber + "=" +
                 (i % 2 ? "IFCMATERIAL($,$,$);\n" : "IFCPOLYLINE((#" + std::to_string(1000000 + i) + "));\n");
    }
    sData += "#" + std::to_string(iCount + 1) + "=IFCTEAPOT();\n";
    return sExchangeFile("IFC4", sData);
}

TEST(ReportPage, VeryManyErrorsStayUsable) {
    const std::string sText = sPage(sManyErrors(100000));
    EXPECT_TRUE(boHolds(sText, ">100,001 errors</p>"));
    EXPECT_TRUE(boHolds(sText, "<th scope=\"row\">error: null</th><td>50,000</td>"));
    EXPECT_TRUE(boHolds(sText, "<th scope=\"row\">error: reference</th><td>50,000</td>"));
    EXPECT_TRUE(boHolds(sText, "<th scope=\"row\">error: value</th><td>1</td>"));
    const std::size_t iRows = iCount(sText, "<li ");
    EXPECT_LE(iRows, 5000U);
    EXPECT_GE(iRows, 2500U);
    EXPECT_TRUE(boHolds(sText, "49,000 more not listed"));              // a thousand of one message are
    EXPECT_TRUE(boHolds(sText, "<code>#100001=IFCTEAPOT();</code>"));   // nor is the rare one crowded out
    EXPECT_TRUE(boHolds(sText, "of 100,001 errors are listed, "));
    EXPECT_LT(sText.size(), 4000000U);
}

// Six groups of 1106 to 1101 records: twenty of each come first, then a thousand of one after the other, up to 5000.
TEST(ReportPage, RowsAreSharedOutAmongGroups) {
    std::string sData;
    int iId = 0;
    int iCount = 1106;
    for (const char* pStatement : {"IFCTEAPOT()", "IFCMATERIAL($,$,$)", "IFCMATERIAL(5,$,$)", "IFCCARTESIANPOINT((x))",
                                   "IFCMATERIAL('a',$,$,$)", "IFCPRODUCT($,$,$,$,$,$,$)"}) {
        for (int i = 0; i < iCount; ++i) sData += "#" + std::to_string(++iId) + "=" + pStatement + ";\n";
        --iCount;
    }
    const std::string sText = sPage(sExchangeFile("IFC4", sData));
    EXPECT_EQ(::oxa::test::iCount(sText, "<li "), 5000U);
    for (const char* pMore : {">106 more", ">105 more", ">104 more", ">103 more", ">122 more", ">1,081 more"})
        EXPECT_EQ(::oxa::test::iCount(sText, pMore), 1U) << pMore;
}

TEST(ReportPage, FileIsReplacedAsAWhole) {
    const TestFolder folder;
    const std::string sIn = folder.sFile("in.ifc", g_threeErrors);
    const std::string sOut = folder.sFile("out.html", "before");
    const ProgramRun run = runProgram({"check", sIn, "--html", sOut});
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.sOut, sIn + ": 3 errors: 2 null, 1 reference\n");
    EXPECT_EQ(run.sError, "");
    EXPECT_TRUE(sContent(sOut).ends_with("</html>\n"));
    EXPECT_EQ(filesIn(folder.path()), (std::vector<std::string>{"in.ifc", "out.html"}));
    const ProgramRun json = runProgram({"check", sIn, "--html", sOut, "--json"});
    EXPECT_EQ(json.json()["records"].size(), 3U);
    EXPECT_EQ(sContent(sOut), runProgram({"check", sIn, "--html", "-"}).sOut);
}

TEST(ReportPage, PageIsTheSameOnAnyNumberOfThreads) {
    const TestFolder folder;
    const std::string sIn = folder.sFile("in.ifc", sManyErrors(3000));
    EXPECT_EQ(runProgram({"check", sIn, "--html", "-"}).sOut,
              runProgram({"check", sIn, "--html", "-", "--single-threaded"}).sOut);
}

struct TemplateRow {
    const char* pRule;
    const char* pTemplate;
    const char* pOut;
};
const TemplateRow g_templateRows[] = {
    {"plain text", "none\n", "none\n"},
    {"messages by their text, records in the order of the file",
     "{% for c in categories %}{% for e in c.errors %}{{ e.severity }} {{ e.lineNumber }} {{ e.lineString "
     "}}\n"
     "{% endfor %}{% endfor %}",
     "error 0 \nerror 8 #1=IFCMATERIAL($,$,$);\nerror 9 #2=IFCMATERIAL($,'x',$);\n"},
    {"the counts", "{{ length(categories) }}", "2"},
};

TEST(ReportTemplate, UsersTemplateGoesToStandardOutputOrToTheFile) {
    const TestFolder folder;
    const std::string sIn = folder.sFile("in.ifc", g_threeErrors);
    for (const TemplateRow& row : g_templateRows) {
        SCOPED_TRACE(row.pRule);
        const std::string sTemplate = folder.sFile("t", row.pTemplate);
        const ProgramRun run = runProgram({"check", sIn, "--template", sTemplate});
        EXPECT_EQ(run.iCode, 1);
        EXPECT_EQ(run.sOut, row.pOut);
        EXPECT_EQ(run.sError, "");
        const std::string sOut = (folder.path() / "out").string();
        const ProgramRun file = runProgram({"check", sIn, "--template", sTemplate, "--html", sOut});
        EXPECT_EQ(file.iCode, 1);
        EXPECT_EQ(file.sOut, sIn + ": 3 errors: 2 null, 1 reference\n");
        EXPECT_EQ(sContent(sOut), row.pOut);
    }
    EXPECT_EQ(runProgram({"check", "-", "--template", folder.sFile("n", "{{ filename }}")}, g_threeErrors).sOut,
              "standard input");
    EXPECT_EQ(runProgram({"check", sIn, "--template", "-"}, "{{ length(categories) }}").sOut, "2");
}

TEST(ReportTemplate, BytesOutsideUtf8AreLatin1) {
    const TestFolder folder;
    const ProgramRun run = runProgram({"check", "-", "--template", folder.sFile("t", "{{ dumpJson }}")},
                                      sExchangeFile("IFC4", "#1=IFCMATERIAL($,'\xe4',$);\n"));
    EXPECT_TRUE(boHolds(run.sOut, "#1=IFCMATERIAL($,'\xc3\xa4',$);")) << run.sError;
    const ProgramRun message =
        runProgram({"check", "-", "--template", folder.sFile("t", "{{ dumpJson }}")}, sExchangeFile("IFC\xe4", ""));
    EXPECT_TRUE(boHolds(message.sOut, "IFC\xc3\xa4")) << message.sError;
    EXPECT_TRUE(boHolds(message.sOut, "\"severity\":\"fatal\"")) << message.sOut;
    if (!boTakesName("\xe4.ifc")) return;
    const ProgramRun name = runProgram({"check", folder.sFile("\xe4.ifc", sExchangeFile("IFC4", "")), "--template",
                                        folder.sFile("t", "{{ filename }}")});
    EXPECT_TRUE(name.sOut.ends_with("/\xc3\xa4.ifc")) << name.sOut << name.sError;
}

TEST(ReportTemplate, LongTextsAreWhole) {
    const TestFolder folder;
    const std::string sStatement = "#1=IFCMATERIAL($,'" + std::string(5000, 'x') + "',$);";
    const ProgramRun run = runProgram({"check", "-", "--template", folder.sFile("t", "{{ dumpJson }}")},
                                      sExchangeFile("IFC4", sStatement + '\n'));
    EXPECT_TRUE(boHolds(run.sOut, sStatement)) << run.sError;
}

struct ReportPageFaultRow {
    const char* pRule;
    std::vector<std::string> words;   // behind "check"; IN, OUT and T are files
    const char* pTemplate;
    const char* pError;   // behind "oxaifc: "
};
const ReportPageFaultRow g_faults[] = {
    {"a fault in the template",
     {"IN", "--template", "T"},
     "a\n{% if %}",
     "T: [inja.exception.parser_error] (at 2:9) unmatched if"},
    {"a variable that is none",
     {"IN", "--template", "T", "--html", "OUT"},
     "a{{ nonsense }}",
     "T: [inja.exception.render_error] (at 1:5) variable 'nonsense' not found"},
    {"a template that would end the program",
     {"IN", "--template", "T", "--html", "OUT"},
     "{{ 1 % 0 }}",
     "T: division by zero"},
    {"no such template", {"IN", "--template", "none"}, "", "none: there is no such file"},
    {"no such folder", {"IN", "--html", "no/such/folder"}, "", "can't write no/such/folder: there is no such folder"},
    {"the file itself", {"IN", "--html", "IN"}, "", "IN: is the file to be checked; name another"},
    {"two answers on one output",
     {"IN", "--json", "--html", "-"},
     "",
     "check: --json and a report can't both go to standard output; name a file: --html OUT"},
    {"two answers on one output, again",
     {"IN", "--json", "--template", "T"},
     "a",
     "check: --json and a report can't both go to standard output; name a file: --html OUT"},
    {"two files on one input", {"-", "--template", "-"}, "", "check: FILE and --template can't both be standard input"},
};

TEST(ReportTemplate, FaultIsOneLineAndNoFile) {
    for (const ReportPageFaultRow& row : g_faults) {
        SCOPED_TRACE(row.pRule);
        const TestFolder folder;
        const std::string sIn = folder.sFile("in.ifc", g_threeErrors);
        const std::string sTemplate = folder.sFile("template", row.pTemplate);
        const std::string sOut = folder.sFile("out", "before");
        const auto sPath = [&](const std::string& sWord) {
            return sWord == "IN" ? sIn : sWord == "T" ? sTemplate : sWord == "OUT" ? sOut : sWord;
        };
        std::vector<std::string> words{"check"};
        for (const std::string& sWord : row.words) words.push_back(sPath(sWord));
        const ProgramRun run = runProgram(words);
        EXPECT_EQ(run.iCode, 2);
        std::string sError = row.pError;
        const std::size_t iColon = sError.find(": ");
        sError.replace(0, iColon, sPath(sError.substr(0, iColon)));
        EXPECT_EQ(run.sError, "oxaifc: " + sError + "\n");
        EXPECT_EQ(sContent(sOut), "before");
        EXPECT_EQ(sContent(sIn), g_threeErrors);
        EXPECT_EQ(filesIn(folder.path()), (std::vector<std::string>{"in.ifc", "out", "template"}));
    }
}

TEST(ReportTemplate, MisusedFunctionIsToldAndTheRestWritten) {
    const TestFolder folder;
    const std::string sTemplate = folder.sFile("t", "a{{ localize(1, 2) }}b");
    const ProgramRun run = runProgram({"check", "-", "--template", sTemplate}, g_threeErrors);
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.sOut, "ab");
    EXPECT_EQ(run.sError, "oxaifc: " + sTemplate + ": localize function takes 1 argument (the localize id)\n");
}

// ---- In a browser, where there is one ----

// The path of a Chromium; empty where there is none.
std::string sBrowser() {
    const char* const pPath = std::getenv("PATH");
    std::string sFolders = pPath ? pPath : "";
    for (std::size_t iStart = 0; iStart <= sFolders.size();) {
        const std::size_t iEnd = std::min(sFolders.find(':', iStart), sFolders.size());
        for (const char* pName : {"chromium", "chromium-browser", "google-chrome"}) {
            const std::string sPath = sFolders.substr(iStart, iEnd - iStart) + "/" + pName;
            std::error_code error;
            if (std::filesystem::is_regular_file(sPath, error)) return sPath;
        }
        iStart = iEnd + 1;
    }
    return {};
}

// Draws the page in frames of two widths, uses its filter, and writes down what it sees.
constexpr const char* g_pHarness = R"(<!DOCTYPE html><meta charset="utf-8">
<iframe id="wide" width="1200" height="900" src="page.html"></iframe>
<iframe id="narrow" width="400" height="900" src="page.html"></iframe>
<pre id="seen"></pre>
<script>
const seen = [];
const say = (name, value) => seen.push(name + "=" + value);
const pause = () => new Promise(done => setTimeout(done, 300));
window.addEventListener("load", async () => {
  const page = document.getElementById("wide").contentDocument;
  const visible = () => Array.from(page.querySelectorAll("li")).filter(row => row.offsetParent !== null).length;
  const groups = () => Array.from(page.querySelectorAll("details")).filter(group => !group.hidden).length;
  const figures = name => say(name, [visible(), groups(), page.getElementById("shown").textContent,
                                     page.getElementById("nothing").hidden].join(" | "));
  const look = async (name, text) => {
    const field = page.getElementById("search");
    field.value = text;
    field.dispatchEvent(new Event("input"));
    await pause();
    figures(name);
  };
  say("verdict", page.getElementById("verdict").textContent);
  say("form", page.getElementById("filter").offsetParent !== null);
  await look("all", "");
  await look("source", "ifcteapot");
  await look("line", "line 9");
  await look("words", "ifcMATERIAL   line 8");
  await look("none", "no such text");
  await look("again", "");
  page.querySelector("input[value=error]").click();
  figures("fatal");
  page.querySelector("input[value=error]").click();
  page.querySelector("input[value=fatal]").click();
  figures("errors");
  say("images", page.images.length);
  for (const name of ["wide", "narrow"]) {
    const frame = document.getElementById(name);
    const root = frame.contentDocument.documentElement;
    say(name, frame.contentWindow.innerWidth + 
             (root.scrollWidth > root.clientWidth ? " overflows" : " holds all"));
  }
  document.getElementById("seen").textContent = seen.join("\n");
});
</script>)";

// What a run of the browser over the harness writes down, and its standard error.
ProgramRun browserRun(const std::string& sProgram, const TestFolder& folder) {
    const std::string sOut = (folder.path() / "dom").string();
    const std::string sError = (folder.path() / "log").string();
    const std::string sCommand = "timeout 120 '" + sProgram +
                                 "' --headless --no-sandbox --disable-gpu --disable-dev-shm-usage "
                                 "--allow-file-access-from-files --enable-logging=stderr "
                                 "--virtual-time-budget=20000 --user-data-dir='" +
                                 (folder.path() / "profile").string() + "' --dump-dom 'file://" +
                                 (folder.path() / "harness.html").string() + "' > '" + sOut + "' 2> '" + sError + "'";
    ProgramRun run;
    run.iCode = std::system(sCommand.c_str());
    run.sOut = sContent(sOut);
    run.sError = sContent(sError);
    return run;
}

TEST(ReportPage, WorksInABrowser) {
    const std::string sProgram = sBrowser();
    if (sProgram.empty()) GTEST_SKIP() << "no chromium at hand";
    const TestFolder folder;
    // A fatal error, and three others on lines 8 to 10, one of them hostile and long without a blank.
    const std::string sFile = sExchangeFile(
        "IFC4", "#1=IFCMATERIAL($,'<img src=x onerror=alert(1)>',$);\n#2=IFCTEAPOT();\n#3=IFCMATERIAL($,'" +
                    std::string(900, 'x') + "</script><script>alert(1)</script>',$);\nIFCPOLYLINE(#2);\n");
    const std::string sIn =
        folder.sFile("a-file-with-a-very-long-name-and-no-blank-in-it-at-all-to-wrap-at.ifc", sFile);
    folder.sFile("harness.html", g_pHarness);
    ASSERT_EQ(runProgram({"check", sIn, "--html", (folder.path() / "page.html").string()}).iCode, 1);
    const ProgramRun run = browserRun(sProgram, folder);
    ASSERT_EQ(run.iCode, 0) << run.sError;
    const std::size_t iStart = run.sOut.find("<pre id=\"seen\">");
    ASSERT_NE(iStart, std::string::npos) << run.sOut;
    const std::string sSeen = run.sOut.substr(iStart + 15, run.sOut.find("</pre>") - iStart - 15);
    for (const char* pLine : {
             "verdict=3 errors, 1 fatal error: not read to the end",
             "form=true",
             "all=4 | 3 | 4 of 4 listed | true",
             "source=1 | 1 | 1 of 4 listed | true",
             "line=1 | 1 | 1 of 4 listed | true",
             "words=1 | 1 | 1 of 4 listed | true",
             "none=0 | 0 | 0 of 4 listed | false",
             "again=4 | 3 | 4 of 4 listed | true",
             "fatal=1 | 1 | 1 of 4 listed | true",
             "errors=3 | 2 | 3 of 4 listed | true",
             "images=0",
             "wide=1200 holds all",
             "narrow=400 holds all",
         })
        EXPECT_TRUE(boHolds(sSeen + "\n", std::string(pLine) + "\n")) << pLine << "\nin\n" << sSeen;
    EXPECT_FALSE(boHolds(run.sError, "CONSOLE")) << run.sError;
}

}   // namespace
}   // namespace oxa::test
