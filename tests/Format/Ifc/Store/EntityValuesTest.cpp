// SPDX-License-Identifier: Apache-2.0
// Values by attribute name: what each type of value is read from, where it is stored, and what is left alone.
#include "Format/Ifc/IfcFileEntity.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>

#include "Format/Ifc/CellSetter.h"
#include "Format/Ifc/IfcTypeSelectBase.h"
#include "platform/Utilities.h"

namespace oxa::ifc {
namespace {

using def::schema::AttributeName;
using types::IfcSelectBase;
using Bytes = std::vector<unsigned char>;

constexpr char g_sGuidText[] = "'0$aBcDeFgHiJkLmNoPqRsT'";

// One value as text.
std::string sText(StatementReader&, double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", value);
    return text;
}
std::string sText(StatementReader&, long long iValue) { return std::to_string(iValue); }
std::string sText(StatementReader&, unsigned long long iValue) { return std::to_string(iValue); }
std::string sText(StatementReader&, char c) { return std::to_string(c); }
std::string sText(StatementReader&, unsigned char c) { return std::to_string(c); }
std::string sText(StatementReader&, bool boValue) { return boValue ? "T" : "F"; }
std::string sText(StatementReader&, LogicalValue value) { return std::to_string(static_cast<int>(value)); }
std::string sText(StatementReader&, const Guid& guid) { return guid.boIsNull() ? "0" : IfcGuid::toIfcGuid(guid); }
std::string sText(StatementReader&, const char* pText) { return pText; }
std::string sText(StatementReader&, const std::string& sValue) { return sValue; }
std::string sText(StatementReader& reader, const Entity* pEntity) { return reader.sEntity(pEntity); }
std::string sText(StatementReader& reader, const IfcSelectBase& value) {
    if (const std::string* psText = value.pStringGet()) return *psText;
    if (value.pEntityGet()) return reader.sEntity(value.pEntityGet());
    return value.pTypeDataGet() ? value.pTypeDataGet()->pTypeNameGet() : "empty";
}
template <class Items>
std::string sItems(StatementReader& reader, const Items& items);
template <class T>
std::string sText(StatementReader& reader, const std::vector<T>& values) {
    return sItems(reader, values);
}
template <std::size_t N, class Tag>
std::string sText(StatementReader& reader, const math::Coordinates<N, Tag>& value) {
    return sItems(reader, value.m_values);
}
template <class T, std::size_t N>
std::string sText(StatementReader& reader, const IfcArray<T, N>& value) {
    return sItems(reader, value.m_values);
}
template <class Items>
std::string sItems(StatementReader& reader, const Items& items) {
    std::string sAll = "(";
    for (const auto& item : items) sAll += (sAll.size() > 1 ? " " : "") + sText(reader, item);
    return sAll + ')';
}

using Read = std::function<std::string(CellSetter&, const char*)>;

// The answer and the value afterwards, which was "former".
template <class T>
Read gets(T former) {
    return [former](CellSetter& setter, const char* sAttribute) {
        T value = former;
        const bool boRead = setter.entity->boValueGet(AttributeName(sAttribute), value);
        return (boRead ? "yes " : "no ") + sText(setter, value);
    };
}
// The same for a list that held an item before.
template <class T>
Read lists() {
    return [](CellSetter& setter, const char* sAttribute) {
        std::vector<T> values(1);
        const bool boRead = setter.entity->boListValueGet(AttributeName(sAttribute), values);
        return (boRead ? "yes " : "no ") + sItems(setter, values);
    };
}
template <class T, std::size_t N>
Read fixed() {
    return [](CellSetter& setter, const char* sAttribute) {
        IfcArray<T, N> value{};
        const bool boRead = setter.entity->boFixedArrayValueGet(AttributeName(sAttribute), value);
        return (boRead ? "yes " : "no ") + sItems(setter, value.m_values);
    };
}

// --- reading ---------------------------------------------------------------------------------------------------

struct ReadTarget {
    const char* sAttribute;
    const char* token;
};

struct FamilyRow {
    const char* sType;
    Read read;
    const char* sRefused;
    std::map<std::string, std::string> accepted = {};   // by token
};

void vExpectFamily(const std::vector<FamilyRow>& rows, const std::vector<ReadTarget>& targets) {
    CellSetter setter;
    AssertTrail trail;
    for (const FamilyRow& row : rows) {
        for (const ReadTarget& target : targets) {
            SCOPED_TRACE(std::string(row.sType) + " from " + target.sAttribute + ' ' + target.token);
            setter.vReadOne(target.sAttribute, target.token);
            const auto found = row.accepted.find(target.token);
            EXPECT_EQ(row.read(setter, target.sAttribute), found == row.accepted.end() ? row.sRefused : found->second);
            setter.vReadOne(target.sAttribute, "$");
            EXPECT_EQ(row.read(setter, target.sAttribute), row.sRefused) << "undefined";
        }
        EXPECT_EQ(row.read(setter, "NoSuchName"), row.sRefused);
        Entity empty;
        Entity* pFilled = std::exchange(setter.entity, &empty);
        EXPECT_EQ(row.read(setter, "Re"), row.sRefused) << "an instance without cells";
        setter.entity = pFilled;
    }
    EXPECT_EQ(trail.raised(), Trail{});
}

TEST(EntityValueGet, NoTextIsAnEmptyOne) {
    CellSetter setter;
    auto& cell = setter.cell<AttributeString>("St");
    cell.m_value = static_cast<char*>(nullptr);
    cell.vDefined();
    EXPECT_EQ(gets(std::string("former"))(setter, "St"), "yes ");
}

TEST(EntityValueGet, ReadsTheNaturalKindAlone) {
    Entity* pFormer = nullptr;
    vExpectFamily(
        {
            {"double",
             gets(-1.0),
             "no -1",
             {{"1.5", "yes 1.5"}, {"2", "yes 2"}, {"IFCLENGTHMEASURE(3.)", "yes 3"}, {"IFCNUMERIC(4)", "yes 4"}}},
            {"long long",
             gets(-1LL),
             "no -1",
             {{"-3", "yes -3"}, {"IFCCOUNT(5)", "yes 5"}, {"IFCINNER(IFCCOUNT(6))", "yes 6"}}},
            {"unsigned long long", gets(99ULL), "no 99"},
            {"bool, true before", gets(true), "no T", {{".F.", "yes F"}, {"IFCFLAG(.T.)", "yes T"}}},
            {"bool, false before", gets(false), "no F", {{".F.", "yes F"}, {"IFCFLAG(.T.)", "yes T"}}},
            {"LogicalValue", gets(LogicalValue::True), "no 1", {{".U.", "yes -1"}, {"IFCANSWER(.F.)", "yes 0"}}},
            {"Guid", gets(Guid()), "no 0", {{g_sGuidText, "yes 0$aBcDeFgHiJkLmNoPqRsT"}}},
            {"const char*",
             gets<const char*>("former"),
             "no former",
             {{"'a'", "yes a"}, {".RED.", "yes RED"}, {"IFCLABEL('b')", "yes b"}, {"IFCCOLOUR(.A.)", "yes A"}}},
            {"std::string",
             gets(std::string("former")),
             "no former",
             {{"'a'", "yes a"}, {".RED.", "yes RED"}, {"IFCLABEL('b')", "yes b"}, {"IFCCOLOUR(.A.)", "yes A"}}},
            {"bytes",
             gets(Bytes{9, 9}),
             "no (9 9)",
             {{"\"00A\"", "yes (10)"}, {"IFCBLOB(\"0010203\")", "yes (1 2 3)"}}},
            {"Entity*", gets(pFormer), "no null", {{"#5", "yes #5"}, {"IFCINNER(#6)", "yes #6"}}},
            {"2D Point",
             gets(math::_2d::Point{{8, 9}}),
             "no (8 9)",
             {{"(1.,2.)", "yes (1 2)"}, {"IFCREALS((5.,6.))", "yes (5 6)"}}},
            {"2D Vector",
             gets(math::_2d::Vector{{8, 9}}),
             "no (8 9)",
             {{"(1.,2.)", "yes (1 2)"}, {"IFCREALS((5.,6.))", "yes (5 6)"}}},
            {"3D Point", gets(math::_3d::Point{{7, 8, 9}}), "no (7 8 9)", {{"(1.,2.,3.)", "yes (1 2 3)"}}},
            {"3D Vector", gets(math::_3d::Vector{{7, 8, 9}}), "no (7 8 9)", {{"(1.,2.,3.)", "yes (1 2 3)"}}},
            {"IfcSelectBase",
             gets(IfcSelectBase(std::string("former"))),
             "no former",
             {{"1.5", "yes "},
              {"2", "yes "},
              {"-3", "yes "},
              {"'a'", "yes IfcLabel"},
              {"#5", "yes #5"},
              {"IFCLENGTHMEASURE(3.)", "yes IfcLengthMeasure"},
              {"IFCNUMERIC(4)", "yes IfcNumeric"},
              {"IFCCOUNT(5)", "yes IfcCount"},
              {"IFCFLAG(.T.)", "yes IfcFlag"},
              {"IFCANSWER(.F.)", "yes IfcAnswer"},
              {"IFCLABEL('b')", "yes IfcLabel"},
              {"IFCCOLOUR(.A.)", "yes IfcColour"},
              {"IFCBLOB(\"0010203\")", "yes IfcBlob"}}},
        },
        {{"First", ".F."},
         {"Re", "1.5"},
         {"Nu", "2"},
         {"In", "-3"},
         {"Lo", ".U."},
         {"St", "'a'"},
         {"Gu", g_sGuidText},
         {"Bi", "\"00A\""},
         {"En", ".RED."},
         {"Th", "#5"},
         {"Se", "#5"},
         {"Se", "IFCLENGTHMEASURE(3.)"},
         {"Se", "IFCNUMERIC(4)"},
         {"Se", "IFCCOUNT(5)"},
         {"Se", "IFCINNER(IFCCOUNT(6))"},
         {"Se", "IFCINNER(#6)"},
         {"Se", "IFCFLAG(.T.)"},
         {"Se", "IFCANSWER(.F.)"},
         {"Se", "IFCLABEL('b')"},
         {"Se", "IFCCOLOUR(.A.)"},
         {"Se", "IFCBLOB(\"0010203\")"},
         {"Se", "IFCREALS((5.,6.))"},
         {"Se", "IFCLABEL($)"},
         {"Reals", "(1.,2.)"},
         {"NamedReals", "(1.,2.,3.)"},
         {"Reals", "(1.)"},
         {"Reals", "*"},
         {"Re", "*"}});
}

TEST(EntityListValueGet, ReadsTheItemTypeAlone) {
    const char* sMixed = "(IFCLENGTHMEASURE(3.),#5,IFCLABEL('b'),$,IFCREALS((5.,6.)))";
    vExpectFamily(
        {
            {"double",
             lists<double>(),
             "no ()",
             {{"(1.,2.)", "yes (1 2)"},
              {"IFCREALS((5.,6.))", "yes (5 6)"},
              {sMixed, "no (3 5 6)"},
              {"(IFCLENGTHMEASURE(1.),IFCNUMERIC(2))", "yes (1 2)"}}},
            {"long long", lists<long long>(), "no ()", {{"(1,-2)", "yes (1 -2)"}}},
            {"char", lists<char>(), "no ()"},
            {"unsigned char", lists<unsigned char>(), "no ()"},
            {"const char*", lists<const char*>(), "no ()", {{"('a','')", "yes (a )"}, {sMixed, "no (b)"}}},
            {"std::string", lists<std::string>(), "no ()", {{"('a','')", "yes (a )"}, {sMixed, "no (b)"}}},
            {"bytes", lists<Bytes>(), "no ()", {{"(\"00A\",\"0\")", "yes ((10) ())"}}},
            {"Entity*", lists<Entity*>(), "no ()", {{"(#5,#6,#5)", "yes (#5 #6 #5)"}, {sMixed, "no (#5)"}}},
            {"IfcSelectBase",
             lists<IfcSelectBase>(),
             "no ()",
             {{sMixed, "yes (IfcLengthMeasure #5 IfcLabel empty empty)"},
              {"(IFCLENGTHMEASURE(1.),IFCNUMERIC(2))", "yes (IfcLengthMeasure IfcNumeric)"}}},
            {"pairs of integers",
             lists<IfcArray<long long, 2>>(),
             "no ()",
             {{"((1,2),(3,4))", "yes ((1 2) (3 4))"}, {"(1,-2)", "yes ((1 -2))"}}},
            {"triples of integers", lists<IfcArray<long long, 3>>(), "no ()"},
            {"pairs of doubles",
             lists<IfcArray<double, 2>>(),
             "no ()",
             {{"((1.,2.),(3.,4.))", "yes ((1 2) (3 4))"},
              {"(1.,2.)", "yes ((1 2))"},
              {"IFCREALS((5.,6.))", "yes ((5 6))"},
              {sMixed, "no ((5 6))"}}},
            {"triples of doubles", lists<IfcArray<double, 3>>(), "no ()"},
            {"2D Points",
             lists<math::_2d::Point>(),
             "no ()",
             {{"((1.,2.),(3.,4.))", "yes ((1 2) (3 4))"},
              {"(1.,2.)", "yes ((1 2))"},
              {"IFCREALS((5.,6.))", "yes ((5 6))"},
              {sMixed, "no ((5 6))"}}},
            {"3D Points", lists<math::_3d::Point>(), "no ()"},
            {"rows of integers", lists<std::vector<long long>>(), "no ()", {{"((1,2),(3,4))", "yes ((1 2) (3 4))"}}},
            {"rows of doubles", lists<std::vector<double>>(), "no ()", {{"((1.,2.),(3.,4.))", "yes ((1 2) (3 4))"}}},
            {"rows of characters", lists<std::vector<char>>(), "no ()"},
            {"rows of entities", lists<std::vector<Entity*>>(), "no ()", {{"((#5),(#5,#6))", "yes ((#5) (#5 #6))"}}},
        },
        {{"Reals", "(1.,2.)"},
         {"Integers", "(1,-2)"},
         {"Texts", "('a','')"},
         {"Blobs", "(\"00A\",\"0\")"},
         {"Things", "(#5,#6,#5)"},
         {"Selects", sMixed},
         {"Selects", "(IFCLENGTHMEASURE(1.),IFCNUMERIC(2))"},
         {"Se", "IFCREALS((5.,6.))"},
         {"Re", "1.5"},
         {"Th", "#5"},
         {"Se", "#5"}});
}

// Rows have a table of their own: any other value type than a row raises an assertion there.
TEST(EntityListValueGet, ReadsRowsOfTheirType) {
    const struct {
        const char* sAttribute;
        const char* token;
        Read read;
        const char* sOutcome;
    } table[] = {
        {"RealRows", "((1.,2.),(3.,4.))", lists<std::vector<double>>(), "yes ((1 2) (3 4))"},
        {"RealRows", "((1.),(),(2.,3.))", lists<std::vector<double>>(), "yes ((1) () (2 3))"},
        {"RealRows", "((1.,2.),(3.,4.))", lists<std::vector<long long>>(), "no ()"},
        {"RealRows", "((1.,2.),(3.,4.))", lists<std::vector<char>>(), "no ()"},
        {"RealRows", "((1.,2.),(3.,4.))", lists<math::_2d::Point>(), "yes ((1 2) (3 4))"},
        {"RealRows", "((1.,2.,3.))", lists<math::_3d::Point>(), "yes ((1 2 3))"},
        {"RealRows", "((1.,2.),(3.))", lists<IfcArray<double, 2>>(), "no ((1 2))"},
        {"RealRows", "((1.,2.,3.))", lists<IfcArray<double, 3>>(), "yes ((1 2 3))"},
        {"IntegerRows", "((1,2),(3,4))", lists<IfcArray<long long, 2>>(), "yes ((1 2) (3 4))"},
        {"IntegerRows", "((1,2,3))", lists<IfcArray<long long, 3>>(), "yes ((1 2 3))"},
        {"IntegerRows", "((1,2),(3))", lists<std::vector<long long>>(), "yes ((1 2) (3))"},
        {"ThingRows", "((#5),(#5,#6))", lists<std::vector<Entity*>>(), "yes ((#5) (#5 #6))"},
    };
    CellSetter setter;
    AssertTrail trail;
    for (const auto& row : table) {
        SCOPED_TRACE(std::string(row.sAttribute) + ' ' + row.token);
        setter.vReadOne(row.sAttribute, row.token);
        EXPECT_EQ(row.read(setter, row.sAttribute), row.sOutcome);
    }
    EXPECT_EQ(trail.raised(), Trail{});
    EXPECT_EQ(lists<double>()(setter, "ThingRows"), "no ()");
    EXPECT_EQ(trail.raised(), Trail{"ListOfList::ListAdd<double,0>::operator (): ListOfList::ListAdd not implemented "
                                    "for this datatype"});
}

TEST(EntityFixedArrayGet, FillsTheArrayAndSaysNo) {
    vExpectFamily(
        {
            {"3 doubles",
             fixed<double, 3>(),
             "no (0 0 0)",
             {{"(1.,2.)", "no (1 2 0)"},
              {"(1.,2.,3.)", "no (1 2 3)"},
              {"(1.,2.,3.,4.)", "no (1 2 3)"},
              {"(IFCREALS((1.,2.)),IFCREALS((3.,4.)))", "no (1 2 3)"}}},
            {"2 doubles",
             fixed<double, 2>(),
             "no (0 0)",
             {{"(1.,2.)", "no (1 2)"},
              {"(1.,2.,3.)", "no (1 2)"},
              {"(1.,2.,3.,4.)", "no (1 2)"},
              {"(IFCREALS((1.,2.)),IFCREALS((3.,4.)))", "no (1 2)"}}},
            {"3 integers", fixed<long long, 3>(), "no (0 0 0)", {{"(1,-2,3)", "no (1 -2 3)"}}},
            {"2 integers", fixed<long long, 2>(), "no (0 0)", {{"(1,-2,3)", "no (1 -2)"}}},
            {"3 entities", fixed<Entity*, 3>(), "no (null null null)", {{"(#5,#6)", "no (#5 #6 null)"}}},
            {"2 entities", fixed<Entity*, 2>(), "no (null null)", {{"(#5,#6)", "no (#5 #6)"}}},
        },
        {{"Reals", "(1.,2.)"},
         {"Reals", "(1.,2.,3.)"},
         {"Reals", "(1.,2.,3.,4.)"},
         {"Selects", "(IFCREALS((1.,2.)),IFCREALS((3.,4.)))"},
         {"Integers", "(1,-2,3)"},
         {"Things", "(#5,#6)"},
         {"Re", "1.5"},
         {"Th", "#5"}});
}

// --- setting ---------------------------------------------------------------------------------------------------

using Store = std::function<bool(CellSetter&, const char*)>;

template <class T>
Store setOf(T value) {
    return [value](CellSetter& setter, const char* sAttribute) {
        return setter.entity->boValueSet(AttributeName(sAttribute), value, setter.data);
    };
}
template <class T>
Store setsList(std::vector<T> values) {
    return [values](CellSetter& setter, const char* sAttribute) {
        return setter.entity->boListValueSet(AttributeName(sAttribute), values, setter.data);
    };
}
template <class T>
Store pushOf(T value) {
    return [value](CellSetter& setter, const char* sAttribute) {
        return setter.entity->boListValuePushBack(AttributeName(sAttribute), value, setter.data);
    };
}

struct StoreRow {
    const char* sType;
    Store store;
    std::map<std::string, std::string> accepted = {};   // by attribute
};

// Each value in each attribute, which was undefined, then derived. A list may get to know its item type.
void vExpectStores(CellSetter& setter, const std::vector<StoreRow>& rows) {
    constexpr const char* g_attributes[] = {"First",    "Re",    "Nu",    "In",     "Lo",        "St",
                                            "Gu",       "Bi",    "En",    "Th",     "Se",        "Reals",
                                            "Integers", "Texts", "Blobs", "Things", "NamedReals"};
    AssertTrail trail;
    for (const StoreRow& row : rows) {
        for (const char* sAttribute : g_attributes)
            for (const char* token : {"$", "*"}) {
                SCOPED_TRACE(std::string(row.sType) + " to " + sAttribute + ' ' + token);
                setter.vReadOne(sAttribute, token);
                const std::string sBefore = setter.sShow(sAttribute);
                const auto found = row.accepted.find(sAttribute);
                const bool boAccepted = found != row.accepted.end();
                EXPECT_EQ(row.store(setter, sAttribute), boAccepted);
                const std::string sAfter = setter.sShow(sAttribute);
                if (boAccepted)
                    EXPECT_EQ(sAfter, found->second);
                else if (sBefore.find("List") == std::string::npos)
                    EXPECT_EQ(sAfter, sBefore);
                else
                    EXPECT_TRUE(sAfter.starts_with(token) && sAfter.ends_with(" null")) << sAfter;
                EXPECT_EQ(setter.entity->boIsUndefined(AttributeName(sAttribute)), !boAccepted && *token == '$');
                EXPECT_EQ(setter.entity->boIsDerived(AttributeName(sAttribute)), !boAccepted && *token == '*');
            }
        EXPECT_FALSE(row.store(setter, "NoSuchName"));
        Entity empty;
        Entity* pFilled = std::exchange(setter.entity, &empty);
        EXPECT_FALSE(row.store(setter, "Re")) << "an instance without cells";
        setter.entity = pFilled;
    }
    EXPECT_EQ(trail.raised(), Trail{});
}

TEST(EntityValueSet, StoresTheNaturalKindAlone) {
    CellSetter setter;
    Entity* p5 = setter.pEntity(5);
    const IfcSelectBase label(CellSetter::pType("IFCLABEL"), std::string("a"));
    vExpectStores(
        setter,
        {
            {"double", setOf(1.5), {{"Re", "Real 1.5"}, {"Nu", "Number 1.5"}}},
            {"long long", setOf(1LL << 40), {{"In", "Integer 1099511627776"}}},
            {"unsigned long long", setOf(1ULL)},
            {"bool", setOf(true), {{"First", "Boolean 1"}}},
            {"LogicalValue", setOf(LogicalValue::Unknown), {{"Lo", "Logical unknown"}}},
            {"Guid", setOf(Guid{1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}}), {{"Gu", "Guid 00000100800mG51WS82GeB"}}},
            {"const char*", setOf<const char*>("RED"), {{"St", "String 'RED'"}, {"En", "Enumeration 'RED'"}}},
            {"const char*, no enumerator", setOf<const char*>("BLUE"), {{"St", "String 'BLUE'"}}},
            {"const char*, null", setOf<const char*>(nullptr)},
            {"std::string", setOf(std::string("RED")), {{"St", "String 'RED'"}}},
            {"bytes", setOf(Bytes{1, 2}), {{"Bi", "Binary [01 02]"}}},
            {"no bytes", setOf(Bytes())},
            {"const Entity*", setOf<const Entity*>(p5), {{"Th", "Entity #5"}, {"Se", "Select 13:(#5)"}}},
            {"const Entity*, null", setOf<const Entity*>(nullptr), {{"Th", "Entity null"}}},
            {"2D Point", setOf(math::_2d::Point{{1, 2}}), {{"Reals", "List 1[1, 2]"}, {"NamedReals", "List 1[1, 2]"}}},
            {"2D Vector",
             setOf(math::_2d::Vector{{1, 2}}),
             {{"Reals", "List 1[1, 2]"}, {"NamedReals", "List 1[1, 2]"}}},
            {"3D Point",
             setOf(math::_3d::Point{{1, 2, 3}}),
             {{"Reals", "List 1[1, 2, 3]"}, {"NamedReals", "List 1[1, 2, 3]"}}},
            {"3D Vector",
             setOf(math::_3d::Vector{{1, 2, 3}}),
             {{"Reals", "List 1[1, 2, 3]"}, {"NamedReals", "List 1[1, 2, 3]"}}},
            {"IfcSelectBase", setOf(label), {{"Se", "Select 5:IFCLABEL(String 'a')"}}},
            {"IfcSelectBase, a list",
             setOf(IfcSelectBase(CellSetter::pType("IFCREALS"), std::vector{1.5})),
             {{"Se", "Select 11:IFCREALS(List 1[1.5])"}}},
            {"IfcSelectBase, empty", setOf(IfcSelectBase())},
        });
}

TEST(EntityValueSet, StoresTheEndOfATextToo) {
    CellSetter setter;
    EXPECT_TRUE(setOf<const char*>("it's")(setter, "St"));
    EXPECT_TRUE(setOf<const char*>("GREEN")(setter, "En")) << "stands right behind it in memory";
    EXPECT_EQ(setter.sShow("St"), "String 'it's'");
}

TEST(EntityValueSet, RefusesTheNullGuid) {
    CellSetter setter;
    AssertTrail trail;
    setter.vReadOne("Gu", g_sGuidText);
    EXPECT_FALSE(setOf(Guid())(setter, "Gu"));
    EXPECT_EQ(trail.raised(), Trail{"oxa::ifc::AttributeGuid::boValueSet: Not allowed to set null guid"});
    EXPECT_EQ(setter.sShow("Gu"), "Guid 0$aBcDeFgHiJkLmNoPqRsT");
    setter.vReadOne("Gu", "$");
    EXPECT_FALSE(setOf(Guid())(setter, "Gu"));
    EXPECT_EQ(setter.sShow("Gu"), "$ Guid 0");
    static_cast<void>(trail.raised());
    EXPECT_FALSE(setOf(Guid())(setter, "St"));
    EXPECT_EQ(trail.raised(), Trail{}) << "only where there is a GUID";
}

TEST(EntityValueSet, ChecksTheKindOfAReferenceAlone) {
    CellSetter setter;
    Entity* pOther = setter.data.pEntityCreate(def::schema::ObjectName("IFCEVERYTHING"));
    EXPECT_TRUE(setOf<const Entity*>(pOther)(setter, "Th")) << "not of the attribute's type";
    EXPECT_EQ(setter.cell<AttributeEntity>("Th").m_value, pOther);
    EXPECT_TRUE(setOf<const Entity*>(setter.pEntity(9))(setter, "Th")) << "not even filled";
}

TEST(EntityValueSet, AssertsForAListOfNoKnownItems) {
    CellSetter setter;
    AssertTrail trail;
    const Trail unknown = {
        "oxa::ifc::AttributeListValueBase::boValueSet: boValueSet not implemented for this list item type."};
    EXPECT_FALSE(setOf(1.5)(setter, "Flags"));
    EXPECT_EQ(trail.raised(), unknown);
    EXPECT_FALSE(setsList(std::vector{1.5})(setter, "Flags"));
    EXPECT_EQ(trail.raised(), unknown);
    EXPECT_EQ(setter.sShow("Flags"), "$ List 0 null");
    EXPECT_FALSE(pushOf(1.5)(setter, "Flags"));
    EXPECT_EQ(trail.raised(), Trail{"oxa::ifc::AttributeListValueBase::boPushBackValue: boPushBackValue not "
                                    "implemented for this list type"});
}

TEST(EntityListValueSet, StoresInListsAlone) {
    CellSetter setter;
    Entity* p5 = setter.pEntity(5);
    const IfcSelectBase count(CellSetter::pType("IFCCOUNT"), 1LL);
    vExpectStores(
        setter,
        {
            {"double",
             setsList(std::vector{1.5, 2.0}),
             {{"Reals", "List 1[1.5, 2]"}, {"NamedReals", "List 1[1.5, 2]"}}},
            {"no doubles", setsList(std::vector<double>()), {{"Reals", "List 1[]"}, {"NamedReals", "List 1[]"}}},
            {"long long", setsList(std::vector{1LL}), {{"Integers", "List 3[1]"}}},
            {"char", setsList(std::vector{'a'})},
            {"unsigned char", setsList(Bytes{1, 2}), {{"Bi", "Binary [01 02]"}}},
            {"no unsigned char", setsList(Bytes())},
            {"std::string", setsList(std::vector<std::string>{"a"}), {{"Texts", "List 5['a']"}}},
            {"const char*", setsList(std::vector<const char*>{"a"})},
            {"Entity*", setsList(std::vector<Entity*>{p5}), {{"Things", "List 13[#5]"}}},
            {"const Entity*", setsList(std::vector<const Entity*>{p5}), {{"Things", "List 13[#5]"}}},
            {"no Entity*", setsList(std::vector<Entity*>()), {{"Things", "List 13 null"}}},
            {"IfcSelectBase", setsList(std::vector{count}), {{"Things", "List 13[null]"}}},
            {"pairs of integers", setsList(std::vector<IfcArray<long long, 2>>(1))},
            {"triples of integers", setsList(std::vector<IfcArray<long long, 3>>(1))},
            {"pairs of doubles", setsList(std::vector<IfcArray<double, 2>>(1))},
            {"triples of doubles", setsList(std::vector<IfcArray<double, 3>>(1))},
            {"2D Points", setsList(std::vector<math::_2d::Point>(1))},
            {"3D Points", setsList(std::vector<math::_3d::Point>(1))},
            {"bytes", setsList(std::vector<Bytes>{{1}}), {{"Blobs", "List 7[Binary [01]]"}}},
            {"rows of characters", setsList(std::vector<std::vector<char>>(1))},
            {"rows of integers", setsList(std::vector<std::vector<long long>>(1))},
            {"rows of doubles", setsList(std::vector<std::vector<double>>(1))},
            {"rows of strings", setsList(std::vector<std::vector<std::string>>(1))},
            {"rows of entities", setsList(std::vector<std::vector<const Entity*>>(1))},
        });
}

TEST(EntityListValueSet, StoresRows) {
    CellSetter setter;
    Entity* p5 = setter.pEntity(5);
    const struct {
        const char* sAttribute;
        Store store;
        const char* sCell;
    } table[] = {
        {"RealRows", setsList(std::vector<IfcArray<double, 2>>{{{1, 2}}}), "List 11[List 1[1, 2]]"},
        {"RealRows", setsList(std::vector<IfcArray<double, 3>>{{{1, 2, 3}}}), "List 11[List 1[1, 2, 3]]"},
        {"RealRows", setsList(std::vector<math::_2d::Point>{{{1, 2}}}), "List 11[List 1[1, 2]]"},
        {"RealRows", setsList(std::vector<math::_3d::Point>{{{1, 2, 3}}}), "List 11[List 1[1, 2, 3]]"},
        {"RealRows", setsList(std::vector<std::vector<double>>{{1}, {2, 3}}), "List 11[List 1[1], List 1[2, 3]]"},
        {"RealRows", setsList(std::vector<std::vector<double>>()), "List 11[]"},
        {"IntegerRows", setsList(std::vector<IfcArray<long long, 3>>{{{1, 2, 3}}}), "List 11[List 3[1, 2, 3]]"},
        {"IntegerRows", setsList(std::vector<std::vector<long long>>{{1}}), "List 11[List 3[1]]"},
        {"ThingRows", setsList(std::vector<std::vector<const Entity*>>{{p5}, {}}),
         "List 11[List 13[#5], List 13 null]"},
        {"Selects", setsList(std::vector<IfcSelectBase>{IfcSelectBase(p5)}), "List 9[Select 13:(#5)]"},
        {"ThingSelects", setsList(std::vector<IfcSelectBase>{IfcSelectBase(p5)}), "List 13[#5]"},
    };
    AssertTrail trail;
    for (const auto& row : table) {
        SCOPED_TRACE(std::string(row.sAttribute) + ' ' + row.sCell);
        setter.vReadOne(row.sAttribute, "$");
        EXPECT_TRUE(row.store(setter, row.sAttribute));
        EXPECT_EQ(setter.sShow(row.sAttribute), row.sCell);
    }
    EXPECT_FALSE(setsList(std::vector<IfcArray<long long, 2>>{{{1, 2}}})(setter, "IntegerRows"));
    EXPECT_EQ(trail.raised(), Trail{});
}

TEST(EntityListPush, AppendsToListsAlone) {
    CellSetter setter;
    Entity* p5 = setter.pEntity(5);
    vExpectStores(setter, {
                              {"double", pushOf(1.5), {{"Reals", "List 1[1.5]"}, {"NamedReals", "List 1[1.5]"}}},
                              {"long long", pushOf(1LL), {{"Integers", "List 3[1]"}}},
                              {"std::string", pushOf(std::string("a")), {{"Texts", "List 5['a']"}}},
                              {"bytes", pushOf(Bytes{1}), {{"Blobs", "List 7[Binary [01]]"}}},
                              {"char", pushOf('a')},
                              {"pair of integers", pushOf(IfcArray<long long, 2>{})},
                              {"triple of integers", pushOf(IfcArray<long long, 3>{})},
                              {"pair of doubles", pushOf(IfcArray<double, 2>{})},
                              {"triple of doubles", pushOf(IfcArray<double, 3>{})},
                              {"3D Point", pushOf(math::_3d::Point{})},
                              {"row of characters", pushOf(std::vector{'a'})},
                              {"row of integers", pushOf(std::vector{1LL})},
                              {"row of doubles", pushOf(std::vector{1.0})},
                              {"row of entities", pushOf(std::vector<Entity*>{p5})},
                          });
    setter.vReadOne("ThingRows", "((#5))");
    EXPECT_TRUE(pushOf(std::vector<Entity*>{p5, p5})(setter, "ThingRows"));
    EXPECT_EQ(setter.sShow("ThingRows"), "List 11[List 13[#5], List 13[#5, #5]]");
    setter.vReadOne("Selects", "$");
    EXPECT_TRUE(pushOf(IfcSelectBase(p5))(setter, "Selects"));
    EXPECT_EQ(setter.sShow("Selects"), "List 9[Select 13:(#5)]");
}

TEST(EntityReferences, AreAppendedAndRemoved) {
    CellSetter setter;
    Entity* p5 = setter.pEntity(5);
    Entity* p6 = setter.pEntity(6);
    Entity* p7 = setter.pEntity(7);
    const AttributeName things("Things");
    const auto boPush = [&](const char* sAttribute, const Entity* pEntity) {
        return setter.entity->boValuePushBack(AttributeName(sAttribute), pEntity, setter.data);
    };
    const auto boRemove = [&](const char* sAttribute, const Entity* pEntity) {
        return setter.entity->boValueRemove(AttributeName(sAttribute), pEntity, setter.data);
    };
    EXPECT_FALSE(boRemove("Things", p5)) << "a list without item type";
    EXPECT_TRUE(setter.entity->boIsUndefined(things));
    for (Entity* pEntity : {p5, p6, p5, p7}) EXPECT_TRUE(boPush("Things", pEntity));
    EXPECT_EQ(setter.sShow("Things"), "List 13[#5, #6, #5, #7]");

    EXPECT_FALSE(boRemove("Things", setter.pEntity(8)));
    EXPECT_TRUE(boRemove("Things", p5)) << "the head takes over the second's value";
    EXPECT_EQ(setter.sShow("Things"), "List 13[#6, #5, #7]");
    EXPECT_TRUE(boRemove("Things", p7)) << "the last";
    const EntityList* pHead = setter.cell<AttributeList>("Things").pEntities();
    EXPECT_EQ(pHead->tail.load(), pHead->next.load());
    EXPECT_TRUE(boRemove("Things", p6));
    EXPECT_EQ(setter.sShow("Things"), "List 13[#5]");
    EXPECT_EQ(pHead->tail.load(), nullptr);
    EXPECT_TRUE(boPush("Things", p7)) << "there is no stale end";
    EXPECT_EQ(setter.sShow("Things"), "List 13[#5, #7]");

    EXPECT_TRUE(setter.entity->boUndefinedSet(things, true));
    EXPECT_TRUE(boRemove("Things", p7));
    EXPECT_TRUE(boRemove("Things", p5));
    EXPECT_EQ(setter.sShow("Things"), "$ List 13 null") << "the flags stay as they were";
    EXPECT_FALSE(boRemove("Things", p5));

    AssertTrail trail;
    for (const char* sAttribute : {"Th", "Se", "Re", "NoSuchName"}) {
        SCOPED_TRACE(sAttribute);
        setter.vReadOne("Th", "#5");
        EXPECT_FALSE(boPush(sAttribute, p5));
        EXPECT_FALSE(boRemove(sAttribute, p5));
        EXPECT_EQ(setter.sShow("Th"), "Entity #5");
    }
    setter.vReadOne("Selects", "(#5)");
    EXPECT_FALSE(boRemove("Selects", p5)) << "only lists of references";
    EXPECT_EQ(trail.raised(), Trail{});
}

TEST(EntityFixedArraySet, IsNotToBeUsed) {
    CellSetter setter;
    const IfcArray<double, 3> value{{1, 2, 3}};
    const auto boSet = [&] { return setter.entity->boFixedArrayValueSet(AttributeName("Reals"), value, setter.data); };
#ifdef NDEBUG
    EXPECT_TRUE(boSet());
    EXPECT_EQ(setter.sShow("Reals"), "List 1[1, 2, 3]");
#else
    EXPECT_DEATH(boSet(), "boFixedArrayValueSet");
#endif
}

// What was set is read back, through the model's own text.
TEST(EntityValues, AreWrittenAsIfTheyHadBeenRead) {
    CellSetter setter;
    Entity* pThing = setter.data.pEntityCreate(def::schema::ObjectName("IFCTHING"));
    EXPECT_TRUE(setOf(true)(setter, "First"));
    EXPECT_TRUE(setOf(1.5)(setter, "Re"));
    EXPECT_TRUE(setOf(std::string("it's"))(setter, "St"));
    EXPECT_TRUE(setOf<const char*>("GREEN")(setter, "En"));
    EXPECT_TRUE(setOf(IfcSelectBase(CellSetter::pType("IFCLABEL"), std::string("a")))(setter, "Se"));
    EXPECT_TRUE(setsList(std::vector{1.0, 2.0})(setter, "Reals"));
    EXPECT_TRUE(setsList(std::vector<std::vector<double>>{{1}, {}})(setter, "RealRows"));
    EXPECT_TRUE(setsList(std::vector<IfcSelectBase>{IfcSelectBase(CellSetter::pType("IFCCOUNT"), 7LL),
                                                    IfcSelectBase()})(setter, "Selects"));
    setter.data.entityAdd(setter.entity);
    setter.data.entityAdd(pThing);
    const std::string sLine = setter.entity->sWriteLine(setter.data);
    EXPECT_EQ(sLine.substr(sLine.find('=')),
              "=IFCEVERYTHING(.T.,1.5,$,$,$,'it''s',$,$,.GREEN.,IFCLABEL('a'),$,(1.,2.),$,$,$,$,"
              "(IFCCOUNT(7),),$,$,((1.),()),$,$,$,$,$,$);");
}

// An attribute to which the schema gives no type has no class: the question for it fails.
TEST(EntityValues, ThrowForAnAttributeWithoutAType) {
    const auto pSchema = pSchemaWithSecondOf({});
    StatementReader reader(*pSchema);
    Entity* pEntity = reader.pRead("#1=IFCFAULTY(1.,2.,3.);");
    ASSERT_NE(pEntity, nullptr);
    double value = -1;
    std::vector<double> values = {1};
    const AttributeName second("Second");
    EXPECT_TRUE(pEntity->boValueGet(AttributeName("First"), value));
    EXPECT_THROW(pEntity->boValueGet(second, value), oxa::exception);
    EXPECT_THROW(pEntity->boListValueGet(second, values), oxa::exception);
    IfcSelectBase select;
    EXPECT_THROW(pEntity->boValueGet(second, select), oxa::exception);
    EXPECT_THROW(pEntity->boValueSet(second, value, reader.data), oxa::exception);
    EXPECT_THROW(pEntity->boListValueSet(second, values, reader.data), oxa::exception);
    EXPECT_THROW(pEntity->boListValuePushBack(second, value, reader.data), oxa::exception);
    EXPECT_THROW(pEntity->boValueRemove(second, pEntity, reader.data), oxa::exception);
    EXPECT_EQ(value, 1.0);
}

}   // namespace
}   // namespace oxa::ifc
