// SPDX-License-Identifier: Apache-2.0
#include "Model/ValueStore.h"

#include <new>
#include <set>
#include <utility>

#include "Format/Ifc/IfcFileAttribute.h"
#include "Format/Ifc/IfcTypeSelectBase.h"
#include "Model/Error.h"
#include "Model/ValueCheck.h"

namespace oxa::detail {

namespace schema = ifc::def::schema;
using ifc::types::IfcSelectBase;
using schema::DataKind;
using schema::ObjectBase;

namespace {

// A select's value, checked. What IfcSelectBase has no place for stands beside it.
struct SelectValue {
    IfcSelectBase value;
    const schema::Type* pType = nullptr;
    const Bytes* pBinary = nullptr;
};

class Store {
public:
    Store(ModelState& state, ifc::Entity& entity, std::size_t iAttribute, const std::string& sWhere)
        : m_data(state.data()),
          m_entity(entity),
          m_attribute(*entity.schemaEntity().allAttributes()[iAttribute]),
          m_name(m_attribute),
          m_cell(*entity.pAttributeFromIndex(static_cast<unsigned>(iAttribute)).second),
          m_pType(m_attribute.types.empty() ? nullptr : m_attribute.types.front()),
          m_boDerives(boDerives(entity.schemaEntity(), iAttribute)),
          m_check(state, sWhere) {}

    void vSet(const NewValue& value) {
        if (std::holds_alternative<Derived>(value.content())) return vDerive();
        if (std::holds_alternative<std::monostate>(value.content())) return vClear();
        if (m_boDerives || m_cell.m_boDerived) m_check.vRefuse("is derived from other attributes");
        if (!value.typeName().empty() && !boSelect(m_pType) && !boOneOfList(value) &&
            schema::sUpper(value.typeName()) != typeNameUpper())
            m_check.vRefuse("takes " + schema::sTypeText(m_pType) + ", not " + value.typeName());
        if (!boStored(value)) m_check.vWrongKind(value, m_pType);
        m_cell.vDefined();
    }

private:
    [[nodiscard]] std::string_view typeNameUpper() const {
        return m_pType ? std::string_view(m_pType->sNameUpper) : std::string_view();
    }

    static bool boSelect(const ObjectBase* pType) {
        const schema::DataTypeBase* pDataType = schema::pDataTypeOf(pType);
        return pDataType && pDataType->kind == DataKind::Select;
    }
    // Braces around one typed() are that value itself to the language, where they mean a list of it here.
    [[nodiscard]] bool boOneOfList(const NewValue& value) const {
        const schema::DataTypeBase* pDataType = schema::pDataTypeOf(m_pType);
        return dynamic_cast<const schema::DataTypeAggregate*>(pDataType) && boSelect(pElementOf(m_pType)) &&
               !value.typeName().empty() && !std::holds_alternative<NewValue::List>(value.content());
    }

    void vDerive() {
        if (!m_boDerives) m_check.vRefuse("is not derived from other attributes");
        m_cell.m_boDerived = true;
        m_cell.m_boUndefined = false;
    }
    void vClear() {
        if (!m_attribute.boOptional && m_cell.boHasValue()) m_check.vRefuse("is mandatory");
        if (!m_cell.m_boDerived) m_cell.m_boUndefined = true;
    }

    template <class T>
    bool boPut(const T& value) {
        return m_entity.boValueSet(m_name, value, m_data);
    }
    template <class T>
    bool boPutList(const std::vector<T>& values) {
        return m_entity.boListValueSet(m_name, values, m_data);
    }

    bool boStored(const NewValue& value) {
        if (schema::pAsEntity(m_pType)) return boPut<const ifc::Entity*>(m_check.pEntity(value, m_pType));
        const schema::DataTypeBase* pDataType = schema::pDataTypeOf(m_pType);
        if (!pDataType) return false;
        switch (pDataType->kind) {
        case DataKind::Real:
        case DataKind::Number: return boPut(m_check.number(value, m_pType));
        case DataKind::Integer: return boPut(m_check.iInteger(value, m_pType));
        case DataKind::Boolean: return boPut(m_check.boTruth(value, m_pType));
        case DataKind::Logical: return boPut(m_check.logical(value, m_pType));
        case DataKind::String:
            if (m_cell.m_boGuid) return boPut(m_check.guid(value, m_pType, m_entity));
            return boPut(m_check.sText(value, m_pType));
        case DataKind::Binary: return boPut(m_check.binary(value, m_pType));
        case DataKind::Enumeration: return boPut(m_check.sEnumerator(value, m_pType).c_str());
        case DataKind::Select:
            return boSelectPut(static_cast<ifc::AttributeSelect&>(m_cell), selectValue(value, m_pType));
        case DataKind::Array:
        case DataKind::List:
        case DataKind::Set: return boAggregateStored(value);
        }
        return false;
    }

