// SPDX-License-Identifier: Apache-2.0
// The frame of every write: when OUT may be replaced, and which errors of the write are news. A model is written as it
// was read, faults included, so a fault that the read has told already is not told again.
#include "oxaifc/formats/ModelWrite.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <tuple>
#include <utility>

#include <fmt/format.h>

#include "Format/Ifc/IfcFileEntity.h"
#include "Format/Ifc/Write/WriteContext.h"
#include "oxaifc/io/Failure.h"
#include "oxaifc/io/Output.h"

namespace oxa::tool {

namespace {

constexpr std::size_t g_iMostTold = 10;   // errors of a write; a model can have one in each statement

// "#1 #4-#9" of ascending numbers.
std::string sNumbers(const std::vector<std::size_t>& numbers) {
    std::string sText;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const std::size_t iFirst = i;
        while (i + 1 < numbers.size() && numbers[i + 1] == numbers[i] + 1) ++i;
        sText += fmt::format("{}#{}", sText.empty() ? "" : " ", numbers[iFirst]);
        if (i > iFirst) sText += fmt::format("{}#{}", i == iFirst + 1 ? " " : "-", numbers[i]);
    }
    return sText;
}

// The entities by type: "           2  IFCMATERIAL  #3 #7", the most frequent type first.
std::string sRows(const Model& model, const std::vector<const ifc::Entity*>& entities) {
    std::map<std::string, std::vector<std::size_t>> byType;
    for (const ifc::Entity* pEntity : entities)
        byType[pEntity->pSchemaEntity()->sNameUpper].push_back(model.data().iIdFromEntity(*pEntity));
    std::vector<std::pair<std::string, std::vector<std::size_t>>> byCount(byType.begin(), byType.end());
    std::stable_sort(byCount.begin(), byCount.end(),
                     [](const auto& a, const auto& b) { return a.second.size() > b.second.size(); });
    std::string sText;
    for (auto& [sKeyword, numbers] : byCount) {
        std::sort(numbers.begin(), numbers.end());
        sText += fmt::format("{:>12}  {}  {}\n", sGrouped(numbers.size()), sKeyword, sNumbers(numbers));
    }
    return sText;
}

void vSay(std::string_view text) { std::fputs(fmt::format("oxaifc: {}\n", text).c_str(), stderr); }

// Whose statement a record belongs to: "#12=IFCWALL('...". Nobody's: no number.
struct Instance {
    std::optional<std::uint64_t> iId;
    std::string_view keyword;
};
Instance instanceOf(const ifc::ErrorRecord& record) {
    const std::string_view text = record.lineString ? std::string_view(*record.lineString) : std::string_view();
    const std::size_t iEqual = text.find('=');
    std::int64_t iId = 0;
    const char* const pEnd = text.data() + std::min(iEqual, text.size());
    if (!text.starts_with('#') || iEqual == std::string_view::npos ||
        std::from_chars(text.data() + 1, pEnd, iId).ptr != pEnd)
        return {};
    // A negative one is the large one with its 32 bits, as in the library.
    const std::uint64_t iNumber = iId < 0 ? static_cast<std::uint32_t>(iId) : static_cast<std::uint64_t>(iId);
    return {iNumber, text.substr(iEqual + 1, text.find('(', iEqual) - iEqual - 1)};
}

// What is said of an instance: its number, the key and the argument.
using Told = std::tuple<std::uint64_t, std::optional<ifc::ReportKey>, std::string_view>;

// All of the read, with the numbers that the instances have now.
std::set<Told> toldWhileReading(const Model& model) {
    std::set<Told> told;
    const ifc::EntityIdMap& numbers = model.data().entityIdMap(false);
    for (const ifc::ErrorRecord& record : model.errors()) {
        std::optional<std::uint64_t> iId;
        if (record.entity) {
            iId = numbers.find(record.entity);
        } else if (model.boIdsKept()) {
            iId = instanceOf(record).iId;
        }
        if (iId) told.emplace(*iId, record.reportKey, record.argument());
    }
    return told;
}

// "#12 IfcWall: what is wrong".
std::string sTold(const ifc::ErrorRecord& record, const Model& model) {
    const Instance instance = instanceOf(record);
    if (!instance.iId) return record.description;
    const auto* pType = model.data().pEntitySchemaFromName(ifc::def::schema::ObjectName(instance.keyword));
    return fmt::format("#{} {}: {}", *instance.iId, pType ? pType->sName : std::string(instance.keyword),
                       record.description);
}

const ifc::ErrorRecord* pFirstFatal(const Model& model) {
    const auto& records = model.errors();
    const auto itFatal = std::find_if(records.begin(), records.end(), [](const ifc::ErrorRecord& record) {
        return record.severity == ifc::Errors::Fatal;
    });
    return itFatal == records.end() ? nullptr : &*itFatal;
}

}   // namespace

