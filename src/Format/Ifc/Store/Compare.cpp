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
#include <cstring>
#include <functional>
#include <tuple>
#include <unordered_set>
#include <utility>
#include <vector>

#include "Format/Ifc/IfcCellVisit.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "platform/Assert.h"

namespace oxa::ifc {

namespace {

// The pairs of instances that a comparison came across.
//
// Equality of cyclic graphs. Two instances are equal when no difference can be reached from the pair. So a pair that
// was met before is passed over: if it is unequal, its own turn finds that; if the only way to prove it equal leads
// back to itself, there is no difference to be found. This is the largest relation that the rules allow (a
// bisimulation), and it ends because there are finitely many pairs. The work list is a vector, not the stack: a chain
// of references may be as long as the model.
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

// Whether two cells of one class have the same single value.
bool boSameValue(const AttributeReal& a, const AttributeReal& b) noexcept { return a.m_value == b.m_value; }
bool boSameValue(const AttributeInteger& a, const AttributeInteger& b) noexcept { return a.m_value == b.m_value; }
bool boSameValue(const AttributeBoolean& a, const AttributeBoolean& b) noexcept { return a.m_value == b.m_value; }
bool boSameValue(const AttributeLogical& a, const AttributeLogical& b) noexcept { return a.m_value == b.m_value; }
bool boSameValue(const AttributeString& a, const AttributeString& b) noexcept {
    return boSameText(a.m_value, b.m_value);
}
bool boSameValue(const AttributeGuid& a, const AttributeGuid& b) noexcept {
    return a.m_value.load() == b.m_value.load();
}
bool boSameValue(const AttributeBinary& a, const AttributeBinary& b) noexcept {
    const std::uint64_t iCount = a.m_iCount;
    return iCount == b.m_iCount && (iCount == 0 || std::memcmp(a.m_value.load(), b.m_value.load(), iCount) == 0);
}
bool boSameValue(const AttributeEnumeration& a, const AttributeEnumeration& b) noexcept {
    return boSameText(a.m_value, b.m_value);
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
            if (!cell.pAttribute->pType()) return false;
            if (cell.eClass == CellClass::Illegal) continue;   // no bytes
            if (!boCells(cell.eClass, *reinterpret_cast<const AttributeBase*>(pLeft + cell.iOffset),
                         *reinterpret_cast<const AttributeBase*>(pRight + cell.iOffset)))
                return false;
        }
        return true;
    }

    // The values of one attribute.
    [[nodiscard]] bool boCells(CellClass eClass, const AttributeBase& a, const AttributeBase& b) {
        if (!boSameFlags(a, b)) return false;
        if (!a.boHasValue()) return true;
        if (eClass == CellClass::Illegal) return true;   // no value in which the two could differ
        const bool boText = eClass == CellClass::String || eClass == CellClass::Guid;
        if (boText && a.m_boGuid != b.m_boGuid) return true;
        return visitCell(a, eClass,
                         Overloads{
                             [&](const AttributeEntity& left) { return boReferences(left, b); },
                             [&](const AttributeSelect& left) { return boSelects(left, as(left, b), false); },
                             [&](const AttributeList& left) { return boLists(left, as(left, b), false); },
                             [&](const auto& left) { return boSameValue(left, as(left, b)); },
                         });
    }

    // Another cell of the same class.
    template <class Cell>
    [[nodiscard]] static const Cell& as(const Cell&, const AttributeBase& other) noexcept {
        return static_cast<const Cell&>(other);
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
            if (!pLeft->m_pValue.load() || !pRight->m_pValue.load()) return false;
            const AttributeSelect* pInside = pSelectInside(*pLeft);
            if (!pInside) return boSelected(*pLeft, *pRight->m_pValue.load());
            pRight = static_cast<const AttributeSelect*>(pRight->m_pValue.load());
            pLeft = pInside;
        }
    }

    // The value of a select and one of another that holds the same sort of value.
    [[nodiscard]] bool boSelected(const AttributeSelect& select, const AttributeBase& b) {
        return visitSelected(select,
                             Overloads{
                                 [&](const AttributeEntity& a) { return !boSameFlags(a, b) && boReferences(a, b); },
                                 [&](const AttributeList& a) { return boLists(a, as(a, b), true); },
                                 [](const AttributeSelect&) { return false; },   // the loop has looked through them
                                 [&](const auto& a) {
                                     return boSameFlags(a, b) && a.m_boGuid == b.m_boGuid && boSameValue(a, as(a, b));
                                 },
                             });
    }

    [[nodiscard]] bool boLists(const AttributeListValueBase& a, const AttributeListValueBase& b, bool boCompareFlags) {
        if (boCompareFlags && boSameFlags(a, b)) return false;
        const void* pLeft = a.m_pItems;
        const void* pRight = b.m_pItems;
        if (!pLeft && !pRight) return true;
        const AttributeType eItems = a.m_eItemType;
        if (eItems != b.m_eItemType.load() || !pLeft) return false;
        if (eItems < AttributeType::Unknown || eItems > AttributeType::Entity) return false;
        const auto boCells = [&](const auto* pItems, auto&& boSameItem) {
            return pRight && boArrays(*pItems, *static_cast<decltype(pItems)>(pRight), boSameItem);
        };
        return visitItems(
            a, Overloads{
                   [&](const Array<double>* pItems) { return boCells(pItems, std::equal_to<double>()); },
                   [&](const Array<long long>* pItems) { return boCells(pItems, std::equal_to<long long>()); },
                   [&](const Array<char*>* pItems) { return boCells(pItems, boSameText); },
                   [&](const Array<AttributeBinary>* pItems) {
                       return boCells(pItems, [](const auto& left, const auto& right) {
                           return boSameFlags(left, right) && boSameValue(left, right);
                       });
                   },
                   [&](const Array<AttributeSelect>* pItems) {
                       return boCells(pItems, [this](const auto& left, const auto& right) {
                           return boSelects(left, right, true);
                       });
                   },
                   [&](const Array<AttributeList>* pItems) {
                       return boCells(
                           pItems, [this](const auto& left, const auto& right) { return boLists(left, right, true); });
                   },
                   [&](const EntityList* pItems) { return boEntityLists(pItems, b.pEntities()); },
                   [](NoItems) {
                       Assert::vTell("Format/Ifc/IfcFileAttribute", "oxa::ifc::AttributeListValueBase::boIsEqual",
                                     "Not implemented");
                       return false;
                   },
               });
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
    return comparison.boCells(cellClass(&object), *this, other) && comparison.boRest();
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
