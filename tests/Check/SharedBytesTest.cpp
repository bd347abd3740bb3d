// SPDX-License-Identifier: Apache-2.0
// One stream for two readers: each gets every byte, none runs far ahead, and both hear of the end and of faults.
#include "Check/Syntax/SharedBytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <istream>
#include <string>
#include <thread>

#include "Model/Error.h"

namespace oxa::check {
namespace {

using namespace std::chrono_literals;
using Who = SharedBytes::Who;

constexpr std::size_t g_iBlock = std::size_t{256} << 10;
constexpr std::size_t g_iAhead = 8;   // blocks

char cAt(std::size_t i) noexcept { return static_cast<char>('a' + i % 23); }

std::string sPattern(std::size_t iSize) {
    std::string sText(iSize, '\0');
    for (std::size_t i = 0; i < iSize; ++i) sText[i] = cAt(i);
    return sText;
}

// Bytes that are counted; from some place on the system fails.
class Source final : public std::streambuf {
public:
    explicit Source(std::size_t iSize, std::size_t iFails = std::string::npos) : m_iSize(iSize), m_iFails(iFails) {}

    [[nodiscard]] std::size_t iTaken() const noexcept { return m_iTaken; }

private:
    std::streamsize xsgetn(char* pTo, std::streamsize iWanted) override {
        const std::size_t iCount = std::min(m_iSize - m_iTaken, static_cast<std::size_t>(iWanted));
        if (m_iTaken + iCount > m_iFails) throw std::ios_base::failure("the system fails");
        for (std::size_t i = 0; i < iCount; ++i) pTo[i] = cAt(m_iTaken + i);
        m_iTaken += iCount;
        return static_cast<std::streamsize>(iCount);
    }

    std::size_t m_iSize;
    std::size_t m_iFails;
    std::atomic<std::size_t> m_iTaken{0};
};

std::string sRead(std::istream& stream, std::size_t iMost = std::string::npos) {
    std::string sText;
    for (int i; sText.size() < iMost && (i = stream.get()) != std::istream::traits_type::eof();)
        sText += static_cast<char>(i);
    return sText;
}

TEST(SharedBytes, BothReadersGetAllBytes) {
    for (const std::size_t iSize :
         {std::size_t{0}, std::size_t{1}, g_iBlock - 1, g_iBlock, g_iBlock + 1, 3 * g_iBlock, 12 * g_iBlock + 17}) {
        SCOPED_TRACE(iSize);
        Source source(iSize);
        std::istream stream(&source);
        SharedBytes bytes(stream, {});
        bytes.vJoin();
        std::string sModel;
        std::thread model([&] {
            sModel = sRead(bytes.stream(Who::Model));
            bytes.vLeave(Who::Model);
        });
        const std::string sScan = sRead(bytes.stream(Who::Scan));
        bytes.vLeave(Who::Scan);
        model.join();
        EXPECT_TRUE(sScan == sPattern(iSize));
        EXPECT_TRUE(sModel == sPattern(iSize));
    }
}

TEST(SharedBytes, WhatOneHasReadWaitsForTheOther) {
    const std::size_t iSize = 12 * g_iBlock;
    Source source(iSize);
    std::istream stream(&source);
    SharedBytes bytes(stream, {});
    EXPECT_TRUE(sRead(bytes.stream(Who::Scan)) == sPattern(iSize)) << "as long as the other has not begun";
    bytes.vLeave(Who::Scan);
    bytes.vJoin();
    EXPECT_TRUE(sRead(bytes.stream(Who::Model)) == sPattern(iSize));
    EXPECT_EQ(source.iTaken(), iSize) << "once";
}

TEST(SharedBytes, NoneRunsFarAhead) {
    const std::size_t iSize = 20 * g_iBlock;
    Source source(iSize);
    std::istream stream(&source);
    SharedBytes bytes(stream, {});
    bytes.vJoin();
    std::string sModel;
    std::thread model([&] { sModel = sRead(bytes.stream(Who::Model)); });
    const auto iTakenNow = [&](std::size_t iExpected) {
        for (int i = 0; i < 10'000 && source.iTaken() < iExpected; ++i) std::this_thread::sleep_for(1ms);
        std::this_thread::sleep_for(10ms);   // for one too many
        return source.iTaken();
    };
    EXPECT_EQ(iTakenNow(g_iAhead * g_iBlock), g_iAhead * g_iBlock);
    EXPECT_EQ(sRead(bytes.stream(Who::Scan), g_iBlock).size(), g_iBlock);
    EXPECT_EQ(iTakenNow((g_iAhead + 1) * g_iBlock), (g_iAhead + 1) * g_iBlock);
    bytes.vLeave(Who::Scan);
    model.join();
    EXPECT_TRUE(sModel == sPattern(iSize)) << "who has left keeps nobody waiting";
}

TEST(SharedBytes, AStopEndsBoth) {
    Source source(20 * g_iBlock);
    std::istream stream(&source);
    std::stop_source stop;
    SharedBytes bytes(stream, stop.get_token());
    EXPECT_EQ(sRead(bytes.stream(Who::Scan), 10).size(), 10U);
    stop.request_stop();
    EXPECT_EQ(sRead(bytes.stream(Who::Scan)).size(), g_iBlock - 10) << "what it has already";
    EXPECT_EQ(sRead(bytes.stream(Who::Model)), "");
    EXPECT_EQ(source.iTaken(), g_iBlock);
}

// Neither takes it for the end, whoever came to it first.
TEST(SharedBytes, AFaultOfTheSystemIsNoEnd) {
    Source source(20 * g_iBlock, 2 * g_iBlock + 100);
    std::istream stream(&source);
    SharedBytes bytes(stream, {});
    for (const Who who : {Who::Model, Who::Scan}) {
        std::istream& reader = bytes.stream(who);
        EXPECT_EQ(sRead(reader, 2 * g_iBlock).size(), 2 * g_iBlock);
        EXPECT_THROW(static_cast<void>(reader.rdbuf()->sgetc()), FileError);
        EXPECT_EQ(reader.get(), std::istream::traits_type::eof());
        EXPECT_TRUE(reader.bad());
    }
}

}   // namespace
}   // namespace oxa::check
