// SPDX-License-Identifier: Apache-2.0
// IfcXmlImportWalk: one import: the elements of a document become instances.
//
// For      IfcXmlImport.cpp, which starts it, and IfcXmlImportValues.cpp.
// Types    what an XML attribute or element of a name means for a type is found out once a type.
// Reports  none: what a document holds beside a model is passed over, and there is nobody to be told.
// Threads  one import at a time in a process.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/Memory/Fnv1a.h"
#include "Format/Ifc/Read/ReadContext.h"
#include "Format/Ifc/Xml/IfcXmlIdTable.h"
#include "platform/Xml.h"
#include "schema/Schema.h"

namespace oxa::ifc::xml {

class ImportWalk {
public:
    ImportWalk(Data& data, ReadInfoCommon& info);
    ImportWalk(const ImportWalk&) = delete;
    ImportWalk& operator=(const ImportWalk&) = delete;

    // The instance that an element stands for: a new one for an "id", a known one for a "ref". Null for a type that
    // the schema does not have, an unknown "ref", and an element with neither.
    Entity* pEntityRead(const oxa::xml::const_Element& element, std::string_view typeName);

private:
    struct Type;

    // What a name means for a type: an attribute of it, else an inverse attribute.
    struct Member {
        std::string_view name;
        std::uint32_t uNameHash;
        const def::schema::Attribute* pAttribute;
        const def::schema::AttributeInverse* pInverse;
        const DataSizeEntity::Cell* pPlace;   // of the attribute's cell; null where another attribute hides it
        CellClass eClass;                     // by the attribute's type
        bool boSelects;                       // the items of a list are selects
        std::uint32_t iNext = 0;              // the member that came next the last time
    };
    struct Type {
        const def::schema::Entity* pSchema = nullptr;
        std::vector<Member> members;
        std::vector<std::uint32_t> slots;   // open addressing by hash: member plus 1, 0 empty
        std::uint32_t iFirst = 0;           // the member that came first the last time
    };

    Type* pTypeOf(std::string_view name);
    Type& typeOf(const def::schema::Entity& schema);
    static void vMembersAdd(Type& type);
    static void vMemberAdd(Type& type, const Member& member);
    static Member* pMemberOf(Type& type, std::string_view name, std::uint32_t& iExpected);

    Entity* pEntityDefine(const oxa::xml::const_Element& element, const oxa::xml::const_NamedNodeMap& attributes,
                          Type& type, std::string_view id);
    // One XML attribute or child element of an instance. "pLast" is what came before it.
    void vNodeRead(const oxa::xml::const_Node& node, Entity& entity, Type*& pType, Member*& pLast);

    void vAttributeRead(Entity& entity, const oxa::xml::const_Node& node, Type& type, Member& member);
    void vReferenceRead(Entity& entity, const oxa::xml::const_Element& element, Type& type, Member& member);
    void vSelectRead(Entity& entity, const oxa::xml::const_Node& node, Member& member);
    void vWrappedValueRead(Entity& entity, const oxa::xml::const_Element& wrapper, Member& member);
    void vListRead(Entity& entity, const oxa::xml::const_Node& node, Member& member);
    void vItemsRead(Entity& entity, const oxa::xml::const_Node& node, const Member& member);
    // Calls visit(Entity*) for the instance of each child element, null included, before the next one is read.
    template <class Visit>
    void vForEachChild(const oxa::xml::const_Node& node, Visit&& visit);
    // A relation that the document names at its other end.
    void vInverseRead(Entity& entity, const oxa::xml::const_Node& node, const def::schema::AttributeInverse& inverse);

    Data& m_data;
    ReadInfoCommon& m_info;
    IdTable::Life m_life;
    std::unordered_map<const def::schema::Entity*, std::unique_ptr<Type>, memory::Fnv1a> m_types;
    std::unordered_map<std::string_view, Type*> m_typesByName;   // as the schema spells them
    Type* m_pLastType = nullptr;                                 // that was asked for by name
    std::string m_sText;                                         // scratch for a value
    std::vector<std::string_view> m_texts;                       // scratch for those of a list
    std::vector<const def::schema::ObjectBase*> m_path;          // scratch for the type of a value
    std::deque<std::vector<Entity*>> m_lists;   // scratch for items, a list for each that is being read
    std::size_t m_iLists = 0;
};

}   // namespace oxa::ifc::xml
