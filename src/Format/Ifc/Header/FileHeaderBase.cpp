// SPDX-License-Identifier: Apache-2.0
#include "Format/Ifc/Header/FileHeaderBase.h"

namespace oxa::ifc {

FileHeaderBase::~FileHeaderBase() = default;

}   // namespace oxa::ifc
