// SPDX-License-Identifier: Apache-2.0
// ByteBlock: sixteen bytes of a text, looked at at once. The one place with vector instructions.
//
// For      the searches of the reader and the string codec: TextScan.h, Parameters.h, ../Read/ScanMap.h.
// Shape    a block of bytes gives blocks of marks, 0xFF where a byte is meant and 0 elsewhere; uHighBits() makes a mask of
//          them, bit 0 for the first byte, so that std::countr_zero finds it.
// Machines SSE2 or NEON where one is at hand, else the same byte by byte. Each is tested against that.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#define OXA_IFC_SSE2 1
#elif defined(__aarch64__) || defined(_M_ARM64)
#include <arm_neon.h>
#define OXA_IFC_NEON 1
#endif

namespace oxa::ifc::details {

// On any machine.
class PlainByteBlock {
public:
    static constexpr std::size_t g_iSize = 16;

    // The bytes from p on, all of which can be read.
    explicit PlainByteBlock(const char* p) noexcept { std::memcpy(m_bytes.data(), p, g_iSize); }

    // Marks those that are one of the given bytes.
    template <class... Byte>
    [[nodiscard]] PlainByteBlock among(Byte... bytes) const noexcept {
        return marked([&](unsigned char c) { return ((c == static_cast<unsigned char>(bytes)) || ...); });
    }
    // Marks those from cLow to cHigh.
    [[nodiscard]] PlainByteBlock between(char cLow, char cHigh) const noexcept {
        return marked([&](unsigned char c) {
            return c >= static_cast<unsigned char>(cLow) && c <= static_cast<unsigned char>(cHigh);
        });
    }
    [[nodiscard]] PlainByteBlock operator|(const PlainByteBlock& other) const noexcept {
        PlainByteBlock result = *this;
        for (std::size_t i = 0; i < g_iSize; ++i)
            result.m_bytes[i] = static_cast<unsigned char>(m_bytes[i] | other.m_bytes[i]);
        return result;
    }
    // The highest bit of each byte: set in marks, and in text from 0x80 on.
    [[nodiscard]] unsigned uHighBits() const noexcept {
        unsigned uMask = 0;
        for (std::size_t i = 0; i < g_iSize; ++i) uMask |= static_cast<unsigned>(m_bytes[i] >> 7) << i;
        return uMask;
    }

private:
    template <class Meant>
    [[nodiscard]] PlainByteBlock marked(Meant&& boMeant) const noexcept {
        PlainByteBlock result = *this;
        for (unsigned char& c : result.m_bytes) c = boMeant(c) ? 0xFF : 0;
        return result;
    }

    std::array<unsigned char, g_iSize> m_bytes;
};

#if defined(OXA_IFC_SSE2)
class VectorByteBlock {
public:
    static constexpr std::size_t g_iSize = 16;

    explicit VectorByteBlock(const char* p) noexcept : m_bytes(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))) {}

    template <class... Byte>
    [[nodiscard]] VectorByteBlock among(Byte... bytes) const noexcept {
        __m128i any = _mm_setzero_si128();
        ((any = _mm_or_si128(any, _mm_cmpeq_epi8(m_bytes, _mm_set1_epi8(bytes)))), ...);
        return VectorByteBlock(any);
    }
    // As unsigned distances from cLow, of which the smaller one of each and the largest that counts is itself.
    [[nodiscard]] VectorByteBlock between(char cLow, char cHigh) const noexcept {
        const __m128i distances = _mm_sub_epi8(m_bytes, _mm_set1_epi8(cLow));
        const __m128i largest = _mm_set1_epi8(static_cast<char>(cHigh - cLow));
        return VectorByteBlock(_mm_cmpeq_epi8(_mm_min_epu8(distances, largest), distances));
    }
    [[nodiscard]] VectorByteBlock operator|(const VectorByteBlock& other) const noexcept {
        return VectorByteBlock(_mm_or_si128(m_bytes, other.m_bytes));
    }
    [[nodiscard]] unsigned uHighBits() const noexcept { return static_cast<unsigned>(_mm_movemask_epi8(m_bytes)); }

private:
    explicit VectorByteBlock(__m128i bytes) noexcept : m_bytes(bytes) {}

    __m128i m_bytes;
};
using ByteBlock = VectorByteBlock;
#undef OXA_IFC_SSE2
#elif defined(OXA_IFC_NEON)
class VectorByteBlock {
public:
    static constexpr std::size_t g_iSize = 16;

    explicit VectorByteBlock(const char* p) noexcept : m_bytes(vld1q_u8(reinterpret_cast<const std::uint8_t*>(p))) {}

    template <class... Byte>
    [[nodiscard]] VectorByteBlock among(Byte... bytes) const noexcept {
        uint8x16_t any = vdupq_n_u8(0);
        ((any = vorrq_u8(any, vceqq_u8(m_bytes, vdupq_n_u8(static_cast<std::uint8_t>(bytes))))), ...);
        return VectorByteBlock(any);
    }
    [[nodiscard]] VectorByteBlock between(char cLow, char cHigh) const noexcept {
        return VectorByteBlock(vandq_u8(vcgeq_u8(m_bytes, vdupq_n_u8(static_cast<std::uint8_t>(cLow))),
                                        vcleq_u8(m_bytes, vdupq_n_u8(static_cast<std::uint8_t>(cHigh)))));
    }
    [[nodiscard]] VectorByteBlock operator|(const VectorByteBlock& other) const noexcept {
        return VectorByteBlock(vorrq_u8(m_bytes, other.m_bytes));
    }
    // There is no instruction for it: the highest bit of a byte is spread over the byte, cut down to the bit of the
    // byte's place, and the eight places of each half are added up.
    [[nodiscard]] unsigned uHighBits() const noexcept {
        static constexpr std::uint8_t g_places[g_iSize] = {1, 2, 4, 8, 16, 32, 64, 128, 1, 2, 4, 8, 16, 32, 64, 128};
        const uint8x16_t spread = vcltzq_s8(vreinterpretq_s8_u8(m_bytes));
        const uint8x16_t places = vandq_u8(spread, vld1q_u8(g_places));
        return static_cast<unsigned>(vaddv_u8(vget_low_u8(places))) |
               static_cast<unsigned>(vaddv_u8(vget_high_u8(places))) << 8;
    }

private:
    explicit VectorByteBlock(uint8x16_t bytes) noexcept : m_bytes(bytes) {}

    uint8x16_t m_bytes;
};
using ByteBlock = VectorByteBlock;
#undef OXA_IFC_NEON
#else
using ByteBlock = PlainByteBlock;
#endif

}   // namespace oxa::ifc::details
