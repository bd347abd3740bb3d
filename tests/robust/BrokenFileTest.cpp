// SPDX-License-Identifier: Apache-2.0
// One good file, cut off at every byte, and with every byte in turn replaced by each of those that mean something.
#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <streambuf>

#include "../Format/Ifc/AssertLog.h"
#include "../Format/Ifc/ReadResult.h"
#include "Fixtures.h"
#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileError.h"

namespace oxa::ifc {
namespace {

// A stream over a heap block of exactly these bytes: a sanitizer sees each byte read too far.
class ExactStream : private std::streambuf, public std::istream {
public:
    explicit ExactStream(std::string_view bytes)
        : std::istream(static_cast<std::streambuf*>(this)),
          m_pBytes(new char[bytes.size()]) {
        bytes.copy(m_pBytes.get(), bytes.size());
        setg(m_pBytes.get(), m_pBytes.get(), m_pBytes.get() + bytes.size());
    }

private:
    std::unique_ptr<char[]> m_pBytes;
};

struct Model {
    File file;
    io::ReadError errors;
    bool boRead;

    explicit Model(std::string_view bytes) {
        ExactStream in(bytes);
        boRead = file.boRead(in, {}, errors, true, {}, true);
    }
    // The data lines of everything, and the file as far as the project reaches.
    void vWrite() const {
        std::ostringstream out;
        io::WriteError writeErrors;
        file.data().boWrite(out, writeErrors, true);
        file.boWrite(out, writeErrors, {}, true);
    }
};

TEST(BrokenFile, TheFileItselfIsGood) {
    const AssertLog log;
    const Model model(g_sSmallFile);
    EXPECT_TRUE(model.boRead);
    EXPECT_EQ(rowsOf(model.errors), std::vector<std::string>());
    EXPECT_EQ(model.file.data().entities().size(), 14U);
    model.vWrite();
    EXPECT_TRUE(log.texts().empty());
}

TEST(BrokenFile, EveryPrefixIsReported) {
    const AssertLog log;
    // A read ends with the section of data.
    const std::size_t iWhole = g_sSmallFile.rfind("END-ISO") - 1;
    for (std::size_t i = 0; i <= g_sSmallFile.size(); ++i) {
        const Model model(std::string_view(g_sSmallFile).substr(0, i));
        ASSERT_EQ(model.boRead, i >= iWhole) << "the first " << i << " bytes";
        ASSERT_EQ(model.errors.records().empty(), i >= iWhole) << "the first " << i << " bytes";
        model.vWrite();
    }
}

// Nothing is lost without a word: what is read is as long as the file was, or something is said.
TEST(BrokenFile, EveryByteMayBeAnother) {
    using namespace std::string_view_literals;
    static constexpr auto g_nasty = "\0\n\r '\"(),;=#/*\\$.-E0X@~\x7f\x80\xc3\xff"sv;
    const AssertLog log;
    std::string sText = g_sSmallFile;
    std::size_t iRead = 0;
    for (char& c : sText) {
        const char original = c;
        for (const char nasty : g_nasty) {
            c = nasty;
            const Model model(sText);
            ASSERT_TRUE(model.boRead || !model.errors.records().empty()) << sText;
            if (!model.boRead) continue;
            ++iRead;
            model.vWrite();
        }
        c = original;
    }
    EXPECT_GT(iRead, sText.size() * g_nasty.size() / 2);
}

}   // namespace
}   // namespace oxa::ifc
