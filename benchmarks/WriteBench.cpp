// SPDX-License-Identifier: Apache-2.0
// WriteBench FILE [ROUNDS]: how fast a model is written, against what the machine can do with the same bytes.
//
// Timed     the write of all entities of a model that was read before, to a stream that keeps nothing, so that no
//           disk is measured.
// Rows      a plain fwrite of the written bytes to /dev/null and the plain byte-wise splitter over them as
//           reference points; the write on one thread and on several, as the walk comes and by number.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>

#include "BenchModel.h"
#include "BenchTable.h"
#include "Format/Ifc/IfcWriteFile.h"

using namespace oxa::bench;

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: WriteBench FILE [ROUNDS]\n");
        return 2;
    }
    std::ifstream in(argv[1], std::ios::binary);
    const std::string source(std::istreambuf_iterator<char>(in), {});
    Model model;
    model.boRead(source);
    const Data& data = model.file.data();
    io::WriteError errors;
    std::ostringstream kept;
    if (!data.boWrite(kept, errors, true)) {
        std::fprintf(stderr, "%s: no entities\n", argv[1]);
        return 2;
    }
    const std::string text = kept.str();
    const auto write = [&](bool boSingleThreaded) {
        NullStream out;
        data.boWrite(out, errors, boSingleThreaded);
    };
    const auto writeByNumber = [&](bool boSingleThreaded) {
        NullStream out;
        io::WriteFile::boWrite(data, nullptr, out, errors,
                               {.boSingleThreaded = boSingleThreaded, .eOrder = WriteOrder::Number});
    };
    std::size_t iSink = 0;
    std::vector<Row> rows{
        {"fwrite to /dev/null",
         [&] {
             if (std::FILE* pNull = std::fopen("/dev/null", "wb")) {
                 iSink += std::fwrite(text.data(), 1, text.size(), pNull);
                 std::fclose(pNull);
             }
         },
         {},
         {}},
        {"plain splitter", [&] { iSink += iPlainSplit(text); }, {}, {}},
        {"write", [&] { write(true); }, {}, {}},
        {"write, threaded", [&] { write(false); }, {}, {}},
        {"write by number", [&] { writeByNumber(true); }, {}, {}},
        {"write by number, threaded", [&] { writeByNumber(false); }, {}, {}},
    };
    vRunRounds(rows, argc > 2 ? std::atoi(argv[2]) : 7);
    vPrintRates(rows, static_cast<double>(text.size()), rows[1]);
    std::printf("%zu entities, %.1f MB (%zu)\n", data.entities().size(), static_cast<double>(text.size()) / 1e6,
                iSink % 10);
    return 0;
}
