// SPDX-License-Identifier: Apache-2.0
// The bytes of a stream are the same at each place, whoever reads them, and the stream goes on where it should.
#include "platform/SharedBytes.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cwchar>
#include <filesystem>
#include <fstream>
#include <ios>
#include <istream>
#include <limits>
#include <locale>
#include <memory>
#include <sstream>
#include <streambuf>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "platform/Path.h"
#include "platform/System.h"
#include "system/System.h"

namespace oxa::stream {

namespace {

namespace fs = std::filesystem;
using Traits = std::char_traits<char>;

constexpr std::size_t g_iShared = 100'000;

// Bytes of each value, ends of lines and of texts among them, that differ from those one buffer away.
std::string sLetters(std::size_t iCount) {
    std::string s(iCount, '\0');
    for (std::size_t i = 0; i < iCount; ++i) s[i] = static_cast<char>(i * 7 + i / 251);
    return s;
}

struct Source {
    std::string sName;
    std::unique_ptr<std::streambuf> pBuffer;
};

struct Closing {
    void operator()(std::FILE* pFile) const { std::fclose(pFile); }
};
using OpenFile = std::unique_ptr<std::FILE, Closing>;

class SharedBytesTest : public testing::Test {
protected:
    SharedBytesTest() : m_folder(test::newFolder()), m_path(m_folder / "bytes") {}
    ~SharedBytesTest() override {
        std::error_code error;
        fs::remove_all(m_folder, error);
    }

    void vPut(const std::string& sText) const { std::ofstream(m_path, std::ios::binary) << sText; }
    [[nodiscard]] OpenFile openWith(const std::string& sText) const {
        vPut(sText);
        return OpenFile(pOpenFile(m_path, "rb"));
    }
    // All that share this text without more ado, each at its begin.
    [[nodiscard]] std::vector<Source> sourcesOf(const std::string& sText) const {
        const std::ios::openmode eIn = std::ios::in;
        std::vector<Source> all;
        all.push_back({"a string", std::make_unique<std::stringbuf>(sText, eIn)});
        all.push_back({"a string that may be written", std::make_unique<std::stringbuf>(sText)});
        auto pWritten = std::make_unique<std::stringbuf>();
        pWritten->sputn(sText.data(), static_cast<std::streamsize>(sText.size()));
        all.push_back({"a string that was written", std::move(pWritten)});
        if (!platform::boTextIsPlain()) return all;
        vPut(sText);
        for (const bool boText : {false, true}) {
            auto pFile = std::make_unique<std::filebuf>();
            pFile->open(m_path, boText ? eIn : eIn | std::ios::binary);
            all.push_back({boText ? "a file opened as text" : "a file", std::move(pFile)});
        }
        return all;
    }

