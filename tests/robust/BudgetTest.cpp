// SPDX-License-Identifier: Apache-2.0
// Budgets: what the most unreasonable files may cost. docs/robustness.md has the figures.
//
// Sizes  a tenth, save with OXA_FULL_BUDGETS=1 in the environment. Under a sanitizer a hundredth, and nothing is
//        measured, since its own memory is most of it.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <thread>

#include "ChildProcess.h"
#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileError.h"
#include "GeneratedStream.h"
#include "Sanitized.h"
#include "provider/SchemaLoader.h"

namespace oxa::ifc {
namespace {

constexpr bool g_boMeasured = !test::g_boSanitized;

// How much smaller than the full size.
std::size_t iDivisor() {
    const char* const sFull = std::getenv("OXA_FULL_BUDGETS");
    if (sFull && std::string_view(sFull) == "1") return 1;
    return g_boMeasured ? 10 : 100;
}

constexpr std::size_t g_iMega = 1'000'000;

struct BudgetRow {
    const char* sRule;
    std::vector<Repeated> data;   // of the DATA section; the repetitions are what shrinks
    bool boEnds;                  // whether the section has an end, and so the read goes well
    std::size_t iEntities;
    std::size_t iReports;        // for the full size; more than one shrink as the repetitions do
    std::size_t iBytesPerByte;   // memory may be that often the input, and 100 MB beside
    double secondsPer100Mb;      // time may be this for each 100 MB of input, and 2 s beside
};

std::vector<BudgetRow> budgetRows() {
    const std::string sNamed = "#1=IFCWALL('2CND9gmL0OS2wPqFz8m2Fj',$,'";
    const std::string sRest = "',$,$,$,$,$,$);\n";
    const std::string sWall = sNamed + sRest;
    const std::string sPoint = "#1=IFCCARTESIANPOINT(";
    const Repeated text{"abcdefghij", 20 * g_iMega};
    const Repeated longText{"abcdefghij", 100 * g_iMega};
    constexpr std::size_t g_iFaults = 5 * g_iMega;
    return {
        {"opening parentheses", {{sPoint}, {"(", 10 * g_iMega}, {";\n"}}, true, 0, 0, 6, 30},
        {"one long list", {{sPoint + "(1."}, {",1.", 66 * g_iMega}, {"));\n"}}, true, 1, 0, 6, 30},
        {"one long string", {{sNamed}, text, {sRest}}, true, 1, 0, 5, 30},
        {"one long string of escapes", {{sNamed}, {"\\X2\\00E9\\X0\\x", 15 * g_iMega}, {sRest}}, true, 1, 0, 5, 30},
        {"one long comment", {{"/*"}, text, {"*/" + sWall}}, true, 1, 0, 0, 30},
        {"one long run of blanks", {{"          ", 20 * g_iMega}, {sWall}}, true, 1, 0, 0, 30},
        {"no end of a statement", {{sPoint + "(1."}, {",1.23456789,", 83 * g_iMega}}, false, 0, 1, 3, 30},
        {"no end of a string", {{sPoint + "'"}, longText}, false, 0, 1, 3, 30},
        {"no end of a comment", {{"/*"}, longText}, false, 0, 1, 0, 30},
        {"statements with a fault each", {{"#1=IFCX();\n", g_iFaults}}, true, 0, g_iFaults, 30, 30},
        {"one statement with many faults",
         {{"#1=IFCDIRECTION((1.)"}, {",1", g_iFaults}, {");\n"}},
         true,
         1,
         g_iFaults,
         150,
         100},
    };
}

struct Outcome {
    bool boRead;
    std::size_t iEntities;
    std::size_t iReports;
};

Outcome outcomeOf(const std::vector<Repeated>& parts, bool boSingleThreaded) {
    GeneratedStream in(parts);
    File file;
    io::ReadError errors;
    const bool boRead = file.boRead(in, {}, errors, true, {}, boSingleThreaded);
    return {boRead, file.data().entities().size(), errors.records().size()};
}

std::vector<Repeated> fileOf(std::vector<Repeated> data, bool boEnds) {
    data.insert(data.begin(), {"ISO-10303-21;\nHEADER;\nFILE_SCHEMA(('IFC4'));\nENDSEC;\nDATA;\n"});
    if (boEnds) data.push_back({"ENDSEC;\nEND-ISO-10303-21;\n"});
    return data;
}

void vExpectWithin(const Cost& cost, std::size_t iBytes, std::size_t iMegabytes, double seconds) {
    EXPECT_EQ(cost.iStatus, 0);
    std::cout << "    " << std::fixed << std::setprecision(1) << static_cast<double>(iBytes) / 1e6
              << " MB of input: " << cost.iMegabytes << " MB of " << iMegabytes << ", " << cost.seconds << " s of "
              << seconds << '\n';
    if (!g_boMeasured) return;
    EXPECT_LE(cost.iMegabytes, iMegabytes);
    EXPECT_LE(cost.seconds, seconds);
}

class Budget : public testing::TestWithParam<bool> {};   // single-threaded

TEST_P(Budget, IsKept) {
    for (BudgetRow row : budgetRows()) {
        SCOPED_TRACE(row.sRule);
        std::cout << row.sRule << '\n';
        for (Repeated& part : row.data)
            if (part.iTimes > 1) part.iTimes /= iDivisor();
        const std::vector<Repeated> parts = fileOf(row.data, row.boEnds);
        const std::size_t iBytes = iBytesOf(parts);
        const double seconds = 2 + row.secondsPer100Mb * static_cast<double>(iBytes) / 1e8;
        Cost cost;
        const auto outcome = inChildProcess<Outcome>(static_cast<unsigned>(g_boMeasured ? 3 * seconds : 300) + 1, cost,
                                                     [&] { return outcomeOf(parts, GetParam()); });
        vExpectWithin(cost, iBytes, 100 + row.iBytesPerByte * iBytes / g_iMega, seconds);
        EXPECT_EQ(outcome.boRead, row.boEnds);
        EXPECT_EQ(outcome.iEntities, row.iEntities);
        EXPECT_EQ(outcome.iReports, row.iReports > 1 ? row.iReports / iDivisor() : row.iReports);
    }
}

INSTANTIATE_TEST_SUITE_P(Read, Budget, testing::Bool(),
                         [](const auto& test) { return test.param ? "SingleThreaded" : "Threaded"; });

// Instance numbers over all 32 bits, evenly; those of the upper half as negative ones, as they are read.
std::string sSpread(std::size_t iCount, const char* sBefore, const char* sBehind) {
    std::string sText;
    for (std::size_t i = 0; i < iCount; ++i) {
        const auto iId = static_cast<std::uint32_t>((i << 32) / iCount + 1);
        sText += sBefore + std::to_string(static_cast<std::int32_t>(iId)) + sBehind;
    }
    return sText;
}

struct SpreadRow {
    const char* sRule;
    std::string sData;
    std::size_t iEntities;
    std::size_t iReports;
    std::size_t iMegabytes;
};

// The instance table gives each number a fixed place; a file must not make it as large as the numbers are.
TEST(Budget, NumbersMayBeSpreadOverAllThirtyTwoBits) {
    if (!g_boMeasured) GTEST_SKIP() << "a sanitizer keeps a shadow of the whole table";
    const SpreadRow rows[] = {
        {"of instances", sSpread(57'000, "#", "=IFCDIRECTION((1.));\n"), 57'000, 0, 600},
        // The worst there is: a page of the table for each eleven bytes, and a report.
        {"of references",
         "#1=IFCRELAGGREGATES('2CND9gmL0OS2wPqFz8m2Fi',$,$,$,#1,(#1" + sSpread(170'000, ",#", "") + "));\n", 1, 169'999,
         900},
    };
    for (const SpreadRow& row : rows) {
        SCOPED_TRACE(row.sRule);
        std::cout << "numbers " << row.sRule << '\n';
        const std::vector<Repeated> parts = fileOf({{row.sData}}, true);
        Cost cost;
        const auto outcome = inChildProcess<Outcome>(60, cost, [&] { return outcomeOf(parts, true); });
        vExpectWithin(cost, iBytesOf(parts), row.iMegabytes, 20);
        EXPECT_TRUE(outcome.boRead);
        EXPECT_EQ(outcome.iEntities, row.iEntities);
        EXPECT_EQ(outcome.iReports, row.iReports);
    }
}

// Takes everything, and its time: whoever composes is faster.
class SlowSink : public std::streambuf {
    std::streamsize xsputn(const char*, std::streamsize iCount) override {
        std::this_thread::sleep_for(std::chrono::microseconds(20));
        return iCount;
    }
    int_type overflow(int_type iByte) override { return traits_type::not_eof(iByte); }
};

// Texts that wait for their turn, or for the stream, must not become a second model.
TEST(Budget, OrderedWriteOfLongStatements) {
    const std::size_t iEntities = 80'000 / iDivisor();
    const std::string sName(16'000, 'x');
    const std::size_t iModelBytes = iEntities * sName.size();
    Cost cost;
    const bool boWritten = inChildProcess<bool>(60, cost, [&] {
        FileSimple file(*SchemaLoader::pBuiltIn("IFC4"));
        Data& data = file.data();
        for (std::size_t i = 0; i < iEntities; ++i)
            data.pEntityCreate(def::schema::ObjectName("IFCMATERIAL"))
                ->boValueSet(def::schema::AttributeName("Name"), sName, data);
        SlowSink sink;
        std::ostream out(&sink);
        io::WriteError errors;
        return file.boWrite(nullptr, out, errors, {.eOrder = WriteOrder::Number});
    });
    vExpectWithin(cost, iModelBytes, 70 + iModelBytes / g_iMega, 20);
    EXPECT_TRUE(boWritten);
}

// Each line feed ends a statement that is none, and nobody hears of it: it must not be kept either.
TEST(Budget, HeaderTextOfLineFeeds) {
    const std::string sText = "HEADER;\n" + std::string(g_iMega, '\n') + "ENDSEC;\n";
    Cost cost;
    const bool boParsed =
        inChildProcess<bool>(60, cost, [&sText] { return ifc::FileHeader::parseFromString(sText).has_value(); });
    vExpectWithin(cost, sText.size(), 100, 20);
    EXPECT_TRUE(boParsed);
}

}   // namespace
}   // namespace oxa::ifc
