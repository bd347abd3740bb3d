// SPDX-License-Identifier: Apache-2.0
// Comparison of cells and of instances, references followed as deep as they go.
//
// The three forms of a value are not compared alike. Where a value stands decides what its flags do:
//
//   place                     flags differ           both without a value   two references   GUID beside text
//   attribute                 unequal                equal                  by content       equal
//   inside of a select        unequal                by what lies there     unequal          unequal
//   list in a select, row     by items               unequal                -                -
//
// A list in a select or in a list is thus unequal to any other that has the same flags, which all ordinary ones have.
#include <array>
#include <cstring>
#include <functional>
#include <tuple>
#include <type_traits>
#include <unordered_set>
#include <utility>
#include <vector>

#include "Format/Ifc/IfcFileAttribute.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "platform/Assert.h"

namespace oxa::ifc {

using def::schema::DataKind;

namespace {

// The pairs of instances that a comparison came across. A pair counts as equal from then on: if it is not, its own
// turn tells. So a cycle ends, and as all pairs must hold, none needs to be settled before the one that led to it.
class EntityPairs {
public:
    void vAdd(const Entity& a, const Entity& b) {
        const Pair pair(&a, &b);
        if (m_pairs.size() < g_iFew) {
            for (const Pair& known : m_pairs)
                if (known == pair) return;
        } else {
            if (m_known.empty()) m_known.insert(m_pairs.begin(), m_pairs.end());
            if (!m_known.insert(pair).second) return;
        }
        m_pairs.push_back(pair);
    }
    // The next pair to look at; two nulls at the end.
    [[nodiscard]] std::pair<const Entity*, const Entity*> next() noexcept {
        return m_iNext < m_pairs.size() ? m_pairs[m_iNext++] : Pair();
    }

private:
    using Pair = std::pair<const Entity*, const Entity*>;
    struct PairHash {
        std::size_t operator()(const Pair& pair) const noexcept {
            constexpr std::size_t g_odd = 0x9E3779B97F4A7C15;   // spreads what would cancel out in a plain sum
            const std::hash<const Entity*> hash;
            return (hash(pair.first) * g_odd) ^ hash(pair.second);
        }
    };
    static constexpr std::size_t g_iFew = 16;   // up to here a look at each is cheaper than hashing

    std::vector<Pair> m_pairs;   // in the order of their turns
    std::size_t m_iNext = 0;
    std::unordered_set<Pair, PairHash> m_known;   // of all m_pairs; empty while they are few
};

bool boSameFlags(const AttributeBase& a, const AttributeBase& b) noexcept {
    return a.m_boUndefined == b.m_boUndefined && a.m_boDerived == b.m_boDerived;
}

bool boSameText(const char* a, const char* b) noexcept { return a == b || (a && b && std::strcmp(a, b) == 0); }

template <class Cell>
bool boSameValue(const AttributeBase& a, const AttributeBase& b) noexcept {
    return static_cast<const Cell&>(a).m_value == static_cast<const Cell&>(b).m_value;
}

template <class Cell>
bool boSameTextValue(const AttributeBase& a, const AttributeBase& b) noexcept {
    return boSameText(static_cast<const Cell&>(a).m_value, static_cast<const Cell&>(b).m_value);
}

// Both cells have the same GUID flag.
bool boSameString(const AttributeBase& a, const AttributeBase& b) noexcept {
    if (!a.m_boGuid) return boSameTextValue<AttributeString>(a, b);
    return static_cast<const AttributeGuid&>(a).m_value.load() == static_cast<const AttributeGuid&>(b).m_value.load();
}

bool boSameBinary(const AttributeBase& a, const AttributeBase& b) noexcept {
    const auto& left = static_cast<const AttributeBinary&>(a);
    const auto& right = static_cast<const AttributeBinary&>(b);
    const std::uint64_t iCount = left.m_iCount;
    return iCount == right.m_iCount &&
           (iCount == 0 || std::memcmp(left.m_value.load(), right.m_value.load(), iCount) == 0);
}

// For each kind that is a single value, how two cells of it compare. Selects and aggregates are beyond the table.
using Same = bool (*)(const AttributeBase&, const AttributeBase&) noexcept;
// clang-format off
constexpr std::array<Same, 8> g_same{
    boSameValue<AttributeReal>,   boSameValue<AttributeBoolean>, boSameValue<AttributeInteger>,
    boSameValue<AttributeNumber>, boSameString,                  boSameValue<AttributeLogical>,
    boSameBinary,                 boSameTextValue<AttributeEnumeration>,
};
// clang-format on
static_assert(static_cast<std::size_t>(DataKind::Enumeration) + 1 == g_same.size());

bool boSingleValue(DataKind kind) noexcept { return static_cast<std::size_t>(kind) < g_same.size(); }

bool boSame(DataKind kind, const AttributeBase& a, const AttributeBase& b) noexcept {
    return g_same[static_cast<std::size_t>(kind)](a, b);
}

}   // namespace

// One comparison from its first pair of cells to its last pair of instances.
struct EntityComparison {
    EntityPairs pairs;
    bool boSameEntity;   // of the cells in hand; those of instances are always compared by content

