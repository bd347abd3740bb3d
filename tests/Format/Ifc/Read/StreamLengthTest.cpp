// SPDX-License-Identifier: Apache-2.0
// A read by streams of every kind: what they tell of their length, and in which pieces they give their bytes, makes no
// difference to the model.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <ios>
#include <istream>
#include <memory>
#include <random>
#include <sstream>
#include <streambuf>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Format/Ifc/Read/BlankText.h"
#include "platform/SharedBytes.h"

namespace oxa::ifc::blank {
namespace {

// Hands out a text, a few bytes at a time if wanted.
class GivingBuffer : public std::streambuf {
public:
    GivingBuffer(std::string sText, std::size_t iPiece) : m_sText(std::move(sText)), m_iPiece(iPiece) {}

protected:
    int_type underflow() override {
        const std::size_t iNow = iPlace();
        if (iNow >= m_sText.size()) return traits_type::eof();
        vStandAt(iNow, std::min(m_iPiece, m_sText.size() - iNow));
        return traits_type::to_int_type(*gptr());
    }
    [[nodiscard]] std::size_t iPlace() const { return m_iPiecePlace + static_cast<std::size_t>(gptr() - eback()); }
    void vStandAt(std::size_t iPlace, std::size_t iBytes) {
        m_iPiecePlace = iPlace;
        char* pFirst = m_sText.data() + std::min(iPlace, m_sText.size());
        setg(pFirst, pFirst, pFirst + iBytes);
    }
    [[nodiscard]] std::size_t iSize() const { return m_sText.size(); }

private:
    std::string m_sText;
    std::size_t m_iPiece;
    std::size_t m_iPiecePlace = 0;
};

// Answers a request with no more than a piece.
class ShortBuffer final : public GivingBuffer {
public:
    ShortBuffer(std::string sText, std::size_t iPiece) : GivingBuffer(std::move(sText), iPiece) {}

private:
    std::streamsize xsgetn(char* pTo, std::streamsize iWanted) override {
        if (gptr() == egptr() && underflow() == traits_type::eof()) return 0;
        const std::streamsize iGiven = std::min<std::streamsize>(iWanted, egptr() - gptr());
        std::memcpy(pTo, gptr(), static_cast<std::size_t>(iGiven));
        gbump(static_cast<int>(iGiven));
        return iGiven;
    }
};

// Can be moved, and tells an end that is not where its bytes end.
class SeekingBuffer final : public GivingBuffer {
public:
    SeekingBuffer(std::string sText, std::size_t iPiece, std::int64_t iToldEnd)
        : GivingBuffer(std::move(sText), iPiece),
          m_iToldEnd(iToldEnd) {}

private:
    pos_type seekoff(off_type iBy, std::ios_base::seekdir eFrom, std::ios_base::openmode) override {
        const auto iBase = eFrom == std::ios_base::beg   ? off_type{0}
                           : eFrom == std::ios_base::cur ? static_cast<off_type>(iPlace())
                                                         : static_cast<off_type>(m_iToldEnd);
        if (iBase + iBy < 0) return pos_type(off_type(-1));
        if (iBy != 0 || eFrom != std::ios_base::cur) vStandAt(static_cast<std::size_t>(iBase + iBy), 0);
        return pos_type(iBase + iBy);
    }
    pos_type seekpos(pos_type iPlace, std::ios_base::openmode eMode) override {
        return seekoff(off_type(iPlace), std::ios_base::beg, eMode);
    }
    std::int64_t m_iToldEnd;
};

// Says that it moved, and stands where it stood.
class PretendingBuffer final : public GivingBuffer {
public:
    PretendingBuffer(std::string sText, std::size_t iPiece, std::int64_t iTold)
        : GivingBuffer(std::move(sText), iPiece),
          m_iTold(iTold) {}

private:
    pos_type seekoff(off_type, std::ios_base::seekdir, std::ios_base::openmode) override { return pos_type(m_iTold); }
    pos_type seekpos(pos_type iPlace, std::ios_base::openmode) override { return iPlace; }
    std::int64_t m_iTold;
};

// Says how many bytes wait, which is not so.
class BoastingBuffer final : public GivingBuffer {
public:
    BoastingBuffer(std::string sText, std::streamsize iWaiting)
        : GivingBuffer(std::move(sText), 64),
          m_iWaiting(iWaiting) {}

private:
    std::streamsize showmanyc() override { return m_iWaiting; }
    std::streamsize m_iWaiting;
};

// A buffer of the standard library with a key to its bytes.
class LockedBuffer final : public std::stringbuf {
public:
    explicit LockedBuffer(std::string sText) : std::stringbuf(sLocked(std::move(sText)), std::ios_base::in) {}

private:
    static std::string sLocked(std::string sText) {
        for (char& c : sText) c = static_cast<char>(c ^ 1);
        return sText;
    }
    std::streamsize xsgetn(char* pTo, std::streamsize iWanted) override {
        const std::streamsize iGiven = std::stringbuf::xsgetn(pTo, iWanted);
        for (std::streamsize i = 0; i < iGiven; ++i) pTo[i] = static_cast<char>(pTo[i] ^ 1);
        return iGiven;
    }
    int_type underflow() override {
        const int_type iByte = std::stringbuf::underflow();
        return iByte == traits_type::eof() ? iByte : iByte ^ 1;
    }
};

// A buffer of the standard library that tells nothing of its length.
class SecretBuffer final : public std::stringbuf {
public:
    explicit SecretBuffer(const std::string& sText) : std::stringbuf(sText, std::ios_base::in) {}

private:
    pos_type seekoff(off_type, std::ios_base::seekdir, std::ios_base::openmode) override {
        return pos_type(off_type(-1));
    }
    pos_type seekpos(pos_type, std::ios_base::openmode) override { return pos_type(off_type(-1)); }
};

// Shares its bytes, and tells an end of them that is not so, as a file that shrinks or grows.
class SharingBuffer final : public GivingBuffer, public stream::ShareableBuffer {
public:
    SharingBuffer(std::string sText, std::uint64_t iToldEnd)
        : GivingBuffer(sText, 4096),
          m_sShared(std::move(sText)),
          m_iToldEnd(iToldEnd) {}
    [[nodiscard]] std::unique_ptr<stream::SharedBytes> pShare() override { return std::make_unique<Shared>(*this); }

private:
    class Shared final : public stream::SharedBytes {
    public:
        explicit Shared(SharingBuffer& buffer) : SharedBytes(buffer.iPlace(), buffer.m_iToldEnd), m_buffer(buffer) {}
        std::size_t iReadAt(std::uint64_t iPlace, char* pTo, std::size_t iWanted) noexcept override {
            const std::string& sText = m_buffer.m_sShared;
            if (iPlace >= sText.size()) return 0;
            const std::size_t iGiven = std::min<std::size_t>(iWanted, sText.size() - static_cast<std::size_t>(iPlace));
            std::memcpy(pTo, sText.data() + iPlace, iGiven);
            return iGiven;
        }
        void vGoOnAt(std::uint64_t iPlace) override { m_buffer.vStandAt(static_cast<std::size_t>(iPlace), 0); }

