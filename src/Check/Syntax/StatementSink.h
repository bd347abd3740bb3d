// SPDX-License-Identifier: Apache-2.0
// StatementSink: who is told of the statements of an exchange structure as they are read.
//
// For      ExchangeStructure, which calls, and the levels that look at statements: header and schema.
// Order    vStatement, then for each record vRecord, any number of vValue, vOpenList or vOpenTyped with its vClose, and
//          vRecordEnd; then vStatementEnd. A header entity has one record, so has an instance, save a complex one. After
//          a fault of syntax vStatementEnd(false) comes wherever that was.
// Threads  one.
#pragma once

#include <cstdint>

#include "Check/Syntax/Token.h"

namespace oxa::check {

struct StatementHead {
    std::uint64_t iNumber = 0;   // of the instance; 0 for a header entity
    Place place{};
    bool boDouble = false;    // there was an instance with that number
    bool boComplex = false;   // its records are of one entity type each, in the external mapping
};

class StatementSink {
public:
    StatementSink() = default;
    virtual ~StatementSink();
    StatementSink(const StatementSink&) = delete;
    StatementSink& operator=(const StatementSink&) = delete;

    virtual void vStatement(const StatementHead& head) = 0;
    virtual void vRecord(const Token& keyword) = 0;
    virtual void vValue(const Token& value) = 0;
    virtual void vOpenList(const Token& open) = 0;
    virtual void vOpenTyped(const Token& keyword) = 0;
    virtual void vClose(const Token& close) = 0;
    virtual void vRecordEnd(const Token& close) = 0;
    virtual void vStatementEnd(bool boFine) = 0;

    // A data section begins, with parameters or without: "DATA(...);" has a record of its own between the two calls.
    virtual void vSection() = 0;
    // Whether the header says edition 3, as far as it is read. Asked of the sink of a header.
    [[nodiscard]] virtual bool boEdition3() const noexcept { return false; }
};

// For instances that nobody looks at.
class NoSink final : public StatementSink {
public:
    void vStatement(const StatementHead&) override {}
    void vRecord(const Token&) override {}
    void vValue(const Token&) override {}
    void vOpenList(const Token&) override {}
    void vOpenTyped(const Token&) override {}
    void vClose(const Token&) override {}
    void vRecordEnd(const Token&) override {}
    void vStatementEnd(bool) override {}
    void vSection() override {}
};

}   // namespace oxa::check
