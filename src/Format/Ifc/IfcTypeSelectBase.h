// SPDX-License-Identifier: Apache-2.0
/// @file
/// IfcTypeSelectBase: a value of a select attribute as callers hold it, apart from any model's memory.
///
/// - For: handing a typed value, IFCLABEL('x') or a reference, in and out of AttributeSelect.
/// - Owner: the holder owns a string or a typed value; an entity belongs to its Data.
/// - Threads: a plain value: one thread at a time.
#pragma once

#include <string>
#include <typeinfo>
#include <utility>

#include "platform/Export.h"
#include "schema/Schema.h"

namespace oxa::ifc {
class Entity;
}   // namespace oxa::ifc

namespace oxa::ifc::types {

/// A value of a select: empty, an entity, a text, or a value of a named type.
class OXA_IFC_API IfcSelectBase {
public:
    /// A value with its schema type; what it is, a dynamic cast to TypeData<T> tells.
    class OXA_IFC_API TypeDataBase {
    public:
        virtual ~TypeDataBase();
        /// The type that the value was given; may be null, and is not owned.
        [[nodiscard]] virtual const def::schema::Type* pTypeGet() const noexcept;
        [[nodiscard]] virtual const char* pTypeNameGet() const noexcept;   ///< its sName; "" without a type
        [[nodiscard]] virtual TypeDataBase* pClone() const = 0;            ///< a new heap copy

    protected:
        /// "pType" is not owned and must outlive the value; it may be null.
        explicit TypeDataBase(const def::schema::Type* pType) noexcept : m_pType(pType) {}
        ///@{
        /// Takes over the type; for TypeData alone.
        TypeDataBase(const TypeDataBase&) = default;
        TypeDataBase& operator=(const TypeDataBase&) = default;
        ///@}

    private:
        const def::schema::Type* m_pType;
    };

    /// T is one of: double, bool, long long, std::string, Guid, LogicalValue, unsigned char* (into the pool,
    /// without its count), const char* (an enumerator), std::vector<double>, std::vector<long long>,
    /// std::set<Entity*>.
    template <class T>
    class TypeData final : public TypeDataBase {
    public:
        T m_value;   ///< the value itself; what a pointer leads to is not owned

        /// A value of that type, which is neither owned nor checked; it may be null.
        TypeData(const def::schema::Type* pType, T value) : TypeDataBase(pType), m_value(std::move(value)) {}
        [[nodiscard]] TypeDataBase* pClone() const override { return new TypeData(*this); }
    };

    IfcSelectBase() noexcept = default;
    /// A reference; the entity stays its Data's.
    explicit IfcSelectBase(Entity* pEntity) noexcept;
    /// A text without a type.
    explicit IfcSelectBase(std::string sValue);
    /// A value of a type: a TypeData of T, for the T that it lists.
    template <class T>
    IfcSelectBase(const def::schema::Type* pType, T value) {
        vTypeDataSet(new TypeData<T>(pType, std::move(value)));
    }
    /// Copies the value, a typed one by pClone(); a reference leads to the same entity.
    IfcSelectBase(const IfcSelectBase& other);
    /// Takes the value and leaves "other" empty.
    IfcSelectBase(IfcSelectBase&& other) noexcept;
    /// Takes the value of its argument, which was copied or moved; the old one is released.
    IfcSelectBase& operator=(IfcSelectBase other) noexcept;
    ~IfcSelectBase();

    /// Releases the value; nothing for an empty one.
    void vClear() noexcept;
    /// A reference in place of the value; the entity is not owned.
    void vEntitySet(Entity* pEntity) noexcept;
    /// A text in place of the value.
    void vStringSet(std::string sValue);
    /// A typed value in place of the value. Takes over the pointer, which comes from new and is not null.
    void vTypeDataSet(TypeDataBase* pType) noexcept;

    /// True where nothing was set. A null entity that was set is a value.
    [[nodiscard]] bool boEmpty() const noexcept { return !m_pTypeInfo; }
    ///@{
    /// The value, which stays this object's and is good until the next change; null when it is none of that sort.
    [[nodiscard]] Entity* pEntityGet() const noexcept;
    [[nodiscard]] const std::string* pStringGet() const noexcept;
    [[nodiscard]] const TypeDataBase* pTypeDataGet() const noexcept;
    template <class T>
    [[nodiscard]] const T* pValueGet() const noexcept {
        const auto* pData = dynamic_cast<const TypeData<T>*>(pTypeDataGet());
        return pData ? &pData->m_value : nullptr;
    }
    ///@}
    /// typeid(Entity), typeid(std::string), typeid(TypeDataBase), or null for an empty value.
    [[nodiscard]] const std::type_info* pTypeInfo() const noexcept { return m_pTypeInfo; }

private:
    const std::type_info* m_pTypeInfo = nullptr;
    union Value {
        Entity* pEntity = nullptr;
        std::string* pString;
        TypeDataBase* pType;
    } m_uValue;
};

}   // namespace oxa::ifc::types
