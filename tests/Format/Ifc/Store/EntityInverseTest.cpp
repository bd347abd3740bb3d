// SPDX-License-Identifier: Apache-2.0
// Inverse relations: what a read builds, and what the operations on them do to the lists.
#include "Format/Ifc/IfcFileEntity.h"

#include <sstream>

#include <gtest/gtest.h>

#include "Format/Ifc/AssertLog.h"
#include "Format/Ifc/SmallModel.h"
#include "Format/Ifc/StatementReader.h"
#include "platform/Utilities.h"

namespace oxa::ifc {
namespace {

using def::schema::AttributeInverse;
using def::schema::AttributeName;
using def::schema::ObjectName;

const def::SchemaPset& inverseSchema() {
    static const std::unique_ptr<def::SchemaPset> pSchema = pSchemaOf(R"(
        TYPE IfcLabel = STRING; END_TYPE;
        TYPE IfcTargets = SET OF IfcTarget; END_TYPE;
        TYPE IfcChoice = SELECT (IfcTarget, IfcStranger, IfcOther, IfcLabel, IfcTargets, IfcChoices); END_TYPE;
        TYPE IfcChoices = LIST OF IfcChoice; END_TYPE;
        ENTITY IfcTarget; Name : OPTIONAL IfcLabel;
            INVERSE Users : SET OF IfcUser FOR Target; Owners : SET OF IfcOwner FOR Parts;
                Choosers : SET OF IfcChooser FOR Choice; Mixers : SET OF IfcMixer FOR Choices;
                Tables : SET OF IfcTable FOR Rows; END_ENTITY;
        ENTITY IfcSpecial SUBTYPE OF (IfcTarget);
            INVERSE Specials : SET OF IfcUser FOR Target; END_ENTITY;
        ENTITY IfcUser; Target : OPTIONAL IfcTarget; END_ENTITY;
        ENTITY IfcOwner; Parts : OPTIONAL SET OF IfcTarget; END_ENTITY;
        ENTITY IfcChooser; Choice : OPTIONAL IfcChoice; END_ENTITY;
        ENTITY IfcMixer; Choices : OPTIONAL LIST OF IfcChoice; END_ENTITY;
        ENTITY IfcTable; Rows : LIST OF LIST OF IfcTarget; END_ENTITY;
        ENTITY IfcStranger; Name : OPTIONAL IfcLabel; Loose : OPTIONAL IfcStranger; END_ENTITY;
        ENTITY IfcOther; Name : OPTIONAL IfcLabel;
            INVERSE OtherChoosers : SET OF IfcChooser FOR Choice; END_ENTITY;
        ENTITY IfcBare; INVERSE Users : SET OF IfcBareUser FOR Bare; END_ENTITY;
        ENTITY IfcBareUser; Bare : IfcBare; END_ENTITY;
        )");
    return *pSchema;
}

const def::schema::Entity& inverseType(const char* sKeyword) {
    return *inverseSchema().pEntityFromName(ObjectName(sKeyword));
}

// Statements, read and completed in this order.
class Model : public StatementReader {
public:
    explicit Model(std::string_view statements) : StatementReader(inverseSchema()) {
        for (std::size_t i = 0, iEnd; i < statements.size(); i = iEnd) {
            iEnd = statements.find(';', i) + 1;
            data.finalizeEntity(pRead(statements.substr(i, iEnd - i)), common, "", 0);
        }
        boComplete = data.boFinished(common, false);
    }
    // The referrers, "#3 #2"; "none" for an empty list, "unknown" for a name that is no inverse attribute.
    std::string sInverse(const Entity& entity, const char* sName) {
        const int iIndex = entity.inverseIndexFromName(AttributeName(sName));
        if (iIndex < 0) return "unknown";
        std::string sText;
        for (const Entity* pEntity : entity.entitiesInverseFromIndex(static_cast<unsigned>(iIndex)))
            sText += (sText.empty() ? "" : " ") + sEntity(pEntity);
        return sText.empty() ? "none" : sText;
    }

