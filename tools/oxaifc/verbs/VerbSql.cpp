// SPDX-License-Identifier: Apache-2.0
// VerbSql: "oxaifc sql": SELECT statements over models, once or at a prompt.

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
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
#include "oxaifc/report/RowForm.h"
#include "oxaifc/report/Sheet.h"
#include "oxaifc/report/Table.h"
#include "oxaifc/verbs/Several.h"
#include "oxaifc/verbs/Verb.h"
#include "platform/Path.h"

namespace oxa::tool {

namespace {

struct SqlOptions : ModelOptions {
    std::vector<std::string> words;   // paths, and behind them the statement
    std::string sStatement;
    RowOptions out;
    double seconds = 0;
};

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

// A function of SQLite over long texts does not look at the clock: a second later it is not waited for.
struct Deadline {
    explicit Deadline(double seconds) {
        if (seconds > 0)
            vEndAfter(seconds + 1, fmt::format("oxaifc: sql: takes longer than {:.0f} ms", seconds * 1000));
    }
    ~Deadline() { vEndAfter(0, {}); }
    Deadline(const Deadline&) = delete;
    Deadline& operator=(const Deadline&) = delete;
};

// The models with what they are asked by.
struct Session {
    std::list<ElementModel> files;   // for the schemas, which the elements need to the end
    tables::Sql sql;
    double seconds = 0;   // after which not the statement alone ends, but the program; 0: none

    int iAdd(const SqlOptions& options) {
        ElementModel& file = files.emplace_back(options);
        tables::FileInfo info = tables::fileInfo(options.sPath);
        if (options.sPath == "-") info = {.file = "standard input", .path = {}};
        info.records = file.file().errors();
        sql.add(file.model(), info);
        return file.iExitCode();
    }

    // The rows of each statement, from "begin" on.
    void vRun(const std::string& sStatement, const tables::SqlRows& rows) {
        const Interruptible interruptible(sql);
        const Deadline deadline(seconds);
        sql.run(sStatement, rows);
    }

    // Each statement as a table of its own; the sink says whether it takes more.
    void vRunAsText(const std::string& sStatement, const TableOptions& options,
                    const std::function<bool(std::string_view)>& sink) {
        std::unique_ptr<Table> pTable;
        bool boWanted = true;
        const auto vEnd = [&] {
            if (pTable) pTable->vFinish();
            pTable.reset();
        };
        vRun(sStatement, {.begin =
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

    void vRunAsSheet(const std::string& sStatement, const std::string& sOut) {
        std::unique_ptr<Sheet> pSheet;
        vRun(sStatement, {.begin =
                              [&](const std::vector<std::string>& columns) {
                                  if (pSheet) throw Failure("sql: a workbook takes one statement");
                                  pSheet = std::make_unique<Sheet>(sOut, "sql", columns);
                              },
                          .row =
                              [&](const std::vector<Cell>& row) {
                                  pSheet->vRow(row);
                                  return true;
                              }});
        if (!pSheet) throw Failure("sql: there is no statement");
        pSheet->vFinish();
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

// Ctrl-C at the prompt drops what was typed, as shells do.
volatile std::sig_atomic_t g_boLineDropped = 0;

// It stays at hand: one that comes before the read begins must not leave the next one to end the program.
void vLineDrop() {
    g_boLineDropped = 1;
    vOnInterrupt(vLineDrop, true);
}

// False at the end of the input.
bool boLineRead(std::string& sLine, std::string_view prompt, Output& output) {
    g_boLineDropped = 0;
    vOnInterrupt(vLineDrop, true);   // before the prompt, which asks for keys
    output.vPrint("{}", prompt);
    output.vFlush();
    const bool boRead = !g_boLineDropped && std::getline(std::cin, sLine);
    vOnInterrupt(nullptr);
    if (!g_boLineDropped) return boRead;
    std::clearerr(stdin);
    std::cin.clear();
    output.vPrint("\n");
    return true;
}

// Statements as they are typed; a wrong one is told, and the next may come.
void vPrompt(Session& session, const TableOptions& options, Output& output) {
    std::string sStatement;
    output.vPrint("SELECT over {}; .help tells more\n", session.files.size() == 1
                                                            ? session.files.front().file().sName()
                                                            : sCounted(session.files.size(), "file"));
    for (std::string sLine;;) {
        if (!boLineRead(sLine, sStatement.empty() ? "sql> " : "...> ", output)) break;
        if (g_boLineDropped) {
            sStatement.clear();
            continue;
        }
        try {
            if (sStatement.empty() && sLine.starts_with('.')) {
                if (sLine == ".quit" || sLine == ".exit") return;
                vCommandRun(session, sLine, output);
                continue;
            }
            sStatement += sLine + "\n";
            if (!tables::isWholeStatement(sStatement)) continue;
            session.vRunAsText(std::exchange(sStatement, {}), options, [&](std::string_view text) {
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

// The statement's rows to where -o says, else to standard output.
void vAnswer(Session& session, const SqlOptions& options, TableForm eForm, Output& output) {
    TableOptions tableOptions{.eForm = eForm};
    if (!options.out.boFile()) {
        if (output.boTerminal()) tableOptions.iWidth = iTerminalWidth(stdout);
        return session.vRunAsText(options.sStatement, tableOptions, [&output](std::string_view text) {
            output.vPrint("{}", text);
            return output.boWanted();
        });
    }
    Target target(options.out.sOut);
    session.vRunAsText(options.sStatement, tableOptions, [&target](std::string_view text) {
        target.stream() << text;
        return target.stream().good();
    });
    target.vFinish();
}

int iSql(SqlOptions& options, Output& output) try {
    const std::vector<std::string> paths = pathsOf(options);
    const std::optional<TableForm> eForm = options.out.form("sql");
    options.out.vOutCheck(paths);
    const bool boPrompt = options.sStatement.empty() && boIsTerminal(stdin);
    if (boPrompt && options.out.boFile()) throw Failure("sql: -o goes with a statement");
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
    if (!boPrompt) session.seconds = options.seconds;
    if (boPrompt)
        vPrompt(session, {.eForm = *eForm, .iWidth = output.boTerminal() ? iTerminalWidth(stdout) : 0}, output);
    else if (eForm)
        vAnswer(session, options, *eForm, output);
    else
        session.vRunAsSheet(options.sStatement, options.out.sOut);
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
    pOptions->out.vDeclare(command);
    command.option("--timeout", pOptions->seconds, "give up after so many seconds; default never")
        .within(0.001, 1e6)
        .value("S");
    return [pOptions](Output& output) { return iSql(*pOptions, output); };
}

}   // namespace

extern const Verb g_verbSql{"sql", "SELECT statements over models in memory, once or at a prompt", declare};

}   // namespace oxa::tool
