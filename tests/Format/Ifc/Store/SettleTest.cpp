// SPDX-License-Identifier: Apache-2.0
// The completion of a model on several threads: lists, order and faults of a single one.
#include "Format/Ifc/Store/Settle.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "Format/Ifc/AssertLog.h"
#include "Format/Ifc/IfcMissingType.h"
#include "Format/Ifc/Read/ReadContext.h"
#include "Format/Ifc/StatementReader.h"

namespace oxa::ifc {
namespace {

constexpr unsigned g_threads[] = {1, 2, 3, 8};
constexpr int g_iTargets = 300;      // some pages of slots, one of them named by every user
constexpr int g_iUsers = 32'000;     // eight rounds; all numbers are of one chunk
constexpr int g_iOddUser = 25'000;   // where a row has something in the way

const def::SchemaPset& schema() {
    static const std::unique_ptr<def::SchemaPset> pSchema = pSchemaOf(R"(
        ENTITY IfcTarget; Name : OPTIONAL STRING; INVERSE Users : SET OF IfcUser FOR Targets; END_ENTITY;
        ENTITY IfcUser; Targets : LIST OF IfcTarget; END_ENTITY;
        ENTITY IfcRow; INVERSE Tables : SET OF IfcTable FOR Rows; END_ENTITY;
        ENTITY IfcTable; Rows : LIST OF LIST OF IfcRow; END_ENTITY;
        )");
    return *pSchema;
}

// Targets have numbers from 1, users follow; the types alternate in the list as in a file.
class Users : public StatementReader {
public:
    Users() : StatementReader(schema()) {
        for (int i = 0; i < g_iUsers; ++i) {
            if (i < g_iTargets) entities.push_back(pRead("#" + std::to_string(i + 1) + "=IFCTARGET($);"));
            const std::string sUser = "#" + std::to_string(g_iTargets + 1 + i) + "=IFCUSER((#1,#";
            entities.push_back(pRead(sUser + std::to_string(i * 7 % g_iTargets + 1) + "));"));
        }
    }

    // The numbers of the users of each target, in the order of their list.
    std::vector<std::vector<std::ptrdiff_t>> lists() {
        std::vector<std::vector<std::ptrdiff_t>> all;
        for (int i = 1; i <= g_iTargets; ++i) {
            auto& list = all.emplace_back();
            for (const Entity* pUser : pEntity(static_cast<std::uint32_t>(i))->entitiesInverseFromIndex(0))
                list.push_back(reinterpret_cast<const EntitySlot*>(pUser) -
                               reinterpret_cast<const EntitySlot*>(pEntity(0)));
        }
        return all;
    }
    void vListsClear() {
        for (int i = 1; i <= g_iTargets; ++i) pEntity(static_cast<std::uint32_t>(i))->attributeInverseClear();
    }

