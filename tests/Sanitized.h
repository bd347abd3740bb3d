// SPDX-License-Identifier: Apache-2.0
// Whether the tests are built with a sanitizer that costs much of their time: they then take less of what is large.
#pragma once

namespace oxa::test {

#if defined(__has_feature)   // clang's way to tell; g++ has macros
#define OXA_HAS_FEATURE(feature) __has_feature(feature)
#else
#define OXA_HAS_FEATURE(feature) 0
#endif
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__) || OXA_HAS_FEATURE(thread_sanitizer) || \
    OXA_HAS_FEATURE(address_sanitizer)
inline constexpr bool g_boSanitized = true;
#else
inline constexpr bool g_boSanitized = false;
#endif
#undef OXA_HAS_FEATURE

}   // namespace oxa::test
