// SPDX-License-Identifier: Apache-2.0
// FileHeader as the objects of a property grid: the tree, the labels and the values.

#include "Format/Ifc/IfcFileHeader.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

namespace oxa::ifc {

namespace {

using object::PropertyId;

// A list as one text: nothing for none, an item as it is, several as "(a), (b)".
std::any listValue(const std::vector<std::string>& items) {
    if (items.empty()) return {};
    if (items.size() == 1) return items.front();
    std::string sAll;
    for (const std::string& sItem : items) {
        if (!sAll.empty()) sAll += ", ";
        sAll.append("(").append(sItem).append(")");
    }
    return sAll;
}

using ValueOf = std::any (*)(const FileHeader& header);

struct FieldRow {
    std::string_view id;
    std::string_view label;
    ValueOf pValueOf;   // null for a group, whose fields follow it

    [[nodiscard]] constexpr bool boGroup() const noexcept { return pValueOf == nullptr; }
};

// The tree, in the order in which it is shown.
constexpr FieldRow g_fieldRows[] = {
    {"HeaderDescription", "Description", nullptr},
    {"HeaderDescription_Description", "Description",
     [](const FileHeader& header) { return listValue(header.description.descriptions); }},
    {"HeaderDescription_ImplementationLevel", "ImplementationLevel",
     [](const FileHeader& header) -> std::any { return header.description.implementationLevel; }},
    {"HeaderName", "Name", nullptr},
    {"HeaderName_Name", "Name", [](const FileHeader& header) -> std::any { return header.name.name; }},
    {"HeaderName_TimeStamp", "TimeStamp", [](const FileHeader& header) -> std::any { return header.name.timeStamp; }},
    {"HeaderName_Author", "Author", [](const FileHeader& header) { return listValue(header.name.author); }},
    {"HeaderName_Organization", "Organization",
     [](const FileHeader& header) { return listValue(header.name.organization); }},
    {"HeaderName_IfcToolbox", "IfcToolbox",
     [](const FileHeader& header) -> std::any { return header.name.preprocessorVersion; }},
    {"HeaderName_OriginatingSystem", "OriginatingSystem",
     [](const FileHeader& header) -> std::any { return header.name.originatingSystem; }},
    {"HeaderName_Authorisation", "Authorisation",
     [](const FileHeader& header) -> std::any { return header.name.authorization; }},
    {"HeaderSchema", "Schema", nullptr},
    {"HeaderSchema_Schema", "Schema", [](const FileHeader& header) -> std::any { return header.schema.schemaName; }},
};
static_assert(std::size(g_fieldRows) == 13);
static_assert(g_fieldRows[0].boGroup(), "every field has a group before it");

// A label for the whole, which is no part of the tree.
constexpr FieldRow g_info{"HeaderInfo", "Ifc file header", nullptr};

const FieldRow* pRow(const PropertyId& id) {
    const auto* const pFound = std::find_if(std::begin(g_fieldRows), std::end(g_fieldRows),
                                            [&id](const FieldRow& row) { return row.id == id; });
    return pFound == std::end(g_fieldRows) ? nullptr : pFound;
}

}   // namespace

std::vector<std::shared_ptr<fc::Property>> FileHeader::getProperties() const {
    // A grid holds its owners to ask them; no operation of this one writes.
    const std::shared_ptr<PropertyInterface> owner = std::const_pointer_cast<FileHeader>(shared_from_this());
    std::vector<std::shared_ptr<fc::Property>> groups;
    for (const FieldRow& row : g_fieldRows) {
        auto pNode = std::make_shared<fc::Property>();
        pNode->id = row.id;
        pNode->boGroup = row.boGroup();
        pNode->owner = owner;
        (row.boGroup() ? groups : groups.back()->children).push_back(std::move(pNode));
    }
    return groups;
}

std::set<PropertyId> FileHeader::getAllProperties() const {
    std::set<PropertyId> ids;
    for (const FieldRow& row : g_fieldRows) ids.emplace(row.id);
    return ids;
}

std::any FileHeader::getValue(const PropertyId& id) const {
    const FieldRow* const pFound = pRow(id);
    return pFound && pFound->pValueOf ? pFound->pValueOf(*this) : std::any();
}

std::string FileHeader::getPropertyName(const PropertyId& id) const {
    if (id == g_info.id) return std::string(g_info.label);
    const FieldRow* const pFound = pRow(id);
    return pFound ? std::string(pFound->label) : std::string();
}

bool FileHeader::isValueAllowed(const PropertyId&, const std::any&) const { return true; }

// ---- What a header has nothing to tell of. ----

std::string FileHeader::getPropertiesObjectKey() const { return {}; }

void FileHeader::setValue(const PropertyId&, const std::any&) {}

bool FileHeader::isValueEditable(const PropertyId&) const { return false; }

bool FileHeader::isValueInherited(const PropertyId&) const { return false; }

std::shared_ptr<object::PropertyInterface> FileHeader::getPropertyOwner(const PropertyId&) const { return nullptr; }

bool FileHeader::isResetAllowed(const PropertyId&) const { return false; }

void FileHeader::resetValue(const PropertyId&) {}

std::string FileHeader::getPropertyDescription(const PropertyId&) const { return {}; }

std::string FileHeader::getPropertyUnit(const PropertyId&) const { return {}; }

std::string FileHeader::getPropertyFormat(const PropertyId&) const { return {}; }

std::vector<std::any> FileHeader::getOfferedValues(const PropertyId&) const { return {}; }

std::vector<std::string> FileHeader::getOfferedTexts(const PropertyId&) const { return {}; }

std::vector<std::string> FileHeader::getOfferedIcons(const PropertyId&) const { return {}; }

object::PropertyInterface::PropertyListener FileHeader::getPropertyListener(const PropertyId&) const { return {}; }

std::vector<PropertyId> FileHeader::getDependentProperties(const PropertyId&) const { return {}; }

}   // namespace oxa::ifc
