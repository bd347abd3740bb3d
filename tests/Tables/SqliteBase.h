// SPDX-License-Identifier: Apache-2.0
// SqliteBase: databases of SQLite, read by SQLite itself, and folders for them.
#pragma once

#include <sqlite3.h>

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace oxa::test {

// A database by its path, closed at the end.
class Base {
public:
    explicit Base(const std::filesystem::path& path) { sqlite3_open(path.string().c_str(), &m_pBase); }
    ~Base() { sqlite3_close(m_pBase); }
    Base(const Base&) = delete;
    Base& operator=(const Base&) = delete;

    // A row a line, as tableRows() has them.
    [[nodiscard]] std::vector<std::string> rows(const std::string& sSql) const {
        std::vector<std::string> lines;
        const auto iRow = [](void* pLines, int iCount, char** ppCells, char**) {
            std::string sLine;
            for (int i = 0; i < iCount; ++i) sLine.append(i > 0 ? "|" : "").append(ppCells[i] ? ppCells[i] : "~");
            static_cast<std::vector<std::string>*>(pLines)->push_back(sLine);
            return 0;
        };
        if (sqlite3_exec(m_pBase, sSql.c_str(), iRow, &lines, nullptr) != SQLITE_OK)
            lines.emplace_back(sqlite3_errmsg(m_pBase));
        return lines;
    }

private:
    sqlite3* m_pBase = nullptr;
};

// A folder of its own for a test.
struct Folder {
    std::filesystem::path path =
        std::filesystem::path(testing::TempDir()) /
        (std::string("sqlite-") + testing::UnitTest::GetInstance()->current_test_info()->name());
    Folder() {
        std::filesystem::remove_all(path);
        std::filesystem::create_directory(path);
    }
    ~Folder() { std::filesystem::remove_all(path); }
    [[nodiscard]] auto files() const {
        return std::distance(std::filesystem::directory_iterator(path), std::filesystem::directory_iterator());
    }
};

}   // namespace oxa::test
