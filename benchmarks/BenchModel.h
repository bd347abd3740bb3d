// SPDX-License-Identifier: Apache-2.0
// BenchModel: what the benchmarks read from, write to, and measure against.
#pragma once

#include <algorithm>
#include <cstring>
#include <istream>
#include <memory>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>

#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileError.h"
#include "platform/SharedBytes.h"

namespace oxa::bench {

using namespace oxa::ifc;

// Reads from memory without a copy.
class MemoryStream final : public std::istream {
public:
    explicit MemoryStream(std::string_view text) : std::istream(nullptr), m_buffer(text) { rdbuf(&m_buffer); }

private:
    stream::MemoryBuffer m_buffer;
};

// Takes what it gets and keeps nothing.
class NullStream final : public std::ostream {
public:
    NullStream() : std::ostream(nullptr) { rdbuf(&m_buffer); }

private:
    struct Buffer final : std::streambuf {
        std::streamsize xsputn(const char*, std::streamsize iCount) override { return iCount; }
        int overflow(int c) override { return c; }
    } m_buffer;
};

inline std::size_t iSemicolons(std::string_view text) {
    std::size_t iCount = 0;
    for (const char* p = text.data();
         (p = static_cast<const char*>(std::memchr(p, ';', static_cast<std::size_t>(text.data() + text.size() - p))));
         ++p)
        ++iCount;
    return iCount;
}

// The measure: a splitter as anyone would write it, strings and comments looked at, each statement copied without
// its blanks.
inline std::size_t iPlainSplit(std::string_view text) {
    std::size_t iStatements = 0;
    std::string statement;
    bool boString = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (boString) {
            boString = c != '\'';
            statement += c;
        } else if (c == '\'') {
            boString = true;
            statement += c;
        } else if (c == '/' && i + 1 < text.size() && text[i + 1] == '*') {
            i = std::min(text.find("*/", i + 2), text.size() - 2) + 1;
        } else if (c == ';') {
            statement += c;
            ++iStatements;
            statement.clear();
        } else if (c != ' ' && c != '\n' && c != '\r') {
            statement += c;
        }
    }
    return iStatements;
}

struct Model {
    File file;
    std::unique_ptr<io::ReadError> pError = io::ReadError::pAllocate();

    bool boRead(std::string_view text, bool boSingleThreaded = true) {
        MemoryStream in(text);
        return file.boRead(in, {}, *pError, true, {}, boSingleThreaded);
    }
};

}   // namespace oxa::bench
