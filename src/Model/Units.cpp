// SPDX-License-Identifier: Apache-2.0
#include "Model/Units.h"

#include <algorithm>
#include <cmath>

#include "Model/Model.h"
#include "Model/ModelState.h"
#include "Model/RelationWalk.h"

namespace oxa {

namespace schema = ifc::def::schema;
using detail::Class;
using detail::ModelState;
using detail::RelationTable;
using detail::Slot;
using ifc::Entity;

namespace {

struct PrefixRow {
    std::string_view prefix;
    const char* pName;
    const char* pSymbol;
    double factor;
};
struct SiRow {
    std::string_view unit;
    const char* pName;
    const char* pSymbol;
    int iPower = 1;   // that a prefix is raised to
};
// What people call by another name than the file.
struct SymbolRow {
    std::string_view name;
    const char* pSymbol;
};
// Measures whose type of unit is not simply their name.
struct MeasureRow {
    std::string_view measure;
    std::string_view unitType;
};

// clang-format off
constexpr PrefixRow g_prefixes[] = {
    {"EXA",   "exa",   "E",  1e18}, {"PETA",  "peta",  "P",  1e15},  {"TERA",  "tera",  "T", 1e12},
    {"GIGA",  "giga",  "G",  1e9},  {"MEGA",  "mega",  "M",  1e6},   {"KILO",  "kilo",  "k", 1e3},
    {"HECTO", "hecto", "h",  1e2},  {"DECA",  "deca",  "da", 1e1},   {"DECI",  "deci",  "d", 1e-1},
    {"CENTI", "centi", "c",  1e-2}, {"MILLI", "milli", "m",  1e-3},  {"MICRO", "micro", "\xC2\xB5", 1e-6},
    {"NANO",  "nano",  "n",  1e-9}, {"PICO",  "pico",  "p",  1e-12}, {"FEMTO", "femto", "f", 1e-15},
    {"ATTO",  "atto",  "a",  1e-18},
};

constexpr SiRow g_siUnits[] = {
    {"AMPERE",    "ampere",    "A"},    {"BECQUEREL", "becquerel", "Bq"},  {"CANDELA", "candela", "cd"},
    {"COULOMB",   "coulomb",   "C"},    {"CUBIC_METRE", "cubic metre", "m\xC2\xB3", 3},
    {"DEGREE_CELSIUS", "degree Celsius", "\xC2\xB0" "C"},                  {"FARAD",   "farad",   "F"},
    {"GRAM",      "gram",      "g"},    {"GRAY",      "gray",      "Gy"},  {"HENRY",   "henry",   "H"},
    {"HERTZ",     "hertz",     "Hz"},   {"JOULE",     "joule",     "J"},   {"KELVIN",  "kelvin",  "K"},
    {"LUMEN",     "lumen",     "lm"},   {"LUX",       "lux",       "lx"},  {"METRE",   "metre",   "m"},
    {"MOLE",      "mole",      "mol"},  {"NEWTON",    "newton",    "N"},   {"OHM",     "ohm",     "\xCE\xA9"},
    {"PASCAL",    "pascal",    "Pa"},   {"RADIAN",    "radian",    "rad"}, {"SECOND",  "second",  "s"},
    {"SIEMENS",   "siemens",   "S"},    {"SIEVERT",   "sievert",   "Sv"},
    {"SQUARE_METRE", "square metre", "m\xC2\xB2", 2},                      {"STERADIAN", "steradian", "sr"},
    {"TESLA",     "tesla",     "T"},    {"VOLT",      "volt",      "V"},   {"WATT",    "watt",    "W"},
    {"WEBER",     "weber",     "Wb"},
};

constexpr SymbolRow g_symbols[] = {
    {"INCH", "in"}, {"FOOT", "ft"}, {"YARD", "yd"}, {"MILE", "mi"}, {"SQUARE INCH", "in\xC2\xB2"},
    {"SQUARE FOOT", "ft\xC2\xB2"}, {"SQUARE YARD", "yd\xC2\xB2"}, {"ACRE", "ac"}, {"HECTARE", "ha"},
    {"CUBIC INCH", "in\xC2\xB3"}, {"CUBIC FOOT", "ft\xC2\xB3"}, {"CUBIC YARD", "yd\xC2\xB3"}, {"LITRE", "l"},
    {"DEGREE", "\xC2\xB0"}, {"MINUTE", "min"}, {"HOUR", "h"}, {"DAY", "d"}, {"POUND", "lb"}, {"OUNCE", "oz"},
    {"TON", "t"}, {"FAHRENHEIT", "\xC2\xB0" "F"}, {"PSI", "psi"}, {"BTU", "Btu"},
};

constexpr MeasureRow g_measures[] = {
    {"IfcSectionalAreaIntegralMeasure", "SECTIONAREAINTEGRALUNIT"},
    {"IfcThermalConductivityMeasure",   "THERMALCONDUCTANCEUNIT"},
    {"IfcMonetaryMeasure",              "MONETARYUNIT"},
};
// clang-format on

constexpr double g_celsius = 273.15;
constexpr int g_iMostConversions = 10;   // of a unit that is so many of another, which is so many of a third

// Units of one model, as their instances say them.
class UnitReader {
public:
    explicit UnitReader(ModelState& state) : m_state(state), m_table(state.relations()) {}