void WriteOptions::vDeclareOut(Command command, const char* pNoOrder) {
    command.option("OUT", sOut, "the file to write, which may be IN; - for standard output").required().value("");
    command
        .option(
            "--order",
            [this](const std::string& sName) {
                eOrder = sName == "any"    ? ifc::WriteOrder::Any
                         : sName == "file" ? ifc::WriteOrder::File
                                           : ifc::WriteOrder::Number;
                boStatementOrder = eOrder == ifc::WriteOrder::File;
                boOrderAsked = true;
            },
            fmt::format("how the statements of STEP stand: {}; file, as in IN, with new ones behind; any, as they come",
                        pNoOrder))
        .oneOf({"number", "file", "any"})
        .value("X");
    std::vector<std::string_view> inPart;
    for (const Format* pFormat : tool::formats())
        if (!pFormat->holds.boReadTellsAll) inPart.push_back(pFormat->title);
    command.vFooter(
        fmt::format("OUT is replaced as a whole or not at all. Exit code: 0 fine, 1 the read or the write had errors "
                    "(OUT is written, and they are told), 2 unreadable, not to be written or wrong usage (OUT is as "
                    "it was). An IN with errors is not replaced by itself, nor is one in {}, which is read in part.",
                    fmt::join(inPart, " or ")));
}

void WriteOptions::vDeclareFormat(Command command, std::vector<const Format*> written, const Format* pOtherwise) {
    formats = std::move(written);
    pOpen = pOtherwise;
    vFormatDeclare(command, sFormat, formats);
}

std::function<std::string(unsigned)> writeProgress(const WriteJob& job) {
    return [sName = sPrintable(job.target.sName()), iAll = job.model.data().entities().size()](unsigned iTaken) {
        return fmt::format("writing {}: {} of {} entities", sName, sGrouped(iTaken), sGrouped(iAll));
    };
}

ModelWrite::ModelWrite(const WriteOptions& options)
    : m_options(options),
      m_pFormat(pFormatOfOutput(options.sOut, options.sFormat, options.formats)),
      m_target(options.sOut, m_pFormat ? m_pFormat->ends.front() : ".ifc"),
      m_pErrors(ifc::io::WriteError::pAllocate()) {
    if (!m_pFormat) m_pFormat = options.pOpen;
}

ModelWrite::~ModelWrite() = default;

void vReadCheck(const Model& model, const std::string& sOut) {
    const ifc::ErrorRecord* pFatal = pFirstFatal(model);
    if (pFatal || (!model.boOk() && model.errors().empty()))
        throw Failure(fmt::format("{}: not read to the end{}{}; {} is not written", model.sName(), pFatal ? ": " : "",
                                  pFatal ? sPrintable(pFatal->description) : std::string(), sOut));
}

// What is refused before OUT is touched: a model that was not read to its end, and a loss that could not be undone,
// because OUT is the file that was read.
void ModelWrite::vLossCheck(const Model& model) const {
    vReadCheck(model, m_target.sName());
    if (!model.format().holds.boReadTellsAll && m_target.boIs(m_options.sPath))
        throw Failure(fmt::format("{}: is {}, which is read in part; what was passed over would be lost, so name "
                                  "another OUT",
                                  model.sName(), model.format().title));
    if (model.lostStatements().iCount && m_target.boIs(m_options.sPath))
        throw Failure(fmt::format("{}: {}, so name another OUT", model.sName(), model.sLost()));
    if (!model.errors().empty() && m_target.boIs(m_options.sPath))
        throw Failure(fmt::format("{}: has {}; what could not be read would be lost, so name another OUT",
                                  model.sName(), sCounted(model.errors().size(), "error")));
}

void ModelWrite::vWrite(Model& model, const ifc::Entity* pRoot) {
    vLossCheck(model);
    if (!m_pFormat) m_pFormat = model.format().holds.boReadTellsAll ? &model.format() : formats().front();
    WriteJob job{.model = model, .pRoot = pRoot, .options = m_options, .target = m_target, .errors = *m_pErrors};
    m_pFormat->vWrite(job);
    m_target.vFinish();
    m_written = std::move(job.written);
    m_leftOut = std::move(job.leftOut);
    for (const std::string& sNote : job.notes) vSay(sNote);
}

