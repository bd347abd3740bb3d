// SPDX-License-Identifier: Apache-2.0
// TableBinding: oxaifc.Table: a model as tables, for data frames and databases over Apache Arrow, and as rows of Python;
// Model.table() and Entity.array().
#include <nanobind/ndarray.h>
#include <nanobind/stl/optional.h>
#include <nanobind/stl/string.h>

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "Bindings.h"
#include "Errors.h"
#include "Model/Error.h"
#include "TableStream.h"
#include "Tables/Arrow.h"
#include "Tables/Tables.h"
#include "Values.h"

namespace oxa::python {

namespace {

using tables::Batch;
using tables::ColumnData;
using tables::Type;

constexpr std::size_t g_iRows = 65536;   // of a batch, where nobody says

// A name of a table and what it is of: nothing is read before rows are asked for.
struct TableObject {
    Home home() const { return {model, pModel}; }

    nb::object model;
    ModelObject* pModel;
    tables::FileInfo file;
    std::size_t iRows;
    tables::Table table;
};

// Cells

nb::object cellAt(const ColumnData& column, std::size_t iRow, unsigned iLists) {
    if (column.null(iRow)) return nb::none();
    if (iLists) {
        const auto [iFirst, iEnd] = column.range(iRow);
        nb::list items;
        for (std::size_t i = iFirst; i < iEnd; ++i) items.append(cellAt(column.items(), i, iLists - 1));
        return items;
    }
    switch (column.type()) {
    case Type::Boolean: return nb::bool_(column.boolean(iRow));
    case Type::Integer: return nb::int_(column.integer(iRow));
    case Type::Number: return nb::float_(column.number(iRow));
    case Type::Text:
    case Type::Json: break;
    }
    return textToPython(column.text(iRow));
}

const char* pTypeName(Type eType) {
    switch (eType) {
    case Type::Boolean: return "boolean";
    case Type::Integer: return "integer";
    case Type::Number: return "number";
    case Type::Text: return "text";
    case Type::Json: break;
    }
    return "json";
}

// oxaifc.Column
nb::object columnOf(const tables::Column& column) {
    std::string sType;
    for (unsigned i = 0; i < column.lists; ++i) sType += "list of ";
    sType += pTypeName(column.type);
    return nb::module_::import_("oxaifc._tables")
        .attr("Column")(column.name, sType, column.nullable, column.description);
}

// Rows of a table as tuples, batch by batch.
class RowIterator {
public:
    explicit RowIterator(const TableObject& table)
        : m_reader(table.home(), table.file, table.table.name),
          m_batch(table.table.columns),
          m_iRows(table.iRows) {}

