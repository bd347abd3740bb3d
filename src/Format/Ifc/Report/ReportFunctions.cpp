// SPDX-License-Identifier: Apache-2.0
// The functions that replace those of the template engine. They give the same results, but throw where the engine would
// overflow, divide by zero or read past the end of a list.
#include "Format/Ifc/Report/ReportFunctions.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <limits>
#include <numeric>
#include <stdexcept>
#include <string>
#include <utility>

#include "platform/Compiler.h"

namespace oxa::ifc::report {

namespace {

using Integer = Json::number_integer_t;
using Real = Json::number_float_t;

// The bounds are tested as reals before the cast, which is undefined outside of them. -min is a power of two and so an
// exact real; max is not.
template <class Number>
Number fromReal(Real value) {
    if (!(value >= static_cast<Real>(std::numeric_limits<Number>::min()) &&
          value < -static_cast<Real>(std::numeric_limits<Number>::min())))
        throw std::overflow_error("the result is too large");
    return static_cast<Number>(value);
}

enum class Sign { Plus, Minus, Times };

// As the engine: text joins text, integers stay integers, and everything else is a real.
template <Sign eSign>
Json calculated(Arguments& args) {
    const Json& a = *args.at(0);
    const Json& b = *args.at(1);
    if (eSign == Sign::Plus && a.is_string() && b.is_string())
        return a.get_ref<const std::string&>() + b.get_ref<const std::string&>();
    if (a.is_number_integer() && b.is_number_integer()) {
        Integer iResult = 0;
        const Integer iA = a.get<Integer>();
        const Integer iB = b.get<Integer>();
        const bool boFits = eSign == Sign::Plus    ? platform::boAdded(iA, iB, iResult)
                            : eSign == Sign::Minus ? platform::boSubtracted(iA, iB, iResult)
                                                   : platform::boMultiplied(iA, iB, iResult);
        if (!boFits) throw std::overflow_error("the result is too large");
        return iResult;
    }
    const Real valueA = a.get<Real>();
    const Real valueB = b.get<Real>();
    if (eSign == Sign::Plus) return valueA + valueB;
    return eSign == Sign::Minus ? valueA - valueB : valueA * valueB;
}

// The smallest integer divided by -1 is a signal as well as anything divided by 0.
Integer iRemainder(Integer iValue, Integer iDivisor) { return iDivisor == -1 ? 0 : iValue % iDivisor; }

// Of a list or an object; a plain value is its own only item.
const Json& notEmpty(const Json& value) {
    if (value.empty()) throw std::out_of_range("an item of an empty list");
    return value;
}

}   // namespace

Json sum(Arguments& args) { return calculated<Sign::Plus>(args); }
Json difference(Arguments& args) { return calculated<Sign::Minus>(args); }
Json product(Arguments& args) { return calculated<Sign::Times>(args); }

Json power(Arguments& args) {
    const Integer iExponent = args.at(1)->get<Integer>();
    const Real result = std::pow(args.at(0)->get<Real>(), static_cast<Real>(iExponent));
    if (args.at(0)->is_number_integer() && iExponent >= 0) return fromReal<Integer>(result);
    return result;
}

Json rounded(Arguments& args) {
    const Integer iPrecision = args.at(1)->get<Integer>();
    const Real factor = std::pow(10.0, static_cast<Real>(iPrecision));
    const Real result = std::round(args.at(0)->get<Real>() * factor) / factor;
    if (iPrecision == 0) return fromReal<int>(result);
    return result;
}

Json remainder(Arguments& args) {
    const Integer iDivisor = args.at(1)->get<Integer>();
    if (iDivisor == 0) throw std::domain_error("division by zero");
    return iRemainder(args.at(0)->get<Integer>(), iDivisor);
}

Json divisible(Arguments& args) {
    const Integer iDivisor = args.at(1)->get<Integer>();
    return iDivisor != 0 && iRemainder(args.at(0)->get<Integer>(), iDivisor) == 0;
}

Json capitalized(Arguments& args) {
    auto text = args.at(0)->get<std::string>();
    for (char& c : text) {
        const auto iByte = static_cast<unsigned char>(c);
        c = static_cast<char>(&c == &text.front() ? std::toupper(iByte) : std::tolower(iByte));
    }
    return text;
}

Json range(Arguments& args) {
    const Integer iCount = args.at(0)->get<Integer>();
    if (iCount < 0 || iCount > g_iMostInRange) throw std::length_error("range of such a length");
    std::vector<int> numbers(static_cast<std::size_t>(iCount));
    std::iota(numbers.begin(), numbers.end(), 0);
    return numbers;
}

Json first(Arguments& args) { return notEmpty(*args.at(0)).front(); }
Json last(Arguments& args) { return notEmpty(*args.at(0)).back(); }
Json largest(Arguments& args) {
    const Json& items = notEmpty(*args.at(0));
    return *std::max_element(items.begin(), items.end());
}
Json smallest(Arguments& args) {
    const Json& items = notEmpty(*args.at(0));
    return *std::min_element(items.begin(), items.end());
}

Json found(Arguments& args) { return *args.at(0); }

Json upwards(Arguments& args) {
    if (args.at(0)->get<int>() < 1) throw std::domain_error("super() leads to a parent template only");
    return *args.at(0);
}

// Level by level, not over the stack.
Json shallow(Arguments& args) {
    std::vector<const Json*> level{args.at(0)};
    for (std::size_t iDepth = 0; !level.empty(); ++iDepth) {
        if (iDepth > g_iMostNested) throw std::length_error("a variable nested too deeply");
        std::vector<const Json*> next;
        for (const Json* pValue : level)
            if (pValue->is_structured())
                for (const Json& item : *pValue) next.push_back(&item);
        level = std::move(next);
    }
    return *args.at(0);
}

}   // namespace oxa::ifc::report
