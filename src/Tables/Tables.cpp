// SPDX-License-Identifier: Apache-2.0
#include "Tables/Tables.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>

#include "Model/Names.h"
#include "Tables/BatchPipe.h"
#include "Tables/Rows.h"
#include "Tables/Sha256.h"
#include "platform/Path.h"

namespace oxa::tables {

using detail::Context;
using detail::Definition;
using detail::TableRow;

namespace detail {

extern const TableRow g_tableFile, g_tableElement, g_tableProperty, g_tableQuantity, g_tableMaterial,
    g_tableClassification, g_tableRelation, g_tableStorey, g_tableUnit, g_tableReference, g_tableError;

namespace {

constexpr const TableRow* g_fixed[] = {&g_tableFile,     &g_tableElement,        &g_tableProperty, &g_tableQuantity,
                                       &g_tableMaterial, &g_tableClassification, &g_tableRelation, &g_tableStorey,
                                       &g_tableUnit,     &g_tableReference,      &g_tableError};

}   // namespace

std::span<const TableRow* const> fixedTables() { return g_fixed; }

std::unique_ptr<RowMaker> Definition::pMake(Context& context) const {
    return pFixed ? pFixed->pMake(context) : pClassRows(context, *pClass);
}

Definition definition(const TableRow& row) {
    Definition result;
    result.pFixed = &row;
    result.table = {row.pName, row.pDescription};
    for (const ColumnRow& column : row.columns) {
        result.table.columns.push_back({column.pName, column.eType, 0, column.boNullable, column.pDescription});
        result.lookups.push_back(column.eLookup);
    }
    return result;
}

Definition definition(const schema::Schema& schema, std::string_view name) {
    for (const TableRow* pRow : g_fixed)
        if (oxa::detail::boSameName(pRow->pName, name)) return definition(*pRow);
    if (const schema::Entity* pClass = schema::pAsEntity(schema.pObjectFromName(name)))
        return definitionOfClass(*pClass);
    std::vector<std::string_view> names;
    for (const TableRow* pRow : g_fixed) names.emplace_back(pRow->pName);
    // Many a class holds the name of a table: whoever is near one of these means it.
    if (!oxa::detail::nearNames(name, names).empty())
        oxa::detail::vThrowName("there is no table " + std::string(name), name, names);
    for (const schema::Schema::Record& record : schema.objects)
        if (schema::pAsEntity(record.pObject)) names.emplace_back(record.pObject->sName);
    oxa::detail::vThrowName("there is no table " + std::string(name.substr(0, 100)), name, names);
}

}   // namespace detail

TableSink::~TableSink() = default;

FileInfo fileInfo(const std::string& path) {
    FileInfo file;
    file.file = file.path = path;
    std::error_code error;
    if (const std::uintmax_t iSize = std::filesystem::file_size(str::pathOf(path), error); !error) file.size = iSize;
    file.sha256 = [path] {
        std::ifstream stream(str::pathOf(path), std::ios::binary);
        return stream ? detail::sSha256(stream) : std::string();
    };
    return file;
}

std::vector<Table> tables() {
    std::vector<Table> all;
    for (const TableRow* pRow : detail::fixedTables()) all.push_back(detail::definition(*pRow).table);
    return all;
}

std::vector<Table> tables(const Model& model) {
    std::vector<Table> all = tables();
    oxa::detail::ModelState& state = oxa::detail::ModelState::of(model);
    std::map<std::string_view, const detail::schema::Entity*> classes;
    for (const ifc::Entity* pEntity : state.all())
        classes.emplace(pEntity->schemaEntity().sName, &pEntity->schemaEntity());
    for (const auto& [name, pClass] : classes) all.push_back(detail::definitionOfClass(*pClass).table);
    return all;
}

Table table(const Model& model, std::string_view name) {
    return detail::definition(oxa::detail::ModelState::of(model).schema(), name).table;
}

std::vector<std::string> usualTables() {
    std::vector<std::string> names;
    for (const TableRow* pRow : detail::fixedTables())
        if (pRow != &detail::g_tableReference) names.emplace_back(pRow->pName);
    return names;
}

struct Reader::State {
    State(const Model& model, const FileInfo& file, const Definition& wanted)
        : context(model, file),
          poolLife(oxa::detail::ModelState::of(model).data().poolLife()),
          definition(wanted),
          pRows(definition.pMake(context)) {}

