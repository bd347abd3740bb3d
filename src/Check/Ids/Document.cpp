// SPDX-License-Identifier: Apache-2.0
#include "Check/Ids/Document.h"

#include <algorithm>
#include <sstream>
#include <unordered_map>

#include "Check/Ids/Faults.h"
#include "Check/Ids/Shape.h"
#include "platform/NearNames.h"
#include "platform/Xml.h"

namespace oxa::ids::detail {

namespace {

constexpr std::string_view g_idsSpace = "http://standards.buildingsmart.org/IDS";
constexpr std::string_view g_schemaSpace = "http://www.w3.org/2001/XMLSchema";
constexpr std::string_view g_instanceSpace = "http://www.w3.org/2001/XMLSchema-instance";

// Where lines begin.
class Lines {
public:
    explicit Lines(std::string_view bytes) {
        for (std::size_t i = bytes.find('\n'); i != std::string_view::npos; i = bytes.find('\n', i + 1))
            m_begins.push_back(i + 1);
    }
    /// Line and column of a byte, from 1.
    [[nodiscard]] std::pair<std::uint64_t, std::uint64_t> place(std::size_t iOffset) const {
        const auto next = std::ranges::upper_bound(m_begins, iOffset);
        return {static_cast<std::uint64_t>(next - m_begins.begin()), iOffset - *std::prev(next) + 1};
    }

private:
    std::vector<std::size_t> m_begins{0};
};

class XmlFaults final : public xml::ExceptionInterface {
public:
    void vFault(std::string_view, std::string_view sText, std::size_t iOffset) override {
        sMessage = sText;
        iAt = iOffset;
    }
    std::string sMessage;
    std::size_t iAt = 0;
};

std::string listed(const std::vector<std::string_view>& names) {
    std::string sText;
    for (const std::string_view name : names) sText += (sText.empty() ? "" : ", ") + std::string(name);
    return sText;
}

// "; did you mean name?", or what there is.
std::string hint(std::string_view wanted, const std::vector<std::string_view>& names) {
    const std::vector<std::string_view> near = str::nearNames(wanted, names);
    if (!near.empty()) return "; did you mean " + listed(near) + "?";
    return names.empty() ? "; there is none here" : "; there are: " + listed(names);
}

// From elements as they stand to nodes that the schema allows.
class Reader {
public:
    Reader(const xml::File& file, const Lines& lines, Faults& faults)
        : m_file(file),
          m_lines(lines),
          m_faults(faults) {}

    std::unique_ptr<const Node> read(const xml::const_Element& root) {
        auto pRoot = std::make_unique<Node>();
        pRoot->sName = "ids";
        vPlace(root, *pRoot);
        const std::size_t iScope = iScopeBegin(root);
        const auto [sSpace, sName] = nameOf(root.getNodeName(), true);
        if (sName != "ids") {
            m_faults.vAdd(*pRoot, "Ids_Root", "the document is no IDS: its root element is not ids",
                          std::string(sName));
            return nullptr;
        }
        if (sSpace != g_idsSpace)
            m_faults.vAdd(*pRoot, "Ids_Namespace", "the namespace of the elements shall be " + std::string(g_idsSpace),
                          std::string(sSpace));
        m_sIdsSpace = sSpace;   // what it is called otherwise is told once
        vElement(root, rootRule(), *pRoot);
        m_scopes.resize(iScope);
        return pRoot;
    }

private:
    struct Scope {
        std::string_view sPrefix;
        std::string_view sSpace;
    };
    struct QualifiedName {
        std::string_view sSpace;
        std::string_view sName;
    };

    void vPlace(const xml::const_Element& element, Node& node) const {
        const auto iOffset = m_file.OffsetGet(element);
        if (iOffset && *iOffset > 0) std::tie(node.iLine, node.iColumn) = m_lines.place(*iOffset - 1);   // of the "<"
    }

    // The namespaces that an element declares; what there was before.
    std::size_t iScopeBegin(const xml::const_Element& element) {
        const std::size_t iBefore = m_scopes.size();
        const auto attributes = element.AttributesGet();
        for (std::size_t i = 0; i < attributes.LengthGet(); ++i) {
            const std::string_view sName = attributes.ItemGet(i).getNodeName();
            if (sName == "xmlns") m_scopes.push_back({{}, attributes.ItemGet(i).getValue()});
            if (sName.starts_with("xmlns:")) m_scopes.push_back({sName.substr(6), attributes.ItemGet(i).getValue()});
        }
        return iBefore;
    }

