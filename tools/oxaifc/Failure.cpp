#include "oxaifc/Failure.h"

namespace oxa::tool {

Failure::~Failure() = default;

}   // namespace oxa::tool
