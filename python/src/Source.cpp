// SPDX-License-Identifier: Apache-2.0
#include "Source.h"

#include <nanobind/stl/optional.h>
#include <nanobind/stl/string.h>

#include <algorithm>
#include <filesystem>
#include <istream>
#include <memory>
#include <string_view>
#include <system_error>

#include "Errors.h"
#include "Model/Model.h"
#include "ModelObject.h"

namespace oxa::python {

namespace {

constexpr std::size_t g_iBlock = 1 << 20;   // bytes a call of read() or write()

Stamp stampOf(const std::string& sPath) {
    std::error_code error;
    const std::uintmax_t uSize = std::filesystem::file_size(sPath, error);
    const auto time = std::filesystem::last_write_time(sPath, error);
    return {uSize, static_cast<std::int64_t>(time.time_since_epoch().count())};
}

template <class Read>
nb::object opened(Job& job, const std::string& sPath, Read&& read) {
    const Stamp stamp = sPath.empty() ? Stamp() : stampOf(sPath);
    oxa::Model model = job.run([&] {
        const nb::gil_scoped_release released;
        return read();
    });
    return nb::cast(new ModelObject(std::move(model), sPath, stamp), nb::rv_policy::take_ownership);
}

nb::object openPath(const std::string& sPath, Job& job, const oxa::OpenOptions& options) {
    vMissingCheck(sPath);
    std::error_code error;
    const std::string sAbsolute = std::filesystem::absolute(sPath, error).string();
    return opened(job, sAbsolute, [&] { return oxa::Model::open(std::filesystem::path(sPath), options); });
}

nb::object openModel(nb::handle source, unsigned uThreads, bool boKeepNumbers, nb::handle progress) {
    const std::optional<std::string> path = pathOf(source);
    Job job(progress, "B", path ? std::filesystem::path(*path).filename().string() : "model");
    oxa::OpenOptions options{.threads = uThreads, .keepNumbers = boKeepNumbers};
    options.stop = job.token();
    options.progress = job.progress();
    if (path) return openPath(*path, job, options);
    if (nb::hasattr(source, "read")) {
        ReadBuffer buffer(source, job);
        std::istream stream(&buffer);
        return opened(job, {}, [&] { return oxa::Model::open(stream, options); });
    }
    if (!PyObject_CheckBuffer(source.ptr()))
        throw oxa::TypeError("open() takes a path, bytes or a file that is open as binary, and no " +
                             std::string(nb::type_name(source.type()).c_str()));
    const Bytes bytes(source);
    return opened(job, {}, [&] { return oxa::Model::fromBuffer(bytes.text(), options); });
}

}   // namespace

std::optional<std::string> pathOf(nb::handle object) {
    if (!PyUnicode_Check(object.ptr()) && !nb::hasattr(object, "__fspath__")) return std::nullopt;
    PyObject* pBytes = nullptr;
    if (PyUnicode_FSConverter(object.ptr(), static_cast<void*>(&pBytes)) == 0) throw nb::python_error();
    const nb::object bytes = nb::steal(pBytes);
    return std::string(PyBytes_AsString(pBytes), static_cast<std::size_t>(PyBytes_Size(pBytes)));
}

void vMissingCheck(const std::string& sPath) {
    std::error_code error;
    if (std::filesystem::exists(sPath, error) || error.value() != 0) return;
    const nb::object type = nb::module_::import_("oxaifc._errors").attr("MissingFileError");
    PyErr_SetObject(type.ptr(), type(sPath + ": there is no such file").ptr());
    throw nb::python_error();
}

Bytes::Bytes(nb::handle object) {
    if (PyObject_GetBuffer(object.ptr(), &m_view, PyBUF_SIMPLE) != 0) throw nb::python_error();
}

ReadBuffer::ReadBuffer(nb::handle file, Job& job) : m_read(file.attr("read")), m_job(job) {}

ReadBuffer::int_type ReadBuffer::underflow() {
    const bool boGood = m_job.boCall([this] {
        m_bytes = m_read(g_iBlock);
        if (!PyBytes_Check(m_bytes.ptr())) {
            PyErr_SetString(PyExc_TypeError, "read() gave no bytes: the file has to be open as binary");
            throw nb::python_error();
        }
        char* const pFirst = PyBytes_AsString(m_bytes.ptr());
        setg(pFirst, pFirst, pFirst + PyBytes_Size(m_bytes.ptr()));
    });
    return boGood && gptr() != egptr() ? traits_type::to_int_type(*gptr()) : traits_type::eof();
}

WriteBuffer::WriteBuffer(nb::handle file, Job& job) : m_write(file.attr("write")), m_bytes(g_iBlock), m_job(job) {
    setp(m_bytes.data(), m_bytes.data() + m_bytes.size());
}

bool WriteBuffer::boWrite() {
    const bool boGood = m_job.boCall([this] {
        std::string_view rest(pbase(), static_cast<std::size_t>(pptr() - pbase()));
        while (!rest.empty()) {   // a raw file may take a part
            const nb::object taken = m_write(nb::bytes(rest.data(), rest.size()));
            const Py_ssize_t iTaken =
                taken.is_none() ? static_cast<Py_ssize_t>(rest.size()) : PyLong_AsSsize_t(taken.ptr());
            if (iTaken < 0 && PyErr_Occurred()) throw nb::python_error();
            rest.remove_prefix(std::min(rest.size(), static_cast<std::size_t>(std::max<Py_ssize_t>(iTaken, 0))));
        }
    });
    setp(m_bytes.data(), m_bytes.data() + m_bytes.size());
    return boGood;
}

WriteBuffer::int_type WriteBuffer::overflow(int_type c) {
    if (!boWrite()) return traits_type::eof();
    if (!traits_type::eq_int_type(c, traits_type::eof())) {
        *pptr() = traits_type::to_char_type(c);
        pbump(1);
    }
    return traits_type::not_eof(c);
}

int WriteBuffer::sync() { return boWrite() ? 0 : -1; }

void vBindOpen(nb::module_& module) {
    module.def(
        "stamp",
        [](const std::string& sPath) {
            const Stamp stamp = stampOf(sPath);
            return nb::make_tuple(stamp.uSize, stamp.iTime);
        },
        nb::arg("path"), "Size and time of the last change of a file, to tell whether it is still the same.");
    module.def(
        "open", &openModel, nb::arg("source").none(), nb::kw_only(), nb::arg("threads") = 0,
        nb::arg("keep_numbers") = true, nb::arg("progress") = nb::none(),
        "Reads a model: STEP (ISO 10303-21), ifcXML or the short text form, also packed as .ifczip or .gz, told by\n"
        "the first bytes.\n\n"
        "source: a path (str or os.PathLike), bytes, or a file object that is open as binary, from where it stands.\n"
        "threads: 1 for the calling one alone; 0 for as many as the machine has a use for.\n"
        "keep_numbers: False numbers the entities 1, 2, 3 and so on.\n"
        "progress: tqdm.tqdm or what is like it, or a bar with update(n).\n\n"
        "What is wrong inside of the file is no exception: see Model.errors and Model.whole.\n"
        "Raises FileError, which is an OSError, where the source can't be read or is no model; KeyboardInterrupt at\n"
        "Ctrl-C, and nothing is left of the model. Other threads run meanwhile.");
}

}   // namespace oxa::python
