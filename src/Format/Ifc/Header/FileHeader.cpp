// SPDX-License-Identifier: Apache-2.0
// The header section of a STEP file: its three statements from text and back, and the section as a text of its own.
// Reading tests neither quotes nor parentheses: whatever stands in their place is taken off, and a field that is
// missing leaves the header's value.
#include "Format/Ifc/IfcFileHeader.h"

#include <algorithm>
#include <cstddef>
#include <ostream>
#include <sstream>
#include <utility>

#include "Format/Ifc/IfcFileError.h"
#include "Format/Ifc/IfcStepStrings.h"
#include "Format/Ifc/Text/Parameters.h"
#include "platform/Assert.h"

namespace oxa::ifc {

namespace {

// ---- Reading: a statement is cut into fields, a field into items, by the same knife. ----

// A view without its first and last character: parentheses or quotes, unseen. Empty for less than three.
std::string_view sInside(std::string_view text) {
    return text.size() > 2 ? text.substr(1, text.size() - 2) : std::string_view{};
}

// Calls takeField(iField, sField) for every field between the first and the last character of "text".
template <class TakeField>
void vSplit(std::string_view text, TakeField&& takeField) {
    const std::string_view inside = sInside(text);
    std::size_t iField = 0;
    details::vForEachItem(text.data(), inside.data(), inside.data() + inside.size(),
                          [&](const char* first, const char* last) {
                              takeField(iField++, std::string_view(first, static_cast<std::size_t>(last - first)));
                          });
}

// The quotes of an item are not tested for. The byte behind the inside is the closing one, as the codec asks.
void vReadText(std::string_view sField, std::string& out) {
    const std::string_view inside = sInside(sField);
    vIfcStrToUtf8(out, inside.data(), inside.size());
}

// '' and $ leave what was there before.
void vReadTextUnlessEmpty(std::string_view sField, std::string& out) {
    if (sField.size() > 2) vReadText(sField, out);
}

void vReadList(std::string_view sField, std::vector<std::string>& list) {
    vSplit(sField, [&list](std::size_t, std::string_view sItem) { vReadText(sItem, list.emplace_back()); });
}

std::string_view sParameters(std::string_view line, unsigned long long start, unsigned long long length) {
    if (start >= line.size()) return {};
    return line.substr(static_cast<std::size_t>(start),
                       static_cast<std::size_t>(std::min<unsigned long long>(length, line.size() - start)));
}

// ---- Writing ----

void vWriteText(std::ostream& out, const std::string& text, std::string& scratch) {
    out << '\'' << sIfcStrFromText(scratch, text) << '\'';
}

// With the comma behind it, as no list is the last parameter.
void vWriteList(std::ostream& out, const std::vector<std::string>& list, std::string& scratch) {
    out << '(';
    for (const std::string& item : list) {
        if (&item != &list.front()) out << ',';
        vWriteText(out, item, scratch);
    }
    out << "),";
}

// ---- The header as a text of its own ----

constexpr std::string_view g_headerBegin = "HEADER;";
constexpr std::string_view g_headerEnd = "ENDSEC;";

// White space of the "C" locale, whichever the process has.
constexpr bool boBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

void vTrim(std::string& text) {
    const auto pEnd = std::find_if_not(text.rbegin(), text.rend(), boBlank).base();
    text.erase(pEnd, text.end());
    text.erase(text.begin(), std::find_if_not(text.begin(), text.end(), boBlank));
}

// Collects statements byte by byte: a line feed outside strings and parentheses ends one.
class StatementScanner {
public:
    enum class Step { More, StatementEnds };

    // Takes one byte. On StatementEnds the statement is complete in buffer(), and the caller clears it.
    Step take(char c) {
        if (c == '\r') {
            m_boEscaped = false;
            return Step::More;
        }
        const bool boWasEscaped = std::exchange(m_boEscaped, c == '\\' && m_boInString);
        if (c == '\'' && !boWasEscaped) m_boInString = !m_boInString;
        if (!m_boInString) {
            if (c == '(') ++m_iDepth;
            if (c == ')' && m_iDepth > 0) --m_iDepth;
            if (c == '\n' && m_iDepth == 0) return Step::StatementEnds;
            if (boBlank(c)) return Step::More;
        }
        m_buffer += c;
        return Step::More;
    }

