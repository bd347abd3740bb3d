// SPDX-License-Identifier: Apache-2.0
// PropertyRows: the tables property and quantity, a row a value.
//
// Which    what psets() and quantities() of Relations.h tell: the sets of the element, then those of its type; of two
//          properties of one name in sets of one name the first counts.
// Fast     cells are read where they lie; texts are copied once, into the column.
#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "Tables/Cells.h"
#include "Tables/Rows.h"

namespace oxa::tables::detail {

using ifc::Entity;
using oxa::detail::Class;
using oxa::detail::FoundProperty;
using oxa::detail::PropertyReader;
using oxa::detail::RelationWalk;
using oxa::detail::Slot;

namespace {

constexpr ColumnRow g_propertyColumns[] = {
    g_fileColumn,
    {"element_id", Type::Integer, false, Lookup::Step, "the element or type"},
    {"set_name", Type::Text, false, Lookup::Text, "as in Pset_WallCommon; the class of a set without a name"},
    {"name", Type::Text, false, Lookup::Text, "as in FireRating; Complex.Part of a part of a complex property"},
    {"value_text", Type::Text, true, Lookup::None,
     "the value: the text itself, 12.5, true, unknown, #12; of several a JSON array, of a bounded value and a table "
     "a JSON object"},
    {"value_number", Type::Number, true, Lookup::None,
     "the value, where it is a number; of a bounded one the set point"},
    {"value_boolean", Type::Boolean, true, Lookup::None, "the value, where it is true or false"},
    {"value_type", Type::Text, true, Lookup::None, "as in IfcLabel; of a reference the class"},
    {"unit", Type::Text, true, Lookup::None, "of a number: the symbol, as in mm; none where the file gives none"},
    {"source", Type::Text, false, Lookup::None, "instance, or type where the element has it by its type"},
};

constexpr ColumnRow g_quantityColumns[] = {
    g_fileColumn,
    {"element_id", Type::Integer, false, Lookup::Step, "the element or type"},
    {"set_name", Type::Text, false, Lookup::Text, "as in Qto_WallBaseQuantities"},
    {"name", Type::Text, false, Lookup::Text, "as in NetVolume; Complex.Part of a part of a complex quantity"},
    {"value", Type::Number, true, Lookup::None, "as the file has it"},
    {"unit", Type::Text, true, Lookup::None, "the symbol, as in mm; none where the file gives none"},
    {"si_value", Type::Number, true, Lookup::None, "in SI"},
    {"source", Type::Text, false, Lookup::None, "instance, or type where the element has it by its type"},
};

// The names that a set has had so far; few, mostly.
class SeenNames {
public:
    // False for one that was here before.
    bool boAdd(std::string_view name) {
        if (m_few.size() < g_iFew) {
            if (std::ranges::find(m_few, name) != m_few.end()) return false;
            m_few.push_back(name);
            return true;
        }
        if (m_many.empty()) m_many.insert(m_few.begin(), m_few.end());
        return m_many.insert(name).second;
    }
    void vClear() {
        m_few.clear();
        m_many.clear();
    }

private:
    static constexpr std::size_t g_iFew = 24;
    std::vector<std::string_view> m_few;
    std::unordered_set<std::string_view> m_many;
};

// What stands where in one property, told as it lies.
struct PropertyCells {
    CellPlace value{};
    CellPlace lower{};
    CellPlace upper{};
    CellPlace defining{};
    Entity* pOwner = nullptr;   // of the cells
    unsigned iPlace = 0;        // of the value
    const Entity* pUnit = nullptr;
    Class eKind = Class::SingleValue;
};

class SetRows : public EntityRows {
public:
    using EntityRows::EntityRows;

protected:
    // A row for a value; of a complex property without parts all cells are empty.
    struct Place {
        Batch& batch;
        const Entity& element;
        std::string_view set;
        const char* pSource;
    };
    virtual void vRow(const Place& place, std::string_view name, const PropertyCells& cells) = 0;
    [[nodiscard]] virtual bool boQuantities() const noexcept = 0;

private:
    void vRows(Entity& entity, Batch& batch) override {
        m_sets.clear();
        m_setNames.vClear();
        m_boSetTwice = false;
        vSetsAdd(context().walk().ownSets(entity), "instance");
        if (const Entity* pType = context().pType(entity)) vSetsAdd(context().walk().ownSets(*pType), "type");
        m_namesBySet.clear();
        for (const Set& set : m_sets) {
            // What sets of the same name have said before hides what this one says.
            SeenNames& names = m_boSetTwice ? m_namesBySet[set.name] : m_names;
            if (!m_boSetTwice) names.vClear();
            vSetTell({batch, entity, set.name, set.pSource}, *set.pSet, names);
        }
    }

