// SPDX-License-Identifier: Apache-2.0
// WrittenText: a small model, written in one of the ways that there are, as a text.
//
// For      the tests of writes.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Format/Ifc/IfcWriteFile.h"
#include "SmallModel.h"

namespace oxa::ifc::io {

using Lines = std::vector<std::string>;

inline Lines linesOf(const std::string& text) {
    Lines lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

inline ReadFileModel modelOf(std::string_view statements, bool boKeepIds = true) {
    return ReadFileModel(sFileOf(statements), true, schemaIs(smallSchema()), boKeepIds);
}

struct Written {
    bool boResult = false;
    std::string text;
    std::multiset<std::string> records;
};

// One of the ways to write, into a text.
template <class Write>
Written written(Write&& write) {
    std::ostringstream out;
    WriteError errors;
    Written result;
    result.boResult = write(out, errors);
    result.text = out.str();
    result.records = recordTexts(errors);
    return result;
}
inline Written fileOf(const File& file, bool boSingleThreaded = true, WriteProgress progress = {}) {
    return written([&](auto& out, auto& errors) { return file.boWrite(out, errors, progress, boSingleThreaded); });
}
inline Written dataOf(const Data& data, bool boSingleThreaded = true) {
    return written([&](auto& out, auto& errors) { return data.boWrite(out, errors, boSingleThreaded); });
}
inline Written entityOf(const Data& data, const Entity* pEntity, bool boSingleThreaded = true) {
    return written([&](auto& out, auto& errors) { return data.boWrite(pEntity, out, errors, boSingleThreaded); });
}

// A whole file, with options.
inline Written fileOf(const File& file, const WriteOptions& options) {
    return written([&](auto& out, auto& errors) { return file.boWrite(out, errors, options); });
}
// The statements of one entity and what it reaches, or of all for null, with options.
inline Written dataOf(const Data& data, const WriteOptions& options, const Entity* pEntity = nullptr) {
    return written([&](auto& out, auto& errors) { return WriteFile::boWrite(data, pEntity, out, errors, options); });
}

// Keeps what it gets, and which threads brought it.
struct RecordingWriter : IfcLineWriterInterface {
    std::vector<std::pair<std::string, unsigned>> m_lines;   // guarded by m_mutex
    std::set<std::thread::id> m_threads;                     // guarded by m_mutex
    std::mutex m_mutex;
    std::atomic<int> m_iFinished{0};

    std::size_t iLineAdd(std::string& line, unsigned iId) override {
        const std::lock_guard lock(m_mutex);
        EXPECT_EQ(m_iFinished, 0);
        m_lines.emplace_back(line, iId);
        m_threads.insert(std::this_thread::get_id());
        line = "whatever";   // the caller may rely on nothing
        return m_lines.size();
    }
    void vFinish() override { ++m_iFinished; }
};

inline const std::string g_sProject = "#1=IFCPROJECT('" + sGuidOf(0) + "',$,$);";

}   // namespace oxa::ifc::io
