// SPDX-License-Identifier: Apache-2.0
// FileHeader in a property grid: ids, labels, values and the tree.

#include "Format/Ifc/IfcFileHeader.h"

#include <any>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Format/Ifc/FullHeader.h"

namespace oxa::ifc {
namespace {

using Texts = std::vector<std::string>;

// A value as a text; nothing for an empty one. Another type than a std::string throws.
std::optional<std::string> valueText(const FileHeader& header, const std::string& id) {
    const std::any value = header.getValue(id);
    if (!value.has_value()) return std::nullopt;
    return std::any_cast<std::string>(value);
}

struct ViewFieldRow {
    const char* sId;
    bool boGroup;
    const char* sLabel;
    std::optional<std::string> value;   // of the header above
    std::optional<std::string> empty;   // of a new header
};
const ViewFieldRow g_viewFieldRows[] = {
    {"HeaderDescription", true, "Description", {}, {}},
    {"HeaderDescription_Description", false, "Description", "d", {}},
    {"HeaderDescription_ImplementationLevel", false, "ImplementationLevel", "L", "2;1"},
    {"HeaderName", true, "Name", {}, {}},
    {"HeaderName_Name", false, "Name", "n", ""},
    {"HeaderName_TimeStamp", false, "TimeStamp", "t", ""},
    {"HeaderName_Author", false, "Author", "a", {}},
    {"HeaderName_Organization", false, "Organization", "o", {}},
    {"HeaderName_IfcToolbox", false, "IfcToolbox", "p", ""},
    {"HeaderName_OriginatingSystem", false, "OriginatingSystem", "s", ""},
    {"HeaderName_Authorisation", false, "Authorisation", "z", ""},
    {"HeaderSchema", true, "Schema", {}, {}},
    {"HeaderSchema_Schema", false, "Schema", "S", ""},
};

TEST(FileHeaderView, EveryIdHasItsLabelAndItsValue) {
    const FileHeader all = headerWithAll();
    const FileHeader none;
    for (const ViewFieldRow& row : g_viewFieldRows) {
        SCOPED_TRACE(row.sId);
        EXPECT_EQ(all.getPropertyName(row.sId), row.sLabel);
        EXPECT_EQ(valueText(all, row.sId), row.value);
        EXPECT_EQ(valueText(none, row.sId), row.empty);
    }
}

TEST(FileHeaderView, PropertiesAreTheIdsOfTheTree) {
    std::set<object::PropertyId> expected;
    for (const ViewFieldRow& row : g_viewFieldRows) expected.insert(row.sId);
    EXPECT_EQ(expected.size(), 13u);
    EXPECT_EQ(FileHeader().getAllProperties(), expected);
    EXPECT_EQ(headerWithAll().getAllProperties(), expected);
}

struct OtherIdRow {
    const char* sRule;
    std::string sId;
    const char* sLabel;
};
const OtherIdRow g_otherIds[] = {
    {"the whole has a label and is no property", "HeaderInfo", "Ifc file header"},
    {"an unknown id", "HeaderName_Schema", ""},
    {"no id", "", ""},
    {"bytes are compared: case", "headername_name", ""},
    {"bytes are compared: a blank behind", "HeaderName_Name ", ""},
    {"bytes are compared: a zero behind", std::string("HeaderName_Name\0", 16), ""},
    {"the field is spelt otherwise", "HeaderName_Authorization", ""},
    {"so is this one", "HeaderName_PreprocessorVersion", ""},
};

TEST(FileHeaderView, OtherIdsHaveNoValue) {
    const FileHeader header = headerWithAll();
    for (const OtherIdRow& row : g_otherIds) {
        SCOPED_TRACE(row.sRule);
        EXPECT_FALSE(header.getValue(row.sId).has_value());
        EXPECT_EQ(header.getPropertyName(row.sId), row.sLabel);
        EXPECT_FALSE(header.getAllProperties().contains(row.sId));
    }
}

struct ListRow {
    const char* sRule;
    Texts items;
    std::optional<std::string> value;
};
const ListRow g_listRows[] = {
    {"none", {}, {}},
    {"one as it is", {"a"}, "a"},
    {"one that is empty", {""}, ""},
    {"one with parentheses", {"(a)"}, "(a)"},
    {"two", {"a", "b"}, "(a), (b)"},
    {"three", {"a", "b", "c"}, "(a), (b), (c)"},
    {"empty ones count", {"", ""}, "(), ()"},
    {"nothing is escaped", {"a), (b", "c"}, "(a), (b), (c)"},
};

TEST(FileHeaderView, ListsAreOneText) {
    for (const ListRow& row : g_listRows) {
        SCOPED_TRACE(row.sRule);
        FileHeader header;
        header.description.descriptions = row.items;
        EXPECT_EQ(valueText(header, "HeaderDescription_Description"), row.value);
        EXPECT_EQ(valueText(header, "HeaderName_Author"), std::nullopt);
        header = {};
        header.name.author = row.items;
        EXPECT_EQ(valueText(header, "HeaderName_Author"), row.value);
        EXPECT_EQ(valueText(header, "HeaderName_Organization"), std::nullopt);
        header = {};
        header.name.organization = row.items;
        EXPECT_EQ(valueText(header, "HeaderName_Organization"), row.value);
        EXPECT_EQ(valueText(header, "HeaderName_Author"), std::nullopt);
    }
}

TEST(FileHeaderView, TreeHasThreeGroupsInOrder) {
    const auto pHeader = std::make_shared<FileHeader>(headerWithAll());
    std::vector<std::pair<std::string, bool>> nodes;
    const auto vTake = [&](const fc::Property& node) {
        nodes.emplace_back(node.id, node.boGroup);
        EXPECT_EQ(node.owner, pHeader) << node.id;
        EXPECT_TRUE(node.boVisible) << node.id;
        EXPECT_EQ(node.label + node.icon, "") << node.id;
        EXPECT_EQ(node.origin, nullptr) << node.id;
    };
    for (const auto& pGroup : pHeader->getProperties()) {
        vTake(*pGroup);
        for (const auto& pField : pGroup->children) {
            vTake(*pField);
            EXPECT_TRUE(pField->children.empty()) << pField->id;
        }
    }
    std::vector<std::pair<std::string, bool>> expected;
    for (const ViewFieldRow& row : g_viewFieldRows) expected.emplace_back(row.sId, row.boGroup);
    EXPECT_EQ(nodes, expected);
}

TEST(FileHeaderView, TreeIsMadeAnewAndHoldsTheHeader) {
    auto pHeader = std::make_shared<FileHeader>();
    const auto first = pHeader->getProperties();
    const auto second = pHeader->getProperties();
    ASSERT_EQ(first.size(), 3u);
    EXPECT_NE(first[0], second[0]);
    const std::weak_ptr<FileHeader> pWatched = pHeader;
    pHeader.reset();
    EXPECT_FALSE(pWatched.expired());
}

TEST(FileHeaderView, ValuesAreThoseOfNow) {
    const auto pHeader = std::make_shared<FileHeader>();
    const auto groups = pHeader->getProperties();
    const fc::Property& field = *groups.at(1)->children.at(0);
    pHeader->name.name = "first";
    EXPECT_EQ(std::any_cast<std::string>(field.owner->getValue(field.id)), "first");
    pHeader->name.name = "second";
    EXPECT_EQ(std::any_cast<std::string>(field.owner->getValue(field.id)), "second");
}

TEST(FileHeaderView, TreeNeedsASharedHeader) {
    const FileHeader header = headerWithAll();
    EXPECT_THROW((void)header.getProperties(), std::bad_weak_ptr);
    const auto pHeader = std::make_shared<const FileHeader>(header);
    EXPECT_EQ(pHeader->getProperties().size(), 3u);
    const FileHeader copy = *pHeader;   // held by nobody, whatever held the first
    EXPECT_THROW((void)copy.getProperties(), std::bad_weak_ptr);
}

TEST(FileHeaderView, NothingIsStored) {
    const auto pHeader = std::make_shared<FileHeader>(headerWithAll());
    object::PropertyInterface& view = *pHeader;
    const std::string sBefore = pHeader->writeToString();
    for (const std::string& sId : {std::string("HeaderName_Name"), std::string("HeaderName_Author"),
                                   std::string("HeaderName"), std::string("none")}) {
        SCOPED_TRACE(sId);
        EXPECT_TRUE(view.isValueAllowed(sId, std::string("other")));
        EXPECT_TRUE(view.isValueAllowed(sId, 1));
        view.setValue(sId, std::string("other"));
        view.resetValue(sId);
    }
    EXPECT_EQ(pHeader->writeToString(), sBefore);
}

TEST(FileHeaderView, RestOfTheInterfaceIsEmpty) {
    const auto pHeader = std::make_shared<FileHeader>(headerWithAll());
    const object::PropertyInterface& view = *pHeader;
    EXPECT_EQ(view.getPropertiesObjectKey(), "");
    for (const char* sId : {"HeaderName_Name", "HeaderName", "HeaderInfo", "none"}) {
        SCOPED_TRACE(sId);
        EXPECT_FALSE(view.isValueEditable(sId));
        EXPECT_FALSE(view.isValueInherited(sId));
        EXPECT_EQ(view.getPropertyOwner(sId), nullptr);
        EXPECT_FALSE(view.isResetAllowed(sId));
        EXPECT_EQ(view.getPropertyDescription(sId), "");
        EXPECT_EQ(view.getPropertyUnit(sId), "");
        EXPECT_EQ(view.getPropertyFormat(sId), "");
        EXPECT_TRUE(view.getOfferedValues(sId).empty());
        EXPECT_TRUE(view.getOfferedTexts(sId).empty());
        EXPECT_TRUE(view.getOfferedIcons(sId).empty());
        EXPECT_FALSE(view.getPropertyListener(sId));
        EXPECT_TRUE(view.getDependentProperties(sId).empty());
    }
}

static_assert(std::is_base_of_v<object::PropertyInterface, FileHeader> &&
              std::is_base_of_v<generate::ObjectInterface, object::PropertyInterface>);
static_assert(std::is_copy_constructible_v<FileHeader> && std::is_copy_assignable_v<FileHeader> &&
              std::is_nothrow_move_constructible_v<FileHeader> && std::is_nothrow_move_assignable_v<FileHeader>);

}   // namespace
}   // namespace oxa::ifc
