// SPDX-License-Identifier: Apache-2.0
// ModelWrite: writes what a verb read, or a part of it, to its OUT.
//
// For      verbs with an OUT. All of them tell what went wrong in the same words and with the same exit codes.
// Errors   Failure, and no OUT, for a model that was not read to its end, for one with errors or read in part whose
//          file OUT would replace, for one that the format can't hold, and for what the system can't write.
// Threads  one; a write starts and joins its own.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Convert/Patch.h"
#include "Format/Ifc/IfcFileError.h"
#include "oxaifc/formats/Format.h"
#include "oxaifc/formats/FormatJob.h"
#include "oxaifc/formats/Model.h"
#include "oxaifc/io/Target.h"

namespace oxa::tool {

// What every verb with an OUT takes.
struct WriteOptions : ModelOptions {
    std::string sOut;                     // "-" is standard output
    std::string sFormat;                  // the format's word; empty: OUT's name decides
    std::vector<const Format*> formats;   // that the verb writes
    const Format* pOpen = nullptr;        // of an OUT whose name says none; null: that of IN
    ifc::WriteOrder eOrder = ifc::WriteOrder::Number;
    bool boOrderAsked = false;   // the caller named one

    // Adds IN, FILE's name here, and the options of a read.
    void vDeclareIn(Command command) { vDeclare(command, "IN"); }
    // Adds OUT, which comes last on the command line, and what help says of all these verbs. "order" is what --order says
    // of the order that there is without it.
    void vDeclareOut(Command command, const char* pNoOrder = "number (without this option), as their numbers rise");
    // Adds --format, for a verb that writes these; "pOtherwise" where neither that nor OUT's name says one, null: the
    // format of IN.
    void vDeclareFormat(Command command, std::vector<const Format*> written, const Format* pOtherwise);
};

class ModelWrite {
public:
    // Opens OUT. To be made before the read, so that a folder that can't be written is told at once.
    explicit ModelWrite(const WriteOptions& options);
    ~ModelWrite();

    // What OUT becomes; null until vWrite where that is the format of IN.
    [[nodiscard]] const Format* pFormat() const noexcept { return m_pFormat; }

    // How messages call OUT.
    [[nodiscard]] const std::string& sTarget() const noexcept { return m_target.sName(); }

    // Writes the file, with the numbers of the model and in the order that was asked for: "pRoot" and what it reaches
    // over references and inverse lists, or everything for null. A format that holds no more than what the project
    // reaches holds that. Nothing at all to write is no failure.
    void vWrite(Model& model, const ifc::Entity* pRoot);

    // Failure where OUT would replace what could not be read: vWrite asks it, vPatch does not.
    void vLossCheck(const Model& model) const;

    // Whether vPatch can write it: both files are exchange structures, and nobody asks for another order of statements.
    [[nodiscard]] bool boPatches(const Model& model) const;
    // Writes what was read, which boKeepSource kept, with these changes of the model and all else byte for byte. Nothing
    // of it is lost, so that an IN with errors may be replaced by itself.
    // Errors   Failure, for a changed statement that can't be told from others.
    convert::Patched vPatch(Model& model, const convert::Edits& edits);

    // Tells on standard error what the format left out, each entity by its number.
    void vLeftOutTell(const Model& model) const;
    // Tells the errors of the read and the write on standard error, those of the write with their instances, and
    // without those that the read told of the same instance. The exit code of the verb. Those of the read are left out
    // without boRead, for a verb that writes several files.
    int iTell(const Model& model, bool boRead = true) const;
    // Calls visit for each entity of the model that has no statement in OUT.
    void vForEachUnwritten(const Model& model, const std::function<void(const ifc::Entity&)>& visit) const;

private:
    const WriteOptions& m_options;
    const Format* m_pFormat;
    Target m_target;
    std::unique_ptr<ifc::io::WriteError> m_pErrors;
    std::vector<std::size_t> m_written;   // numbers, ascending
    std::vector<LeftOut> m_leftOut;
};

// Failure for a model that was not read to its end, which says that OUT, as messages call it, is not written.
void vReadCheck(const Model& model, const std::string& sOut);

// The line that tells how far a write is.
[[nodiscard]] std::function<std::string(unsigned)> writeProgress(const WriteJob& job);

}   // namespace oxa::tool
