// SPDX-License-Identifier: Apache-2.0
// ModelBench [LARGEST_MB [ROUNDS]]: what reading, writing and ifcXML cost from 1 MB up to that size.
//
// Models    generated ones of three mixes (ModelGenerator.h), so that every machine has the same.
// Timed     from the bytes in memory to the model and back to a stream that keeps nothing; freeing is not.
// Rows      reference points over the same bytes in the same run, then the library; MB/s of the text, and in
//           parentheses the ratio to the plain splitter. A row's figure is the median of its rounds.
// Memory    of a fresh process, after the read and at its peak, against what the values need by their sizes.
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <optional>
#include <sstream>

#include <fast_float/fast_float.h>

#include "BenchMemory.h"
#include "BenchModel.h"
#include "BenchTable.h"
#include "Format/Ifc/Xml/IfcXmlExport.h"
#include "Format/Ifc/Xml/IfcXmlImport.h"
#include "ModelGenerator.h"
#include "NeededMemory.h"

namespace {

using namespace oxa::bench;

// A document has some six times the text, and is kept.
constexpr std::size_t g_iLargestXml = 100'000'000;

// The reals of a text, as they stand.
std::vector<std::string_view> numbersOf(std::string_view text) {
    std::vector<std::string_view> numbers;
    for (std::size_t i = text.find("DATA;"); i < text.size();) {
        const std::size_t iStart = text.find_first_of("0123456789", i);
        if (iStart == std::string_view::npos) break;
        i = std::min(text.find_first_not_of("0123456789.E-", iStart), text.size());
        const std::string_view number = text.substr(iStart, i - iStart);
        if (text[iStart - 1] != '#' && number.find('.') != std::string_view::npos) numbers.push_back(number);
    }
    return numbers;
}

using Memories = std::array<Memory, 2>;   // of a single-threaded read, of a threaded one

Memories memoriesOf(Mix mix, std::size_t iBytes) {
    const std::string text = sGeneratedModel(mix, iBytes);
    const auto memory = [&text](bool boSingleThreaded) {
        return memoryOf([&] {
            auto pModel = std::make_unique<Model>();
            pModel->boRead(text, boSingleThreaded);
            return pModel;
        });
    };
    return {memory(true), memory(false)};
}

// All that is measured of one generated model.
class Measured {
public:
    Measured(Mix mix, std::size_t iBytes, int iRounds, const Memories& memories)
        : m_text(sGeneratedModel(mix, iBytes)),
          m_memories(memories) {
        const std::string endless = m_text.substr(0, m_text.rfind("ENDSEC"));
        const std::vector<std::string_view> numbers = numbersOf(m_text);
        std::string copy(m_text.size(), '\0');
        const auto fresh = [this] { m_model.emplace(); };
        m_rows = {
            {"memcpy", [&] { std::memcpy(copy.data(), m_text.data(), m_text.size()); }, {}, {}},
            {"memchr for \";\"", [&] { m_iSink += iSemicolons(m_text); }, {}, {}},
            {"fast_float over the reals", [&] { m_iSink += iRead(numbers); }, {}, {}},
            {"plain splitter", [&] { m_iSink += iPlainSplit(m_text); }, {}, {}},
            {"read without completion", [&] { m_model->boRead(endless); }, fresh, {}},
            {"read", [&] { m_model->boRead(m_text); }, fresh, {}},
            {"read, threaded", [&] { m_model->boRead(m_text, false); }, fresh, {}},
            {"write", [&] { vWrite(true); }, {}, {}},
            {"write, threaded", [&] { vWrite(false); }, {}, {}},
        };
        if (m_text.size() <= g_iLargestXml + 1'000'000) vXmlRowsAdd();
        vRunRounds(m_rows, iRounds);
        for (Row& row : m_rows) row.run = nullptr;   // what they look at goes with this call
        const oxa::ifc::Data& data = m_model->file.data();
        m_iEntities = data.entities().size();
        m_iNeeded = iNeededBytes(data);
        m_model.reset();
        m_document = {};
    }

    [[nodiscard]] double megabytes() const { return static_cast<double>(m_text.size()) / 1e6; }
    [[nodiscard]] const std::vector<Row>& rows() const { return m_rows; }
    [[nodiscard]] double seconds(const char* sRow) const {
        for (const Row& row : m_rows)
            if (row.sName == sRow) return row.median();
        return std::nan("");
    }
    [[nodiscard]] double completionNs() const {
        return (seconds("read") - seconds("read without completion")) * 1e9 / static_cast<double>(m_iEntities);
    }
    [[nodiscard]] double memoryAfter(bool boNeeded) const {
        return m_memories[0].after / static_cast<double>(boNeeded ? m_iNeeded : m_text.size());
    }
    [[nodiscard]] double memoryPeak(std::size_t i) const { return m_memories[i].peak / static_cast<double>(m_iNeeded); }

private:
    static std::size_t iRead(const std::vector<std::string_view>& numbers) {
        std::size_t iGood = 0;
        double value = 0;
        for (const std::string_view number : numbers)
            iGood += fast_float::from_chars(number.data(), number.data() + number.size(), value).ec == std::errc{};
        return iGood;
    }

