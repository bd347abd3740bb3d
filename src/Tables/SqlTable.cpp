// SPDX-License-Identifier: Apache-2.0
// The rows of a model behind the interface of virtual tables. SQLite compares all rows again, so that a look-up may give
// too many, never too few.
#include "Tables/SqlTable.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <exception>
#include <new>
#include <optional>

#include "Model/Names.h"

namespace oxa::tables::detail {

RowMaker& SqlSteps::rows() {
    if (!m_pRows) m_pRows = m_definition.pMake(m_context);
    return *m_pRows;
}

std::size_t SqlSteps::iStepFrom(std::int64_t iNumber) {
    const RowMaker& all = rows();
    std::size_t iFirst = 0;
    std::size_t iLast = all.iSteps();
    while (iFirst < iLast) {
        const std::size_t iMiddle = iFirst + (iLast - iFirst) / 2;
        const ifc::Entity* pEntity = all.pEntity(iMiddle);
        if (pEntity && m_context.iNumber(*pEntity) < iNumber)
            iFirst = iMiddle + 1;
        else
            iLast = iMiddle;
    }
    return iFirst;
}

// One pass over the steps with this column alone.
const SqlSteps::TextIndex& SqlSteps::index(std::size_t iColumn) {
    const auto [it, boNew] = m_indexes.try_emplace(iColumn);
    if (!boNew) return it->second;
    RowMaker& all = rows();
    Batch batch(table().columns);
    for (std::size_t i = 0; i < batch.columns().size(); ++i) batch.columns()[i].setWanted(i == iColumn);
    const ColumnData& column = batch.columns()[iColumn];
    for (std::size_t iStep = 0; iStep < all.iSteps(); ++iStep) {
        batch.clear();
        all.vStep(iStep, batch);
        for (std::size_t iRow = 0; iRow < batch.rows(); ++iRow) {
            if (column.null(iRow)) continue;
            auto found = it->second.find(column.text(iRow));
            if (found == it->second.end()) found = it->second.try_emplace(std::string(column.text(iRow))).first;
            if (found->second.empty() || found->second.back() != iStep)
                found->second.push_back(static_cast<std::uint32_t>(iStep));
        }
    }
    return it->second;
}

std::vector<std::size_t> SqlSteps::stepsOfText(std::size_t iColumn, const std::string* pFirst,
                                               const std::string* pLast) {
    const TextIndex& texts = index(iColumn);
    std::vector<std::size_t> steps;
    auto it = pFirst ? texts.lower_bound(*pFirst) : texts.begin();
    for (; it != texts.end() && (!pLast || it->first <= *pLast); ++it)
        steps.insert(steps.end(), it->second.begin(), it->second.end());
    std::ranges::sort(steps);
    steps.erase(std::unique(steps.begin(), steps.end()), steps.end());
    return steps;
}

SqlTable::SqlTable(const std::vector<std::unique_ptr<Context>>& contexts, std::string_view name) {
    std::exception_ptr pUnknown;
    for (const auto& pContext : contexts) try {
            Definition definition = detail::definition(pContext->state().schema(), name);
            if (m_table.columns.empty()) {
                m_table = definition.table;
                m_lookups = definition.lookups;
            }
            std::vector<int> columns(m_table.columns.size(), -1);
            for (std::size_t i = 0; i < definition.table.columns.size(); ++i) {
                const Column& column = definition.table.columns[i];
                auto at = std::ranges::find(m_table.columns, column.name, &Column::name);
                if (at == m_table.columns.end()) {
                    at = m_table.columns.insert(at, column);
                    m_lookups.push_back(Lookup::None);
                    columns.push_back(-1);
                }
                columns[static_cast<std::size_t>(at - m_table.columns.begin())] = static_cast<int>(i);
            }
            m_parts.push_back(
                std::make_unique<Part>(Part{SqlSteps(*pContext, std::move(definition)), std::move(columns)}));
        } catch (const NameError&) {
            pUnknown = std::current_exception();   // another model may have it
        }
    if (m_parts.empty()) std::rethrow_exception(pUnknown);
    for (const auto& pPart : m_parts) pPart->columns.resize(m_table.columns.size(), -1);
    if (m_parts.size() > 1)   // what only some have may be missing anywhere
        for (std::size_t i = 0; i < m_table.columns.size(); ++i)
            for (const auto& pPart : m_parts) m_table.columns[i].nullable |= pPart->columns[i] < 0;
}

namespace {

struct VirtualTable : sqlite3_vtab {
    explicit VirtualTable(SqlTable& shown) : sqlite3_vtab{}, table(shown) {}
    SqlTable& table;
};
SqlTable& tableOf(sqlite3_vtab* pTable) { return static_cast<VirtualTable*>(pTable)->table; }

// One condition that a look-up serves, as the plan names it: column and operator.
struct Condition {
    std::size_t iColumn;
    int iOperator;
};

// The plan of a statement is a text: which columns it reads, as bits, and its conditions, whose values come in this order.
struct Plan {
    sqlite3_uint64 uColumns = ~sqlite3_uint64{0};
    std::vector<Condition> conditions{};

