// SPDX-License-Identifier: Apache-2.0
#include "Errors.h"

#include <nanobind/stl/string.h>

#include <exception>
#include <new>
#include <string_view>
#include <utility>

#include "Model/Error.h"
#include "Model/Selector.h"
#include "Tables/Sql.h"

namespace oxa::python {

namespace {

// A message may quote a file, whose bytes are any.
nb::object textOf(std::string_view text) {
    PyObject* const pText = PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "replace");
    if (!pText) throw nb::python_error();
    return nb::steal(pText);
}

template <class... Arguments>
void vSet(const char* pClass, const std::exception& error, Arguments&&... arguments) {
    const nb::object type = nb::module_::import_("oxaifc._errors").attr(pClass);
    const nb::object value = type(textOf(error.what()), std::forward<Arguments>(arguments)...);
    PyErr_SetObject(type.ptr(), value.ptr());
}

nb::object nearOf(const oxa::NameError& error) {
    nb::list names;
    for (const std::string& sName : error.nearNames()) names.append(textOf(sName));
    return names;
}

void vSetFrom(const std::exception_ptr& pError) {
    try {
        std::rethrow_exception(pError);
    } catch (nb::python_error& error) {
        error.restore();
    } catch (const oxa::NameError& error) {
        vSet("UnknownNameError", error, nearOf(error));
    } catch (const oxa::QueryError& error) {
        vSet("QueryError", error, error.column());
    } catch (const oxa::TypeError& error) {
        vSet("ValueTypeError", error);
    } catch (const oxa::ValueError& error) {
        vSet("RefusedError", error);
    } catch (const oxa::HandleError& error) {
        vSet("RemovedError", error);
    } catch (const oxa::FileError& error) {
        vSet("FileError", error);
    } catch (const oxa::tables::SqlError& error) {
        vSet("SqlError", error);
    } catch (const oxa::Error& error) {
        vSet("Error", error);
    } catch (const std::bad_alloc&) {
        PyErr_NoMemory();
    } catch (const std::exception& error) {
        PyErr_SetString(PyExc_RuntimeError, error.what());
    } catch (...) {
        PyErr_SetString(PyExc_RuntimeError, "an unknown fault");
    }
}

}   // namespace

void vErrorSet() noexcept {
    const std::exception_ptr pError = std::current_exception();
    try {
        vSetFrom(pError);
    } catch (nb::python_error& error) {   // of the way to the exception
        error.restore();
    } catch (...) {
        PyErr_NoMemory();
    }
}

void vThrowNotFound(const std::string& sMessage) {
    const nb::object type = nb::module_::import_("oxaifc._errors").attr("NotFoundError");
    PyErr_SetObject(type.ptr(), type(textOf(sMessage)).ptr());
    throw nb::python_error();
}

void vBindErrors() {
    // Only what the library throws: nanobind tells the rest, and what its own classes mean.
    nb::register_exception_translator([](const std::exception_ptr& pError, void*) {
        try {
            std::rethrow_exception(pError);
        } catch (const oxa::Error&) {
            vSetFrom(pError);
        }
    });
}

}   // namespace oxa::python
