// SPDX-License-Identifier: Apache-2.0
#include "platform/Utilities.h"

#include "platform/System.h"

namespace oxa {

exception::~exception() = default;

void Debugger::vBreak() noexcept { platform::vDebugBreak(); }

}   // namespace oxa
