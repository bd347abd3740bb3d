// SPDX-License-Identifier: Apache-2.0
// VerbSql: "oxaifc sql": SELECT statements over models, once or at a prompt.

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iostream>
#include <list>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Model/Error.h"
#include "Tables/Sql.h"
#include "oxaifc/formats/ElementModel.h"
#include "oxaifc/io/Failure.h"
#include "oxaifc/io/Output.h"
#include "oxaifc/io/System.h"
#include "oxaifc/io/Target.h"
#include "oxaifc/report/Table.h"
#include "oxaifc/verbs/Several.h"
#include "oxaifc/verbs/Verb.h"
#include "platform/Path.h"

namespace oxa::tool {

namespace {

struct SqlOptions : ModelOptions {
    std::vector<std::string> words;   // paths, and behind them the statement
    std::string sStatement, sForm, sOut;
    double seconds = 0;
};

struct FormRow {
    const char* pWord;
    const char* pEnd;   // of a name
    TableForm eForm;
};
constexpr FormRow g_forms[] = {{"table", ".txt", TableForm::Text},
                               {"csv", ".csv", TableForm::Csv},
                               {"json", ".json", TableForm::JsonArray}};

TableForm formOf(const SqlOptions& options) {
    const std::string sEnd = str::sOfPath(str::pathOf(options.sOut).extension());
    for (const FormRow& row : g_forms)
        if (options.sForm.empty() ? sEnd == row.pEnd : options.sForm == row.pWord) return row.eForm;
    if (options.sOut.empty() || options.sOut == "-") return TableForm::Text;
    throw Failure(
        fmt::format("sql: {}: its end is none of .csv, .json and .txt; -f says the form", sPrintable(options.sOut)));
}

// A last word that names no file is the statement.
std::vector<std::string> pathsOf(SqlOptions& options) {
    std::vector<std::string> paths = options.words;
    std::error_code error;
    if (paths.size() > 1 && paths.back() != "-" && !std::filesystem::exists(str::pathOf(paths.back()), error)) {
        options.sStatement = paths.back();
        paths.pop_back();
    }
    if (std::set<std::string>(paths.begin(), paths.end()).size() < paths.size())
        throw Failure("sql: a file is named twice");
    return paths;
}

// Who ends the statement that runs when somebody presses Ctrl-C.
tables::Sql* g_pRunning = nullptr;
struct Interruptible {
    explicit Interruptible(tables::Sql& sql) {
        g_pRunning = &sql;
        vOnInterrupt([] { g_pRunning->interrupt(); });
    }
    ~Interruptible() {
        vOnInterrupt(nullptr);
        g_pRunning = nullptr;
    }
    Interruptible(const Interruptible&) = delete;
    Interruptible& operator=(const Interruptible&) = delete;
};

// The models with what they are asked by.
struct Session {
    std::list<ElementModel> files;   // for the schemas, which the elements need to the end
    tables::Sql sql;

    int iAdd(const SqlOptions& options) {
        ElementModel& file = files.emplace_back(options);
        tables::FileInfo info = tables::fileInfo(options.sPath);
        if (options.sPath == "-") info = {.file = "standard input", .path = {}};
        info.records = file.file().errors();
        sql.add(file.model(), info);
        return file.iExitCode();
    }