    // Whether all holds that was put off.
    [[nodiscard]] bool boRest() {
        boSameEntity = false;
        for (auto [pLeft, pRight] = pairs.next(); pLeft; std::tie(pLeft, pRight) = pairs.next())
            if (!boAttributes(*pLeft, *pRight)) return false;
        return true;
    }

    [[nodiscard]] bool boAttributes(const Entity& a, const Entity& b) {
        const def::schema::Entity* pSchema = a.m_pSchemaEntity;
        if (!pSchema || pSchema != b.m_pSchemaEntity || !a.m_pAttributes || !b.m_pAttributes) return false;
        if (pSchema->allAttributes().empty() || !pSchema->pDataSize.boReady()) return false;
        const auto* pLeft = static_cast<const char*>(a.m_pAttributes);
        const auto* pRight = static_cast<const char*>(b.m_pAttributes);
        for (const DataSizeEntity::Cell& cell : pSchema->pDataSize.value()->cells) {
            const auto& types = cell.pAttribute->types;
            if (types.empty() || !types.front()) return false;
            if (cell.eClass == CellClass::Illegal) continue;   // no bytes
            if (!boCells(types.front(), *reinterpret_cast<const AttributeBase*>(pLeft + cell.iOffset),
                         *reinterpret_cast<const AttributeBase*>(pRight + cell.iOffset)))
                return false;
        }
        return true;
    }

    // The values of one attribute.
    [[nodiscard]] bool boCells(const def::schema::ObjectBase* pObject, const AttributeBase& a, const AttributeBase& b) {
        if (!boSameFlags(a, b)) return false;
        if (!a.boHasValue()) return true;
        if (def::schema::pAsEntity(pObject)) return boReferences(a, b);
        const def::schema::DataTypeBase* pDataType = def::schema::pDataTypeOf(pObject);
        if (!pDataType) return false;
        const DataKind kind = pDataType->kind;
        if (kind == DataKind::String && a.m_boGuid != b.m_boGuid) return true;
        if (boSingleValue(kind)) return boSame(kind, a, b);
        if (kind == DataKind::Select)
            return boSelects(static_cast<const AttributeSelect&>(a), static_cast<const AttributeSelect&>(b), false);
        if (!def::schema::boIsAggregate(kind)) return true;
        return boLists(static_cast<const AttributeListValueBase&>(a), static_cast<const AttributeListValueBase&>(b),
                       false);
    }

    [[nodiscard]] bool boReferences(const AttributeBase& a, const AttributeBase& b) {
        const Entity* pLeft = static_cast<const AttributeEntity&>(a).m_value;
        const Entity* pRight = static_cast<const AttributeEntity&>(b).m_value;
        if (pLeft == pRight) return true;
        if (boSameEntity || !pLeft || !pRight) return false;
        pairs.vAdd(*pLeft, *pRight);
        return true;
    }

    [[nodiscard]] bool boSelects(const AttributeSelect& first, const AttributeSelect& second, bool boCompareFlags) {
        const AttributeSelect* pLeft = &first;
        const AttributeSelect* pRight = &second;
        for (;; boCompareFlags = true) {
            if (boCompareFlags && !boSameFlags(*pLeft, *pRight)) return false;
            if (pLeft->m_eType.load() != pRight->m_eType.load()) return false;
            const AttributeBase* pA = pLeft->m_pValue;
            const AttributeBase* pB = pRight->m_pValue;
            if (!pA || !pB) return false;
            if (pLeft->m_eType.load() == AttributeType::Entity) return !boSameFlags(*pA, *pB) && boReferences(*pA, *pB);
            const def::schema::DataTypeBase* pDataType = def::schema::pDataTypeOf(pLeft->m_pType.load());
            if (!pDataType) return false;
            const DataKind kind = pDataType->kind;
            if (boSingleValue(kind))
                return boSameFlags(*pA, *pB) && (kind != DataKind::String || pA->m_boGuid == pB->m_boGuid) &&
                       boSame(kind, *pA, *pB);
            if (def::schema::boIsAggregate(kind))
                return boLists(static_cast<const AttributeListValueBase&>(*pA),
                               static_cast<const AttributeListValueBase&>(*pB), true);
            if (kind != DataKind::Select) return false;
            pLeft = static_cast<const AttributeSelect*>(pA);
            pRight = static_cast<const AttributeSelect*>(pB);
        }
    }

