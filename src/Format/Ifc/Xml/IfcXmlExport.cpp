// SPDX-License-Identifier: Apache-2.0
// The frame of a document, and the walk over the model.
#include "Format/Ifc/Xml/IfcXmlExport.h"

#include <algorithm>
#include <filesystem>
#include <optional>

#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcFileHeader.h"
#include "Format/Ifc/Xml/IfcXmlExportWalk.h"
#include "platform/Path.h"
#include "schema/XmlSchema.h"

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

// The block of cells, and a list of the inverse block, as the layout of the type has them; null for none. Nothing is
// changed.
const char* pCellsOf(const Entity& entity) {
    return static_cast<const char*>(const_cast<Entity&>(entity).unsafeAttributesRaw());
}
const EntityList* pReferrersOf(const Entity& entity, std::size_t iInverse) {
    EntityList** ppLists = entity.unsafeAttributesInverseRaw();
    return ppLists ? reinterpret_cast<const Unaligned<EntityList*>*>(ppLists)[iInverse].load() : nullptr;
}

}   // namespace

ExportCommon::ExportCommon()
    : m_pFile(
          std::make_unique<oxa::xml::File>(nullptr, oxa::xml::VerboseLevel::Default, oxa::xml::ValidateLevel::Default)),
      m_pExported(std::make_unique<Exported>()) {}

ExportCommon::~ExportCommon() = default;

bool ExportCommon::boSave(const std::string& path) const try {
    return m_pFile->save(str::pathOf(path), nullptr, nullptr, oxa::xml::Encoding::Utf8, oxa::xml::LineEnding::Lf);
} catch (const std::filesystem::filesystem_error&) {   // no UTF-8, which names no file where names are no bytes
    return false;
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
    walk.m_pDefaults = m_pXmlDefaults;
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
// then the inverse attributes that it declares.
const ExportCommon::Walk::Steps& ExportCommon::Walk::stepsOf(const def::schema::Entity& type) {
    const auto [place, boNew] = m_steps.try_emplace(&type);
    Steps& steps = place->second;
    if (!boNew) return steps;
    std::vector<const def::schema::Entity*> levels;
    for (const def::schema::Entity* pLevel = &type; pLevel; pLevel = pLevel->pParent) levels.push_back(pLevel);
    std::ranges::reverse(levels);
    auto cell = Entity::getDataSize(type).cells.begin();
    const auto& inverses = type.allInverseAttributes();
    for (const def::schema::Entity* pLevel : levels) {
        for (std::size_t i = 0; i < pLevel->ownAttributes.size(); ++i) vAttributeAdd(steps, *cell++);
        for (const def::schema::AttributeInverse& inverse : pLevel->ownInverseAttributes) {
            const auto first = std::ranges::find(inverses, inverse.sName, &def::schema::AttributeInverse::sName);
            steps.push_back({nullptr, &inverse, static_cast<std::uint32_t>(first - inverses.begin()),
                             inverse.pXmlInverse ? *inverse.pXmlInverse : 0, CellClass::Unresolved, true});
        }
    }
    return steps;
}

// Nothing for an attribute without a type, and for one that documents leave out where that is not noted.
void ExportCommon::Walk::vAttributeAdd(Steps& steps, const DataSizeEntity::Cell& cell) const {
    const def::schema::Attribute& attribute = *cell.pAttribute;
    if (attribute.types.empty()) return;
    def::xmlschema::Attribute mapping;
    if (attribute.pXml)
        mapping = *attribute.pXml;
    else if (m_pDefaults)
        mapping.mode = def::schema::pAsEntity(attribute.pType()) ? m_pDefaults->iModeEntity : m_pDefaults->iModeValue;
    const CellClass eClass = AttributeBase::cellClass(attribute.pType());
    if (eClass < CellClass::Unresolved && (mapping.boExported || m_boLeftOutNoted))
        steps.push_back({&attribute, nullptr, cell.iOffset, mapping.mode, eClass, mapping.boExported});
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
    const bool boNew = m_pExported->boInsert(instance.pEntity);
    if (boNew) {
        instance.element.vAttributeSet("id", IdText(walk.iEntityIdMark(*instance.pEntity)).text());
    } else {
        instance.element.vAttributeSet("ref", IdText(walk.iEntityIdGet(instance.pEntity)).text());
        instance.element.vAttributeSet("xsi:nil", const_Node::to_string(true));
    }
    if (instance.pDeclared && !instance.pDeclared->subtypes.empty())
        instance.element.vAttributeSet("xsi:type", type.sName);
    if (boNew)
        walk.m_open.push_back({instance.element, instance.pEntity, &walk.stepsOf(type), 0, walk.m_pending.size()});
}

// The next attributes of the innermost instance, up to one that nests others, or its end.
void Export::vExportStep(Walk& walk) {
    const std::size_t iBefore = walk.m_pending.size();
    Walk::Open open = walk.m_open.back();
    // A type without attributes has no inverse attribute that can be reached.
    const char* pCells = pCellsOf(*open.pEntity);
    if (!pCells) open.iNext = open.pSteps->size();
    while (open.iNext < open.pSteps->size() && walk.m_pending.size() == iBefore) {
        const Step& step = (*open.pSteps)[open.iNext++];
        if (step.pInverse) {
            vExportInverse(open.element, *open.pEntity, step, walk);
        } else {
            const auto& cell = *reinterpret_cast<const AttributeBase*>(pCells + step.iPlace);
            if (cell.boHasValue()) vExportAttribute(open.element, step, cell, walk);
        }
    }
    if (walk.m_pending.size() == iBefore) {
        walk.m_open.pop_back();
        return;
    }
    walk.m_open.back().iNext = open.iNext;
    std::reverse(walk.m_pending.begin() + static_cast<std::ptrdiff_t>(iBefore), walk.m_pending.end());
}

// Without a record the relations only join the walk, to be written later at the top of the document. Mode 1 writes an
// element of the inverse attribute's name for each of them, mode 2 one such element around all.
void Export::vExportInverse(Element& element, const Entity& entity, const Step& step, Walk& walk) {
    const EntityList* pReferrers = pReferrersOf(entity, step.iPlace);
    if (!pReferrers) return;
    std::optional<Element> around;   // no element around nothing
    for (const Entity* pReferrer : *pReferrers) {
        if (!pReferrer) continue;
        if (step.mode == 0) {
            walk.iEntityIdGet(pReferrer);
            continue;
        }
        const bool boEach = step.mode == 1;
        if (!around) around = boEach ? element : element.ElementNodeAppend(step.pInverse->sName);
        vExportEntity(*around, *pReferrer, nullptr,
                      boEach ? std::string_view(step.pInverse->sName) : std::string_view(), walk);
    }
}

}   // namespace oxa::ifc::xml
