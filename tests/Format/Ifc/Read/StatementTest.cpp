// SPDX-License-Identifier: Apache-2.0
// Intake of entity statements and the completion of a read.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iterator>
#include <sstream>

#include "Format/Ifc/IfcGuid.h"
#include "Format/Ifc/Read/ReadContext.h"
#include "Format/Ifc/ReadResult.h"
#include "Format/Ifc/SmallModel.h"
#include "platform/Localization.h"
#include "platform/Utilities.h"
#include "provider/SchemaLoader.h"

namespace oxa::ifc {
namespace {

using def::schema::ObjectName;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

struct LineRow {
    const char* sRule;
    std::string sStatement;
    std::vector<std::string> rows;    // with the statement left out, which stands in each
    std::vector<std::string> types;   // of the entities made
};

const char* const g_wallLine = "#5=IFCWALL('2CND9gmL0OS2wPqFz8m2Fi',$,$,$,$,$,$,$,$);";

// clang-format off
const LineRow g_lineRows[] = {
    {"an entity", "#5=IFCDIRECTION((1.));", {}, {"IfcDirection"}},
    {"number 0 is a number", "#0=IFCDIRECTION((1.));", {}, {"IfcDirection"}},
    {"a negative number is one too", "#-1=IFCDIRECTION((1.));", {}, {"IfcDirection"}},
    {"no number sign in front", "5#=IFCDIRECTION((1.));", {"Fatal Syntax 7 Error_ExpectedNumberSign"}, {}},
    {"no =", "#5IFCDIRECTION((1.));", {"Fatal Syntax 7 Error_ExpectedEqualOperator"}, {}},
    {"one digit at least stands in front of =", "#=IFCWALL();", {"Fatal Syntax 7 Error_ExpectedEqualOperator"}, {}},
    {"two bytes are too short", "#;", {"Fatal Syntax 7 Error_ExpectedEqualOperator"}, {}},
    {"a number of letters", "#x=IFCWALL();", {"Fatal Syntax 7 Error_ExpectedLeftParenthesis"}, {}},
    {"a number with more behind it", "#5x=IFCWALL();", {"Fatal Syntax 7 Error_ExpectedLeftParenthesis"}, {}},
    {"a number with a plus", "#+5=IFCWALL();", {"Fatal Syntax 7 Error_ExpectedLeftParenthesis"}, {}},
    {"a number beyond 32 bits", "#99999999999=IFCWALL();", {"Fatal Syntax 7 Error_ExpectedLeftParenthesis"}, {}},
    {"the largest number", "#2147483647=IFCDIRECTION((1.));", {}, {"IfcDirection"}},
    {"one more", "#2147483648=IFCDIRECTION((1.));", {"Fatal Syntax 7 Error_ExpectedLeftParenthesis"}, {}},
    {"no opening parenthesis", "#5=;", {"Fatal Syntax 7 Error_InvalidEntity"}, {}},
    {"a keyword alone", "#5=IFCWALL;", {"Fatal Syntax 7 Error_InvalidEntity"}, {}},
    {"an unknown type", "#5=IFCNO();", {"Error Value 7 Error_UnknownEntityType"}, {}},
    {"no type", "#5=();", {"Error Value 7 Error_UnknownEntityType"}, {}},
    {"a type in lower case", "#5=ifcwall();", {"Error Value 7 Error_UnknownEntityType"}, {}},
    {"a defined type is no entity", "#5=IFCLABEL('a');", {"Error Value 7 Error_UnknownEntityType"}, {}},
    {"no closing parenthesis: nothing, and no word", "#5=IFCWALL(;", {}, {}},
    {"one in front of the opening one: the same", "#5=IFCWALL)(;", {"Error Value 7 Error_UnknownEntityType"}, {}},
    {"what follows the last parenthesis is ignored", "#5=IFCDIRECTION((1.))junk;", {}, {"IfcDirection"}},
    {"an abstract type without a concrete supertype", "#5=IFCPRODUCT('2CND9gmL0OS2wPqFz8m2Fi',$,$,$,$,$,$);",
     {"Error Value 7 Error_EntityIsAbstract"}, {}},
    {"a rooted entity without a GUID", "#5=IFCWALL($,$,$,$,$,$,$,$,$);",
     {"Error Null 7 Error_InvalidNullAttribute", "Error Value 7 Error_UnexpectedNullGuid"}, {"IfcWall"}},
    {"a rooted entity with the null GUID", "#5=IFCWALL('0000000000000000000000',$,$,$,$,$,$,$,$);",
     {"Error Value 7 Error_UnexpectedNullGuid"}, {"IfcWall"}},
    {"faults of attributes do not remove an entity", "#5=IFCCARTESIANPOINT(('a'));",
     {"Error Value 7 Error_ExpectedValidRealInListFor"}, {"IfcCartesianPoint"}},
    {"nothing at all", "", {"Fatal Syntax 7 Error_ExpectedNumberSign"}, {}},
    {"a number sign alone", "#", {"Fatal Syntax 7 Error_ExpectedEqualOperator"}, {}},
    {"three bytes", "#1=", {"Fatal Syntax 7 Error_InvalidEntity"}, {}},
    {"= at the second byte and again", "#=5=IFCDIRECTION((1.));", {"Fatal Syntax 7 Error_ExpectedLeftParenthesis"}, {}},
    {"a second =", "#5==IFCDIRECTION((1.));", {"Error Value 7 Error_UnknownEntityType"}, {}},
    {"zeros in front", "#0005=IFCDIRECTION((1.));", {}, {"IfcDirection"}},
    {"a minus alone", "#-=IFCDIRECTION((1.));", {"Fatal Syntax 7 Error_ExpectedLeftParenthesis"}, {}},
    {"the smallest number", "#-2147483648=IFCDIRECTION((1.));", {}, {"IfcDirection"}},
    {"one less", "#-2147483649=IFCDIRECTION((1.));", {"Fatal Syntax 7 Error_ExpectedLeftParenthesis"}, {}},
    {"a tab in front of a number", "#\t5=IFCDIRECTION((1.));", {"Fatal Syntax 7 Error_ExpectedLeftParenthesis"}, {}},
    {"a second number sign", "##5=IFCDIRECTION((1.));", {"Fatal Syntax 7 Error_ExpectedLeftParenthesis"}, {}},
    {"a parenthesis in front of = is not looked at", "#5(=IFCDIRECTION((1.));",
     {"Fatal Syntax 7 Error_ExpectedLeftParenthesis"}, {}},
    {"a zero byte in a keyword", std::string("#5=IFCDIRECTION\0((1.));", 23), {"Error Value 7 Error_UnknownEntityType"},
     {}},
    {"the last parenthesis may stand in a string", "#5=IFCDIRECTION((1.),')';",
     {"Error Value 7 Error_TooManyAttributesFor"}, {"IfcDirection"}},
    {"no semicolon", "#5=IFCDIRECTION((1.))", {}, {"IfcDirection"}},
    {"left out parameters stay undefined, the GUID too", "#5=IFCWALL();",
     {"Error Value 7 Error_UnexpectedNullGuid"}, {"IfcWall"}},
    {"each parameter too many is told", "#5=IFCDIRECTION((1.),2,3);",
     {"Error Value 7 Error_TooManyAttributesFor", "Error Value 7 Error_TooManyAttributesFor"}, {"IfcDirection"}},
};
// clang-format on

TEST(DataReadLine, TakesStatementsApart) {
    for (const LineRow& row : g_lineRows) {
        SCOPED_TRACE(row.sRule);
        Data data;
        data.vSchemaSet(SchemaLoader::pBuiltIn("IFC4"));
        io::ReadError errors;
        StepReadInfoDataCommon common(errors);
        common.vUpdateSchemaCache(*data.pSchema());
        std::string sStatement = row.sStatement;
        sStatement.shrink_to_fit();
        StepReadInfoData info(sStatement, 7, common);
        std::vector<Entity*> result;
        EXPECT_EQ(data.boReadLine(info, result), !row.types.empty());
        ASSERT_EQ(result.size(), 1U);
        EXPECT_EQ(sStatement, row.sStatement);
        data.finalizeEntity(result[0], common, sStatement, 7);
        std::vector<std::string> rows;
        for (const std::string& sRow : row.rows) rows.push_back(sRow + " | " + row.sStatement);
        EXPECT_EQ(rowsOf(errors), rows);
        std::vector<std::string> types;
        for (const Entity* pEntity : data.entities()) types.push_back(pEntity->schemaEntity().sName);
        EXPECT_EQ(types, row.types);
    }
}

// Beside other threads an entity is held while it is looked at, and let go again.
TEST(DataReadLine, FinalizesBesideOtherThreadsToo) {
    Data data;
    data.vSchemaSet(SchemaLoader::pBuiltIn("IFC4"));
    io::ReadError errors;
    StepReadInfoDataCommon common(errors);
    common.vUpdateSchemaCache(*data.pSchema());
    common.m_boParallel = true;
    const std::string sStatement = "#1=IFCPROJECT('2CND9gmL0OS2wPqFz8m2Fi',$,$,$,$,$,$,$,$);";
    StepReadInfoData info(sStatement, 7, common);
    std::vector<Entity*> result;
    ASSERT_TRUE(data.boReadLine(info, result));
    data.finalizeEntity(result[0], common, sStatement, 7);
    EXPECT_THAT(data.entities(), ElementsAre(result[0]));
    EXPECT_EQ(data.guidEntityMap().size(), 1U);
    EXPECT_EQ(common.slotGet(data, 1).state, 0) << "nobody holds it";
    EXPECT_TRUE(common.slotGet(data, 1).boReferenced()) << "defined, and so not missing";
}

TEST(DataReadLine, WithoutASchemaGivesUpInSilence) {
    Data data;
    io::ReadError errors;
    StepReadInfoDataCommon common(errors);
    std::string sStatement = g_wallLine;
    StepReadInfoData info(sStatement, 1, common);
    std::vector<Entity*> result;
    EXPECT_FALSE(data.boReadLine(info, result));
    EXPECT_THAT(result, ElementsAre(nullptr));
    EXPECT_THAT(rowsOf(errors), IsEmpty());
}

TEST(DataReadLine, ReadsAnAbstractTypeAsItsNextConcreteSupertype) {
    std::vector<SchemaMessage> messages;
    const auto pSchema = SchemaLoader::pSchemaFromExpress(
        "SCHEMA T; ENTITY IfcBase; First : INTEGER; END_ENTITY;"
        "ENTITY IfcMiddle ABSTRACT SUPERTYPE SUBTYPE OF (IfcBase); Second : INTEGER; END_ENTITY;"
        "ENTITY IfcLeaf ABSTRACT SUPERTYPE SUBTYPE OF (IfcMiddle); END_ENTITY; END_SCHEMA;",
        messages);
    ASSERT_TRUE(pSchema);
    const ReadResult result("ISO-10303-21;HEADER;FILE_SCHEMA(('T'));ENDSEC;DATA;#1=IFCLEAF(4,5);ENDSEC;",
                            schemaIs(*pSchema));
    EXPECT_THAT(result.rows(), ElementsAre("Error Value 1 Error_EntityIsAbstract | #1=IFCLEAF(4,5);",
                                           "Error Value 1 Error_TooManyAttributesFor | #1=IFCLEAF(4,5);"));
    ASSERT_EQ(result.iEntities(), 1U);
    EXPECT_EQ(result.file.data().entities()[0]->sWriteLine(result.file.data()), "#1=IFCBASE(4);");
}

// Pieces of a schema.
const char* const g_element = "ENTITY IfcBuildingElement ABSTRACT; First : INTEGER; END_ENTITY;";
const char* const g_proxy = "ENTITY IfcBuildingElementProxy; Own : INTEGER; END_ENTITY;";
const char* const g_beam = "ENTITY IfcBeam ABSTRACT SUBTYPE OF (IfcBuildingElement); END_ENTITY;";
const char* const g_deepBeam = "ENTITY IfcDeepBeam ABSTRACT SUBTYPE OF (IfcBeam); END_ENTITY;";
const char* const g_other = "ENTITY IfcOther ABSTRACT; First : INTEGER; END_ENTITY;";

TEST(DataReadLine, KeepsAnAbstractBuildingElementAsAProxy) {
    const auto join = [](std::initializer_list<const char*> texts) {
        std::string sText;
        for (const char* pText : texts) sText += pText;
        return sText;
    };
    struct Row {
        const char* sRule;
        std::string sDeclarations;
        const char* sKeyword;
        const char* sWritten;   // empty: dropped
    };
    for (const Row& row : {
             Row{"the element itself", join({g_element, g_proxy}), "IFCBUILDINGELEMENT",
                 "#1=IFCBUILDINGELEMENTPROXY(4);"},
             Row{"a subtype", join({g_element, g_beam, g_proxy}), "IFCBEAM", "#1=IFCBUILDINGELEMENTPROXY(4);"},
             Row{"a subtype of a subtype", join({g_element, g_beam, g_deepBeam, g_proxy}), "IFCDEEPBEAM",
                 "#1=IFCBUILDINGELEMENTPROXY(4);"},
             Row{"another type", join({g_element, g_proxy, g_other}), "IFCOTHER", ""},
             Row{"no proxy", join({g_element}), "IFCBUILDINGELEMENT", ""},
             Row{"a proxy that is no entity", join({g_element, "TYPE IfcBuildingElementProxy = INTEGER; END_TYPE;"}),
                 "IFCBUILDINGELEMENT", ""},
             Row{"no element", join({g_other, g_proxy}), "IFCOTHER", ""},
             Row{"an element that is no entity",
                 join({"TYPE IfcBuildingElement = INTEGER; END_TYPE;", g_other, g_proxy}), "IFCOTHER", ""},
         }) {
        SCOPED_TRACE(row.sRule);
        const auto pSchema = pSchemaOf(row.sDeclarations);
        const std::string sStatement = "#1=" + std::string(row.sKeyword) + "(4);";
        const ReadResult result("ISO-10303-21;HEADER;FILE_SCHEMA(('T'));ENDSEC;DATA;" + sStatement + "ENDSEC;",
                                schemaIs(*pSchema));
        EXPECT_TRUE(result.boRead);
        EXPECT_THAT(result.rows(), ElementsAre("Error Value 1 Error_EntityIsAbstract | " + sStatement));
        const Entity* pEntity = result.file.data().pEntityFromId(1);
        EXPECT_EQ(pEntity ? pEntity->sWriteLine(result.file.data()) : "", row.sWritten);
        EXPECT_EQ(result.iEntities(), pEntity ? 1U : 0U);
    }
}

TEST(DataReadLine, BuiltInSchemasHaveTheProxy) {
    struct Row {
        const char* sSchema;
        const char* sKeyword;
        const char* sType;   // none: dropped
    };
    for (const Row& row : {Row{"IFC2X3", "IFCBUILDINGELEMENT", "IfcBuildingElementProxy"},
                           Row{"IFC4", "IFCBUILDINGELEMENT", "IfcBuildingElementProxy"},
                           Row{"IFC2X3", "IFCREINFORCINGELEMENT", "IfcBuildingElementProxy"},
                           Row{"IFC4", "IFCREINFORCINGELEMENT", nullptr},   // no building element there
                           Row{"IFC4X3", "IFCELEMENT", nullptr}}) {
        SCOPED_TRACE(row.sSchema);
        const ReadResult result("ISO-10303-21;HEADER;FILE_SCHEMA(('" + std::string(row.sSchema) +
                                "'));ENDSEC;DATA;#1=" + row.sKeyword +
                                "('2CND9gmL0OS2wPqFz8m2Fi',#1,$,$,$,$,$,$);ENDSEC;");
        ASSERT_EQ(result.errors.records().size(), 1U);
        EXPECT_EQ(result.errors.records()[0].key.value_or({}), "Error_EntityIsAbstract");
        const Entity* pEntity = result.file.data().pEntityFromId(1);
        ASSERT_EQ(pEntity != nullptr, row.sType != nullptr);
        if (row.sType) {
            EXPECT_EQ(pEntity->schemaEntity().sName, row.sType);
        }
    }
}

TEST(DataReadLine, AReusedNumberKeepsTheLaterStatement) {
    const ReadResult result(sIfc4File("#1=IFCDIRECTION((1.));\n#1=IFCCARTESIANPOINT((2.));\n"));
    EXPECT_THAT(result.rows(), ElementsAre("Error Identifier 6 Error_EntityIdReused | #1=IFCCARTESIANPOINT((2.));"));
    EXPECT_NE(result.errors.records()[0].description.find("#1"), std::string::npos);
    EXPECT_TRUE(result.boRead);
    const auto& entities = result.file.data().entities();
    ASSERT_EQ(entities.size(), 2U);   // the same one twice
    EXPECT_EQ(entities[0], entities[1]);
    EXPECT_EQ(entities[0]->sWriteLine(result.file.data()), "#1=IFCCARTESIANPOINT((2.));");
}

// Nor of the values of the earlier one, where the later has none.
TEST(DataReadLine, AReusedNumberKeepsNothingOfTheEarlierStatement) {
    const auto pSchema = pSchemaOf("ENTITY IfcPoint; X : REAL; END_ENTITY; ENTITY IfcBare; END_ENTITY;");
    StatementReader reader(*pSchema);
    Entity* pEntity = reader.pRead("#1=IFCPOINT(1.);");
    ASSERT_NE(pEntity, nullptr);
    EXPECT_NE(pEntity->unsafeAttributesRaw(), nullptr);
    EXPECT_EQ(reader.pRead("#1=IFCBARE();"), pEntity);
    EXPECT_EQ(pEntity->schemaEntity().sName, "IfcBare");
    EXPECT_EQ(pEntity->unsafeAttributesRaw(), nullptr) << "as of any type without attributes";
}

// The number is the unsigned one of the slot, as it would be written.
TEST(DataReadLine, ReportsTheNumberOfAReuse) {
    for (const auto& [sNumber, sReported] : {std::pair("12", "12"), std::pair("-1", "4294967295")}) {
        const std::string sStatement = "#" + std::string(sNumber) + "=IFCDIRECTION((1.));";
        const ReadResult result(sIfc4File(sStatement + sStatement + sStatement));
        EXPECT_EQ(result.iEntities(), 3U);
        std::string sExpected = localize("Ifc", "Error_EntityIdReused");
        sExpected.replace(sExpected.find("%1"), 2, sReported);
        ASSERT_EQ(result.errors.records().size(), 2U);
        for (const ErrorRecord& record : result.errors.records()) EXPECT_EQ(record.description, sExpected);
        EXPECT_EQ(result.file.data().entityIdMap(false).size(), 1U);
    }
}

// The first attribute of a rooted entity is its GUID by position; a schema of one's own may see it otherwise.
TEST(DataReadLine, ARootWithoutAGuidInFrontIsNotEntered) {
    struct Row {
        const char* sRule;
        const char* sDeclarations;
        std::vector<std::string> rows;
    };
    for (const Row& row : {Row{"another attribute", "ENTITY IfcRoot; Name : STRING; END_ENTITY;", {}},
                           Row{"no attribute",
                               "ENTITY IfcRoot; END_ENTITY;",
                               {"Error Schema 1 Error_AttributeSizeNotFound | #1=IFCROOT('a');"}},
                           Row{"no root",
                               "ENTITY IfcRoots; END_ENTITY;",
                               {"Error Value 1 Error_UnknownEntityType | #1=IFCROOT('a');"}}}) {
        SCOPED_TRACE(row.sRule);
        const auto pSchema = pSchemaOf(row.sDeclarations);
        const ReadResult result("ISO-10303-21;HEADER;FILE_SCHEMA(('T'));ENDSEC;DATA;#1=IFCROOT('a');ENDSEC;",
                                schemaIs(*pSchema));
        EXPECT_EQ(result.rows(), row.rows);
        EXPECT_TRUE(result.file.data().guidEntityMap().empty());
    }
}

TEST(DataReadLine, NullGuidsAreNotEntered) {
    const std::string sSecond = "#6=IFCWALL($,$,$,$,$,$,$,$,$);";
    const ReadResult result(sIfc4File("#5=IFCWALL();\n" + sSecond + "\n"));
    EXPECT_THAT(result.rows(), ElementsAre("Error Value 5 Error_UnexpectedNullGuid | #5=IFCWALL();",
                                           "Error Null 6 Error_InvalidNullAttribute | " + sSecond,
                                           "Error Value 6 Error_UnexpectedNullGuid | " + sSecond));
    EXPECT_TRUE(result.file.data().guidEntityMap().empty());
    EXPECT_EQ(result.iEntities(), 2U);
}

TEST(DataReadLine, TheGuidMapKeepsTheFirst) {
    const std::string sSecond = "#6=IFCDOOR('2CND9gmL0OS2wPqFz8m2Fi',$,$,$,$,$,$,$,$,$,$,$,$);";
    const ReadResult result(sIfc4File(std::string(g_wallLine) + "\n" + sSecond + "\n"));
    EXPECT_THAT(result.rows(), ElementsAre("Error Value 6 Error_DuplicateGuids | " + sSecond));
    EXPECT_EQ(result.iEntities(), 2U);
    const Guid guid = *IfcGuid::fromIfcGuid("2CND9gmL0OS2wPqFz8m2Fi");
    EXPECT_EQ(result.file.data().pEntityFromGuid(guid), result.file.data().pEntityFromId(5));
}

TEST(DataReadLine, TheFirstProjectIsTheProject) {
    const ReadResult result(sIfc4File("#2=IFCPROJECT('2CND9gmL0OS2wPqFz8m2Fi',$,$,$,$,$,$,$,$);"
                                      "#1=IFCPROJECT('2CND9gmL0OS2wPqFz8m2Fj',$,$,$,$,$,$,$,$);"));
    EXPECT_EQ(result.file.data().pProject(), result.file.data().pEntityFromId(2));
}

// The instance stands in the list before it is asked for its type.
TEST(DataFinalize, AnEntityWithoutASchemaIsEnteredAndThrows) {
    StatementReader reader;
    EXPECT_THROW(reader.data.finalizeEntity(reader.pEntity(5), reader.common, "#5=;", 1), oxa::exception);
    ASSERT_EQ(reader.data.entities().size(), 1U);
}

TEST(DataFinalize, NothingIsNoEntity) {
    StatementReader reader;
    reader.data.finalizeEntity(nullptr, reader.common, "#5=;", 1);
    EXPECT_TRUE(reader.data.entities().empty());
    EXPECT_TRUE(reader.errors.records().empty());
}

// Where the place of the project is free, a project takes it.
TEST(DataFinalize, OffersTheProject) {
    ReadResult result(sIfc4File("#2=IFCPROJECT('2CND9gmL0OS2wPqFz8m2Fi',$,$,$,$,$,$,$,$);"));
    Data& data = result.file.data();
    Entity* const pProject = data.pProject();
    ASSERT_TRUE(data.boEntityDelete(pProject));
    ASSERT_EQ(data.pProject(), nullptr);
    io::ReadError errors;
    StepReadInfoDataCommon common(errors);
    data.finalizeEntity(pProject, common, "#2=;", 1);
    EXPECT_EQ(data.pProject(), pProject);
}

TEST(DataReadLine, NestedTypedValuesAreBounded) {
    const std::size_t iDepth = 100'000;
    std::string sValue;
    for (std::size_t i = 0; i < iDepth; ++i) sValue += "IFCVALUE(";
    sValue += "IFCLABEL('a')" + std::string(iDepth, ')');
    const ReadResult result(sIfc4File("#1=IFCPROPERTYSINGLEVALUE('a',$," + sValue + ",$);\n#2=IFCDIRECTION((1.));\n"));
    EXPECT_TRUE(result.boRead);
    EXPECT_EQ(result.iEntities(), 2U);
    ASSERT_EQ(result.errors.records().size(), 1U);
    EXPECT_EQ(result.errors.records()[0].key.value_or({}), "Error_ExpectedValidSelectValueFor");
}

// A hundred thousand faults of one statement: linear in time and memory, where a copy of its text for each is not.
TEST(DataReadLine, ManyFaultsShareTheirText) {
    std::string sItems = "$";
    for (int i = 1; i < 100'000; ++i) sItems += ",$";
    const ReadResult result(sIfc4File("#1=IFCPROPERTYLISTVALUE('a',$,(" + sItems + "),$);\n"));
    EXPECT_TRUE(result.boRead);
    EXPECT_EQ(result.iEntities(), 1U);
    EXPECT_TRUE(result.errors.records().empty() ||
                &*result.errors.records().front().lineString == &*result.errors.records().back().lineString);
}

struct FinishRow {
    const char* sRule;
    const char* sData;
    std::vector<std::string> missing;
};

const FinishRow g_finishRows[] = {
    {"no entities", "", {}},
    {"a dangling reference", "#1=IFCAXIS2PLACEMENT2D(#70000,$);", {"70000"}},
    {"two to one number are one", "#1=IFCAXIS2PLACEMENT2D(#9,#9);#2=IFCAXIS2PLACEMENT2D(#9,$);", {"9"}},
    {"in the order of their numbers",
     "#1=IFCAXIS2PLACEMENT2D(#40000000,#8);#2=IFCAXIS2PLACEMENT2D(#32768,#32767);",
     {"8", "32767", "32768", "40000000"}},
    {"an abstract type is missing",
     "#1=IFCRELAGGREGATES('2CND9gmL0OS2wPqFz8m2Fi',$,$,$,#2,(#1));#2=IFCPRODUCT('2CND9gmL0OS2wPqFz8m2Fj',$,$,$,$,$,$);",
     {"2"}},
    {"an unknown type is missing", "#1=IFCAXIS2PLACEMENT2D(#2,$);#2=IFCNO();", {"2"}},
    {"number 0", "#1=IFCAXIS2PLACEMENT2D(#0,$);", {"0"}},
    {"a negative number is told as the one of its slot", "#1=IFCAXIS2PLACEMENT2D(#-5,$);", {"4294967291"}},
    {"what is defined later is not", "#1=IFCAXIS2PLACEMENT2D(#2,$);#2=IFCCARTESIANPOINT((1.));", {}},
    {"a dropped statement is missing", "#1=IFCAXIS2PLACEMENT2D(#2,$);#2=IFCWALL(;", {"2"}},
    {"a reference beyond 32 bits is no other instance", "#1=IFCAXIS2PLACEMENT2D(#4294967297,$);", {"2147483647"}},
};

TEST(DataFinished, ReportsWhatWasNamedAndNeverDefined) {
    for (std::size_t i = 0; i < 2 * std::size(g_finishRows); ++i) {
        const FinishRow& row = g_finishRows[i / 2];
        const bool boSingleThreaded = i % 2;
        SCOPED_TRACE(std::string(row.sRule) + (boSingleThreaded ? ", one thread" : ""));
        std::istringstream in(sIfc4File(row.sData));
        File file;
        io::ReadError errors;
        EXPECT_TRUE(file.boRead(in, {}, errors, true, {}, boSingleThreaded));
        std::vector<std::string> missing;
        for (const ErrorRecord& record : errors.records()) {
            if (record.category != Errors::Reference) continue;   // why it is missing is told elsewhere
            EXPECT_EQ(sRow(record), "Error Reference 0 Error_MissingEntityWithId | ");
            EXPECT_EQ(record.entity, nullptr);
            const std::string sBefore = localize("Ifc", "Error_MissingEntityWithId");
            const std::size_t iNumber = sBefore.find("%1");
            missing.push_back(record.description.substr(iNumber, record.description.size() - sBefore.size() + 2));
        }
        EXPECT_EQ(missing, row.missing);
    }
}

TEST(DataFinished, KeepsOrDropsTheNumbers) {
    const std::string sText = sIfc4File("#70=IFCDIRECTION((1.));#12=IFCCARTESIANPOINT((2.));");
    for (const bool boKeep : {true, false}) {
        SCOPED_TRACE(boKeep);
        const ReadResult result(sText, {}, boKeep);
        const Data& data = result.file.data();
        EXPECT_EQ(data.pEntityFromId(70) != nullptr, boKeep);
        std::vector<std::size_t> numbers;
        for (const Entity* pEntity : data.entities()) numbers.push_back(data.iIdFromEntity(*pEntity));
        if (boKeep)
            EXPECT_THAT(numbers, UnorderedElementsAre(70, 12));
        else
            EXPECT_THAT(numbers, ElementsAre(1, 2));
    }
}

TEST(DataFinished, AnswersWhetherAllReferencesAreMet) {
    for (const bool boDefined : {true, false}) {
        Data data;
        data.vSchemaSet(SchemaLoader::pBuiltIn("IFC4"));
        io::ReadError errors;
        StepReadInfoDataCommon common(errors);
        const auto read = [&](std::string sStatement) {
            StepReadInfoData info(sStatement, 1, common);
            std::vector<Entity*> result;
            data.boReadLine(info, result);
            data.finalizeEntity(result.at(0), common, sStatement, 1);
        };
        read("#1=IFCAXIS2PLACEMENT2D(#2,$);");
        if (boDefined) read("#2=IFCCARTESIANPOINT((1.));");
        EXPECT_EQ(data.boFinished(common, true), boDefined);
        EXPECT_EQ(errors.records().empty(), boDefined);
    }
}

std::vector<std::size_t> linksTo(const Data& data, std::size_t iId) {
    std::vector<std::size_t> links;
    data.pEntityFromId(iId)->boForEachInverseAttribute(
        [&](const def::schema::AttributeInverse&, const EntityList& referrers) {
            for (const Entity* pReferrer : referrers) links.push_back(data.iIdFromEntity(*pReferrer));
            return false;
        });
    return links;
}

// An instance that stands twice in the list is twice in the inverse lists, too.
TEST(DataFinished, FillsInverseListsOncePerEntry) {
    const std::string sElement = "#1=IFCELEMENT('" + sGuidOf(1) + "',$,$,$);";
    const std::string sLink = "#2=IFCRELLINK('" + sGuidOf(2) + "',$,$,(#1));";
    const ReadResult once(sFileOf(sElement + sLink), schemaIs(smallSchema()));
    EXPECT_THAT(linksTo(once.file.data(), 1), ElementsAre(2));
    const ReadResult twice(sFileOf(sElement + sLink + sLink), schemaIs(smallSchema()));
    EXPECT_EQ(twice.iEntities(), 3U);
    EXPECT_THAT(linksTo(twice.file.data(), 1), ElementsAre(2, 2));
}

TEST(DataFinished, DoesNothingAfterAFailedScan) {
    const std::string sText =
        sFileOf("#1=IFCELEMENT('" + sGuidOf(1) + "',$,$,$);#2=IFCRELLINK('" + sGuidOf(2) + "',$,$,(#1,#9));");
    const ReadResult cut(sText.substr(0, sText.find("ENDSEC;\nEND-ISO")), schemaIs(smallSchema()));
    EXPECT_FALSE(cut.boRead);
    EXPECT_EQ(cut.iEntities(), 2U);
    EXPECT_EQ(cut.file.data().guidEntityMap().size(), 2U);   // what was finalised stays
    // "$" for the mandatory Relating, and nothing of #9; the list is not empty, so no word of the missing end.
    EXPECT_THAT(cut.rows(), ElementsAre(testing::StartsWith("Error Null 8 Error_InvalidNullAttribute")));
    std::size_t iLists = 0;
    for (const Entity* pEntity : cut.file.data().entities())
        pEntity->boForEachInverseAttribute([&](const def::schema::AttributeInverse&, const EntityList&) {
            ++iLists;
            return false;
        });
    EXPECT_EQ(iLists, 0U);
}

TEST(DataFinished, SortsByType) {
    const ReadResult result(sIfc4File("#1=IFCWALL('2CND9gmL0OS2wPqFz8m2Fi',$,$,$,$,$,$,$,$);#2=IFCDIRECTION((1.));"
                                      "#3=IFCWALLSTANDARDCASE('2CND9gmL0OS2wPqFz8m2Fj',$,$,$,$,$,$,$,$);"
                                      "#4=IFCDIRECTION((2.));"));
    const Data& data = result.file.data();
    const auto count = [&data](const char* sName, bool boSubtypes) {
        const auto [first, last] = data.range(ObjectName(sName), boSubtypes);
        return last - first;
    };
    EXPECT_EQ(count("IFCWALL", false), 1);
    EXPECT_EQ(count("IFCWALL", true), 2);
    EXPECT_EQ(count("IFCROOT", true), 2);
    EXPECT_EQ(count("IFCROOT", false), 0);
    EXPECT_EQ(count("IFCDIRECTION", true), 2);
    EXPECT_EQ(count("IFCNO", true), 0);
}

}   // namespace
}   // namespace oxa::ifc
