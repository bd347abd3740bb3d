// SPDX-License-Identifier: Apache-2.0
// FileRows: the tables of what a file says of itself: file, unit, error.
#include <algorithm>
#include <filesystem>
#include <tuple>

#include "Format/Ifc/IfcFile.h"
#include "Tables/Rows.h"
#include "platform/Path.h"

namespace oxa::tables::detail {

namespace {

constexpr ColumnRow g_fileColumns[] = {
    {"file", Type::Text, false, Lookup::None, "what tells files apart: the path as it was given"},
    {"path", Type::Text, true, Lookup::None, "the whole path; none for standard input"},
    {"schema", Type::Text, false, Lookup::None, "as in IFC4"},
    {"name", Type::Text, true, Lookup::None, "of the file, as in house.ifc"},
    {"size", Type::Integer, true, Lookup::None, "in bytes"},
    {"sha256", Type::Text, true, Lookup::None, "of the bytes, 64 hexadecimal digits"},
    {"description", Type::Text, true, Lookup::None, "FILE_DESCRIPTION; of several a JSON array, below too"},
    {"implementation_level", Type::Text, true, Lookup::None, "FILE_DESCRIPTION, as in 2;1"},
    {"header_name", Type::Text, true, Lookup::None, "FILE_NAME: the name that the writer gave it"},
    {"time_stamp", Type::Text, true, Lookup::None, "FILE_NAME, as in 2026-01-01T00:00:00"},
    {"author", Type::Text, true, Lookup::None, "FILE_NAME"},
    {"organization", Type::Text, true, Lookup::None, "FILE_NAME"},
    {"preprocessor_version", Type::Text, true, Lookup::None, "FILE_NAME: what wrote the file"},
    {"originating_system", Type::Text, true, Lookup::None, "FILE_NAME: what the model comes from"},
    {"authorization", Type::Text, true, Lookup::None, "FILE_NAME"},
};

constexpr ColumnRow g_unitColumns[] = {
    g_fileColumn,
    {"id", Type::Integer, false, Lookup::None, "the instance number"},
    {"type", Type::Text, false, Lookup::None, "what it measures, as in LENGTHUNIT"},
    {"name", Type::Text, true, Lookup::None, "as in millimetre; of a unit of the file's own what that calls it"},
    {"symbol", Type::Text, true, Lookup::None, "as in mm"},
    {"si_symbol", Type::Text, true, Lookup::None, "as in m; none where the unit has no SI value"},
    {"si_factor", Type::Number, true, Lookup::None, "SI values a value of this unit"},
    {"si_offset", Type::Number, true, Lookup::None, "added behind the factor, as for degrees Celsius"},
};

constexpr ColumnRow g_errorColumns[] = {
    g_fileColumn,
    {"severity", Type::Text, false, Lookup::None, "error, or fatal where the file was given up"},
    {"category", Type::Text, false, Lookup::None,
     "syntax, header, value, null, reference, model, identifier or schema"},
    {"key", Type::Text, false, Lookup::Text, "the same in all languages, as in Error_UnknownEntityType"},
    {"line", Type::Integer, true, Lookup::None, "of the file, from 1"},
    {"entity_id", Type::Integer, true, Lookup::None, "the instance number"},
    {"message", Type::Text, false, Lookup::None, "for people"},
};

// Rows that are no instances': a step is a row.
class PlainRows : public RowMaker {
public:
    explicit PlainRows(Context& context) : m_context(context) {}
    [[nodiscard]] const ifc::Entity* pEntity(std::size_t) const noexcept override { return nullptr; }

protected:
    [[nodiscard]] Context& context() const noexcept { return m_context; }

private:
    Context& m_context;
};

class FileRow final : public PlainRows {
public:
    using PlainRows::PlainRows;
    [[nodiscard]] std::size_t iSteps() const noexcept override { return 1; }

