// SPDX-License-Identifier: Apache-2.0
// ModelWrite: writes what a verb read, or a part of it, to its OUT.
//
// For      verbs with an OUT. All of them tell what went wrong in the same words and with the same exit codes.
// Errors   Failure, and no OUT, for a model that was not read to its end, for one with errors or out of ifcXML
//          whose file OUT would replace, for one that ifcXML can't hold, and for what the system can't write.
// Threads  one; a write starts and joins its own.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Format/Ifc/IfcFileError.h"
#include "oxaifc/formats/FileForm.h"
#include "oxaifc/formats/Model.h"
#include "oxaifc/io/Target.h"

namespace oxa::tool {

// What every verb with an OUT takes.
struct WriteOptions : ModelOptions {
    std::string sOut;              // "-" is standard output
    std::string sFormat;           // the form's word; empty: OUT's name decides
    std::vector<FileForm> forms;   // that the verb writes
    ifc::WriteOrder eOrder = ifc::WriteOrder::Number;

    // Adds IN, FILE's name here, and the options of a read.
    void vDeclareIn(CLI::App& command) { vDeclare(command, "IN"); }
    // Adds OUT, which comes last on the command line, and what help says of all these verbs.
    void vDeclareOut(CLI::App& command);
    // Adds --format, for a verb that writes these forms.
    void vDeclareFormat(CLI::App& command, std::vector<FileForm> written);
};

class ModelWrite {
public:
    // Opens OUT. To be made before the read, so that a folder that can't be written is told at once.
    explicit ModelWrite(const WriteOptions& options);
    ~ModelWrite();

    // True where OUT becomes ifcXML: the project and what it reaches, of schema IFC4.
    [[nodiscard]] bool boXml() const noexcept { return m_eForm == FileForm::IfcXml; }
    // What the name of OUT or --format asks for.
    [[nodiscard]] FileForm form() const noexcept { return m_eForm; }

    // Each writes one file, with the numbers of the model and in the order that was asked for. "pRoot" and what it
    // reaches over references and inverse lists, or everything for null. Nothing at all to write is no failure.
    void vExchangeWrite(Model& model,
                        const ifc::Entity* pRoot);               // ISO 10303-21; ifcXML, from the project on
    void vSimpleWrite(Model& model, const ifc::Entity* pRoot);   // the simple text form
    // Everything, in the form that OUT is to have, else in the one that was read; for ifcXML with a word about what
    // it leaves out.
    void vSameWrite(Model& model);

    // Tells on standard error what ifcXML left out, each entity by its number.
    void vXmlLeftOutTell(const Model& model) const;
    // Tells the errors of the read and the write on standard error, those of the write with their instances, and
    // without those that the read told of the same instance. The exit code of the verb.
    int iTell(const Model& model) const;
    // True for an entity with a statement in OUT; not for ifcXML.
    [[nodiscard]] bool boWritten(const Model& model, const ifc::Entity& entity) const;

private:
    class Statements;

    void vCheck(const Model& model) const;
    void vStatementsWrite(Model& model, const ifc::Entity* pRoot);
    void vXmlWrite(Model& model);
    [[nodiscard]] std::size_t iLeftOut(ifc::ReportKey eKey) const;
    // The records of that key, by type: "           2  IFCMATERIAL  #3 #7", the most frequent first.
    [[nodiscard]] std::string sLeftOutRows(const Model& model, ifc::ReportKey eKey) const;

    const WriteOptions& m_options;
    FileForm m_eForm;
    Target m_target;
    std::unique_ptr<ifc::io::WriteError> m_pErrors;
    std::unique_ptr<ifc::io::WriteError> m_pLeftOut;   // a record for each entity that ifcXML lacks
    std::vector<std::size_t> m_written;                // numbers, ascending
};

}   // namespace oxa::tool
