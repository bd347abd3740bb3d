// SPDX-License-Identifier: Apache-2.0
// Names of files are UTF-8, whatever the code page of the machine.
#include "platform/Path.h"

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "platform/ReplacedFile.h"
#include "system/System.h"

namespace oxa {

namespace {

namespace fs = std::filesystem;

class PathTest : public testing::Test {
protected:
    PathTest() : m_folder(test::newFolder()) {}
    ~PathTest() override {
        std::error_code error;
        fs::remove_all(m_folder, error);
    }

    fs::path m_folder;
};

std::string sRead(const fs::path& path) {
    std::FILE* pFile = stream::pOpenFile(path, "rb");
    if (!pFile) return "error " + std::to_string(errno);
    std::string sText(100, '\0');
    sText.resize(std::fread(sText.data(), 1, sText.size(), pFile));
    std::fclose(pFile);
    return sText;
}

}   // namespace

TEST_F(PathTest, HoldsEachCharacter) {
    for (const char* pName : {"house.ifc", "Geb\u00E4ude.ifc", "\u5BB6.ifc", "\U0001F3E0 a'b.ifc"}) {
        SCOPED_TRACE(pName);
        EXPECT_EQ(str::sOfPath(str::pathOf(pName)), pName);
        const fs::path path = m_folder / str::pathOf(pName);
        std::FILE* pFile = stream::pOpenFile(path, "wb");
        ASSERT_NE(pFile, nullptr);
        EXPECT_GT(std::fputs("a\n", pFile), -1);
        std::fclose(pFile);
        EXPECT_EQ(str::sOfPath(fs::directory_iterator(m_folder)->path().filename()), pName);
        EXPECT_EQ(sRead(path), "a\n") << "no end of line is changed";
        stream::ReplacedFile file(path);
        file.stream() << "b";
        file.vFinish();
        EXPECT_EQ(sRead(path), "b");
        fs::remove(path);
    }
}

TEST_F(PathTest, FileThatIsNotThereIsErrno) {
    EXPECT_EQ(sRead(m_folder / "none"), "error " + std::to_string(ENOENT));
    EXPECT_EQ(sRead(m_folder / "none" / "none"), "error " + std::to_string(ENOENT));
}

TEST_F(PathTest, FileMayBeReplacedWhileItIsRead) {
    if (!test::boFreesOpenNames()) GTEST_SKIP() << "an open file keeps its name";
    const fs::path path = m_folder / "a";
    std::ofstream(path, std::ios::binary) << "old";
    std::FILE* pFile = stream::pOpenFile(path, "rb");
    ASSERT_NE(pFile, nullptr);
    EXPECT_EQ(std::fgetc(pFile), 'o');
    stream::ReplacedFile file(path);
    file.stream() << "new";
    file.vFinish();
    EXPECT_EQ(sRead(path), "new");
    EXPECT_EQ(std::fgetc(pFile), 'l') << "whoever reads it goes on with what there was";
    std::fclose(pFile);
}

// A position that 32 bits do not hold: a file with a hole in it.
TEST_F(PathTest, FileMayBeLargerThanFourGigabytes) {
    constexpr std::uint64_t g_iFar = std::uint64_t{5} << 30;
    const fs::path path = m_folder / "a";
    {
        std::ofstream out(path, std::ios::binary);
        out.seekp(static_cast<std::streamoff>(g_iFar));
        out << "end";
        if (!out.flush()) GTEST_SKIP() << "no file of that size here";
    }
    EXPECT_EQ(fs::file_size(path), g_iFar + 3);
    std::ifstream in(path, std::ios::binary);
    in.seekg(static_cast<std::streamoff>(g_iFar));
    std::string sEnd;
    in >> sEnd;
    EXPECT_EQ(sEnd, "end");
    in.clear();
    EXPECT_EQ(static_cast<std::uint64_t>(in.tellg()), g_iFar + 3);
}

}   // namespace oxa