    void vSetsAdd(const std::vector<Entity*>& sets, const char* pSource) {
        for (Entity* pSet : sets) {
            if (context().table().boIs(*pSet, Class::QuantitySet) != boQuantities()) continue;
            m_sets.push_back({pSet, properties().setName(*pSet), pSource});
            if (!m_setNames.boAdd(m_sets.back().name)) m_boSetTwice = true;
        }
    }

    void vSetTell(const Place& place, Entity& set, SeenNames& names) {
        m_opened.clear();
        properties().forEachIn(set, [&](std::string_view name, const FoundProperty& found) {
            if (found.pProperty) {
                if (names.boAdd(name)) vPropertyTell(place, name, *found.pProperty);
                return;
            }
            PropertyCells cells;
            cells.pOwner = found.pSet;
            cells.iPlace = found.iAttribute;
            cells.value = cellAt(*found.pSet, static_cast<int>(found.iAttribute));
            if (cells.value && cells.value.pCell->boHasValue() && names.boAdd(name)) vRow(place, name, cells);
        });
    }

    void vPropertyTell(const Place& place, std::string_view name, Entity& property) {
        const auto& table = context().table();
        if (table.boIs(property, Class::ComplexProperty) || table.boIs(property, Class::ComplexQuantity))
            return vPartsTell(place, name, property);
        vRow(place, name, cellsOf(property));
    }

    // A complex property is opened once a set: a file may have one in itself, or many ways to one.
    void vPartsTell(const Place& place, std::string_view name, Entity& complex) {
        bool boParts = false;
        if (m_opened.size() <= RelationWalk::g_iMostSteps && m_opened.insert(&complex).second)
            for (const Slot eSlot : {Slot::ComplexProperties, Slot::ComplexQuantities})
                context().table().forEachNamed(complex, eSlot, [&](Entity& part) {
                    boParts = true;
                    std::string sName(name);
                    sName.append(".").append(properties().propertyName(part));
                    vPropertyTell(place, sName, part);
                });
        if (!boParts) vRow(place, name, {});
    }

    [[nodiscard]] PropertyCells cellsOf(Entity& property) const {
        const auto& table = context().table();
        const auto cell = [&](Slot eSlot) {
            const auto found = table.place(property, eSlot);
            return found.pCell ? cellAt(property, static_cast<int>(found.iIndex)) : CellPlace();
        };
        PropertyCells cells;
        cells.pOwner = &property;
        const auto vValue = [&](unsigned iPlace) {
            cells.iPlace = iPlace;
            cells.value = cellAt(property, static_cast<int>(iPlace));
        };
        const auto vUnit = [&](Slot eSlot) {
            table.forEachNamed(property, eSlot, [&](const Entity& unit) { cells.pUnit = &unit; });
        };
        if (const auto single = table.place(property, Slot::SingleValue); single.pCell) {
            vValue(single.iIndex);
            vUnit(Slot::SingleUnit);
            return cells;
        }
        // The value of a quantity is the first attribute behind the unit, whatever its class calls it.
        if (const auto unit = table.place(property, Slot::QuantityUnit); unit.pCell) {
            cells.eKind = Class::SimpleQuantity;
            vValue(unit.iIndex + 1);
            vUnit(Slot::QuantityUnit);
            return cells;
        }
        for (const Slot eSlot :
             {Slot::SetPoint, Slot::EnumeratedValues, Slot::ListValues, Slot::DefinedValues, Slot::PropertyReference})
            if (const auto found = table.place(property, eSlot); found.pCell) vValue(found.iIndex);
        if (table.boIs(property, Class::BoundedValue)) {
            cells.eKind = Class::BoundedValue;
            cells.lower = cell(Slot::LowerBound);
            cells.upper = cell(Slot::UpperBound);
            if (!cells.value) cells.iPlace = table.place(property, Slot::LowerBound).iIndex;
            vUnit(Slot::BoundedUnit);
        } else if (table.boIs(property, Class::TableValue)) {
            cells.eKind = Class::TableValue;
            cells.defining = cell(Slot::DefiningValues);
        }
        vUnit(Slot::ListUnit);
        return cells;
    }

    [[nodiscard]] const PropertyReader& properties() const noexcept { return context().properties(); }

    struct Set {
        Entity* pSet;
        std::string_view name;
        const char* pSource;
    };
    // Of one element; kept for their memory.
    std::vector<Set> m_sets;
    SeenNames m_setNames;
    bool m_boSetTwice = false;
    SeenNames m_names;
    std::unordered_map<std::string_view, SeenNames> m_namesBySet;   // where sets of one name are more than one
    std::unordered_set<const Entity*> m_opened;
};

class PropertyRows final : public SetRows {
public:
    using SetRows::SetRows;

private:
    [[nodiscard]] bool boQuantities() const noexcept override { return false; }

