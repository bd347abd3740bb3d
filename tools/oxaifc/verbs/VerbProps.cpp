// SPDX-License-Identifier: Apache-2.0
// VerbProps: "oxaifc props": what a file says of one element: its attributes, and what it is related to.

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Format/Ifc/IfcFileEntity.h"
#include "Model/Columns.h"
#include "Model/Relations.h"
#include "Model/Units.h"
#include "oxaifc/formats/ElementModel.h"
#include "oxaifc/io/Output.h"
#include "oxaifc/report/TypedJson.h"
#include "oxaifc/verbs/Selection.h"
#include "oxaifc/verbs/Verb.h"

namespace oxa::tool {

namespace {

struct PropsOptions : ModelOptions {
    std::string sWhat;
    bool boJson = false;
};

// What an element is related to that is one element or none.
struct RelatedRow {
    const char* pName;
    const char* pKey;   // in JSON, where "type" is the name of the class
    Element (*related)(const Element& element);
};
constexpr RelatedRow g_related[] = {{"type", "typeObject", type},
                                    {"storey", "storey", storey},
                                    {"container", "container", container}};

const char* pSource(Source eSource) { return eSource == Source::Type ? "type" : "instance"; }

// JSON

Json propertiesJson(const std::vector<Property>& properties);

Json propertyJson(const Property& property) {
    if (property.kind == PropertyKind::Bounded)
        return {{"lower", plainJson(property.lower)},
                {"upper", plainJson(property.upper)},
                {"value", plainJson(property.value)}};
    if (property.kind == PropertyKind::Table)
        return {{"defining", plainJson(property.defining)}, {"defined", plainJson(property.value)}};
    if (property.kind == PropertyKind::Complex || !property.properties.empty())
        return propertiesJson(property.properties);
    return plainJson(property.value);
}

Json propertiesJson(const std::vector<Property>& properties) {
    Json json = Json::object();
    for (const Property& property : properties) json[property.name] = propertyJson(property);
    return json;
}

Json setsJson(const std::vector<PropertySet>& sets) {
    Json json = Json::object();
    for (const PropertySet& set : sets) json[set.name] = propertiesJson(set.properties);
    return json;
}

// Keys without a value are left out.
Json materialsJson(const Element& element) {
    Json json = Json::array();
    for (const Material& material : materials(element)) {
        Json& entry = json.emplace_back(Json{{"name", material.name}});
        if (!material.part.empty()) entry["part"] = material.part;
        if (material.set && !material.setName.empty()) entry["set"] = material.setName;
        if (material.thickness) entry["thickness"] = *material.thickness;
        if (material.fraction) entry["fraction"] = *material.fraction;
        entry["source"] = pSource(material.source);
    }
    return json;
}

Json classificationsJson(const Element& element) {
    Json json = Json::array();
    for (const Classification& one : classifications(element))
        json.push_back(
            {{"system", one.system}, {"code", one.code}, {"name", one.name}, {"source", pSource(one.source)}});
    return json;
}

Json propsJson(const Element& element) {
    Json json = typedJson(element);
    json["psets"] = setsJson(psets(element));
    json["quantities"] = setsJson(quantities(element));
    for (const RelatedRow& row : g_related) json[row.pKey] = nameJson(row.related(element));
    json["materials"] = materialsJson(element);
    json["classifications"] = classificationsJson(element);
    return json;
}

// Text

class Page {
public:
    Page(const oxa::Model& model, Output& output) : m_units(model), m_output(output) {}

    void vElement(const Element& element) {
        m_output.vPrint("{}\n", m_output.sTinted(Tint::Bold, sTitle(element)));
        for (const Attribute& attribute : element.attributes())
            vRow(attribute.name, sMeasured(attribute.value.toString(), m_units.measure(attribute.value)));
        for (const RelatedRow& row : g_related)
            if (const Element related = row.related(element)) vRow(row.pName, sTitle(related));
        vMaterials(element);
        for (const Classification& one : classifications(element))
            vRow("classification", sJoined({one.system, one.code, one.name}) + sFrom(one.source));
        for (const auto& sets : {psets(element), quantities(element)})
            for (const PropertySet& set : sets) {
                vHead(set.name + sFrom(set.source));
                vProperties(set.properties, set.source, 1);
            }
    }

private:
    static constexpr std::size_t g_iNameWidth = 24;

