// SPDX-License-Identifier: Apache-2.0
// The way for all documents: pugixml's tree, proven and copied into ours.
#include <pugixml.hpp>

#include <string>
#include <unordered_set>

#include "platform/XmlParse.h"
#include "platform/XmlText.h"

namespace oxa::xml::details {

namespace {

// What pugixml lets pass and XML does not is a fault here. References are decoded here, too.
class TreeCopy {
public:
    TreeCopy(Document& document, std::size_t iDepthLimit)
        : m_document(document),
          m_memory(document.memory),
          m_iDepthLimit(iDepthLimit) {}

    // Null when the document is well-formed and within the limits, else what is wrong.
    const char* sFault(const pugi::xml_document& document) {
        for (pugi::xml_node node = document.first_child(); node; node = next(node))
            if (!(boIsElement(node) ? boElement(node) : boText(node))) return m_sFault;
        if (!m_document.uRoot) return "No root element";
        return m_boSecond ? "More than one root element" : nullptr;
    }

private:
    bool boFault(const char* sText) {
        m_sFault = sText;
        return false;
    }

    // In document order. m_uOpen is what holds the copy of the next one.
    pugi::xml_node next(pugi::xml_node node) {
        if (const pugi::xml_node child = node.first_child()) {
            m_uOpen = m_uCopied;
            ++m_iDepth;
            return child;
        }
        if (boIsElement(node)) vClose(node, m_uCopied);
        while (!node.next_sibling()) {
            if (m_iDepth == 0) return {};
            node = node.parent();
            --m_iDepth;
            vClose(node, m_uOpen);
            m_uOpen = m_memory.node(m_uOpen).uParentOfLast();
        }
        return node.next_sibling();
    }

    static bool boIsElement(const pugi::xml_node& node) { return node.type() == pugi::node_element; }
    // It gets no more children.
    void vClose(const pugi::xml_node& node, TreeRef uElement) {
        m_memory.element(uElement).uLast = static_cast<std::uint32_t>(node.offset_debug());
    }

    bool boElement(const pugi::xml_node& node) {
        if (m_iDepth >= m_iDepthLimit) return boFault("Elements nested too deep");
        const std::uint32_t uName = m_document.names.uKept(node.name());
        if (uName == TreeNames::g_uNone) return boFault("Not a name");
        m_uCopied = m_memory.uElement(uName);
        if (m_uOpen)
            m_memory.vAppend(m_uOpen, m_uCopied);
        else if (m_document.uRoot)
            m_boSecond = true;
        else
            m_document.uRoot = m_uCopied;
        return boAttributes(node);
    }
    bool boAttributes(const pugi::xml_node& node) {
        m_ofElement.clear();
        TreeRef uLast = 0;
        for (const pugi::xml_attribute& attribute : node.attributes()) {
            const std::uint32_t uName = m_document.names.uKept(attribute.name());
            if (uName == TreeNames::g_uNone) return boFault("Not a name");
            if (!m_ofElement.insert(uName).second) return boFault("An attribute twice");
            std::string_view value = attribute.value();
            if (value.find('<') != std::string_view::npos) return boFault("A tag inside an attribute");
            if (!boDecode(value)) return false;
            const TreeRef uAttribute = m_memory.uAttribute(uName, value);
            (uLast ? m_memory.attribute(uLast).uNext : m_memory.element(m_uCopied).uAttributes) = uAttribute;
            uLast = uAttribute;
        }
        return true;
    }
    bool boText(const pugi::xml_node& node) {
        if (!m_uOpen) return boFault("Text outside the root element");
        std::string_view text = node.value();
        const bool boSection = node.type() == pugi::node_cdata;
        if (boSection && !details::boIsText(text)) return boFault("A character that XML can't hold");
        if (!boSection && !boDecode(text)) return false;
        m_uCopied = m_memory.uText(text);
        m_memory.vAppend(m_uOpen, m_uCopied);
        return true;
    }
    bool boDecode(std::string_view& text) {
        if (!boIsText(text)) return boFault("A character that XML can't hold");
        if (text.find('&') == std::string_view::npos) return true;
        m_sText = text;
        if (!boReferencesDecode(m_sText)) return boFault("A reference to nothing");
        text = m_sText;
        return true;
    }

    Document& m_document;
    TreeMemory& m_memory;
    std::size_t m_iDepthLimit;
    std::size_t m_iDepth = 0;
    TreeRef m_uOpen = 0;
    TreeRef m_uCopied = 0;   // the last one
    bool m_boSecond = false;
    const char* m_sFault = nullptr;
    std::unordered_set<std::uint32_t> m_ofElement;   // the names of its attributes
    std::string m_sText;
};

}   // namespace

// References are decoded by TreeCopy, and text at the top is kept for it to find.
Fault parseAny(std::span<char> bytes, Document& document, std::size_t iDepthLimit) {
    constexpr unsigned g_options =
        (pugi::parse_default & ~pugi::parse_escapes) | pugi::parse_ws_pcdata_single | pugi::parse_fragment;
    // pugixml takes a 0 byte for the end.
    const bool boZero = std::string_view(bytes.data(), bytes.size()).find('\0') != std::string_view::npos;
    pugi::xml_document parsed;
    const pugi::xml_parse_result result = parsed.load_buffer_inplace(bytes.data(), bytes.size(), g_options);
    if (!result) return {result.description(), static_cast<std::size_t>(result.offset)};
    if (boZero && (result.encoding == pugi::encoding_utf8 || result.encoding == pugi::encoding_latin1))
        return {"A character that XML can't hold", 0};
    document.boOffsets = result.encoding == pugi::encoding_utf8;
    return {TreeCopy(document, iDepthLimit).sFault(parsed), 0};
}

}   // namespace oxa::xml::details
