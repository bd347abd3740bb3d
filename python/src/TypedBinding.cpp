// SPDX-License-Identifier: Apache-2.0
// TypedBinding: oxaifc.TypedValue, a value with the type that a select wraps it in.
#include <nanobind/stl/optional.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/string_view.h>

#include <string>

#include "Bindings.h"
#include "Model/Error.h"
#include "Values.h"

namespace oxa::python {

namespace {

std::string sReprOf(nb::handle object) { return nb::str(nb::steal(PyObject_Repr(object.ptr()))).c_str(); }

std::string sRepr(const TypedObject& typed) { return typed.sType + "(" + sReprOf(typed.value) + ")"; }

// In place where the value is one of an attribute.
void vWrappedSet(TypedObject& typed, nb::handle value) {
    oxa::NewValue next = oxa::typed(typed.sType, valueFromPython(value));
    if (EntityObject* const pEntity = typed.entity.is_valid() ? pEntityOf(typed.entity) : nullptr) {
        const oxa::Element& element = pEntity->looked();
        const oxa::Value now = element.at(typed.iAttribute);
        if (!now.isTyped() || now.typeName() != typed.sType)
            throw oxa::HandleError("the attribute holds another value by now, no " + typed.sType);
        const std::string sName(element.attributes()[typed.iAttribute].name);
        pEntity->pModel->changing().set(element, sName, next);
        typed.value = nb::borrow(value);
        return;
    }
    typed.value = nb::borrow(value);
}

nb::object equal(const TypedObject& typed, nb::handle other) {
    const TypedObject* const pOther = typedOf(other);
    if (!pOther) return nb::borrow(Py_NotImplemented);
    return nb::bool_(typed.sType == pOther->sType && typed.value.equal(pOther->value));
}

}   // namespace

void vBindTyped(nb::module_& module) {
    nb::class_<TypedObject>(module, "TypedValue",
                            "A value with the type that a select wraps it in: TypedValue(\"IfcLabel\", \"F 90\").\n\n"
                            "Equal to another one of the same type and value.")
        .def(
            "__init__",
            [](TypedObject* pSelf, std::string sType, nb::object value) {
                new (pSelf) TypedObject{std::move(sType), std::move(value)};
            },
            nb::arg("type"), nb::arg("value").none(), "The type is checked when a model takes the value.")
        .def(
            "is_a",
            [](const TypedObject& typed, std::optional<std::string_view> type) -> nb::object {
                if (type) return nb::bool_(*type == typed.sType);
                return nb::str(typed.sType.c_str());
            },
            nb::arg("type") = nb::none(), "The name of the type; with a name, whether it is that.")
        .def_prop_rw(
            "wrappedValue", [](const TypedObject& typed) { return typed.value; }, &vWrappedSet, nb::arg("value").none(),
            "The value itself. Set, it changes the attribute that it was taken from; RemovedError where that holds\n"
            "another value by now.")
        .def(
            "__getitem__",
            [](const TypedObject& typed, Py_ssize_t iIndex) {
                if (iIndex != 0 && iIndex != -1) throw nb::index_error("a typed value has one item");
                return typed.value;
            },
            nb::arg("index"))
        .def("__len__", [](const TypedObject&) { return 1; })
        .def("__eq__", &equal, nb::arg("other").none(), nb::is_operator())
        .def("__hash__", [](const TypedObject& typed) { return nb::hash(nb::make_tuple(typed.sType, typed.value)); })
        .def("__repr__", &sRepr)
        .def("__reduce__", [](nb::handle self) {
            const TypedObject& typed = *nb::inst_ptr<TypedObject>(self);
            return nb::make_tuple(self.type(), nb::make_tuple(typed.sType, typed.value));
        });
}

}   // namespace oxa::python
