// SPDX-License-Identifier: Apache-2.0
// Changes of a model, with everything that has to change along: inverse lists, GlobalIds, numbers.
#include <algorithm>
#include <cstdint>
#include <limits>
#include <new>
#include <string>
#include <variant>

#include "Format/Ifc/IfcFileAttribute.h"
#include "Model/Error.h"
#include "Model/ModelState.h"
#include "Model/Names.h"
#include "Model/ValueCheck.h"
#include "Model/ValueStore.h"

namespace oxa::detail {

namespace schema = ifc::def::schema;
using ifc::Entity;

namespace {

// Position of the GlobalId among the attributes of a type; g_iNoName where it has none.
std::size_t iGuidCell(const schema::Entity& type) {
    const auto& cells = Entity::getDataSize(type).cells;
    const auto found = std::ranges::find(cells, ifc::CellClass::Guid, &ifc::DataSizeEntity::Cell::eClass);
    return found == cells.end() ? g_iNoName : static_cast<std::size_t>(found - cells.begin());
}

// The inverse lists that one attribute of an instance feeds: an entry stands for each reference.
class InverseLists {
public:
    InverseLists(ifc::Data& data, Entity& entity, std::size_t iAttribute) : m_data(data), m_entity(entity) {
        for (const auto& feed : Entity::getDataSize(entity.schemaEntity()).feeds)
            if (feed.iCell == iAttribute && feed.iPosition != ifc::DataSizeEntity::Feed::g_iNone)
                m_lists.push_back(feed.pOwner->allInverseAttributes()[feed.iPosition]);
    }

