// SPDX-License-Identifier: Apache-2.0
// ElementRows: the tables of objects and of what stands at them: element, storey, material, classification.
#include "Model/Relations.h"
#include "Tables/Cells.h"
#include "Tables/Rows.h"

namespace oxa::tables::detail {

using ifc::Entity;
using oxa::detail::Class;

namespace {

const char* sourceWord(Source eSource) { return eSource == Source::Type ? "type" : "instance"; }

// element

constexpr ColumnRow g_elementColumns[] = {
    g_fileColumn,
    {"id", Type::Integer, false, Lookup::Step, "the instance number"},
    {"guid", Type::Text, true, Lookup::Text, "the GlobalId, 22 characters"},
    {"type", Type::Text, false, Lookup::Text, "the class, as in IfcWall"},
    {"predefined_type", Type::Text, true, Lookup::None, "PredefinedType, as in SOLIDWALL"},
    {"name", Type::Text, true, Lookup::Text, "Name"},
    {"description", Type::Text, true, Lookup::None, "Description"},
    {"object_type", Type::Text, true, Lookup::None, "ObjectType; of a type ElementType or what else it calls it"},
    {"tag", Type::Text, true, Lookup::None, "Tag"},
    {"type_id", Type::Integer, true, Lookup::None, "the type object"},
    {"container_id", Type::Integer, true, Lookup::None, "the nearest spatial element above"},
    {"storey_id", Type::Integer, true, Lookup::None, "the nearest storey above"},
    {"parent_id", Type::Integer, true, Lookup::None,
     "one step up: the whole, else the spatial element, else the element that an opening voids, or the opening"},
};

class ElementRows final : public EntityRows {
public:
    using EntityRows::EntityRows;

private:
    void vRows(Entity& entity, Batch& batch) override {
        const schema::Entity& type = entity.schemaEntity();
        const std::vector<int>& places = m_places.of(type);
        RowWriter row(batch);
        row.vText(sFile());
        row.vNumberOf(context(), &entity);
        row.vTextOrNull(row.boWanted() ? sGuidOf(entity) : std::string());
        row.vText(type.sName);
        row.vTextOrNull(pTextAt(entity, places[0]));
        row.vTextOrNull(pTextAt(entity, places[1]));
        row.vTextOrNull(pTextAt(entity, places[2]));
        const char* pObjectType = nullptr;
        for (std::size_t i = 4; i < places.size() && !pObjectType; ++i) pObjectType = pTextAt(entity, places[i]);
        row.vTextOrNull(pObjectType);
        row.vTextOrNull(pTextAt(entity, places[3]));
        row.vNumberOf(context(), row.boWanted() ? context().pType(entity) : nullptr);
        const ColumnData* pPlacement = &batch.columns()[10];
        const bool boPlacement = pPlacement[0].wanted() || pPlacement[1].wanted() || pPlacement[2].wanted();
        const Placement placement = boPlacement ? context().placement(entity) : Placement();
        row.vNumberOf(context(), placement.pContainer);
        row.vNumberOf(context(), placement.pStorey);
        row.vNumberOf(context(), placement.pParent);
    }

    AttributePlaces m_places{
        {"PredefinedType", "Name", "Description", "Tag", "ObjectType", "ElementType", "ProcessType", "ResourceType"}};
};

// storey

constexpr ColumnRow g_storeyColumns[] = {
    g_fileColumn,
    {"id", Type::Integer, false, Lookup::Step, "the instance number"},
    {"guid", Type::Text, true, Lookup::Text, "the GlobalId, 22 characters"},
    {"name", Type::Text, true, Lookup::Text, "Name"},
    {"long_name", Type::Text, true, Lookup::None, "LongName"},
    {"elevation", Type::Number, true, Lookup::None, "Elevation, in the unit of the model"},
    {"building_id", Type::Integer, true, Lookup::None, "the nearest building above"},
};

class StoreyRows final : public EntityRows {
public:
    using EntityRows::EntityRows;

private:
    void vRows(Entity& entity, Batch& batch) override {
        const std::vector<int>& places = m_places.of(entity.schemaEntity());
        RowWriter row(batch);
        row.vText(sFile());
        row.vNumberOf(context(), &entity);
        row.vTextOrNull(sGuidOf(entity));
        row.vTextOrNull(pTextAt(entity, places[0]));
        row.vTextOrNull(pTextAt(entity, places[1]));
        row.vNumber(scalarOf(cellAt(entity, places[2])).numberValue());
        row.vNumberOf(context(), context().walk().pAbove(entity, Class::Building));
    }

    AttributePlaces m_places{{"Name", "LongName", "Elevation"}};
};

// material

constexpr ColumnRow g_materialColumns[] = {
    g_fileColumn,
    {"element_id", Type::Integer, false, Lookup::Step, "the element or type"},
    {"name", Type::Text, true, Lookup::Text, "of the material; none for a layer of air"},
    {"layer", Type::Text, true, Lookup::None, "the name of the layer, profile or constituent"},
    {"thickness", Type::Number, true, Lookup::None, "of a layer, in the unit of the model"},
    {"fraction", Type::Number, true, Lookup::None, "of a constituent, from 0 to 1"},
    {"source", Type::Text, false, Lookup::None, "instance or type: who says so"},
};

class MaterialRows final : public EntityRows {
public:
    using EntityRows::EntityRows;

private:
    void vRows(Entity& entity, Batch& batch) override {
        for (const Material& material : oxa::materials(context().state().elementOf(&entity))) {
            RowWriter row(batch);
            row.vText(sFile());
            row.vNumberOf(context(), &entity);
            row.vTextOrNull(material.name);
            row.vTextOrNull(material.part);
            row.vNumber(material.thickness);
            row.vNumber(material.fraction);
            row.vText(sourceWord(material.source));
        }
    }
};

// classification

constexpr ColumnRow g_classificationColumns[] = {
    g_fileColumn,
    {"element_id", Type::Integer, false, Lookup::Step, "the element or type"},
    {"system", Type::Text, true, Lookup::None, "as in Uniclass 2015"},
    {"code", Type::Text, true, Lookup::Text, "as in Ss_25_10_20"},
    {"name", Type::Text, true, Lookup::Text, "in words"},
};

class ClassificationRows final : public EntityRows {
public:
    using EntityRows::EntityRows;

private:
    void vRows(Entity& entity, Batch& batch) override {
        for (const Classification& one : oxa::classifications(context().state().elementOf(&entity))) {
            RowWriter row(batch);
            row.vText(sFile());
            row.vNumberOf(context(), &entity);
            row.vTextOrNull(one.system);
            row.vTextOrNull(one.code);
            row.vTextOrNull(one.name);
        }
    }
};

std::unique_ptr<RowMaker> pStoreys(Context& context) {
    return std::make_unique<StoreyRows>(context, context.all(context.table().pClass(Class::Storey)));
}

}   // namespace

extern const TableRow g_tableElement{"element", "An object, a type object or a context, as the project is one",
                                     g_elementColumns, pOfObjects<ElementRows>};
extern const TableRow g_tableStorey{"storey", "A building storey", g_storeyColumns, pStoreys};
extern const TableRow g_tableMaterial{"material", "A material, layer, profile or constituent of an element",
                                      g_materialColumns, pOfObjects<MaterialRows>};
extern const TableRow g_tableClassification{"classification", "A place of an element in a system of classification",
                                            g_classificationColumns, pOfObjects<ClassificationRows>};

}   // namespace oxa::tables::detail
