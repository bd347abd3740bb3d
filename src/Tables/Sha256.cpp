// SPDX-License-Identifier: Apache-2.0
#include "Tables/Sha256.h"

#include <cstdint>
#include <istream>
#include <vector>

#include "Tables/Sha256Block.h"

namespace oxa::tables::detail {

std::string sSha256(std::istream& stream, bool boFast) {
    const sha256::Block vBlock = sha256::pBlockOf(boFast);
    constexpr std::size_t iBlock = 64;
    sha256::Words sum{0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a, 0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
    std::vector<unsigned char> bytes(1024 * iBlock);
    std::uint64_t uSize = 0;
    std::size_t iHere = 0;
    do {
        stream.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        iHere = static_cast<std::size_t>(stream.gcount());
        uSize += iHere;
        for (std::size_t i = 0; i + iBlock <= iHere; i += iBlock) vBlock(sum, bytes.data() + i);
    } while (stream);
    if (stream.bad()) return {};
    // A bit, and the length in bits, fill the last block.
    std::vector<unsigned char> rest(bytes.begin() + static_cast<std::ptrdiff_t>(iHere - iHere % iBlock),
                                    bytes.begin() + static_cast<std::ptrdiff_t>(iHere));
    rest.push_back(0x80);
    while (rest.size() % iBlock != iBlock - 8) rest.push_back(0);
    for (int iShift = 56; iShift >= 0; iShift -= 8)
        rest.push_back(static_cast<unsigned char>(uSize * 8 >> static_cast<unsigned>(iShift)));
    for (std::size_t i = 0; i < rest.size(); i += iBlock) vBlock(sum, rest.data() + i);
    constexpr char digits[] = "0123456789abcdef";
    std::string sText;
    for (const std::uint32_t uWord : sum)
        for (int iShift = 28; iShift >= 0; iShift -= 4) sText += digits[uWord >> static_cast<unsigned>(iShift) & 15U];
    return sText;
}

}   // namespace oxa::tables::detail
