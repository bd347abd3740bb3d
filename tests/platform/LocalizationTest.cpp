// SPDX-License-Identifier: Apache-2.0
#include "platform/Localization.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <thread>

#include "platform/String.h"

namespace oxa {
namespace {

// English again, whatever a test leaves behind.
class Localization : public testing::Test {
protected:
    void TearDown() override { setLanguage(Language::English); }
};

const Language g_languageAtStart = language();   // before any test

TEST_F(Localization, StartsInEnglish) { EXPECT_EQ(g_languageAtStart, Language::English); }

struct KeyRow {
    const char* sKey;
    bool boArgument;
};
const KeyRow g_keyRows[] = {
    {"Error_AttributeSizeNotFound", true},
    {"Error_DuplicateEntity", false},
    {"Error_DuplicateGuids", false},
    {"Error_EndOfCommentNotFound", false},
    {"Error_EntityIdReused", true},
    {"Error_EntityIsAbstract", false},
    {"Error_EntityNotConnected", true},
    {"Error_EntityWithoutForm", true},
    {"Error_ExpectedEqualOperator", false},
    {"Error_ExpectedLeftParenthesis", false},
    {"Error_ExpectedNumberSign", false},
    {"Error_ExpectedValidBinaryValueFor", true},
    {"Error_ExpectedValidBooleanValueFor", true},
    {"Error_ExpectedValidEntityValueFor", true},
    {"Error_ExpectedValidEnumerationValueFor", true},
    {"Error_ExpectedValidGuidValueFor", true},
    {"Error_ExpectedValidIntegerValueFor", true},
    {"Error_ExpectedValidIntegersInListFor", true},
    {"Error_ExpectedValidLogicValueFor", true},
    {"Error_ExpectedValidRealInListFor", true},
    {"Error_ExpectedValidRealValueFor", true},
    {"Error_ExpectedValidSelectValueFor", true},
    {"Error_ExpectedValidStringValueFor", true},
    {"Error_HeaderTypeNotImplemented", false},
    {"Error_IllegalAttributeIndex", false},
    {"Error_InvalidEndOfFile", false},
    {"Error_InvalidEntity", false},
    {"Error_InvalidFile", false},
    {"Error_InvalidNullAttribute", true},
    {"Error_ListTypeNotImplemented", true},
    {"Error_MissingEntityWithId", true},
    {"Error_MissingSemicolon", false},
    {"Error_NotValidEnumerationValue", true},
    {"Error_NumberWrittenTwice", true},
    {"Error_TooFewAttributesFor", true},
    {"Error_TooManyAttributesFor", true},
    {"Error_UnexpectedEqualOperator", false},
    {"Error_UnexpectedNewlineInString", false},
    {"Error_UnexpectedNullGuid", false},
    {"Error_UnknownAttributeType", true},
    {"Error_UnknownEntityType", false},
    {"Error_UnknownSchemaName", true},
};

int iCount(std::string_view text, std::string_view part) {
    int iFound = 0;
    for (std::size_t i = text.find(part); i != text.npos; i = text.find(part, i + part.size())) ++iFound;
    return iFound;
}

// ". " and a capital; ".F. or" is no end of a sentence.
bool boSecondSentence(std::string_view text) {
    for (std::size_t i = text.find(". "); i != text.npos; i = text.find(". ", i + 1))
        if (i + 2 < text.size() && text[i + 2] >= 'A' && text[i + 2] <= 'Z') return true;
    return false;
}

TEST_F(Localization, HasATextForEachKey) {
    for (const Language eLanguage : {Language::English, Language::German}) {
        setLanguage(eLanguage);
        std::set<std::string> texts;
        for (const KeyRow& row : g_keyRows) {
            SCOPED_TRACE(row.sKey);
            const std::string sText = localize("Ifc", row.sKey);
            EXPECT_NE(sText, row.sKey);
            EXPECT_EQ(iCount(sText, "%1"), row.boArgument ? 1 : 0);
            EXPECT_EQ(iCount(sText, "%"), row.boArgument ? 1 : 0);
            EXPECT_TRUE(sText.ends_with('.'));
            EXPECT_FALSE(boSecondSentence(sText)) << sText;
            EXPECT_TRUE(str::boIsValidUtf8(sText));
            EXPECT_TRUE(texts.insert(sText).second) << "another key has the same text";
        }
    }
}

TEST_F(Localization, EnumeratesTheKeysInOrder) {
    std::vector<std::string_view> expected;
    for (const KeyRow& row : g_keyRows) expected.push_back(row.sKey);
    EXPECT_EQ(localizationKeys("Ifc"), expected);
    EXPECT_TRUE(localizationKeys("").empty());
    EXPECT_TRUE(localizationKeys("ifc").empty());
}

TEST_F(Localization, FollowsTheLanguage) {
    EXPECT_EQ(language(), Language::English);
    EXPECT_EQ(localize("Ifc", "Error_MissingEntityWithId"), "The instance #%1 is referred to, but not defined.");
    setLanguage(Language::German);
    EXPECT_EQ(language(), Language::German);
    EXPECT_EQ(localize("Ifc", "Error_MissingEntityWithId"),
              "Auf die Instanz #%1 wird verwiesen, sie ist aber nicht definiert.");
    EXPECT_EQ(localize("Ifc", "Error_ExpectedNumberSign"),
              "Am Anfang der Anweisung wurde \u201E#\u201C erwartet; das Lesen wurde abgebrochen.");
}

TEST_F(Localization, GivesTheKeyWhereThereIsNoText) {
    struct Row {
        const char* sRule;
        std::string_view domain, key;
    };
    const Row rows[] = {
        {"unknown key", "Ifc", "Error_Unknown"},
        {"before the first", "Ifc", "A"},
        {"behind the last", "Ifc", "Z"},
        {"a key cut short", "Ifc", "Error_InvalidFil"},
        {"a key with more behind it", "Ifc", "Error_InvalidFileX"},
        {"another case", "Ifc", "error_invalidfile"},
        {"no key", "Ifc", ""},
        {"unknown domain", "Xml", "Error_InvalidFile"},
        {"no domain", "", "Error_InvalidFile"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sRule);
        EXPECT_EQ(localize(row.domain, row.key), row.key);
    }
}

TEST_F(Localization, LanguageMayChangeWhileOthersAsk) {
    const std::string sEnglish = localize("Ifc", "Error_InvalidFile");
    setLanguage(Language::German);
    const std::string sGerman = localize("Ifc", "Error_InvalidFile");
    {
        std::jthread changes([] {
            for (int i = 0; i < 500; ++i) setLanguage(i % 2 ? Language::English : Language::German);
        });
        for (int i = 0; i < 500; ++i) {
            const std::string sText = localize("Ifc", "Error_InvalidFile");
            ASSERT_TRUE(sText == sEnglish || sText == sGerman) << sText;
        }
    }
}

}   // namespace
}   // namespace oxa
