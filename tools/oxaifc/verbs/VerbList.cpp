// SPDX-License-Identifier: Apache-2.0
// VerbList: "oxaifc list": elements by a query, as rows of a table; counted and summed by groups.

#include <algorithm>
#include <array>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Format/Ifc/IfcNumbers.h"
#include "Model/Columns.h"
#include "Model/Relations.h"
#include "Model/Selector.h"
#include "oxaifc/formats/ElementModel.h"
#include "oxaifc/formats/Format.h"
#include "oxaifc/io/Failure.h"
#include "oxaifc/io/Output.h"
#include "oxaifc/io/System.h"
#include "oxaifc/io/Target.h"
#include "oxaifc/report/RowForm.h"
#include "oxaifc/report/Sheet.h"
#include "oxaifc/report/Table.h"
#include "oxaifc/verbs/Selection.h"
#include "oxaifc/verbs/Several.h"
#include "oxaifc/verbs/Verb.h"
#include "platform/Path.h"

namespace oxa::tool {

namespace {

struct ListOptions : ModelOptions {
    std::vector<std::string> words;   // paths, and behind them the query
    std::string sQuery;
    std::vector<std::string> columns, keys, sums;   // each with commas
    RowOptions out;
    bool boExact = false;
    bool boCount = false;
    bool boBom = false;

