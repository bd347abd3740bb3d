// SPDX-License-Identifier: Apache-2.0
// Removal of entities with everything that names them: what goes, what changes, and what is told.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <regex>

#include "Format/Ifc/AssertLog.h"
#include "Format/Ifc/ModelText.h"
#include "Format/Ifc/SmallModel.h"
#include "Format/Ifc/Store/ReferenceTaker.h"
#include "provider/SchemaLoader.h"

namespace oxa::ifc {
namespace {

using def::schema::AttributeName;
using def::schema::ObjectName;
using testing::ElementsAre;
using testing::IsEmpty;

using Numbers = std::vector<std::size_t>;
using Statements = std::map<std::size_t, std::string>;   // what stands in the parentheses, by number

// A model in which entities are told by their numbers.
class RemoveModel {
public:
    RemoveModel(const std::string& statements, const def::SchemaPset& schema)
        : m_read(sFileOf(withGuids(statements)), true, schemaIs(schema)),
          data(m_read.file.data()) {
        EXPECT_TRUE(m_read.boRead);
        for (const Entity* pEntity : data.entities()) m_numbers.push_back(data.iIdFromEntity(*pEntity));
        m_before = statementsNow();
    }

    EntityRemoval remove(const Numbers& numbers) {
        std::vector<Entity*> entities;
        for (const std::size_t iId : numbers) entities.push_back(data.pEntityFromId(iId));
        return data.entitiesRemove(entities);
    }
    [[nodiscard]] Numbers numbersOf(const std::vector<Entity*>& entities) const {
        Numbers numbers;
        for (const Entity* pEntity : entities) numbers.push_back(data.iIdFromEntity(*pEntity));
        return numbers;
    }
    // The statements that stay and are not as they were.
    [[nodiscard]] Statements changed() const {
        Statements changed;
        for (const auto& [iId, sStatement] : statementsNow())
            if (m_before.at(iId) != sStatement) changed.emplace(iId, sStatement);
        return changed;
    }
    // Nobody names what is gone, and the inverse lists are what they would be if they were built anew.
    void vExpectWhole(const Numbers& gone) {
        for (const auto& [iId, sStatement] : statementsNow())
            for (const std::size_t iGone : gone)
                EXPECT_FALSE(std::regex_search(sStatement, std::regex('#' + std::to_string(iGone) + "(?![0-9])")))
                    << '#' << iId << '=' << sStatement << " names #" << iGone;
        const ModelText before = modelText(data);
        for (Entity* pEntity : data.entities()) pEntity->attributeInverseClear();
        for (Entity* pEntity : data.entities()) pEntity->vAttributeInverseInit(data);
        EXPECT_EQ(modelText(data), before);
    }

private:
    // Each GUID() becomes a GlobalId of its own.
    static std::string withGuids(std::string statements) {
        std::size_t iGuid = 1;
        for (std::size_t i = 0; (i = statements.find("GUID()", i)) != std::string::npos;)
            statements.replace(i, 6, '\'' + sGuidOf(iGuid++) + '\'');
        return statements;
    }
    [[nodiscard]] Statements statementsNow() const {
        Statements now;
        for (const Entity* pEntity : data.entities()) {
            std::string sLine = pEntity->sWriteLine(data);
            sLine = sLine.substr(sLine.find('('));
            now[data.iIdFromEntity(*pEntity)] = std::regex_replace(sLine, std::regex("\\('[0-9A-Za-z_$]{22}'"), "(G");
        }
        return now;
    }

