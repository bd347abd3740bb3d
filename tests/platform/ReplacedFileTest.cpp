// SPDX-License-Identifier: Apache-2.0
// A file is replaced as a whole or not at all, and nothing is left beside it.
#include "platform/ReplacedFile.h"

#include <cerrno>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>

#include <gtest/gtest.h>

#include "platform/Id.h"
#include "system/System.h"

namespace oxa::stream {

namespace {

namespace fs = std::filesystem;

class ReplacedFileTest : public testing::Test {
protected:
    ReplacedFileTest() : m_folder(fs::path(testing::TempDir()) / ("oxa-" + Guid::generate().toString())) {
        fs::create_directory(m_folder);
    }
    ~ReplacedFileTest() override {
        std::error_code error;
        fs::remove_all(m_folder, error);
    }

    static std::string sContent(const fs::path& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    static void vPut(const fs::path& path, const char* sText) { std::ofstream(path, std::ios::binary) << sText; }
    [[nodiscard]] std::ptrdiff_t iFiles() const { return std::distance(fs::directory_iterator(m_folder), {}); }

    fs::path m_folder;
};

// The number of the error, 0 for none.
int iErrorOf(const fs::path& path) try {
    ReplacedFile file(path);
    return 0;
} catch (const std::system_error& error) {
    return error.code().value();
}

}   // namespace

TEST_F(ReplacedFileTest, IsThereOnceItIsFinished) {
    const fs::path path = m_folder / "a";
    vPut(path, "old");
    {
        ReplacedFile file(path);
        file.stream() << std::string(300'000, 'x') << "end";
        EXPECT_EQ(sContent(path), "old");
        EXPECT_EQ(iFiles(), 2);
        file.vFinish();
    }
    EXPECT_EQ(sContent(path), std::string(300'000, 'x') + "end");
    EXPECT_EQ(iFiles(), 1);
}

TEST_F(ReplacedFileTest, LeavesTheOldOneWhereItIsNotFinished) {
    const fs::path path = m_folder / "a";
    vPut(path, "old");
    { ReplacedFile(path).stream() << "new"; }
    { ReplacedFile(m_folder / "none").stream() << "new"; }
    EXPECT_EQ(sContent(path), "old");
    EXPECT_EQ(iFiles(), 1);
}

TEST_F(ReplacedFileTest, KeepsLinksAndPermissions) {
    const fs::path path = m_folder / "a";
    const fs::path link = m_folder / "link";
    vPut(path, "old");
    fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write);
    if (!test::boLink(path, link)) GTEST_SKIP() << "no links here";
    ReplacedFile file(link);
    EXPECT_EQ(file.path(), fs::canonical(path));
    file.stream() << "new";
    file.vFinish();
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(sContent(path), "new");
    EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(ReplacedFileTest, RefusesWhatIsNoFile) {
    EXPECT_EQ(iErrorOf(m_folder), EISDIR);
    EXPECT_EQ(iErrorOf(m_folder / "none" / "a"), ENOENT);
    EXPECT_EQ(iErrorOf(m_folder / "a"), 0);
    EXPECT_EQ(iFiles(), 0);
}

TEST_F(ReplacedFileTest, TellsWhatTheDeviceDidNotTake) {
    const std::string sDevice = test::sFullDevice();
    if (sDevice.empty()) GTEST_SKIP() << "no device that takes nothing";
    ReplacedFile file(sDevice);
    file.stream() << "text";
    try {
        file.vFinish();
        ADD_FAILURE() << "finished";
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code().value(), ENOSPC);
    }
}

TEST_F(ReplacedFileTest, WritesToAFileThatIsOpen) {
    const fs::path path = m_folder / "a";
    std::FILE* pFile = std::fopen(path.string().c_str(), "wb");
    ASSERT_NE(pFile, nullptr);
    {
        ReplacedFile file(pFile);
        file.stream() << "text";
        file.vFinish();
        EXPECT_TRUE(file.path().empty());
    }
    EXPECT_EQ(std::fclose(pFile), 0);
    EXPECT_EQ(sContent(path), "text");
}

TEST_F(ReplacedFileTest, AProcessThatEndsRemovesWhatIsUnfinished) {
    if (!test::boFreesOpenNames()) GTEST_SKIP() << "an open file keeps its name until the process has ended";
    const fs::path made = m_folder / "made";
    fs::create_directory(made);
    const Unfinished folder(made);
    ReplacedFile inside(made / "a");
    ReplacedFile finished(m_folder / "b");
    finished.stream() << "whole";
    finished.vFinish();
    ReplacedFile open(m_folder / "c");
    {
        const ReplacedFile forgotten(m_folder / "d");
        Unfinished kept(m_folder / "b");
        kept.vForget();
    }
    EXPECT_EQ(iFiles(), 3);   // the folder, "b" and what becomes "c"
    removeUnfinished();
    EXPECT_EQ(iFiles(), 1);
    EXPECT_EQ(sContent(m_folder / "b"), "whole");
    removeUnfinished();   // nothing is left to be removed
    open.stream() << "late";
    EXPECT_THROW(open.vFinish(), std::system_error);
    EXPECT_EQ(iFiles(), 1);
}

TEST_F(ReplacedFileTest, FilesAreClosedBeforeTheFirstIsRenamed) {
    ReplacedFile a(m_folder / "a");
    a.stream() << "text";
    a.vClose();
    EXPECT_FALSE(fs::exists(m_folder / "a"));
    a.vClose();
    a.vFinish();
    EXPECT_EQ(sContent(m_folder / "a"), "text");
}

}   // namespace oxa::stream