    fs::path m_folder;
    fs::path m_path;
};

std::string sTaken(std::streambuf& buffer, std::size_t iWanted) {
    std::string s(iWanted, '\0');
    s.resize(static_cast<std::size_t>(buffer.sgetn(s.data(), static_cast<std::streamsize>(iWanted))));
    return s;
}

std::string sTaken(std::FILE* pFile, std::size_t iWanted) {
    std::string s(iWanted, '\0');
    s.resize(std::fread(s.data(), 1, iWanted, pFile));
    return s;
}

std::string sReadAt(SharedBytes& bytes, std::uint64_t iPlace, std::size_t iWanted) {
    std::string s(iWanted, '\0');
    s.resize(bytes.iReadAt(iPlace, s.data(), iWanted));
    return s;
}

struct ReadRow {
    const char* sRule;
    std::uint64_t iPlace;
    std::size_t iWanted;
    std::size_t iRead;   // of g_iShared bytes
};
const ReadRow g_readRows[] = {
    {"the begin", 0, 10, 10},
    {"nothing", 0, 0, 0},
    {"all", 0, g_iShared, g_iShared},
    {"more than all", 0, g_iShared + 5, g_iShared},
    {"over some buffers", 8190, 40'000, 40'000},
    {"before what was read last", 77, 3, 3},
    {"to the end", g_iShared - 10, 10, 10},
    {"past the end", g_iShared - 3, 10, 3},
    {"at the end", g_iShared, 10, 0},
    {"behind the end", g_iShared + 1, 10, 0},
    {"no place of 32 bits", (std::uint64_t{1} << 32) + 5, 10, 0},
    {"no place of 40 bits", (std::uint64_t{1} << 40) + 5, 10, 0},
    {"the last place that a number can say", std::numeric_limits<std::uint64_t>::max(), 10, 0},
};

// What a row reads, by a function like iReadAt.
template <class ReadAt>
void vExpectRow(const ReadRow& row, const std::string& sText, ReadAt iReadAt) {
    std::string s(row.iWanted + 1, '?');
    const std::size_t iRead = iReadAt(row.iPlace, s.data(), row.iWanted);
    ASSERT_EQ(iRead, row.iRead);
    EXPECT_EQ(s.back(), '?') << "nothing is written behind";
    const auto iFrom = static_cast<std::size_t>(std::min<std::uint64_t>(row.iPlace, sText.size()));
    EXPECT_TRUE(s.substr(0, iRead) == sText.substr(iFrom, iRead));
}

// Says that it converts.
class ConvertingCodecvt final : public std::codecvt<char, char, std::mbstate_t> {
protected:
    bool do_always_noconv() const noexcept override { return false; }
};

class OwnBuffer final : public std::streambuf {
public:
    explicit OwnBuffer(std::string sText) : m_sText(std::move(sText)) {
        setg(m_sText.data(), m_sText.data(), m_sText.data() + m_sText.size());
    }

private:
    std::string m_sText;
};

// Both give something else than the bytes that they hold.
class OwnStringBuffer final : public std::stringbuf {
public:
    using std::stringbuf::stringbuf;

protected:
    std::streamsize xsgetn(char* pTo, std::streamsize iWanted) override {
        std::fill_n(pTo, iWanted, 'x');
        return iWanted;
    }
};
class OwnFileBuffer final : public std::filebuf {
protected:
    std::streamsize xsgetn(char* pTo, std::streamsize iWanted) override {
        std::fill_n(pTo, iWanted, 'x');
        return iWanted;
    }
};

class OwnBytes final : public SharedBytes {
public:
    OwnBytes() : SharedBytes(3, 5) {}
    std::size_t iReadAt(std::uint64_t, char*, std::size_t) noexcept override { return 0; }
    void vGoOnAt(std::uint64_t) override {}
};

class SharingBuffer final : public std::streambuf, public ShareableBuffer {
public:
    explicit SharingBuffer(bool boShares) : m_boShares(boShares) {}
    std::unique_ptr<SharedBytes> pShare() override {
        ++m_iAsked;
        if (!m_boShares) return nullptr;
        auto pBytes = std::make_unique<OwnBytes>();
        m_pGiven = pBytes.get();
        return pBytes;
    }

