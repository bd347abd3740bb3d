// SPDX-License-Identifier: Apache-2.0
// EntitySlots: what the interpreter asks an oxaifc.Entity without the name of a method: attributes, items, length,
// comparison, hash.
//
// Cost     which attribute a name means is remembered for each type, so that wall.Name costs no search. The names of
//          attributes come from programs, where the interpreter has each once.
// Threads  with the interpreter's lock held.
#include <nanobind/nanobind.h>

#include <array>
#include <bit>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "Bindings.h"
#include "Errors.h"
#include "Format/Ifc/IfcFileAttribute.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "Model/Error.h"
#include "Properties.h"
#include "Values.h"
#include "platform/NearNames.h"

namespace oxa::python {

namespace {

namespace schema = oxa::ifc::def::schema;

constexpr int g_iNone = -1;

// Where the attribute of a name stands in a type: from 0 among the forward ones, g_iInverse and more among the inverse.
constexpr int g_iInverse = 1 << 16;

struct Place {
    int iPlace = g_iNone;
    bool boText = false;   // a forward one that holds a plain text
};

struct Remembered {
    const schema::Entity* pType = nullptr;
    PyObject* pName = nullptr;   // a reference of its own, so that no other text gets the place
    Place place{};
};
constexpr std::size_t g_iRemembered = 4096;
std::array<Remembered, g_iRemembered> g_remembered;

bool boHoldsText(const schema::Attribute& attribute) {
    return attribute.types.size() == 1 &&
           ifc::AttributeBase::cellClass(attribute.types.front(), attribute) == ifc::CellClass::String;
}

Place placeSearch(const schema::Entity& type, std::string_view name) {
    const auto& attributes = type.allAttributes();
    for (std::size_t i = 0; i < attributes.size(); ++i)
        if (attributes[i]->sName == name) return {static_cast<int>(i), boHoldsText(*attributes[i])};
    const auto& inverses = type.allInverseAttributes();
    for (std::size_t i = 0; i < inverses.size(); ++i)
        if (inverses[i]->sName == name) return {g_iInverse + static_cast<int>(i)};
    return {};
}

Place placeOf(const schema::Entity& type, PyObject* pName) {
    const std::size_t iHash = std::hash<const void*>()(&type) / 64 * 31 + std::hash<const void*>()(pName) / 16;
    Remembered& known = g_remembered[iHash % g_iRemembered];
    if (known.pType == &type && known.pName == pName) return known.place;
    const Place place = placeSearch(type, textFromPython(pName));
    if (place.iPlace == g_iNone) return place;
    Py_INCREF(pName);
    PyObject* const pBefore = known.pName;
    known = {&type, pName, place};
    Py_XDECREF(pBefore);
    return place;
}

EntityObject& entityOf(PyObject* pSelf) { return *nb::inst_ptr<EntityObject>(pSelf); }

[[noreturn]] void vThrowNoAttribute(const schema::Entity& type, std::string_view name) {
    std::vector<std::string_view> names;
    for (const schema::Attribute* pAttribute : type.allAttributes()) names.push_back(pAttribute->sName);
    for (const schema::AttributeInverse* pInverse : type.allInverseAttributes()) names.push_back(pInverse->sName);
    std::vector<std::string> near;
    std::string sText = type.sName + " has no attribute " + std::string(name);
    const char* pBefore = "; did you mean ";
    for (const std::string_view one : str::nearNames(name, names)) {
        near.emplace_back(one);
        sText += pBefore + near.back();
        pBefore = ", ";
    }
    throw oxa::NameError(near.empty() ? sText : sText + "?", near);
}

// What programs ask for most: names and the like, straight from the cell.
nb::object plainText(const ifc::Entity& entity, unsigned iIndex) {
    const ifc::AttributeBase& cell = *entity.pAttributeFromIndex(iIndex).second;
    if (!cell.boHasValue()) return cell.m_boDerived ? nb::borrow(derivedObject()) : nb::none();
    const char* const pText = static_cast<const ifc::AttributeString&>(cell).m_value;
    return pText ? textToPython(pText) : nb::none();
}

nb::object attributeGet(PyObject* pSelf, PyObject* pName) {
    const EntityObject& entity = entityOf(pSelf);
    const ifc::Entity& core = entity.looked().core();
    const schema::Entity& type = core.schemaEntity();
    const auto [iPlace, boText] = placeOf(type, pName);
    if (boText) return plainText(core, static_cast<unsigned>(iPlace));
    if (iPlace >= g_iInverse) {
        const auto iInverse = static_cast<std::size_t>(iPlace - g_iInverse);
        return entityTuple(entity.home(), entity.element.inverse(type.allInverseAttributes()[iInverse]->sName));
    }
    if (iPlace != g_iNone) {
        const auto iIndex = static_cast<std::size_t>(iPlace);
        return valueToPython(entity.home(), entity.element.at(iIndex), pSelf, iIndex);
    }
    if (PyObject* const pFound = PyObject_GenericGetAttr(pSelf, pName)) return nb::steal(pFound);
    if (!PyErr_ExceptionMatches(PyExc_AttributeError)) throw nb::python_error();
    const std::string_view name = textFromPython(pName);
    if (name.starts_with("_")) throw nb::python_error();   // of a protocol of Python's
    PyErr_Clear();
    vThrowNoAttribute(type, name);
}

// A removed entity has no type any more, and still its methods.
PyObject* pAttributeGet(PyObject* pSelf, PyObject* pName) {
    if (!entityOf(pSelf).element) {
        if (PyObject* const pFound = PyObject_GenericGetAttr(pSelf, pName)) return pFound;
        if (textFromPython(pName).starts_with("_")) return nullptr;
        PyErr_Clear();
    }
    return pGuarded([&] { return attributeGet(pSelf, pName); });
}

int iAttributeSet(PyObject* pSelf, PyObject* pName, PyObject* pValue) {
    return iGuarded([&] {
        EntityObject& entity = entityOf(pSelf);
        const schema::Entity& type = entity.looked().core().schemaEntity();
        const std::string_view name = textFromPython(pName);
        const int iPlace = placeOf(type, pName).iPlace;
        if (iPlace >= g_iInverse)
            throw oxa::ValueError(type.sName + ": " + std::string(name) +
                                  " is an inverse attribute: it changes with those who refer");
        if (iPlace == g_iNone) vThrowNoAttribute(type, name);
        const oxa::NewValue value = pValue ? attributeFromPython(type, name, pValue) : oxa::NewValue();
        entity.pModel->changing().set(entity.element, name, value);
        return 0;
    });
}

// An index as Python's lists take it; -1 is the last.
std::size_t iIndexFrom(const oxa::Element& element, PyObject* pKey) {
    const Py_ssize_t iKey = PyNumber_AsSsize_t(pKey, PyExc_IndexError);
    if (iKey == -1 && PyErr_Occurred()) throw nb::python_error();
    const auto iSize = static_cast<Py_ssize_t>(element.size());
    const Py_ssize_t iIndex = iKey < 0 ? iKey + iSize : iKey;
    if (iIndex < 0 || iIndex >= iSize) {
        const std::string sText = std::string(element.type()) + " has " + std::to_string(iSize) + " attributes";
        PyErr_SetString(PyExc_IndexError, sText.c_str());
        throw nb::python_error();
    }
    return static_cast<std::size_t>(iIndex);
}

nb::object slicedValues(const EntityObject& entity, PyObject* pSelf, PyObject* pSlice) {
    Py_ssize_t iFirst = 0, iEnd = 0, iStep = 0;
    if (PySlice_Unpack(pSlice, &iFirst, &iEnd, &iStep) != 0) throw nb::python_error();
    const Py_ssize_t iCount =
        PySlice_AdjustIndices(static_cast<Py_ssize_t>(entity.element.size()), &iFirst, &iEnd, iStep);
    nb::list values;
    for (Py_ssize_t i = 0; i < iCount; ++i) {
        const auto iIndex = static_cast<std::size_t>(iFirst + i * iStep);
        values.append(valueToPython(entity.home(), entity.element.at(iIndex), pSelf, iIndex));
    }
    return nb::tuple(values);
}

struct PropertyKey {
    std::string sSet, sName;
};

PropertyKey propertyKeyFrom(PyObject* pKey) {
    if (PyTuple_Check(pKey) && PyTuple_Size(pKey) == 2 && PyUnicode_Check(PyTuple_GetItem(pKey, 0)) &&
        PyUnicode_Check(PyTuple_GetItem(pKey, 1)))
        return {std::string(textFromPython(PyTuple_GetItem(pKey, 0))),
                std::string(textFromPython(PyTuple_GetItem(pKey, 1)))};
    throw oxa::TypeError("an entity is asked by the place of an attribute, e[0], or by set and property, "
                         "e[\"Pset_WallCommon\", \"FireRating\"]");
}

PyObject* pItemGet(PyObject* pSelf, PyObject* pKey) {
    return pGuarded([&]() -> nb::object {
        const EntityObject& entity = entityOf(pSelf);
        const oxa::Element& element = entity.looked();
        if (PySlice_Check(pKey)) return slicedValues(entity, pSelf, pKey);
        if (PyIndex_Check(pKey)) {
            const std::size_t iIndex = iIndexFrom(element, pKey);
            return valueToPython(entity.home(), element.at(iIndex), pSelf, iIndex);
        }
        const PropertyKey key = propertyKeyFrom(pKey);
        return propertyGet(entity, key.sSet, key.sName);
    });
}

int iItemSet(PyObject* pSelf, PyObject* pKey, PyObject* pValue) {
    return iGuarded([&] {
        EntityObject& entity = entityOf(pSelf);
        const oxa::Element& element = entity.looked();
        if (!pValue) throw oxa::TypeError("what an entity has can be set to None, not deleted");
        if (PyIndex_Check(pKey)) {
            const std::size_t iIndex = iIndexFrom(element, pKey);
            const schema::Attribute& attribute = *element.core().schemaEntity().allAttributes()[iIndex];
            const oxa::NewValue value = attributeFromPython(attribute, pValue);
            entity.pModel->changing().set(element, attribute.sName, value);
            return 0;
        }
        const PropertyKey key = propertyKeyFrom(pKey);
        const oxa::NewValue value = valueFromPython(pValue);
        vPropertySet(*entity.pModel, {&element, 1}, key.sSet, key.sName, value);
        return 0;
    });
}

PyObject* pItemAt(PyObject* pSelf, Py_ssize_t iIndex) {
    return pGuarded([&] {
        const EntityObject& entity = entityOf(pSelf);
        const nb::int_ index(iIndex);
        const std::size_t iPlace = iIndexFrom(entity.looked(), index.ptr());
        return valueToPython(entity.home(), entity.element.at(iPlace), pSelf, iPlace);
    });
}

Py_ssize_t iLength(PyObject* pSelf) {
    return iGuarded([&] { return static_cast<Py_ssize_t>(entityOf(pSelf).looked().size()); });
}

// By model and number; a removed entity is equal to itself alone.
PyObject* pCompare(PyObject* pSelf, PyObject* pOther, int iOperator) {
    const EntityObject* const pB = pEntityOf(pOther);
    if (!pB) Py_RETURN_NOTIMPLEMENTED;
    return pGuarded([&]() -> nb::object {
        const EntityObject& a = entityOf(pSelf);
        const bool boEqual = a.element == pB->element;
        if (iOperator == Py_EQ || iOperator == Py_NE) return nb::bool_(boEqual == (iOperator == Py_EQ));
        if (a.pModel != pB->pModel) return nb::borrow(Py_NotImplemented);
        const std::uint64_t iA = a.looked().id(), iB = pB->looked().id();
        switch (iOperator) {
        case Py_LT: return nb::bool_(iA < iB);
        case Py_LE: return nb::bool_(iA <= iB);
        case Py_GT: return nb::bool_(iA > iB);
        default: return nb::bool_(iA >= iB);
        }
    });
}

Py_hash_t iHash(PyObject* pSelf) {
    const auto uHash = std::hash<oxa::Element>()(entityOf(pSelf).element);
    const auto iHash = static_cast<Py_hash_t>(std::rotr(uHash, 4));
    return iHash == -1 ? -2 : iHash;
}

}   // namespace

PyType_Slot* entitySlots() noexcept {
    static PyType_Slot slots[] = {{Py_tp_getattro, reinterpret_cast<void*>(pAttributeGet)},
                                  {Py_tp_setattro, reinterpret_cast<void*>(iAttributeSet)},
                                  {Py_mp_subscript, reinterpret_cast<void*>(pItemGet)},
                                  {Py_mp_ass_subscript, reinterpret_cast<void*>(iItemSet)},
                                  {Py_mp_length, reinterpret_cast<void*>(iLength)},
                                  {Py_sq_length, reinterpret_cast<void*>(iLength)},
                                  {Py_sq_item, reinterpret_cast<void*>(pItemAt)},
                                  {Py_tp_richcompare, reinterpret_cast<void*>(pCompare)},
                                  {Py_tp_hash, reinterpret_cast<void*>(iHash)},
                                  {0, nullptr}};
    return slots;
}

}   // namespace oxa::python
