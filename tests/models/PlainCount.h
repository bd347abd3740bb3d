// SPDX-License-Identifier: Apache-2.0
// PlainCount: what a STEP file holds, counted one byte after the other: slow, and obviously right.
//
// For      the tests that hold the reader against the text itself. Shares no line of code with the library.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>

namespace oxa::ifc::models {

struct PlainCount {
    std::size_t iStatements = 0;   // of the DATA section, with a number in front
    std::size_t iReferences = 0;   // "#12" outside of strings, the statement's own number aside
    std::set<std::uint64_t> defined;
    std::set<std::uint64_t> referenced;
    std::map<std::string, std::size_t> byKeyword;

    explicit PlainCount(const std::string& text) {
        std::string statement;
        bool boString = false;
        bool boData = false;
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (!boString && text.compare(i, 2, "/*") == 0) {
                const std::size_t iEnd = text.find("*/", i + 2);
                if (iEnd == std::string::npos) return;
                i = iEnd + 1;
                continue;
            }
            if (boString && text.compare(i, 3, "\\S\\") == 0) {   // takes the next byte along, a quote too
                statement += "\\S\\?";
                i += 3;
                continue;
            }
            if (text[i] == '\'') boString = !boString;
            if (!boString && (text[i] == ' ' || text[i] == '\n' || text[i] == '\r')) continue;
            if (boString || text[i] != ';') {
                statement += text[i];
                continue;
            }
            if (!boData)
                boData = statement == "DATA";
            else if (statement == "ENDSEC")
                return;
            else
                vCountStatement(statement);
            statement.clear();
        }
    }

private:
    void vCountStatement(const std::string& statement) {
        const std::size_t iEqual = statement.find('=');
        const std::size_t iOpen = statement.find('(');
        if (statement.empty() || statement[0] != '#' || iEqual == std::string::npos || iOpen == std::string::npos)
            return;
        ++iStatements;
        defined.insert(std::stoull(statement.substr(1)));
        ++byKeyword[statement.substr(iEqual + 1, iOpen - iEqual - 1)];
        bool boString = false;
        for (std::size_t i = iOpen; i < statement.size(); ++i) {
            if (statement[i] == '\'') boString = !boString;
            if (boString || statement[i] != '#') continue;
            ++iReferences;
            referenced.insert(std::stoull(statement.substr(i + 1)));
        }
    }
};

}   // namespace oxa::ifc::models
