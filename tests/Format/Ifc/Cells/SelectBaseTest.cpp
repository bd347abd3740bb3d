// SPDX-License-Identifier: Apache-2.0
// The caller's value of a select: what it holds, who owns it, and what is told when it is released.
#include "Format/Ifc/IfcTypeSelectBase.h"

#include <gtest/gtest.h>

#include "Format/Ifc/AssertLog.h"
#include "Format/Ifc/StatementReader.h"

namespace oxa::ifc {
namespace {

using types::IfcSelectBase;

const def::schema::Type* pLabel() { return cellSchema().pTypeFromName(def::schema::ObjectName("IFCLABEL")); }

// A typed value that counts itself.
class Counted final : public IfcSelectBase::TypeDataBase {
public:
    explicit Counted(int& iAlive) : TypeDataBase(pLabel()), m_iAlive(iAlive) { ++m_iAlive; }
    Counted(const Counted& other) : TypeDataBase(other), m_iAlive(other.m_iAlive) { ++m_iAlive; }
    ~Counted() override { --m_iAlive; }
    [[nodiscard]] TypeDataBase* pClone() const override { return new Counted(*this); }

private:
    int& m_iAlive;
};

TEST(IfcSelectBase, IsATypeAndAValue) {
    EXPECT_EQ(sizeof(IfcSelectBase), 2 * sizeof(void*));
    const IfcSelectBase value{};
    EXPECT_TRUE(value.boEmpty());
    EXPECT_EQ(value.pTypeInfo(), nullptr);
    EXPECT_EQ(value.pEntityGet(), nullptr);
    EXPECT_EQ(value.pStringGet(), nullptr);
    EXPECT_EQ(value.pTypeDataGet(), nullptr);
    EXPECT_EQ(value.pValueGet<double>(), nullptr);
}

TEST(IfcSelectBase, HoldsAnEntityItDoesNotOwn) {
    Entity entity;
    const IfcSelectBase value(&entity);
    EXPECT_FALSE(value.boEmpty());
    ASSERT_NE(value.pTypeInfo(), nullptr);
    EXPECT_EQ(*value.pTypeInfo(), typeid(Entity));
    EXPECT_EQ(value.pEntityGet(), &entity);
    EXPECT_EQ(value.pStringGet(), nullptr);
    EXPECT_EQ(value.pTypeDataGet(), nullptr);

    const IfcSelectBase null(static_cast<Entity*>(nullptr));
    EXPECT_FALSE(null.boEmpty()) << "a null reference is a value";
    EXPECT_EQ(null.pEntityGet(), nullptr);
}

TEST(IfcSelectBase, HoldsAStringWithoutAType) {
    const IfcSelectBase value(std::string("longer than the buffer inside of a string"));
    ASSERT_NE(value.pTypeInfo(), nullptr);
    EXPECT_EQ(*value.pTypeInfo(), typeid(std::string));
    ASSERT_NE(value.pStringGet(), nullptr);
    EXPECT_EQ(*value.pStringGet(), "longer than the buffer inside of a string");
    EXPECT_EQ(value.pEntityGet(), nullptr);
    EXPECT_EQ(value.pTypeDataGet(), nullptr);
    EXPECT_EQ(value.pValueGet<std::string>(), nullptr) << "only a typed value has one";
}

TEST(IfcSelectBase, HoldsATypedValueOfExactlyOneType) {
    const IfcSelectBase value(pLabel(), std::string("a"));
    ASSERT_NE(value.pTypeInfo(), nullptr);
    EXPECT_EQ(*value.pTypeInfo(), typeid(IfcSelectBase::TypeDataBase));
    ASSERT_NE(value.pTypeDataGet(), nullptr);
    EXPECT_EQ(value.pTypeDataGet()->pTypeGet(), pLabel());
    EXPECT_STREQ(value.pTypeDataGet()->pTypeNameGet(), "IfcLabel");
    ASSERT_NE(value.pValueGet<std::string>(), nullptr);
    EXPECT_EQ(*value.pValueGet<std::string>(), "a");
    EXPECT_EQ(value.pValueGet<const char*>(), nullptr);
    EXPECT_EQ(value.pValueGet<double>(), nullptr);
    EXPECT_EQ(value.pStringGet(), nullptr) << "a typed text is no plain one";

    const IfcSelectBase untyped(nullptr, 1.5);
    EXPECT_EQ(untyped.pTypeDataGet()->pTypeGet(), nullptr);
    EXPECT_STREQ(untyped.pTypeDataGet()->pTypeNameGet(), "");
}

// Writes a value as text, so that one row tells both what it holds and which type it names.
std::string sText(const IfcSelectBase& value, const Entity& entity) {
    if (value.boEmpty()) return "empty";
    if (*value.pTypeInfo() == typeid(Entity)) return value.pEntityGet() == &entity ? "the entity" : "another";
    if (const std::string* psText = value.pStringGet()) return "text " + *psText;
    return value.pTypeDataGet()->pTypeNameGet() + (" " + std::to_string(*value.pValueGet<double>()));
}

struct CopyRow {
    const char* sName;
    IfcSelectBase value;
    const char* sHeld;
};

TEST(IfcSelectBase, CopiesAndMoves) {
    Entity entity;
    const CopyRow rows[] = {
        {"nothing", IfcSelectBase(), "empty"},
        {"an entity", IfcSelectBase(&entity), "the entity"},
        {"a string", IfcSelectBase(std::string("abc")), "text abc"},
        {"a typed value", IfcSelectBase(pLabel(), 2.5), "IfcLabel 2.500000"},
    };
    for (const CopyRow& row : rows)
        for (const CopyRow& former : rows) {
            SCOPED_TRACE(std::string(row.sName) + " over " + former.sName);
            IfcSelectBase copy(row.value);
            EXPECT_EQ(sText(copy, entity), row.sHeld);
            IfcSelectBase moved(std::move(copy));
            EXPECT_EQ(sText(moved, entity), row.sHeld);
            EXPECT_EQ(sText(copy, entity), "empty") << "moved from";

            IfcSelectBase target(former.value);
            target = row.value;
            EXPECT_EQ(sText(target, entity), row.sHeld);
            target = former.value;
            target = std::move(moved);
            EXPECT_EQ(sText(target, entity), row.sHeld);
            EXPECT_EQ(sText(row.value, entity), row.sHeld) << "the source of a copy stays";
            target.vClear();
            EXPECT_EQ(sText(target, entity), "empty");
        }
}

TEST(IfcSelectBase, OwnsItsTypedValue) {
    int iAlive = 0;
    {
        IfcSelectBase value;
        value.vTypeDataSet(new Counted(iAlive));
        const IfcSelectBase copy(value);
        EXPECT_EQ(iAlive, 2) << "a copy has a clone of its own";
        EXPECT_EQ(copy.pTypeDataGet()->pTypeGet(), pLabel());
        value = IfcSelectBase(std::string("b"));
        EXPECT_EQ(iAlive, 1) << "another value releases the old one";
        value.vTypeDataSet(new Counted(iAlive));
        value.vEntitySet(nullptr);
        EXPECT_EQ(iAlive, 1);
        value.vTypeDataSet(new Counted(iAlive));
        value.vStringSet("c");
        EXPECT_EQ(iAlive, 1);
        value = copy;
        IfcSelectBase& same = value;
        value = same;
        EXPECT_EQ(iAlive, 2) << "assigned to itself";
    }
    EXPECT_EQ(iAlive, 0);
}

TEST(IfcSelectBase, TellsATypedValueThatIsNull) {
    const AssertLog log;
    const std::vector<std::string> once = {"!(*m_pTypeInfo == typeid(TypeDataBase) && m_uValue.pType == nullptr)"};
    {
        IfcSelectBase value;
        value.vTypeDataSet(nullptr);
        EXPECT_EQ(log.texts(), std::vector<std::string>{});
        EXPECT_FALSE(value.boEmpty());
        EXPECT_EQ(value.pTypeDataGet(), nullptr);
        value.vClear();
        EXPECT_EQ(log.texts(), once);
        EXPECT_TRUE(value.boEmpty());
    }
    EXPECT_EQ(log.texts(), once) << "an empty value has nothing to tell";
}

TEST(IfcSelectBase, AsksWhetherAssertionsAreWanted) {
    const AssertLog log(false);
    IfcSelectBase value;
    value.vTypeDataSet(nullptr);
    value.vClear();
    EXPECT_EQ(log.texts(), std::vector<std::string>{});
}

}   // namespace
}   // namespace oxa::ifc