    ReadFileModel m_read;
    Numbers m_numbers;
    Statements m_before;

public:
    Data& data;
};

// A house that both schemas can say. Parameters that only the later one has are left out.
const char* const g_sHouse = "#1=IFCPROJECT(GUID(),$,$,$,$,$,$,(#80),$);"
                             "#2=IFCBUILDINGSTOREY(GUID(),$,$,$,$,$,$,$,$,$);"
                             "#3=IFCWALL(GUID(),$,$,$,$,#40,$,$);"
                             "#4=IFCOPENINGELEMENT(GUID(),$,$,$,$,$,$,$);"
                             "#5=IFCDOOR(GUID(),#50,$,$,$,#43,$,$,$,$);"
                             "#6=IFCDOOR(GUID(),$,$,$,$,$,#72,$,$,$);"
                             "#10=IFCRELVOIDSELEMENT(GUID(),$,$,$,#3,#4);"
                             "#11=IFCRELFILLSELEMENT(GUID(),$,$,$,#4,#5);"
                             "#12=IFCRELCONTAINEDINSPATIALSTRUCTURE(GUID(),#50,$,$,(#3,#5,#6),#2);"
                             "#13=IFCRELDEFINESBYPROPERTIES(GUID(),$,$,$,(#5),#20);"
                             "#14=IFCRELDEFINESBYPROPERTIES(GUID(),$,$,$,(#5,#6),#20);"
                             "#15=IFCRELASSOCIATESMATERIAL(GUID(),$,$,$,(#3,#5),#30);"
                             "#16=IFCRELAGGREGATES(GUID(),$,$,$,#1,(#2));"
                             "#17=IFCRELASSOCIATESCLASSIFICATION(GUID(),$,$,$,(#3),#31);"
                             "#20=IFCPROPERTYSET(GUID(),$,$,$,(#21));"
                             "#21=IFCPROPERTYSINGLEVALUE('a',$,IFCLABEL('x'),$);"
                             "#30=IFCMATERIAL('m');"
                             "#31=IFCCLASSIFICATIONREFERENCE($,$,$,$);"
                             "#40=IFCLOCALPLACEMENT($,#41);"
                             "#41=IFCAXIS2PLACEMENT3D(#42,$,$);"
                             "#42=IFCCARTESIANPOINT((0.,0.,0.));"
                             "#43=IFCLOCALPLACEMENT(#40,#44);"
                             "#44=IFCAXIS2PLACEMENT3D(#42,$,$);"
                             "#50=IFCOWNERHISTORY($,$,$,$,$,$,$,0);"
                             "#60=IFCPRESENTATIONLAYERASSIGNMENT('l',$,(#70),$);"
                             "#70=IFCSHAPEREPRESENTATION(#80,'Body','Brep',(#71));"
                             "#71=IFCBOUNDINGBOX(#42,1.,1.,1.);"
                             "#72=IFCPRODUCTDEFINITIONSHAPE($,$,(#70));"
                             "#80=IFCGEOMETRICREPRESENTATIONCONTEXT($,'Model',3,1.E-05,#41,$);";

struct HouseRow {
    const char* sRule;
    Numbers asked;
    Numbers withThem;             // relationships, ascending
    Statements changed;           // with the parameters that both schemas have
    Numbers incomplete;           // of both schemas, ascending
    Numbers incomplete2x3 = {};   // and of the older one alone
};

// clang-format off
const HouseRow g_houseRows[] = {
    {"a door leaves its lists, and what says that it fills the opening goes", {5}, {11, 13},
     {{12, "(G,#50,$,$,(#3,#6),#2);"}, {14, "(G,$,$,$,(#6),#20);"}, {15, "(G,$,$,$,(#3),#30);"}}, {}},
    {"the last of a list takes it with it", {5, 6}, {11, 13, 14},
     {{12, "(G,#50,$,$,(#3),#2);"}, {15, "(G,$,$,$,(#3),#30);"}}, {}},
    {"an opening goes alone", {4}, {10, 11}, {}, {}},
    {"a wall", {3}, {10, 17}, {{12, "(G,#50,$,$,(#5,#6),#2);"}, {15, "(G,$,$,$,(#5),#30);"}}, {}},
    {"the other end", {2}, {12, 16}, {}, {}},
    {"an end without an inverse attribute in the older schema", {30}, {15}, {}, {}},
    {"another", {31}, {17}, {}, {}},
    {"a property set", {20}, {13, 14}, {}, {}},
    {"a property set stays without properties, and is told", {21}, {}, {{20, "(G,$,$,$,());"}}, {20}},
    {"an owner history is no end of a relationship", {50}, {},
     {{5, "(G,$,$,$,$,#43,$,$,$,$"}, {12, "(G,$,$,$,(#3,#5,#6),#2);"}}, {}, {5, 12}},
    {"an optional reference is undefined", {43}, {}, {{5, "(G,#50,$,$,$,$,$,$,$,$"}}, {}},
    {"in another placement, too", {40}, {}, {{3, "(G,$,$,$,$,$,$,$"}, {43, "($,#44);"}}, {}},
    {"a mandatory one without a relationship is told", {41}, {},
     {{40, "($,$);"}, {80, "($,'Model',3,1.E-05,$,$);"}}, {40, 80}},
    {"a list that is not optional, neither", {71}, {}, {{70, "(#80,'Body','Brep',());"}}, {70}},
    {"a representation and what assigns it", {70}, {60, 72}, {{6, "(G,$,$,$,$,$,$,$,$,$"}}, {}},
    {"a context stays in no list", {80}, {}, {{1, "(G,$,$,$,$,$,$,"}, {70, "($,'Body','Brep',(#71));"}}, {70}, {1}},
    {"a project", {1}, {16}, {}, {}},
    {"a relationship goes alone", {12}, {}, {}, {}},
    {"many at once", {2, 3, 4, 5, 6}, {10, 11, 12, 13, 14, 15, 16, 17}, {}, {}},
};
// clang-format on

TEST(EntitiesRemove, TakesWhatLosesItsMeaningWithIt) {
    for (const char* sSchema : {"IFC2X3", "IFC4"})
        for (const HouseRow& row : g_houseRows) {
            SCOPED_TRACE(std::string(sSchema) + ": " + row.sRule);
            RemoveModel model(g_sHouse, *SchemaLoader::pBuiltIn(sSchema));
            const std::size_t iBefore = model.data.entities().size();
            const EntityRemoval removal = model.remove(row.asked);
            Numbers gone = model.numbersOf(removal.removed);
            ASSERT_GE(gone.size(), row.asked.size());
            const auto behind = gone.begin() + static_cast<std::ptrdiff_t>(row.asked.size());
            EXPECT_EQ(Numbers(gone.begin(), behind), row.asked) << "first those that were asked for";
            std::sort(behind, gone.end());
            EXPECT_EQ(Numbers(behind, gone.end()), row.withThem);
            EXPECT_EQ(model.data.entities().size(), iBefore - gone.size());

            Numbers incomplete = row.incomplete;
            if (std::string_view(sSchema) == "IFC2X3")
                incomplete.insert(incomplete.end(), row.incomplete2x3.begin(), row.incomplete2x3.end());
            Numbers told = model.numbersOf(removal.incomplete);
            std::ranges::sort(incomplete);
            std::ranges::sort(told);
            EXPECT_EQ(told, incomplete);

            const Statements changed = model.changed();
            EXPECT_EQ(changed.size(), row.changed.size());
            for (const auto& [iId, sStart] : row.changed) {
                ASSERT_TRUE(changed.contains(iId)) << iId;
                EXPECT_TRUE(changed.at(iId).starts_with(sStart)) << '#' << iId << changed.at(iId);
            }
            model.vExpectWhole(gone);
        }
}

TEST(EntitiesRemove, ForgetsGuidAndProject) {
    const AssertLog log;   // two with one GlobalId
    RemoveModel model(g_sHouse, *SchemaLoader::pBuiltIn("IFC4"));
    Data& data = model.data;
    const auto guidOf = [](const Entity& entity) {
        Guid guid;
        EXPECT_TRUE(entity.boValueGet(AttributeName("GlobalId"), guid));
        return guid;
    };
    Entity* pDoor = data.pEntityFromId(5);
    Entity* pFills = data.pEntityFromId(11);
    Entity* pTwin = data.pEntityCreate(ObjectName("IFCDOOR"));
    Entity* pPending = data.pEntityCreate(ObjectName("IFCWALL"));
    EXPECT_TRUE(pTwin->boValueSet(AttributeName("GlobalId"), guidOf(*data.pEntityFromId(6)), data));
    EXPECT_TRUE(data.boEntityRemove(pDoor));
    EXPECT_EQ(data.pEntityFromGuid(guidOf(*pDoor)), nullptr);
    EXPECT_EQ(data.pEntityFromGuid(guidOf(*pFills)), nullptr);
    EXPECT_NE(data.pProject(), nullptr);
    EXPECT_TRUE(data.boEntityRemove(data.pProject()));
    EXPECT_EQ(data.pProject(), nullptr);

    // Of two with one GlobalId the map has the first, and loses it with that one alone.
    EXPECT_EQ(data.pEntityFromGuid(guidOf(*pTwin)), data.pEntityFromId(6));
    EXPECT_TRUE(data.boEntityRemove(pTwin));
    EXPECT_EQ(data.pEntityFromGuid(guidOf(*pTwin)), data.pEntityFromId(6));

    EXPECT_TRUE(data.boEntityRemove(pPending)) << "it waits for its GlobalId no more";
    EXPECT_TRUE(pPending->boValueSet(AttributeName("GlobalId"), Guid{1, 2, 3, {}}, data));
    EXPECT_EQ(data.pEntityFromGuid(Guid{1, 2, 3, {}}), nullptr);
}

TEST(EntitiesRemove, LeavesTheRemovedUsable) {
    RemoveModel model(g_sHouse, *SchemaLoader::pBuiltIn("IFC4"));
    Data& data = model.data;
    Entity* pDoor = data.pEntityFromId(5);
    const std::string sBefore = pDoor->sWriteLine(data);
    EXPECT_TRUE(data.boEntityRemove(pDoor));
    EXPECT_EQ(pDoor->sWriteLine(data), sBefore) << "number and references are its own";
    EXPECT_FALSE(pDoor->boForEachInverseAttribute([](const auto&, const auto&) { return true; })) << "nobody names it";
    data.entityAdd(pDoor);
    EXPECT_TRUE(data.boEntityRemove(pDoor)) << "it may come back";
}

TEST(EntitiesRemove, PassesOverWhatIsNotThere) {
    RemoveModel model(g_sHouse, *SchemaLoader::pBuiltIn("IFC4"));
    RemoveModel other(g_sHouse, *SchemaLoader::pBuiltIn("IFC4"));
    Data& data = model.data;
    Entity empty;
    const std::size_t iBefore = data.entities().size();
    EXPECT_FALSE(data.boEntityRemove(nullptr));
    EXPECT_FALSE(data.boEntityRemove(&empty));
    EXPECT_FALSE(data.boEntityRemove(other.data.pEntityFromId(5)));
    EXPECT_THAT(data.entitiesRemove({}).removed, IsEmpty());
    EXPECT_EQ(data.entities().size(), iBefore);
    EXPECT_THAT(model.changed(), IsEmpty());

    Entity* pDoor = data.pEntityFromId(6);
    const EntityRemoval removal = data.entitiesRemove({nullptr, pDoor, other.data.pEntityFromId(5), pDoor, &empty});
    EXPECT_THAT(removal.removed, ElementsAre(pDoor));
    EXPECT_FALSE(data.boEntityRemove(pDoor)) << "it is gone";
    Data without;
    EXPECT_FALSE(without.boEntityRemove(pDoor));
}

const def::SchemaPset& linkSchema() {
    static const std::unique_ptr<def::SchemaPset> pSchema = pSchemaOf(R"(
        TYPE IfcLabel = STRING; END_TYPE;
        TYPE IfcThings = SET OF IfcThing; END_TYPE;
        TYPE IfcInner = SELECT (IfcLabel, IfcThing); END_TYPE;
        TYPE IfcValue = SELECT (IfcLabel, IfcThings, IfcInner, IfcThing); END_TYPE;
        ENTITY IfcThing; Name : OPTIONAL IfcLabel;
            INVERSE Pairs : SET OF IfcPair FOR Things; Trios : SET OF IfcTrio FOR Things;
                Loose : SET OF IfcLoose FOR Things; Chains : SET OF IfcChain FOR Thing;
                Shifts : SET OF IfcShift FOR Things; Backwards : SET OF IfcBackwards FOR Things;
                Below : SET OF IfcBelow FOR Things; Notes : SET OF IfcNote FOR Things;
                Bundles : SET OF IfcBundle FOR Things; END_ENTITY;
        ENTITY IfcPair; Things : SET [2:?] OF IfcThing; Partner : OPTIONAL IfcPair; END_ENTITY;
        ENTITY IfcTrio; Things : ARRAY [1:3] OF IfcThing; END_ENTITY;
        ENTITY IfcLoose; Things : OPTIONAL SET [2:?] OF IfcThing; END_ENTITY;
        ENTITY IfcShift; Things : ARRAY [-1:1] OF IfcThing; END_ENTITY;
        ENTITY IfcBackwards; Things : ARRAY [3:1] OF IfcThing; END_ENTITY;
        ENTITY IfcBelow; Things : SET [-1:?] OF IfcThing; END_ENTITY;
        ENTITY IfcNote; Things : OPTIONAL SET OF IfcThing; Author : IfcThing; END_ENTITY;
        ENTITY IfcBundle; Things : SET [1:?] OF IfcValue; END_ENTITY;
        ENTITY IfcChain; Thing : IfcThing; Before : OPTIONAL IfcChain; END_ENTITY;
        ENTITY IfcFollower SUBTYPE OF (IfcChain); After : IfcChain; END_ENTITY;
        ENTITY IfcHolder; Thing : OPTIONAL IfcThing; Value : OPTIONAL IfcValue; Values : OPTIONAL LIST OF IfcValue;
            Rows : OPTIONAL LIST OF LIST OF IfcThing; Must : LIST [1:?] OF IfcValue; END_ENTITY;
        )");
    return *pSchema;
}

struct LinkRow {
    const char* sRule;
    const char* sStatements;   // beside #1 to #4, which are things
    Numbers asked;
    Numbers withThem;
    Statements changed;
    Numbers incomplete;
};

// clang-format off
const LinkRow g_linkRows[] = {
    {"fewer than the schema asks for", "#5=IFCPAIR((#1,#2),$);#6=IFCPAIR((#1,#2,#3),$);", {1}, {5},
     {{6, "((#2,#3),$);"}}, {}},
    {"an array has all its items or is none", "#5=IFCTRIO((#1,#2,#3));", {3}, {5}, {}, {}},
    {"from whatever index on", "#5=IFCSHIFT((#1,#2,#3));", {3}, {5}, {}, {}},
    {"bounds that say nothing", "#5=IFCBACKWARDS((#1,#2));#6=IFCBELOW((#1,#2));", {1}, {},
     {{5, "((#2));"}, {6, "((#2));"}}, {}},
    {"but that one is left", "#5=IFCBACKWARDS((#1));#6=IFCBELOW((#1));", {1}, {5, 6}, {}, {}},
    {"an item that holds several stays with one of them", "#5=IFCBUNDLE((IFCTHINGS((#1,#2))));", {1}, {},
     {{5, "((IFCTHINGS((#2))));"}}, {}},
    {"an item that holds none counts, too", "#5=IFCBUNDLE((IFCLABEL('a'),#1));", {1}, {}, {{5, "((IFCLABEL('a')));"}}, {}},
    {"an optional end makes no relationship", "#5=IFCNOTE((#2),#1);", {1}, {}, {{5, "((#2),$);"}}, {5}},
    {"what nobody defined is named on", "#5=IFCPAIR((#1,#99,#2),$);#6=IFCCHAIN(#99,$);#7=IFCHOLDER(#99,$,$,$,(#2));", {1}, {},
     {{5, "((#8,#2),$);"}}, {}},   // a number is dealt where one is written
    {"an item that stands twice counts twice", "#5=IFCPAIR((#1,#2,#1),$);", {1}, {5}, {}, {}},
    {"an optional list keeps what it has left, and is told", "#5=IFCLOOSE((#1,#2,#3));", {1, 2}, {},
     {{5, "((#3));"}}, {5}},
    {"and is undefined without any", "#5=IFCLOOSE((#1,#2));", {1, 2}, {}, {{5, "($);"}}, {}},
    {"what names a relationship that goes", "#5=IFCCHAIN(#1,$);#6=IFCCHAIN(#2,#5);#7=IFCPAIR((#1,#2),$);"
     "#8=IFCPAIR((#3,#4),#7);", {1}, {5, 7}, {{6, "(#2,$);"}, {8, "((#3,#4),$);"}}, {}},
    {"an end of the subtype, one after the other",
     "#5=IFCCHAIN(#1,$);#6=IFCFOLLOWER(#2,$,#5);#7=IFCFOLLOWER(#2,#5,#6);#8=IFCCHAIN(#2,#7);", {1}, {5, 6, 7},
     {{8, "(#2,$);"}}, {}},
    {"two that name each other", "#5=IFCFOLLOWER(#1,$,#6);#6=IFCFOLLOWER(#2,$,#5);", {1}, {5, 6}, {}, {}},
    {"a holder is no relationship", "#5=IFCHOLDER(#1,#1,(#1),((#1)),(#1));", {1}, {}, {{5, "($,$,$,$,());"}}, {5}},
    {"items of a list of selects", "#5=IFCHOLDER($,$,(IFCLABEL('a'),#1,$,#2,#1,IFCLABEL('b')),$,(#2));", {1}, {},
     {{5, "($,$,(IFCLABEL('a'),$,#2,IFCLABEL('b')),$,(#2));"}}, {}},
    {"an aggregate in a select", "#5=IFCHOLDER($,IFCTHINGS((#1,#2)),(IFCTHINGS((#1)),IFCTHINGS((#2,#1))),$,(#2));", {1},
     {}, {{5, "($,IFCTHINGS((#2)),(IFCTHINGS((#2))),$,(#2));"}}, {}},
    {"that is left empty", "#5=IFCHOLDER($,IFCTHINGS((#1)),(IFCTHINGS((#1))),$,(#2));", {1}, {}, {{5, "($,$,$,$,(#2));"}}, {}},
    {"and one that was", "#5=IFCHOLDER(#1,IFCTHINGS(()),(IFCTHINGS(())),$,(#2));", {1}, {},
     {{5, "($,IFCTHINGS(()),(IFCTHINGS(())),$,(#2));"}}, {}},
    {"a select in a select", "#5=IFCHOLDER($,IFCINNER(#1),(IFCINNER(#1),IFCINNER(#2)),$,(#2));", {1}, {},
     {{5, "($,$,(IFCINNER(#2)),$,(#2));"}}, {}},
    {"rows", "#5=IFCHOLDER($,$,$,((#1,#2),(#1),(),$,(#3)),(#2));", {1}, {}, {{5, "($,$,$,((#2),(),$,(#3)),(#2));"}}, {}},
    {"a value that stays behind its flag is none", "#5=IFCHOLDER(*,*,*,*,(#2));", {1}, {}, {}, {}},
};
// clang-format on

TEST(EntitiesRemove, LooksIntoEveryShapeOfValue) {
    for (const LinkRow& row : g_linkRows) {
        SCOPED_TRACE(row.sRule);
        const AssertLog log;
        RemoveModel model("#1=IFCTHING('1');#2=IFCTHING('2');#3=IFCTHING('3');#4=IFCTHING('4');" +
                              std::string(row.sStatements),
                          linkSchema());
        const EntityRemoval removal = model.remove(row.asked);
        EXPECT_TRUE(log.texts().empty());
        Numbers gone = model.numbersOf(removal.removed);
        std::ranges::sort(gone);
        Numbers expected = row.asked;
        expected.insert(expected.end(), row.withThem.begin(), row.withThem.end());
        EXPECT_EQ(gone, expected);
        EXPECT_EQ(model.changed(), row.changed);
        EXPECT_EQ(model.numbersOf(removal.incomplete), row.incomplete);
        const AssertLog rows;   // a list of lists is not walked when inverse lists are built
        model.vExpectWhole(gone);
    }
}

// Nobody's statement, and no item of a list: neither is there to be removed, or counted.
TEST(EntitiesRemove, CountsNothingThatIsNoInstance) {
    Data data;
    data.vSchemaSet(&linkSchema());
    Entity* pThing = data.pEntityCreate(ObjectName("IFCTHING"));
    Entity* pOther = data.pEntityCreate(ObjectName("IFCTHING"));
    Entity* pPair = data.pEntityCreate(ObjectName("IFCPAIR"));
    EXPECT_TRUE(pPair->boListValueSet(AttributeName("Things"), std::vector<Entity*>{pThing, nullptr, pOther}, data));
    Entity* pEmpty = data.pEntityCreate(ObjectName("IFCTHING"));
    pEmpty->unsafeSetSchemaEntity(nullptr);
    EXPECT_FALSE(data.boEntityRemove(pEmpty));
    EXPECT_THAT(data.entitiesRemove({pThing}).removed, ElementsAre(pThing, pPair))
        << "one is left of two, not two of three";
}

// What the taker leaves behind in a cell.
TEST(ReferenceTaker, LeavesNothingBehind) {
    Entity gone, stays;
    std::vector<const Entity*> asked;
    const auto boGone = [&](Entity* pEntity) {
        asked.push_back(pEntity);
        return pEntity == &gone;
    };
    ReferenceTaker taker(boGone);
    const auto& type = *linkSchema().pTypeFromName(ObjectName("IFCINNER"));

    AttributeEntity reference;
    reference.m_value = &gone;
    AttributeEntity held;
    held.m_value = &gone;
    AttributeSelect inner;
    inner.m_pValue = &held;
    inner.m_eType = AttributeType::Entity;
    AttributeSelect select;
    select.m_pValue = &inner;
    select.m_eType = AttributeType::Select;
    select.m_pType = &type;

    for (bool AttributeBase::*pFlag : {&AttributeBase::m_boUndefined, &AttributeBase::m_boDerived})
        for (AttributeBase* pCell : {static_cast<AttributeBase*>(&reference), static_cast<AttributeBase*>(&select),
                                     static_cast<AttributeBase*>(&inner), static_cast<AttributeBase*>(&held)}) {
            pCell->*pFlag = true;
            if (pCell == &reference)
                EXPECT_FALSE(taker.boCell(reference, CellClass::Entity));
            else
                EXPECT_FALSE(taker.boCell(select, CellClass::Select));
            EXPECT_THAT(asked, IsEmpty()) << "a value that stays behind its flag is none";
            pCell->*pFlag = false;
        }

    EXPECT_TRUE(taker.boCell(reference, CellClass::Entity));
    EXPECT_FALSE(reference.boHasValue());
    EXPECT_EQ(reference.m_value, nullptr);
    reference.vDefined();
    EXPECT_FALSE(taker.boCell(reference, CellClass::Entity)) << "the answer is for this cell";
    EXPECT_TRUE(taker.boCell(select, CellClass::Select));
    EXPECT_FALSE(select.boHasValue());
    EXPECT_EQ(select.m_pValue.load(), nullptr);
    EXPECT_EQ(select.m_eType.load(), AttributeType::Unknown);
    EXPECT_EQ(select.m_pType.load(), nullptr);

    // One whose type is not known is left alone.
    select.vDefined();
    select.m_pValue = &inner;
    select.m_eType = AttributeType::Select;
    EXPECT_FALSE(taker.boCell(select, CellClass::Select));
    EXPECT_EQ(select.m_pValue.load(), &inner);
    EXPECT_THAT(asked, ElementsAre(&gone, &gone));

    held.m_value = &stays;
    select.m_pType = &type;
    EXPECT_FALSE(taker.boCell(select, CellClass::Select));
    EXPECT_EQ(select.m_pValue.load(), &inner);
    EXPECT_THAT(asked, ElementsAre(&gone, &gone, &stays));
}

TEST(ReferenceTaker, PassesOverItemsBehindTheirFlags) {
    RemoveModel model("#1=IFCTHING('1');#2=IFCTHING('2');#5=IFCHOLDER($,$,(#1,#2),((#1),(#2)),(#2));", linkSchema());
    Entity& holder = *model.data.pEntityFromId(5);
    auto& values = static_cast<AttributeList&>(*holder.pAttributeFromIndex(2).second);
    auto& rows = static_cast<AttributeList&>(*holder.pAttributeFromIndex(3).second);
    (*values.pArray<AttributeSelect>())[0].m_boUndefined = true;
    (*rows.pArray<AttributeList>())[0].m_boUndefined = true;
    const auto boGone = [&](const Entity* pEntity) { return pEntity == model.data.pEntityFromId(1); };
    ReferenceTaker taker(boGone);
    EXPECT_FALSE(taker.boCell(values, CellClass::List));
    EXPECT_FALSE(taker.boCell(rows, CellClass::List));
    EXPECT_EQ(values.pArray<AttributeSelect>()->size(), 2U);
    EXPECT_EQ(rows.pArray<AttributeList>()->size(), 2U);
}

// A number that stands twice in a file: the list has its instance twice, and its references count once.
TEST(EntitiesRemove, CountsAnInstanceOnce) {
    RemoveModel model("#1=IFCTHING('1');#2=IFCTHING('2');#3=IFCTHING('3');"
                      "#5=IFCPAIR((#1,#2),$);#5=IFCPAIR((#1,#2,#3),$);",
                      linkSchema());
    const EntityRemoval removal = model.remove({1});
    EXPECT_EQ(model.numbersOf(removal.removed), Numbers{1});
    EXPECT_THAT(model.changed(), ElementsAre(std::pair<const std::size_t, std::string>(5, "((#2,#3),$);")));
    EXPECT_EQ(model.data.entities().size(), 4U);
    EXPECT_EQ(model.numbersOf(model.remove({5}).removed), Numbers{5});
    EXPECT_EQ(model.data.entities().size(), 2U) << "both places";
}

// Half of a long list, and a long chain of relationships: the work grows with the model, not with its square.
TEST(EntitiesRemove, ManyAtOnceTakeOnePass) {
    constexpr int g_iThings = 60'000;
    Data data;
    data.vSchemaSet(&linkSchema());
    std::vector<Entity*> things;
    for (int i = 0; i < g_iThings; ++i) things.push_back(data.pEntityCreate(ObjectName("IFCTHING")));
    Entity& pair = *data.pEntityCreate(ObjectName("IFCPAIR"));
    EXPECT_TRUE(pair.boListValueSet(AttributeName("Things"), things, data));
    Entity* pBefore = data.pEntityCreate(ObjectName("IFCCHAIN"));
    EXPECT_TRUE(pBefore->boValueSet<const Entity*>(AttributeName("Thing"), things[0], data));
    for (int i = 1; i < g_iThings; ++i) {
        Entity* pFollower = data.pEntityCreate(ObjectName("IFCFOLLOWER"));
        EXPECT_TRUE(pFollower->boValueSet<const Entity*>(AttributeName("Thing"), things.back(), data));
        EXPECT_TRUE(pFollower->boValueSet<const Entity*>(AttributeName("After"), pBefore, data));
        pBefore = pFollower;
    }
    for (Entity* pEntity : data.entities()) pEntity->vAttributeInverseInit(data);

    const EntityRemoval removal = data.entitiesRemove({things.begin(), things.begin() + g_iThings / 2});
    EXPECT_EQ(removal.removed.size(), g_iThings / 2U + g_iThings) << "all of the chain";
    std::vector<Entity*> left;
    EXPECT_TRUE(pair.boListValueGet(AttributeName("Things"), left));
    EXPECT_EQ(left, std::vector<Entity*>(things.begin() + g_iThings / 2, things.end()));
    EXPECT_EQ(things.back()->entitiesInverseFromIndex(3).size(), 0U);
    EXPECT_EQ(data.entities().size(), g_iThings / 2U + 1);
}

}   // namespace
}   // namespace oxa::ifc
