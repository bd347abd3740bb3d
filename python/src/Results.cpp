// SPDX-License-Identifier: Apache-2.0
#include "Results.h"

#include <cstdint>
#include <variant>

namespace oxa::python {

nb::object resultClass(const char* pClass) { return nb::module_::import_("oxaifc._results").attr(pClass); }

nb::tuple textsToPython(const std::vector<std::string>& texts) {
    return nb::tuple(listOf(texts, [](const std::string& sText) { return textToPython(sText); }));
}

nb::object textOrNone(std::string_view text) { return text.empty() ? nb::none() : textToPython(text); }

nb::object cellToPython(const oxa::Cell& cell) {
    struct Convert {
        nb::object operator()(std::monostate) const { return nb::none(); }
        nb::object operator()(bool boValue) const { return nb::bool_(boValue); }
        nb::object operator()(std::int64_t iValue) const { return nb::int_(iValue); }
        nb::object operator()(double value) const { return nb::float_(value); }
        nb::object operator()(const std::string& sText) const { return textToPython(sText); }
    };
    return std::visit(Convert(), cell);
}

nb::list recordsToPython(std::span<const oxa::Record> records) {
    const nb::object type = resultClass("Record");
    return listOf(records, [&](const oxa::Record& record) {
        const bool boFatal = record.severity == oxa::Record::Severity::Fatal;
        return type(record.key, boFatal ? "fatal" : "error", record.category, textToPython(record.message),
                    record.line ? nb::object(nb::int_(record.line)) : nb::none(),
                    record.id ? nb::object(nb::int_(*record.id)) : nb::none(), textOrNone(record.type),
                    textOrNone(record.text));
    });
}

nb::object rowsToPython(const std::vector<std::string>& columns, const std::vector<std::vector<oxa::Cell>>& rows) {
    const nb::list all =
        listOf(rows, [](const std::vector<oxa::Cell>& row) { return nb::tuple(listOf(row, cellToPython)); });
    return resultClass("Rows")(textsToPython(columns), all);
}

void vHint(const std::vector<std::string>& hints) {
    if (hints.empty()) return;
    const nb::object warn = nb::module_::import_("warnings").attr("warn");
    const nb::object category = nb::module_::import_("oxaifc._errors").attr("Hint");
    for (const std::string& sHint : hints) warn(textToPython(sHint), category);
}

}   // namespace oxa::python
