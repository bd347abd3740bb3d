// SPDX-License-Identifier: Apache-2.0
#include "Model/Names.h"

#include <algorithm>

#include "Model/Error.h"
#include "platform/NearNames.h"

namespace oxa::detail {

namespace schema = ifc::def::schema;

namespace {

constexpr std::size_t g_iMostListed = 40;   // names in a message
constexpr std::size_t g_iLongest = 100;     // of a name that is told

constexpr char cLower(char c) noexcept { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

std::string sJoined(const std::vector<std::string>& names) {
    std::string sText;
    for (const std::string& sName : names) sText += (sText.empty() ? "" : ", ") + sName;
    return sText;
}

// A name as it was given, for a message: whatever it holds.
std::string sShownOrEmpty(std::string_view name) {
    std::string sName(name.substr(0, g_iLongest));
    for (char& c : sName)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) c = '?';
    return sName.empty() ? "of an empty name" : sName;
}

// Exact names are found by their hashes; only what is spelled otherwise is compared letter by letter.
template <class List>
std::size_t iFind(const List& list, std::string_view name) noexcept {
    const std::uint32_t uHash = schema::NameHash(name);
    for (std::size_t i = 0; i < list.size(); ++i)
        if (list[i]->uNameHash == uHash && list[i]->sName == name) return i;
    for (std::size_t i = 0; i < list.size(); ++i)
        if (boSameName(list[i]->sName, name)) return i;
    return g_iNoName;
}

template <class List>
std::vector<std::string_view> namesOf(const List& list) {
    std::vector<std::string_view> names;
    for (const auto* pItem : list) names.push_back(pItem->sName);
    return names;
}

}   // namespace

bool boSameName(std::string_view a, std::string_view b) noexcept {
    return std::ranges::equal(a, b, [](char x, char y) { return cLower(x) == cLower(y); });
}

std::vector<std::string> nearNames(std::string_view wanted, const std::vector<std::string_view>& names) {
    const std::vector<std::string_view> near = str::nearNames(wanted, names);
    return {near.begin(), near.end()};
}

void vThrowName(const std::string& sMessage, std::string_view wanted, const std::vector<std::string_view>& names) {
    std::vector<std::string> near = nearNames(wanted, names);
    if (!near.empty()) throw NameError(sMessage + "; did you mean " + sJoined(near) + "?", near);
    if (names.empty() || names.size() > g_iMostListed) throw NameError(sMessage);
    throw NameError(sMessage + "; there are: " + sJoined({names.begin(), names.end()}));
}

const schema::Entity& typeFromName(const schema::Schema& schema, std::string_view name) {
    const schema::ObjectBase* pObject = schema.pObjectFromName(name);
    if (const schema::Entity* pType = schema::pAsEntity(pObject)) return *pType;
    std::vector<std::string_view> names;
    for (const schema::Schema::Record& record : schema.objects)
        if (schema::pAsEntity(record.pObject)) names.push_back(record.pObject->sName);
    if (pObject) vThrowName(pObject->sName + " is no entity type of " + schema.sName, {}, names);
    vThrowName(schema.sName + " has no entity type " + sShownOrEmpty(name), name, names);
}

std::size_t iAttributeFind(const schema::Entity& type, std::string_view name) noexcept {
    return iFind(type.allAttributes(), name);
}

std::size_t iInverseFind(const schema::Entity& type, std::string_view name) noexcept {
    return iFind(type.allInverseAttributes(), name);
}

std::size_t iAttribute(const schema::Entity& type, std::string_view name) {
    const std::size_t iFound = iAttributeFind(type, name);
    if (iFound != g_iNoName) return iFound;
    if (const std::size_t iOther = iInverseFind(type, name); iOther != g_iNoName) {
        const std::string& sName = type.allInverseAttributes()[iOther]->sName;
        throw NameError(type.sName + "." + sName + " is an inverse attribute: inverse(\"" + sName + "\") tells it");
    }
    vThrowName(type.sName + " has no attribute " + sShownOrEmpty(name), name, namesOf(type.allAttributes()));
}

std::size_t iInverse(const schema::Entity& type, std::string_view name) {
    const std::size_t iFound = iInverseFind(type, name);
    if (iFound != g_iNoName) return iFound;
    if (const std::size_t iOther = iAttributeFind(type, name); iOther != g_iNoName) {
        const std::string& sName = type.allAttributes()[iOther]->sName;
        throw NameError(type.sName + "." + sName + " is no inverse attribute: [\"" + sName + "\"] tells it");
    }
    vThrowName(type.sName + " has no inverse attribute " + sShownOrEmpty(name), name,
               namesOf(type.allInverseAttributes()));
}

}   // namespace oxa::detail
