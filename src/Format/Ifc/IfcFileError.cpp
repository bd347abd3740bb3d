#include "Format/Ifc/IfcFileError.h"

#include <algorithm>
#include <ostream>
#include <utility>

#include "platform/Localization.h"

namespace oxa::ifc {

namespace {

// Every "%1" of "text" becomes "argument", from left to right; what was put in is not looked at again.
void vArgumentFill(std::string& text, std::string_view argument) {
    constexpr std::string_view place = "%1";
    for (std::size_t i = text.find(place); i != std::string::npos; i = text.find(place, i + argument.size()))
        text.replace(i, place.size(), argument);
}

}   // namespace

Errors::Errors() = default;
Errors::~Errors() = default;

void Errors::add(const Entity* entity, Severity severity, Category category, std::string_view key,
                 SourceText lineString, unsigned lineNumber) {
    vStore({entity, severity, category, localize("Ifc", key), std::move(lineString), lineNumber});
}

void Errors::add(const Entity* entity, Severity severity, Category category, std::string_view key,
                 std::string_view argument, SourceText lineString, unsigned lineNumber) {
    std::string description = localize("Ifc", key);
    vArgumentFill(description, argument);
    vStore({entity, severity, category, std::move(description), std::move(lineString), lineNumber});
}

void Errors::vStore(ErrorRecord&& record) {
    if (!record.lineString) record.lineString = std::string();
    const std::lock_guard lock(m_mutex);
    if (record.severity == Fatal) m_boFatal.store(true, std::memory_order_relaxed);
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
