// SPDX-License-Identifier: Apache-2.0
// The tree is pugixml's. Its writer is not used: it gives tab, line end and control characters in ways that don't
// come back, and it indents without end.
#include "platform/Xml.h"

#include <pugixml.hpp>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <fstream>
#include <istream>
#include <ostream>
#include <unordered_set>

#include "platform/Assert.h"
#include "platform/Path.h"
#include "platform/Stream.h"
#include "platform/XmlText.h"

namespace oxa::xml {

namespace {

pugi::xml_node nodeOf(void* pNode) noexcept { return pugi::xml_node(static_cast<pugi::xml_node_struct*>(pNode)); }
pugi::xml_attribute attributeOf(void* pAttribute) noexcept {
    return pugi::xml_attribute(static_cast<pugi::xml_attribute_struct*>(pAttribute));
}

bool boIsElement(const pugi::xml_node& node) noexcept { return node.type() == pugi::node_element; }
bool boIsText(const pugi::xml_node& node) noexcept {
    return node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata;
}

pugi::xml_node rootOf(const pugi::xml_document& document) noexcept {
    for (pugi::xml_node node = document.first_child(); node; node = node.next_sibling())
        if (boIsElement(node)) return node;
    return {};
}

// Visits everything below "top" in document order, in no recursion. vEnter(node, depth) and vLeave(node, depth) go
// around the children of each; depth 0 is that of the children of "top". vEnter ends the walk with false.
template <class Enter, class Leave>
bool boWalk(const pugi::xml_node& top, Enter&& boEnter, Leave&& vLeave) {
    std::size_t iDepth = 0;
    for (pugi::xml_node node = top.first_child(); node;) {
        if (!boEnter(node, iDepth)) return false;
        if (const pugi::xml_node child = node.first_child()) {
            node = child;
            ++iDepth;
            continue;
        }
        vLeave(node, iDepth);
        while (node && !node.next_sibling()) {
            node = node.parent();
            if (node == top) return true;
            vLeave(node, --iDepth);
        }
        node = node.next_sibling();
    }
    return true;
}

// What the tree can hold: its texts end at the first 0 byte, which no document may have anyway.
std::string sHeld(std::string_view text) {
    std::string sText(text);
    for (std::size_t i = sText.find('\0'); i != std::string::npos; i = sText.find('\0', i))
        sText.replace(i, 1, "\xEF\xBF\xBD");
    return sText;
}

bool boNameCheck(std::string_view name, const char* sFunction) {
    if (details::boIsName(name)) return true;
    Assert::vTell("platform/Xml", sFunction, "No name of XML");
    return false;
}

// What pugixml lets pass and XML does not. Texts get their references decoded here.
class DocumentCheck {
public:
    // Null when the document is well-formed and within the limits, else what is wrong.
    const char* sFault(pugi::xml_document& document) {
        std::size_t iRoots = 0;
        boWalk(
            document,
            [&](pugi::xml_node& node, std::size_t iDepth) {
                if (iDepth == 0) ++iRoots;
                return boIsElement(node) ? boElement(node, iDepth) : boText(node, iDepth);
            },
            [](const pugi::xml_node&, std::size_t) {});
        if (!m_sFault && iRoots != 1) m_sFault = iRoots ? "More than one root element" : "No root element";
        return m_sFault;
    }

private:
    bool boFault(const char* sText) {
        m_sFault = sText;
        return false;
    }
    bool boElement(pugi::xml_node& node, std::size_t iDepth) {
        if (iDepth >= File::g_iDepthLimit) return boFault("Elements nested too deep");
        if (!details::boIsName(node.name())) return boFault("Not a name");
        m_names.clear();
        for (pugi::xml_attribute attribute : node.attributes()) {
            if (!details::boIsName(attribute.name())) return boFault("Not a name");
            if (!m_names.insert(attribute.name()).second) return boFault("An attribute twice");
            if (std::string_view(attribute.value()).find('<') != std::string_view::npos)
                return boFault("A tag inside an attribute");
            if (!boValue(attribute)) return false;
        }
        return true;
    }
    bool boText(pugi::xml_node& node, std::size_t iDepth) {
        if (iDepth == 0) return boFault("Text outside the root element");
        if (node.type() == pugi::node_pcdata) return boValue(node);
        return details::boIsText(node.value()) || boFault("A character that XML can't hold");
    }
    template <class Holder>
    bool boValue(Holder& holder) {
        const std::string_view value = holder.value();
        if (!details::boIsText(value)) return boFault("A character that XML can't hold");
        if (value.find('&') == std::string_view::npos) return true;
        m_sText = value;
        if (!details::boReferencesDecode(m_sText)) return boFault("A reference to nothing");
        holder.set_value(m_sText.c_str());
        return true;
    }

