// SPDX-License-Identifier: Apache-2.0
// VerbTree: "oxaifc tree": project, sites, buildings, storeys and spaces, and the elements in them.

#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Model/Relations.h"
#include "oxaifc/formats/ElementModel.h"
#include "oxaifc/io/Output.h"
#include "oxaifc/report/TypedJson.h"
#include "oxaifc/verbs/Verb.h"

namespace oxa::tool {

namespace {

// A file may nest as deep as it likes; a tree for people is no deeper than this.
constexpr std::size_t g_iDeepest = 100;

struct TreeOptions : ModelOptions {
    bool boCounts = false;
    bool boOutside = false;
    bool boJson = false;
};

struct Node {
    Element element;
    Elements contents;
    std::vector<Node> children;
};

// The spatial elements of a model below their projects. One that nothing leads to is a root of its own.
class Tree {
public:
    explicit Tree(const oxa::Model& model) {
        const Elements all = spatialElements(model);
        for (const Element project : projects(model)) vRoot(project);
        for (const Element spatial : all)
            if (!parent(spatial)) vRoot(spatial);
        for (const Element spatial : all) vRoot(spatial);   // those in a circle
        if (m_iTooDeep)
            vTell(fmt::format("{} deeper than {} levels left out", sCounted(m_iTooDeep, "part"), g_iDeepest));
    }

    [[nodiscard]] const std::vector<Node>& roots() const noexcept { return m_roots; }

private:
    void vRoot(const Element& element) {
        if (m_seen.insert(element).second) m_roots.push_back(node(element, 1));
    }
    Node node(const Element& element, std::size_t iDepth) {
        Node node{element, contents(element), {}};
        for (const Element part : parts(element)) {
            if (!isSpatial(part) || !m_seen.insert(part).second) continue;
            if (iDepth < g_iDeepest)
                node.children.push_back(this->node(part, iDepth + 1));
            else
                ++m_iTooDeep;
        }
        return node;
    }

    std::set<Element> m_seen;
    std::vector<Node> m_roots;
    std::size_t m_iTooDeep = 0;
};

using Counts = std::map<std::string, std::size_t, std::less<>>;

template <class Range>
Counts countsOf(const Range& elements) {
    Counts counts;
    for (const Element element : elements) ++counts[std::string(element.type())];
    return counts;
}

template <class Range>
Json elementsJson(const Range& elements, bool boCounts) {
    if (boCounts) return Json(countsOf(elements));
    Json json = Json::array();
    for (const Element element : elements) json.push_back(nameJson(element));
    return json;
}

Json nodeJson(const Node& node, bool boCounts) {
    Json json = nameJson(node.element);
    json["elements"] = elementsJson(node.contents, boCounts);
    Json& children = json["children"] = Json::array();
    for (const Node& child : node.children) children.push_back(nodeJson(child, boCounts));
    return json;
}

void vLine(const Element& element, std::size_t iDepth, Output& output) {
    const std::string sName = sNameOf(element);
    output.vPrint("{:{}}#{} {}{}{}\n", "", 2 * iDepth, element.id(), element.type(), sName.empty() ? "" : " ",
                  sPrintable(sName));
}

template <class Range>
void vContents(const Range& elements, bool boCounts, std::size_t iDepth, Output& output) {
    if (!boCounts)
        for (const Element element : elements) vLine(element, iDepth, output);
    else
        for (const auto& [sType, iCount] : countsOf(elements))
            output.vPrint("{:{}}{} {}\n", "", 2 * iDepth, sGrouped(iCount), sType);
}

void vNode(const Node& node, bool boCounts, std::size_t iDepth, Output& output) {
    vLine(node.element, iDepth, output);
    vContents(node.contents, boCounts, iDepth + 1, output);
    for (const Node& child : node.children) vNode(child, boCounts, iDepth + 1, output);
}

// The elements that no part of the spatial structure contains, not even by what they are a part of.
std::vector<Element> outside(const oxa::Model& model) {
    std::vector<Element> found;
    for (const Element element : physicalElements(model))
        if (!container(element)) found.push_back(element);
    return found;
}

void vOutside(const std::vector<Element>& elements, const TreeOptions& options, Output& output) {
    if (options.boJson)
        output.vJson(elementsJson(elements, options.boCounts));
    else
        vContents(elements, options.boCounts, 0, output);
}

int iTree(const TreeOptions& options, Output& output) {
    const ElementModel file(options);
    const std::vector<Element> homeless = outside(file.model());
    if (options.boOutside) {
        vOutside(homeless, options, output);
        return file.iExitCode();
    }
    if (!homeless.empty())
        vTell(fmt::format("{} {} in no spatial element; --outside lists {}", sCounted(homeless.size(), "element"),
                          homeless.size() == 1 ? "stands" : "stand", homeless.size() == 1 ? "it" : "them"));
    const Tree tree(file.model());
    if (options.boJson) output.vJsonBegin();
    for (const Node& root : tree.roots()) {
        if (options.boJson)
            output.vJsonItem(nodeJson(root, options.boCounts));
        else
            vNode(root, options.boCounts, 0, output);
    }
    if (options.boJson) output.vJsonEnd();
    return file.iExitCode();
}

VerbRun declare(Command command) {
    const auto pOptions = std::make_shared<TreeOptions>();
    pOptions->vDeclare(command);
    command.flag("--counts", pOptions->boCounts, "how many elements of a class, instead of each");
    command.flag("--outside", pOptions->boOutside, "only the elements that stand in no spatial element");
    command.flag("--json", pOptions->boJson, "print a JSON array with one object a root, nodes in \"children\"");
    return [pOptions](Output& output) { return iTree(*pOptions, output); };
}

}   // namespace

extern const Verb g_verbTree{"tree", "Project, sites, buildings, storeys, spaces, and what they contain", declare};

}   // namespace oxa::tool