    void vWrite(bool boSingleThreaded) {
        NullStream out;
        m_model->file.data().boWrite(out, m_errors, boSingleThreaded);
    }

    void vXmlRowsAdd() {
        Model model;
        model.boRead(m_text);
        std::ostringstream document;
        vXmlWrite(model, document);
        m_document = std::move(document).str();
        m_rows.push_back({"ifcXML out",
                          [this] {
                              NullStream out;
                              vXmlWrite(*m_model, out);
                          },
                          {},
                          {}});
        m_rows.push_back(
            {"ifcXML in", [this] { m_imported->vXmlRead(m_document); }, [this] { m_imported.emplace(); }, {}});
    }

    static void vXmlWrite(Model& model, std::ostream& out) {
        oxa::ifc::xml::Export document;
        document.boExportHeader(model.file.header());
        document.boExportData(model.file.data(), {});
        document.boSave(out);
    }

    struct Imported {
        oxa::ifc::File file;
        void vXmlRead(std::string_view document) {
            MemoryStream in(document);
            oxa::ifc::xml::Import import;
            if (import.boLoad(in) && import.boImportHeader(file, {})) import.boImportData(file.data());
        }
    };

    std::string m_text;
    std::string m_document;
    std::optional<Model> m_model;
    std::optional<Imported> m_imported;
    oxa::ifc::io::WriteError m_errors;
    std::vector<Row> m_rows;
    std::size_t m_iEntities = 0;
    std::size_t m_iNeeded = 0;
    std::size_t m_iSink = 0;
    Memories m_memories;
};

template <class Value>
void vPrintRow(const char* sName, const std::deque<Measured>& models, const char* sFormat, Value&& value) {
    std::printf("%-40s", sName);
    for (const Measured& model : models) std::printf(sFormat, value(model));
    std::printf("\n");
}

void vPrintTable(const char* sMix, const std::deque<Measured>& models) {
    vPrintRow((std::string(sMix) + ", MB").c_str(), models, "%16.0f", [](const Measured& m) { return m.megabytes(); });
    for (const Row& row : models.front().rows()) {
        std::printf("%-40s", row.sName.c_str());
        for (const Measured& model : models) {
            const double seconds = model.seconds(row.sName.c_str());
            if (std::isnan(seconds))
                std::printf("%16s", "-");
            else
                std::printf("%9.1f (%4.2f)", model.megabytes() / seconds, model.seconds("plain splitter") / seconds);
        }
        std::printf("\n");
    }
    vPrintRow("completion, ns an entity", models, "%16.1f", [](const Measured& m) { return m.completionNs(); });
    vPrintRow("cost of a MB, read, first size = 1", models, "%16.2f", [&](const Measured& m) {
        return m.seconds("read") / m.megabytes() / (models.front().seconds("read") / models.front().megabytes());
    });
    vPrintRow("memory after the read, bytes a byte", models, "%16.2f",
              [](const Measured& m) { return m.memoryAfter(false); });
    vPrintRow("  against what the values need", models, "%16.2f",
              [](const Measured& m) { return m.memoryAfter(true); });
    vPrintRow("  at the peak", models, "%16.2f", [](const Measured& m) { return m.memoryPeak(0); });
    vPrintRow("  at the peak, threaded", models, "%16.2f", [](const Measured& m) { return m.memoryPeak(1); });
    std::printf("\n");
}

}   // namespace

int main(int argc, char** argv) {
    const double largest = argc > 1 ? std::atof(argv[1]) : 10;
    const int iRounds = argc > 2 ? std::atoi(argv[2]) : 5;
    if (!(largest > 0) || iRounds < 1) {
        std::fprintf(stderr, "usage: ModelBench [LARGEST_MB [ROUNDS]]\n");
        return 2;
    }
    constexpr std::pair<Mix, const char*> g_mixes[] = {
        {Mix::Geometry, "geometry"}, {Mix::Properties, "properties"}, {Mix::Both, "both"}};
    std::vector<std::size_t> sizes;
    for (const double size : {std::min(1., largest), 10., 100., 500.})
        if (size <= largest) sizes.push_back(static_cast<std::size_t>(size * 1e6));

    Model().boRead(sGeneratedModel(Mix::Both, 1000));   // loads the schema, which models share
    // All memory first: what later rows leave behind in this process, a child would use again unseen.
    std::vector<Memories> memories;
    for (const auto& [mix, sMix] : g_mixes)
        for (const std::size_t iBytes : sizes) memories.push_back(memoriesOf(mix, iBytes));
    auto memory = memories.begin();
    for (const auto& [mix, sMix] : g_mixes) {
        std::deque<Measured> models;
        for (const std::size_t iBytes : sizes) models.emplace_back(mix, iBytes, iRounds, *memory++);
        vPrintTable(sMix, models);
    }
    return 0;
}