    void vRow(const Place& place, std::string_view name, const PropertyCells& cells) override {
        const Scalar value = scalarOf(cells.value);
        const Scalar told = typed(value, cells);
        RowWriter row(place.batch);
        row.vText(sFile());
        row.vNumberOf(context(), &place.element);
        row.vText(place.set);
        row.vText(name);
        vValueTell(value, cells, row);
        row.vNumber(value.numberValue());
        row.vBoolean(value.booleanValue());
        row.vTextOrNull(told.eKind == Scalar::Kind::Null ? std::string_view() : std::string_view(sTypeName(told)));
        const oxa::Unit* pUnit = row.boWanted() ? unitOf(told, cells) : nullptr;
        row.vTextOrNull(pUnit ? std::string_view(pUnit->symbol) : std::string_view());
        row.vText(place.pSource);
    }

    // What tells the type: the value, else one of the bounds.
    [[nodiscard]] static Scalar typed(const Scalar& value, const PropertyCells& cells) {
        if (value.eKind != Scalar::Kind::Null || cells.eKind != Class::BoundedValue) return value;
        const Scalar lower = scalarOf(cells.lower);
        return lower.eKind != Scalar::Kind::Null ? lower : scalarOf(cells.upper);
    }

    [[nodiscard]] static std::string_view sTypeName(const Scalar& scalar) {
        return scalar.pType ? std::string_view(scalar.pType->sName) : std::string_view();
    }

    [[nodiscard]] const oxa::Unit* unitOf(const Scalar& told, const PropertyCells& cells) const {
        const bool boNumber = told.numberValue().has_value();
        if (!cells.pOwner || (!boNumber && told.eKind != Scalar::Kind::Several)) return nullptr;
        unsigned iPlace = cells.iPlace;
        if (!boNumber && !told.pType) return nullptr;
        return context().pUnit(cells.pUnit, told.pType, *cells.pOwner, iPlace);
    }

    void vValueTell(const Scalar& value, const PropertyCells& cells, RowWriter& row) const {
        const bool boBounded = cells.eKind == Class::BoundedValue;
        if (!boBounded && cells.eKind != Class::TableValue && value.eKind != Scalar::Kind::Several)
            return value.vTextTell(context(), row);
        if (!row.boWanted()) return row.vNull();
        std::string sJson;
        if (boBounded) {
            vMemberAdd("{\"lower\":", cells.lower, sJson);
            vMemberAdd(",\"upper\":", cells.upper, sJson);
            vMemberAdd(",\"value\":", cells.value, sJson);
            sJson += '}';
        } else if (cells.eKind == Class::TableValue) {
            vMemberAdd("{\"defining\":", cells.defining, sJson);
            vMemberAdd(",\"defined\":", cells.value, sJson);
            sJson += '}';
        } else {
            vMemberAdd("", cells.value, sJson);
        }
        row.vText(sJson);
    }

    void vMemberAdd(std::string_view key, const CellPlace& place, std::string& sJson) const {
        sJson += key;
        if (place)
            vJsonAdd(context(), place, JsonTypes::Hidden, sJson);
        else
            sJson += "null";
    }
};

class QuantityRows final : public SetRows {
public:
    using SetRows::SetRows;

private:
    [[nodiscard]] bool boQuantities() const noexcept override { return true; }

    void vRow(const Place& place, std::string_view name, const PropertyCells& cells) override {
        const Scalar value = scalarOf(cells.value);
        const std::optional<double> number = value.numberValue();
        const oxa::Unit* pUnit =
            number ? context().pUnit(cells.pUnit, value.pType, *cells.pOwner, cells.iPlace) : nullptr;
        RowWriter row(place.batch);
        row.vText(sFile());
        row.vNumberOf(context(), &place.element);
        row.vText(place.set);
        row.vText(name);
        row.vNumber(number);
        row.vTextOrNull(pUnit ? std::string_view(pUnit->symbol) : std::string_view());
        row.vNumber(pUnit ? pUnit->toSi(*number) : std::nullopt);
        row.vText(place.pSource);
    }
};

}   // namespace

extern const TableRow g_tableProperty{"property", "A property of an element or type", g_propertyColumns,
                                      pOfObjects<PropertyRows>};
extern const TableRow g_tableQuantity{"quantity", "A quantity of an element or type", g_quantityColumns,
                                      pOfObjects<QuantityRows>};

}   // namespace oxa::tables::detail
