// SPDX-License-Identifier: Apache-2.0
// What only the whole file tells: references to what came later, how often instances are referred to, UNIQUE rules.
#include <algorithm>
#include <tuple>

#include "Check/Schema/SchemaLevel.h"
#include "Check/Schema/ValueHash.h"

namespace oxa::check {

using namespace ifc::def::schema;

void SchemaLevel::vFinish() {
    m_pParameter = nullptr;
    vFinishReferences();
    vFinishInverses();
    vFinishUnique();
}

// The values of the record that ended, where all attributes of a rule have one.
void SchemaLevel::vUniqueValues() {
    if (m_head.boDouble) return;
    for (const EntityPlan::Unique& unique : m_pRecord->unique) {
        std::uint64_t iHash = g_listHash;
        const bool boAll = std::all_of(unique.parameters.begin(), unique.parameters.end(), [&](std::size_t i) {
            if (i >= m_values.size() || !m_values[i]) return false;
            iHash = mixedHash(iHash, *m_values[i]);
            return true;
        });
        if (!boAll) continue;
        if (m_unique.size() <= unique.iRule) m_unique.resize(unique.iRule + 1);
        m_unique[unique.iRule].push_back({iHash, m_head.iNumber, m_head.place});
    }
}

void SchemaLevel::vFinishReferences() {
    for (const Reference& reference : m_references) {
        const HeldTo& heldTo = m_heldTo[reference.iHeldTo];
        const Place place{reference.iLine, reference.iColumn};
        const Instance* pInstance = m_instances.pFind(reference.iTarget);
        const bool boTyped = pInstance && (pInstance->iType != 0 || pInstance->iMore != 0);
        // What it leads to is there, and no entity of the schema: that is told where it stands.
        if (pInstance && !boTyped) continue;
        if (boTyped && boAccepts(*heldTo.pType, *pInstance, reference.iTarget)) continue;
        m_head.iNumber = reference.iSource;
        m_pParameter = heldTo.pParameter;
        const Instance* pSource = m_instances.pFind(reference.iSource);
        const Entity* pOf = pSource ? m_plan.pByOrdinal(pSource->iType) : nullptr;
        m_sType = pOf ? pOf->sName : heldTo.pParameter->pAttribute->pOwner->sName;
        if (boTyped)
            vTell({"Schema_ReferenceType", "the reference leads to an instance of another type", heldTo.pType->sText,
                   sTypeOf(*pInstance, reference.iTarget)},
                  place);
        else
            vTell({"Schema_ReferenceMissing", "the reference leads to no instance", heldTo.pType->sText,
                   InstanceTable::sName(reference.iTarget)},
                  place);
    }
    m_references = {};
    m_pParameter = nullptr;
}

// An instance that refers twice counts once: the inverse attribute is a SET of instances.
void SchemaLevel::vFinishInverses() {
    std::sort(m_uses.begin(), m_uses.end(), [](const InverseUse& a, const InverseUse& b) {
        return std::tie(a.iTarget, a.iInverse, a.iSource) < std::tie(b.iTarget, b.iInverse, b.iSource);
    });
    const auto last = std::unique(m_uses.begin(), m_uses.end());
    const auto vTellOf = [this](const InversePlan& plan, std::uint64_t iTarget, const Instance& instance,
                                std::uint64_t iCount) {
        const Entity* pOf = m_plan.pByOrdinal(instance.iType);
        const std::string sRule = plan.pInverse->pOwner->sName + '.' + plan.pInverse->sName;
        m_collector.vAdd({.level = CheckLevel::Schema,
                          .key = "Schema_Inverse",
                          .rule = sRule,
                          .type = pOf ? std::string_view(pOf->sName) : std::string_view(),
                          .attribute = plan.pInverse->sName,
                          .message = "the instance is referred to another number of times",
                          .expected = plan.sExpected,
                          .line = instance.iLine,
                          .id = iTarget,
                          .found = std::to_string(iCount)});
    };
    for (auto it = m_uses.begin(); it != last;) {
        const auto itEnd = std::find_if(it, last, [&](const InverseUse& use) {
            return use.iTarget != it->iTarget || use.iInverse != it->iInverse;
        });
        const auto iCount = static_cast<std::uint64_t>(itEnd - it);
        const InversePlan& plan = m_plan.inverses()[it->iInverse];
        const Instance* pInstance = m_instances.pFind(it->iTarget);
        if (pInstance && iCount > plan.iHigh && boIsOf(*plan.pInverse->pOwner, *pInstance, it->iTarget))
            vTellOf(plan, it->iTarget, *pInstance, iCount);
        it = itEnd;
    }
    // Those that are referred to too seldom, or never.
    m_instances.vForEach([&](std::uint64_t iNumber, const Instance& instance) {
        const Entity* pOf = m_plan.pByOrdinal(instance.iType);
        if (!pOf) return;
        for (const std::uint32_t iInverse : m_plan.planOf(*pOf).leastInverses) {
            const auto before = [](const InverseUse& a, const InverseUse& b) {
                return std::tie(a.iTarget, a.iInverse) < std::tie(b.iTarget, b.iInverse);
            };
            const auto [first, end] = std::equal_range(m_uses.begin(), last, InverseUse{iInverse, iNumber, 0}, before);
            const auto iCount = static_cast<std::uint64_t>(end - first);
            const InversePlan& plan = m_plan.inverses()[iInverse];
            if (iCount < plan.iLow) vTellOf(plan, iNumber, instance, iCount);
        }
    });
    m_uses = {};
}

// The first of those with equal values stands; the others are told.
void SchemaLevel::vFinishUnique() {
    for (std::size_t iRule = 0; iRule < m_unique.size(); ++iRule) {
        std::vector<UniqueValue>& values = m_unique[iRule];
        const UniquePlan& plan = m_plan.unique()[iRule];
        std::stable_sort(values.begin(), values.end(),
                         [](const UniqueValue& a, const UniqueValue& b) { return a.iHash < b.iHash; });
        std::size_t iFirst = 0;
        for (std::size_t i = 1; i < values.size(); ++i) {
            if (values[i].iHash != values[iFirst].iHash) {
                iFirst = i;
                continue;
            }
            const Instance* pInstance = m_instances.pFind(values[i].iNumber);
            const Entity* pOf = pInstance ? m_plan.pByOrdinal(pInstance->iType) : nullptr;
            m_collector.vAdd({.level = CheckLevel::Schema,
                              .key = "Schema_Unique",
                              .rule = plan.sRule,
                              .type = pOf ? std::string_view(pOf->sName) : std::string_view(),
                              .attribute = plan.sAttributes,
                              .message = "another instance has the same values",
                              .expected = "values of its own",
                              .line = values[i].place.iLine,
                              .column = values[i].place.iColumn,
                              .id = values[i].iNumber,
                              .found = "as " + InstanceTable::sName(values[iFirst].iNumber)});
        }
    }
    m_unique = {};
}

}   // namespace oxa::check
