// SPDX-License-Identifier: Apache-2.0
// The words that stand for an entity.

#include "Convert/EntityFromText.h"

#include <limits>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "Format/Ifc/IfcGuid.h"
#include "StatementModel.h"

namespace oxa::convert {
namespace {

using test::StatementModel;

TEST(EntityFromText, GuidHasTwoSpellings) {
    const struct {
        const char* pRule;
        std::string sText;
        const char* pGuid;   // null where it is none
    } rows[] = {
        {"22 characters", "1CCJ9i1$jSdgYVC2yzHPtC", "1CCJ9i1$jSdgYVC2yzHPtC"},
        {"32 digits", "4c31326c07fb5c9ea89f302f3d459dcc", "1CCJ9i1$jSdgYVC2yzHPtC"},
        {"capital letters", "4C31326C07FB5C9EA89F302F3D459DCC", "1CCJ9i1$jSdgYVC2yzHPtC"},
        {"strokes", "4c31326c-07fb-5c9e-a89f-302f3d459dcc", "1CCJ9i1$jSdgYVC2yzHPtC"},
        {"braces", "{4c31326c-07fb-5c9e-a89f-302f3d459dcc}", "1CCJ9i1$jSdgYVC2yzHPtC"},
        {"strokes elsewhere", "4c31-326c07fb-5c9e-a89f-302f3d459dcc", nullptr},
        {"a digit too few", "4c31326c07fb5c9ea89f302f3d459dc", nullptr},
        {"a digit too many", "4c31326c07fb5c9ea89f302f3d459dcc0", nullptr},
        {"another letter", "4c31326c07fb5c9ea89f302f3d459dcg", nullptr},
        {"22 other characters", "1CCJ9i1 jSdgYVC2yzHPtC", nullptr},
        {"nothing", "", nullptr},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.pRule);
        const std::optional<Guid> guid = guidFromText(row.sText);
        ASSERT_EQ(guid.has_value(), row.pGuid != nullptr);
        if (guid) {
            EXPECT_EQ(ifc::IfcGuid::toIfcGuid(*guid), row.pGuid);
        }
    }
}

TEST(EntityFromText, NumberStandsBehindItsSign) {
    const struct {
        const char* pText;
        std::optional<std::size_t> number;
    } rows[] = {
        {"#12", 12},  {"#0", 0},   {"#99999999999999999999999", std::numeric_limits<std::size_t>::max()},
        {"12", {}},   {"#", {}},   {"", {}},
        {"#12a", {}}, {"#-1", {}}, {"# 12", {}},
        {"#+12", {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.pText);
        EXPECT_EQ(numberFromText(row.pText), row.number);
    }
}

TEST(EntityFromText, GlobalIdIsFoundAfterEveryRead) {
    StatementModel model("#5=IFCWALL('1CCJ9i1$jSdgYVC2yzHPtC',$,$,$,$,$,$,$,$);\n");
    const Guid guid = *guidFromText("1CCJ9i1$jSdgYVC2yzHPtC");
    EXPECT_EQ(pEntityFromGlobalId(model.data(), guid), &model.entity(5));
    EXPECT_EQ(pEntityFromGlobalId(model.data(), *guidFromText("2cp60asVrO3R4Q9IgcHKIk")), nullptr);

    // The short text form makes no map.
    ifc::FileSimple simple(*model.data().pSchema());
    std::stringstream text;
    const auto pErrors = ifc::io::WriteError::pAllocate();
    ifc::FileSimple source(*model.data().pSchema());
    source.header().vSchemaNameSet("IFC4");
    auto* const pWall = source.data().pEntityCreate(ifc::def::schema::ObjectName("IFCWALL"));
    ASSERT_TRUE(pWall->boValueSet(ifc::def::schema::AttributeName("GlobalId"), guid, source.data()));
    ASSERT_TRUE(source.boWrite(nullptr, text, *pErrors, true));
    ASSERT_TRUE(simple.boRead(text, {}, *ifc::io::ReadError::pAllocate(), {}, true));
    ASSERT_EQ(simple.data().entities().size(), 1U);
    EXPECT_EQ(pEntityFromGlobalId(simple.data(), guid), simple.data().entities().front());
}

}   // namespace
}   // namespace oxa::convert