    private:
        SharingBuffer& m_buffer;
    };
    std::string m_sShared;
    std::uint64_t m_iToldEnd;
};

struct StreamRow {
    std::string sRule;
    std::function<std::unique_ptr<std::streambuf>(const std::string&)> make;
};

const std::vector<StreamRow>& streamRows() {
    static const std::vector<StreamRow> g_rows = [] {
        std::vector<StreamRow> rows;
        for (const std::size_t iPiece : {1U, 7U, 64U, 100'000U}) {
            rows.push_back({"pieces of " + std::to_string(iPiece), [iPiece](const std::string& sText) {
                                return std::make_unique<GivingBuffer>(sText, iPiece);
                            }});
            rows.push_back({"short answers of " + std::to_string(iPiece), [iPiece](const std::string& sText) {
                                return std::make_unique<ShortBuffer>(sText, iPiece);
                            }});
        }
        struct End {
            const char* sRule;
            std::function<std::int64_t(std::int64_t)> told;   // from the true one
        };
        const std::vector<End> ends = {
            {"the true end", [](std::int64_t i) { return i; }},
            {"an end before the first byte's", [](std::int64_t) { return 0; }},
            {"an end in the middle", [](std::int64_t i) { return i / 2; }},
            {"an end one byte early", [](std::int64_t i) { return std::max<std::int64_t>(i - 1, 0); }},
            {"an end one byte late", [](std::int64_t i) { return i + 1; }},
            {"an end twice as far", [](std::int64_t i) { return 2 * i + 600'000; }},
            {"an end at the largest place", [](std::int64_t) { return INT64_MAX; }},
        };
        for (const End& end : ends) {
            rows.push_back({std::string("moves, and tells ") + end.sRule, [end](const std::string& sText) {
                                return std::make_unique<SeekingBuffer>(sText, 5000, end.told(std::ssize(sText)));
                            }});
            rows.push_back({std::string("pretends to move, and tells ") + end.sRule, [end](const std::string& sText) {
                                return std::make_unique<PretendingBuffer>(sText, 5000, end.told(std::ssize(sText)));
                            }});
        }
        for (const std::streamsize iWaiting : {std::streamsize{-1}, std::streamsize{0}, std::streamsize{1} << 40})
            rows.push_back({"so many bytes wait: " + std::to_string(iWaiting), [iWaiting](const std::string& sText) {
                                return std::make_unique<BoastingBuffer>(sText, iWaiting);
                            }});
        rows.push_back({"a changed buffer of the library",
                        [](const std::string& sText) { return std::make_unique<LockedBuffer>(sText); }});
        rows.push_back({"a buffer of the library that can't be moved",
                        [](const std::string& sText) { return std::make_unique<SecretBuffer>(sText); }});
        rows.push_back({"shares its bytes",
                        [](const std::string& sText) { return std::make_unique<SharingBuffer>(sText, sText.size()); }});
        rows.push_back({"shares fewer bytes than it tells", [](const std::string& sText) {
                            return std::make_unique<SharingBuffer>(sText, 2 * sText.size() + 600'000);
                        }});
        rows.push_back({"shares one byte less than it tells", [](const std::string& sText) {
                            return std::make_unique<SharingBuffer>(sText, sText.size() + 1);
                        }});
        rows.push_back({"shares more bytes than it tells", [](const std::string& sText) {
                            return std::make_unique<SharingBuffer>(sText, sText.size() / 2);
                        }});
        rows.push_back({"shares one byte more than it tells", [](const std::string& sText) {
                            return std::make_unique<SharingBuffer>(sText, sText.size() -
                                                                              std::min<std::size_t>(1, sText.size()));
                        }});
        return rows;
    }();
    return g_rows;
}

void vExpectSameOfAllStreams(const std::string& sFile, const Outcome& expected) {
    for (const bool boSingle : {true, false}) {
        vExpectSame(outcomeOf(sFile, boSingle), expected);
        for (const StreamRow& row : streamRows()) {
            SCOPED_TRACE(row.sRule + (boSingle ? ", one thread" : ", several threads"));
            const std::unique_ptr<std::streambuf> pBuffer = row.make(sFile);
            std::istream in(pBuffer.get());
            vExpectSame(outcomeOf(in, boSingle), expected);
        }
    }
}

LargeText randomText(std::size_t iSize, unsigned iSeed) {
    std::mt19937 random(iSeed);
    return largeText(kinds(), iSize, [&](std::size_t, std::size_t, std::size_t) {
        return random() % 8 ? std::string() : sRandomFill(random);
    });
}

TEST(StreamKind, BlanksMeanNothing) {
    const LargeText text = randomText(20 * g_iKiB, 1);
    vExpectSameOfAllStreams(text.sFile, wholeOf(text.sExpected));
}

TEST(StreamKind, BlanksMeanNothingInALargeFile) {
    const LargeText text = randomText(800 * g_iKiB, 2);
    vExpectSameOfAllStreams(text.sFile, wholeOf(text.sExpected));
}

TEST(StreamLength, OfNothingIsRefused) {
    for (const char* sFile : {"", " ", "\n", "/* */", " /* ; */ \r\n"}) {
        SCOPED_TRACE(sFile);
        const Outcome first = outcomeOf(std::string(sFile), true);
        EXPECT_FALSE(first.boRead);
        ASSERT_EQ(first.reports.size(), 1U);
        EXPECT_TRUE(first.reports[0].starts_with("Fatal Syntax 0 Error_InvalidFile |"));
        vExpectSameOfAllStreams(sFile, first);
    }
}

// What is written of the statements that are whole in front of a place.
std::string sFrontOf(const std::string& sFile, std::size_t iCut) {
    std::string sFront = g_sFront;
    std::size_t iBegin = sFront.size();
    bool boString = false;
    for (std::size_t i = iBegin; i < iCut; ++i) {
        if (sFile[i] == '\'') boString = !boString;
        if (sFile[i] != ';' || boString) continue;
        sFront += sText(tokensOf(std::string_view(sFile).substr(iBegin, i + 1 - iBegin)));
        iBegin = i + 1;
    }
    return sFront + g_sBack;
}

TEST(StreamLength, OfAFileThatIsCutKeepsItsFront) {
    const LargeText text =
        largeText(kinds(), 700 * g_iKiB, [](std::size_t, std::size_t i, std::size_t) { return i % 3 ? "  " : "\r\n"; });
    const std::size_t iSize = text.sFile.size();
    for (const std::size_t iCut :
         {std::size_t{600}, std::size_t{16'384}, std::size_t{131'071}, iSize / 2, iSize - 40}) {
        SCOPED_TRACE(iCut);
        const Outcome first = outcomeOf(text.sFile.substr(0, iCut), true);
        ASSERT_EQ(first.reports.size(), 1U);
        EXPECT_TRUE(first.reports[0].starts_with("Fatal Syntax 0 Error_InvalidFile |"));
        vExpectSame(first, {false, first.reports, 0, sFrontOf(text.sFile, iCut)});
        vExpectSameOfAllStreams(text.sFile.substr(0, iCut), first);
    }
}

// At every byte of a small one, by a stream of each kind in turn.
TEST(StreamLength, OfAFileThatIsCutAnywhereMakesNoDifference) {
    const std::string sFile = sFilled(fileTokens(kinds()), [](std::size_t i) { return i % 5 ? " " : "\n/*;*/"; });
    for (std::size_t iCut = 0; iCut <= sFile.size(); ++iCut) {
        SCOPED_TRACE(iCut);
        const std::string sPart = sFile.substr(0, iCut);
        const Outcome expected = outcomeOf(sPart, true);
        const std::unique_ptr<std::streambuf> pBuffer = streamRows()[iCut % streamRows().size()].make(sPart);
        std::istream in(pBuffer.get());
        vExpectSame(outcomeOf(in, iCut % 4 != 0), expected);
        if (HasFailure()) return;
    }
}

// From where a stream stands to its end.
TEST(StreamLength, CountsFromWhereTheStreamStands) {
    const LargeText text = randomText(700 * g_iKiB, 3);
    for (const std::size_t iFront : {1U, 64U, 16'384U, 700'000U})
        for (const bool boSingle : {true, false}) {
            SCOPED_TRACE(iFront);
            std::istringstream in(std::string(iFront, '\\') + text.sFile);
            in.seekg(static_cast<std::streamoff>(iFront));
            vExpectSame(outcomeOf(in, boSingle), wholeOf(text.sExpected));
        }
}

}   // namespace
}   // namespace oxa::ifc::blank
