// SPDX-License-Identifier: Apache-2.0
/// @file
/// IfcXmlImport: from an ifcXML document to a model.
///
/// Reads what IfcXmlExport writes, and is no general reader of ifcXML: what else a document holds is passed over,
/// mostly without a word. Instances keep their numbers, "i123" becomes instance 123.
///
///     read back      values as XML attributes, references as nested elements, selects, lists of reals as one text,
///                    lists of instances, inverse relations
///     not read back  a reference as an XML attribute ("i123"), a value as an element, a list of selects with values in
///                    it, a "ref" to an instance that the document defines later
///
/// - Usage: construct, boLoad, boImportHeader, boImportData.
/// - Numbers are known to all imports of the process: a "ref" to one that the document did not define is the instance
///   that an earlier import gave this number, as long as the model of that import lives.
/// - Threads: one import at a time in a process.
#pragma once

#include <functional>
#include <iosfwd>
#include <memory>
#include <string>

#include "platform/Export.h"
#include "schema/Schema.h"

namespace oxa::xml {
class File;
}   // namespace oxa::xml

namespace oxa::ifc {
class Data;
class FileBase;
}   // namespace oxa::ifc

namespace oxa::ifc::xml {

/// The document of an import.
class OXA_IFC_API ImportCommon {
public:
    ImportCommon();
    ~ImportCommon();
    ImportCommon(const ImportCommon&) = delete;
    ImportCommon& operator=(const ImportCommon&) = delete;

    ///@{
    /// Parses a document in place of the former one; the path is UTF-8. False when it can't be read or is no
    /// well-formed XML, and for more than oxa::xml::File::g_iDepthLimit elements inside one another.
    bool boLoad(const std::string& path) const;
    bool boLoad(std::istream& in) const;
    ///@}

protected:
    std::unique_ptr<oxa::xml::File> m_pFile;   ///< the document, empty before boLoad; made by Import
};

/// The import of a model.
class OXA_IFC_API Import : public ImportCommon {
public:
    Import();

    /// Finds the schema by the document's namespace, sets it in "file", and fills a FileHeader.
    ///
    /// @param schemaFromName  gets the word of the namespace, as "IFC4"; empty: the built-in schemas are asked.
    /// @return false without a document, for another namespace, and for a word without a schema
    bool boImportHeader(FileBase& file, std::function<def::SchemaPset*(const std::string&)> schemaFromName);

    /// Builds the instances and completes the model, numbers kept. Once more, and all are built and added once more.
    /// False without a document; what can't be read is left out, and nobody is told.
    bool boImportData(Data& data);
};

}   // namespace oxa::ifc::xml
