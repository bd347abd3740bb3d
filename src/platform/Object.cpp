// SPDX-License-Identifier: Apache-2.0
#include "platform/Object.h"

namespace oxa {

generate::ObjectInterface::~ObjectInterface() = default;

object::PropertyInterface::~PropertyInterface() = default;

fc::Property::Property() = default;
fc::Property::~Property() = default;

}   // namespace oxa
