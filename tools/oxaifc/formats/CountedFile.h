// SPDX-License-Identifier: Apache-2.0
// CountedFile: a file whose statements are counted, in place of a Model, where that tells the same.
//
// For      the verb "info".
// Errors   Failure, as Model has it, for what can't be opened.
// Threads  one; a count starts and joins its own.
#pragma once

#include <string>
#include <string_view>

#include "Format/Ifc/IfcCountFile.h"
#include "oxaifc/formats/Model.h"

namespace oxa::tool {

class CountedFile {
public:
    explicit CountedFile(const ModelOptions& options);

    // Why it has to be read; empty where all below holds.
    [[nodiscard]] std::string_view doubt() const noexcept { return m_count.doubt; }
    [[nodiscard]] const ifc::io::FileCount& count() const noexcept { return m_count; }
    // How long the count took, opening aside.
    [[nodiscard]] double seconds() const noexcept { return m_seconds; }
    // How messages call the file.
    [[nodiscard]] const std::string& sName() const noexcept { return m_sName; }

private:
    SchemaSource m_schemas;   // outlives the count
    ifc::io::FileCount m_count;
    std::string m_sName;
    double m_seconds = 0;
};

}   // namespace oxa::tool
