// SPDX-License-Identifier: Apache-2.0
// EditBinding: how an oxaifc.Model is changed: entities made and removed, properties set. Attributes are set on entities
// (EntitySlots.cpp).
#include <nanobind/stl/string.h>
#include <nanobind/stl/string_view.h>

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Bindings.h"
#include "Format/Ifc/IfcFile.h"
#include "Model/Error.h"
#include "Model/Selector.h"
#include "Properties.h"
#include "Results.h"
#include "Values.h"

namespace oxa::python {

namespace {

namespace schema = oxa::ifc::def::schema;

const schema::ObjectBase* pNamed(ModelObject& model, std::string_view type) {
    model.access().vLook();
    return model.unguarded().core().dataBase().pSchema()->pObjectFromName(type);
}

// A defined type makes a value of its own: f.createIfcLabel("x").
nb::object typedCreate(const schema::ObjectBase& type, const nb::args& values, const nb::kwargs& named) {
    if (values.size() != 1 || named.size() != 0)
        throw oxa::TypeError(type.sName + " is a type of values and takes one value, as in " + type.sName + "(\"x\")");
    return nb::cast(TypedObject{type.sName, values[0]});
}

std::vector<oxa::Field> fieldsFrom(const schema::Entity& type, const nb::args& values, const nb::kwargs& named) {
    const auto& attributes = type.allAttributes();
    if (values.size() > attributes.size())
        throw oxa::TypeError(type.sName + " has " + std::to_string(attributes.size()) + " attributes, and " +
                             std::to_string(values.size()) + " values are given");
    std::vector<oxa::Field> fields;
    for (std::size_t i = 0; i < values.size(); ++i)
        if (nb::handle value = values[i]; !value.is_none())
            fields.push_back({attributes[i]->sName, attributeFromPython(*attributes[i], value)});
    for (const auto [name, value] : named) {
        const std::string_view text = textFromPython(name);
        for (std::size_t i = 0; i < values.size(); ++i)
            if (attributes[i]->sName == text)
                throw oxa::TypeError(type.sName + ": " + attributes[i]->sName + " is given twice");
        if (!value.is_none()) fields.push_back({text, attributeFromPython(type, text, value)});
    }
    return fields;
}

nb::object create(nb::handle self, std::string_view type, const nb::args& values, const nb::kwargs& named) {
    const Home home = Home::of(self);
    const schema::ObjectBase* const pObject = pNamed(*home.pModel, type);
    const schema::Entity* const pType = schema::pAsEntity(pObject);
    if (pObject && !pType && schema::pAsType(pObject)) return typedCreate(*pObject, values, named);
    const std::vector<oxa::Field> fields = pType ? fieldsFrom(*pType, values, named) : std::vector<oxa::Field>();
    return entityNew(home, home.pModel->changing().create(type, fields));
}

// createIfcWall(...) is create_entity("IfcWall", ...).
nb::object creator(nb::handle self, std::string_view name) {
    constexpr std::string_view prefix = "create";
    if (name.starts_with(prefix) && name.size() > prefix.size() && name[prefix.size()] != '_')
        return nb::module_::import_("functools")
            .attr("partial")(self.attr("create_entity"), textToPython(name.substr(prefix.size())));
    const std::string sText = "an oxaifc.Model has no attribute " + std::string(name);
    throw nb::attribute_error(sText.c_str());
}

// An entity, what a query selects, or entities.
std::vector<oxa::Element> elementsFrom(const Home& home, nb::handle what) {
    std::vector<oxa::Element> elements;
    if (const EntityObject* const pEntity = pEntityOf(what)) {
        elements.push_back(pEntity->element);
        return elements;
    }
    if (PyUnicode_Check(what.ptr())) {
        const oxa::Selection selection = oxa::Selector(textFromPython(what)).select(home.pModel->looked());
        vHint(selection.hints);
        return {selection.elements.begin(), selection.elements.end()};
    }
    for (nb::handle item : what) {
        const EntityObject* const pEntity = pEntityOf(item);
        if (!pEntity)
            throw oxa::TypeError("entities are wanted, and no " + std::string(nb::type_name(item.type()).c_str()));
        elements.push_back(pEntity->element);
    }
    return elements;
}

nb::object removeAll(nb::handle self, nb::handle what) {
    const Home home = Home::of(self);
    const std::vector<oxa::Element> elements = elementsFrom(home, what);
    oxa::Model& model = home.pModel->changing();
    const oxa::Removed removed =
        elements.size() == 1 ? model.remove(elements.front()) : model.remove(std::span<const oxa::Element>(elements));
    return resultClass("Removed")(removed.count, entityList(home, removed.incomplete));
}

void vSetProperty(nb::handle self, nb::handle what, std::string_view set, std::string_view name, nb::handle value) {
    const Home home = Home::of(self);
    vPropertySet(*home.pModel, elementsFrom(home, what), set, name, valueFromPython(value));
}

}   // namespace

void vBindEdit(ModelClass& model) {
    model
        .def(
            "create_entity", &create, nb::arg("type"), nb::arg("args"), nb::arg("kwargs"),
            "A new entity, with values by place and by name: create_entity(\"IfcWall\", Name=\"W\"). It gets the next "
            "free\n"
            "number, and a GlobalId where its type has one and none is given; what the schema derives gets its \"*\".\n"
            "A type of values, as IfcLabel, gives a TypedValue. createIfcWall(...) is short for it.\n\n"
            "Raises UnknownNameError for an unknown type or attribute, RefusedError for an abstract type and for what "
            "the\n"
            "schema does not allow; nothing is created then.")
        .def("__getattr__", &creator, nb::arg("name"))
        .def("remove", &removeAll, nb::arg("entities").none(),
             "Takes entities out of the model, and out of all that refers to them; relationships that have nothing "
             "left to\n"
             "relate go as well. One entity, several, or a query as of select(). One pass over the model, however "
             "many.\n\n"
             "Removed: count, and incomplete: entities that stay and now lack a value which the schema wants.")
        .def("set_property", &vSetProperty, nb::arg("entities").none(), nb::arg("set"), nb::arg("name"),
             nb::arg("value").none(),
             "Sets a property of one entity, of several, or of what a query selects, and makes what is missing: the\n"
             "property, its set, the relationship. What others share is copied first. The value gets the type of the "
             "one\n"
             "that it replaces, else the one that this property has elsewhere in the file, else one by its own; a\n"
             "TypedValue says it. None leaves the property without a value.\n\n"
             "Raises RefusedError for what the schema does not allow.");
}

}   // namespace oxa::python