    void vStep(std::size_t, Batch& batch) override {
        const FileInfo& file = context().file();
        RowWriter row(batch);
        row.vText(file.file);
        std::error_code error;
        const std::filesystem::path path = std::filesystem::absolute(str::pathOf(file.path), error);
        row.vTextOrNull(file.path.empty() || error ? file.path : str::sOfPath(path.lexically_normal()));
        row.vText(context().state().schema().sName);
        row.vTextOrNull(str::sOfPath(str::pathOf(file.path).filename()));
        file.size ? row.vInteger(static_cast<std::int64_t>(*file.size)) : row.vNull();
        row.vTextOrNull(file.sha256 && row.boWanted() ? file.sha256() : std::string());
        const auto* pFile = dynamic_cast<const ifc::File*>(&context().state().file());
        const ifc::FileHeader none;
        const ifc::FileHeader& header = pFile ? pFile->header() : none;
        row.vTextOrNull(sOfList(header.description.descriptions));
        row.vTextOrNull(pFile ? std::string_view(header.description.implementationLevel) : std::string_view());
        row.vTextOrNull(std::string_view(header.name.name));
        row.vTextOrNull(std::string_view(header.name.timeStamp));
        row.vTextOrNull(sOfList(header.name.author));
        row.vTextOrNull(sOfList(header.name.organization));
        row.vTextOrNull(std::string_view(header.name.preprocessorVersion));
        row.vTextOrNull(std::string_view(header.name.originatingSystem));
        row.vTextOrNull(std::string_view(header.name.authorization));
    }

private:
    static std::string sOfList(const std::vector<std::string>& texts) {
        if (texts.size() < 2) return texts.empty() ? std::string() : texts.front();
        std::string sJson;
        for (const std::string& sText : texts) {
            sJson += sJson.empty() ? '[' : ',';
            appendJsonText(sJson, sText);
        }
        return sJson + ']';
    }
};

class UnitRows final : public PlainRows {
public:
    explicit UnitRows(Context& context) : PlainRows(context), m_units(context.units().all()) {}
    [[nodiscard]] std::size_t iSteps() const noexcept override { return m_units.size(); }

    void vStep(std::size_t iStep, Batch& batch) override {
        const oxa::Unit& unit = m_units[iStep];
        const bool boSi = !unit.siSymbol.empty();
        RowWriter row(batch);
        row.vText(context().file().file);
        row.vInteger(static_cast<std::int64_t>(unit.element.id()));
        row.vText(unit.type);
        row.vTextOrNull(std::string_view(unit.name));
        row.vTextOrNull(std::string_view(unit.symbol));
        row.vTextOrNull(std::string_view(unit.siSymbol));
        row.vNumber(boSi ? std::optional(unit.factor) : std::nullopt);
        row.vNumber(boSi ? std::optional(unit.offset) : std::nullopt);
    }

private:
    const std::vector<oxa::Unit>& m_units;   // of the context
};

// In the order of the file, whatever the order in which threads met them; those without a line at the end.
class ErrorRows final : public PlainRows {
public:
    explicit ErrorRows(Context& context) : PlainRows(context) {
        for (const ifc::ErrorRecord& record : context.file().records)
            m_records.push_back(oxa::detail::recordOf(record));
        if (m_records.empty()) m_records = context.state().records();
        const auto place = [](const Record& record) {
            return std::tuple(record.line == 0, record.line, record.id.value_or(0), std::string_view(record.key),
                              std::string_view(record.message));
        };
        std::ranges::stable_sort(m_records, {}, place);
    }
    [[nodiscard]] std::size_t iSteps() const noexcept override { return m_records.size(); }

    void vStep(std::size_t iStep, Batch& batch) override {
        const Record& record = m_records[iStep];
        RowWriter row(batch);
        row.vText(context().file().file);
        row.vText(record.severity == Record::Severity::Fatal ? "fatal" : "error");
        row.vText(record.category);
        row.vText(record.key);
        record.line ? row.vInteger(static_cast<std::int64_t>(record.line)) : row.vNull();
        record.id ? row.vInteger(static_cast<std::int64_t>(*record.id)) : row.vNull();
        row.vText(record.message);
    }

private:
    std::vector<Record> m_records;
};

template <class Rows>
std::unique_ptr<RowMaker> pMake(Context& context) {
    return std::make_unique<Rows>(context);
}

}   // namespace

extern const TableRow g_tableFile{"file", "A file", g_fileColumns, pMake<FileRow>};
extern const TableRow g_tableUnit{"unit", "A unit that the project assigns", g_unitColumns, pMake<UnitRows>};
extern const TableRow g_tableError{"error", "A record of what is wrong with the file", g_errorColumns,
                                   pMake<ErrorRows>};

}   // namespace oxa::tables::detail
