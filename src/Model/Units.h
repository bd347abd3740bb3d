// SPDX-License-Identifier: Apache-2.0
// Units: numbers in the unit of a file and in SI.
//
// For      programs that compare, add up or show measures of files in millimetres, feet or litres per second.
// Example  const oxa::Units units(model);
//          const auto width = units.measure(door["OverallWidth"]);   // 885 mm: width->si is 0.885
// Which    the unit that stands at a property or quantity; else the one that the project assigns to the value's type of
//          measure. A file that assigns none says nothing about the unit: then there is none here.
// SI       kilogram, metre, second, kelvin and so on, without prefix: the value times "factor", plus "offset" (degrees
//          Celsius, and IfcConversionBasedUnitWithOffset). A prefix of a square or cubic metre is squared or cubed: milli
//          and SQUARE_METRE are square millimetres. Units of a file's own and money have none.
// Threads  any number at once; a Units is good as long as its model, and as the units of that stay.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Model/Element.h"
#include "Model/Relations.h"
#include "Model/Value.h"
#include "platform/Export.h"

namespace oxa {

class Model;

/// A unit of a file, with the way to SI.
struct Unit {
    Element element;        ///< the instance that says it
    std::string type;       ///< what it measures, as in LENGTHUNIT; MONETARYUNIT for money
    std::string name;       ///< "millimetre"; of the file's own units what the file calls them
    std::string symbol;     ///< "mm"; the name where it has none
    std::string siSymbol;   ///< "m"; empty where the unit has no SI value
    double factor = 1;      ///< SI values a value of this unit
    double offset = 0;      ///< added behind the factor, as for degrees Celsius

    /// Empty where the unit has no SI value.
    [[nodiscard]] std::optional<double> toSi(double value) const {
        return siSymbol.empty() ? std::nullopt : std::optional(value * factor + offset);
    }
};

/// A number with its unit.
struct Measure {
    double value = 0;             ///< as the file has it
    std::optional<Unit> unit{};   ///< none for counts, ratios and plain numbers, and where the file gives none
    std::optional<double> si{};   ///< in SI; none where the unit has no SI value
};

/// What an instance of a unit says, be it prefixed, conversion-based, derived, of the file's own or of money; empty for
/// another element, and where it does not say enough.
[[nodiscard]] OXA_MODEL_API std::optional<Unit> unit(const Element& element);

/// The units of a model.
class OXA_MODEL_API Units {
public:
    /// Reads them from the project; what is set later is not seen.
    explicit Units(const Model& model);

    /// As the project assigns them.
    [[nodiscard]] const std::vector<Unit>& all() const noexcept { return m_units; }
    /// By what it measures, as in "LENGTHUNIT"; null where the project assigns none.
    [[nodiscard]] const Unit* find(std::string_view type) const noexcept;
    /// The assigned unit of a value by its type, as IfcPositiveLengthMeasure has one of length; null for no measure.
    [[nodiscard]] const Unit* find(const Value& value) const;

    /// Of a number; empty for another value.
    [[nodiscard]] std::optional<Measure> measure(const Value& value) const;
    /// Of a property or quantity, in its own unit where it has one.
    [[nodiscard]] std::optional<Measure> measure(const Property& property) const;

private:
    std::vector<Unit> m_units;
};

}   // namespace oxa