    std::string& buffer() { return m_buffer; }

private:
    std::string m_buffer;
    std::size_t m_iDepth = 0;
    bool m_boInString = false;
    bool m_boEscaped = false;   // the byte before was a backslash in a string, of a pair or not
};

}   // namespace

// ---- FILE_DESCRIPTION ----

FileHeader::Description::Description() = default;

FileHeader::Description::Description(const std::vector<std::string>& sDescriptions,
                                     const std::string& sImplementationLevel)
    : descriptions(sDescriptions),
      implementationLevel(sImplementationLevel) {}

bool FileHeader::Description::boInit(std::string&& line, unsigned long long start, unsigned long long length) {
    vSplit(sParameters(line, start, length), [this](std::size_t iField, std::string_view sField) {
        if (iField == 0) vReadList(sField, descriptions);
        if (iField == 1) vReadTextUnlessEmpty(sField, implementationLevel);
    });
    return true;
}

void FileHeader::Description::vSave(std::ostream& out, std::string& scratch) const {
    out << "FILE_DESCRIPTION(";
    vWriteList(out, descriptions, scratch);
    vWriteText(out, implementationLevel, scratch);
    out << ");" << std::endl;
}

void FileHeader::Description::setViewDefinitionName(const std::string& viewName) {
    static constexpr std::string_view prefix = "ViewDefinition";
    std::string sItem = std::string(prefix) + " [" + viewName + "]";
    std::erase_if(descriptions, [](const std::string& item) { return item.starts_with(prefix); });
    descriptions.insert(descriptions.begin(), std::move(sItem));
}

// ---- FILE_NAME ----

bool FileHeader::Name::boInit(std::string&& line, unsigned long long start, unsigned long long length) {
    vSplit(sParameters(line, start, length), [this](std::size_t iField, std::string_view sField) {
        switch (iField) {
        case 0: return vReadTextUnlessEmpty(sField, name);
        case 1: return vReadTextUnlessEmpty(sField, timeStamp);
        case 2: return vReadList(sField, author);
        case 3: return vReadList(sField, organization);
        case 4: return vReadText(sField, preprocessorVersion);   // alone in that '' empties it
        case 5: return vReadTextUnlessEmpty(sField, originatingSystem);
        case 6: return vReadTextUnlessEmpty(sField, authorization);
        default: return;
        }
    });
    return true;
}

void FileHeader::Name::vSave(std::ostream& out, std::string& scratch) const {
    out << "FILE_NAME(";
    vWriteText(out, name, scratch);
    out << ',';
    vWriteText(out, timeStamp, scratch);
    out << ',';
    vWriteList(out, author, scratch);
    vWriteList(out, organization, scratch);
    vWriteText(out, preprocessorVersion, scratch);
    out << ',';
    vWriteText(out, originatingSystem, scratch);
    out << ',';
    vWriteText(out, authorization, scratch);
    out << ");" << std::endl;
}

void FileHeader::Name::vInit(const std::string& sName, const std::string& sAuthor, const std::string& sOrganization,
                             const std::string& sOriginatingSystem) {
    datetime::DateTime now;
    now.vSetNow();
    name = sName;
    timeStamp = datetime::DateTimeFormat(datetime::SpecialFormat::Iso).toString(now);
    author.push_back(sAuthor);
    organization.push_back(sOrganization);
    preprocessorVersion = "OXA_IFC v3.0";
    originatingSystem = sOriginatingSystem;
    authorization = "OXA";
}

// ---- FILE_SCHEMA ----

// The first field, "('IFC4')", without two characters at each end. Commas inside of it do not part it.
bool FileHeader::Schema::boInit(std::string&& line, unsigned long long start, unsigned long long length) {
    vSplit(sParameters(line, start, length), [this](std::size_t iField, std::string_view sField) {
        if (iField == 0 && sField.size() >= 5) schemaName = sInside(sInside(sField));
    });
    return true;
}

void FileHeader::Schema::vSave(std::ostream& out) const {
    out << "FILE_SCHEMA(('" << schemaName << "'));" << std::endl;
}

// ---- The section ----

FileHeader::FileHeader() = default;
FileHeader::~FileHeader() = default;
FileHeader::FileHeader(const FileHeader&) = default;
FileHeader::FileHeader(FileHeader&&) noexcept = default;
FileHeader& FileHeader::operator=(const FileHeader&) = default;
FileHeader& FileHeader::operator=(FileHeader&&) noexcept = default;

// A statement is known by its keyword anywhere in the text, so whatever a faulty file has in front of it does no harm.
bool FileHeader::boReadLine(std::string&& line, io::ReadError& errors, unsigned int lineNumber) {
    const std::size_t iSemicolon = line.rfind(';');
    if (iSemicolon == std::string::npos) {
        errors.add(nullptr, ReportKey::MissingSemicolon, std::move(line), lineNumber);
        return true;
    }
    // The parameters behind "keyword", up to the semicolon; none where the semicolon comes first.
    std::size_t iStart = 0;
    std::size_t iLength = 0;
    const auto boFind = [&](std::string_view keyword) {
        const std::size_t iKeyword = line.find(keyword);
        if (iKeyword == std::string::npos) return false;
        iStart = iKeyword + keyword.size();
        iLength = iSemicolon > iStart ? iSemicolon - iStart : 0;
        return true;
    };
    // A field behind the last one that the statement has is no part of the header.
    const auto vTake = [&](auto& statement, std::size_t iFields) {
        vSplit(sParameters(line, iStart, iLength), [&](std::size_t iField, std::string_view) {
            if (iField == iFields) errors.vPassedOverAdd(lineNumber);
        });
        statement.boInit(std::move(line), iStart, iLength);
    };
    if (boFind("FILE_DESCRIPTION"))
        vTake(description, 2);
    else if (boFind("FILE_NAME"))
        vTake(name, 7);
    else if (boFind("FILE_SCHEMA"))
        vTake(schema, 1);
    else
        errors.add(nullptr, ReportKey::HeaderTypeNotImplemented, std::move(line), lineNumber);
    return true;
}

bool FileHeader::boWrite(std::ostream& out, io::WriteError&) const {
    std::string scratch;
    out << g_headerBegin << std::endl;
    description.vSave(out, scratch);
    name.vSave(out, scratch);
    schema.vSave(out);
    out << g_headerEnd << std::endl;
    return false;
}

void FileHeader::vSchemaNameSet(std::string sName) { schema.schemaName = std::move(sName); }

std::string FileHeader::sSchemaNameGet() const { return schema.schemaName; }

// Here statements end at line feeds, unlike in a file: a header that was written by writeToString() has one a line. The
// first one has to be "HEADER;"; what stands behind "ENDSEC;" is not read.
std::optional<FileHeader> FileHeader::parseFromString(std::string_view text) {
    FileHeader header;
    StatementScanner scanner;
    std::string& buffer = scanner.buffer();
    unsigned int iStatement = 0;
    for (const char c : text) {
        if (scanner.take(c) == StatementScanner::Step::More) continue;
        vTrim(buffer);
        if (iStatement == 0 && buffer != g_headerBegin) return std::nullopt;
        if (iStatement != 0) {
            if (buffer == g_headerEnd) break;
            io::ReadError errors;   // of this statement alone; only a fatal one matters
            header.boReadLine(std::move(buffer), errors, iStatement);
            if (errors.boFatal()) return std::nullopt;
        }
        buffer.clear();
        ++iStatement;
    }
    if (!buffer.empty() && buffer != g_headerEnd) return std::nullopt;
    return header;
}

std::string FileHeader::writeToString() const {
    std::ostringstream out;
    out.exceptions(std::ios::badbit);   // else a lack of memory would cut the text off without a word
    io::WriteError errors;
    boWrite(out, errors);
    return out.str();
}

datetime::DateTime FileHeader::getCreatedTimestamp() const {
    const auto created = datetime::DateTimeFormat(datetime::SpecialFormat::IsoParse).fromString(name.timeStamp);
    if (created) return *created;
    Assert::vTell("Format/Ifc/IfcFileHeader", "oxa::ifc::FileHeader::getCreatedTimestamp",
                  "Not able to read timestamp from ifc file header");
    return datetime::DateTime::null();
}

}   // namespace oxa::ifc
