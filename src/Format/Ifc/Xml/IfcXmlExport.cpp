// SPDX-License-Identifier: Apache-2.0
// The frame of a document, and the walk over the model.
#include "Format/Ifc/Xml/IfcXmlExport.h"

#include <algorithm>
#include <filesystem>

#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcFileHeader.h"
#include "Format/Ifc/Xml/IfcXmlExportWalk.h"

namespace oxa::ifc::xml {

using oxa::xml::const_Node;
using oxa::xml::Element;

namespace {

constexpr std::string_view g_sNamespace = "http://www.buildingsmart-tech.org/ifcXML/IFC4/Add2";
constexpr std::string_view g_sSchemaDocument = "http://www.buildingsmart-tech.org/ifc/IFC4/Add2/IFC4_ADD2.xsd";
constexpr std::string_view g_sInstanceNamespace = "http://www.w3.org/2001/XMLSchema-instance";

std::string sJoined(const std::vector<std::string>& items) {
    std::string sText;
    for (const std::string& item : items) sText.append(&item == items.data() ? "" : " ").append(item);
    return sText;
}

void vHeaderAppend(Element& root, const FileHeader& header) {
    const FileHeader::Name& name = header.name;
    Element element = root.ElementNodeAppend("header");
    const auto vField = [&element](std::string_view field, const std::string& text) {
        element.ElementNodeAppend(field).boTextNodeAppend(text);
    };
    vField("name", name.name);
    vField("time_stamp", name.timeStamp);
    vField("author", sJoined(name.author));
    vField("organization", sJoined(name.organization));
    vField("preprocessor_version", name.preprocessorVersion);
    vField("originating_system", name.originatingSystem);
    vField("authorization", name.authorization);
    vField("documentation", sJoined(header.description.descriptions));
}

}   // namespace

ExportCommon::ExportCommon()
    : m_pFile(
          std::make_unique<oxa::xml::File>(nullptr, oxa::xml::VerboseLevel::Default, oxa::xml::ValidateLevel::Default)),
      m_pExported(std::make_unique<Exported>()) {}

ExportCommon::~ExportCommon() = default;

bool ExportCommon::boSave(const std::string& path) const {
    const std::filesystem::path file(std::u8string(path.begin(), path.end()));
    return m_pFile->save(file, nullptr, nullptr, oxa::xml::Encoding::Utf8, oxa::xml::LineEnding::Lf);
}

bool ExportCommon::boSave(std::ostream& out) const {
    return m_pFile->save(out, nullptr, oxa::xml::Encoding::Utf8, oxa::xml::LineEnding::Lf);
}

Export::Export() {
    if (const std::optional<Element> root = m_pFile->create("ifcXML", "", true))
        m_pRootElement = std::make_unique<Element>(*root);
}

bool Export::boExportHeader(const FileHeaderBase& header) {
    if (!m_pRootElement || header.sSchemaNameGet() != "IFC4") return false;
    m_pRootElement->vAttributeSet("xmlns", g_sNamespace);
    m_pRootElement->vAttributeSet("xmlns:ifc", g_sNamespace);
    m_pRootElement->vAttributeSet("xmlns:xsi", g_sInstanceNamespace);
    m_pRootElement->vAttributeSet("xsi:schemaLocation",
                                  std::string(g_sNamespace).append(" ").append(g_sSchemaDocument));
    m_pRootElement->vAttributeSet("id", "ifcXML4");
    if (const auto* pHeader = dynamic_cast<const FileHeader*>(&header)) vHeaderAppend(*m_pRootElement, *pHeader);
    return true;
}

bool Export::boExportData(const Data& data, std::function<void(unsigned int)> progress) {
    Walk walk(data.entityIdMap(false));
    return boExportWalk(data, walk, progress);
}

bool Export::boExportData(const Data& data, Errors& report, std::function<void(unsigned int)> progress) {
    Walk walk(data.entityIdMap(false));
    walk.m_boLeftOutNoted = true;
    if (!boExportWalk(data, walk, progress)) return false;
    vLeftOutReport(data, report);
    return true;
}

bool Export::boExportWalk(const Data& data, Walk& walk, const std::function<void(unsigned int)>& progress) {
    if (data.pSchema()) m_pXmlDefaults = data.pSchema()->pXmlDefaults;
    if (!data.pProject()) return false;
    walk.iEntityIdGet(data.pProject());
    if (!m_pRootElement) return false;
    for (;;) {
        if (walk.m_queue.empty()) vQueueLeftOut(walk);
        if (walk.m_queue.empty()) return true;
        const Entity* pEntity = walk.m_queue.front();
        walk.m_queue.pop_front();
        ++walk.m_iDequeued;
        if (progress) progress(walk.m_iDequeued);
        vExportEntity(*m_pRootElement, *pEntity, nullptr, {}, walk);
        vExportQueued(walk);
    }
}

// The first of those that only attributes name which the mapping leaves out. What the walk has met by now is not queued
// again; nor is what the first one leads to, as long as the others wait.
void Export::vQueueLeftOut(Walk& walk) {
    while (!walk.m_leftOut.empty() && walk.m_queue.empty()) {
        walk.iEntityIdGet(walk.m_leftOut.front());
        walk.m_leftOut.pop_front();
    }
}

// The order of an instance's content: level by level from the root of its supertypes, at each level the attributes and
// then the inverse attributes that it declares. Made once a type.
const std::vector<ExportCommon::Walk::Step>& ExportCommon::Walk::stepsOf(const def::schema::Entity& type) {
    const auto [place, boNew] = m_steps.try_emplace(&type);
    if (!boNew) return place->second;
    std::vector<const def::schema::Entity*> levels;
    for (const def::schema::Entity* pLevel = &type; pLevel; pLevel = pLevel->pParent) levels.push_back(pLevel);
    std::ranges::reverse(levels);
    unsigned iAttribute = 0;
    for (const def::schema::Entity* pLevel : levels) {
        for (std::size_t i = 0; i < pLevel->ownAttributes.size(); ++i) place->second.push_back({iAttribute++, nullptr});
        for (const def::schema::AttributeInverse& inverse : pLevel->ownInverseAttributes)
            place->second.push_back({0, &inverse});
    }
    return place->second;
}

void ExportCommon::vExportEntity(Element& parent, const Entity& entity, const def::schema::Entity* pDeclared,
                                 std::string_view name, Walk& walk) {
    const std::string& sType = entity.schemaEntity().sName;
    walk.m_pending.push_back({parent.ElementNodeAppend(name.empty() ? sType : name), &entity, pDeclared});
}

// Fills all elements that wait, and those that their instances nest, in document order.
//
// Nested instances without recursion: a chain of references may be as long as the model, and each would be a frame of
// the stack. m_open is the chain of instances whose attributes are being written, m_pending what elements wait to be
// filled, the next one last. A step may append several elements; they are reversed so that the first is filled first,
// together with all that it nests (iPending says how far down that goes), before the next step of its parent. So a
// document has the order that recursion would give it.
void Export::vExportQueued(Walk& walk) {
    for (;;) {
        const std::size_t iDone = walk.m_open.empty() ? 0 : walk.m_open.back().iPending;
        if (walk.m_pending.size() > iDone)
            vExportInstance(walk);
        else if (walk.m_open.empty())
            return;
        else
            vExportStep(walk);
    }
}

// The last of the elements that wait: what it is to begin with, its attributes later. An instance is written in full
// where it is met first, with an "id"; everywhere else its element is empty and has a "ref".
void Export::vExportInstance(Walk& walk) {
    Walk::Pending instance = walk.m_pending.back();
    walk.m_pending.pop_back();
    const def::schema::Entity& type = instance.pEntity->schemaEntity();
    const bool boNew = m_pExported->insert(instance.pEntity).second;
    if (boNew) {
        instance.element.vAttributeSet("id", sIdText(walk.iEntityIdMark(*instance.pEntity)));
    } else {
        instance.element.vAttributeSet("ref", sIdText(walk.iEntityIdGet(instance.pEntity)));
        instance.element.vAttributeSet("xsi:nil", const_Node::to_string(true));
    }
    if (instance.pDeclared && !instance.pDeclared->subtypes.empty())
        instance.element.vAttributeSet("xsi:type", type.sName);
    if (boNew)
        walk.m_open.push_back({instance.element, instance.pEntity, &walk.stepsOf(type), 0, walk.m_pending.size()});
}

// The next attribute of the innermost instance, or its end.
void Export::vExportStep(Walk& walk) {
    Walk::Open& open = walk.m_open.back();
    if (open.iNext == open.pSteps->size()) {
        walk.m_open.pop_back();
        return;
    }
    const Walk::Step step = (*open.pSteps)[open.iNext++];
    const std::size_t iBefore = walk.m_pending.size();
    if (step.pInverse) {
        vExportInverse(open.element, *open.pEntity, *step.pInverse, walk);
    } else {
        const auto [pAttribute, pCell] = open.pEntity->pAttributeFromIndex(step.iAttribute);
        if (pAttribute) vExportAttribute(open.element, *pAttribute, *pCell, walk);
    }
    std::reverse(walk.m_pending.begin() + static_cast<std::ptrdiff_t>(iBefore), walk.m_pending.end());
}

// Without a record the relations only join the walk, to be written later at the top of the document. Mode 1 writes an
// element of the inverse attribute's name for each of them, mode 2 one such element around all.
void Export::vExportInverse(Element& element, const Entity& entity, const def::schema::AttributeInverse& inverse,
                            Walk& walk) {
    const int iIndex = entity.inverseIndexFromName(def::schema::AttributeName(inverse));
    if (iIndex < 0) return;
    std::vector<const Entity*> referrers = entity.entitiesInverseFromIndex(static_cast<unsigned>(iIndex));
    std::erase(referrers, nullptr);
    const std::uint32_t mode = inverse.pXmlInverse ? *inverse.pXmlInverse : 0;
    if (mode == 0) {
        for (const Entity* pReferrer : referrers) walk.iEntityIdGet(pReferrer);
        return;
    }
    if (referrers.empty()) return;   // no element around nothing
    Element around = mode == 1 ? element : element.ElementNodeAppend(inverse.sName);
    for (const Entity* pReferrer : referrers)
        vExportEntity(around, *pReferrer, nullptr, mode == 1 ? std::string_view(inverse.sName) : std::string_view(),
                      walk);
}

}   // namespace oxa::ifc::xml