    static std::string sTitle(const Element& element) {
        return sJoined({fmt::format("#{} {}", element.id(), element.type()), sNameOf(element)});
    }
    static std::string sJoined(const std::vector<std::string>& parts) {
        std::string sText;
        for (const std::string& sPart : parts)
            if (!sPart.empty()) sText += (sText.empty() ? "" : " ") + sPart;
        return sPrintable(sText);
    }
    static std::string sFrom(Source eSource) { return eSource == Source::Type ? " (of the type)" : ""; }
    static std::string sMeasured(std::string sText, const std::optional<Measure>& measure) {
        if (measure && measure->unit) sText += " " + measure->unit->symbol;
        return sText;
    }

    void vHead(const std::string& sText) { m_output.vPrint("{}\n", m_output.sTinted(Tint::Bold, sPrintable(sText))); }
    void vRow(std::string_view name, const std::string& sText, std::size_t iDepth = 1) {
        const std::string sLine =
            fmt::format("{:{}}{:<{}}  {}", "", 2 * iDepth, sPrintable(name), g_iNameWidth, sPrintable(sText));
        m_output.vPrint("{}\n", std::string_view(sLine).substr(0, sLine.find_last_not_of(' ') + 1));
    }

    void vMaterials(const Element& element) {
        for (const Material& material : materials(element)) {
            std::string sText = material.part;
            if (material.name != material.part) sText += (sText.empty() ? "" : ": ") + material.name;
            if (sText.empty()) sText = "-";   // a layer of air
            if (material.thickness) {
                const Unit* pUnit = m_units.find("LENGTHUNIT");
                sText += fmt::format(", {}{}", toText(Cell(*material.thickness)), pUnit ? " " + pUnit->symbol : "");
            }
            if (material.fraction) sText += fmt::format(", fraction {}", toText(Cell(*material.fraction)));
            vRow("material", sText + sFrom(material.source));
        }
    }

    // A set that comes from the type says so in its head.
    void vProperties(const std::vector<Property>& properties, Source eSet, std::size_t iDepth) {
        for (const Property& property : properties) {
            vRow(property.name, sValue(property) + (property.source == eSet ? "" : sFrom(property.source)), iDepth);
            vProperties(property.properties, property.source, iDepth + 1);
        }
    }
    std::string sValue(const Property& property) const {
        const std::string sText = property.value.toString();
        if (property.kind == PropertyKind::Table) return property.defining.toString() + " -> " + sText;
        if (property.kind == PropertyKind::Bounded)
            return fmt::format("{} (from {} to {})", sText, property.lower.toString(), property.upper.toString());
        return sMeasured(sText, m_units.measure(property));
    }

    Units m_units;
    Output& m_output;
};

int iProps(const PropsOptions& options, Output& output) {
    ElementModel file(options);
    const Element element =
        file.model().byId(file.file().data().iIdFromEntity(entitySelected(file.file(), options.sWhat)));
    if (options.boJson)
        output.vJson(propsJson(element));
    else
        Page(file.model(), output).vElement(element);
    return file.iExitCode();
}

VerbRun declare(Command command) {
    const auto pOptions = std::make_shared<PropsOptions>();
    pOptions->vDeclare(command);
    command.option("WHAT", pOptions->sWhat, "a number as 12 or '#12', or a GlobalId (22 characters or hexadecimal)")
        .required()
        .value("");
    command.flag("--json", pOptions->boJson, "print one JSON object");
    return [pOptions](Output& output) { return iProps(*pOptions, output); };
}

}   // namespace

extern const Verb g_verbProps{"props", "All of one element: attributes, type, storey, materials, properties", declare};

}   // namespace oxa::tool
