// SPDX-License-Identifier: Apache-2.0
#include "oxaifc/report/IdsText.h"

#include <algorithm>
#include <cctype>
#include <string_view>
#include <utility>
#include <vector>

#include "Model/Value.h"
#include "oxaifc/report/TypedJson.h"

namespace oxa::tool {

namespace {

constexpr std::size_t g_iInstancesOfRequirement = 10;   // that are told, without --all
constexpr std::size_t g_iRecordsOfRequirement = 100;    // the same in JSON
constexpr std::size_t g_iMostShown = 300;               // bytes of a text in a line, as in reasons

// The failures of one requirement, by the number of the instance.
struct FailedRequirement {
    const ids::Facet* pFacet = nullptr;   // null: there must be no such instance
    std::vector<const ids::Failure*> failures{};
};

std::vector<FailedRequirement> failedRequirements(const ids::Specification& specification,
                                                  const ids::SpecificationResult& result) {
    std::vector<FailedRequirement> all(specification.requirements.size() + 1);
    for (std::size_t i = 0; i < specification.requirements.size(); ++i)
        all[i + 1].pFacet = &specification.requirements[i];
    for (const ids::Failure& failure : result.failures)
        all[failure.requirement == ids::Failure::none ? 0 : failure.requirement + 1].failures.push_back(&failure);
    std::erase_if(all, [](const FailedRequirement& one) { return one.failures.empty(); });
    return all;
}

// "Property Pset_WallCommon.FireRating shall be F 90", or that there must be no such instance.
std::string sWanted(const ids::Specification& specification, const FailedRequirement& failed) {
    return failed.pFacet ? failed.pFacet->text : "not allowed: " + specification.text;
}

std::string sTextName(const oxa::Element& element) {
    if (!element.has("Name")) return {};
    const oxa::Value name = element["Name"];
    return name.kind() == Kind::Text ? *name.text() : std::string();
}

// "IfcWall #12 2O2Fr$t4X7Zf8NOew3FLOH 'South': FireRating is 'F 30'".
std::string sFailure(const ids::Failure& failure) {
    std::string sText = fmt::format("{} #{}", failure.element.type(), failure.element.id());
    if (const std::string sGuid = failure.element.guid(); !sGuid.empty()) sText += ' ' + sGuid;
    if (const std::string sName = sTextName(failure.element); !sName.empty())
        sText += " '" + sShortened(sName, g_iMostShown) + '\'';
    // Why an instance is not allowed, what is wanted has said.
    return failure.requirement == ids::Failure::none ? sText : sText + ": " + failure.reason;
}

std::string sSpecificationName(const ids::Specification& specification, std::size_t i) {
    return specification.name.empty() ? fmt::format("specification {}", i + 1) : specification.name;
}

std::string sSchemas(const ids::Specification& specification) {
    return fmt::format("{}", fmt::join(specification.schemas, ", "));
}

struct StatusRow {
    ids::Status status;
    Tint eTint;
    const char* pWord;
};
constexpr StatusRow g_statuses[] = {
    {ids::Status::Passed, Tint::Green, "passed"},
    {ids::Status::Failed, Tint::Red, "failed"},
    {ids::Status::OtherSchema, Tint::Yellow, "not for this schema"},
    {ids::Status::Faulty, Tint::Yellow, "not checked"},
};
const StatusRow& statusRow(ids::Status status) { return *std::ranges::find(g_statuses, status, &StatusRow::status); }

// What stands behind the name of a specification: "3 applicable, 1 passed".
std::string sOutcome(const ids::Specification& specification, const ids::SpecificationResult& result) {
    if (result.status == ids::Status::OtherSchema) return "it is for " + sSchemas(specification);
    if (result.status == ids::Status::Faulty)
        return specification.line ? fmt::format("the requirements have a fault there, line {}", specification.line)
                                  : std::string("the requirements have a fault there");
    std::string sText = fmt::format("{} applicable, {} passed", sGrouped(result.applicable), sGrouped(result.passed));
    if (result.status == ids::Status::Failed && result.failures.empty()) sText += "; " + result.reason;
    if (result.otherSchema) sText += "; it is for " + sSchemas(specification);
    return sText;
}

// What the authors of the requirements say to those who make the model.
void vInstructionsWrite(const std::string& sInstructions, std::string_view indent, Output& output) {
    if (!sInstructions.empty()) output.vPrint("{}({})\n", indent, sPrintable(sInstructions));
}

void vRequirementWrite(const ids::Specification& specification, const FailedRequirement& failed, bool boAll,
                       Output& output) {
    const std::size_t iAll = failed.failures.size();
    output.vPrint("    {}: {} {}\n", sPrintable(sWanted(specification, failed)), sGrouped(iAll),
                  failed.pFacet ? "failed" : "found");
    if (failed.pFacet) vInstructionsWrite(failed.pFacet->instructions, "        ", output);
    const std::size_t iTold = boAll ? iAll : std::min(iAll, g_iInstancesOfRequirement);
    for (std::size_t i = 0; i < iTold && output.boWanted(); ++i)
        output.vPrint("        {}\n", sPrintable(sFailure(*failed.failures[i])));
    if (iTold < iAll) output.vPrint("        and {} more (--all)\n", sGrouped(iAll - iTold));
}

// "Ids_PredefinedType" of "predefined-type": keys are words of that form everywhere.
std::string sKey(ids::FailureKind kind) {
    std::string sText = "Ids_";
    bool boUpper = true;
    for (const char c : ids::failureKindName(kind)) {
        if (c != '-') sText += boUpper ? static_cast<char>(std::toupper(static_cast<unsigned char>(c))) : c;
        boUpper = c == '-';
    }
    return sText;
}

Json failureJson(const ids::Failure& failure, std::size_t iSpecification, const ids::Facet* pFacet) {
    const bool boNamed = pFacet && pFacet->name && pFacet->name->simple;
    return {{"key", sKey(failure.kind)},
            {"severity", "error"},
            {"category", "requirement"},
            {"message", failure.reason},
            {"line", 0},
            {"entity", failure.element.id()},
            {"type", failure.element.type()},
            {"attribute", boNamed ? Json(*pFacet->name->simple) : Json()},
            {"text", failure.found},
            {"globalId", textJson(failure.element.guid())},
            {"name", textJson(sTextName(failure.element))},
            {"specification", iSpecification},
            {"requirement", failure.requirement == ids::Failure::none ? Json() : Json(failure.requirement)}};
}

Json faultJson(const ids::Fault& fault) {
    return {{"key", fault.key},
            {"severity", fault.weight == ids::FaultWeight::Note ? "note" : "error"},
            {"category", "requirement"},
            {"message", fault.message},
            {"line", fault.line},
            {"column", fault.column},
            {"text", fault.found},
            {"path", fault.path},
            {"specification", fault.specification ? Json(*fault.specification) : Json()}};
}

Json facetJson(const ids::Facet& facet) {
    return {{"kind", ids::facetKindName(facet.kind)},
            {"cardinality", ids::cardinalityName(facet.cardinality)},
            {"text", facet.text},
            {"instructions", facet.instructions},
            {"line", facet.line}};
}

template <class Range, class Make>
Json arrayOf(const Range& range, Make&& make) {
    Json array = Json::array();
    for (const auto& item : range) array.push_back(make(item));
    return array;
}

Json specificationJson(const ids::Specification& specification) {
    return {{"name", specification.name},
            {"identifier", specification.identifier},
            {"description", specification.description},
            {"instructions", specification.instructions},
            {"schemas", specification.schemas},
            {"cardinality", ids::cardinalityName(specification.cardinality)},
            {"text", specification.text},
            {"valid", specification.valid},
            {"line", specification.line},
            {"applicability", arrayOf(specification.applicability, facetJson)},
            {"requirements", arrayOf(specification.requirements, facetJson)}};
}

std::string sWithCapital(std::string sText) {
    if (!sText.empty()) sText.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(sText.front())));
    return sText;
}

