// SPDX-License-Identifier: Apache-2.0
// From the bytes of a file to requirements: the XML, the specifications in it, what the standard says of them, and
// conditions made ready.
#include <algorithm>
#include <cerrno>
#include <fstream>
#include <istream>
#include <system_error>

#include "Check/Ids/ConditionReader.h"
#include "Check/Ids/FacetRules.h"
#include "Check/Ids/Program.h"
#include "Check/Ids/Texts.h"
#include "Model/Error.h"
#include "platform/Path.h"

namespace oxa::ids::detail {

namespace {

constexpr std::string_view g_cardinalityRule =
    "minOccurs and maxOccurs shall be 1 and unbounded (required), 0 and unbounded (optional), or 0 and 0 (prohibited)";

std::string textOf(const Node& node, std::string_view child) {
    const Node* pChild = node.pChild(child);
    return pChild ? pChild->sText : std::string();
}

FacetKind kindOf(const Node& facet) {
    for (const FacetKind kind :
         {FacetKind::PartOf, FacetKind::Classification, FacetKind::Attribute, FacetKind::Property, FacetKind::Material})
        if (facetKindName(kind) == facet.sName) return kind;
    return FacetKind::Entity;
}

Cardinality cardinalityOf(const Node& facet) {
    const std::string sWritten = facet.attribute("cardinality");
    for (const Cardinality cardinality : {Cardinality::Optional, Cardinality::Prohibited})
        if (cardinalityName(cardinality) == sWritten) return cardinality;
    return Cardinality::Required;
}

class ProgramReader {
public:
    std::shared_ptr<const Program> read(const std::string& sBytes) {
        if (sBytes.size() > Requirements::mostBytes)
            m_faults.vAdd({.key = "Ids_TooLarge",
                           .message = "the file has more than " + std::to_string(Requirements::mostBytes) + " bytes"});
        else if (const std::unique_ptr<const Node> pRoot = documentRead(sBytes, m_faults))
            vRoot(*pRoot);
        m_pProgram->boValid = !m_faults.boAny();
        for (const std::size_t iFaulty : m_faults.specifications()) m_pProgram->specifications[iFaulty].valid = false;
        m_pProgram->faults = m_faults.take();
        for (const Specification& specification : m_pProgram->specifications) {
            SpecificationProgram& program = m_pProgram->programs.emplace_back();
            for (const Facet& facet : specification.applicability)
                program.applicability.emplace_back(facet, m_patterns);
            for (const Facet& facet : specification.requirements) program.requirements.emplace_back(facet, m_patterns);
        }
        return m_pProgram;
    }

private:
    void vRoot(const Node& root) {
        if (const Node* pInfo = root.pChild("info"))
            m_pProgram->info = {textOf(*pInfo, "title"),       textOf(*pInfo, "copyright"), textOf(*pInfo, "version"),
                                textOf(*pInfo, "description"), textOf(*pInfo, "author"),    textOf(*pInfo, "date"),
                                textOf(*pInfo, "purpose"),     textOf(*pInfo, "milestone")};
        if (const Node* pList = root.pChild("specifications"))
            for (const auto& pSpecification : pList->children) vSpecification(*pSpecification);
    }

    void vSpecification(const Node& node) {
        Specification& specification = m_pProgram->specifications.emplace_back();
        specification.name = node.attribute("name");
        specification.identifier = node.attribute("identifier");
        specification.description = node.attribute("description");
        specification.instructions = node.attribute("instructions");
        specification.line = node.iLine;
        const std::string sSchemas = node.attribute("ifcVersion");
        for (const std::string_view sSchema : words(sSchemas))
            if (SchemaNames::pOf(sSchema) &&
                std::ranges::find(specification.schemas, sSchema) == specification.schemas.end())
                specification.schemas.emplace_back(sSchema);
        m_rules.vBegin(specification);
        if (const Node* pApplicability = node.pChild("applicability")) {
            vCardinality(*pApplicability, specification);
            vFacets(*pApplicability, specification, specification.applicability, false);
        }
        if (const Node* pRequirements = node.pChild("requirements")) {
            specification.requirementsDescription = pRequirements->attribute("description");
            vFacets(*pRequirements, specification, specification.requirements, true);
        }
        vWhole(node, specification);
        for (const Facet& facet : specification.applicability)
            specification.text += (specification.text.empty() ? "" : ", ") + facet.text;
        if (specification.text.empty()) specification.text = "any instance";
    }

    void vCardinality(const Node& node, Specification& specification) {
        const auto occurs = [&](std::string_view name) {
            std::string sWritten = node.pAttribute(name) ? node.attribute(name) : "1";   // the default
            sWritten.erase(0, std::min(sWritten.find_first_not_of('0'), sWritten.size() - (sWritten.empty() ? 0 : 1)));
            return sWritten;
        };
        const std::string sLeast = occurs("minOccurs");
        const std::string sMost = occurs("maxOccurs");
        if (sLeast == "0" && sMost == "0")
            specification.cardinality = Cardinality::Prohibited;
        else if (sLeast == "0" && sMost == "unbounded")
            specification.cardinality = Cardinality::Optional;
        else if (sLeast != "1" || sMost != "unbounded")
            m_faults.vAdd(node, "Ids_Occurs", std::string(g_cardinalityRule), sLeast + " and " + sMost);
    }

    void vFacets(const Node& node, const Specification& specification, std::vector<Facet>& facets, bool boRequirement) {
        for (const auto& pFacet : node.children) {
            if (++m_iFacets > Requirements::mostFacets) {
                if (m_iFacets == Requirements::mostFacets + 1)
                    m_faults.vAdd(*pFacet, "Ids_TooLarge",
                                  "the file has more than " + std::to_string(Requirements::mostFacets) + " facets");
                return;
            }
            Facet facet = facetOf(*pFacet);
            m_rules.vCheck(facet, *pFacet, boRequirement);
            if (!boComplete(facet)) continue;   // told already
            facet.text = facetText(facet, boRequirement, specification.schemas);
            facets.push_back(std::move(facet));
        }
    }

