// SPDX-License-Identifier: Apache-2.0
// What a composer seldom needs: more room, and the digits of numbers that have more than eight.
#include "Format/Ifc/Text/TextRoom.h"

#include "Format/Ifc/Text/DigitText.h"

namespace oxa::ifc::details {

// By an eighth only, once it is large: the string fills what it grows by with zeros, and texts that are composed in turn
// are mostly about as long as each other. Its memory the string takes twofold.
char* TextRoom::pMore(char* p, std::size_t iBytes) {
    const std::size_t iUsed = iPlaceOf(p);
    const std::size_t iSize = m_text.size();
    constexpr std::size_t g_iSmall = 4096;
    m_text.resize(std::max(iSize + std::max(iSize / 8, std::min(iSize, g_iSmall)), iUsed + iBytes + g_iRoom));
    m_pLast = m_text.data() + m_text.size() - g_iRoom;
    return m_text.data() + iUsed;
}

char* pLongNumberText(char* pTo, std::uint64_t uNumber) noexcept {
    const std::uint64_t uHigh = uNumber / g_eightDigits;
    const auto vEight = [&pTo](std::uint64_t uEight) {
        vBytes8(pTo, uDigits8(static_cast<std::uint32_t>(uEight)) | g_zeroDigits);
        pTo += 8;
    };
    if (uHigh < g_eightDigits) {
        pTo = pShortNumberText(pTo, static_cast<std::uint32_t>(uHigh));
    } else {
        pTo = pShortNumberText(pTo, static_cast<std::uint32_t>(uHigh / g_eightDigits));
        vEight(uHigh % g_eightDigits);
    }
    vEight(uNumber % g_eightDigits);
    return pTo;
}

}   // namespace oxa::ifc::details
