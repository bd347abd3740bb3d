// SPDX-License-Identifier: Apache-2.0
// SchemaLevel: every statement against its entity type, as it is written.
//
// For      Check.cpp. It takes the instances of a file as ExchangeStructure tells them, one by one, and builds no model.
// Fails    types, number of parameters, values, references, bounds, UNIQUE items while a statement is read; references to
//          what comes later, inverse cardinality and UNIQUE rules in vFinish.
// Memory   what a reference ahead, a UNIQUE value and a reference that an inverse bound counts need: 24 to 48 bytes each.
// Threads  one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "Check/Collector.h"
#include "Check/Schema/SchemaPlan.h"
#include "Check/Schema/SupertypeRules.h"
#include "Check/Syntax/InstanceTable.h"
#include "Check/Syntax/StatementSink.h"

namespace oxa::check {

class SchemaLevel final : public StatementSink {
public:
    // All have to outlive this.
    SchemaLevel(const ifc::def::SchemaPset& schema, Collector& collector, InstanceTable& instances);

    void vStatement(const StatementHead& head) override;
    void vRecord(const Token& keyword) override;
    void vValue(const Token& value) override;
    void vOpenList(const Token& open) override;
    void vOpenTyped(const Token& keyword) override;
    void vClose(const Token& close) override;
    void vRecordEnd(const Token& close) override;
    void vStatementEnd(bool boFine) override;
    void vSection() override {}

    // Behind the last statement: what only the whole file tells.
    void vFinish();
    // Statements that are faulty in syntax, so that they could not be looked at wholly.
    [[nodiscard]] std::uint64_t iFaulty() const noexcept { return m_iFaulty; }

private:
    // What is open around a value.
    struct Frame {
        enum class Kind : std::uint8_t { Aggregate, Typed, Ignored };
        Kind kind = Kind::Ignored;
        const ValueType* pType = nullptr;   // of an aggregate itself, of a typed parameter its value
        Place place{};
        std::uint64_t iCount = 0;
        std::uint64_t iHash = 0;
        std::size_t iFirstItem = 0;   // in m_items
    };
    // Some exporters write whatever is referred to behind what refers to it: these are as many as the file has references.
    struct Reference {
        std::uint64_t iTarget;
        std::uint64_t iSource;
        std::uint32_t iHeldTo;   // in m_heldTo
        std::uint32_t iLine;     // up to 32 bits, the column too
        std::uint32_t iColumn;
    };
    struct HeldTo {
        const ValueType* pType;
        const ParameterPlan* pParameter;
        [[nodiscard]] auto operator<=>(const HeldTo&) const noexcept = default;
    };
    struct InverseUse {
        std::uint32_t iInverse;
        std::uint64_t iTarget;
        std::uint64_t iSource;
        [[nodiscard]] auto operator<=>(const InverseUse&) const noexcept = default;
    };
    // Whether it is derived is known when all records are.
    struct ComplexParameter {
        const ParameterPlan* pParameter;
        bool boStar;
        Place place;
        std::string sText;
    };
    struct UniqueValue {
        std::uint64_t iHash;
        std::uint64_t iNumber;
        Place place;
    };
    struct Message {
        std::string_view key;
        std::string_view message;
        std::string_view expected{};
        std::string_view found{};
        CheckWeight weight = CheckWeight::Failure;
    };

    void vTell(const Message& message, Place place);
    [[nodiscard]] const ValueType* pExpected(const Token& token, bool boValue);
    [[nodiscard]] const ValueType* pParameterType(const Token& token, bool boValue);
    void vUnset(const Token& value);
    void vScalar(const ValueType& type, const Token& value);
    void vWrong(const ValueType& type, const Token& value);
    void vEnumeration(const ValueType& type, const Token& value);
    void vWidth(const ValueType& type, const Token& value);
    void vGlobalId(const Token& value);
    void vReference(const ValueType& type, const Token& value);
    void vReferenceAhead(const ValueType& type, const Token& value);
    [[nodiscard]] bool boAccepts(const ValueType& type, const Instance& instance, std::uint64_t iNumber) const;
    [[nodiscard]] std::string sTypeOf(const Instance& instance, std::uint64_t iNumber) const;
    [[nodiscard]] bool boIsOf(const ifc::def::schema::Entity& entity, const Instance& instance,
                              std::uint64_t iNumber) const;
    void vItem(std::uint64_t iHash);
    void vAggregateEnd(const Frame& frame);
    void vComplexEnd();
    void vTogether(const ifc::def::schema::Entity& supertype);
    void vComplexDerived();
    void vUniqueValues();
    void vFinishReferences();
    void vFinishInverses();
    void vFinishUnique();

    const ifc::def::SchemaPset& m_schema;
    SchemaPlan m_plan;
    std::optional<SupertypeRules> m_supertypes;   // made when a file has a complex instance
    Collector& m_collector;
    InstanceTable& m_instances;
    StatementHead m_head{};
    std::string m_sType;   // of the record, for records
    const EntityPlan* m_pRecord = nullptr;
    const ParameterPlan* m_pParameter = nullptr;
    std::size_t m_iParameters = 0;   // of the record so far
    std::vector<Frame> m_frames;
    std::size_t m_iHashing = 0;   // open frames that need hashes of what is in them
    std::vector<std::uint64_t> m_items;
    std::vector<std::optional<std::uint64_t>> m_values;       // hashes, by parameter
    std::vector<const ifc::def::schema::Entity*> m_records;   // of a complex instance
    std::vector<ComplexParameter> m_complexParameters;        // the same
    std::unordered_map<std::uint64_t, std::vector<const ifc::def::schema::Entity*>> m_complex;
    std::deque<Reference> m_references;   // to what is not there yet
    std::vector<HeldTo> m_heldTo;
    std::map<HeldTo, std::uint32_t> m_heldToIndex;
    std::uint32_t m_iHeldTo = 0;   // of the last one
    std::vector<InverseUse> m_uses;
    std::vector<std::vector<UniqueValue>> m_unique;   // by rule
    std::uint64_t m_iFaulty = 0;
};

}   // namespace oxa::check
