// SPDX-License-Identifier: Apache-2.0
#include "oxaifc/verbs/ContentText.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include <fmt/format.h>

#include "Format/Ifc/IfcGuid.h"
#include "oxaifc/verbs/CellVisit.h"

namespace oxa::tool {

namespace schema = ifc::def::schema;

namespace {

class TextVisitor {
public:
    TextVisitor(const ModelContent& model, std::string& text) : m_model(model), m_text(text) {}

    void vCell(const ifc::AttributeBase& cell, const schema::Attribute& attribute) {
        vVisitCell(cell, attribute.types.empty() ? nullptr : attribute.types.front(), *this);
    }

    void vNull(bool boDerived) { vItem(boDerived ? "*" : "$"); }
    void vReal(double value) {
        std::string sText = fmt::format("{}", value);
        const std::size_t iExponent = std::min(sText.find('e'), sText.size());
        if (iExponent < sText.size()) sText[iExponent] = 'E';
        if (std::isfinite(value) && sText.find('.') == std::string::npos) sText.insert(iExponent, ".");
        vItem(sText);
    }
    void vInteger(long long iValue) { vItem(fmt::to_string(iValue)); }
    void vBoolean(bool boValue) { vItem(boValue ? ".T." : ".F."); }
    void vLogical(LogicalValue value) {
        vItem(value == LogicalValue::False ? ".F." : value == LogicalValue::True ? ".T." : ".U.");
    }
    void vGuid(const Guid& guid) { vItem('\'' + ifc::IfcGuid::toIfcGuid(guid) + '\''); }
    void vText(const char* pText) {
        std::string sText = "'";
        for (const char c : std::string_view(pText ? pText : "")) {
            if (c == '\'') sText += c;
            sText += c;
        }
        vItem(sText + '\'');
    }
    void vEnumerator(const char* pText) { vItem(pText ? fmt::format(".{}.", pText) : "(no enumerator)"); }
    void vBinary(const unsigned char* pBytes, std::size_t iCount) {
        std::string sText = "\"";
        for (std::size_t i = 0; i < iCount && i < g_iMostText; ++i) sText += fmt::format("{:02X}", pBytes[i]);
        vItem(sText + '"');
    }
    void vEntity(const ifc::Entity* pEntity) {
        if (!pEntity) return vItem("(no entity)");
        const schema::Entity* pType = pEntity->pSchemaEntity();
        if (!pType) return vItem("(an entity that is not in the file)");
        if (const Guid* pGuid = m_model.pGuid(*pEntity))
            return vItem(pType->sNameUpper + ' ' + ifc::IfcGuid::toIfcGuid(*pGuid));
        // Each level writes something before the next: the length bounds the depth.
        vOpen(pType->sNameUpper);
        if (!m_boFull)
            pEntity->boForEachAttribute([this](const schema::Attribute& attribute, const ifc::AttributeBase& cell) {
                vCell(cell, attribute);
                return m_boFull;
            });
        vClose();
    }
    void vListBegin(bool) { vOpen({}); }
    void vListEnd() { vClose(); }
    void vTypeBegin(const schema::Type& type) { vOpen(type.sNameUpper); }
    void vTypeEnd() { vClose(); }
    void vNothing() { vItem("(nothing)"); }

private:
    void vItem(std::string_view text) {
        if (m_boFull) return;
        if (m_text.size() + text.size() > g_iMostText) {
            m_text += "...";
            m_boFull = true;
            return;
        }
        if (m_boComma) m_text += ',';
        m_boComma = true;
        m_text += text;
    }
    void vOpen(std::string_view name) {
        vItem(name);
        if (m_boFull) return;
        m_text += '(';
        m_boComma = false;
    }
    void vClose() {
        if (m_boFull) return;
        m_text += ')';
        m_boComma = true;
    }

    const ModelContent& m_model;
    std::string& m_text;
    bool m_boComma = false;   // something stands before the next item
    bool m_boFull = false;
};

}   // namespace

std::string sValueText(const ModelContent& model, const ifc::AttributeBase& cell, const schema::Attribute& attribute) {
    std::string sText;
    TextVisitor(model, sText).vCell(cell, attribute);
    return sText;
}

std::string sReferenceText(const ModelContent& model, const ifc::Entity* pEntity) {
    std::string sText;
    TextVisitor(model, sText).vEntity(pEntity);
    return sText;
}

}   // namespace oxa::tool
