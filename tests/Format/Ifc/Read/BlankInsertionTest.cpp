// SPDX-License-Identifier: Apache-2.0
// Blanks and comments between tokens mean nothing (ISO 10303-21), however many they are and wherever they stand, on
// however many threads a file is read.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "Format/Ifc/Read/BlankText.h"
#include "Sanitized.h"

namespace oxa::ifc::blank {
namespace {

// Of what a test takes one after the other.
constexpr unsigned g_iStep = test::g_boSanitized ? 5 : 1;

// ---- small files

TEST(BlankInsertion, IsNotNeededForAnything) {
    for (const auto* pStatements : {&kinds(), &lists()}) {
        const std::string sFile = sText(fileTokens(*pStatements));
        for (const bool boSingle : {true, false}) vExpectSame(outcomeOf(sFile, boSingle), wholeOf(sFile));
    }
}

TEST(BlankInsertion, AtAllBordersAtOnceMeansNothing) {
    for (const auto* pStatements : {&kinds(), &lists()}) {
        const std::vector<std::string> tokens = fileTokens(*pStatements);
        const std::string sExpected = sText(tokens);
        for (const Fill& fill : fills())
            for (const bool boSingle : {true, false}) {
                SCOPED_TRACE(fill.sRule + std::string(": ") + fill.sText);
                const std::string sFile = sFilled(tokens, [&](std::size_t) { return fill.sText; });
                vExpectSame(outcomeOf(sFile, boSingle), wholeOf(sExpected));
            }
    }
}

TEST(BlankInsertion, AtEachBorderInTurnMeansNothing) {
    const std::vector<std::string> tokens = fileTokens(kinds());
    const Outcome expected = wholeOf(sText(tokens));
    for (const char* sFill : {"  ", "\r\n", "/*;'*/"})
        for (std::size_t iBorder = 0; iBorder <= tokens.size(); ++iBorder) {
            SCOPED_TRACE(sFill + std::string(" in front of token ") + std::to_string(iBorder));
            vExpectSame(outcomeOf(sFilled(tokens, [&](std::size_t i) { return i == iBorder ? sFill : ""; }), true),
                        expected);
            if (HasFailure()) return;
        }
}

TEST(BlankInsertion, AtRandomBordersMeansNothing) {
    const std::vector<std::string> tokens = fileTokens(kinds());
    const Outcome expected = wholeOf(sText(tokens));
    for (unsigned iSeed = 0; iSeed < 600 / g_iStep; ++iSeed) {
        SCOPED_TRACE(iSeed);
        std::mt19937 random(iSeed);
        const std::string sFile =
            sFilled(tokens, [&](std::size_t) { return random() % 4 ? std::string() : sRandomFill(random); });
        vExpectSame(outcomeOf(sFile, iSeed % 4 != 0), expected);
        if (HasFailure()) return;
    }
}

// ---- large files: the fill stands in front of another token in each group

TEST(BlankInsertion, InLargeFilesMeansNothing) {
    for (const std::size_t iSize : {520 * g_iKiB, 2100 * g_iKiB}) {
        const std::size_t iStep = (iSize > 1024 * g_iKiB ? 11 : 2) * g_iStep;
        for (std::size_t iFill = 0; iFill < fills().size(); iFill += iStep) {
            const Fill& fill = fills()[iFill];
            SCOPED_TRACE(fill.sRule + std::string(": ") + fill.sText);
            const LargeText text =
                largeText(kinds(), iSize, [&](std::size_t iGroup, std::size_t iToken, std::size_t iTokens) {
                    return iToken == iGroup % iTokens ? std::string_view(fill.sText) : std::string_view();
                });
            for (const bool boSingle : {true, false})
                if (!boSingle || iFill % 4 == 0) vExpectSame(outcomeOf(text.sFile, boSingle), wholeOf(text.sExpected));
            if (HasFailure()) return;
        }
    }
}

TEST(BlankInsertion, EverywhereInLargeFilesMeansNothing) {
    for (std::size_t iFill = 0; iFill < fills().size(); iFill += g_iStep) {
        const Fill& fill = fills()[iFill];
        SCOPED_TRACE(fill.sRule + std::string(": ") + fill.sText);
        const LargeText text = largeText(
            kinds(), 600 * g_iKiB, [&](std::size_t, std::size_t, std::size_t) { return std::string_view(fill.sText); });
        vExpectSame(outcomeOf(text.sFile, false), wholeOf(text.sExpected));
    }
}

TEST(BlankInsertion, AtRandomInLargeFilesMeansNothing) {
    for (const auto* pStatements : {&kinds(), &lists()})
        for (unsigned iSeed = 0; iSeed < 4; iSeed += g_iStep) {
            SCOPED_TRACE(iSeed);
            std::mt19937 random(iSeed);
            const LargeText text = largeText(*pStatements, 2100 * g_iKiB, [&](std::size_t, std::size_t, std::size_t) {
                return random() % 16 ? std::string() : sRandomFill(random);
            });
            for (const bool boSingle : {true, false})
                vExpectSame(outcomeOf(text.sFile, boSingle), wholeOf(text.sExpected));
        }
}

// One run of blanks, or one comment, that is longer than any buffer.
TEST(BlankInsertion, OfAMegabyteMeansNothing) {
    const std::vector<std::string> tokens = fileTokens(kinds());
    const Outcome expected = wholeOf(sText(tokens));
    const std::vector<std::string> long_ = {
        std::string(1024 * g_iKiB, ' '),
        std::string(1024 * g_iKiB + 1, '\n'),
        "/*" + std::string(1024 * g_iKiB, ';') + "*/",
        "/*" + std::string(1024 * g_iKiB + 1, '\'') + "*/",
        "/*" + std::string(1024 * g_iKiB + 3, '*') + "*/",
    };
    for (const std::string& sFill : long_)
        for (const std::size_t iBorder : {0UL, 5UL, 58UL, 59UL, 62UL, 80UL, 120UL, tokens.size() - 4, tokens.size()})
            for (const bool boSingle : {true, false}) {
                SCOPED_TRACE(sFill.substr(0, 3) + " in front of token " + std::to_string(iBorder));
                vExpectSame(outcomeOf(sFilled(tokens,
                                              [&](std::size_t i) {
                                                  return i == iBorder ? std::string_view(sFill) : std::string_view();
                                              }),
                                      boSingle),
                            expected);
            }
}

// ---- strings

// Runs of blanks, and what looks like something else, at every place of a piece of 64 bytes and a bit.
TEST(BlankInsertion, LeavesStringsAlone) {
    static const char* const g_sCores[] = {"",  "''", ";",    "/*",   "*/",    "#7=",  "\"",     "(",
                                           ")", ",",  "''''", " '' ", "/* */", "\\\\", "\\X\\E9"};
    std::string sExpected = g_sFront;
    std::string sSpaced = g_sFront;
    std::size_t iNumber = 0;
    for (const std::size_t iRun : {0U, 1U, 2U, 3U, 7U, 15U, 31U, 63U, 64U, 65U, 127U, 200U})
        for (std::size_t iFront = 0; iFront < 70; ++iFront) {
            const char* sCore = g_sCores[(iFront + iRun) % std::size(g_sCores)];
            const std::string sNumber = '#' + std::to_string(++iNumber);
            const std::string sString = '\'' + std::string(iFront, 'x') + sCore + std::string(iRun, ' ') + sCore + '\'';
            sExpected += sNumber + "=IFCTEXT(" + sString + ");";
            sSpaced += "\n" + std::string(iFront, ' ') + sNumber + " = IFCTEXT(" + std::string(iRun, ' ') + sString +
                       std::string(iRun, ' ') + ");";
        }
    sExpected += g_sBack;
    sSpaced += g_sBack;
    for (const bool boSingle : {true, false}) {
        vExpectSame(outcomeOf(sExpected, boSingle), wholeOf(sExpected));
        vExpectSame(outcomeOf(sSpaced, boSingle), wholeOf(sExpected));
    }
}

TEST(BlankInsertion, LeavesStringsOfAMegabyteAlone) {
    for (const char* sPiece : {" ", "''", "; ", "/*", "#1=", "   x"}) {
        SCOPED_TRACE(sPiece);
        std::string sContent;
        while (sContent.size() < 1024 * g_iKiB) sContent += sPiece;
        const std::string sData = "#1=IFCTEXT('" + sContent + "');#2=IFCTEXT(' ');";
        for (const bool boSingle : {true, false})
            vExpectSame(outcomeOf(g_sFront + sData + g_sBack, boSingle), wholeOf(g_sFront + sData + g_sBack));
    }
}

// ---- what is told of a fault is told of the line on which its statement ends

TEST(BlankInsertion, CountsLines) {
    struct Row {
        const char* sRule;
        std::string sFill;
        std::size_t iLines;   // of a fill
    };
    const std::vector<Row> rows = {
        {"no line end", " ", 0},
        {"line feed", "\n", 1},
        {"CR and line feed", "\r\n", 1},
        {"CR alone", "\r", 0},
        {"many", std::string(70, '\n'), 70},
        {"far apart", "\n" + std::string(64, ' ') + "\n", 2},
        {"in a comment", "/*\n;\n'*/", 2},
    };
    for (const Row& row : rows)
        for (const std::size_t iSize : {std::size_t{0}, 600 * g_iKiB})
            for (const bool boSingle : {true, false}) {
                SCOPED_TRACE(row.sRule);
                const ManyGroups groups(kinds());
                std::string sFile = g_sFront;
                std::string sExpected = g_sFront;
                std::size_t iLine = 1;
                for (std::size_t iGroup = 0; iGroup == 0 || sFile.size() < iSize; ++iGroup) {
                    const std::vector<std::string> tokens = groups.group(iGroup);
                    sExpected += sText(tokens);
                    for (const std::string& sToken : tokens) {
                        sFile += row.sFill + sToken;
                        iLine += row.iLines;
                    }
                }
                sFile += "#999999=IFCWRONG" + row.sFill + "('\n')" + row.sFill + ";" + row.sFill + g_sBack;
                iLine += 2 * row.iLines + 1;
                const Outcome expected{
                    true,
                    {"Error Value " + std::to_string(iLine) + " Error_UnknownEntityType | #999999=IFCWRONG('\n');"},
                    0,
                    sExpected + g_sBack};
                vExpectSame(outcomeOf(sFile, boSingle), expected);
            }
}

// A complex instance has no type for this reader, whatever stands between its tokens.
TEST(BlankInsertion, InAComplexInstanceMeansNothing) {
    const std::vector<std::string> tokens =
        fileTokens({"#1=IFCNONE($);", "#2=(IFCNONE('a')IFCTEXT('b  c'));", "#3=IFCNONE($);"});
    std::string sExpected = sText(tokens);
    const std::string sComplex = "#2=(IFCNONE('a')IFCTEXT('b  c'));";
    sExpected.erase(sExpected.find(sComplex), sComplex.size());
    for (const Fill& fill : fills()) {
        SCOPED_TRACE(fill.sRule + std::string(": ") + fill.sText);
        const std::string sFile = sFilled(tokens, [&](std::size_t) { return fill.sText; });
        const auto iLines =
            std::ranges::count(sFile.substr(0, sFile.find("#3")), '\n') - std::ranges::count(fill.sText, '\n') + 1;
        for (const bool boSingle : {true, false})
            vExpectSame(outcomeOf(sFile, boSingle),
                        {true,
                         {"Error Value " + std::to_string(iLines) + " Error_UnknownEntityType | " + sComplex},
                         0,
                         sExpected});
    }
}

// A tab is no blank to this reader, but in comments and strings it may stand.
TEST(BlankInsertion, OfTabsSpoilsTheirToken) {
    const std::string sFile = sText(
        fileTokens({"#1=IFCNONE(/*\t*/'\t');", "#2=IFCREALS(1.,\t2.,(1.));", "#3=IFC\tNONE($);", "#4=IFCNONE($);"}));
    std::string sExpected = sText(fileTokens({"#1=IFCNONE('\\X\\09');", "#2=IFCREALS(1.,0.,(1.));", "#4=IFCNONE($);"}));
    std::string sSource = g_sFront;
    sSource += "#1=IFCNONE(/*\t*/'\t');#2=IFCREALS(1.,\t2.,(1.));#3=IFC\tNONE($);#4=IFCNONE($);";
    sSource += g_sBack;
    for (const bool boSingle : {true, false})
        vExpectSame(outcomeOf(sSource, boSingle),
                    {true,
                     {"Error Value 1 Error_ExpectedValidRealValueFor | #2=IFCREALS(1.,\t2.,(1.));",
                      "Error Value 1 Error_UnknownEntityType | #3=IFC\tNONE($);"},
                     0,
                     sExpected});
}

}   // namespace
}   // namespace oxa::ifc::blank
