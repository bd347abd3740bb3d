// SPDX-License-Identifier: Apache-2.0
#include "oxaifc/io/Failure.h"

namespace oxa::tool {

Failure::~Failure() = default;

}   // namespace oxa::tool
