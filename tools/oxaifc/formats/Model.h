// SPDX-License-Identifier: Apache-2.0
// Model: a file that a verb was called with, read.
//
// For      verbs with a FILE: ModelOptions gives them the options of a read, Model reads.
// Errors   Failure, for what can't be read as bytes, and for XML that is no ifcXML; errors of the text are in
//          errors().
// Threads  one; a read starts and joins its own.
#pragma once

#include <cstdint>
#include <istream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileError.h"
#include "oxaifc/formats/FileOpen.h"
#include "oxaifc/formats/Format.h"
#include "oxaifc/formats/SchemaSource.h"
#include "oxaifc/io/Input.h"

namespace oxa::tool {

// What every verb with a FILE takes.
struct ModelOptions {
    std::string sPath;   // "-" is standard input
    std::vector<std::string> schemaPaths;
    bool boSingleThreaded = false;
    UnpackOption unpack;
    bool boStatementOrder = false;   // note in which order statements stand
    bool boKeepSource = false;       // what was read can be read again: Model::source

    // Adds them to a verb, the file under this name. This object must live until the command line is parsed.
    void vDeclare(Command command, const char* pFileName = "FILE");
    // The same for a verb that takes any number of files; which of them sPath is, the verb says for each read.
    void vDeclareSeveral(Command command, std::vector<std::string>& paths);

private:
    void vDeclareRead(Command command);
};

class Model {
public:
    // Reads the file as the format that its first bytes or the end of its name say (formatOfInput). With boKeepIds its
    // instance numbers are kept.
    Model(const ModelOptions& options, bool boKeepIds);
    ~Model();
    Model(const Model&) = delete;
    Model& operator=(const Model&) = delete;

    // Hands the file over; it has to live as long as this, which goes on to look at it.
    [[nodiscard]] std::unique_ptr<ifc::FileBase> pFileTake() noexcept { return std::move(m_pOwned); }

    [[nodiscard]] ifc::FileBase& file() noexcept { return *m_pFile; }
    [[nodiscard]] const ifc::Data& data() const noexcept { return m_pFile->dataBase(); }
    // The format that it was read as.
    [[nodiscard]] const Format& format() const noexcept { return *m_pFormat; }
    // The header of an exchange structure or of an ifcXML document; null for the simple form.
    [[nodiscard]] const ifc::FileHeader* pHeader() const noexcept { return m_pHeader; }
    // The header of the simple form; null for the others.
    [[nodiscard]] const ifc::FileHeaderSimple* pHeaderSimple() const noexcept { return m_pHeaderSimple; }
    // The schema's own name; as the file spells it where no schema is known by that; empty where it tells none.
    [[nodiscard]] std::string sSchemaName() const { return m_pFile->headerBase().sSchemaNameGet(); }

    // The bytes of a file with statements, from their begin, where boKeepSource asked for them: the file once more, or
    // the copy of a pipe. Failure where the system does not go back.
    [[nodiscard]] std::istream& source();
    // Closes that: some systems replace no file that is open.
    void vSourceClose() noexcept { m_pInput.reset(); }

    // What the read reported. Where it says only that the end was not found, the record says why instead.
    [[nodiscard]] const std::vector<ifc::ErrorRecord>& errors() const noexcept {
        return m_diagnosed.empty() ? m_pErrors->records() : m_diagnosed;
    }
    // What the model lacks and no error tells, by a fault inside or since the reading passes it over: "3 statements
    // were lost (the first at line 12): no memory or a fault inside". Empty where it is whole. It is told on standard
    // error too.
    [[nodiscard]] std::string sLost() const;
    // The same, counted.
    [[nodiscard]] ifc::Errors::LostStatements lostStatements() const;
    // Whether some of that was a fault inside: another read of the file may have another result.
    [[nodiscard]] bool boFaultInside() const { return m_pErrors->lostStatements().iCount > 0; }
    // What to say of a read without errors: "read without loss" where that is known.
    [[nodiscard]] std::string sNoErrors() const;
    // The result of the read.
    [[nodiscard]] bool boOk() const noexcept { return m_boOk; }
    // Whether the entities have the numbers of the file.
    [[nodiscard]] bool boIdsKept() const noexcept { return m_boIdsKept; }
    // The numbers of the file's statements as they stand, where that was asked for; of ifcXML none.
    [[nodiscard]] const std::vector<std::uint32_t>& statementNumbers() const noexcept { return m_statementNumbers; }
    // The exit code for a verb that has done its work.
    [[nodiscard]] int iExitCode() const;
    // How long the read took, opening aside.
    [[nodiscard]] double seconds() const noexcept { return m_seconds; }
    // The size of the file.
    [[nodiscard]] std::uint64_t iBytes() const noexcept { return m_iBytes; }
    // How messages call the file.
    [[nodiscard]] const std::string& sName() const noexcept { return m_sName; }

    // Failure for what was not read to its end, or has lost statements by a fault inside: which ones is not known, so
    // that it can't be what pVerb says, as "compared".
    void vWholeCheck(const char* pVerb) const;

private:
    SchemaSource m_schemas;
    const Format* m_pFormat = nullptr;
    std::unique_ptr<Input> m_pInput;   // kept for source()
    std::string m_sCopy;               // of what can't be read twice
    std::unique_ptr<std::istream> m_pCopy;
    std::unique_ptr<ifc::io::ReadError> m_pErrors;
    std::vector<ifc::ErrorRecord> m_diagnosed;   // empty where the read's own records say all
    std::unique_ptr<ifc::FileBase> m_pOwned;     // null once it is taken
    ifc::FileBase* m_pFile = nullptr;
    const ifc::FileHeader* m_pHeader = nullptr;               // of *m_pFile
    const ifc::FileHeaderSimple* m_pHeaderSimple = nullptr;   // likewise
    std::string m_sName;
    bool m_boIdsKept;
    bool m_boOk = false;
    std::vector<std::uint32_t> m_statementNumbers;
    double m_seconds = 0;
    std::uint64_t m_iBytes = 0;
};

}   // namespace oxa::tool
