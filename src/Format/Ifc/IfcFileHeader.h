// FileHeader: the HEADER section of an ISO 10303-21 file (clause 8), in its three records.
//
// For      File, the scanner and the writer; the ifcXML export and import, which use the fields; library
//          users who read a header or fill one for a new file.
// Reading  is forgiving: a statement is cut at its top-level commas and one character is taken off each end
//          of a field, whatever it is; a field too short for that is an empty text. Only a statement without
//          ";" and one of an unknown kind are reported.
// Threads  one at a time for each object.
#pragma once

#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Format/Ifc/IfcFileHeaderBase.h"
#include "platform/DateTime.h"
#include "platform/Export.h"

namespace oxa::ifc {

class OXA_IFC_API FileHeader : public FileHeaderBase, public std::enable_shared_from_this<FileHeader> {
public:
    // FILE_DESCRIPTION. Texts are UTF-8.
    struct OXA_IFC_API Description {
        std::vector<std::string> descriptions;
        std::string implementationLevel = "2;1";

        Description();
        Description(std::vector<std::string> const& sDescriptions, std::string const& sImplementationLevel);

        // The operations named boInit take the parameters of one statement.
        //
        // line           the statement
        // start, length  where its parameters stand, with both parentheses. What lies outside the line is no
        //                part of the range.
        // fields         missing ones keep their value, further ones are ignored; lists are added to
        // returns        true
        bool boInit(std::string&& line, unsigned long long start, unsigned long long length);

        // The operations named vSave write one statement with a line end, and flush. "scratch" is a buffer
        // for the text conversion. oxa::str::exception where a text is no UTF-8.
        void vSave(std::ostream& out, std::string& scratch) const;

        // Makes "ViewDefinition [<viewName>]" the first description, instead of all that begin so.
        void setViewDefinitionName(std::string const& viewName);
    };

    // FILE_NAME. Texts are UTF-8.
    struct OXA_IFC_API Name {
        std::string name;
        std::string timeStamp;   // ISO 8601 date and time
        std::vector<std::string> author;
        std::vector<std::string> organization;
        std::string preprocessorVersion;
        std::string originatingSystem;
        std::string authorization;

        bool boInit(std::string&& line, unsigned long long start, unsigned long long length);
        void vSave(std::ostream& out, std::string& scratch) const;

        // Fills the record for a new file: the current time, one further author and organization, and the
        // preprocessor and authorization of this library.
        void vInit(std::string const& sName, std::string const& sAuthor, std::string const& sOrganization,
                   std::string const& sOriginatingSystem);
    };

    // FILE_SCHEMA.
    struct OXA_IFC_API Schema {
        std::string schemaName;   // the first name, as written in the file: converted in neither direction

        bool boInit(std::string&& line, unsigned long long start, unsigned long long length);
        void vSave(std::ostream& out) const;
    };

    Description description;
    Name name;
    Schema schema;
    bool boMarked = false;   // the owner's own mark; no operation here reads or sets it

    FileHeader();
    ~FileHeader() override;
    FileHeader(const FileHeader&);
    FileHeader(FileHeader&&) noexcept;
    FileHeader& operator=(const FileHeader&);
    FileHeader& operator=(FileHeader&&) noexcept;

    // Takes one statement. Reports Error_MissingSemicolon or Error_HeaderTypeNotImplemented. Always true.
    bool boReadLine(std::string&& line, io::ReadError& errors, unsigned int lineNumber) override;

    // Writes "HEADER;" to "ENDSEC;". Always false, unlike the simple form: the result says nothing.
    bool boWrite(std::ostream& out, io::WriteError& errors) const override;

    void vSchemaNameSet(std::string sName) override;
    [[nodiscard]] std::string sSchemaNameGet() const override;

    // Reads a text that begins with the line "HEADER;", statements each on lines of their own. Empty where it
    // begins otherwise or ends in something else than "ENDSEC;". An empty text gives a default header. A
    // quote behind a backslash does not end a string here: a text that ends in a directive leaves it open.
    [[nodiscard]] static std::optional<FileHeader> parseFromString(std::string_view text);

    // What boWrite() writes.
    [[nodiscard]] std::string writeToString() const;

    // name.timeStamp as a date; an assertion and the null date where it is none.
    [[nodiscard]] oxa::datetime::DateTime getCreatedTimestamp() const;
};

}   // namespace oxa::ifc
