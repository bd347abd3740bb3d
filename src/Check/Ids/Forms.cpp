// SPDX-License-Identifier: Apache-2.0
#include "Check/Ids/Forms.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include <fast_float/fast_float.h>

namespace oxa::ids::detail {

namespace schema = ifc::def::schema;

namespace {

struct BaseRow {
    Base eBase;
    std::string_view sName;
    bool boOrdered;
    std::string_view sForm;
};
constexpr BaseRow g_bases[] = {
    {Base::String, "xs:string", false, "a text"},
    {Base::Boolean, "xs:boolean", false, "true, false, 1 or 0"},
    {Base::Integer, "xs:integer", true, "a whole number as 12"},
    {Base::Double, "xs:double", true, "a number as 12.5 or 1.25E1"},
    {Base::Date, "xs:date", true, "a date as 2024-12-31"},
    {Base::DateTime, "xs:dateTime", true, "a date with a time as 2024-12-31T23:59:00"},
    {Base::Time, "xs:time", true, "a time as 23:59:00"},
    {Base::Duration, "xs:duration", true, "a duration as P1DT12H"},
};
constexpr std::string_view g_xsPrefix = "xs:";

const BaseRow& row(Base eBase) noexcept { return g_bases[static_cast<std::size_t>(eBase)]; }

bool boDigit(char c) noexcept { return c >= '0' && c <= '9'; }

// A text from its begin on.
class Scan {
public:
    explicit Scan(std::string_view text) : m_text(text) {}

