// SPDX-License-Identifier: Apache-2.0
// ElementModel: a file that a verb was called with, as elements and their relations.
//
// For      verbs that ask for properties, storeys and materials, and not for statements.
// Errors   Failure as of Model, and for a file without a schema that is known. How many errors the read met is told on
//          standard error; what they are, "oxaifc check" tells.
// Threads  as Model.
#pragma once

#include <string>

#include "Model/Model.h"
#include "oxaifc/formats/Model.h"

namespace oxa::tool {

class ElementModel {
public:
    explicit ElementModel(const ModelOptions& options);

    [[nodiscard]] const oxa::Model& model() const noexcept { return m_model; }
    // As it was read.
    [[nodiscard]] Model& file() noexcept { return m_file; }
    [[nodiscard]] int iExitCode() const { return m_file.iExitCode(); }

private:
    Model m_file;         // with the schemas, which the elements need to the end
    oxa::Model m_model;   // owns the file's content
};

// The elements of a file, which gives its content to them and has to live as long. Failure without a schema.
[[nodiscard]] oxa::Model elementsOf(Model& file);

// A hint or a warning: a line on standard error.
void vTell(const std::string& sText);

}   // namespace oxa::tool
