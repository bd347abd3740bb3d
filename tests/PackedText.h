// SPDX-License-Identifier: Apache-2.0
// PackedText: ZIP archives and .gz files byte by byte, right ones and wrong ones. They come from no library, so that what
// reads and writes packed files is held against something else.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

namespace oxa::test {

// What stands in an archive, not compressed.
struct ZipEntry {
    std::string_view name;
    std::string_view bytes;
    unsigned uFlags = 0;       // 1: encrypted
    unsigned uMethod = 0;      // 0: stored
    bool boWrongSum = false;   // of the bytes
};

inline std::uint32_t checkSum(std::string_view bytes) {
    std::uint32_t u = 0xffffffff;
    for (const char c : bytes) {
        u ^= static_cast<unsigned char>(c);
        for (int i = 0; i < 8; ++i) u = (u >> 1) ^ (u & 1 ? 0xedb88320u : 0u);
    }
    return ~u;
}

// So many bytes of a number, the lowest first.
inline std::string sLittle(std::uint64_t u, int iBytes) {
    std::string sBytes;
    for (int i = 0; i < iBytes; ++i, u >>= 8) sBytes += static_cast<char>(u & 0xff);
    return sBytes;
}

inline std::string sZip(std::initializer_list<ZipEntry> entries) {
    std::string sFiles, sList;
    for (const ZipEntry& entry : entries) {
        const std::string sCommon = sLittle(20, 2) + sLittle(entry.uFlags, 2) + sLittle(entry.uMethod, 2) +
                                    sLittle(0x00210000, 4) + sLittle(checkSum(entry.bytes) + entry.boWrongSum, 4) +
                                    sLittle(entry.bytes.size(), 4) + sLittle(entry.bytes.size(), 4) +
                                    sLittle(entry.name.size(), 2) + sLittle(0, 2);
        sList += "PK\x01\x02" + sLittle(20, 2) + sCommon + sLittle(0, 10) + sLittle(sFiles.size(), 4);
        sList += entry.name;
        sFiles += "PK\x03\x04" + sCommon;
        sFiles.append(entry.name).append(entry.bytes);
    }
    return sFiles + sList + "PK\x05\x06" + sLittle(0, 4) + sLittle(entries.size(), 2) + sLittle(entries.size(), 2) +
           sLittle(sList.size(), 4) + sLittle(sFiles.size(), 4) + sLittle(0, 2);
}

// One member, not compressed; at most 65,535 bytes.
inline std::string sGzip(std::string_view bytes) {
    return std::string("\x1f\x8b\x08\0\0\0\0\0\0\xff\x01", 11) + sLittle(bytes.size(), 2) + sLittle(~bytes.size(), 2) +
           std::string(bytes) + sLittle(checkSum(bytes), 4) + sLittle(bytes.size(), 4);
}

}   // namespace oxa::test
