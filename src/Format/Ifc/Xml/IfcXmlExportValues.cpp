// SPDX-License-Identifier: Apache-2.0
// What the value of one attribute becomes: an XML attribute, an element, or elements of instances.
//
// Not all values have a form. A list of anything but reals, texts, selects and instances is left out, and so are
// lists of lists: readers of this format know them that way.
#include <optional>

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
void vWrapperAppend(Element& parent, const std::string& sType, const std::string& sText) {
    parent.ElementNodeAppend(sType + "-wrapper").boTextNodeAppend(sText);
}

// Where a select's value goes: its attribute's element, or beside the other items of a list.
Element selectTarget(Element& parent, const Attribute& attribute, bool boInList) {
    return boInList ? parent : parent.ElementNodeAppend(attribute.sName);
}

// All items as one text with blanks between them; empty where the list does not hold any T.
template <class T, class Text>
std::optional<std::string> itemsText(const AttributeListValueBase& cell, const Attribute& attribute, Text&& text) {
    std::string sAll;
    bool boFirst = true;
    const bool boWalked = cell.boForEach<T>(attribute, [&](T& item) {
        if (!boFirst) sAll += ' ';
        boFirst = false;
        sAll += text(item);
        return true;
    });
    return boWalked ? std::optional(std::move(sAll)) : std::nullopt;
}

}   // namespace

void ExportCommon::vExportAttribute(Element& parent, const Attribute& attribute, const AttributeBase& cell,
                                    Walk& walk) {
    if (!cell.boHasValue() || attribute.types.empty()) return;
    const def::schema::ObjectBase* pType = attribute.pType();
    const bool boEntity = def::schema::pAsEntity(pType) != nullptr;
    def::xmlschema::Attribute mapping;
    if (attribute.pXml)
        mapping = *attribute.pXml;
    else if (m_pXmlDefaults)
        mapping.mode = boEntity ? m_pXmlDefaults->iModeEntity : m_pXmlDefaults->iModeValue;
    if (!mapping.boExported) return vLeftOutNote(attribute, cell, walk);

    visitCell(
        cell, AttributeBase::cellClass(pType),
        Overloads{
            [&](const AttributeEntity& reference) {
                vExportReference(parent, attribute, reference.m_value, mapping.mode, walk);
            },
            [&](const AttributeSelect& select) { vExportSelect(parent, select, attribute, false, mapping.mode, walk); },
            [&](const AttributeList& list) { vExportList(parent, list, attribute, mapping.mode, walk); },
            [&](const AttributeBase& scalar) { vExportScalar(parent, attribute, scalar, mapping.mode); },
        });
}

// Nothing is written; but a walk that is to lose nothing comes back to what the attribute names.
void ExportCommon::vLeftOutNote(const Attribute& attribute, const AttributeBase& cell, Walk& walk) const {
    if (!walk.m_boLeftOutNoted) return;
    vForEachEntity(cell, AttributeBase::cellClass(attribute.pType()), [&](const Entity* pEntity) {
        const bool boDefined = pEntity && pEntity->pSchemaEntity();
        if (boDefined && !m_pExported->contains(pEntity)) walk.m_leftOut.push_back(pEntity);
    });
}

void ExportCommon::vExportReference(Element& parent, const Attribute& attribute, const Entity* pEntity,
                                    std::uint32_t mode, Walk& walk) {
    if (mode == 1 && pEntity)
        vExportEntity(parent, *pEntity, def::schema::pAsEntity(attribute.types.front()), attribute.sName, walk);
    if (mode == 2 || mode == 3) parent.vAttributeSet(attribute.sName, sIdText(walk.iEntityIdGet(pEntity)));
}

void ExportCommon::vExportScalar(Element& parent, const Attribute& attribute, const AttributeBase& cell,
                                 std::uint32_t mode) {
    const def::schema::ObjectBase& type = *attribute.types.front();
    std::string sText;
    if (!cell.boValueAsXmlStringGet(type, sText, attribute, nullptr)) return;
    if (mode != 2) {
        Element element = parent.ElementNodeAppend(attribute.sName);
        // A base type of EXPRESS has no name of its own in the schema.
        return vWrapperAppend(element, type.sName.empty() ? attribute.sTypeName : type.sName, sText);
    }
    // A GUID's text comes between quotes, as it stands in a STEP file.
    if (cell.m_boGuid) sText = sText.substr(1, sText.size() - 2);
    parent.vAttributeSet(attribute.sName, sText);
}

void ExportCommon::vExportSelect(Element& parent, const AttributeSelect& cell, const Attribute& attribute,
                                 bool boInList, std::uint32_t mode, Walk& walk) {
    std::string sText;
    const def::schema::Type* pType = cell.m_pType;
    if (pType && cell.boValueAsXmlStringGet(sText, attribute, nullptr)) {
        Element target = selectTarget(parent, attribute, boInList);
        return vWrapperAppend(target, pType->sName, sText);
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
    const auto vReals = [&] {
        const auto text = itemsText<double>(cell, attribute, str::Manip::valueFormatDefault);
        if (text) parent.vAttributeSet(attribute.sName, *text);
    };
    visitItems(cell, Overloads{
                         [&](const Array<double>*) { vReals(); },
                         [&](const Array<char*>*) {
                             const auto text = itemsText<char*>(cell, attribute, [](const char* pText) {
                                 return std::string_view(pText ? pText : "");
                             });
                             if (text && !text->empty()) parent.vAttributeSet(attribute.sName, *text);
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
                             if (none.eType == AttributeType::Number) vReals();   // which raises an assertion
                         },
                         [](AnyItems) {},
                     });
}

}   // namespace oxa::ifc::xml
