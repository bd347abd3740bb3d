// SPDX-License-Identifier: Apache-2.0
// The rules of the published texts, where these are at hand: each is read, and printed with the tokens that it was read from.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "Check/Express/Parser.h"
#include "Check/Express/Printed.h"
#include "Check/Express/Printer.h"

namespace {

using namespace oxa::check::express;
namespace ex = oxa::ifc::def::express;

struct PublishedRow {
    const char* sFile;
    std::size_t iEntityRules, iTypeRules, iUniques, iRules, iFunctions, iDerived;
};
void PrintTo(const PublishedRow& row, std::ostream* pStream) { *pStream << row.sFile; }

class PublishedRulesTest : public testing::TestWithParam<PublishedRow> {
protected:
    void SetUp() override {
        const char* sFolder = std::getenv("OXAIFC_SCHEMAS");
        const std::filesystem::path folder = sFolder ? sFolder : OXA_SOURCE_DIR "/../shared/schemas";
        std::ifstream stream(folder / GetParam().sFile, std::ios::binary);
        if (!stream) GTEST_SKIP() << GetParam().sFile << " is not at hand";
        m_sText.assign(std::istreambuf_iterator<char>(stream), {});
        std::vector<oxa::ifc::SchemaMessage> messages;
        ASSERT_TRUE(Parser(m_sText, messages).boReadSchema(m_rules))
            << messages[0].iLine << ':' << messages[0].iColumn << ": " << messages[0].sText;
    }

    std::string m_sText;
    SchemaRules m_rules;
};

TEST_P(PublishedRulesTest, AllAreRead) {
    PublishedRow found{GetParam().sFile, 0, 0, 0, 0, 0, 0};
    for (const TypeRules& type : m_rules.types) found.iTypeRules += type.rules.size();
    for (const EntityRules& entity : m_rules.entities) {
        found.iEntityRules += entity.rules.size();
        found.iUniques += entity.uniques.size();
        found.iDerived += entity.derived.size();
    }
    for (const Block& block : m_rules.outer.blocks) ++(block.kind == BlockKind::Rule ? found.iRules : found.iFunctions);
    EXPECT_EQ(found.iEntityRules, GetParam().iEntityRules);
    EXPECT_EQ(found.iTypeRules, GetParam().iTypeRules);
    EXPECT_EQ(found.iUniques, GetParam().iUniques);
    EXPECT_EQ(found.iRules, GetParam().iRules);
    EXPECT_EQ(found.iFunctions, GetParam().iFunctions);
    EXPECT_EQ(found.iDerived, GetParam().iDerived);
}

TEST_P(PublishedRulesTest, PrintedTextIsReadAsItself) {
    const std::string sPrinted = sText(m_rules);
    std::vector<oxa::ifc::SchemaMessage> messages;
    SchemaRules again;
    ASSERT_TRUE(Parser(sPrinted, messages).boReadSchema(again)) << messages[0].iLine << ": " << messages[0].sText;
    EXPECT_EQ(sText(again), sPrinted);
}

// The tokens of a schema text without those declarations and clauses that a schema graph holds.
std::string sRulesOnly(const std::string& sText) {
    const std::string sAll = ' ' + oxa::test::sTokens(sText) + ' ';
    std::string sResult;
    const auto iFind = [&](std::initializer_list<const char*> words, std::size_t iFrom) {
        std::size_t iBest = std::string::npos;
        for (const char* sWord : words) iBest = std::min(iBest, sAll.find(' ' + std::string(sWord) + ' ', iFrom));
        return iBest;
    };
    const auto vClauses = [&](std::size_t iAt, std::size_t iEnd, const std::string& sHead, const std::string& sTail) {
        std::string sClauses;
        // An attribute may be LIST OF UNIQUE, a clause begins behind a ";".
        for (std::size_t i = sAll.find(" ; ", iAt); i < iEnd; i = sAll.find(" ; ", i + 1)) {
            const std::size_t iWord = i + 3;
            const bool boClause = sAll.compare(iWord, 7, "DERIVE ") == 0 || sAll.compare(iWord, 7, "UNIQUE ") == 0 ||
                                  sAll.compare(iWord, 6, "WHERE ") == 0;
            const bool boInverse = sAll.compare(iWord, 8, "INVERSE ") == 0;
            if (!boClause && !boInverse) continue;
            std::size_t iNext = iEnd;
            for (std::size_t j = sAll.find(" ; ", iWord); j < iEnd; j = sAll.find(" ; ", j + 1)) {
                const std::string sNext = sAll.substr(j + 3, 8);
                if (!sNext.starts_with("DERIVE ") && !sNext.starts_with("UNIQUE ") && !sNext.starts_with("WHERE ") &&
                    !sNext.starts_with("INVERSE "))
                    continue;
                iNext = j + 2;
                break;
            }
            if (boClause) sClauses += sAll.substr(i + 2, iNext - i - 2);
            i = iNext - 3;
        }
        if (!sClauses.empty()) sResult += sHead + sClauses + sTail;
    };
    for (std::size_t iAt = iFind({"TYPE", "ENTITY", "FUNCTION", "RULE"}, 0); iAt != std::string::npos;) {
        const std::string sWord = sAll.substr(iAt + 1, sAll.find(' ', iAt + 1) - iAt - 1);
        const std::size_t iEnd = sAll.find(" END_" + sWord + " ;", iAt);
        const std::size_t iName = iAt + sWord.size() + 2;
        const std::string sName = sAll.substr(iName, sAll.find(' ', iName) - iName);
        if (sWord == "TYPE" || sWord == "ENTITY")
            vClauses(iAt, iEnd, ' ' + sWord + ' ' + sName + " ;", " END_" + sWord + " ;");
        else
            sResult += sAll.substr(iAt, iEnd - iAt) + " END_" + sWord + " ;";
        iAt = iFind({"TYPE", "ENTITY", "FUNCTION", "RULE"}, iEnd);
    }
    return sResult;
}

TEST_P(PublishedRulesTest, PrintedTokensAreThoseOfTheText) {
    std::string sPrinted = sRulesOnly(sText(m_rules));
    EXPECT_GT(sPrinted.size(), 50000U);
    EXPECT_TRUE(sPrinted == sRulesOnly(m_sText));
}

INSTANTIATE_TEST_SUITE_P(Texts, PublishedRulesTest,
                         testing::Values(PublishedRow{"IFC2X3_TC1.exp", 339, 24, 17, 2, 38, 55},
                                         PublishedRow{"IFC4_ADD2_TC1.exp", 652, 25, 4, 2, 47, 62},
                                         PublishedRow{"IFC4X3_ADD2.exp", 752, 25, 4, 2, 48, 60}));

}   // namespace
