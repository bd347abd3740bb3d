// SPDX-License-Identifier: Apache-2.0
// The statement of an instance, within a write and for display.
#include <gtest/gtest.h>

#include "Format/Ifc/IfcWriteFile.h"
#include "Format/Ifc/SmallModel.h"
#include "platform/Localization.h"

namespace oxa::ifc {
namespace {

using def::schema::ObjectName;

struct LineWriter : io::IfcLineWriterInterface {
    std::vector<std::pair<std::string, unsigned>> m_lines;
    std::size_t iLineAdd(std::string& line, unsigned iId) override {
        m_lines.emplace_back(line, iId);
        return m_lines.size();
    }
    void vFinish() override {}
};

// One statement of a write.
struct EntityWrite {
    io::WriteError errors;
    LineWriter writer;
    StepWriteInfoCommon common;
    StepWriteInfo info{common};

    EntityWrite(const Data& data, const Entity& entity) : common(data.entityIdMap(false), errors, writer, true) {
        info.m_line = "left over from the statement before";
        entity.vWrite(info);
    }
};

TEST(WriteEntity, GivesTheStatementBack) {
    const char* const statements[] = {
        "#1=IFCREAL(1.5);",
        "#7=IFCNOTHING();",
        "#0=IFCTHING($);",
        "#70000=IFCTHING('a');",
        "#2147483647=IFCTHING(*);",
        ("#3=IFCEVERYKIND(1.,.T.,2,3.,'s','0G8310000000420mG51WS8',.U.,\"0FF\",.RED.,IFCCOUNT(4),(5.,6.,7.),"
         "(8.),(9.),$);"),
    };
    for (const char* sStatement : statements) {
        StatementReader reader;
        const Entity* pEntity = reader.pRead(sStatement);
        ASSERT_NE(pEntity, nullptr) << sStatement;
        reader.data.finalizeEntity(reader.pEntity(static_cast<std::uint32_t>(std::stoul(sStatement + 1))),
                                   reader.common, sStatement, 1);
        reader.data.boFinished(reader.common, true);
        EXPECT_EQ(pEntity->sWriteLine(reader.data), sStatement);
        const EntityWrite write(reader.data, *pEntity);
        ASSERT_EQ(write.writer.m_lines.size(), 1U);
        EXPECT_EQ(write.writer.m_lines[0].first, sStatement);
        EXPECT_EQ(write.writer.m_lines[0].second, std::stoul(sStatement + 1));
        EXPECT_TRUE(write.errors.records().empty());
    }
}

TEST(WriteEntity, HasNoStatementForAnEmptyInstance) {
    const Data data;
    const Entity empty;
    EXPECT_EQ(empty.sWriteLine(data), "");
    const EntityWrite write(data, empty);
    EXPECT_TRUE(write.writer.m_lines.empty());
    EXPECT_TRUE(write.common.m_queue.empty());
}

TEST(WriteEntity, WritesNoParametersWithoutABlock) {
    Data data;
    Entity entity;
    entity.unsafeSetSchemaEntity(cellSchema().pEntityFromName(ObjectName("IFCEVERYKIND")));
    EXPECT_EQ(entity.sWriteLine(data), "#1=IFCEVERYKIND();");
}

TEST(WriteEntity, ReportsAnAbstractTypeAndWritesItAllTheSame) {
    Data data;
    data.vSchemaSet(&smallSchema());
    Entity entity;
    entity.vSchemaEntitySet(data, *smallSchema().pEntityFromName(ObjectName("IFCROOT")), true);
    const EntityWrite write(data, entity);
    ASSERT_EQ(write.writer.m_lines.size(), 1U);
    EXPECT_EQ(write.writer.m_lines[0].first, "#1=IFCROOT($,$);");
    const std::string sNull = localize("Ifc", "Error_InvalidNullAttribute");
    EXPECT_EQ(recordTexts(write.errors),
              (std::multiset<std::string>{"1|2|" + localize("Ifc", "Error_EntityIsAbstract") + "|#1=IFCROOT(|1",
                                          "1|3|" + std::string(sNull).replace(sNull.find("%1"), 2, "GlobalId") +
                                              "|#1=IFCROOT(|1"}));
    for (const Errors::ErrorRecord& record : write.errors.records()) EXPECT_EQ(record.entity, nullptr);
}

TEST(WriteEntity, QueuesItselfThenWhatItNamesThenWhatNamesIt) {
    const ReadFileModel model(sFileOf("#5=IFCRELLINK('" + sGuidOf(5) + "',$,#1,(#4));#3=IFCRELLINK('" + sGuidOf(3) +
                                      "',$,#1,(#4));#4=IFCELEMENT('" + sGuidOf(4) +
                                      "',$,#2,$);#2=IFCPOINT((1.));#1=IFCPROJECT('" + sGuidOf(1) + "',$,$);"),
                              true, schemaIs(smallSchema()));
    ASSERT_TRUE(model.boRead);
    const auto number = [&model](const Entity* pEntity) { return model.file.data().iIdFromEntity(*pEntity); };
    const EntityWrite write(model.file.data(), *model.file.data().pEntityFromId(4));
    std::vector<std::size_t> queue;
    for (const Entity* pEntity : write.common.m_queue) queue.push_back(number(pEntity));
    // The list of referrers is in the order of the entities.
    const std::vector<const Entity*> referrers =
        std::as_const(*model.file.data().pEntityFromId(4)).entitiesInverseFromIndex(0);
    ASSERT_EQ(referrers.size(), 2U);
    EXPECT_EQ(queue, (std::vector<std::size_t>{4, 2, number(referrers[0]), number(referrers[1])}));
}

TEST(WriteEntity, DealsNumbersForDisplayThatAWriteKeeps) {
    ReadFileModel model(sFileOf("#8=IFCPROPERTY('a',#9,(),$);#9=IFCPOINT((1.));"), true, schemaIs(smallSchema()),
                        false);
    const Entity* pProperty = model.file.data().entities().back();
    EXPECT_EQ(pProperty->sWriteLine(model.file.data()), "#1=IFCPROPERTY('a',#2,(),$);");
    std::ostringstream out;
    io::WriteError errors;
    EXPECT_TRUE(model.file.data().boWrite(out, errors, true));
    EXPECT_EQ(out.str(), "#2=IFCPOINT((1.));\n#1=IFCPROPERTY('a',#2,(),$);\n");
}

}   // namespace
}   // namespace oxa::ifc