    [[nodiscard]] bool boGroups() const { return boCount || !keys.empty() || !sums.empty(); }
};

// "A,B.'c,d'": the names between commas, apart from those in quotes.
std::vector<std::string> namesOf(const std::vector<std::string>& texts) {
    std::vector<std::string> names;
    for (const std::string& sText : texts) {
        names.emplace_back();
        char cQuote = 0;
        for (std::size_t i = 0; i < sText.size(); ++i) {
            const char c = sText[i];
            if (c == ',' && !cQuote) {
                names.emplace_back();
                continue;
            }
            names.back() += c;
            if (cQuote && c == '\\' && i + 1 < sText.size())
                names.back() += sText[++i];
            else if (cQuote ? c == cQuote : c == '"' || c == '\'')
                cQuote = cQuote ? '\0' : c;
        }
    }
    return names;
}

// The words of a table's head.
std::vector<std::string> headOf(const ListOptions& options, bool boSeveral) {
    std::vector<std::string> head;
    if (boSeveral) head.emplace_back("file");
    const std::vector<std::string>& names = options.boGroups() ? options.keys : options.columns;
    head.insert(head.end(), names.begin(), names.end());
    if (options.boCount) head.emplace_back("count");
    for (const std::string& sName : options.sums) head.push_back("sum(" + sName + ")");
    return head;
}

// What is added up is as good as 15 digits: no 0.30000000000000004 of 0.1 and 0.2.
double rounded(double value) {
    const std::string sText = fmt::format("{:.15g}", value);
    return ifc::toDouble(sText.data(), sText.data() + sText.size()).value_or(value);
}

using RowSink = std::function<void(const std::vector<Cell>& cells)>;

// The rows of one file. A query and columns that fit it are the condition that the table begins.
void vRows(const ListOptions& options, const std::optional<Selector>& selector, const oxa::Model& model,
           std::vector<Cell> front, const RowSink& row) {
    Selection selection;
    if (!selector)
        selection.elements = objects(model);
    else
        selection = options.boExact ? selector->select(model, exact) : selector->select(model);
    Columns columns(model, options.boGroups() ? options.keys : options.columns);
    Columns sums(model, options.sums);
    for (const std::string& sHint : selection.hints) vTell(sHint);
    const std::size_t iFront = front.size();
    if (!options.boGroups()) {
        std::vector<Cell> cells;
        for (const Element element : selection.elements) {
            columns.read(element, cells);
            front.resize(iFront);
            front.insert(front.end(), cells.begin(), cells.end());
            row(front);
        }
    } else {
        std::vector<Group> groups = groupBy(selection.elements, columns, sums);
        if (groups.empty() && options.keys.empty()) groups.push_back({{}, 0, std::vector<Sum>(options.sums.size())});
        for (const Group& group : groups) {
            front.resize(iFront);
            front.insert(front.end(), group.keys.begin(), group.keys.end());
            if (options.boCount) front.emplace_back(static_cast<std::int64_t>(group.count));
            for (const Sum& sum : group.sums) front.push_back(sum.count ? Cell(rounded(sum.value)) : Cell());
            row(front);
        }
    }
    for (const Columns* pColumns : {&columns, &sums})
        for (const std::string& sHint : pColumns->hints()) vTell(sHint);
}

bool boNamesFile(const std::string& sWord) {
    std::error_code error;
    if (sWord == "-" || std::filesystem::exists(str::pathOf(sWord), error)) return true;
    return pFormatFromName(sWord) && sWord.find('=') == std::string::npos;
}

// A last word that names no file is the query.
std::vector<std::string> pathsOf(ListOptions& options) {
    std::vector<std::string> paths = options.words;
    if (paths.size() < 2 || boNamesFile(paths.back())) return paths;
    options.sQuery = paths.back();
    paths.pop_back();
    return paths;
}

// The rows of all files, one after the other.
int iRows(ListOptions& options, const std::vector<std::string>& paths, const std::optional<Selector>& selector,
          const RowSink& row) {
    return iForEachFile(paths, [&](const std::string& sPath) {
        options.sPath = sPath;
        ElementModel file(options);
        try {
            vRows(options, selector, file.model(), paths.size() > 1 ? std::vector<Cell>{sPath} : std::vector<Cell>(),
                  row);
        } catch (const NameError& error) {
            throw Failure(fmt::format("{}: {}", file.file().sName(), sPrintable(error.what())));
        }
        return file.iExitCode();
    });
}

int iTable(ListOptions& options, const std::vector<std::string>& paths, const std::optional<Selector>& selector,
           TableForm eForm, Output& output) {
    TableOptions tableOptions{.eForm = eForm, .boBom = options.boBom};
    std::unique_ptr<Target> pTarget;
    if (options.out.boFile())
        pTarget = std::make_unique<Target>(options.out.sOut);
    else if (output.boTerminal())
        tableOptions.iWidth = iTerminalWidth(stdout);
    Table table(tableOptions, headOf(options, paths.size() > 1), [&](std::string_view text) {
        if (pTarget)
            pTarget->stream() << text;
        else
            output.vPrint("{}", text);
    });
    const int iCode = iRows(options, paths, selector, [&table](const std::vector<Cell>& cells) { table.vRow(cells); });
    table.vFinish();
    if (pTarget) pTarget->vFinish();
    return iCode;
}

// A workbook is put in its place at the end, when nothing is read any more.
int iSheet(ListOptions& options, const std::vector<std::string>& paths, const std::optional<Selector>& selector) {
    Sheet sheet(options.out.sOut, "list", headOf(options, paths.size() > 1));
    const int iCode = iRows(options, paths, selector, [&sheet](const std::vector<Cell>& cells) { sheet.vRow(cells); });
    sheet.vFinish();
    return iCode;
}

int iList(ListOptions& options, Output& output) {
    const std::vector<std::string> paths = pathsOf(options);
    for (std::vector<std::string>* pNames : {&options.columns, &options.keys, &options.sums})
        *pNames = namesOf(*pNames);
    if (options.columns.empty()) options.columns = {"id", "class", "GlobalId", "Name"};
    if (options.sums.empty() && !options.keys.empty()) options.boCount = true;
    std::optional<Selector> selector;
    if (!options.sQuery.empty()) selector = selectorOf(options.sQuery, "list: QUERY");

    const std::optional<TableForm> eForm = options.out.form("list");
    options.out.vOutCheck(paths);
    if (options.boBom && eForm != TableForm::Csv && eForm != TableForm::Tsv)
        throw Failure("list: --bom goes with csv and tsv alone");
    return eForm ? iTable(options, paths, selector, *eForm, output) : iSheet(options, paths, selector);
}

VerbRun declare(Command command) {
    const auto pOptions = std::make_shared<ListOptions>();
    pOptions->vDeclareSeveral(command, pOptions->words);
    // FILE takes all words; this tells what the last of them may be.
    command.option("QUERY", pOptions->sQuery, "which elements, as in 'IfcDoor, storey=EG'; without it all objects")
        .value("");
    const auto list = [command](const char* pName, std::vector<std::string>& names, const char* pHelp) {
        return command.option(pName, names, pHelp).value("A,B").oneEach();
    };
    const CommandOption columns = list("-c,--columns", pOptions->columns,
                                       "class, id, Name, storey.Name, Set.Property; default id,class,GlobalId,Name");
    list("--group-by", pOptions->keys, "a row for each value of these columns").excludes(columns);
    list("--sum", pOptions->sums, "the sum of these columns").excludes(columns);
    command.flag("--count", pOptions->boCount, "how many there are, in all or in each group").excludes(columns);
    command.flag("--exact", pOptions->boExact, "classes without their subtypes");
    pOptions->out.vDeclare(command);
    command.flag("--bom", pOptions->boBom, "begin CSV and TSV with a byte order mark");
    return [pOptions](Output& output) { return iList(*pOptions, output); };
}

}   // namespace

extern const Verb g_verbList{"list", "Elements by a query, as a table, CSV or JSON; counted and summed", declare};

}   // namespace oxa::tool
