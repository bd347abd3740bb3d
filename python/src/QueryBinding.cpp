// SPDX-License-Identifier: Apache-2.0
// QueryBinding: questions to a model in one line: select, list, sql.
#include <nanobind/stl/optional.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/string_view.h>
#include <nanobind/stl/vector.h>

#include <charconv>
#include <chrono>
#include <cstdint>
#include <future>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Bindings.h"
#include "Format/Ifc/IfcNumbers.h"
#include "Model/Columns.h"
#include "Model/Error.h"
#include "Model/Relations.h"
#include "Model/Selector.h"
#include "Results.h"
#include "Tables/Sql.h"
#include "Tables/Tables.h"

namespace oxa::python {

namespace {

using Names = std::vector<std::string>;
using CellRows = std::vector<std::vector<oxa::Cell>>;

oxa::Selection selected(const oxa::Model& model, const std::optional<std::string>& query, bool boExact) {
    if (!query) return {oxa::objects(model), {}};
    const oxa::Selector selector(*query);
    return boExact ? selector.select(model, oxa::exact) : selector.select(model);
}

nb::object select(nb::handle self, std::string query, bool boExact) {
    const Home home = Home::of(self);
    oxa::Selection selection;
    {
        const Reading reading(home.pModel->access());
        selection = selected(home.pModel->unguarded(), query, boExact);
    }
    vHint(selection.hints);
    return entityList(home, selection.elements);
}

// What is added up is as good as 15 digits: no 0.30000000000000004 of 0.1 and 0.2.
double rounded(double value) {
    char text[40];
    const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::general, 15);
    return oxa::ifc::toDouble(text, end.ptr).value_or(value);
}

struct Answer {
    Names columns;
    CellRows rows;
    Names hints;
};

void vGroup(const oxa::Elements& elements, oxa::Columns& keys, oxa::Columns& sums, bool boCount, Answer& answer) {
    std::vector<oxa::Group> groups = oxa::groupBy(elements, keys, sums);
    if (groups.empty() && keys.names().empty()) groups.push_back({{}, 0, std::vector<oxa::Sum>(sums.names().size())});
    answer.columns = keys.names();
    if (boCount) answer.columns.emplace_back("count");
    for (const std::string& sName : sums.names()) answer.columns.push_back("sum(" + sName + ")");
    for (oxa::Group& group : groups) {
        std::vector<oxa::Cell> row = std::move(group.keys);
        if (boCount) row.emplace_back(static_cast<std::int64_t>(group.count));
        for (const oxa::Sum& sum : group.sums) row.push_back(sum.count ? oxa::Cell(rounded(sum.value)) : oxa::Cell());
        answer.rows.push_back(std::move(row));
    }
}

struct ListCall {
    std::optional<std::string> query;
    Names columns, keys, sums;
    bool boCount, boExact;