    Facet facetOf(const Node& node) {
        Facet facet;
        facet.kind = kindOf(node);
        facet.cardinality = cardinalityOf(node);
        const Node* pEntity = facet.kind == FacetKind::PartOf ? node.pChild("entity") : &node;
        if (pEntity && (facet.kind == FacetKind::PartOf || facet.kind == FacetKind::Entity)) {
            facet.entity = m_conditions.read(*pEntity, "name");
            facet.predefinedType = m_conditions.read(*pEntity, "predefinedType");
        } else {
            facet.name = m_conditions.read(node, facet.kind == FacetKind::Property ? "baseName" : "name");
            facet.propertySet = m_conditions.read(node, "propertySet");
            facet.system = m_conditions.read(node, "system");
            facet.value = m_conditions.read(node, "value");
        }
        facet.relation = node.attribute("relation");
        facet.dataType = node.attribute("dataType");
        facet.uri = node.attribute("uri");
        facet.instructions = node.attribute("instructions");
        facet.line = node.iLine;
        return facet;
    }

    // Whether the parameters are there that the kind must have.
    static bool boComplete(const Facet& facet) {
        switch (facet.kind) {
        case FacetKind::Entity:
        case FacetKind::PartOf: return facet.entity.has_value();
        case FacetKind::Classification: return facet.system.has_value();
        case FacetKind::Attribute: return facet.name.has_value();
        case FacetKind::Property: return facet.name && facet.propertySet;
        case FacetKind::Material: break;
        }
        return true;
    }

    void vWhole(const Node& node, const Specification& specification) {
        const Node* pApplicability = node.pChild("applicability");
        const Node* pRequirements = node.pChild("requirements");
        const bool boRequires = pRequirements && !pRequirements->children.empty();
        if (specification.cardinality == Cardinality::Prohibited && boRequires)
            m_faults.vAdd(*pRequirements, "Ids_ProhibitedRequirements",
                          "where no instance may be applicable, none can be held to requirements");
        if (pApplicability && pApplicability->children.empty())
            m_faults.vNote(*pApplicability, "Ids_NoApplicability",
                           "an applicability without a facet speaks of every instance");
        if (specification.cardinality == Cardinality::Optional && !boRequires)
            m_faults.vNote(node, "Ids_NeverFails", "an optional specification without requirements can't fail");
    }

    std::shared_ptr<Program> m_pProgram = std::make_shared<Program>();
    Faults m_faults;
    Patterns m_patterns;
    ConditionReader m_conditions{m_faults, m_patterns};
    FacetRules m_rules{m_faults, m_patterns, m_conditions};
    std::size_t m_iFacets = 0;
};

Matcher matcherOf(const std::optional<Condition>& condition, Patterns& patterns) {
    return condition ? Matcher(*condition, patterns) : Matcher();
}

// Not more than one byte beyond what is taken.
std::string bytesOf(std::istream& stream) {
    constexpr std::size_t piece = std::size_t{1} << 20;
    std::string sBytes;
    while (stream.good() && sBytes.size() <= Requirements::mostBytes) {
        const std::size_t iBefore = sBytes.size();
        sBytes.resize(iBefore + piece);
        stream.read(sBytes.data() + iBefore, piece);
        sBytes.resize(iBefore + static_cast<std::size_t>(stream.gcount()));
    }
    return sBytes;
}

}   // namespace

FacetProgram::FacetProgram(const Facet& theFacet, Patterns& patterns)
    : pFacet(&theFacet),
      entity(matcherOf(theFacet.entity, patterns)),
      predefinedType(matcherOf(theFacet.predefinedType, patterns)),
      name(matcherOf(theFacet.name, patterns)),
      propertySet(matcherOf(theFacet.propertySet, patterns)),
      system(matcherOf(theFacet.system, patterns)),
      value(matcherOf(theFacet.value, patterns)) {}

std::shared_ptr<const Program> programRead(const std::string& sBytes) { return ProgramReader().read(sBytes); }

}   // namespace oxa::ids::detail

namespace oxa::ids {

Requirements::Requirements(std::shared_ptr<const detail::Program> program) noexcept : m_pProgram(std::move(program)) {}

Requirements Requirements::open(const std::filesystem::path& path) {
    errno = 0;
    std::ifstream stream(path, std::ios::binary);
    std::string sBytes = stream ? detail::bytesOf(stream) : std::string();
    if (stream.is_open() && !stream.bad()) return fromBuffer(sBytes);
    throw FileError(str::sOfPath(path) + (stream.is_open() ? ": can't be read" : ": can't be opened") +
                    (errno ? ": " + std::generic_category().message(errno) : std::string()));
}

Requirements Requirements::open(std::istream& stream) {
    const std::string sBytes = detail::bytesOf(stream);
    if (stream.bad()) throw FileError("the stream can't be read");
    return fromBuffer(sBytes);
}

Requirements Requirements::fromBuffer(std::string_view bytes) {
    return Requirements(detail::programRead(std::string(bytes.substr(0, mostBytes + 1))));
}

bool Requirements::valid() const noexcept { return m_pProgram->boValid; }
const std::vector<Fault>& Requirements::faults() const noexcept { return m_pProgram->faults; }
const Info& Requirements::info() const noexcept { return m_pProgram->info; }
const std::vector<Specification>& Requirements::specifications() const noexcept { return m_pProgram->specifications; }

}   // namespace oxa::ids
