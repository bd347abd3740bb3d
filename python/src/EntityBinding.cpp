// SPDX-License-Identifier: Apache-2.0
// EntityBinding: oxaifc.Entity, one instance of a model; its named operations. What it answers without a name stands in
// EntitySlots.cpp.
#include <nanobind/stl/optional.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/string_view.h>

#include <optional>
#include <string>
#include <string_view>

#include "Bindings.h"
#include "Errors.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "Values.h"

namespace oxa::python {

namespace {

PyTypeObject* g_pEntityType = nullptr;   // lives as long as the process

constexpr std::size_t g_iMostShown = 60;   // bytes of one attribute

std::string sShown(const std::string& sText) {
    if (sText.size() <= g_iMostShown) return sText;
    std::size_t iEnd = g_iMostShown - 3;
    while (iEnd > 0 && (static_cast<unsigned char>(sText[iEnd]) & 0xC0U) == 0x80U) --iEnd;   // within a character
    return sText.substr(0, iEnd) + "...";
}

std::string sReprOf(nb::handle object) {
    if (object.is_none()) return "$";
    if (object.is(derivedObject())) return "*";
    if (EntityObject* const pEntity = pEntityOf(object)) return "#" + std::to_string(pEntity->element.id());
    if (!PyTuple_Check(object.ptr())) return nb::str(nb::steal(PyObject_Repr(object.ptr()))).c_str();
    std::string sText = "(";
    for (Py_ssize_t i = 0; i < PyTuple_Size(object.ptr()) && sText.size() <= g_iMostShown; ++i)
        sText += (i ? "," : "") + sReprOf(PyTuple_GetItem(object.ptr(), i));
    return sText + ")";
}

// #12=IfcWall('1hOSvn6df7F8_7GcBWlRGQ',$,'South',...): as a statement, with what is long cut.
std::string sRepr(const EntityObject& entity) {
    if (!entity.element) return "<removed oxaifc.Entity>";
    const oxa::Element& element = entity.looked();
    std::string sText = "#" + std::to_string(element.id()) + "=" + std::string(element.type()) + "(";
    const char* pBefore = "";
    for (const oxa::Attribute& attribute : element.attributes()) {
        sText += pBefore + sShown(sReprOf(valueToPython(entity.home(), attribute.value)));
        pBefore = ",";
    }
    return sText + ")";
}

nb::object isA(const EntityObject& entity, std::optional<std::string_view> type) {
    const oxa::Element& element = entity.looked();
    if (type) return nb::bool_(element.is(*type));
    return textToPython(element.type());
}

nb::object withInfo(const Home& home, nb::handle value);

nb::dict info(const EntityObject& entity, bool boIdentifier, bool boRecursive, bool boScalars) {
    const oxa::Element& element = entity.looked();
    nb::dict values;
    if (boIdentifier) values["id"] = element.id();
    values["type"] = textToPython(element.type());
    for (const oxa::Attribute& attribute : element.attributes()) {
        nb::object value = valueToPython(entity.home(), attribute.value);
        const bool boScalar = !pEntityOf(value) && !PyTuple_Check(value.ptr());
        if (boScalars && !boScalar) continue;
        values[textToPython(attribute.name)] = boRecursive ? withInfo(entity.home(), value) : value;
    }
    return values;
}

// Entities in a value as their own dicts. Models are free of circles of attributes but for faulty ones: Python's own limit
// of recursion ends these.
nb::object withInfo(const Home& home, nb::handle value) {
    if (const EntityObject* const pEntity = pEntityOf(value)) {
        if (Py_EnterRecursiveCall(" in get_info") != 0) throw nb::python_error();
        struct Leave {
            ~Leave() { Py_LeaveRecursiveCall(); }
        } leave;
        return info(*pEntity, true, true, false);
    }
    if (!PyTuple_Check(value.ptr())) return nb::borrow(value);
    nb::list items;
    for (nb::handle item : nb::borrow<nb::tuple>(value)) items.append(withInfo(home, item));
    return nb::tuple(items);
}

// For completion: methods, attributes and inverse attributes.
nb::list names(nb::handle self) {
    nb::list found(nb::module_::import_("builtins").attr("object").attr("__dir__")(self));
    const EntityObject& entity = *nb::inst_ptr<EntityObject>(self);
    if (!entity.element) return found;
    const auto& type = entity.looked().core().schemaEntity();
    for (const auto* pAttribute : type.allAttributes()) found.append(textToPython(pAttribute->sName));
    for (const auto* pInverse : type.allInverseAttributes()) found.append(textToPython(pInverse->sName));
    return found;
}

constexpr Py_ssize_t g_iLook = 1 << 16;   // entities between two looks for Ctrl-C

nb::object allOf(const Home& home, const oxa::Elements& elements, PyObject* pSequence,
                 int (*set)(PyObject*, Py_ssize_t, PyObject*)) {
    if (!pSequence) throw nb::python_error();
    nb::object sequence = nb::steal(pSequence);
    Py_ssize_t i = 0;
    for (const oxa::Element element : elements) {
        set(pSequence, i++, entityNew(home, element).release().ptr());
        if (i % g_iLook == 0 && PyErr_CheckSignals() != 0) throw nb::python_error();
    }
    return sequence;
}

}   // namespace

nb::object entityNew(const Home& home, const oxa::Element& element) {
    if (!element) return nb::none();
    nb::object object = nb::inst_alloc(reinterpret_cast<PyObject*>(g_pEntityType));
    new (nb::inst_ptr<EntityObject>(object)) EntityObject{nb::borrow(home.object), home.pModel, element};
    nb::inst_mark_ready(object);
    return object;
}

nb::object entityList(const Home& home, const oxa::Elements& elements) {
    return allOf(home, elements, PyList_New(static_cast<Py_ssize_t>(elements.size())), PyList_SetItem);
}

nb::object entityTuple(const Home& home, const oxa::Elements& elements) {
    return allOf(home, elements, PyTuple_New(static_cast<Py_ssize_t>(elements.size())), PyTuple_SetItem);
}

EntityObject* pEntityOf(nb::handle object) {
    if (Py_TYPE(object.ptr()) != g_pEntityType) return nullptr;
    return nb::inst_ptr<EntityObject>(object);
}

EntityClass bindEntity(nb::module_& module) {
    EntityClass entity(
        module, "Entity", nb::type_slots(entitySlots()), nb::is_final(),
        "One instance of a model, \"#12=IFCWALL(...)\": a wall as well as a placement or a relationship.\n\n"
        "e.Name is an attribute, also an inverse one; e.Name = \"x\" sets it; e[0] is the first one;\n"
        "e[\"Pset_WallCommon\", \"FireRating\"] a property, which can be set likewise. It keeps its model\n"
        "alive. Asked after its removal, it raises RemovedError. Equal to another one of the same instance.");
    g_pEntityType = reinterpret_cast<PyTypeObject*>(entity.ptr());
    entity
        .def(
            "id", [](const EntityObject& self) { return self.looked().id(); }, "The number, 12 of \"#12\".")
        .def("is_a", &isA, nb::arg("type") = nb::none(),
             "The name of the type, as in IfcWall; with a name, whether it is of that type or of a subtype of it.\n"
             "Raises UnknownNameError for a type that the schema does not have.")
        .def("get_info", &info, nb::arg("include_identifier") = true, nb::arg("recursive") = false,
             nb::arg("scalar_only") = false,
             "A dict of id, type and all attributes in their order. recursive: entities as dicts too; scalar_only:\n"
             "without entities and lists.")
        .def_prop_ro(
            "file", [](const EntityObject& self) { return self.model; }, "The model that it is of.")
        .def("__dir__", &names)
        .def("__repr__", &sRepr)
        .def("__reduce__", [](nb::handle self) {
            const EntityObject& there = *nb::inst_ptr<EntityObject>(self);
            const nb::object byId = nb::module_::import_("oxaifc._pickle").attr("entity");
            return nb::make_tuple(byId, nb::make_tuple(there.model, there.looked().id()));
        });
    return entity;
}

}   // namespace oxa::python
