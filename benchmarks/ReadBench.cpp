// SPDX-License-Identifier: Apache-2.0
// ReadBench FILE [ROUNDS]: how fast a file is read, against what the machine can do with the same bytes.
// ReadBench --trace FILE [ROUNDS]: what the threads of a read do with their time.
//
// Timed     from the first byte in memory to the finished model; opening the file and freeing the model are not.
// Rows      memchr for ";" and a plain byte-wise splitter as reference points; the scan alone (a model without a
//           schema takes no statement), the read without completion (the file ends before ENDSEC), the whole read.
// Memory    of a fresh process that reads the file once.
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "BenchMemory.h"
#include "BenchModel.h"
#include "BenchTable.h"

namespace {

using namespace oxa::bench;

Memory memoryOfRead(const char* sPath, bool boSingleThreaded) {
    return memoryOf([&] {
        std::ifstream in(sPath, std::ios::binary);
        auto pModel = std::make_unique<Model>();
        pModel->file.boRead(in, {}, *pModel->pError, true, {}, boSingleThreaded);
        return pModel;
    });
}

// Of the fastest of some reads on several threads, a row a stage and a thread.
void vTrace(const std::string& text, int iRounds) {
    double best = 0;
    std::vector<ReadTrace::Row> rows;
    for (int i = 0; i < iRounds; ++i) {
        Model model;
        MemoryStream in(text);
        ReadTrace trace;
        const auto start = std::chrono::steady_clock::now();
        model.file.boRead(in, *model.pError, {.boKeepIds = true, .pTrace = &trace});
        const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
        if (i > 0 && wall.count() >= best) continue;
        best = wall.count();
        rows = std::move(trace.rows);
    }
    std::printf("%-20s %10s %10s %10s\n", "stage, thread", "busy, ms", "waits, ms", "MB");
    for (const ReadTrace::Row& row : rows)
        std::printf("%-17s %2zu %10.1f %10.1f %10.1f\n", row.pStage, row.iThread, row.busy * 1e3, row.waiting * 1e3,
                    static_cast<double>(row.iBytes) / 1e6);
    std::printf("%-20s %10.1f %10s %10.1f\n", "whole read", best * 1e3, "", static_cast<double>(text.size()) / 1e6);
}

}   // namespace

int main(int argc, char** argv) {
    const bool boTrace = argc > 1 && std::strcmp(argv[1], "--trace") == 0;
    argc -= boTrace;
    argv += boTrace;
    if (argc < 2) {
        std::fprintf(stderr, "usage: ReadBench [--trace] FILE [ROUNDS]\n");
        return 2;
    }
    if (boTrace) {
        std::ifstream traced(argv[1], std::ios::binary);
        vTrace({std::istreambuf_iterator<char>(traced), {}}, argc > 2 ? std::atoi(argv[2]) : 7);
        return 0;
    }
    const Memory memory = memoryOfRead(argv[1], true);
    const Memory threaded = memoryOfRead(argv[1], false);
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
    std::vector<Row> rows{
        {"memchr for \";\"", [&] { iSink += iSemicolons(text); }, {}, {}},
        {"plain splitter", [&] { iSink += iPlainSplit(text); }, {}, {}},
        {"scan alone", [&] { model->boRead(headless); }, fresh, {}},
        {"read without completion", [&] { model->boRead(endless); }, fresh, {}},
        {"whole read", [&] { model->boRead(text); }, fresh, {}},
        {"whole read, threaded", [&] { model->boRead(text, false); }, fresh, {}},
    };
    vRunRounds(rows, argc > 2 ? std::atoi(argv[2]) : 7);
    vPrintRates(rows, static_cast<double>(text.size()), rows[1]);

    const auto& entities = model->file.data().entities();
    const auto count = static_cast<double>(std::max<std::size_t>(entities.size(), 1));
    // clang-format off
    std::vector<Row> completion{
        {"inverse building", [&] { for (Entity* p : entities) p->vAttributeInverseInit(model->file.data()); },
         [&] { for (Entity* p : entities) p->attributeInverseClear(); }, {}},
        {"sorting", [&] { iSink += model->file.data().entities().size(); },
         [&] { model->file.data().pEntityCreate(oxa::ifc::def::schema::ObjectName("IFCPROPERTYSINGLEVALUE")); }, {}},
    };
    // clang-format on
    vRunRounds(completion, argc > 2 ? std::atoi(argv[2]) : 7);
    for (const auto& row : completion)
        std::printf("%-36s %10.1f ns per entity\n", row.sName.c_str(), row.median() * 1e9 / count);
    const auto size = static_cast<double>(text.size());
    std::printf("%-36s %10.2f bytes per byte\n%-36s %10.2f bytes per byte\n%-36s %10.2f bytes per byte\n",
                "memory after the read", memory.after / size, "memory at the peak", memory.peak / size,
                "memory at the peak, threaded", threaded.peak / size);
    std::printf("%zu entities, %.1f MB (%zu)\n", entities.size(), static_cast<double>(text.size()) / 1e6, iSink % 10);
    return 0;
}
