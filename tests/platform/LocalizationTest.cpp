// SPDX-License-Identifier: Apache-2.0
#include "platform/Localization.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace oxa {
namespace {

// English again, whatever a test leaves behind.
class Localization : public testing::Test {
protected:
    void TearDown() override { setLanguage(Language::English); }
};

const Language g_languageAtStart = language();   // before any test

TEST_F(Localization, StartsInEnglish) { EXPECT_EQ(g_languageAtStart, Language::English); }

// The texts of a library.
constexpr LocalizedText g_doorRows[] = {
    {"Door_Missing", "The door %1 is missing.", "Die Tür %1 fehlt."},
    {"Door_Open", "The door is open.", "Die Tür ist offen."},
    {"Door_Shut", "The door is shut.", "Die Tür ist zu."},
};
constinit LocalizedTexts g_door("Door", g_doorRows);
// Of its host, for the same domain.
constexpr LocalizedText g_hostRows[] = {
    {"Door_Open", "Please shut the door.", "Bitte Tür schließen."},
    {"Door_Painted", "The door is painted.", "Die Tür ist gestrichen."},
};
constinit LocalizedTexts g_host("Door", g_hostRows);
constinit LocalizedTexts g_empty("Empty", {});

// Once, in this order, as a library does: a static object is no longer there when the next one is made.
const std::string g_sBefore = localize("Door", "Door_Open");
const bool g_boRegistered = [] {
    registerTexts(g_door);
    registerTexts(g_host);
    registerTexts(g_empty);
    registerTexts(g_door);   // stays where it is, behind that of the host
    return true;
}();
const std::string g_sBehind = localize("Door", "Door_Open");

TEST_F(Localization, KnowsTextsFromTheirRegistrationOnStaticObjectsIncluded) {
    EXPECT_EQ(g_sBefore, "Door_Open");
    EXPECT_EQ(g_sBehind, "Please shut the door.");
}

TEST_F(Localization, FollowsTheLanguage) {
    EXPECT_EQ(language(), Language::English);
    EXPECT_EQ(localize("Door", "Door_Missing"), "The door %1 is missing.");
    setLanguage(Language::German);
    EXPECT_EQ(language(), Language::German);
    EXPECT_EQ(localize("Door", "Door_Missing"), "Die Tür %1 fehlt.");
    EXPECT_EQ(localize("Door", "Door_Open"), "Bitte Tür schließen.");
}

TEST_F(Localization, AsksTheLastTableOfADomainFirst) {
    struct Row {
        const char* sRule;
        std::string_view key, text;
    };
    const Row rows[] = {
        {"a key of the first table alone", "Door_Missing", "The door %1 is missing."},
        {"its last key", "Door_Shut", "The door is shut."},
        {"a key of both", "Door_Open", "Please shut the door."},
        {"a key of the second alone", "Door_Painted", "The door is painted."},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sRule);
        EXPECT_EQ(localize("Door", row.key), row.text);
    }
}

TEST_F(Localization, EnumeratesTheKeysInOrderAndEachOnce) {
    const std::vector<std::string_view> expected{"Door_Missing", "Door_Open", "Door_Painted", "Door_Shut"};
    EXPECT_EQ(localizationKeys("Door"), expected);
    for (const std::string_view domain : {"", "door", "Window", "Empty"}) {
        SCOPED_TRACE(domain);
        EXPECT_TRUE(localizationKeys(domain).empty());
    }
}

TEST_F(Localization, GivesTheKeyWhereThereIsNoText) {
    struct Row {
        const char* sRule;
        std::string_view domain, key;
    };
    const Row rows[] = {
        {"unknown key", "Door", "Door_Locked"},
        {"before the first", "Door", "A"},
        {"behind the last", "Door", "Z"},
        {"a key cut short", "Door", "Door_Shu"},
        {"a key with more behind it", "Door", "Door_Shutter"},
        {"another case", "Door", "door_shut"},
        {"no key", "Door", ""},
        {"unknown domain", "Window", "Door_Shut"},
        {"a domain without texts", "Empty", "Door_Shut"},
        {"no domain", "", "Door_Shut"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sRule);
        EXPECT_EQ(localize(row.domain, row.key), row.key);
    }
}

TEST_F(Localization, LanguageMayChangeWhileOthersAsk) {
    {
        std::jthread changes([] {
            for (int i = 0; i < 500; ++i) setLanguage(i % 2 ? Language::English : Language::German);
        });
        for (int i = 0; i < 500; ++i) {
            const std::string sText = localize("Door", "Door_Shut");
            ASSERT_TRUE(sText == "The door is shut." || sText == "Die Tür ist zu.") << sText;
        }
    }
}

TEST_F(Localization, ThreadsMayRegisterWhileOthersAsk) {
    static constexpr LocalizedText rows[] = {{"Key", "Text.", "Wort."}};
    static constinit LocalizedTexts tables[] = {{"A", rows}, {"B", rows}, {"C", rows}, {"D", rows}};
    constexpr std::string_view domains[] = {"A", "B", "C", "D"};
    std::vector<std::jthread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([i, &domains] {
            const auto iTable = static_cast<std::size_t>(i % 4);
            registerTexts(tables[iTable]);   // each by two of them
            for (const std::string_view domain : domains) {
                const std::string sText = localize(domain, "Key");
                EXPECT_TRUE(sText == "Text." || sText == "Key") << sText;
            }
            EXPECT_EQ(localize(domains[iTable], "Key"), "Text.");
        });
    threads.clear();
    for (const std::string_view domain : domains) EXPECT_EQ(localizationKeys(domain).size(), 1U);
}

}   // namespace
}   // namespace oxa
