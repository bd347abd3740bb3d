// SPDX-License-Identifier: Apache-2.0
#include "oxaifc/formats/ModelWrite.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string_view>
#include <tuple>
#include <utility>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "Format/Ifc/IfcFileEntity.h"
#include "Format/Ifc/IfcMissingType.h"
#include "Format/Ifc/IfcWriteFile.h"
#include "Format/Ifc/Write/WriteContext.h"
#include "oxaifc/formats/XmlDocument.h"
#include "oxaifc/io/Failure.h"
#include "oxaifc/io/Output.h"
#include "oxaifc/io/Progress.h"

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

void WriteOptions::vDeclareOut(CLI::App& command) {
    command.add_option("OUT", sOut, "the file to write, which may be IN; - for standard output")
        ->required()
        ->type_name("");
    command
        .add_option_function<std::string>(
            "--order",
            [this](const std::string& sName) {
                eOrder = sName == "any"    ? ifc::WriteOrder::Any
                         : sName == "file" ? ifc::WriteOrder::File
                                           : ifc::WriteOrder::Number;
                boStatementOrder = eOrder == ifc::WriteOrder::File;
            },
            "how the statements of STEP stand: number (without this option), as their numbers rise; file, as in IN, "
            "with new ones behind; any, as they come")
        ->check(CLI::IsMember({"number", "file", "any"}))
        ->type_name("X");
    command.footer(
        "OUT is replaced as a whole or not at all. Exit code: 0 fine, 1 the read or the write had errors "
        "(OUT is written, and they are told), 2 unreadable, not to be written or wrong usage (OUT is as "
        "it was). An IN with errors is not replaced by itself, nor is one in ifcXML, which is read in part.");
}

void WriteOptions::vDeclareFormat(CLI::App& command, std::vector<FileForm> written) {
    forms = std::move(written);
    vFormatDeclare(command, sFormat, forms);
}

// Statements as they are composed, to the stream.
class ModelWrite::Statements final : public ifc::io::IfcLineWriterInterface {
public:
    explicit Statements(std::ostream& out) : m_out(out) {}

    std::size_t iLineAdd(std::string& lines, unsigned) override {
        const std::lock_guard lock(m_mutex);
        lines.push_back('\n');
        m_out.write(lines.data(), static_cast<std::streamsize>(lines.size()));
        return 0;
    }
    void vFinish() override {}
    [[nodiscard]] std::size_t iBlockSize() const noexcept override { return 32768; }

private:
    std::mutex m_mutex;
    std::ostream& m_out;   // guarded by m_mutex
};

ModelWrite::ModelWrite(const WriteOptions& options)
    : m_options(options),
      m_eForm(fileForm(options.sOut, options.sFormat, options.forms)),
      m_target(options.sOut),
      m_pErrors(ifc::io::WriteError::pAllocate()),
      m_pLeftOut(ifc::io::WriteError::pAllocate()) {}

ModelWrite::~ModelWrite() = default;

void ModelWrite::vCheck(const Model& model) const {
    const ifc::ErrorRecord* pFatal = pFirstFatal(model);
    if (pFatal || (!model.boOk() && model.errors().empty()))
        throw Failure(fmt::format("{}: not read to the end{}{}; {} is not written", model.sName(), pFatal ? ": " : "",
                                  pFatal ? sPrintable(pFatal->description) : std::string(), m_target.sName()));
    if (model.boXml() && m_target.boIs(m_options.sPath))
        throw Failure(fmt::format("{}: is ifcXML, which is read in part; what was passed over would be lost, so name "
                                  "another OUT",
                                  model.sName()));
    if (model.lostStatements().iCount && m_target.boIs(m_options.sPath))
        throw Failure(fmt::format("{}: {}, so name another OUT", model.sName(), model.sLost()));
    if (!model.errors().empty() && m_target.boIs(m_options.sPath))
        throw Failure(fmt::format("{}: has {}; what could not be read would be lost, so name another OUT",
                                  model.sName(), sCounted(model.errors().size(), "error")));
}

