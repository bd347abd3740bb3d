// SPDX-License-Identifier: Apache-2.0
// Value: what an expression of EXPRESS gives, in 24 bytes; aggregates and instances that an evaluation makes; their memory.
//
// For      the evaluator. A value owns nothing: it leads into the model, into a program, or into an Arena.
// Threads  plain values; an Arena belongs to one evaluator.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>
#include <type_traits>
#include <vector>

#include "schema/Schema.h"

namespace oxa::ifc {
class AttributeListValueBase;
class Entity;
}   // namespace oxa::ifc

namespace oxa::check::rules {

namespace schema = ifc::def::schema;

enum class Kind : std::uint8_t {
    Null,   // indeterminate, "?"
    Logical,
    Integer,
    Real,
    String,
    Binary,
    Enumerator,
    Entity,      // of the model
    Instance,    // made by the evaluation
    Items,       // an aggregate of the model
    Aggregate,   // made by the evaluation
};

// In the order of ISO 10303-11, 12.2.1.2.
enum class Logical : std::uint8_t { False, Unknown, True };

enum class AggregateKind : std::uint8_t { Literal, Array, Bag, List, Set };

struct Aggregate;
struct Instance;

struct Value {
    static constexpr std::uint32_t g_iToNul = static_cast<std::uint32_t>(-1);

    Kind kind = Kind::Null;
    std::uint32_t iCount = 0;   // bytes of a String or g_iToNul; bits of a Binary
    union {
        long long iInteger = 0;
        double fReal;
        Logical eLogical;
        const char* pText;             // String; Enumerator, with a NUL behind it
        const unsigned char* pBytes;   // Binary
        ifc::Entity* pEntity;
        Instance* pInstance;
        const ifc::AttributeListValueBase* pItems;
        Aggregate* pAggregate;
    };
    const schema::ObjectBase* pType = nullptr;   // a defined type or, of Items, whatever the attribute has; may be null