    [[nodiscard]] nb::object next() {
        if (m_iRow == m_batch.rows()) {
            if (m_boEnd || !m_reader.boNext(m_batch, m_iRows)) {
                m_boEnd = true;
                m_batch.clear();
                m_iRow = 0;
                throw nb::stop_iteration();
            }
            m_iRow = 0;
        }
        nb::list cells;
        for (const ColumnData& column : m_batch.columns()) cells.append(cellAt(column, m_iRow, column.lists()));
        ++m_iRow;
        return nb::tuple(cells);
    }

private:
    GuardedReader m_reader;
    Batch m_batch;
    std::size_t m_iRows;
    std::size_t m_iRow = 0;
    bool m_boEnd = false;
};

nb::dict columnsOf(const TableObject& table) {
    std::vector<nb::list> lists(table.table.columns.size());
    GuardedReader reader(table.home(), table.file, table.table.name);
    Batch batch(table.table.columns);
    while (reader.boNext(batch, table.iRows))
        for (std::size_t iColumn = 0; iColumn < lists.size(); ++iColumn) {
            const ColumnData& column = batch.columns()[iColumn];
            for (std::size_t i = 0; i < column.size(); ++i) lists[iColumn].append(cellAt(column, i, column.lists()));
        }
    nb::dict columns;
    for (std::size_t i = 0; i < lists.size(); ++i) columns[table.table.columns[i].name.c_str()] = lists[i];
    return columns;
}

// Capsules, as Arrow's interface for Python has them.

// Lets go of what a struct holds, where nobody has taken it.
struct Release {
    template <class Struct>
    void operator()(Struct* pMade) const noexcept {
        if (pMade->release) pMade->release(pMade);
        delete pMade;
    }
};
template <class Struct>
using Held = std::unique_ptr<Struct, Release>;

template <class Struct>
nb::object capsuleOf(Held<Struct> pMade, const char* pName) {
    const auto release = [](void* p) noexcept { Release()(static_cast<Struct*>(p)); };
    nb::object capsule = nb::capsule(pMade.get(), pName, release);
    static_cast<void>(pMade.release());
    return capsule;
}

nb::object schemaCapsule(const TableObject& table) {
    Held<ArrowSchema> pSchema(new ArrowSchema{});
    tables::schema(table.table, pSchema.get());
    return capsuleOf(std::move(pSchema), "arrow_schema");
}

// What is asked for by "requested_schema" may be passed over, as the interface says: whoever reads casts.
nb::object streamCapsule(const TableObject& table, nb::handle) {
    Held<ArrowArrayStream> pStream(new ArrowArrayStream{});
    vGuardedStream(table.home(), table.file, table.table.name, table.iRows, pStream.get());
    return capsuleOf(std::move(pStream), "arrow_array_stream");
}

nb::object tableNew(nb::handle self, const std::string& sName, const std::optional<std::string>& file,
                    std::size_t iRows) {
    const Home home = Home::of(self);
    tables::FileInfo info;
    if (!home.pModel->sPath().empty()) info = tables::fileInfo(home.pModel->sPath());
    if (file) info.file = *file;
    auto* pTable = new TableObject{nb::borrow(self), home.pModel, std::move(info), iRows,
                                   tables::table(home.pModel->looked(), sName)};
    return nb::cast(pTable, nb::rv_policy::take_ownership);
}

// Lists of numbers

// How many items a list has, its first list in turn, and so on.
std::vector<std::size_t> shapeOf(oxa::Value list) {
    std::vector<std::size_t> shape;
    for (;;) {
        const std::vector<oxa::Value> items = list.items();
        shape.push_back(items.size());
        if (items.empty() || items.front().kind() != oxa::Kind::List) return shape;
        list = items.front();
    }
}

// Appends the numbers of a list, or of lists in it, which all have to be as the first ones are.
template <class Number>
void vNumbersAdd(const oxa::Value& list, std::span<const std::size_t> shape, std::vector<Number>& numbers) {
    const std::vector<oxa::Value> items = list.items();
    if (items.size() != shape.front())
        throw oxa::ValueError("the lists in this list are of different lengths, and no array");
    for (const oxa::Value& item : items) {
        if ((item.kind() == oxa::Kind::List) != (shape.size() > 1))
            throw oxa::ValueError("a list of numbers and lists is no array");
        if (shape.size() > 1)
            vNumbersAdd(item, shape.subspan(1), numbers);
        else
            numbers.push_back(item.get<Number>());
    }
}

template <class Number>
nb::object gridOf(const oxa::Value& list) {
    const std::vector<std::size_t> shape = shapeOf(list);
    auto pNumbers = std::make_unique<std::vector<Number>>();
    vNumbersAdd(list, shape, *pNumbers);
    Number* const pFirst = pNumbers->data();
    const nb::capsule owner(pNumbers.get(), [](void* p) noexcept { delete static_cast<std::vector<Number>*>(p); });
    static_cast<void>(pNumbers.release());
    return nb::cast(nb::ndarray<nb::numpy, Number>(pFirst, shape.size(), shape.data(), owner));
}

// What the first item that is no list is; Null where there is none.
oxa::Kind kindWithin(const oxa::Value& list) {
    for (const oxa::Value& item : list.items()) {
        const oxa::Kind eKind = item.kind() == oxa::Kind::List ? kindWithin(item) : item.kind();
        if (eKind != oxa::Kind::Null) return eKind;
    }
    return oxa::Kind::Null;
}

nb::object arrayOf(const EntityObject& self, const std::string& sName) {
    nb::module_::import_("numpy");
    const oxa::Value value = self.looked()[sName];
    if (value.isNull()) return nb::none();
    if (value.kind() != oxa::Kind::List)
        throw oxa::TypeError(sName + " is " + std::string(oxa::kindName(value.kind())) + ", and no list of numbers");
    const oxa::Kind eKind = kindWithin(value);
    if (eKind == oxa::Kind::Integer) return gridOf<std::int64_t>(value);
    if (eKind == oxa::Kind::Number || eKind == oxa::Kind::Null) return gridOf<double>(value);
    throw oxa::TypeError(sName + " is a list of other values than numbers: " + std::string(oxa::kindName(eKind)));
}

}   // namespace

void vBindTables(nb::module_& module, ModelClass& model, EntityClass& entity) {
    nb::class_<RowIterator>(module, "TableRows", "The rows of a table, one after the other.")
        .def("__iter__", [](nb::handle self) { return nb::borrow(self); })
        .def("__next__", &RowIterator::next);
    nb::class_<TableObject>(
        module, "Table",
        "A table of a model: docs/tables.md has them, and any class of the schema is one.\n\n"
        "Rows are made each time that they are asked for. polars.DataFrame(table), pyarrow.table(table),\n"
        "pandas.DataFrame.from_arrow(table) and duckdb.from_arrow(table) take them without a copy, and keep the model\n"
        "alive for as long as there are rows to come; what they took stays good afterwards. A model that is changed\n"
        "before the last row ends them with an error.")
        .def_prop_ro(
            "name", [](const TableObject& self) { return self.table.name; }, "As in property, or IfcWall.")
        .def_prop_ro(
            "description", [](const TableObject& self) { return self.table.description; }, "What a row is.")
        .def_prop_ro(
            "model", [](const TableObject& self) { return self.model; }, "The model that it is of.")
        .def_prop_ro(
            "columns",
            [](const TableObject& self) {
                nb::list columns;
                for (const tables::Column& column : self.table.columns) columns.append(columnOf(column));
                return nb::tuple(columns);
            },
            "An oxaifc.Column each: name, type, nullable, description.")
        .def(
            "__iter__", [](const TableObject& self) { return new RowIterator(self); }, nb::rv_policy::take_ownership,
            "The rows as tuples.")
        .def("to_dict", &columnsOf, "A list of values for each column, by its name.")
        .def("__arrow_c_schema__", &schemaCapsule, "A PyCapsule of the C data interface of Apache Arrow.")
        .def("__arrow_c_stream__", &streamCapsule, nb::arg("requested_schema") = nb::none(),
             "A PyCapsule of the C stream interface of Apache Arrow.")
        .def("__repr__", [](const TableObject& self) {
            return "<oxaifc.Table " + self.table.name + ", " + std::to_string(self.table.columns.size()) + " columns>";
        });
    model.def("table", &tableNew, nb::arg("name"), nb::kw_only(), nb::arg("file") = nb::none(),
              nb::arg("rows") = g_iRows,
              "A table of this model: one of oxaifc.table_names(), or that of a class, as in table(\"IfcWall\").\n\n"
              "file: what the column \"file\" says; the path of the model, where nothing is given.\n"
              "rows: how many make a batch.\n\n"
              "Raises UnknownNameError for another name, with near ones.");
    model.def(
        "to_dataframe",
        [](nb::handle self, nb::handle query, bool boProperties) {
            return nb::module_::import_("oxaifc._tables")
                .attr("to_dataframe")(self, query, nb::arg("properties") = boProperties);
        },
        nb::arg("query") = "IfcElement", nb::kw_only(), nb::arg("properties") = true,
        "Elements as a pandas.DataFrame: one row an element, by number.\n\n"
        "query: a class, as in \"IfcWall\", with its subtypes; what select() takes; or one of oxaifc.table_names().\n\n"
        "The columns are id, type, the attributes of the class (of what a query selects, those of all of its "
        "classes);\n"
        "then properties and quantities, those of the type too, as Pset_WallCommon.FireRating. References are numbers "
        "of\n"
        "entities. A property is a column of truth values, or of numbers, where all of its values are.\n\n"
        "Raises UnknownNameError for a class that there is none of, QueryError for what is no query, ImportError "
        "without\n"
        "pandas.");
    entity.def("array", &arrayOf, nb::arg("name"),
               "An attribute that is a list of numbers, as a NumPy array over memory of its own: shape (n,), or (n, m) "
               "for\nn lists of m; float64, or int64 for integers. None where there is no value.\n\n"
               "Raises ValueTypeError for what is no list of numbers, RefusedError for lists of different lengths.");
    module.def(
        "table_names",
        [] {
            nb::list names;
            for (const tables::Table& table : tables::tables()) names.append(table.name);
            return nb::tuple(names);
        },
        "The names of the tables that every model has.");
}

}   // namespace oxa::python
