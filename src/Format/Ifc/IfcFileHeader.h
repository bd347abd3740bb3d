// SPDX-License-Identifier: Apache-2.0
/// @file
/// FileHeader: the HEADER section of an ISO 10303-21 file (clause 8), in its three records.
///
/// - For: File, the scanner and the writer; the ifcXML export and import, which use the fields; library users who read
///   a header or fill one for a new file; hosts that show one in a property grid.
/// - Reading is forgiving: a statement is cut at its top-level commas and one character is taken off each end of a
///   field, whatever it is; a field too short for that is an empty text. Only a statement without ";" and one of an
///   unknown kind are reported.
/// - Threads: one at a time for each object.
#pragma once

#include <any>
#include <iosfwd>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Format/Ifc/Header/FileHeaderBase.h"
#include "platform/DateTime.h"
#include "platform/Export.h"
#include "platform/Object.h"

namespace oxa::ifc {

/// The header of an exchange structure: three records, read and set as they are.
class OXA_IFC_API FileHeader : public FileHeaderBase,
                               public std::enable_shared_from_this<FileHeader>,
                               public object::PropertyInterface {
public:
    /// FILE_DESCRIPTION. Texts are UTF-8.
    struct OXA_IFC_API Description {
        std::vector<std::string> descriptions;     ///< what the file holds, as "ViewDefinition [CoordinationView]"
        std::string implementationLevel = "2;1";   ///< of ISO 10303-21: edition, and conformance class

        Description();
        /// With both fields as given.
        Description(const std::vector<std::string>& sDescriptions, const std::string& sImplementationLevel);

        /// Takes the parameters of one statement: missing ones keep their value, further ones are ignored; lists are
        /// added to.
        ///
        /// @param line  the statement
        /// @param start,length  where its parameters stand, with both parentheses. What lies outside the line is no
        ///   part of the range.
        /// @return true
        bool boInit(std::string&& line, unsigned long long start, unsigned long long length);

        /// Writes one statement with a line end, and flushes. "scratch" is a buffer for the text conversion.
        void vSave(std::ostream& out, std::string& scratch) const;

        /// Makes "ViewDefinition [<viewName>]" the first description, instead of all that begin so.
        void setViewDefinitionName(const std::string& viewName);
    };

    /// FILE_NAME. Texts are UTF-8.
    struct OXA_IFC_API Name {
        std::string name;                        ///< of the file
        std::string timeStamp;                   ///< ISO 8601 date and time
        std::vector<std::string> author;         ///< who is responsible, each with or without an address
        std::vector<std::string> organization;   ///< that the authors belong to
        std::string preprocessorVersion;         ///< what wrote the file
        std::string originatingSystem;           ///< what the model comes from
        std::string authorization;               ///< who authorised that it is sent

        /// As Description::boInit.
        bool boInit(std::string&& line, unsigned long long start, unsigned long long length);
        /// As Description::vSave.
        void vSave(std::ostream& out, std::string& scratch) const;

        /// Fills the record for a new file: the current time, one further author and organization, and the
        /// preprocessor and authorization of this library.
        void vInit(const std::string& sName, const std::string& sAuthor, const std::string& sOrganization,
                   const std::string& sOriginatingSystem);
    };

    /// FILE_SCHEMA.
    struct OXA_IFC_API Schema {
        std::string schemaName;   ///< the first name, as written in the file: converted in neither direction

        /// As Description::boInit.
        bool boInit(std::string&& line, unsigned long long start, unsigned long long length);
        /// As Description::vSave.
        void vSave(std::ostream& out) const;
    };

    Description description;   ///< what the file holds
    Name name;                 ///< where it comes from
    Schema schema;             ///< what its DATA section is an instance of
    bool boMarked = false;     ///< the owner's own mark; no operation here reads or sets it

    /// Empty, with implementation level "2;1".
    FileHeader();
    ~FileHeader() override;
    ///@{
    /// Takes over all fields, the mark too. Nodes of a property grid stay with the object that they were made of.
    FileHeader(const FileHeader&);
    FileHeader(FileHeader&&) noexcept;
    FileHeader& operator=(const FileHeader&);
    FileHeader& operator=(FileHeader&&) noexcept;
    ///@}