    // A prefix that nobody declares gives a namespace that nothing is in.
    [[nodiscard]] QualifiedName nameOf(std::string_view sWritten, bool boElement) const {
        const std::size_t iColon = sWritten.find(':');
        const bool boPrefixed = iColon != std::string_view::npos;
        const std::string_view sPrefix = boPrefixed ? sWritten.substr(0, iColon) : std::string_view();
        const std::string_view sName = boPrefixed ? sWritten.substr(iColon + 1) : sWritten;
        if (!boPrefixed && !boElement) return {{}, sName};
        const auto found = std::ranges::find(m_scopes.rbegin(), m_scopes.rend(), sPrefix, &Scope::sPrefix);
        if (found != m_scopes.rend()) return {found->sSpace, sName};
        return {boPrefixed ? sPrefix : std::string_view(), sName};
    }
    [[nodiscard]] bool boIn(std::string_view sSpace, Space eSpace) const {
        return eSpace == Space::Ids ? sSpace == m_sIdsSpace : sSpace == g_schemaSpace;
    }

    void vElement(const xml::const_Element& element, const ElementRule& rule, Node& node) {
        vAttributes(element, rule, node);
        if (rule.eContent == ElementRule::Content::Anything) return;
        Children children{rule, std::vector<std::size_t>(rule.children.size())};
        for (auto child = element.FirstChildGet(); child; child = child->NextSiblingGet()) {
            if (const auto below = xml::const_Element::toWrapper(*child))
                vChild(*below, children, node);
            else
                vText(child->getNodeValue(), rule, node);
        }
        vMissing(children, node);
        if (rule.eContent != ElementRule::Content::Text) return;
        if (const std::string_view sWanted = formFault(rule.eText, node.sText); !sWanted.empty())
            m_faults.vAdd(node, "Ids_Text", std::string(node.sName) + " shall be " + std::string(sWanted), node.sText);
    }

    void vText(std::string_view text, const ElementRule& rule, Node& node) {
        if (rule.eContent == ElementRule::Content::Text) {
            node.sText += text;
        } else if (text.find_first_not_of(" \t\r\n") != std::string_view::npos) {
            m_faults.vAdd(node, "Ids_TextBetween", std::string(node.sName) + " has elements in it, and no text",
                          std::string(text));
        }
    }

    void vAttributes(const xml::const_Element& element, const ElementRule& rule, Node& node) {
        const auto attributes = element.AttributesGet();
        for (std::size_t i = 0; i < attributes.LengthGet(); ++i) {
            const std::string_view sWritten = attributes.ItemGet(i).getNodeName();
            if (sWritten == "xmlns" || sWritten.starts_with("xmlns:")) continue;
            const auto [sSpace, sName] = nameOf(sWritten, false);
            if (sSpace == g_instanceSpace) continue;   // where the schema is, and the like
            const auto found = std::ranges::find(rule.attributes, sName, &AttributeRule::sName);
            if (!sSpace.empty() || found == rule.attributes.end()) {
                std::vector<std::string_view> names;
                for (const AttributeRule& one : rule.attributes) names.push_back(one.sName);
                m_faults.vAdd(node, "Ids_UnknownXmlAttribute",
                              std::string(node.sName) + " has no attribute " + std::string(sWritten) +
                                  hint(sName, names),
                              std::string(sWritten));
                continue;
            }
            vAttribute(*found, attributes.ItemGet(i).getValue(), node);
        }
        for (const AttributeRule& one : rule.attributes)
            if (one.boRequired && !node.pAttribute(one.sName))
                m_faults.vAdd(node, "Ids_MissingXmlAttribute",
                              std::string(node.sName) + " lacks the attribute " + std::string(one.sName));
    }

    void vAttribute(const AttributeRule& rule, std::string_view sValue, Node& node) {
        node.attributes.emplace_back(rule.sName, sValue);
        if (rule.eForm == Form::BaseType) {
            const auto [sSpace, sName] = nameOf(sValue, true);
            if (boIn(sSpace, Space::Schema)) node.attributes.back().second = sName;   // the reader knows which
        }
        const std::string_view sWanted = formFault(rule.eForm, sValue);
        if (!sWanted.empty())
            m_faults.vAdd(node, "Ids_XmlAttribute", std::string(rule.sName) + " shall be " + std::string(sWanted),
                          std::string(sValue));
    }

    // What an element has had in it so far.
    struct Children {
        const ElementRule& rule;
        std::vector<std::size_t> counts;   // one a child rule
        std::size_t iLast = 0;             // the rule of the last child
    };

    void vChild(const xml::const_Element& element, Children& children, Node& node) {
        const std::size_t iScope = iScopeBegin(element);
        const auto [sSpace, sName] = nameOf(element.getNodeName(), true);
        const auto& rules = children.rule.children;
        const auto found = std::ranges::find_if(rules, [&, sHere = sName, sSpaceHere = sSpace](const ChildRule& one) {
            return one.sName == sHere && boIn(sSpaceHere, one.eSpace);
        });
        Node unknown;   // with the place that a fault wants
        unknown.pParent = &node;
        unknown.sName = sName;
        vPlace(element, unknown);
        if (found == rules.end()) {
            std::vector<std::string_view> names;
            for (const ChildRule& one : rules) names.push_back(one.sName);
            m_faults.vAdd(unknown, "Ids_UnknownElement",
                          std::string(node.sName) + " has no element " + std::string(element.getNodeName()) +
                              hint(sName, names),
                          std::string(element.getNodeName()));
        } else {
            vKnown(element, *found, static_cast<std::size_t>(found - rules.begin()), children, node, unknown);
        }
        m_scopes.resize(iScope);
    }

