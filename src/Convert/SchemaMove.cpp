// SPDX-License-Identifier: Apache-2.0
// A model from one schema to another, in place: the entities stay the same objects, with new types and new cells.
//
// The old cells stay readable in the pool, and that is what the move lives on: it notes where they are, gives every
// entity its new type, and then copies value by value. All types change before the first value does, so a copied
// reference already tells whether its target fits.
#include "Convert/SchemaMove.h"

#include <cstring>
#include <map>
#include <optional>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "Format/Ifc/IfcCellVisit.h"
#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcFileEntity.h"

namespace oxa::convert {

namespace schema = ifc::def::schema;

namespace {

const schema::DataTypeSelect* pSelectOf(const schema::ObjectBase* pObject) {
    const schema::DataTypeBase* pDataType = schema::pDataTypeOf(pObject);
    return pDataType && pDataType->kind == schema::DataKind::Select
               ? static_cast<const schema::DataTypeSelect*>(pDataType)
               : nullptr;
}

bool boAggregate(const schema::ObjectBase* pObject) {
    const schema::DataTypeBase* pDataType = schema::pDataTypeOf(pObject);
    return pDataType && schema::boIsAggregate(pDataType->kind);
}

// Whether an entity may stand where this type is asked for.
bool boFits(const ifc::Entity& entity, const schema::ObjectBase* pObject) {
    if (const schema::DataTypeSelect* pSelect = pSelectOf(pObject))
        return pSelect->isCompatible(*entity.pSchemaEntity());
    return entity.boIsCompatible(schema::pAsEntity(pObject));
}

// What becomes of the entities of one type.
struct TypeMove {
    const schema::Entity* pOld = nullptr;
    const schema::Entity* pNew = nullptr;   // null: they are removed
    std::vector<int> newFromOld;            // for each attribute its place in the new type; -1 where it has none

    // The same name, or the nearest supertype that the target has; abstract ones hold no instances.
    TypeMove(const schema::Entity& type, const schema::Schema& target) : pOld(&type) {
        for (const schema::Entity* p = &type; p && !pNew; p = p->pParent) {
            pNew = target.pEntityFromName(schema::ObjectName(*p));
            if (pNew && pNew->boAbstract) pNew = nullptr;
        }
        if (!pNew) return;
        const auto& all = pNew->allAttributes();
        for (const schema::Attribute* pAttribute : type.allAttributes()) {
            newFromOld.push_back(-1);
            for (std::size_t i = 0; i < all.size(); ++i)
                if (all[i]->sName == pAttribute->sName) newFromOld.back() = static_cast<int>(i);
        }
    }
};

// Values of the new schema's attributes, once copied: takes out what the copy lets pass and the new schema does not
// have.
class Settle {
public:
    Settle(const schema::Schema& target, ifc::Pool& pool) : m_target(target), m_pool(pool) {}

    // The count of what had to go.
    std::size_t iCell(ifc::AttributeBase& cell, const schema::ObjectBase* pObject) {
        if (!cell.boHasValue()) return 0;
        if (const schema::DataTypeSelect* pSelect = pSelectOf(pObject))
            return iSelect(static_cast<ifc::AttributeSelect&>(cell), *pSelect);
        return boAggregate(pObject) ? iList(static_cast<ifc::AttributeListValueBase&>(cell), pObject) : 0;
    }

private:
    std::size_t iSelect(ifc::AttributeSelect& cell, const schema::DataTypeSelect& select) {
        const schema::Type* pOld = cell.m_pType;
        if (cell.m_eType.load() == ifc::AttributeType::Entity || !pOld) return 0;
        const schema::Type* pNew = m_target.pTypeFromName(schema::ObjectName(pOld->sNameUpper));
        if (pNew && pNew->pDataType && pNew->pDataType->kind == pOld->pDataType->kind && select.isCompatible(*pNew) &&
            boEnumerator(cell, *pNew->pDataType)) {
            cell.m_pType = pNew;
            return 0;
        }
        cell.m_boUndefined = true;
        return 1;
    }
    static bool boEnumerator(const ifc::AttributeSelect& cell, const schema::DataTypeBase& type) {
        if (type.kind != schema::DataKind::Enumeration) return true;
        const char* pText = static_cast<const ifc::AttributeEnumeration*>(cell.m_pValue.load())->m_value;
        return pText && static_cast<const schema::DataTypeEnum&>(type).items.contains(std::string_view(pText));
    }

