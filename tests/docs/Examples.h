// SPDX-License-Identifier: Apache-2.0
// Examples: what a document of docs/ shows as input and result, cut out of its text.
//
// For      the tests that hold documents to what they say.
// Block    ```step, or ```step and a word, opens an example; the line "---" parts what is read from what comes of it. In
//          the input <09> with angle brackets of mathematics, U+27E8 and U+27E9, is the byte of that code. In a line of
//          the result "..." stands for any text.
// Schema   a block ```express is the schema of the examples of its document.
// Table    a row whose first cell is a report's key in backticks.
#pragma once

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace oxa::ifc {

struct Example {
    std::string sKind;       // behind "step": empty, "file", "simple", "rewrite"
    std::size_t iLine = 0;   // in the document
    std::string sInput;      // without the line feed of its last line
    std::string sExpected;   // a line feed behind each line
};

struct KeyRow {
    std::string sKey;
    std::vector<std::string> cells;   // behind the key, without blanks at their ends
};

struct Document {
    std::string sSchema;   // EXPRESS
    std::vector<Example> examples;
    std::vector<KeyRow> keys;
};

// Text with each byte that was named by its code in place of the name.
inline std::string sWithBytes(std::string sText) {
    constexpr std::string_view sOpen = "\xE2\x9F\xA8";    // U+27E8
    constexpr std::string_view sClose = "\xE2\x9F\xA9";   // U+27E9
    for (std::size_t i = sText.find(sOpen); i != std::string::npos; i = sText.find(sOpen, i + 1)) {
        const std::size_t iClose = sText.find(sClose, i);
        if (iClose != i + sOpen.size() + 2) throw std::runtime_error("not one byte: " + sText);
        const int iByte = std::stoi(sText.substr(i + sOpen.size(), 2), nullptr, 16);
        sText.replace(i, iClose + sClose.size() - i, 1, static_cast<char>(iByte));
    }
    return sText;
}

// The cells of a row of a table. Empty where the line is none.
inline std::vector<std::string> cellsOf(const std::string& sLine) {
    std::vector<std::string> cells;
    if (!sLine.starts_with("|")) return cells;
    std::istringstream in(sLine.substr(1));
    for (std::string sCell; std::getline(in, sCell, '|');) {
        sCell.erase(0, std::min(sCell.find_first_not_of(' '), sCell.size()));
        sCell.erase(sCell.find_last_not_of(' ') + 1);
        cells.push_back(std::move(sCell));
    }
    return cells;
}

inline Document documentOf(const std::string& sPath) {
    std::ifstream in(sPath);
    if (!in) throw std::runtime_error(sPath + " can't be read");
    Document document;
    std::string* pBlock = nullptr;   // what lines are added to
    bool boFence = false;
    std::size_t iLine = 0;
    for (std::string sLine; std::getline(in, sLine);) {
        ++iLine;
        if (sLine.starts_with("```")) {
            boFence = !boFence;
            pBlock = nullptr;
            if (!boFence) continue;
            const std::string sInfo = sLine.substr(3);
            if (sInfo == "express") pBlock = &document.sSchema;
            if (sInfo == "step" || sInfo.starts_with("step "))
                pBlock =
                    &document.examples
                         .emplace_back(Example{sInfo.substr(std::min<std::size_t>(5, sInfo.size())), iLine, {}, {}})
                         .sInput;
        } else if (pBlock && pBlock != &document.sSchema && sLine == "---") {
            pBlock = &document.examples.back().sExpected;
        } else if (pBlock) {
            *pBlock += sLine + '\n';
        } else if (std::vector<std::string> cells = cellsOf(sLine); !cells.empty() && cells[0].starts_with("`Error_")) {
            document.keys.push_back({cells[0].substr(1, cells[0].size() - 2), {cells.begin() + 1, cells.end()}});
        }
    }
    if (boFence) throw std::runtime_error(sPath + " ends inside a block");
    for (Example& example : document.examples) {
        if (!example.sInput.empty()) example.sInput.pop_back();
        example.sInput = sWithBytes(std::move(example.sInput));
    }
    return document;
}

// Whether a text is what a line with "..." in it says.
inline bool boSays(std::string_view sPattern, std::string_view sText) {
    for (;;) {
        const std::size_t iAny = sPattern.find("...");
        const std::string_view sPart = sPattern.substr(0, iAny);
        if (iAny == std::string_view::npos) return sText == sPart;
        if (!sText.starts_with(sPart)) return false;
        sText.remove_prefix(sPart.size());
        sPattern.remove_prefix(iAny + 3);
        const std::string_view sNext = sPattern.substr(0, sPattern.find("..."));
        const std::size_t iNext = sPattern.size() == sNext.size() && sText.size() >= sNext.size()
                                      ? sText.size() - sNext.size()
                                      : sText.find(sNext);
        if (iNext == std::string_view::npos || iNext > sText.size()) return false;
        sText.remove_prefix(iNext);
    }
}

inline std::vector<std::string> linesOfText(const std::string& sText) {
    std::vector<std::string> lines;
    std::istringstream in(sText);
    for (std::string sLine; std::getline(in, sLine);) lines.push_back(sLine);
    return lines;
}

// The same for all lines of a result.
inline bool boSaysAll(const std::string& sPatterns, const std::string& sText) {
    return std::ranges::equal(
        linesOfText(sPatterns), linesOfText(sText),
        [](const std::string& sPattern, const std::string& sLine) { return boSays(sPattern, sLine); });
}

}   // namespace oxa::ifc
