// SPDX-License-Identifier: Apache-2.0
// RelationRows: the tables relation and reference: who refers to whom, by relationships and by any attribute.
#include "Format/Ifc/IfcValueVisit.h"
#include "Tables/Rows.h"

namespace oxa::tables::detail {

using ifc::Entity;

namespace {

constexpr ColumnRow g_relationColumns[] = {
    g_fileColumn,
    {"id", Type::Integer, false, Lookup::Step, "the instance number of the relationship"},
    {"type", Type::Text, false, Lookup::Text, "its class, as in IfcRelAggregates"},
    {"from_id", Type::Integer, true, Lookup::None,
     "what its attribute Relating... names: the whole, the type, the set"},
    {"to_id", Type::Integer, true, Lookup::None, "what its attribute Related... names, a row each"},
};

constexpr ColumnRow g_referenceColumns[] = {
    g_fileColumn,
    {"from_id", Type::Integer, false, Lookup::Step, "the instance that refers"},
    {"attribute", Type::Text, false, Lookup::None, "the attribute, as in ObjectPlacement"},
    {"position", Type::Integer, false, Lookup::None, "from 0, among the references of the attribute"},
    {"to_id", Type::Integer, false, Lookup::None, "the instance that is referred to"},
};

// Calls tell(const Entity&) for each that an attribute refers to, in lists and selects too.
template <class Tell>
struct ReferenceVisitor {
    Tell& tell;
    void operator()(const Entity* pEntity) {
        if (pEntity && pEntity->pSchemaEntity()) tell(*pEntity);   // else the file does not define it
    }
    template <class Other>
    void operator()(const Other&) {}
};

template <class Tell>
void vReferencesTell(const CellPlace& place, Tell&& tell) {
    if (!place) return;
    ReferenceVisitor<Tell> visitor{tell};
    ifc::visitValues(*place.pCell, place.pAttribute->pType(), visitor);
}

class RelationRows final : public EntityRows {
public:
    using EntityRows::EntityRows;

private:
    void vRows(Entity& entity, Batch& batch) override {
        const schema::Entity& type = entity.schemaEntity();
        vGather(entity, type, "Relating", m_from);
        vGather(entity, type, "Related", m_to);
        for (const Entity* pFrom : m_from)
            for (const Entity* pTo : m_to) {
                RowWriter row(batch);
                row.vText(sFile());
                row.vNumberOf(context(), &entity);
                row.vText(type.sName);
                row.vNumberOf(context(), pFrom);
                row.vNumberOf(context(), pTo);
            }
    }

    // A side that names nothing is told as that.
    static void vGather(const Entity& entity, const schema::Entity& type, std::string_view prefix,
                        std::vector<const Entity*>& found) {
        found.clear();
        const auto& attributes = type.allAttributes();
        for (std::size_t i = 0; i < attributes.size(); ++i)
            if (attributes[i]->sName.starts_with(prefix))
                vReferencesTell(cellAt(entity, static_cast<int>(i)),
                                [&](const Entity& named) { found.push_back(&named); });
        if (found.empty()) found.push_back(nullptr);
    }

    std::vector<const Entity*> m_from;   // of one relationship; kept for their memory
    std::vector<const Entity*> m_to;
};

class ReferenceRows final : public EntityRows {
public:
    using EntityRows::EntityRows;

private:
    void vRows(Entity& entity, Batch& batch) override {
        const auto iCount = static_cast<int>(entity.schemaEntity().allAttributes().size());
        for (int i = 0; i < iCount; ++i) {
            std::int64_t iPosition = 0;
            const CellPlace place = cellAt(entity, i);
            vReferencesTell(place, [&](const Entity& named) {
                RowWriter row(batch);
                row.vText(sFile());
                row.vNumberOf(context(), &entity);
                row.vText(place.pAttribute->sName);
                row.vInteger(iPosition++);
                row.vNumberOf(context(), &named);
            });
        }
    }
};

// Relationships between objects, and those between resources such as materials, which IFC4 has beside them.
std::unique_ptr<RowMaker> pRelations(Context& context) {
    return std::make_unique<RelationRows>(context, context.all({"IfcRelationship", "IfcResourceLevelRelationship"}));
}

std::unique_ptr<RowMaker> pReferences(Context& context) {
    return std::make_unique<ReferenceRows>(context, context.state().all());
}

}   // namespace

extern const TableRow g_tableRelation{"relation", "Two instances that a relationship relates", g_relationColumns,
                                      pRelations};
extern const TableRow g_tableReference{"reference", "A reference from an instance to another, of any attribute",
                                       g_referenceColumns, pReferences};

}   // namespace oxa::tables::detail
