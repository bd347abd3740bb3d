// SPDX-License-Identifier: Apache-2.0
// How a value is told in a difference.

#include <string>

#include <gtest/gtest.h>

#include "Compare/Compare.h"
#include "StatementModel.h"

namespace oxa::compare {
namespace {

using test::StatementModel;

struct TextRow {
    const char* pRule;
    const char* pOld;   // an entity of its own
    const char* pText;
};

TEST(ContentText, IsAsShortAsTheValueAllows) {
    // clang-format off
    const TextRow rows[] = {
        {"a whole number as a real", "IFCCARTESIANPOINT((5.,-2.))", "IFCCARTESIANPOINT((5.,-2.))"},
        {"digits as they are", "IFCCARTESIANPOINT((0.1,3.141592653589793))",
         "IFCCARTESIANPOINT((0.1,3.141592653589793))"},
        {"the last digits in front of a power", "IFCCARTESIANPOINT((1.E15,1234567890123456.))",
         "IFCCARTESIANPOINT((1000000000000000.,1234567890123456.))"},
        {"a power from 16 on", "IFCCARTESIANPOINT((1.E16,2.5E+300))", "IFCCARTESIANPOINT((1.E+16,2.5E+300))"},
        {"four zeros behind the point", "IFCCARTESIANPOINT((0.0001,0.00012))", "IFCCARTESIANPOINT((0.0001,0.00012))"},
        {"a power from five zeros on", "IFCCARTESIANPOINT((0.00001,-1.5E-7))", "IFCCARTESIANPOINT((1.E-05,-1.5E-07))"},
        {"no number below them", "IFCCARTESIANPOINT((5E-324,0.))", "IFCCARTESIANPOINT((5.E-324,0.))"},
        {"an enumerator, nothing and what is derived", "IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.)",
         "IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.)"},
        {"a quote", "IFCMATERIAL('it''s',$,$)", "IFCMATERIAL('it''s',$,$)"},
        {"letters as they are", "IFCMATERIAL('\\X2\\00E4\\X0\\',$,$)", "IFCMATERIAL('\xc3\xa4',$,$)"},
        {"bytes", "IFCBLOBTEXTURE(.T.,.F.,$,$,$,'PNG',\"00FA0\")", "IFCBLOBTEXTURE(.T.,.F.,$,$,$,'PNG',\"0FA0\")"},
        {"a typed value", "IFCPROPERTYSINGLEVALUE('p',$,IFCLOGICAL(.U.),$)",
         "IFCPROPERTYSINGLEVALUE('p',$,IFCLOGICAL(.U.),$)"},
        {"rows", "IFCCARTESIANPOINTLIST2D(((1.,2.),(3.,4.)))", "IFCCARTESIANPOINTLIST2D(((1.,2.),(3.,4.)))"},
    };
    // clang-format on
    for (const TextRow& row : rows) {
        SCOPED_TRACE(row.pRule);
        StatementModel before("#1=" + std::string(row.pOld) + ";\n");
        StatementModel after("");
        const Result result = differences({before.data()}, {after.data()});
        ASSERT_EQ(result.removed.size(), 1U);
        EXPECT_EQ(result.removed.front().sText, row.pText);
    }
}

}   // namespace
}   // namespace oxa::compare
