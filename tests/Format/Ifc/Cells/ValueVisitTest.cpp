// SPDX-License-Identifier: Apache-2.0
// The values of a cell, told one by one: which, in which order, and between which marks.
#include "Format/Ifc/IfcValueVisit.h"

#include <gtest/gtest.h>

#include "Format/Ifc/CellSetter.h"

namespace oxa::ifc {
namespace {

// What it is told, as words.
struct Told {
    StatementReader& reader;
    std::string sWords{};

    void vAdd(const std::string& sWord) { sWords += (sWords.empty() ? "" : " ") + sWord; }
    void operator()(double value) { vAdd("real:" + std::to_string(static_cast<int>(value))); }
    void operator()(long long iValue) { vAdd("integer:" + std::to_string(iValue)); }
    void operator()(bool boValue) { vAdd(boValue ? "true" : "false"); }
    void operator()(LogicalValue value) { vAdd("logical:" + std::to_string(static_cast<int>(value))); }
    void operator()(const Guid& guid) { vAdd("guid:" + IfcGuid::toIfcGuid(guid)); }
    void operator()(const Entity* pEntity) { vAdd(reader.sEntity(const_cast<Entity*>(pEntity))); }
    void operator()(visit::Null null) { vAdd(null.boDerived ? "*" : "$"); }
    void operator()(visit::Nothing) { vAdd("nothing"); }
    void operator()(visit::Text text) { vAdd("text:" + std::string(text.pText ? text.pText : "null")); }
    void operator()(visit::Enumerator item) { vAdd("enumerator:" + std::string(item.pText ? item.pText : "null")); }
    void operator()(visit::Binary binary) { vAdd("bytes:" + std::to_string(binary.iCount)); }
    void operator()(visit::ListBegin begin) { vAdd(begin.boSet ? "set(" : "list("); }
    void operator()(visit::ListEnd) { vAdd(")"); }
    void operator()(visit::TypeBegin begin) { vAdd(begin.type.sNameUpper + '('); }
    void operator()(visit::TypeEnd) { vAdd(")"); }
};

struct ValueVisitRow {
    const char* sAttribute;   // of IfcEverything
    const char* sToken;
    const char* sTold;
};
const ValueVisitRow g_rows[] = {
    {"First", ".T.", "true"},
    {"First", "$", "$"},
    {"First", "*", "*"},
    {"Re", "2.", "real:2"},
    {"Nu", "3.", "real:3"},
    {"In", "4", "integer:4"},
    {"Lo", ".U.", "logical:-1"},
    {"St", "'a'", "text:a"},
    {"Gu", "'0$aBcDeFgHiJkLmNoPqRsT'", "guid:0$aBcDeFgHiJkLmNoPqRsT"},
    {"Bi", "\"0FFEE\"", "bytes:2"},
    {"En", ".RED.", "enumerator:RED"},
    {"Th", "#1", "#1"},
    {"Se", "$", "$"},
    {"Se", "#1", "#1"},
    {"Se", "IFCLABEL('a')", "IFCLABEL( text:a )"},
    {"Se", "IFCLABEL($)", "IFCLABEL( $ )"},
    {"Se", "IFCINNER(IFCCOUNT(1))", "IFCINNER( IFCCOUNT( integer:1 ) )"},
    {"Se", "IFCREALS((1.,2.))", "IFCREALS( list( real:1 real:2 ) )"},
    {"Se", "IFCTHINGS((#1))", "IFCTHINGS( set( #1 ) )"},
    {"Reals", "()", "list( )"},
    {"Numbers", "(1.)", "set( real:1 )"},
    {"Integers", "(1,2)", "list( integer:1 integer:2 )"},
    {"Texts", "('a','b')", "list( text:a text:b )"},
    {"Blobs", "(\"0FF\",$)", "list( bytes:1 $ )"},
    {"Selects", "(#1,IFCCOUNT(1),$)", "list( #1 IFCCOUNT( integer:1 ) $ )"},
    {"Things", "(#1,#2)", "set( #1 #2 )"},
    {"RealRows", "((1.),(),$)", "list( list( real:1 ) list( ) $ )"},
    {"SetRows", "((#1))", "list( )"},   // a list of sets has no items
};

TEST(ValueVisit, TellsTheValuesInTheOrderOfTheText) {
    CellSetter setter;
    for (const ValueVisitRow& row : g_rows) {
        SCOPED_TRACE(row.sAttribute + std::string(" = ") + row.sToken);
        setter.vReadOne(row.sAttribute, row.sToken);
        Told told{setter};
        visitValues(setter.cell<AttributeBase>(row.sAttribute), setter.pTypeOf(row.sAttribute), told);
        EXPECT_EQ(told.sWords, row.sTold);
    }
}

TEST(ValueVisit, TellsNothingWhereThereIsNeitherAValueNorANull) {
    CellSetter setter;
    const AttributeSelect empty;
    const AttributeReal cell;
    const def::schema::DataTypeBase illegal(static_cast<def::schema::DataKind>(12));
    const def::schema::Type unresolved("IfcUnresolved");
    const std::pair<const AttributeBase*, const def::schema::ObjectBase*> cells[] = {
        {&empty, setter.pTypeOf("Se")}, {&cell, nullptr}, {&cell, &unresolved}, {&cell, &illegal}};
    for (const auto& [pCell, pType] : cells) {
        Told told{setter};
        visitValues(*pCell, pType, told);
        EXPECT_EQ(told.sWords, "nothing");
    }
}

}   // namespace
}   // namespace oxa::ifc
