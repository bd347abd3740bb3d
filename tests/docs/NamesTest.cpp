// SPDX-License-Identifier: Apache-2.0
// The documents about the source name files, folders, classes and operations that are there.
//
// Names    in backticks outside of blocks: with a slash or an ending of a source, a file or folder of the checkout, by
//          the end of its path; "Class::operation", two words of the headers; and in a table whose rows begin with a
//          header, classes that it declares.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "Examples.h"

namespace oxa::ifc {
namespace {

namespace fs = std::filesystem;

std::string sFileText(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

// Of all sources and documents, relative to the checkout, with the folders that they lie in.
const std::set<std::string>& paths() {
    static const std::set<std::string> found = [] {
        std::set<std::string> all;
        const fs::path root(OXA_SOURCE_DIR);
        for (const fs::directory_entry& top : fs::directory_iterator(root)) {
            const std::string sTop = top.path().filename().string();
            if (sTop.starts_with('.') || sTop == "build") continue;
            all.insert(sTop);
            if (!top.is_directory()) continue;
            for (const fs::directory_entry& entry : fs::recursive_directory_iterator(top))
                all.insert(entry.path().lexically_relative(root).generic_string());
        }
        return all;
    }();
    return found;
}

// Those whose path is this one, or ends with it.
std::vector<std::string> pathsOf(std::string sName) {
    if (sName.ends_with('/')) sName.pop_back();
    std::vector<std::string> found;
    for (const std::string& sPath : paths())
        if (sPath == sName || sPath.ends_with('/' + sName)) found.push_back(sPath);
    return found;
}

const std::string& headersText() {
    static const std::string text = [] {
        std::string all;
        for (const std::string& sPath : paths())
            if (sPath.starts_with("src/") && sPath.ends_with(".h")) all += sFileText(fs::path(OXA_SOURCE_DIR) / sPath);
        return all;
    }();
    return text;
}

bool boWord(const std::string& sText, const std::string& sWord) {
    const auto boPart = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; };
    for (std::size_t i = sText.find(sWord); i != std::string::npos; i = sText.find(sWord, i + 1)) {
        const std::size_t iEnd = i + sWord.size();
        if ((i == 0 || !boPart(sText[i - 1])) && (iEnd == sText.size() || !boPart(sText[iEnd]))) return true;
    }
    return false;
}

std::vector<std::string> inBackticks(const std::string& sLine) {
    std::vector<std::string> names;
    for (std::size_t i = sLine.find('`'); i != std::string::npos; i = sLine.find('`', i + 1)) {
        const std::size_t iEnd = sLine.find('`', i + 1);
        if (iEnd == std::string::npos) break;
        names.push_back(sLine.substr(i + 1, iEnd - i - 1));
        i = iEnd;
    }
    return names;
}

// Lines outside of blocks; a paragraph is one line, since a name may not break but its neighbours may.
std::vector<std::string> proseOf(const std::string& sPath) {
    std::vector<std::string> prose(1);
    bool boFence = false;
    std::ifstream in(fs::path(OXA_SOURCE_DIR) / sPath);
    for (std::string sLine; std::getline(in, sLine);) {
        if (sLine.starts_with("```")) boFence = !boFence;
        if (boFence || sLine.starts_with("```")) continue;
        if (sLine.empty() || sLine.starts_with('|'))
            prose.push_back(sLine);
        else
            prose.back() += ' ' + sLine;
    }
    return prose;
}

class DocumentNames : public testing::TestWithParam<std::string> {};

TEST_P(DocumentNames, AreThere) {
    static const std::regex file(R"([\w.-]+/[\w./-]*|[\w./-]+\.(h|cpp|cmake|md|txt))");
    static const std::regex member(R"((\w+)::(\w+)(\(\))?)");
    std::size_t iNames = 0;
    for (const std::string& sLine : proseOf(GetParam()))
        for (const std::string& sName : inBackticks(sLine)) {
            std::smatch parts;
            if (std::regex_match(sName, file)) {
                EXPECT_FALSE(pathsOf(sName).empty()) << sName;
            } else if (std::regex_match(sName, parts, member) && parts[1] != "oxa" && parts[1] != "std") {
                EXPECT_TRUE(boWord(headersText(), parts[1]) && boWord(headersText(), parts[2])) << sName;
            } else {
                continue;
            }
            ++iNames;
        }
    EXPECT_GT(iNames, 0U);
}

// "`A.h`, `B.h` | `X`, `Y`: what they are": each class is declared by one of the headers.
TEST_P(DocumentNames, OfClassesStandInTheirHeaders) {
    for (const std::string& sLine : proseOf(GetParam())) {
        const std::vector<std::string> cells = cellsOf(sLine);
        if (cells.size() < 2 || !cells[0].ends_with(".h`")) continue;
        std::string sText;
        for (const std::string& sHeader : inBackticks(cells[0]))
            for (const std::string& sPath : pathsOf(sHeader)) sText += sFileText(fs::path(OXA_SOURCE_DIR) / sPath);
        for (const std::string& sClass : inBackticks(cells[1]))
            EXPECT_TRUE(std::regex_search(
                sText, std::regex("(class|struct|enum class|auto|void|bool) (OXA_\\w+ )?" + sClass + "( final)?\\b")))
                << cells[0] << " does not declare " << sClass;
    }
}

INSTANTIATE_TEST_SUITE_P(Docs, DocumentNames,
                         testing::Values("docs/adding.md", "docs/architecture.md", "docs/platforms.md",
                                         "docs/reading.md", "docs/simple-form.md", "tests/README.md"),
                         [](const testing::TestParamInfo<std::string>& row) {
                             std::string sName = fs::path(row.param).generic_string();
                             std::ranges::replace_if(
                                 sName, [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
                             return sName;
                         });

}   // namespace
}   // namespace oxa::ifc