    std::size_t iList(ifc::AttributeListValueBase& list, const schema::ObjectBase* pObject) {
        return ifc::visitItems(list,
                               ifc::Overloads{
                                   [&](ifc::Array<ifc::AttributeSelect>* pItems) { return iSelects(pItems, pObject); },
                                   [&](const ifc::EntityList* pItems) { return iEntities(pItems, list, pObject); },
                                   [&](ifc::Array<ifc::AttributeList>* pRows) {
                                       std::size_t iLost = 0;
                                       if (pRows)
                                           for (ifc::AttributeList& row : *pRows)
                                               iLost += iCell(row, pElementOf(pObject));
                                       return iLost;
                                   },
                                   [](ifc::AnyItems) { return std::size_t{0}; },
                               });
    }
    // Items without a value would be no list of the schema's: the others move up.
    std::size_t iSelects(ifc::Array<ifc::AttributeSelect>* pItems, const schema::ObjectBase* pObject) {
        const schema::DataTypeSelect* pSelect = pSelectOf(pElementOf(pObject));
        if (!pSelect || !pItems) return 0;
        std::size_t iKept = 0;
        for (std::size_t i = 0; i < pItems->size(); ++i) {
            ifc::AttributeSelect& item = (*pItems)[i];
            if (item.boHasValue() && iSelect(item, *pSelect)) continue;
            if (iKept != i) std::memcpy(static_cast<void*>(&(*pItems)[iKept]), &item, sizeof item);
            ++iKept;
        }
        const std::size_t iLost = pItems->size() - iKept;
        pItems->vCountSet(iKept);
        return iLost;
    }
    std::size_t iEntities(const ifc::EntityList* pHead, ifc::AttributeListValueBase& list,
                          const schema::ObjectBase* pObject) {
        std::vector<ifc::Entity*> kept;
        std::size_t iLost = 0;
        if (!pHead) return 0;
        for (ifc::Entity* pEntity : *pHead)
            if (pEntity && boFits(*pEntity, pElementOf(pObject)))
                kept.push_back(pEntity);
            else
                ++iLost;
        if (iLost) list.boValueSet(kept, pObject, m_pool);
        return iLost;
    }

    const schema::Schema& m_target;
    ifc::Pool& m_pool;
};

class Mover {
public:
    Mover(ifc::FileBase& file, const ifc::def::SchemaPset& target)
        : m_file(file),
          m_data(file.dataBase()),
          m_target(target) {}

    SchemaMove run() {
        vEntitiesGather();
        vTypesChange();
        // From here on every entity is of the new schema, in its old place, and without a value.
        for (const Moved& moved : m_moved) vValuesMove(moved);
        for (const Moved& moved : m_moved) moved.pEntity->vAttributeInverseInit(m_data);
        return {rows(m_removed), rows(m_became), rows(m_lost), rows(m_missing)};
    }

private:
    struct Moved {
        ifc::Entity* pEntity;
        const TypeMove* pMove;
        const char* pCells;   // of the old type; null where it has no attributes
    };
    using Counts = std::map<std::pair<std::string_view, std::string_view>, std::size_t>;

    static std::vector<SchemaMove::Row> rows(const Counts& counts) {
        std::vector<SchemaMove::Row> rows;
        for (const auto& [names, iCount] : counts)
            rows.push_back({std::string(names.first), std::string(names.second), iCount});
        return rows;
    }

    void vEntitiesGather() {
        for (ifc::Entity* pEntity : m_data.entities()) {
            const schema::Entity* pType = pEntity->pSchemaEntity();
            if (!pType) continue;
            const TypeMove& move = m_types.try_emplace(pType, *pType, m_target).first->second;
            if (!move.pNew)
                ++m_removed[{pType->sNameUpper, {}}];
            else if (move.pNew->sNameUpper != pType->sNameUpper)
                ++m_became[{pType->sNameUpper, move.pNew->sNameUpper}];
            m_moved.push_back({pEntity, &move, static_cast<const char*>(pEntity->unsafeAttributesRaw())});
        }
    }

    // The container lets go of all entities, gets the new schema, and takes those that have a type in it again: so
    // their order is that of the new schema.
    void vTypesChange() {
        for (const Moved& moved : m_moved) moved.pEntity->unsafeSetSchemaEntity(nullptr);
        m_data.deleteIncompleteEntities();
        std::erase_if(m_moved, [](const Moved& moved) { return !moved.pMove->pNew; });
        m_file.vSchemaSet(m_target);
        for (const Moved& moved : m_moved) {
            moved.pEntity->vSchemaEntitySet(m_data, *moved.pMove->pNew, true);
            m_data.entityAdd(moved.pEntity);
        }
    }

