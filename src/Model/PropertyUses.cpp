// SPDX-License-Identifier: Apache-2.0
#include "Model/PropertyUses.h"

#include <algorithm>
#include <vector>

#include "Model/ModelState.h"
#include "Model/RelationTable.h"

namespace oxa::detail {

bool PropertyUses::boCurrent(const ModelState& state) const { return m_uChanges == state.uChanges(); }

void PropertyUses::vRefresh(ModelState& state) {
    if (boCurrent(state)) return;
    const RelationTable& table = state.relations();
    std::vector<const ifc::Entity*> listed;
    if (const auto* pSets = table.pClass(Class::SetDefinition))
        for (const ifc::Entity* pSet : state.all(*pSets, true))
            for (const Slot eSlot : {Slot::SetProperties, Slot::SetQuantities})
                table.forEachNamed(*pSet, eSlot, [&](const ifc::Entity& property) { listed.push_back(&property); });
    std::ranges::sort(listed);
    m_shared.clear();
    for (std::size_t i = 1; i < listed.size(); ++i)
        if (listed[i] == listed[i - 1]) vAdd(*listed[i]);
    vSettle(state);
}

void PropertyUses::vSettle(const ModelState& state) { m_uChanges = state.uChanges(); }

std::size_t PropertyUses::iUses(const ifc::Entity& property) const {
    const auto found = m_shared.find(&property);
    return found == m_shared.end() ? 1 : found->second;
}

void PropertyUses::vRemove(const ifc::Entity& property) {
    const auto found = m_shared.find(&property);
    if (found != m_shared.end() && --found->second < 2) m_shared.erase(found);
}

}   // namespace oxa::detail
