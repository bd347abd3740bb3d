// SPDX-License-Identifier: Apache-2.0
#include "oxaifc/formats/FileOpen.h"

#include <fmt/format.h>

#include "oxaifc/formats/FirstBytes.h"
#include "oxaifc/io/Failure.h"

namespace oxa::tool {

std::unique_ptr<Input> pFileOpen(const std::string& sPath) {
    auto pInput = std::make_unique<Input>(sPath);
    if (const std::string sForm = sForeignForm(pInput->firstBytes()); !sForm.empty())
        throw Failure(fmt::format("{}: {}", pInput->sName(), sForm));
    return pInput;
}

}   // namespace oxa::tool