    /// Takes one statement. Reports Error_MissingSemicolon or Error_HeaderTypeNotImplemented. Always true.
    bool boReadLine(std::string&& line, io::ReadError& errors, unsigned int lineNumber) override;

    /// Writes "HEADER;" to "ENDSEC;". Always false, unlike the simple form: the result says nothing.
    bool boWrite(std::ostream& out, io::WriteError& errors) const override;

    /// Sets schema.schemaName as it is given.
    void vSchemaNameSet(std::string sName) override;
    /// A copy of schema.schemaName; empty where none was set.
    [[nodiscard]] std::string sSchemaNameGet() const override;

    /// Reads a text that begins with the line "HEADER;", statements each on lines of their own. Empty where it
    /// begins otherwise or ends in something else than "ENDSEC;". An empty text gives a default header. A
    /// quote behind a backslash does not end a string here: a text that ends in a directive leaves it open.
    [[nodiscard]] static std::optional<FileHeader> parseFromString(std::string_view text);

    /// What boWrite() writes.
    [[nodiscard]] std::string writeToString() const;

    /// name.timeStamp as a date; an assertion and the null date where it is none.
    [[nodiscard]] oxa::datetime::DateTime getCreatedTimestamp() const;

    /// @name The header in a property grid: a tree to be read and not to be changed
    ///@{

    /// Three groups, "HeaderDescription", "HeaderName" and "HeaderSchema", with ten fields as their children. The
    /// names of the fields are those of the group, "_" and the field, as in "HeaderName_Author". Every node owns
    /// this object; the values are asked of it, so a grid shows what the header holds now.
    /// std::bad_weak_ptr where no std::shared_ptr holds this object.
    [[nodiscard]] std::vector<std::shared_ptr<fc::Property>> getProperties() const;

    /// The ids of the tree.
    [[nodiscard]] std::set<object::PropertyId> getAllProperties() const override;
    /// A std::string for every field. A list gives nothing where it is empty, its one item, or "(a), (b)"; a group
    /// and an unknown id give nothing.
    [[nodiscard]] std::any getValue(const object::PropertyId& id) const override;
    /// The labels of the tree, and that of the whole for "HeaderInfo".
    [[nodiscard]] std::string getPropertyName(const object::PropertyId& id) const override;
    /// Always true, though setValue() stores nothing.
    [[nodiscard]] bool isValueAllowed(const object::PropertyId& id, const std::any& value) const override;
    ///@}

    ///@{
    /// Nothing to tell of a header, nor to do to it: this gives the empty value of its type.
    [[nodiscard]] std::string getPropertiesObjectKey() const override;
    void setValue(const object::PropertyId& id, const std::any& value) override;
    [[nodiscard]] bool isValueEditable(const object::PropertyId& id) const override;
    [[nodiscard]] bool isValueInherited(const object::PropertyId& id) const override;
    [[nodiscard]] std::shared_ptr<PropertyInterface> getPropertyOwner(const object::PropertyId& id) const override;
    [[nodiscard]] bool isResetAllowed(const object::PropertyId& id) const override;
    void resetValue(const object::PropertyId& id) override;
    [[nodiscard]] std::string getPropertyDescription(const object::PropertyId& id) const override;
    [[nodiscard]] std::string getPropertyUnit(const object::PropertyId& id) const override;
    [[nodiscard]] std::string getPropertyFormat(const object::PropertyId& id) const override;
    [[nodiscard]] std::vector<std::any> getOfferedValues(const object::PropertyId& id) const override;
    [[nodiscard]] std::vector<std::string> getOfferedTexts(const object::PropertyId& id) const override;
    [[nodiscard]] std::vector<std::string> getOfferedIcons(const object::PropertyId& id) const override;
    [[nodiscard]] PropertyListener getPropertyListener(const object::PropertyId& id) const override;
    [[nodiscard]] std::vector<object::PropertyId> getDependentProperties(const object::PropertyId& id) const override;
    ///@}
};

}   // namespace oxa::ifc
