// SPDX-License-Identifier: Apache-2.0
/// @file
/// MissingType: the exception for an instance, an attribute or a cell that has no type.
///
/// - For: telling this fault from others: the walks that ask for types end with it where a model names an instance that
///   no statement defines.
/// - Threads: a plain value.
#pragma once

#include "platform/Export.h"
#include "platform/Utilities.h"

namespace oxa::ifc {

/// Thrown where a type is asked for and there is none: what() is "returning nullptr".
class OXA_IFC_API MissingType final : public oxa::exception {
public:
    MissingType() : exception("returning nullptr") {}
};

}   // namespace oxa::ifc
