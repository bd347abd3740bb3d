// SPDX-License-Identifier: Apache-2.0
#include "Check/Ids/FacetRules.h"

#include <algorithm>
#include <set>

#include "platform/NearNames.h"

namespace oxa::ids::detail {

namespace schema = ifc::def::schema;

namespace {

const Node& parameter(const Node& facet, std::string_view child) {
    const Node* pFound = facet.pChild(child);
    return pFound ? *pFound : facet;
}

// The texts that a condition names; empty where it describes them.
std::vector<std::string> named(const Condition& condition) {
    return condition.simple ? std::vector{*condition.simple} : condition.enumeration;
}

// The enumeration in which a class tells its predefined types; null where it does not.
const schema::DataTypeEnum* pPredefinedTypes(const schema::Entity& type) {
    const schema::Attribute* pAttribute = pOwnAttribute(type, g_predefinedType);
    return pAttribute ? dynamic_cast<const schema::DataTypeEnum*>(schema::pDataTypeOf(pAttribute->pType())) : nullptr;
}

// Of an instance or of its type: what IFC2X3 says of a wall stands at its IfcWallType.
std::vector<const schema::DataTypeEnum*> predefinedTypes(const schema::Schema& schema, const schema::Entity& type) {
    std::vector<const schema::DataTypeEnum*> found;
    if (const auto* pOwn = pPredefinedTypes(type)) found.push_back(pOwn);
    for (const schema::Entity* pType = &type; pType; pType = pType->pParent) {
        const auto* pOfType = schema::pAsEntity(schema.pObjectFromName(pType->sName + "Type"));
        const auto* pTypes = pOfType ? pPredefinedTypes(*pOfType) : nullptr;
        if (pTypes) found.push_back(pTypes);
    }
    return found;
}

bool boAllows(const schema::DataTypeEnum& types, const std::string& sName) {
    return types.items.contains(sName) || types.items.contains(std::string_view("USERDEFINED"));
}

}   // namespace

void FacetRules::vBegin(const Specification& specification) {
    m_schemas.clear();
    for (const std::string& sSchema : specification.schemas)
        if (const SchemaNames* pNames = SchemaNames::pOf(sSchema)) m_schemas.push_back(pNames);
    m_applicable.clear();
}

template <class Names>
std::string FacetRules::near(std::string_view wanted, const Names& names) {
    constexpr std::size_t most = 100;   // a look at all names costs more than the rest of a fault
    if (m_iHints >= most) return {};
    ++m_iHints;
    std::set<std::string_view> known;
    names(known);
    std::string sText;
    for (const std::string_view name : str::nearNames(wanted, {known.begin(), known.end()}))
        sText += (sText.empty() ? "" : ", ") + std::string(name);
    return sText.empty() ? sText : "; did you mean " + sText + "?";
}

void FacetRules::vCheck(const Facet& facet, const Node& node, bool boRequirement) {
    switch (facet.kind) {
    case FacetKind::Entity: vEntity(facet, node, !boRequirement); break;
    case FacetKind::PartOf:
        if (const Node* pEntity = node.pChild("entity")) vEntity(facet, *pEntity, false);
        break;
    case FacetKind::Classification:
        if (facet.system) m_conditions.vCheckText(node, "system", *facet.system);
        if (facet.value) m_conditions.vCheckText(node, "value", *facet.value);
        break;
    case FacetKind::Attribute: vAttribute(facet, node); break;
    case FacetKind::Property: vProperty(facet, node); break;
    case FacetKind::Material:
        if (facet.value) m_conditions.vCheckText(node, "value", *facet.value);
        break;
    }
    if (boRequirement) vNeverFails(facet, node);
}

FacetRules::Classes FacetRules::classesOf(const SchemaNames& names, const Condition& condition) {
    const Matcher matcher(condition, m_patterns);
    Classes classes{&names, {}, {}};
    if (condition.simple) {   // without a look at all of them
        const auto* pClass = schema::pAsEntity(names.schema().pObjectFromName(*condition.simple));
        if (pClass && pClass->sNameUpper == *condition.simple) classes.found.push_back(pClass);
        if (const TypedOccurrence* pTyped = names.pTyped(*condition.simple)) classes.typed.push_back(pTyped);
        return classes;
    }
    for (const schema::Entity* pClass : names.classes())
        if (matcher.boText(pClass->sNameUpper)) classes.found.push_back(pClass);
    for (const TypedOccurrence& one : names.typed())
        if (matcher.boText(one.sNameUpper)) classes.typed.push_back(&one);
    return classes;
}

std::vector<FacetRules::Classes> FacetRules::checkClass(const Node& node, const Condition& condition) {
    std::vector<Classes> classes;
    for (const SchemaNames* pNames : m_schemas) classes.push_back(classesOf(*pNames, condition));
    m_conditions.vCheckText(node, "name", condition);
    const std::vector<std::string> names = named(condition);
    for (const std::string& sName : names)
        if (!sName.empty()) vCheckName(node, sName, classes, condition.simple.has_value());
    if (condition.simple) return classes;
    for (const Classes& one : classes)
        if (one.boNone())
            m_faults.vAdd(parameter(node, "name"), "Ids_UnknownClass",
                          "no class of " + one.pNames->schema().sName + " is " + condition.text(), condition.text());
    return classes;
}

// One name has to be a class of all schemas, each of several that of one.
void FacetRules::vCheckName(const Node& node, const std::string& sName, const std::vector<Classes>& classes,
                            bool boAll) {
    std::string sLacking;
    bool boKnown = classes.empty();
    const schema::Entity* pAbstract = nullptr;
    for (const Classes& one : classes) {
        const auto* pClass = schema::pAsEntity(one.pNames->schema().pObjectFromName(sName));
        if (pClass && pClass->sNameUpper != sName) {
            m_faults.vAdd(parameter(node, "name"), "Ids_UnknownClass",
                          "a class is written in upper case, as " + pClass->sNameUpper, sName);
            return;
        }
        if (pClass || one.pNames->pTyped(sName)) {
            boKnown = true;
            if (pClass && pClass->boAbstract) pAbstract = pClass;
        } else {
            sLacking += (sLacking.empty() ? "" : " and ") + one.pNames->schema().sName;
        }
    }
    if (boKnown && pAbstract)
        m_faults.vNote(parameter(node, "name"), "Ids_AbstractClass",
                       "no instance is " + sName + " itself, which is abstract, and subclasses are not meant", sName);
    if (sLacking.empty() || (boKnown && !boAll)) return;
    const auto vKnown = [this](std::set<std::string_view>& known) {
        for (const SchemaNames* pNames : m_schemas)
            for (const schema::Entity* pClass : pNames->classes()) known.insert(pClass->sNameUpper);
    };
    m_faults.vAdd(parameter(node, "name"), "Ids_UnknownClass",
                  sName + " is no class of " + sLacking + (boKnown ? "" : near(sName, vKnown)), sName);
}

void FacetRules::vCheckPredefinedType(const Node& node, const Condition& condition,
                                      const std::vector<Classes>& classes) {
    m_conditions.vCheckText(node, "predefinedType", condition);
    const Node& place = parameter(node, "predefinedType");
    for (const Classes& one : classes) {
        std::vector<const schema::DataTypeEnum*> types;
        const schema::Schema& schema = one.pNames->schema();
        for (const schema::Entity* pClass : one.found)
            for (const auto* pTypes : predefinedTypes(schema, *pClass)) types.push_back(pTypes);
        for (const TypedOccurrence* pTyped : one.typed)
            for (const auto* pTypes : predefinedTypes(schema, *pTyped->pType)) types.push_back(pTypes);
        if (one.boNone()) continue;   // told already
        if (types.empty()) {
            m_faults.vAdd(place, "Ids_NoPredefinedType", "the class has no predefined type in " + schema.sName,
                          condition.text());
            continue;
        }
        for (const std::string& sName : named(condition)) vCheckCase(place, sName, types);
        for (const std::string& sName : named(condition))
            if (std::ranges::none_of(types, [&](const auto* pTypes) { return boAllows(*pTypes, sName); }))
                m_faults.vAdd(place, "Ids_UnknownPredefinedType",
                              sName + " is no predefined type in " + schema.sName +
                                  ", which has none of a user's own here",
                              sName);
    }
}

// A user's own type may be called so, and hardly is.
void FacetRules::vCheckCase(const Node& place, const std::string& sName,
                            const std::vector<const schema::DataTypeEnum*>& types) {
    const std::string sUpper = schema::sUpper(sName);
    if (sUpper != sName &&
        std::ranges::any_of(types, [&](const auto* pTypes) { return pTypes->items.contains(sUpper); }))
        m_faults.vNote(place, "Ids_PredefinedTypeCase",
                       "the predefined type " + sUpper + " is written in upper case, and this is a user's own", sName);
}

void FacetRules::vEntity(const Facet& facet, const Node& node, bool boApplicability) {
    if (!facet.entity) return;
    std::vector<Classes> classes = checkClass(node, *facet.entity);
    if (facet.predefinedType) vCheckPredefinedType(node, *facet.predefinedType, classes);
    if (!boApplicability) return;
    m_applicable = std::move(classes);
}

void FacetRules::vAttribute(const Facet& facet, const Node& node) {
    if (!facet.name) return;
    m_conditions.vCheckText(node, "name", *facet.name);
    const Matcher matcher(*facet.name, m_patterns);
    std::vector<const schema::Attribute*> attributes;
    for (const SchemaNames* pNames : m_schemas) {
        const auto limited = std::ranges::find(m_applicable, pNames, &Classes::pNames);
        if (limited != m_applicable.end() && limited->boNone()) continue;   // told already
        const std::size_t iBefore = attributes.size();
        const bool boInverse = limited == m_applicable.end() ? boOfAny(*pNames, *facet.name, matcher, attributes)
                                                             : boOfClasses(*limited, matcher, attributes);
        if (attributes.size() == iBefore) vUnknownAttribute(*pNames, facet, node, boInverse);
    }
    std::ranges::sort(attributes);
    attributes.erase(std::unique(attributes.begin(), attributes.end()), attributes.end());
    if (facet.value && !attributes.empty()) vAttributeValue(facet, node, attributes);
}

// The attributes that are meant, of whatever class; true where an inverse one is.
bool FacetRules::boOfAny(const SchemaNames& names, const Condition& condition, const Matcher& matcher,
                         std::vector<const schema::Attribute*>& attributes) {
    const auto vAdd = [&](const std::vector<const schema::Attribute*>& some) {
        attributes.insert(attributes.end(), some.begin(), some.end());
    };
    const std::vector<std::string> wanted = named(condition);
    bool boInverse = false;
    for (const std::string& sName : wanted) {
        if (const auto* pSome = names.pAttributes(sName)) vAdd(*pSome);
        boInverse = boInverse || names.inverses().contains(sName);
    }
    if (!wanted.empty()) return boInverse;
    for (const auto& [sName, some] : names.attributes())
        if (matcher.boText(sName)) vAdd(some);
    return std::ranges::any_of(names.inverses(), [&](std::string_view sName) { return matcher.boText(sName); });
}

// The same of some classes.
bool FacetRules::boOfClasses(const Classes& classes, const Matcher& matcher,
                             std::vector<const schema::Attribute*>& attributes) {
    bool boInverse = false;
    const auto vClass = [&](const schema::Entity& type) {
        for (const schema::Attribute* pAttribute : type.allAttributes())
            if (matcher.boText(pAttribute->sName) && !boDerived(type, *pAttribute)) attributes.push_back(pAttribute);
        for (const schema::AttributeInverse* pInverse : type.allInverseAttributes())
            boInverse = boInverse || matcher.boText(pInverse->sName);
    };
    for (const schema::Entity* pClass : classes.found) vClass(*pClass);
    for (const TypedOccurrence* pTyped : classes.typed) vClass(*pTyped->pOccurrence);
    return boInverse;
}

void FacetRules::vUnknownAttribute(const SchemaNames& names, const Facet& facet, const Node& node, bool boInverse) {
    const std::string sName = facet.name->text();
    const auto limited = std::ranges::find(m_applicable, &names, &Classes::pNames);
    const schema::Entity* pClass =
        limited != m_applicable.end() && limited->found.size() == 1 ? limited->found.front() : nullptr;
    std::string sWhose = pClass ? pClass->sName : std::string("a class");
    const auto vKnown = [&](std::set<std::string_view>& known) {
        if (!pClass)
            for (const auto& [sKnown, some] : names.attributes()) known.insert(sKnown);
        else
            for (const schema::Attribute* pAttribute : pClass->allAttributes()) known.insert(pAttribute->sName);
    };
    sWhose += " of " + names.schema().sName;
    m_faults.vAdd(parameter(node, "name"), "Ids_UnknownAttribute",
                  boInverse ? sName + " is an inverse attribute of " + sWhose + ", which can't be checked"
                            : sName + " is no attribute of " + sWhose +
                                  (facet.name->simple ? near(sName, vKnown) : std::string()),
                  sName);
}

void FacetRules::vAttributeValue(const Facet& facet, const Node& node,
                                 const std::vector<const schema::Attribute*>& attributes) {
    std::vector<Base> bases;
    for (const schema::Attribute* pAttribute : attributes) {
        const std::optional<Base> eBase = baseOf(pAttribute->pType());
        if (eBase && std::ranges::find(bases, *eBase) == bases.end()) bases.push_back(*eBase);
    }
    std::ranges::sort(bases);
    if (!bases.empty()) return m_conditions.vCheckValue(node, *facet.value, bases, facet.name->text());
    m_faults.vAdd(parameter(node, "value"), "Ids_NoValue",
                  facet.name->text() + " is " + schema::sTypeText(attributes.front()->pType()) +
                      ", of which only its presence can be checked",
                  facet.value->text());
}

void FacetRules::vProperty(const Facet& facet, const Node& node) {
    if (facet.propertySet) m_conditions.vCheckText(node, "propertySet", *facet.propertySet);
    if (facet.name) m_conditions.vCheckText(node, "baseName", *facet.name);
    if (facet.dataType.empty()) {
        if (facet.value)
            m_faults.vNote(node, "Ids_NoDataType", "a value without a dataType is compared with whatever stands there");
        return;
    }
    std::vector<Base> bases;
    std::string sLacking;
    for (const SchemaNames* pNames : m_schemas) {
        const schema::Type* pType = pNames->pDataType(facet.dataType);
        if (!pType) sLacking += (sLacking.empty() ? "" : " and ") + pNames->schema().sName;
        const std::optional<Base> eBase = baseOf(pType);
        if (eBase && std::ranges::find(bases, *eBase) == bases.end()) bases.push_back(*eBase);
    }
    if (!sLacking.empty()) {
        const auto vKnown = [this](std::set<std::string_view>& known) {
            for (const SchemaNames* pNames : m_schemas)
                for (const schema::Schema::Record& record : pNames->schema().objects)
                    if (pNames->pDataType(record.key)) known.insert(record.key);
        };
        m_faults.vAdd(node, "Ids_UnknownDataType",
                      facet.dataType + " is no type of values of " + sLacking + near(facet.dataType, vKnown),
                      facet.dataType);
    }
    if (facet.value) m_conditions.vCheckValue(node, *facet.value, bases, facet.dataType);
}

// Combinations that the standard's list of configurations leaves out.
void FacetRules::vNeverFails(const Facet& facet, const Node& node) {
    if (facet.cardinality == Cardinality::Optional && !facet.value && facet.dataType.empty())
        m_faults.vNote(node, "Ids_NeverFails", "an optional requirement without a value can't fail");
    if (facet.cardinality == Cardinality::Prohibited && facet.kind == FacetKind::Property && !facet.dataType.empty())
        m_faults.vNote(node, "Ids_ProhibitedDataType",
                       facet.value ? "what is prohibited is the property with this value"
                                   : "the property is prohibited whatever its type");
}

}   // namespace oxa::ids::detail
