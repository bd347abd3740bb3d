// SPDX-License-Identifier: Apache-2.0
// Values for people: as in a STEP file, but references are followed, since numbers mean nothing across two models, and
// texts end after a bounded length.
#include "Compare/ContentText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

#include "Format/Ifc/IfcGuid.h"
#include "Format/Ifc/IfcValueVisit.h"

namespace oxa::compare {

namespace schema = ifc::def::schema;
namespace visit = ifc::visit;

namespace {

// As short as it can be without becoming another number: digits for exponents from -4 to 15, else "1.5E+16". Always
// with a decimal point, as ISO 10303-21, 6.4.2 asks for.
std::string sReal(double value) {
    char text[32];
    const auto sText = [&text, value](std::chars_format format) {
        return std::string(text, std::to_chars(text, std::end(text), value, format).ptr);
    };
    std::string sReal = sText(std::chars_format::scientific);
    if (!std::isfinite(value)) return sReal;
    const std::size_t iE = sReal.find('e');
    int iExponent = 0;
    std::from_chars(sReal.data() + iE + (sReal[iE + 1] == '+' ? 2 : 1), sReal.data() + sReal.size(), iExponent);
    if (iExponent >= -4 && iExponent < 16) {
        sReal = sText(std::chars_format::fixed);
        return sReal.find('.') == std::string::npos ? sReal + '.' : sReal;
    }
    sReal[iE] = 'E';
    if (sReal.find('.') == std::string::npos) sReal.insert(iE, ".");
    return sReal;
}

// Items with commas between them, and parentheses around lists, typed values and entities. Once the text is full
// nothing is appended, not even the parentheses that are still open.
class TextVisitor {
public:
    TextVisitor(const Content& model, std::string& text) : m_model(model), m_text(text) {}

    void vCell(const ifc::AttributeBase& cell, const schema::Attribute& attribute) {
        ifc::visitValues(cell, attribute.pType(), *this);
    }

    void operator()(visit::Null null) { vItem(null.boDerived ? "*" : "$"); }
    void operator()(double value) { vItem(sReal(value)); }
    void operator()(long long iValue) { vItem(std::to_string(iValue)); }
    void operator()(bool boValue) { vItem(boValue ? ".T." : ".F."); }
    void operator()(LogicalValue value) {
        vItem(value == LogicalValue::False ? ".F." : value == LogicalValue::True ? ".T." : ".U.");
    }
    void operator()(const Guid& guid) { vItem('\'' + ifc::IfcGuid::toIfcGuid(guid) + '\''); }
    void operator()(visit::Text text) {
        std::string sText = "'";
        for (const char c : std::string_view(text.pText ? text.pText : "")) {
            if (c == '\'') sText += c;
            sText += c;
        }
        vItem(sText + '\'');
    }
    void operator()(visit::Enumerator item) {
        vItem(item.pText ? '.' + std::string(item.pText) + '.' : "(no enumerator)");
    }
    void operator()(visit::Binary binary) {
        std::string sText = "\"";
        for (std::size_t i = 0; i < binary.iCount && i < g_iMostText; ++i) {
            constexpr char digits[] = "0123456789ABCDEF";
            sText.append({digits[binary.pBytes[i] >> 4], digits[binary.pBytes[i] & 0xF]});
        }
        vItem(sText + '"');
    }
    void operator()(const ifc::Entity* pEntity) {
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
    void operator()(visit::ListBegin) { vOpen({}); }
    void operator()(visit::ListEnd) { vClose(); }
    void operator()(visit::TypeBegin begin) { vOpen(begin.type.sNameUpper); }
    void operator()(visit::TypeEnd) { vClose(); }
    void operator()(visit::Nothing) { vItem("(nothing)"); }

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

    const Content& m_model;
    std::string& m_text;
    bool m_boComma = false;   // something stands before the next item
    bool m_boFull = false;
};

}   // namespace

std::string sValueText(const Content& model, const ifc::AttributeBase& cell, const schema::Attribute& attribute) {
    std::string sText;
    TextVisitor(model, sText).vCell(cell, attribute);
    return sText;
}

std::string sReferenceText(const Content& model, const ifc::Entity* pEntity) {
    std::string sText;
    TextVisitor visitor(model, sText);
    visitor(pEntity);
    return sText;
}

}   // namespace oxa::compare
