// SPDX-License-Identifier: Apache-2.0
/// @file
/// NewValue: what an attribute is to hold, as a caller writes it down.
///
/// For      Model::create and Model::set: {{"Name", "D1"}, {"OverallWidth", 0.9}, {"Coordinates", {0.0, 0.0, 1.0}}}.
/// Check    none here: the model checks against its schema when it takes the value.
/// Threads  plain values.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "Model/Element.h"
#include "Model/Value.h"
#include "platform/Export.h"

namespace oxa {

/// "*": for an attribute that the type derives from others, as Dimensions of IfcSIUnit.
struct Derived {};
/// As in {"Dimensions", oxa::derived}.
inline constexpr Derived derived{};

/// A value on its way into a model: most types of C++ become one by themselves.
class OXA_MODEL_API NewValue {
public:
    /// The items of a list.
    using List = std::vector<NewValue>;
    /// What a value can be; std::monostate is no value.
    using Content = std::variant<std::monostate, Derived, bool, LogicalValue, std::int64_t, double, std::string, Bytes,
                                 Element, List>;

    ///@{
    /// No value.
    NewValue() noexcept = default;
    NewValue(std::nullptr_t) noexcept {}
    ///@}

    /// "*", where the schema derives the attribute.
    NewValue(Derived) : m_content(Derived{}) {}
    /// True or false.
    template <std::same_as<bool> T>   // no pointer becomes a truth value
    NewValue(T boValue) : m_content(boValue) {}
    /// True, false or unknown.
    NewValue(LogicalValue value) : m_content(value) {}
    /// An integer; where the attribute takes a number, that number.
    template <std::integral T>
        requires(!std::same_as<T, bool> && !std::same_as<T, char>)
    NewValue(T iValue) : m_content(static_cast<std::int64_t>(iValue)) {}
    /// A number, in the unit of the model.
    NewValue(double value) : m_content(value) {}

    ///@{
    /// A text, UTF-8; also an enumerator, in any case of letters, and a GlobalId.
    NewValue(const char* text) : m_content(std::string(text)) {}
    NewValue(std::string text) : m_content(std::move(text)) {}
    NewValue(std::string_view text) : m_content(std::string(text)) {}
    ///@}

    /// A binary, in whole bytes.
    NewValue(Bytes binary) : m_content(std::move(binary)) {}
    /// A reference. A handle that names nothing is no value.
    NewValue(const Element& element) {
        if (element != Element()) m_content = element;
    }

    ///@{
    /// A list, also an empty one.
    NewValue(std::initializer_list<NewValue> items) : m_content(List(items)) {}
    NewValue(const Elements& elements) : m_content(List(elements.begin(), elements.end())) {}
    template <class T>
        requires(!std::same_as<T, unsigned char>)
    NewValue(const std::vector<T>& items) : m_content(List(items.begin(), items.end())) {}
    ///@}

    /// What a value holds now, with its type where a select wraps it.
    NewValue(const Value& value);

    /// What is to be set, without the type of typed().
    [[nodiscard]] const Content& content() const noexcept { return m_content; }
    /// Of typed(): the name of the type; else empty.
    [[nodiscard]] const std::string& typeName() const noexcept { return m_sType; }

private:
    friend OXA_MODEL_API NewValue typed(std::string_view type, NewValue value);

    Content m_content;
    std::string m_sType;
};

/// A value of a select with its type: typed("IfcLabel", "F 90").
[[nodiscard]] OXA_MODEL_API NewValue typed(std::string_view type, NewValue value);

/// An attribute by name, and what it is to hold.
struct Field {
    /// In any case of letters; the text is not owned.
    std::string_view name;
    /// Checked when the model takes it.
    NewValue value;
};

}   // namespace oxa
