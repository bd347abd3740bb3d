// SPDX-License-Identifier: Apache-2.0
// Records of faults: from any thread, each with its text made once, when it is stored.
#include "Format/Ifc/IfcFileError.h"

#include <algorithm>
#include <ostream>
#include <utility>

#include "Format/Ifc/Report/ReportKeys.h"
#include "platform/Localization.h"

namespace oxa::ifc {

namespace {

constexpr std::string_view g_place = "%1";

// Every "%1" of "text" becomes "argument", from left to right; a "%1" inside of the argument stays.
void vArgumentFill(std::string& text, std::string_view argument) {
    for (std::size_t i = text.find(g_place); i != std::string::npos; i = text.find(g_place, i + argument.size()))
        text.replace(i, g_place.size(), argument);
}

}   // namespace

// What a description is made of.
struct Errors::Message {
    explicit Message(ReportKey eOfKey) : key(reportKeyText(eOfKey)), reportKey(eOfKey) {}
    Message(ReportKey eOfKey, std::string_view sArgument) : Message(eOfKey) { argument = sArgument; }
    explicit Message(std::string_view sKey) : key(sKey), reportKey(reportKeyFromText(sKey)) {}
    Message(std::string_view sKey, std::string_view sArgument) : Message(sKey) { argument = sArgument; }

    // The text, and the place of the argument in it.
    void vDescribe(ErrorRecord& record) const {
        record.description = localize("Ifc", key);
        record.reportKey = reportKey;
        if (!argument) return;
        const std::size_t iBegin = record.description.find(g_place);
        if (iBegin == std::string::npos) return;
        vArgumentFill(record.description, *argument);
        record.argumentBegin = static_cast<std::uint32_t>(iBegin);
        record.argumentLength = static_cast<std::uint32_t>(argument->size());
    }

    std::string_view key;
    std::optional<ReportKey> reportKey;
    std::optional<std::string_view> argument{};
};

Errors::Errors() = default;
Errors::~Errors() = default;

void Errors::add(const Entity* entity, ReportKey eKey, SourceText lineString, unsigned lineNumber) {
    const report::KeyRow& row = report::keyRow(eKey);
    vStore(Message(eKey), entity, row.eSeverity, row.eCategory, std::move(lineString), lineNumber);
}

void Errors::add(const Entity* entity, ReportKey eKey, std::string_view argument, SourceText lineString,
                 unsigned lineNumber) {
    const report::KeyRow& row = report::keyRow(eKey);
    vStore(Message(eKey, argument), entity, row.eSeverity, row.eCategory, std::move(lineString), lineNumber);
}

void Errors::add(const Entity* entity, Severity severity, Category category, ReportKey eKey, SourceText lineString,
                 unsigned lineNumber) {
    vStore(Message(eKey), entity, severity, category, std::move(lineString), lineNumber);
}

void Errors::add(const Entity* entity, Severity severity, Category category, ReportKey eKey, std::string_view argument,
                 SourceText lineString, unsigned lineNumber) {
    vStore(Message(eKey, argument), entity, severity, category, std::move(lineString), lineNumber);
}

void Errors::add(const Entity* entity, Severity severity, Category category, std::string_view key,
                 SourceText lineString, unsigned lineNumber) {
    vStore(Message(key), entity, severity, category, std::move(lineString), lineNumber);
}

void Errors::add(const Entity* entity, Severity severity, Category category, std::string_view key,
                 std::string_view argument, SourceText lineString, unsigned lineNumber) {
    vStore(Message(key, argument), entity, severity, category, std::move(lineString), lineNumber);
}

// The text is made before the lock is taken: threads that report at the same time only take turns for the list. Keys
// are kept once each, so that a record's view of its key stays good whatever the caller passed.
void Errors::vStore(const Message& message, const Entity* entity, Severity severity, Category category,
                    SourceText&& lineString, unsigned lineNumber) {
    ErrorRecord record;
    record.entity = entity;
    record.severity = severity;
    record.category = category;
    record.lineString = lineString ? std::move(lineString) : SourceText(std::string());
    record.lineNumber = lineNumber;
    message.vDescribe(record);
    const std::lock_guard lock(m_mutex);
    if (severity == Fatal) m_boFatal.store(true, std::memory_order_relaxed);
    auto known = m_keys.find(message.key);
    if (known == m_keys.end()) known = m_keys.emplace(message.key, std::string(message.key)).first;
    record.key = known->second;
    m_records.push_back(std::move(record));
}

Errors::LostStatements Errors::lostStatements() const {
    const std::lock_guard lock(m_mutex);
    return m_lost;
}

void Errors::vLostAdd(std::size_t iCount, unsigned iFirstLine) {
    if (iCount == 0) return;
    const std::lock_guard lock(m_mutex);
    m_lost.iFirstLine = m_lost.iCount == 0 ? iFirstLine : std::min(m_lost.iFirstLine, iFirstLine);
    m_lost.iCount += iCount;
}

void Errors::vErrorsWrite(std::ostream& out) const {
    for (const ErrorRecord& record : m_records) {
        out << record.description << '\t';
        if (record.lineString) out << *record.lineString;
        out << '\n';
    }
}

std::unique_ptr<io::ReadError> io::ReadError::pAllocate() { return std::make_unique<ReadError>(); }

std::unique_ptr<io::WriteError> io::WriteError::pAllocate() { return std::make_unique<WriteError>(); }

}   // namespace oxa::ifc
