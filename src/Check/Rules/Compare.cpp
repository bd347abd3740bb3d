// SPDX-License-Identifier: Apache-2.0
#include "Check/Rules/Compare.h"

#include <algorithm>
#include <cstring>

#include "Check/Rules/Access.h"

namespace oxa::check::rules {

namespace {

constexpr std::uint32_t g_iHashedFrom = 16;   // items; below it is cheaper to look at all
constexpr std::size_t g_iDepthLimit = 200;

Logical ofBool(bool boValue) { return boValue ? Logical::True : Logical::False; }

bool boOrdered(AggregateKind kind) { return kind != AggregateKind::Set && kind != AggregateKind::Bag; }

// Compares by value or by identity; pairs of instances that are being compared count as equal, so that a circle ends.
class Comparison {
public:
    Comparison(Evaluator& evaluator, bool boIdentity) : m_evaluator(evaluator), m_boIdentity(boIdentity) {}

    Logical compare(const Value& a, const Value& b) {
        if (a.boNull() || b.boNull()) return Logical::Unknown;
        if (a.boAggregate() && b.boAggregate()) return aggregates(a, b);
        const bool boInstances = pEntityTypeOf(a) && pEntityTypeOf(b);
        if (boInstances) return instances(a, b);
        if (!boStepText(m_evaluator, a)) return Logical::Unknown;
        const Order result = order(a, b);
        return result.boKnown ? ofBool(result.iSign == 0) : Logical::Unknown;
    }

private:
    static const void* pIdentity(const Value& value) {
        return value.kind == Kind::Entity ? static_cast<const void*>(value.pEntity) : value.pInstance;
    }

    Logical instances(const Value& a, const Value& b) {
        const std::pair pair(pIdentity(a), pIdentity(b));
        if (pair.first == pair.second) return Logical::True;
        if (m_boIdentity || pEntityTypeOf(a) != pEntityTypeOf(b)) return Logical::False;
        if (std::find(m_open.begin(), m_open.end(), pair) != m_open.end()) return Logical::True;
        if (m_open.size() == g_iDepthLimit) {
            m_evaluator.fail("instances that are compared are nested too deeply");
            return Logical::Unknown;
        }
        m_open.push_back(pair);
        const Logical eResult = attributes(a, b);
        m_open.pop_back();
        return eResult;
    }

    Logical attributes(const Value& a, const Value& b) {
        const schema::Entity& type = *pEntityTypeOf(a);
        Logical eResult = Logical::True;
        for (std::size_t i = 0; i < type.allAttributes().size(); ++i) {
            if (!m_evaluator.boStep()) return Logical::Unknown;
            const Logical eItem = compare(explicitAt(m_evaluator, a, i), explicitAt(m_evaluator, b, i));
            if (eItem == Logical::False) return eItem;
            eResult = std::min(eResult, eItem);
        }
        return eResult;
    }

    Logical aggregates(const Value& a, const Value& b) {
        const std::size_t iCount = iItems(m_evaluator, a);
        if (iCount != iItems(m_evaluator, b)) return Logical::False;
        return boOrdered(aggregateKind(a)) && boOrdered(aggregateKind(b)) ? ordered(a, b, iCount)
                                                                          : unordered(a, b, iCount);
    }

    Logical ordered(const Value& a, const Value& b, std::size_t iCount) {
        Logical eResult = Logical::True;
        for (std::size_t i = 0; i < iCount; ++i) {
            if (!m_evaluator.boStep()) return Logical::Unknown;
            const Logical eItem = compare(itemAt(m_evaluator, a, i), itemAt(m_evaluator, b, i));
            if (eItem == Logical::False) return eItem;
            eResult = std::min(eResult, eItem);
        }
        return eResult;
    }

