// SPDX-License-Identifier: Apache-2.0
#include "Check/Syntax/InstanceTable.h"

#include <algorithm>
#include <limits>

namespace oxa::check {

namespace {

constexpr std::size_t g_iExactDigits = 18;
constexpr std::uint64_t g_iSparse = std::uint64_t{1} << 63;

// How many numbers the dense part may have for each instance.
constexpr std::uint64_t g_iNumbersOfInstance = 8;
constexpr std::uint64_t g_iNumbersAtOnce = 4096;

}   // namespace

std::uint64_t InstanceTable::iNumber(std::string_view digits) noexcept {
    digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
    std::uint64_t iValue = 0;
    if (digits.size() <= g_iExactDigits) {
        for (const char c : digits) iValue = iValue * 10 + static_cast<std::uint64_t>(c - '0');
        return iValue;
    }
    iValue = 0xCBF29CE484222325U;
    for (const char c : digits) iValue = (iValue ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
    return iValue | g_iSparse;
}

std::uint64_t InstanceTable::iTold(std::uint64_t iNumber) noexcept { return iNumber < g_iSparse ? iNumber : 0; }

std::string InstanceTable::sName(std::uint64_t iNumber) {
    return iNumber < g_iSparse ? '#' + std::to_string(iNumber) : std::string("an instance of more than 18 digits");
}

// A multiplication that folds, with an address as salt, which the system deals anew for each process.
std::size_t InstanceTable::Mixed::operator()(std::uint64_t iNumber) const noexcept {
    static const char salt = 0;
    std::uint64_t i = iNumber + reinterpret_cast<std::uintptr_t>(&salt) * 0x9E3779B97F4A7C15U;
    i = (i ^ (i >> 30)) * 0xBF58476D1CE4E5B9U;
    i = (i ^ (i >> 27)) * 0x94D049BB133111EBU;
    return static_cast<std::size_t>(i ^ (i >> 31));
}

bool InstanceTable::boInsert(std::uint64_t iNumber, std::uint64_t iLine) {
    if (pFind(iNumber)) return false;
    ++m_iCount;
    const Instance instance{
        static_cast<std::uint32_t>(std::min<std::uint64_t>(iLine, std::numeric_limits<std::uint32_t>::max()))};
    const std::uint64_t iMost = g_iNumbersAtOnce + m_iCount * g_iNumbersOfInstance;
    if (iNumber >= iMost) {
        m_scattered.emplace(iNumber, instance);
        return true;
    }
    if (iNumber >= m_dense.size()) m_dense.resize(static_cast<std::size_t>(iNumber) + 1);
    m_dense[static_cast<std::size_t>(iNumber)] = instance;
    return true;
}

Instance* InstanceTable::pFind(std::uint64_t iNumber) noexcept {
    if (iNumber < m_dense.size() && m_dense[static_cast<std::size_t>(iNumber)].iLine)
        return &m_dense[static_cast<std::size_t>(iNumber)];
    if (m_scattered.empty()) return nullptr;
    const auto it = m_scattered.find(iNumber);
    return it == m_scattered.end() ? nullptr : &it->second;
}

std::vector<std::uint64_t> InstanceTable::scatteredNumbers() const {
    std::vector<std::uint64_t> numbers;
    numbers.reserve(m_scattered.size());
    for (const auto& [iNumber, instance] : m_scattered) numbers.push_back(iNumber);
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

}   // namespace oxa::check
