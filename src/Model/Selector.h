// SPDX-License-Identifier: Apache-2.0
// Selector: elements of a model by a query in one line.
//
// Example  oxa::Selector("IfcWall, Pset_WallCommon.FireRating=NULL").select(model).elements
// Query    terms joined by "," narrow, groups of terms joined by "+" add. "!" before a term turns it round.
//   IfcWall                 a class with its subtypes, in any case of letters
//   1hOSvn6df7F8_7GcBWlRGQ  a GlobalId; #12: an instance number
//   Name=D1                 an attribute, in any case of letters; class and id compare as well
//   Pset_X.FireRating=F 90  a property or quantity, of the element or its type; "Complex.Part" is a part of a complex one
//   type= material= classification= location= group= parent= container= storey= building=
//                           what is related: by name or GlobalId, of a location or parent any above, of a material
//                           also by the name of its layer or set, of a classification by code, name or system;
//                           type.Tag=, storey.Elevation= and so on: an attribute of it
// Compare  = != > >= < <=   numbers by value (equal to nine digits), texts by their bytes
//          *= !*=           whether a text holds another
//          of several values, as of layers, one is enough; != and !*= hold where = and *= do not
// Values   a text as it stands up to the next "," or "+", or in quotes, with \ before a quote or a \ in it; NULL for none;
//          TRUE, FALSE; /regular expression/ that all of a text matches, behind = and != alone. Names of sets,
//          properties and attributes may be quoted or expressions as well.
// Without  a class in a group: all objects and types (IfcObjectDefinition).
// Errors   QueryError with the column for a text that is no query; NameError for a class or an attribute that the schema
//          of the model does not have, with near names.
// Bounds   g_iMostBytes, g_iMostTerms, g_iMostPatterns; expressions match in linear time and bounded memory.
// Threads  any number at once.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Model/Element.h"
#include "Model/Error.h"
#include "Model/Model.h"
#include "platform/Export.h"

namespace oxa {

namespace detail {
struct Query;
}   // namespace detail

/// A text that is no query. The message begins with the column.
class OXA_MODEL_API QueryError final : public Error {
public:
    /// A column is told from 1, in characters.
    QueryError(std::size_t column, const std::string& message)
        : Error("column " + std::to_string(column) + ": " + message),
          m_iColumn(column) {}
    ~QueryError() override;

    /// In characters, from 1.
    [[nodiscard]] std::size_t column() const noexcept { return m_iColumn; }

private:
    std::size_t m_iColumn;
};

/// What a query gives.
struct Selection {
    Elements elements;                ///< each once, by number
    std::vector<std::string> hints;   ///< why there may be less than was meant: what no element has, with near names
};

/// A query, taken apart once and asked of any number of models.
class OXA_MODEL_API Selector {
public:
    static constexpr std::size_t g_iMostBytes = 100'000;   ///< of a query; beyond it there is a QueryError
    static constexpr std::size_t g_iMostTerms = 1000;      ///< of all groups together
    static constexpr std::size_t g_iMostPatterns = 100;    ///< regular expressions

    /// QueryError for a text that is no query.
    explicit Selector(std::string_view query);

    /// The elements of the model that the query means. NameError for a class or attribute that its schema lacks.
    [[nodiscard]] Selection select(const Model& model) const;
    /// Classes without their subtypes.
    [[nodiscard]] Selection select(const Model& model, Exact) const;

    /// The query in one form: texts in quotes, one blank behind a comma and around a plus.
    [[nodiscard]] std::string text() const;

private:
    std::shared_ptr<const detail::Query> m_pQuery;
};

}   // namespace oxa
