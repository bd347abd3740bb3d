// SPDX-License-Identifier: Apache-2.0
// Bindings: what each source of this folder adds to the module.
//
// For      Module.cpp, which calls them in their order.
#pragma once

#include <nanobind/nanobind.h>

#include "ModelObject.h"

namespace oxa::python {

using ModelClass = nb::class_<ModelObject>;
using EntityClass = nb::class_<EntityObject>;

void vBindTyped(nb::module_& module);
[[nodiscard]] EntityClass bindEntity(nb::module_& module);
[[nodiscard]] ModelClass bindModel(nb::module_& module);
void vBindCheck(nb::module_& module);
void vBindCompare(nb::module_& module);
void vBindEdit(ModelClass& model);
void vBindGraph(ModelClass& model);
void vBindHeader(nb::module_& module, ModelClass& model);
void vBindIds(ModelClass& model);
void vBindQuery(ModelClass& model);
void vBindSave(ModelClass& model);
void vBindUtil(nb::module_& module);
void vBindTables(nb::module_& module, ModelClass& model, EntityClass& entity);

// What the interpreter asks an Entity without a name: attributes, items, comparison (EntitySlots.cpp).
[[nodiscard]] PyType_Slot* entitySlots() noexcept;
}   // namespace oxa::python
