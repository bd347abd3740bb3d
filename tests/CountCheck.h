// SPDX-License-Identifier: Apache-2.0
// CountCheck: holds the count of a file against what a read of it holds.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <string_view>

#include "Format/Ifc/IfcCountFile.h"
#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "Format/Ifc/IfcFileError.h"

namespace oxa::ifc {

// A file of this test alone, which goes with it.
class CountedText {
public:
    explicit CountedText(std::string_view text = {})
        : m_path(std::filesystem::temp_directory_path() /
                 ("oxa-count-" + std::to_string(std::hash<std::string>()(sTest())) + ".ifc")) {
        vWrite(text);
    }
    ~CountedText() {
        std::error_code error;
        std::filesystem::remove(m_path, error);
    }
    CountedText(const CountedText&) = delete;
    CountedText& operator=(const CountedText&) = delete;

    void vWrite(std::string_view text) const { std::ofstream(m_path, std::ios::binary) << text; }
    [[nodiscard]] const std::filesystem::path& path() const noexcept { return m_path; }

private:
    static std::string sTest() {
        const testing::TestInfo* pInfo = testing::UnitTest::GetInstance()->current_test_info();
        return std::string(pInfo->test_suite_name()) + pInfo->name() +
               std::to_string(testing::UnitTest::GetInstance()->random_seed()) +
               std::to_string(testing::UnitTest::GetInstance()->start_timestamp());
    }

    std::filesystem::path m_path;
};

// Where the count of the file has no doubt, a read of its text has to hold the same, without a fault that the count would
// hide: that is all but faults of values. The count.
inline io::FileCount countAsRead(const std::filesystem::path& path, const std::string& sText,
                                 const io::CountOptions& options = {}) {
    io::FileCount count = io::CountFile::count(path, options);
    if (!count.doubt.empty()) return count;
    File file;
    io::ReadError errors;
    std::istringstream in(sText);
    EXPECT_TRUE(file.boRead(in, errors, {.schemaFromName = options.schemaFromName, .boSingleThreaded = true}));
    EXPECT_EQ(errors.passedOver().iCount, 0U);
    EXPECT_EQ(errors.lostStatements().iCount, 0U);
    for (const ErrorRecord& record : errors.records()) {
        EXPECT_NE(record.severity, Errors::Fatal) << record.description;
        for (const ReportKey eKey :
             {ReportKey::UnknownEntityType, ReportKey::EntityIsAbstract, ReportKey::EntityIdReused,
              ReportKey::DuplicateGuids, ReportKey::UnexpectedNullGuid, ReportKey::AttributeSizeNotFound})
            EXPECT_NE(record.reportKey, eKey) << record.description;
    }
    using Types = std::map<std::string, std::size_t>;
    Types counted, read;
    for (const auto& [pType, iCount] : count.types) counted[pType->sNameUpper] = iCount;
    for (const Entity* pEntity : file.data().entities()) ++read[pEntity->pSchemaEntity()->sNameUpper];
    EXPECT_EQ(counted, read);
    EXPECT_EQ(count.iEntities, file.data().entities().size());
    EXPECT_EQ(count.iGlobalIds, file.data().guidEntityMap().size());
    EXPECT_EQ(count.iBytes, sText.size());
    const auto headerText = [](const File& of) {
        std::ostringstream out;
        io::WriteError ignored;
        of.header().boWrite(out, ignored);
        return out.str();
    };
    EXPECT_EQ(headerText(*count.pFile), headerText(file));
    EXPECT_EQ(count.pFile->data().pSchema(), file.data().pSchema());
    return count;
}

}   // namespace oxa::ifc
