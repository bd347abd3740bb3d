// SPDX-License-Identifier: Apache-2.0
// Source: where models come from, and where they go: paths, bytes, file objects.
#pragma once

#include <nanobind/nanobind.h>

#include <optional>
#include <streambuf>
#include <string>
#include <vector>

#include "Job.h"

namespace oxa::python {

// The text of a str or an os.PathLike; empty for all else.
[[nodiscard]] std::optional<std::string> pathOf(nb::handle object);

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
