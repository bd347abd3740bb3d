// SPDX-License-Identifier: Apache-2.0
// LateLibrary: a shared library that is loaded when the first of its functions is asked for.
//
// For      libraries that few calls of the program need.
// Threads  any number at once.
#pragma once

namespace oxa::tool {

class LateLibrary {
public:
    // The name is the one that programs linked with the library have noted, as "libzip.so.4", and lives as long as this.
    constexpr explicit LateLibrary(const char* pName) noexcept : m_pName(pName) {}

    // One of its functions, for the rest of the program. Throws std::runtime_error where the library can't be loaded or
    // has none of this name.
    template <class Function>
    [[nodiscard]] Function* function(const char* pFunction) const {
        return reinterpret_cast<Function*>(pAddress(pFunction));
    }

private:
    [[nodiscard]] void* pAddress(const char* pFunction) const;

    const char* m_pName;
};

}   // namespace oxa::tool

// Defines the function "name" of a library that is declared already: it calls the one in "library".
#define OXA_LATE(library, Result, name, parameters, arguments)                   \
    Result name parameters {                                                     \
        static const auto pFunction = (library).function<decltype(name)>(#name); \
        return pFunction arguments;                                              \
    }
