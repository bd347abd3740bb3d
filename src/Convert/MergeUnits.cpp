// SPDX-License-Identifier: Apache-2.0
#include "Convert/MergeUnits.h"

#include <algorithm>
#include <cmath>

namespace oxa::convert {

namespace {

constexpr double g_closest = 1e-9;   // factors are given with ten digits or so: 0.3048, 0.0174532925199

bool boNear(double a, double b) { return std::abs(a - b) <= g_closest * std::max(std::abs(a), std::abs(b)); }

// Units without a value in SI, as those of money, are told by their names.
bool boSame(const Unit& a, const Unit& b) {
    if (a.siSymbol != b.siSymbol) return false;
    return a.siSymbol.empty() ? a.name == b.name : boNear(a.factor, b.factor) && boNear(a.offset, b.offset);
}

}   // namespace

std::string MergeUnits::sDifference(const Model& other) const {
    const Units units(other);
    if (m_units.all().empty() && !units.all().empty())
        return "the first assigns no units, and in the other " + units.all().front().type + " is " +
               units.all().front().name;
    for (const Unit& unit : units.all()) {
        const Unit* pHere = m_units.find(unit.type);
        if (!pHere || boSame(*pHere, unit)) continue;
        const bool boNames = pHere->name != unit.name;
        return unit.type + " is " + pHere->name + (boNames ? "" : " of " + std::to_string(pHere->factor)) +
               " in the first and " + unit.name + (boNames ? "" : " of " + std::to_string(unit.factor)) +
               " in the other";
    }
    return {};
}

std::vector<Element> MergeUnits::missing(const Model& other) const {
    std::vector<Element> found;
    if (m_units.all().empty()) return found;
    const Units units(other);
    for (const Unit& unit : units.all())
        if (!m_units.find(unit.type)) found.push_back(unit.element);
    return found;
}

}   // namespace oxa::convert
