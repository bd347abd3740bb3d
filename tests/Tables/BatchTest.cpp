// SPDX-License-Identifier: Apache-2.0
// Columns of cells, and the checksum of files.

#include <limits>
#include <sstream>

#include <gtest/gtest.h>

#include "Tables/Batch.h"
#include "Tables/Sha256.h"

namespace oxa::test {
namespace {

using tables::ColumnData;
using tables::Type;

std::string sJson(const ColumnData& column, std::size_t iRow) {
    std::string sText;
    column.appendJson(iRow, sText);
    return sText;
}

TEST(Batch, CellsComeBack) {
    ColumnData booleans(Type::Boolean);
    ColumnData integers(Type::Integer);
    ColumnData numbers(Type::Number);
    ColumnData texts(Type::Text);
    for (int i = 0; i < 20; ++i) {   // beyond two bytes of bits
        i % 3 ? booleans.addBoolean(i % 2 == 0) : booleans.addNull();
        i % 3 ? integers.addInteger(std::numeric_limits<std::int64_t>::max() - i) : integers.addNull();
        i % 3 ? numbers.addNumber(0.1 * i) : numbers.addNull();
        i % 3 ? texts.addText(std::string(static_cast<std::size_t>(i), 'x')) : texts.addNull();
    }
    for (std::size_t i = 0; i < 20; ++i) {
        SCOPED_TRACE(i);
        for (const ColumnData* pColumn : {&booleans, &integers, &numbers, &texts})
            EXPECT_EQ(pColumn->null(i), i % 3 == 0);
        if (i % 3 == 0) continue;
        EXPECT_EQ(booleans.boolean(i), i % 2 == 0);
        EXPECT_EQ(integers.integer(i), std::numeric_limits<std::int64_t>::max() - static_cast<std::int64_t>(i));
        EXPECT_EQ(numbers.number(i), 0.1 * static_cast<double>(i));
        EXPECT_EQ(texts.text(i), std::string(i, 'x'));
    }
    EXPECT_EQ(texts.nulls(), 7U);
}

TEST(Batch, ListsInListsAreJson) {
    ColumnData column(Type::Integer, 2);
    for (const int iRow : {1, 2}) {
        for (int i = 0; i < iRow; ++i) {
            column.items().items().addInteger(i);
            column.items().items().addNull();
            column.items().addList();
        }
        column.addList();
    }
    column.addNull();
    column.addList();
    EXPECT_EQ(sJson(column, 0), "[[0,null]]");
    EXPECT_EQ(sJson(column, 1), "[[0,null],[1,null]]");
    EXPECT_EQ(sJson(column, 2), "null");
    EXPECT_EQ(sJson(column, 3), "[]");
    EXPECT_EQ(column.toText(1), "[[0,null],[1,null]]");
    EXPECT_EQ(column.toText(2), "");
}

struct TextRow {
    const char* pRule;
    std::string sText;
    std::string sKept;
    std::string sJson;
};
const TextRow g_texts[] = {
    {"plain", "abc", "abc", "\"abc\""},
    {"empty", "", "", "\"\""},
    {"quotes and ways back", "a\"b\\c", "a\"b\\c", "\"a\\\"b\\\\c\""},
    {"lines", "a\nb\r\tc", "a\nb\r\tc", "\"a\\nb\\r\\tc\""},
    {"a NUL", std::string("a\0b", 3), std::string("a\0b", 3), "\"a\\u0000b\""},
    {"other scripts", "\xe5\xae\xb6 \xf0\x9f\x8f\xa0", "\xe5\xae\xb6 \xf0\x9f\x8f\xa0",
     "\"\xe5\xae\xb6 \xf0\x9f\x8f\xa0\""},
    {"no UTF-8", "T\xfcr", "T\xc3\xbcr", "\"T\xc3\xbcr\""},
    {"no UTF-8 behind eight bytes", "12345678T\xfcr", "12345678T\xc3\xbcr", "\"12345678T\xc3\xbcr\""},
};

TEST(Batch, TextsAreUtf8) {
    for (const TextRow& row : g_texts) {
        SCOPED_TRACE(row.pRule);
        ColumnData column(Type::Text);
        column.addText(row.sText);
        EXPECT_EQ(column.text(0), row.sKept);
        EXPECT_EQ(sJson(column, 0), row.sJson);
    }
}

TEST(Batch, NumbersHaveAllDigits) {
    ColumnData column(Type::Number);
    for (const double value : {0.1, 1e300, -2.5, 1.0 / 3.0, std::numeric_limits<double>::infinity(),
                               std::numeric_limits<double>::quiet_NaN()})
        column.addNumber(value);
    const char* const texts[] = {"0.1", "1e+300", "-2.5", "0.3333333333333333", "inf", "nan"};
    for (std::size_t i = 0; i < std::size(texts); ++i) EXPECT_EQ(column.toText(i), texts[i]);
    EXPECT_EQ(sJson(column, 3), "0.3333333333333333");
    EXPECT_EQ(sJson(column, 4), "\"inf\"");
}

TEST(Batch, WhatNobodyWantsIsCounted) {
    ColumnData column(Type::Text);
    column.setWanted(false);
    column.addText("abc");
    column.addNull();
    EXPECT_EQ(column.size(), 2U);
    EXPECT_EQ(column.textBytes(), 0U);
}

TEST(Sha256, IsThatOfTheStandard) {
    const std::pair<std::string, const char*> rows[] = {
        {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
        {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
        {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
         "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
        {std::string(1000000, 'a'), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
    };
    for (const bool boFast : {false, true}) {   // by instructions, where the processor has them
        for (const auto& [sText, pSum] : rows) {
            std::istringstream stream(sText);
            EXPECT_EQ(tables::detail::sSha256(stream, boFast), pSum) << sText.size();
        }
        // A whole number of blocks, and of the buffer.
        std::istringstream whole(std::string(65536, 'x'));
        EXPECT_EQ(tables::detail::sSha256(whole, boFast),
                  "1f8745f0d2d1387ec1af2211a3cf417b2e9e885e853472649c1d979d0e9370e3");
    }
}

}   // namespace
}   // namespace oxa::test
