// SPDX-License-Identifier: Apache-2.0
// The text of cells in a file (ISO 10303-21, 6.4), to the byte, and what is reported of those that have no good one.
#include "Format/Ifc/IfcFileAttribute.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>

#include "Format/Ifc/AssertLog.h"
#include "Format/Ifc/IfcStepStrings.h"
#include "Format/Ifc/IfcWriteFile.h"
#include "Format/Ifc/StatementReader.h"
#include "platform/Localization.h"

namespace oxa::ifc {
namespace {

using def::schema::Attribute;
using def::schema::ObjectName;

const Attribute& attributeOf(const char* sKeyword, std::size_t iIndex = 0) {
    const def::schema::Entity* pType = cellSchema().pEntityFromName(ObjectName(sKeyword));
    if (!pType) throw std::runtime_error(sKeyword);
    return pType->ownAttributes.at(iIndex);
}

// A write in the middle of a statement.
class CellWriter {
public:
    static constexpr std::string_view g_sBefore = "#9=X(";
    static constexpr std::uint32_t g_iId = 9;

    explicit CellWriter(const Data& data) : m_common(data.entityIdMap(false), m_errors, m_pool, true) {
        m_line.m_line = g_sBefore;
        m_line.m_iId = g_iId;
    }
    std::string sText(const AttributeBase& cell, const Attribute& attribute, bool boInList = false,
                      bool boPlainText = false) {
        AttributeBase::StepWriteInfoAttribute info{&m_line, &attribute, nullptr, boInList, boPlainText};
        cell.vWriteAttribute(info);
        EXPECT_TRUE(m_line.m_line.starts_with(g_sBefore));
        EXPECT_EQ(info.m_boInList, boInList);
        return m_line.m_line.substr(g_sBefore.size());
    }
    // "Fatal, category 3: description, line 9: what was written so far", without the start of the statement.
    std::vector<std::string> records() const {
        std::vector<std::string> texts;
        for (const Errors::ErrorRecord& record : m_errors.records()) {
            EXPECT_EQ(record.entity, nullptr);
            EXPECT_TRUE(record.lineString && record.lineString->starts_with(g_sBefore));
            texts.push_back((record.severity == Errors::Fatal ? "Fatal, category " : "Error, category ") +
                            std::to_string(record.category) + ": " + record.description + " Line " +
                            std::to_string(record.lineNumber) + ": " +
                            record.lineString.value_or("").substr(g_sBefore.size()));
        }
        return texts;
    }
    const StepWriteInfoCommon& common() const { return m_common; }

private:
    io::WriteError m_errors;
    io::ThreadStringPool m_pool;
    StepWriteInfoCommon m_common;
    StepWriteInfo m_line{m_common};
};

std::string sRecord(const char* sSeverity, int iCategory, const char* sKey, const std::string& sArgument, int iLine,
                    const std::string& sSoFar) {
    std::string sText = localize("Ifc", sKey);
    sText.replace(sText.find("%1"), 2, sArgument);
    return std::string(sSeverity) + ", category " + std::to_string(iCategory) + ": " + sText + " Line " +
           std::to_string(iLine) + ": " + sSoFar;
}
// What is reported, by the state of the cell.
std::string sNull(const std::string& sSoFar, const char* sName = "Value") {
    return sRecord("Fatal", Errors::Null, "Error_InvalidNullAttribute", sName, CellWriter::g_iId, sSoFar);
}
std::string sNoReference(const std::string& sSoFar, const char* sName = "Value") {
    return sRecord("Error", Errors::Null, "Error_InvalidNullAttribute", sName, 0, sSoFar);
}
std::string sNullGuid(const std::string& sSoFar) {
    return sRecord("Fatal", Errors::Value, "Error_ExpectedValidGuidValueFor", "Value", CellWriter::g_iId, sSoFar);
}
std::string sNotEnumerator(const char* sValue, const std::string& sSoFar) {
    return sRecord("Error", Errors::Value, "Error_NotValidEnumerationValue", sValue, 0, sSoFar);
}

std::string sReal(double value) {
    Data data;
    AttributeReal cell;
    cell.m_value = value;
    return CellWriter(data).sText(cell, attributeOf("IFCREAL"));
}

TEST(WriteReal, HasSixteenDigitsAndAPoint) {
    const struct {
        double value;
        const char* sText;
    } rows[] = {
        {0, "0."},
        {-0.0, "-0."},
        {1, "1."},
        {-1, "-1."},
        {1.5, "1.5"},
        {-0.25, "-0.25"},
        {100000, "100000."},
        {999999999999999, "999999999999999."},
        {1e15, "1000000000000000."},
        {-1e15, "-1000000000000000."},
        {9999999999999998, "9999999999999998."},
        {1e16, "1.E+16"},
        {-1e16, "-1.E+16"},
        {1e20, "1.E+20"},
        {1.5e20, "1.5E+20"},
        {1e100, "1.E+100"},
        {123456789012345678., "1.234567890123457E+17"},
        {1e-4, "0.0001"},
        {1e-5, "1.E-05"},
        {1.25e-5, "1.25E-05"},
        {1e-100, "1.E-100"},
        {0.1, "0.1"},
        {0.1 + 0.2, "0.3"},
        {1. / 3, "0.3333333333333333"},
        {2. / 3, "0.6666666666666666"},
        {0.017453292519943295, "0.0174532925199433"},
        {3.141592653589793, "3.141592653589793"},
        {1234567.891, "1234567.891"},
        {0.99999999999999999, "1."},
        {0.9999999999999999, "0.9999999999999999"},
        {999999999999999.9, "999999999999999.9"},
        {99999999999999.99, "99999999999999.98"},
        {std::numeric_limits<double>::max(), "1.797693134862316E+308"},
        {std::numeric_limits<double>::min(), "2.225073858507201E-308"},
        {std::numeric_limits<double>::denorm_min(), "4.940656458412465E-324"},
        {9007199254740991, "9007199254740991."},
        {9223372036854775807., "9.223372036854776E+18"},
        {std::numeric_limits<double>::infinity(), "INF."},
        {-std::numeric_limits<double>::infinity(), "-INF."},
        {std::numeric_limits<double>::quiet_NaN(), "NAN."},
    };
    for (const auto& row : rows) EXPECT_EQ(sReal(row.value), row.sText);
}

// The rule in the C library's terms, which the writer does without.
std::string sPrinted(double value) {
    char text[65];
    std::snprintf(text, sizeof text, "%.16G", value);
    std::string sText(text);
    if (sText.find('.') == std::string::npos) sText.insert(std::min(sText.find('E'), sText.size()), 1, '.');
    return sText;
}

TEST(WriteReal, PrintsAsTheCLibraryDoes) {
    std::mt19937_64 random(5);
    const auto check = [](double value) { ASSERT_EQ(sReal(value), sPrinted(value)) << std::hexfloat << value; };
    for (int i = 0; i < 20000; ++i) {
        const auto uBits = random();
        const double any = std::bit_cast<double>(uBits);
        if (std::isfinite(any)) check(any);
        check(static_cast<double>(static_cast<std::int64_t>(uBits) >> (uBits % 64)));                    // whole
        check(static_cast<double>(static_cast<std::int64_t>(uBits % 20'000'000) - 10'000'000) / 1000);   // coordinates
        check(std::ldexp(1.0, static_cast<int>(uBits % 140) - 70));
        // Up to fifteen decimals, and the doubles just beside such a number.
        const double decimal =
            static_cast<double>(uBits >> (uBits % 64)) / std::pow(10., static_cast<double>(uBits % 16));
        for (const double value : {decimal, std::nextafter(decimal, 0.), -std::nextafter(decimal, 1e300)}) check(value);
    }
    for (int i = -30; i < 30; ++i)
        for (const double factor : {1., 9.999999999999999, 1.000000000000001, 5., -1.})
            check(factor * std::pow(10., i));
    for (const double limit : {1e-4, 1e2, 1e6, 1e15, 1e16, 9007199254740992.}) {
        double below = limit;
        double above = limit;
        for (int i = 0; i < 50; ++i) {
            check(below = std::nextafter(below, 0.));
            check(above = std::nextafter(above, 1e300));
            check(-below);
        }
    }
}

TEST(WriteInteger, PrintsEveryDigit) {
    const struct {
        long long iValue;
        const char* sText;
    } rows[] = {{0, "0"},
                {7, "7"},
                {-7, "-7"},
                {2147483648, "2147483648"},
                {std::numeric_limits<long long>::max(), "9223372036854775807"},
                {std::numeric_limits<long long>::min(), "-9223372036854775808"}};
    for (const auto& row : rows) {
        Data data;
        AttributeInteger cell;
        cell.m_value = row.iValue;
        EXPECT_EQ(CellWriter(data).sText(cell, attributeOf("IFCINTEGER")), row.sText);
    }
}

TEST(WriteBoolean, IsTrueForEveryByteButZero) {
    for (const unsigned iByte : {0U, 1U, 2U, 255U}) {
        Data data;
        AttributeBoolean cell;
        std::memcpy(&cell.m_value, &iByte, 1);
        EXPECT_EQ(CellWriter(data).sText(cell, attributeOf("IFCBOOLEAN")), iByte ? ".T." : ".F.") << iByte;
    }
}

TEST(WriteLogical, IsUnknownForEverythingElse) {
    const struct {
        int iValue;
        const char* sText;
    } rows[] = {{0, ".F."}, {1, ".T."}, {-1, ".U."}, {2, ".U."}, {-7, ".U."}};
    for (const auto& row : rows) {
        Data data;
        AttributeLogical cell;
        cell.m_value = static_cast<LogicalValue>(row.iValue);
        EXPECT_EQ(CellWriter(data).sText(cell, attributeOf("IFCLOGICAL")), row.sText) << row.iValue;
    }
}

// One cell: read as the only attribute of the entity (#5 and #6 are things), written, and written for display.
struct CellRow {
    const char* sRule;
    std::string_view keyword;
    std::string token;
    std::string sText;
    std::vector<std::string> records = {};
    std::string sPlain = "";   // where it differs
};

void vExpectWritten(const CellRow& row) {
    SCOPED_TRACE(std::string(row.sRule) + ": " + row.token);
    StatementReader reader;
    for (const char* sThing : {"#5=IFCTHING($);", "#6=IFCTHING('t');"}) ASSERT_NE(reader.pRead(sThing), nullptr);
    const Entity* pEntity = reader.pRead("#1=" + std::string(row.keyword) + '(' + row.token + ");");
    ASSERT_NE(pEntity, nullptr);
    reader.data.boFinished(reader.common, true);
    const auto [pAttribute, pCell] = pEntity->pAttributeFromIndex(0);
    CellWriter writer(reader.data);
    EXPECT_EQ(writer.sText(*pCell, *pAttribute), row.sText);
    EXPECT_EQ(writer.records(), row.records);
    EXPECT_EQ(pCell->sWriteLine(*pAttribute, reader.data, false), row.sText);
    EXPECT_EQ(pCell->sWriteLine(*pAttribute, reader.data, true), row.sPlain.empty() ? row.sText : row.sPlain);
}

const std::string g_sId = "0G8310000000420mG51WS8";

TEST(WriteCell, GivesTheTextOfAFile) {
    const CellRow rows[] = {
        {"real", "IFCREAL", "1.50", "1.5"},
        {"number", "IFCNUMBER", "3", "3."},
        {"integer", "IFCINTEGER", "-12", "-12"},
        {"boolean", "IFCBOOLEAN", ".T.", ".T."},
        {"logical", "IFCLOGICAL", ".U.", ".U."},
        {"text", "IFCSTRING", "'a b~'", "'a b~'"},
        {"no text", "IFCSTRING", "''", "''"},
        {"a quote and a backslash", "IFCSTRING", "'it''s a \\\\'", "'it''s a \\\\'", {}, "'it's a \\'"},
        {"a line break", "IFCSTRING", "'a\\X\\0Ab'", "'a\\X\\0Ab'", {}, "'a\nb'"},
        {"beyond ASCII",
         "IFCSTRING",
         "'\\X2\\00FC4E00\\X0\\'",
         "'\\X\\FC\\X2\\4E00\\X0\\'",
         {},
         "'\xC3\xBC\xE4\xB8\x80'"},
        {"GUID", "IFCGUID", '\'' + g_sId + '\'', '\'' + g_sId + '\'', {}, "10203040-0000-0000-0102-030405060708"},
        {"bytes", "IFCBINARY", "\"0A1fF\"", "\"0A1FF\""},
        {"unused bits are not kept", "IFCBINARY", "\"3A1\"", "\"0A1\""},
        {"no bytes", "IFCBINARY", "\"0\"", "\"0\""},
        {"enumerator", "IFCENUMERATION", ".GREEN.", ".GREEN."},
        {"reference", "IFCREFERENCE", "#6", "#6"},
    };
    for (const CellRow& row : rows) vExpectWritten(row);
}

TEST(WriteCell, WritesSelectsWithTheirType) {
    const CellRow rows[] = {
        {"reference: no type", "IFCSELECT", "#5", "#5"},
        {"real", "IFCSELECT", "IFCLENGTHMEASURE(1.5)", "IFCLENGTHMEASURE(1.5)"},
        {"number", "IFCSELECT", "IFCNUMERIC(2)", "IFCNUMERIC(2.)"},
        {"integer", "IFCSELECT", "IFCCOUNT(7)", "IFCCOUNT(7)"},
        {"boolean", "IFCSELECT", "IFCFLAG(.F.)", "IFCFLAG(.F.)"},
        {"logical", "IFCSELECT", "IFCANSWER(.U.)", "IFCANSWER(.U.)"},
        {"text", "IFCSELECT", "IFCLABEL('\\X\\E4')", "IFCLABEL('\\X\\E4')", {}, "IFCLABEL('\xC3\xA4')"},
        {"bytes", "IFCSELECT", "IFCBLOB(\"0FE\")", "IFCBLOB(\"0FE\")"},
        {"enumerator, checked against its own type", "IFCSELECT", "IFCCOLOUR(.RED.)", "IFCCOLOUR(.RED.)"},
        {"list of reals", "IFCSELECT", "IFCREALS((1.,2.5))", "IFCREALS((1.,2.5))"},
        {"array of integers", "IFCSELECT", "IFCCOUNTS((1,-2,3))", "IFCCOUNTS((1,-2,3))"},
        {"set of references", "IFCSELECT", "IFCTHINGS((#5,#6))", "IFCTHINGS((#5,#6))"},
        {"nested select", "IFCSELECT", "IFCVALUE(IFCLABEL('a'))", "IFCVALUE(IFCLABEL('a'))"},
        {"twice", "IFCSELECT", "IFCVALUE(IFCVALUE(IFCCOUNT(1)))", "IFCVALUE(IFCVALUE(IFCCOUNT(1)))"},
        {"nested reference", "IFCSELECT", "IFCVALUE(#5)", "IFCVALUE(#5)"},
        {"a value left out, mandatory", "IFCSELECT", "IFCLABEL($)", "IFCLABEL($)", {sNull("IFCLABEL(")}},
        {"a value derived", "IFCSELECT", "IFCLABEL(*)", "IFCLABEL(*)"},
        {"a type nobody knows: nothing", "IFCSELECT", "IFCNOBODY(1)", ""},
    };
    for (const CellRow& row : rows) vExpectWritten(row);
}

TEST(WriteCell, WritesListsByTheirItems) {
    const std::string sGuids = "('" + g_sId + "')";
    const CellRow rows[] = {
        {"reals", "IFCREALLIST", "(1.,-2.5,1.E-7)", "(1.,-2.5,1.E-07)"},
        {"no item", "IFCREALLIST", "()", "()"},
        {"set of numbers", "IFCNUMBERSET", "(1,2.5)", "(1.,2.5)"},
        {"array of integers", "IFCINTEGERARRAY", "(1,-2,3)", "(1,-2,3)"},
        {"texts", "IFCLABELLIST", "('a','','it''s','a')", "('a','','it''s','a')", {}, "('a','','it's','a')"},
        {"empty texts keep their commas", "IFCLABELLIST", "('','','')", "('','','')"},
        {"GUIDs are texts", "IFCGUIDLIST", sGuids, sGuids},
        {"bytes", "IFCBINARYLIST", "(\"0A1\",\"0\")", "(\"0A1\",\"0\")"},
        {"selects", "IFCSELECTLIST", "(IFCLABEL('a'),#6)", "(IFCLABEL('a'),#6)"},
        {"named list", "IFCNAMEDLIST", "(1.)", "(1.)"},
        {"lists", "IFCTABLE", "((1.,2.),(),(3.))", "((1.,2.),(),(3.))"},
        {"lists of lists", "IFCCUBE", "(((1),(2)),((3,4)))", "(((1),(2)),((3,4)))"},
        {"references", "IFCREFERENCESET", "(#5,#6,#5)", "(#5,#6,#5)"},
        {"no reference", "IFCREFERENCESET", "()", "()"},
        {"no text", "IFCLABELLIST", "()", "()"},
        {"a reference to nothing gets a number", "IFCREFERENCESET", "(#5,#77)", "(#5,#4)"},
        {"items that no list holds", "IFCBOOLEANLIST", "(.T.,.F.)", "()"},
        {"item type 0: logicals", "IFCLOGICALLIST", "(.T.)", "()"},
        {"item type 0: enumerators", "IFCENUMERATIONLIST", "(.RED.)", "()"},
        {"item type 0: arrays", "IFCARRAYLIST", "((1.,2.,3.))", "()"},
        {"item type 12: sets", "IFCSETLIST", "((#5))", "()"},
        {"a derived item", "IFCSELECTLIST", "(*,IFCLABEL('a'))", "(*,IFCLABEL('a'))"},
        {"an undefined select", "IFCSELECTLIST", "(#5,$)", "(#5,$)", {sNull("(#5,")}},
        {"an undefined binary", "IFCBINARYLIST", "($,\"0\")", "($,\"0\")", {sNull("(")}},
        {"an undefined list", "IFCTABLE", "((1.),$,(2.))", "((1.),$,(2.))", {sNull("((1.),")}},
        {"each of them is told", "IFCSELECTLIST", "($,$)", "($,$)", {sNull("("), sNull("($,")}},
    };
    for (const CellRow& row : rows) vExpectWritten(row);
}

// Every kind of cell as a mandatory attribute.
const char* const g_everyKind[] = {"IFCREAL",     "IFCNUMBER",    "IFCINTEGER",      "IFCBOOLEAN",     "IFCLOGICAL",
                                   "IFCSTRING",   "IFCGUID",      "IFCBINARY",       "IFCENUMERATION", "IFCSELECT",
                                   "IFCREALLIST", "IFCNUMBERSET", "IFCINTEGERARRAY", "IFCREFERENCE"};

TEST(WriteCell, WritesADollarForWhatIsUndefinedAndReportsItWhereMandatory) {
    for (const char* sKeyword : g_everyKind) vExpectWritten({"mandatory", sKeyword, "$", "$", {sNull("")}});
    for (const char* sKeyword : g_everyKind) vExpectWritten({"derived", sKeyword, "*", "*"});
}

TEST(WriteCell, KnowsTheStateOfEveryOptionalKind) {
    StatementReader reader;
    const Entity* pEntity = reader.pRead("#1=IFCEVERYKIND($,$,$,$,$,$,$,$,$,$,$,$,$,$);");
    ASSERT_NE(pEntity, nullptr);
    for (unsigned i = 0; i < 14; ++i) {
        SCOPED_TRACE(i);
        const auto [pAttribute, pCell] = pEntity->pAttributeFromIndex(i);
        CellWriter optional(reader.data);
        EXPECT_EQ(optional.sText(*pCell, *pAttribute), "$");
        EXPECT_TRUE(optional.records().empty());
        CellWriter inList(reader.data);
        EXPECT_EQ(inList.sText(*pCell, *pAttribute, true), "$") << "in a list every position is mandatory";
        EXPECT_EQ(inList.records(), std::vector<std::string>{sNull("", pAttribute->sName.c_str())});
        pCell->m_boDerived = true;   // undefined and derived
        for (const bool boInList : {false, true}) {
            CellWriter derived(reader.data);
            EXPECT_EQ(derived.sText(*pCell, *pAttribute, boInList), "*");
            EXPECT_TRUE(derived.records().empty());
        }
    }
}

TEST(WriteCell, ReportsAnUndefinedItemOfAnOptionalList) {
    static const auto pSchema = pSchemaOf(R"(
        TYPE IfcLabel = STRING; END_TYPE; TYPE IfcValue = SELECT (IfcLabel); END_TYPE;
        ENTITY IfcHolder; Values : OPTIONAL LIST OF IfcValue; One : OPTIONAL IfcValue; END_ENTITY;)");
    StatementReader reader(*pSchema);
    const Entity* pEntity = reader.pRead("#1=IFCHOLDER(($,IFCLABEL($)),IFCLABEL($));");
    ASSERT_NE(pEntity, nullptr);
    const auto [pAttribute, pCell] = pEntity->pAttributeFromIndex(0);
    CellWriter list(reader.data);
    EXPECT_EQ(list.sText(*pCell, *pAttribute), "($,IFCLABEL($))");
    EXPECT_EQ(list.records(), std::vector<std::string>{sNull("(", "Values")}) << "not the value inside the select";
    const auto [pOne, pOneCell] = pEntity->pAttributeFromIndex(1);
    CellWriter one(reader.data);
    EXPECT_EQ(one.sText(*pOneCell, *pOne), "IFCLABEL($)");
    EXPECT_TRUE(one.records().empty());
}

// What reading leaves without value and without flag.
TEST(WriteCell, WritesNothingForANullPointer) {
    Data data;
    {
        SCOPED_TRACE("enumeration");
        CellWriter writer(data);
        EXPECT_EQ(writer.sText(AttributeEnumeration{}, attributeOf("IFCENUMERATION")), "");
        EXPECT_TRUE(writer.records().empty());
    }
    {
        SCOPED_TRACE("reference");
        CellWriter writer(data);
        EXPECT_EQ(writer.sText(AttributeEntity{}, attributeOf("IFCREFERENCE")), "");
        EXPECT_EQ(writer.records(), std::vector<std::string>{sNoReference("")});
    }
    {
        SCOPED_TRACE("select");
        CellWriter writer(data);
        EXPECT_EQ(writer.sText(AttributeSelect{}, attributeOf("IFCSELECT")), "");
        EXPECT_TRUE(writer.records().empty());
    }
    {
        SCOPED_TRACE("select of a reference, without a cell and with an empty one");
        AttributeSelect cell;
        cell.m_eType = AttributeType::Entity;
        CellWriter writer(data);
        EXPECT_EQ(writer.sText(cell, attributeOf("IFCSELECT")), "");
        EXPECT_TRUE(writer.records().empty());
        AttributeEntity value;
        cell.m_pValue = &value;
        EXPECT_EQ(writer.sText(cell, attributeOf("IFCSELECT")), "");
        EXPECT_EQ(writer.records(), std::vector<std::string>{sNoReference("")});
        value.m_boUndefined = true;
        CellWriter undefined(data);
        EXPECT_EQ(undefined.sText(cell, attributeOf("IFCSELECT")), "$");
        EXPECT_EQ(undefined.records(), std::vector<std::string>{sNull("")});
    }
    {
        SCOPED_TRACE("select of a value without a type");
        AttributeReal value;
        AttributeSelect cell;
        cell.m_eType = AttributeType::Real;
        cell.m_pValue = &value;
        CellWriter writer(data);
        EXPECT_EQ(writer.sText(cell, attributeOf("IFCSELECT")), "");
        EXPECT_TRUE(writer.records().empty());
    }
    {
        SCOPED_TRACE("attribute without a type");
        CellWriter writer(data);
        EXPECT_EQ(writer.sText(AttributeReal{}, Attribute()), "");
        EXPECT_TRUE(writer.records().empty());
    }
    {
        SCOPED_TRACE("text: two quotes");
        CellWriter writer(data);
        EXPECT_EQ(writer.sText(AttributeString{}, attributeOf("IFCSTRING")), "''");
        EXPECT_TRUE(writer.records().empty());
    }
    {
        SCOPED_TRACE("binary: no bytes");
        CellWriter writer(data);
        EXPECT_EQ(writer.sText(AttributeBinary{}, attributeOf("IFCBINARY")), "\"0\"");
        EXPECT_TRUE(writer.records().empty());
    }
    {
        SCOPED_TRACE("list: no item");
        CellWriter writer(data);
        EXPECT_EQ(writer.sText(AttributeList{}, attributeOf("IFCREALLIST")), "()");
        EXPECT_TRUE(writer.records().empty());
    }
    for (const AttributeType eType :
         {AttributeType::Real, AttributeType::Integer, AttributeType::String, AttributeType::Binary,
          AttributeType::Select, AttributeType::List, AttributeType::Entity}) {
        SCOPED_TRACE("list that was never filled, item type " + std::to_string(static_cast<int>(eType)));
        AttributeList list;
        list.m_eItemType = eType;
        CellWriter writer(data);
        EXPECT_EQ(writer.sText(list, attributeOf("IFCREALLIST")), "()");
        EXPECT_TRUE(writer.records().empty());
    }
    const CellRow rows[] = {
        {"a reference without a number sign", "IFCREFERENCE", "5", "", {sNoReference("")}},
        {"a bare value for a select", "IFCSELECT", "5", "$", {sNull("")}},
        {"an enumerator nobody knows", "IFCENUMERATION", ".PINK.", ""},
    };
    for (const CellRow& row : rows) vExpectWritten(row);
}

TEST(WriteCell, ReportsANullGuid) {
    Data data;
    const struct {
        bool boPlainText;
        const char* sText;
    } rows[] = {{false, "'0000000000000000000000'"}, {true, "00000000-0000-0000-0000-000000000000"}};
    for (const auto& row : rows) {
        CellWriter writer(data);
        EXPECT_EQ(writer.sText(AttributeGuid{}, attributeOf("IFCGUID"), false, row.boPlainText), row.sText);
        EXPECT_EQ(writer.records(), std::vector<std::string>{sNullGuid("")});
    }
}

TEST(WriteCell, ChecksEnumeratorsAgainstTheSchema) {
    Data data;
    const struct {
        const char* sValue;
        const char* sText;
        bool boKnown;
    } rows[] = {{"GREEN", ".GREEN.", true},  {"A", ".A.", true}, {"PINK", ".PINK.", false},
                {"green", ".green.", false}, {"", "..", false},  {"\xC3\xA4", ".\\X\\E4.", false}};
    for (const auto& row : rows) {
        for (const bool boPlainText : {false, true}) {
            SCOPED_TRACE(std::string(row.sValue) + (boPlainText ? ", plain" : ""));
            AttributeEnumeration cell;
            cell.m_value = row.sValue;
            CellWriter writer(data);
            EXPECT_EQ(writer.sText(cell, attributeOf("IFCENUMERATION"), false, boPlainText), row.sText);
            EXPECT_EQ(writer.records(), row.boKnown ? std::vector<std::string>{}
                                                    : std::vector<std::string>{sNotEnumerator(row.sValue, row.sText)});
        }
    }
}

TEST(WriteCell, TakesTheEnumerationOfASelectFromTheSelectedType) {
    StatementReader reader;
    const Entity* pEntity = reader.pRead("#1=IFCSELECT(IFCCOLOUR(.RED.));");
    ASSERT_NE(pEntity, nullptr);
    const auto [pAttribute, pCell] = pEntity->pAttributeFromIndex(0);
    auto& select = *static_cast<AttributeSelect*>(pCell);
    static_cast<AttributeEnumeration*>(select.m_pValue.load())->m_value = "ROUND";
    CellWriter writer(reader.data);
    EXPECT_EQ(writer.sText(*pCell, *pAttribute), "IFCCOLOUR(.ROUND.)");
    EXPECT_EQ(writer.records(), std::vector<std::string>{sNotEnumerator("ROUND", "IFCCOLOUR(.ROUND.")});
}

// A comma stands before each text that is not the first one's: by address, so that texts of one block have none.
TEST(WriteCell, SetsTheCommaOfTextsByTheirAddress) {
    char a[] = "a";
    char alike[] = "a";
    char b[] = "b";
    const struct {
        const char* sRule;
        std::vector<char*> texts;
        const char* sText;
    } rows[] = {
        {"two texts", {a, b}, "('a','b')"},
        {"equal texts in two blocks", {a, alike}, "('a','a')"},
        {"two of one block", {a, a}, "('a''a')"},
        {"the first one's block again", {a, b, a, b}, "('a','b''a','b')"},
        {"nulls, as an import prepares them", {nullptr, nullptr}, "('''')"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sRule);
        Data data;
        AttributeList list;
        list.m_eItemType = AttributeType::String;
        auto* pArray = Array<char*>::pFromBytes(data.pool().pAllocate(Array<char*>::iBlockSize(row.texts.size())),
                                                row.texts.size());
        for (std::size_t i = 0; i < row.texts.size(); ++i) (*pArray)[i] = row.texts[i];
        list.m_pItems = pArray;
        EXPECT_EQ(CellWriter(data).sText(list, attributeOf("IFCLABELLIST")), row.sText);
    }
}

// Number 0 is a number like others in an attribute, and none in a list.
TEST(WriteCell, LeavesNumberZeroOutOfAListAlone) {
    StatementReader reader;
    for (const char* sThing : {"#0=IFCTHING($);", "#1=IFCTHING($);", "#2=IFCTHING($);"})
        ASSERT_NE(reader.pRead(sThing), nullptr);
    const Entity* pList = reader.pRead("#3=IFCREFERENCESET((#0,#1,#0,#2));");
    const Entity* pOne = reader.pRead("#4=IFCREFERENCE(#0);");
    const Entity* pNone = reader.pRead("#5=IFCREFERENCESET((#0));");
    reader.data.boFinished(reader.common, true);
    const AssertLog log;
    EXPECT_EQ(pList->sWriteLine(reader.data), "#3=IFCREFERENCESET((#1,#2));");
    EXPECT_EQ(log.texts(), std::vector<std::string>(2, "Skipping invalid reference in list"));
    EXPECT_EQ(pNone->sWriteLine(reader.data), "#5=IFCREFERENCESET(());");
    EXPECT_EQ(pOne->sWriteLine(reader.data), "#4=IFCREFERENCE(#0);");
    EXPECT_EQ(log.texts().size(), 3U);
}

TEST(WriteCell, LeavesNullsOutOfAListOfReferences) {
    StatementReader reader;
    for (const char* sThing : {"#5=IFCTHING($);", "#6=IFCTHING($);"}) ASSERT_NE(reader.pRead(sThing), nullptr);
    reader.data.boFinished(reader.common, true);
    const struct {
        std::vector<Entity*> items;
        const char* sText;
        std::size_t iAssertions;
    } rows[] = {{{nullptr, reader.pEntity(5), nullptr, reader.pEntity(6), nullptr}, "(#5,#6)", 3},
                {{nullptr}, "()", 1},
                {{reader.pEntity(6), reader.pEntity(5)}, "(#6,#5)", 0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sText);
        EntityList* pHead = nullptr;
        for (Entity* pEntity : row.items)
            vListAppend(pHead, pEntity, [&](std::size_t iBytes) { return reader.data.pool().pAllocate(iBytes); });
        AttributeList cell;
        cell.m_eItemType = AttributeType::Entity;
        cell.m_pItems = pHead;
        const AssertLog log;
        CellWriter writer(reader.data);
        EXPECT_EQ(writer.sText(cell, attributeOf("IFCREFERENCESET")), row.sText);
        EXPECT_EQ(log.texts(), std::vector<std::string>(row.iAssertions, "Skipping invalid reference in list"));
        EXPECT_TRUE(writer.records().empty());
        Assert::setEnabled(false);
        EXPECT_EQ(CellWriter(reader.data).sText(cell, attributeOf("IFCREFERENCESET")), row.sText);
        EXPECT_EQ(log.texts().size(), row.iAssertions) << "assertions are off";
    }
}

TEST(WriteCell, EncodesEveryCharacterAsTheCodecDoes) {
    Data data;
    std::string scratch;
    for (int i = 1; i < 0x80; ++i) {
        for (const std::string& sText :
             {std::string(1, static_cast<char>(i)), "ab" + std::string(3, static_cast<char>(i)) + "c"}) {
            std::string copy = sText;
            AttributeString cell;
            cell.m_value = copy.data();
            const std::string sEncoded(sIfcStrFromUtf8(scratch, copy.data(), copy.size()));
            EXPECT_EQ(CellWriter(data).sText(cell, attributeOf("IFCSTRING")), '\'' + sEncoded + '\'') << i;
        }
    }
}

TEST(WriteCell, QueuesEveryEntityThatItNames) {
    StatementReader reader;
    for (const char* sThing : {"#5=IFCTHING($);", "#6=IFCTHING($);", "#7=IFCTHING($);"})
        ASSERT_NE(reader.pRead(sThing), nullptr);
    const Entity* pEntity = reader.pRead("#1=IFCSELECTLIST((#6,IFCVALUE(#5),IFCTHINGS((#7,#6)),IFCLABEL('#8')));");
    ASSERT_NE(pEntity, nullptr);
    reader.data.boFinished(reader.common, true);
    const auto [pAttribute, pCell] = pEntity->pAttributeFromIndex(0);
    CellWriter writer(reader.data);
    EXPECT_EQ(writer.sText(*pCell, *pAttribute), "(#6,IFCVALUE(#5),IFCTHINGS((#7,#6)),IFCLABEL('#8'))");
    EXPECT_EQ(writer.common().m_queue,
              (std::deque<const Entity*>{reader.pEntity(6), reader.pEntity(5), reader.pEntity(7)}));
}

}   // namespace
}   // namespace oxa::ifc
