// SPDX-License-Identifier: Apache-2.0
#include "oxaifc/formats/FileOpen.h"

#include <fmt/format.h>

#include "oxaifc/formats/FirstBytes.h"
#include "oxaifc/io/Failure.h"

namespace oxa::tool {

std::unique_ptr<Input> pFileOpen(const std::string& sPath, const UnpackLimits& limits) {
    auto pInput = std::make_unique<Input>(sPath);
    pInput->vUnpack(limits);
    if (const std::string sForm = sForeignForm(pInput->firstBytes()); !sForm.empty())
        throw Failure(fmt::format("{}: {}", pInput->sName(), sForm));
    return pInput;
}

void UnpackOption::vDeclare(Command command) {
    command.flag("--unpack-all", boAll,
                 "read what a packed file (.ifczip, .gz) holds however large it is; without it 32 GiB at most, and "
                 "200 times its size");
}

}   // namespace oxa::tool
