// SPDX-License-Identifier: Apache-2.0
// Integers that may not fit, by the compiler's builtins and by the standard alone.
#include "platform/Compiler.h"

#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <string>

namespace oxa::platform {
namespace {

template <class Integer>
using Operation = bool (*)(Integer, Integer, Integer&);

// Nothing where it does not fit; then the result has stayed as it was.
template <class Integer>
std::optional<Integer> result(Operation<Integer> boOperation, Integer a, Integer b) {
    Integer value = 77;
    if (boOperation(a, b, value)) return value;
    EXPECT_EQ(value, 77);
    return std::nullopt;
}

TEST(FittingInteger, OfAllPairsOfBytes) {
    using Byte = signed char;
    const struct {
        const char* sRule;
        Operation<Byte> boOperation;
        int (*iExpected)(int, int);
    } rows[] = {
        {"sum", boAdded<Byte>, [](int a, int b) { return a + b; }},
        {"sum, plainly", plain::boAdded<Byte>, [](int a, int b) { return a + b; }},
        {"difference", boSubtracted<Byte>, [](int a, int b) { return a - b; }},
        {"difference, plainly", plain::boSubtracted<Byte>, [](int a, int b) { return a - b; }},
        {"product", boMultiplied<Byte>, [](int a, int b) { return a * b; }},
        {"product, plainly", plain::boMultiplied<Byte>, [](int a, int b) { return a * b; }},
    };
    for (const auto& row : rows)
        for (int a = -128; a < 128; ++a)
            for (int b = -128; b < 128; ++b) {
                const int iExpected = row.iExpected(a, b);
                const bool boFits = iExpected >= -128 && iExpected <= 127;
                const auto expected = boFits ? std::optional(static_cast<Byte>(iExpected)) : std::nullopt;
                ASSERT_EQ(result(row.boOperation, static_cast<Byte>(a), static_cast<Byte>(b)), expected)
                    << row.sRule << " of " << a << " and " << b;
            }
}

TEST(FittingInteger, AtTheEndsOfTheLongest) {
    using Long = long long;
    constexpr Long g_iLeast = std::numeric_limits<Long>::min();
    constexpr Long g_iMost = std::numeric_limits<Long>::max();
    const struct {
        Long a, b;
        std::optional<Long> sum, difference, product;
    } rows[] = {
        {g_iMost, 0, g_iMost, g_iMost, 0},
        {g_iMost, 1, {}, g_iMost - 1, g_iMost},
        {g_iMost, -1, g_iMost - 1, {}, -g_iMost},
        {g_iLeast, 1, g_iLeast + 1, {}, g_iLeast},
        {g_iLeast, -1, {}, g_iLeast + 1, {}},
        {-1, g_iLeast, {}, g_iMost, {}},
        {0, g_iLeast, g_iLeast, {}, 0},
        {g_iLeast, g_iLeast, {}, 0, {}},
        {g_iLeast / 2, 2, g_iLeast / 2 + 2, g_iLeast / 2 - 2, g_iLeast},
        {g_iLeast / 2, -2, g_iLeast / 2 - 2, g_iLeast / 2 + 2, {}},
        {3037000499, 3037000499, 6074000998, 0, 9223372030926249001},
        {3037000500, 3037000500, 6074001000, 0, {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::to_string(row.a) + " and " + std::to_string(row.b));
        EXPECT_EQ(result(boAdded<Long>, row.a, row.b), row.sum);
        EXPECT_EQ(result(plain::boAdded<Long>, row.a, row.b), row.sum);
        EXPECT_EQ(result(boSubtracted<Long>, row.a, row.b), row.difference);
        EXPECT_EQ(result(plain::boSubtracted<Long>, row.a, row.b), row.difference);
        EXPECT_EQ(result(boMultiplied<Long>, row.a, row.b), row.product);
        EXPECT_EQ(result(plain::boMultiplied<Long>, row.a, row.b), row.product);
    }
}

}   // namespace
}   // namespace oxa::platform
