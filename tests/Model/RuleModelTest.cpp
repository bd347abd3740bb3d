// SPDX-License-Identifier: Apache-2.0
// The short way in by its rules: open, find, read, save; and that each misuse is an exception that helps.
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <limits>
#include <optional>
#include <sstream>
#include <stop_token>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Model/RuleThrown.h"
#include "system/System.h"

namespace oxa::test {
namespace {

class RuleFolder {
public:
    RuleFolder() : m_path(test::newFolder()) {}
    ~RuleFolder() {
        std::error_code error;
        std::filesystem::remove_all(m_path, error);
    }
    RuleFolder(const RuleFolder&) = delete;
    RuleFolder& operator=(const RuleFolder&) = delete;

    [[nodiscard]] std::filesystem::path file(const std::string& sName, const std::string& sText) const {
        std::ofstream(m_path / sName, std::ios::binary) << sText;
        return m_path / sName;
    }
    [[nodiscard]] const std::filesystem::path& path() const { return m_path; }
    [[nodiscard]] std::vector<std::string> names() const {
        std::vector<std::string> found;
        for (const auto& entry : std::filesystem::directory_iterator(m_path))
            found.push_back(entry.path().filename().string());
        std::sort(found.begin(), found.end());
        return found;
    }

private:
    std::filesystem::path m_path;
};

std::string sContent(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

std::string sSavedText(Model& model) {
    std::ostringstream out;
    (void)model.save(out);
    const std::string sText = out.str();
    return sText.substr(sText.find("DATA;"));
}

std::string sFile(const std::string& sSchema, const std::string& sData) {
    return "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION(('d'),'2;1');\n"
           "FILE_NAME('n','2024-05-17T09:30:00',('a'),('o'),'p','s','z');\nFILE_SCHEMA(('" +
           sSchema + "'));\nENDSEC;\nDATA;\n" + sData + "ENDSEC;\nEND-ISO-10303-21;\n";
}

class RuleModel : public testing::TestWithParam<const char*> {};

// ---- open -----------------------------------------------------------------------------------------------------------

TEST_P(RuleModel, OpensAPathAStreamAndABuffer) {
    const RuleFolder folder;
    const std::string sText = sRuleHouse(GetParam());
    std::istringstream stream(sText);
    Model models[] = {Model::open(folder.file("a.ifc", sText)), Model::open(stream), Model::fromBuffer(sText)};
    for (Model& model : models) {
        EXPECT_TRUE(model.whole());
        EXPECT_TRUE(model.errors().empty());
        EXPECT_EQ(model.schema(), GetParam());
        EXPECT_EQ(sNumbers(model.all("IfcDoor")), "40 41 42");
        EXPECT_EQ(sSavedText(model), sSavedText(models[0]));
    }
}

TEST_P(RuleModel, OptionsOfOpening) {
    const std::string sText = sRuleHouse(GetParam());
    Model plain = Model::fromBuffer(sText);
    for (const unsigned uThreads : {1U, 2U, 7U}) {
        OpenOptions options;
        options.threads = uThreads;
        Model model = Model::fromBuffer(sText, options);
        EXPECT_EQ(sSavedText(model), sSavedText(plain)) << uThreads;
    }

    OpenOptions dealt;
    dealt.keepNumbers = false;
    const Model renumbered = Model::fromBuffer(sText, dealt);
    EXPECT_EQ(renumbered.size(), plain.size());
    std::uint64_t uNext = 0;
    for (const Element element : renumbered.all()) EXPECT_EQ(element.id(), ++uNext);

    std::stop_source stop;
    stop.request_stop();
    OpenOptions stopped;
    stopped.stop = stop.get_token();
    EXPECT_THROW((void)Model::fromBuffer(sText, stopped), Stopped);

    static_assert(std::is_same_v<decltype(Progress::done), std::uint64_t>, "positions beyond 4 GB");
    std::vector<std::uint64_t> told;
    OpenOptions watched;
    watched.progress = [&told](const Progress& progress) { told.push_back(progress.done); };
    const Model model = Model::fromBuffer(sText, watched);
    EXPECT_FALSE(told.empty());
    EXPECT_TRUE(std::is_sorted(told.begin(), told.end()));
    EXPECT_LE(told.back(), sText.size());
}

TEST(RuleModelOpen, WhatIsNoModelIsAnExceptionThatSaysWhy) {
    const RuleFolder folder;
    const struct {
        const char* pRule;
        std::filesystem::path path;
        std::vector<const char*> told;
    } rows[] = {
        {"no such file", folder.path() / "none.ifc", {"none.ifc"}},
        {"a folder", folder.path(), {"oxaifc-", "is a folder"}},
        {"nothing in it", folder.file("empty.ifc", ""), {"empty.ifc"}},
        {"another text", folder.file("text.ifc", "To whom it may concern\n"), {"text.ifc"}},
        {"a schema that there is not", folder.file("x.ifc", sFile("IFC99", "")), {"x.ifc", "IFC99"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.pRule);
        EXPECT_TRUE(boTells(sThrown<FileError>([&row] { (void)Model::open(row.path); }), row.told));
    }
    EXPECT_TRUE(boTells(sThrown<FileError>([] { (void)Model::fromBuffer(""); }), {}));
}

TEST(RuleModelOpen, FaultsInsideAreRecordsAndTheRestIsThere) {
    const struct {
        const char* pRule;
        std::string data;
        std::size_t iErrors;   // at least
        std::uint64_t uLine;
    } rows[] = {
        {"an unknown keyword", "#1=IFCWALL('" + sRuleGuid(1) + "',$,'W',$,$,$,$,$,$);\n#2=IFCTEAPOT();\n", 1, 9},
        {"a wrong value", "#1=IFCWALL('" + sRuleGuid(1) + "',$,'W',$,$,$,$,$,$);\n#3=IFCCARTESIANPOINT((0.,'x'));\n", 1,
         9},
        {"text passed over", "#1=IFCWALL('" + sRuleGuid(1) + "',$,'W',$,$,$,$,$,$);\nrubbish;\n", 0, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.pRule);
        const Model model = Model::fromBuffer(sFile("IFC4", row.data));
        EXPECT_FALSE(model.whole());
        EXPECT_EQ(model.byId(1).text("Name"), "W");
        ASSERT_GE(model.errors().size(), row.iErrors);
        if (row.iErrors == 0) continue;
        EXPECT_EQ(model.errors()[0].line, row.uLine);
        EXPECT_FALSE(model.errors()[0].message.empty());
        EXPECT_FALSE(model.errors()[0].key.empty());
    }
}

// ---- find -----------------------------------------------------------------------------------------------------------

TEST_P(RuleModel, FindsByTypeGuidAndNumber) {
    const Model model = ruleHouse(GetParam());
    for (const char* pType : {"IfcWall", "IFCWALL", "ifcwall", "iFcWaLl"}) {
        EXPECT_EQ(sNumbers(model.all(pType)), "30 31 32 33 34") << pType;
        EXPECT_EQ(sNumbers(model.all(pType, exact)), "30 32 33 34") << pType;
        EXPECT_TRUE(model.knows(pType));
        EXPECT_TRUE(model.byId(31).is(pType));
    }
    EXPECT_EQ(model.byGuid(sRuleGuid(40)).id(), 40U);
    EXPECT_EQ(model.byId(40).guid(), sRuleGuid(40));
    EXPECT_EQ(model.byId(40), model.byGuid(sRuleGuid(40)));
    EXPECT_FALSE(model.byId(4000));
    EXPECT_FALSE(model.byId(std::numeric_limits<std::uint64_t>::max()));
    EXPECT_FALSE(model.byGuid(sRuleGuid(4000)));
    EXPECT_FALSE(model.knows("IfcWal"));
    EXPECT_TRUE(model.all("IfcSlab").empty());
    EXPECT_EQ(model.all().size(), model.size());
    EXPECT_EQ(model.byId(30).type(), "IfcWall");
    EXPECT_FALSE(model.byId(12).has("Name"));
    EXPECT_TRUE(model.byId(30).has("containedinstructure"));
}

struct MisuseRow {
    const char* pRule;
    void (*work)(Model&);
    std::vector<const char*> told;
};

template <class Exception, std::size_t iRows>
void vMisuse(const MisuseRow (&rows)[iRows], const char* pSchema) {
    for (const MisuseRow& row : rows) {
        SCOPED_TRACE(row.pRule);
        Model model = ruleHouse(pSchema);
        const std::string sBefore = sSavedText(model);
        EXPECT_TRUE(boTells(sThrown<Exception>([&row, &model] { row.work(model); }), row.told));
        EXPECT_TRUE(sSavedText(model) == sBefore) << "a misuse changes nothing";
    }
}

// clang-format off
const MisuseRow g_names[] = {
    {"a type", [](Model& m) { (void)m.all("IfcWal"); }, {"IfcWal", "IfcWall", "did you mean"}},
    {"a type, exactly", [](Model& m) { (void)m.all("IfcDor", exact); }, {"IfcDor", "IfcDoor"}},
    {"no type at all", [](Model& m) { (void)m.all(""); }, {}},
    {"a type of values", [](Model& m) { (void)m.all("IfcLabel"); }, {"IfcLabel"}},
    {"is of a type", [](Model& m) { (void)m.byId(30).is("IfcWal"); }, {"IfcWal", "IfcWall"}},
    {"an attribute", [](Model& m) { (void)m.byId(40)["OveralWidth"]; }, {"IfcDoor", "OveralWidth", "OverallWidth"}},
    {"a text", [](Model& m) { (void)m.byId(40).text("Nme"); }, {"IfcDoor", "Nme", "Name"}},
    {"a number", [](Model& m) { (void)m.byId(40).number("Overallwith"); }, {"Overallwith", "OverallWidth"}},
    {"an element", [](Model& m) { (void)m.byId(40).element("ObjectPlacment"); }, {"ObjectPlacment", "ObjectPlacement"}},
    {"an attribute of another type", [](Model& m) { (void)m.byId(30).number("OverallWidth"); }, {"IfcWall", "OverallWidth"}},
    {"an inverse attribute", [](Model& m) { (void)m.byId(30).inverse("ContainedInStruct"); }, {"ContainedInStruct", "ContainedInStructure"}},
    {"to create a type", [](Model& m) { (void)m.create("IfcWal"); }, {"IfcWal", "IfcWall"}},
    {"to create with an attribute", [](Model& m) { (void)m.create("IfcDoor", {{"Nmae", "D"}}); }, {"IfcDoor", "Nmae", "Name"}},
    {"to set", [](Model& m) { m.set(m.byId(40), "OveralWidth", 1.0); }, {"OveralWidth", "OverallWidth"}},
    {"to set an inverse attribute", [](Model& m) { m.set(m.byId(30), "ContainedInStructure", m.byId(54)); }, {"IfcWall", "ContainedInStructure", "inverse"}},
    {"to append", [](Model& m) { m.append(m.byId(54), "RelatedElement", m.byId(34)); }, {"RelatedElement", "RelatedElements"}},
    {"a type of values to set", [](Model& m) { m.set(m.byId(80), "NominalValue", typed("IfcLable", "x")); }, {"IfcLable", "IfcLabel"}},
};
const MisuseRow g_kinds[] = {
    {"a text as a number", [](Model& m) { (void)m.byId(40).number("Name"); }, {"IfcDoor #40", "Name", "text"}},
    {"a number as a text", [](Model& m) { (void)m.byId(40).text("OverallWidth"); }, {"IfcDoor #40", "OverallWidth", "number"}},
    {"a number as an integer", [](Model& m) { (void)m.byId(40).integer("OverallWidth"); }, {"IfcDoor #40", "OverallWidth"}},
    {"a text as truth", [](Model& m) { (void)m.byId(40).boolean("Name"); }, {"IfcDoor #40", "Name", "text"}},
    {"a text as an element", [](Model& m) { (void)m.byId(40).element("Name"); }, {"IfcDoor #40", "Name", "text"}},
    {"an element as a text", [](Model& m) { (void)m.byId(40).text("OwnerHistory"); }, {"IfcDoor #40", "OwnerHistory"}},
    {"a list as an element", [](Model& m) { (void)m.byId(54).element("RelatedElements"); }, {"#54", "RelatedElements", "list"}},
    {"a list as a number", [](Model& m) { (void)m.byId(12).number("Coordinates"); }, {"IfcCartesianPoint #12", "Coordinates", "list"}},
    {"a select's text as a number", [](Model& m) { (void)m.byId(80).number("NominalValue"); }, {"#80", "NominalValue"}},
    {"items of a text", [](Model& m) { (void)m.byId(40)["Name"].items(); }, {"IfcDoor #40", "Name"}},
    {"get: a text as a number", [](Model& m) { (void)m.byId(40).get<double>("Name"); }, {"IfcDoor #40", "Name", "text"}},
    {"get: a list of texts as numbers", [](Model& m) { (void)m.byId(122).get<std::vector<double>>("Materials"); }, {"#122", "Materials"}},
};
const MisuseRow g_values[] = {
    {"get: no value", [](Model& m) { (void)m.byId(41).get<double>("OverallWidth"); }, {"IfcDoor #41", "OverallWidth"}},
    {"get: no text", [](Model& m) { (void)m.byId(34).get<std::string>("Name"); }, {"IfcWall #34", "Name"}},
    {"no GlobalId", [](Model& m) { (void)m.byGuid("W1"); }, {"W1"}},
    {"a text for a number", [](Model& m) { m.set(m.byId(40), "OverallWidth", "wide"); }, {"OverallWidth", "number", "text"}},
    {"a number for a text", [](Model& m) { m.set(m.byId(40), "Name", 1.5); }, {"Name", "text", "number"}},
    {"truth for a text", [](Model& m) { m.set(m.byId(40), "Name", true); }, {"Name", "text"}},
    {"a list for a text", [](Model& m) { m.set(m.byId(40), "Name", {"a", "b"}); }, {"Name", "text", "list"}},
    {"a text for a list", [](Model& m) { m.set(m.byId(12), "Coordinates", "0,0,0"); }, {"Coordinates", "LIST", "text"}},
    {"an item of another kind", [](Model& m) { m.set(m.byId(12), "Coordinates", {0.0, "x", 0.0}); }, {"Coordinates", "text"}},
    {"no value in a list", [](Model& m) { m.set(m.byId(12), "Coordinates", {0.0, nullptr, 0.0}); }, {"Coordinates"}},
    {"too few items", [](Model& m) { m.set(m.byId(12), "Coordinates", NewValue::List{}); }, {"Coordinates", "0"}},
    {"too many items", [](Model& m) { m.set(m.byId(12), "Coordinates", {0., 0., 0., 0.}); }, {"Coordinates", "4"}},
    {"too few elements", [](Model& m) { m.set(m.byId(54), "RelatedElements", NewValue::List{}); }, {"RelatedElements"}},
    {"no value where one is wanted", [](Model& m) { m.set(m.byId(12), "Coordinates", nullptr); }, {"Coordinates"}},
    {"no element where one is wanted", [](Model& m) { m.set(m.byId(54), "RelatingStructure", nullptr); }, {"RelatingStructure"}},
    {"an element of another type", [](Model& m) { m.set(m.byId(40), "ObjectPlacement", m.byId(12)); }, {"ObjectPlacement", "IfcCartesianPoint"}},
    {"one of another type in a list", [](Model& m) { m.append(m.byId(54), "RelatedElements", m.byId(12)); }, {"RelatedElements", "IfcCartesianPoint"}},
    {"a text for an element", [](Model& m) { m.set(m.byId(40), "OwnerHistory", "#5"); }, {"OwnerHistory", "text"}},
    {"an element for a text", [](Model& m) { m.set(m.byId(40), "Name", m.byId(5)); }, {"Name"}},
    {"no enumerator", [](Model& m) { m.set(m.byId(45), "PredefinedType", "RIGID"); }, {"PredefinedType", "RIGID"}},
    {"an enumerator that is a number", [](Model& m) { m.set(m.byId(45), "PredefinedType", 3); }, {"PredefinedType"}},
    {"a text that is no UTF-8", [](Model& m) { m.set(m.byId(40), "Name", "\xC3("); }, {"Name", "UTF-8"}},
    {"an overlong form", [](Model& m) { m.set(m.byId(40), "Name", "\xC0\xAF"); }, {"Name", "UTF-8"}},
    {"a surrogate", [](Model& m) { m.set(m.byId(40), "Name", "\xED\xA0\x80"); }, {"Name", "UTF-8"}},
    {"a number that is none", [](Model& m) { m.set(m.byId(40), "OverallWidth", std::numeric_limits<double>::quiet_NaN()); }, {"OverallWidth"}},
    {"infinity", [](Model& m) { m.set(m.byId(40), "OverallWidth", std::numeric_limits<double>::infinity()); }, {"OverallWidth"}},
    {"an integer beyond 32 bits", [](Model& m) { m.set(m.byId(92), "NominalValue", typed("IfcInteger", std::int64_t{1} << 40)); }, {"NominalValue"}},
    {"a number for an integer", [](Model& m) { m.set(m.byId(20), "RefLatitude", {49.5, 47.0, 33.0}); }, {"RefLatitude"}},
    {"a GlobalId that is none", [](Model& m) { m.set(m.byId(40), "GlobalId", "too short"); }, {"GlobalId"}},
    {"a select without a type", [](Model& m) { m.set(m.byId(80), "NominalValue", NewValue::List{}); }, {"NominalValue"}},
    {"a type that the select has not", [](Model& m) { m.set(m.byId(80), "Unit", typed("IfcLabel", "m")); }, {"Unit"}},
    {"a value that its type has not", [](Model& m) { m.set(m.byId(81), "NominalValue", typed("IfcBoolean", "yes")); }, {"NominalValue"}},
    {"an item to what is no list", [](Model& m) { m.append(m.byId(40), "Name", "x"); }, {"Name", "list"}},
    {"an abstract type", [](Model& m) { (void)m.create("IfcElement"); }, {"IfcElement", "abstract"}},
    {"create: a wrong value", [](Model& m) { (void)m.create("IfcDoor", {{"Name", "D"}, {"OverallWidth", "wide"}}); }, {"IfcDoor", "OverallWidth", "number", "text"}},
    {"create: a wrong element", [](Model& m) { (void)m.create("IfcDoor", {{"OwnerHistory", m.byId(12)}}); }, {"IfcDoor", "OwnerHistory", "IfcCartesianPoint"}},
    {"create: too many items", [](Model& m) { (void)m.create("IfcCartesianPoint", {{"Coordinates", {1., 2., 3., 4.}}}); }, {"IfcCartesianPoint", "Coordinates", "4"}},
};
// clang-format on

TEST_P(RuleModel, AWrongNameIsAnExceptionWithNearNames) {
    vMisuse<NameError>(g_names, GetParam());
    const Model model = ruleHouse(GetParam());
    try {
        (void)model.all("IfcWal");
        FAIL();
    } catch (const NameError& error) {
        ASSERT_FALSE(error.nearNames().empty());
        EXPECT_EQ(error.nearNames()[0], "IfcWall");
    }
    EXPECT_THROW(Model("IFC99"), NameError);
}

TEST_P(RuleModel, AValueOfAnotherKindIsAnException) { vMisuse<TypeError>(g_kinds, GetParam()); }
TEST_P(RuleModel, AValueThatCannotBeTakenIsAnException) { vMisuse<ValueError>(g_values, GetParam()); }

// ---- read -----------------------------------------------------------------------------------------------------------

TEST_P(RuleModel, ReadsEachKind) {
    const Model model = ruleHouse(GetParam());
    const Element door = model.byId(40);
    EXPECT_EQ(door["Name"].kind(), Kind::Text);
    EXPECT_EQ(door.text("Name"), "D1");
    EXPECT_EQ(door.text("nAME"), "D1");
    EXPECT_EQ(door.text("Description"), std::nullopt);
    EXPECT_TRUE(door["Description"].isNull());
    EXPECT_EQ(model.byId(24).text("Name"), "K\u00fcche");
    EXPECT_EQ(door["OverallWidth"].kind(), Kind::Number);
    EXPECT_EQ(door.number("OverallWidth"), 0.9);
    EXPECT_EQ(door.get<double>("OverallWidth"), 0.9);
    EXPECT_EQ(model.byId(41).number("OverallWidth"), std::nullopt);
    EXPECT_EQ(model.byId(41).get<std::optional<double>>("OverallWidth"), std::nullopt);
    EXPECT_EQ(door["OverallWidth"].typeName(), "IfcPositiveLengthMeasure");
    EXPECT_EQ(door.element("OwnerHistory").id(), 5U);
    EXPECT_FALSE(door.element("ObjectPlacement"));
    EXPECT_EQ(model.byId(45)["PredefinedType"].kind(), Kind::Enumerator);
    EXPECT_EQ(model.byId(45).text("PredefinedType"), "NOTDEFINED");
    EXPECT_EQ(model.byId(6)["Dimensions"].kind(), Kind::Derived);
    EXPECT_EQ(model.byId(12).get<std::vector<double>>("Coordinates"), (std::vector<double>{0.0, 0.0, -1.5}));
    EXPECT_EQ(model.byId(20).get<std::vector<std::int64_t>>("RefLatitude"),
              (std::vector<std::int64_t>{49, 47, 33, 120000}));
    EXPECT_EQ(sNumbers(model.byId(54).elements("RelatedElements")), "30 31 45");
    EXPECT_EQ(model.byId(54)["RelatedElements"].size(), 3U);
    EXPECT_EQ(model.byId(54)["RelatedElements"].items()[1].element().id(), 31U);
    EXPECT_EQ(sNumbers(model.byId(30).inverse("IsDefinedBy")), "71 103");
    EXPECT_EQ(sNumbers(model.byId(50).inverse("HasFillings")), "52");

    const Value label = model.byId(80)["NominalValue"];
    EXPECT_EQ(label.kind(), Kind::Text);
    EXPECT_EQ(label.text(), "F 90");
    EXPECT_EQ(label.typeName(), "IfcLabel");
    EXPECT_TRUE(label.isTyped());
    EXPECT_EQ(label.toString(), "F 90");
    EXPECT_EQ(model.byId(81).boolean("NominalValue"), true);
    EXPECT_EQ(model.byId(82).get<bool>("NominalValue"), false);
    EXPECT_EQ(model.byId(92).integer("NominalValue"), 7);
    EXPECT_EQ(model.byId(92).number("NominalValue"), 7.0);
    EXPECT_EQ(model.byId(99)["NominalValue"].kind(), Kind::Logical);
    EXPECT_EQ(model.byId(99).boolean("NominalValue"), std::nullopt);
    EXPECT_EQ(model.byId(89)["NominalValue"].kind(), Kind::Null);

    std::string sNames;
    for (const Attribute& one : model.byId(12).attributes()) sNames.append(one.name) += ' ';
    EXPECT_EQ(sNames, "Coordinates ");
    EXPECT_EQ(door.attributes().size(), std::string(GetParam()) == "IFC2X3" ? 10U : 13U);
    EXPECT_EQ(door.attributes()[2].name, "Name");
    EXPECT_TRUE(door.attributes()[2].optional);
    EXPECT_FALSE(door.attributes()[0].optional);
}

// ---- save -----------------------------------------------------------------------------------------------------------

TEST_P(RuleModel, SavesAsAWholeOrNotAtAll) {
    const RuleFolder folder;
    Model model = ruleHouse(GetParam());
    const std::filesystem::path path = folder.file("a.ifc", "old");
    EXPECT_TRUE(model.save(path).empty());
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"a.ifc"})) << "no temporary file stays";
    Model again = Model::open(path);
    EXPECT_TRUE(again.whole());
    EXPECT_EQ(sSavedText(again), sSavedText(model)) << "numbers and order are kept";

