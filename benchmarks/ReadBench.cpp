// ReadBench FILE [ROUNDS]: how fast a file is read, against what the machine can do with the same bytes.
//
// Timed     from the first byte in memory to the finished model; opening the file and freeing the model are not.
// Rows      memchr for ";" and a plain byte-wise splitter as reference points; the scan alone (a model without a
//           schema takes no statement), the read without completion (the file ends before ENDSEC), the whole read.
// Memory    of a fresh process that reads the file once.
#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>
#include <string_view>

#include "BenchTable.h"
#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileError.h"

namespace {

using namespace oxa::ifc;

// Reads from memory without a copy.
class MemoryStream final : public std::istream {
public:
    explicit MemoryStream(std::string_view text) : std::istream(nullptr) {
        m_buffer.vSet(text);
        rdbuf(&m_buffer);
    }

private:
    struct Buffer final : std::streambuf {
        void vSet(std::string_view text) {
            char* pText = const_cast<char*>(text.data());
            setg(pText, pText, pText + text.size());
        }
    } m_buffer;
};

std::size_t iSemicolons(std::string_view text) {
    std::size_t iCount = 0;
    for (const char* p = text.data(); (p = static_cast<const char*>(
                                           std::memchr(p, ';', static_cast<std::size_t>(text.data() + text.size() - p))));
         ++p)
        ++iCount;
    return iCount;
}

// The measure: a splitter as anyone would write it, strings and comments looked at, each statement copied without
// its blanks.
std::size_t iPlainSplit(std::string_view text) {
    std::size_t iStatements = 0;
    std::string statement;
    bool boString = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (boString) {
            boString = c != '\'';
            statement += c;
        } else if (c == '\'') {
            boString = true;
            statement += c;
        } else if (c == '/' && i + 1 < text.size() && text[i + 1] == '*') {
            i = std::min(text.find("*/", i + 2), text.size() - 2) + 1;
        } else if (c == ';') {
            statement += c;
            ++iStatements;
            statement.clear();
        } else if (c != ' ' && c != '\n' && c != '\r') {
            statement += c;
        }
    }
    return iStatements;
}

struct Model {
    File file;
    std::unique_ptr<io::ReadError> pError = io::ReadError::pAllocate();

    bool boRead(std::string_view text, bool boSingleThreaded = true) {
        MemoryStream in(text);
        return file.boRead(in, {}, *pError, true, {}, boSingleThreaded);
    }
};

// Resident bytes of this process by /proc: "VmRSS:" now or "VmHWM:" at the peak.
double residentBytes(const char* sField) {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line))
        if (line.rfind(sField, 0) == 0) return std::strtod(line.c_str() + std::strlen(sField), nullptr) * 1024;
    return 0;
}

struct Memory {
    double after = 0;
    double peak = 0;
};

// In a child, so that nothing of this process is counted.
Memory memoryOfRead(const char* sPath, bool boSingleThreaded) {
    int ends[2];
    Memory memory;
    if (pipe(ends) != 0) return memory;
    if (fork() == 0) {
        const double before = residentBytes("VmRSS:");
        std::ifstream in(sPath, std::ios::binary);
        auto pModel = std::make_unique<Model>();
        pModel->file.boRead(in, {}, *pModel->pError, true, {}, boSingleThreaded);
        malloc_trim(0);
        memory = {residentBytes("VmRSS:") - before, residentBytes("VmHWM:") - before};
        const bool boWritten = write(ends[1], &memory, sizeof memory) == static_cast<ssize_t>(sizeof memory);
        _exit(boWritten ? 0 : 1);
    }
    close(ends[1]);
    if (read(ends[0], &memory, sizeof memory) != static_cast<ssize_t>(sizeof memory)) memory = {};
    close(ends[0]);
    wait(nullptr);
    return memory;
}

}   // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: ReadBench FILE [ROUNDS]\n");
        return 2;
    }
    const Memory memory = memoryOfRead(argv[1], true);
    std::ifstream in(argv[1], std::ios::binary);
    const std::string text(std::istreambuf_iterator<char>(in), {});
    const std::size_t iData = text.find("DATA;");
    const std::size_t iEnd = text.rfind("ENDSEC");
    if (iData == std::string::npos || iEnd == std::string::npos) {
        std::fprintf(stderr, "%s: no DATA section\n", argv[1]);
        return 2;
    }
    const std::string headless = "ISO-10303-21;" + text.substr(iData);
    const std::string endless = text.substr(0, iEnd);

    std::size_t iSink = 0;
    std::optional<Model> model;
    const auto fresh = [&model] { model.emplace(); };
    std::vector<oxa::bench::Row> rows{
        {"memchr for \";\"", [&] { iSink += iSemicolons(text); }, {}, {}},
        {"plain splitter", [&] { iSink += iPlainSplit(text); }, {}, {}},
        {"scan alone", [&] { model->boRead(headless); }, fresh, {}},
        {"read without completion", [&] { model->boRead(endless); }, fresh, {}},
        {"whole read", [&] { model->boRead(text); }, fresh, {}},
    };
    oxa::bench::vRunRounds(rows, argc > 2 ? std::atoi(argv[2]) : 7);
    oxa::bench::vPrintRates(rows, static_cast<double>(text.size()), rows[1]);

    const auto& entities = model->file.data().entities();
    const auto count = static_cast<double>(std::max<std::size_t>(entities.size(), 1));
    std::vector<oxa::bench::Row> completion{
        {"inverse building", [&] { for (Entity* p : entities) p->vAttributeInverseInit(model->file.data()); },
         [&] { for (Entity* p : entities) p->attributeInverseClear(); }, {}},
        {"sorting", [&] { iSink += model->file.data().entities().size(); },
         [&] { model->file.data().pEntityCreate(oxa::ifc::def::schema::ObjectName("IFCPROPERTYSINGLEVALUE")); }, {}},
    };
    oxa::bench::vRunRounds(completion, argc > 2 ? std::atoi(argv[2]) : 7);
    for (const auto& row : completion)
        std::printf("%-36s %10.1f ns per entity\n", row.sName.c_str(), row.median() * 1e9 / count);
    std::printf("%-36s %10.2f bytes per byte\n%-36s %10.2f bytes per byte\n", "memory after the read",
                memory.after / static_cast<double>(text.size()), "memory at the peak",
                memory.peak / static_cast<double>(text.size()));
    std::printf("%zu entities, %.1f MB (%zu)\n", entities.size(), static_cast<double>(text.size()) / 1e6, iSink % 10);
    return 0;
}
