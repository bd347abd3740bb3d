// SPDX-License-Identifier: Apache-2.0
// Walking the values of cells: which types of value are met in which cells, in which order, and where a walk ends.
#include "Format/Ifc/Cells/CellWalk.h"

#include <gtest/gtest.h>

#include <map>

#include "Format/Ifc/CellSetter.h"
#include "platform/Utilities.h"

namespace oxa::ifc {
namespace {

using Bytes = std::vector<unsigned char>;
using BytesView = std::pair<unsigned char*, std::size_t>;

constexpr char g_sUnknown[] =
    "oxa::ifc::AttributeListValueBase::boForEach: boForEach not implemented for this item type";
constexpr char g_sGuid[] = "'0$aBcDeFgHiJkLmNoPqRsT'";

std::string sRows(const char* sType) {
    return std::string("ListOfList::ListAdd<") + sType +
           ",0>::operator (): ListOfList::ListAdd not implemented for this datatype";
}

// One visited value as text.
std::string sNumber(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", value);
    return text;
}
std::string sItem(StatementReader&, double value) { return sNumber(value); }
std::string sItem(StatementReader&, long long iValue) { return std::to_string(iValue); }
std::string sItem(StatementReader&, int iValue) { return std::to_string(iValue); }
std::string sItem(StatementReader&, unsigned long long iValue) { return std::to_string(iValue); }
std::string sItem(StatementReader&, char c) { return std::string(1, c); }
std::string sItem(StatementReader&, unsigned char c) { return std::to_string(c); }
std::string sItem(StatementReader&, bool boValue) { return boValue ? "T" : "F"; }
std::string sItem(StatementReader&, char* pText) { return pText ? pText : "null"; }
std::string sItem(StatementReader&, const std::string& sText) { return sText; }
std::string sItem(StatementReader&, const Guid& guid) { return IfcGuid::toIfcGuid(guid); }
std::string sItem(StatementReader&, LogicalValue value) { return std::to_string(static_cast<int>(value)); }
std::string sItem(StatementReader& reader, Entity* pEntity) { return reader.sEntity(pEntity); }
std::string sItem(StatementReader&, const AttributeSelect& cell) {
    return "select " + std::to_string(static_cast<int>(cell.m_eType.load()));
}
std::string sItem(StatementReader&, const Bytes& bytes) { return std::to_string(bytes.size()) + " bytes"; }
std::string sItem(StatementReader&, const BytesView& view) {
    return std::to_string(view.second) + " bytes at " + (view.second ? std::to_string(view.first[0]) : "the end");
}
template <std::size_t N, class Tag>
std::string sItem(StatementReader&, const math::Coordinates<N, Tag>& value) {
    std::string sText = "<";
    for (const double x : value.m_values) sText += ' ' + sNumber(x);
    return sText + " >";
}
template <class T, std::size_t N>
std::string sItem(StatementReader&, const IfcArray<T, N>& value) {
    std::string sText = "<";
    for (const T x : value.m_values) sText += ' ' + sNumber(static_cast<double>(x));
    return sText + " >";
}
template <class T>
std::string sItem(StatementReader& reader, const std::vector<T>& row) {
    std::string sText = "(";
    for (const T& item : row) sText += (sText.size() > 1 ? " " : "") + sItem(reader, item);
    return sText + ')';
}

// The answer of a walk, and what it met: "yes: 1 2". iStop: the call that answers false, from 1; 0: none.
template <class T, class Walk>
std::string sWalk(StatementReader& reader, std::size_t iStop, Walk&& walk) {
    std::string sText;
    std::size_t iCalls = 0;
    const bool boAll = walk([&](T& item) {
        sText += ' ' + sItem(reader, item);
        return ++iCalls != iStop;
    });
    return (boAll ? "yes:" : "no:") + sText;
}
template <class T>
std::string sWalkCell(CellSetter& setter, const char* sAttribute, bool boSingle, bool boList, std::size_t iStop = 0) {
    return sWalk<T>(setter, iStop, [&](std::function<bool(T&)> function) {
        return AttributeBase::boForEach<T>(setter.cell<AttributeBase>(sAttribute), setter.attribute(sAttribute),
                                           std::move(function), boSingle, boList);
    });
}
template <class T>
std::string sWalkList(CellSetter& setter, const char* sAttribute, std::size_t iStop = 0) {
    return sWalk<T>(setter, iStop, [&](std::function<bool(T&)> function) {
        return setter.cell<AttributeList>(sAttribute).boForEach<T>(setter.attribute(sAttribute), std::move(function));
    });
}

using Walker = std::function<std::string(CellSetter&, const char*)>;
using Found = std::map<std::string, std::string>;   // attribute, outcome

// --- lists -----------------------------------------------------------------------------------------------------

struct ListTarget {
    const char* sAttribute;
    const char* token;
    const char* sOutcome;   // for a type of value that the row does not name
};
const ListTarget g_lists[] = {
    {"Reals", "(1.5,2.)", "no:"},
    {"NamedReals", "(1.,2.,3.)", "no:"},
    {"Integers", "(1,-2)", "no:"},
    {"Texts", "('a','')", "no:"},
    {"Blobs", "(\"0AB\",\"0\")", "no:"},
    {"Things", "(#5,#6)", "no:"},
    {"ThingSelects", "(#5)", "no:"},
    {"Selects", "(IFCLENGTHMEASURE(1.5),#5,IFCREALS((2.,3.)),IFCINNER(IFCCOUNT(7)),$,IFCLABEL('a'))", "no:"},
    {"RealRows", "((1.,2.),(3.,4.))", "no:"},
    {"IntegerRows", "((1,2,3))", "no:"},
    {"ThingRows", "((#5),())", "no:"},
};

struct ListRow {
    const char* sType;
    Walker walk;
    bool boScalar;   // no row of a list of lists
    Found found = {};
};

template <class T>
Walker walks() {
    return [](CellSetter& setter, const char* sAttribute) { return sWalkList<T>(setter, sAttribute); };
}

TEST(AttributeListWalk, MeetsItemsOfTheirType) {
    const ListRow table[] = {
        {"int", walks<int>(), true},
        {"char", walks<char>(), true},
        {"unsigned char", walks<unsigned char>(), true},
        {"long long", walks<long long>(), true, {{"Integers", "yes: 1 -2"}, {"Selects", "no: 7"}}},
        {"unsigned long long", walks<unsigned long long>(), true},
        {"double",
         walks<double>(),
         true,
         {{"Reals", "yes: 1.5 2"}, {"NamedReals", "yes: 1 2 3"}, {"Selects", "no: 1.5 2 3"}}},
        {"bool", walks<bool>(), true},
        {"char *", walks<char*>(), true, {{"Texts", "yes: a "}, {"Selects", "no: a"}}},
        {"std::string", walks<std::string>(), true},
        {"std::vector<unsigned char>", walks<Bytes>(), true, {{"Blobs", "yes: 1 bytes 0 bytes"}}},
        {"std::pair<unsigned char *,std::size_t>",
         walks<BytesView>(),
         true,
         {{"Blobs", "yes: 1 bytes at 171 0 bytes at the end"}}},
        {"Guid", walks<Guid>(), true},
        {"LogicalValue", walks<LogicalValue>(), true},
        {"AttributeSelect",
         walks<AttributeSelect>(),
         true,
         {{"Selects", "yes: select 1 select 13 select 11 select 9 select 0 select 5"}}},
        {"Entity *",
         walks<Entity*>(),
         true,
         {{"Things", "yes: #5 #6"}, {"ThingSelects", "yes: #5"}, {"Selects", "no: #5"}}},
        // a whole list is one value; in a list of lists, a row is
        {"2D Point",
         walks<math::_2d::Point>(),
         false,
         {{"Reals", "yes: < 1.5 2 >"}, {"Selects", "no: < 2 3 >"}, {"RealRows", "yes: < 1 2 > < 3 4 >"}}},
        {"2D Vector",
         walks<math::_2d::Vector>(),
         false,
         {{"Reals", "yes: < 1.5 2 >"}, {"Selects", "no: < 2 3 >"}, {"RealRows", "yes: < 1 2 > < 3 4 >"}}},
        {"3D Point", walks<math::_3d::Point>(), false, {{"NamedReals", "yes: < 1 2 3 >"}}},
        {"3D Vector", walks<math::_3d::Vector>(), false, {{"NamedReals", "yes: < 1 2 3 >"}}},
        {"IfcArray<double,2>",
         walks<IfcArray<double, 2>>(),
         false,
         {{"Reals", "yes: < 1.5 2 >"}, {"Selects", "no: < 2 3 >"}, {"RealRows", "yes: < 1 2 > < 3 4 >"}}},
        {"IfcArray<double,3>", walks<IfcArray<double, 3>>(), false, {{"NamedReals", "yes: < 1 2 3 >"}}},
        {"IfcArray<long long,2>", walks<IfcArray<long long, 2>>(), false, {{"Integers", "yes: < 1 -2 >"}}},
        {"IfcArray<long long,3>", walks<IfcArray<long long, 3>>(), false, {{"IntegerRows", "yes: < 1 2 3 >"}}},
        {"vector of char", walks<std::vector<char>>(), false},
        {"vector of double", walks<std::vector<double>>(), false, {{"RealRows", "yes: (1 2) (3 4)"}}},
        {"vector of long long", walks<std::vector<long long>>(), false, {{"IntegerRows", "yes: (1 2 3)"}}},
        {"vector of Entity *", walks<std::vector<Entity*>>(), false, {{"ThingRows", "yes: (#5) ()"}}},
    };
    CellSetter setter;
    for (const ListRow& row : table)
        for (const ListTarget& list : g_lists) {
            SCOPED_TRACE(std::string(row.sType) + " in " + list.sAttribute);
            setter.vReadOne(list.sAttribute, list.token);
            AssertTrail trail;
            const auto found = row.found.find(list.sAttribute);
            const bool boRows = std::string_view(list.sAttribute).ends_with("Rows");
            EXPECT_EQ(row.walk(setter, list.sAttribute), found == row.found.end() ? list.sOutcome : found->second);
            EXPECT_EQ(trail.raised(), boRows && row.boScalar ? Trail{sRows(row.sType)} : Trail{});
        }
}

struct OneRow {
    const char* sName;
    const char* sAttribute;
    const char* token;
    Walker walk;
    const char* sOutcome;
};

TEST(AttributeListWalk, AnswersForListsWithoutItems) {
    const OneRow table[] = {
        {"no reals", "Reals", "()", walks<double>(), "yes:"},
        {"no reals, asked for integers", "Reals", "()", walks<long long>(), "no:"},
        {"no reals are no point", "Reals", "()", walks<math::_2d::Point>(), "no:"},
        {"no entities", "Things", "()", walks<Entity*>(), "yes:"},
        {"no binaries", "Blobs", "()", walks<Bytes>(), "yes:"},
        {"no binaries, asked for reals", "Blobs", "()", walks<double>(), "yes:"},
        {"a binary, asked for reals", "Blobs", "(\"0AB\")", walks<double>(), "no:"},
        {"no selects", "Selects", "()", walks<double>(), "yes:"},
        {"no rows", "RealRows", "()", walks<std::vector<double>>(), "yes:"},
        {"one real too few", "NamedReals", "(1.)", walks<math::_2d::Point>(), "no:"},
        {"one too many", "NamedReals", "(1.,2.,3.)", walks<math::_2d::Point>(), "no:"},
        {"one integer too few", "Integers", "(1,2)", walks<IfcArray<long long, 3>>(), "no:"},
        {"rows of two lengths", "RealRows", "((1.,2.),(3.),(4.,5.))", walks<math::_2d::Point>(), "no: < 1 2 >"},
        {"rows of reals, asked for integers", "RealRows", "((1.,2.))", walks<std::vector<long long>>(), "no:"},
        {"rows of rows", "Cube", "(((1.)))", walks<std::vector<double>>(), "no:"},
        {"selects that all fit", "Selects", "(IFCLENGTHMEASURE(1.5),IFCREALS((2.)),IFCNUMERIC(3))", walks<double>(),
         "yes: 1.5 2 3"},
        {"an enumerator and a text", "Selects", "(IFCCOLOUR(.RED.),IFCLABEL('a'))", walks<char*>(), "yes: RED a"},
        {"a boolean", "Selects", "(IFCFLAG(.T.))", walks<bool>(), "yes: T"},
        {"a logical", "Selects", "(IFCANSWER(.U.))", walks<LogicalValue>(), "yes: -1"},
        {"a binary", "Selects", "(IFCBLOB(\"0AB\"))", walks<Bytes>(), "yes: 1 bytes"},
    };
    CellSetter setter;
    for (const OneRow& row : table) {
        SCOPED_TRACE(row.sName);
        setter.vReadOne(row.sAttribute, row.token);
        AssertTrail trail;
        EXPECT_EQ(row.walk(setter, row.sAttribute), row.sOutcome);
        EXPECT_EQ(trail.raised(), std::string_view(row.sAttribute) == "Cube" ? Trail{sRows("double")} : Trail{});
    }
}

// As an item type that was settled before the first item came leaves a list.
TEST(AttributeListWalk, AnswersForListsThatWereNeverFilled) {
    const struct {
        const char* sName;
        AttributeType eItemType;
        Walker walk;
        const char* sOutcome;
    } table[] = {
        {"reals", AttributeType::Real, walks<double>(), "yes:"},
        {"reals, as a point", AttributeType::Real, walks<math::_2d::Point>(), "no:"},
        {"integers", AttributeType::Integer, walks<long long>(), "yes:"},
        {"texts", AttributeType::String, walks<char*>(), "yes:"},
        {"binaries", AttributeType::Binary, walks<Bytes>(), "yes:"},
        {"binaries, asked for reals", AttributeType::Binary, walks<double>(), "yes:"},
        {"selects", AttributeType::Select, walks<AttributeSelect>(), "yes:"},
        {"selects, for what they hold", AttributeType::Select, walks<double>(), "yes:"},
        {"rows", AttributeType::List, walks<std::vector<double>>(), "yes:"},
        {"rows, as points", AttributeType::List, walks<math::_2d::Point>(), "yes:"},
        {"entities", AttributeType::Entity, walks<Entity*>(), "yes:"},
    };
    CellSetter setter;
    AssertTrail trail;
    auto& list = setter.cell<AttributeList>("Reals");
    for (const auto& row : table) {
        SCOPED_TRACE(row.sName);
        list.m_eItemType = row.eItemType;
        EXPECT_EQ(row.walk(setter, "Reals"), row.sOutcome);
    }
    EXPECT_EQ(trail.raised(), Trail{});
}

// The flag of the cell tells a GUID from a text, whatever the attribute says.
TEST(AttributeListWalk, TellsGuidsInSelectsByTheirFlag) {
    CellSetter setter;
    setter.vReadOne("Selects", "(IFCLABEL('a'))");
    const auto& list = setter.cell<AttributeList>("Selects");
    const auto sWalkAsGuids = [&]<class T>(std::type_identity<T>) {
        return sWalk<T>(setter, 0, [&](std::function<bool(T&)> function) {
            return list.boForEach<T>(setter.attribute("Gu"), std::move(function));
        });
    };
    EXPECT_EQ(sWalkAsGuids(std::type_identity<char*>()), "yes: a");
    EXPECT_EQ(sWalkAsGuids(std::type_identity<Guid>()), "no:");

    AttributeGuid guid;
    (*list.pArray<AttributeSelect>())[0].m_pValue = &guid;
    EXPECT_EQ(sWalkAsGuids(std::type_identity<char*>()), "no:");
    EXPECT_EQ(sWalkAsGuids(std::type_identity<Guid>()), "yes: 0000000000000000000000");
}

TEST(AttributeListWalk, RefusesItemTypesThatItDoesNotKnow) {
    CellSetter setter;
    AssertTrail trail;
    EXPECT_EQ(sWalkList<double>(setter, "Flags"), "no:");
    EXPECT_EQ(trail.raised(), Trail{g_sUnknown}) << "none yet";
    setter.vReadOne("SetRows", "((#5))");
    EXPECT_EQ(sWalkList<Entity*>(setter, "SetRows"), "no:");
    EXPECT_EQ(trail.raised(), Trail{g_sUnknown}) << "a list of sets";
    EXPECT_EQ(sWalkList<std::vector<Entity*>>(setter, "SetRows"), "no:");
    EXPECT_EQ(trail.raised(), Trail{g_sUnknown});
    Assert::setEnabled(false);
    EXPECT_EQ(sWalkList<Entity*>(setter, "SetRows"), "no:");
    EXPECT_EQ(trail.raised(), Trail{}) << "assertions are off";
}

TEST(AttributeListWalk, StopsWhereTheFunctionSaysSo) {
    const struct {
        const char* sAttribute;
        const char* token;
        std::function<std::string(CellSetter&, const char*, std::size_t)> walk;
        const char* sAtFirst;
        const char* sAtSecond;
        const char* sAtThird;
    } table[] = {
        {"Reals", "(1.,2.,3.)", sWalkList<double>, "no: 1", "no: 1 2", "no: 1 2 3"},
        {"Integers", "(1,2,3)", sWalkList<long long>, "no: 1", "no: 1 2", "no: 1 2 3"},
        {"Texts", "('a','b','c')", sWalkList<char*>, "no: a", "no: a b", "no: a b c"},
        {"Blobs", "(\"0AB\",\"0\",\"0AB\")", sWalkList<Bytes>, "no: 1 bytes", "no: 1 bytes 0 bytes",
         "no: 1 bytes 0 bytes 1 bytes"},
        {"Things", "(#5,#6,#7)", sWalkList<Entity*>, "no: #5", "no: #5 #6", "no: #5 #6 #7"},
        {"Selects", "(IFCLABEL('a'),IFCREALS((1.,2.)),IFCLENGTHMEASURE(3.))", sWalkList<double>, "no: 1", "no: 1 2",
         "no: 1 2 3"},
        {"Selects", "(#5,$,IFCLABEL('a'))", sWalkList<AttributeSelect>, "no: select 13", "no: select 13 select 0",
         "no: select 13 select 0 select 5"},
        {"RealRows", "((1.,2.),(3.,4.),(5.,6.))", sWalkList<std::vector<double>>, "no: (1 2)", "no: (1 2) (3 4)",
         "no: (1 2) (3 4) (5 6)"},
        {"RealRows", "((1.,2.),(3.,4.),(5.,6.))", sWalkList<math::_2d::Point>, "no: < 1 2 >", "no: < 1 2 > < 3 4 >",
         "no: < 1 2 > < 3 4 > < 5 6 >"},
    };
    CellSetter setter;
    for (const auto& row : table) {
        SCOPED_TRACE(row.sAttribute);
        setter.vReadOne(row.sAttribute, row.token);
        EXPECT_EQ(row.walk(setter, row.sAttribute, 1), row.sAtFirst);
        EXPECT_EQ(row.walk(setter, row.sAttribute, 2), row.sAtSecond);
        EXPECT_EQ(row.walk(setter, row.sAttribute, 3), row.sAtThird);
    }
}

TEST(AttributeListWalk, HandsOutTheSelectItself) {
    CellSetter setter;
    setter.vReadOne("Selects", "(#5,$)");
    auto& list = setter.cell<AttributeList>("Selects");
    std::vector<AttributeSelect*> met;
    EXPECT_TRUE(list.boForEach<AttributeSelect>(setter.attribute("Selects"), [&](AttributeSelect& cell) {
        met.push_back(&cell);
        return true;
    }));
    auto& array = *list.pArray<AttributeSelect>();
    EXPECT_EQ(met, (std::vector<AttributeSelect*>{&array[0], &array[1]}));
}

// --- cells -----------------------------------------------------------------------------------------------------

struct CellTarget {
    const char* sAttribute;
    const char* token;
};
const CellTarget g_cells[] = {
    {"First", ".T."}, {"Re", "1.5"},     {"Nu", "2"},     {"In", "-3"}, {"Lo", ".U."},        {"St", "'a'"},
    {"Gu", g_sGuid},  {"Bi", "\"0AB\""}, {"En", ".RED."}, {"Th", "#5"}, {"Reals", "(1.,2.)"}, {"Things", "(#5)"},
};
// The same inside of a select, and what only a select can hold.
const char* const g_selected[] = {
    "IFCFLAG(.T.)",    "IFCLENGTHMEASURE(1.5)",  "IFCNUMERIC(2)",    "IFCCOUNT(-3)", "IFCANSWER(.U.)",
    "IFCLABEL('a')",   "IFCBLOB(\"0AB\")",       "IFCCOLOUR(.RED.)", "#5",           "IFCREALS((1.,2.))",
    "IFCTHINGS((#5))", "IFCINNER(IFCCOUNT(-3))", "IFCINNER(#5)",     "IFCINNER($)",  "IFCLABEL($)",
    "IFCCOUNT(*)",
};

struct WalkRow {
    const char* sType;
    std::function<std::string(CellSetter&, const char*, bool, bool)> walk;
    Found found = {};   // by attribute, or by the token of a select
};

template <class T>
std::function<std::string(CellSetter&, const char*, bool, bool)> walksCell() {
    return [](CellSetter& setter, const char* sAttribute, bool boSingle, bool boList) {
        return sWalkCell<T>(setter, sAttribute, boSingle, boList);
    };
}

TEST(AttributeWalk, MeetsSingleValuesOfTheirKind) {
    const WalkRow table[] = {
        {"int", walksCell<int>()},
        {"char", walksCell<char>()},
        {"unsigned char", walksCell<unsigned char>()},
        {"unsigned long long", walksCell<unsigned long long>()},
        {"std::string", walksCell<std::string>()},
        {"AttributeSelect", walksCell<AttributeSelect>()},
        {"2D Point", walksCell<math::_2d::Point>()},
        {"2D Vector", walksCell<math::_2d::Vector>()},
        {"3D Point", walksCell<math::_3d::Point>()},
        {"3D Vector", walksCell<math::_3d::Vector>()},
        {"IfcArray<double,2>", walksCell<IfcArray<double, 2>>()},
        {"IfcArray<long long,3>", walksCell<IfcArray<long long, 3>>()},
        {"vector of double", walksCell<std::vector<double>>()},
        {"double",
         walksCell<double>(),
         {{"Re", "yes: 1.5"}, {"Nu", "yes: 2"}, {"IFCLENGTHMEASURE(1.5)", "yes: 1.5"}, {"IFCNUMERIC(2)", "yes: 2"}}},
        {"long long",
         walksCell<long long>(),
         {{"In", "yes: -3"}, {"IFCCOUNT(-3)", "yes: -3"}, {"IFCINNER(IFCCOUNT(-3))", "yes: -3"}}},
        {"bool", walksCell<bool>(), {{"First", "yes: T"}, {"IFCFLAG(.T.)", "yes: T"}}},
        {"LogicalValue", walksCell<LogicalValue>(), {{"Lo", "yes: -1"}, {"IFCANSWER(.U.)", "yes: -1"}}},
        {"Guid", walksCell<Guid>(), {{"Gu", "yes: 0$aBcDeFgHiJkLmNoPqRsT"}}},
        {"char *",
         walksCell<char*>(),
         {{"St", "yes: a"}, {"En", "yes: RED"}, {"IFCLABEL('a')", "yes: a"}, {"IFCCOLOUR(.RED.)", "yes: RED"}}},
        {"std::vector<unsigned char>",
         walksCell<Bytes>(),
         {{"Bi", "yes: 1 bytes"}, {"IFCBLOB(\"0AB\")", "yes: 1 bytes"}}},
        {"bytes in place",
         walksCell<BytesView>(),
         {{"Bi", "yes: 1 bytes at 171"}, {"IFCBLOB(\"0AB\")", "yes: 1 bytes at 171"}}},
        {"Entity *", walksCell<Entity*>(), {{"Th", "yes: #5"}, {"#5", "yes: #5"}, {"IFCINNER(#5)", "yes: #5"}}},
    };
    CellSetter setter;
    AssertTrail trail;
    const auto vExpect = [&](const WalkRow& row, const char* sAttribute, const char* token, const char* sKey) {
        SCOPED_TRACE(std::string(row.sType) + " in " + sAttribute + ' ' + token);
        setter.vReadOne(sAttribute, token);
        const auto found = row.found.find(sKey);
        EXPECT_EQ(row.walk(setter, sAttribute, true, false), found == row.found.end() ? "no:" : found->second);
        EXPECT_EQ(row.walk(setter, sAttribute, false, false), "no:") << "single values are off";
    };
    for (const WalkRow& row : table) {
        for (const CellTarget& cell : g_cells) vExpect(row, cell.sAttribute, cell.token, cell.sAttribute);
        for (const char* token : g_selected) vExpect(row, "Se", token, token);
    }
    EXPECT_EQ(trail.raised(), Trail{});
}

TEST(AttributeWalk, MeetsListsWhereTheyAreWanted) {
    const struct {
        const char* sAttribute;
        const char* token;
        std::function<std::string(CellSetter&, const char*, bool, bool)> walk;
        const char* sBoth;
        const char* sSingle;
        const char* sList;
    } table[] = {
        {"Reals", "(1.,2.)", walksCell<double>(), "yes: 1 2", "no:", "yes: 1 2"},
        {"Reals", "(1.,2.)", walksCell<math::_2d::Point>(), "yes: < 1 2 >", "no:", "yes: < 1 2 >"},
        {"Re", "1.5", walksCell<double>(), "yes: 1.5", "yes: 1.5", "no:"},
        {"Th", "#5", walksCell<Entity*>(), "yes: #5", "yes: #5", "no:"},
        {"Things", "(#5)", walksCell<Entity*>(), "yes: #5", "no:", "yes: #5"},
        {"Se", "#5", walksCell<Entity*>(), "yes: #5", "yes: #5", "no:"},
        {"Se", "IFCTHINGS((#5,#6))", walksCell<Entity*>(), "yes: #5 #6", "no:", "yes: #5 #6"},
        {"Se", "IFCREALS((1.,2.))", walksCell<double>(), "yes: 1 2", "no:", "yes: 1 2"},
        {"Se", "IFCREALS((1.,2.))", walksCell<math::_2d::Point>(), "yes: < 1 2 >", "no:", "yes: < 1 2 >"},
        {"Se", "IFCREALS($)", walksCell<double>(), "no:", "no:", "no:"},
        {"Selects", "(IFCLENGTHMEASURE(1.),IFCREALS((2.)))", walksCell<double>(), "yes: 1 2", "no:", "yes: 1 2"},
        {"RealRows", "((1.),(2.))", walksCell<std::vector<double>>(), "yes: (1) (2)", "no:", "yes: (1) (2)"},
    };
    CellSetter setter;
    for (const auto& row : table) {
        SCOPED_TRACE(std::string(row.sAttribute) + ' ' + row.token);
        setter.vReadOne(row.sAttribute, row.token);
        EXPECT_EQ(row.walk(setter, row.sAttribute, true, true), row.sBoth);
        EXPECT_EQ(row.walk(setter, row.sAttribute, true, false), row.sSingle);
        EXPECT_EQ(row.walk(setter, row.sAttribute, false, true), row.sList);
    }
}

TEST(AttributeWalk, MeetsNothingWithoutAValue) {
    CellSetter setter;
    for (const char* token : {"$", "*"}) {
        SCOPED_TRACE(token);
        setter.vReadOne("Re", token);
        EXPECT_EQ(sWalkCell<double>(setter, "Re", true, true), "no:");
        setter.vReadOne("Things", token);
        EXPECT_EQ(sWalkCell<Entity*>(setter, "Things", true, true), "no:");
        setter.vReadOne("Se", token);
        EXPECT_EQ(sWalkCell<Entity*>(setter, "Se", true, true), "no:");
    }
    setter.cell<AttributeSelect>("Se").vDefined();
    EXPECT_EQ(sWalkCell<Entity*>(setter, "Se", true, true), "no:") << "a select that holds nothing";
}

TEST(AttributeWalk, GivesWhatTheFunctionSaid) {
    CellSetter setter;
    setter.vReadOne("Re", "1.5");
    EXPECT_EQ(sWalkCell<double>(setter, "Re", true, true, 1), "no: 1.5");
    setter.vReadOne("Se", "#5");
    EXPECT_EQ(sWalkCell<Entity*>(setter, "Se", true, true, 1), "no: #5");
    setter.vReadOne("Se", "IFCREALS((1.,2.,3.))");
    EXPECT_EQ(sWalkCell<double>(setter, "Se", true, true, 2), "no: 1 2");
}

TEST(AttributeWalk, NeedsATypeOfTheAttribute) {
    const AttributeReal cell;
    const def::schema::Attribute attribute;
    EXPECT_THROW(static_cast<void>(AttributeBase::boForEach<double>(
                     cell, attribute, [](double&) { return true; }, true, true)),
                 oxa::exception);
    for (const bool boDerived : {false, true}) {   // the flags come first
        AttributeReal without;
        without.m_boDerived = boDerived;
        without.m_boUndefined = !boDerived;
        EXPECT_FALSE(AttributeBase::boForEach<double>(
            without, attribute, [](double&) { return true; }, true, true));
    }
}

// --- every entity ----------------------------------------------------------------------------------------------

TEST(EntityWalk, MeetsEveryReference) {
    const struct {
        const char* sAttribute;
        const char* token;
        const char* sMet;
        Trail raised = {};
    } table[] = {
        {"Th", "#5", " #5"},
        {"Th", "$", ""},
        {"Re", "1.5", ""},
        {"St", "'#5'", ""},
        {"Se", "#5", " #5"},
        {"Se", "$", ""},
        {"Se", "IFCLABEL('#5')", ""},
        {"Se", "IFCLABEL($)", ""},
        {"Se", "IFCINNER(#5)", " #5"},
        {"Se", "IFCINNER($)", ""},
        {"Se", "IFCTHINGS((#5,#6,#5))", " #5 #6 #5"},
        {"Se", "IFCREALS((1.))", ""},
        {"Things", "(#5,#6)", " #5 #6"},
        {"Things", "()", ""},
        {"Things", "*", ""},
        {"ThingSelects", "(#5)", " #5"},
        {"Selects", "(#5,IFCLABEL('a'),$,IFCINNER(#6),IFCTHINGS((#7)),#5)", " #5 #6 #7 #5"},
        {"Reals", "(1.)", ""},
        {"Integers", "(1)", ""},
        {"Texts", "('#5')", ""},
        {"Blobs", "(\"0AB\")", ""},
        {"ThingRows", "((#5))", "", {sRows("Entity *")}},
        {"RealRows", "((1.))", "", {sRows("Entity *")}},
        {"SetRows", "((#5))", "", {g_sUnknown}},
    };
    CellSetter setter;
    for (const auto& row : table) {
        SCOPED_TRACE(std::string(row.sAttribute) + ' ' + row.token);
        setter.vReadOne(row.sAttribute, row.token);
        AssertTrail trail;
        std::string sMet;
        const def::schema::Attribute& attribute = setter.attribute(row.sAttribute);
        vForEachEntity(setter.cell<AttributeBase>(row.sAttribute),
                       AttributeBase::cellClass(attribute.types.front(), attribute),
                       [&](Entity* pEntity) { sMet += ' ' + setter.sEntity(pEntity); });
        EXPECT_EQ(sMet, row.sMet);
        EXPECT_EQ(trail.raised(), row.raised);
        const std::string sWalked = sWalkCell<Entity*>(setter, row.sAttribute, true, true);
        EXPECT_EQ(sWalked.substr(sWalked.find(':') + 1), row.sMet) << "the walk with a function meets the same";
        EXPECT_EQ(trail.raised(), row.raised);
    }
}

// What no file leaves behind.
TEST(EntityWalk, MeetsNothingInCellsThatHoldNothing) {
    CellSetter setter;
    AttributeReal real;
    const def::schema::Type unresolved("IfcUnresolved");
    const struct {
        const char* sName;
        AttributeType eType;
        const def::schema::Type* pType;
        AttributeBase* pValue;
    } table[] = {
        {"a reference without a cell", AttributeType::Entity, nullptr, nullptr},
        {"a value without a cell", AttributeType::Real, CellSetter::pType("IFCLENGTHMEASURE"), nullptr},
        {"a value of no type", AttributeType::Real, nullptr, &real},
        {"a value of a type without a data type", AttributeType::Real, &unresolved, &real},
    };
    const auto iMet = [](const AttributeBase& cell, CellClass eClass) {
        int iCount = 0;
        vForEachEntity(cell, eClass, [&iCount](Entity*) { ++iCount; });
        return iCount;
    };
    for (const auto& row : table) {
        SCOPED_TRACE(row.sName);
        AttributeSelect select;
        select.m_eType = row.eType;
        select.m_pType = row.pType;
        select.m_pValue = row.pValue;
        EXPECT_EQ(iMet(select, CellClass::Select), 0);
    }
    for (const bool boDerived : {false, true}) {   // a value behind the flag of the nested cell
        AttributeEntity reference;
        reference.m_value = setter.pEntity(5);
        reference.m_boDerived = boDerived;
        reference.m_boUndefined = !boDerived;
        AttributeSelect select;
        select.m_eType = AttributeType::Entity;
        select.m_pValue = &reference;
        EXPECT_EQ(iMet(select, CellClass::Select), 0);
        reference.vDefined();
        EXPECT_EQ(iMet(select, CellClass::Select), 1);
    }
    setter.vReadOne("Selects", "(#5,#6)");   // and behind the flag of an item
    (*setter.cell<AttributeList>("Selects").pArray<AttributeSelect>())[0].m_boUndefined = true;
    EXPECT_EQ(iMet(setter.cell<AttributeList>("Selects"), CellClass::List), 1);
    AttributeList list;
    for (const AttributeType eType : {AttributeType::Select, AttributeType::Entity}) {
        list.m_eItemType = eType;
        EXPECT_EQ(iMet(list, CellClass::List), 0) << "a list without items";
    }
}

}   // namespace
}   // namespace oxa::ifc
