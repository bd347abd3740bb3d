// SPDX-License-Identifier: Apache-2.0
// ModelText: what a model and the reports on it say, as text to be compared.
//
// For      the tests that hold one read or write against another.
#pragma once

#include <algorithm>
#include <map>
#include <ostream>
#include <set>
#include <sstream>
#include <string>
#include <utility>

#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileError.h"

namespace oxa::ifc {

// What one instance says: its statement, and who refers to it.
struct InstanceText {
    std::string sStatement;
    std::multiset<std::pair<std::string, std::size_t>> referrers;   // inverse attribute, number
    bool operator==(const InstanceText&) const = default;
};
inline void PrintTo(const InstanceText& text, std::ostream* pOut) {
    *pOut << text.sStatement;
    for (const auto& [sName, iId] : text.referrers) *pOut << ' ' << sName << " #" << iId;
}

// A model as text, by instance number. An instance that stands twice in the list is there twice.
using ModelText = std::multimap<std::size_t, InstanceText>;

inline ModelText modelText(const Data& data) {
    ModelText text;
    for (const Entity* pEntity : data.entities()) {
        InstanceText& instance = text.emplace(data.iIdFromEntity(*pEntity), InstanceText{})->second;
        pEntity->boForEachInverseAttribute(
            [&](const def::schema::AttributeInverse& attribute, const EntityList& referrers) {
                for (const Entity* pReferrer : referrers)
                    instance.referrers.emplace(attribute.sName, data.iIdFromEntity(*pReferrer));
                return false;
            });
    }
    // Ascending, so that numbers which are dealt only now, to missing instances, do not depend on the list's order.
    std::map<std::size_t, const Entity*> byNumber;
    for (const Entity* pEntity : data.entities()) byNumber.emplace(data.iIdFromEntity(*pEntity), pEntity);
    for (auto& [iId, instance] : text) instance.sStatement = byNumber.at(iId)->sWriteLine(data);
    return text;
}

// Records as sortable text, without the instance.
inline std::string sRecordText(const Errors::ErrorRecord& record) {
    return std::to_string(record.severity) + '|' + std::to_string(record.category) + '|' + record.description + '|' +
           record.lineString.value_or("(no text)") + '|' + std::to_string(record.lineNumber);
}

inline std::multiset<std::string> recordTexts(const Errors& errors) {
    std::multiset<std::string> texts;
    for (const Errors::ErrorRecord& record : errors.records()) texts.insert(sRecordText(record));
    return texts;
}

// A file, read.
struct ReadFileModel {
    File file;
    io::ReadError errors;
    bool boRead = false;

    ReadFileModel(const std::string& text, bool boSingleThreaded, const SchemaFromName& schemaFromName,
                  bool boKeepIds = true) {
        std::istringstream in(text);
        boRead = file.boRead(in, schemaFromName, errors, boKeepIds, {}, boSingleThreaded);
    }
};

inline bool boHasKey(const Errors& errors, const char* sKey) {
    return std::ranges::any_of(errors.records(), [&](const auto& record) { return record.key == sKey; });
}

// Which of two equal GUIDs is the second depends on timing, so those reports only count; for a bad GUID each read
// makes up one of its own, so that is masked. The rest is compared to the byte.
inline std::multiset<std::string> comparableRecords(const Errors& errors) {
    std::multiset<std::string> texts;
    for (const Errors::ErrorRecord& record : errors.records())
        texts.insert(record.key == "Error_DuplicateGuids" ? record.description : sRecordText(record));
    return texts;
}

inline ModelText comparableModel(const ReadFileModel& model) {
    ModelText text = modelText(model.file.data());
    for (const Errors::ErrorRecord& record : model.errors.records()) {
        if (!record.entity || record.key != "Error_ExpectedValidGuidValueFor") continue;
        const auto [first, last] = text.equal_range(model.file.data().iIdFromEntity(*record.entity));
        for (auto place = first; place != last; ++place) {
            std::string& sStatement = place->second.sStatement;
            const std::size_t iOpen = sStatement.find("('");
            if (iOpen != std::string::npos) sStatement.replace(iOpen, 26, "(random");
        }
    }
    return text;
}

}   // namespace oxa::ifc
