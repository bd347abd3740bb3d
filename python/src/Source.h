// SPDX-License-Identifier: Apache-2.0
// Source: where models come from, and where they go: paths, bytes, file objects.
#pragma once

#include <nanobind/nanobind.h>

#include <optional>
#include <streambuf>
#include <string>
#include <string_view>
#include <vector>

#include "Job.h"

namespace oxa::python {

// The text of a str or an os.PathLike; empty for all else.
[[nodiscard]] std::optional<std::string> pathOf(nb::handle object);

// An oxaifc.MissingFileError where there is no file of that name.
void vMissingCheck(const std::string& sPath);

// A buffer of bytes, as long as this lives.
class Bytes {
public:
    explicit Bytes(nb::handle object);
    ~Bytes() { PyBuffer_Release(&m_view); }
    Bytes(const Bytes&) = delete;
    Bytes& operator=(const Bytes&) = delete;
    [[nodiscard]] std::string_view text() const {
        return {static_cast<const char*>(m_view.buf), static_cast<std::size_t>(m_view.len)};
    }

private:
    Py_buffer m_view{};
};

// The bytes of a file object that is open as binary. What read() raises ends them, and the job tells it.
class ReadBuffer final : public std::streambuf {
public:
    // Takes the interpreter's lock for each call; made while it is held.
    ReadBuffer(nb::handle file, Job& job);

protected:
    int_type underflow() override;

private:
    nb::object m_read;
    nb::object m_bytes;   // that are being given
    Job& m_job;
};

// The same for write().
class WriteBuffer final : public std::streambuf {
public:
    WriteBuffer(nb::handle file, Job& job);

protected:
    int_type overflow(int_type c) override;
    int sync() override;

private:
    bool boWrite();

    nb::object m_write;
    std::vector<char> m_bytes;
    Job& m_job;
};

// oxaifc.open().
void vBindOpen(nb::module_& module);

}   // namespace oxa::python
