// SPDX-License-Identifier: Apache-2.0
// HeaderLevel: the header entities of a file, held to ISO 10303-21, 8.2, and to what was published for IFC files.
//
// For      Check.cpp. It takes the statements of the header section, and knows at its end which schema the file names.
// Fails    number, type, length and form of fields; entities that are missing, double or out of order; a schema that is not
//          known, or more than one.
// Notes    what the published header rules ask for beyond the standard: CheckWeight::Note.
// Memory   the values of one entity, up to g_iMaxValues.
// Threads  one.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Check/Collector.h"
#include "Check/Syntax/StatementSink.h"

namespace oxa::check {

struct HeaderField;
struct HeaderEntity;

class HeaderLevel final : public StatementSink {
public:
    // "options" says whether the level is asked for, and gives schemas. Both have to outlive this.
    HeaderLevel(const CheckOptions& options, Collector& collector);
    ~HeaderLevel() override;

    void vStatement(const StatementHead& head) override;
    void vRecord(const Token& keyword) override;
    void vValue(const Token& value) override;
    void vOpenList(const Token& open) override;
    void vOpenTyped(const Token& keyword) override;
    void vClose(const Token& close) override;
    void vRecordEnd(const Token& close) override;
    void vStatementEnd(bool boFine) override;
    // What is to be told of the header as a whole: to be called behind its last statement.
    void vHeaderEnd();
    void vSection() override;
    [[nodiscard]] bool boEdition3() const noexcept override { return m_boEdition3; }

    // Behind vHeaderEnd: the schema, null where none is known; its name as the file spells it, empty where it names none.
    [[nodiscard]] const ifc::def::SchemaPset* pSchema() const noexcept { return m_pSchema; }
    [[nodiscard]] const std::string& sSchemaName() const noexcept { return m_sSchemaName; }

private:
    // One parameter, or an item of one that is a list.
    struct Value {
        TokenKind kind = TokenKind::Omitted;   // Open: a list, whose items follow at one more of iDepth
        std::size_t iDepth = 0;
        Place place{};
        std::string sText{};   // of a String without quotes
        std::uint64_t iLength = 0;
    };
    using Values = std::span<const Value>;
    struct Message {
        std::string_view key;
        std::string_view message;
        std::string_view expected{};
        std::string_view found{};
        CheckWeight weight = CheckWeight::Failure;
    };

    void vTell(const Message& message, Place place, const HeaderField* pField = nullptr);
    void vAdd(TokenKind kind, const Token& token);
    void vEntity();
    void vFields(const HeaderEntity& entity);
    void vField(const HeaderField& field, Values values);
    void vText(const HeaderField& field, const Value& value);
    void vDescription(Values values);
    void vDescriptionNotes(Values values);
    void vName(Values values);
    void vSchema(Values values);
    void vSchemaName(const Value& value, bool boFirst);
    [[nodiscard]] Values parameter(std::size_t iIndex) const;

    const CheckOptions& m_options;
    Collector& m_collector;
    bool m_boTell;
    std::string m_sKeyword;   // of the entity that is read
    Place m_place{};
    std::vector<Value> m_values;
    std::size_t m_iDepth = 0;
    std::size_t m_iParameters = 0;
    std::size_t m_iEntities = 0;
    std::array<std::uint64_t, 3> m_counts{};   // of those that every header has
    bool m_boEdition3 = false;
    const ifc::def::SchemaPset* m_pSchema = nullptr;
    std::string m_sSchemaName;
};

}   // namespace oxa::check