    void vKnown(const xml::const_Element& element, const ChildRule& rule, std::size_t iRule, Children& children,
                Node& node, const Node& place) {
        const std::size_t iCount = children.counts[iRule]++;
        Node& child = *node.children.emplace_back(std::make_unique<Node>());
        child.sName = rule.sName;
        child.pParent = &node;
        child.iPlace = iCount;
        child.boSeveral = rule.iMost != 1;
        child.iLine = place.iLine;
        child.iColumn = place.iColumn;
        const std::string sIn = std::string(node.sName) + " has ";
        if (rule.iMost != 0 && iCount == rule.iMost)
            m_faults.vAdd(child, "Ids_TooMany", sIn + "one element " + std::string(rule.sName) + " at most");
        if (children.rule.eContent == ElementRule::Content::Choice && node.children.size() == 2 && iCount == 0)
            m_faults.vAdd(child, "Ids_TooMany", sIn + "one element, simpleValue or restriction");
        if (children.rule.eContent == ElementRule::Content::Sequence && iRule < children.iLast)
            m_faults.vAdd(child, "Ids_ElementOrder",
                          std::string(rule.sName) + " shall stand before " +
                              std::string(children.rule.children[children.iLast].sName));
        children.iLast = std::max(children.iLast, iRule);
        vElement(element, *rule.pRule, child);
    }

    void vMissing(const Children& children, const Node& node) {
        for (std::size_t i = 0; i < children.counts.size(); ++i)
            if (children.counts[i] < children.rule.children[i].iLeast)
                m_faults.vAdd(node, "Ids_MissingElement",
                              std::string(node.sName) + " lacks the element " +
                                  std::string(children.rule.children[i].sName));
        if (children.rule.eContent == ElementRule::Content::Choice && node.children.empty())
            m_faults.vAdd(node, "Ids_MissingElement",
                          std::string(node.sName) + " lacks a simpleValue or a restriction");
    }

    const xml::File& m_file;
    const Lines& m_lines;
    Faults& m_faults;
    std::string_view m_sIdsSpace;
    std::vector<Scope> m_scopes{{"xml", "http://www.w3.org/XML/1998/namespace"}};
};

}   // namespace

std::string Node::path() const {
    std::string sPath;
    for (const Node* pNode = this; pNode; pNode = pNode->pParent) {
        std::string sStep = "/" + std::string(pNode->sName);
        if (pNode->boSeveral) sStep += "[" + std::to_string(pNode->iPlace + 1) + "]";
        sPath.insert(0, sStep);
    }
    return sPath;
}

std::optional<std::size_t> Node::specification() const {
    for (const Node* pNode = this; pNode; pNode = pNode->pParent)
        if (pNode->sName == "specification")   // of a second list nothing is read
            return pNode->pParent && pNode->pParent->iPlace == 0 ? std::optional(pNode->iPlace) : std::nullopt;
    return std::nullopt;
}

const std::string* Node::pAttribute(std::string_view name) const {
    const auto found = std::ranges::find(attributes, name, &std::pair<std::string_view, std::string>::first);
    return found == attributes.end() ? nullptr : &found->second;
}

std::string Node::attribute(std::string_view name) const {
    const std::string* pFound = pAttribute(name);
    return pFound ? *pFound : std::string();
}

const Node* Node::pChild(std::string_view name) const {
    const auto found = std::ranges::find(children, name, [](const auto& pChild) { return pChild->sName; });
    return found == children.end() ? nullptr : found->get();
}

std::unique_ptr<const Node> documentRead(const std::string& sBytes, Faults& faults) {
    XmlFaults heard;
    xml::File file(&heard, xml::VerboseLevel::Default, xml::ValidateLevel::Default);
    std::istringstream stream(sBytes);
    const Lines lines(sBytes);
    const auto root = file.parse(stream, "", &heard);
    if (root) return Reader(file, lines, faults).read(*root);
    const bool boUtf8 = sBytes.find('\0') == std::string::npos;
    Fault fault{.key = "Ids_Xml", .message = "the file is no XML: " + heard.sMessage};
    if (boUtf8 && heard.iAt > 0) std::tie(fault.line, fault.column) = lines.place(std::min(heard.iAt, sBytes.size()));
    faults.vAdd(std::move(fault));
    return nullptr;
}

}   // namespace oxa::ids::detail
