// SPDX-License-Identifier: Apache-2.0
// TableStream: the rows of a table, read while other threads of Python run and may change the model.
//
// For      TableBinding.
// Model    is held alive by what is made here. Once it has changed since the first row, there are no further ones: an
//          Error says so.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "ModelObject.h"
#include "Tables/Arrow.h"
#include "Tables/Tables.h"

namespace oxa::python {

// Rows in batches, with the interpreter's lock held by the caller and released meanwhile.
class GuardedReader {
public:
    // NameError for a table that there is none of.
    GuardedReader(const Home& home, const tables::FileInfo& file, const std::string& sTable);
    // As tables::Reader::next().
    [[nodiscard]] bool boNext(tables::Batch& batch, std::size_t iRows);

private:
    nb::object m_model;
    ModelObject* m_pModel;
    std::uint64_t m_uChanges = 0;
    std::optional<tables::Reader> m_reader;
};

// Makes *pOut a stream that may be read and released on any thread, with the interpreter's lock or without.
void vGuardedStream(const Home& home, const tables::FileInfo& file, const std::string& sTable, std::size_t iRows,
                    ArrowArrayStream* pOut);

}   // namespace oxa::python
