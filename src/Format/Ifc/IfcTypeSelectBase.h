// SPDX-License-Identifier: Apache-2.0
// IfcTypeSelectBase: a value of a select attribute as callers hold it, apart from any model's memory.
//
// For      handing a typed value, IFCLABEL('x') or a reference, in and out of AttributeSelect.
// Owner    the holder owns a string or a typed value; an entity belongs to its Data.
// Threads  a plain value: one thread at a time.
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

class OXA_IFC_API IfcSelectBase {
public:
    // A value with its schema type; what it is, a dynamic cast to TypeData<T> tells.
    class OXA_IFC_API TypeDataBase {
    public:
        virtual ~TypeDataBase();
        [[nodiscard]] virtual const def::schema::Type* pTypeGet() const noexcept;
        [[nodiscard]] virtual const char* pTypeNameGet() const noexcept;   // its sName; "" without a type
        [[nodiscard]] virtual TypeDataBase* pClone() const = 0;            // a new heap copy

    protected:
        explicit TypeDataBase(const def::schema::Type* pType) noexcept : m_pType(pType) {}
        TypeDataBase(const TypeDataBase&) = default;
        TypeDataBase& operator=(const TypeDataBase&) = default;

    private:
        const def::schema::Type* m_pType;
    };

    // T is one of: double, bool, long long, std::string, Guid, LogicalValue, unsigned char* (into the pool,
    // without its count), const char* (an enumerator), std::vector<double>, std::vector<long long>,
    // std::set<Entity*>.
    template <class T>
    class TypeData final : public TypeDataBase {
    public:
        T m_value;

        TypeData(const def::schema::Type* pType, T value) : TypeDataBase(pType), m_value(std::move(value)) {}
        [[nodiscard]] TypeDataBase* pClone() const override { return new TypeData(*this); }
    };

    IfcSelectBase() noexcept = default;
    explicit IfcSelectBase(Entity* pEntity) noexcept;
    explicit IfcSelectBase(std::string sValue);
    template <class T>
    IfcSelectBase(const def::schema::Type* pType, T value) {
        vTypeDataSet(new TypeData<T>(pType, std::move(value)));
    }
    IfcSelectBase(const IfcSelectBase& other);
    IfcSelectBase(IfcSelectBase&& other) noexcept;
    IfcSelectBase& operator=(IfcSelectBase other) noexcept;
    ~IfcSelectBase();

    // Each replaces the value; the old one is released. vTypeDataSet takes the pointer over.
    void vClear() noexcept;
    void vEntitySet(Entity* pEntity) noexcept;
    void vStringSet(std::string sValue);
    void vTypeDataSet(TypeDataBase* pType) noexcept;

    [[nodiscard]] bool boEmpty() const noexcept { return !m_pTypeInfo; }
    // Null when the value is none of that sort.
    [[nodiscard]] Entity* pEntityGet() const noexcept;
    [[nodiscard]] const std::string* pStringGet() const noexcept;
    [[nodiscard]] const TypeDataBase* pTypeDataGet() const noexcept;
    template <class T>
    [[nodiscard]] const T* pValueGet() const noexcept {
        const auto* pData = dynamic_cast<const TypeData<T>*>(pTypeDataGet());
        return pData ? &pData->m_value : nullptr;
    }
    // typeid(Entity), typeid(std::string), typeid(TypeDataBase), or null for an empty value.
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
