// SPDX-License-Identifier: Apache-2.0
#include "platform/Stream.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <vector>

namespace oxa::stream {
namespace {

constexpr std::size_t g_iSize = StreamReadBuffer::g_iBufferSize;
static_assert(g_iSize == 16384);

// Bytes that differ from their neighbours and from those one buffer away.
std::string sBytes(std::size_t iCount) {
    std::string s(iCount, '\0');
    for (std::size_t i = 0; i < iCount; ++i) s[i] = static_cast<char>(1 + i % 251);
    return s;
}

// Opens what derived readers see, and keeps what the refill hook was given.
class Reader : public StreamReadBuffer {
public:
    using StreamReadBuffer::g_iPadding;
    using StreamReadBuffer::m_iPosition;
    using StreamReadBuffer::m_iValid;
    using StreamReadBuffer::m_pBuffer;
    using StreamReadBuffer::StreamReadBuffer;

    bool boPaddingIsZero() const {
        return std::string(m_pBuffer + m_iValid, g_iPadding) == std::string(g_iPadding, '\0');
    }
    std::string sReadAll() {
        std::string sAll;
        while (boReadNextBuffer()) {
            sAll.append(m_pBuffer, m_iValid);
            m_iPosition = m_iValid;
        }
        return sAll;
    }

