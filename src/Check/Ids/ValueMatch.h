// SPDX-License-Identifier: Apache-2.0
// ValueMatch: values of a model against conditions, in SI where they are measures.
//
// For      the tests of attributes and properties.
// Threads  one: it remembers units.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "Check/Ids/ModelView.h"

namespace oxa::ids::detail {

/// As much of a text as a reason shows, and "..." behind it where there is more.
inline constexpr std::size_t g_iMostShown = 300;
[[nodiscard]] std::string shown(std::string_view text);
/// "'F 30'".
[[nodiscard]] std::string inQuotes(std::string_view text);

// Texts with a comma between, as many as are shown.
class FoundList {
public:
    void vAdd(std::string_view text);
    [[nodiscard]] const std::string& text() const noexcept { return m_sText; }

private:
    std::string m_sText;
    bool m_boCut = false;
};

class ValueMatch {
public:
    explicit ValueMatch(const ModelView& view) : m_view(view) {}

    /// Nothing at all: "$", "*".
    [[nodiscard]] static bool boNull(const Value& value);
    /// The same, and what says nothing: an empty text or list, an unknown logical.
    [[nodiscard]] static bool boEmpty(const Value& value);

    /// "pOwn" is the unit that is given for the value; null where there is none.
    [[nodiscard]] bool boMatches(const Value& value, const Matcher& matcher, const Entity* pOwn);
    /// For people: "'F 30'", "12.5", "2000 mm (2 m)".
    [[nodiscard]] std::string text(const Value& value, const Entity* pOwn);
    /// Without quotes, as the file has it.
    [[nodiscard]] static std::string plain(const Value& value) { return shown(value.toString()); }

private:
    [[nodiscard]] const Unit* pUnit(const Value& value, const Entity* pOwn);

    const ModelView& m_view;
    std::unordered_map<const Entity*, std::optional<Unit>> m_own;
    std::unordered_map<const void*, const Unit*> m_byType;   // by the name of a type, where the schema has it
};

}   // namespace oxa::ids::detail