    int m_iAsked = 0;
    const SharedBytes* m_pGiven = nullptr;

private:
    bool m_boShares;
};

}   // namespace

TEST_F(SharedBytesTest, BeginWhereTheStreamStandsAndLeaveItThere) {
    const std::string sText = sLetters(g_iShared);
    const std::size_t taken[] = {0, 1, 1000, 20'000, g_iShared - 1, g_iShared};
    for (const std::size_t iTaken : taken) {
        for (const Source& source : sourcesOf(sText)) {
            SCOPED_TRACE(source.sName + ", " + std::to_string(iTaken) + " bytes taken");
            std::streambuf& buffer = *source.pBuffer;
            ASSERT_TRUE(sTaken(buffer, iTaken) == sText.substr(0, iTaken));
            {
                const std::unique_ptr<SharedBytes> pShared = pShare(buffer);
                ASSERT_NE(pShared, nullptr);
                EXPECT_EQ(pShared->iBegin(), iTaken);
                EXPECT_EQ(pShared->iEnd(), g_iShared);
                EXPECT_TRUE(sReadAt(*pShared, iTaken, 100) == sText.substr(iTaken, 100));
                EXPECT_TRUE(sReadAt(*pShared, g_iShared - 1, 1) == sText.substr(g_iShared - 1));
                pShared->vGoOnAt(iTaken);
            }
            EXPECT_TRUE(sTaken(buffer, g_iShared) == sText.substr(iTaken));
            EXPECT_EQ(buffer.sgetc(), Traits::eof());
        }
    }
}

TEST_F(SharedBytesTest, MayBeNone) {
    for (const Source& source : sourcesOf("")) {
        SCOPED_TRACE(source.sName);
        const std::unique_ptr<SharedBytes> pShared = pShare(*source.pBuffer);
        ASSERT_NE(pShared, nullptr);
        EXPECT_EQ(pShared->iBegin(), 0U);
        EXPECT_EQ(pShared->iEnd(), 0U);
        EXPECT_EQ(sReadAt(*pShared, 0, 10), "");
        pShared->vGoOnAt(0);
        EXPECT_EQ(source.pBuffer->sgetc(), Traits::eof());
    }
}

TEST_F(SharedBytesTest, AreReadAtAnyPlace) {
    const std::string sText = sLetters(g_iShared);
    for (const Source& source : sourcesOf(sText)) {
        const std::unique_ptr<SharedBytes> pShared = pShare(*source.pBuffer);
        ASSERT_NE(pShared, nullptr) << source.sName;
        for (const ReadRow& row : g_readRows) {
            SCOPED_TRACE(source.sName + ": " + row.sRule);
            vExpectRow(row, sText, [&pShared](std::uint64_t iPlace, char* pTo, std::size_t iWanted) {
                return pShared->iReadAt(iPlace, pTo, iWanted);
            });
        }
    }
}

TEST_F(SharedBytesTest, AreReadByThreadsAtOnce) {
    constexpr std::size_t iThreads = 8;
    constexpr std::size_t iReads = 400;
    const std::string sText = sLetters(g_iShared);
    for (const Source& source : sourcesOf(sText)) {
        SCOPED_TRACE(source.sName);
        const std::unique_ptr<SharedBytes> pShared = pShare(*source.pBuffer);
        ASSERT_NE(pShared, nullptr);
        std::atomic<std::size_t> iStarted = 0;
        std::vector<std::size_t> right(iThreads);
        std::vector<std::thread> threads;
        for (std::size_t i = 0; i < iThreads; ++i) {
            threads.emplace_back([&, i] {
                ++iStarted;
                while (iStarted.load() < iThreads) std::this_thread::yield();
                std::size_t iRight = 0;
                for (std::size_t iRead = 0; iRead < iReads; ++iRead) {
                    const std::size_t iPlace = (i * 12'347 + iRead * 7919) % g_iShared;
                    const std::size_t iWanted = 1 + iRead * 37 % 5000;
                    if (sReadAt(*pShared, iPlace, iWanted) == sText.substr(iPlace, iWanted)) ++iRight;
                }
                right[i] = iRight;
            });
        }
        for (std::thread& thread : threads) thread.join();
        EXPECT_EQ(right, std::vector<std::size_t>(iThreads, iReads));
    }
}

TEST_F(SharedBytesTest, HaveTheStreamGoOnAnywhere) {
    constexpr std::size_t iTaken = 5;
    const std::string sText = sLetters(g_iShared);
    const std::size_t places[] = {iTaken, iTaken + 1, 1000, 60'000, g_iShared - 1, g_iShared};
    for (const std::size_t iPlace : places) {
        for (const Source& source : sourcesOf(sText)) {
            SCOPED_TRACE(source.sName + ", at " + std::to_string(iPlace));
            std::streambuf& buffer = *source.pBuffer;
            ASSERT_EQ(sTaken(buffer, iTaken).size(), iTaken);
            const std::unique_ptr<SharedBytes> pShared = pShare(buffer);
            ASSERT_NE(pShared, nullptr);
            EXPECT_TRUE(sReadAt(*pShared, 30'000, 30'000) == sText.substr(30'000, 30'000));
            pShared->vGoOnAt(iPlace);
            std::istream in(&buffer);
            EXPECT_EQ(in.get(), iPlace < g_iShared ? Traits::to_int_type(sText[iPlace]) : Traits::eof());
            EXPECT_EQ(in.eof(), iPlace == g_iShared);
            EXPECT_TRUE(sTaken(buffer, g_iShared) == sText.substr(std::min(iPlace + 1, g_iShared)));
        }
    }
}

TEST_F(SharedBytesTest, OfAFileAreThoseThatItHas) {
    vPut("a\r\nb");
    std::filebuf file;
    ASSERT_NE(file.open(m_path, std::ios::in | std::ios::binary), nullptr);
    EXPECT_EQ(pShare(file) != nullptr, platform::boTextIsPlain());
    EXPECT_EQ(sTaken(file, 10), "a\r\nb");
}

TEST_F(SharedBytesTest, AreNotThoseBeforeAConversion) {
    if (!platform::boTextIsPlain()) GTEST_SKIP() << "no file is shared here";
    vPut("abc");
    std::filebuf file;
    file.pubimbue(std::locale(std::locale::classic(), new ConvertingCodecvt));
    ASSERT_NE(file.open(m_path, std::ios::in | std::ios::binary), nullptr);
    EXPECT_EQ(pShare(file), nullptr);
}

TEST_F(SharedBytesTest, AreNotTakenFromABufferThatMayDoAsItLikes) {
    OwnBuffer own("abc");
    EXPECT_EQ(pShare(own), nullptr);
    EXPECT_EQ(sTaken(own, 10), "abc");
    OwnStringBuffer ofString("abc");
    EXPECT_EQ(pShare(ofString), nullptr);
    EXPECT_EQ(sTaken(ofString, 3), "xxx");
    vPut("abc");
    OwnFileBuffer ofFile;
    ASSERT_NE(ofFile.open(m_path, std::ios::in | std::ios::binary), nullptr);
    EXPECT_EQ(pShare(ofFile), nullptr);
    EXPECT_EQ(sTaken(ofFile, 3), "xxx");
}

TEST_F(SharedBytesTest, AreWhatABufferShares) {
    SharingBuffer sharing(true);
    const std::unique_ptr<SharedBytes> pShared = pShare(sharing);
    ASSERT_NE(pShared, nullptr);
    EXPECT_EQ(pShared.get(), sharing.m_pGiven);
    EXPECT_EQ(pShared->iBegin(), 3U);
    EXPECT_EQ(pShared->iEnd(), 5U);
    EXPECT_EQ(sharing.m_iAsked, 1);

    SharingBuffer closed(false);
    EXPECT_EQ(pShare(closed), nullptr);
    EXPECT_EQ(closed.m_iAsked, 1);
}

TEST_F(SharedBytesTest, OfAnOpenFileAreReadAtAnyPlace) {
    const std::string sText = sLetters(g_iShared);
    const OpenFile file = openWith(sText);
    ASSERT_NE(file, nullptr);
    for (const ReadRow& row : g_readRows) {
        SCOPED_TRACE(row.sRule);
        vExpectRow(row, sText, [&file](std::uint64_t iPlace, char* pTo, std::size_t iWanted) {
            return iReadFileAt(file.get(), iPlace, pTo, iWanted);
        });
    }
}

TEST_F(SharedBytesTest, LeaveAnOpenFileWhereItStands) {
    if (!platform::boTextIsPlain()) GTEST_SKIP() << "its position is not defined here";
    const std::string sText = sLetters(g_iShared);
    const OpenFile file = openWith(sText);
    ASSERT_NE(file, nullptr);
    std::string sPart(1000, '\0');
    EXPECT_EQ(iReadFileAt(file.get(), 50'000, sPart.data(), sPart.size()), sPart.size());
    EXPECT_TRUE(sTaken(file.get(), 10) == sText.substr(0, 10));
    EXPECT_EQ(iReadFileAt(file.get(), 70'000, sPart.data(), sPart.size()), sPart.size());
    EXPECT_TRUE(sTaken(file.get(), g_iShared) == sText.substr(10));
}

TEST_F(SharedBytesTest, OfAnOpenFileGoOnAnywhere) {
    const std::string sText = sLetters(g_iShared);
    const OpenFile file = openWith(sText);
    ASSERT_NE(file, nullptr);
    const struct {
        const char* sRule;
        std::uint64_t iPlace;
        std::size_t iRead;
    } rows[] = {
        {"ahead", 60'000, 100},
        {"back", 7, 100},
        {"in the same buffer", 20, 100},
        {"the begin", 0, 100},
        {"near the end", g_iShared - 3, 3},
        {"the end", g_iShared, 0},
        {"no place of 32 bits", (std::uint64_t{1} << 32) + 5, 0},
        {"back from there", 1000, 100},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sRule);
        ASSERT_TRUE(boFileMoved(file.get(), row.iPlace));
        const auto iFrom = static_cast<std::size_t>(std::min<std::uint64_t>(row.iPlace, g_iShared));
        EXPECT_TRUE(sTaken(file.get(), 100) == sText.substr(iFrom, row.iRead));
    }
    EXPECT_FALSE(boFileMoved(file.get(), std::numeric_limits<std::uint64_t>::max()));
}

}   // namespace oxa::stream
