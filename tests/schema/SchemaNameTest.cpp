// SPDX-License-Identifier: Apache-2.0
// Names as look-up keys: the hash, and the order of names.
#include "schema/SchemaName.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace oxa::ifc::def::schema;

TEST(NameHash, IsFnv1aWithSignExtendedBytes) {
    struct Row {
        const char* name;
        std::string_view text;
        std::uint32_t uHash;
    };
    const Row rows[] = {
        {"empty", "", 0x811c9dc5U},
        {"the textbook value of one plain byte", "a", 0xe40c292cU},
        {"root entity", "IFCROOT", 0x7a0ef7a3U},
        {"GUID type", "IFCGLOBALLYUNIQUEID", 0xa7c8c9edU},
        {"project", "IFCPROJECT", 0x55cb6bbcU},
        {"a byte above 0x7F is not the textbook's 0x6f0cdbf3", "\xC3", 0xc5f34f72U},
        {"two of them", "\xC3\xA9", 0x3cfa68c1U},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(NameHash(row.text), row.uHash);
    }
    static_assert(NameHash("IFCROOT") == 0x7a0ef7a3U, "a literal's hash is a constant");
}

TEST(HashedName, IsOrderedByHashThenLengthThenBytes) {
    struct Row {
        const char* name;
        ObjectName a;
        ObjectName b;
        std::strong_ordering order;
    };
    const Row rows[] = {
        {"hash first", {"ZZZ", 1}, {"A", 2}, std::strong_ordering::less},
        {"then length", {"B", 1}, {"AA", 1}, std::strong_ordering::less},
        {"then bytes", {"AB", 1}, {"AA", 1}, std::strong_ordering::greater},
        {"equal", {"AB", 1}, {"AB", 1}, std::strong_ordering::equal},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_TRUE((row.a <=> row.b) == row.order);
        EXPECT_EQ(row.a == row.b, row.order == std::strong_ordering::equal);
    }
}

TEST(HashedName, IsMadeFromTextWithItsHash) {
    EXPECT_EQ(ObjectName("IFCPROJECT").hash, 0x55cb6bbcU);
    EXPECT_EQ(ObjectName("IFCPROJECT").name, "IFCPROJECT");
    EXPECT_EQ(AttributeName("GlobalId").hash, NameHash("GlobalId"));
}

}   // namespace
