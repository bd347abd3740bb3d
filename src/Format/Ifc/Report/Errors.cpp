// SPDX-License-Identifier: Apache-2.0
#include "Format/Ifc/IfcFileError.h"

#include <algorithm>
#include <ostream>
#include <utility>

#include "platform/Localization.h"

namespace oxa::ifc {

namespace {

constexpr std::string_view g_place = "%1";

// Every "%1" of "text" becomes "argument", from left to right; what was put in is not looked at again.
void vArgumentFill(std::string& text, std::string_view argument) {
    for (std::size_t i = text.find(g_place); i != std::string::npos; i = text.find(g_place, i + argument.size()))
        text.replace(i, g_place.size(), argument);
}

}   // namespace

Errors::Errors() = default;
Errors::~Errors() = default;

void Errors::add(const Entity* entity, Severity severity, Category category, std::string_view key,
                 SourceText lineString, unsigned lineNumber) {
    vStore({entity, severity, category, localize("Ifc", key), std::move(lineString), lineNumber, 0, 0, {}}, key);
}

void Errors::add(const Entity* entity, Severity severity, Category category, std::string_view key,
                 std::string_view argument, SourceText lineString, unsigned lineNumber) {
    std::string description = localize("Ifc", key);
    const std::size_t iBegin = description.find(g_place);
    const bool boPlace = iBegin != std::string::npos;
    vArgumentFill(description, argument);
    vStore({entity,
            severity,
            category,
            std::move(description),
            std::move(lineString),
            lineNumber,
            boPlace ? static_cast<std::uint32_t>(iBegin) : 0,
            boPlace ? static_cast<std::uint32_t>(argument.size()) : 0,
            {}},
           key);
}

void Errors::vStore(ErrorRecord&& record, std::string_view key) {
    if (!record.lineString) record.lineString = std::string();
    const std::lock_guard lock(m_mutex);
    if (record.severity == Fatal) m_boFatal.store(true, std::memory_order_relaxed);
    auto known = m_keys.find(key);
    if (known == m_keys.end()) known = m_keys.emplace(key, std::string(key)).first;
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
