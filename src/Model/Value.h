// SPDX-License-Identifier: Apache-2.0
/// @file
/// Value: what an attribute holds, told by kind; and an item of a list likewise.
///
/// For      callers of Element: wall["OverallWidth"].number().
/// Shape    a view of some 60 bytes, copied as such: it shows what the attribute holds when it is asked. Items of a
///          list show the list that they were taken from.
/// Select   a value wrapped in a type, IFCLABEL('x'), is told as the value itself; typeName() and isTyped() tell the
///          rest.
/// Errors   TypeError for a value of another kind; HandleError once the element or the model is gone. "No value" is no
///          error, except for get(): optionals are empty then, lists too.
/// Threads  see Model.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "Format/Ifc/IfcArray.h"
#include "Model/Element.h"
#include "platform/Export.h"

namespace oxa::ifc {
class AttributeBase;
}   // namespace oxa::ifc
namespace oxa::ifc::def::schema {
struct Attribute;
struct ObjectBase;
}   // namespace oxa::ifc::def::schema

namespace oxa {

/// What a value is.
enum class Kind : std::uint8_t {
    Null,      ///< no value: "$", or one that could not be read
    Derived,   ///< "*": the schema derives it from other attributes
    Text,      ///< a STRING, a GlobalId too
    Number,    ///< a REAL or a NUMBER
    Integer,
    Boolean,
    Logical,      ///< true, false or unknown
    Enumerator,   ///< a text in upper case, without dots
    Binary,
    Element,
    List,   ///< an ARRAY, BAG, LIST or SET
};

/// "a number", "a list" and so on: for messages.
[[nodiscard]] OXA_MODEL_API std::string_view kindName(Kind kind) noexcept;

/// A binary.
using Bytes = std::vector<unsigned char>;

namespace detail {
template <class T>
struct IsOptional : std::false_type {};
template <class T>
struct IsOptional<std::optional<T>> : std::true_type {};
template <class T, class... Others>
inline constexpr bool g_boOneOf = (std::is_same_v<T, Others> || ...);
template <class T>
inline constexpr bool g_boValueType =
    g_boOneOf<T, bool, int, std::int64_t, long long, double, LogicalValue, std::string, Bytes, Element, Elements,
              std::vector<double>, std::vector<std::int64_t>, std::vector<std::string>, std::vector<Element>>;
}   // namespace detail

/// What one attribute, or one item of a list, holds.
class OXA_MODEL_API Value {
public:
    /// Null, of nobody.
    Value() noexcept = default;

    /// What the value is at this moment; of a select what it holds.
    [[nodiscard]] Kind kind() const;
    /// True for kind Null.
    [[nodiscard]] bool isNull() const { return kind() == Kind::Null; }

    /// A text, a GlobalId (22 characters) or an enumerator.
    [[nodiscard]] std::optional<std::string> text() const;
    /// A number or an integer, in the unit of the model.
    [[nodiscard]] std::optional<double> number() const;
    /// An integer; a number is a TypeError, even a whole one.
    [[nodiscard]] std::optional<std::int64_t> integer() const;
    /// A boolean, or a logical; empty for "unknown" too.
    [[nodiscard]] std::optional<bool> boolean() const;
    /// A logical or a boolean.
    [[nodiscard]] std::optional<LogicalValue> logical() const;
    /// A binary.
    [[nodiscard]] std::optional<Bytes> binary() const;
    /// The element that is referred to; names nothing where there is no value, or an instance that the file does not
    /// define.
    [[nodiscard]] Element element() const;
    /// The items of a list that are elements, those of lists in it too; of a single reference that one.
    [[nodiscard]] Elements elements() const;
    /// The items of a list.
    [[nodiscard]] std::vector<Value> items() const;
    /// How many items() there are.
    [[nodiscard]] std::size_t size() const;

    /// The value as a T, or a ValueError where there is none. As `std::optional<T>`: empty where there is none.
    template <class T>
    [[nodiscard]] T get() const;