    Context context;
    std::weak_ptr<const ifc::Pool> poolLife;
    Definition definition;
    std::unique_ptr<detail::RowMaker> pRows;
    std::size_t iStep = 0;
};

Reader::Reader(const Model& model, const FileInfo& file, std::string_view table)
    : m_state(std::make_unique<State>(model, file,
                                      detail::definition(oxa::detail::ModelState::of(model).schema(), table))) {}
Reader::Reader(Reader&& other) noexcept = default;
Reader& Reader::operator=(Reader&& other) noexcept = default;
Reader::~Reader() = default;

const Table& Reader::table() const noexcept { return m_state->definition.table; }

namespace {

// Steps into a batch until that is full.
bool boFill(detail::RowMaker& rows, std::size_t& iStep, Batch& batch, std::size_t iRows) {
    constexpr std::size_t iMostBytes = std::size_t{16} << 20U;
    batch.clear();
    while (iStep < rows.iSteps() && batch.rows() < iRows && batch.textBytes() < iMostBytes) rows.vStep(iStep++, batch);
    return batch.rows() > 0;
}

}   // namespace

namespace {

// The rows of all tables, until nobody takes them any more. "to" is a BatchPipe, or has its pUsed and boPut.
template <class To>
void vMakeAll(const Model& model, const FileInfo& file, const std::vector<Definition>& wanted, To& to) {
    Context context(model, file);
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        const auto pRows = wanted[i].pMake(context);
        for (std::size_t iStep = 0;;) {
            auto pBatch = to.pUsed(i);
            if (!pBatch) pBatch = std::make_unique<Batch>(wanted[i].table.columns);
            if (!boFill(*pRows, iStep, *pBatch, 8192)) break;
            if (!to.boPut({i, std::move(pBatch)})) return;
        }
    }
}

// What a sink is given, table by table.
class Taken {
public:
    Taken(const std::vector<Definition>& wanted, TableSink& sink) : m_wanted(wanted), m_sink(sink) {}

    // So many tables have begun; those without rows too.
    void vBegin(std::size_t iTables) {
        while (m_iBegun < iTables) m_sink.begin(m_wanted[m_iBegun++].table);
    }
    void vTake(const detail::BatchPipe::Load& load) {
        vBegin(load.iTable + 1);
        m_sink.rows(*load.pBatch);
    }

    // As a BatchPipe has them, where the rows are made on the same thread.
    [[nodiscard]] std::unique_ptr<Batch> pUsed(std::size_t iTable) {
        return m_last.iTable == iTable ? std::move(m_last.pBatch) : nullptr;
    }
    [[nodiscard]] bool boPut(detail::BatchPipe::Load load) {
        vTake(load);
        m_last = std::move(load);
        return true;
    }

private:
    const std::vector<Definition>& m_wanted;
    TableSink& m_sink;
    std::size_t m_iBegun = 0;
    detail::BatchPipe::Load m_last;
};

}   // namespace

bool Reader::next(Batch& batch, std::size_t rows) {
    if (m_state->poolLife.expired()) throw HandleError("the model of this table is gone");
    return boFill(*m_state->pRows, m_state->iStep, batch, std::max<std::size_t>(rows, 1));
}

void write(const Model& model, const FileInfo& file, TableSink& sink, std::span<const std::string> names) {
    std::vector<Definition> wanted;
    for (const std::string& sName : names)
        wanted.push_back(detail::definition(oxa::detail::ModelState::of(model).schema(), sName));
    Taken taken(wanted, sink);
    std::optional<detail::BatchPipe> pipe;
    try {
        pipe.emplace([&](detail::BatchPipe& made) { vMakeAll(model, file, wanted, made); });
    } catch (const std::system_error&) {
        vMakeAll(model, file, wanted, taken);   // the system has no thread
    }
    if (pipe)
        for (detail::BatchPipe::Load load; pipe->boTake(load);) taken.vTake(load);
    taken.vBegin(wanted.size());
}

void write(const Model& model, const FileInfo& file, TableSink& sink) { write(model, file, sink, usualTables()); }
void write(const Model& model, TableSink& sink) { write(model, {.file = "model", .path = {}}, sink); }

}   // namespace oxa::tables
