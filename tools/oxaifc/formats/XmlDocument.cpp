// SPDX-License-Identifier: Apache-2.0
// Import and export of ifcXML with what the library's classes do not tell: the fault of a document that is no XML,
// references to nothing, and the depth of the elements.
#include "oxaifc/formats/XmlDocument.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "oxaifc/io/Failure.h"
#include "oxaifc/io/Output.h"
#include "platform/Xml.h"
#include "provider/SchemaLoader.h"

namespace oxa::tool {

using oxa::xml::const_Attr;
using oxa::xml::const_Element;
using oxa::xml::const_Node;

namespace {

// Keeps the first fault of a document.
class FaultText final : public oxa::xml::ExceptionInterface {
public:
    void vFault(std::string_view, std::string_view sText, std::size_t iOffset) override {
        if (!m_sText.empty()) return;
        m_sText = iOffset ? fmt::format("{} (byte {})", sText, iOffset) : std::string(sText);
    }
    [[nodiscard]] const std::string& sText() const noexcept { return m_sText; }

private:
    std::string m_sText;
};

constexpr std::uint64_t g_iLargestNumber = std::numeric_limits<std::int64_t>::max();   // of an instance

// The number in the value of an "id" or "ref", as the import takes it: the digits from the first one on, and the largest
// number for what is larger.
std::uint64_t iNumberOf(std::string_view text) {
    std::uint64_t iNumber = 0;
    const std::size_t iDigit = text.find_first_of("0123456789");
    if (iDigit == std::string_view::npos) return 0;
    const auto result = std::from_chars(text.data() + iDigit, text.data() + text.size(), iNumber);
    return result.ec == std::errc() ? std::min(iNumber, g_iLargestNumber) : g_iLargestNumber;
}

// A set of numbers, which mostly stand near the last one.
class Numbers {
public:
    // True the first time.
    bool boInsert(std::uint64_t iNumber) {
        if (!m_pLast || m_iLast != iNumber / 64) {
            m_pLast = &m_bits[iNumber / 64];
            m_iLast = iNumber / 64;
        }
        const std::uint64_t uBit = std::uint64_t{1} << iNumber % 64;
        const bool boNew = !(*m_pLast & uBit);
        *m_pLast |= uBit;
        return boNew;
    }

private:
    std::unordered_map<std::uint64_t, std::uint64_t> m_bits;   // by number / 64
    std::uint64_t* m_pLast = nullptr;
    std::uint64_t m_iLast = 0;
};

// Visits the elements below "top" in document order, without recursion: vVisit(element, depth), 1 for the
// children.
template <class Visit>
void vForEachElement(const const_Element& top, Visit&& vVisit) {
    struct Open {
        const_Node node;
        std::size_t iDepth;
    };
    std::vector<Open> open;   // what comes next at each depth
    if (const std::optional<const_Node> child = top.FirstChildGet()) open.push_back({*child, 1});
    while (!open.empty()) {
        const auto [node, iDepth] = open.back();
        open.pop_back();
        if (const std::optional<const_Node> next = node.NextSiblingGet()) open.push_back({*next, iDepth});
        const std::optional<const_Element> element = const_Element::toWrapper(node);
        if (!element) continue;
        vVisit(*element, iDepth);
        if (const std::optional<const_Node> child = element->FirstChildGet()) open.push_back({*child, iDepth + 1});
    }
}

}   // namespace

bool boBeginsAsXml(std::string_view bytes) noexcept {
    using namespace std::string_view_literals;
    const std::size_t iFirst = bytes.find_first_not_of("\xEF\xBB\xBF\xFE\xFF\0 \t\r\n"sv);
    return iFirst != std::string_view::npos && bytes[iFirst] == '<';
}

std::string XmlInput::sLoad(std::istream& stream) {
    FaultText fault;
    if (m_pFile->parse(stream, m_sName, &fault)) return {};
    return fault.sText().empty() ? "no root element" : fault.sText();
}

void XmlInput::vImport(ifc::File& file, const ifc::SchemaFromName& schemas, ifc::Errors& errors) {
    std::optional<std::string> word;
    const auto fromName = [&](const std::string& sName) {
        word = sName;
        return ifc::SchemaLoader::pSchemaGet(schemas, sName);
    };
    if (!boImportHeader(file, fromName)) {
        if (word)
            throw Failure(fmt::format("{}: names the schema {}, which is not known; --schema-file X.exp brings one",
                                      m_sName, sPrintable(*word)));
        throw Failure(fmt::format("{}: is XML, but has no ifcXML namespace of IFC4 or newer at its root", m_sName));
    }
    boImportData(file.data());
    vReferencesCheck(errors);
}

// Each number once. An "id" counts from its element on, also for what that element nests.
void XmlInput::vReferencesCheck(ifc::Errors& errors) const {
    const std::optional<const_Element> root = m_pFile->RootElementGet();
    if (!root) return;
    Numbers known;
    vForEachElement(*root, [&](const const_Element& element, std::size_t) {
        if (const std::optional<const_Attr> ref = element.AttributeNodeGet("ref")) {
            const std::uint64_t iNumber = iNumberOf(ref->getValue());
            if (known.boInsert(iNumber))
                errors.add(nullptr, ifc::ReportKey::MissingEntityWithId, std::to_string(iNumber),
                           fmt::format("<{} ref=\"{}\"/>", element.getNodeName(), ref->getValue()), 0);
        } else if (const std::optional<const_Attr> id = element.AttributeNodeGet("id")) {
            known.boInsert(iNumberOf(id->getValue()));
        }
    });
}

const std::size_t XmlOutput::g_iDepthLimit = oxa::xml::File::g_iDepthLimit;

std::size_t XmlOutput::iDepth() const {
    std::size_t iMost = 0;
    const std::optional<const_Element> root = m_pFile->RootElementGet();
    if (root)
        vForEachElement(*root, [&](const const_Element&, std::size_t iDepth) { iMost = std::max(iMost, iDepth); });
    return iMost + 1;
}

}   // namespace oxa::tool
