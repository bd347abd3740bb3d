// SPDX-License-Identifier: Apache-2.0
// CheckBinding: whether a file, or what a model would be written as, is valid. oxaifc/_check.py puts it before the user.
#include <nanobind/stl/string.h>
#include <nanobind/stl/vector.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <istream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "Bindings.h"
#include "Check/Check.h"
#include "Model/Archive.h"
#include "Model/Error.h"
#include "Results.h"
#include "Source.h"

namespace oxa::python {

namespace {

constexpr std::array<const char*, 3> g_states{"not asked", "done", "not possible"};
constexpr std::array<const char*, 3> g_verdicts{"valid", "not valid", "undecided"};

nb::object numberOrNone(std::uint64_t uNumber) { return uNumber ? nb::object(nb::int_(uNumber)) : nb::none(); }

nb::object groupToPython(const oxa::CheckGroup& group) {
    const nb::object place = resultClass("CheckPlace");
    const nb::list places = listOf(group.places, [&](const oxa::CheckPlace& one) {
        return place(numberOrNone(one.line), numberOrNone(one.column), numberOrNone(one.id), textOrNone(one.found));
    });
    return resultClass("CheckGroup")(std::string(oxa::checkLevelName(group.level)),
                                     group.weight == oxa::CheckWeight::Note ? "note" : "failure", group.key,
                                     textOrNone(group.rule), textOrNone(group.type), textOrNone(group.attribute),
                                     textToPython(group.message), textOrNone(group.expected), group.count, places);
}

nb::object resultToPython(const oxa::CheckResult& result) {
    nb::dict levels;
    for (std::size_t i = 0; i < oxa::checkLevelCount; ++i) {
        const oxa::CheckLevelSummary& level = result.levels[i];
        const auto name = oxa::checkLevelName(static_cast<oxa::CheckLevel>(i));
        const char* const pState = g_states[static_cast<std::size_t>(level.state)];
        levels[textToPython(name)] =
            resultClass("CheckLevel")(pState, textOrNone(level.reason), level.failures, level.notes);
    }
    return resultClass("CheckReport")(g_verdicts[static_cast<std::size_t>(result.verdict())],
                                      listOf(result.groups, groupToPython), levels, result.placesLeftOut);
}

oxa::CheckOptions optionsFrom(const std::vector<std::string>& levels, std::size_t iMost, unsigned uThreads, Job& job) {
    oxa::CheckOptions options;
    options.levels.fill(levels.empty());
    for (const std::string& sLevel : levels) {
        std::size_t i = 0;
        while (i < oxa::checkLevelCount && oxa::checkLevelName(static_cast<oxa::CheckLevel>(i)) != sLevel) ++i;
        if (i == oxa::checkLevelCount)
            throw oxa::ValueError("there is no level " + sLevel + "; there are: syntax, header, schema, rules");
        options.levels[i] = true;
    }
    options.mostPlaces = iMost;
    options.threads = uThreads;
    options.stop = job.token();
    options.progress = job.progress();
    return options;
}

// A packed file is unpacked into memory: the rules ask for it twice.
oxa::CheckResult checkedPath(const std::string& sPath, const oxa::CheckOptions& options) {
    std::ifstream file(sPath, std::ios::binary);
    char first[4]{};
    file.read(first, sizeof first);
    const oxa::Packing packing = oxa::packingOf({first, static_cast<std::size_t>(file.gcount())});
    if (!file.is_open() || packing == oxa::Packing::None) return oxa::checkFile(sPath, options);
    file.clear();
    file.seekg(0);
    oxa::Unpacked unpacked(packing, *file.rdbuf(), sPath, sPath);
    std::stringstream bytes;
    bytes << &unpacked.bytes();
    if (!unpacked.fault().empty()) throw oxa::FileError(unpacked.fault());
    return oxa::checkStream(bytes, options);
}

nb::object checkPath(nb::handle path, const std::vector<std::string>& levels, std::size_t iMost, unsigned uThreads,
                     nb::handle progress) {
    const std::string sPath = *pathOf(path);
    Job job(progress, "B", std::filesystem::path(sPath).filename().string());
    const oxa::CheckOptions options = optionsFrom(levels, iMost, uThreads, job);
    return resultToPython(job.run([&] {
        const nb::gil_scoped_release released;
        return checkedPath(sPath, options);
    }));
}

nb::object checkBytes(nb::bytes bytes, const std::vector<std::string>& levels, std::size_t iMost, unsigned uThreads,
                      nb::handle progress) {
    Job job(progress, "B", "bytes");
    const oxa::CheckOptions options = optionsFrom(levels, iMost, uThreads, job);
    std::istringstream stream(std::string(bytes.c_str(), bytes.size()));
    return resultToPython(job.run([&] {
        const nb::gil_scoped_release released;
        return oxa::checkStream(stream, options);
    }));
}

nb::object checkModel(nb::handle self, const std::vector<std::string>& levels, std::size_t iMost, unsigned uThreads,
                      nb::handle progress) {
    const Home home = Home::of(self);
    Job job(progress, "B", "model");
    const oxa::CheckOptions options = optionsFrom(levels, iMost, uThreads, job);
    return resultToPython(job.run([&] {
        std::stringstream bytes;
        const Alone alone(home.pModel->access());
        home.pModel->unguarded().save(bytes, {.format = oxa::Format::Step, .threads = uThreads, .stop = job.token()});
        return oxa::checkStream(bytes, options);
    }));
}

template <class... Extra>
void vDefine(nb::module_& module, const char* pName, nb::object (*call)(Extra...), const char* pWhat) {
    module.def(pName, call, nb::arg(pWhat), nb::arg("levels"), nb::arg("most_places"), nb::arg("threads"),
               nb::arg("progress") = nb::none());
}

}   // namespace

void vBindCheck(nb::module_& module) {
    vDefine(module, "check_path", &checkPath, "path");
    vDefine(module, "check_bytes", &checkBytes, "data");
    vDefine(module, "check_model", &checkModel, "model");
}

}   // namespace oxa::python