    bool boAggregateStored(const NewValue& value) {
        if (!boOneOfList(value)) return boListStored(m_check.list(value, m_pType), pElementOf(m_pType));
        const NewValue list(NewValue::List{value});
        return boListStored(m_check.list(list, m_pType), pElementOf(m_pType));
    }

    // Each item by "read", which takes it and its type.
    template <class T, class Read>
    static std::vector<T> listOf(const NewValue::List& items, const ObjectBase* pElement, Read&& read) {
        std::vector<T> values;
        values.reserve(items.size());
        for (const NewValue& item : items) values.push_back(read(item, pElement));
        return values;
    }

    // The readers of items.
    auto numbers() const {
        return [this](const NewValue& item, const ObjectBase* pType) { return m_check.number(item, pType); };
    }
    auto integers() const {
        return [this](const NewValue& item, const ObjectBase* pType) { return m_check.iInteger(item, pType); };
    }
    auto entities() const {
        return [this](const NewValue& item, const ObjectBase* pType) { return m_check.pEntity(item, pType); };
    }

    bool boListStored(const NewValue::List& items, const ObjectBase* pElement) {
        if (schema::pAsEntity(pElement)) return boPutList(listOf<const ifc::Entity*>(items, pElement, entities()));
        const schema::DataTypeBase* pItem = schema::pDataTypeOf(pElement);
        if (!pItem) return false;
        switch (pItem->kind) {
        case DataKind::Real: return boPutList(listOf<double>(items, pElement, numbers()));
        case DataKind::Integer: return boPutList(listOf<long long>(items, pElement, integers()));
        case DataKind::String:
            return boPutList(listOf<std::string>(
                items, pElement, [this](const auto& item, const auto* pType) { return m_check.sText(item, pType); }));
        case DataKind::Binary:
            return boPutList(listOf<Bytes>(
                items, pElement, [this](const auto& item, const auto* pType) { return m_check.binary(item, pType); }));
        case DataKind::Select: return boSelectsStored(items, pElement);
        case DataKind::Array:
        case DataKind::List:
        case DataKind::Set: return boRowsStored(items, pElement);
        case DataKind::Boolean:
        case DataKind::Number:
        case DataKind::Logical:
        case DataKind::Enumeration: break;   // no list holds them
        }
        return false;
    }

    template <class T, class Read>
    bool boPutRows(const NewValue::List& rows, const ObjectBase* pRow, Read&& read) {
        return boPutList(listOf<std::vector<T>>(rows, pRow, [&](const NewValue& row, const ObjectBase*) {
            return listOf<T>(m_check.list(row, pRow), pElementOf(pRow), read);
        }));
    }

    bool boRowsStored(const NewValue::List& rows, const ObjectBase* pRow) {
        const schema::DataTypeBase* pItem = schema::pDataTypeOf(pElementOf(pRow));
        if (schema::pAsEntity(pElementOf(pRow))) return boPutRows<const ifc::Entity*>(rows, pRow, entities());
        if (pItem && pItem->kind == DataKind::Real) return boPutRows<double>(rows, pRow, numbers());
        return pItem && pItem->kind == DataKind::Integer && boPutRows<long long>(rows, pRow, integers());
    }

    SelectValue selectValue(const NewValue& value, const ObjectBase* pSelect) const {
        SelectValue result;
        result.pType = m_check.pTypeOf(value, pSelect);
        const schema::Type* pType = result.pType;
        if (!pType) {
            result.value = IfcSelectBase(m_check.pEntity(value, pSelect));
            return result;
        }
        switch (pType->pDataType->kind) {
        case DataKind::Real:
        case DataKind::Number: result.value = {pType, m_check.number(value, pType)}; break;
        case DataKind::Integer: result.value = {pType, m_check.iInteger(value, pType)}; break;
        case DataKind::Boolean: result.value = {pType, m_check.boTruth(value, pType)}; break;
        case DataKind::Logical: result.value = {pType, m_check.logical(value, pType)}; break;
        case DataKind::String: result.value = {pType, m_check.sText(value, pType)}; break;
        case DataKind::Enumeration: result.value = {pType, m_check.sEnumerator(value, pType).c_str()}; break;
        case DataKind::Binary: result.pBinary = &m_check.binary(value, pType); break;
        case DataKind::Array:
        case DataKind::List:
        case DataKind::Set: result.value = selectList(value, *pType); break;
        case DataKind::Select: m_check.vWrongKind(value, pType);
        }
        return result;
    }