    [[nodiscard]] bool empty() const noexcept { return m_lists.empty(); }
    void vAdd(Entity& target) {
        for (const schema::AttributeInverse* pInverse : m_lists)
            if (target.boIsCompatible(pInverse->pOwner))
                target.vEntityInverseAdd(m_data, &m_entity, schema::AttributeName(*pInverse));
    }
    void vRemove(Entity& target) {
        for (const schema::AttributeInverse* pInverse : m_lists)
            if (target.boIsCompatible(pInverse->pOwner))
                target.boEntityInverseRemove(m_data, &m_entity, schema::AttributeName(*pInverse));
    }

private:
    ifc::Data& m_data;
    Entity& m_entity;
    std::vector<const schema::AttributeInverse*> m_lists;
};

[[noreturn]] void vAbstractRefuse(const schema::Entity& type) {
    std::string sText = type.sName + " is abstract";
    const char* pBefore = "; its subtypes are: ";
    for (const schema::Entity* pSubtype : type.subtypes) {
        sText += pBefore + pSubtype->sName;
        pBefore = ", ";
    }
    throw ValueError(sText);
}

}   // namespace

Value ModelState::valueOf(Entity& entity, std::size_t iAttribute) const {
    const auto [pAttribute, pCell] = entity.pAttributeFromIndex(static_cast<unsigned>(iAttribute));
    return {elementOf(&entity), *pAttribute, *pCell};
}

std::vector<Entity*> ModelState::namedBy(Entity& entity, std::size_t iAttribute) const {
    std::vector<Entity*> entities;
    valueOf(entity, iAttribute).elementsAdd(entities);
    return entities;
}

// The instance stands apart until all its values are in: who throws leaves only some bytes behind.
Entity& ModelState::create(const schema::Entity& type, std::span<const Field> fields) {
    if (type.boAbstract) vAbstractRefuse(type);
    if (!m_boRoom || (!m_numbered.empty() && m_numbered.back().first >= std::numeric_limits<std::uint32_t>::max()))
        throw ValueError(
            "no number is left above that of the last element; OpenOptions::keepNumbers = false makes room");
    auto* pEntity = ::new (data().pool().pAllocateAligned(sizeof(Entity))) Entity(data(), type);
    vDerive(*pEntity);
    for (const Field& field : fields) {
        const std::size_t iIndex = iAttribute(type, field.name);
        vValueStore(*this, *pEntity, iIndex, field.value, type.sName + ": " + type.allAttributes()[iIndex]->sName);
    }
    vGuidDeal(*pEntity);
    vAdd(*pEntity);
    return *pEntity;
}

void ModelState::vGuidDeal(Entity& entity) {
    const std::size_t iCell = iGuidCell(entity.schemaEntity());
    if (iCell == g_iNoName || entity.pAttributeFromIndex(static_cast<unsigned>(iCell)).second->boHasValue()) return;
    entity.boValueSet(schema::AttributeName(*entity.schemaEntity().allAttributes()[iCell]), Guid::generate(), data());
}

void ModelState::vAdd(Entity& entity) {
    ++m_uChanges;
    data().entityAdd(&entity);
    m_numbered.emplace_back(iNumberOf(entity), &entity);
    entity.vAttributeInverseInit(data());
    static_cast<void>(data().pEntityFromGuid({}));   // enters its GlobalId, which a look-up has no right to do later
}

void ModelState::vSet(Entity& entity, std::string_view name, const NewValue& value) {
    ++m_uChanges;
    const schema::Entity& type = entity.schemaEntity();
    const std::size_t iIndex = iAttribute(type, name);
    const std::string sWhere = sNameOf(entity) + ": " + type.allAttributes()[iIndex]->sName;
    if (iIndex == iGuidCell(type) && std::holds_alternative<std::string>(value.content())) {
        const Guid guid = ValueCheck(*this, sWhere).guid(value, type.allAttributes()[iIndex]->types.front(), entity);
        if (data().boGuidSet(entity, guid)) return;   // else its type is not rooted
    }
    InverseLists lists(data(), entity, iIndex);
    if (lists.empty()) return vValueStore(*this, entity, iIndex, value, sWhere);
    const std::vector<Entity*> before = namedBy(entity, iIndex);
    vValueStore(*this, entity, iIndex, value, sWhere);
    for (Entity* pTarget : before) lists.vRemove(*pTarget);
    for (Entity* pTarget : namedBy(entity, iIndex)) lists.vAdd(*pTarget);
}

// A reference goes to the end of its list as it stands; all else is a new list.
void ModelState::vAppend(Entity& entity, std::string_view name, const NewValue& item) {
    ++m_uChanges;
    const std::size_t iIndex = iAttribute(entity.schemaEntity(), name);
    const schema::Attribute& attribute = *entity.schemaEntity().allAttributes()[iIndex];
    const schema::ObjectBase* pType = attribute.types.empty() ? nullptr : attribute.types.front();
    const Value value = valueOf(entity, iIndex);
    if (value.kind() != Kind::List || !schema::pAsEntity(pElementOf(pType))) {
        NewValue::List items;
        if (value.kind() == Kind::List) items = std::get<NewValue::List>(NewValue(value).content());
        items.push_back(item);
        return vSet(entity, name, NewValue(items));
    }
    const ValueCheck check(*this, sNameOf(entity) + ": " + attribute.sName);
    Entity* pItem = check.pEntity(item, pElementOf(pType));
    check.vAppendCheck(namedBy(entity, iIndex), *pItem, pType);
    static_cast<void>(entity.boValuePushBack(schema::AttributeName(attribute), pItem, data()));
    InverseLists(data(), entity, iIndex).vAdd(*pItem);
}

ifc::EntityRemoval ModelState::remove(const std::vector<Entity*>& entities) {
    ++m_uChanges;
    ifc::EntityRemoval removal = data().entitiesRemove(entities);
    for (Entity* pEntity : removal.removed) {
        m_removed.insert_or_assign(pEntity, Name{pEntity->pSchemaEntity(), iNumberOf(*pEntity)});
        pEntity->unsafeSetSchemaEntity(nullptr);
    }
    return removal;
}

}   // namespace oxa::detail
