// SPDX-License-Identifier: Apache-2.0
// Errors: exceptions of the library as those of Python (oxaifc/_errors.py).
//
// For      Module.cpp; and the slots of types, which nanobind does not stand in front of.
// Threads  with the interpreter's lock held.
#pragma once

#include <nanobind/nanobind.h>

#include <string>

namespace oxa::python {

namespace nb = nanobind;

// Translates whatever leaves a function that nanobind calls.
void vBindErrors();

// Sets the exception that is being handled as Python's.
void vErrorSet() noexcept;

// An oxaifc.NotFoundError.
[[noreturn]] void vThrowNotFound(const std::string& sMessage);

// What "work" gives as a new reference; null with Python's exception set, where it throws.
template <class Work>
PyObject* pGuarded(Work&& work) noexcept {
    try {
        return nb::object(work()).release().ptr();
    } catch (...) {
        vErrorSet();
        return nullptr;
    }
}

// What "work" gives, -1 where it throws.
template <class Work>
auto iGuarded(Work&& work) noexcept -> decltype(work()) {
    try {
        return work();
    } catch (...) {
        vErrorSet();
        return -1;
    }
}

}   // namespace oxa::python
