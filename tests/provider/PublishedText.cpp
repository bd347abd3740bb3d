// SPDX-License-Identifier: Apache-2.0
#include "PublishedText.h"

#include <stdexcept>
#include <utility>

namespace oxa::test {

namespace {

// Without "(* *)" remarks; these texts neither nest them nor hold "(*" in a string.
std::string sWithoutRemarks(std::string sText) {
    for (std::size_t iStart; (iStart = sText.find("(*")) != std::string::npos;) {
        const std::size_t iEnd = sText.find("*)", iStart);
        sText.replace(iStart, iEnd + 2 - iStart, " ");
    }
    return sText;
}

// What stands between each "BEGIN " at the start of a line and the "END" behind it.
std::vector<std::string> blocks(const std::string& sText, const std::string& sBegin, const std::string& sEnd) {
    std::vector<std::string> result;
    std::size_t iAt = 0;
    while ((iAt = sText.find('\n' + sBegin + ' ', iAt)) != std::string::npos) {
        const std::size_t iStart = iAt + sBegin.size() + 2;
        const std::size_t iEnd = sText.find(sEnd, iStart);
        if (iEnd == std::string::npos) throw std::runtime_error(sBegin + " without " + sEnd);
        result.push_back(sText.substr(iStart, iEnd - iStart));
        iAt = iEnd;
    }
    return result;
}

std::vector<std::string> statements(const std::string& sText) {
    std::vector<std::string> result;
    std::size_t iAt = 0;
    for (std::size_t iEnd; (iEnd = sText.find(';', iAt)) != std::string::npos; iAt = iEnd + 1)
        result.push_back(sPlainBlanks(sText.substr(iAt, iEnd - iAt)));
    return result;
}

// Takes the word, which stands alone or before a blank, off the front of "sText".
bool boTakeWord(std::string& sText, const std::string& sWord) {
    if (!(sText + ' ').starts_with(sWord + ' ')) return false;
    sText = sPlainBlanks(sText.substr(sWord.size()));
    return true;
}

// "sHead" has plain blanks: "ABSTRACT SUPERTYPE OF(ONEOF(A,B))SUBTYPE OF(C)".
PublishedEntity entityFromHead(const std::string& sHead) {
    PublishedEntity entity;
    entity.boAbstract = sHead.starts_with("ABSTRACT");
    const std::string sBefore = "SUBTYPE OF(";
    if (const std::size_t iAt = sHead.find(sBefore); iAt != std::string::npos) {
        const std::size_t iStart = iAt + sBefore.size();
        entity.sSupertype = sHead.substr(iStart, sHead.find(')', iStart) - iStart);
    }
    return entity;
}

}   // namespace

std::string sPlainBlanks(const std::string& text) {
    const auto boCloses = [](char c) { return c == '(' || c == ')' || c == ','; };
    std::string sResult;
    bool boBlank = false;
    for (const char c : text) {
        if (c == ' ' || c == '\t' || c == '\r' || c == '\n') {
            boBlank = true;
            continue;
        }
        if (boBlank && !sResult.empty() && !boCloses(c) && !boCloses(sResult.back())) sResult += ' ';
        sResult += c;
        boBlank = false;
    }
    return sResult;
}

PublishedText::PublishedText(std::string sText) {
    sText = sWithoutRemarks('\n' + std::move(sText));
    for (const std::string& sBlock : blocks(sText, "TYPE", "END_TYPE;")) {
        const std::string sStatement = statements(sBlock).at(0);
        const std::size_t iEqual = sStatement.find(" = ");
        types[sStatement.substr(0, iEqual)] = sStatement.substr(iEqual + 3);
    }
    for (const std::string& sBlock : blocks(sText, "ENTITY", "END_ENTITY;")) {
        std::string sSection;
        std::vector<std::string> lines = statements(sBlock);
        const std::string sName = lines.at(0).substr(0, lines.at(0).find(' '));
        PublishedEntity& entity = entities[sName];
        entity = entityFromHead(sPlainBlanks(lines.at(0).substr(sName.size())));
        for (std::size_t i = 1; i < lines.size(); ++i) {
            for (const char* sNext : {"DERIVE", "INVERSE", "UNIQUE", "WHERE"})
                if (boTakeWord(lines[i], sNext)) sSection = sNext;
            if (sSection.empty() && !lines[i].starts_with("SELF\\")) entity.attributes.push_back(lines[i]);
            if (sSection == "INVERSE") entity.inverses.push_back(lines[i]);
        }
    }
}

}   // namespace oxa::test