std::size_t iFaults(const ids::Requirements& requirements, ids::FaultWeight weight) {
    return static_cast<std::size_t>(std::ranges::count(requirements.faults(), weight, &ids::Fault::weight));
}

}   // namespace

std::string sIdsFault(const ids::Fault& fault) {
    std::string sText = fault.line ? fmt::format("line {}", fault.line) : std::string();
    if (fault.line && fault.column) sText += fmt::format(", column {}", fault.column);
    sText += (sText.empty() ? "" : ": ") + fault.message;
    const bool boSaid = fault.found.empty() || fault.message.find(fault.found) != std::string::npos;
    return boSaid ? sText : sText + ", found " + sShortened(fault.found, g_iMostShown);
}

std::string sIdsValidity(const ids::Requirements& requirements) {
    const std::size_t iNotes = iFaults(requirements, ids::FaultWeight::Note);
    std::string sText = requirements.valid()
                            ? "valid: " + sCounted(requirements.specifications().size(), "specification")
                            : "not valid: " + sCounted(iFaults(requirements, ids::FaultWeight::Fault), "fault");
    return iNotes ? sText + ", " + sCounted(iNotes, "note") : sText;
}

std::string sIdsVerdict(const ids::Result& result) {
    std::string sText;
    switch (result.verdict) {
    case ids::Verdict::Passed: sText = "meets the requirements: "; break;
    case ids::Verdict::Failed: sText = "does not meet the requirements: "; break;
    case ids::Verdict::Undecided: sText = "could not be decided: "; break;
    }
    std::string sCounts;
    for (const StatusRow& row : g_statuses) {
        const auto iCount = static_cast<std::size_t>(
            std::ranges::count(result.specifications, row.status, &ids::SpecificationResult::status));
        if (!iCount) continue;
        sCounts += sCounts.empty() ? sCounted(iCount, "specification") : ", " + sGrouped(iCount);
        sCounts += ' ' + std::string(row.pWord);
        if (row.status == ids::Status::OtherSchema) sCounts += " (" + result.schema + ')';
    }
    return sText + (sCounts.empty() ? "there is no specification" : sCounts);
}

