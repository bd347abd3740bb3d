// SPDX-License-Identifier: Apache-2.0
// ModelIndex: what rules ask of a model as a whole: who uses an instance in a role, and all instances of a type.
//
// For      USEDIN, ROLESOF, and the populations of global rules.
// Memory   an entry for each reference of a role that is asked for; nothing before.
// Threads  any number at once: a role's entries are made by the first that asks, while the others wait. The model must be
//          sorted (Data::entities) and is not changed.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "Format/Ifc/IfcFileDataSimple.h"
#include "platform/Export.h"
#include "schema/Schema.h"

namespace oxa::check::rules {

class OXA_CHECK_API ModelIndex {
public:
    explicit ModelIndex(const ifc::Data& data) : m_data(data) {}

    // The users of an instance over one attribute of a type and its subtypes, one entry a use, in the order of the
    // model; null for none.
    [[nodiscard]] const std::vector<ifc::Entity*>* pUsers(const ifc::def::schema::Attribute& role,
                                                          const ifc::def::schema::Entity& user,
                                                          const ifc::Entity& used);
    // The same over all attributes, with the attribute of each use.
    struct Use {
        ifc::Entity* pUser;
        const ifc::def::schema::Attribute* pRole;
    };
    [[nodiscard]] const std::vector<Use>* pAllUses(const ifc::Entity& used);
    // Instances of the type and its subtypes.
    [[nodiscard]] std::vector<ifc::Entity*> population(const ifc::def::schema::Entity& type) const;

    [[nodiscard]] const ifc::Data& data() const noexcept { return m_data; }

private:
    using Users = std::unordered_map<const ifc::Entity*, std::vector<ifc::Entity*>>;
    struct Role {
        std::once_flag made;
        Users users;
    };
    using RoleKey = std::pair<const ifc::def::schema::Attribute*, const ifc::def::schema::Entity*>;

    const ifc::Data& m_data;
    std::mutex m_mutex;   // guards m_roles
    std::map<RoleKey, std::unique_ptr<Role>> m_roles;
    std::once_flag m_usesMade;
    std::unordered_map<const ifc::Entity*, std::vector<Use>> m_uses;
};

}   // namespace oxa::check::rules