    [[nodiscard]] std::string sText() const {
        std::string sPlan = std::to_string(uColumns);
        for (const Condition& one : conditions)
            sPlan += " " + std::to_string(one.iColumn) + " " + std::to_string(one.iOperator);
        return sPlan;
    }
    static Plan fromText(const char* pText) {
        Plan plan;
        char* pEnd = nullptr;
        plan.uColumns = std::strtoull(pText, &pEnd, 10);
        while (*pEnd) {
            const auto iColumn = static_cast<std::size_t>(std::strtoull(pEnd, &pEnd, 10));
            plan.conditions.push_back({iColumn, static_cast<int>(std::strtol(pEnd, &pEnd, 10))});
        }
        return plan;
    }
    [[nodiscard]] bool boReads(std::size_t iColumn) const noexcept {
        return (uColumns >> std::min<std::size_t>(iColumn, 63) & 1U) != 0;
    }
};

// A value that a condition compares with.
struct Wanted {
    explicit Wanted(sqlite3_value* pValue) : iType(sqlite3_value_type(pValue)) {
        if (iType == SQLITE_TEXT) {
            const auto* pText = reinterpret_cast<const char*>(sqlite3_value_text(pValue));
            sText.assign(pText, static_cast<std::size_t>(sqlite3_value_bytes(pValue)));
        }
        const int iNumeric = sqlite3_value_numeric_type(pValue);
        if (iNumeric == SQLITE_INTEGER || iNumeric == SQLITE_FLOAT) number = sqlite3_value_double(pValue);
    }
    int iType;
    std::string sText;
    std::optional<double> number;
};

class Cursor : public sqlite3_vtab_cursor {
public:
    explicit Cursor(SqlTable& table) : sqlite3_vtab_cursor{}, m_table(table) {}

    void vFilter(const Plan& plan, sqlite3_value** ppValues) {
        m_plan = plan;
        m_values.clear();
        for (std::size_t i = 0; i < plan.conditions.size(); ++i) m_values.emplace_back(ppValues[i]);
        m_iPart = 0;
        m_boEnd = false;
        vPartBegin();
        vNext();
    }

    void vNext() {
        if (m_pBatch && ++m_iRow < m_pBatch->rows()) return;
        for (; m_iPart < m_table.parts().size(); ++m_iPart, vPartBegin()) {
            RowMaker& rows = part().steps.rows();
            const std::size_t iSteps = m_boPicked ? m_picked.size() : m_iLast;
            while (m_iNext < iSteps) {
                m_iStep = m_boPicked ? m_picked[m_iNext] : m_iNext;
                ++m_iNext;
                m_pBatch->clear();
                rows.vStep(m_iStep, *m_pBatch);
                m_iRow = 0;
                if (m_pBatch->rows() > 0) return;
            }
        }
        m_boEnd = true;
    }

    [[nodiscard]] bool boEnd() const noexcept { return m_boEnd; }