    [[nodiscard]] bool boNull() const noexcept { return kind == Kind::Null; }
    [[nodiscard]] bool boNumber() const noexcept { return kind == Kind::Integer || kind == Kind::Real; }
    [[nodiscard]] bool boAggregate() const noexcept { return kind == Kind::Items || kind == Kind::Aggregate; }
    [[nodiscard]] double fNumber() const noexcept {
        return kind == Kind::Integer ? static_cast<double>(iInteger) : fReal;
    }
    [[nodiscard]] std::string_view text() const noexcept {
        return iCount == g_iToNul ? std::string_view(pText) : std::string_view(pText, iCount);
    }
};
static_assert(sizeof(Value) == 24 && std::is_trivially_copyable_v<Value>);

[[nodiscard]] inline Value valueOf(Logical eLogical) noexcept {
    Value value;
    value.kind = Kind::Logical;
    value.eLogical = eLogical;
    return value;
}
[[nodiscard]] inline Value valueOf(bool boValue) noexcept { return valueOf(boValue ? Logical::True : Logical::False); }
[[nodiscard]] inline Value valueOf(long long iValue) noexcept {
    Value value;
    value.kind = Kind::Integer;
    value.iInteger = iValue;
    return value;
}
[[nodiscard]] inline Value valueOf(double fValue) noexcept {
    Value value;
    value.kind = Kind::Real;
    value.fReal = fValue;
    return value;
}
// Unknown where no finite number came out.
[[nodiscard]] inline Value ofReal(double fValue) noexcept { return std::isfinite(fValue) ? valueOf(fValue) : Value(); }
// The text is not copied.
[[nodiscard]] inline Value valueOf(std::string_view text) noexcept {
    Value value;
    value.kind = Kind::String;
    value.pText = text.data();
    value.iCount = static_cast<std::uint32_t>(text.size());
    return value;
}
[[nodiscard]] inline Value valueOf(ifc::Entity* pEntity) noexcept {
    Value value;
    if (!pEntity) return value;
    value.kind = Kind::Entity;
    value.pEntity = pEntity;
    return value;
}
[[nodiscard]] inline Value valueOf(Aggregate* pAggregate) noexcept {
    Value value;
    value.kind = Kind::Aggregate;
    value.pAggregate = pAggregate;
    return value;
}
[[nodiscard]] inline Value valueOf(Instance* pInstance) noexcept {
    Value value;
    value.kind = Kind::Instance;
    value.pInstance = pInstance;
    return value;
}
template <class T>
Value valueOf(T) = delete;   // no silent conversion, of a pointer to a bool above all

// Its items change in place only while one variable alone has it: whoever stores it a second time sets boShared.
struct Aggregate {
    AggregateKind kind = AggregateKind::Literal;
    bool boShared = false;
    std::uint32_t iCount = 0;
    std::uint32_t iCapacity = 0;
    std::uint32_t iSlots = 0;   // of pSlots: a power of two, or 0
    long long iLow = 0;         // declared lower bound; of an ARRAY the index of the first item
    long long iBound = -1;      // declared upper bound; -1 for none
    Value* pItems = nullptr;
    std::uint32_t* pSlots = nullptr;   // of a large SET: places of items plus 1, by hash
};

// An instance that an expression made, or a changed copy of one of the model.
struct Instance {
    const schema::Entity* pType = nullptr;
    bool boShared = false;
    std::uint32_t iCount = 0;
    Value* pValues = nullptr;    // for each of pType->allAttributes()
    Instance* pNext = nullptr;   // a further part of a complex instance, of an unrelated type
};

// What is stored a second time, not changed in place any more. A constant of the program says so from the start and is only
// read: threads share it.
inline Value shared(const Value& value) {
    if (value.kind == Kind::Aggregate && !value.pAggregate->boShared) value.pAggregate->boShared = true;
    if (value.kind == Kind::Instance && !value.pInstance->boShared) value.pInstance->boShared = true;
    return value;
}

// Memory that is forgotten as a whole. What it hands out is plain data.
class Arena {
public:
    explicit Arena(std::size_t iLimit) : m_iLimit(iLimit) {}

    // Null where the limit is reached.
    template <class T>
    [[nodiscard]] T* pMake(std::size_t iCount = 1) {
        static_assert(std::is_trivially_destructible_v<T>);
        if (iCount > m_iLimit / sizeof(T)) return nullptr;
        void* pBytes = pAllocate(sizeof(T) * iCount);
        return pBytes ? std::uninitialized_value_construct_n(static_cast<T*>(pBytes), iCount) - iCount : nullptr;
    }
    // Everything is forgotten; the first block stays for what comes.
    void vReset() noexcept {
        if (m_blocks.size() > 1) m_blocks.resize(1);
        m_iBlockUsed = 0;
        m_iUsed = 0;
    }

private:
    static constexpr std::size_t g_iBlock = std::size_t{64} * 1024;
    struct Block {
        std::unique_ptr<std::byte[]> pBytes;
        std::size_t iSize = 0;
    };

    void* pAllocate(std::size_t iBytes) {
        iBytes = (iBytes + 7) & ~std::size_t{7};
        m_iUsed += iBytes;
        if (m_iUsed > m_iLimit) return nullptr;
        if (m_blocks.empty() || m_iBlockUsed + iBytes > m_blocks.back().iSize) {
            const std::size_t iSize = iBytes > g_iBlock ? iBytes : g_iBlock;
            m_blocks.push_back({std::make_unique<std::byte[]>(iSize), iSize});
            m_iBlockUsed = 0;
        }
        void* pResult = m_blocks.back().pBytes.get() + m_iBlockUsed;
        m_iBlockUsed += iBytes;
        return pResult;
    }

    std::size_t m_iLimit;
    std::size_t m_iUsed = 0;
    std::size_t m_iBlockUsed = 0;
    std::vector<Block> m_blocks;
};

}   // namespace oxa::check::rules
