// SPDX-License-Identifier: Apache-2.0
// From a parameter list to cells: the splitting, too many and too few parameters, and what a schema may lack.
#include "Format/Ifc/IfcFileEntity.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "Format/Ifc/AssertLog.h"
#include "Format/Ifc/StatementReader.h"
#include "Format/Ifc/Text/Parameters.h"

namespace oxa::ifc {
namespace {

const def::SchemaPset& readSchema() {
    static const std::unique_ptr<def::SchemaPset> pSchema = pSchemaOf(R"(
        ENTITY IfcNothing; END_ENTITY;
        ENTITY IfcTwo; First : REAL; Second : REAL; END_ENTITY;
        ENTITY IfcThree SUBTYPE OF (IfcTwo); Third : STRING; END_ENTITY;
        ENTITY IfcText; First : STRING; Second : LIST OF REAL; Third : OPTIONAL REAL; END_ENTITY;
        )");
    return *pSchema;
}

constexpr char g_sExpectedReal[] = "Error_ExpectedValidRealValueFor";
constexpr char g_sExpectedString[] = "Error_ExpectedValidStringValueFor";
const Report g_tooMany = {"Error_TooManyAttributesFor", "IfcTwo"};
const Report g_noLayout = {"Error_AttributeSizeNotFound", "IfcNothing", Errors::Error, Errors::Schema};

const ReadRow g_splitRows[] = {
    {"none: undefined without a word", "#1=IFCTWO();", "$ Real 0 | $ Real 0"},
    {"one too few", "#1=IFCTWO(1);", "Real 1 | $ Real 0"},
    {"as many as there are", "#1=IFCTWO(1,2);", "Real 1 | Real 2"},
    {"one too many", "#1=IFCTWO(1,2,3);", "Real 1 | Real 2", {g_tooMany}},
    {"a report for each", "#1=IFCTWO(1,2,3,'x',);", "Real 1 | Real 2", {g_tooMany, g_tooMany}},
    {"five for two", "#1=IFCTWO(1,2,3,,x);", "Real 1 | Real 2", {g_tooMany, g_tooMany, g_tooMany}},
    {"supertypes come first", "#1=IFCTHREE(1,2,'c');", "Real 1 | Real 2 | String 'c'"},
    {"commas in a text and in a list", "#1=IFCTEXT('a,b',(1,2),3);", "String 'a,b' | List 1[1, 2] | Real 3"},
    {"a doubled quote", "#1=IFCTEXT('it''s',(2));", "String 'it's' | List 1[2] | $ Real 0"},
    {"a parenthesis in a text", "#1=IFCTEXT('a)',(2),3);", "String 'a)' | List 1[2] | Real 3"},
    {"an opening one, too", "#1=IFCTEXT('((',(2),3);", "String '((' | List 1[2] | Real 3"},
    {"a backslash means nothing", "#1=IFCTEXT('\\',(2),3);", "String '' | List 1[2] | Real 3"},
    {"a comma at the end", "#1=IFCTWO(1,);", "Real 1 | $ Real 0"},
    {"a comma alone is one empty token", "#1=IFCTWO(,);", "Real 0 | $ Real 0", {{g_sExpectedReal, "First"}}},
    {"an empty token in the middle", "#1=IFCTEXT('a',,3);", "String 'a' | List 1[] | Real 3"},
    {"a string left open takes the rest",
     "#1=IFCTEXT('a,(1),2);",
     "String '' | $ List 0 null | $ Real 0",
     {{g_sExpectedString, "First"}}},
    {"a parenthesis left open, too", "#1=IFCTWO((1,2,3);", "Real 0 | $ Real 0", {{g_sExpectedReal, "First"}}},
    {"a stray closing one, too", "#1=IFCTWO(1),2,3);", "Real 0 | $ Real 0", {{g_sExpectedReal, "First"}}},
    {"until an opening one makes up for it", "#1=IFCTWO(1),(2,3);", "Real 0 | Real 3", {{g_sExpectedReal, "First"}}},
    {"what stands behind the last parenthesis is ignored", "#1=IFCTWO(1,2)xyz;", "Real 1 | Real 2"},
    {"no attributes: no layout", "#1=IFCNOTHING();", "", {g_noLayout}},
    {"and no look at the parameters", "#1=IFCNOTHING(1,2);", "", {g_noLayout}},
};

TEST(VAttributesRead, SplitsAtTheTopLevel) {
    for (const ReadRow& row : g_splitRows) {
        for (const bool boArena : {false, true}) {
            SCOPED_TRACE(std::string(row.sRule) + ": " + std::string(row.statement));
            StatementReader reader(readSchema(), boArena);
            const Entity* pEntity = reader.pRead(row.statement);
            ASSERT_NE(pEntity, nullptr);
            EXPECT_EQ(reader.sCells(*pEntity), row.cells);
            reader.vExpectReports(pEntity, row.statement, row.reports);
        }
    }
}

// A token that shows where it ends is read without a cut of the whole list. A first one that does not has all be cut, and the
// others become the same cells, with the same reports, whatever they are. Both stand at the same places: a report may depend
// on those.
TEST(VAttributesRead, TokensAreTheSameHoweverTheirEndsAreFound) {
    constexpr std::string_view g_tokens[] = {
        "$",
        "*",
        "",
        "1",
        "-5",
        "+5",
        "1.",
        "-.5",
        "1.E+5",
        "1.5E-3",
        "0.1234567890123456",
        "1.E400",
        ".T.",
        ".F.",
        ".U.",
        ".T",
        ".RED.",
        ".NONE.",
        "'a'",
        "''",
        "'a''b'",
        "'a,b'",
        "'(x)'",
        "'\\S\\'",
        "'\\X\\E4'",
        "'a'b",
        "'open",
        "'a text of more than sixteen bytes'",
        "'2O2Fr$t4X7Zf8NOew3FLOH'",
        "'2O2Fr$t4X7Zf8NOew3FLOH,",
        "\"0AB\"",
        "\"",
        "#7",
        "#1234567",
        "#12345678",
        "#0",
        "#-5",
        "# 7",
        "#",
        "#7x",
        "#7(,)",
        "##7",
        "IFCLABEL('x')",
        "IFCLABEL('a,)')",
        "IFCLABEL('a''b')",
        "IFCLABEL($)",
        "IFCLABEL(",
        "IFCLABEL()",
        "IFCLABEL('x'",
        "IFCLABEL('x'))",
        "IFCREAL(1.E+5)",
        "IFCREAL(1.)2",
        "IFCREAL(1.,2.)",
        "IFCNO(1.)",
        "(",
        ")",
        "()",
        "(1.)",
        "(1.,2.,3.)",
        "(1.,,2.)",
        "(1.,2.",
        "(1.)2",
        "(1.,'a')",
        "(1.,*)",
        "(1.E+5)",
        "(1.E400)",
        "((1.),(2.,3.))",
        "(#7)",
        "(#7,#8)",
        "(#7,#8",
        "(#7,8)",
        "(#7,#8,)",
        "(,#7)",
        "(#12345678)",
        "(#7,#8x)",
        "(#70000,#1,#2,#3,#4,#5,#6,#7,#8,#9,#10,#11,#12,#13,#14,#15)",
        "(#70000,#1,#2,#3,#4,#5,#6,#7,#8,#9,#10,#11,#12,#13,#14,#15,#16)",
        "(1.,2.,3.,4.,5.,6.,7.,8.,9.,10.,11.,12.,13.,14.,15.,16.)",
        "(1.,2.,3.,4.,5.,6.,7.,8.,9.,10.,11.,12.,13.,14.,15.,16.,17.)",
    };
    const auto pSchema = pSchemaOf(R"(
        TYPE IfcLabel = STRING; END_TYPE; TYPE IfcReal = REAL; END_TYPE;
        TYPE IfcGloballyUniqueId = STRING(22) FIXED; END_TYPE;
        TYPE IfcColour = ENUMERATION OF (RED, GREEN); END_TYPE;
        TYPE IfcValue = SELECT (IfcLabel, IfcReal, IfcAny); END_TYPE;
        ENTITY IfcAny; En : REAL; Ref : IfcAny; Re : REAL; St : OPTIONAL STRING; Gu : IfcGloballyUniqueId; In : INTEGER;
            Bo : BOOLEAN; Lo : LOGICAL; Bi : BINARY; Co : IfcColour; Se : OPTIONAL IfcValue; Nu : NUMBER;
            Refs : SET OF IfcAny; Res : OPTIONAL LIST OF REAL; Rows : LIST OF LIST OF REAL; Texts : LIST OF STRING;
            Ints : LIST OF INTEGER; Values : LIST OF IfcValue; END_ENTITY;
        )");
    // Where the text holds none, another one is made each time.
    const auto withoutMadeGuid = [](std::string sCells) {
        const std::size_t i = sCells.find("Guid ") + 5;
        if (sCells.compare(i, 2, "0 ") != 0 && sCells.compare(i, 22, "2O2Fr$t4X7Zf8NOew3FLOH") != 0)
            sCells.replace(i, 22, "made");
        return sCells;
    };
    constexpr std::size_t g_iOthers = 17;
    std::mt19937 random(7);
    std::size_t iGood = 0;   // all tokens but those left out are values of their attributes
    for (std::size_t i = 0; i < 1000; ++i) {
        // One odd token, and every now and then some more, among those that are left out; of each attribute at some time.
        std::string sOthers;
        const std::size_t iOdd = random() % g_iOthers;
        for (std::size_t k = 0; k < g_iOthers; ++k)
            sOthers +=
                ',' + std::string(k == iOdd || random() % 16 == 0 ? g_tokens[random() % std::size(g_tokens)] : "$");
        std::array<std::string, 2> cells;
        std::array<std::vector<std::string>, 2> reports;
        std::array<std::vector<std::size_t>, 2> named;
        for (const bool boCut : {false, true}) {
            StatementReader reader(*pSchema, i % 2);
            const std::string sStatement = (boCut ? "#1=IFCANY(0.(())" : "#1=IFCANY(0.0000") + sOthers + ");";
            const Entity* pEntity = reader.pRead(sStatement);
            if (!pEntity) continue;
            cells[boCut] = withoutMadeGuid(reader.sCells(*pEntity));
            reports[boCut] = reader.reports();
            named[boCut] = reader.named();
        }
        if (!reports[true].empty()) reports[true].erase(reports[true].begin());   // of the first token
        ASSERT_EQ(cells[false], cells[true]) << sOthers;
        ASSERT_EQ(reports[false], reports[true]) << sOthers;
        ASSERT_EQ(named[false], named[true]) << sOthers;
        iGood += std::ranges::none_of(reports[false],
                                      [](const std::string& sReport) { return sReport.ends_with("category 2"); });
    }
    EXPECT_GT(iGood, 50U);
}

// Where somebody asked for the layout of a type without attributes, its parameters are too many instead.
TEST(VAttributesRead, ALayoutWithoutCellsIsALayout) {
    const auto pSchema = pSchemaOf("ENTITY IfcNothing; END_ENTITY;");
    const def::schema::Entity& type = *pSchema->pEntityFromName(def::schema::ObjectName("IFCNOTHING"));
    EXPECT_EQ(Entity::getDataSize(type).iSize, 0U);
    StatementReader reader(*pSchema);
    const std::string_view statement = "#1=IFCNOTHING(1,2);";
    const Entity* pEntity = reader.pRead(statement);
    ASSERT_NE(pEntity, nullptr);
    const Report tooMany = {"Error_TooManyAttributesFor", "IfcNothing"};
    reader.vExpectReports(pEntity, statement, {tooMany, tooMany});
}

TEST(VAttributesRead, FillsAnInstanceOnce) {
    StatementReader reader(readSchema());
    Entity* pEntity = reader.pRead("#1=IFCTWO(1,2);");
    ASSERT_NE(pEntity, nullptr);
    const def::schema::Entity& type = *readSchema().pEntityFromName(def::schema::ObjectName("IFCTHREE"));
    std::string line = "#1=IFCTHREE(3,4,'x');";
    StepReadInfoData info(line, StatementReader::g_iLine, reader.common);
    pEntity->vAttributesRead(reader.data, type, info, line.find('('), line.rfind(')') - line.find('(') + 1);
    EXPECT_EQ(reader.sCells(*pEntity), "Real 1 | Real 2");
    EXPECT_EQ(pEntity->schemaEntity().sName, "IfcTwo");
    reader.vExpectReports(pEntity, line, {{"Error_DuplicateEntity", "", Errors::Error, Errors::Model}});
}

TEST(VAttributesRead, ReadsAnywhereInALine) {
    StatementReader reader(readSchema());
    const def::schema::Entity& type = *readSchema().pEntityFromName(def::schema::ObjectName("IFCTWO"));
    struct Row {
        std::string line;
        std::size_t iStart;
        std::size_t iLength;
        const char* sCells;
    };
    const Row rows[] = {
        {"(1,2)", 0, 5, "Real 1 | Real 2"}, {"xx(1,2)yy", 2, 5, "Real 1 | Real 2"}, {"()", 0, 2, "$ Real 0 | $ Real 0"},
        {"(", 0, 1, "$ Real 0 | $ Real 0"}, {"", 0, 0, "$ Real 0 | $ Real 0"},
    };
    for (Row row : rows) {
        SCOPED_TRACE(row.line);
        Entity entity;
        StepReadInfoData info(row.line, StatementReader::g_iLine, reader.common);
        entity.vAttributesRead(reader.data, type, info, row.iStart, row.iLength);
        EXPECT_EQ(reader.sCells(entity), row.sCells);
    }
    EXPECT_TRUE(reader.errors.records().empty());
}

// A layout shorter than the type: an inside fault, which is told and harms nothing.
TEST(VAttributesRead, AParameterWithoutAPlaceIsFatal) {
    const auto pSchema = pSchemaOf("ENTITY IfcTwo; First : REAL; Second : REAL; END_ENTITY;");
    const def::schema::Entity& type = *pSchema->pEntityFromName(def::schema::ObjectName("IFCTWO"));
    type.pDataSize.get([&type] {
        auto pSize = std::make_shared<DataSizeEntity>();
        pSize->iSize = 16;
        pSize->offsets = {0};
        pSize->cells = {{type.allAttributes()[0], 0, CellClass::Real}};
        return pSize;
    });
    StatementReader reader(*pSchema);
    const std::string_view statement = "#1=IFCTWO(1,2,3);";
    const Entity* pEntity = reader.pRead(statement);
    ASSERT_NE(pEntity, nullptr);
    EXPECT_EQ(reader.sCells(*pEntity), "Real 1");
    EXPECT_EQ(pEntity->pAttributeFromIndex(1).second, nullptr);
    EXPECT_TRUE(pEntity->boIsUndefined(def::schema::AttributeName("Second")));
    reader.vExpectReports(pEntity, statement,
                          {{"Error_IllegalAttributeIndex", "", Errors::Fatal, Errors::Schema}, g_tooMany});
}

TEST(VAttributesRead, AnAttributeWithoutATypeIsFatalAndReadingGoesOn) {
    const AssertLog log;
    const auto pSchema = pSchemaWithSecondOf({});
    StatementReader reader(*pSchema);
    const std::string_view statement = "#1=IFCFAULTY(1,2,3);";
    const Entity* pEntity = reader.pRead(statement);
    ASSERT_NE(pEntity, nullptr);
    EXPECT_EQ(reader.sCells(*pEntity), "Real 1 | no cell | Real 3");
    reader.vExpectReports(pEntity, statement,
                          {{"Error_UnknownAttributeType", "Second", Errors::Fatal, Errors::Schema}});
    EXPECT_EQ(log.texts(), std::vector<std::string>{"Schema error. Attribute not found."});
}

TEST(VAttributesRead, AnAttributeWithoutATypeMayBeLeftOut) {
    const AssertLog log;
    const auto pSchema = pSchemaWithSecondOf({nullptr});
    StatementReader reader(*pSchema);
    const Entity* pEntity = reader.pRead("#1=IFCFAULTY(1);");
    ASSERT_NE(pEntity, nullptr);
    EXPECT_EQ(reader.sCells(*pEntity), "Real 1 | no cell | $ Real 0");
    EXPECT_TRUE(reader.errors.records().empty());
}

// Whether a parameter reaches it or not.
TEST(VAttributesRead, AKindOutsideTheTwelveIsThrown) {
    const AssertLog log;
    const def::schema::DataTypeBase type(static_cast<def::schema::DataKind>(12));
    for (const std::string_view statement : {"#1=IFCFAULTY(1,2,3);", "#1=IFCFAULTY();"}) {
        SCOPED_TRACE(statement);
        const auto pSchema = pSchemaWithSecondOf({&type});
        StatementReader reader(*pSchema);
        try {
            reader.pRead(statement);
            ADD_FAILURE() << "nothing thrown";
        } catch (const char* text) {
            EXPECT_STREQ(text, "illegal type");
        }
    }
}

using Items = std::vector<std::string>;

// The rule as it is written: one byte after the other.
Items itemsByByte(const std::string& text) {
    Items items;
    bool boInString = false;
    int iDepth = 0;
    std::size_t iItem = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\'') boInString = !boInString;
        if (boInString) continue;
        if (text[i] == '(') ++iDepth;
        if (text[i] == ')') --iDepth;
        if (text[i] != ',' || iDepth != 0) continue;
        items.push_back(text.substr(iItem, i - iItem));
        iItem = i + 1;
    }
    if (iItem != text.size()) items.push_back(text.substr(iItem));
    return items;
}

TEST(ForEachItem, AgreesWithTheRuleByteByByte) {
    constexpr std::string_view g_bytes = "'(),,,aaaa*+&-\xA7\xFF";
    std::mt19937 random(20240301);
    for (int i = 0; i < 100'000; ++i) {
        std::string text(random() % 70, ' ');
        for (char& c : text) c = g_bytes[random() % g_bytes.size()];
        const auto pBytes = std::make_unique<char[]>(text.size());   // the exact size, for the sanitizer
        text.copy(pBytes.get(), text.size());
        Items items;
        details::vForEachItem(pBytes.get(), pBytes.get(), pBytes.get() + text.size(),
                              [&items](const char* first, const char* last) { items.emplace_back(first, last); });
        ASSERT_EQ(items, itemsByByte(text)) << text;
    }
}

}   // namespace
}   // namespace oxa::ifc
