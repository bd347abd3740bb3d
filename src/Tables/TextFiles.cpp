// SPDX-License-Identifier: Apache-2.0
#include "Tables/TextFiles.h"

#include <algorithm>
#include <map>
#include <ostream>
#include <system_error>
#include <vector>

#include "Format/Ifc/IfcNumbers.h"
#include "Model/Error.h"
#include "Tables/SameColumns.h"
#include "platform/Path.h"
#include "platform/ReplacedFile.h"
#include "platform/Unfinished.h"

namespace oxa::tables {

namespace fs = std::filesystem;

bool looksLikeFormula(std::string_view text) noexcept {
    return !text.empty() && std::string_view("=+-@\t\r").find(text.front()) != std::string_view::npos;
}

void appendField(std::string& line, std::string_view text, char separator) {
    const auto boSpecial = [separator](char c) { return c == separator || c == '"' || c == '\r' || c == '\n'; };
    if (std::ranges::none_of(text, boSpecial)) {
        line += text;
        return;
    }
    line += '"';
    for (const char c : text) {
        if (c == '"') line += c;
        line += c;
    }
    line += '"';
}

namespace {

bool boNumber(std::string_view text) { return ifc::toDouble(text.data(), text.data() + text.size()).has_value(); }

void vCsvCell(const ColumnData& column, std::size_t iRow, std::string& sLine) {
    if (column.null(iRow)) return;
    const bool boText = !column.lists() && (column.type() == Type::Text || column.type() == Type::Json);
    if (!boText) return appendField(sLine, column.toText(iRow), ',');
    const std::string_view text = column.text(iRow);
    if (text.empty())
        sLine += "\"\"";
    else if (looksLikeFormula(text) && !boNumber(text))
        appendField(sLine, "'" + std::string(text), ',');
    else
        appendField(sLine, text, ',');
}

}   // namespace

struct TextFiles::State {
    State(TextForm eTextForm, fs::path path, std::ostream* pOnly)
        : eForm(eTextForm),
          folder(std::move(path)),
          pStream(pOnly),
          boFolder(!pOnly) {}

    struct File {
        std::string sPath;
        std::unique_ptr<stream::ReplacedFile> pFile;
    };

    // What a step of writing a file says, as the library's error.
    template <class Step>
    static auto written(const std::string& sPath, Step&& step) try {
        return step();
    } catch (const std::system_error& error) {
        throw FileError(sPath + ": can't be written: " + error.code().message());
    }

    void vOpen(const Table& table) {
        if (!boFolder) return;
        File& file = files[table.name];
        if (!file.pFile) {
            file.sPath = str::sOfPath(folder / str::pathOf(table.name + (eForm == TextForm::Csv ? ".csv" : ".ndjson")));
            file.pFile = written(file.sPath, [&] { return std::make_unique<stream::ReplacedFile>(file.sPath); });
        }
        pOpen = &file;
        pStream = &file.pFile->stream();
    }

    void vNamesWrite(const Table& table) {
        std::string sLine;
        for (const Column& column : table.columns) {
            if (!sLine.empty()) sLine += ',';
            appendField(sLine, column.name, ',');
        }
        vWrite(sLine += "\r\n");
    }

    void vWrite(const std::string& sRows) {
        pStream->write(sRows.data(), static_cast<std::streamsize>(sRows.size()));
        // What comes behind a full disk need not be made.
        if (!*pStream && pOpen) written(pOpen->sPath, [this] { pOpen->pFile->vFinish(); });
    }

    TextForm eForm;
    fs::path folder;
    std::ostream* pStream;
    bool boFolder;
    stream::Unfinished madeFolder;
    bool boFolderMade = false;
    SameColumns seen;
    std::map<std::string, File> files;   // by the name of the table
    File* pOpen = nullptr;
    std::vector<std::string> keys;   // of JSON: "name":
    std::string sText;
};

TextFiles::TextFiles(const fs::path& folder, TextForm form) : m_state(std::make_unique<State>(form, folder, nullptr)) {
    std::error_code error;
    if (fs::exists(folder, error) && !fs::is_directory(folder, error))
        throw FileError(str::sOfPath(folder) + ": is no folder");
    m_state->boFolderMade = fs::create_directory(folder, error);
    if (error) throw FileError(str::sOfPath(folder) + ": can't be made: " + error.default_error_condition().message());
    if (m_state->boFolderMade) m_state->madeFolder.vNote(folder);
}

TextFiles::TextFiles(std::ostream& out, TextForm form) : m_state(std::make_unique<State>(form, fs::path(), &out)) {}

TextFiles::~TextFiles() {
    m_state->files.clear();
    std::error_code error;   // a folder that holds something stays
    if (m_state->boFolderMade) fs::remove(m_state->folder, error);
}

void TextFiles::begin(const Table& table) {
    const bool boNew = m_state->seen.boAdd(table);
    if (!m_state->boFolder && m_state->seen.iCount() > 1) throw ValueError("a stream takes one table");
    m_state->vOpen(table);
    m_state->keys.clear();
    for (const Column& column : table.columns) {
        appendJsonText(m_state->keys.emplace_back(), column.name);
        m_state->keys.back() += ':';
    }
    if (boNew && m_state->eForm == TextForm::Csv) m_state->vNamesWrite(table);
}

void TextFiles::rows(const Batch& batch) {
    std::string& sText = m_state->sText;
    sText.clear();
    const auto& columns = batch.columns();
    const bool boCsv = m_state->eForm == TextForm::Csv;
    for (std::size_t iRow = 0; iRow < batch.rows(); ++iRow) {
        for (std::size_t i = 0; i < columns.size(); ++i) {
            if (boCsv) {
                if (i > 0) sText += ',';
                vCsvCell(columns[i], iRow, sText);
            } else {
                sText += i > 0 ? ',' : '{';
                sText += m_state->keys[i];
                columns[i].appendJson(iRow, sText);
            }
        }
        sText += boCsv ? "\r\n" : "}\n";
    }
    m_state->vWrite(sText);
}

void TextFiles::finish() {
    // A disk that is full is met before the first of them takes its place.
    for (const auto& step : {&stream::ReplacedFile::vClose, &stream::ReplacedFile::vFinish})
        for (auto& entry : m_state->files) {
            State::File& file = entry.second;
            State::written(file.sPath, [&] { (*file.pFile.*step)(); });
        }
    m_state->madeFolder.vForget();
    m_state->boFolderMade = false;
}

}   // namespace oxa::tables
