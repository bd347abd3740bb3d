// SPDX-License-Identifier: Apache-2.0
#include "Properties.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "Errors.h"
#include "Model/SetProperty.h"
#include "Values.h"
#include "platform/NearNames.h"

namespace oxa::python {

namespace {

// Without the type that a select wraps it in.
nb::object bareToPython(const Home& home, const oxa::Value& value) {
    nb::object object = valueToPython(home, value);
    if (value.kind() == oxa::Kind::List) {
        nb::list items;
        for (const oxa::Value& item : value.items()) items.append(bareToPython(home, item));
        return nb::tuple(items);
    }
    if (const TypedObject* const pTyped = typedOf(object)) return pTyped->value;
    return object;
}

// Names that may have been meant by "name", as the end of a message.
std::string sNear(std::string_view name, const std::vector<std::string_view>& names) {
    std::string sText;
    for (const std::string_view one : str::nearNames(name, names)) {
        sText += sText.empty() ? "; did you mean " : ", ";
        sText += one;
    }
    return sText.empty() ? sText : sText + "?";
}

[[noreturn]] void vThrowMissing(const EntityObject& entity, std::string_view set, std::string_view name) {
    std::vector<oxa::PropertySet> sets = oxa::psets(entity.element);
    for (oxa::PropertySet& one : oxa::quantities(entity.element)) sets.push_back(std::move(one));
    const std::string sWhat = std::string(entity.element.type()) + " #" + std::to_string(entity.element.id());
    std::vector<std::string_view> names;
    for (const oxa::PropertySet& one : sets) {
        if (one.name != set) continue;
        for (const oxa::Property& property : one.properties) names.push_back(property.name);
        vThrowNotFound(sWhat + " has no " + std::string(name) + " in " + std::string(set) + sNear(name, names));
    }
    for (const oxa::PropertySet& one : sets) names.push_back(one.name);
    vThrowNotFound(sWhat + " has no set " + std::string(set) + sNear(set, names));
}

std::string sTypeSearch(const oxa::Model& model, std::string_view set, std::string_view name) {
    for (const oxa::Element one : model.all("IfcPropertySet")) {
        if (one.text("Name").value_or("") != set) continue;
        for (const oxa::Element property : one.elements("HasProperties")) {
            if (!property.is("IfcPropertySingleValue") || property.text("Name").value_or("") != name) continue;
            const oxa::Value value = property["NominalValue"];
            if (value.isTyped()) return std::string(value.typeName());
        }
    }
    return {};
}

}   // namespace

const std::string& PropertyTypes::sType(const oxa::Model& model, std::string_view set, std::string_view name) {
    const auto [place, boNew] = m_types.try_emplace({std::string(set), std::string(name)});
    if (boNew) place->second = sTypeSearch(model, set, name);
    return place->second;
}

nb::object propertyToPython(const Home& home, const oxa::Property& property) {
    switch (property.kind) {
    case oxa::PropertyKind::Single:
    case oxa::PropertyKind::Enumerated:
    case oxa::PropertyKind::List:
    case oxa::PropertyKind::Reference:
    case oxa::PropertyKind::Quantity:
    case oxa::PropertyKind::Attribute: return bareToPython(home, property.value);
    case oxa::PropertyKind::Bounded: {
        nb::dict values;
        values["LowerBoundValue"] = bareToPython(home, property.lower);
        values["UpperBoundValue"] = bareToPython(home, property.upper);
        values["SetPointValue"] = bareToPython(home, property.value);
        return values;
    }
    case oxa::PropertyKind::Table: {
        nb::dict values;
        values["DefiningValues"] = bareToPython(home, property.defining);
        values["DefinedValues"] = bareToPython(home, property.value);
        return values;
    }
    case oxa::PropertyKind::Complex: break;
    }
    nb::dict values;
    for (const oxa::Property& part : property.properties)
        values[textToPython(part.name)] = propertyToPython(home, part);
    return values;
}

nb::object propertyGet(const EntityObject& entity, std::string_view set, std::string_view name) {
    const std::optional<oxa::Property> found = oxa::property(entity.looked(), set, name);
    if (!found) vThrowMissing(entity, set, name);
    return propertyToPython(entity.home(), *found);
}

void vPropertySet(ModelObject& model, std::span<const oxa::Element> elements, std::string_view set,
                  std::string_view name, const oxa::NewValue& value) {
    const auto boThere = [&](const oxa::Element& element) { return oxa::property(element, set, name).has_value(); };
    oxa::Model& changed = model.changing();
    const bool boPlain = value.typeName().empty() && !std::holds_alternative<std::monostate>(value.content()) &&
                         !std::holds_alternative<oxa::NewValue::List>(value.content());
    if (!boPlain || std::ranges::all_of(elements, boThere))
        return oxa::setProperty(changed, elements, set, name, value);
    const std::string sType = model.typesInFile().sType(changed, set, name);
    // Those that have a value keep its type.
    std::vector<oxa::Element> with, without;
    for (const oxa::Element& element : elements) (boThere(element) ? with : without).push_back(element);
    oxa::setProperty(changed, without, set, name, sType.empty() ? value : oxa::typed(sType, value));
    if (!with.empty()) oxa::setProperty(changed, with, set, name, value);
}

}   // namespace oxa::python