    bool boComplete;
};

struct BuildRow {
    const char* sRule;
    std::string_view statements;
    std::uint32_t iTarget;
    const char* sName;
    const char* sReferrers;
    std::vector<std::string> assertions = {};
};
constexpr char g_sListOfLists[] = "ListOfList::ListAdd not implemented for this datatype";
const BuildRow g_buildRows[] = {
    {"nobody", "#1=IFCTARGET($);", 1, "Users", "none"},
    {"one", "#1=IFCTARGET($);#2=IFCUSER(#1);", 1, "Users", "#2"},
    {"the last that was read comes first", "#1=IFCTARGET($);#2=IFCUSER(#1);#3=IFCUSER(#1);#4=IFCUSER(#1);", 1, "Users",
     "#4 #3 #2"},
    {"the order of reading counts, not the number", "#9=IFCUSER(#1);#1=IFCTARGET($);#5=IFCUSER(#1);", 1, "Users",
     "#5 #9"},
    {"items of an aggregate", "#1=IFCTARGET($);#2=IFCTARGET($);#3=IFCOWNER((#1,#2));#4=IFCOWNER((#2));", 2, "Owners",
     "#4 #3"},
    {"named twice, there twice", "#1=IFCTARGET($);#2=IFCOWNER((#1,#1));", 1, "Owners", "#2 #2"},
    {"another attribute is another list", "#1=IFCTARGET($);#2=IFCOWNER((#1));", 1, "Users", "none"},
    {"a reference in a select", "#1=IFCTARGET($);#2=IFCCHOOSER(#1);", 1, "Choosers", "#2"},
    {"an aggregate in a select", "#1=IFCTARGET($);#2=IFCCHOOSER(IFCTARGETS((#1,#1)));", 1, "Choosers", "#2 #2"},
    {"a select in a select", "#1=IFCTARGET($);#2=IFCCHOOSER(IFCCHOICE(#1));", 1, "Choosers", "#2"},
    {"selects in a select", "#1=IFCTARGET($);#2=IFCCHOOSER(IFCCHOICES((IFCLABEL('a'),#1)));", 1, "Choosers", "#2"},
    {"an aggregate of selects", "#1=IFCTARGET($);#2=IFCMIXER((IFCLABEL('a'),#1,$,IFCTARGETS((#1)),IFCCHOICE(#1)));", 1,
     "Mixers", "#2 #2 #2"},
    {"a select without a reference", "#1=IFCTARGET($);#2=IFCCHOOSER(IFCLABEL('a'));", 1, "Choosers", "none"},
    {"a subtype has the lists of its supertype", "#1=IFCSPECIAL($);#2=IFCUSER(#1);", 1, "Users", "#2"},
    {"and its own", "#1=IFCSPECIAL($);#2=IFCUSER(#1);", 1, "Specials", "#2"},
    {"which the supertype does not have", "#1=IFCTARGET($);#2=IFCUSER(#1);", 1, "Specials", "unknown"},
    {"one attribute, inverse attributes of unrelated types", "#1=IFCOTHER($);#2=IFCCHOOSER(#1);", 1, "OtherChoosers",
     "#2"},
    {"of which only the target's takes it", "#1=IFCTARGET($);#3=IFCOTHER($);#2=IFCCHOOSER(#3);", 1, "Choosers", "none"},
    {"a target of a type that no reference should have", "#1=IFCOTHER($);#2=IFCUSER(#1);", 1, "OtherChoosers", "none"},
    {"null", "#1=IFCTARGET($);#2=IFCUSER($);#3=IFCOWNER($);#4=IFCCHOOSER($);", 1, "Users", "none"},
    {"a token that is no reference", "#1=IFCTARGET($);#2=IFCUSER(5);", 1, "Users", "none"},
    {"derived", "#1=IFCTARGET($);#2=IFCUSER(*);", 1, "Users", "none"},
    {"a list of lists is not walked",
     "#1=IFCTARGET($);#2=IFCTABLE(((#1),(#1)));",
     1,
     "Tables",
     "none",
     {g_sListOfLists}},
};

TEST(InverseInit, AnnouncesEachToItsTargets) {
    for (const BuildRow& row : g_buildRows) {
        SCOPED_TRACE(row.sRule);
        const AssertLog log;
        Model model(row.statements);
        EXPECT_TRUE(model.boComplete);
        EXPECT_EQ(model.sInverse(*model.pEntity(row.iTarget), row.sName), row.sReferrers);
        EXPECT_EQ(log.texts(), row.assertions);
    }
}

// References wait in short queues while memory is on its way. With more than those hold the order is still that of
// reading.
TEST(InverseInit, KeepsTheOrderOfManyReferences) {
    for (const std::size_t iUsers : {15U, 16U, 17U, 32U, 33U, 100U}) {
        SCOPED_TRACE(iUsers);
        std::string sStatements = "#1=IFCTARGET($);";
        std::string sExpected;
        for (std::size_t i = 2; i < iUsers + 2; ++i) {
            const std::string sNumber = '#' + std::to_string(i);
            sStatements += sNumber + "=IFCUSER(#1);";
            sExpected = sNumber + (sExpected.empty() ? "" : " ") + sExpected;
        }
        Model model(sStatements);
        EXPECT_EQ(model.sInverse(*model.pEntity(1), "Users"), sExpected);
    }
}

TEST(InverseInit, SkipsATargetWhoseStatementIsMissing) {
    const AssertLog log;
    Model model("#1=IFCTARGET($);#2=IFCOWNER((#1,#5,#1));#3=IFCUSER(#5);");
    EXPECT_FALSE(model.boComplete);
    EXPECT_EQ(model.sInverse(*model.pEntity(1), "Owners"), "#2 #2");
    EXPECT_EQ(model.pEntity(5)->unsafeAttributesInverseRaw(), nullptr);
    EXPECT_TRUE(log.texts().empty());
}

TEST(InverseInit, PassesOverANullItem) {
    Model model("#1=IFCTARGET($);#2=IFCOWNER($);");
    Entity& owner = *model.pEntity(2);
    const std::vector<const Entity*> parts = {nullptr, model.pEntity(1)};
    ASSERT_TRUE(owner.boListValueSet(AttributeName("Parts"), parts, model.data));
    owner.vAttributeInverseInit(model.data);
    EXPECT_EQ(model.sInverse(*model.pEntity(1), "Owners"), "#2");
}

TEST(InverseInit, LeavesTheTailOpen) {
    Model model("#1=IFCTARGET($);#2=IFCUSER(#1);#3=IFCUSER(#1);");
    const bool boStopped =
        model.pEntity(1)->boForEachInverseAttribute([](const AttributeInverse&, const EntityList& list) {
            EXPECT_EQ(list.tail.load(), nullptr);
            return true;
        });
    EXPECT_TRUE(boStopped);
}

TEST(InverseInit, ASecondRunDoublesUnlessTheListsAreEmptied) {
    Model model("#1=IFCTARGET($);#2=IFCUSER(#1);#3=IFCOWNER((#1));");
    Entity& target = *model.pEntity(1);
    model.pEntity(2)->vAttributeInverseInit(model.data);
    EXPECT_EQ(model.sInverse(target, "Users"), "#2 #2");
    EXPECT_EQ(model.sInverse(target, "Owners"), "#3");
    target.attributeInverseClear();
    EXPECT_EQ(model.sInverse(target, "Users"), "none");
    EXPECT_EQ(model.sInverse(target, "Owners"), "none");
    model.pEntity(2)->vAttributeInverseInit(model.data);
    EXPECT_EQ(model.sInverse(target, "Users"), "#2");
}

TEST(InverseInit, ATypeOutsideAllInverseRelationsDoesNothing) {
    ASSERT_FALSE(inverseType("IFCSTRANGER").boHasInverse);
    Model model("#1=IFCSTRANGER($,#2);#2=IFCSTRANGER($,$);");
    Entity& stranger = *model.pEntity(1);
    stranger.vAttributeInverseInit(model.data);
    stranger.attributeInverseClear();
    EXPECT_TRUE(stranger.entitiesInverseFromIndex(0).empty());
    EXPECT_FALSE(stranger.boForEachInverseAttribute([](const auto&, const auto&) { return true; }));
}

TEST(InverseInit, AForwardAttributeThatIsMissingIsAsserted) {
    const auto pSchema = pSchemaOf(R"(
        ENTITY IfcTarget; Name : OPTIONAL STRING;
            INVERSE Users : SET OF IfcUser FOR Target; Seconds : SET OF IfcUser FOR Second; END_ENTITY;
        ENTITY IfcUser; Target : IfcTarget; Second : IfcTarget; END_ENTITY;)");
    const auto* pTarget = pSchema->pEntityFromName(ObjectName("IFCTARGET"));
    const_cast<def::schema::Entity*>(pTarget)->ownInverseAttributes[0].sForAttribute = "Nobody";
    StatementReader reader(*pSchema);
    Entity* pUser = reader.pRead("#1=IFCUSER(#2,#2);");
    Entity* pUsed = reader.pRead("#2=IFCTARGET($);");
    const AssertLog log;
    pUser->vAttributeInverseInit(reader.data);
    EXPECT_EQ(log.texts(), std::vector<std::string>{"Not able to find attribute"});
    EXPECT_TRUE(pUsed->entitiesInverseFromIndex(0).empty());
    EXPECT_EQ(pUsed->entitiesInverseFromIndex(1), std::vector<Entity*>{pUser}) << "the next one is served";
}

// A graph of a faulty provider: inverse attributes that no type has.
TEST(InverseInit, WhatItsOwnerDoesNotListIsSkipped) {
    const auto pSchema = pSchemaOf(R"(
        ENTITY IfcTarget; Name : OPTIONAL STRING; INVERSE Users : SET OF IfcUser FOR Target; END_ENTITY;
        ENTITY IfcSpecial SUBTYPE OF (IfcTarget); INVERSE Others : SET OF IfcUser FOR Target; END_ENTITY;
        ENTITY IfcUser; Target : IfcTarget; END_ENTITY;)");
    const auto* pTarget = pSchema->pEntityFromName(ObjectName("IFCTARGET"));
    const auto* pUserType = pSchema->pEntityFromName(ObjectName("IFCUSER"));
    const AttributeInverse copy = pTarget->ownInverseAttributes[0];
    AttributeInverse ownerless = copy;
    ownerless.pOwner = nullptr;
    AttributeInverse elsewhere = copy;
    elsewhere.pOwner = pUserType;
    auto& inverses = const_cast<def::schema::Entity*>(pUserType)->ownAttributes[0].inverses;
    inverses.insert(inverses.begin(), {&copy, &ownerless, nullptr, &elsewhere});
    StatementReader reader(*pSchema);
    Entity* pUser = reader.pRead("#1=IFCUSER(#2);");
    Entity* pOther = reader.pRead("#3=IFCUSER(#4);");
    Entity* pUsed = reader.pRead("#2=IFCTARGET($);");
    Entity* pSpecial = reader.pRead("#4=IFCSPECIAL($);");
    const AssertLog log;
    pUser->vAttributeInverseInit(reader.data);
    pOther->vAttributeInverseInit(reader.data);
    EXPECT_TRUE(log.texts().empty());
    EXPECT_EQ(pUsed->entitiesInverseFromIndex(0), std::vector<Entity*>{pUser}) << "the true one is served";
    EXPECT_EQ(reader.sCells(*pUsed), "$ String null") << "and nothing beside the lists is written";
    EXPECT_EQ(pSpecial->entitiesInverseFromIndex(0), std::vector<Entity*>{pOther});
    EXPECT_EQ(pSpecial->entitiesInverseFromIndex(1), std::vector<Entity*>{pOther});
}

// An entity without a type stands among others: those before it are entered, and the fault passes on.
TEST(InverseInit, WhatStandsBeforeAFaultIsEntered) {
    for (const int iBefore : {1, 16, 17, 32, 33, 100}) {
        SCOPED_TRACE(iBefore);
        Data data;
        data.vSchemaSet(&smallSchema());
        Entity& project = *data.pEntityCreate(ObjectName("IFCPROJECT"));
        const auto pLink = [&] {
            Entity* pMade = data.pEntityCreate(ObjectName("IFCRELLINK"));
            EXPECT_TRUE(pMade->boValueSet<const Entity*>(AttributeName("Relating"), &project, data));
            return pMade;
        };
        std::vector<Entity*> links;
        for (int i = 0; i < iBefore; ++i) links.insert(links.begin(), pLink());
        Entity empty;
        data.entityAdd(&empty);
        pLink();
        io::ReadError errors;
        ReadInfoCommon info(errors);
        EXPECT_THROW(data.boFinished(info, true), oxa::exception);
        EXPECT_EQ(project.entitiesInverseFromIndex(0), links);
    }
}

TEST(InverseInit, AnEmptyInstanceIsAnInsideFault) {
    StatementReader reader(inverseSchema());
    Entity entity;
    EXPECT_THROW(entity.vAttributeInverseInit(reader.data), oxa::exception);
    EXPECT_THROW(entity.attributeInverseClear(), oxa::exception);
}

TEST(EntitiesInverse, AreGivenByPosition) {
    Model model("#1=IFCTARGET($);#2=IFCUSER(#1);#3=IFCUSER(#1);#4=IFCOWNER((#1));");
    Entity& target = *model.pEntity(1);
    const Entity& constant = target;
    EXPECT_EQ(target.entitiesInverseFromIndex(0), (std::vector<Entity*>{model.pEntity(3), model.pEntity(2)}));
    EXPECT_EQ(constant.entitiesInverseFromIndex(0), (std::vector<const Entity*>{model.pEntity(3), model.pEntity(2)}));
    EXPECT_EQ(target.entitiesInverseFromIndex(1), std::vector<Entity*>{model.pEntity(4)});
    EXPECT_TRUE(target.entitiesInverseFromIndex(2).empty());
    EXPECT_TRUE(target.entitiesInverseFromIndex(5).empty());   // the count
    EXPECT_TRUE(constant.entitiesInverseFromIndex(~0U).empty());
}

TEST(EntitiesInverse, AreWalkedWhereThereAreAny) {
    Model model("#1=IFCTARGET($);#2=IFCUSER(#1);#3=IFCCHOOSER(#1);#4=IFCMIXER((#1));");
    const auto visited = [&model](const std::string& sStop) {
        std::string sNames;
        const bool boStopped =
            model.pEntity(1)->boForEachInverseAttribute([&](const AttributeInverse& inverse, const EntityList& list) {
                sNames += inverse.sName + ' ' + model.sEntity(*list.begin()) + ' ';
                return inverse.sName == sStop;
            });
        return sNames + (boStopped ? "stopped" : "end");
    };
    EXPECT_EQ(visited(""), "Users #2 Choosers #3 Mixers #4 end");
    EXPECT_EQ(visited("Choosers"), "Users #2 Choosers #3 stopped");
    EXPECT_EQ(visited("Owners"), "Users #2 Choosers #3 Mixers #4 end");
}

// A list of a type without forward attributes is built, but no name reaches it.
TEST(EntitiesInverse, OfATypeWithoutAttributesHaveNoName) {
    Model model("#1=IFCBARE();#2=IFCBAREUSER(#1);");
    Entity& bare = *model.pEntity(1);
    const std::vector<Entity*> before{model.pEntity(2)};
    EXPECT_EQ(bare.entitiesInverseFromIndex(0), before);
    const AttributeName name("Users");
    bare.vEntityInverseAdd(model.data, model.pEntity(3), name);
    bare.vEntityInverseSet(model.data, model.pEntity(3), name);
    bare.vEntitiesInverseSet(model.data, {model.pEntity(3)}, name);
    EXPECT_FALSE(bare.boEntityInverseRemove(model.data, model.pEntity(2), name));
    EXPECT_EQ(bare.entitiesInverseFromIndex(0), before);
}

// One list under test, the Users of #1, which hold #11, #12, ... in this order.
class ListModel : public Model {
public:
    // boBuilt: as a read makes it, with its tail open; else as the setter of many does.
    ListModel(int iCount, bool boBuilt) : Model("#1=IFCTARGET($);") {
        std::vector<Entity*> entities;
        for (int i = 1; i <= iCount; ++i) entities.push_back(pUser(i));
        if (!boBuilt) pTarget->vEntitiesInverseSet(data, entities, name);
        for (std::size_t i = entities.size(); boBuilt && i-- > 0;) entities[i]->vAttributeInverseInit(data);
    }

