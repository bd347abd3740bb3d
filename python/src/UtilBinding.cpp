// SPDX-License-Identifier: Apache-2.0
// UtilBinding: what oxaifc.util asks of an element: properties, type, place, parts, materials.
#include <nanobind/stl/optional.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/string_view.h>

#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "Bindings.h"
#include "Model/Error.h"
#include "Model/Relations.h"
#include "Properties.h"
#include "Values.h"

namespace oxa::python {

namespace {

EntityObject& entityFrom(nb::handle object) {
    EntityObject* const pEntity = pEntityOf(object);
    if (!pEntity)
        throw oxa::TypeError("an Entity is wanted, and no " + std::string(nb::type_name(object.type()).c_str()));
    return *pEntity;
}

// A set of properties and one of quantities may have one name: they are one dict then. A property that is called "id" is
// told in the place of the number.
void vSetsAdd(nb::dict& all, const Home& home, const std::vector<oxa::PropertySet>& sets, bool boInherit) {
    for (const oxa::PropertySet& set : sets) {
        if (!boInherit && set.source == oxa::Source::Type) continue;
        const nb::object name = textToPython(set.name);
        if (!all.contains(name)) all[name] = nb::dict();
        nb::dict values = nb::borrow<nb::dict>(all[name]);
        for (const oxa::Property& property : set.properties)
            if (boInherit || property.source == oxa::Source::Instance)
                values[textToPython(property.name)] = propertyToPython(home, property);
        if (!values.contains("id")) values["id"] = set.element.id();
    }
}

nb::dict psets(nb::handle object, bool boPsets, bool boQuantities, bool boInherit) {
    const EntityObject& entity = entityFrom(object);
    const oxa::Element& element = entity.looked();
    nb::dict all;
    const bool boType = element.is("IfcTypeObject");   // a type's sets are its own
    if (!boQuantities || boPsets) vSetsAdd(all, entity.home(), oxa::psets(element), boInherit || boType);
    if (!boPsets || boQuantities) vSetsAdd(all, entity.home(), oxa::quantities(element), boInherit || boType);
    return all;
}

// None or an Entity from a function of Relations.h.
template <oxa::Element (*pAsk)(const oxa::Element&)>
nb::object one(nb::handle object) {
    const EntityObject& entity = entityFrom(object);
    return entityNew(entity.home(), pAsk(entity.looked()));
}

nb::object typeOf(nb::handle object) {
    const EntityObject& entity = entityFrom(object);
    if (entity.looked().is("IfcTypeObject")) return nb::borrow(object);
    return entityNew(entity.home(), oxa::type(entity.element));
}

nb::object container(nb::handle object, std::optional<std::string_view> type) {
    const EntityObject& entity = entityFrom(object);
    oxa::Element place = oxa::container(entity.looked());
    while (place && type && !place.is(*type)) place = oxa::container(place);
    return entityNew(entity.home(), place);
}

// Parts and contents, those of these too, in the order of a walk from the top; a file may go in circles.
nb::object decomposition(nb::handle object, std::optional<std::string_view> type, bool boDeep) {
    const EntityObject& entity = entityFrom(object);
    const oxa::Element& root = entity.looked();
    if (type) static_cast<void>(root.is(*type));   // refuses an unknown one, also where there is no part
    nb::list all;
    std::vector<oxa::Element> open{root};
    std::unordered_set<oxa::Element> seen{root};
    for (bool boRoot = true; !open.empty(); boRoot = false) {
        const oxa::Element element = open.back();
        open.pop_back();
        if (!boRoot && (!type || element.is(*type))) all.append(entityNew(entity.home(), element));
        if (!boRoot && !boDeep) continue;
        std::vector<oxa::Element> next;
        for (const oxa::Elements& some : {oxa::parts(element), oxa::contents(element)})
            for (const oxa::Element part : some)
                if (seen.insert(part).second) next.push_back(part);
        open.insert(open.end(), next.rbegin(), next.rend());
    }
    return all;
}

// What the relationship names: a material, a set, a usage, a list; the element's own, else the type's.
oxa::Element relatedMaterial(const oxa::Element& element) {
    for (const oxa::Element relation :
         element.has("HasAssociations") ? element.inverse("HasAssociations") : oxa::Elements())
        if (relation.is("IfcRelAssociatesMaterial")) return relation.element("RelatingMaterial");
    return {};
}

nb::object material(nb::handle object, bool boSkipUsage, bool boInherit) {
    const EntityObject& entity = entityFrom(object);
    const oxa::Element& element = entity.looked();
    oxa::Element found = relatedMaterial(element);
    if (!found && boInherit)
        if (const oxa::Element type = oxa::type(element)) found = relatedMaterial(type);
    if (found && boSkipUsage)
        for (const char* pSet : {"ForLayerSet", "ForProfileSet"})
            if (found.has(pSet)) found = found.element(pSet);
    return entityNew(entity.home(), found);
}

// Of an element, else of its type; what USERDEFINED stands for.
nb::object predefinedType(nb::handle object) {
    const EntityObject& entity = entityFrom(object);
    const oxa::Element& element = entity.looked();
    const auto own = [](const oxa::Element& asked) -> std::string {
        std::string sText = asked && asked.has("PredefinedType") ? asked.text("PredefinedType").value_or("") : "";
        if (sText != "USERDEFINED") return sText;
        for (const char* pName : {"ObjectType", "ElementType", "ProcessType", "ResourceType"})
            if (asked.has(pName))
                if (const auto text = asked.text(pName)) return *text;
        return sText;
    };
    const oxa::Element type = oxa::type(element);
    std::string sText = own(type);
    if (sText.empty() || sText == "NOTDEFINED")
        if (const std::string sOwn = own(element); !sOwn.empty()) sText = sOwn;
    return sText.empty() ? nb::none() : textToPython(sText);
}

nb::list materials(nb::handle object) {
    const EntityObject& entity = entityFrom(object);
    nb::list all;
    std::unordered_set<oxa::Element> seen;
    for (const oxa::Material& one : oxa::materials(entity.looked()))
        if (one.element && seen.insert(one.element).second) all.append(entityNew(entity.home(), one.element));
    return all;
}

}   // namespace

void vBindUtil(nb::module_& module) {
    module.def(
        "get_psets", &psets, nb::arg("element").none(), nb::arg("psets_only") = false, nb::arg("qtos_only") = false,
        nb::arg("should_inherit") = true,
        "Property sets and sets of quantities of an element, or of a type object:\n"
        "{\"Pset_WallCommon\": {\"FireRating\": \"F 90\", \"id\": 12}}, \"id\" being the number of the set. What the "
        "element\n"
        "says itself hides what its type says; should_inherit: False leaves out the type. Values are bare; lists and\n"
        "enumerations are tuples; bounded, table and complex ones are dicts.");
    module.def("get_type", &typeOf, nb::arg("element").none(),
               "The type object of an element, of a type object itself; None.");
    module.def("get_container", &container, nb::arg("element").none(), nb::arg("ifc_class") = nb::none(),
               "The nearest spatial element above, of a wall its storey; with a class the nearest of that, as "
               "IfcBuilding; None.");
    module.def(
        "get_parent", &one<&oxa::parent>, nb::arg("element").none(),
        "One step up, towards the project: the whole of a part, else the spatial element that contains it, else the\n"
        "element that an opening voids or the opening that it fills; None.");
    module.def(
        "get_decomposition", &decomposition, nb::arg("element").none(), nb::arg("ifc_class") = nb::none(),
        nb::arg("is_recursive") = true,
        "A list of what an element consists of and contains, and what that does, from the top down: parts, what is\n"
        "nested, openings and fillings; of a storey what stands in it. With a class only those of it.");
    module.def("get_material", &material, nb::arg("element").none(), nb::arg("should_skip_usage") = false,
               nb::arg("should_inherit") = true,
               "The material, the layer, profile or constituent set, its usage, or the list that an element is related "
               "to, else\n"
               "its type; should_skip_usage: of a usage its set; None.");
    module.def("get_materials", &materials, nb::arg("element").none(),
               "A list of the materials that an element consists of, in their order, each once.");
    module.def(
        "get_predefined_type", &predefinedType, nb::arg("element").none(),
        "A str, as in \"SOLIDWALL\": of the type object, else of the element; for USERDEFINED what stands for it; "
        "None.");
}

}   // namespace oxa::python
