// SPDX-License-Identifier: Apache-2.0
// Setting and extending lists: which item type takes which value, what becomes of the block, and what is refused.
#include "Format/Ifc/IfcFileAttribute.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>

#include "Format/Ifc/CellSetter.h"
#include "Format/Ifc/IfcTypeSelectBase.h"

namespace oxa::ifc {
namespace {

using def::schema::ObjectBase;
using def::schema::ObjectName;
using types::IfcSelectBase;
using Bytes = std::vector<unsigned char>;

constexpr char g_sUnknownSet[] =
    "oxa::ifc::AttributeListValueBase::boValueSet: boValueSet not implemented for this list item type.";
constexpr char g_sUnimplemented[] = "oxa::ifc::AttributeListValueBase::boValueSet: Unimplemented list type.";
constexpr char g_sPush[] =
    "oxa::ifc::AttributeListValueBase::boPushBackValue: boPushBackValue not implemented for this list type";
constexpr char g_sPushSelect[] =
    "oxa::ifc::AttributeListValueBase::boPushBackValue: boPushBackValue is not implemented for this list type";

// One attribute for each item type, and how its cell looks when a setter has refused everything.
struct Target {
    const char* sAttribute;
    const char* sRefused;
};
const Target g_targets[] = {
    {"Reals", "$ List 1 null"},    {"Integers", "$ List 3 null"},      {"Texts", "$ List 5 null"},
    {"Blobs", "$ List 7 null"},    {"Selects", "$ List 9 null"},       {"RealRows", "$ List 11 null"},
    {"SetRows", "$ List 12 null"}, {"Things", "$ List 13 null"},       {"Flags", "$ List 0 null"},
    {"Numbers", "$ List 1 null"},  {"IntegerRows", "$ List 11 null"},  {"ThingRows", "$ List 11 null"},
    {"Cube", "$ List 11 null"},    {"ThingSelects", "$ List 13 null"}, {"NamedReals", "$ List 1 null"},
};

// Stores a value in the list of that attribute.
using Store = std::function<bool(CellSetter&, const char*)>;
using Accepted = std::map<std::string, std::string>;   // attribute, cell afterwards

template <class T>
Store sets(T value) {
    return [value](CellSetter& setter, const char* sAttribute) {
        return setter.cell<AttributeList>(sAttribute).boValueSet(value, setter.pTypeOf(sAttribute), setter.data.pool());
    };
}
template <class T>
Store pushes(T value) {
    return [value](CellSetter& setter, const char* sAttribute) {
        return setter.cell<AttributeList>(sAttribute).boPushBackValue(value, setter.attribute(sAttribute), setter.data);
    };
}

struct MatrixRow {
    const char* sValue;
    Store store;
    Accepted accepted = {};
};

// Each value on each item type: accepted as the row says, else refused, with "refusal" as the assertion.
template <class Refusal>
void vExpectMatrix(CellSetter& setter, const std::vector<MatrixRow>& rows, Refusal&& refusal) {
    for (const MatrixRow& row : rows)
        for (const Target& target : g_targets) {
            SCOPED_TRACE(std::string(row.sValue) + " to " + target.sAttribute);
            setter.vReadOne(target.sAttribute, "$");
            AssertTrail trail;
            const auto found = row.accepted.find(target.sAttribute);
            const bool boAccepted = found != row.accepted.end();
            EXPECT_EQ(row.store(setter, target.sAttribute), boAccepted);
            EXPECT_EQ(setter.sShow(target.sAttribute), boAccepted ? "$ List " + found->second : target.sRefused);
            EXPECT_EQ(trail.raised(), boAccepted ? Trail{} : refusal(row, target));
        }
}

Accepted each(std::initializer_list<const char*> attributes, const char* sCell) {
    Accepted accepted;
    for (const char* sAttribute : attributes) accepted[sAttribute] = sCell;
    return accepted;
}
// A list of lists takes any row; what its items can't be is left out.
Accepted rows(const char* sAttribute, const char* sCell) {
    Accepted accepted = {{"RealRows", "11[List 1 null]"},
                         {"IntegerRows", "11[List 3 null]"},
                         {"ThingRows", "11[List 13 null]"},
                         {"Cube", "11[List 11 null]"}};
    accepted[sAttribute] = sCell;
    return accepted;
}

template <class T>
IfcSelectBase typed(const char* sType, T value) {
    return IfcSelectBase(CellSetter::pType(sType), std::move(value));
}

TEST(AttributeListSet, TakesWhatFitsTheItemType) {
    CellSetter setter;
    Entity* p5 = setter.pEntity(5);
    Entity* p6 = setter.pEntity(6);
    const math::_2d::Point point2{{1, 2}};
    const math::_3d::Point point3{{1, 2, 3}};
    const char* sInOrder = p5 < p6 ? "13[#5, #6]" : "13[#6, #5]";
    const auto noItemType = [](const MatrixRow&, const Target& target) {
        return std::string_view(target.sAttribute) == "Flags" ? Trail{g_sUnknownSet} : Trail{};
    };
    vExpectMatrix(
        setter,
        {
            {"doubles", sets(std::vector{1.0, 2.5}), each({"Reals", "Numbers", "NamedReals"}, "1[1, 2.5]")},
            {"integers", sets(std::vector{1LL, -2LL}), {{"Integers", "3[1, -2]"}}},
            {"strings", sets(std::vector<std::string>{"a", ""}), {{"Texts", "5['a', '']"}}},
            {"bytes", sets(std::vector<Bytes>{{1, 2}, {}}), {{"Blobs", "7[Binary [01 02], Binary []]"}}},
            {"a set of entities", sets(std::set<Entity*>{p6, p5}), each({"Things", "ThingSelects"}, sInOrder)},
            {"entities", sets(std::vector<Entity*>{p6, p5, p6}), each({"Things", "ThingSelects"}, "13[#6, #5, #6]")},
            {"constant entities", sets(std::vector<const Entity*>{p5, nullptr}),
             each({"Things", "ThingSelects"}, "13[#5, null]")},
            {"select values",
             sets(std::vector<IfcSelectBase>{typed("IFCCOUNT", 1LL), IfcSelectBase(p5), IfcSelectBase(),
                                             typed("IFCREALS", std::vector{1.5})}),
             {{"Selects", "9[Select 3:IFCCOUNT(Integer 1), Select 13:(#5), ~ Select 0:(null), "
                          "Select 11:IFCREALS(List 1[1.5])]"},
              {"Things", "13[null, #5, null, null]"},
              {"ThingSelects", "13[null, #5, null, null]"}}},
            {"2D point", sets(point2), each({"Reals", "Numbers", "NamedReals"}, "1[1, 2]")},
            {"2D vector", sets(math::_2d::Vector{{1, 2}}), each({"Reals", "Numbers", "NamedReals"}, "1[1, 2]")},
            {"3D point", sets(point3), each({"Reals", "Numbers", "NamedReals"}, "1[1, 2, 3]")},
            {"3D vector", sets(math::_3d::Vector{{1, 2, 3}}), each({"Reals", "Numbers", "NamedReals"}, "1[1, 2, 3]")},
            {"pairs of doubles", sets(std::vector<IfcArray<double, 2>>{{{1, 2}}}),
             rows("RealRows", "11[List 1[1, 2]]")},
            {"triples of doubles", sets(std::vector<IfcArray<double, 3>>{{{1, 2, 3}}}),
             rows("RealRows", "11[List 1[1, 2, 3]]")},
            {"triples of integers", sets(std::vector<IfcArray<long long, 3>>{{{1, 2, 3}}}),
             rows("IntegerRows", "11[List 3[1, 2, 3]]")},
            {"rows of integers", sets(std::vector<std::vector<long long>>{{1, 2}}),
             rows("IntegerRows", "11[List 3[1, 2]]")},
            {"rows of doubles", sets(std::vector<std::vector<double>>{{1.5}}), rows("RealRows", "11[List 1[1.5]]")},
            {"rows of entities", sets(std::vector<std::vector<const Entity*>>{{p5, p6}}),
             rows("ThingRows", "11[List 13[#5, #6]]")},
            {"2D points", sets(std::vector{point2}), rows("RealRows", "11[List 1[1, 2]]")},
            {"3D points", sets(std::vector{point3}), rows("RealRows", "11[List 1[1, 2, 3]]")},
            // no list takes these
            {"double", sets(1.0)},
            {"integer", sets(1LL)},
            {"unsigned integer", sets(1ULL)},
            {"boolean", sets(true)},
            {"logical", sets(LogicalValue::True)},
            {"GUID", sets(Guid{1, 2, 3, {}})},
            {"text", sets<const char*>("a")},
            {"string", sets(std::string("a"))},
            {"one binary", sets(Bytes{1})},
            {"one entity", sets<const Entity*>(p5)},
            {"one select value", sets(IfcSelectBase(p5))},
            {"characters", sets(std::vector<char>{'a'})},
            {"texts", sets(std::vector<const char*>{"a"})},
            {"pairs of integers", sets(std::vector<IfcArray<long long, 2>>{{{1, 2}}})},
            {"rows of characters", sets(std::vector<std::vector<char>>{{'a'}})},
            {"rows of strings", sets(std::vector<std::vector<std::string>>{{"a"}})},
        },
        noItemType);
}

TEST(AttributeListSet, TakesNoItemsAtAll) {
    CellSetter setter;
    const struct {
        const char* sAttribute;
        Store store;
        const char* sCell;
    } cases[] = {
        {"Reals", sets(std::vector<double>()), "$ List 1[]"},
        {"Integers", sets(std::vector<long long>()), "$ List 3[]"},
        {"Texts", sets(std::vector<std::string>()), "$ List 5[]"},
        {"Blobs", sets(std::vector<Bytes>()), "$ List 7[]"},
        {"Selects", sets(std::vector<IfcSelectBase>()), "$ List 9[]"},
        {"RealRows", sets(std::vector<std::vector<double>>()), "$ List 11[]"},
        {"Things", sets(std::vector<Entity*>()), "$ List 13 null"},
        {"Things", sets(std::set<Entity*>()), "$ List 13 null"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.sAttribute);
        setter.vReadOne(row.sAttribute, "$");
        EXPECT_TRUE(row.store(setter, row.sAttribute));
        EXPECT_EQ(setter.sShow(row.sAttribute), row.sCell);
    }
}

TEST(AttributeListSet, StoresSeveralRows) {
    CellSetter setter;
    EXPECT_TRUE(sets(std::vector<std::vector<double>>{{1}, {}, {2, 3}})(setter, "RealRows"));
    EXPECT_EQ(setter.sShow("RealRows"), "$ List 11[List 1[1], List 1[], List 1[2, 3]]");
    EXPECT_TRUE(sets(std::vector<math::_3d::Point>{{{1, 2, 3}}, {{4, 5, 6}}})(setter, "RealRows"));
    EXPECT_EQ(setter.sShow("RealRows"), "$ List 11[List 1[1, 2, 3], List 1[4, 5, 6]]");
}

// A list of five that is set to three and then to four.
TEST(AttributeListSet, KeepsTheBlockByItsCount) {
    const struct {
        const char* sAttribute;
        const char* token;
        Store three;
        Store four;
        const char* sThree;
    } cases[] = {
        {"Reals", "(1.,2.,3.,4.,5.)", sets(std::vector<double>(3, 7)), sets(std::vector<double>(4, 8)),
         "List 1[7, 7, 7]"},
        {"Integers", "(1,2,3,4,5)", sets(std::vector<long long>(3, 7)), sets(std::vector<long long>(4, 8)),
         "List 3[7, 7, 7]"},
        {"Texts", "('a','b','c','d','e')", sets(std::vector<std::string>(3, "x")),
         sets(std::vector<std::string>(4, "y")), "List 5['x', 'x', 'x']"},
        {"Blobs", "(\"0AB\",$,\"0AB\",*,\"0AB\")", sets(std::vector<Bytes>(3, {1})), sets(std::vector<Bytes>(4, {2})),
         "List 7[Binary [01], Binary [01], Binary [01]]"},
        {"Selects", "(IFCCOUNT(1),$,#5,IFCLABEL('a'),$)", sets(std::vector(3, typed("IFCCOUNT", 7LL))),
         sets(std::vector(4, typed("IFCCOUNT", 8LL))),
         "List 9[Select 3:IFCCOUNT(Integer 7), Select 3:IFCCOUNT(Integer 7), Select 3:IFCCOUNT(Integer 7)]"},
        {"RealRows", "((1.),$,(3.),(4.),(5.))", sets(std::vector(3, std::vector{7.0})),
         sets(std::vector(4, std::vector{8.0})), "List 11[List 1[7], List 1[7], List 1[7]]"},
        {"RealRows", "((1.),$,(3.),(4.),(5.))", sets(std::vector(3, IfcArray<double, 2>{{7, 8}})),
         sets(std::vector(4, IfcArray<double, 2>{{9, 9}})), "List 11[List 1[7, 8], List 1[7, 8], List 1[7, 8]]"},
        {"NamedReals", "(1.,2.,3.)", sets(math::_3d::Point{{7, 8, 9}}), sets(std::vector<double>(4, 8)),
         "List 1[7, 8, 9]"},
    };
    CellSetter setter;
    for (const auto& row : cases) {
        SCOPED_TRACE(row.sAttribute);
        setter.vReadOne(row.sAttribute, row.token);
        AssertTrail trail;
        auto& list = setter.cell<AttributeList>(row.sAttribute);
        const void* pBlock = list.m_pItems;
        EXPECT_TRUE(row.three(setter, row.sAttribute));
        EXPECT_EQ(list.m_pItems, pBlock);
        EXPECT_EQ(setter.sShow(row.sAttribute), row.sThree);
        EXPECT_TRUE(row.three(setter, row.sAttribute)) << "as many again";
        EXPECT_EQ(list.m_pItems, pBlock);
        EXPECT_TRUE(row.four(setter, row.sAttribute));
        EXPECT_NE(list.m_pItems, pBlock) << "the block's former size is forgotten";
        EXPECT_EQ(trail.raised(), Trail{});
    }
}

TEST(AttributeListSet, SkipsARowOfOtherItems) {
    CellSetter setter;
    setter.vReadOne("RealRows", "((1.,2.),(3.))");
    auto& list = setter.cell<AttributeList>("RealRows");
    (*list.pArray<AttributeList>())[0].m_eItemType = AttributeType::Integer;
    AssertTrail trail;
    EXPECT_TRUE(sets(std::vector<IfcArray<double, 2>>{{{7, 8}}, {{9, 10}}})(setter, "RealRows"));
    EXPECT_EQ((*list.pArray<AttributeList>())[0].pArray<long long>()->size(), 2U);
    (*list.pArray<AttributeList>())[0].m_eItemType = AttributeType::Real;
    EXPECT_EQ(setter.sShow("RealRows"), "List 11[List 1[1, 2], List 1[9, 10]]");
    EXPECT_EQ(trail.raised(), Trail{});
}

// What is refused stays as it was: undefined, another value, or untouched memory.
TEST(AttributeListSet, LeavesARefusedSelectAsItWas) {
    const IfcSelectBase taken = typed("IFCLABEL", std::string("z"));
    const struct {
        const char* sName;
        const char* token;
        std::vector<IfcSelectBase> values;
        const char* sCell;
    } cases[] = {
        {"undefined",
         "(IFCLABEL('a'),$)",
         {taken, IfcSelectBase()},
         "List 9[Select 5:IFCLABEL(String 'z'), $ Select 0:(null)]"},
        {"derived",
         "(IFCLABEL('a'),*)",
         {taken, IfcSelectBase()},
         "List 9[Select 5:IFCLABEL(String 'z'), * Select 0:(null)]"},
        {"a value",
         "(IFCLABEL('a'),#5)",
         {taken, typed("IFCCOUNT", 1.5)},
         "List 9[Select 5:IFCLABEL(String 'z'), Select 13:(#5)]"},
        {"an enumerator in the first",
         "($,#5)",
         {typed<const char*>("IFCCOLOUR", "BLUE"), taken},
         "List 9[$ Select 0:(null), Select 5:IFCLABEL(String 'z')]"},
        {"a new block",
         "()",
         {IfcSelectBase(), IfcSelectBase(), taken},
         "List 9[Select 0:(null), ~ Select 0:(null), Select 5:IFCLABEL(String 'z')]"},
    };
    CellSetter setter;
    for (const auto& row : cases) {
        SCOPED_TRACE(row.sName);
        setter.vReadOne("Selects", row.token);
        EXPECT_TRUE(sets(row.values)(setter, "Selects"));
        EXPECT_EQ(setter.sShow("Selects"), row.sCell);
    }
    setter.vReadOne("Selects", "(IFCLABEL('a'),$)");
    EXPECT_TRUE(setter.entity->boListValueSet(def::schema::AttributeName("Selects"),
                                              std::vector<IfcSelectBase>{taken, IfcSelectBase()}, setter.data));
    EXPECT_NE(setter.entity->sWriteLine(setter.data).find(",(IFCLABEL('z'),$),"), std::string::npos);
}

TEST(AttributeListSet, RebuildsAListOfEntitiesFromItsNodes) {
    CellSetter setter;
    const std::vector<Entity*> all = {setter.pEntity(5), setter.pEntity(6), setter.pEntity(7), setter.pEntity(8)};
    setter.vReadOne("Things", "(#1)");
    auto& list = setter.cell<AttributeList>("Things");
    const EntityList* pHead = list.pEntities();
    EXPECT_EQ(pHead->tail.load(), nullptr) << "after a read of one";

    const auto vSet = [&](std::size_t iCount) {
        EXPECT_TRUE(sets(std::vector<Entity*>(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(iCount)))(
            setter, "Things"));
    };
    vSet(3);
    EXPECT_EQ(list.pEntities(), pHead);
    const EntityList::Node* pSecond = pHead->next;
    const EntityList::Node* pThird = pSecond->next;
    EXPECT_EQ(pHead->tail.load(), pThird);
    EXPECT_EQ(setter.sShow("Things"), "List 13[#5, #6, #7]");

    vSet(2);
    EXPECT_EQ(list.pEntities(), pHead);
    EXPECT_EQ(pHead->next.load(), pSecond);
    EXPECT_EQ(pSecond->next.load(), nullptr) << "the third is dropped";
    EXPECT_EQ(pHead->tail.load(), pSecond);

    vSet(1);
    EXPECT_EQ(pHead->next.load(), nullptr);
    EXPECT_EQ(pHead->tail.load(), pHead) << "the head is its own tail";
    vSet(4);
    EXPECT_EQ(setter.sShow("Things"), "List 13[#5, #6, #7, #8]");
    vSet(0);
    EXPECT_EQ(list.pEntities(), nullptr);
}

TEST(AttributeListSet, TellsTextThatIsNotUtf8) {
    CellSetter setter;
    AssertTrail trail;
    EXPECT_TRUE(sets(std::vector<std::string>{"a\xFF", "b"})(setter, "Texts"));
    EXPECT_EQ(trail.raised(), Trail{"oxa::ifc::Array<char *>::boValueSet: Not a valid string"});
    EXPECT_EQ(setter.sShow("Texts"), "$ List 5['a\xFF', 'b']") << "stored all the same";
}

TEST(AttributeListSet, AsksWhetherAssertionsAreWanted) {
    CellSetter setter;
    AssertTrail trail;
    Assert::setEnabled(false);
    EXPECT_TRUE(sets(std::vector<std::string>{"a\xFF", "b"})(setter, "Texts"));
    EXPECT_EQ(setter.sShow("Texts"), "$ List 5['a\xFF', 'b']");
    EXPECT_FALSE(sets(std::vector{1.0})(setter, "Flags"));
    EXPECT_EQ(setter.sShow("Flags"), "$ List 0 null");
    EXPECT_EQ(trail.raised(), Trail{});
}

TEST(AttributeListSet, LooksAtTheObject) {
    CellSetter setter;
    Pool& pool = setter.data.pool();
    const std::vector<double> values = {1, 2};
    const struct {
        const char* sName;
        const ObjectBase* pObject;
        bool boFilled;   // the list has an item type already
        bool boResult;
        Trail raised;
    } cases[] = {
        {"a list", setter.pTypeOf("Reals"), false, true, {}},
        {"a named list", CellSetter::pType("IFCREALS"), false, true, {}},
        {"none", nullptr, false, false, {g_sUnknownSet}},
        {"none, and none needed", nullptr, true, true, {}},
        {"no list", setter.pTypeOf("Re"), false, false, {g_sUnimplemented, g_sUnknownSet}},
        {"no list, and none needed", setter.pTypeOf("Re"), true, true, {g_sUnimplemented}},
        {"a named type that is no list", CellSetter::pType("IFCLABEL"), false, false, {g_sUnknownSet}},
        {"an entity", setter.pTypeOf("Th"), false, false, {g_sUnknownSet}},
        {"a list of what can't be an item", setter.pTypeOf("Flags"), false, false, {g_sUnknownSet}},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.sName);
        setter.vReadOne("Reals", row.boFilled ? "(9.)" : "$");
        AssertTrail trail;
        auto& list = setter.cell<AttributeList>("Reals");
        EXPECT_EQ(list.boValueSet(values, row.pObject, pool), row.boResult);
        EXPECT_EQ(trail.raised(), row.raised);
        EXPECT_EQ(setter.sShow("Reals"), !row.boResult  ? "$ List 0 null"
                                         : row.boFilled ? "List 1[1, 2]"
                                                        : "$ List 1[1, 2]");
    }
    AssertTrail trail;
    auto& list = setter.cell<AttributeList>("Reals");
    list.m_eItemType = static_cast<AttributeType>(14);
    EXPECT_FALSE(list.boValueSet(values, setter.pTypeOf("Reals"), pool));
    EXPECT_EQ(trail.raised(), Trail{g_sUnknownSet}) << "an item type that does not exist";
    for (const AttributeType eType : {AttributeType::Boolean, AttributeType::Number, AttributeType::Logical,
                                      AttributeType::Enumeration, AttributeType::Array}) {
        list.m_eItemType = eType;
        EXPECT_FALSE(list.boValueSet(values, setter.pTypeOf("Reals"), pool));
        EXPECT_EQ(trail.raised(), Trail{}) << "one that no list has";
    }
    list.m_eItemType = AttributeType::Unknown;
}

TEST(AttributeListSet, TakesTheObjectFromTheAttribute) {
    CellSetter setter;
    auto& list = setter.cell<AttributeList>("Reals");
    AssertTrail trail;
    EXPECT_FALSE(list.boValueSet(std::vector{1.0}, def::schema::Attribute(), setter.data));
    EXPECT_EQ(trail.raised(), Trail{g_sUnknownSet}) << "an empty chain";
    EXPECT_TRUE(list.boValueSet(std::vector{1.0}, setter.attribute("Reals"), setter.data));
    EXPECT_EQ(setter.sShow("Reals"), "$ List 1[1]");
}

// --- appending -------------------------------------------------------------------------------------------------

TEST(AttributeListPush, TakesWhatFitsTheItemType) {
    CellSetter setter;
    Entity* p5 = setter.pEntity(5);
    const auto refusal = [](const MatrixRow& row, const Target& target) {
        const std::string_view value = row.sValue;
        const std::string_view attribute = target.sAttribute;
        if (value == "select value") return Trail{g_sPushSelect};
        if (value == "entity" || attribute == "Flags" || attribute == "SetRows") return Trail{g_sPush};
        if (value == "row of entities" && attribute == "Cube")
            return Trail{"oxa::ifc::Array<oxa::ifc::AttributeList>::boValuePushBack: Unexpected attribute type"};
        return Trail{};
    };
    vExpectMatrix(setter,
                  {
                      {"double", pushes(1.5), each({"Reals", "Numbers", "NamedReals"}, "1[1.5]")},
                      {"integer", pushes(7LL), {{"Integers", "3[7]"}}},
                      {"string", pushes(std::string("a")), {{"Texts", "5['a']"}}},
                      {"text", pushes<const char*>("a"), {{"Texts", "5['a']"}}},
                      {"null text", pushes<const char*>(nullptr)},
                      {"bytes", pushes(Bytes{1, 2}), {{"Blobs", "7[Binary [01 02]]"}}},
                      {"select value",
                       pushes(IfcSelectBase(p5)),
                       {{"Selects", "9[Select 13:(#5)]"}, {"Things", "13[#5]"}, {"ThingSelects", "13[#5]"}}},
                      {"entity", pushes<const Entity*>(p5), each({"Things", "ThingSelects"}, "13[#5]")},
                      {"row of entities",
                       pushes(std::vector<Entity*>{p5, p5}),
                       {{"ThingRows", "11[List 13[#5, #5]]"},
                        {"RealRows", "11[List 1 null]"},
                        {"IntegerRows", "11[List 3 null]"}}},
                      // no list takes these
                      {"character", pushes('a')},
                      {"2D point", pushes(math::_2d::Point{{1, 2}})},
                      {"3D point", pushes(math::_3d::Point{{1, 2, 3}})},
                      {"pair of doubles", pushes(IfcArray<double, 2>{{1, 2}})},
                      {"triple of doubles", pushes(IfcArray<double, 3>{{1, 2, 3}})},
                      {"pair of integers", pushes(IfcArray<long long, 2>{{1, 2}})},
                      {"triple of integers", pushes(IfcArray<long long, 3>{{1, 2, 3}})},
                      {"row of characters", pushes(std::vector<char>{'a'})},
                      {"row of integers", pushes(std::vector{1LL})},
                      {"row of doubles", pushes(std::vector{1.0})},
                  },
                  refusal);
}

TEST(AttributeListPush, MovesTheItemsToANewBlock) {
    CellSetter setter;
    Entity* p5 = setter.pEntity(5);
    const struct {
        const char* sAttribute;
        const char* token;
        Store store;
        const char* sCell;
    } cases[] = {
        {"Reals", "(1.,2.)", pushes(3.5), "List 1[1, 2, 3.5]"},
        {"Reals", "()", pushes(3.5), "List 1[3.5]"},
        {"Integers", "(1)", pushes(-1LL), "List 3[1, -1]"},
        {"Texts", "('a','b')", pushes(std::string("c")), "List 5['a', 'b', 'c']"},
        {"Blobs", "(\"0AB\",$)", pushes(Bytes{}), "List 7[Binary [AB], $ Binary null, Binary []]"},
        {"Selects", "(IFCCOUNT(1),$,#5)", pushes(typed("IFCLABEL", std::string("a"))),
         "List 9[Select 3:IFCCOUNT(Integer 1), $ Select 0:(null), Select 13:(#5), Select 5:IFCLABEL(String 'a')]"},
        {"Selects", "(#5)", pushes(IfcSelectBase()), "List 9[Select 13:(#5), Select 0:(null)]"},
        {"Selects", "(#5)", pushes(typed("IFCCOUNT", 1.5)), "List 9[Select 13:(#5), Select 0:(null)]"},
        {"ThingRows", "((#5),())", pushes(std::vector<Entity*>{p5}), "List 11[List 13[#5], List 13 null, List 13[#5]]"},
        {"ThingRows", "((#5))", pushes(std::vector<Entity*>()), "List 11[List 13[#5], List 13 null]"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(std::string(row.sAttribute) + row.token);
        setter.vReadOne(row.sAttribute, row.token);
        auto& list = setter.cell<AttributeList>(row.sAttribute);
        const void* pBlock = list.m_pItems;
        EXPECT_TRUE(row.store(setter, row.sAttribute));
        EXPECT_EQ(setter.sShow(row.sAttribute), row.sCell);
        EXPECT_NE(list.m_pItems, pBlock) << "even where there was room";
    }
}

TEST(AttributeListPush, DoesNotLookAtTheText) {
    CellSetter setter;
    setter.vReadOne("Texts", "('a')");
    AssertTrail trail;
    EXPECT_TRUE(pushes(std::string("b\xFF"))(setter, "Texts"));
    EXPECT_TRUE(pushes<const char*>("\xC3")(setter, "Texts"));
    EXPECT_EQ(setter.sShow("Texts"), "List 5['a', 'b\xFF', '\xC3']");
    EXPECT_EQ(trail.raised(), Trail{});
}

TEST(AttributeListPush, NeedsATypeOnlyForTheFirstItem) {
    CellSetter setter;
    const def::schema::Attribute none;
    AssertTrail trail;
    EXPECT_FALSE(setter.cell<AttributeList>("Reals").boPushBackValue(1.5, none, setter.data));
    EXPECT_EQ(trail.raised(), Trail{g_sPush});
    EXPECT_EQ(setter.sShow("Reals"), "$ List 0 null");

    setter.vReadOne("Selects", "(#5)");
    EXPECT_TRUE(setter.cell<AttributeList>("Selects").boPushBackValue(typed("IFCCOUNT", 1LL), none, setter.data));
    EXPECT_EQ(setter.sShow("Selects"), "List 9[Select 13:(#5), Select 3:IFCCOUNT(Integer 1)]");
    EXPECT_EQ(trail.raised(), Trail{});
}

TEST(AttributeListPush, LinksAnEntityBehindTheLast) {
    CellSetter setter;
    setter.vReadOne("Things", "(#5)");
    auto& list = setter.cell<AttributeList>("Things");
    EntityList* pHead = list.pEntities();
    EXPECT_TRUE(pushes<const Entity*>(setter.pEntity(6))(setter, "Things"));
    EXPECT_EQ(list.pEntities(), pHead);
    EXPECT_EQ(pHead->tail.load(), pHead->next.load());
    EXPECT_TRUE(pushes(IfcSelectBase(setter.pEntity(7)))(setter, "Things"));
    EXPECT_TRUE(pushes(IfcSelectBase(std::string("no entity")))(setter, "Things"));
    EXPECT_EQ(setter.sShow("Things"), "List 13[#5, #6, #7, null]");

    pHead->tail = nullptr;
    EXPECT_TRUE(pushes<const Entity*>(nullptr)(setter, "Things"));
    EXPECT_EQ(setter.sShow("Things"), "List 13[#5, #6, #7, null, null]") << "the end is found from the head";
    pHead->tail = pHead;
    EXPECT_TRUE(pushes<const Entity*>(setter.pEntity(5))(setter, "Things"));
    EXPECT_EQ(setter.sShow("Things"), "List 13[#5, #6, #7, null, null, #5]") << "and from a hint before it";
}

TEST(AttributeListPush, NeedsAChainOfThreeForARow) {
    CellSetter setter;
    auto& list = setter.cell<AttributeList>("ThingRows");
    AssertTrail trail;
    EXPECT_FALSE(list.boValuePushBack({}, setter.attribute("ThingRows"), setter.data)) << "no item type yet";
    EXPECT_EQ(trail.raised(), Trail{});
    for (const AttributeType eType : {AttributeType::Real, AttributeType::Integer, AttributeType::String,
                                      AttributeType::Binary, AttributeType::Select, AttributeType::Entity}) {
        list.m_eItemType = eType;
        EXPECT_FALSE(list.boValuePushBack({}, setter.attribute("ThingRows"), setter.data));
    }
    list.m_eItemType = AttributeType::List;
    EXPECT_EQ(trail.raised(), Trail{});
    EXPECT_FALSE(list.boValuePushBack({}, setter.attribute("Reals"), setter.data)) << "two entries";
    EXPECT_FALSE(list.boValuePushBack({}, setter.attribute("Cube"), setter.data)) << "four entries";
    EXPECT_EQ(trail.raised(),
              Trail(2, "oxa::ifc::Array<oxa::ifc::AttributeList>::boValuePushBack: Unexpected attribute type"));
    EXPECT_EQ(setter.sShow("ThingRows"), "$ List 11 null");
}

// --- preparing for an import ------------------------------------------------------------------------------------

TEST(AttributeListCreate, PreparesTheBlock) {
    constexpr char g_sNone[] = "$ List 0 null";
    const struct {
        const char* sName;
        std::vector<const char*> path;   // schema names; null: a null object
        std::size_t iCount;
        const char* sCell;
        bool boGuid = false;
        Trail raised = {};
    } cases[] = {
        {"an empty path", {}, 2, g_sNone},
        {"a null object", {"IFCREALS", nullptr}, 2, g_sNone},
        {"an entity", {"IFCTHING"}, 2, "$ List 13 null"},
        {"real", {"IFCLENGTHMEASURE"}, 2, "$ List 1[0, 0]"},
        {"integer", {"IFCCOUNT"}, 2, "$ List 3[0, 0]"},
        {"string", {"IFCLABEL"}, 2, "$ List 5[null, null]"},
        {"binary", {"IFCBLOB"}, 2, "$ List 7[Binary null, ~ Binary null]"},
        {"select", {"IFCVALUE"}, 2, "$ List 9[Select 0:(null), ~ Select 0:(null)]"},
        {"list", {"IFCREALS"}, 2, "$ List 11[List 0 null, ~ List 0 null]"},
        {"none of them", {"IFCREALS"}, 0, "$ List 11[]"},
        {"the last one counts", {"IFCREALS", "IFCTHING", "IFCCOUNT"}, 1, "$ List 3[0]"},
        {"number", {"IFCNUMERIC"}, 2, g_sNone},
        {"boolean", {"IFCFLAG"}, 2, g_sNone},
        {"logical", {"IFCANSWER"}, 2, g_sNone},
        {"enumeration", {"IFCCOLOUR"}, 2, g_sNone},
        {"array", {"IFCREALARRAY"}, 2, g_sNone},
        {"set", {"IFCTHINGS"}, 2, g_sNone},
        {"string, marked as GUID",
         {"IFCLABEL"},
         2,
         "$? List 0 null",
         true,
         {"oxa::ifc::AttributeListValueBase::vTypeListCreate: Not implemented"}},
        {"real, marked as GUID", {"IFCLENGTHMEASURE"}, 1, "$? List 1[0]", true},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.sName);
        CellSetter setter;
        std::vector<const ObjectBase*> path;
        for (const char* sObject : row.path)
            path.push_back(sObject ? everythingSchema().pObjectFromName(ObjectName(sObject)) : nullptr);
        auto& list = setter.cell<AttributeList>("Reals");
        list.m_boGuid = row.boGuid;
        AssertTrail trail;
        list.vTypeListCreate(path, row.iCount, setter.data.pool());
        EXPECT_EQ(setter.sShow("Reals"), row.sCell);
        EXPECT_EQ(trail.raised(), row.raised);
    }
}

TEST(AttributeListCreate, LeavesAListOfThatTypeAlone) {
    CellSetter setter;
    Pool& pool = setter.data.pool();
    setter.vReadOne("Reals", "(1.,2.)");
    auto& list = setter.cell<AttributeList>("Reals");
    list.vTypeListCreate({CellSetter::pType("IFCLENGTHMEASURE")}, 5, pool);
    EXPECT_EQ(setter.sShow("Reals"), "List 1[1, 2]");
    list.vTypeListCreate({setter.pTypeOf("In")}, 5, pool);
    EXPECT_EQ(setter.sShow("Reals"), "List 1[1, 2]") << "a data type without a name says nothing";
    const def::schema::Type unresolved("IfcUnresolved");
    list.vTypeListCreate({&unresolved}, 5, pool);
    EXPECT_EQ(setter.sShow("Reals"), "List 1[1, 2]") << "nor does a name without a data type";
    list.vTypeListCreate({CellSetter::pType("IFCCOUNT")}, 1, pool);
    EXPECT_EQ(setter.sShow("Reals"), "List 3[0]");
    list.vTypeListCreate({everythingSchema().pObjectFromName(ObjectName("IFCTHING"))}, 1, pool);
    EXPECT_EQ(setter.sShow("Reals"), "List 13 null");

    setter.vReadOne("Things", "(#5)");
    setter.cell<AttributeList>("Things").vTypeListCreate({setter.pTypeOf("Th")}, 1, pool);
    EXPECT_EQ(setter.sShow("Things"), "List 13[#5]");
}

// --- the end ---------------------------------------------------------------------------------------------------

// The leak check of a sanitizer tells what is not freed, the heap itself what is freed and should not be.
TEST(AttributeListEnd, FreesWhatDoesNotLieInThePool) {
    Pool pool;
    const auto vBinary = [](AttributeBinary& cell, bool boPooled, unsigned char* pBytes) {
        cell.m_boPooled = boPooled;
        cell.m_value = pBytes;
    };
    unsigned char bytes[] = {7};
    {
        AttributeList list;
        list.m_eItemType = AttributeType::Binary;
        auto* pArray = Array<AttributeBinary>::pFromBytes(pool.pAllocate(Array<AttributeBinary>::iBlockSize(2)), 2);
        list.m_pItems = pArray;
        vBinary((*pArray)[0], false, static_cast<unsigned char*>(std::calloc(4, 1)));
        vBinary((*pArray)[1], true, bytes);
    }
    {
        AttributeList list;
        list.m_eItemType = AttributeType::List;
        auto* pRows = Array<AttributeList>::pFromBytes(pool.pAllocate(Array<AttributeList>::iBlockSize(1)), 1);
        list.m_pItems = pRows;
        auto* pArray = Array<AttributeSelect>::pFromBytes(pool.pAllocate(Array<AttributeSelect>::iBlockSize(1)), 1);
        (*pRows)[0].m_eItemType = AttributeType::Select;
        (*pRows)[0].m_pItems = pArray;
        AttributeSelect& select = (*pArray)[0];
        select.m_eType = AttributeType::Entity;
        select.m_pValue = ::new (std::malloc(sizeof(AttributeEntity))) AttributeEntity;
        select.m_boPooled = false;
    }
    EXPECT_EQ(bytes[0], 7);
}

TEST(AttributeListEnd, LeavesAVectorOfSelectsToThePool) {
    CellSetter setter;
    AttributeList list;
    EXPECT_TRUE(list.boValueSet(std::vector(3, typed("IFCLABEL", std::string("a"))), setter.pTypeOf("Selects"),
                                setter.data.pool()));
    EXPECT_EQ(setter.sCell(list, setter.pTypeOf("Selects"), setter.attribute("Selects")),
              "List 9[Select 5:IFCLABEL(String 'a'), Select 5:IFCLABEL(String 'a'), Select 5:IFCLABEL(String 'a')]");
}

}   // namespace
}   // namespace oxa::ifc