void ModelWrite::vStatementsWrite(Model& model, const ifc::Entity* pRoot) {
    const ifc::Data& data = model.data();
    // Instances that are named and not defined get numbers in the write, which may be numbers that the file uses.
    // What it dealt lies between the numbers of two entities that are no part of the model.
    const ifc::Entity before, behind;
    const bool boGuard = model.boIdsKept() && !model.errors().empty();
    const std::size_t iBefore = boGuard ? data.iIdFromEntity(before) : 0;
    {
        Statements writer(m_target.stream());
        const auto pInfo = std::make_unique<ifc::StepWriteInfoCommon>(data.entityIdMap(false), *m_pErrors, writer,
                                                                      m_options.boSingleThreaded);
        if (pRoot)
            pInfo->iEntityIdGet(pRoot);
        else
            for (const ifc::Entity* pEntity : data.entities()) pInfo->iEntityIdGet(pEntity);
        Progress progress([this, iAll = data.entities().size()](unsigned iTaken) {
            return fmt::format("writing {}: {} of {} entities", sPrintable(m_target.sName()), sGrouped(iTaken),
                               sGrouped(iAll));
        });
        // A walk without a first entity would never end.
        if (pRoot || !data.entities().empty())
            data.vWriteWith(*pInfo, {.progress = progress.function(),
                                     .eOrder = m_options.eOrder,
                                     .fileNumbers = model.statementNumbers(),
                                     .boTellNumbersTwice = true});
        for (const ifc::Entity* pEntity : data.entities())
            if (pInfo->boMet(*pEntity)) m_written.push_back(data.iIdFromEntity(*pEntity));
    }
    std::sort(m_written.begin(), m_written.end());
    const std::size_t iBehind = boGuard ? data.iIdFromEntity(behind) : 0;
    for (std::size_t iId = iBefore + 1; iId < iBehind; ++iId)
        if (data.pEntityFromId(iId))
            throw Failure(fmt::format("{}: a reference to an instance that is not in the file would become one to "
                                      "#{}; oxaifc convert --renumber gives all of them numbers of their own",
                                      model.sName(), iId));
}

// The whole tree stands in memory before the first byte is written.
void ModelWrite::vXmlWrite(Model& model) {
    vCheck(model);
    XmlOutput document;
    if (!document.boExportHeader(model.file().headerBase()))
        throw Failure(fmt::format("{}: is of schema {}, and ifcXML is written for IFC4 only; oxaifc convert --schema "
                                  "IFC4 makes one of that",
                                  model.sName(), sPrintable(model.sSchemaName())));
    const auto& entities = model.data().entities();
    if (!model.data().pProject())
        throw Failure(fmt::format("{}: has no IFCPROJECT, where ifcXML starts from", model.sName()));
    try {
        Progress progress([this, iAll = entities.size()](unsigned iTaken) {
            return fmt::format("writing {}: {} of {} entities", sPrintable(m_target.sName()), sGrouped(iTaken),
                               sGrouped(iAll));
        });
        document.boExportData(model.data(), *m_pLeftOut, progress.function());
    } catch (const ifc::MissingType&) {
        throw Failure(fmt::format("{}: refers to an instance that it does not define or that could not be read, which "
                                  "ifcXML can't hold; {} is not written (oxaifc check tells which)",
                                  model.sName(), m_target.sName()));
    }
    document.boSave(m_target.stream());   // what fails is kept by the target
    m_target.vFinish();
    if (const std::size_t iDepth = document.iDepth(); iDepth > XmlOutput::g_iDepthLimit)
        vSay(fmt::format("{}: has elements nested {} deep; many readers take fewer, this one {}",
                         sPrintable(m_target.sName()), sGrouped(iDepth), sGrouped(XmlOutput::g_iDepthLimit)));
    if (!model.data().pSchema()->pXmlDefaults)
        vSay(fmt::format("{}: is written without the forms that are published for IFC4, whose shape the schema of "
                         "--schema-file does not have; other readers may not take it",
                         sPrintable(m_target.sName())));
}

