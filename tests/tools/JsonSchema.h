// SPDX-License-Identifier: Apache-2.0
// JsonSchema: holds a JSON value to a schema (draft 2020-12), by the keywords that docs/oxaifc.schema.json uses.
//
// Not for  other schemas: a keyword that is not known here is a fault of its own, so that none is passed over.
#pragma once

#include <algorithm>
#include <string>

#include <nlohmann/json.hpp>

namespace oxa::test {

class JsonSchema {
public:
    using Json = nlohmann::ordered_json;

    explicit JsonSchema(Json schema) : m_schema(std::move(schema)) {}

    // The definitions that it has.
    [[nodiscard]] const Json& definitions() const { return m_schema["$defs"]; }

    // What is wrong with a value, as "/records/0/line: is no integer"; empty where nothing is.
    [[nodiscard]] std::string sFault(const Json& value, const std::string& sDefinition) const {
        return sFault(value, m_schema["$defs"].at(sDefinition), "");
    }

private:
    [[nodiscard]] std::string sFault(const Json& value, const Json& schema, const std::string& sAt) const {
        for (const auto& [sKeyword, rule] : schema.items())
            if (std::string sText = sByKeyword(sKeyword, rule, value, sAt); !sText.empty()) return sText;
        return sMembers(schema, value, sAt);
    }

    [[nodiscard]] std::string sByKeyword(const std::string& sKeyword, const Json& rule, const Json& value,
                                         const std::string& sAt) const {
        if (sKeyword == "description") return {};
        if (sKeyword == "properties" || sKeyword == "additionalProperties") return {};   // sMembers
        if (sKeyword == "$ref")
            return sFault(value, m_schema.at(Json::json_pointer(rule.get<std::string>().substr(1))), sAt);
        if (sKeyword == "type") return boType(value, rule) ? "" : sAt + ": is no " + rule.dump();
        if (sKeyword == "const") return value == rule ? "" : sAt + ": is not " + rule.dump();
        if (sKeyword == "enum")
            return std::find(rule.begin(), rule.end(), value) != rule.end() ? "" : sAt + ": is none of " + rule.dump();
        if (sKeyword == "minimum")
            return !value.is_number() || value >= rule ? "" : sAt + ": is less than " + rule.dump();
        if (sKeyword == "minItems") return !value.is_array() || value.size() >= rule ? "" : sAt + ": has too few items";
        if (sKeyword == "anyOf") return sAnyOf(rule, value, sAt);
        if (sKeyword == "required") return sRequired(rule, value, sAt);
        if (sKeyword == "items") return sItems(rule, value, sAt);
        return sAt + ": the schema has the keyword " + sKeyword + ", which is not known here";
    }

    // "properties" and "additionalProperties".
    [[nodiscard]] std::string sMembers(const Json& schema, const Json& value, const std::string& sAt) const {
        if (!value.is_object()) return {};
        const Json none = Json::object();
        const Json& known = schema.contains("properties") ? schema["properties"] : none;
        for (const auto& [sName, member] : value.items()) {
            const std::string sPlace = sAt + "/" + sName;
            std::string sText;
            if (known.contains(sName))
                sText = sFault(member, known[sName], sPlace);
            else if (schema.contains("additionalProperties"))
                sText = sMore(schema["additionalProperties"], member, sPlace);
            if (!sText.empty()) return sText;
        }
        return {};
    }
    [[nodiscard]] std::string sMore(const Json& rule, const Json& member, const std::string& sAt) const {
        if (rule.is_boolean()) return rule.get<bool>() ? "" : sAt + ": is not among the members";
        return sFault(member, rule, sAt);
    }

    static bool boType(const Json& value, const Json& rule) {
        if (rule.is_array())
            return std::any_of(rule.begin(), rule.end(), [&](const Json& one) { return boType(value, one); });
        const std::string sType = rule.get<std::string>();
        if (sType == "integer") return value.is_number_integer();
        if (sType == "number") return value.is_number();
        return sType == value.type_name();
    }

    [[nodiscard]] std::string sAnyOf(const Json& rules, const Json& value, const std::string& sAt) const {
        std::string sLast;
        for (const Json& rule : rules)
            if (sLast = sFault(value, rule, sAt); sLast.empty()) return {};
        return sAt + ": fits none of " + std::to_string(rules.size()) + " forms; the last: " + sLast;
    }
    static std::string sRequired(const Json& names, const Json& value, const std::string& sAt) {
        if (!value.is_object()) return {};
        for (const Json& name : names)
            if (!value.contains(name.get<std::string>())) return sAt + ": has no " + name.get<std::string>();
        return {};
    }
    [[nodiscard]] std::string sItems(const Json& rule, const Json& value, const std::string& sAt) const {
        if (!value.is_array()) return {};
        for (std::size_t i = 0; i < value.size(); ++i)
            if (std::string sText = sFault(value[i], rule, sAt + "/" + std::to_string(i)); !sText.empty()) return sText;
        return {};
    }

    Json m_schema;
};

}   // namespace oxa::test