    [[nodiscard]] bool boLists(const AttributeListValueBase& a, const AttributeListValueBase& b, bool boCompareFlags) {
        if (boCompareFlags && boSameFlags(a, b)) return false;
        const void* pLeft = a.m_pItems;
        const void* pRight = b.m_pItems;
        if (!pLeft && !pRight) return true;
        const AttributeType eItems = a.m_eItemType;
        if (eItems != b.m_eItemType.load() || !pLeft) return false;
        if (eItems < AttributeType::Unknown || eItems > AttributeType::Entity) return false;
        if (eItems == AttributeType::Entity) return boEntityLists(a.pEntities(), b.pEntities());
        const auto boItems = [&]<class T>(std::type_identity<T>, auto&& boSameItem) {
            return pRight && boArrays(*a.pArray<T>(), *b.pArray<T>(), boSameItem);
        };
        switch (eItems) {
        case AttributeType::Real: return boItems(std::type_identity<double>(), std::equal_to<double>());
        case AttributeType::Integer: return boItems(std::type_identity<long long>(), std::equal_to<long long>());
        case AttributeType::String: return boItems(std::type_identity<char*>(), boSameText);
        case AttributeType::Binary:
            return boItems(std::type_identity<AttributeBinary>(), [](const auto& left, const auto& right) {
                return boSameFlags(left, right) && boSameBinary(left, right);
            });
        case AttributeType::Select:
            return boItems(std::type_identity<AttributeSelect>(),
                           [this](const auto& left, const auto& right) { return boSelects(left, right, true); });
        case AttributeType::List:
            return boItems(std::type_identity<AttributeList>(),
                           [this](const auto& left, const auto& right) { return boLists(left, right, true); });
        default:
            Assert::vTell("Format/Ifc/IfcFileAttribute", "oxa::ifc::AttributeListValueBase::boIsEqual",
                          "Not implemented");
            return false;
        }
    }

    template <class T, class SameItem>
    [[nodiscard]] static bool boArrays(const Array<T>& a, const Array<T>& b, SameItem&& boSameItem) {
        if (a.size() != b.size()) return false;
        for (std::size_t i = 0; i < a.size(); ++i)
            if (!boSameItem(a[i], b[i])) return false;
        return true;
    }

    // By content, even where both are one and the same instance: it may be unequal to itself.
    [[nodiscard]] bool boEntityLists(const EntityList* pLeft, const EntityList* pRight) {
        if (!pLeft || !pRight) return pLeft == pRight;
        auto left = pLeft->begin();
        auto right = pRight->begin();
        for (; left != pLeft->end() && right != pRight->end(); ++left, ++right) {
            const Entity* pA = *left;
            const Entity* pB = *right;
            if (!pA != !pB) return false;
            if (pA) pairs.vAdd(*pA, *pB);
        }
        return left == pLeft->end() && right == pRight->end();
    }
};

bool Entity::boIsEqual(const Entity& other) const {
    EntityComparison comparison{{}, false};
    return comparison.boAttributes(*this, other) && comparison.boRest();
}

bool AttributeBase::boIsEqual(const def::schema::ObjectBase& object, const AttributeBase& other,
                              const def::schema::ObjectBase& otherObject, bool boSameEntity) const {
    if (&object != &otherObject) return false;
    EntityComparison comparison{{}, boSameEntity};
    return comparison.boCells(&object, *this, other) && comparison.boRest();
}

bool AttributeSelect::boIsEqual(const AttributeSelect& other, bool boSameEntity, bool boCompareFlags) const {
    EntityComparison comparison{{}, boSameEntity};
    return comparison.boSelects(*this, other, boCompareFlags) && comparison.boRest();
}

bool AttributeListValueBase::boIsEqual(const AttributeListValueBase& other, bool boSameEntity,
                                       bool boCompareFlags) const {
    EntityComparison comparison{{}, boSameEntity};
    return comparison.boLists(*this, other, boCompareFlags) && comparison.boRest();
}

}   // namespace oxa::ifc
