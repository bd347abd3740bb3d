// SPDX-License-Identifier: Apache-2.0
// The frame of a document, and from elements to instances.
#include "Format/Ifc/Xml/IfcXmlImport.h"

#include <filesystem>
#include <unordered_map>

#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileError.h"
#include "Format/Ifc/Memory/Fnv1a.h"
#include "Format/Ifc/Read/ReadContext.h"
#include "Format/Ifc/Xml/IfcXmlText.h"
#include "platform/Assert.h"
#include "platform/Utilities.h"
#include "platform/Xml.h"
#include "provider/SchemaLoader.h"

namespace oxa::ifc::xml {

using def::schema::AttributeInverse;
using def::schema::AttributeName;
using oxa::xml::const_Attr;
using oxa::xml::const_Element;
using oxa::xml::const_Node;

namespace {

constexpr std::string_view g_sNamespaceBase = "http://www.buildingsmart-tech.org/ifcXML/";
static_assert(g_sNamespaceBase.size() == 41);

// The instance that a number stands for. It may be accessed while its memory lives.
struct KnownId {
    Entity* pEntity = nullptr;
    std::weak_ptr<const Pool> life;
};

using IdTable = std::unordered_map<std::uint64_t, KnownId, memory::Fnv1a>;

// One table for the process: a "ref" may name an instance of a document that was imported before. The weak pointer
// tells whether that model's memory still lives; without it a "ref" could lead to freed memory. It is also why one
// import runs at a time.
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

const def::schema::Entity* pTypeOf(const Data& data, const std::string& typeName) {
    return data.pSchema() ? def::schema::pAsEntity(data.pSchema()->pObjectFromName(std::string_view(typeName)))
                          : nullptr;
}

void vMissingId() {
    Assert::vTell("Format/Ifc/Xml/IfcXmlImport", "oxa::ifc::xml::Import::entityNodeImport", "Should always exist");
}

void vReport(ReadInfoCommon& info, ReportKey eKey) {
    info.m_pError->add(nullptr, Errors::Error, Errors::Value, eKey, SourceText(), 0);
}

// An inverse attribute of the type itself for that forward attribute: some documents name a relation this way.
const AttributeInverse* pInverseForAttribute(const def::schema::Entity& type, std::string_view sForAttribute) {
    for (const AttributeInverse& inverse : type.ownInverseAttributes)
        if (inverse.sForAttribute == sForAttribute) return &inverse;
    return nullptr;
}

}   // namespace

ImportCommon::ImportCommon() = default;
ImportCommon::~ImportCommon() = default;

bool ImportCommon::boLoad(const std::string& path) const {
    const std::filesystem::path file(std::u8string(path.begin(), path.end()));
    return m_pFile->parse(file, nullptr).has_value();
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

// Instances stand at the top of a document or nested in others; either way they come through entityNodeImport().
// Inverse lists are built at the end, when all values are in place.
bool Import::boImportData(Data& data) {
    io::ReadError errors;   // the caller has no use for them
    ReadInfoCommon info(errors);
    const std::optional<const_Element> root = m_pFile->RootElementGet();
    if (!root) return false;
    for (std::optional<const_Node> node = root->ChildNodesGet().getFirstItem(); node; node = node->NextSiblingGet()) {
        const std::optional<const_Element> element = const_Element::toWrapper(*node);
        if (element && element->getNodeName().starts_with("Ifc"))
            entityNodeImport(*element, std::string(element->getNodeName()), data, info);
    }
    data.boFinished(info, true);
    return true;
}

Entity* Import::entityNodeImport(const const_Element& element, const std::string& typeName, Data& data,
                                 ReadInfoCommon& info) {
    if (!pTypeOf(data, typeName)) return nullptr;
    if (const std::optional<const_Attr> ref = element.AttributeNodeGet("ref")) {
        const KnownId& known = idTable()[static_cast<std::uint64_t>(iIdOf(ref->getValue()))];
        return known.life.expired() ? nullptr : known.pEntity;
    }
    if (const std::optional<const_Attr> id = element.AttributeNodeGet("id"))
        return entityDefine(element, typeName, iIdOf(id->getValue()), data, info);
    vMissingId();
    return nullptr;
}

Entity* Import::entityDefine(const const_Element& element, const std::string& typeName, long long iId, Data& data,
                             ReadInfoCommon& info) {
    EntitySlot& slot = info.slotGet(data, static_cast<std::size_t>(iId));
    slot.vReferencedSet();
    // Known before it is read, so that what it nests may refer to it.
    idTable()[static_cast<std::uint64_t>(iId)] = {&slot.entity, data.poolLife()};
    if (!boEntityRead(element, slot.entity, typeName, data, info)) return nullptr;
    data.entityAdd(&slot.entity);
    return &slot.entity;
}

bool Import::boEntityRead(const const_Element& element, Entity& entity, const std::string& typeName, Data& data,
                          ReadInfoCommon& info) {
    const def::schema::Entity* pType = pTypeOf(data, typeName);
    if (!pType) {
        vReport(info, ReportKey::UnknownEntityType);
        return false;
    }
    // A number that the document gives twice begins anew.
    entity.vSchemaEntitySet(data, *pType, true);
    const oxa::xml::const_NamedNodeMap attributes = element.AttributesGet();
    for (std::size_t i = 0; i < attributes.LengthGet(); ++i) vNodeRead(attributes.ItemGet(i), entity, data, info);
    for (std::optional<const_Node> node = element.FirstChildGet(); node; node = node->NextSiblingGet())
        if (const_Element::toWrapper(*node)) vNodeRead(*node, entity, data, info);
    return true;
}

// XML attributes and child elements alike: by name an attribute of the type, an inverse attribute, or the forward
// attribute that one of its inverse attributes is declared FOR.
void Import::vNodeRead(const const_Node& node, Entity& entity, Data& data, ReadInfoCommon& info) {
    const std::string sName(node.getNodeName());
    if (sName == "id") return;
    const def::schema::Entity& type = entity.schemaEntity();
    if (const auto* pAttribute = type.pAttributeFromName(AttributeName(sName), true))
        return vAttributeRead(entity, node, *pAttribute, data, info);
    const AttributeInverse* pInverse = type.pAttributeInverseFromName(sName, true);
    if (!pInverse) pInverse = pInverseForAttribute(type, sName);
    if (pInverse) return vInverseRead(entity, node, *pInverse, data, info);
    vReport(info, ReportKey::UnknownAttributeType);
}

}   // namespace oxa::ifc::xml
