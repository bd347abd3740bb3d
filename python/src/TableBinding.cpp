// SPDX-License-Identifier: Apache-2.0
// TableBinding: models as tables.
#include "Bindings.h"

namespace oxa::python {

void vBindTables(nb::module_& module, ModelClass& model, EntityClass& entity) {
    static_cast<void>(module);
    static_cast<void>(model);
    static_cast<void>(entity);
}

}   // namespace oxa::python
