// SPDX-License-Identifier: Apache-2.0
// Handles of the tree, and the document with its owner.
#include "platform/Xml.h"

#include <cerrno>
#include <fstream>
#include <ostream>

#include "platform/Assert.h"
#include "platform/Path.h"
#include "platform/XmlParse.h"
#include "platform/XmlText.h"
#include "platform/XmlTree.h"
#include "platform/XmlWrite.h"

namespace oxa::xml {

using details::Document;
using details::TreeRef;

namespace {

// What a document holds: its texts have no 0 byte, which no document may have anyway. "sChanged" is for such a text.
std::string_view held(std::string_view text, std::string& sChanged) {
    if (text.find('\0') == std::string_view::npos) return text;
    sChanged = text;
    for (std::size_t i = sChanged.find('\0'); i != std::string::npos; i = sChanged.find('\0', i))
        sChanged.replace(i, 1, "\xEF\xBF\xBD");
    return sChanged;
}

// TreeNames::g_uNone, with an assertion, for what is no name; without a document too.
std::uint32_t uKeptName(std::string_view name, Document* pDocument, const char* sFunction) {
    if (!pDocument && details::boIsName(name)) return details::TreeNames::g_uNone;
    const std::uint32_t uName = pDocument ? pDocument->names.uKept(name) : details::TreeNames::g_uNone;
    if (uName == details::TreeNames::g_uNone) Assert::vTell("platform/Xml", sFunction, "No name of XML");
    return uName;
}

bool boElement(const Document* pDocument, TreeRef uNode) noexcept {
    return uNode && pDocument->memory.node(uNode).boElement();
}

// The first attribute of an element; 0 for all else.
TreeRef uAttributesOf(const Document* pDocument, TreeRef uNode) noexcept {
    return boElement(pDocument, uNode) ? pDocument->memory.element(uNode).uAttributes : 0;
}

}   // namespace

ExceptionInterface::~ExceptionInterface() = default;

std::string_view const_Node::getNodeName() const noexcept {
    if (m_uAttribute) return m_pDocument->names.name(m_pDocument->memory.attribute(m_uAttribute).uName);
    if (!boElement(m_pDocument, m_uNode)) return {};
    return m_pDocument->names.name(m_pDocument->memory.node(m_uNode).uName);
}

std::string_view const_Node::getNodeValue() const noexcept {
    if (m_uAttribute) return m_pDocument->memory.value(m_uAttribute);
    if (!m_uNode || boElement(m_pDocument, m_uNode)) return {};
    return m_pDocument->memory.text(m_uNode);
}

const_NodeList const_Node::ChildNodesGet() const noexcept {
    return {m_pDocument, boElement(m_pDocument, m_uNode) ? m_pDocument->memory.element(m_uNode).uFirst : 0};
}

std::optional<const_Node> const_Node::FirstChildGet() const noexcept { return ChildNodesGet().getFirstItem(); }

std::optional<const_Node> const_Node::NextSiblingGet() const noexcept {
    return const_NodeList(m_pDocument, m_uNode ? m_pDocument->memory.node(m_uNode).uSibling() : 0).getFirstItem();
}

bool const_Node::boHasChildNodes() const noexcept {
    return boElement(m_pDocument, m_uNode) && m_pDocument->memory.element(m_uNode).uFirst;
}

const_NamedNodeMap const_Node::AttributesGet() const {
    const_NamedNodeMap map;
    for (TreeRef u = uAttributesOf(m_pDocument, m_uNode); u; u = m_pDocument->memory.attribute(u).uNext) {
        if (map.m_iCount < map.m_few.size())
            map.m_few[map.m_iCount] = const_Attr(m_pDocument, u);
        else
            map.m_more.push_back(const_Attr(m_pDocument, u));
        ++map.m_iCount;
    }
    return map;
}

std::string const_Node::to_string(bool boValue) { return boValue ? "true" : "false"; }

std::string const_Node::to_string(long long iValue) { return std::to_string(iValue); }

std::optional<const_Attr> const_Attr::toWrapper(const const_Node& node) noexcept {
    if (!node.m_uAttribute) return std::nullopt;
    return const_Attr(node.m_pDocument, node.m_uAttribute);
}

std::optional<const_Node> const_NodeList::getFirstItem() const noexcept {
    if (!m_uFirst) return std::nullopt;
    return const_Node(m_pDocument, m_uFirst, 0);
}

std::optional<const_Element> const_Element::toWrapper(const const_Node& node) noexcept {
    if (!boElement(node.m_pDocument, node.m_uNode)) return std::nullopt;
    return const_Element(node.m_pDocument, node.m_uNode);
}

std::optional<const_Attr> const_Element::AttributeNodeGet(std::string_view name) const noexcept {
    for (TreeRef u = uAttributesOf(m_pDocument, m_uNode); u; u = m_pDocument->memory.attribute(u).uNext)
        if (name == m_pDocument->names.name(m_pDocument->memory.attribute(u).uName)) return const_Attr(m_pDocument, u);
    return std::nullopt;
}

std::optional<const_Element> const_Element::ElementByTagNameGet(std::string_view name) const noexcept {
    std::optional<const_Element> found;
    if (!m_uNode) return found;
    const details::TreeMemory& memory = m_pDocument->memory;
    memory.boWalk(
        m_uNode,
        [&](TreeRef uNode, std::size_t) {
            if (memory.node(uNode).boElement() && name == m_pDocument->names.name(memory.node(uNode).uName))
                found = const_Element(m_pDocument, uNode);
            return !found;
        },
        [](TreeRef, std::size_t) {});
    return found;
}

Element Node::ElementNodeAppend(std::string_view name) {
    const std::uint32_t uName = uKeptName(name, m_pDocument, "oxa::xml::Node::ElementNodeAppend");
    if (uName == details::TreeNames::g_uNone) return {};
    const TreeRef uChild = m_pDocument->memory.uElement(uName);
    m_pDocument->memory.vAppend(m_uNode, uChild);
    return {m_pDocument, uChild};
}

bool Node::boTextNodeAppend(std::string_view text) {
    if (!m_uNode) return false;
    std::string sChanged;
    m_pDocument->memory.vAppend(m_uNode, m_pDocument->memory.uText(held(text, sChanged)));
    return true;
}

// What the child holds goes with the document.
bool Node::RemoveChild(const const_Node& child) {
    const auto& removed = static_cast<const Node&>(child);
    if (!m_uNode || !removed.m_uNode || removed.m_pDocument != m_pDocument) return false;
    return m_pDocument->memory.boRemove(m_uNode, removed.m_uNode);
}

void Element::vAttributeSet(std::string_view name, std::string_view value) {
    const std::uint32_t uName = uKeptName(name, m_pDocument, "oxa::xml::Element::vAttributeSet");
    if (uName == details::TreeNames::g_uNone) return;
    std::string sChanged;
    const std::string_view text = held(value, sChanged);
    details::TreeMemory& memory = m_pDocument->memory;
    TreeRef uLast = 0;
    for (TreeRef u = uAttributesOf(m_pDocument, m_uNode); u; u = memory.attribute(u).uNext) {
        if (memory.attribute(u).uName == uName) return memory.vValueSet(u, text);
        uLast = u;
    }
    const TreeRef uNew = memory.uAttribute(uName, text);
    (uLast ? memory.attribute(uLast).uNext : memory.element(m_uNode).uAttributes) = uNew;
}

File::File(ExceptionInterface* pExceptions, VerboseLevel, ValidateLevel)
    : m_pExceptions(pExceptions),
      m_pDocument(std::make_unique<Document>()) {}

File::~File() = default;

std::optional<Element> File::create(std::string_view name, std::string_view namespaceUri, bool boReplace) {
    auto pDocument = std::make_unique<Document>();
    const std::uint32_t uName = uKeptName(name, pDocument.get(), "oxa::xml::File::create");
    if (uName == details::TreeNames::g_uNone || (!boReplace && RootElementGet())) return std::nullopt;
    pDocument->uRoot = pDocument->memory.uElement(uName);
    m_pDocument = std::move(pDocument);
    Element element(m_pDocument.get(), m_pDocument->uRoot);
    if (!namespaceUri.empty()) element.vAttributeSet("xmlns", namespaceUri);
    return element;
}

std::optional<const_Element> File::RootElementGet() const noexcept {
    if (!m_pDocument->uRoot) return std::nullopt;
    return const_Element(m_pDocument.get(), m_pDocument->uRoot);
}

std::optional<std::size_t> File::OffsetGet(const const_Element& element) const noexcept {
    if (!boElement(element.m_pDocument, element.m_uNode) || !element.m_pDocument->boOffsets) return std::nullopt;
    return element.m_pDocument->memory.element(element.m_uNode).uLast;
}

std::optional<const_Element> File::parse(const std::filesystem::path& path, ExceptionInterface* pExceptions) {
    std::ifstream in(path, std::ios::binary);
    return parsed(in, str::sOfPath(path), pExceptions);
}

std::optional<const_Element> File::parse(std::istream& in, std::string_view sName, ExceptionInterface* pExceptions) {
    return parsed(in, sName, pExceptions);
}

// The former document goes in any case; a new one comes only if it is well-formed and within the limits.
std::optional<const_Element> File::parsed(std::istream& in, std::string_view sName, ExceptionInterface* pExceptions) {
    m_pDocument = std::make_unique<Document>();
    details::TreeBytes bytes;
    if (!bytes.boRead(in, g_iSizeLimit)) {
        vFault(pExceptions, sName, "Can't be read", bytes.size());
        return std::nullopt;
    }
    auto pDocument = std::make_unique<Document>();
    pDocument->uRoot = details::uParsedPlain(bytes.squeezed(), *pDocument, g_iDepthLimit);
    if (!pDocument->uRoot) {
        pDocument = std::make_unique<Document>();
        const details::Fault fault = details::parseAny(bytes.expanded(), *pDocument, g_iDepthLimit);
        if (fault.sText) {
            vFault(pExceptions, sName, fault.sText, fault.iOffset);
            return std::nullopt;
        }
    }
    m_pDocument = std::move(pDocument);
    return RootElementGet();
}

// Without a root element nothing is opened, so a file that is there is kept. The system's reason is taken from errno,
// which streams don't pass on.
bool File::save(const std::filesystem::path& path, ExceptionInterface* pExceptions, std::error_code* pError, Encoding,
                LineEnding) const {
    bool boDone = RootElementGet().has_value();   // else a file that is there stays
    errno = boDone ? 0 : EINVAL;
    if (boDone) {
        std::ofstream out(path, std::ios::binary | std::ios::trunc);
        boDone = boSaved(out);
        out.close();
        boDone = boDone && out.good();
    }
    if (pError) *pError = boDone ? std::error_code() : std::error_code(errno ? errno : EIO, std::generic_category());
    if (!boDone) vFault(pExceptions, str::sOfPath(path), "Can't be written", 0);
    return boDone;
}

bool File::save(std::ostream& out, ExceptionInterface* pExceptions, Encoding, LineEnding) const {
    const bool boDone = boSaved(out);
    if (!boDone) vFault(pExceptions, {}, "Can't be written", 0);
    return boDone;
}

bool File::boSaved(std::ostream& out) const {
    if (!m_pDocument->uRoot || !out.good()) return false;
    try {
        return details::boWrite(out, *m_pDocument) && out.flush().good();
    } catch (const std::ios_base::failure&) {
        return false;   // a stream that was asked to throw
    }
}

void File::vFault(ExceptionInterface* pExceptions, std::string_view sSource, std::string_view sText,
                  std::size_t iOffset) const {
    if (ExceptionInterface* pHears = pExceptions ? pExceptions : m_pExceptions) pHears->vFault(sSource, sText, iOffset);
}

}   // namespace oxa::xml
