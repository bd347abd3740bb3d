// SPDX-License-Identifier: Apache-2.0
// SELECT types: members, compatibility, and whether all of them are entities.
#include "ExpressTestSupport.h"

namespace {

using namespace oxa::test;

const char* const g_sSelects = "ENTITY A; END_ENTITY; ENTITY B SUBTYPE OF (A); END_ENTITY; ENTITY C; END_ENTITY;\n"
                               "TYPE T = REAL; END_TYPE; TYPE U = T; END_TYPE; TYPE L = SET OF A; END_TYPE;\n"
                               "TYPE Entities = SELECT (A, C); END_TYPE;\n"
                               "TYPE Types = SELECT (T, U); END_TYPE;\n"
                               "TYPE Mixed = SELECT (B, T); END_TYPE;\n"
                               "TYPE OfEntities = SELECT (Again, B); END_TYPE;\n"
                               "TYPE OfMixed = SELECT (A, Mixed); END_TYPE;\n"
                               "TYPE WithAggregate = SELECT (A, L); END_TYPE;\n"
                               "TYPE Again = Entities; END_TYPE;\n"
                               "TYPE Empty = EXTENSIBLE SELECT; END_TYPE;\n";

const DataTypeSelect& select(const Loaded& loaded, const char* sName) {
    return dynamic_cast<const DataTypeSelect&>(*loaded.type(sName).pDataType);
}

TEST(ExpressSelect, KnowsWhetherAllMembersAreEntities) {
    struct Row {
        const char* sSelect;
        const char* sMembers;
        bool boAllEntities;
    };
    const Row rows[] = {
        {"Entities", "A C", true},       {"Types", "T U", false},       {"Mixed", "B T", false},
        {"OfEntities", "Again B", true}, {"OfMixed", "A Mixed", false}, {"WithAggregate", "A L", false},
        {"Again", "A C", true},          {"Empty", "", false},
    };
    const Loaded loaded(g_sSelects);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sSelect);
        EXPECT_EQ(sNames(select(loaded, row.sSelect).members), row.sMembers);
        EXPECT_EQ(select(loaded, row.sSelect).boAllEntities, row.boAllEntities);
    }
}

TEST(ExpressSelect, TakesMembersThroughNestedSelects) {
    struct Row {
        const char* sSelect;
        const char* sObject;
        bool boCompatible;
    };
    const Row rows[] = {
        {"Entities", "A", true},      {"Entities", "B", true},    {"Entities", "T", false}, {"OfEntities", "C", true},
        {"OfMixed", "T", true},       {"OfMixed", "U", false},    {"OfMixed", "C", false},  {"Types", "U", true},
        {"WithAggregate", "L", true}, {"OfMixed", "Mixed", true}, {"Empty", "A", false},
    };
    const Loaded loaded(g_sSelects);
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.sSelect) + " of " + row.sObject);
        EXPECT_EQ(select(loaded, row.sSelect).isCompatible(*loaded.schema().pObjectFromName(row.sObject)),
                  row.boCompatible);
    }
}

}   // namespace
