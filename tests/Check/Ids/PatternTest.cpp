// SPDX-License-Identifier: Apache-2.0
// Patterns of XML Schema: which names of walls match them, and which can't be read.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "../../Model/ModelText.h"
#include "IdsText.h"

namespace oxa {
namespace {

using namespace test;

std::string sEscaped(std::string_view text) {
    std::string sAll;
    for (const char c : text) sAll += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '"' ? "&quot;" : std::string(1, c);
    return sAll;
}

ids::Requirements requiringPattern(const std::string& sPattern) {
    return ids::Requirements::fromBuffer(
        idsFile(SpecificationText{.requirements = "<attribute>" + simple("name", "Name") +
                                                  "<value><xs:restriction base=\"xs:string\"><xs:pattern value=\"" +
                                                  sEscaped(sPattern) + "\"/></xs:restriction></value></attribute>"}
                    .text()));
}

TEST(IdsPattern, WhatMatches) {
    const struct {
        const char* sPattern;
        std::vector<const char*> matching;
        std::vector<const char*> others;
    } rows[] = {
        {"DT01", {"DT01"}, {"DT0", "DT011", "xDT01", "dt01"}},
        {"DT.", {"DT1", "DT\xC3\xA4"}, {"DT", "DT12", "DT\n"}},
        {"DT[0-9]{2}", {"DT24"}, {"DT2", "DT123", "DTAB"}},
        {"a{2,}", {"aa", "aaaa"}, {"a"}},
        {"a{0,2}b", {"b", "aab"}, {"aaab"}},
        {"(a|bc)+", {"a", "abca"}, {"b", "abb"}},
        {"a|", {"a"}, {"b"}},
        {"a?b*c+", {"c", "abbcc"}, {"ab"}},
        {"\\d+", {"12", "\xD9\xA3"}, {"1a"}},
        {"\\D", {"a"}, {"1"}},
        {"\\s", {" ", "\t"}, {"a"}},
        {"\\S+", {"a."}, {"a b"}},
        {"\\w+", {"aZ9\xC3\xA4", "a+b"}, {"a b", "a.b", "a_b"}},
        {"\\W", {".", "_", " "}, {"a", "+"}},
        {"\\i\\c*", {"a-1", "_x", ":"}, {"1a", "-a"}},
        {"\\I", {"1"}, {"a"}},
        {"\\C", {" "}, {"a", "1"}},
        {"\\p{Lu}\\p{Ll}*", {"Abc"}, {"abc", "ABC"}},
        {"\\P{L}+", {"12."}, {"1a"}},
        {"\\p{IsBasicLatin}+", {"abc"}, {"\xC3\xA4"}},
        {"\\P{IsBasicLatin}+", {"\xC3\xA4"}, {"abc"}},
        {"a\\.b\\-c", {"a.b-c"}, {"axb-c"}},
        {"^a$", {"^a$"}, {"a"}},
        {"[^a-c]+", {"xyz"}, {"xay"}},
        {"[\\w\\-]+", {"a-b"}, {"a.b"}},
        {"[^\\s]+", {"ab"}, {"a b"}},
        {"[a\\D]", {"a", "x"}, {"1"}},
        {"[\\S-[a]]", {"b"}, {"a", " "}},
        {"[a-z-[aeiou]]+", {"bcd"}, {"bad"}},
        {"[\\w-[\\d]]+", {"ab"}, {"a1"}},
        {"[\\w\\--[b]]+", {"a-c"}, {"a-b"}},
        {"[^a-[b]]", {"c"}, {"a", "b"}},
        {"[a-f-[^c-z]]+", {"cdef"}, {"ab"}},
        {"[^a-f-[^c-z]]", {"g", "z"}, {"a", "d", "A"}},
        {"[-a]+", {"a-"}, {"b"}},
        {"[a-]+", {"a-"}, {"b"}},
        {"[.?*]+", {".?*"}, {"a"}},
        {"(-|[0-9]{2,3})\\/(-|[0-9]{2,3})", {"-/90", "120/60"}, {"1/2"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sPattern);
        const ids::Requirements read = requiringPattern(row.sPattern);
        EXPECT_TRUE(read.valid()) << read.faults().front().message;
        Model model("IFC4");
        for (const char* pName : row.matching) model.create("IfcWall", {{"Name", pName}});
        const std::size_t iOthers = model.size();
        for (const char* pName : row.others) model.create("IfcWall", {{"Name", pName}});
        const ids::Result result = ids::check(model, read);
        std::vector<std::string> failing;
        for (const ids::Failure& failure : result.specifications.front().failures)
            failing.push_back(failure.element.text("Name").value_or(""));
        EXPECT_EQ(failing, std::vector<std::string>(row.others.begin(), row.others.end()));
        EXPECT_EQ(result.specifications.front().passed, iOthers);
    }
}

TEST(IdsPattern, WhatCanNotBeRead) {
    const struct {
        const char* sPattern;
        const char* sMessage;
    } rows[] = {
        {"(a", "a ( has no )"},
        {"a)", "a ) has no ("},
        {"[a", "a [ has no ]"},
        {"[]", "a class has nothing in it"},
        {"a]", "a ] stands alone; \\] is the character"},
        {"*a", "nothing stands before a *"},
        {"a**", "nothing stands before a *"},
        {"a*?", "nothing stands before a ?"},
        {"(?:a)", "a group begins with (?, which XML Schema does not have"},
        {"a{2", "a { has no }"},
        {"a{}", "a { has no number"},
        {"a{3,2}", "a quantifier ends below its begin"},
        {"a{2000}", "more than 1000 repetitions can't be counted"},
        {"\\b", "\\b is none of XML Schema"},
        {"\\1", "\\1 is none of XML Schema"},
        {"a\\", "a \\ ends the pattern"},
        {"\\pL", "a \\p has no {name}"},
        {"\\p{Foo}", "the category or block Foo is not known"},
        {"[z-a]", "a range ends below its begin"},
        {"[a-\\d]", "a range ends with no character"},
        {"[a-z-[b-[c]]]", "a class is subtracted from a subtracted one, which can't be said"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sPattern);
        const ids::Requirements read = requiringPattern(row.sPattern);
        ASSERT_EQ(read.faults().size(), 1U);
        EXPECT_EQ(read.faults().front().message, "the pattern can't be read: " + std::string(row.sMessage));
    }
    std::string sDeep = "a";
    for (int i = 0; i < 4; ++i) sDeep = "(" + sDeep + "{1,90})";
    EXPECT_FALSE(requiringPattern(sDeep).valid());   // too many repetitions, or too much memory
    EXPECT_FALSE(requiringPattern(std::string(100'000, '(')).valid());
    std::string sClass;
    for (int i = 0; i < 30; ++i) sClass += "\\w";
    EXPECT_TRUE(requiringPattern("(" + sClass + "){1,1}").valid());
}

TEST(IdsPattern, MemoryOfAllIsBounded) {
    std::string sFacets;
    for (int i = 0; i < 6000; ++i) sFacets += "pattern=a" + std::to_string(i) + "b ";
    sFacets.pop_back();
    const ids::Requirements read = ids::Requirements::fromBuffer(
        idsFile(SpecificationText{.requirements = "<material>" + restricted("value", "string", sFacets) + "</material>"}
                    .text()));
    ASSERT_FALSE(read.faults().empty());
    EXPECT_EQ(read.faults().front().message,
              "the pattern can't be read: all patterns of the file together need too much memory");
}

}   // namespace
}   // namespace oxa
