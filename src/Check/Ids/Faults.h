// SPDX-License-Identifier: Apache-2.0
// Faults: what is wrong with a file of requirements, as it is found.
//
// For      the reader of such files.
// Order    that of the file, whatever the order in which things are looked at.
// Threads  one.
#pragma once

#include <algorithm>
#include <cstddef>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "Check/Ids.h"
#include "Check/Ids/Document.h"

namespace oxa::ids::detail {

class Faults {
public:
    void vAdd(const Node& node, std::string key, std::string message, std::string found = {}) {
        vAdd(node, FaultWeight::Fault, std::move(key), std::move(message), std::move(found));
    }
    void vNote(const Node& node, std::string key, std::string message, std::string found = {}) {
        vAdd(node, FaultWeight::Note, std::move(key), std::move(message), std::move(found));
    }
    void vAdd(Fault fault) {
        if (fault.weight == FaultWeight::Fault) {
            m_boAny = true;
            if (fault.specification) m_specifications.insert(*fault.specification);
        }
        if (m_faults.size() < Requirements::mostFaults)
            m_faults.push_back(std::move(fault));
        else
            ++m_iMore;
    }

    /// Whether the file is valid, and which specifications are not; also by what is not told.
    [[nodiscard]] bool boAny() const noexcept { return m_boAny; }
    [[nodiscard]] const std::set<std::size_t>& specifications() const noexcept { return m_specifications; }

    [[nodiscard]] std::vector<Fault> take() {
        std::ranges::stable_sort(m_faults, {}, [](const Fault& one) { return std::tuple(one.line, one.column); });
        if (m_iMore > 0)
            m_faults.push_back(
                {.key = "Ids_TooLarge", .message = std::to_string(m_iMore) + " more faults and notes are not told"});
        return std::move(m_faults);
    }

private:
    void vAdd(const Node& node, FaultWeight weight, std::string key, std::string message, std::string found) {
        vAdd({.key = std::move(key),
              .weight = weight,
              .line = node.iLine,
              .column = node.iColumn,
              .path = node.path(),
              .message = std::move(message),
              .found = std::move(found),
              .specification = node.specification()});
    }

    bool m_boAny = false;
    std::set<std::size_t> m_specifications;
    std::size_t m_iMore = 0;
    std::vector<Fault> m_faults;
};

}   // namespace oxa::ids::detail