    /// The name of the value's type: what a select wraps it in, else the defined type of the attribute, as in IfcLabel;
    /// for a reference the type of the element. Empty for base types and anonymous lists.
    [[nodiscard]] std::string_view typeName() const;
    /// Whether a select wraps the value in the type that typeName() tells.
    [[nodiscard]] bool isTyped() const;
    /// The type of the attribute or item as the schema declares it: "LIST [1:?] OF IfcLabel".
    [[nodiscard]] std::string declaredType() const;

    /// The value for people: the text itself, "12.5", "true", "#12", "(1,2)"; nothing for no value, "*" for a derived
    /// one.
    [[nodiscard]] std::string toString() const;

private:
    friend class Element;
    friend class detail::ModelState;
    enum class Place : std::uint8_t { Nothing, Cell, Number, Integer, Text, Entity };
    struct Seen;   // the value behind selects

    Value(const Element& owner, const ifc::def::schema::Attribute& attribute, const ifc::AttributeBase& cell) noexcept;
    [[nodiscard]] Seen seen() const;
    [[nodiscard]] std::string where() const;
    [[noreturn]] void wrongKind(const Seen& value, std::string_view wanted) const;
    [[noreturn]] void noValue() const;
    template <class Visit>
    void forEachItem(const Seen& value, Visit&& visit) const;
    void elementsAdd(std::vector<ifc::Entity*>& entities) const;
    template <class T>
    [[nodiscard]] std::optional<T> optional() const;

    Element m_owner;
    const ifc::def::schema::Attribute* m_pAttribute = nullptr;
    const ifc::def::schema::ObjectBase* m_pType = nullptr;   // of the cell or item
    union {
        const ifc::AttributeBase* m_pCell = nullptr;
        double m_number;
        std::int64_t m_iInteger;
        const char* m_pText;
        ifc::Entity* m_pEntity;
    };
    Place m_ePlace = Place::Nothing;
};

/// One attribute of an element.
struct Attribute {
    std::string_view name;   ///< as the schema spells it
    Value value;             ///< what it holds
    bool optional = false;   ///< whether the schema lets it be without a value
};

/// @cond specialisations of a private member
template <>
OXA_MODEL_API std::optional<bool> Value::optional() const;
template <>
OXA_MODEL_API std::optional<int> Value::optional() const;
template <>
OXA_MODEL_API std::optional<long> Value::optional() const;
template <>
OXA_MODEL_API std::optional<long long> Value::optional() const;
template <>
OXA_MODEL_API std::optional<double> Value::optional() const;
template <>
OXA_MODEL_API std::optional<LogicalValue> Value::optional() const;
template <>
OXA_MODEL_API std::optional<std::string> Value::optional() const;
template <>
OXA_MODEL_API std::optional<Bytes> Value::optional() const;
template <>
OXA_MODEL_API std::optional<Element> Value::optional() const;
template <>
OXA_MODEL_API std::optional<Elements> Value::optional() const;
template <>
OXA_MODEL_API std::optional<std::vector<double>> Value::optional() const;
template <>
OXA_MODEL_API std::optional<std::vector<std::int64_t>> Value::optional() const;
template <>
OXA_MODEL_API std::optional<std::vector<std::string>> Value::optional() const;
template <>
OXA_MODEL_API std::optional<std::vector<Element>> Value::optional() const;
/// @endcond

template <class T>
T Value::get() const {
    if constexpr (detail::IsOptional<T>::value) {
        static_assert(detail::g_boValueType<typename T::value_type>,
                      "get<std::optional<T>>: T is one of bool, int, std::int64_t, double, oxa::LogicalValue, "
                      "std::string, oxa::Bytes, oxa::Element, oxa::Elements, and std::vector of double, "
                      "std::int64_t, std::string, oxa::Element");
        return optional<typename T::value_type>();
    } else {
        static_assert(detail::g_boValueType<T>,
                      "get<T>: T is one of bool, int, std::int64_t, double, oxa::LogicalValue, std::string, "
                      "oxa::Bytes, oxa::Element, oxa::Elements, and std::vector of double, std::int64_t, "
                      "std::string, oxa::Element; or std::optional of one of them");
        std::optional<T> value = optional<T>();
        if (!value) noValue();
        return *std::move(value);
    }
}

template <class T>
T Element::get(std::string_view name) const {
    return (*this)[name].template get<T>();
}

}   // namespace oxa