    const std::string sBefore = sContent(path);
    std::stop_source stop;
    stop.request_stop();
    SaveOptions stopped;
    stopped.stop = stop.get_token();
    EXPECT_THROW((void)model.save(path, stopped), Stopped);
    EXPECT_EQ(sContent(path), sBefore);
    for (const char* pName : {"a.csv", "a.json", "a", "a.txt"})
        EXPECT_TRUE(boTells(sThrown<FileError>([&] { (void)model.save(folder.path() / pName); }), {pName})) << pName;
    EXPECT_TRUE(boTells(sThrown<FileError>([&] { (void)model.save(folder.path() / "none" / "a.ifc"); }), {"a.ifc"}));
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"a.ifc"}));

    model.set(model.byId(40), "Name", "changed");
    EXPECT_TRUE(model.save(path).empty());
    EXPECT_EQ(Model::open(path).byId(40).text("Name"), "changed") << "over the file that it came from";

    std::vector<std::uint64_t> told;
    SaveOptions watched;
    watched.progress = [&told](const Progress& progress) { told.push_back(progress.done); };
    (void)model.save(path, watched);
    EXPECT_FALSE(told.empty());
    EXPECT_TRUE(std::is_sorted(told.begin(), told.end()));
}

TEST(RuleModelSave, TellsWhatTheSchemaWantsAndTheModelLacks) {
    Model model("IFC4");
    const Element point = model.create("IfcCartesianPoint");
    std::ostringstream out;
    const std::vector<Record> records = model.save(out);
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].id, point.id());
    EXPECT_NE(records[0].message.find("Coordinates"), std::string::npos) << records[0].message;
}

INSTANTIATE_TEST_SUITE_P(Schemas, RuleModel, testing::ValuesIn(g_ruleSchemas),
                         [](const auto& one) { return std::string(one.param); });

}   // namespace
}   // namespace oxa::test
