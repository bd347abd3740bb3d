// SPDX-License-Identifier: Apache-2.0
// InstructionRun SCENARIO: one piece of work on a fixed input, for a count of its instructions.
//
// The counter collects inside vMeasured alone: what prepares a scenario does not count. See check.sh.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <functional>
#include <optional>
#include <sstream>
#include <string>

#include "BenchModel.h"
#include "Format/Ifc/Xml/IfcXmlExport.h"
#include "Format/Ifc/Xml/IfcXmlImport.h"
#include "ModelGenerator.h"
#include "provider/SchemaLoader.h"

using namespace oxa::bench;

extern "C" __attribute__((noinline)) void vMeasured(const std::function<void()>& work) { work(); }

namespace {

constexpr std::size_t g_iBytes = 300'000;
constexpr int g_iGets = 10'000;   // of one real by its attribute's name

std::string sDocumentOf(Model& model) {
    oxa::ifc::xml::Export document;
    document.boExportHeader(model.file.header());
    document.boExportData(model.file.data(), {});
    std::ostringstream out;
    document.boSave(out);
    return std::move(out).str();
}

bool boImport(const std::string& sDocument) {
    oxa::ifc::File file;
    MemoryStream in(sDocument);
    oxa::ifc::xml::Import import;
    return import.boLoad(in) && import.boImportHeader(file, {}) && import.boImportData(file.data());
}

// False for an unknown scenario.
bool boRun(const std::string& sScenario) {
    if (sScenario == "schema") {
        vMeasured([] { oxa::ifc::SchemaLoader::pSchemaGet({}, "IFC4"); });
        return true;
    }
    const std::string text = sGeneratedModel(Mix::Both, g_iBytes);
    Model().boRead(sGeneratedModel(Mix::Both, 1000));   // loads the schema
    std::optional<Model> model(std::in_place);
    if (sScenario == "scan") {
        const std::string headless = "ISO-10303-21;" + text.substr(text.find("DATA;"));
        vMeasured([&] { model->boRead(headless); });
        return true;
    }
    if (sScenario == "read") {
        vMeasured([&] { model->boRead(text); });
        return true;
    }
    model->boRead(text);
    if (sScenario == "write") {
        std::ostringstream out;
        oxa::ifc::io::WriteError errors;
        vMeasured([&] { model->file.data().boWrite(out, errors, true); });
        return true;
    }
    if (sScenario == "by-name") {
        const auto& entities = model->file.data().entities();
        const auto storey = std::ranges::find_if(
            entities, [](const Entity* pEntity) { return pEntity->schemaEntity().sNameUpper == "IFCBUILDINGSTOREY"; });
        const def::schema::AttributeName name("Elevation");
        double sum = 0;
        vMeasured([&] {
            for (int i = 0; i < g_iGets; ++i) {
                double value = 1;
                if ((*storey)->boValueGet(name, value)) sum += value;
            }
        });
        return sum == 0;
    }
    if (sScenario == "ifcxml-out") {
        vMeasured([&] { sDocumentOf(*model); });
        return true;
    }
    if (sScenario == "ifcxml-in") {
        const std::string sDocument = sDocumentOf(*model);
        vMeasured([&] { boImport(sDocument); });
        return true;
    }
    return false;
}

}   // namespace

int main(int argc, char** argv) {
    if (argc == 2 && boRun(argv[1])) return 0;
    std::fprintf(stderr, "usage: InstructionRun schema|scan|read|write|by-name|ifcxml-out|ifcxml-in\n");
    return 2;
}
