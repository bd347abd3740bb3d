// SPDX-License-Identifier: Apache-2.0
// ModelBinding: oxaifc.Model: what it holds, by type, number and GlobalId.
#include <nanobind/stl/string.h>
#include <nanobind/stl/string_view.h>

#include <string>
#include <string_view>

#include "Bindings.h"
#include "Errors.h"
#include "Model/Error.h"
#include "Values.h"

namespace oxa::python {

namespace {

constexpr std::size_t g_iGuid = 22;   // characters of a GlobalId

nb::object byType(nb::handle self, std::string_view type, bool boSubtypes) {
    const Home home = Home::of(self);
    const oxa::Model& model = home.pModel->looked();
    return entityList(home, boSubtypes ? model.all(type) : model.all(type, oxa::exact));
}

nb::object byId(nb::handle self, std::uint64_t uId) {
    const Home home = Home::of(self);
    const oxa::Element element = home.pModel->looked().byId(uId);
    if (!element) vThrowNotFound("there is no #" + std::to_string(uId));
    return entityNew(home, element);
}

nb::object byGuid(nb::handle self, std::string_view guid) {
    const Home home = Home::of(self);
    const oxa::Element element = home.pModel->looked().byGuid(guid);
    if (!element) vThrowNotFound("there is no element with the GlobalId " + std::string(guid));
    return entityNew(home, element);
}

nb::object item(nb::handle self, nb::handle key) {
    if (PyUnicode_Check(key.ptr())) return byGuid(self, textFromPython(key));
    if (!PyIndex_Check(key.ptr()))
        throw oxa::TypeError("a model is asked by number, f[12], or by GlobalId, f[\"1hOS...\"]");
    const nb::object number = nb::steal(PyNumber_Index(key.ptr()));
    if (!number.is_valid()) throw nb::python_error();
    const unsigned long long uId = PyLong_AsUnsignedLongLong(number.ptr());
    if (PyErr_Occurred()) {
        PyErr_Clear();
        vThrowNotFound("there is no #" + std::string(nb::str(number).c_str()));
    }
    return byId(self, uId);
}

bool boHas(nb::handle self, nb::handle key) {
    const Home home = Home::of(self);
    const oxa::Model& model = home.pModel->looked();
    if (const EntityObject* const pEntity = pEntityOf(key)) return pEntity->pModel == home.pModel && pEntity->element;
    if (PyUnicode_Check(key.ptr())) {
        const std::string_view guid = textFromPython(key);
        return guid.size() == g_iGuid && model.byGuid(guid);
    }
    if (!PyIndex_Check(key.ptr())) return false;
    const unsigned long long uId = PyLong_AsUnsignedLongLong(key.ptr());
    const bool boNumber = !PyErr_Occurred();
    PyErr_Clear();
    return boNumber && model.byId(uId);
}

std::string sRepr(ModelObject& model) {
    const oxa::Model& looked = model.looked();
    std::string sText = "<oxaifc.Model " + std::string(looked.schema()) + ", " + std::to_string(looked.size());
    sText += looked.size() == 1 ? " entity" : " entities";
    if (!model.sPath().empty()) sText += ", " + model.sPath();
    return sText + ">";
}

}   // namespace

ModelClass bindModel(nb::module_& module) {
    ModelClass model(
        module, "Model", nb::is_weak_referenceable(),
        "One building model with all of its entities: oxaifc.open(...), or empty: Model(\"IFC4\").\n\n"
        "Any number of threads may read a model at one time; who changes or writes it is alone, and the others\n"
        "wait.");
    model
        .def(
            "__init__",
            [](ModelObject* pSelf, std::string_view schema) { new (pSelf) ModelObject(oxa::Model(schema)); },
            nb::arg("schema") = "IFC4", "Without entities, of a built-in schema; UnknownNameError for another name.")
        .def_prop_ro(
            "schema", [](ModelObject& self) { return std::string(self.looked().schema()); },
            "The name of the schema, as in IFC4.")
        .def_prop_ro(
            "path",
            [](ModelObject& self) -> nb::object {
                return self.sPath().empty() ? nb::none() : nb::object(nb::str(self.sPath().c_str()));
            },
            "The file that it was opened from, as an absolute path; None for another source.")
        .def("by_type", &byType, nb::arg("type"), nb::arg("include_subtypes") = true,
             "A list of the entities of a type and its subtypes, by number. Raises UnknownNameError for an unknown "
             "type.")
        .def("by_id", &byId, nb::arg("id"),
             "The entity of that number; NotFoundError, a KeyError, where there is none.")
        .def("by_guid", &byGuid, nb::arg("guid"),
             "The entity with that GlobalId; NotFoundError where there is none, RefusedError for what can't be one.")
        .def("__getitem__", &item, nb::arg("key").none(), "By number, or by GlobalId.")
        .def("__len__", [](ModelObject& self) { return self.looked().size(); })
        .def(
            "__iter__",
            [](nb::handle self) {
                const Home home = Home::of(self);
                return nb::iter(entityList(home, home.pModel->looked().all()));
            },
            "All entities by number, as they are now.")
        .def("__bool__", [](ModelObject&) { return true; })
        .def("__contains__", &boHas, nb::arg("key").none(),
             "Whether an entity is of this model; a number or a GlobalId one of its.")
        .def(
            "check",
            [](nb::args values, nb::kwargs named) {
                return nb::module_::import_("oxaifc._check").attr("of_model")(*values, **named);
            },
            nb::sig("def check(self, strict: bool = False, *, levels: typing.Iterable[str] = ..., most_places: int = "
                    "100000, threads: int = 0, progress: typing.Any = None) -> CheckReport"),
            "What is wrong with the model: CheckReport, with a verdict, groups of failures and their places.\n\n"
            "As it is: what its file was read with, see Model.errors. strict: whether it is valid: by ISO 10303-21, by "
            "its\n"
            "header, by its schema and by the rules of that; levels: some of \"syntax\", \"header\", \"schema\", "
            "\"rules\".\n"
            "A model that is as its STEP file has it is checked as that file; any other as write() would write it.\n"
            "KeyboardInterrupt at Ctrl-C. Other threads run meanwhile.")
        .def_prop_ro("_stamp", [](ModelObject& self) { return nb::make_tuple(self.stamp().uSize, self.stamp().iTime); })
        .def_prop_ro("_changed", [](ModelObject& self) { return self.uChanges() != 0; })
        .def("__reduce__", [](nb::handle self) { return nb::module_::import_("oxaifc._pickle").attr("reduce")(self); })
        .def("__repr__", &sRepr);
    return model;
}

}   // namespace oxa::python
