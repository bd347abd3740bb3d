// SPDX-License-Identifier: Apache-2.0
// The short way in by its rules: "*" stands only where the schema derives, a list of one typed value is a list, and a file
// that was cut keeps its numbers.
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Model/Relations.h"
#include "Model/RuleThrown.h"
#include "Model/SetProperty.h"

namespace oxa::test {
namespace {

class RuleMend : public testing::TestWithParam<const char*> {};

std::string sTextOf(Model& model) {
    std::ostringstream out;
    (void)model.save(out);
    return out.str().substr(out.str().find("DATA;"));
}

struct DerivedRow {
    const char* pRule;
    std::function<void(Model&)> work;
    const char* pTold;
};

TEST_P(RuleMend, DerivedIsRefusedWhereTheSchemaDerivesNothing) {
    const DerivedRow rows[] = {
        {"a text", [](Model& m) { m.set(m.byId(40), "Name", derived); }, "Name"},
        {"a number", [](Model& m) { m.set(m.byId(40), "OverallWidth", derived); }, "OverallWidth"},
        {"a list", [](Model& m) { m.set(m.byId(12), "Coordinates", derived); }, "Coordinates"},
        {"an element", [](Model& m) { m.set(m.byId(40), "OwnerHistory", derived); }, "OwnerHistory"},
        {"a select", [](Model& m) { m.set(m.byId(80), "NominalValue", derived); }, "NominalValue"},
        {"create",
         [](Model& m) {
             (void)m.create("IfcDoor", {{"Name", derived}});
         },
         "Name"},
        {"a property", [](Model& m) { (void)setProperty(m, m.byId(34), "Set", "One", derived); }, ""},
        {"a value where the schema derives",
         [](Model& m) { m.set(m.byId(6), "Dimensions", m.create("IfcDimensionalExponents")); }, "Dimensions"},
    };
    for (const DerivedRow& row : rows) {
        SCOPED_TRACE(row.pRule);
        Model model = ruleHouse(GetParam());
        EXPECT_TRUE(boTells(sThrown<ValueError>([&] { row.work(model); }), {row.pTold}));
    }
    Model model = ruleHouse(GetParam());
    const std::string sBefore = sTextOf(model);
    EXPECT_THROW(model.set(model.byId(40), "Name", derived), ValueError);
    EXPECT_TRUE(sTextOf(model) == sBefore);
    EXPECT_EQ(model.byId(6)["Dimensions"].kind(), Kind::Derived);
}

TEST_P(RuleMend, AListOfOneTypedValueIsAList) {
    Model model = ruleHouse(GetParam());
    model.set(model.byId(94), "ListValues", {typed("IfcReal", 2.5)});
    EXPECT_EQ(model.byId(94)["ListValues"].size(), 1U);
    const Element made =
        model.create("IfcPropertyEnumeratedValue", {{"Name", "E"}, {"EnumerationValues", {typed("IfcLabel", "NEW")}}});
    EXPECT_EQ(made["EnumerationValues"].size(), 1U);
    const Element copied =
        model.create("IfcPropertyEnumeratedValue",
                     {{"Name", "F"}, {"EnumerationValues", {NewValue(made["EnumerationValues"].items()[0])}}});
    EXPECT_EQ(copied["EnumerationValues"].size(), 1U);
}

TEST_P(RuleMend, AFileThatWasCutKeepsItsNumbers) {
    const std::string sText = sRuleHouse(GetParam());
    for (const std::size_t iCut : {sText.find("#60="), sText.find("#62=") + 20, sText.find("'WT'") + 2}) {
        SCOPED_TRACE(sText.substr(iCut - 20, 20));
        for (const unsigned uThreads : {1U, 0U}) {
            OpenOptions options;
            options.threads = uThreads;
            const Model model = Model::fromBuffer(sText.substr(0, iCut), options);
            EXPECT_FALSE(model.whole());
            EXPECT_EQ(sNumbers(model.all("IfcDoor")), "40 41 42");
            ASSERT_TRUE(model.byId(30));
            EXPECT_EQ(model.byId(30).text("Name"), "W1");
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Schemas, RuleMend, testing::ValuesIn(g_ruleSchemas),
                         [](const auto& one) { return std::string(one.param); });

}   // namespace
}   // namespace oxa::test