    // Each item of the one has its partner among those of the other. Partners are looked for from the place on where
    // they stand in most cases.
    Logical unordered(const Value& a, const Value& b, std::size_t iCount) {
        std::vector<bool> taken(iCount);
        Logical eResult = Logical::True;
        for (std::size_t i = 0; i < iCount; ++i) {
            const Value item = itemAt(m_evaluator, a, i);
            Logical eBest = Logical::False;
            for (std::size_t iNext = 0; iNext < iCount && eBest != Logical::True; ++iNext) {
                const std::size_t iOther = (i + iNext) % iCount;
                if (taken[iOther]) continue;
                if (!m_evaluator.boStep()) return Logical::Unknown;
                const Logical eItem = compare(item, itemAt(m_evaluator, b, iOther));
                if (eItem == Logical::True) taken[iOther] = true;
                eBest = std::max(eBest, eItem);
            }
            if (eBest == Logical::False) return eBest;
            eResult = std::min(eResult, eBest);
        }
        return eResult;
    }

    Evaluator& m_evaluator;
    bool m_boIdentity;
    std::vector<std::pair<const void*, const void*>> m_open;
};

// The place of an enumerator in its declaration; -1 where that is not known.
int iDeclared(const Value& enumerator, const schema::ObjectBase* pType) {
    const auto* pEnum = dynamic_cast<const schema::DataTypeEnum*>(schema::pDataTypeOf(pType));
    if (!pEnum) return -1;
    const auto pFound = std::find(pEnum->declared.begin(), pEnum->declared.end(), enumerator.pText);
    return pFound == pEnum->declared.end() ? -1 : static_cast<int>(pFound - pEnum->declared.begin());
}

template <class T>
int iSign(const T& a, const T& b) {
    return a < b ? -1 : b < a ? 1 : 0;
}

Order orderOfEnumerators(const Value& a, const Value& b) {
    if (a.pText == b.pText || std::strcmp(a.pText, b.pText) == 0) return {0, true};
    const schema::ObjectBase* pType = a.pType ? a.pType : b.pType;
    const int iA = iDeclared(a, pType);
    const int iB = iDeclared(b, pType);
    return iA < 0 || iB < 0 ? Order{std::strcmp(a.pText, b.pText) < 0 ? -1 : 1, true} : Order{iSign(iA, iB), true};
}

Order orderOfBinaries(const Value& a, const Value& b) {
    const std::uint32_t iBytes = std::min(a.iCount, b.iCount) / 8;
    const int iBytesSign = iBytes ? std::memcmp(a.pBytes, b.pBytes, iBytes) : 0;
    if (iBytesSign) return {iBytesSign < 0 ? -1 : 1, true};
    const auto iBit = [](const Value& value, std::uint32_t i) { return (value.pBytes[i / 8] >> (7 - i % 8)) & 1; };
    for (std::uint32_t i = iBytes * 8; i < std::min(a.iCount, b.iCount); ++i)
        if (iBit(a, i) != iBit(b, i)) return {iBit(a, i) < iBit(b, i) ? -1 : 1, true};
    return {iSign(a.iCount, b.iCount), true};
}

std::uint64_t uMixed(std::uint64_t uValue) noexcept {
    uValue ^= uValue >> 33;
    uValue *= 0xff51afd7ed558ccdULL;
    uValue ^= uValue >> 33;
    return uValue;
}

std::uint64_t uOfText(std::string_view text) noexcept {
    std::uint64_t uHash = 0xcbf29ce484222325ULL;
    for (const char c : text) uHash = (uHash ^ static_cast<unsigned char>(c)) * 0x100000001b3ULL;
    return uMixed(uHash);
}

// Makes the table of a SET anew, at twice the capacity of its items.
bool boIndex(Evaluator& evaluator, Aggregate& set) {
    std::uint32_t iSlots = 64;
    while (iSlots < set.iCapacity * 2) iSlots *= 2;
    set.pSlots = evaluator.pMake<std::uint32_t>(iSlots);
    if (!set.pSlots) return false;
    set.iSlots = iSlots;
    for (std::uint32_t i = 0; i < set.iCount; ++i) {
        std::uint64_t uAt = uHash(set.pItems[i]);
        while (set.pSlots[uAt & (iSlots - 1)]) ++uAt;
        set.pSlots[uAt & (iSlots - 1)] = i + 1;
    }
    return true;
}

}   // namespace

Logical equal(Evaluator& evaluator, const Value& a, const Value& b) {
    return Comparison(evaluator, false).compare(a, b);
}

Logical same(Evaluator& evaluator, const Value& a, const Value& b) { return Comparison(evaluator, true).compare(a, b); }

Order order(const Value& a, const Value& b) noexcept {
    if (a.boNumber() && b.boNumber())
        return a.kind == Kind::Integer && b.kind == Kind::Integer ? Order{iSign(a.iInteger, b.iInteger), true}
                                                                  : Order{iSign(a.fNumber(), b.fNumber()), true};
    if (a.kind != b.kind) return {};
    switch (a.kind) {
    case Kind::Logical: return {iSign(a.eLogical, b.eLogical), true};
    case Kind::String: return {iSign(a.text(), b.text()), true};
    case Kind::Binary: return orderOfBinaries(a, b);
    case Kind::Enumerator: return orderOfEnumerators(a, b);
    case Kind::Null:
    case Kind::Integer:
    case Kind::Real:
    case Kind::Entity:
    case Kind::Instance:
    case Kind::Items:
    case Kind::Aggregate: break;
    }
    return {};
}

std::uint64_t uHash(const Value& value) noexcept {
    switch (value.kind) {
    case Kind::Logical: return static_cast<std::uint64_t>(value.eLogical);
    case Kind::Integer:
    case Kind::Real: {
        const double fValue = value.fNumber() == 0.0 ? 0.0 : value.fNumber();   // one zero
        std::uint64_t uBits = 0;
        std::memcpy(&uBits, &fValue, sizeof uBits);
        return uMixed(uBits);
    }
    case Kind::String: return uOfText(value.text());
    case Kind::Enumerator: return uOfText(value.pText);
    case Kind::Entity: return uMixed(reinterpret_cast<std::uintptr_t>(value.pEntity));
    case Kind::Instance: return uMixed(reinterpret_cast<std::uintptr_t>(value.pInstance));
    case Kind::Null:
    case Kind::Binary:
    case Kind::Items:
    case Kind::Aggregate: break;   // rare: all in one place
    }
    return static_cast<std::uint64_t>(value.kind);
}

std::uint32_t iFind(Evaluator& evaluator, const Aggregate& aggregate, const Value& item) {
    if (!aggregate.iSlots) {
        for (std::uint32_t i = 0; i < aggregate.iCount; ++i)
            if (!evaluator.boStep() || same(evaluator, aggregate.pItems[i], item) == Logical::True) return i;
        return aggregate.iCount;
    }
    if (!boStepText(evaluator, item)) return aggregate.iCount;
    for (std::uint64_t uAt = uHash(item); evaluator.boStep(); ++uAt) {
        const std::uint32_t iPlace = aggregate.pSlots[uAt & (aggregate.iSlots - 1)];
        if (!iPlace) return aggregate.iCount;
        if (same(evaluator, aggregate.pItems[iPlace - 1], item) == Logical::True) return iPlace - 1;
    }
    return aggregate.iCount;
}

bool boInsert(Evaluator& evaluator, Aggregate& set, const Value& item) {
    if (iFind(evaluator, set, item) != set.iCount) return !evaluator.boFailed();
    const std::uint32_t iCapacity = set.iCapacity;
    if (!evaluator.boAppend(set, item)) return false;
    if (set.iCapacity >= g_iHashedFrom && (set.iCapacity != iCapacity || !set.iSlots)) return boIndex(evaluator, set);
    if (!set.iSlots) return true;
    std::uint64_t uAt = uHash(item);
    while (set.pSlots[uAt & (set.iSlots - 1)]) ++uAt;
    set.pSlots[uAt & (set.iSlots - 1)] = set.iCount;
    return true;
}

}   // namespace oxa::check::rules
