// SPDX-License-Identifier: Apache-2.0
// Errors::writeReport: the data that a template sees, and templates that fail.

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <sstream>
#include <streambuf>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Format/Ifc/AssertLog.h"
#include "Format/Ifc/IfcFileError.h"
#include "platform/Localization.h"

namespace oxa::ifc {
namespace {

struct Rendered {
    bool boOk;
    std::string sText;
    std::vector<std::string> assertions;
};

Rendered rendered(const Errors& errors, std::string_view templateText, std::string sFileName = "x",
                  bool boAssertions = true) {
    const AssertLog log(boAssertions);
    std::ostringstream out;
    const bool boOk = errors.writeReport(templateText, out, std::move(sFileName));
    return {boOk, out.str(), log.texts()};
}

// A key that no language knows is its own text.
struct Record {
    Errors::Severity severity;
    const char* sDescription;
    std::string sLine;
    unsigned iLine;
};

void vAdd(Errors& errors, const std::vector<Record>& records) {
    for (const Record& record : records)
        errors.add(nullptr, record.severity, Errors::Value, record.sDescription, record.sLine, record.iLine);
}

struct DataRow {
    const char* sRule;
    std::vector<Record> records;
    std::string sJson;
};
const DataRow g_dataRows[] = {
    {"no records", {}, R"({"categories":[],"filename":"x"})"},
    {"a record",
     {{Errors::Error, "a", "#1=A();", 7}},
     R"({"categories":[{"description":"a","errors":[)"
     R"({"description":"a","lineNumber":7,"lineString":"#1=A();","severity":"error"}]}],"filename":"x"})"},
    {"the same text twice is one category, in the order of arrival",
     {{Errors::Error, "a", "l2", 2}, {Errors::Error, "a", "l1", 1}},
     R"({"categories":[{"description":"a","errors":[)"
     R"({"description":"a","lineNumber":2,"lineString":"l2","severity":"error"},)"
     R"({"description":"a","lineNumber":1,"lineString":"l1","severity":"error"}]}],"filename":"x"})"},
    {"fatal is a word",
     {{Errors::Fatal, "a", "", 0}},
     R"({"categories":[{"description":"a","errors":[)"
     R"({"description":"a","lineNumber":0,"lineString":"","severity":"fatal"}]}],"filename":"x"})"},
    {"another severity has none",
     {{static_cast<Errors::Severity>(2), "a", "", 4294967295u}},
     R"({"categories":[{"description":"a","errors":[)"
     R"({"description":"a","lineNumber":4294967295,"lineString":"","severity":""}]}],"filename":"x"})"},
    {"text that JSON escapes, and UTF-8 that it keeps",
     {{Errors::Error, "\"\xc3\xa4", "\t\xe2\x82\xac</script>", 1}},
     "{\"categories\":[{\"description\":\"\\\"\xc3\xa4\",\"errors\":[{\"description\":\"\\\"\xc3\xa4\","
     "\"lineNumber\":1,\"lineString\":\"\\t\xe2\x82\xac</"
     "script>\",\"severity\":\"error\"}]}],\"filename\":\"x\"}"},
};

TEST(ErrorReport, DumpIsTheWholeDataWithoutItself) {
    for (const DataRow& row : g_dataRows) {
        SCOPED_TRACE(row.sRule);
        Errors errors;
        vAdd(errors, row.records);
        const Rendered result = rendered(errors, "{{ dumpJson }}");
        EXPECT_TRUE(result.boOk);
        EXPECT_EQ(result.sText, row.sJson);
        EXPECT_TRUE(result.assertions.empty());
        EXPECT_EQ(errors.records().size(), row.records.size());
    }
}

const std::vector<Record> g_records = {
    {Errors::Error, "b", "#1=A();", 7}, {Errors::Fatal, "a", "#2=B();", 0}, {Errors::Error, "b", "#3=C();", 5},
    {Errors::Error, "\xc3\xa4", "", 1}, {Errors::Error, "a1", "", 2},       {Errors::Error, "A", "", 3},
};

struct TemplateRow {
    const char* sRule;
    const char* sTemplate;
    std::string sText;
};
const TemplateRow g_templateRows[] = {
    {"plain text", "no mark at all\n", "no mark at all\n"},
    {"an empty template", "", ""},
    {"the file's name", "{{ filename }}", "x"},
    {"categories by the bytes of their text, the shorter one first",
     "{% for c in categories %}{{ c.description }}:{{ length(c.errors) }} {% endfor %}",
     "A:1 a:1 a1:1 b:2 \xc3\xa4:1 "},
    {"every field of a record",
     "{% for c in categories %}{% for e in c.errors %}{{ e.severity }} {{ e.lineNumber }} {{ e.lineString }} "
     "{{ e.description }}|{% endfor %}{% endfor %}",
     "error 3  A|fatal 0 #2=B(); a|error 2  a1|error 7 #1=A(); b|error 5 #3=C(); b|error 1  \xc3\xa4|"},
    {"a comment and a line statement", "{# none #}\n## if true\nyes\n## endif\n", "\nyes\n"},
    {"text is not escaped", "{{ \"<&>\" }}", "<&>"},
    {"built-in functions", "{{ upper(filename) }}{{ filename | upper }} {{ length(categories) }} {{ 7 % 4 }}",
     "XX 5 3"},
    {"the checked ones have inja's results",
     "{{ 1 + 2 }} {{ \"a\" + \"b\" }} {{ 1.5 + 1 }} {{ 5 - 7 }} {{ 3 * 4 }} {{ 2 ^ 10 }} {{ 2 ^ -1 }} "
     "{{ divisibleBy(8, 4) }} {{ divisibleBy(8, 0) }} {{ divisibleBy(8, -1) }} {{ 8 % -1 }} {{ round(2.6, 0) "
     "}} "
     "{{ round(2.66, 1) }} {{ capitalize(\"aBC\") }} {{ range(3) }} {{ first([4, 5]) }} {{ last([4, 5]) }} "
     "{{ max([1, 3, 2]) }} {{ min([2, 1, 3]) }}",
     "3 ab 2.5 -2 12 1024 0.5 true false true 0 3 2.7 Abc [0,1,2] 4 5 3 1"},
    {"the smallest integer",
     "{{ (0 - 9223372036854775807 - 1) % -1 }} {{ divisibleBy(0 - 9223372036854775807 - 1, -1) }}", "0 true"},
    {"operators in their order",
     "{{ 1 + 2 * 3 - 4 }} {{ 2 ^ 3 ^ 2 }} {{ (1 + 2) * (3 - 5) * 2 }} {{ not false and not (not true) }} "
     "{{ 1 < 2 and \"a\" in [\"a\"] or 3 == 4 }} {{ 8 / 2 / 2 }} {{ 7 % 4 % 2 }}",
     "3 512 -12 true true 2.0 1"},
    {"a power of nothing is an integer", "{{ 2 ^ 0 }} {{ 2.0 ^ 0 }}", "1 1.0"},
    {"a pipeline in a condition", "{% if filename | length == 1 %}a{% endif %}", "a"},
    {"a pipeline", "{{ \"aBc\" | upper | lower | capitalize | replace(\"A\", filename) | length }}", "3"},
    {"functions in every argument of functions",
     "{{ at(range(at([5, 4], first(range(3)))), length(upper(\"ab\" + filename)) - 2) }} "
     "{{ max(range(4)) + length(\"ab\" + filename) }}",
     "1 6"},
    {"what is not needed is not looked for",
     "{{ true or nonsense }} {{ false and nonsense }} {{ default(nonsense, 1) + 1 }} "
     "{{ default(1, nonsense) }} {% if false %}a{% else if true %}b{% else if nonsense %}c{% endif %}",
     "true false 2 1 b"},
    {"ifs in the branches of ifs",
     "{% for i in range(6) %}{% if i == 0 %}{% if true %}a{% else if true %}b{% endif %}{% else if i < 3 %}"
     "{% if i == 1 %}c{% else if i == 2 %}d{% else %}e{% endif %}{% else if i == 3 %}f{% else %}"
     "{% if i == 4 %}g{% else if i == 5 %}h{% endif %}i{% endif %} {% endfor %}",
     "a c d f gi hi "},
    {"no branch", "{% if false %}a{% else if false %}b{% endif %}.", "."},
    {"an else if behind an else", "{% if false %}a{% else %}b{% else if true %}c{% endif %}", "bc"},
    {"a part of a function's result", "{{ first(categories).description }}", "A"},
    {"a part of a variable in parentheses", "{% set c = first(categories) %}{{ (c).description }}", "A"},
    {"an empty text in capitals", "[{{ capitalize(\"\") }}]", "[]"},
    {"else if", "{% if length(categories) > 9 %}a{% else if true %}b{% else %}c{% endif %}", "b"},
    {"a variable of several parts", "{% set a.b = filename %}{{ a.b }}", "x"},
    {"an index behind the end fills the list", "{% set a = [] %}{% set a.1 = 2 %}{{ a }}", "[null,2]"},
    {"digits in a name are no index",
     "{% set a20261121 = 1 %}{% set b.c20261121 = 2 %}{{ a20261121 }}{{ b.c20261121 }}", "12"},
    {"an empty range", "{% for i in range(0) %}x{% endfor %}.", "."},
};

TEST(ErrorReport, TemplateSeesTheData) {
    for (const TemplateRow& row : g_templateRows) {
        SCOPED_TRACE(row.sRule);
        Errors errors;
        vAdd(errors, g_records);
        const Rendered result = rendered(errors, row.sTemplate);
        EXPECT_TRUE(result.boOk) << (result.assertions.empty() ? "" : result.assertions.front());
        EXPECT_EQ(result.sText, row.sText);
        EXPECT_TRUE(result.assertions.empty());
    }
}

TEST(ErrorReport, ArgumentMakesACategory) {
    Errors errors;
    for (const char* pArgument : {"20", "1", "20"})
        errors.add(nullptr, Errors::Error, Errors::Reference, "Error_MissingEntityWithId", pArgument, {}, 0);
    const Rendered result =
        rendered(errors, "{% for c in categories %}{{ c.description }}/{{ length(c.errors) }};{% endfor %}");
    const std::string sOne = errors.records()[1].description;
    const std::string sTwenty = errors.records()[0].description;
    ASSERT_LT(sOne, sTwenty);
    EXPECT_EQ(result.sText, sOne + "/1;" + sTwenty + "/2;");
}

struct LocalizeRow {
    const char* sRule;
    const char* sTemplate;
    std::string sText;
    bool boAssertion;
};
const LocalizeRow g_localizeRows[] = {
    {"a key", "<{{ localize(\"Error_InvalidFile\") }}>", "<" + localize("Ifc", "Error_InvalidFile") + ">", false},
    {"over a pipe", "<{{ \"Error_InvalidFile\" | localize }}>", "<" + localize("Ifc", "Error_InvalidFile") + ">",
     false},
    {"an unknown key is its own text", "<{{ localize(\"none\") }}>", "<none>", false},
    {"two arguments", "<{{ localize(\"Error_InvalidFile\", \"b\") }}>", "<>", true},
    {"two of any type", "<{{ localize(1, 2) }}>", "<>", true},
    {"none", "<{{ localize() }}>", "<>", true},
    {"none and no parentheses", "<{{ localize }}>", "<>", true},
};

TEST(ErrorReport, LocalizeTakesOneKey) {
    for (const LocalizeRow& row : g_localizeRows) {
        SCOPED_TRACE(row.sRule);
        const Rendered result = rendered(Errors(), row.sTemplate);
        EXPECT_TRUE(result.boOk);
        EXPECT_EQ(result.sText, row.sText);
        const std::vector<std::string> expected(row.boAssertion ? 1 : 0,
                                                "localize function takes 1 argument (the localize id)");
        EXPECT_EQ(result.assertions, expected);
        EXPECT_TRUE(rendered(Errors(), row.sTemplate, "x", false).assertions.empty());
    }
}

TEST(ErrorReport, LocalizeSpeaksTheLanguageOfTheUser) {
    setLanguage(Language::German);
    const std::string sGerman = localize("Ifc", "Error_InvalidFile");
    const Rendered result = rendered(Errors(), "{{ localize(\"Error_InvalidFile\") }}");
    setLanguage(Language::English);
    EXPECT_EQ(result.sText, sGerman);
    EXPECT_NE(result.sText, localize("Ifc", "Error_InvalidFile"));
}

const std::string g_prefix = "Exception thrown when rendering template file: ";

void vExpectFailure(const Errors& errors, std::string_view templateText, std::string_view textBefore) {
    const std::size_t iRecords = errors.records().size();
    const Rendered result = rendered(errors, templateText);
    EXPECT_FALSE(result.boOk);
    EXPECT_EQ(result.sText, textBefore);
    ASSERT_EQ(result.assertions.size(), 1u);
    EXPECT_TRUE(result.assertions[0].starts_with(g_prefix)) << result.assertions[0];
    EXPECT_GT(result.assertions[0].size(), g_prefix.size());
    EXPECT_EQ(errors.records().size(), iRecords);
    const Rendered silent = rendered(errors, templateText, "x", false);
    EXPECT_FALSE(silent.boOk);
    EXPECT_EQ(silent.sText, textBefore);
    EXPECT_TRUE(silent.assertions.empty());
}

std::string sRepeated(std::string_view text, std::size_t iTimes) {
    std::string sAll;
    for (std::size_t i = 0; i < iTimes; ++i) sAll += text;
    return sAll;
}

struct FaultRow {
    const char* sRule;
    std::string sTemplate;
    std::string sBefore;   // what is written all the same
};
const std::size_t g_iMany = 200000;
const FaultRow g_faults[] = {
    {"a statement that is none", "a{% nonsense %}", ""},
    {"an open statement", "{% if true", ""},
    {"an if without its end", "a{% if true %}b", ""},
    {"an end without its if", "{% endif %}", ""},
    {"an end without its for", "{% endfor %}", ""},
    {"an end without its block", "{% endblock %}", ""},
    {"an else without its if", "{% else %}", ""},
    {"ends in the wrong order", "{% if true %}{% for c in categories %}{% endif %}{% endfor %}", ""},
    {"a function that is none", "{{ nonsense(1) }}", ""},
    {"a variable that is none", "a{{ nonsense }}b", "a"},
    {"a part that is none", "a{{ filename.nonsense }}b", "a"},
    {"an empty expression", "a{{ }}", "a"},
    {"a loop over a text", "a{% for c in filename %}b{% endfor %}", "a"},
    {"a key that is no text", "a{{ localize(1) }}", "a"},
    {"an object without the part", "{{ first([{\"a\": 1}]).b }}", ""},
    {"an index behind the end", "{{ at(categories, 7) }}", ""},
    {"a text that is no number", "{{ int(filename) }}", ""},
    {"a file that is not there", "a{% include \"no such file\" %}", ""},
    {"a parent that is not there", "a{% extends \"no such file\" %}", ""},
    {"a file without a name", "a{% include \"\" %}", ""},
    {"a folder", "a{% include \"..\" %}", ""},
    {"a device without end", "a{% include \"/dev/zero\" %}", ""},
    {"super without a block", "a{{ super() }}", "a"},
    // what inja does not survive
    {"a remainder of nothing", "a{{ 1 % 0 }}", "a"},
    {"the first of none", "a{{ first([]) }}", "a"},
    {"the last of none", "a{{ last([]) }}", "a"},
    {"the first of an empty object", "a{{ first({}) }}", "a"},
    {"the largest of none", "a{{ max([]) }}", "a"},
    {"the smallest of none", "a{{ min([]) }}", "a"},
    {"the first of null", "a{{ first(null) }}", "a"},
    {"a part of a missing variable", "a{{ (nonsense).b }}", "a"},
    {"a pipe from nothing", "{{ | upper }}", ""},
    {"a pipe from an operator", "{{ not | upper }}", ""},
    {"a pipe from a keyword", "{% if | upper %}{% endif %}", ""},
    {"a pipe from two keywords", "{% if true %}{% else if | upper %}{% endif %}", ""},
    {"a pipe from an argument that is none", "{{ upper(| upper) }}", ""},
    {"a pipe inside of a list", "{{ [\"a\" | upper] }}", ""},
    {"a range below 0", "a{{ range(-1) }}", "a"},
    {"an index beyond memory", "a{% set b = [] %}{% set b.2000000000 = 1 %}", ""},
    {"a range beyond memory", "a{{ range(2000000000) }}", "a"},
    {"a sum beyond 64 bits", "a{{ 9223372036854775807 + 1 }}", "a"},
    {"a difference beyond 64 bits", "a{{ 0 - 9223372036854775807 - 2 }}", "a"},
    {"a product beyond 64 bits", "a{{ 9223372036854775807 * 2 }}", "a"},
    {"a power beyond 64 bits", "a{{ 2 ^ 64 }}", "a"},
    {"a number beyond 32 bits, rounded", "a{{ round(3000000000.0, 0) }}", "a"},
    {"parentheses without end", "{{ " + sRepeated("(", g_iMany), ""},
    {"parentheses", "{{ " + sRepeated("(", g_iMany) + "1" + sRepeated(")", g_iMany) + " }}", ""},
    {"calls", "{{ " + sRepeated("upper(", g_iMany) + "\"a\"" + sRepeated(")", g_iMany) + " }}", ""},
    {"a sum", "{{ 1" + sRepeated("+1", g_iMany) + " }}", ""},
    {"negations", "{{ " + sRepeated("not ", g_iMany) + "true }}", ""},
    {"a pipeline", "{{ filename" + sRepeated("|upper", g_iMany) + " }}", ""},
    {"a list in lists", "{{ " + sRepeated("[", g_iMany) + sRepeated("]", g_iMany) + " }}", ""},
    {"a list in objects", "{{ " + sRepeated("{\"a\":", g_iMany) + "1" + sRepeated("}", g_iMany) + " }}", ""},
    {"ifs", sRepeated("{% if true %}", g_iMany) + sRepeated("{% endif %}", g_iMany), ""},
    {"ifs in lines", sRepeated("## if true\n", g_iMany) + sRepeated("## endif\n", g_iMany), ""},
    {"loops", sRepeated("{% for c in categories %}", g_iMany) + sRepeated("{% endfor %}", g_iMany), ""},
    {"else ifs", "{% if false %}" + sRepeated("{% else if false %}", g_iMany) + "{% endif %}", ""},
    {"parts of a name", "{% set a" + sRepeated(".a", g_iMany) + " = 1 %}{{ a }}", ""},
    {"a variable put into itself",
     "{% set a = 1 %}{% for i in range(100000) %}{% set b.b = a %}{% set a = b %}{% endfor %}{{ a }}", ""},
};

TEST(ErrorReport, FaultGivesFalseAndNothingWorse) {
    for (const FaultRow& row : g_faults) {
        SCOPED_TRACE(row.sRule);
        vExpectFailure(Errors(), row.sTemplate, row.sBefore);
    }
}

// Each with so many repetitions, and with one more.
struct LimitRow {
    const char* sRule;
    std::string sBefore;
    std::string_view sRepeatedBefore;
    std::string sInside;
    std::string_view sRepeatedBehind;
    std::string sBehind;
    std::size_t iMost;
};
const LimitRow g_limitRows[] = {
    {"parentheses", "{{ ", "(", "1", ")", " }}", 100},
    {"calls", "{{ ", "upper(", "\"a\"", ")", " }}", 100},
    {"calls in the second argument", "{{ ", "at([0],", "0", ")", " }}", 100},
    {"powers, which begin on the right", "{{ 1", "^1", "", "", " }}", 100},
    {"lists in lists", "{{ ", "[", "", "]", " }}", 100},
    {"objects in objects", "{{ ", "{\"a\":", "1", "} ", " }}", 100},
    {"parts of a name", "{% set a", ".a", " = 1 %}{{ a }}", "", "", 100},
    {"ifs", "", "{% if true %}", "x", "{% endif %}", "", 100},
    {"ifs in their else", "", "{% if false %}{% else %}", "x", "{% endif %}", "", 100},
    {"loops", "", "{% for i in [1] %}", "x", "{% endfor %}", "", 100},
    {"a sum", "{{ 1", "+1", "", "", " }}", 8000},
    {"a condition", "{% if false", " or false", " %}{% endif %}", "", "", 7998},
    {"a pipeline", "{{ filename ", "| upper ", "", "", " }}", 8000},
    {"else ifs", "{% if false %}", "{% else if false %}", "{% else %}x{% endif %}", "", "", 7998},
    {"a sum in the last else if of many", "{% if false %}" + sRepeated("{% else if false %}", 4000) + "{{ 1", "+1",
     " }}{% endif %}", "", "", 3999},
    {"digits of an index, which fills a list", "{% set a = [] %}{% set a.", "9", " = 1 %}{{ length(a) }}", "", "", 6},
    {"rounds of a variable into itself", "{% set a = 1 %}{% for i in [1", ",1",
     "] %}{% set b.b = a %}{% set a = b %}{% endfor %}{{ length(a) }}", "", "", 100},
};

TEST(ErrorReport, LimitsAreForDepthAndNotForLength) {
    for (const LimitRow& row : g_limitRows) {
        const auto sTemplate = [&row](std::size_t iTimes) {
            return row.sBefore + sRepeated(row.sRepeatedBefore, iTimes) + row.sInside +
                   sRepeated(row.sRepeatedBehind, iTimes) + row.sBehind;
        };
        SCOPED_TRACE(row.sRule);
        const Rendered result = rendered(Errors(), sTemplate(row.iMost));
        EXPECT_TRUE(result.boOk) << (result.assertions.empty() ? "" : result.assertions.front());
        EXPECT_FALSE(rendered(Errors(), sTemplate(row.iMost + 1)).boOk);
    }
}

TEST(ErrorReport, LongFlatFormsAreRendered) {
    const struct {
        const char* sRule;
        std::string sTemplate;
        std::string sText;
    } rows[] = {
        {"a sum", "{{ 1" + sRepeated("+1", 5000) + " }}", "5001"},
        {"texts put together", "{{ \"\"" + sRepeated("+\"a\"+filename", 2000) + " }}", sRepeated("ax", 2000)},
        {"a condition", "{{ false" + sRepeated(" or 1 == 2 and true", 2000) + " or true }}", "true"},
        {"else ifs", "{% if false %}" + sRepeated("{% else if 1 == 2 %}a", 5000) + "{% else %}b{% endif %}", "b"},
        {"the last else if",
         "{% if false %}" + sRepeated("{% else if false %}", 5000) + "{% else if true %}a{% else %}b{% endif %}", "a"},
        {"ifs in each other", sRepeated("{% if true %}", 70) + "x" + sRepeated("{% endif %}", 70), "x"},
        {"many one after the other", sRepeated("{% if true %}({{ (1) }}){% endif %}", 1000), sRepeated("(1)", 1000)},
        {"parentheses one after the other", "{{ 0" + sRepeated("+(1)", 1000) + " }}", "1000"},
        {"lists one after the other", "{{ [" + sRepeated("[],{},", 1000) + "1] }}",
         "[" + sRepeated("[],{},", 1000) + "1]"},
        {"a long range", "{{ length(range(1500000)) }}", "1500000"},
        {"the longest range", "{{ length(range(4000000)) }}", "4000000"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sRule);
        const Rendered result = rendered(Errors(), row.sTemplate);
        EXPECT_TRUE(result.boOk) << (result.assertions.empty() ? "" : result.assertions.front());
        EXPECT_EQ(result.sText, row.sText);
    }
    EXPECT_FALSE(rendered(Errors(), "{{ length(range(4000001)) }}").boOk);
}

// What is wrong behind something long is told, and the long thing taken down, as well.
TEST(ErrorReport, FaultBehindALongFormIsAFault) {
    for (const char* pBehind : {" ] }}", " + }}", " + nonsense(1) }}", " }}{% endfor %}", " }}{% if true %}"}) {
        SCOPED_TRACE(pBehind);
        vExpectFailure(Errors(), "{{ 1" + sRepeated("+1", 7990) + pBehind, "");
    }
    vExpectFailure(Errors(), "{% if false %}" + sRepeated("{% else if false %}", 7990), "");
}

// Records are bytes of a file: a text that is none in UTF-8 has no JSON.
TEST(ErrorReport, BytesOutsideUtf8GiveFalse) {
    const Record rows[] = {
        {Errors::Error, "a", "#1=A('\xe4');", 1},
        {Errors::Error, "a\xff", "#1=A();", 1},
        {Errors::Error, "a", "\xed\xa0\x80", 1},   // half of a surrogate pair
    };
    for (const Record& row : rows) {
        SCOPED_TRACE(row.sDescription + row.sLine);
        Errors errors;
        vAdd(errors, {row});
        vExpectFailure(errors, "text", "");
    }
    const Rendered result = rendered(Errors(), "text", "\xff");
    EXPECT_FALSE(result.boOk);
    EXPECT_EQ(result.assertions.size(), 1u);
}

// What stands in a record is a value and never a part of the template.
TEST(ErrorReport, TextOfARecordIsNoTemplate) {
    Errors errors;
    vAdd(errors, {{Errors::Error, "{{ nonsense }}", "{% include \"x\" %}", 1}});
    const Rendered result =
        rendered(errors, "{% for c in categories %}{{ c.description }}{% for e in c.errors %}"
                         "{{ e.lineString }}{{ capitalize(e.lineString) }}{% endfor %}{% endfor %}");
    EXPECT_TRUE(result.boOk);
    EXPECT_EQ(result.sText, "{{ nonsense }}{% include \"x\" %}{% include \"x\" %}");
}

// A working folder with files to include, for one test.
class Folder {
public:
    Folder() : m_before(std::filesystem::current_path()) {
        m_path = std::filesystem::path(testing::TempDir()) /
                 ("oxa-report-" + std::to_string(reinterpret_cast<std::uintptr_t>(this)));
        std::filesystem::create_directories(m_path / "sub");
        std::filesystem::current_path(m_path);
    }
    ~Folder() {
        std::filesystem::current_path(m_before);
        std::error_code error;
        std::filesystem::remove_all(m_path, error);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    void vFile(const std::string& sName, std::string_view text) const {
        std::ofstream(sName, std::ios::binary) << text;
    }

private:
    std::filesystem::path m_before;
    std::filesystem::path m_path;
};

TEST(ErrorReport, FilesAreIncludedFromTheWorkingFolder) {
    const Folder folder;
    folder.vFile("a", "[{{ filename }}{% include \"sub/b\" %}]");
    folder.vFile("sub/b", "({% include \"c\" %})");
    folder.vFile("sub/c", "{{ length(categories) }}");
    folder.vFile("page", "<{% block title %}none{% endblock %}>");
    folder.vFile("mod", "{{ 1 % 0 }}");
    folder.vFile("deep", "{{ " + sRepeated("(", g_iMany));
    EXPECT_EQ(rendered(Errors(), "{% include \"a\" %}{% include \"./a\" %}").sText, "[x(0)][x(0)]");
    EXPECT_EQ(
        rendered(Errors(), "{% extends \"page\" %}{% block title %}{{ super() }}+{{ filename }}{% endblock %}").sText,
        "<none+x>");
    EXPECT_EQ(
        rendered(Errors(), "{% extends \"page\" %}{% block title %}{{ super(1) }}+{{ filename }}{% endblock %}").sText,
        "<none+x>");
    // A name that is known already leads to that file, wherever it stands.
    folder.vFile("known", "k");
    folder.vFile("sub/asks", "{% include \"known\" %}");
    EXPECT_EQ(rendered(Errors(), "{% include \"known\" %}{% include \"sub/asks\" %}").sText, "kk");
    vExpectFailure(Errors(), "{% include \"sub/asks\" %}", "");
    vExpectFailure(Errors(), "a{% include \"mod\" %}", "a");
    vExpectFailure(Errors(), "a{% include \"deep\" %}", "");
    vExpectFailure(Errors(), "a{% include \"sub\" %}", "");
}

TEST(ErrorReport, EndlessTemplatesEnd) {
    const Folder folder;
    folder.vFile("self", "{% include \"self\" %}");
    folder.vFile("ping", "{% include \"pong\" %}");
    folder.vFile("pong", "{% include \"ping\" %}");
    folder.vFile("parent", "{% extends \"parent\" %}");
    folder.vFile("growing", "{% include \"././growing\" %}");
    folder.vFile("sub/around", "{% include \"../sub/around\" %}");
    folder.vFile("blocks", "{% block a %}{% block b %}{% endblock %}{% endblock %}");
    folder.vFile("levels", "{% block a %}{{ super(0) }}{% endblock %}");
    const std::string sDeepSuper = sRepeated("at([0],", 90) + "super()" + sRepeated(")", 90);
    const std::string sDeep =
        "{% extends \"blocks\" %}{% block b %}{% block a %}{{ " + sDeepSuper + " }}{% endblock %}{% endblock %}";
    vExpectFailure(Errors(), sDeep, "");
    for (const char* pTemplate :
         {"{% include \"self\" %}", "{% include \"ping\" %}", "{% extends \"parent\" %}", "{% include \"growing\" %}",
          "{% include \"sub/around\" %}",
          "{% extends \"blocks\" %}{% block b %}{% block a %}{{ super() }}{% endblock %}{% endblock %}",
          "{% extends \"levels\" %}{% block a %}{{ super() }}{% endblock %}"}) {
        SCOPED_TRACE(pTemplate);
        vExpectFailure(Errors(), pTemplate, "");
    }
}

TEST(ErrorReport, IncludesHaveLimits) {
    const Folder folder;
    for (int i = 1; i <= 101; ++i)
        folder.vFile("deep" + std::to_string(i),
                     i == 101 ? "." : "{% include \"deep" + std::to_string(i + 1) + "\" %}");
    std::string sAll;
    for (int i = 1; i <= 257; ++i) {
        folder.vFile("wide" + std::to_string(i), ".");
        if (i > 1) sAll += "{% include \"wide" + std::to_string(i) + "\" %}";
    }
    folder.vFile("down", "{% if n > 0 %}{% set n = n - 1 %}{% include \"down\" %}{% endif %}");
    folder.vFile("large", std::string(16u << 20, '.'));
    folder.vFile("larger", std::string((16u << 20) + 1, '.'));
    EXPECT_EQ(rendered(Errors(), "{% include \"deep2\" %}").sText, ".");
    vExpectFailure(Errors(), "{% include \"deep1\" %}", "");
    EXPECT_EQ(rendered(Errors(), sAll).sText, sRepeated(".", 256));
    vExpectFailure(Errors(), sAll + "{% include \"wide1\" %}", "");
    EXPECT_TRUE(rendered(Errors(), "{% set n = 99 %}{% include \"down\" %}").boOk);
    EXPECT_FALSE(rendered(Errors(), "{% set n = 100 %}{% include \"down\" %}").boOk);
    // A body less than that, and one more than before.
    EXPECT_FALSE(rendered(Errors(), "{% set n = 99 %}{% if true %}{% include \"down\" %}{% endif %}").boOk);
    EXPECT_EQ(rendered(Errors(), "{% include \"large\" %}").sText.size(), 16u << 20);
    vExpectFailure(Errors(), "{% include \"larger\" %}", "");
}

// What a parent template renders ends the one that extends it, in a branch too.
TEST(ErrorReport, ParentInABranchEndsTheTemplate) {
    const Folder folder;
    folder.vFile("p", "p");
    for (const char* pTemplate : {"{% if true %}{% extends \"p\" %}x{% endif %}y",
                                  "{% if false %}{% else if true %}{% extends \"p\" %}{% else %}x{% endif %}y",
                                  "{% if false %}{% else %}{% extends \"p\" %}{% else if true %}x{% endif %}y"}) {
        SCOPED_TRACE(pTemplate);
        EXPECT_EQ(rendered(Errors(), pTemplate).sText, "p");
    }
}

TEST(ErrorReport, ManyIncludesOfOneFileAreNotDeep) {
    const Folder folder;
    folder.vFile("a", "{% extends \"b\" %}");
    folder.vFile("b", ".");
    EXPECT_EQ(rendered(Errors(), "{% for i in range(1000) %}{% include \"a\" %}{% endfor %}").sText,
              sRepeated(".", 1000));
}

TEST(ErrorReport, ManyRecordsAreRendered) {
    Errors errors;
    for (unsigned i = 0; i < 20000; ++i) errors.add(nullptr, Errors::Error, Errors::Value, "a", "#1=A();", i);
    const Rendered result = rendered(errors, "{% for c in categories %}{{ length(c.errors) }}{% endfor %}");
    EXPECT_TRUE(result.boOk);
    EXPECT_EQ(result.sText, "20000");
}

// A stream that throws ends the rendering like any fault.
TEST(ErrorReport, StreamThatThrowsGivesFalse) {
    const AssertLog log;
    struct Full : std::streambuf {
    } full;
    std::ostream out(&full);
    out.exceptions(std::ios::badbit);
    EXPECT_FALSE(Errors().writeReport("text", out, "x"));
    EXPECT_EQ(log.texts().size(), 1u);
}

}   // namespace
}   // namespace oxa::ifc
