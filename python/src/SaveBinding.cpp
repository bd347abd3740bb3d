// SPDX-License-Identifier: Apache-2.0
// SaveBinding: how an oxaifc.Model is written, and what was wrong with the file that it came from.
#include <nanobind/stl/optional.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/string_view.h>

#include <filesystem>
#include <optional>
#include <ostream>
#include <string_view>
#include <vector>

#include "Bindings.h"
#include "Model/Error.h"
#include "Results.h"
#include "Source.h"

namespace oxa::python {

namespace {

struct FormRow {
    std::string_view word;
    oxa::Format eFormat;
};
constexpr FormRow g_forms[] = {{"step", oxa::Format::Step},
                               {"ifcxml", oxa::Format::IfcXml},
                               {"simple", oxa::Format::Simple}};

oxa::Format formatFrom(std::optional<std::string_view> word) {
    if (!word) return oxa::Format::Auto;
    for (const FormRow& row : g_forms)
        if (row.word == *word) return row.eFormat;
    throw oxa::ValueError("there is no format " + std::string(*word) + "; there are: step, ifcxml, simple");
}

nb::object write(nb::handle self, nb::handle target, std::optional<std::string_view> format, unsigned uThreads,
                 bool boReplaceIncomplete, nb::handle progress) {
    const Home home = Home::of(self);
    const std::optional<std::string> path = pathOf(target);
    if (!path && !nb::hasattr(target, "write"))
        throw oxa::TypeError("write() takes a path or a file that is open as binary, and no " +
                             std::string(nb::type_name(target.type()).c_str()));
    Job job(progress, "", path ? std::filesystem::path(*path).filename().string() : "model");
    oxa::SaveOptions options{
        .format = formatFrom(format), .threads = uThreads, .replaceIncomplete = boReplaceIncomplete};
    options.stop = job.token();
    options.progress = job.progress();
    std::optional<WriteBuffer> buffer;
    if (!path) buffer.emplace(target, job);
    const std::vector<oxa::Record> records = job.run([&] {
        const Alone alone(home.pModel->access());
        if (path) return home.pModel->unguarded().save(std::filesystem::path(*path), options);
        std::ostream stream(&*buffer);
        return home.pModel->unguarded().save(stream, options);
    });
    return recordsToPython(records);
}

}   // namespace

void vBindSave(ModelClass& model) {
    model
        .def("write", &write, nb::arg("target").none(), nb::kw_only(), nb::arg("format") = nb::none(),
             nb::arg("threads") = 0, nb::arg("replace_incomplete") = false, nb::arg("progress") = nb::none(),
             "Writes all entities, by number, to a path or to a file object that is open as binary. A file is replaced "
             "as\n"
             "a whole or not at all. The end of the name tells the format, .ifc, .ifcxml and others, also packed as\n"
             ".ifczip or .gz; format says it: \"step\", \"ifcxml\", \"simple\".\n\n"
             "A list of Record: what the schema misses, as a mandatory attribute without a value.\n"
             "Raises FileError where it can't be written; where the format has no place for the model; and where it is "
             "the\n"
             "file that the model came from and not all of that is in the model, unless replace_incomplete says so.\n"
             "KeyboardInterrupt at Ctrl-C, and the file is as it was. Other threads run meanwhile.")
        .def_prop_ro(
            "errors", [](ModelObject& self) { return recordsToPython(self.looked().errors()); },
            "A list of Record: what was wrong with the file, in the order in which it was found.")
        .def_prop_ro(
            "whole", [](ModelObject& self) { return self.looked().whole(); },
            "Whether all of the file is in the model. Of ifcXML that is not known, which counts as False.");
}

}   // namespace oxa::python
