// SPDX-License-Identifier: Apache-2.0
// VerbTable: "oxaifc table": models as tables, as a database, a folder or a workbook.

#include <algorithm>
#include <filesystem>
#include <future>
#include <memory>
#include <ostream>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Model/Error.h"
#include "Tables/Sqlite.h"
#include "Tables/Tables.h"
#include "Tables/TextFiles.h"
#include "Tables/Xlsx.h"
#include "oxaifc/formats/ElementModel.h"
#include "oxaifc/io/Failure.h"
#include "oxaifc/io/Output.h"
#include "oxaifc/io/Target.h"
#include "oxaifc/report/Sheet.h"
#include "oxaifc/verbs/Several.h"
#include "oxaifc/verbs/Verb.h"
#include "platform/Path.h"

namespace oxa::tool {

namespace {

struct TableVerbOptions : ModelOptions {
    std::vector<std::string> paths;
    std::string sOut, sForm;
    std::vector<std::string> only, also;   // names of tables
};

// A sink with its end.
struct OpenSink {
    std::unique_ptr<tables::TableSink> pSink;
    std::function<void()> finish;
};

template <class Sink, class... Args>
OpenSink opened(Args&&... args) {
    auto pSink = std::make_unique<Sink>(std::forward<Args>(args)...);
    Sink* const pOpen = pSink.get();
    return {std::move(pSink), [pOpen] { pOpen->finish(); }};
}

// A text that holds one table, in a file or on standard output.
OpenSink openedText(const std::string& sOut, tables::TextForm eForm) {
    auto pTarget = std::make_shared<Target>(sOut);
    auto pSink = std::make_unique<tables::TextFiles>(pTarget->stream(), eForm);
    return {std::move(pSink), [pTarget] { pTarget->vFinish(); }};
}

OpenSink openSqlite(const std::string& sOut) { return opened<tables::SqliteFile>(str::pathOf(sOut)); }

OpenSink openXlsx(const std::string& sOut) {
    auto pSink = std::make_unique<tables::XlsxFile>(str::pathOf(sOut));
    auto* const pOpen = pSink.get();
    return {std::move(pSink), [pOpen] { vFinish(*pOpen); }};
}

template <tables::TextForm eForm>
OpenSink openText(const std::string& sOut) {
    const bool boFile = sOut == "-" || str::pathOf(sOut).has_extension();
    return boFile ? openedText(sOut, eForm) : opened<tables::TextFiles>(str::pathOf(sOut), eForm);
}

struct FormRow {
    const char* pWord;
    std::vector<std::string_view> ends;   // of a name; the first form takes names without an end, which are folders
    OpenSink (*open)(const std::string& sOut);
    bool boPipe;   // whether it can go to standard output
};
const std::vector<FormRow>& forms() {
    static const std::vector<FormRow> rows{
        {"csv", {".csv", ""}, openText<tables::TextForm::Csv>, true},
        {"ndjson", {".ndjson", ".jsonl"}, openText<tables::TextForm::JsonLines>, true},
        {"sqlite", {".sqlite", ".sqlite3", ".db"}, openSqlite, false},
        {"xlsx", {".xlsx"}, openXlsx, false},
    };
    return rows;
}

const FormRow& formOf(const TableVerbOptions& options) {
    const std::string sEnd = sEndOf(options.sOut);
    std::string sEnds;
    for (const FormRow& row : forms()) {
        if (options.sForm.empty() ? std::ranges::find(row.ends, sEnd) != row.ends.end() : options.sForm == row.pWord) {
            if (options.sOut != "-" || row.boPipe) return row;
            throw Failure(fmt::format("table: {} can't go to standard output", row.pWord));
        }
        for (const std::string_view end : row.ends)
            if (!end.empty()) sEnds += fmt::format("{}{}", sEnds.empty() ? "" : ", ", end);
    }
    throw Failure(fmt::format("table: {}: its end is none of {}; -f says the form", sPrintable(options.sOut), sEnds));
}

// The names of the tables. That of files comes last, since the checksum is made meanwhile.
std::vector<std::string> namesOf(const TableVerbOptions& options, const FormRow& form) {
    std::vector<std::string> names = options.only.empty() ? tables::usualTables() : options.only;
    names.insert(names.end(), options.also.begin(), options.also.end());
    const bool boText = form.boPipe && (options.sOut == "-" || str::pathOf(options.sOut).has_extension());
    if (boText && names.size() != 1)
        throw Failure(fmt::format("table: {} holds one table; --only names it", sPrintable(options.sOut)));
    std::stable_partition(names.begin(), names.end(), [](const std::string& sName) { return sName != "file"; });
    return names;
}

void vWrite(TableVerbOptions& options, const std::vector<std::string>& names, ElementModel& file,
            tables::TableSink& sink) {
    tables::FileInfo info = tables::fileInfo(options.sPath);
    if (options.sPath == "-") info = {.file = "standard input", .path = {}};
    info.records = file.file().errors();
    std::shared_future<std::string> sum;
    if (info.sha256 && std::ranges::find(names, "file") != names.end()) {
        sum = std::async(std::launch::async | std::launch::deferred, info.sha256).share();
        info.sha256 = [sum] { return sum.get(); };
    }
    tables::write(file.model(), info, sink, names);
}

int iTable(TableVerbOptions& options, Output&) try {
    if (options.paths.size() < 2) throw Failure("table: OUT is required");
    options.sOut = options.paths.back();
    options.paths.pop_back();
    const FormRow& form = formOf(options);
    const std::vector<std::string> names = namesOf(options, form);
    if (std::set<std::string>(options.paths.begin(), options.paths.end()).size() < options.paths.size())
        throw Failure("table: a file is named twice");
    for (const std::string& sPath : options.paths)
        if (boSameFile(sPath, options.sOut))
            throw Failure(fmt::format("{}: is the file that is read", sPrintable(options.sOut)));
    OpenSink sink;
    const int iCode = iForEachFile(options.paths, [&](const std::string& sPath) {
        options.sPath = sPath;
        ElementModel file(options);
        if (!sink.pSink) sink = form.open(options.sOut);   // once there is something to write
        try {
            vWrite(options, names, file, *sink.pSink);
        } catch (const NameError& fault) {
            throw Failure(fmt::format("{}: {}", file.file().sName(), sPrintable(fault.what())));
        } catch (const ValueError& fault) {
            throw Failure(fmt::format("{}: {}", file.file().sName(), sPrintable(fault.what())));
        }
        return file.iExitCode();
    });
    if (sink.pSink) sink.finish();
    return iCode;
} catch (const FileError& error) {
    throw Failure(sPrintable(error.what()));
}

VerbRun declare(Command command) {
    const auto pOptions = std::make_shared<TableVerbOptions>();
    pOptions->vDeclareSeveral(command, pOptions->paths);
    // FILE takes all words; this tells what the last of them is.
    command
        .option("OUT", pOptions->sOut,
                "x.sqlite or .xlsx; a folder for CSV; .csv or .ndjson for one table; - for standard output")
        .value("");
    const auto list = [command](const char* pName, std::vector<std::string>& names, const char* pHelp) {
        command.option(pName, names, pHelp).value("A,B").oneEach(',');
    };
    list("-t,--only", pOptions->only,
         "these tables: element, property ..., or a class as IfcWall; default all but reference");
    list("--with", pOptions->also, "these tables too");
    std::vector<std::string> words;
    for (const FormRow& row : forms()) words.emplace_back(row.pWord);
    command.option("-f,--format", pOptions->sForm, "what to write; default by the end of OUT")
        .oneOf(words)
        .value("csv|ndjson|sqlite|xlsx");
    return [pOptions](Output& output) { return iTable(*pOptions, output); };
}

}   // namespace

extern const Verb g_verbTable{"table", "Models as tables: elements, properties and so on, for other engines", declare};

}   // namespace oxa::tool
