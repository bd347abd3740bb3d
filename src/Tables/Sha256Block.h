// SPDX-License-Identifier: Apache-2.0
// Sha256Block: 64 bytes added to a sum of SHA-256 (FIPS 180-4, 6.2.2), by the instructions that processors have for it, or
// without.
//
// For      Sha256.cpp. The one place for these instructions; which of both serves is asked when the program runs.
// Threads  any number.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#if defined(__x86_64__) && defined(__GNUC__)
#define OXA_SHA_INSTRUCTIONS
#include <cpuid.h>
#include <immintrin.h>
#endif

namespace oxa::tables::detail::sha256 {

using Words = std::array<std::uint32_t, 8>;

// The first 32 bits behind the point of the cube roots of the first 64 primes.
// clang-format off
inline constexpr std::array<std::uint32_t, 64> g_roots{
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};
// clang-format on

inline void vBlockPlain(Words& sum, const unsigned char* pBlock) {
    std::array<std::uint32_t, 64> words{};
    for (std::size_t i = 0; i < 16; ++i)
        for (std::size_t iByte = 0; iByte < 4; ++iByte) words[i] = words[i] << 8U | pBlock[4 * i + iByte];
    for (std::size_t i = 16; i < 64; ++i) {
        const std::uint32_t a = words[i - 15];
        const std::uint32_t b = words[i - 2];
        words[i] = words[i - 16] + (std::rotr(a, 7) ^ std::rotr(a, 18) ^ a >> 3U) + words[i - 7] +
                   (std::rotr(b, 17) ^ std::rotr(b, 19) ^ b >> 10U);
    }
    auto [a, b, c, d, e, f, g, h] = sum;
    for (std::size_t i = 0; i < 64; ++i) {
        const std::uint32_t first =
            h + (std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25)) + ((e & f) ^ (~e & g)) + g_roots[i] + words[i];
        const std::uint32_t second =
            (std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
        h = g;
        g = f;
        f = e;
        e = d + first;
        d = c;
        c = b;
        b = a;
        a = first + second;
    }
    const Words added{a, b, c, d, e, f, g, h};
    for (std::size_t i = 0; i < sum.size(); ++i) sum[i] += added[i];
}

#ifdef OXA_SHA_INSTRUCTIONS

inline bool boInstructions() noexcept {
    unsigned a = 0;
    unsigned b = 0;
    unsigned c = 0;
    unsigned d = 0;
    return __builtin_cpu_supports("sse4.1") && __get_cpuid_count(7, 0, &a, &b, &c, &d) && (b >> 29U & 1U) != 0;
}

// Six times as fast. The instructions want a, b, e, f in one register and c, d, g, h in another, highest first; each makes
// two rounds.
__attribute__((target("sha,sse4.1"))) inline void vBlockByInstructions(Words& sum, const unsigned char* pBlock) {
    const __m128i swap = _mm_set_epi64x(0x0c0d0e0f08090a0b, 0x0405060700010203);
    const auto load = [](const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); };
    const __m128i cdab = _mm_shuffle_epi32(load(sum.data()), 0xb1);
    const __m128i efgh = _mm_shuffle_epi32(load(sum.data() + 4), 0x1b);
    __m128i abef = _mm_alignr_epi8(cdab, efgh, 8);
    __m128i cdgh = _mm_blend_epi16(efgh, cdab, 0xf0);
    const __m128i abefBefore = abef;
    const __m128i cdghBefore = cdgh;
    __m128i words[4];   // the last sixteen
    for (std::size_t i = 0; i < 16; ++i) {
        __m128i& four = words[i % 4];
        if (i < 4) {
            four = _mm_shuffle_epi8(load(pBlock + 16 * i), swap);
        } else {
            const __m128i last = words[(i + 3) % 4];
            four = _mm_add_epi32(_mm_sha256msg1_epu32(four, words[(i + 1) % 4]),
                                 _mm_alignr_epi8(last, words[(i + 2) % 4], 4));
            four = _mm_sha256msg2_epu32(four, last);
        }
        const __m128i added = _mm_add_epi32(four, load(g_roots.data() + 4 * i));
        cdgh = _mm_sha256rnds2_epu32(cdgh, abef, added);
        abef = _mm_sha256rnds2_epu32(abef, cdgh, _mm_shuffle_epi32(added, 0x0e));
    }
    const __m128i feba = _mm_shuffle_epi32(_mm_add_epi32(abef, abefBefore), 0x1b);
    const __m128i dchg = _mm_shuffle_epi32(_mm_add_epi32(cdgh, cdghBefore), 0xb1);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(sum.data()), _mm_blend_epi16(feba, dchg, 0xf0));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(sum.data() + 4), _mm_alignr_epi8(dchg, feba, 8));
}

#endif

using Block = void (*)(Words& sum, const unsigned char* pBlock);

// boFast: by instructions where the processor has them.
inline Block pBlockOf([[maybe_unused]] bool boFast) noexcept {
#ifdef OXA_SHA_INSTRUCTIONS
    static const bool boHas = boInstructions();
    if (boFast && boHas) return vBlockByInstructions;
#endif
    return vBlockPlain;
}

}   // namespace oxa::tables::detail::sha256
