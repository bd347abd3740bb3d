// SPDX-License-Identifier: Apache-2.0
// What the value of one attribute becomes: an XML attribute, an element, or elements of instances.
//
// Not all values have a form. A list of anything but reals, texts, selects and instances is left out, and so are
// lists of lists: readers of this format know them that way.
#include <string>

#include "Format/Ifc/Cells/CellWalk.h"
#include "Format/Ifc/IfcCellVisit.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "Format/Ifc/IfcTypeSelectBase.h"
#include "Format/Ifc/Xml/IfcXmlExport.h"
#include "Format/Ifc/Xml/IfcXmlExportWalk.h"
#include "platform/Assert.h"
#include "platform/String.h"
#include "platform/Xml.h"
#include "schema/XmlSchema.h"

namespace oxa::ifc::xml {

using def::schema::Attribute;
using oxa::xml::Element;
using types::IfcSelectBase;

namespace {

// Whether the mode gives instances a place inside the element of a select or a list.
bool boNestsInstances(std::uint32_t mode) { return mode == 1 || mode == 2 || mode == 3; }

// The element that holds the text of a value of that type.
void vWrapperAppend(Element& parent, const std::string& sType, std::string& sName, const std::string& sText) {
    sName.assign(sType).append("-wrapper");
    parent.ElementNodeAppend(sName).boTextNodeAppend(sText);
}

// Where a select's value goes: its attribute's element, or beside the other items of a list.
Element selectTarget(Element& parent, const Attribute& attribute, bool boInList) {
    return boInList ? parent : parent.ElementNodeAppend(attribute.sName);
}

// All items as one text with blanks between them; vAppend(text, item) puts one of them there.
template <class T, class Append>
void vItemsText(const Array<T>* pItems, std::string& sText, Append&& vAppend) {
    sText.clear();
    if (!pItems) return;
    bool boFirst = true;
    for (const auto& stored : *pItems) {
        if (!boFirst) sText += ' ';
        boFirst = false;
        const T item = stored;
        vAppend(sText, item);
    }
}

}   // namespace

void ExportCommon::vExportAttribute(Element& parent, const Step& step, const AttributeBase& cell, Walk& walk) {
    if (!step.boExported) return vLeftOutNote(step, cell, walk);
    const Attribute& attribute = *step.pAttribute;
    visitCell(
        cell, step.eClass,
        Overloads{
            [&](const AttributeEntity& reference) {
                vExportReference(parent, attribute, reference.m_value, step.mode, walk);
            },
            [&](const AttributeSelect& select) { vExportSelect(parent, select, attribute, false, step.mode, walk); },
            [&](const AttributeList& list) { vExportList(parent, list, attribute, step.mode, walk); },
            [&](const AttributeBase& scalar) { vExportScalar(parent, attribute, scalar, step.mode, walk); },
        });
}

// Nothing is written; but a walk that is to lose nothing comes back to what the attribute names.
void ExportCommon::vLeftOutNote(const Step& step, const AttributeBase& cell, Walk& walk) const {
    vForEachEntity(cell, step.eClass, [&](const Entity* pEntity) {
        const bool boDefined = pEntity && pEntity->pSchemaEntity();
        if (boDefined && !m_pExported->contains(pEntity)) walk.m_leftOut.push_back(pEntity);
    });
}

void ExportCommon::vExportReference(Element& parent, const Attribute& attribute, const Entity* pEntity,
                                    std::uint32_t mode, Walk& walk) {
    if (mode == 1 && pEntity)
        vExportEntity(parent, *pEntity, def::schema::pAsEntity(attribute.types.front()), attribute.sName, walk);
    if (mode == 2 || mode == 3) parent.vAttributeSet(attribute.sName, IdText(walk.iEntityIdGet(pEntity)).text());
}

void ExportCommon::vExportScalar(Element& parent, const Attribute& attribute, const AttributeBase& cell,
                                 std::uint32_t mode, Walk& walk) {
    const def::schema::ObjectBase& type = *attribute.types.front();
    walk.m_sText.clear();
    if (!cell.boValueAsXmlStringGet(type, walk.m_sText, attribute, nullptr)) return;
    if (mode != 2) {
        Element element = parent.ElementNodeAppend(attribute.sName);
        // A base type of EXPRESS has no name of its own in the schema.
        return vWrapperAppend(element, type.sName.empty() ? attribute.sTypeName : type.sName, walk.m_sName,
                              walk.m_sText);
    }
    std::string_view text = walk.m_sText;
    // A GUID's text comes between quotes, as it stands in a STEP file.
    if (cell.m_boGuid) text = text.substr(1, text.size() - 2);
    parent.vAttributeSet(attribute.sName, text);
}

void ExportCommon::vExportSelect(Element& parent, const AttributeSelect& cell, const Attribute& attribute,
                                 bool boInList, std::uint32_t mode, Walk& walk) {
    const def::schema::Type* pType = cell.m_pType;
    walk.m_sText.clear();
    if (pType && cell.boValueAsXmlStringGet(walk.m_sText, attribute, nullptr)) {
        Element target = selectTarget(parent, attribute, boInList);
        return vWrapperAppend(target, pType->sName, walk.m_sName, walk.m_sText);
    }
    IfcSelectBase value;
    if (!cell.boValueGet(value)) return;
    if (value.pTypeInfo() && *value.pTypeInfo() == typeid(Entity)) {
        Element target = selectTarget(parent, attribute, boInList);
        if (value.pEntityGet() && boNestsInstances(mode)) vExportEntity(target, *value.pEntityGet(), nullptr, {}, walk);
    } else {
        // Bytes of none, an enumerator that is none, a list without a text: all else has one.

        Assert::vTell("Format/Ifc/Xml/IfcXmlExport", "oxa::ifc::xml::ExportCommon::vExportSelect", "Not implemented");
    }
}

void ExportCommon::vExportList(Element& parent, const AttributeListValueBase& cell, const Attribute& attribute,
                               std::uint32_t mode, Walk& walk) {
    std::string& sText = walk.m_sText;
    visitItems(cell, Overloads{
                         [&](const Array<double>* pItems) {
                             vItemsText(pItems, sText, str::Manip::vValueFormatDefaultAppend);
                             parent.vAttributeSet(attribute.sName, sText);
                         },
                         [&](const Array<char*>* pItems) {
                             vItemsText(pItems, sText, [](std::string& sAll, const char* pText) {
                                 if (pText) sAll += pText;
                             });
                             if (!sText.empty()) parent.vAttributeSet(attribute.sName, sText);
                         },
                         [&](const Array<AttributeSelect>* pItems) {
                             Element element = parent.ElementNodeAppend(attribute.sName);
                             if (!pItems) return;
                             for (const AttributeSelect& item : *pItems)
                                 vExportSelect(element, item, attribute, true, mode, walk);
                         },
                         [&](const EntityList* pItems) {
                             Element element = parent.ElementNodeAppend(attribute.sName);
                             if (!pItems || !boNestsInstances(mode)) return;
                             for (const Entity* pItem : *pItems)
                                 if (pItem) vExportEntity(element, *pItem, &pItem->schemaEntity(), {}, walk);
                         },
                         [&](NoItems none) {
                             // Raises an assertion.
                             if (none.eType == AttributeType::Number)
                                 static_cast<void>(cell.boForEach<double>(attribute, [](double&) { return true; }));
                         },
                         [](AnyItems) {},
                     });
}

}   // namespace oxa::ifc::xml
