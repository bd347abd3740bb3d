// SPDX-License-Identifier: Apache-2.0
// Module: oxaifc._core, the part of the package that is C++. What users see is named in oxaifc/__init__.py.
#include "Bindings.h"
#include "Errors.h"
#include "Source.h"
#include "Values.h"

NB_MODULE(_core, module) {
    namespace python = oxa::python;
    nanobind::set_leak_warnings(false);   // whoever ends a program ends what it holds
    module.attr("__version__") = OXA_VERSION;
    python::vBindErrors();
    python::vBindValues(module);
    python::vBindTyped(module);
    python::EntityClass entity = python::bindEntity(module);
    python::ModelClass model = python::bindModel(module);
    python::vBindEdit(model);
    python::vBindGraph(model);
    python::vBindHeader(module, model);
    python::vBindIds(model);
    python::vBindQuery(model);
    python::vBindSave(model);
    python::vBindCheck(module);
    python::vBindCompare(module);
    python::vBindOpen(module);
    python::vBindUtil(module);
    python::vBindTables(module, model, entity);
}
