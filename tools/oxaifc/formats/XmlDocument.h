// SPDX-License-Identifier: Apache-2.0
// XmlDocument: ifcXML documents, as far as the library's import and export leave something to tell.
//
// For      FormatIfcXml.
// Errors   Failure, in one line, for what is no ifcXML that can be read.
// Threads  one import at a time in a process; it is the library's rule.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>

#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileError.h"
#include "Format/Ifc/Xml/IfcXmlExport.h"
#include "Format/Ifc/Xml/IfcXmlImport.h"

namespace oxa::tool {

// True for bytes that begin as XML: "<" behind a byte order mark and white space, in UTF-8 or UTF-16.
[[nodiscard]] bool boBeginsAsXml(std::string_view bytes) noexcept;

// A document that is read: boLoad, then vImport.
class XmlInput : public ifc::xml::Import {
public:
    // sName is how messages call the document.
    explicit XmlInput(std::string sName) : m_sName(std::move(sName)) {}

    // Why the document can't be parsed; empty when it was.
    [[nodiscard]] std::string sLoad(std::istream& stream);

    // Builds the model, with the numbers of the document. "errors" gets a record for each instance that an
    // element refers to where the document has not defined it so far. All else that the import passes over
    // is not reported.
    void vImport(ifc::File& file, const ifc::SchemaFromName& schemas, ifc::Errors& errors);

private:
    void vReferencesCheck(ifc::Errors& errors) const;

    std::string m_sName;
};

// A document that is written.
class XmlOutput : public ifc::xml::Export {
public:
    // How many elements stand inside one another, the root included. XmlInput takes g_iDepthLimit at most.
    [[nodiscard]] std::size_t iDepth() const;
    static const std::size_t g_iDepthLimit;
};

}   // namespace oxa::tool
