// ModelWrite: writes what a verb read, or a part of it, to its OUT.
//
// For      verbs with an OUT. All of them tell what went wrong in the same words and with the same exit codes.
// Errors   Failure, and no OUT, for a model that was not read to its end, for one with errors whose file OUT would
//          replace, and for what the system can't write.
// Threads  one; a write starts and joins its own.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Format/Ifc/IfcFileError.h"
#include "oxaifc/Model.h"
#include "oxaifc/Target.h"

namespace oxa::tool {

// What every verb with an OUT takes.
struct WriteOptions : ModelOptions {
    std::string sOut;   // "-" is standard output

    // Adds IN, FILE's name here, and the options of a read.
    void vDeclareIn(CLI::App& command) { vDeclare(command, "IN"); }
    // Adds OUT, which comes last on the command line, and what help says of all these verbs.
    void vDeclareOut(CLI::App& command);
};

class ModelWrite {
public:
    // Opens OUT. To be made before the read, so that a folder that can't be written is told at once.
    explicit ModelWrite(const WriteOptions& options);
    ~ModelWrite();

    // Each writes one file, with the numbers of the model. "pRoot" and what it reaches over references and inverse
    // lists, or everything for null. Nothing at all to write is no failure.
    void vExchangeWrite(Model& model, const ifc::Entity* pRoot);   // ISO 10303-21
    void vSimpleWrite(Model& model, const ifc::Entity* pRoot);     // the simple text form
    // Everything, in the form that was read.
    void vSameWrite(Model& model);

    // Tells the errors of the read and the write on standard error. The exit code of the verb.
    int iTell(const Model& model) const;
    // True for an entity with a statement in OUT.
    [[nodiscard]] bool boWritten(const Model& model, const ifc::Entity& entity) const;

private:
    class Statements;

    void vCheck(const Model& model) const;
    void vStatementsWrite(Model& model, const ifc::Entity* pRoot);

    const WriteOptions& m_options;
    Target m_target;
    std::unique_ptr<ifc::io::WriteError> m_pErrors;
    std::vector<std::uint32_t> m_written;   // numbers, ascending
};

}   // namespace oxa::tool
