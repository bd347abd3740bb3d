// SPDX-License-Identifier: Apache-2.0
/// @file
/// Element: one instance of a model ("#12=IFCWALL(...)") as a handle, and rows of them.
///
/// For      callers of Model. "Element" is any instance: a wall as well as a placement or a relationship.
/// Shape    a handle is 24 bytes, copied as such: which model, and where in it. It owns nothing, and making one
///          allocates nothing; an Elements is one block of pointers.
/// Life     a handle may outlive its element and its model. Asked anything then, it throws HandleError; so does one
///          that names nothing. operator bool tells.
/// Names    of types and attributes in any case of letters. An unknown one throws NameError.
/// Threads  see Model.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/Export.h"

namespace oxa::ifc {
class Entity;
}   // namespace oxa::ifc

namespace oxa {

enum class LogicalValue : std::int32_t;
class Elements;
class Value;
struct Attribute;

namespace detail {
class ModelState;
struct Life;

// Which model: a place that is never freed, with the serial number that it had for that model.
struct ModelRef {
    const Life* pLife = nullptr;
    std::uint64_t uSerial = 0;

    friend bool operator==(const ModelRef&, const ModelRef&) = default;
};
}   // namespace detail

/// One instance of a model.
class OXA_MODEL_API Element {
public:
    /// Names nothing.
    Element() noexcept = default;

    /// True when it names an element that is there: false for a removed one, and when the model is gone.
    [[nodiscard]] explicit operator bool() const noexcept;

    /// The type's name as the schema spells it, as in IfcWall. Good as long as the schema.
    [[nodiscard]] std::string_view type() const;
    /// The instance number, 12 of "#12".
    [[nodiscard]] std::uint64_t id() const;
    /// The GlobalId of 22 characters; empty for a type that has none, and where none is set.
    [[nodiscard]] std::string guid() const;
    /// Whether it is of that type or of a subtype of it. NameError for a type that the model's schema does not have.
    [[nodiscard]] bool is(std::string_view type) const;
    /// Whether its type has an attribute of that name, be it an inverse one.
    [[nodiscard]] bool has(std::string_view name) const;
    /// The model's schema, as in IFC4.
    [[nodiscard]] std::string_view schema() const;

    /// The value of an attribute, a view: what the attribute holds when the view is asked.
    [[nodiscard]] Value operator[](std::string_view name) const;
    /// All attributes in their order, those of supertypes first.
    [[nodiscard]] std::vector<Attribute> attributes() const;
    /// How many attributes() there are.
    [[nodiscard]] std::size_t size() const;
    /// The value of the attribute at that place of attributes(), from 0, as a view. NameError beyond the last.
    [[nodiscard]] Value at(std::size_t index) const;
    /// Who refers to this one over the inverse attribute of that name, by number.
    [[nodiscard]] Elements inverse(std::string_view name) const;

    ///@{
    /// The operations of Value by the same names: (*this)[name].text() and so on.
    [[nodiscard]] std::optional<std::string> text(std::string_view name) const;
    [[nodiscard]] std::optional<double> number(std::string_view name) const;
    [[nodiscard]] std::optional<std::int64_t> integer(std::string_view name) const;
    [[nodiscard]] std::optional<bool> boolean(std::string_view name) const;
    [[nodiscard]] std::optional<LogicalValue> logical(std::string_view name) const;
    [[nodiscard]] Element element(std::string_view name) const;
    [[nodiscard]] Elements elements(std::string_view name) const;
    template <class T>
    [[nodiscard]] T get(std::string_view name) const;   // in Value.h
    ///@}

    /// The instance of the core, for what this class has no operation for. Whoever changes it keeps inverse lists and
    /// the model's tables right himself.
    [[nodiscard]] ifc::Entity& core() const;

    /// Whether both name the same element. Ordered by model, then by place in memory: for sets and maps.
    friend bool operator==(const Element& a, const Element& b) noexcept {
        return a.m_pEntity == b.m_pEntity && a.m_model == b.m_model;
    }
    friend bool operator<(const Element& a, const Element& b) noexcept {
        if (a.m_model.uSerial != b.m_model.uSerial) return a.m_model.uSerial < b.m_model.uSerial;
        return std::less<>()(a.m_pEntity, b.m_pEntity);
    }

private:
    friend class detail::ModelState;
    friend class Elements;
    friend class Model;
    friend class Value;
    friend struct std::hash<Element>;
    Element(detail::ModelRef model, ifc::Entity* pEntity) noexcept : m_model(model), m_pEntity(pEntity) {}

