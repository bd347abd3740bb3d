// SPDX-License-Identifier: Apache-2.0
// Compiler: what the libraries ask of a compiler beyond the standard. The one place for it, beside the marks of Export.h
// and the vector instructions of Format/Ifc/Text/ByteBlock.h; tests/CheckPortable.cmake holds other files to that.
//
// For      sources of the libraries. Not for public headers.
// Threads  any number at once; no state.
#pragma once

#include <concepts>
#include <limits>

#if defined(_MSC_VER) && !defined(__clang__)
#include <intrin.h>
#else
#define OXA_HAS_GNU_BUILTINS 1   // g++ and clang++, which has them on every system
#endif

// In front of a function of an innermost loop that is worth its place there wherever it is called, and of one whose own
// variables need all registers that there are.
#if defined(OXA_HAS_GNU_BUILTINS)
#define OXA_ALWAYS_INLINE [[gnu::always_inline]] inline
#define OXA_NEVER_INLINE [[gnu::noinline]]
#else
#define OXA_ALWAYS_INLINE __forceinline
#define OXA_NEVER_INLINE __declspec(noinline)
#endif

#if defined(__MINGW32__)
// In front of a function that the system calls before any initialiser.
#define OXA_CALLED_FIRST [[gnu::constructor(101)]]
#endif

namespace oxa::platform {

#if defined(__SIZEOF_INT128__)
// Whole numbers of 128 bits. Who uses them has another way for a compiler without.
#define OXA_HAS_UNSIGNED128 1
__extension__ using Unsigned128 = unsigned __int128;
#endif

// By the standard alone: for compilers without these builtins, and what the builtins are tested against.
namespace plain {

// As platform::boAdded.
template <std::signed_integral Integer>
[[nodiscard]] constexpr bool boAdded(Integer a, Integer b, Integer& result) noexcept {
    using Limits = std::numeric_limits<Integer>;
    if (b > 0 ? a > Limits::max() - b : a < Limits::min() - b) return false;
    result = static_cast<Integer>(a + b);
    return true;
}

// As platform::boSubtracted.
template <std::signed_integral Integer>
[[nodiscard]] constexpr bool boSubtracted(Integer a, Integer b, Integer& result) noexcept {
    using Limits = std::numeric_limits<Integer>;
    if (b > 0 ? a < Limits::min() + b : a > Limits::max() + b) return false;
    result = static_cast<Integer>(a - b);
    return true;
}

// As platform::boMultiplied.
template <std::signed_integral Integer>
[[nodiscard]] constexpr bool boMultiplied(Integer a, Integer b, Integer& result) noexcept {
    using Limits = std::numeric_limits<Integer>;
    if (b == -1) return boSubtracted(Integer{0}, a, result);   // no quotient by -1 below: the smallest has none
    if (b != 0) {
        const Integer least = static_cast<Integer>((b > 0 ? Limits::min() : Limits::max()) / b);
        const Integer most = static_cast<Integer>((b > 0 ? Limits::max() : Limits::min()) / b);
        if (a < least || a > most) return false;
    }
    result = static_cast<Integer>(a * b);
    return true;
}

}   // namespace plain

// Whether the sum, difference or product fits; result is written only where it does.
template <std::signed_integral Integer>
[[nodiscard]] constexpr bool boAdded(Integer a, Integer b, Integer& result) noexcept {
#if defined(OXA_HAS_GNU_BUILTINS)
    Integer sum{};
    if (__builtin_add_overflow(a, b, &sum)) return false;
    result = sum;
    return true;
#else
    return plain::boAdded(a, b, result);
#endif
}
template <std::signed_integral Integer>
[[nodiscard]] constexpr bool boSubtracted(Integer a, Integer b, Integer& result) noexcept {
#if defined(OXA_HAS_GNU_BUILTINS)
    Integer difference{};
    if (__builtin_sub_overflow(a, b, &difference)) return false;
    result = difference;
    return true;
#else
    return plain::boSubtracted(a, b, result);
#endif
}
template <std::signed_integral Integer>
[[nodiscard]] constexpr bool boMultiplied(Integer a, Integer b, Integer& result) noexcept {
#if defined(OXA_HAS_GNU_BUILTINS)
    Integer product{};
    if (__builtin_mul_overflow(a, b, &product)) return false;
    result = product;
    return true;
#else
    return plain::boMultiplied(a, b, result);
#endif
}

// Has the processor fetch what will be read, or written, soon. Any address will do; a hint, not an access.
inline void vFetchToRead(const void* p) noexcept {
#if defined(OXA_HAS_GNU_BUILTINS)
    __builtin_prefetch(p);
#elif defined(_M_ARM64)
    __prefetch(p);
#else
    _mm_prefetch(static_cast<const char*>(p), _MM_HINT_T0);
#endif
}
inline void vFetchToWrite(const void* p) noexcept {
#if defined(OXA_HAS_GNU_BUILTINS)
    __builtin_prefetch(p, 1);
#else
    vFetchToRead(p);
#endif
}

// Between two looks at what another thread is about to write: leaves the processor's means to whoever shares them.
inline void vRelax() noexcept {
#if defined(OXA_HAS_GNU_BUILTINS) && defined(__x86_64__)
    __builtin_ia32_pause();
#elif defined(OXA_HAS_GNU_BUILTINS) && defined(__aarch64__)
    asm volatile("yield");
#elif defined(_M_X64)
    _mm_pause();
#elif defined(_M_ARM64)
    __yield();
#endif
}

// About where the stack of the calling thread ends now. A local variable may lie elsewhere, as AddressSanitizer has it.
[[nodiscard]] inline const char* pStackNow() noexcept {
#if defined(OXA_HAS_GNU_BUILTINS)
    return static_cast<const char*>(__builtin_frame_address(0));
#else
    return static_cast<const char*>(_AddressOfReturnAddress());
#endif
}

}   // namespace oxa::platform

#undef OXA_HAS_GNU_BUILTINS
