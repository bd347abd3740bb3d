// SPDX-License-Identifier: Apache-2.0
#include "Values.h"

#include <nanobind/stl/string.h>
#include <nanobind/stl/string_view.h>

#include <cstdint>
#include <utility>
#include <vector>

#include "Format/Ifc/IfcFileAttribute.h"
#include "Model/Error.h"

namespace oxa::python {

namespace schema = oxa::ifc::def::schema;

namespace {

constexpr std::string_view g_unknown = "UNKNOWN";
constexpr int g_iDeepest = 32;   // lists in lists; no schema has more than three

PyObject* g_pDerived = nullptr;   // lives as long as the process

struct DerivedObject {};

nb::object stolen(PyObject* pObject) {
    if (!pObject) throw nb::python_error();
    return nb::steal(pObject);
}

nb::object listToPython(const Home& home, const oxa::Value& value) {
    const std::vector<oxa::Value> items = value.items();
    nb::object tuple = stolen(PyTuple_New(static_cast<Py_ssize_t>(items.size())));
    Py_ssize_t i = 0;
    for (const oxa::Value& item : items) PyTuple_SetItem(tuple.ptr(), i++, valueToPython(home, item).release().ptr());
    return tuple;
}

nb::object logicalToPython(LogicalValue logical) {
    if (logical == LogicalValue::Unknown) return textToPython(g_unknown);
    return nb::borrow(logical == LogicalValue::True ? Py_True : Py_False);
}

nb::object binaryToPython(const oxa::Bytes& bytes) { return nb::bytes(bytes.data(), bytes.size()); }

nb::object plainToPython(const Home& home, const oxa::Value& value, oxa::Kind kind) {
    switch (kind) {
    case oxa::Kind::Null: return nb::none();
    case oxa::Kind::Derived: return nb::borrow(derivedObject());
    case oxa::Kind::Text:
    case oxa::Kind::Enumerator: return textToPython(*value.text());
    case oxa::Kind::Number: return stolen(PyFloat_FromDouble(*value.number()));
    case oxa::Kind::Integer: return stolen(PyLong_FromLongLong(*value.integer()));
    case oxa::Kind::Boolean:
    case oxa::Kind::Logical: return logicalToPython(*value.logical());
    case oxa::Kind::Binary: return binaryToPython(*value.binary());
    case oxa::Kind::Element: return entityNew(home, value.element());
    case oxa::Kind::List: return listToPython(home, value);
    }
    return nb::none();
}

[[noreturn]] void vThrowKind(nb::handle object) {
    const nb::str name(nb::type_name(object.type()));
    throw oxa::TypeError(
        "a value is None, a bool, an int, a float, a str, bytes, an Entity, a TypedValue, Derived or an "
        "iterable of these, and no " +
        std::string(name.c_str()));
}

std::int64_t iIntegerFrom(nb::handle object) {
    const nb::object whole = stolen(PyNumber_Index(object.ptr()));
    int iOverflow = 0;
    const long long iValue = PyLong_AsLongLongAndOverflow(whole.ptr(), &iOverflow);
    if (iOverflow != 0)
        throw oxa::ValueError("an attribute takes an integer of 32 bits, not " + std::string(nb::str(whole).c_str()));
    if (iValue == -1 && PyErr_Occurred()) throw nb::python_error();
    return iValue;
}

oxa::NewValue valueFrom(nb::handle object, int iDepth);

oxa::NewValue listFrom(nb::handle object, int iDepth) {
    if (iDepth >= g_iDeepest) throw oxa::ValueError("a value has lists in lists beyond all that an attribute takes");
    const nb::object iterator = nb::steal(PyObject_GetIter(object.ptr()));
    if (!iterator.is_valid()) {
        PyErr_Clear();
        vThrowKind(object);
    }
    oxa::NewValue::List items;
    while (PyObject* const pItem = PyIter_Next(iterator.ptr())) {
        const nb::object item = nb::steal(pItem);
        items.push_back(valueFrom(item, iDepth + 1));
    }
    if (PyErr_Occurred()) throw nb::python_error();
    return items;
}

oxa::NewValue numberFrom(nb::handle object, int iDepth) {
    if (PyFloat_Check(object.ptr())) return PyFloat_AsDouble(object.ptr());
    if (PyIndex_Check(object.ptr())) return iIntegerFrom(object);
    const bool boList = nb::hasattr(object, "__iter__") && !nb::hasattr(object, "__float__");
    if (boList || !nb::hasattr(object, "__float__")) return listFrom(object, iDepth);
    const double number = PyFloat_AsDouble(object.ptr());
    if (number == -1 && PyErr_Occurred()) {   // an array has __float__, for one item alone
        PyErr_Clear();
        return listFrom(object, iDepth);
    }
    return number;
}

oxa::NewValue typedFrom(const TypedObject& typed, int iDepth) {
    const bool boUnknown =
        typed.sType == "IfcLogical" && PyUnicode_Check(typed.value.ptr()) && textFromPython(typed.value) == g_unknown;
    return oxa::typed(typed.sType,
                      boUnknown ? oxa::NewValue(LogicalValue::Unknown) : valueFrom(typed.value, iDepth + 1));
}

oxa::NewValue valueFrom(nb::handle object, int iDepth) {
    PyObject* const pObject = object.ptr();
    if (object.is_none()) return nullptr;
    if (pObject == Py_True || pObject == Py_False) return pObject == Py_True;
    if (PyUnicode_Check(pObject)) return textFromPython(object);
    if (EntityObject* const pEntity = pEntityOf(object)) return pEntity->element;
    if (pObject == g_pDerived) return oxa::derived;
    if (PyBytes_Check(pObject)) {
        const auto* const pBytes = reinterpret_cast<const unsigned char*>(PyBytes_AsString(pObject));
        return oxa::Bytes(pBytes, pBytes + PyBytes_Size(pObject));
    }
    if (PyTuple_Check(pObject) || PyList_Check(pObject)) return listFrom(object, iDepth);
    if (PyDict_Check(pObject) || nb::isinstance<ModelObject>(object)) vThrowKind(object);
    if (const TypedObject* const pTyped = typedOf(object)) return typedFrom(*pTyped, iDepth);
    if (nb::hasattr(object, "dtype") && nb::hasattr(object, "tolist"))
        return valueFrom(object.attr("tolist")(), iDepth + 1);
    return numberFrom(object, iDepth);
}

}   // namespace

nb::object textToPython(std::string_view text) {
    return stolen(PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "replace"));
}