    std::vector<Entity*> entities;
};

TEST(Settle, InverseListsAreTheSameForAnyNumberOfThreads) {
    Users users;
    std::vector<std::vector<std::ptrdiff_t>> expected;
    for (const unsigned iThreads : g_threads) {
        EXPECT_EQ(iInversesBuild(users.entities, users.data.pool(), iThreads), std::size_t{2} * g_iUsers) << iThreads;
        const auto lists = users.lists();
        if (expected.empty()) {
            ASSERT_EQ(lists[0].size(), g_iUsers + (g_iUsers + g_iTargets - 1) / g_iTargets);
            EXPECT_EQ(lists[0].front(), g_iTargets + g_iUsers) << "the last that was read comes first";
            expected = lists;
        }
        EXPECT_TRUE(lists == expected) << iThreads;
        users.vListsClear();
    }
}

// Rows shorter and longer than what is looked ahead: each instance is announced once, in its order.
TEST(Settle, RowsOfAnyLengthAreAnnouncedAsOneByOne) {
    Users users;
    for (const int iCount : {0, 1, 2, 7, 8, 9, 16, 17, 24, 25, 31, 32, 33, 64, 65, 100}) {
        SCOPED_TRACE(iCount);
        const std::vector<Entity*> row(users.entities.begin() + 1, users.entities.begin() + 1 + iCount);
        for (Entity* pEntity : row) pEntity->vAttributeInverseInit(users.data);
        const auto expected = users.lists();
        users.vListsClear();
        const auto isUser = [](const Entity* pEntity) { return pEntity->schemaEntity().sName == "IfcUser"; };
        EXPECT_EQ(iInversesBuild(row, users.data.pool(), 1),
                  std::size_t{2} * static_cast<std::size_t>(std::ranges::count_if(row, isUser)));
        EXPECT_TRUE(users.lists() == expected);
        users.vListsClear();
    }
}

// An instance without a type ends the work; those before it have been announced.
TEST(Settle, AFaultIsToldAndWhatStandsBeforeItIsEntered) {
    Users users;
    const auto place = users.entities.begin() + g_iTargets + g_iOddUser;
    Entity empty;
    users.entities.insert(place, &empty);
    for (const unsigned iThreads : g_threads) {
        EXPECT_THROW(static_cast<void>(iInversesBuild(users.entities, users.data.pool(), iThreads)), MissingType);
        const auto lists = users.lists();
        EXPECT_EQ(lists[0].size(), g_iOddUser + (g_iOddUser + g_iTargets - 1) / g_iTargets) << iThreads;
        EXPECT_EQ(lists[0].front(), g_iTargets + g_iOddUser) << iThreads;
        users.vListsClear();
    }
}

// What is asserted reaches the caller's handler, once for each cause, and the lists are whole.
TEST(Settle, AssertionsAreToldOnTheCallersThread) {
    Users users;
    Entity* pTable = users.pRead("#99000=IFCTABLE(((#99001),(#99001)));");
    static_cast<void>(users.pRead("#99001=IFCROW();"));
    users.entities.insert(users.entities.begin() + g_iTargets + g_iOddUser, pTable);
    users.entities.push_back(pTable);
    for (const unsigned iThreads : g_threads) {
        std::vector<std::string> told;
        const bool boBefore = Assert::isEnabled();
        Assert::setEnabled(true);
        {
            const auto handler = Assert::getRegisteredForCurrentThread().registerHandler(
                [&told](const AssertInfo& info) { told.emplace_back(info.text); });
            EXPECT_EQ(iInversesBuild(users.entities, users.data.pool(), iThreads), std::size_t{2} * g_iUsers);
        }
        Assert::setEnabled(boBefore);
        EXPECT_EQ(told, std::vector<std::string>(2, "ListOfList::ListAdd not implemented for this datatype"))
            << iThreads;
        EXPECT_EQ(users.lists()[0].front(), g_iTargets + g_iUsers);
        users.vListsClear();
    }
}

TEST(Settle, TypesAreSortedAndKeepTheirOrder) {
    const Users users;
    std::vector<Entity*> expected;
    for (const char* pType : {"IFCTARGET", "IFCUSER"})
        for (Entity* pEntity : users.entities)
            if (pEntity->schemaEntity().sNameUpper == pType) expected.push_back(pEntity);
    for (const unsigned iThreads : g_threads) {
        std::vector<Entity*> entities = users.entities;
        vTypesSort(entities, iThreads);
        EXPECT_TRUE(entities == expected) << iThreads;
    }
    // Fewer instances than threads.
    std::vector<Entity*> few{users.entities[1], users.entities[0]};
    vTypesSort(few, 8);
    EXPECT_EQ(few, (std::vector<Entity*>{users.entities[0], users.entities[1]}));
}

// Instances that lie further apart than 32 bits can tell, and some that do not.
TEST(Settle, OrderDoesNotDependOnAddresses) {
    Users users;
    const def::schema::Entity& target = users.entities[0]->schemaEntity();
    const def::schema::Entity& user = users.entities[1]->schemaEntity();
    ASSERT_EQ(target.sNameUpper, "IFCTARGET");
    static Entity g_targets[2];
    Entity stack[2];
    for (Entity* pEntity : {&g_targets[0], &g_targets[1], &stack[1]})
        pEntity->vSchemaEntitySet(users.data, target, true);
    stack[0].vSchemaEntitySet(users.data, user, true);
    std::vector<Entity*> entities = users.entities;
    entities[10] = &g_targets[1];
    entities[11] = &stack[0];
    entities[20'000] = &stack[1];
    entities[30'000] = &g_targets[0];
    std::vector<Entity*> expected = entities;
    std::stable_partition(expected.begin(), expected.end(),
                          [&](const Entity* pEntity) { return pEntity->schemaEntity().sNameUpper == "IFCTARGET"; });
    for (const unsigned iThreads : g_threads) {
        std::vector<Entity*> sorted = entities;
        vTypesSort(sorted, iThreads);
        EXPECT_TRUE(sorted == expected) << iThreads;
    }
}

TEST(Settle, AnOrderWithAFaultIsLeftAsItWas) {
    Users users;
    Entity empty;
    users.entities[g_iOddUser] = &empty;
    for (const unsigned iThreads : g_threads) {
        std::vector<Entity*> entities = users.entities;
        EXPECT_THROW(vTypesSort(entities, iThreads), MissingType) << iThreads;
        EXPECT_TRUE(entities == users.entities) << iThreads;
    }
}

TEST(Settle, ThreadsHaveToPay) {
    EXPECT_EQ(iThreadsToSettle(0), 1U);
    EXPECT_EQ(iThreadsToSettle(32'767), 1U);
    EXPECT_LE(iThreadsToSettle(32'768), 2U);
    EXPECT_LE(iThreadsToSettle(1'000'000'000), 8U);
    EXPECT_GE(iThreadsToSettle(1'000'000'000), 1U);
}

}   // namespace
}   // namespace oxa::ifc
