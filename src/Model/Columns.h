// SPDX-License-Identifier: Apache-2.0
// Columns: elements as rows of typed values; rows counted and summed by groups.
//
// For      tables: one row an element, the columns by name.
// Names    class, id; an attribute, in any case of letters (Name, OverallWidth); Set.Property and Set.Quantity
//          (Pset_DoorCommon.FireRating), names with blanks, points or keywords in quotes ("My set".'a.b');
//          type, container, storey, building, parent, material, classification, group: what is related, by its name (of
//          a classification its code), and type.Name, storey.Elevation and so on: an attribute of it.
// Values   several at once, as of an enumerated property or of layers, are one text with ", " between them.
// Example  oxa::Columns columns(model, {"Name", "storey.Name", "Pset_DoorCommon.FireRating"});
//          for (oxa::Element door : model.all("IfcDoor")) print(columns.row(door));
// Cost     names are resolved when the columns are made; a row costs inverse lists of its element.
// Errors   NameError for an attribute that no type of the schema has, and for what is no name of a column. HandleError
//          for an element of another model.
// Threads  one at a time for one Columns; several Columns may look at one model.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "Model/Element.h"
#include "platform/Export.h"

namespace oxa {

class Model;

/// One value of a table: none, a truth value, a number or a text.
using Cell = std::variant<std::monostate, bool, std::int64_t, double, std::string>;

/// "true", "12", "0.9", the text itself; nothing for no value.
[[nodiscard]] OXA_MODEL_API std::string toText(const Cell& cell);

/// Values of elements by the names of columns: the names are resolved once a type of element, not once a row.
class OXA_MODEL_API Columns {
public:
    ///@{
    /// The model is only looked at, and must outlive this. The opening comment says what a name may be, and what is
    /// thrown.
    Columns(const Model& model, std::span<const std::string> names);
    Columns(const Model& model, std::initializer_list<std::string> names);
    ///@}

    ///@{
    /// "other" can only be assigned to or destroyed afterwards.
    Columns(Columns&& other) noexcept;
    Columns& operator=(Columns&& other) noexcept;
    ///@}

    ~Columns();

    /// As they were given.
    [[nodiscard]] const std::vector<std::string>& names() const noexcept;
    /// One value a column.
    [[nodiscard]] std::vector<Cell> row(const Element& element);
    /// The same into a row that is at hand.
    void read(const Element& element, std::vector<Cell>& cells);
    /// Of columns of properties that were empty in all rows so far: what no element of the model has, with near names.
    [[nodiscard]] std::vector<std::string> hints() const;

private:
    struct State;
    std::unique_ptr<State> m_pState;
};

/// A column added up.
struct Sum {
    double value = 0;        ///< in the unit of the model
    std::size_t count = 0;   ///< how many elements have a number there
};

/// Elements that are equal in some columns.
struct Group {
    std::vector<Cell> keys;   ///< what they are equal in, a value a column
    std::size_t count = 0;    ///< how many elements
    std::vector<Sum> sums;    ///< one a column to add up
};

///@{
/// Groups by the values of "keys", ascending, those without a value last; "sums" are columns to add up.
[[nodiscard]] OXA_MODEL_API std::vector<Group> groupBy(const Elements& elements, Columns& keys, Columns& sums);
[[nodiscard]] OXA_MODEL_API std::vector<Group> groupBy(const Elements& elements, Columns& keys);
///@}

}   // namespace oxa
