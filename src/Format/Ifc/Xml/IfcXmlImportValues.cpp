// SPDX-License-Identifier: Apache-2.0
// From one XML attribute or child element to a cell. The form that is found decides, not a mapping record.
//
// Reading a nested instance may change the one that is being read, where a document gives a number twice. So cells are
// looked up behind that, and by name where the type has changed.
#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcTypeSelectBase.h"
#include "Format/Ifc/Xml/CellXmlItems.h"
#include "Format/Ifc/Xml/IfcXmlImportWalk.h"
#include "Format/Ifc/Xml/IfcXmlText.h"
#include "platform/Assert.h"

namespace oxa::ifc::xml {

using def::schema::Attribute;
using def::schema::AttributeName;
using oxa::xml::const_Attr;
using oxa::xml::const_Element;
using oxa::xml::const_Node;
using types::IfcSelectBase;

namespace {

constexpr std::string_view g_sWrapper = "-wrapper";

// Null when the instance has no such attribute any more.
AttributeBase* pCellOf(Entity& entity, const DataSizeEntity::Cell* pPlace) {
    auto* pCells = static_cast<char*>(entity.unsafeAttributesRaw());
    return pPlace && pCells ? reinterpret_cast<AttributeBase*>(pCells + pPlace->iOffset) : nullptr;
}

void vValueFault() {
    Assert::vTell("Format/Ifc/Xml/IfcXmlImport", "oxa::ifc::xml::Import::vAttributeRead",
                  "Not implemented or error in format");
}

}   // namespace

// Nothing that is nested has been read when this asks for the cell: the instance is still of that type.
void ImportWalk::vAttributeRead(Entity& entity, const const_Node& node, Type& type, Member& member) {
    const Attribute& attribute = *member.pAttribute;
    if (attribute.types.empty()) return;
    switch (member.eClass) {
    case CellClass::Entity:
        if (const std::optional<const_Element> element = const_Element::toWrapper(node))
            vReferenceRead(entity, *element, type, member);
        return;
    case CellClass::Select: return vSelectRead(entity, node, member);
    case CellClass::List: return vListRead(entity, node, member);
    case CellClass::Real:
    case CellClass::Boolean:
    case CellClass::Integer:
    case CellClass::Number:
    case CellClass::String:
    case CellClass::Guid:
    case CellClass::Logical:
    case CellClass::Binary:
    case CellClass::Enumeration:
    case CellClass::Unresolved:
    case CellClass::Illegal: break;
    }
    AttributeBase* pCell = pCellOf(entity, member.pPlace);
    if (!pCell) return;
    m_sText = node.getNodeValue();   // of an element this is an empty text
    m_path.clear();
    pCell->boValueAsXmlStringSet(*attribute.types.front(), m_sText, attribute, m_data, m_path);
}

void ImportWalk::vReferenceRead(Entity& entity, const const_Element& element, Type& type, Member& member) {
    const Attribute& attribute = *member.pAttribute;
    const std::optional<const_Attr> named = element.AttributeNodeGet("xsi:type");
    Entity* pTarget = pEntityRead(element, named ? named->getValue() : std::string_view(attribute.sTypeName));
    if (entity.pSchemaEntity() == type.pSchema && member.pPlace && member.pPlace->eClass == CellClass::Entity) {
        auto& cell = static_cast<AttributeEntity&>(*pCellOf(entity, member.pPlace));
        cell.m_value = pTarget;
        cell.vDefined();
    } else {
        entity.boValueSet<const Entity*>(AttributeName(attribute), pTarget, m_data);
    }
}

// A value is wrapped by an element that names its type, a reference is an element of the instance's type.
void ImportWalk::vSelectRead(Entity& entity, const const_Node& node, Member& member) {
    const std::optional<const_Node> child = node.FirstChildGet();
    const std::optional<const_Element> element = child ? const_Element::toWrapper(*child) : std::nullopt;
    if (!element) return;
    const std::string_view name = element->getNodeName();
    if (name.find(g_sWrapper) != std::string_view::npos) return vWrappedValueRead(entity, *element, member);
    const IfcSelectBase value(pEntityRead(*element, name));
    entity.boValueSet(AttributeName(*member.pAttribute), value, m_data);
}

// The value inside <IfcLabel-wrapper>: the element's name says its type.
void ImportWalk::vWrappedValueRead(Entity& entity, const const_Element& wrapper, Member& member) {
    const std::string_view name = wrapper.getNodeName();
    const auto* pType =
        def::schema::pAsType(m_data.pSchema()->pObjectFromName(name.substr(0, name.size() - g_sWrapper.size())));
    const std::optional<const_Node> value = wrapper.FirstChildGet();
    if (!pType || !value) return;
    const Attribute& attribute = *member.pAttribute;
    AttributeBase* pCell = pCellOf(entity, member.pPlace);
    m_sText = value->getNodeValue();
    m_path.assign(1, pType);
    if (!pCell || !pCell->boValueAsXmlStringSet(*attribute.types.front(), m_sText, attribute, m_data, m_path))
        vValueFault();
}

template <class Visit>
void ImportWalk::vForEachChild(const const_Node& node, Visit&& visit) {
    for (std::optional<const_Node> child = node.FirstChildGet(); child; child = child->NextSiblingGet())
        if (const std::optional<const_Element> element = const_Element::toWrapper(*child))
            visit(pEntityRead(*element, element->getNodeName()));
}

// An XML attribute holds all items as one text, an element has one child for each instance. Which of the two a document
// uses is seen from the node.
void ImportWalk::vListRead(Entity& entity, const const_Node& node, Member& member) {
    if (const_Element::toWrapper(node)) return vItemsRead(entity, node, member);
    const Attribute& attribute = *member.pAttribute;
    auto* pList = static_cast<AttributeList*>(pCellOf(entity, member.pPlace));
    if (!pList) return;
    vItemsOf(node.getNodeValue(), m_texts);
    boItemTextsSet(*pList, *attribute.types.front(), m_texts, attribute, m_data, attribute.types);
}

// What an item nests may have items, too: each list that is being read has its own place in m_lists.
void ImportWalk::vItemsRead(Entity& entity, const const_Node& node, const Member& member) {
    if (m_iLists == m_lists.size()) m_lists.emplace_back();
    std::vector<Entity*>& items = m_lists[m_iLists++];
    items.clear();
    vForEachChild(node, [&items](Entity* pItem) { items.push_back(pItem); });
    --m_iLists;
    const AttributeName name(*member.pAttribute);
    if (member.boSelects)
        entity.boListValueSet(name, std::vector<IfcSelectBase>(items.begin(), items.end()), m_data);
    else
        entity.boListValueSet(name, items, m_data);
}

void ImportWalk::vInverseRead(Entity& entity, const const_Node& node, const def::schema::AttributeInverse& inverse) {
    const Attribute* pForward = inverse.pForAttribute;
    if (!pForward || !pForward->pOwner || pForward->types.empty()) return;
    const AttributeName name(*pForward);
    const auto vAdd = [&](Entity* pTarget) {
        if (!pTarget) return;   // a number that stands for no instance
        if (AttributeBase::cellClass(pForward->types.front()) == CellClass::List)
            pTarget->boValuePushBack(name, &entity, m_data);
        else
            pTarget->boValueSet<const Entity*>(name, &entity, m_data);   // a reference, or a select of some
    };
    const std::optional<const_Element> element = const_Element::toWrapper(node);
    if (element && (element->AttributeNodeGet("id") || element->AttributeNodeGet("ref")))
        vAdd(pEntityRead(*element, pForward->pOwner->sName));
    else
        vForEachChild(node, vAdd);   // each related before the next one is read
}

}   // namespace oxa::ifc::xml