std::string_view textFromPython(nb::handle object) {
    Py_ssize_t iSize = 0;
    const char* const pText = PyUnicode_AsUTF8AndSize(object.ptr(), &iSize);
    if (!pText) throw nb::python_error();
    return {pText, static_cast<std::size_t>(iSize)};
}

TypedObject* typedOf(nb::handle object) {
    TypedObject* pTyped = nullptr;
    return nb::isinstance<TypedObject>(object) && nb::try_cast(object, pTyped) ? pTyped : nullptr;
}

nb::handle derivedObject() { return g_pDerived; }

nb::object valueToPython(const Home& home, const oxa::Value& value, nb::handle owner, std::size_t iAttribute) {
    const oxa::Kind kind = value.kind();
    nb::object plain = plainToPython(home, value, kind);
    if (kind == oxa::Kind::Null || kind == oxa::Kind::Derived || kind == oxa::Kind::Element || !value.isTyped())
        return plain;
    nb::object entity = owner.is_valid() ? nb::borrow(owner) : nb::object();
    return nb::cast(TypedObject{std::string(value.typeName()), std::move(plain), std::move(entity), iAttribute});
}

oxa::NewValue valueFromPython(nb::handle object) { return valueFrom(object, 0); }

oxa::NewValue attributeFromPython(const schema::Attribute& attribute, nb::handle object) {
    const schema::DataTypeBase* const pType = schema::pDataTypeOf(attribute.pType());
    if (pType && pType->kind == schema::DataKind::Logical && PyUnicode_Check(object.ptr()) &&
        textFromPython(object) == g_unknown)
        return LogicalValue::Unknown;
    return valueFromPython(object);
}

oxa::NewValue attributeFromPython(const schema::Entity& type, std::string_view name, nb::handle object) {
    for (const schema::Attribute* pAttribute : type.allAttributes())
        if (pAttribute->sName == name) return attributeFromPython(*pAttribute, object);
    return valueFromPython(object);
}

void vBindValues(nb::module_& module) {
    nb::class_<DerivedObject>(module, "DerivedType",
                              "The type of Derived: what the schema derives from other attributes, \"*\" in a file.")
        .def("__repr__", [](const DerivedObject&) { return "Derived"; })
        .def("__bool__", [](const DerivedObject&) { return false; })
        .def("__reduce__", [](const DerivedObject&) { return "Derived"; });
    const nb::object derived = nb::cast(DerivedObject{});
    g_pDerived = derived.ptr();
    module.attr("Derived") = derived;
}

}   // namespace oxa::python
