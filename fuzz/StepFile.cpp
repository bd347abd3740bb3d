// SPDX-License-Identifier: Apache-2.0
// StepFile: a whole exchange structure (ISO 10303-21) is read, written, and what was written is read again.

#include <sstream>
#include <string>

#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileError.h"
#include "Fuzz.h"

namespace oxa::fuzz {

namespace {

struct Model {
    ifc::File file;
    ifc::io::ReadError errors;
    bool boRead;

    explicit Model(std::string_view text) {
        ExactStream in(text);
        boRead = file.boRead(in, {}, errors, true, {}, true);
        vExpect(boRead || !errors.records().empty(), "a read that fails says why");
    }
    // Everything that was read, then the file as far as the project leads. Empty where there is no project.
    [[nodiscard]] std::string sWritten() const {
        ifc::io::WriteError writeErrors;
        NullStream nowhere;
        file.data().boWrite(nowhere, writeErrors, true);
        std::ostringstream out;
        file.boWrite(out, writeErrors, {}, true);
        return out.str();
    }
};

}   // namespace

void vRun(std::string_view input) {
    const Model model(input);
    const std::string sWritten = model.sWritten();
    if (sWritten.empty()) return;
    const Model again(sWritten);
    (void)again.sWritten();
}

}   // namespace oxa::fuzz