    IfcSelectBase selectList(const NewValue& value, const schema::Type& type) const {
        const NewValue::List& items = m_check.list(value, &type);
        const ObjectBase* pElement = pElementOf(&type);
        const schema::DataTypeBase* pItem = schema::pDataTypeOf(pElement);
        if (schema::pAsEntity(pElement)) {
            const auto all = listOf<ifc::Entity*>(items, pElement, entities());
            return {&type, std::set<ifc::Entity*>(all.begin(), all.end())};
        }
        if (pItem && pItem->kind == DataKind::Integer) return {&type, listOf<long long>(items, pElement, integers())};
        if (pItem && pItem->kind == DataKind::Real) return {&type, listOf<double>(items, pElement, numbers())};
        m_check.vWrongKind(value, &type);
    }

    // With the type of the value, which says what the items of a list inside are; that of the attribute does not.
    bool boSelectPut(ifc::AttributeSelect& select, const SelectValue& value) {
        if (!value.pBinary) return select.boValueSet(value.value, value.pType, m_data.pool());
        auto* pCell = ::new (m_data.pool().pAllocate(sizeof(ifc::AttributeBinary))) ifc::AttributeBinary;
        pCell->boValueSet(value.pBinary->data(), value.pBinary->size(), m_data.pool());
        select.m_pValue = pCell;
        select.m_eType = ifc::AttributeType::Binary;
        select.m_pType = value.pType;
        return true;
    }

    bool boSelectsStored(const NewValue::List& items, const ObjectBase* pElement) {
        const auto values = listOf<SelectValue>(
            items, pElement, [this](const auto& item, const auto* pSelect) { return selectValue(item, pSelect); });
        auto& list = static_cast<ifc::AttributeList&>(m_cell);
        // First the room for them: empty values, which are stored nowhere.
        if (!boPutList(std::vector<IfcSelectBase>(values.size()))) return false;
        if (list.m_eItemType.load() == ifc::AttributeType::Entity) {   // a select of entities alone
            std::vector<const ifc::Entity*> all;
            for (const SelectValue& value : values) all.push_back(value.value.pEntityGet());
            return boPutList(all);
        }
        ifc::Array<ifc::AttributeSelect>& cells = *list.pArray<ifc::AttributeSelect>();
        for (std::size_t i = 0; i < values.size(); ++i) {
            cells[i].m_boPooled = true;
            cells[i].vDefined();
            if (!boSelectPut(cells[i], values[i])) return false;
        }
        return true;
    }

    ifc::Data& m_data;
    ifc::Entity& m_entity;
    const schema::Attribute& m_attribute;
    schema::AttributeName m_name;
    ifc::AttributeBase& m_cell;
    const ObjectBase* m_pType;
    bool m_boDerives;
    ValueCheck m_check;
};

}   // namespace

bool boDerives(const schema::Entity& type, std::size_t iAttribute) {
    const schema::Attribute* const pAttribute = type.allAttributes()[iAttribute];
    for (const schema::Entity* pType = &type; pType; pType = pType->pParent)
        for (const schema::Redeclaration& again : pType->redeclared)
            if (again.pAttribute == pAttribute) return again.boDerived;
    return false;
}

void vDerive(ifc::Entity& entity) {
    for (std::size_t i = 0; i < entity.schemaEntity().allAttributes().size(); ++i) {
        if (!boDerives(entity.schemaEntity(), i)) continue;
        ifc::AttributeBase& cell = *entity.pAttributeFromIndex(static_cast<unsigned>(i)).second;
        cell.m_boDerived = true;
        cell.m_boUndefined = false;
    }
}

void vValueStore(ModelState& state, ifc::Entity& entity, std::size_t iAttribute, const NewValue& value,
                 const std::string& sWhere) {
    Store(state, entity, iAttribute, sWhere).vSet(value);
}

}   // namespace oxa::detail
