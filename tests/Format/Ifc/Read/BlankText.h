// SPDX-License-Identifier: Apache-2.0
// BlankText: texts of STEP files by their tokens (ISO 10303-21), with whatever may stand between these, and what a read
// makes of them. The text without blanks is the one that is written again.
#pragma once

#include <cstddef>
#include <istream>
#include <ostream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace oxa::ifc::blank {

inline constexpr std::size_t g_iKiB = 1024;

// One statement for each kind of parameter; references lead back only, so that the front part of a file is whole.
[[nodiscard]] const std::vector<std::string>& kinds();
// Lists of more items than any bound inside, as 255, is likely to allow.
[[nodiscard]] const std::vector<std::string>& lists();

// What stands before and behind the statements.
inline constexpr const char* g_sFront = "ISO-10303-21;"
                                        "HEADER;"
                                        "FILE_DESCRIPTION(('a  b; /* c */','d'),'2;1');"
                                        "FILE_NAME('n ','2024-01-01T00:00:00',('A  A','B'),('o'),'p','s',' ');"
                                        "FILE_SCHEMA(('CELLS'));"
                                        "ENDSEC;"
                                        "DATA;";
inline constexpr const char* g_sBack = "ENDSEC;"
                                       "END-ISO-10303-21;";

// Tokens of the standard, without what stands between them.
[[nodiscard]] std::vector<std::string> tokensOf(std::string_view text);
// The same statements with other numbers and another GlobalId.
[[nodiscard]] std::vector<std::string> renumbered(std::vector<std::string> tokens, std::size_t iAdd, std::size_t iGuid);
// Those of a whole file.
[[nodiscard]] std::vector<std::string> fileTokens(const std::vector<std::string>& statements);
[[nodiscard]] std::string sText(const std::vector<std::string>& tokens);

struct Outcome {
    bool boRead = false;
    std::vector<std::string> reports;
    std::size_t iPassedOver = 0;
    std::string sWritten;
    bool operator==(const Outcome&) const = default;
};
void PrintTo(const Outcome& outcome, std::ostream* pOut);

// Header and all instances, by number. An unfinished model is settled as far as it came.
[[nodiscard]] Outcome outcomeOf(std::istream& in, bool boSingleThreaded);
[[nodiscard]] Outcome outcomeOf(const std::string& sText, bool boSingleThreaded);
// A whole file without a fault.
[[nodiscard]] Outcome wholeOf(const std::string& sWritten);
void vExpectSame(const Outcome& found, const Outcome& expected);

struct Fill {
    const char* sRule;
    std::string sText;
};
// Nothing, spaces, line ends and comments.
[[nodiscard]] const std::vector<Fill>& fills();
// Up to two of them.
[[nodiscard]] std::string sRandomFill(std::mt19937& random);

// Text with the fill between all tokens, or what the function answers for each border.
template <class FillAt>
std::string sFilled(const std::vector<std::string>& tokens, FillAt&& fillAt) {
    std::string sText;
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        sText += fillAt(i);
        sText += tokens[i];
    }
    return sText += fillAt(tokens.size());
}

// Groups of the same statements with numbers of their own, without front and back.
class ManyGroups {
public:
    explicit ManyGroups(const std::vector<std::string>& statements)
        : m_iStatements(statements.size()),
          m_tokens(tokensOf(sText(statements))) {}
    [[nodiscard]] std::size_t iBorders() const { return m_tokens.size(); }
    [[nodiscard]] std::vector<std::string> group(std::size_t iGroup) const {
        return renumbered(m_tokens, iGroup * m_iStatements, iGroup + 1);
    }

private:
    std::size_t m_iStatements;
    std::vector<std::string> m_tokens;
};

struct LargeText {
    std::string sFile;
    std::string sExpected;
};

// Groups until the file has that size; the fill of a border is a matter of group and border.
template <class FillAt>
LargeText largeText(const std::vector<std::string>& statements, std::size_t iSize, FillAt&& fillAt) {
    const ManyGroups groups(statements);
    LargeText text{g_sFront, g_sFront};
    for (std::size_t iGroup = 0; text.sFile.size() < iSize; ++iGroup) {
        const std::vector<std::string> tokens = groups.group(iGroup);
        text.sExpected += sText(tokens);
        for (std::size_t i = 0; i < tokens.size(); ++i) {
            text.sFile += fillAt(iGroup, i, tokens.size());
            text.sFile += tokens[i];
        }
    }
    text.sFile += g_sBack;
    text.sExpected += g_sBack;
    return text;
}

}   // namespace oxa::ifc::blank
