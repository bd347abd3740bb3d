// SPDX-License-Identifier: Apache-2.0
// IdsBinding: does a model hold the information that a file of requirements (IDS) asks for: Model.ids().
#include <nanobind/stl/optional.h>
#include <nanobind/stl/string.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "Bindings.h"
#include "Check/Ids.h"
#include "Errors.h"
#include "Model/Error.h"
#include "Results.h"
#include "Source.h"

namespace oxa::python {

namespace {

constexpr std::size_t g_iLook = 1 << 14;   // failures between two looks for Ctrl-C

nb::object faultToPython(const ids::Fault& fault) {
    return resultClass("IdsFault")(fault.line ? nb::object(nb::int_(fault.line)) : nb::none(),
                                   textToPython(fault.message), textOrNone(fault.found), fault.key, fault.path);
}

nb::list faultsOf(const ids::Requirements& requirements, ids::FaultWeight weight) {
    nb::list list;
    for (const ids::Fault& fault : requirements.faults())
        if (fault.weight == weight) list.append(faultToPython(fault));
    return list;
}

// An oxaifc.IdsError, which makes its message of the faults.
[[noreturn]] void vThrowFaults(const std::string& sName, const ids::Requirements& requirements) {
    const nb::object type = nb::module_::import_("oxaifc._errors").attr("IdsError");
    const nb::object error =
        type(textToPython(sName + " is no valid IDS"), faultsOf(requirements, ids::FaultWeight::Fault));
    PyErr_SetObject(type.ptr(), error.ptr());
    throw nb::python_error();
}

// What each specification is called, and what came of it.
nb::object specificationToPython(const Home& home, const ids::Specification& specification,
                                 const ids::SpecificationResult& result) {
    const nb::object failureClass = resultClass("IdsFailure");
    nb::list wanted;   // one text of each requirement, for all who fail it
    for (const ids::Facet& facet : specification.requirements) wanted.append(textToPython(facet.text));
    const nb::object notAllowed = textToPython("not allowed: " + specification.text);
    std::size_t iTold = 0;
    const nb::list failures = listOf(result.failures, [&](const ids::Failure& failure) {
        if (++iTold % g_iLook == 0 && PyErr_CheckSignals() != 0) throw nb::python_error();
        const nb::object text = failure.requirement == ids::Failure::none ? notAllowed : wanted[failure.requirement];
        return failureClass(entityNew(home, failure.element), text, std::string(ids::failureKindName(failure.kind)),
                            textToPython(failure.reason), textOrNone(failure.found));
    });
    return resultClass("IdsSpecification")(textToPython(specification.name),
                                           std::string(ids::statusName(result.status)), textToPython(result.reason),
                                           result.applicable, result.passed, failures);
}

nb::object reportToPython(const Home& home, const ids::Requirements& requirements, const ids::Result& result) {
    nb::list specifications;
    for (std::size_t i = 0; i < result.specifications.size(); ++i)
        specifications.append(specificationToPython(home, requirements.specifications()[i], result.specifications[i]));
    return resultClass("IdsReport")(std::string(ids::verdictName(result.verdict)), specifications,
                                    faultsOf(requirements, ids::FaultWeight::Note));
}

ids::OtherSchemas otherSchemasFrom(const std::optional<std::string>& word) {
    if (!word) return ids::OtherSchemas::Auto;
    if (*word == "skip") return ids::OtherSchemas::Skip;
    if (*word == "check") return ids::OtherSchemas::Check;
    throw oxa::ValueError("other_schemas is \"skip\", \"check\" or None, not " + *word);
}

ids::Requirements requirementsFrom(nb::handle source, const std::optional<std::string>& path) {
    if (path) {
        vMissingCheck(*path);
        const nb::gil_scoped_release released;
        return ids::Requirements::open(std::filesystem::path(*path));
    }
    const nb::object data = nb::hasattr(source, "read") ? source.attr("read")() : nb::borrow(source);
    if (!PyObject_CheckBuffer(data.ptr()))
        throw oxa::TypeError("ids() takes a path, bytes or a file that is open as binary, and no " +
                             std::string(nb::type_name(source.type()).c_str()));
    const Bytes bytes(data);
    const nb::gil_scoped_release released;
    return ids::Requirements::fromBuffer(bytes.text());
}

nb::object idsCheck(nb::handle self, nb::handle source, const std::optional<std::string>& otherSchemas,
                    unsigned uThreads, nb::handle progress) {
    const Home home = Home::of(self);
    const std::optional<std::string> path = pathOf(source);
    ids::Options options;
    options.threads = uThreads;
    options.otherSchemas = otherSchemasFrom(otherSchemas);
    const ids::Requirements requirements = requirementsFrom(source, path);
    if (!requirements.valid()) vThrowFaults(path.value_or("the text"), requirements);
    Job job(progress, "", path ? std::filesystem::path(*path).filename().string() : "requirements");
    options.stop = job.token();
    options.progress = job.progress();
    const ids::Result result = job.run([&] {
        const Reading reading(home.pModel->access());
        return ids::check(home.pModel->unguarded(), requirements, options);
    });
    return reportToPython(home, requirements, result);
}

}   // namespace

void vBindIds(ModelClass& model) {
    model.def(
        "ids", &idsCheck, nb::arg("requirements").none(), nb::kw_only(), nb::arg("other_schemas") = nb::none(),
        nb::arg("threads") = 0, nb::arg("progress") = nb::none(),
        "Whether the model holds the information that a file of requirements (IDS 1.0) asks for: IdsReport, true\n"
        "where it does, with what each specification found.\n\n"
        "requirements: a path (str or os.PathLike), bytes, or a file object that is open as binary.\n"
        "other_schemas: specifications that do not name the model's schema: \"skip\" or \"check\" them; as it is,\n"
        "they are checked where no specification names it.\n"
        "progress: as for open().\n\n"
        "Raises IdsError, with all faults, for what is no valid IDS; FileError where it can't be read;\n"
        "KeyboardInterrupt at Ctrl-C. Other threads run meanwhile.");
}

}   // namespace oxa::python
