// SPDX-License-Identifier: Apache-2.0
#include <dlfcn.h>

#include <stdexcept>
#include <string>

#include "late/LateLibrary.h"

namespace oxa::tool {

void* LateLibrary::pAddress(const char* pFunction) const {
    void* const pLibrary = dlopen(m_pName, RTLD_NOW | RTLD_LOCAL);   // once in all; never closed
    void* const pFound = pLibrary ? dlsym(pLibrary, pFunction) : nullptr;
    if (pFound) return pFound;
    const char* const pError = dlerror();
    throw std::runtime_error("can't load " + std::string(m_pName) + ": " + (pError ? pError : pFunction));
}

}   // namespace oxa::tool
