// SPDX-License-Identifier: Apache-2.0
// The frame of a document, and from elements to instances.
#include "Format/Ifc/Xml/IfcXmlImport.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <utility>

#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileError.h"
#include "Format/Ifc/Xml/IfcXmlImportWalk.h"
#include "Format/Ifc/Xml/IfcXmlText.h"
#include "platform/Assert.h"
#include "platform/Path.h"
#include "provider/SchemaLoader.h"

namespace oxa::ifc::xml {

using def::schema::Attribute;
using def::schema::AttributeInverse;
using def::schema::ObjectBase;
using oxa::xml::const_Attr;
using oxa::xml::const_Element;
using oxa::xml::const_NamedNodeMap;
using oxa::xml::const_Node;

namespace {

constexpr std::string_view g_sNamespaceBase = "http://www.buildingsmart-tech.org/ifcXML/";
static_assert(g_sNamespaceBase.size() == 41);

// One table for the process: a "ref" may name an instance of a document that was imported before. It is why one import
// runs at a time.
IdTable& idTable() {
    static IdTable table;
    return table;
}

// The element's first child as text; empty without one.
std::string sTextOf(const const_Element& element) {
    const std::optional<const_Node> child = element.FirstChildGet();
    return child ? std::string(child->getNodeValue()) : std::string();
}

// Which field a header element fills: one text, or a list that becomes just this text.
struct HeaderField {
    std::string_view sElement;
    std::string FileHeader::Name::*pText;
    std::vector<std::string> FileHeader::Name::*pTexts;
};
constexpr HeaderField g_headerFields[] = {
    {"name", &FileHeader::Name::name, nullptr},
    {"time_stamp", &FileHeader::Name::timeStamp, nullptr},
    {"author", nullptr, &FileHeader::Name::author},
    {"organization", nullptr, &FileHeader::Name::organization},
    {"preprocessor_version", &FileHeader::Name::preprocessorVersion, nullptr},
    {"originating_system", &FileHeader::Name::originatingSystem, nullptr},
    {"authorization", &FileHeader::Name::authorization, nullptr},
};

void vHeaderFieldRead(const const_Element& element, FileHeader& header) {
    for (const HeaderField& field : g_headerFields) {
        if (field.sElement != element.getNodeName()) continue;
        if (field.pText)
            header.name.*field.pText = sTextOf(element);
        else
            header.name.*field.pTexts = {sTextOf(element)};
    }
    if (element.getNodeName() == "documentation") header.description.descriptions = {sTextOf(element)};
}

// The schema word of a namespace, "IFC4" of ".../ifcXML/IFC4/Add2"; none for a namespace of another kind.
std::optional<std::string> schemaWord(std::string_view sNamespace) {
    if (!sNamespace.starts_with(g_sNamespaceBase)) return std::nullopt;
    sNamespace.remove_prefix(g_sNamespaceBase.size());
    const std::size_t iEnd = sNamespace.find('/');
    if (iEnd == std::string_view::npos) return std::nullopt;
    return std::string(sNamespace.substr(0, iEnd));
}

void vMissingId() {
    Assert::vTell("Format/Ifc/Xml/IfcXmlImport", "oxa::ifc::xml::Import::entityNodeImport", "Should always exist");
}

}   // namespace

ImportCommon::ImportCommon() = default;
ImportCommon::~ImportCommon() = default;

bool ImportCommon::boLoad(const std::string& path) const try {
    return m_pFile->parse(str::pathOf(path), nullptr).has_value();
} catch (const std::filesystem::filesystem_error&) {   // no UTF-8, which names no file where names are no bytes
    return false;
}

bool ImportCommon::boLoad(std::istream& in) const { return m_pFile->parse(in, "Import xml file", nullptr).has_value(); }

Import::Import() {
    m_pFile =
        std::make_unique<oxa::xml::File>(nullptr, oxa::xml::VerboseLevel::Default, oxa::xml::ValidateLevel::Default);
}

bool Import::boImportHeader(FileBase& file, std::function<def::SchemaPset*(const std::string&)> schemaFromName) {
    const std::optional<const_Element> root = m_pFile->RootElementGet();
    const std::optional<const_Attr> uri = root ? root->AttributeNodeGet("xmlns") : std::nullopt;
    if (!uri) return false;
    const std::optional<std::string> word = schemaWord(uri->getValue());
    if (!word) return false;
    const def::SchemaPset* pSchema = SchemaLoader::pSchemaGet(std::move(schemaFromName), *word);
    if (!pSchema) return false;
    file.vSchemaSet(*pSchema);
    if (file.headerBase().sSchemaNameGet().empty()) return false;

    auto* pHeader = dynamic_cast<FileHeader*>(&file.headerBase());
    const std::optional<const_Element> header = pHeader ? root->ElementByTagNameGet("header") : std::nullopt;
    if (!header) return true;
    for (std::optional<const_Node> node = header->FirstChildGet(); node; node = node->NextSiblingGet())
        if (const std::optional<const_Element> element = const_Element::toWrapper(*node))
            vHeaderFieldRead(*element, *pHeader);
    return true;
}

// Instances stand at the top of a document or nested in others; either way they come through pEntityRead(). Inverse
// lists are built at the end, when all values are in place.
bool Import::boImportData(Data& data) {
    io::ReadError errors;   // the caller has no use for them
    ReadInfoCommon info(errors);
    const std::optional<const_Element> root = m_pFile->RootElementGet();
    if (!root) return false;
    ImportWalk walk(data, info);
    for (std::optional<const_Node> node = root->ChildNodesGet().getFirstItem(); node; node = node->NextSiblingGet()) {
        const std::optional<const_Element> element = const_Element::toWrapper(*node);
        if (element && element->getNodeName().starts_with("Ifc")) walk.pEntityRead(*element, element->getNodeName());
    }
    data.boFinished(info, true);
    return true;
}

ImportWalk::ImportWalk(Data& data, ReadInfoCommon& info)
    : m_data(data),
      m_info(info),
      m_life(idTable().lifeBegin(data.poolLife())) {}

// Any case finds a type, but only its own spelling is remembered: a document may have many others.
ImportWalk::Type* ImportWalk::pTypeOf(std::string_view name) {
    if (m_pLastType && m_pLastType->pSchema->sName == name) return m_pLastType;
    const auto known = m_typesByName.find(name);
    if (known != m_typesByName.end()) return m_pLastType = known->second;
    const auto* pSchema = m_data.pSchema() ? def::schema::pAsEntity(m_data.pSchema()->pObjectFromName(name)) : nullptr;
    if (!pSchema) return nullptr;
    Type& type = typeOf(*pSchema);
    if (pSchema->sName == name) m_typesByName.emplace(pSchema->sName, &type);
    return m_pLastType = &type;
}

ImportWalk::Type& ImportWalk::typeOf(const def::schema::Entity& schema) {
    std::unique_ptr<Type>& pType = m_types[&schema];
    if (!pType) {
        auto pNew = std::make_unique<Type>();
        pNew->pSchema = &schema;
        vMembersAdd(*pNew);
        pType = std::move(pNew);
    }
    return *pType;
}

// XML attributes and child elements alike: by name an attribute of the type, an inverse attribute, or the forward
// attribute that one of its own inverse attributes is declared FOR: some documents name a relation this way. What a
// subtype declares comes before what its supertypes do.
void ImportWalk::vMembersAdd(Type& type) {
    const def::schema::Entity& schema = *type.pSchema;
    const auto& cells = Entity::getDataSize(schema).cells;
    for (const def::schema::Entity* pLevel = &schema; pLevel; pLevel = pLevel->pParent)
        for (const Attribute& attribute : pLevel->ownAttributes) {
            const auto place = std::ranges::find_if(cells, [&attribute](const DataSizeEntity::Cell& cell) {
                return cell.pAttribute->sName == attribute.sName;
            });
            const ObjectBase* pItem = attribute.types.empty() ? nullptr : attribute.types.back();
            vMemberAdd(type, {.name = attribute.sName,
                              .uNameHash = attribute.uNameHash,
                              .pAttribute = &attribute,
                              .pInverse = nullptr,
                              .pPlace = place != cells.end() && place->pAttribute == &attribute ? &*place : nullptr,
                              .eClass = AttributeBase::cellClass(attribute.pType()),
                              .boSelects =
                                  def::schema::pAsType(pItem) && AttributeBase::cellClass(pItem) == CellClass::Select});
        }
    const auto vInverseAdd = [&type](const AttributeInverse& inverse, std::string_view name) {
        vMemberAdd(type, {.name = name,
                          .uNameHash = def::schema::NameHash(name),
                          .pAttribute = nullptr,
                          .pInverse = &inverse,
                          .pPlace = nullptr,
                          .eClass = CellClass::Unresolved,
                          .boSelects = false});
    };
    for (const def::schema::Entity* pLevel = &schema; pLevel; pLevel = pLevel->pParent)
        for (const AttributeInverse& inverse : pLevel->ownInverseAttributes) vInverseAdd(inverse, inverse.sName);
    for (const AttributeInverse& inverse : schema.ownInverseAttributes) vInverseAdd(inverse, inverse.sForAttribute);
}

// The first one of a name stays.
void ImportWalk::vMemberAdd(Type& type, const Member& member) {
    constexpr std::size_t g_iFewest = 16;
    const auto iFreeSlot = [&type](std::uint32_t uHash) {
        std::size_t iSlot = uHash & (type.slots.size() - 1);
        while (type.slots[iSlot]) iSlot = (iSlot + 1) & (type.slots.size() - 1);
        return iSlot;
    };
    std::uint32_t iExpected = 0;
    if (pMemberOf(type, member.name, iExpected)) return;
    if (type.slots.size() <= (type.members.size() + 1) * 2) {
        type.slots.assign(std::max(g_iFewest, type.slots.size() * 2), 0);
        for (std::uint32_t i = 0; i < type.members.size(); ++i)
            type.slots[iFreeSlot(type.members[i].uNameHash)] = i + 1;
    }
    type.members.push_back(member);
    type.slots[iFreeSlot(member.uNameHash)] = static_cast<std::uint32_t>(type.members.size());
}

// Documents name the members of a type in one order, mostly: the one that came next the last time is tried first.
ImportWalk::Member* ImportWalk::pMemberOf(Type& type, std::string_view name, std::uint32_t& iExpected) {
    if (iExpected < type.members.size() && type.members[iExpected].name == name) return &type.members[iExpected];
    if (type.slots.empty()) return nullptr;
    const std::uint32_t uHash = def::schema::NameHash(name);
    const std::size_t iMask = type.slots.size() - 1;
    for (std::size_t iSlot = uHash & iMask; type.slots[iSlot]; iSlot = (iSlot + 1) & iMask) {
        const std::uint32_t iMember = type.slots[iSlot] - 1;
        Member& member = type.members[iMember];
        if (member.uNameHash != uHash || member.name != name) continue;
        iExpected = iMember;
        return &member;
    }
    return nullptr;
}

Entity* ImportWalk::pEntityRead(const const_Element& element, std::string_view typeName) {
    Type* pType = pTypeOf(typeName);
    if (!pType) return nullptr;
    const const_NamedNodeMap attributes = element.AttributesGet();
    const const_Attr* pId = nullptr;
    for (std::size_t i = 0; i < attributes.LengthGet(); ++i) {
        const const_Attr& attribute = attributes.ItemGet(i);
        const std::string_view name = attribute.getNodeName();
        if (name == "ref") return idTable().pGet(static_cast<std::uint64_t>(iIdOf(attribute.getValue())), m_life);
        if (name == "id") pId = &attribute;
    }
    if (pId) return pEntityDefine(element, attributes, *pType, pId->getValue());
    vMissingId();
    return nullptr;
}

Entity* ImportWalk::pEntityDefine(const const_Element& element, const const_NamedNodeMap& attributes, Type& type,
                                  std::string_view id) {
    const long long iId = iIdOf(id);
    EntitySlot& slot = m_info.slotGet(m_data, static_cast<std::size_t>(iId));
    slot.vReferencedSet(false);
    // Known before it is read, so that what it nests may refer to it.
    idTable().vSet(static_cast<std::uint64_t>(iId), &slot.entity, m_life);
    // A number that the document gives twice begins anew.
    slot.entity.vSchemaEntitySet(m_data, *type.pSchema, true);
    Type* pType = &type;
    Member* pLast = nullptr;
    for (std::size_t i = 0; i < attributes.LengthGet(); ++i)
        vNodeRead(attributes.ItemGet(i), slot.entity, pType, pLast);
    for (std::optional<const_Node> node = element.FirstChildGet(); node; node = node->NextSiblingGet())
        if (const_Element::toWrapper(*node)) vNodeRead(*node, slot.entity, pType, pLast);
    m_data.entityAdd(&slot.entity);
    return &slot.entity;
}

// What a nested element gives the same number changes the type under way.
void ImportWalk::vNodeRead(const const_Node& node, Entity& entity, Type*& pType, Member*& pLast) {
    const std::string_view name = node.getNodeName();
    if (name == "id") return;
    if (entity.pSchemaEntity() != pType->pSchema) {
        pType = &typeOf(entity.schemaEntity());
        pLast = nullptr;
    }
    std::uint32_t& iExpected = pLast ? pLast->iNext : pType->iFirst;
    Member* pMember = pMemberOf(*pType, name, iExpected);
    if (!pMember) return;
    pLast = pMember;
    if (pMember->pAttribute)
        vAttributeRead(entity, node, *pType, *pMember);
    else
        vInverseRead(entity, node, *pMember->pInverse);
}

}   // namespace oxa::ifc::xml
