// SPDX-License-Identifier: Apache-2.0
// From one XML attribute or child element to a cell. The form that is found decides, not a mapping record.
//
// Reading a nested instance may change the one that is being read, where a document gives a number twice. So cells are
// looked up by name and only then, never kept.
#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcTypeSelectBase.h"
#include "Format/Ifc/Xml/IfcXmlImport.h"
#include "Format/Ifc/Xml/IfcXmlText.h"
#include "platform/Assert.h"
#include "platform/Xml.h"

namespace oxa::ifc::xml {

using def::schema::Attribute;
using def::schema::AttributeName;
using def::schema::DataKind;
using def::schema::ObjectBase;
using oxa::xml::const_Attr;
using oxa::xml::const_Element;
using oxa::xml::const_Node;
using types::IfcSelectBase;

namespace {

constexpr std::string_view g_sWrapper = "-wrapper";

DataKind kindOf(const ObjectBase* pObject) {
    const def::schema::DataTypeBase* pDataType = def::schema::pDataTypeOf(pObject);
    return pDataType ? pDataType->kind : DataKind{-1};
}

// Null when the instance has no such attribute any more.
AttributeBase* pCellOf(const Entity& entity, const Attribute& attribute) {
    const int iIndex = entity.indexFromName(AttributeName(attribute));
    if (iIndex < 0) return nullptr;
    const auto [pFound, pCell] = entity.pAttributeFromIndex(static_cast<unsigned>(iIndex));
    return pFound == &attribute ? pCell : nullptr;
}

void vValueFault() {
    Assert::vTell("Format/Ifc/Xml/IfcXmlImport", "oxa::ifc::xml::Import::vAttributeRead",
                  "Not implemented or error in format");
}

// The value inside <IfcLabel-wrapper>: the element's name says its type.
void vWrappedValueRead(Entity& entity, const const_Element& wrapper, const Attribute& attribute, Data& data) {
    const std::string_view sName = wrapper.getNodeName();
    const auto* pType =
        def::schema::pAsType(data.pSchema()->pObjectFromName(sName.substr(0, sName.size() - g_sWrapper.size())));
    const std::optional<const_Node> value = wrapper.FirstChildGet();
    if (!pType || !value) return;
    AttributeBase* pCell = pCellOf(entity, attribute);
    if (!pCell || !pCell->boValueAsXmlStringSet(*attribute.types.front(), std::string(value->getNodeValue()), attribute,
                                                data, {pType}))
        vValueFault();
}

}   // namespace

void Import::vAttributeRead(Entity& entity, const const_Node& node, const Attribute& attribute, Data& data,
                            ReadInfoCommon& info) {
    if (attribute.types.empty()) return;
    const ObjectBase* pType = attribute.types.front();
    if (def::schema::pAsEntity(pType)) return vReferenceRead(entity, node, attribute, data, info);
    const DataKind kind = kindOf(pType);
    if (kind == DataKind::Select) return vSelectRead(entity, node, attribute, data, info);
    if (def::schema::boIsAggregate(kind)) return vListRead(entity, node, attribute, data, info);
    // Of an element this is an empty text.
    if (AttributeBase* pCell = pCellOf(entity, attribute))
        pCell->boValueAsXmlStringSet(*pType, std::string(node.getNodeValue()), attribute, data, {});
}

void Import::vReferenceRead(Entity& entity, const const_Node& node, const Attribute& attribute, Data& data,
                            ReadInfoCommon& info) {
    const std::optional<const_Element> element = const_Element::toWrapper(node);
    if (!element) return;
    const std::optional<const_Attr> type = element->AttributeNodeGet("xsi:type");
    const Entity* pTarget =
        entityNodeImport(*element, type ? std::string(type->getValue()) : attribute.sTypeName, data, info);
    entity.boValueSet<const Entity*>(AttributeName(attribute), pTarget, data);
}

// A value is wrapped by an element that names its type, a reference is an element of the instance's type.
void Import::vSelectRead(Entity& entity, const const_Node& node, const Attribute& attribute, Data& data,
                         ReadInfoCommon& info) {
    const std::optional<const_Node> child = node.FirstChildGet();
    const std::optional<const_Element> element = child ? const_Element::toWrapper(*child) : std::nullopt;
    if (!element) return;
    const std::string sName(element->getNodeName());
    if (sName.find(g_sWrapper) != std::string::npos) return vWrappedValueRead(entity, *element, attribute, data);
    const IfcSelectBase value(entityNodeImport(*element, sName, data, info));
    entity.boValueSet(AttributeName(attribute), value, data);
}

template <class Visit>
void Import::vForEachChild(const const_Node& node, Data& data, ReadInfoCommon& info, Visit&& visit) {
    for (std::optional<const_Node> child = node.FirstChildGet(); child; child = child->NextSiblingGet())
        if (const std::optional<const_Element> element = const_Element::toWrapper(*child))
            visit(entityNodeImport(*element, std::string(element->getNodeName()), data, info));
}

// An XML attribute holds all items as one text, an element has one child for each instance. Which of the two a document
// uses is seen from the node.
void Import::vListRead(Entity& entity, const const_Node& node, const Attribute& attribute, Data& data,
                       ReadInfoCommon& info) {
    if (!const_Element::toWrapper(node)) {
        if (AttributeBase* pCell = pCellOf(entity, attribute))
            pCell->boValueAsXmlStringsSet(*attribute.types.front(), itemsOf(node.getNodeValue()), attribute, data,
                                          attribute.types);
        return;
    }
    std::vector<Entity*> items;
    vForEachChild(node, data, info, [&items](Entity* pItem) { items.push_back(pItem); });
    const ObjectBase* pItemType = attribute.types.back();
    if (def::schema::pAsType(pItemType) && kindOf(pItemType) == DataKind::Select) {
        std::vector<IfcSelectBase> values;
        values.reserve(items.size());
        for (Entity* pItem : items) values.emplace_back(pItem);
        entity.boListValueSet(AttributeName(attribute), values, data);
    } else {
        entity.boListValueSet(AttributeName(attribute), items, data);
    }
}

void Import::vInverseRead(Entity& entity, const const_Node& node, const def::schema::AttributeInverse& inverse,
                          Data& data, ReadInfoCommon& info) {
    const Attribute* pForward = inverse.pForAttribute;
    if (!pForward || !pForward->pOwner || pForward->types.empty()) return;
    const AttributeName name(*pForward);
    const auto vAdd = [&](Entity* pTarget) {
        if (!pTarget) return;   // a number that stands for no instance
        if (def::schema::boIsAggregate(kindOf(pForward->types.front())))
            pTarget->boValuePushBack(name, &entity, data);
        else
            pTarget->boValueSet<const Entity*>(name, &entity, data);   // a reference, or a select of some
    };
    const std::optional<const_Element> element = const_Element::toWrapper(node);
    if (element && (element->AttributeNodeGet("id") || element->AttributeNodeGet("ref")))
        vAdd(entityNodeImport(*element, pForward->pOwner->sName, data, info));
    else
        vForEachChild(node, data, info, vAdd);   // each related before the next one is read
}

}   // namespace oxa::ifc::xml
