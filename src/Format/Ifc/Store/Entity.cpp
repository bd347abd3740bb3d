// SPDX-License-Identifier: Apache-2.0
// The instance object: its blocks, its attributes by name and by position.
#include "Format/Ifc/IfcFileEntity.h"

#include <algorithm>
#include <memory>

#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcMissingType.h"
#include "Format/Ifc/Store/EntityBlocks.h"
#include "platform/Assert.h"

namespace oxa::ifc {

using def::schema::Attribute;
using def::schema::AttributeInverse;
using def::schema::AttributeName;

namespace {

constexpr char g_sEntitySource[] = "Format/Ifc/IfcFileEntity";

// Hashes are compared first, bytes only where they agree.
template <class List>
int iFind(const List& list, const AttributeName& name) noexcept {
    for (std::size_t i = 0; i < list.size(); ++i)
        if (list[i]->uNameHash == name.hash && list[i]->sName == name.name) return static_cast<int>(i);
    return -1;
}

// The position of an inverse attribute in the block of every type that has it: inverse attributes of supertypes
// come first, so a subtype does not move it. A faulty graph may name an owner that does not have it, or none.
std::size_t iPositionOf(const AttributeInverse& inverse) {
    if (!inverse.pOwner) return DataSizeEntity::Feed::g_iNone;
    const auto& all = inverse.pOwner->allInverseAttributes();
    const auto found = std::ranges::find(all, &inverse);
    return found == all.end() ? DataSizeEntity::Feed::g_iNone : static_cast<std::size_t>(found - all.begin());
}

// The layout of a type, made once and shared by all threads. Cells stand one behind the other in parameter order,
// without padding, so a walk over the values of an instance is one stream of memory; that is why cells hold unaligned
// values. For each attribute that inverse attributes are declared FOR it also notes whose list it feeds, and at which
// position of the inverse block: that position is the same in all subtypes of the owner, since inherited inverse
// attributes come first.
std::shared_ptr<const DataSizeEntity> pDataSizeBuild(const def::schema::Entity& schema) {
    auto pSize = std::make_shared<DataSizeEntity>();
    pSize->iInverses = static_cast<std::uint32_t>(schema.allInverseAttributes().size());
    for (const Attribute* pAttribute : schema.allAttributes()) {
        const def::schema::ObjectBase* pObject = pAttribute->pType();
        const CellClass eClass = AttributeBase::cellClass(pObject, *pAttribute);
        std::uint32_t iSize = 0;
        if (eClass < CellClass::Unresolved) {
            iSize = AttributeBase::iAttributeSizeFromSchemaAttribute(*pObject, *pAttribute);
        } else {
            Assert::vTell(g_sEntitySource, "oxa::ifc::Entity::getDataSize", "Schema error. Attribute not found.");
        }
        pSize->offsets.push_back(pSize->iSize);
        const AttributeType eItems =
            eClass == CellClass::List ? AttributeListValueBase::itemType(pObject) : AttributeType::Unknown;
        pSize->cells.push_back({pAttribute, pSize->iSize, eClass, pAttribute->boOptional, eItems});
        if (eClass == CellClass::Select || eClass == CellClass::List) pSize->outside.push_back(pSize->cells.back());
        if (eClass == CellClass::String) pSize->texts.push_back(pSize->cells.back());
        pSize->iSize += iSize;
    }
    for (const AttributeInverse* pInverse : schema.inverseTargets()) {
        if (!pInverse) continue;
        const auto fed = std::ranges::find(schema.allAttributes(), pInverse->sForAttribute, &Attribute::sName);
        const auto iCell = static_cast<std::size_t>(fed - schema.allAttributes().begin());
        pSize->feeds.push_back({fed == schema.allAttributes().end() ? DataSizeEntity::Feed::g_iNone : iCell,
                                pInverse->pOwner, iPositionOf(*pInverse)});
    }
    return pSize;
}

}   // namespace

const DataSizeEntity& Entity::dataSizeBuilt(const def::schema::Entity& schema) {
    return *schema.pDataSize.get([&schema] { return pDataSizeBuild(schema); });
}

Entity::Entity(Data& data, const def::schema::Entity& schema) { vFill(data, schema, true); }

const def::schema::Entity& Entity::schemaEntity() const {
    if (!m_pSchemaEntity) throw MissingType();
    return *m_pSchemaEntity;
}

void Entity::vFill(Data& data, const def::schema::Entity& schema, bool boInit) {
    if (m_pSchemaEntity) return;
    m_pSchemaEntity = &schema;
    m_pAttributes = nullptr;
    const DataSizeEntity* pSize =
        pBlocksAllocate(schema, [&data](std::size_t iBytes) { return data.pool().pAllocate(iBytes); });
    if (pSize && boInit) vCellsUndefined(*pSize, 0);
}

// With boInit the instance starts anew: fresh blocks, every cell undefined. The old blocks stay in the pool, readable
// as long as the model lives.
void Entity::vSchemaEntitySet(Data& data, const def::schema::Entity& schema, bool boInit) {
    if (!boInit) {
        m_pSchemaEntity = &schema;
        return;
    }
    m_pSchemaEntity = nullptr;
    vFill(data, schema, true);
}

void Entity::vCellsUndefined(const DataSizeEntity& size, std::size_t iFirst) {
    for (std::size_t i = iFirst; i < size.cells.size(); ++i) {
        const DataSizeEntity::Cell& cell = size.cells[i];
        AttributeBase::vAttributeUndefined(cell.eClass, static_cast<char*>(m_pAttributes) + cell.iOffset);
    }
}

bool Entity::boIsCompatible(const def::schema::Entity* pWanted) const noexcept {
    return def::schema::boIsSubtype(m_pSchemaEntity, pWanted);
}

int Entity::indexFromName(const AttributeName& name) const {
    return m_pAttributes ? iFind(schemaEntity().allAttributes(), name) : -1;
}

int Entity::inverseIndexFromName(const AttributeName& name) const {
    return m_pAttributes ? iFind(schemaEntity().allInverseAttributes(), name) : -1;
}

std::pair<const Attribute*, AttributeBase*> Entity::pAttributeFromIndex(unsigned iIndex) const {
    if (!m_pAttributes) return {nullptr, nullptr};
    const std::vector<DataSizeEntity::Cell>& cells = getDataSize(schemaEntity()).cells;
    if (iIndex >= cells.size()) return {nullptr, nullptr};
    const DataSizeEntity::Cell& cell = cells[iIndex];
    return {cell.pAttribute, reinterpret_cast<AttributeBase*>(static_cast<char*>(m_pAttributes) + cell.iOffset)};
}

Entity::Found Entity::find(const AttributeName& name) const {
    if (!m_pAttributes) return {};
    for (const DataSizeEntity::Cell& place : getDataSize(schemaEntity()).cells)
        if (place.pAttribute->uNameHash == name.hash && place.pAttribute->sName == name.name)
            return {&place, reinterpret_cast<AttributeBase*>(static_cast<char*>(m_pAttributes) + place.iOffset)};
    return {};
}

bool Entity::boIsUndefined(const AttributeName& name) const {
    const AttributeBase* pCell = find(name).pCell;
    return !pCell || pCell->m_boUndefined;
}

bool Entity::boIsDerived(const AttributeName& name) const {
    const AttributeBase* pCell = find(name).pCell;
    return !pCell || pCell->m_boDerived;
}

bool Entity::boUndefinedSet(const AttributeName& name, bool boUndefined) {
    const auto [pPlace, pCell] = find(name);
    if (!pCell) return false;
    if (boUndefined && !pPlace->pAttribute->boOptional) {
        Assert::vTell(g_sEntitySource, "oxa::ifc::Entity::boUndefinedSet",
                      "oxa::ifc::Entity::vUndefinedSet: This attribute is not optional");
        return false;
    }
    pCell->m_boUndefined = boUndefined;
    return true;
}

bool Entity::boDerivedSet(const AttributeName& name, bool boDerived) {
    AttributeBase* pCell = find(name).pCell;
    if (!pCell) return false;
    pCell->m_boDerived = boDerived;
    return true;
}

bool Entity::boForEachAttribute(std::function<bool(const Attribute&, const AttributeBase&)> fn) const {
    if (!m_pAttributes) return false;
    for (const DataSizeEntity::Cell& cell : getDataSize(schemaEntity()).cells)
        if (fn(*cell.pAttribute,
               *reinterpret_cast<const AttributeBase*>(static_cast<const char*>(m_pAttributes) + cell.iOffset)))
            return true;
    return false;
}

void Entity::sanityCheck() const {
    if (!m_pSchemaEntity) Assert::vTell(g_sEntitySource, "oxa::ifc::Entity::sanityCheck", "Missing schema entity");
}

}   // namespace oxa::ifc
