// SPDX-License-Identifier: Apache-2.0
#include "Tables/Batch.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <stdexcept>

#include "platform/String.h"

namespace oxa::tables {

namespace {

// Most texts are ASCII, which eight bytes at a time tell.
bool boAscii(std::string_view text) noexcept {
    constexpr std::uint64_t uHigh = 0x8080808080808080U;
    std::size_t i = 0;
    for (; i + 8 <= text.size(); i += 8) {
        std::uint64_t uEight = 0;
        std::memcpy(&uEight, text.data() + i, 8);
        if (uEight & uHigh) return false;
    }
    return std::all_of(text.begin() + static_cast<std::ptrdiff_t>(i), text.end(),
                       [](char c) { return (static_cast<unsigned char>(c) & 0x80U) == 0; });
}

bool boUtf8(std::string_view text) noexcept { return boAscii(text) || str::boIsValidUtf8(text); }

std::string sNumber(double value) { return str::Manip::valueFormatDefault(value); }

}   // namespace

ColumnData::ColumnData(Type type, unsigned lists)
    : m_type(type),
      m_lists(lists),
      m_items(lists ? std::make_unique<ColumnData>(type, lists - 1) : nullptr) {}
ColumnData::ColumnData(ColumnData&& other) noexcept = default;
ColumnData& ColumnData::operator=(ColumnData&& other) noexcept = default;
ColumnData::~ColumnData() = default;

void ColumnData::vBitAdd(std::vector<std::uint8_t>& bits, std::size_t i, bool boSet) {
    if (i % 8 == 0) bits.push_back(0);
    bits.back() = static_cast<std::uint8_t>(bits.back() | static_cast<unsigned>(boSet) << (i % 8));
}

bool ColumnData::boCellAdd(bool boValid) {
    if (m_wanted) {
        vBitAdd(m_valid, m_size, boValid);
        m_nulls += boValid ? 0 : 1;
    }
    ++m_size;
    return m_wanted;
}

void ColumnData::vOffsetAdd(std::size_t iEnd) {
    if (iEnd > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()))
        throw std::length_error("the texts of a row take more than 2 GiB");
    if (m_offsets.empty()) m_offsets.push_back(0);
    m_offsets.push_back(static_cast<std::int32_t>(iEnd));
}

void ColumnData::addNull() {
    if (!boCellAdd(false)) return;
    if (m_lists) return vOffsetAdd(m_items->size());
    switch (m_type) {
    case Type::Boolean: return vBitAdd(m_bits, m_size - 1, false);
    case Type::Integer: return m_integers.push_back(0);
    case Type::Number: return m_numbers.push_back(0);
    case Type::Text:
    case Type::Json: return vOffsetAdd(m_bytes.size());
    }
}

void ColumnData::addBoolean(bool value) {
    if (boCellAdd(true)) vBitAdd(m_bits, m_size - 1, value);
}

void ColumnData::addInteger(std::int64_t value) {
    if (boCellAdd(true)) m_integers.push_back(value);
}

void ColumnData::addNumber(double value) {
    if (boCellAdd(true)) m_numbers.push_back(value);
}

void ColumnData::addText(std::string_view text) {
    if (!boCellAdd(true)) return;
    m_bytes += boUtf8(text) ? text : std::string_view(str::Converter::to_utf8(text));
    vOffsetAdd(m_bytes.size());
}

void ColumnData::addList() {
    if (boCellAdd(true)) vOffsetAdd(m_items->size());
}

void ColumnData::clear() noexcept {
    m_size = m_nulls = 0;
    m_valid.clear();
    m_bits.clear();
    m_integers.clear();
    m_numbers.clear();
    m_offsets.clear();
    m_bytes.clear();
    if (m_items) m_items->clear();
}

std::string ColumnData::toText(std::size_t row) const {
    std::string sText;
    if (null(row)) return sText;
    if (m_lists) {
        appendJson(row, sText);
        return sText;
    }
    switch (m_type) {
    case Type::Boolean: return boolean(row) ? "true" : "false";
    case Type::Integer: return std::to_string(integer(row));
    case Type::Number: return sNumber(number(row));
    case Type::Text:
    case Type::Json: return std::string(text(row));
    }
    return sText;
}

void ColumnData::appendJson(std::size_t row, std::string& json) const {
    if (null(row)) {
        json += "null";
        return;
    }
    if (m_lists) {
        const auto [first, last] = range(row);
        json += '[';
        for (std::size_t i = first; i < last; ++i) {
            if (i > first) json += ',';
            m_items->appendJson(i, json);
        }
        json += ']';
        return;
    }
    switch (m_type) {
    case Type::Boolean: json += boolean(row) ? "true" : "false"; return;
    case Type::Integer: json += std::to_string(integer(row)); return;
    case Type::Number:
        if (std::isfinite(number(row)))
            json += sNumber(number(row));
        else
            appendJsonText(json, sNumber(number(row)));
        return;
    case Type::Text: return appendJsonText(json, text(row));
    case Type::Json: json += text(row); return;
    }
}

Batch::Batch(const std::vector<Column>& columns) {
    m_columns.reserve(columns.size());
    for (const Column& column : columns) m_columns.emplace_back(column.type, column.lists);
}

void Batch::clear() noexcept {
    for (ColumnData& column : m_columns) column.clear();
}

std::size_t Batch::textBytes() const noexcept {
    std::size_t iMost = 0;
    for (const ColumnData& column : m_columns) iMost = std::max(iMost, column.textBytes());
    return iMost;
}

void appendJsonText(std::string& json, std::string_view text) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string sRepaired;
    if (!boUtf8(text)) text = sRepaired = str::Converter::to_utf8(text);
    json += '"';
    for (const char c : text) {
        const auto uByte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            json += '\\';
            json += c;
        } else if (c == '\n') {
            json += "\\n";
        } else if (c == '\r') {
            json += "\\r";
        } else if (c == '\t') {
            json += "\\t";
        } else if (uByte < 0x20) {
            json += "\\u00";
            json += digits[uByte >> 4U];
            json += digits[uByte & 15U];
        } else {
            json += c;
        }
    }
    json += '"';
}

}   // namespace oxa::tables
