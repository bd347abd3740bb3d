// SPDX-License-Identifier: Apache-2.0
// The number behind "#": the rule as a table, and the shortcut of short numbers against the way byte by byte.
#include "Format/Ifc/Read/InstanceNumber.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace oxa::ifc {
namespace {

// The text alone, at the end of a buffer of exactly its size.
struct Exact {
    explicit Exact(const std::string& sText) : bytes(sText.begin(), sText.end()) {}
    [[nodiscard]] const char* first() const { return bytes.data(); }
    [[nodiscard]] const char* last() const { return bytes.data() + bytes.size(); }

    std::vector<char> bytes;
};

using HeadReader = const char* (*)(const char*, const char*, std::int32_t&) noexcept;

// "12" for a number up to "=", "no =" and "no number"; behind it where the "=" stands.
std::string sHead(HeadReader pRead, const Exact& text) {
    std::int32_t iId = 0;
    const char* const pEqual = pRead(text.first(), text.last(), iId);
    if (pEqual) return std::to_string(iId) + " up to " + std::to_string(pEqual - text.first());
    return details::pHeadEnd(text.first(), text.last()) ? "no number" : "no =";
}

struct HeadRow {
    const char* sText;   // behind the "#"
    const char* sHead;
};

const HeadRow g_heads[] = {
    {"", "no ="},
    {"=", "no ="},   // one character at least stands in front
    {"1", "no ="},
    {"1=", "1"},
    {"==", "no number"},
    {"=1=IFCX();", "no number"},
    {"0=IFCX();", "0"},
    {"007=IFCX();", "7"},
    {"1234567=IFCX();", "1234567"},
    {"12345678=IFCX();", "12345678"},
    {"0000001=IFCX();", "1"},
    {"00000001=IFCX();", "1"},
    {"2147483647=IFCX();", "2147483647"},
    {"2147483648=IFCX();", "no number"},
    {"-1=IFCX();", "-1"},
    {"-2147483648=IFCX();", "-2147483648"},
    {"+1=IFCX();", "no number"},
    {"-=IFCX();", "no number"},
    {" 1=IFCX();", "no number"},
    {"1 =IFCX();", "no number"},
    {"1\t=IFCX();", "no number"},
    {"1.=IFCX();", "no number"},
    {"12a=IFCX();", "no number"},
    {"1IFCX();", "no ="},
    {"1IFCX('=');", "no number"},
};

void vExpectHead(const std::string& sText, const char* sExpected) {
    const Exact text(sText);
    const std::string sPlain = sHead(details::pHeadNumberPlain, text);
    ASSERT_EQ(sHead(details::pHeadNumber, text), sPlain) << sText;
    if (sExpected) {
        ASSERT_EQ(sPlain.substr(0, sPlain.find(" up to ")), sExpected) << sText;
    }
}

TEST(HeadNumber, IsAllThatStandsBeforeTheEqualSign) {
    for (const HeadRow& row : g_heads) vExpectHead(row.sText, row.sHead);
}

struct ReferenceRow {
    const char* sText;
    std::int32_t iReference;
};

const ReferenceRow g_references[] = {
    {"", 0},
    {"1", 1},
    {"0", 0},
    {"1234567", 1234567},
    {"12345678", 12345678},
    {"00000012", 12},
    {"12abc", 12},
    {"12.5", 12},
    {"abc", 0},
    {" \t\r\n\v\f7", 7},
    {"+7", 7},
    {"-7", -7},
    {"--7", 0},
    {"+-7", 0},
    {"- 7", 0},
    {"2147483647", 2147483647},
    {"2147483648", 2147483647},
    {"99999999999999999999999999", 2147483647},
    {"-2147483648", -2147483647 - 1},
    {"-2147483649", -2147483647 - 1},
    {"-99999999999999999999999999", -2147483647 - 1},
};

// The token of a statement, with what may stand behind it: digits there are not its own.
void vExpectReference(const std::string& sToken, const std::int32_t* piExpected) {
    for (const char* sBehind : {"", ",", ");", "99", "99999999", ",#12345678);"}) {
        const Exact text(sToken + sBehind);
        const char* const pEnd = text.first() + sToken.size();
        const std::int32_t iPlain = details::iReferencePlain(text.first(), pEnd);
        ASSERT_EQ(details::iReference(text.first(), pEnd, text.last()), iPlain) << sToken << " before " << sBehind;
        if (piExpected) {
            ASSERT_EQ(iPlain, *piExpected) << sToken;
        }
    }
}

TEST(ReferenceNumber, IsReadAsFarAsItGoes) {
    for (const ReferenceRow& row : g_references) vExpectReference(row.sText, &row.iReference);
}

TEST(InstanceNumber, BothWaysAgree) {
    static const std::string g_bytes = "0123456789=#-+ \tA,";
    std::mt19937 random(1);
    for (int i = 0; i < 50'000; ++i) {
        const std::size_t iDigits = random() % 12;
        std::string sText;
        for (std::size_t k = 0; k < iDigits; ++k) sText += static_cast<char>('0' + random() % 10);
        if (random() % 2) sText += '=';
        for (std::size_t k = random() % 12; k; --k) sText += g_bytes[random() % g_bytes.size()];
        if (random() % 4 == 0 && !sText.empty()) sText[random() % sText.size()] = static_cast<char>(random());
        vExpectHead(sText, nullptr);
        vExpectReference(sText, nullptr);
        if (HasFatalFailure()) return;
    }
}

}   // namespace
}   // namespace oxa::ifc
