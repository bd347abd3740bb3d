// SPDX-License-Identifier: Apache-2.0
// Does not compile, and says why: a value can't be had as a float.
#include "Model/Model.h"

float width(const oxa::Element& door) { return door.get<float>("OverallWidth"); }
