// SPDX-License-Identifier: Apache-2.0
#include "tools/ProgramRun.h"

#include <fstream>

#include "platform/Path.h"
#include "tools/WrittenFile.h"

namespace oxa::test {

ProgramRun runProgram(const std::vector<std::string>& words, std::string_view standardInput, OutputKind eOutput) {
    return runProgramAt(OXAIFC_PROGRAM, words, standardInput, eOutput);
}

ProgramRun runProgramAt(const std::string& sProgram, const std::vector<std::string>& words,
                        std::string_view standardInput, OutputKind eOutput) {
    const TestFolder folder;
    const std::filesystem::path in = str::pathOf(folder.sFile("in", standardInput));
    const ProgramStart start{sProgram, words, in, folder.path() / "out", folder.path() / "error", eOutput};
    ProgramRun run;
    run.iCode = iRun(start, run.sOut);
    if (eOutput == OutputKind::File) run.sOut = sContent(start.out);
    run.sError = sContent(start.error);
    return run;
}

TestFolder::TestFolder() : m_path(newFolder()) {}

TestFolder::~TestFolder() {
    std::error_code error;
    std::filesystem::remove_all(m_path, error);
}

std::string TestFolder::sFile(const std::string& sName, std::string_view text) const {
    const std::filesystem::path path = m_path / str::pathOf(sName);
    std::ofstream(path, std::ios::binary) << text;
    return str::sOfPath(path);
}

std::string sExchangeFile(std::string_view schema, std::string_view data) {
    return std::string("ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION(('d'),'2;1');\n"
                       "FILE_NAME('n','2024-05-17T09:30:00',('a'),('o'),'p','s','z');\nFILE_SCHEMA(('")
        .append(schema)
        .append("'));\nENDSEC;\nDATA;\n")
        .append(data)
        .append("ENDSEC;\nEND-ISO-10303-21;\n");
}

std::string sExample(std::string_view name) { return std::string(OXA_SOURCE_DIR "/examples/").append(name); }

}   // namespace oxa::test
