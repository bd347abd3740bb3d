// SPDX-License-Identifier: Apache-2.0
// PropertyUses: which properties and quantities stand in several sets, for those that do not tell it themselves: no
// quantity does, and in IFC2X3 no property.
//
// For      setProperty, which would have to look at all sets for each property otherwise.
// Good     as long as the model changes by what is told here alone; after another change all is counted again.
// Memory   only what stands in several sets.
// Threads  a change of the model.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <unordered_map>

namespace oxa::ifc {
class Entity;
}   // namespace oxa::ifc

namespace oxa::detail {

class ModelState;

class PropertyUses {
public:
    [[nodiscard]] bool boCurrent(const ModelState& state) const;
    /// Counts again, where the model has changed since vSettle.
    void vRefresh(ModelState& state);
    /// All changes up to now have been told.
    void vSettle(const ModelState& state);

    [[nodiscard]] std::size_t iUses(const ifc::Entity& property) const;
    /// One set more, or one less, has it.
    void vAdd(const ifc::Entity& property) { ++m_shared.try_emplace(&property, std::size_t{1}).first->second; }
    void vRemove(const ifc::Entity& property);

private:
    std::optional<std::uint64_t> m_uChanges;   // of the model, when it was last known
    std::unordered_map<const ifc::Entity*, std::size_t> m_shared;
};

}   // namespace oxa::detail
