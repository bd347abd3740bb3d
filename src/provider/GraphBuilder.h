// SPDX-License-Identifier: Apache-2.0
// GraphBuilder: from declarations to the finished schema graph.
//
// For      SchemaLoader. One builder builds one graph.
// Limits   bounded stack; time and memory grow with the declarations only.
// Threads  one builder per thread; the graph is read-only afterwards.
#pragma once

#include <array>
#include <deque>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Export.h"
#include "provider/ExpressDeclarations.h"
#include "provider/NameTable.h"
#include "provider/SchemaMessage.h"
#include "schema/Schema.h"

namespace oxa::ifc::def::express {

class OXA_SCHEMA_API GraphBuilder {
public:
    // Both outlive the builder.
    GraphBuilder(const SchemaDeclaration& declaration, std::vector<SchemaMessage>& messages);

    // The graph; or null, and at least one message more: each name that does not resolve, each double
    // declaration and each cycle has its own, up to a hundred. To be called once.
    [[nodiscard]] std::unique_ptr<SchemaPset> pBuild();

private:
    struct Named {
        schema::ObjectBase* pObject;
        std::size_t iIndex;   // of its declaration, among the types or among the entities
    };
    using Indices = std::vector<std::size_t>;

    // Passes, in this order. Each relies on the ones before it to have left no message.
    void vDeclare();          // an object for each name
    void vExtendItems();      // enumerators and members, those of BASED_ON first
    void vBuildDataTypes();   // of the types that declare one
    void vFollowTypes();      // ... and of those that only name another
    void vFillSelects();      // members, without cycles
    void vCheckTypeDepth();   // no type is an aggregate of itself
    void vLinkSupertypes();   // without cycles, and subtypes
    void vBuildAttributes();
    void vBuildInverses();          // and which attributes they are for
    void vBuildRedeclared();        // and UNIQUE rules
    void vMarkInverseRelations();   // boHasInverse
    void vNumberEntities();         // type ordinals

    void vMessage(Place place, std::string sText);
    void vMessageAbout(const Name& name, std::string_view text);
    [[nodiscard]] const Named* pResolve(const Name& name);
    [[nodiscard]] const Named* pResolve(const Name& name, schema::ClassTag tag, const char* sOtherwise);

    template <class Object>
    Object* pDeclare(const Name& name, std::size_t iIndex);
    [[nodiscard]] const schema::DataTypeBase* pBuildEnumeration(std::size_t iType);
    [[nodiscard]] const schema::DataTypeBase* pBuildBaseType(const TypeReference& type, std::string_view name);
    [[nodiscard]] const schema::ObjectBase* pBuildReference(const TypeReference& type, std::string_view name);
    [[nodiscard]] unsigned iSelectHeight(std::size_t iType, unsigned iDepth);
    void vBuildAttribute(schema::Entity& entity, const AttributeDeclaration& declaration);
    void vBuildInverse(schema::Entity& entity, const InverseDeclaration& declaration);
    void vBuildUnique(schema::Entity& entity, const UniqueDeclaration& declaration);
    void vClaimName(const schema::Entity& entity, const Name& name, schema::Attribute* pAttribute);
    [[nodiscard]] schema::Attribute* pAttributeOf(const schema::Entity& entity, std::string_view name) const;

    const SchemaDeclaration& m_declaration;
    std::vector<SchemaMessage>& m_messages;
    std::size_t m_iMessages = 0;

    std::unique_ptr<SchemaPset> m_pSchema;
    NameTable<Named> m_named;
    std::vector<schema::Type*> m_types;              // as declared
    std::vector<std::span<const Name>> m_items;      // of each type: enumerators or members
    std::deque<std::vector<Name>> m_extendedItems;   // those of them that no one declaration has
    Indices m_declaring;                             // of each type: the type that declares its data type
    struct Select {
        schema::DataTypeSelect* pSelect = nullptr;
        Indices nested;         // declaring types of the selects among its members
        unsigned iHeight = 0;   // see iSelectHeight
    };
    std::vector<Select> m_selects;                              // of each type that declares one
    std::array<const schema::DataTypeBase*, 7> m_baseTypes{};   // by kind: the anonymous ones without width
    std::vector<schema::Entity*> m_entities;                    // as declared
    Indices m_supertypesFirst;                                  // entities, each after its supertype
    NameTable<schema::Attribute*> m_attributes;      // by entity and the name declared in it; null: an inverse
    std::vector<const schema::ObjectBase*> m_path;   // see vBuildAttribute
};

}   // namespace oxa::ifc::def::express
