// SPDX-License-Identifier: Apache-2.0
// IfcSelectBase owns what it points to, save an entity: a text, or a typed value behind a base class. The type_info
// beside the union says which, so that copies, moves and the destructor know what to do.
#include "Format/Ifc/IfcTypeSelectBase.h"

#include <utility>

#include "Format/Ifc/IfcFileEntity.h"
#include "platform/Assert.h"

namespace oxa::ifc::types {

IfcSelectBase::TypeDataBase::~TypeDataBase() = default;

const def::schema::Type* IfcSelectBase::TypeDataBase::pTypeGet() const noexcept { return m_pType; }

const char* IfcSelectBase::TypeDataBase::pTypeNameGet() const noexcept { return m_pType ? m_pType->sName.c_str() : ""; }

IfcSelectBase::IfcSelectBase(Entity* pEntity) noexcept { vEntitySet(pEntity); }

IfcSelectBase::IfcSelectBase(std::string sValue) { vStringSet(std::move(sValue)); }

IfcSelectBase::IfcSelectBase(const IfcSelectBase& other) {
    if (const std::string* pString = other.pStringGet())
        m_uValue.pString = new std::string(*pString);
    else if (const TypeDataBase* pType = other.pTypeDataGet())
        m_uValue.pType = pType->pClone();
    else
        m_uValue = other.m_uValue;
    m_pTypeInfo = other.m_pTypeInfo;
}

IfcSelectBase::IfcSelectBase(IfcSelectBase&& other) noexcept
    : m_pTypeInfo(std::exchange(other.m_pTypeInfo, nullptr)),
      m_uValue(std::exchange(other.m_uValue, Value{})) {}

IfcSelectBase& IfcSelectBase::operator=(IfcSelectBase other) noexcept {
    std::swap(m_pTypeInfo, other.m_pTypeInfo);
    std::swap(m_uValue, other.m_uValue);
    return *this;
}

IfcSelectBase::~IfcSelectBase() { vClear(); }

void IfcSelectBase::vClear() noexcept {
    const auto check = [](bool boHolds, const char* sText) {
        if (!boHolds) Assert::vTell("Format/Ifc/IfcTypeSelectBase", "oxa::ifc::types::IfcSelectBase::vClear", sText);
    };
    if (m_pTypeInfo && *m_pTypeInfo == typeid(std::string)) {
        check(m_uValue.pString, "!(*m_pTypeInfo == typeid(std::string) && m_uValue.pString == nullptr)");
        delete m_uValue.pString;
    } else if (m_pTypeInfo && *m_pTypeInfo == typeid(TypeDataBase)) {
        check(m_uValue.pType, "!(*m_pTypeInfo == typeid(TypeDataBase) && m_uValue.pType == nullptr)");
        delete m_uValue.pType;
    }
    m_pTypeInfo = nullptr;
    m_uValue = Value{};
}

void IfcSelectBase::vEntitySet(Entity* pEntity) noexcept {
    vClear();
    m_pTypeInfo = &typeid(Entity);
    m_uValue.pEntity = pEntity;
}

// The new text first: a lack of memory leaves the value as it was.
void IfcSelectBase::vStringSet(std::string sValue) {
    auto* pString = new std::string(std::move(sValue));
    vClear();
    m_pTypeInfo = &typeid(std::string);
    m_uValue.pString = pString;
}

void IfcSelectBase::vTypeDataSet(TypeDataBase* pType) noexcept {
    vClear();
    m_pTypeInfo = &typeid(TypeDataBase);
    m_uValue.pType = pType;
}

Entity* IfcSelectBase::pEntityGet() const noexcept {
    return m_pTypeInfo && *m_pTypeInfo == typeid(Entity) ? m_uValue.pEntity : nullptr;
}

const std::string* IfcSelectBase::pStringGet() const noexcept {
    return m_pTypeInfo && *m_pTypeInfo == typeid(std::string) ? m_uValue.pString : nullptr;
}

const IfcSelectBase::TypeDataBase* IfcSelectBase::pTypeDataGet() const noexcept {
    return m_pTypeInfo && *m_pTypeInfo == typeid(TypeDataBase) ? m_uValue.pType : nullptr;
}

}   // namespace oxa::ifc::types