    void vValuesMove(const Moved& moved) {
        const TypeMove& move = *moved.pMove;
        std::vector<bool> had(move.pNew->allAttributes().size());   // a value to be moved, whether or not it arrived
        if (moved.pCells) {
            const auto& cells = ifc::Entity::getDataSize(*move.pOld).cells;
            for (std::size_t i = 0; i < cells.size(); ++i) {
                if (cells[i].eClass >= ifc::CellClass::Unresolved) continue;
                const auto& source = *reinterpret_cast<const ifc::AttributeBase*>(moved.pCells + cells[i].iOffset);
                const int iNew = move.newFromOld[i];
                const std::size_t iLost =
                    iNew < 0 ? std::size_t{source.boHasValue()}
                             : iValueMove(source, *cells[i].pAttribute, *moved.pEntity, static_cast<unsigned>(iNew));
                if (iLost) m_lost[{move.pOld->sNameUpper, cells[i].pAttribute->sName}] += iLost;
                if (iNew >= 0) had[static_cast<std::size_t>(iNew)] = source.boHasValue();
            }
        }
        for (std::size_t i = 0; i < had.size(); ++i) {
            const auto [pAttribute, pCell] = moved.pEntity->pAttributeFromIndex(static_cast<unsigned>(i));
            if (!pAttribute || had[i] || pAttribute->boOptional || !pAttribute->pType()) continue;
            if (pCell->m_boUndefined) ++m_missing[{move.pNew->sNameUpper, pAttribute->sName}];
        }
    }

    // The count of what did not arrive.
    std::size_t iValueMove(const ifc::AttributeBase& source, const schema::Attribute& attribute, ifc::Entity& entity,
                           unsigned iNew) {
        const auto [pDestination, pTarget] = entity.pAttributeFromIndex(iNew);
        if (!pDestination || !pDestination->pType()) return source.boHasValue();
        std::size_t iLost = 0;
        const auto mapEntity = [&iLost](ifc::Entity* pEntity) {
            if (!pEntity || pEntity->pSchemaEntity()) return pEntity;
            ++iLost;
            return static_cast<ifc::Entity*>(nullptr);
        };
        // Only a value is refused once the flags are copied: the target is not derived.
        if (!boCopy(source, attribute, *pTarget, *pDestination, mapEntity)) pTarget->m_boUndefined = true;
        iLost += Settle(m_target, m_data.pool()).iCell(*pTarget, pDestination->pType());
        if (source.boHasValue() && !pTarget->boHasValue() && !iLost) iLost = 1;
        return iLost;
    }

    // As AttributeBase::copyTo, with the two neighbours of its kinds that the published schemas differ by.
    bool boCopy(const ifc::AttributeBase& source, const schema::Attribute& attribute, ifc::AttributeBase& target,
                const schema::Attribute& destination, const ifc::AttributeBase::MapEntity& mapEntity) {
        const schema::ObjectBase* pFrom = attribute.pType();
        const schema::ObjectBase* pTo = destination.pType();
        const auto mapType = [this](const schema::Type* pType) {
            return m_target.pTypeFromName(schema::ObjectName(pType->sNameUpper));
        };
        if (schema::pAsEntity(pTo) && pSelectOf(pFrom) && source.boHasValue()) {
            const auto& select = static_cast<const ifc::AttributeSelect&>(source);
            const auto* pValue = static_cast<const ifc::AttributeEntity*>(select.m_pValue.load());
            return pValue && select.m_eType.load() == ifc::AttributeType::Entity &&
                   pValue->copyTo(static_cast<ifc::AttributeEntity&>(target), destination, m_data, mapEntity);
        }
        if (boAggregate(pFrom) && boAggregate(pTo))
            return static_cast<const ifc::AttributeListValueBase&>(source).copyTo(
                static_cast<ifc::AttributeListValueBase&>(target), pTo, m_data, mapEntity, mapType);
        return source.copyTo(target, attribute, destination, m_data, mapEntity, mapType);
    }

    ifc::FileBase& m_file;
    ifc::Data& m_data;
    const ifc::def::SchemaPset& m_target;
    std::unordered_map<const schema::Entity*, TypeMove> m_types;
    std::vector<Moved> m_moved;
    Counts m_removed;
    Counts m_became;
    Counts m_lost;
    Counts m_missing;
};

}   // namespace

SchemaMove moveToSchema(ifc::FileBase& file, const ifc::def::SchemaPset& target) {
    if (!file.dataBase().pSchema() || file.dataBase().pSchema() == &target) return {};
    return Mover(file, target).run();
}

}   // namespace oxa::convert
