// SPDX-License-Identifier: Apache-2.0
// InstanceTable: of every instance where it stands and of what type it is, by its number.
//
// For      ExchangeStructure, which enters instances and so finds double numbers, and the schema level.
// Memory   eight bytes a number where numbers are dense, which those of exporters are; 32 bytes an instance where they are
//          scattered, so that no file makes the table larger than a few times itself.
// Cost     a few nanoseconds a call.
// Threads  one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace oxa::check {

// Lines beyond 32 bits are told as the last that fits.
struct Instance {
    std::uint32_t iLine = 0;   // 0: there is no such instance
    std::uint16_t iType = 0;   // of the user of the table; 0: not known
    std::uint16_t iMore = 0;   // the same
};

class InstanceTable {
public:
    // The number that digits stand for; those with more than 18 digits, which no exporter writes, have one that is
    // different from all others but for an accident.
    [[nodiscard]] static std::uint64_t iNumber(std::string_view digits) noexcept;

    // "#12" for a number; those with more than 18 digits are told as what they are.
    [[nodiscard]] static std::string sName(std::uint64_t iNumber);

    // The number as its file has it; 0 for those with more than 18 digits.
    [[nodiscard]] static std::uint64_t iTold(std::uint64_t iNumber) noexcept;

    // Enters an instance. False where there is one with that number.
    bool boInsert(std::uint64_t iNumber, std::uint64_t iLine);
    // Null where there is none. Good until the next boInsert.
    [[nodiscard]] Instance* pFind(std::uint64_t iNumber) noexcept;
    [[nodiscard]] std::uint64_t iCount() const noexcept { return m_iCount; }

    // Calls visit(number, instance) for each, by number where they are dense, the others behind them by number.
    template <class Visit>
    void vForEach(Visit&& visit) const {
        for (std::size_t i = 0; i < m_dense.size(); ++i)
            if (m_dense[i].iLine) visit(std::uint64_t{i}, m_dense[i]);
        for (const std::uint64_t i : scatteredNumbers()) visit(i, m_scattered.at(i));
    }

private:
    [[nodiscard]] std::vector<std::uint64_t> scatteredNumbers() const;

    // Numbers are a file's to choose: mixed, so that none are made to meet.
    struct Mixed {
        [[nodiscard]] std::size_t operator()(std::uint64_t iNumber) const noexcept;
    };

    std::vector<Instance> m_dense;
    std::unordered_map<std::uint64_t, Instance, Mixed> m_scattered;
    std::uint64_t m_iCount = 0;
};

}   // namespace oxa::check
