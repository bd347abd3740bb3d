// SPDX-License-Identifier: Apache-2.0
// The levels: the statements of the file once through scanner, header and schema, beside the read of the model where there
// are threads for it; then the rules.
#include "Check/Check.h"

#include <exception>
#include <fstream>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include "Check/Collector.h"
#include "Check/Header/HeaderLevel.h"
#include "Check/Rules/RuleLevel.h"
#include "Check/Schema/SchemaLevel.h"
#include "Check/Syntax/ExchangeStructure.h"
#include "Check/Syntax/SharedBytes.h"
#include "Model/Error.h"
#include "platform/Path.h"

namespace oxa {

namespace {

bool boAsked(const CheckOptions& options, CheckLevel level) { return options.levels[static_cast<std::size_t>(level)]; }

// What became of a level that was asked for: done where nothing speaks against it.
void vConclude(CheckResult& result, const CheckOptions& options, CheckLevel level, std::string sAgainst) {
    if (!boAsked(options, level)) return;
    CheckLevelSummary& summary = result.levels[static_cast<std::size_t>(level)];
    summary.state = sAgainst.empty() ? CheckLevelSummary::State::Done : CheckLevelSummary::State::NotPossible;
    summary.reason = std::move(sAgainst);
}

std::string sNoSchema(const check::HeaderLevel& header) {
    return header.sSchemaName().empty() ? "the header names no schema"
                                        : "the schema " + header.sSchemaName() + " is not known";
}

// Why not all statements were held to the schema; empty where they were.
std::string sAgainstSchema(const check::HeaderLevel& header, const std::optional<check::SchemaLevel>& schema) {
    if (!schema) return sNoSchema(header);
    const std::uint64_t iFaulty = schema->iFaulty();
    if (iFaulty == 0) return {};
    return std::to_string(iFaulty) + (iFaulty == 1 ? " statement is" : " statements are") +
           " faulty in syntax and not looked at wholly";
}

// The model that the rules need, read beside the scan of the bytes or behind it.
class ModelRead {
public:
    // Before anything is read of the source.
    ModelRead(check::SharedBytes& bytes, std::istream& source, const CheckOptions& options)
        : m_bytes(bytes),
          m_source(source),
          m_options(options),
          m_boLater(options.threads == 1),
          m_begin(m_boLater && boAsked(options, CheckLevel::Rules) ? source.tellg() : g_never) {
        if (m_begin != g_never && source.seekg(m_begin)) return;
        if (m_begin != g_never) source.clear();
        m_begin = g_never;
    }
    ModelRead(const ModelRead&) = delete;
    ModelRead& operator=(const ModelRead&) = delete;
    ~ModelRead() { vJoin(); }

    // Behind the header, whose schema is known now.
    void vBegin(const ifc::def::SchemaPset* pSchema) {
        if (pSchema && boAsked(m_options, CheckLevel::Rules)) m_level.emplace(*pSchema, m_options);
        m_boReads = m_level && m_level->boPossible();
        // Nothing is kept of a stream that is not needed a second time, or can be set back.
        if (!m_boReads || m_begin != g_never) return m_bytes.vLeave(Who::Model);
        if (m_boLater) return;
        m_bytes.vJoin();
        m_thread = std::thread([this] { vRead(m_bytes.stream(Who::Model)); });
    }
    // Behind the scan. Null where no rules are to be evaluated.
    check::RuleLevel* pFinish() {
        if (m_boReads && m_boLater) {
            m_source.clear();
            if (m_begin != g_never && !m_source.seekg(m_begin)) throw FileError("the file can't be read a second time");
            vRead(m_begin == g_never ? m_bytes.stream(Who::Model) : m_source);
        }
        vJoin();
        if (m_pFault) std::rethrow_exception(m_pFault);
        return m_level ? &*m_level : nullptr;
    }

private:
    using Who = check::SharedBytes::Who;
    static inline const std::istream::pos_type g_never{std::istream::off_type(-1)};

    void vRead(std::istream& stream) {
        try {
            m_level->vRead(stream);
        } catch (const std::ios_base::failure& failure) {   // of a source that is read a second time
            m_pFault = std::make_exception_ptr(FileError("the file can't be read on: " + failure.code().message()));
        } catch (...) {
            m_pFault = std::current_exception();
        }
        m_bytes.vLeave(Who::Model);
    }
    void vJoin() {
        m_bytes.vLeave(Who::Scan);   // where the scan ended by an exception
        if (m_thread.joinable()) m_thread.join();
    }

    check::SharedBytes& m_bytes;
    std::istream& m_source;
    const CheckOptions& m_options;
    const bool m_boLater;             // on this thread, behind the scan
    std::istream::pos_type m_begin;   // of the source, for a second look at it; g_never: its bytes are shared
    std::optional<check::RuleLevel> m_level;
    bool m_boReads = false;
    std::thread m_thread;
    std::exception_ptr m_pFault;
};

std::string sRules(check::RuleLevel* pRules, const check::HeaderLevel& header, check::InstanceTable& instances,
                   check::Collector& collector, CheckResult& result) {
    if (!pRules) return sNoSchema(header);
    check::RuleLevelResult rules = pRules->evaluate(result.bytes, instances, collector);
    if (!rules.counts.schema.empty()) result.rules.push_back(std::move(rules.counts));
    return rules.sAgainst;
}

}   // namespace

CheckResult checkStream(std::istream& bytes, const CheckOptions& options) {
    CheckResult result;
    check::SharedBytes shared(bytes, options.stop);
    ModelRead model(shared, bytes, options);
    check::Collector collector(options.mostPlaces, options.mostPlacesOfGroup);
    check::InstanceTable instances;
    check::HeaderLevel header(options, collector);
    check::ExchangeStructure structure(shared.stream(check::SharedBytes::Who::Scan), options, collector, instances);
    structure.vReadHeader(header);
    header.vHeaderEnd();
    // From here on it is known which schema the file names.
    model.vBegin(header.pSchema());
    std::optional<check::SchemaLevel> schema;
    if (boAsked(options, CheckLevel::Schema) && header.pSchema())
        schema.emplace(*header.pSchema(), collector, instances);
    check::NoSink none;
    structure.vReadData(schema ? static_cast<check::StatementSink&>(*schema) : none);
    if (options.stop.stop_requested()) throw Stopped("the check was stopped");
    if (schema) schema->vFinish();

    result.statements = structure.iStatements();
    result.bytes = structure.iBytes();
    check::RuleLevel* const pRules = model.pFinish();
    const std::string sAgainstRules =
        boAsked(options, CheckLevel::Rules) ? sRules(pRules, header, instances, collector, result) : std::string();
    collector.vFinish(result);
    vConclude(result, options, CheckLevel::Syntax, {});
    vConclude(result, options, CheckLevel::Header, {});
    vConclude(result, options, CheckLevel::Schema, sAgainstSchema(header, schema));
    vConclude(result, options, CheckLevel::Rules, sAgainstRules);
    return result;
}

CheckResult checkFile(const std::filesystem::path& file, const CheckOptions& options) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) throw FileError(str::sOfPath(file) + ": cannot be read");
    return checkStream(stream, options);
}

}   // namespace oxa
