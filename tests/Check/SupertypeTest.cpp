// SPDX-License-Identifier: Apache-2.0
// Complex instances: which subtypes go together, as the schema says it by ONEOF, AND, ANDOR and SUBTYPE_CONSTRAINTs.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "CheckText.h"
#include "provider/SchemaLoader.h"

namespace oxa {
namespace {

// A supertype without a name of its own for each way to combine subtypes A, B, C and D.
struct SupertypeRow {
    const char* sHead;         // behind ENTITY T
    const char* sConstraint;   // of the schema
    std::vector<std::string> allowed;
    std::vector<std::string> refused;
};
const SupertypeRow g_rows[] = {
    {"", "", {"AB", "ABCD"}, {}},
    {"SUPERTYPE OF (ONEOF (A, B))", "", {"AC", "CD", "BCD"}, {"AB", "ABC"}},
    {"ABSTRACT SUPERTYPE OF (ONEOF (A, B, C, D))", "", {}, {"AB", "CD", "ABCD"}},
    {"SUPERTYPE OF (A AND B)", "", {"AB", "ABC", "CD"}, {"AC", "BCD"}},
    {"SUPERTYPE OF (A ANDOR B)", "", {"AB", "AC"}, {}},
    {"SUPERTYPE OF (ONEOF (A, B) ANDOR ONEOF (C, D))", "", {"AC", "BD"}, {"AB", "CD", "ABC"}},
    {"SUPERTYPE OF (ONEOF (A, B) AND ONEOF (C, D))", "", {"AC", "BD"}, {"AB", "ABC"}},
    {"SUPERTYPE OF (ONEOF (A, (B AND C)))", "", {"BC", "BCD"}, {"AB", "ABC"}},
    {"SUPERTYPE OF (A AND B ANDOR C)", "", {"AB", "ABC", "CD"}, {"AC"}},
    {"", "SUBTYPE_CONSTRAINT s FOR T; ONEOF (A, B); END_SUBTYPE_CONSTRAINT;", {"AC"}, {"AB"}},
    {"",
     "SUBTYPE_CONSTRAINT s FOR T; ABSTRACT SUPERTYPE; TOTAL_OVER (A, B); A AND B; END_SUBTYPE_CONSTRAINT;",
     {"AB"},
     {"AC"}},
};

CheckResult complexChecked(const SupertypeRow& row, const std::string& sTypes) {
    std::string sSchema = "SCHEMA TEST; ENTITY T " + std::string(row.sHead) + "; END_ENTITY; ";
    for (const char c : {'A', 'B', 'C', 'D'}) sSchema += std::string("ENTITY ") + c + " SUBTYPE OF (T); END_ENTITY; ";
    std::vector<ifc::SchemaMessage> messages;
    const auto pSchema = ifc::SchemaLoader::pSchemaFromExpress(sSchema + row.sConstraint + " END_SCHEMA;", messages);
    for (const ifc::SchemaMessage& message : messages) ADD_FAILURE() << message.sText;
    CheckOptions options;
    options.levels = {false, false, true, false};
    options.schema = [&](const std::string&) { return pSchema.get(); };
    FileText file;
    file.sSchema = "('TEST')";
    std::string sRecords;
    for (const char c : sTypes) sRecords += std::string(1, c) + "()";
    std::istringstream stream(file.text("#1=(" + sRecords + "T());"));
    return checkStream(stream, options);
}

TEST(CheckSupertypes, SayWhichSubtypesGoTogether) {
    for (const SupertypeRow& row : g_rows) {
        SCOPED_TRACE(std::string(row.sHead) + row.sConstraint);
        for (const std::string& sTypes : row.allowed) EXPECT_EQ(sFailures(complexChecked(row, sTypes)), "") << sTypes;
        for (const std::string& sTypes : row.refused) {
            std::string sFound;
            for (const char c : sTypes) sFound += (sFound.empty() ? "" : ", ") + std::string(1, c);
            EXPECT_EQ(sFailures(complexChecked(row, sTypes)),
                      "6:1 Schema_ComplexSubtypes '" + sFound + "'; subtypes as the schema combines them");
        }
    }
}

TEST(CheckSupertypes, OfPublishedSchemasHaveTheirSubtypesOneByOne) {
    FileText file;
    const CheckResult result = checked(file.text("#1=(IFCADDRESS($,$,$)IFCPOSTALADDRESS($,('a'),$,$,$,$,$)"
                                                 "IFCTELECOMADDRESS(('1'),$,$,$,$,$));"),
                                       {CheckLevel::Schema});
    EXPECT_EQ(sFailures(result),
              "6:1 Schema_ComplexSubtypes 'IfcPostalAddress, IfcTelecomAddress'; subtypes as the schema "
              "combines them");
}

}   // namespace
}   // namespace oxa
