// SPDX-License-Identifier: Apache-2.0
#include "oxaifc/report/TypedJson.h"

#include <string>

#include "Model/Value.h"

namespace oxa::tool {

namespace {

template <class Item>
Json listJson(const Value& value, Item&& item) {
    Json list = Json::array();
    for (const Value& each : value.items()) list.push_back(item(each));
    return list;
}

Json logicalJson(const Value& value) {
    const std::optional<bool> known = value.boolean();
    return known ? Json(*known) : Json("UNKNOWN");
}

// A reference that the file does not define says nothing.
Json referenceJson(const Element& element) { return element ? Json{{"ref", element.id()}} : Json(); }

template <class Item>
Json valueJson(const Value& value, Item&& item) {
    switch (value.kind()) {
    case Kind::Null: break;
    case Kind::Derived: return {{"derived", true}};
    case Kind::Text:
    case Kind::Enumerator: return *value.text();
    case Kind::Number: return *value.number();
    case Kind::Integer: return *value.integer();
    case Kind::Boolean:
    case Kind::Logical: return logicalJson(value);
    case Kind::Binary: return value.toString();
    case Kind::Element: return referenceJson(value.element());
    case Kind::List: return listJson(value, item);
    }
    return nullptr;
}

}   // namespace

Json typedJson(const Value& value) {
    Json json = valueJson(value, [](const Value& item) { return typedJson(item); });
    if (!value.isTyped() || value.kind() == Kind::Element) return json;
    return {{"type", value.typeName()}, {"value", std::move(json)}};
}

Json plainJson(const Value& value) {
    return valueJson(value, [](const Value& item) { return plainJson(item); });
}

Json typedJson(const Element& element) {
    Json attributes = Json::object();
    for (const Attribute& attribute : element.attributes())
        attributes[std::string(attribute.name)] = typedJson(attribute.value);
    return {{"id", element.id()}, {"type", element.type()}, {"attributes", std::move(attributes)}};
}

Json textJson(const std::string& sText) { return sText.empty() ? Json() : Json(sText); }

std::string sNameOf(const Element& element) { return element.has("Name") ? element["Name"].toString() : std::string(); }

Json nameJson(const Element& element) {
    if (!element) return nullptr;
    const bool boNamed = element.has("Name") && !element["Name"].isNull();
    return {{"id", element.id()}, {"type", element.type()}, {"name", boNamed ? Json(sNameOf(element)) : Json()}};
}

}   // namespace oxa::tool
