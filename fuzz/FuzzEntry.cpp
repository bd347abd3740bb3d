// SPDX-License-Identifier: Apache-2.0
// FuzzEntry: hands the inputs of libFuzzer, or of Replay.cpp, to the target.

#include "Fuzz.h"

#include <cstddef>
#include <cstdint>

#include "platform/Assert.h"

extern "C" int LLVMFuzzerInitialize(int* pCount, char*** pArguments);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pBytes, std::size_t iSize);

// Assertions are raised, and nobody hears them: bad input may cause some.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
    oxa::Assert::setEnabled(true);
    oxa::Assert::setHandler([](const oxa::AssertInfo&) {});
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pBytes, std::size_t iSize) {
    oxa::fuzz::vRun({reinterpret_cast<const char*>(pBytes), iSize});
    return 0;
}