    const char* m_sFault = nullptr;
    std::unordered_set<std::string_view> m_names;   // of one element's attributes
    std::string m_sText;
};

// One document as text.
class DocumentWriter {
public:
    explicit DocumentWriter(std::ostream& stream) : m_out(stream) {}

    bool boWrite(const pugi::xml_node& root) {
        m_out.vWrite("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
        vStart(root);
        boWalk(
            root,
            [this](const pugi::xml_node& node, std::size_t iDepth) {
                vEnter(node, iDepth + 1);
                return true;
            },
            [this](const pugi::xml_node& node, std::size_t iDepth) { vLeave(node, iDepth + 1); });
        vEnd(root, 0);
        m_out.vWrite("\n");
        m_out.vBufferFlush();
        return m_out.boGood();
    }

private:
    // Deeper levels stay at this one: a chain of many levels would grow with their square.
    static constexpr std::size_t g_iIndentLimit = 32;

    // Only between elements: white space beside a text would be part of it.
    static bool boHoldsElements(const pugi::xml_node& element) noexcept {
        for (const pugi::xml_node& child : element)
            if (boIsText(child)) return false;
        return static_cast<bool>(element.first_child());
    }

    void vIndent(std::size_t iDepth) {
        m_out.vWrite("\n");
        for (std::size_t i = 0; i < std::min(iDepth, g_iIndentLimit); ++i) m_out.vWrite("  ");
    }
    void vEnter(const pugi::xml_node& node, std::size_t iDepth) {
        if (!boIsElement(node)) return vText(node.value(), false);
        if (m_indented.back()) vIndent(iDepth);
        vStart(node);
    }
    void vLeave(const pugi::xml_node& node, std::size_t iDepth) {
        if (boIsElement(node)) vEnd(node, iDepth);
    }
    void vStart(const pugi::xml_node& element) {
        m_out.vWrite("<");
        m_out.vWrite(element.name());
        for (const pugi::xml_attribute& attribute : element.attributes()) {
            m_out.vWrite(" ");
            m_out.vWrite(attribute.name());
            m_out.vWrite("=\"");
            vText(attribute.value(), true);
            m_out.vWrite("\"");
        }
        m_out.vWrite(element.first_child() ? ">" : "/>");
        m_indented.push_back(boHoldsElements(element));
    }
    void vEnd(const pugi::xml_node& element, std::size_t iDepth) {
        if (m_indented.back()) vIndent(iDepth);
        m_indented.pop_back();
        if (!element.first_child()) return;
        m_out.vWrite("</");
        m_out.vWrite(element.name());
        m_out.vWrite(">");
    }
    void vText(std::string_view text, bool boAttribute) {
        m_sText.clear();
        details::vEscape(m_sText, text, boAttribute);
        m_out.vWrite(m_sText);
    }

    stream::StreamWriteBuffer m_out;
    std::vector<bool> m_indented;   // for each open element, whether its children stand on lines of their own
    std::string m_sText;
};

// All bytes; false when the stream fails or holds more than the limit.
bool boReadAll(std::istream& in, std::string& sBytes) {
    constexpr std::size_t g_iPiece = std::size_t{1} << 20;
    while (in.good()) {
        const std::size_t iBefore = sBytes.size();
        if (iBefore > File::g_iSizeLimit) return false;
        sBytes.resize(iBefore + g_iPiece);
        in.read(sBytes.data() + iBefore, g_iPiece);
        sBytes.resize(iBefore + static_cast<std::size_t>(in.gcount()));
    }
    return in.eof() && !in.bad();
}

}   // namespace

ExceptionInterface::~ExceptionInterface() = default;

std::string_view const_Node::getNodeName() const noexcept {
    return m_pAttribute ? attributeOf(m_pAttribute).name() : nodeOf(m_pNode).name();
}

std::string_view const_Node::getNodeValue() const noexcept {
    return m_pAttribute ? attributeOf(m_pAttribute).value() : nodeOf(m_pNode).value();
}

const_NodeList const_Node::ChildNodesGet() const noexcept {
    return const_NodeList(nodeOf(m_pNode).first_child().internal_object());
}

std::optional<const_Node> const_Node::FirstChildGet() const noexcept { return ChildNodesGet().getFirstItem(); }

std::optional<const_Node> const_Node::NextSiblingGet() const noexcept {
    return const_NodeList(nodeOf(m_pNode).next_sibling().internal_object()).getFirstItem();
}

bool const_Node::boHasChildNodes() const noexcept { return static_cast<bool>(nodeOf(m_pNode).first_child()); }

const_NamedNodeMap const_Node::AttributesGet() const {
    const_NamedNodeMap map;
    for (const pugi::xml_attribute& attribute : nodeOf(m_pNode).attributes())
        map.m_attributes.push_back(const_Attr(attribute.internal_object()));
    return map;
}

std::string const_Node::to_string(bool boValue) { return boValue ? "true" : "false"; }

std::string const_Node::to_string(long long iValue) { return std::to_string(iValue); }

std::optional<const_Attr> const_Attr::toWrapper(const const_Node& node) noexcept {
    if (!node.m_pAttribute) return std::nullopt;
    return const_Attr(node.m_pAttribute);
}

std::optional<const_Node> const_NodeList::getFirstItem() const noexcept {
    if (!m_pFirst) return std::nullopt;
    return const_Node(m_pFirst, nullptr);
}

std::optional<const_Element> const_Element::toWrapper(const const_Node& node) noexcept {
    if (!boIsElement(nodeOf(node.m_pNode))) return std::nullopt;
    return const_Element(node.m_pNode);
}

std::optional<const_Attr> const_Element::AttributeNodeGet(std::string_view name) const noexcept {
    for (const pugi::xml_attribute& attribute : nodeOf(m_pNode).attributes())
        if (name == attribute.name()) return const_Attr(attribute.internal_object());
    return std::nullopt;
}

std::optional<const_Element> const_Element::ElementByTagNameGet(std::string_view name) const noexcept {
    std::optional<const_Element> found;
    boWalk(
        nodeOf(m_pNode),
        [&](const pugi::xml_node& node, std::size_t) {
            if (boIsElement(node) && name == node.name()) found = const_Element(node.internal_object());
            return !found;
        },
        [](const pugi::xml_node&, std::size_t) {});
    return found;
}

Element Node::ElementNodeAppend(std::string_view name) {
    if (!boNameCheck(name, "oxa::xml::Node::ElementNodeAppend")) return {};
    pugi::xml_node child = nodeOf(m_pNode).append_child(pugi::node_element);
    child.set_name(std::string(name).c_str());
    return Element(child.internal_object());
}

bool Node::boTextNodeAppend(std::string_view text) {
    return nodeOf(m_pNode).append_child(pugi::node_pcdata).set_value(sHeld(text).c_str());
}

bool Node::RemoveChild(const const_Node& child) {
    pugi::xml_node removed = nodeOf(static_cast<const Node&>(child).m_pNode);
    pugi::xml_node parent = nodeOf(m_pNode);
    if (!removed || removed.parent() != parent) return false;
    // Leaves first: pugixml frees what lies below a node in a recursion.
    for (pugi::xml_node node = removed; node != parent;) {
        if (const pugi::xml_node below = node.last_child()) {
            node = below;
            continue;
        }
        pugi::xml_node above = node.parent();
        above.remove_child(node);
        node = above;
        if (node == parent) break;
    }
    return true;
}

void Element::vAttributeSet(std::string_view name, std::string_view value) {
    if (!boNameCheck(name, "oxa::xml::Element::vAttributeSet")) return;
    const std::string sName(name);
    pugi::xml_node node = nodeOf(m_pNode);
    pugi::xml_attribute attribute = node.attribute(sName.c_str());
    if (!attribute) attribute = node.append_attribute(sName.c_str());
    attribute.set_value(sHeld(value).c_str());
}

struct File::Document {
    std::string sBytes;   // what was parsed; the tree's names and values lie in it
    pugi::xml_document tree;
    bool boUtf8 = false;   // the bytes, whose places the tree knows then
};

File::File(ExceptionInterface* pExceptions, VerboseLevel, ValidateLevel)
    : m_pExceptions(pExceptions),
      m_pDocument(std::make_unique<Document>()) {}

File::~File() = default;

std::optional<Element> File::create(std::string_view name, std::string_view namespaceUri, bool boReplace) {
    if (!boNameCheck(name, "oxa::xml::File::create") || (!boReplace && RootElementGet())) return std::nullopt;
    m_pDocument = std::make_unique<Document>();
    pugi::xml_node root = m_pDocument->tree.append_child(std::string(name).c_str());
    Element element(root.internal_object());
    if (!namespaceUri.empty()) element.vAttributeSet("xmlns", namespaceUri);
    return element;
}

std::optional<const_Element> File::RootElementGet() const noexcept {
    const pugi::xml_node root = rootOf(m_pDocument->tree);
    if (!root) return std::nullopt;
    return const_Element(root.internal_object());
}

std::optional<std::size_t> File::OffsetGet(const const_Element& element) const noexcept {
    const std::ptrdiff_t iOffset = m_pDocument->boUtf8 ? nodeOf(element.m_pNode).offset_debug() : -1;
    return iOffset < 0 ? std::nullopt : std::optional(static_cast<std::size_t>(iOffset));
}

std::optional<const_Element> File::parse(const std::filesystem::path& path, ExceptionInterface* pExceptions) {
    std::ifstream in(path, std::ios::binary);
    return parsed(in, str::sOfPath(path), pExceptions);
}

std::optional<const_Element> File::parse(std::istream& in, std::string_view sName, ExceptionInterface* pExceptions) {
    return parsed(in, sName, pExceptions);
}

// The former document goes in any case; a new one comes only if it is well-formed and within the limits. pugixml parses
// the bytes in place, so they live as long as the tree.
std::optional<const_Element> File::parsed(std::istream& in, std::string_view sName, ExceptionInterface* pExceptions) {
    m_pDocument = std::make_unique<Document>();
    auto pDocument = std::make_unique<Document>();
    if (!boReadAll(in, pDocument->sBytes)) {
        vFault(pExceptions, sName, "Can't be read", pDocument->sBytes.size());
        return std::nullopt;
    }
    // References are decoded by DocumentCheck, and text at the top is kept for it to find.
    constexpr unsigned g_options =
        (pugi::parse_default & ~pugi::parse_escapes) | pugi::parse_ws_pcdata_single | pugi::parse_fragment;
    const bool boZero = pDocument->sBytes.find('\0') != std::string::npos;   // pugixml takes one for the end
    const pugi::xml_parse_result result =
        pDocument->tree.load_buffer_inplace(pDocument->sBytes.data(), pDocument->sBytes.size(), g_options);
    const bool boOneByte = result.encoding == pugi::encoding_utf8 || result.encoding == pugi::encoding_latin1;
    pDocument->boUtf8 = result.encoding == pugi::encoding_utf8;
    const char* sFault = !result               ? result.description()
                         : boZero && boOneByte ? "A character that XML can't hold"
                                               : DocumentCheck().sFault(pDocument->tree);
    if (sFault) {
        vFault(pExceptions, sName, sFault, result ? 0 : static_cast<std::size_t>(result.offset));
        return std::nullopt;
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
    const pugi::xml_node root = rootOf(m_pDocument->tree);
    if (!root || !out.good()) return false;
    try {
        return DocumentWriter(out).boWrite(root) && out.flush().good();
    } catch (const std::ios_base::failure&) {
        return false;   // a stream that was asked to throw
    }
}

void File::vFault(ExceptionInterface* pExceptions, std::string_view sSource, std::string_view sText,
                  std::size_t iOffset) const {
    if (ExceptionInterface* pHears = pExceptions ? pExceptions : m_pExceptions) pHears->vFault(sSource, sText, iOffset);
}

}   // namespace oxa::xml
