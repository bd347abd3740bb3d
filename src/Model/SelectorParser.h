// SPDX-License-Identifier: Apache-2.0
// SelectorParser: from the text of a query to its tree, and names of columns, which are written as the names in a query.
//
// For      Selector and Columns.
// Grammar  query = group { "+" group } ; group = term { "," term } ; term = [ "!" ] ( class | GlobalId | "#" digits |
//          name operator value ) ; name = part [ "." part ] ; part = word | quoted | /expression/
//          There is nothing that nests, so that the depth is two whatever the text.
// Threads  plain values; a finished tree is read-only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Model/ElementKey.h"
#include "Model/Pattern.h"
#include "platform/Id.h"

namespace oxa::detail {

enum class Operator : std::uint8_t { Equal, Greater, GreaterOrEqual, Less, LessOrEqual, Contains };

// What a value is compared with.
struct Literal {
    enum class Kind : std::uint8_t { Text, Pattern, Null, True, False };

    Kind eKind = Kind::Text;
    std::string sText{};
    std::optional<double> number{};   // where the text is one
    std::shared_ptr<const Pattern> pPattern{};
};

struct Term {
    enum class Kind : std::uint8_t { Class, GlobalId, Id, Compare };

    Kind eKind = Kind::Class;
    bool boNot = false;   // a "!" in front, or an operator with one
    std::size_t iColumn = 1;
    std::string sText{};   // of a class or a GlobalId
    Guid guid{};
    std::uint64_t iId = 0;
    Key key{};
    Operator eOperator = Operator::Equal;
    Literal literal{};
};

struct Query {
    std::vector<std::vector<Term>> groups;
};

/// Throws QueryError.
[[nodiscard]] Query queryParse(std::string_view text);
[[nodiscard]] std::string sQueryText(const Query& query);
/// Throws NameError for what is no name of a column.
[[nodiscard]] Key columnParse(std::string_view text);
/// The number that the whole text is.
[[nodiscard]] std::optional<double> numberOf(std::string_view text) noexcept;

}   // namespace oxa::detail
