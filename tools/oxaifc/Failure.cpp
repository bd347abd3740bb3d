// SPDX-License-Identifier: Apache-2.0
#include "oxaifc/Failure.h"

namespace oxa::tool {

Failure::~Failure() = default;

}   // namespace oxa::tool
