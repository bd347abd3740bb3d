// SPDX-License-Identifier: Apache-2.0
#include "Check/Rules/ModelIndex.h"

#include "Format/Ifc/IfcValueVisit.h"

namespace oxa::check::rules {

namespace {

// Calls found(entity) for each reference of a cell, inside of aggregates and selects too.
template <class Found>
struct References {
    Found found;

    template <class T>
    void operator()(const T& value) {
        if constexpr (std::is_same_v<T, const ifc::Entity*>)
            if (value && value->pSchemaEntity()) found(*value);
    }
};

template <class Found>
void vForEachReference(ifc::Entity& user, std::size_t iCell, Found found) {
    const ifc::DataSizeEntity::Cell& place = ifc::Entity::getDataSize(*user.pSchemaEntity()).cells[iCell];
    const auto* pBytes = static_cast<const std::byte*>(user.unsafeAttributesRaw());
    if (!pBytes || !place.pAttribute) return;
    References<Found> references{std::move(found)};
    ifc::visitValues(*reinterpret_cast<const ifc::AttributeBase*>(pBytes + place.iOffset), place.pAttribute->pType(),
                     references);
}

}   // namespace

std::vector<ifc::Entity*> ModelIndex::population(const ifc::def::schema::Entity& type) const {
    const auto [first, last] = m_data.range(ifc::def::schema::ObjectName(type), true);
    return {first, last};
}

const std::vector<ifc::Entity*>* ModelIndex::pUsers(const ifc::def::schema::Attribute& role,
                                                    const ifc::def::schema::Entity& user, const ifc::Entity& used) {
    Role* pRole = nullptr;
    {
        const std::lock_guard lock(m_mutex);
        std::unique_ptr<Role>& pSlot = m_roles[{&role, &user}];
        if (!pSlot) pSlot = std::make_unique<Role>();
        pRole = pSlot.get();
    }
    std::call_once(pRole->made, [&] {
        const auto& attributes = user.allAttributes();
        std::size_t iCell = 0;
        while (iCell < attributes.size() && attributes[iCell] != &role) ++iCell;
        if (iCell == attributes.size()) return;
        for (ifc::Entity* pUser : population(user))
            vForEachReference(*pUser, iCell,
                              [&](const ifc::Entity& target) { pRole->users[&target].push_back(pUser); });
    });
    const auto pFound = pRole->users.find(&used);
    return pFound == pRole->users.end() ? nullptr : &pFound->second;
}

const std::vector<ModelIndex::Use>* ModelIndex::pAllUses(const ifc::Entity& used) {
    std::call_once(m_usesMade, [&] {
        for (ifc::Entity* pUser : m_data.entities()) {
            if (!pUser->pSchemaEntity()) continue;
            const auto& attributes = pUser->pSchemaEntity()->allAttributes();
            for (std::size_t i = 0; i < attributes.size(); ++i)
                vForEachReference(*pUser, i, [&](const ifc::Entity& target) {
                    m_uses[&target].push_back({pUser, attributes[i]});
                });
        }
    });
    const auto pFound = m_uses.find(&used);
    return pFound == m_uses.end() ? nullptr : &pFound->second;
}

}   // namespace oxa::check::rules