    void vColumn(sqlite3_context* pContext, int iColumn) const {
        const int iHere = part().columns[static_cast<std::size_t>(iColumn)];
        if (iHere < 0) return sqlite3_result_null(pContext);
        const ColumnData& column = m_pBatch->columns()[static_cast<std::size_t>(iHere)];
        if (!column.wanted() || column.null(m_iRow)) return sqlite3_result_null(pContext);
        if (column.lists()) {
            const std::string sJson = column.toText(m_iRow);
            return sqlite3_result_text64(pContext, sJson.data(), sJson.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
        }
        switch (column.type()) {
        case Type::Boolean: return sqlite3_result_int(pContext, column.boolean(m_iRow) ? 1 : 0);
        case Type::Integer: return sqlite3_result_int64(pContext, column.integer(m_iRow));
        case Type::Number: return sqlite3_result_double(pContext, column.number(m_iRow));
        case Type::Text:
        case Type::Json: break;
        }
        const std::string_view text = column.text(m_iRow);
        sqlite3_result_text64(pContext, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
    }

    // The same for the same row, whatever looked it up: the conditions of an OR are united by it.
    [[nodiscard]] sqlite3_int64 iRowNumber() const noexcept {
        return static_cast<sqlite3_int64>(m_iPart << 55U | m_iStep << 23U | m_iRow);
    }

private:
    [[nodiscard]] SqlTable::Part& part() const { return *m_table.parts()[m_iPart]; }

    // From what the conditions leave of the steps of a model.
    void vPartBegin() {
        m_boPicked = false;
        m_iNext = m_iLast = 0;
        if (m_iPart == m_table.parts().size()) return;
        m_pBatch = std::make_unique<Batch>(part().steps.table().columns);
        for (std::size_t i = 0; i < part().columns.size(); ++i)
            if (part().columns[i] >= 0)
                m_pBatch->columns()[static_cast<std::size_t>(part().columns[i])].setWanted(m_plan.boReads(i));
        m_iLast = part().steps.rows().iSteps();
        Bounds bounds;
        for (std::size_t i = 0; i < m_plan.conditions.size(); ++i) vBound(m_plan.conditions[i], m_values[i], bounds);
        if (bounds.boNothing) m_iLast = m_iNext;
        if (!bounds.boTexts || m_iNext >= m_iLast) return;
        m_picked =
            part().steps.stepsOfText(static_cast<std::size_t>(part().columns[bounds.iColumn]),
                                     bounds.first ? &*bounds.first : nullptr, bounds.last ? &*bounds.last : nullptr);
        m_boPicked = true;
        m_iNext = 0;
    }

    struct Bounds {
        bool boNothing = false;   // no row can fit
        bool boTexts = false;
        std::size_t iColumn = 0;
        std::optional<std::string> first{};
        std::optional<std::string> last{};
    };

    void vBound(const Condition& condition, const Wanted& value, Bounds& bounds) {
        if (part().columns[condition.iColumn] < 0 || value.iType == SQLITE_NULL) {
            bounds.boNothing = true;
            return;
        }
        const bool boLower =
            condition.iOperator != SQLITE_INDEX_CONSTRAINT_LT && condition.iOperator != SQLITE_INDEX_CONSTRAINT_LE;
        const bool boUpper =
            condition.iOperator != SQLITE_INDEX_CONSTRAINT_GT && condition.iOperator != SQLITE_INDEX_CONSTRAINT_GE;
        if (m_table.lookup(condition.iColumn) == Lookup::Step) return vStepBound(value, boLower, boUpper);
        if (value.iType != SQLITE_TEXT) return;   // SQLite's own comparison decides
        const std::string& sText = value.sText;
        if (condition.iColumn == 0) {   // the file
            bounds.boNothing |= condition.iOperator == SQLITE_INDEX_CONSTRAINT_EQ && sText != part().steps.sFile();
            return;
        }
        bounds.boTexts = true;
        bounds.iColumn = condition.iColumn;
        if (boLower && (!bounds.first || *bounds.first < sText)) bounds.first = sText;
        if (boUpper && (!bounds.last || *bounds.last > sText)) bounds.last = sText;
    }

    void vStepBound(const Wanted& wanted, bool boLower, bool boUpper) {
        // Beyond this a double tells no integer exactly; no number of an instance is as high.
        if (!wanted.number || std::abs(*wanted.number) > 9e15) return;
        const auto iFirst = static_cast<std::int64_t>(std::floor(*wanted.number));
        const auto iBehind = static_cast<std::int64_t>(std::ceil(*wanted.number)) + 1;
        if (boLower) m_iNext = std::max(m_iNext, part().steps.iStepFrom(iFirst));
        if (boUpper) m_iLast = std::min(m_iLast, part().steps.iStepFrom(iBehind));
    }

    SqlTable& m_table;
    Plan m_plan;
    std::vector<Wanted> m_values;
    std::unique_ptr<Batch> m_pBatch;   // the rows of one step
    std::size_t m_iPart = 0;
    std::size_t m_iNext = 0;   // step, or place among those picked
    std::size_t m_iLast = 0;
    std::size_t m_iStep = 0;
    std::size_t m_iRow = 0;
    bool m_boPicked = false;
    std::vector<std::size_t> m_picked;
    bool m_boEnd = false;
};

// No exception may pass SQLite.
template <class Function>
int iGuarded(sqlite3_vtab* pTable, Function&& function) noexcept {
    try {
        return function();
    } catch (const std::bad_alloc&) {
        return SQLITE_NOMEM;
    } catch (const std::exception& error) {
        if (pTable) pTable->zErrMsg = sqlite3_mprintf("%s", error.what());
        return SQLITE_ERROR;
    }
}

int iConnect(sqlite3* pBase, void* pTables, int, const char* const* ppArguments, sqlite3_vtab** ppTable, char**) {
    return iGuarded(nullptr, [&] {
        const auto& tables = *static_cast<SqlTables*>(pTables);
        const auto found = tables.find(std::string_view(ppArguments[2]));
        if (found == tables.end()) return SQLITE_ERROR;
        const Table& table = found->second->table();
        const int iDeclared = sqlite3_declare_vtab(pBase, sSqlOf("x", table.columns).c_str());
        if (iDeclared != SQLITE_OK) return iDeclared;
        sqlite3_vtab_config(pBase, SQLITE_VTAB_INNOCUOUS);
        *ppTable = std::make_unique<VirtualTable>(*found->second).release();
        return SQLITE_OK;
    });
}

int iDisconnect(sqlite3_vtab* pTable) {
    delete static_cast<VirtualTable*>(pTable);
    return SQLITE_OK;
}

// How many rows a look-up is likely to give; SQLite orders joins by it.
struct Estimate {
    double rows;
    int iRank;   // the best is the smallest
};

Estimate estimate(const SqlTable& table, std::size_t iColumn, bool boEqual) {
    const Column& column = table.table().columns[iColumn];
    if (table.lookup(iColumn) == Lookup::Step) {
        const bool boOne = column.name == "id";
        return {boEqual ? (boOne ? 1. : 20.) : 50000., boEqual ? 0 : 4};
    }
    const bool boGuid = column.name == "guid" || column.name == "GlobalId";
    if (boEqual) return {boGuid ? 1. : column.name == "name" || column.name == "Name" ? 200. : 2000., boGuid ? 1 : 2};
    return {20000., 3};
}

bool boServed(const SqlTable& table, sqlite3_index_info* pInfo, int i) {
    const auto& constraint = pInfo->aConstraint[i];
    if (!constraint.usable || constraint.iColumn < 0) return false;
    switch (constraint.op) {
    case SQLITE_INDEX_CONSTRAINT_EQ:
    case SQLITE_INDEX_CONSTRAINT_GT:
    case SQLITE_INDEX_CONSTRAINT_GE:
    case SQLITE_INDEX_CONSTRAINT_LT:
    case SQLITE_INDEX_CONSTRAINT_LE: break;
    default: return false;
    }
    const auto iColumn = static_cast<std::size_t>(constraint.iColumn);
    if (iColumn == 0) return constraint.op == SQLITE_INDEX_CONSTRAINT_EQ;
    if (table.lookup(iColumn) == Lookup::None) return false;
    return table.lookup(iColumn) == Lookup::Step || std::string_view(sqlite3_vtab_collation(pInfo, i)) == "BINARY";
}

int iBestIndex(sqlite3_vtab* pBase, sqlite3_index_info* pInfo) {
    return iGuarded(pBase, [&] {
        const SqlTable& table = tableOf(pBase);
        // One column is looked up, by all conditions on it.
        Estimate best{1000000., 9};
        int iBest = -1;
        for (int i = 0; i < pInfo->nConstraint; ++i) {
            if (!boServed(table, pInfo, i) || pInfo->aConstraint[i].iColumn == 0) continue;
            const Estimate here = estimate(table, static_cast<std::size_t>(pInfo->aConstraint[i].iColumn),
                                           pInfo->aConstraint[i].op == SQLITE_INDEX_CONSTRAINT_EQ);
            if (here.iRank >= best.iRank) continue;
            best = here;
            iBest = pInfo->aConstraint[i].iColumn;
        }
        Plan plan;
        plan.uColumns = pInfo->colUsed;
        for (int i = 0; i < pInfo->nConstraint; ++i) {
            const int iColumn = pInfo->aConstraint[i].iColumn;
            if (!boServed(table, pInfo, i) || (iColumn != iBest && iColumn != 0)) continue;
            plan.conditions.push_back({static_cast<std::size_t>(iColumn), pInfo->aConstraint[i].op});
            pInfo->aConstraintUsage[i].argvIndex = static_cast<int>(plan.conditions.size());
            plan.uColumns |= sqlite3_uint64{1} << std::min<std::size_t>(static_cast<std::size_t>(iColumn), 63);
        }
        pInfo->estimatedRows = static_cast<sqlite3_int64>(best.rows);
        pInfo->estimatedCost = best.rows * 2 + 5;
        pInfo->idxStr = sqlite3_mprintf("%s", plan.sText().c_str());
        pInfo->needToFreeIdxStr = 1;
        return pInfo->idxStr ? SQLITE_OK : SQLITE_NOMEM;
    });
}

int iOpen(sqlite3_vtab* pTable, sqlite3_vtab_cursor** ppCursor) {
    return iGuarded(pTable, [&] {
        *ppCursor = std::make_unique<Cursor>(tableOf(pTable)).release();
        return SQLITE_OK;
    });
}

Cursor& cursorOf(sqlite3_vtab_cursor* pCursor) { return *static_cast<Cursor*>(pCursor); }

int iClose(sqlite3_vtab_cursor* pCursor) {
    delete &cursorOf(pCursor);
    return SQLITE_OK;
}

int iFilter(sqlite3_vtab_cursor* pCursor, int, const char* pPlan, int, sqlite3_value** ppValues) {
    return iGuarded(pCursor->pVtab, [&] {
        cursorOf(pCursor).vFilter(Plan::fromText(pPlan), ppValues);
        return SQLITE_OK;
    });
}

int iNext(sqlite3_vtab_cursor* pCursor) {
    return iGuarded(pCursor->pVtab, [&] {
        cursorOf(pCursor).vNext();
        return SQLITE_OK;
    });
}

int iEof(sqlite3_vtab_cursor* pCursor) { return cursorOf(pCursor).boEnd() ? 1 : 0; }

int iColumn(sqlite3_vtab_cursor* pCursor, sqlite3_context* pContext, int iAt) {
    return iGuarded(pCursor->pVtab, [&] {
        cursorOf(pCursor).vColumn(pContext, iAt);
        return SQLITE_OK;
    });
}

int iRowNumber(sqlite3_vtab_cursor* pCursor, sqlite3_int64* pNumber) {
    *pNumber = cursorOf(pCursor).iRowNumber();
    return SQLITE_OK;
}

constexpr sqlite3_module g_module = [] {
    sqlite3_module module{};
    module.xCreate = iConnect;
    module.xConnect = iConnect;
    module.xBestIndex = iBestIndex;
    module.xDisconnect = iDisconnect;
    module.xDestroy = iDisconnect;
    module.xOpen = iOpen;
    module.xClose = iClose;
    module.xFilter = iFilter;
    module.xNext = iNext;
    module.xEof = iEof;
    module.xColumn = iColumn;
    module.xRowid = iRowNumber;
    return module;
}();

}   // namespace

int iModuleRegister(sqlite3* pBase, const char* pName, SqlTables& tables) {
    return sqlite3_create_module(pBase, pName, &g_module, &tables);
}

}   // namespace oxa::tables::detail