bool ModelWrite::boPatches(const Model& model) const {
    return model.format().holds.boHeaderSection && (!m_pFormat || m_pFormat == &model.format()) &&
           !m_options.boOrderAsked;
}

convert::Patched ModelWrite::vPatch(Model& model, const convert::Edits& edits) {
    vReadCheck(model, m_target.sName());
    if (model.boFaultInside() && m_target.boIs(m_options.sPath))
        throw Failure(fmt::format("{}: {}, so name another OUT", model.sName(), model.sLost()));
    const std::size_t iHighest = edits.added.empty() ? 0 : convert::highestNumber(model.source());
    convert::Patched patched = convert::patch(model.source(), m_target.stream(), model.data(), edits, iHighest);
    model.vSourceClose();
    if (patched.refusal) throw Failure(fmt::format("{}: {}", model.sName(), patched.refusal->sReason));
    m_target.vFinish();
    return patched;
}

void ModelWrite::vLeftOutTell(const Model& model) const {
    for (const LeftOut& leftOut : m_leftOut) {
        const std::size_t iCount = leftOut.entities.size();
        std::fputs(fmt::format("left out, {}: {}{}\n{}", leftOut.sWhy,
                               iCount == 1 ? "1 entity" : sGrouped(iCount) + " entities", leftOut.sNote,
                               sRows(model, leftOut.entities))
                       .c_str(),
                   stderr);
    }
}

int ModelWrite::iTell(const Model& model, bool boRead) const {
    if (boRead && !model.errors().empty())
        vSay(fmt::format("{}: {} while reading; oxaifc check tells them", sPrintable(model.sName()),
                         sCounted(model.errors().size(), "error")));
    if (m_pErrors->records().empty()) {
        const auto boError = [](const LeftOut& leftOut) { return leftOut.boError; };
        return std::any_of(m_leftOut.begin(), m_leftOut.end(), boError) ? g_iExitErrors : model.iExitCode();
    }
    const auto told = toldWhileReading(model);
    std::vector<std::pair<std::optional<std::uint64_t>, const ifc::ErrorRecord*>> news;
    for (const ifc::ErrorRecord& record : m_pErrors->records()) {
        const std::optional<std::uint64_t> iId = instanceOf(record).iId;
        if (!iId || !told.contains({*iId, record.reportKey, record.argument()})) news.emplace_back(iId, &record);
    }
    // Threads report in any order.
    std::stable_sort(news.begin(), news.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    for (std::size_t i = 0; i < std::min(news.size(), g_iMostTold); ++i)
        vSay(fmt::format("{}: {}", sPrintable(m_target.sName()), sPrintable(sTold(*news[i].second, model))));
    if (news.size() > g_iMostTold)
        vSay(fmt::format("{}: {} more", sPrintable(m_target.sName()), sCounted(news.size() - g_iMostTold, "error")));
    return g_iExitErrors;
}

// The numbers of 32 bits, all that files have, as a bit each.
void ModelWrite::vForEachUnwritten(const Model& model, const std::function<void(const ifc::Entity&)>& visit) const {
    const std::vector<ifc::Entity*>& entities = model.data().entities();
    if (m_written.size() == entities.size()) return;
    constexpr std::size_t g_iLargest = std::numeric_limits<std::uint32_t>::max();
    ifc::SeenNumbers written;
    ifc::SeenNumbers::Near nearWritten;
    for (const std::size_t iNumber : m_written)
        if (iNumber <= g_iLargest) written.boMark(static_cast<std::uint32_t>(iNumber), nearWritten);
    const auto boWritten = [&](std::size_t iNumber) {
        return iNumber <= g_iLargest ? written.boMarked(static_cast<std::uint32_t>(iNumber))
                                     : std::ranges::binary_search(m_written, iNumber);
    };
    const ifc::EntityIdMap& numbers = model.data().entityIdMap(false);
    ifc::WalkNear near;
    for (const ifc::Entity* pEntity : entities) {
        const std::size_t iBeside = ifc::EntityIdMap::iBeside(pEntity, near.number(pEntity));
        if (iBeside != ifc::EntityIdMap::g_iNoneBeside && boWritten(iBeside)) continue;
        const auto number = numbers.known(pEntity, near.number(pEntity));
        if (!number || !boWritten(number->iId)) visit(*pEntity);
    }
}

}   // namespace oxa::tool
