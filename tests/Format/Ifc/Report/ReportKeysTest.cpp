// SPDX-License-Identifier: Apache-2.0
#include "Format/Ifc/Report/ReportKeys.h"

#include <cstddef>
#include <iterator>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "platform/Localization.h"
#include "platform/String.h"

namespace oxa::ifc {
namespace {

struct ReportKeysRow {
    ReportKey eKey;
    const char* sKey;
    Errors::Severity eSeverity;
    Errors::Category eCategory;
    bool boArgument;
};
// What hosts filter by. Severity and category are those of most raisers.
// clang-format off
const ReportKeysRow g_rows[] = {
    {ReportKey::AttributeSizeNotFound, "Error_AttributeSizeNotFound", Errors::Error, Errors::Schema, true},
    {ReportKey::DuplicateEntity, "Error_DuplicateEntity", Errors::Error, Errors::Model, false},
    {ReportKey::DuplicateGuids, "Error_DuplicateGuids", Errors::Error, Errors::Value, false},
    {ReportKey::EndOfCommentNotFound, "Error_EndOfCommentNotFound", Errors::Fatal, Errors::Syntax, false},
    {ReportKey::EntityIdReused, "Error_EntityIdReused", Errors::Error, Errors::Identifier, true},
    {ReportKey::EntityIsAbstract, "Error_EntityIsAbstract", Errors::Error, Errors::Value, false},
    {ReportKey::EntityNotConnected, "Error_EntityNotConnected", Errors::Error, Errors::Reference, true},
    {ReportKey::EntityWithoutForm, "Error_EntityWithoutForm", Errors::Error, Errors::Value, true},
    {ReportKey::ExpectedEqualOperator, "Error_ExpectedEqualOperator", Errors::Fatal, Errors::Syntax, false},
    {ReportKey::ExpectedLeftParenthesis, "Error_ExpectedLeftParenthesis", Errors::Fatal, Errors::Syntax, false},
    {ReportKey::ExpectedNumberSign, "Error_ExpectedNumberSign", Errors::Fatal, Errors::Syntax, false},
    {ReportKey::ExpectedValidBinaryValueFor, "Error_ExpectedValidBinaryValueFor", Errors::Error, Errors::Value, true},
    {ReportKey::ExpectedValidBooleanValueFor, "Error_ExpectedValidBooleanValueFor", Errors::Error, Errors::Value, true},
    {ReportKey::ExpectedValidEntityValueFor, "Error_ExpectedValidEntityValueFor", Errors::Error, Errors::Value, true},
    {ReportKey::ExpectedValidEnumerationValueFor, "Error_ExpectedValidEnumerationValueFor", Errors::Error, Errors::Value, true},
    {ReportKey::ExpectedValidGuidValueFor, "Error_ExpectedValidGuidValueFor", Errors::Error, Errors::Value, true},
    {ReportKey::ExpectedValidIntegerValueFor, "Error_ExpectedValidIntegerValueFor", Errors::Error, Errors::Value, true},
    {ReportKey::ExpectedValidIntegersInListFor, "Error_ExpectedValidIntegersInListFor", Errors::Error, Errors::Value, true},
    {ReportKey::ExpectedValidLogicValueFor, "Error_ExpectedValidLogicValueFor", Errors::Error, Errors::Value, true},
    {ReportKey::ExpectedValidRealInListFor, "Error_ExpectedValidRealInListFor", Errors::Error, Errors::Value, true},
    {ReportKey::ExpectedValidRealValueFor, "Error_ExpectedValidRealValueFor", Errors::Error, Errors::Value, true},
    {ReportKey::ExpectedValidSelectValueFor, "Error_ExpectedValidSelectValueFor", Errors::Error, Errors::Value, true},
    {ReportKey::ExpectedValidStringValueFor, "Error_ExpectedValidStringValueFor", Errors::Error, Errors::Value, true},
    {ReportKey::HeaderTypeNotImplemented, "Error_HeaderTypeNotImplemented", Errors::Error, Errors::Header, false},
    {ReportKey::IllegalAttributeIndex, "Error_IllegalAttributeIndex", Errors::Fatal, Errors::Schema, false},
    {ReportKey::InvalidEndOfFile, "Error_InvalidEndOfFile", Errors::Fatal, Errors::Syntax, false},
    {ReportKey::InvalidEntity, "Error_InvalidEntity", Errors::Fatal, Errors::Syntax, false},
    {ReportKey::InvalidFile, "Error_InvalidFile", Errors::Fatal, Errors::Syntax, false},
    {ReportKey::InvalidNullAttribute, "Error_InvalidNullAttribute", Errors::Error, Errors::Null, true},
    {ReportKey::ListTypeNotImplemented, "Error_ListTypeNotImplemented", Errors::Error, Errors::Schema, true},
    {ReportKey::MissingEntityWithId, "Error_MissingEntityWithId", Errors::Error, Errors::Reference, true},
    {ReportKey::MissingSemicolon, "Error_MissingSemicolon", Errors::Error, Errors::Syntax, false},
    {ReportKey::NotValidEnumerationValue, "Error_NotValidEnumerationValue", Errors::Error, Errors::Value, true},
    {ReportKey::NumberWrittenTwice, "Error_NumberWrittenTwice", Errors::Error, Errors::Identifier, true},
    {ReportKey::TooFewAttributesFor, "Error_TooFewAttributesFor", Errors::Error, Errors::Value, true},
    {ReportKey::TooManyAttributesFor, "Error_TooManyAttributesFor", Errors::Error, Errors::Value, true},
    {ReportKey::UnexpectedEqualOperator, "Error_UnexpectedEqualOperator", Errors::Fatal, Errors::Syntax, false},
    {ReportKey::UnexpectedNewlineInString, "Error_UnexpectedNewlineInString", Errors::Fatal, Errors::Syntax, false},
    {ReportKey::UnexpectedNullGuid, "Error_UnexpectedNullGuid", Errors::Error, Errors::Value, false},
    {ReportKey::UnknownAttributeType, "Error_UnknownAttributeType", Errors::Fatal, Errors::Schema, true},
    {ReportKey::UnknownEntityType, "Error_UnknownEntityType", Errors::Error, Errors::Value, false},
    {ReportKey::UnknownSchemaName, "Error_UnknownSchemaName", Errors::Fatal, Errors::Model, true},
};
// clang-format on

TEST(ReportKeys, TableHasOneRowForEachEnumerator) {
    ASSERT_EQ(report::keyRows().size(), std::size(g_rows));
    for (std::size_t i = 0; i < std::size(g_rows); ++i) {
        const ReportKeysRow& row = g_rows[i];
        SCOPED_TRACE(row.sKey);
        EXPECT_EQ(static_cast<std::size_t>(row.eKey), i);
        const report::KeyRow& found = report::keyRow(row.eKey);
        EXPECT_EQ(&found, &report::keyRows()[i]);
        EXPECT_EQ(found.eKey, row.eKey);
        EXPECT_EQ(found.key, row.sKey);
        EXPECT_EQ(found.eSeverity, row.eSeverity);
        EXPECT_EQ(found.eCategory, row.eCategory);
    }
    EXPECT_THROW(static_cast<void>(report::keyRow(static_cast<ReportKey>(std::size(g_rows)))), std::out_of_range);
}

TEST(ReportKeys, KeyAndItsTextLeadToEachOther) {
    for (const ReportKeysRow& row : g_rows) {
        SCOPED_TRACE(row.sKey);
        EXPECT_EQ(reportKeyText(row.eKey), row.sKey);
        EXPECT_EQ(reportKeyFromText(row.sKey), row.eKey);
    }
    for (const std::string_view text :
         {"", "A", "Z", "Error_", "Error_InvalidFil", "Error_InvalidFileX", "error_invalidfile", "InvalidFile", "%1"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(reportKeyFromText(text), std::nullopt);
    }
}

// A misspelt key, or one that is no key, does not compile as an enumerator.
static_assert(!std::is_convertible_v<const char*, ReportKey> && !std::is_convertible_v<ReportKey, std::string_view>);

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

struct LanguageScope {
    explicit LanguageScope(Language eLanguage) { setLanguage(eLanguage); }
    ~LanguageScope() { setLanguage(Language::English); }
    LanguageScope(const LanguageScope&) = delete;
    LanguageScope& operator=(const LanguageScope&) = delete;
};

TEST(ReportKeys, EachHasOneSentenceInBothLanguages) {
    for (const Language eLanguage : {Language::English, Language::German}) {
        const LanguageScope scope(eLanguage);
        std::set<std::string> texts;
        for (const ReportKeysRow& row : g_rows) {
            SCOPED_TRACE(row.sKey);
            const std::string sText = reportText(row.eKey);
            EXPECT_EQ(localize("Ifc", row.sKey), sText);
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

TEST(ReportKeys, LanguagesDiffer) {
    for (const report::KeyRow& row : report::keyRows()) {
        SCOPED_TRACE(row.key);
        EXPECT_NE(row.english, row.german);
    }
    EXPECT_EQ(reportText(ReportKey::MissingEntityWithId), "The instance #%1 is referred to, but not defined.");
    const LanguageScope scope(Language::German);
    EXPECT_EQ(reportText(ReportKey::MissingEntityWithId),
              "Auf die Instanz #%1 wird verwiesen, sie ist aber nicht definiert.");
    EXPECT_EQ(reportText(ReportKey::ExpectedNumberSign),
              "Am Anfang der Anweisung wurde \u201E#\u201C erwartet; das Lesen wurde abgebrochen.");
}

TEST(ReportKeys, AreTheTextsOfTheDomainIfc) {
    std::vector<std::string_view> expected;
    for (const ReportKeysRow& row : g_rows) expected.push_back(row.sKey);
    EXPECT_EQ(localizationKeys("Ifc"), expected);
    EXPECT_TRUE(localizationKeys("ifc").empty());
    EXPECT_EQ(localize("Xml", "Error_InvalidFile"), "Error_InvalidFile");
}

// A static object of a host may show a text before main() begins, without any Errors.
const std::string g_sAtStart = localize("Ifc", "Error_InvalidEntity");

TEST(ReportKeys, TextsAreThereForStaticObjects) {
    EXPECT_EQ(g_sAtStart, "\"(\" was expected behind the keyword; reading was stopped.");
}

}   // namespace
}   // namespace oxa::ifc
