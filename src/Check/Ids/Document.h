// SPDX-License-Identifier: Apache-2.0
// Document: the XML of a file of requirements as a tree of what its schema allows.
//
// For      the reader. What the schema forbids is told here, and is not in the tree.
// Places   line and column of each tag, where the bytes are UTF-8.
// Names    by their namespaces, whatever the prefixes are.
// Threads  any number at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace oxa::ids::detail {

class Faults;
struct ElementRule;

struct Node {
    std::string_view sName;   // without a prefix
    const Node* pParent = nullptr;
    std::size_t iPlace = 0;    // among siblings of its name, from 0
    bool boSeveral = false;    // there may be more of its name
    std::uint64_t iLine = 0;   // from 1; 0 where it is not known
    std::uint64_t iColumn = 0;
    std::vector<std::pair<std::string_view, std::string>> attributes;   // that the schema knows
    std::vector<std::unique_ptr<Node>> children;                        // none is null
    std::string sText;

    [[nodiscard]] std::string path() const;
    /// The number of the specification that it stands in.
    [[nodiscard]] std::optional<std::size_t> specification() const;
    /// Null where there is none.
    [[nodiscard]] const std::string* pAttribute(std::string_view name) const;
    [[nodiscard]] std::string attribute(std::string_view name) const;
    /// The first of that name; null where there is none.
    [[nodiscard]] const Node* pChild(std::string_view name) const;
};

/// The root; null, with a fault that says why, for what is no XML or another document.
[[nodiscard]] std::unique_ptr<const Node> documentRead(const std::string& sBytes, Faults& faults);

}   // namespace oxa::ids::detail