    [[nodiscard]] bool boGroups() const { return boCount || !keys.empty() || !sums.empty(); }
};

Answer listed(const oxa::Model& model, const ListCall& call) {
    Answer answer;
    oxa::Selection selection = selected(model, call.query, call.boExact);
    oxa::Columns columns(model, call.boGroups() ? call.keys : call.columns);
    oxa::Columns sums(model, call.sums);
    if (call.boGroups()) {
        vGroup(selection.elements, columns, sums, call.boCount || call.sums.empty(), answer);
    } else {
        answer.columns = call.columns;
        for (const oxa::Element element : selection.elements) answer.rows.push_back(columns.row(element));
    }
    answer.hints = std::move(selection.hints);
    for (const oxa::Columns* pColumns : {&columns, &sums})
        for (std::string& sHint : pColumns->hints()) answer.hints.push_back(std::move(sHint));
    return answer;
}

nb::object list(nb::handle self, std::optional<std::string> query, std::optional<Names> columns,
                std::optional<Names> keys, std::optional<Names> sums, bool boCount, bool boExact) {
    const ListCall call{std::move(query),
                        columns ? *columns : Names{"id", "class", "GlobalId", "Name"},
                        keys.value_or(Names()),
                        sums.value_or(Names()),
                        boCount,
                        boExact};
    if (columns && call.boGroups())
        throw oxa::ValueError("columns go with rows of elements; group_by, sum and count with groups");
    const Home home = Home::of(self);
    Answer answer;
    {
        const Reading reading(home.pModel->access());
        answer = listed(home.pModel->unguarded(), call);
    }
    vHint(answer.hints);
    return rowsToPython(answer.columns, answer.rows);
}

// The statement runs on another thread, so that this one can look for Ctrl-C.
nb::object sql(nb::handle self, std::string sStatement, std::optional<double> seconds) {
    const Home home = Home::of(self);
    Answer answer;
    std::optional<nb::python_error> raised;
    {
        const Reading reading(home.pModel->access());
        oxa::tables::Sql engine;
        const std::string& sPath = home.pModel->sPath();
        engine.add(home.pModel->unguarded(), sPath.empty() ? oxa::tables::FileInfo{} : oxa::tables::fileInfo(sPath));
        if (seconds) engine.setTime(std::chrono::milliseconds(static_cast<std::int64_t>(*seconds * 1000)));
        const oxa::tables::SqlRows rows{[&](const Names& columns) { answer.columns = columns, answer.rows.clear(); },
                                        [&](const std::vector<oxa::Cell>& row) {
                                            answer.rows.push_back(row);
                                            return true;
                                        }};
        std::future<void> run = std::async(std::launch::async, [&] { engine.run(sStatement, rows); });
        while (run.wait_for(std::chrono::milliseconds(50)) != std::future_status::ready) {
            const nb::gil_scoped_acquire acquired;
            if (!raised && PyErr_CheckSignals() != 0) {
                raised.emplace();
                engine.interrupt();
            }
        }
        try {
            run.get();
        } catch (const oxa::tables::SqlError&) {
            if (!raised) throw;   // else it was ended for that
        }
    }
    if (raised) throw nb::python_error(std::move(*raised));
    return rowsToPython(answer.columns, answer.rows);
}

}   // namespace

void vBindQuery(ModelClass& model) {
    model
        .def("select", &select, nb::arg("query"), nb::kw_only(), nb::arg("exact") = false,
             "A list of the entities that a query means, by number: \"IfcDoor, storey.Name=EG, "
             "Pset_DoorCommon.FireRating!=NULL\".\n"
             "exact: classes without their subtypes.\n\n"
             "Raises QueryError with the column for a text that is no query, UnknownNameError for a class or an "
             "attribute that\n"
             "the schema lacks; warns (Hint) of what no element has.")
        .def("list", &list, nb::arg("query") = nb::none(), nb::arg("columns") = nb::none(), nb::kw_only(),
             nb::arg("group_by") = nb::none(), nb::arg("sum") = nb::none(), nb::arg("count") = false,
             nb::arg("exact") = false,
             "Rows, a list of tuples with `columns`: one an element that the query means, without a query all objects, "
             "with the\n"
             "columns by their names: [\"Name\", \"storey.Name\", \"Pset_DoorCommon.FireRating\"]. Or one a group: "
             "group_by, sum\n"
             "and count.\n\n"
             "Raises QueryError and UnknownNameError; warns (Hint) of columns that no element has.")
        .def("sql", &sql, nb::arg("statement"), nb::kw_only(), nb::arg("timeout") = nb::none(),
             "Rows, a list of tuples with `columns`: what a SELECT gives, of several statements the last, over the "
             "tables\n"
             "element, property and so on, and of every class. timeout: in seconds.\n\n"
             "Raises SqlError for a statement that is wrong, not allowed, or out of time; UnknownNameError for a table "
             "or column\n"
             "that there is none of; KeyboardInterrupt at Ctrl-C.");
}

}   // namespace oxa::python