    std::vector<std::string> m_refills;

protected:
    void vBeforeRefill(const char* pBuffer, unsigned iValid) override { m_refills.emplace_back(pBuffer, iValid); }
};

struct SizeRow {
    const char* sRule;
    std::size_t iBytes;
    std::vector<unsigned> loads;
};
const SizeRow g_sizeRows[] = {
    {"nothing", 0, {}},
    {"one byte", 1, {1}},
    {"one byte less than the buffer", g_iSize - 1, {16383}},
    {"the buffer exactly", g_iSize, {16384}},
    {"one byte more", g_iSize + 1, {16384, 1}},
    {"several buffers", 3 * g_iSize + 5, {16384, 16384, 16384, 5}},
};

TEST(StreamReadBuffer, LoadsInBuffersWithZerosBehind) {
    for (const SizeRow& row : g_sizeRows) {
        SCOPED_TRACE(row.sRule);
        const std::string sAll = sBytes(row.iBytes);
        std::istringstream in(sAll);
        Reader reader(in);
        EXPECT_TRUE(reader.boPaddingIsZero());
        EXPECT_EQ(reader.iPosInStream(), 0U);
        std::size_t iBefore = 0;
        for (const unsigned iLoad : row.loads) {
            ASSERT_TRUE(reader.boReadNextBuffer());
            ASSERT_EQ(reader.m_iValid, iLoad);
            EXPECT_EQ(reader.m_iPosition, 0U);
            EXPECT_EQ(reader.iPosInStream(), iBefore);
            EXPECT_EQ(std::string(reader.m_pBuffer, iLoad), sAll.substr(iBefore, iLoad));
            EXPECT_TRUE(reader.boPaddingIsZero());
            iBefore += iLoad;
            reader.m_iPosition = reader.m_iValid;
            EXPECT_EQ(reader.iPosInStream(), iBefore);
        }
        for (int iAgain = 0; iAgain < 2; ++iAgain) {
            EXPECT_FALSE(reader.boReadNextBuffer());
            EXPECT_EQ(reader.m_iValid, 0U);
            EXPECT_EQ(reader.m_iPosition, 0U);
            EXPECT_EQ(reader.iPosInStream(), row.iBytes);
            EXPECT_TRUE(reader.boPaddingIsZero());
        }
    }
}

TEST(StreamReadBuffer, ShowsTheHookEachBufferBeforeItGoes) {
    const std::string sAll = sBytes(g_iSize + 3);
    std::istringstream in(sAll);
    Reader reader(in);
    reader.sReadAll();
    EXPECT_EQ(reader.m_refills, (std::vector<std::string>{"", sAll.substr(0, g_iSize), sAll.substr(g_iSize)}));
}

TEST(StreamReadBuffer, SetsEofOnlyAtTheEndAndNeverFail) {
    std::istringstream in("abc");
    Reader reader(in);
    ASSERT_TRUE(reader.boReadNextBuffer());
    EXPECT_TRUE(in.good());
    EXPECT_FALSE(reader.boReadNextBuffer());
    EXPECT_EQ(in.rdstate(), std::ios_base::eofbit);
}

TEST(StreamReadBuffer, ReadsNothingFromAStreamThatIsNotGood) {
    struct Row {
        const char* sRule;
        std::ios_base::iostate state;
    };
    const Row rows[] = {
        {"failed", std::ios_base::failbit}, {"bad", std::ios_base::badbit}, {"at its end", std::ios_base::eofbit}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sRule);
        std::istringstream in("abc");
        in.setstate(row.state);
        Reader reader(in);
        EXPECT_FALSE(reader.boReadNextBuffer());
        EXPECT_EQ(reader.m_iValid, 0U);
        EXPECT_EQ(in.rdstate(), row.state);
    }
}

TEST(StreamReadBuffer, AStreamWithoutABufferHasNothing) {
    std::istream in(nullptr);
    Reader reader(in);
    EXPECT_FALSE(reader.boReadNextBuffer());
}

TEST(StreamReadBuffer, BeginsWhereTheStreamStands) {
    std::istringstream in("abcdef");
    in.ignore(2);
    Reader reader(in);
    EXPECT_EQ(reader.sReadAll(), "cdef");
    EXPECT_EQ(reader.iPosInStream(), 4U);
}

// Gives its bytes in one piece, then throws.
class ThrowingBytes : public std::streambuf {
protected:
    std::streamsize xsgetn(char* pBytes, std::streamsize) override {
        if (m_boGiven) throw std::runtime_error("disk gone");
        m_boGiven = true;
        *pBytes = 'x';
        return 1;
    }
    std::streamsize xsputn(const char*, std::streamsize) override { throw std::runtime_error("disk full"); }

private:
    bool m_boGiven = false;
};

TEST(StreamReadBuffer, WhatTheStreamThrowsPassesThrough) {
    ThrowingBytes bytes;
    std::istream in(&bytes);
    Reader reader(in);
    ASSERT_TRUE(reader.boReadNextBuffer());
    reader.m_iPosition = 1;
    EXPECT_THROW(reader.boReadNextBuffer(), std::runtime_error);
    EXPECT_EQ(reader.m_iValid, 0U);
    EXPECT_EQ(reader.iPosInStream(), 1U);
}

TEST(StreamReadBuffer, AStreamAskedToThrowAtItsEndDoes) {
    std::istringstream in("a");
    in.exceptions(std::ios_base::eofbit);
    Reader reader(in);
    ASSERT_TRUE(reader.boReadNextBuffer());
    EXPECT_THROW(reader.boReadNextBuffer(), std::ios_base::failure);
    EXPECT_EQ(reader.m_iValid, 0U);
}

// Tells of a fault by a count, as no stream should.
class NegativeBytes : public std::streambuf {
protected:
    std::streamsize xsgetn(char*, std::streamsize) override { return -1; }
};

TEST(StreamReadBuffer, ANegativeCountIsTheEnd) {
    NegativeBytes bytes;
    std::istream in(&bytes);
    Reader reader(in);
    EXPECT_FALSE(reader.boReadNextBuffer());
    EXPECT_EQ(reader.m_iValid, 0U);
    EXPECT_EQ(in.rdstate(), std::ios_base::eofbit);
}

// Claims to deliver without touching the bytes, so that 4 GiB pass at once.
class EndlessBytes : public std::streambuf {
protected:
    std::streamsize xsgetn(char*, std::streamsize iCount) override { return iCount; }
};

TEST(StreamReadBuffer, PositionStaysAtTheLargestUnsigned) {
    EndlessBytes bytes;
    std::istream in(&bytes);
    StreamReadBuffer reader(in);
    constexpr unsigned g_iMax = std::numeric_limits<unsigned>::max();
    constexpr unsigned g_iBuffers = g_iMax / g_iSize + 1;   // one byte more than fits
    for (unsigned i = 0; i < g_iBuffers; ++i) ASSERT_TRUE(reader.boReadNextBuffer());
    EXPECT_EQ(reader.iPosInStream(), g_iMax - g_iSize + 1);
    ASSERT_TRUE(reader.boReadNextBuffer());
    EXPECT_EQ(reader.iPosInStream(), g_iMax);
    ASSERT_TRUE(reader.boReadNextBuffer());
    EXPECT_EQ(reader.iPosInStream(), g_iMax);
}

// Keeps the size of each piece that reaches the stream.
class Pieces : public std::streambuf {
public:
    std::vector<std::size_t> m_sizes;
    std::string m_sAll;

protected:
    std::streamsize xsputn(const char* pBytes, std::streamsize iCount) override {
        m_sizes.push_back(static_cast<std::size_t>(iCount));
        m_sAll.append(pBytes, static_cast<std::size_t>(iCount));
        return iCount;
    }
};

struct WriteRow {
    const char* sRule;
    std::vector<std::size_t> writes;
    std::vector<std::size_t> pieces;   // before the end
    std::vector<std::size_t> last;     // at the end
};
const WriteRow g_writeRows[] = {
    {"nothing", {}, {}, {}},
    {"an empty text", {0}, {}, {}},
    {"less than the buffer", {1, 0, 16382}, {}, {16383}},
    {"exactly full: written at once", {16384}, {16384}, {}},
    {"full in two steps", {16383, 1}, {16384}, {}},
    {"over the end of the buffer", {16383, 2}, {16384}, {1}},
    {"several buffers at once", {10, 40000}, {16384, 16384}, {7242}},
};

TEST(StreamWriteBuffer, WritesWholeBuffers) {
    for (const WriteRow& row : g_writeRows) {
        SCOPED_TRACE(row.sRule);
        Pieces pieces;
        std::ostream out(&pieces);
        std::string sExpected;
        {
            StreamWriteBuffer buffer(out);
            for (const std::size_t iBytes : row.writes) {
                const std::string sText = sBytes(iBytes);
                sExpected += sText;
                buffer.vWrite(sText);
            }
            EXPECT_EQ(pieces.m_sizes, row.pieces);
            EXPECT_TRUE(buffer.boGood());
        }
        std::vector<std::size_t> all = row.pieces;
        all.insert(all.end(), row.last.begin(), row.last.end());
        EXPECT_EQ(pieces.m_sizes, all);
        EXPECT_EQ(pieces.m_sAll, sExpected);
    }
}

TEST(StreamWriteBuffer, TakesSingleBytesAsItTakesTexts) {
    Pieces pieces;
    std::ostream out(&pieces);
    const std::string sAll = sBytes(g_iSize + 1);
    StreamWriteBuffer buffer(out);
    for (const char c : sAll) buffer.vWrite(c);
    EXPECT_EQ(pieces.m_sizes, std::vector<std::size_t>{g_iSize});
    buffer.vBufferFlush();
    buffer.vBufferFlush();   // nothing is left to write
    EXPECT_EQ(pieces.m_sizes, (std::vector<std::size_t>{g_iSize, 1}));
    EXPECT_EQ(pieces.m_sAll, sAll);
}

TEST(StreamWriteBuffer, TellsOfAStreamThatFails) {
    ThrowingBytes bytes;
    std::ostream out(&bytes);   // not asked to throw: it takes the exception for a failure
    StreamWriteBuffer buffer(out);
    buffer.vWrite("abc");
    EXPECT_TRUE(buffer.boGood());
    buffer.vBufferFlush();
    EXPECT_FALSE(buffer.boGood());
}

TEST(StreamWriteBuffer, IsGoodOnlyWhileItsStreamIs) {
    for (const auto state : {std::ios_base::failbit, std::ios_base::badbit, std::ios_base::eofbit}) {
        std::ostringstream out;
        StreamWriteBuffer buffer(out);
        EXPECT_TRUE(buffer.boGood());
        out.setstate(state);
        EXPECT_FALSE(buffer.boGood()) << state;
    }
}

TEST(StreamWriteBuffer, ThrowsOnFlushAndNeverAtItsEnd) {
    ThrowingBytes bytes;
    std::ostream out(&bytes);
    out.exceptions(std::ios_base::badbit);
    {
        StreamWriteBuffer buffer(out);
        buffer.vWrite("abc");
        EXPECT_THROW(buffer.vBufferFlush(), std::runtime_error);
        buffer.vWrite("def");
    }
    EXPECT_TRUE(out.bad());
}

}   // namespace
}   // namespace oxa::stream
