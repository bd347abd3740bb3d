// SPDX-License-Identifier: Apache-2.0
// From declarations to the graph of a schema, in passes (pBuild), each over all types or entities. A pass may rely on
// the ones before it, because a fault ends the build behind the pass that found it, with all faults that this pass can
// find.
#include "provider/GraphBuilder.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>
#include <utility>

namespace oxa::ifc::def::express {

namespace {

using schema::ClassTag;
using schema::DataKind;
using schema::sUpper;

// Bounds for what a hostile text could nest; the published schemas stay below 20 everywhere.
constexpr unsigned g_iMaxSupertypes = 256;
constexpr unsigned g_iMaxTypeDepth = 32;
constexpr unsigned g_iMaxSelectDepth = 64;
constexpr unsigned g_iMaxExtensions = 32;
constexpr std::size_t g_iMaxMessages = 100;

constexpr std::size_t g_iNone = std::numeric_limits<std::size_t>::max();

// States of a select's height before it is one.
constexpr unsigned g_iHeightUnknown = 0;
constexpr unsigned g_iHeightOpen = std::numeric_limits<unsigned>::max();

// Nodes that each lead to at most one other: "next" holds its index, or none. Calls vDone for each node, after the one
// that it leads to; vCycle once for each cycle. What leads into a cycle is never done.
//
// Supertypes, "type A = B" and "enumeration based on" are all of this form, chains that join, and perhaps cycles. From
// each untouched node the chain is followed until it ends, meets a node that is done, or meets its own path, which is a
// cycle. Then the path is unwound, last node first, so that each node comes after the one that it leads to. Every node
// is on a path once: linear time, and no recursion, whatever a text declares.
template <class OnDone, class OnCycle>
void vWalkChains(const std::vector<std::size_t>& next, OnDone&& vDone, OnCycle&& vCycle) {
    enum class State : char { Untouched, OnPath, Done, Broken };
    std::vector<State> states(next.size(), State::Untouched);
    std::vector<std::size_t> path;
    for (std::size_t iStart = 0; iStart < next.size(); ++iStart) {
        path.clear();
        std::size_t iNode = iStart;
        for (; iNode != g_iNone && states[iNode] == State::Untouched; iNode = next[iNode]) {
            states[iNode] = State::OnPath;
            path.push_back(iNode);
        }
        const bool boCycle = iNode != g_iNone && states[iNode] == State::OnPath;
        if (boCycle) vCycle(iNode);
        const bool boBroken = boCycle || (iNode != g_iNone && states[iNode] == State::Broken);
        for (auto pNode = path.rbegin(); pNode != path.rend(); ++pNode) {
            if (!boBroken) vDone(*pNode);
            states[*pNode] = boBroken ? State::Broken : State::Done;
        }
    }
}

}   // namespace

GraphBuilder::GraphBuilder(const SchemaDeclaration& declaration, std::vector<SchemaMessage>& messages)
    : m_declaration(declaration),
      m_messages(messages) {}

std::unique_ptr<SchemaPset> GraphBuilder::pBuild() {
    using Pass = void (GraphBuilder::*)();
    static constexpr Pass passes[] = {
        &GraphBuilder::vDeclare,         &GraphBuilder::vExtendItems,          &GraphBuilder::vBuildDataTypes,
        &GraphBuilder::vFollowTypes,     &GraphBuilder::vFillSelects,          &GraphBuilder::vCheckTypeDepth,
        &GraphBuilder::vLinkSupertypes,  &GraphBuilder::vBuildAttributes,      &GraphBuilder::vBuildInverses,
        &GraphBuilder::vBuildRedeclared, &GraphBuilder::vMarkInverseRelations, &GraphBuilder::vNumberEntities,
    };
    for (const Pass vPass : passes) {
        (this->*vPass)();
        if (m_iMessages) return nullptr;
    }
    m_pSchema->vFinish();
    return std::move(m_pSchema);
}

// ---- Names

void GraphBuilder::vMessage(Place place, std::string sText) {
    if (++m_iMessages <= g_iMaxMessages) m_messages.push_back({place.iLine, place.iColumn, std::move(sText)});
}

void GraphBuilder::vMessageAbout(const Name& name, std::string_view text) {
    vMessage(name.place, ('"' + std::string(name.text) + "\" ").append(text));
}

const GraphBuilder::Named* GraphBuilder::pResolve(const Name& name) {
    if (const Named* pNamed = m_named.pFind(name.text)) return pNamed;
    vMessageAbout(name, "is not declared");
    return nullptr;
}

// The same, and null with the message "sOtherwise" unless the object is of that class.
const GraphBuilder::Named* GraphBuilder::pResolve(const Name& name, ClassTag tag, const char* sOtherwise) {
    const Named* pNamed = pResolve(name);
    if (!pNamed || pNamed->pObject->eClassTag == tag) return pNamed;
    vMessageAbout(name, sOtherwise);
    return nullptr;
}

template <class Object>
Object* GraphBuilder::pDeclare(const Name& name, std::size_t iIndex) {
    Object* pObject = m_pSchema->pAdopt(std::make_unique<Object>(std::string(name.text)));
    if (!m_named.boAdd(name.text, Named{pObject, iIndex})) vMessageAbout(name, "is declared twice");
    return pObject;
}

void GraphBuilder::vDeclare() {
    // STEP files name a schema in upper case.
    m_pSchema = std::make_unique<SchemaPset>(sUpper(m_declaration.name.text));
    m_pSchema->vReserve(m_declaration.types.size() * 2 + m_declaration.entities.size());   // a type's data type, too
    m_named.vReserve(m_declaration.types.size() + m_declaration.entities.size());
    m_types.reserve(m_declaration.types.size());
    m_entities.reserve(m_declaration.entities.size());
    for (const TypeDeclaration& type : m_declaration.types)
        m_types.push_back(pDeclare<schema::Type>(type.name, m_types.size()));
    for (const EntityDeclaration& entity : m_declaration.entities)
        m_entities.push_back(pDeclare<schema::Entity>(entity.name, m_entities.size()));
}

// ---- Types

// The items of a type, those of the type that it is based on in front, over any number of extensions.
void GraphBuilder::vExtendItems() {
    const auto& types = m_declaration.types;
    Indices basedOn(types.size(), g_iNone);
    for (std::size_t i = 0; i < types.size(); ++i) {
        if (types[i].basedOn.text.empty()) continue;
        const Named* pBase = pResolve(types[i].basedOn, ClassTag::Type, "is not a type");
        if (!pBase) continue;
        basedOn[i] = pBase->iIndex;
        if (types[pBase->iIndex].form != types[i].form)
            vMessageAbout(types[i].basedOn, "cannot be extended by a type of another form");
    }
    m_items.resize(types.size());
    std::vector<unsigned> depths(types.size());
    vWalkChains(
        basedOn,
        [&](std::size_t i) {
            if (basedOn[i] != g_iNone) {
                depths[i] = depths[basedOn[i]] + 1;
                if (depths[i] > g_iMaxExtensions) return vMessageAbout(types[i].name, "is extended too often");
                const std::span<const Name> inherited = m_items[basedOn[i]];
                std::vector<Name>& items = m_extendedItems.emplace_back(inherited.begin(), inherited.end());
                items.insert(items.end(), types[i].items.begin(), types[i].items.end());
                m_items[i] = items;
            } else {
                m_items[i] = types[i].items;
            }
        },
        [&](std::size_t i) { vMessageAbout(types[i].name, "is based on itself"); });
}

void GraphBuilder::vBuildDataTypes() {
    m_selects.resize(m_types.size());
    for (std::size_t i = 0; i < m_types.size(); ++i) {
        const TypeDeclaration& declaration = m_declaration.types[i];
        const std::string& sName = m_types[i]->sName;
        if (declaration.form == TypeForm::Enumeration) {
            m_types[i]->pDataType = pBuildEnumeration(i);
        } else if (declaration.form == TypeForm::Select) {
            m_selects[i].pSelect = m_pSchema->pAdopt(std::make_unique<schema::DataTypeSelect>(sName));
            m_types[i]->pDataType = m_selects[i].pSelect;
        } else if (!declaration.type.levels.empty() || declaration.type.name.text.empty()) {
            // With a level or without a name this is a data type, never the object of a name.
            m_types[i]->pDataType = static_cast<const schema::DataTypeBase*>(pBuildReference(declaration.type, sName));
        }
    }
}

const schema::DataTypeBase* GraphBuilder::pBuildEnumeration(std::size_t iType) {
    const std::span<const Name> items = m_items[iType];
    std::vector<std::string> enumerators;
    enumerators.reserve(items.size());
    for (const Name& item : items) enumerators.emplace_back(item.text);
    const schema::DataTypeEnum* pEnumeration =
        m_pSchema->pAdopt(std::make_unique<schema::DataTypeEnum>(std::move(enumerators), m_types[iType]->sName));
    if (pEnumeration->items.size() != items.size()) {
        NameTable<const Name*> seen;
        for (const Name& item : items)
            if (!seen.boAdd(item.text, &item)) vMessageAbout(item, "is enumerated twice");
    }
    return pEnumeration;
}

// Anonymous ones without width are shared.
const schema::DataTypeBase* GraphBuilder::pBuildBaseType(const TypeReference& type, std::string_view name) {
    const bool boShared = name.empty() && type.iWidth == 0;
    const schema::DataTypeBase*& pShared = m_baseTypes[static_cast<std::size_t>(type.kind)];
    if (boShared && pShared) return pShared;
    auto pSimple = std::make_unique<schema::DataTypeSimple>(type.kind, std::string(name));
    pSimple->iWidth = type.iWidth;
    pSimple->boFixed = type.boFixed;
    const schema::DataTypeBase* pResult = m_pSchema->pAdopt(std::move(pSimple));
    if (boShared) pShared = pResult;
    return pResult;
}

// The object of a type as written: an entity or type for a name alone, else a new data type, which takes
// "name". Null after a message.
const schema::ObjectBase* GraphBuilder::pBuildReference(const TypeReference& type, std::string_view name) {
    const schema::ObjectBase* pObject = nullptr;
    if (type.name.text.empty()) {
        pObject = pBuildBaseType(type, type.levels.empty() ? name : std::string_view());
    } else if (const Named* pNamed = pResolve(type.name)) {
        pObject = pNamed->pObject;
    }
    if (!pObject) return nullptr;
    for (auto pLevel = type.levels.rbegin(); pLevel != type.levels.rend(); ++pLevel) {
        const bool boOutermost = std::next(pLevel) == type.levels.rend();
        auto pAggregate = std::make_unique<schema::DataTypeAggregate>(
            pLevel->kind, std::string(boOutermost ? name : std::string_view()));
        pAggregate->pElement = pObject;
        pAggregate->sBounds = pLevel->sBounds;
        pAggregate->boUnique = pLevel->boUnique;
        pAggregate->boOptional = pLevel->boOptional;
        pAggregate->boBag = pLevel->boBag;
        pObject = m_pSchema->pAdopt(std::move(pAggregate));
    }
    return pObject;
}

// "TYPE A = B" takes the data type of B, which may be such a type itself. m_declaring is the type at the end of the
// chain, the one that the data type belongs to.
void GraphBuilder::vFollowTypes() {
    Indices next(m_types.size(), g_iNone);
    for (std::size_t i = 0; i < m_types.size(); ++i) {
        if (m_types[i]->pDataType) continue;
        const Name& name = m_declaration.types[i].type.name;
        const Named* pNamed = pResolve(name, ClassTag::Type, "is an entity; a type cannot be defined by it");
        if (!pNamed) continue;
        next[i] = pNamed->iIndex;
        m_types[i]->pDeclared = m_types[next[i]];
    }
    m_declaring.resize(m_types.size());
    vWalkChains(
        next,
        [&](std::size_t i) {
            m_declaring[i] = next[i] == g_iNone ? i : m_declaring[next[i]];
            m_types[i]->pDataType = m_types[m_declaring[i]]->pDataType;
        },
        [&](std::size_t i) { vMessageAbout(m_declaration.types[i].name, "is defined by itself"); });
}

void GraphBuilder::vFillSelects() {
    for (std::size_t i = 0; i < m_selects.size(); ++i) {
        Select& select = m_selects[i];
        if (!select.pSelect) continue;
        for (const Name& item : m_items[i]) {
            const Named* pNamed = pResolve(item);
            if (!pNamed) continue;
            select.pSelect->members.push_back(pNamed->pObject);
            if (pNamed->pObject->eClassTag != ClassTag::Type) continue;
            const std::size_t iDeclaring = m_declaring[pNamed->iIndex];
            if (m_selects[iDeclaring].pSelect) select.nested.push_back(iDeclaring);
        }
    }
    for (std::size_t i = 0; i < m_selects.size() && !m_iMessages; ++i)
        if (m_selects[i].pSelect) (void)iSelectHeight(i, 1);
}

// How many selects deep the members of a select nest, itself included. Sets boAllEntities on the way back, when that of
// the nested selects is known.
//
// Depth first with three states: unknown, open, done. A select that is met while it is open contains itself. The depth
// of the recursion is bounded by a constant far above every published schema, and a select that is only too deep is
// told from one that contains itself.
unsigned GraphBuilder::iSelectHeight(std::size_t iType, unsigned iDepth) {
    Select& select = m_selects[iType];
    const Name& name = m_declaration.types[iType].name;
    if (select.iHeight == g_iHeightOpen) {
        vMessageAbout(name, "is a select that contains itself");
        return 0;
    }
    if (select.iHeight != g_iHeightUnknown) return select.iHeight;
    unsigned iHeight = 1;
    select.iHeight = g_iHeightOpen;
    if (iDepth < g_iMaxSelectDepth)
        for (const std::size_t iNested : select.nested) {
            iHeight = std::max(iHeight, 1 + iSelectHeight(iNested, iDepth + 1));
            if (m_iMessages) return 0;
        }
    if (iDepth == g_iMaxSelectDepth || iHeight > g_iMaxSelectDepth)
        vMessageAbout(name, "is a select that nests too deep");
    select.iHeight = iHeight;

    const auto boEntities = [](const schema::ObjectBase* pMember) {
        if (pMember->eClassTag == ClassTag::Entity) return true;
        const schema::DataTypeBase* pDataType = schema::pDataTypeOf(pMember);
        return pDataType->kind == DataKind::Select &&
               static_cast<const schema::DataTypeSelect*>(pDataType)->boAllEntities;
    };
    const auto& members = select.pSelect->members;
    select.pSelect->boAllEntities = !members.empty() && std::all_of(members.begin(), members.end(), boEntities);
    return iHeight;
}

// An aggregate of a named type is as deep as both together, so the depth is summed along the chains of names.
void GraphBuilder::vCheckTypeDepth() {
    Indices next(m_types.size(), g_iNone);
    for (std::size_t i = 0; i < m_types.size(); ++i) {
        const Name& name = m_declaration.types[i].type.name;
        if (name.text.empty()) continue;
        const Named& named = *m_named.pFind(name.text);
        if (named.pObject->eClassTag == ClassTag::Type) next[i] = named.iIndex;
    }
    std::vector<unsigned> depths(m_types.size());
    vWalkChains(
        next,
        [&](std::size_t i) {
            const TypeDeclaration& type = m_declaration.types[i];
            depths[i] = static_cast<unsigned>(type.type.levels.size());
            if (next[i] != g_iNone) depths[i] += depths[next[i]];
            if (depths[i] > g_iMaxTypeDepth) vMessageAbout(type.name, "nests aggregates too deep");
        },
        [&](std::size_t i) { vMessageAbout(m_declaration.types[i].name, "is an aggregate of itself"); });
}

// ---- Entities

void GraphBuilder::vLinkSupertypes() {
    const auto& entities = m_declaration.entities;
    if (entities.size() > std::numeric_limits<std::uint16_t>::max())
        return vMessage({}, "the schema has more than 65535 entities");
    Indices next(entities.size(), g_iNone);
    Indices subtypes(entities.size());   // how many
    for (std::size_t i = 0; i < entities.size(); ++i) {
        m_entities[i]->boAbstract = entities[i].boAbstract;
        if (entities[i].supertype.text.empty()) continue;
        const Named* pParent = pResolve(entities[i].supertype, ClassTag::Entity, "is not an entity");
        if (!pParent) continue;
        next[i] = pParent->iIndex;
        m_entities[i]->pParent = m_entities[next[i]];
        ++subtypes[next[i]];
    }
    for (std::size_t i = 0; i < entities.size(); ++i) m_entities[i]->subtypes.reserve(subtypes[i]);
    for (std::size_t i = 0; i < entities.size(); ++i)
        if (next[i] != g_iNone) m_entities[next[i]]->subtypes.push_back(m_entities[i]);
    m_supertypesFirst.reserve(entities.size());
    std::vector<unsigned> depths(entities.size());
    vWalkChains(
        next,
        [&](std::size_t i) {
            m_supertypesFirst.push_back(i);
            if (next[i] != g_iNone) depths[i] = depths[next[i]] + 1;
            if (depths[i] == g_iMaxSupertypes) vMessageAbout(entities[i].name, "has too many supertypes");
        },
        [&](std::size_t i) { vMessageAbout(entities[i].name, "is its own supertype"); });
}

// Enters a name of the entity's own; each may stand there once.
void GraphBuilder::vClaimName(const schema::Entity& entity, const Name& name, schema::Attribute* pAttribute) {
    if (!m_attributes.boAdd(name.text, pAttribute, &entity))
        vMessageAbout(name, "is declared twice in \"" + entity.sName + '"');
}

void GraphBuilder::vBuildAttributes() {
    std::size_t iNames = 0;
    for (const EntityDeclaration& entity : m_declaration.entities)
        iNames += entity.iAttributes + entity.inverses.size();
    m_attributes.vReserve(iNames);
    for (std::size_t i = 0; i < m_entities.size(); ++i) {
        const auto declarations = m_declaration.attributesOf(m_declaration.entities[i]);
        std::size_t iCount = declarations.size();
        for (const AttributeDeclaration& declaration : declarations) iCount += declaration.others.size();
        m_entities[i]->ownAttributes.reserve(iCount);   // inverse attributes point into it
        for (const AttributeDeclaration& declaration : declarations) vBuildAttribute(*m_entities[i], declaration);
    }
}

// "types" is the path from the attribute's type down to its innermost element: the parser of a list of lists takes one
// step of it a level.
void GraphBuilder::vBuildAttribute(schema::Entity& entity, const AttributeDeclaration& declaration) {
    const schema::ObjectBase* pObject = pBuildReference(declaration.type, {});
    if (!pObject) return;
    const schema::ObjectBase* pNamed = pObject;
    for (std::size_t i = 0; i < declaration.type.levels.size(); ++i)
        pNamed = static_cast<const schema::DataTypeAggregate*>(pNamed)->pElement;
    m_path.clear();
    for (;;) {
        m_path.push_back(pObject);
        const schema::ObjectBase* pElement = schema::pElementOf(pObject);
        if (!pElement) break;
        pObject = pElement;
    }
    // The name that the declaration ends in, not what that name stands for.
    const std::string_view typeName = declaration.type.name.text.empty() ? schema::baseTypeText(declaration.type.kind)
                                                                         : std::string_view(pNamed->sName);
    const auto vAdd = [&](const Name& name) {
        schema::Attribute& attribute = entity.ownAttributes.emplace_back();
        attribute.pOwner = &entity;
        attribute.sName = name.text;
        attribute.uNameHash = schema::NameHash(name.text);
        attribute.boOptional = declaration.boOptional;
        attribute.types = m_path;
        attribute.sTypeName = typeName;
        vClaimName(entity, name, &attribute);
    };
    vAdd(declaration.name);
    for (const Name& name : declaration.others) vAdd(name);
}

void GraphBuilder::vBuildInverses() {
    for (std::size_t i = 0; i < m_entities.size(); ++i) {
        const auto& declarations = m_declaration.entities[i].inverses;
        m_entities[i]->ownInverseAttributes.reserve(declarations.size());   // attributes point into it
        for (const InverseDeclaration& declaration : declarations) vBuildInverse(*m_entities[i], declaration);
    }
}

void GraphBuilder::vBuildInverse(schema::Entity& entity, const InverseDeclaration& declaration) {
    const Named* pNamed = pResolve(declaration.forEntity, ClassTag::Entity, "is not an entity");
    if (!pNamed) return;
    schema::Attribute* pForAttribute = pAttributeOf(*m_entities[pNamed->iIndex], declaration.forAttribute.text);
    if (!pForAttribute)
        return vMessageAbout(declaration.forAttribute, "is not an attribute of \"" + pNamed->pObject->sName + '"');
    schema::AttributeInverse& inverse = entity.ownInverseAttributes.emplace_back();
    inverse.pOwner = &entity;
    inverse.sName = declaration.name.text;
    inverse.uNameHash = schema::NameHash(declaration.name.text);
    inverse.pForEntity = m_entities[pNamed->iIndex];
    inverse.sForAttribute = pForAttribute->sName;
    inverse.pForAttribute = pForAttribute;
    inverse.boAggregate = declaration.boAggregate;
    inverse.sBounds = declaration.sBounds;
    pForAttribute->inverses.push_back(&inverse);
    vClaimName(entity, declaration.name, nullptr);
}

// What an entity says of attributes that are not its own. One that is derived or inverse itself has no place among
// parameters, and so none here.
void GraphBuilder::vBuildRedeclared() {
    for (std::size_t i = 0; i < m_entities.size(); ++i) {
        const EntityDeclaration& declaration = m_declaration.entities[i];
        for (const RedeclaredAttribute& again : declaration.redeclared) {
            const schema::Attribute* pAttribute =
                m_entities[i]->pParent ? pAttributeOf(*m_entities[i]->pParent, again.attribute.text) : nullptr;
            if (!pAttribute) continue;
            const schema::ObjectBase* pType = again.boDerived ? nullptr : pBuildReference(again.type, {});
            m_entities[i]->redeclared.push_back({pAttribute, again.boDerived, again.boOptional, pType});
        }
        for (const UniqueDeclaration& unique : declaration.unique) vBuildUnique(*m_entities[i], unique);
    }
}

void GraphBuilder::vBuildUnique(schema::Entity& entity, const UniqueDeclaration& declaration) {
    schema::UniqueRule& rule = entity.uniqueRules.emplace_back();
    rule.sLabel = declaration.label.text;
    for (const Name& name : declaration.attributes) {
        const schema::Attribute* pAttribute = pAttributeOf(entity, name.text);
        rule.names.emplace_back(pAttribute ? pAttribute->sName : std::string(name.text));
        if (pAttribute) rule.attributes.push_back(pAttribute);
    }
    if (rule.attributes.size() != rule.names.size()) rule.attributes.clear();
}

// An explicit attribute of the entity or of a supertype, in any case; null when there is none.
schema::Attribute* GraphBuilder::pAttributeOf(const schema::Entity& entity, std::string_view name) const {
    for (const schema::Entity* pEntity = &entity; pEntity; pEntity = pEntity->pParent) {
        if (schema::Attribute* const* ppAttribute = m_attributes.pFind(name, pEntity)) return *ppAttribute;
    }
    return nullptr;
}

// On either side, own or inherited.
void GraphBuilder::vMarkInverseRelations() {
    for (const std::size_t i : m_supertypesFirst) {
        schema::Entity& entity = *m_entities[i];
        const auto boTarget = [](const schema::Attribute& attribute) { return !attribute.inverses.empty(); };
        entity.boHasInverse = (entity.pParent && entity.pParent->boHasInverse) ||
                              !entity.ownInverseAttributes.empty() ||
                              std::any_of(entity.ownAttributes.begin(), entity.ownAttributes.end(), boTarget);
    }
}

// Depth first, roots and subtypes as declared, from 1: 0 stays with an entity that no schema holds.
//
// A type and all its subtypes then have numbers without a gap, from its own to iTypeOrdinalLast, so that "all walls
// with subtypes" of a model that is sorted by number is one contiguous range, found by two binary searches. The last
// numbers are filled in from the leaves upward, which is the order of m_supertypesFirst read backwards.
void GraphBuilder::vNumberEntities() {
    std::vector<const schema::Entity*> stack;
    for (auto pEntity = m_entities.rbegin(); pEntity != m_entities.rend(); ++pEntity)
        if (!(*pEntity)->pParent) stack.push_back(*pEntity);
    std::uint16_t iOrdinal = 0;
    while (!stack.empty()) {
        const schema::Entity* pEntity = stack.back();
        stack.pop_back();
        const_cast<schema::Entity*>(pEntity)->iTypeOrdinal = ++iOrdinal;   // one of m_entities
        stack.insert(stack.end(), pEntity->subtypes.rbegin(), pEntity->subtypes.rend());
    }
    for (auto pIndex = m_supertypesFirst.rbegin(); pIndex != m_supertypesFirst.rend(); ++pIndex) {
        schema::Entity& entity = *m_entities[*pIndex];
        entity.iTypeOrdinalLast = entity.iTypeOrdinal;
        for (const schema::Entity* pSubtype : entity.subtypes)
            entity.iTypeOrdinalLast = std::max(entity.iTypeOrdinalLast, pSubtype->iTypeOrdinalLast);
    }
}

}   // namespace oxa::ifc::def::express