    [[nodiscard]] bool boEnd() const noexcept { return m_text.empty(); }
    [[nodiscard]] bool boTake(char c) noexcept {
        if (!m_text.starts_with(c)) return false;
        m_text.remove_prefix(1);
        return true;
    }
    /// The sign in front, -1 or 1.
    [[nodiscard]] int iSign() noexcept { return boTake('-') ? -1 : (static_cast<void>(boTake('+')), 1); }
    /// So many digits, or with 0 as many as there are; empty where there are none.
    [[nodiscard]] std::optional<double> digits(std::size_t iCount) noexcept {
        std::size_t iSeen = 0;
        double value = 0;
        while (iSeen < m_text.size() && (iCount == 0 || iSeen < iCount) && boDigit(m_text[iSeen]))
            value = value * 10 + (m_text[iSeen++] - '0');
        if (iSeen == 0 || (iCount && iSeen != iCount)) return std::nullopt;
        m_text.remove_prefix(iSeen);
        return value;
    }
    [[nodiscard]] std::optional<double> digitsUpTo(std::size_t iCount, double least, double most) noexcept {
        const std::optional<double> value = digits(iCount);
        return value && *value >= least && *value <= most ? value : std::nullopt;
    }
    /// ".25", or nothing, which is 0.
    [[nodiscard]] std::optional<double> fraction() noexcept {
        if (!boTake('.')) return 0;
        double value = 0;
        double weight = 0.1;
        bool boAny = false;
        for (; !m_text.empty() && boDigit(m_text.front()); m_text.remove_prefix(1), weight /= 10, boAny = true)
            value += weight * (m_text.front() - '0');
        return boAny ? std::optional(value) : std::nullopt;
    }
    /// The part up to a designator, as in "12H"; nothing where another one follows.
    [[nodiscard]] double part(char cDesignator) noexcept {
        Scan ahead = *this;
        const std::optional<double> whole = ahead.digits(0);
        const std::optional<double> rest = cDesignator == 'S' ? ahead.fraction() : std::optional(0.);
        if (!whole || !rest || !ahead.boTake(cDesignator)) return std::numeric_limits<double>::quiet_NaN();
        *this = ahead;
        return *whole + *rest;
    }

private:
    std::string_view m_text;
};

// Days from 1970-01-01 in the calendar that holds for all years (ISO 8601).
double daysOf(double year, double month, double day) {
    const auto iYear = static_cast<std::int64_t>(year) - (month <= 2 ? 1 : 0);
    const std::int64_t iEra = (iYear >= 0 ? iYear : iYear - 399) / 400;
    const std::int64_t iOfEra = iYear - iEra * 400;
    const auto iMonth = static_cast<std::int64_t>(month);
    const std::int64_t iOfYear = (153 * (iMonth + (iMonth > 2 ? -3 : 9)) + 2) / 5 + static_cast<std::int64_t>(day) - 1;
    return static_cast<double>(iEra * 146097 + iOfEra * 365 + iOfEra / 4 - iOfEra / 100 + iOfYear - 719468);
}

constexpr double g_day = 86400;

std::optional<double> secondsOfDate(Scan& scan) {
    const auto year = scan.digits(4);
    if (!year || !scan.boTake('-')) return std::nullopt;
    const auto month = scan.digitsUpTo(2, 1, 12);
    if (!month || !scan.boTake('-')) return std::nullopt;
    const auto day = scan.digitsUpTo(2, 1, 31);
    return day ? std::optional(daysOf(*year, *month, *day) * g_day) : std::nullopt;
}

std::optional<double> secondsOfTime(Scan& scan) {
    const auto hour = scan.digitsUpTo(2, 0, 24);
    if (!hour || !scan.boTake(':')) return std::nullopt;
    const auto minute = scan.digitsUpTo(2, 0, 59);
    if (!minute || !scan.boTake(':')) return std::nullopt;
    const auto second = scan.digitsUpTo(2, 0, 59);
    const auto fraction = second ? scan.fraction() : std::nullopt;
    return fraction ? std::optional(*hour * 3600 + *minute * 60 + *second + *fraction) : std::nullopt;
}

// "Z", "+01:00", or nothing.
std::optional<double> secondsOfZone(Scan& scan) {
    if (scan.boEnd() || (scan.boTake('Z') && scan.boEnd())) return 0;
    Scan ahead = scan;
    if (!ahead.boTake('-') && !ahead.boTake('+')) return std::nullopt;
    const int iSign = scan.iSign();
    const auto hour = scan.digitsUpTo(2, 0, 14);
    if (!hour || !scan.boTake(':')) return std::nullopt;
    const auto minute = scan.digitsUpTo(2, 0, 59);
    return minute && scan.boEnd() ? std::optional(iSign * (*hour * 3600 + *minute * 60)) : std::nullopt;
}

// A point in time in seconds; empty for a text of another form.
std::optional<double> secondsOf(Base eBase, std::string_view text) {
    Scan scan(text);
    double seconds = 0;
    if (eBase != Base::Time) {
        const auto date = secondsOfDate(scan);
        if (!date || (eBase == Base::DateTime && !scan.boTake('T'))) return std::nullopt;
        seconds += *date;
    }
    if (eBase != Base::Date) {
        const auto time = secondsOfTime(scan);
        if (!time) return std::nullopt;
        seconds += *time;
    }
    const auto zone = secondsOfZone(scan);
    return zone ? std::optional(seconds - *zone) : std::nullopt;
}

struct Duration {
    double months = 0;
    double seconds = 0;
};

std::optional<Duration> durationOf(std::string_view text) {
    Scan scan(text);
    const int iSign = scan.iSign();
    if (!scan.boTake('P')) return std::nullopt;
    bool boAny = false;
    const auto part = [&](char cDesignator) {
        const double value = scan.part(cDesignator);
        if (value != value) return 0.;
        boAny = true;
        return value;
    };
    const double years = part('Y');
    const double months = part('M');
    const double days = part('D');
    double seconds = 0;
    if (scan.boTake('T')) {
        boAny = false;   // at least one part behind it
        seconds = part('H') * 3600;
        seconds += part('M') * 60;
        seconds += part('S');
    }
    if (!boAny || !scan.boEnd()) return std::nullopt;
    return Duration{iSign * (years * 12 + months), iSign * (days * g_day + seconds)};
}

// A month has 28 to 31 days: what is less for both is less.
std::partial_ordering compareDurations(const Duration& a, const Duration& b) {
    const auto difference = [&](double days) { return (a.months - b.months) * days * g_day + a.seconds - b.seconds; };
    const double shortest = difference(28);
    const double longest = difference(31);
    if (shortest == 0 && longest == 0) return std::partial_ordering::equivalent;
    if (shortest < 0 && longest < 0) return std::partial_ordering::less;
    if (shortest > 0 && longest > 0) return std::partial_ordering::greater;
    return std::partial_ordering::unordered;
}

}   // namespace

std::string_view baseName(Base eBase) noexcept { return row(eBase).sName; }
bool boOrdered(Base eBase) noexcept { return row(eBase).boOrdered; }
std::string_view formText(Base eBase) noexcept { return row(eBase).sForm; }

std::optional<Base> baseFromName(std::string_view name) noexcept {
    const auto* pRow =
        std::ranges::find_if(g_bases, [&](const BaseRow& one) { return one.sName.substr(g_xsPrefix.size()) == name; });
    return pRow == std::end(g_bases) ? std::nullopt : std::optional(pRow->eBase);
}

bool boHasForm(Base eBase, std::string_view text) noexcept {
    switch (eBase) {
    case Base::String: return true;
    case Base::Boolean: return booleanOf(text).has_value();
    case Base::Integer: {
        Scan scan(text);   // whatever its size
        static_cast<void>(scan.iSign());
        return scan.digits(0) && scan.boEnd();
    }
    case Base::Double: return numberOf(text).has_value();
    case Base::Date:
    case Base::DateTime:
    case Base::Time: return secondsOf(eBase, text).has_value();
    case Base::Duration: return durationOf(text).has_value();
    }
    return false;
}

std::optional<double> numberOf(std::string_view text) noexcept {
    constexpr double infinite = std::numeric_limits<double>::infinity();
    if (text == "INF" || text == "+INF") return infinite;
    if (text == "-INF") return -infinite;
    if (text == "NaN") return std::numeric_limits<double>::quiet_NaN();
    std::string_view rest = text;
    if (rest.starts_with('+')) rest.remove_prefix(1);
    const std::string_view digits = rest.starts_with('-') && rest.size() == text.size() ? rest.substr(1) : rest;
    if (digits.empty() ||
        !(boDigit(digits.front()) || (digits.size() > 1 && digits.front() == '.' && boDigit(digits[1]))))
        return std::nullopt;   // else "inf" and "nan" would do
    double value = 0;
    // That of the standard library is not in each of them yet.
    const auto [pEnd, eError] = fast_float::from_chars(rest.data(), rest.data() + rest.size(), value);
    if (pEnd != rest.data() + rest.size() || eError == std::errc::invalid_argument) return std::nullopt;
    if (eError == std::errc::result_out_of_range) {
        // As near as a double comes: beyond all others, or nothing.
        const std::size_t iExponent = rest.find_first_of("eE");
        const bool boSmall = iExponent != std::string_view::npos && rest.substr(iExponent + 1).starts_with('-');
        value = boSmall ? 0 : rest.starts_with('-') ? -infinite : infinite;
    }
    return value;
}

std::optional<std::int64_t> integerOf(std::string_view text) noexcept {
    if (text.starts_with('+')) text.remove_prefix(1);
    if (text.empty() || (!boDigit(text.front()) && (text.size() < 2 || !boDigit(text[1])))) return std::nullopt;
    std::int64_t iValue = 0;
    const auto [pEnd, eError] = std::from_chars(text.data(), text.data() + text.size(), iValue);
    return eError == std::errc() && pEnd == text.data() + text.size() ? std::optional(iValue) : std::nullopt;
}

std::optional<bool> booleanOf(std::string_view text) noexcept {
    if (text == "true" || text == "1") return true;
    if (text == "false" || text == "0") return false;
    return std::nullopt;
}

std::partial_ordering compare(Base eBase, std::string_view a, std::string_view b) noexcept {
    if (eBase == Base::Duration) {
        const auto first = durationOf(a);
        const auto second = durationOf(b);
        return first && second ? compareDurations(*first, *second) : std::partial_ordering::unordered;
    }
    const auto first = secondsOf(eBase, a);
    const auto second = secondsOf(eBase, b);
    return first && second ? *first <=> *second : std::partial_ordering::unordered;
}

std::optional<Base> baseOf(const schema::ObjectBase* pType) {
    struct NameRow {
        std::string_view sName;
        Base eBase;
    };
    constexpr NameRow rows[] = {{"IFCDATE", Base::Date},
                                {"IFCDATETIME", Base::DateTime},
                                {"IFCTIME", Base::Time},
                                {"IFCDURATION", Base::Duration},
                                {"IFCCOUNTMEASURE", Base::Integer}};   // a NUMBER up to IFC4, and counted
    const schema::DataTypeBase* pData = schema::pDataTypeOf(pType);
    if (!pData) return std::nullopt;
    for (const NameRow& one : rows)
        if (pType->sNameUpper == one.sName) return one.eBase;
    switch (pData->kind) {
    case schema::DataKind::Real:
    case schema::DataKind::Number: return Base::Double;
    case schema::DataKind::Integer: return Base::Integer;
    case schema::DataKind::Boolean: return Base::Boolean;
    case schema::DataKind::String:
    case schema::DataKind::Logical:
    case schema::DataKind::Enumeration: return Base::String;
    case schema::DataKind::Binary:
    case schema::DataKind::Select:
    case schema::DataKind::Array:
    case schema::DataKind::List:
    case schema::DataKind::Set: break;
    }
    return std::nullopt;
}

std::vector<std::string_view> words(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    std::vector<std::string_view> found;
    for (std::size_t i = text.find_first_not_of(blanks); i != std::string_view::npos;
         i = text.find_first_not_of(blanks, i)) {
        const std::size_t iEnd = std::min(text.find_first_of(blanks, i), text.size());
        found.push_back(text.substr(i, iEnd - i));
        i = iEnd;
    }
    return found;
}

std::uint64_t iCharacters(std::string_view text) noexcept {
    return static_cast<std::uint64_t>(
        std::ranges::count_if(text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

}   // namespace oxa::ids::detail
