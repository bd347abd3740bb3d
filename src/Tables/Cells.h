// SPDX-License-Identifier: Apache-2.0
// Cells: what a cell of the model is as cells of tables: one scalar, or JSON.
//
// For      the makers of rows.
// Threads  one, the model's own.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Format/Ifc/IfcGuid.h"
#include "Format/Ifc/IfcValueVisit.h"
#include "Tables/Context.h"
#include "Tables/Rows.h"

namespace oxa::tables::detail {

// One value, of a list its only item.
struct Scalar {
    enum class Kind : std::uint8_t {
        Null,
        Text,
        Number,
        Integer,
        Boolean,
        Logical,
        Enumerator,
        Guid,
        Binary,
        Reference,
        Several   // more than one, or a list in a list
    };

    Kind eKind = Kind::Null;
    const schema::ObjectBase* pType =
        nullptr;   // what a select wraps it in, else what is declared; of several the first
    double number = 0;
    std::int64_t iInteger = 0;   // truth values too; -1 unknown
    const char* pText = nullptr;
    const ifc::Entity* pEntity = nullptr;
    Guid guid{};
    ifc::visit::Binary binary{nullptr, 0};

    // What is a number or a truth value beside its text.
    [[nodiscard]] std::optional<double> numberValue() const;
    [[nodiscard]] std::optional<bool> booleanValue() const;
    // As Value::toString tells it; of nothing and of several nothing.
    [[nodiscard]] std::string sText(const Context& context) const;
    // The same into the next cell.
    void vTextTell(const Context& context, RowWriter& row) const;
};

[[nodiscard]] Scalar scalarOf(const ifc::AttributeBase& cell, const schema::ObjectBase* pType);
[[nodiscard]] inline Scalar scalarOf(const CellPlace& place) {
    return place ? scalarOf(*place.pCell, place.pAttribute->pType()) : Scalar();
}

// How JSON tells what a select wraps.
enum class JsonTypes : std::uint8_t {
    Shown,   // {"type":"IfcLabel","value":"F 90"}, references {"ref":33}
    Hidden   // "F 90", references "#33"
};
void vJsonAdd(const Context& context, const CellPlace& place, JsonTypes eTypes, std::string& sJson);

}   // namespace oxa::tables::detail