    // #10 and the position; refers to #1.
    Entity* pUser(int i) {
        Entity* pEntity = StatementReader::pEntity(static_cast<std::uint32_t>(10 + i));
        return pEntity->pSchemaEntity() ? pEntity : pRead("#" + std::to_string(10 + i) + "=IFCUSER(#1);");
    }
    // The items as 1 2 3, then the position that the tail points to, "open", or "stale" where it is no node.
    std::string sList() {
        std::string sText = "empty";
        pTarget->boForEachInverseAttribute([&](const AttributeInverse& inverse, const EntityList& list) {
            EXPECT_EQ(inverse.sName, "Users");
            const EntityList::Node* pTail = list.tail;
            std::string sTail = pTail ? "stale" : "open";
            sText.clear();
            int iPosition = 0;
            for (const EntityList::Node* pNode = &list; pNode; pNode = pNode->next) {
                ++iPosition;
                sText += sEntity(pNode->value).substr(2) + ' ';
                if (pNode == pTail) sTail = "tail " + std::to_string(iPosition);
            }
            sText += sTail;
            return false;
        });
        return sText;
    }
    // The operations, one a line: "add 4", "set 4", "many 4 5", "remove 4", "clear". What they answer goes behind
    // the list: "1 2 tail 2, true".
    std::string sAfter(const std::string& sOperations) {
        std::istringstream lines(sOperations);
        std::string sAnswers;
        for (std::string sLine; std::getline(lines, sLine);) {
            std::istringstream words(sLine);
            std::string sOperation;
            words >> sOperation;
            std::vector<Entity*> entities;
            for (int i; words >> i;) entities.push_back(pUser(i));
            if (sOperation == "add") {
                pTarget->vEntityInverseAdd(data, entities.at(0), name);
            } else if (sOperation == "set") {
                pTarget->vEntityInverseSet(data, entities.at(0), name);
            } else if (sOperation == "many") {
                pTarget->vEntitiesInverseSet(data, entities, name);
            } else if (sOperation == "remove") {
                sAnswers += pTarget->boEntityInverseRemove(data, entities.at(0), name) ? ", true" : ", false";
            } else if (sOperation == "clear") {
                pTarget->attributeInverseClear();
            } else {
                ADD_FAILURE() << sOperation;
            }
        }
        return sList() + sAnswers;
    }

