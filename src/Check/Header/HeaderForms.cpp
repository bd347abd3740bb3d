// SPDX-License-Identifier: Apache-2.0
#include "Check/Header/HeaderForms.h"

#include <algorithm>
#include <chrono>

namespace oxa::check {

namespace {

// Takes what it is asked for from the front of a text.
class Front {
public:
    explicit Front(std::string_view text) : m_text(text) {}

    // So many digits, as a number from iLow to iHigh.
    [[nodiscard]] bool boNumber(std::size_t iDigits, int iLow, int iHigh, int& iNumber) noexcept {
        if (m_text.size() < iDigits) return false;
        iNumber = 0;
        for (const char c : m_text.substr(0, iDigits)) {
            if (c < '0' || c > '9') return false;
            iNumber = iNumber * 10 + (c - '0');
        }
        m_text.remove_prefix(iDigits);
        return iNumber >= iLow && iNumber <= iHigh;
    }
    [[nodiscard]] bool boTake(char c) noexcept {
        if (!m_text.starts_with(c)) return false;
        m_text.remove_prefix(1);
        return true;
    }
    // One digit at least.
    [[nodiscard]] bool boDigits() noexcept {
        const std::size_t iDigits = std::min(m_text.find_first_not_of("0123456789"), m_text.size());
        m_text.remove_prefix(iDigits);
        return iDigits > 0;
    }
    [[nodiscard]] bool boEmpty() const noexcept { return m_text.empty(); }

private:
    std::string_view m_text;
};

}   // namespace

bool boTimeStamp(std::string_view text) noexcept {
    Front front(text);
    int iYear = 0;
    int iMonth = 0;
    int iDay = 0;
    int iOther = 0;
    if (!front.boNumber(4, 0, 9999, iYear) || !front.boTake('-') || !front.boNumber(2, 1, 12, iMonth) ||
        !front.boTake('-') || !front.boNumber(2, 1, 31, iDay) || !front.boTake('T'))
        return false;
    const std::chrono::year_month_day date{std::chrono::year(iYear), std::chrono::month(static_cast<unsigned>(iMonth)),
                                           std::chrono::day(static_cast<unsigned>(iDay))};
    if (!date.ok()) return false;
    if (!front.boNumber(2, 0, 24, iOther) || !front.boTake(':') || !front.boNumber(2, 0, 59, iOther) ||
        !front.boTake(':') || !front.boNumber(2, 0, 60, iOther))
        return false;
    if ((front.boTake('.') || front.boTake(',')) && !front.boDigits()) return false;
    if (front.boTake('Z') || front.boEmpty()) return front.boEmpty();
    if (!front.boTake('+') && !front.boTake('-')) return false;
    if (!front.boNumber(2, 0, 23, iOther)) return false;
    return front.boEmpty() || (front.boTake(':') && front.boNumber(2, 0, 59, iOther) && front.boEmpty());
}

bool boImplementationLevel(std::string_view text) noexcept {
    return text.size() == 3 && text[0] >= '1' && text[0] <= '4' && text[1] == ';' && text[2] >= '1' && text[2] <= '3';
}

std::string_view schemaNameOf(std::string_view identifier) noexcept {
    identifier = identifier.substr(0, identifier.find('{'));
    return identifier.substr(0, identifier.find_last_not_of(' ') + 1);
}

bool boDescriptionItem(std::string_view text) noexcept {
    constexpr std::string_view words[] = {"ViewDefinition", "ExchangeRequirement", "CoordinateReference", "Option",
                                          "Comment"};
    const auto* pWord =
        std::find_if(std::begin(words), std::end(words), [&](std::string_view word) { return text.starts_with(word); });
    if (pWord == std::end(words)) return false;
    text.remove_prefix(pWord->size());
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    return text.starts_with('[') && text.ends_with(']');
}

bool boOriginatingSystem(std::string_view text) noexcept {
    constexpr std::string_view separator = " - ";
    const std::size_t iFirst = text.find(separator);
    if (iFirst == 0 || iFirst == std::string_view::npos) return false;
    const std::size_t iSecond = text.find(separator, iFirst + separator.size());
    return iSecond != std::string_view::npos && iSecond > iFirst + separator.size() &&
           iSecond + separator.size() < text.size();
}

}   // namespace oxa::check