    [[nodiscard]] std::optional<Unit> unit(Entity& entity, int iDepth = 0) const {
        std::optional<Unit> found;
        if (m_table.boIs(entity, Class::SiUnit))
            found = siUnit(entity);
        else if (m_table.boIs(entity, Class::ConversionUnit))
            found = conversionUnit(entity, iDepth);
        else if (m_table.boIs(entity, Class::ContextUnit))
            found = Unit{{}, {}, sText(entity, Slot::ContextUnitName), sText(entity, Slot::ContextUnitName), {}};
        else if (m_table.boIs(entity, Class::DerivedUnit) && iDepth == 0)
            found = derivedUnit(entity);
        else if (m_table.boIs(entity, Class::MonetaryUnit))
            found = Unit{{}, "MONETARYUNIT", sText(entity, Slot::Currency), sText(entity, Slot::Currency), {}};
        if (!found) return found;
        found->element = m_state.elementOf(&entity);
        if (found->type.empty()) found->type = sText(entity, Slot::UnitType);
        return found;
    }

private:
    [[nodiscard]] Value valueAt(Entity& entity, Slot eSlot) const {
        const RelationTable::Place place = m_table.place(entity, eSlot);
        return place.pCell ? m_state.valueOf(entity, place.iIndex) : Value();
    }
    [[nodiscard]] std::string sText(Entity& entity, Slot eSlot) const { return valueAt(entity, eSlot).toString(); }
    [[nodiscard]] std::optional<double> number(Entity& entity, Slot eSlot) const {
        const Value value = valueAt(entity, eSlot);
        const Kind eKind = value.kind();
        return eKind == Kind::Number || eKind == Kind::Integer ? value.number() : std::nullopt;
    }
    [[nodiscard]] Entity* pNamed(Entity& entity, Slot eSlot) const {
        Entity* pFound = nullptr;
        m_table.forEachNamed(entity, eSlot, [&](Entity& named) { pFound = &named; });
        return pFound;
    }

    [[nodiscard]] std::optional<Unit> siUnit(Entity& entity) const {
        const auto* pUnit = std::ranges::find(g_siUnits, sText(entity, Slot::SiName), &SiRow::unit);
        if (pUnit == std::end(g_siUnits)) return std::nullopt;
        Unit unit{{}, {}, pUnit->pName, pUnit->pSymbol, pUnit->pSymbol};
        const auto* pPrefix = std::ranges::find(g_prefixes, sText(entity, Slot::SiPrefix), &PrefixRow::prefix);
        if (pPrefix != std::end(g_prefixes)) {
            // "square millimetre": the prefix stands before the metre.
            unit.name.insert(unit.name.rfind(' ') == std::string::npos || pUnit->iPower == 1 ? 0
                                                                                             : unit.name.rfind(' ') + 1,
                             pPrefix->pName);
            unit.symbol = pPrefix->pSymbol + unit.symbol;
            unit.factor = std::pow(pPrefix->factor, pUnit->iPower);
        }
        if (pUnit->unit == "GRAM") {
            unit.siSymbol = "kg";
            unit.factor = pPrefix != std::end(g_prefixes) && pPrefix->prefix == "KILO" ? 1 : unit.factor / 1000;
        }
        if (pUnit->unit == "DEGREE_CELSIUS") {
            unit.siSymbol = "K";
            unit.offset = g_celsius;
        }
        return unit;
    }

    [[nodiscard]] std::optional<Unit> conversionUnit(Entity& entity, int iDepth) const {
        Unit unit;
        unit.name = sText(entity, Slot::ConversionName);
        const auto* pSymbol = std::ranges::find_if(
            g_symbols, [&](const SymbolRow& row) { return schema::sUpper(unit.name) == row.name; });
        unit.symbol = pSymbol == std::end(g_symbols) ? unit.name : pSymbol->pSymbol;
        Entity* pFactor = pNamed(entity, Slot::ConversionFactor);
        Entity* pBase = pFactor ? pNamed(*pFactor, Slot::FactorUnit) : nullptr;
        const std::optional<double> factor = pFactor ? number(*pFactor, Slot::FactorValue) : std::nullopt;
        const std::optional<Unit> base =
            pBase && iDepth < g_iMostConversions ? this->unit(*pBase, iDepth + 1) : std::nullopt;
        if (!base || !factor || base->siSymbol.empty()) return unit;   // a unit with a name alone
        unit.factor = *factor * base->factor;
        unit.offset = number(entity, Slot::ConversionOffset).value_or(0) * base->factor + base->offset;
        unit.siSymbol = base->siSymbol;
        return unit;
    }

