// SPDX-License-Identifier: Apache-2.0
#include "Model/Error.h"

namespace oxa {

// Here, so that each type has one identity in all libraries and programs that throw and catch it.
Error::~Error() = default;
NameError::~NameError() = default;
TypeError::~TypeError() = default;
ValueError::~ValueError() = default;
HandleError::~HandleError() = default;
FileError::~FileError() = default;
Stopped::~Stopped() = default;

}   // namespace oxa