    Entity* pTarget = pEntity(1);
    AttributeName name{"Users"};
};

struct ListRow {
    const char* sRule;
    int iCount;
    bool boBuilt;
    const char* sOperations;
    const char* sAfter;
};
const ListRow g_listRows[] = {
    {"built by a read", 3, true, "", "1 2 3 open"},
    {"made by the setter", 3, false, "", "1 2 3 tail 3"},
    {"the setter's tail may be the head", 1, false, "", "1 tail 1"},

    {"an empty list gets a head", 0, true, "add 1", "1 open"},
    {"behind the head", 1, true, "add 2", "1 2 tail 2"},
    {"the end is found without a tail", 3, true, "add 4", "1 2 3 4 tail 4"},
    {"behind the tail", 2, false, "add 3\nadd 4", "1 2 3 4 tail 4"},
    {"what is there already", 1, true, "add 1", "1 1 tail 2"},

    {"an empty list gets a head", 0, true, "set 1", "1 open"},
    {"alone", 1, true, "set 2", "2 open"},
    {"the rest is cut", 3, true, "set 4", "4 open"},
    {"the old tail stays behind", 3, false, "set 4", "4 stale"},
    {"and what is added there is lost", 3, false, "set 4\nadd 5", "4 stale"},
    {"not where the tail was open", 3, true, "set 4\nadd 5", "4 5 tail 2"},
    {"nor where it was the head", 1, false, "set 4\nadd 5", "4 5 tail 2"},
    {"set of many makes it good again", 3, false, "set 4\nmany 5 6\nadd 7", "5 6 7 tail 3"},

    {"many in an empty list", 0, true, "many 1 2", "1 2 tail 2"},
    {"fewer cut the list", 3, true, "many 4 5", "4 5 tail 2"},
    {"one", 3, false, "many 4", "4 tail 1"},
    {"more", 2, true, "many 4 5 6", "4 5 6 tail 3"},
    {"none", 3, true, "many", "empty"},
    {"none, then one", 3, false, "many\nadd 4", "4 open"},

    {"the only one", 1, false, "remove 1", "empty, true"},
    {"the head of two", 2, false, "remove 1", "2 open, true"},
    {"the head of three keeps the tail", 3, false, "remove 1", "2 3 tail 2, true"},
    {"the head of three, tail open", 3, true, "remove 1", "2 3 open, true"},
    {"in the middle", 3, false, "remove 2", "1 3 tail 2, true"},
    {"in the middle, tail open", 3, true, "remove 2", "1 3 open, true"},
    {"the last", 3, false, "remove 3", "1 2 tail 2, true"},
    {"the last, tail open", 3, true, "remove 3", "1 2 tail 2, true"},
    {"the last of two", 2, false, "remove 2", "1 tail 1, true"},
    {"the first of equal ones", 2, false, "add 1\nremove 1", "2 1 tail 2, true"},
    {"not there", 2, false, "remove 3", "1 2 tail 2, false"},
    {"in an empty list", 0, true, "remove 1", "empty, false"},
    {"all of them", 3, false, "remove 2\nremove 1\nremove 3", "empty, true, true, true"},
    {"the head, then add", 2, false, "remove 1\nadd 3", "2 3 tail 2, true"},
    {"the only one, then add", 1, false, "remove 1\nadd 3", "3 open, true"},

    {"cleared", 3, false, "clear", "empty"},
    {"cleared, then one", 3, false, "clear\nadd 1", "1 open"},
};

TEST(InverseList, OperationsKeepTheOrder) {
    for (const ListRow& row : g_listRows) {
        SCOPED_TRACE(std::string(row.sRule) + ": " + row.sOperations);
        EXPECT_EQ(ListModel(row.iCount, row.boBuilt).sAfter(row.sOperations), row.sAfter);
    }
}

TEST(InverseList, AnUnknownNameDoesNothing) {
    for (const char* sName : {"Name", "Specials", "users", ""}) {
        SCOPED_TRACE(sName);
        ListModel model(2, false);
        model.name = AttributeName(sName);
        EXPECT_EQ(model.sAfter("add 3\nset 3\nmany\nmany 3\nremove 1"), "1 2 tail 2, false");
    }
}

TEST(InverseList, TheForwardAttributeStaysAsItIs) {
    ListModel model(1, true);
    EXPECT_EQ(model.sAfter("remove 1"), "empty, true");
    EXPECT_EQ(model.sCells(*model.pUser(1)), "Entity #1");
}

}   // namespace
}   // namespace oxa::ifc