    [[nodiscard]] std::optional<Unit> derivedUnit(Entity& entity) const {
        Unit unit;
        unit.type = sText(entity, Slot::DerivedType);
        if (unit.type == "USERDEFINED") unit.type = sText(entity, Slot::DerivedUserType);
        Product name(" ");
        Product symbol("\xC2\xB7");
        Product siSymbol("\xC2\xB7");
        bool boSi = true;
        m_table.forEachNamed(entity, Slot::DerivedElements, [&](Entity& element) {
            Entity* pPart = pNamed(element, Slot::ElementUnit);
            const std::optional<Unit> part = pPart ? this->unit(*pPart, 1) : std::nullopt;
            const auto iExponent =
                static_cast<int>(std::clamp(number(element, Slot::ElementExponent).value_or(1), -99., 99.));
            boSi = boSi && part && !part->siSymbol.empty();
            if (!part) return;
            name.vAdd(part->name, iExponent);
            symbol.vAdd(part->symbol, iExponent);
            siSymbol.vAdd(part->siSymbol, iExponent);
            unit.factor *= std::pow(part->factor, iExponent);
        });
        unit.name = name.sText(" per ");
        unit.symbol = symbol.sText("/");
        if (boSi) unit.siSymbol = siSymbol.sText("/");
        return unit;
    }

    // "kg/m3" from kg to the power of 1 and m to the power of -3.
    class Product {
    public:
        explicit Product(const char* pTimes) : m_sTimes(pTimes) {}

        void vAdd(const std::string& sFactor, int iExponent) {
            std::string& sPart = iExponent < 0 ? m_sBelow : m_sAbove;
            if (!sPart.empty()) sPart += m_sTimes;
            sPart += sFactor + sPower(std::abs(iExponent));
        }
        [[nodiscard]] std::string sText(const char* pPer) const {
            if (m_sBelow.empty()) return m_sAbove;
            return (m_sAbove.empty() ? "1" : m_sAbove) + pPer + m_sBelow;
        }

    private:
        static std::string sPower(int iExponent) {
            if (iExponent == 1) return {};
            if (iExponent == 2) return "\xC2\xB2";
            if (iExponent == 3) return "\xC2\xB3";
            return "^" + std::to_string(iExponent);
        }

        std::string m_sTimes;
        std::string m_sAbove;
        std::string m_sBelow;
    };

    ModelState& m_state;
    const RelationTable& m_table;
};

// IfcPositiveLengthMeasure is an IfcLengthMeasure, and that has a LENGTHUNIT.
std::string sUnitType(const schema::Schema& schema, std::string_view measure) {
    constexpr std::string_view prefix = "Ifc";
    constexpr std::string_view suffix = "Measure";
    const schema::Type* pType = schema::pAsType(schema.pObjectFromName(measure));
    while (pType && pType->pDeclared) pType = pType->pDeclared;
    const std::string_view name = pType ? std::string_view(pType->sName) : measure;
    const auto* pRow = std::ranges::find(g_measures, name, &MeasureRow::measure);
    if (pRow != std::end(g_measures)) return std::string(pRow->unitType);
    if (!name.starts_with(prefix) || !name.ends_with(suffix) || name.size() <= prefix.size() + suffix.size()) return {};
    return schema::sUpper(name.substr(prefix.size(), name.size() - prefix.size() - suffix.size())) + "UNIT";
}

std::optional<Measure> measureIn(const Value& value, const Unit* pUnit) {
    const Kind eKind = value.kind();
    if (eKind != Kind::Number && eKind != Kind::Integer) return std::nullopt;
    Measure measure;
    measure.value = value.number().value_or(0);
    if (!pUnit) return measure;
    measure.unit = *pUnit;
    measure.si = pUnit->toSi(measure.value);
    return measure;
}

}   // namespace

std::optional<Unit> unit(const Element& element) {
    return UnitReader(ModelState::of(element)).unit(ModelState::entityOf(element));
}

Units::Units(const Model& model) {
    ModelState& state = ModelState::of(model);
    const RelationTable& table = state.relations();
    const UnitReader reader(state);
    const schema::Entity* pContext = table.pClass(Class::Context);
    if (!pContext) return;
    for (const Entity* pProject : state.all(*pContext, true)) {
        table.forEachNamed(*pProject, Slot::UnitsInContext, [&](const Entity& assignment) {
            table.forEachNamed(assignment, Slot::AssignedUnits, [&](Entity& one) {
                if (std::optional<Unit> found = reader.unit(one)) m_units.push_back(*std::move(found));
            });
        });
        if (!m_units.empty()) return;   // a library beside the project has its own
    }
}

const Unit* Units::find(std::string_view type) const noexcept {
    const auto found = std::ranges::find(m_units, type, &Unit::type);
    return found == m_units.end() ? nullptr : &*found;
}

const Unit* Units::find(const Value& value) const {
    if (m_units.empty()) return nullptr;
    const schema::Schema& schema = ModelState::of(m_units.front().element).schema();
    const std::string sType = sUnitType(schema, value.typeName());
    return sType.empty() ? nullptr : find(sType);
}

std::optional<Measure> Units::measure(const Value& value) const { return measureIn(value, find(value)); }

std::optional<Measure> Units::measure(const Property& property) const {
    const std::optional<Unit> own = property.unit ? unit(property.unit) : std::nullopt;
    return measureIn(property.value, own ? &*own : find(property.value));
}

}   // namespace oxa