void vIdsLines(const IdsCheck& check, bool boAll, Output& output) {
    const auto& specifications = check.requirements.specifications();
    for (std::size_t i = 0; i < specifications.size() && output.boWanted(); ++i) {
        const ids::SpecificationResult& result = check.result.specifications[i];
        const StatusRow& row = statusRow(result.status);
        output.vPrint("{}: {}: {}\n", output.sTinted(row.eTint, row.pWord),
                      sPrintable(sSpecificationName(specifications[i], i)),
                      sPrintable(sOutcome(specifications[i], result)));
        if (result.status == ids::Status::Failed) vInstructionsWrite(specifications[i].instructions, "    ", output);
        for (const FailedRequirement& failed : failedRequirements(specifications[i], result))
            vRequirementWrite(specifications[i], failed, boAll, output);
    }
}

Json idsRequirementsJson(const std::string& sPath, const ids::Requirements& requirements) {
    const ids::Info& info = requirements.info();
    return {{"file", sPath},
            {"valid", requirements.valid()},
            {"title", info.title},
            {"copyright", info.copyright},
            {"version", info.version},
            {"description", info.description},
            {"author", info.author},
            {"date", info.date},
            {"purpose", info.purpose},
            {"milestone", info.milestone},
            {"faults", arrayOf(requirements.faults(), faultJson)},
            {"specifications", arrayOf(requirements.specifications(), specificationJson)}};
}

Json idsFileJson(const std::string& sPath, const IdsCheck& check) {
    Json specifications = Json::array();
    for (std::size_t i = 0; i < check.result.specifications.size(); ++i) {
        const ids::SpecificationResult& result = check.result.specifications[i];
        specifications.push_back(
            {{"name", check.requirements.specifications()[i].name},
             {"status", ids::statusName(result.status)},
             {"reason", result.reason},
             {"otherSchema", result.otherSchema},
             {"applicable", result.applicable},
             {"passed", result.passed},
             {"failed", result.failed},
             {"requirements", arrayOf(result.requirements, [](const ids::RequirementResult& one) -> Json {
                  return {{"passed", one.passed}, {"failed", one.failed}};
              })}});
    }
    return {{"file", sPath},
            {"schema", check.result.schema},
            {"verdict", ids::verdictName(check.result.verdict)},
            {"errors", check.iReadErrors},
            {"specifications", specifications}};
}

void vIdsRecords(const IdsCheck& check, bool boAll, const std::function<void(const Json& record)>& record) {
    for (std::size_t i = 0; i < check.result.specifications.size(); ++i) {
        const ids::Specification& specification = check.requirements.specifications()[i];
        for (const FailedRequirement& failed : failedRequirements(specification, check.result.specifications[i])) {
            const std::size_t iAll = failed.failures.size();
            const std::size_t iTold = boAll ? iAll : std::min(iAll, g_iRecordsOfRequirement);
            for (std::size_t k = 0; k < iTold; ++k) record(failureJson(*failed.failures[k], i, failed.pFacet));
        }
    }
}

ReportContent idsContent(const IdsCheck& check, ifc::Errors& errors) {
    const ids::Info& info = check.requirements.info();
    ReportContent content;
    content.sName = check.sModel;
    content.pRecords = &errors.records();
    content.sVerdict = sWithCapital(sIdsVerdict(check.result));
    content.state = check.result.verdict == ids::Verdict::Passed ? "ok" : "error";
    content.facts = {{"Path", check.sModel},
                     {"Schema", check.result.schema},
                     {"Requirements", check.sRequirements},
                     {"Title", info.title},
                     {"Version", info.version},
                     {"Description", info.description},
                     {"Author", info.author},
                     {"Date", info.date},
                     {"Purpose", info.purpose},
                     {"Milestone", info.milestone},
                     {"Copyright", info.copyright}};
    if (check.iReadErrors)
        content.facts.insert(content.facts.begin() + 2, {"Errors while reading", sGrouped(check.iReadErrors)});
    content.sParts = "Specifications";
    content.sHeading = "Not met";
    content.boPlaces = false;
    content.sAll = "oxaifc ids --all";
    unsigned iPlace = 0;   // in the place of a line: records stay in this order
    const auto& specifications = check.requirements.specifications();
    for (std::size_t i = 0; i < specifications.size(); ++i) {
        const ids::SpecificationResult& result = check.result.specifications[i];
        const std::string sName = sSpecificationName(specifications[i], i);
        content.parts.emplace_back(sName, std::string(statusRow(result.status).pWord) + ": " +
                                              sOutcome(specifications[i], result));
        for (const FailedRequirement& failed : failedRequirements(specifications[i], result)) {
            // A text that is no key is its own message, and one group.
            std::string sTitle = sName + ": " + sWanted(specifications[i], failed);
            if (failed.pFacet && !failed.pFacet->instructions.empty())
                sTitle += " (" + failed.pFacet->instructions + ')';
            for (const ids::Failure* pFailure : failed.failures)
                errors.add(nullptr, ifc::Errors::Error, ifc::Errors::Model, sTitle, sFailure(*pFailure), ++iPlace);
        }
    }
    return content;
}

}   // namespace oxa::tool