    // The rows of each statement as a table of its own.
    void vRun(const std::string& sStatement, const TableOptions& options,
              const std::function<bool(std::string_view)>& sink) {
        std::unique_ptr<Table> pTable;
        bool boWanted = true;
        const auto vEnd = [&] {
            if (pTable) pTable->vFinish();
            pTable.reset();
        };
        const Interruptible interruptible(sql);
        sql.run(sStatement, {.begin =
                                 [&](const std::vector<std::string>& columns) {
                                     vEnd();
                                     pTable = std::make_unique<Table>(
                                         options, columns, [&](std::string_view text) { boWanted = sink(text); });
                                 },
                             .row =
                                 [&](const std::vector<Cell>& row) {
                                     pTable->vRow(row);
                                     return boWanted;
                                 }});
        vEnd();
    }
};

// What is no statement begins with a point.
void vCommandRun(Session& session, const std::string& sLine, Output& output) {
    const std::string sWord = sLine.substr(0, sLine.find(' '));
    const std::string sName = sLine.size() > sWord.size() ? sLine.substr(sWord.size() + 1) : "";
    if (sWord == ".tables") {
        for (const tables::Table& table : session.sql.tables())
            output.vPrint("{:<16} {}\n", table.name, table.description);
        output.vPrint("and each class of the schema, as IfcWall\n");
    } else if (sWord == ".schema" && !sName.empty()) {
        output.vPrint("{}", tables::createStatement(session.sql.table(sName)));
    } else if (sWord == ".schema") {
        for (const tables::Table& table : session.sql.tables()) output.vPrint("{}", tables::createStatement(table));
    } else if (sWord == ".help") {
        output.vPrint("SELECT ...;       a statement, on as many lines as it takes\n"
                      ".tables           the tables\n"
                      ".schema [TABLE]   their columns\n"
                      ".quit             ends\n");
    } else {
        throw Failure(fmt::format("there is no {}; there are: .tables, .schema, .help, .quit", sPrintable(sWord)));
    }
}

// Statements as they are typed; a wrong one is told, and the next may come.
void vPrompt(Session& session, const TableOptions& options, Output& output) {
    std::string sStatement;
    output.vPrint("SELECT over {}; .help tells more\n", session.files.size() == 1
                                                            ? session.files.front().file().sName()
                                                            : sCounted(session.files.size(), "file"));
    for (std::string sLine;;) {
        output.vPrint("{}", sStatement.empty() ? "sql> " : "...> ");
        output.vFlush();
        if (!std::getline(std::cin, sLine)) break;
        try {
            if (sStatement.empty() && sLine.starts_with('.')) {
                if (sLine == ".quit" || sLine == ".exit") return;
                vCommandRun(session, sLine, output);
                continue;
            }
            sStatement += sLine + "\n";
            if (!tables::isWholeStatement(sStatement)) continue;
            session.vRun(std::exchange(sStatement, {}), options, [&](std::string_view text) {
                output.vPrint("{}", text);
                return true;
            });
        } catch (const Error& error) {
            output.vFlush();
            vTell(error.what());
        } catch (const Failure& failure) {
            vTell(failure.what());
        }
    }
    output.vPrint("\n");
}

int iSql(SqlOptions& options, Output& output) try {
    const std::vector<std::string> paths = pathsOf(options);
    TableOptions tableOptions{.eForm = formOf(options)};
    const bool boPrompt = options.sStatement.empty() && boIsTerminal(stdin);
    Session session;
    const int iCode = iForEachFile(paths, [&](const std::string& sPath) {
        options.sPath = sPath;
        return session.iAdd(options);
    });
    if (session.files.empty()) return iCode;
    session.sql.setTime(std::chrono::milliseconds(static_cast<std::int64_t>(options.seconds * 1000)));
    if (options.sStatement.empty() && !boPrompt) {
        if (std::ranges::find(paths, "-") != paths.end()) throw Failure("sql: STATEMENT is required");
        options.sStatement.assign(std::istreambuf_iterator<char>(std::cin), {});
    }
    std::unique_ptr<Target> pTarget;
    if (!options.sOut.empty() && options.sOut != "-")
        pTarget = std::make_unique<Target>(options.sOut);
    else if (output.boTerminal())
        tableOptions.iWidth = iTerminalWidth(stdout);
    if (pTarget && std::ranges::any_of(paths, [&](const std::string& sPath) { return pTarget->boIs(sPath); }))
        throw Failure(fmt::format("{}: is the file that is read", pTarget->sName()));
    if (boPrompt) {
        if (pTarget) throw Failure("sql: -o goes with a statement");
        vPrompt(session, tableOptions, output);
        return iCode;
    }
    session.vRun(options.sStatement, tableOptions, [&](std::string_view text) {
        if (pTarget) {
            pTarget->stream() << text;
            return pTarget->stream().good();
        }
        output.vPrint("{}", text);
        return output.boWanted();
    });
    if (pTarget) pTarget->vFinish();
    return iCode;
} catch (const Error& error) {
    throw Failure(fmt::format("sql: {}", sPrintable(error.what())));
}

VerbRun declare(Command command) {
    const auto pOptions = std::make_shared<SqlOptions>();
    pOptions->vDeclareSeveral(command, pOptions->words);
    // FILE takes all words; this tells what the last of them may be.
    command
        .option("STATEMENT", pOptions->sStatement,
                "\"SELECT ...\"; without it standard input has statements, or is a prompt")
        .value("");
    std::vector<std::string> forms;
    for (const FormRow& row : g_forms) forms.emplace_back(row.pWord);
    command.option("-f,--format", pOptions->sForm, "what to write; default by the end of OUT, else table")
        .oneOf(forms)
        .value("table|csv|json");
    command.option("-o,--output", pOptions->sOut, "a file to write, .csv, .json or .txt").value("OUT");
    command.option("--timeout", pOptions->seconds, "give up after so many seconds; default never")
        .within(0.001, 1e6)
        .value("S");
    return [pOptions](Output& output) { return iSql(*pOptions, output); };
}

}   // namespace

extern const Verb g_verbSql{"sql", "SELECT statements over models in memory, once or at a prompt", declare};

}   // namespace oxa::tool
