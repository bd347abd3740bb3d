// SPDX-License-Identifier: Apache-2.0
// HeaderBinding: the header of a model as ISO 10303-21, 8.2 names its records and fields: f.header.file_name.name.
#include <nanobind/stl/string.h>
#include <nanobind/stl/vector.h>

#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "Bindings.h"
#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileHeader.h"
#include "Model/Error.h"

namespace oxa::python {

namespace {

using ifc::FileHeader;

// A look at one record of the header; it keeps the model alive.
template <int iRecord>
struct RecordView {
    nb::object model;
    ModelObject* pModel;
};
using Description = RecordView<0>;
using Name = RecordView<1>;
using SchemaRecord = RecordView<2>;
using Header = RecordView<3>;

template <class View>
FileHeader& headerOf(const View& view) {
    auto* const pFile = dynamic_cast<ifc::File*>(&view.pModel->unguarded().core());
    if (!pFile) throw oxa::Error("a model that was read from the short text form has no header as STEP files have it");
    return pFile->header();
}

// A property of a record: a field of the header.
template <class View, class Class, class Field>
void vField(Class& record, const char* pName, Field field, const char* pDoc) {
    record.def_prop_rw(
        pName,
        [field](const View& view) {
            view.pModel->access().vLook();
            return field(headerOf(view));
        },
        [field](const View& view, const std::remove_reference_t<decltype(field(std::declval<FileHeader&>()))>& value) {
            static_cast<void>(view.pModel->changing());
            field(headerOf(view)) = value;
        },
        pDoc);
}

template <class Part>
auto part() {
    return [](const Header& header) { return Part{header.model, header.pModel}; };
}

}   // namespace

void vBindHeader(nb::module_& module, ModelClass& model) {
    nb::class_<Description> description(module, "FileDescription", "FILE_DESCRIPTION.");
    vField<Description>(
        description, "description", [](FileHeader & h) -> auto& { return h.description.descriptions; },
        "A list of str: what the file holds, as in \"ViewDefinition [CoordinationView]\".");
    vField<Description>(
        description, "implementation_level", [](FileHeader & h) -> auto& { return h.description.implementationLevel; },
        "Of ISO 10303-21: edition, and conformance class.");

    nb::class_<Name> name(module, "FileName", "FILE_NAME.");
    vField<Name>(
        name, "name", [](FileHeader & h) -> auto& { return h.name.name; }, "Of the file.");
    vField<Name>(
        name, "time_stamp", [](FileHeader & h) -> auto& { return h.name.timeStamp; }, "ISO 8601 date and time.");
    vField<Name>(
        name, "author", [](FileHeader & h) -> auto& { return h.name.author; }, "A list of str.");
    vField<Name>(
        name, "organization", [](FileHeader & h) -> auto& { return h.name.organization; }, "A list of str.");
    vField<Name>(
        name, "preprocessor_version", [](FileHeader & h) -> auto& { return h.name.preprocessorVersion; },
        "What wrote the file.");
    vField<Name>(
        name, "originating_system", [](FileHeader & h) -> auto& { return h.name.originatingSystem; },
        "What the model comes from.");
    vField<Name>(
        name, "authorization", [](FileHeader & h) -> auto& { return h.name.authorization; },
        "Who authorised that it is sent.");

    nb::class_<SchemaRecord>(module, "FileSchema", "FILE_SCHEMA.")
        .def_prop_ro(
            "schema_identifiers",
            [](const SchemaRecord& view) {
                view.pModel->access().vLook();
                return std::vector<std::string>{headerOf(view).schema.schemaName};
            },
            "A list of the name of the schema, as in the file.");

    nb::class_<Header>(module, "Header", "The header of a model: three records with their fields, which can be set.")
        .def_prop_ro("file_description", part<Description>(), "FILE_DESCRIPTION.")
        .def_prop_ro("file_name", part<Name>(), "FILE_NAME.")
        .def_prop_ro("file_schema", part<SchemaRecord>(), "FILE_SCHEMA.");
    model.def_prop_ro(
        "header",
        [](nb::handle self) {
            return Header{nb::borrow(self), nb::inst_ptr<ModelObject>(self)};
        },
        "The header of the file.");
}

}   // namespace oxa::python
