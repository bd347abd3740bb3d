// SPDX-License-Identifier: Apache-2.0
// CompareBinding: how two models differ, by element: oxaifc.diff(a, b).
#include <nanobind/stl/optional.h>
#include <nanobind/stl/string.h>

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "Bindings.h"
#include "Compare/Elements.h"
#include "Job.h"
#include "Model/Error.h"
#include "Model/Selector.h"
#include "Results.h"

namespace oxa::python {

namespace {

constexpr std::array<const char*, 11> g_abouts{"class", "attribute", "placement", "geometry",
                                               "type",  "place",     "material",  "classification",
                                               "group", "property",  "quantity"};

nb::object textOrNone(const std::optional<std::string>& text) { return text ? textToPython(*text) : nb::none(); }

nb::object nameToPython(const compare::ElementName& name) {
    return resultClass("ElementName")(name.iNumber, name.sClass, name.sGlobalId, textToPython(name.sName),
                                      textToPython(name.sStorey));
}

nb::object elementToPython(const compare::Element& element) {
    return resultClass("EntityName")(element.iNumber, element.sType, element.sGlobalId, textToPython(element.sText));
}

nb::object detailToPython(const compare::Difference& difference) {
    return resultClass("Detail")(textToPython(difference.sAttribute), textOrNone(difference.sOld),
                                 textOrNone(difference.sNew), difference.boMore);
}

nb::object differenceToPython(const compare::ElementDifference& one) {
    return resultClass("Difference")(g_abouts.at(static_cast<std::size_t>(one.eAbout)), textToPython(one.sWhat),
                                     textOrNone(one.sOld), textOrNone(one.sNew), listOf(one.details, detailToPython));
}

nb::object changeToPython(const compare::ElementChange& change) {
    return resultClass("Change")(nameToPython(change.before), nameToPython(change.after),
                                 listOf(change.differences, differenceToPython));
}

nb::object otherToPython(const compare::Change& change) {
    return resultClass("OtherChange")(elementToPython(change.before), elementToPython(change.after),
                                      listOf(change.differences, detailToPython));
}

nb::object resultToPython(const compare::ElementResult& result) {
    const nb::object others = resultClass("Others")(listOf(result.others.removed, elementToPython),
                                                    listOf(result.others.added, elementToPython),
                                                    listOf(result.others.changed, otherToPython));
    return resultClass("Diff")(result.entities.boEqual(), textToPython(result.entities.sSchemaOld),
                               textToPython(result.entities.sSchemaNew), listOf(result.removed, nameToPython),
                               listOf(result.added, nameToPython), listOf(result.changed, changeToPython), others);
}

nb::object diff(nb::handle a, nb::handle b, const std::optional<std::string>& query) {
    if (!nb::isinstance<ModelObject>(a) || !nb::isinstance<ModelObject>(b))
        throw oxa::TypeError("diff() takes two models: oxaifc.open(...)");
    ModelObject* const pOld = nb::inst_ptr<ModelObject>(a);
    ModelObject* const pNew = nb::inst_ptr<ModelObject>(b);
    compare::ElementOptions options;
    const std::optional<oxa::Selector> only = query ? std::optional<oxa::Selector>(*query) : std::nullopt;
    if (only) options.pOnly = &*only;
    Job job(nb::none(), "", "");
    options.stop = job.token();
    const compare::ElementResult result = job.run([&] {
        const AloneWithBoth alone(pOld->access(), pNew->access());   // a comparison deals numbers
        oxa::Model& before = pOld->unguarded();
        oxa::Model& after = pNew->unguarded();
        return job.beside([&] {
            return compare::elementDifferences({before, std::string(before.schema())},
                                               {after, std::string(after.schema())}, options);
        });
    });
    return resultToPython(result);
}

}   // namespace

void vBindCompare(nb::module_& module) {
    module.def("diff", &diff, nb::arg("a").none(), nb::arg("b").none(), nb::arg("query") = nb::none(),
               "How model b differs from model a, by element as their users think of them, whatever their numbers are: "
               "Diff.\n\n"
               "query: only elements that it selects in either model. Raises QueryError and UnknownNameError for it.\n"
               "KeyboardInterrupt at Ctrl-C. Other threads run meanwhile.");
}

}   // namespace oxa::python
