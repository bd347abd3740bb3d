// SPDX-License-Identifier: Apache-2.0
#include "platform/XmlWrite.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "platform/Stream.h"
#include "platform/XmlText.h"

namespace oxa::xml::details {

namespace {

// Deeper levels stay at this one: a chain of many levels would grow with their square.
constexpr std::size_t g_iIndentLimit = 32;

constexpr std::array<char, 1 + 2 * g_iIndentLimit> g_indent = [] {
    std::array<char, 1 + 2 * g_iIndentLimit> line{};
    line.fill(' ');
    line[0] = '\n';
    return line;
}();

class DocumentWriter {
public:
    DocumentWriter(std::ostream& stream, const Document& document)
        : m_out(stream),
          m_memory(document.memory),
          m_names(document.names) {}

    bool boWrite(TreeRef uRoot) {
        m_out.vWrite("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
        vStart(uRoot);
        m_memory.boWalk(
            uRoot,
            [this](TreeRef uNode, std::size_t iDepth) {
                vEnter(uNode, iDepth + 1);
                return true;
            },
            [this](TreeRef uNode, std::size_t iDepth) {
                if (m_memory.node(uNode).boElement()) vEnd(uNode, iDepth + 1);
            });
        vEnd(uRoot, 0);
        m_out.vWrite('\n');
        m_out.vBufferFlush();
        return m_out.boGood();
    }

private:
    // Only between elements: white space beside a text would be part of it.
    bool boHoldsElements(TreeRef uFirst) const noexcept {
        for (TreeRef uChild = uFirst; uChild; uChild = m_memory.node(uChild).uSibling())
            if (!m_memory.node(uChild).boElement()) return false;
        return uFirst != 0;
    }

    void vIndent(std::size_t iDepth) {
        m_out.vWrite(std::string_view(g_indent.data(), 1 + 2 * std::min(iDepth, g_iIndentLimit)));
    }
    void vEnter(TreeRef uNode, std::size_t iDepth) {
        if (!m_memory.node(uNode).boElement()) return vText(m_memory.text(uNode), false);
        if (m_indented.back()) vIndent(iDepth);
        vStart(uNode);
    }
    void vStart(TreeRef uElement) {
        const TreeElement& element = m_memory.element(uElement);
        m_out.vWrite('<');
        m_out.vWrite(m_names.name(element.uName));
        for (TreeRef u = element.uAttributes; u; u = m_memory.attribute(u).uNext) {
            m_out.vWrite(' ');
            m_out.vWrite(m_names.name(m_memory.attribute(u).uName));
            m_out.vWrite("=\"");
            vText(m_memory.value(u), true);
            m_out.vWrite('"');
        }
        m_out.vWrite(element.uFirst ? ">" : "/>");
        m_indented.push_back(boHoldsElements(element.uFirst));
    }
    void vEnd(TreeRef uElement, std::size_t iDepth) {
        if (m_indented.back()) vIndent(iDepth);
        m_indented.pop_back();
        const TreeElement& element = m_memory.element(uElement);
        if (!element.uFirst) return;
        m_out.vWrite("</");
        m_out.vWrite(m_names.name(element.uName));
        m_out.vWrite('>');
    }
    void vText(std::string_view text, bool boAttribute) {
        if (boIsPlain(text)) return m_out.vWrite(text);
        m_sText.clear();
        vEscape(m_sText, text, boAttribute);
        m_out.vWrite(m_sText);
    }

    stream::StreamWriteBuffer m_out;
    const TreeMemory& m_memory;
    const TreeNames& m_names;
    std::vector<char> m_indented;   // for each open element, whether its children stand on lines of their own
    std::string m_sText;
};

}   // namespace

bool boWrite(std::ostream& out, const Document& document) {
    return DocumentWriter(out, document).boWrite(document.uRoot);
}

}   // namespace oxa::xml::details