    detail::ModelRef m_model;
    ifc::Entity* m_pEntity = nullptr;
};

/// Elements in an order, as they were when somebody asked: what is created or removed later changes nothing here.
class OXA_MODEL_API Elements {
public:
    /// A random access iterator that gives elements by value; good as long as the Elements.
    class Iterator {
    public:
        ///@{
        /// For the algorithms of the standard library.
        using iterator_category = std::random_access_iterator_tag;
        using value_type = Element;
        using difference_type = std::ptrdiff_t;
        using pointer = const Element*;
        using reference = Element;
        ///@}

        Iterator() noexcept = default;
        /// The element at its place.
        Element operator*() const noexcept { return {m_model, *m_ppEntity}; }
        /// The element that many places further on.
        Element operator[](difference_type i) const noexcept { return {m_model, m_ppEntity[i]}; }

        ///@{
        /// Moves by that many places, or by one.
        Iterator& operator++() noexcept { return *this += 1; }
        Iterator& operator--() noexcept { return *this += -1; }
        Iterator operator++(int) noexcept { return std::exchange(*this, *this + 1); }
        Iterator operator--(int) noexcept { return std::exchange(*this, *this - 1); }
        Iterator& operator+=(difference_type i) noexcept {
            m_ppEntity += i;
            return *this;
        }
        Iterator& operator-=(difference_type i) noexcept { return *this += -i; }
        ///@}

        friend Iterator operator+(Iterator it, difference_type i) noexcept { return it += i; }
        friend Iterator operator+(difference_type i, Iterator it) noexcept { return it += i; }
        friend Iterator operator-(Iterator it, difference_type i) noexcept { return it -= i; }
        friend difference_type operator-(const Iterator& a, const Iterator& b) noexcept {
            return a.m_ppEntity - b.m_ppEntity;
        }
        friend bool operator==(const Iterator& a, const Iterator& b) noexcept { return a.m_ppEntity == b.m_ppEntity; }
        friend auto operator<=>(const Iterator& a, const Iterator& b) noexcept { return a.m_ppEntity <=> b.m_ppEntity; }

    private:
        friend class Elements;
        Iterator(detail::ModelRef model, ifc::Entity* const* ppEntity) noexcept
            : m_model(model),
              m_ppEntity(ppEntity) {}

        detail::ModelRef m_model;
        ifc::Entity* const* m_ppEntity = nullptr;
    };

    ///@{
    /// For the algorithms of the standard library.
    using value_type = Element;
    using const_iterator = Iterator;
    using iterator = Iterator;
    ///@}

    /// None.
    Elements() noexcept = default;

    ///@{
    /// From the first element to behind the last.
    [[nodiscard]] Iterator begin() const noexcept { return {m_model, m_entities.data()}; }
    [[nodiscard]] Iterator end() const noexcept { return {m_model, m_entities.data() + m_entities.size()}; }
    ///@}

    ///@{
    /// How many there are.
    [[nodiscard]] std::size_t size() const noexcept { return m_entities.size(); }
    [[nodiscard]] bool empty() const noexcept { return m_entities.empty(); }
    ///@}

    /// Names nothing at or beyond size().
    [[nodiscard]] Element operator[](std::size_t i) const noexcept {
        return i < m_entities.size() ? Element(m_model, m_entities[i]) : Element();
    }
    /// Names nothing where there is none.
    [[nodiscard]] Element front() const noexcept { return (*this)[0]; }

private:
    friend class detail::ModelState;
    friend class Element;
    friend class Model;
    friend class Value;
    Elements(detail::ModelRef model, std::vector<ifc::Entity*> entities) noexcept
        : m_model(model),
          m_entities(std::move(entities)) {}

    detail::ModelRef m_model;
    std::vector<ifc::Entity*> m_entities;
};

}   // namespace oxa

/// For the unordered containers of the standard library.
template <>
struct std::hash<oxa::Element> {
    /// By place in memory; any handle may be asked.
    std::size_t operator()(const oxa::Element& element) const noexcept {
        return std::hash<const void*>()(element.m_pEntity);
    }
};

#include "Model/Value.h"   // what Element answers
