// SPDX-License-Identifier: Apache-2.0
// TableBench FILE [ROUNDS]: what tables of a model cost, against reading it.
//
// Timed     whole processes, a fresh one each: the read, with all threads, and behind it what the row says; the end of the
//           model is not. What is written goes to the folder for temporary files.
// Rows      Arrow: the stream of the properties; CSV, JSON lines, SQLite: the usual tables; SQL: a join of two tables with a
//           filter.
// Figures   wall clock, time of all processors and the highest resident memory, each with its ratio to the read alone.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "Tables/Arrow.h"
#include "Tables/Sql.h"
#include "Tables/Sqlite.h"
#include "Tables/TextFiles.h"

namespace {

namespace fs = std::filesystem;
namespace tables = oxa::tables;

struct Cost {
    double wall = 0;
    double processors = 0;
    double memory = 0;
};

double seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

// Of a child that does this work; the program ends where the child fails.
Cost cost(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    const pid_t iChild = fork();
    if (iChild == 0) {
        try {
            work();
            _exit(0);
        } catch (const std::exception& error) {
            std::fprintf(stderr, "%s\n", error.what());
            _exit(1);
        }
    }
    int iStatus = 0;
    rusage usage{};
    if (wait4(iChild, &iStatus, 0, &usage) != iChild || iStatus != 0) std::exit(1);
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
    return {wall.count(), seconds(usage.ru_utime) + seconds(usage.ru_stime), static_cast<double>(usage.ru_maxrss)};
}

struct Row {
    const char* pName;
    std::function<void(const oxa::Model& model)> run;
    std::vector<Cost> costs{};

    [[nodiscard]] double median(double Cost::*pField) const {
        std::vector<double> sorted;
        for (const Cost& one : costs) sorted.push_back(one.*pField);
        std::ranges::sort(sorted);
        return sorted[sorted.size() / 2];
    }
};

void vArrow(const oxa::Model& model, const tables::FileInfo& file) {
    ArrowArrayStream stream{};
    tables::stream(model, file, "property", &stream);
    for (;;) {
        ArrowArray batch{};
        if (stream.get_next(&stream, &batch) != 0 || !batch.release) break;
        batch.release(&batch);
    }
    stream.release(&stream);
}

template <class Sink>
void vWrite(const oxa::Model& model, const tables::FileInfo& file, Sink&& sink) {
    tables::write(model, file, sink);
    sink.finish();
}

void vSql(const oxa::Model& model, const tables::FileInfo& file) {
    tables::Sql sql;
    sql.add(model, file);
    sql.run("SELECT e.name, p.value_text FROM element e JOIN property p ON p.element_id = e.id "
            "WHERE e.type LIKE 'IfcWall%' AND p.name = 'IsExternal'",
            {.begin = {}, .row = [](const std::vector<oxa::Cell>&) { return true; }});
}

std::vector<Row> rowsOf(const std::string& sFile, const fs::path& folder) {
    const tables::FileInfo file = tables::fileInfo(sFile);
    const auto texts = [file, folder](tables::TextForm eForm) {
        return [=](const oxa::Model& model) { vWrite(model, file, tables::TextFiles(folder, eForm)); };
    };
    return {
        {"read", [](const oxa::Model&) {}},
        {"Arrow, property", [file](const oxa::Model& model) { vArrow(model, file); }},
        {"CSV", texts(tables::TextForm::Csv)},
        {"JSON lines", texts(tables::TextForm::JsonLines)},
        {"SQLite",
         [file, folder](const oxa::Model& model) { vWrite(model, file, tables::SqliteFile(folder / "all.sqlite")); }},
        {"SQL, a join", [file](const oxa::Model& model) { vSql(model, file); }},
    };
}

}   // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: TableBench FILE [ROUNDS]\n");
        return 2;
    }
    const std::string sFile = argv[1];
    const int iRounds = argc > 2 ? std::atoi(argv[2]) : 5;
    const fs::path folder = fs::temp_directory_path() / ("oxaifc-bench-" + std::to_string(getpid()));
    fs::create_directory(folder);
    std::vector<Row> rows = rowsOf(sFile, folder);
    for (int iRound = 0; iRound < iRounds; ++iRound)
        for (Row& row : rows)
            row.costs.push_back(cost([&] {
                const oxa::Model model = oxa::Model::open(sFile);
                row.run(model);
                std::fflush(nullptr);
                _exit(0);   // the end of the model is not timed
            }));
    fs::remove_all(folder);
    std::printf("%-18s %16s %18s %18s\n", "", "wall, s", "processors, s", "memory, MB");
    for (const Row& row : rows) {
        std::printf("%-18s", row.pName);
        for (const auto& [pField, unit] :
             {std::pair{&Cost::wall, 1.}, {&Cost::processors, 1.}, {&Cost::memory, 1. / 1024}})
            std::printf(" %9.2f (%.2f)", row.median(pField) * unit, row.median(pField) / rows.front().median(pField));
        std::printf("\n");
    }
    return 0;
}
