// SPDX-License-Identifier: Apache-2.0
#include "Format/Ifc/Read/BlankText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <functional>
#include <memory>
#include <sstream>

#include "Format/Ifc/IfcWriteFile.h"
#include "Format/Ifc/ReadResult.h"
#include "Format/Ifc/SmallModel.h"

namespace oxa::ifc::blank {

namespace {

const def::SchemaPset& blankSchema() {
    static const std::unique_ptr<def::SchemaPset> pSchema = pSchemaOf(R"(
        TYPE IfcGloballyUniqueId = STRING(22) FIXED; END_TYPE;
        TYPE IfcLabel = STRING; END_TYPE;
        TYPE IfcLength = REAL; END_TYPE;
        TYPE IfcCount = INTEGER; END_TYPE;
        TYPE IfcColour = ENUMERATION OF (RED, LIGHT_GREEN, T1); END_TYPE;
        TYPE IfcPair = LIST OF REAL; END_TYPE;
        TYPE IfcValue = SELECT (IfcLabel, IfcLength, IfcCount, IfcColour, IfcPair, IfcNone); END_TYPE;
        ENTITY IfcRoot ABSTRACT SUPERTYPE; GlobalId : IfcGloballyUniqueId; Name : OPTIONAL IfcLabel; END_ENTITY;
        ENTITY IfcWall SUBTYPE OF (IfcRoot); Next : OPTIONAL IfcNone; END_ENTITY;
        ENTITY IfcNone; Name : OPTIONAL IfcLabel; END_ENTITY;
        ENTITY IfcIntegers; A : INTEGER; B : INTEGER; C : LIST OF INTEGER; END_ENTITY;
        ENTITY IfcReals; A : REAL; B : REAL; C : LIST OF REAL; END_ENTITY;
        ENTITY IfcRows; Value : LIST OF LIST OF REAL; END_ENTITY;
        ENTITY IfcCube; Value : LIST OF LIST OF LIST OF INTEGER; END_ENTITY;
        ENTITY IfcText; Value : STRING; END_ENTITY;
        ENTITY IfcTexts; Value : LIST OF STRING; END_ENTITY;
        ENTITY IfcBinary; Value : BINARY; Values : LIST OF BINARY; END_ENTITY;
        ENTITY IfcFlags; A : BOOLEAN; B : BOOLEAN; C : LOGICAL; END_ENTITY;
        ENTITY IfcPaint; Value : IfcColour; Other : OPTIONAL IfcColour; END_ENTITY;
        ENTITY IfcAny; Value : IfcValue; Other : OPTIONAL IfcValue; END_ENTITY;
        ENTITY IfcAnys; Value : LIST OF IfcValue; END_ENTITY;
        ENTITY IfcNones; Value : SET OF IfcNone; END_ENTITY;
        )");
    return *pSchema;
}

std::string sJoined(std::size_t iItems, const std::function<std::string(std::size_t)>& item) {
    std::string sText;
    for (std::size_t i = 0; i < iItems; ++i) sText.append(i ? "," : "").append(item(i));
    return sText;
}

// Statements without line ends, as they are expected to be written.
std::string sCompact(const std::string& sWritten) {
    std::string sText = sWritten;
    std::erase(sText, '\n');
    return sText;
}
std::string sFirstDifference(const std::string& sFound, const std::string& sExpected) {
    const auto place = std::ranges::mismatch(sFound, sExpected).in1 - sFound.begin();
    const auto iFrom = static_cast<std::size_t>(std::max<std::ptrdiff_t>(place - 60, 0));
    return sFound == sExpected ? "none"
                               : "found    ..." + sFound.substr(std::min(iFrom, sFound.size()), 160) +
                                     "\nexpected ..." + sExpected.substr(std::min(iFrom, sExpected.size()), 160);
}

}   // namespace

const std::vector<std::string>& kinds() {
    static const std::vector<std::string> g_kinds = {
        "#1=IFCNONE($);",
        "#2=IFCNONE(*);",
        "#3=IFCINTEGERS(0,-2147483648,(1,-2,2147483647));",
        "#4=IFCREALS(1.,-0.25,(2.5E-20,-2.5E+100,0.5,100.));",
        "#5=IFCROWS(((1.,2.),(3.,4.),(5.,6.)));",
        "#6=IFCCUBE((((1,2),(3,4)),((5,6),(7,8))));",
        "#7=IFCTEXT('');",
        "#8=IFCTEXT('it''s   a; /* no comment */ #1=IFCNONE($); ''''  -- (a , b) \"1F\" ');",
        "#9=IFCTEXT('\\X2\\03B103B2\\X0\\  a\\\\b  \\X\\E9');",
        "#10=IFCTEXTS(('a','b,c','  ',''''));",
        "#11=IFCBINARY(\"0AB12\",(\"0\",\"0FF\"));",
        "#12=IFCFLAGS(.T.,.F.,.U.);",
        "#13=IFCPAINT(.LIGHT_GREEN.,.T1.);",
        "#14=IFCANY(IFCLABEL(' a  b '),IFCLENGTH(-1.5E-07));",
        "#15=IFCANY(IFCCOLOUR(.RED.),IFCPAIR((1.,2.)));",
        "#16=IFCANY(#1,IFCCOUNT(-7));",
        "#17=IFCANYS((IFCLABEL('('),#2,IFCLENGTH(0.),IFCLABEL(')')));",
        "#18=IFCWALL('guid','wall; #',#2);",
        "#19=IFCNONES((#1,#2));",
    };
    return g_kinds;
}

const std::vector<std::string>& lists() {
    static const std::vector<std::string> g_lists = {
        "#1=IFCNONE('x');",
        "#2=IFCINTEGERS(1,2,(" + sJoined(300, [](std::size_t i) { return std::to_string(i * 7919); }) + "));",
        "#3=IFCREALS(1.,2.,(" + sJoined(257, [](std::size_t i) { return std::to_string(i) + ".5"; }) + "));",
        "#4=IFCROWS((" + sJoined(220, [](std::size_t i) { return "(" + std::to_string(i) + ".,-1.)"; }) + "));",
        "#5=IFCTEXTS((" + sJoined(205, [](std::size_t i) { return "'" + std::string(i % 5, ' ') + ",'''"; }) + "));",
        "#6=IFCANYS((" + sJoined(201, [](std::size_t i) { return i % 3 ? "IFCCOUNT(3)" : "#1"; }) + "));",
        "#7=IFCNONES((" + sJoined(260, [](std::size_t) { return "#1"; }) + "));",
    };
    return g_lists;
}

std::vector<std::string> tokensOf(std::string_view text) {
    std::vector<std::string> tokens;
    const auto boWord = [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '-' || c == '+' || c == '.' || c == '#';
    };
    for (std::size_t i = 0; i < text.size();) {
        std::size_t iEnd = i + 1;
        if (text[i] == ' ' || text[i] == '\r' || text[i] == '\n') {
            i = iEnd;
            continue;
        }
        if (text[i] == '\'') {
            for (;; ++iEnd) {
                if (text[iEnd] != '\'') continue;
                if (++iEnd == text.size() || text[iEnd] != '\'') break;
            }
        } else if (text[i] == '"') {
            iEnd = text.find('"', iEnd) + 1;
        } else if (boWord(text[i])) {
            while (iEnd < text.size() && boWord(text[iEnd])) ++iEnd;
        }
        tokens.emplace_back(text.substr(i, iEnd - i));
        i = iEnd;
    }
    return tokens;
}

std::vector<std::string> renumbered(std::vector<std::string> tokens, std::size_t iAdd, std::size_t iGuid) {
    for (std::string& sToken : tokens) {
        if (sToken[0] == '#') sToken = '#' + std::to_string(std::stoul(sToken.substr(1)) + iAdd);
        if (sToken == "'guid'") sToken = '\'' + sGuidOf(iGuid) + '\'';
    }
    return tokens;
}

std::string sText(const std::vector<std::string>& tokens) {
    std::string sText;
    for (const std::string& sToken : tokens) sText += sToken;
    return sText;
}

// The difference alone: these texts have megabytes.
void PrintTo(const Outcome& outcome, std::ostream* pOut) {
    *pOut << (outcome.boRead ? "read" : "refused") << ", passed over " << outcome.iPassedOver << ", "
          << outcome.sWritten.size() << " bytes";
    for (std::size_t i = 0; i < std::min<std::size_t>(outcome.reports.size(), 5); ++i)
        *pOut << "; " << outcome.reports[i].substr(0, 200);
}

Outcome outcomeOf(std::istream& in, bool boSingleThreaded) {
    File file;
    io::ReadError errors;
    Outcome outcome;
    outcome.boRead = file.boRead(in, errors,
                                 {.schemaFromName = schemaIs(blankSchema()),
                                  .boKeepIds = true,
                                  .boSingleThreaded = boSingleThreaded,
                                  .boSettlePart = true});
    outcome.reports = rowsOf(errors);
    outcome.iPassedOver = errors.passedOver().iCount + errors.lostStatements().iCount;
    std::ostringstream out;
    io::WriteError writeErrors;
    io::WriteFile::boWrite(file.header(), file.data(), nullptr, out, writeErrors,
                           {.boSingleThreaded = true, .eOrder = WriteOrder::Number});
    for (const std::string& sWriteRow : rowsOf(writeErrors)) outcome.reports.push_back("write: " + sWriteRow);
    outcome.sWritten = sCompact(out.str());
    return outcome;
}
Outcome outcomeOf(const std::string& sText, bool boSingleThreaded) {
    std::istringstream in(sText);
    return outcomeOf(in, boSingleThreaded);
}

void vExpectSame(const Outcome& found, const Outcome& expected) {
    EXPECT_EQ(found, expected) << "first difference: " << sFirstDifference(found.sWritten, expected.sWritten);
}

Outcome wholeOf(const std::string& sWritten) { return {true, {}, 0, sWritten}; }

const std::vector<Fill>& fills() {
    static const std::vector<Fill> g_fills = [] {
        std::vector<Fill> fills{{"nothing", ""}};
        for (const std::size_t i : {1U, 2U, 3U, 7U, 15U, 31U, 63U, 64U, 65U, 127U, 200U})
            fills.push_back({"spaces", std::string(i, ' ')});
        const auto sRepeated = [](const char* sPiece, int iTimes) {
            std::string sText;
            while (iTimes-- > 0) sText += sPiece;
            return sText;
        };
        for (const int i : {1, 2, 33, 64}) {
            fills.push_back({"line feeds", sRepeated("\n", i)});
            fills.push_back({"CR and line feed", sRepeated("\r\n", i)});
            fills.push_back({"line feed and spaces", sRepeated("\n   ", i)});
        }
        fills.push_back({"CR alone", "\r"});
        fills.push_back({"spaces around a line end", std::string(63, ' ') + "\r\n" + std::string(64, ' ')});
        for (const char* sComment :
             {"/**/",        "/***/",           "/****/",        "/*/*/",
              "/* * / */",   "/* a comment */", "/*;*/",         "/*'*/",
              "/*\"*/",      "/*#9=*/",         "/*(*/",         "/* it''s; #1=IFCNONE('a'); ENDSEC; */",
              "/*\n*/",      "/*\r\n\t*/",      "/*\\*/",        "/* \\X2\\ */",
              "/* // /* */", "/*a*//*b*/",      " /*a*/ /*b*/ ", "\n/*\n*/\n"})
            fills.push_back({"a comment", sComment});
        for (const std::size_t i : {28U, 29U, 60U, 61U, 124U, 200U})
            fills.push_back({"a long comment", "/*" + std::string(i, '*') + "*/"});
        return fills;
    }();
    return g_fills;
}

std::string sRandomFill(std::mt19937& random) {
    std::string sFill;
    for (std::size_t i = random() % 3; i; --i) sFill += fills()[random() % fills().size()].sText;
    return sFill;
}

std::vector<std::string> fileTokens(const std::vector<std::string>& statements) {
    std::string sFile = g_sFront;
    for (const std::string& sStatement : statements) sFile += sStatement;
    return renumbered(tokensOf(sFile + g_sBack), 0, 1);
}

}   // namespace oxa::ifc::blank