std::size_t ModelWrite::iLeftOut(ifc::ReportKey eKey) const {
    const auto& records = m_pLeftOut->records();
    return static_cast<std::size_t>(
        std::count_if(records.begin(), records.end(), [&](const auto& record) { return record.reportKey == eKey; }));
}

std::string ModelWrite::sLeftOutRows(const Model& model, ifc::ReportKey eKey) const {
    std::map<std::string, std::vector<std::size_t>> byType;
    for (const ifc::ErrorRecord& record : m_pLeftOut->records())
        if (record.reportKey == eKey)
            byType[record.entity->pSchemaEntity()->sNameUpper].push_back(model.data().iIdFromEntity(*record.entity));
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

void ModelWrite::vXmlLeftOutTell(const Model& model) const {
    const struct {
        ifc::ReportKey eKey;
        const char* pWhy;
        const char* pNote;
    } sorts[] = {
        {ifc::ReportKey::EntityNotConnected, "not connected with the project", " (ifcXML has no place for them)"},
        {ifc::ReportKey::EntityWithoutForm, "connected with the project only by values that ifcXML has no form for",
         ""},
    };
    for (const auto& sort : sorts)
        if (const std::size_t iCount = iLeftOut(sort.eKey))
            std::fputs(fmt::format("left out, {}: {}{}\n{}", sort.pWhy,
                                   iCount == 1 ? "1 entity" : sGrouped(iCount) + " entities", sort.pNote,
                                   sLeftOutRows(model, sort.eKey))
                           .c_str(),
                       stderr);
}

void ModelWrite::vExchangeWrite(Model& model, const ifc::Entity* pRoot) {
    if (boXml()) return vXmlWrite(model);
    vCheck(model);
    ifc::FileHeader header;
    if (const ifc::FileHeader* pHeader = model.pHeader()) {
        header = *pHeader;
    } else {
        header.description.descriptions = {{}};   // ISO 10303-21, 8.2.1: one at least
        header.name.vInit({}, {}, {}, {});
        header.vSchemaNameSet(model.sSchemaName());
    }
    std::ostream& out = m_target.stream();
    out << "ISO-10303-21;\n";
    header.boWrite(out, *m_pErrors);
    out << "DATA;\n";
    vStatementsWrite(model, pRoot);
    out << "ENDSEC;\nEND-ISO-10303-21;\n";
    m_target.vFinish();
}

void ModelWrite::vSimpleWrite(Model& model, const ifc::Entity* pRoot) {
    vCheck(model);
    ifc::FileHeaderSimple header;
    header.vSchemaNameSet(model.sSchemaName());
    if (pRoot)
        header.exportInfo = static_cast<std::uint64_t>(model.data().iIdFromEntity(*pRoot));
    else if (const ifc::FileHeaderSimple* pHeader = model.pHeaderSimple())
        header.exportInfo = pHeader->exportInfo;
    else
        header.exportInfo = ifc::FileHeaderSimple::WholeData;
    header.boWrite(m_target.stream(), *m_pErrors);
    vStatementsWrite(model, pRoot);
    m_target.vFinish();
}

void ModelWrite::vSameWrite(Model& model) {
    if (boXml()) {
        vXmlWrite(model);
        vXmlLeftOutTell(model);
    } else if (m_eForm == FileForm::Step || (m_eForm == FileForm::Open && model.pHeader()))
        vExchangeWrite(model, nullptr);
    else
        vSimpleWrite(model, nullptr);
}

int ModelWrite::iTell(const Model& model) const {
    if (!model.errors().empty())
        vSay(fmt::format("{}: {} while reading; oxaifc check tells them", sPrintable(model.sName()),
                         sCounted(model.errors().size(), "error")));
    if (m_pErrors->records().empty())
        return iLeftOut(ifc::ReportKey::EntityWithoutForm) ? g_iExitErrors : model.iExitCode();
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

bool ModelWrite::boWritten(const Model& model, const ifc::Entity& entity) const {
    return std::binary_search(m_written.begin(), m_written.end(), model.data().iIdFromEntity(entity));
}

}   // namespace oxa::tool
