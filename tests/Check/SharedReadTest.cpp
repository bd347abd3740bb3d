// SPDX-License-Identifier: Apache-2.0
// A check reads its stream once for all levels, whatever the stream can do, and finds the same on any number of threads.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <thread>

#include "CheckText.h"
#include "Model/Error.h"

namespace oxa {
namespace {

// Bytes that come once, in pieces of odd sizes; from some place on the system fails.
class Pipe final : public std::streambuf {
public:
    explicit Pipe(std::string sBytes, std::size_t iFails = std::string::npos)
        : m_sBytes(std::move(sBytes)),
          m_iFails(iFails) {}

private:
    int_type underflow() override {
        if (m_iAt >= m_iFails) throw std::ios_base::failure("the system fails");
        if (m_iAt == m_sBytes.size()) return traits_type::eof();
        const std::size_t iSize = std::min<std::size_t>(m_sBytes.size() - m_iAt, 7919);
        setg(m_sBytes.data() + m_iAt, m_sBytes.data() + m_iAt, m_sBytes.data() + m_iAt + iSize);
        m_iAt += iSize;
        return traits_type::to_int_type(*gptr());
    }

    std::string m_sBytes;
    std::size_t m_iFails;
    std::size_t m_iAt = 0;
};

// A megabyte, with faults of each level.
std::string sModel() {
    std::string sStatements;
    for (int i = 1; i <= 12'000; ++i) {
        const std::string sId = std::to_string(i * 3);
        sStatements += '#' + sId + "=IFCDIRECTION((" + (i % 1000 ? "1." : "0.") + ",0.,0.));\n";
        sStatements += '#' + std::to_string(i * 3 + 1) + "=IFCCARTESIANPOINT((" + (i % 5000 ? "0.5" : "") + "));\n";
        if (i % 7000 == 0) sStatements += "#" + std::to_string(i * 3 + 2) + "=IFCDIRECTION((1.,'\\X\\GG'));\n";
    }
    return FileText().text(sStatements);
}

std::string sAll(const CheckResult& result) {
    std::string sText = std::to_string(result.bytes) + '\n' + sFailures(result) + '\n';
    for (const CheckLevelSummary& level : result.levels) sText += level.reason + '\n';
    for (const CheckRuleCounts& counts : result.rules) sText += std::to_string(counts.evaluated) + '\n';
    return sText;
}

TEST(CheckShared, FindsTheSameInAnyStreamOnAnyThreads) {
    const std::string sFile = sModel();
    std::istringstream once(sFile);
    CheckOptions options;
    options.threads = 1;
    const std::string sExpected = sAll(checkStream(once, options));
    EXPECT_NE(sExpected.find("Rules_Violated"), std::string::npos);
    EXPECT_NE(sExpected.find("Schema_Bounds"), std::string::npos);
    EXPECT_NE(sExpected.find("Syntax_"), std::string::npos);
    for (const unsigned iThreads : {1U, 2U, 3U, 8U}) {
        SCOPED_TRACE(iThreads);
        options.threads = iThreads;
        std::istringstream again(sFile);
        EXPECT_EQ(sAll(checkStream(again, options)), sExpected);
        Pipe pipe(sFile);
        std::istream stream(&pipe);
        EXPECT_EQ(sAll(checkStream(stream, options)), sExpected);
    }
}

TEST(CheckShared, WhatTheSystemCanNotReadIsNoEndOfTheFile) {
    for (const unsigned iThreads : {1U, 2U}) {
        CheckOptions options;
        options.threads = iThreads;
        Pipe pipe(sModel(), 500'000);
        std::istream stream(&pipe);
        EXPECT_THROW(static_cast<void>(checkStream(stream, options)), FileError);
    }
}

// One thread sets the stream back for the model, whose second reading may fail.
TEST(CheckShared, WhatFailsTheSecondTimeIsTold) {
    class Seekable final : public std::streambuf {
    public:
        explicit Seekable(std::string sBytes, bool boRefuses = false)
            : m_sBytes(std::move(sBytes)),
              m_boRefuses(boRefuses) {}

    private:
        pos_type seekoff(off_type, std::ios_base::seekdir, std::ios_base::openmode) override {   // where it stands
            return static_cast<off_type>(m_iAt) - (egptr() - gptr());
        }
        pos_type seekpos(pos_type place, std::ios_base::openmode) override {
            if (m_boRefuses) return static_cast<off_type>(-1);
            ++m_iSeeks;
            m_iAt = static_cast<std::size_t>(place);
            setg(nullptr, nullptr, nullptr);
            return place;
        }
        int_type underflow() override {
            if (m_iSeeks > 1 && m_iAt > 100'000) throw std::ios_base::failure("the system fails");
            const std::size_t iSize = std::min<std::size_t>(m_sBytes.size() - m_iAt, 7919);
            if (iSize == 0) return traits_type::eof();
            setg(m_sBytes.data() + m_iAt, m_sBytes.data() + m_iAt, m_sBytes.data() + m_iAt + iSize);
            m_iAt += iSize;
            return traits_type::to_int_type(*gptr());
        }

        std::string m_sBytes;
        std::size_t m_iAt = 0;
        int m_iSeeks = 0;
        bool m_boRefuses;
    };
    CheckOptions options;
    options.threads = 1;
    Seekable bytes(sModel());
    std::istream stream(&bytes);
    EXPECT_THROW(static_cast<void>(checkStream(stream, options)), FileError);
    // Where it can't be set back its bytes are kept; without rules no model is needed.
    for (const bool boRules : {true, false}) {
        options.levels[static_cast<std::size_t>(CheckLevel::Rules)] = boRules;
        Seekable once(sModel(), boRules);
        std::istream again(&once);
        const CheckResult result = checkStream(again, options);
        EXPECT_EQ(result.statements, 24'001U);
        EXPECT_EQ(result.level(CheckLevel::Rules).failures, boRules ? 12'012U : 0U);
    }
}

// The model is read as far ahead as it may be then, and waits.
TEST(CheckShared, AScanThatEndsEarlyKeepsNobodyWaiting) {
    const std::string sFile = FileText().text("/*" + std::string(8'000'000, '-') + "*/#1=IFCDIRECTION((0.,0.,0.));");
    for (const bool boStops : {false, true}) {
        std::stop_source stop;
        CheckOptions options;
        options.threads = 2;
        options.stop = stop.get_token();
        options.progress = [&](const Progress& progress) {
            if (progress.done < 600'000) return;   // the model is read from the second window of bytes on
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
            if (!boStops) throw std::range_error("enough");
            stop.request_stop();
        };
        std::istringstream stream(sFile);
        if (boStops) {
            EXPECT_THROW(static_cast<void>(checkStream(stream, options)), Stopped);
        } else {
            EXPECT_THROW(static_cast<void>(checkStream(stream, options)), std::range_error);
        }
    }
}

// By the progress of the scan, and by that of the rules.
TEST(CheckShared, StopsInTheMiddle) {
    const std::string sFile = sModel();
    constexpr int g_iMostTries = 100;
    for (const unsigned iThreads : {1U, 2U})
        for (const bool boRules : {false, true}) {
            SCOPED_TRACE(std::to_string(iThreads) + " threads" + (boRules ? ", in the rules" : ""));
            // Beside others the caller's thread may find no rules to evaluate, and then nobody asks to stop: once more.
            bool boAsked = false;
            for (int iTry = 0; !boAsked && iTry < g_iMostTries; ++iTry) {
                std::stop_source source;
                CheckOptions options;
                options.threads = iThreads;
                options.stop = source.get_token();
                std::uint64_t iLast = 0;
                options.progress = [&](const Progress& progress) {
                    EXPECT_GE(progress.done, iLast);
                    iLast = progress.done;
                    if (progress.total.has_value() == boRules) source.request_stop();
                    EXPECT_LE(progress.done, progress.total.value_or(progress.done));
                };
                std::istringstream stream(sFile);
                options.levels[static_cast<std::size_t>(CheckLevel::Rules)] = boRules;
                try {
                    static_cast<void>(checkStream(stream, options));
                    EXPECT_FALSE(source.stop_requested()) << "not heard";
                } catch (const Stopped&) {
                    EXPECT_TRUE(source.stop_requested());
                    EXPECT_GT(iLast, boRules ? sFile.size() : 0U);
                }
                boAsked = source.stop_requested();
                EXPECT_TRUE(boAsked || (boRules && iThreads > 1)) << "alone it meets all";
            }
            EXPECT_TRUE(boAsked);
        }
}

// In the scan beside the read of the model, and beside others that evaluate rules.
TEST(CheckShared, PassesTheCallersExceptionsOn) {
    const std::string sFile = sModel();
    for (const unsigned iThreads : {1U, 2U, 8U})
        for (const bool boRules : {false, true}) {
            SCOPED_TRACE(std::to_string(iThreads) + " threads" + (boRules ? ", in the rules" : ""));
            bool boThrown = false;   // beside others the caller's thread may find no rules to evaluate
            CheckOptions options;
            options.threads = iThreads;
            options.progress = [&](const Progress& progress) {
                if (progress.total.has_value() != boRules) return;
                boThrown = true;
                throw std::range_error("enough");
            };
            std::istringstream stream(sFile);
            try {
                static_cast<void>(checkStream(stream, options));
                EXPECT_FALSE(boThrown || iThreads == 1 || !boRules);
            } catch (const std::range_error& fault) {
                EXPECT_TRUE(boThrown);
                EXPECT_STREQ(fault.what(), "enough");
            }
        }
}

// Nothing is told of a file whose last bytes came with the wish to end.
TEST(CheckShared, StopsAtTheEnd) {
    const std::string sFile = FileText().text("#1=IFCDIRECTION((1.,0.,0.));");
    std::stop_source source;
    CheckOptions options;
    options.levels = {true, true, true, false};
    options.stop = source.get_token();
    options.progress = [&](const Progress& progress) {
        if (progress.done == sFile.size()) source.request_stop();
    };
    std::istringstream stream(sFile);
    EXPECT_THROW(static_cast<void>(checkStream(stream, options)), Stopped);
}

// A header that is longer than what one reader may be ahead of the other.
TEST(CheckShared, LongHeadersHoldNobodyUp) {
    FileText file;
    file.sDescription = "('ViewDefinition [CoordinationView]'),'2;1'/*" + std::string(5'000'000, '-') + "*/";
    CheckOptions options;
    options.threads = 2;
    Pipe pipe(file.text("#1=IFCDIRECTION((0.,0.,0.));"));
    std::istream stream(&pipe);
    const CheckResult result = checkStream(stream, options);
    EXPECT_EQ(result.level(CheckLevel::Rules).failures, 1U);
}

// How much of the model is there depends on who read it: nothing is said of a part.
TEST(CheckShared, RulesOfAModelThatIsCutAreNotEvaluated) {
    const std::string sFile = FileText().text("#1=IFCDIRECTION((0.,0.,0.));\n#2=IFCPERSON('a,$,$,$,$,$,$,$);");
    for (const unsigned iThreads : {1U, 2U}) {
        CheckOptions options;
        options.levels = {false, false, false, true};
        options.threads = iThreads;
        std::istringstream stream(sFile);
        const CheckResult result = checkStream(stream, options);
        EXPECT_EQ(sFailures(result), "");
        EXPECT_EQ(result.level(CheckLevel::Rules).reason, "the model could not be read to its end");
        EXPECT_EQ(result.rules.at(0).known, result.rules.at(0).notEvaluated);
        EXPECT_EQ(result.verdict(), CheckVerdict::Undecided);
    }
}

// What a rule takes more than is allowed it does not get, for the same instances on any number of threads.
TEST(CheckShared, RulesThatTakeTooManyStepsLeaveItOpen) {
    std::string sStatements;
    for (int i = 1; i <= 5'000; ++i) {
        const std::string sId = std::to_string(i * 2);
        sStatements += '#' + sId + "=IFCDIRECTION((1.,0.,0.));\n#" + std::to_string(i * 2 + 1) +
                       "=IFCAXIS2PLACEMENT3D(#1,#" + sId + ",#" + sId + ");\n";
    }
    std::string sExpected;
    for (const unsigned iThreads : {1U, 2U, 5U}) {
        CheckOptions options;
        options.levels = {false, false, false, true};
        options.threads = iThreads;
        options.ruleSteps = 10;
        options.mostPlacesOfGroup = 3;
        std::istringstream stream(FileText().text("#1=IFCCARTESIANPOINT((0.,0.,0.));\n" + sStatements));
        const CheckResult result = checkStream(stream, options);
        EXPECT_GT(result.rules.at(0).notEvaluated, 0U);
        EXPECT_GT(result.level(CheckLevel::Rules).notes, 4'000U);
        if (sExpected.empty()) sExpected = sAll(result);
        EXPECT_EQ(sAll(result), sExpected);
    }
}

}   // namespace
}   // namespace oxa
