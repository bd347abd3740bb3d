#include "Format/Ifc/IfcFileHeaderBase.h"

namespace oxa::ifc {

FileHeaderBase::~FileHeaderBase() = default;

}   // namespace oxa::ifc
