// SPDX-License-Identifier: Apache-2.0
// ClassRows: the table of a class: a row an instance, subtypes too, a column an attribute.
//
// Columns  file, id, type, then the attributes of the class in their order, by the names of the schema. A reference is the
//          number of the instance. A select has a second column, NAME_type, for the type that the value has in the file;
//          its value is a number where all that it may be are numbers, and so on, else a text. Lists are lists; lists of
//          selects are JSON. A LOGICAL is a text: true, false or unknown.
#include <algorithm>
#include <array>
#include <functional>

#include "Model/Names.h"
#include "Tables/Cells.h"
#include "Tables/Rows.h"

namespace oxa::tables::detail {

using ifc::Entity;
using schema::DataKind;

namespace {

// What a cell of this type is, lists looked through.
struct CellType {
    Type eType = Type::Text;
    unsigned iLists = 0;
    bool boSelect = false;
};

Type typeOfKind(DataKind eKind) {
    switch (eKind) {
    case DataKind::Real:
    case DataKind::Number: return Type::Number;
    case DataKind::Integer: return Type::Integer;
    case DataKind::Boolean: return Type::Boolean;
    case DataKind::String:
    case DataKind::Logical:
    case DataKind::Binary:
    case DataKind::Enumeration:
    case DataKind::Select:
    case DataKind::Array:
    case DataKind::List:
    case DataKind::Set: break;
    }
    return Type::Text;
}

// What all that a select may be has in common; nested selects are looked through as far as a schema nests them.
Type typeOfSelect(const schema::DataTypeSelect& select, int iDepth = 0) {
    std::optional<Type> common;
    for (const schema::ObjectBase* pMember : select.members) {
        Type eMember = Type::Integer;   // a reference
        if (!schema::pAsEntity(pMember)) {
            const schema::DataTypeBase* pData = schema::pDataTypeOf(pMember);
            const bool boSelect = pData && pData->kind == DataKind::Select;
            if (boSelect && iDepth > 16) return Type::Text;
            eMember = boSelect ? typeOfSelect(static_cast<const schema::DataTypeSelect&>(*pData), iDepth + 1)
                               : typeOfKind(pData ? pData->kind : DataKind::String);
            // A number and a reference have nothing in common.
            if (!boSelect && eMember == Type::Integer && std::ranges::any_of(select.members, schema::pAsEntity))
                return Type::Text;
        }
        if (common.value_or(eMember) != eMember) return Type::Text;
        common = eMember;
    }
    return common.value_or(Type::Text);
}

CellType cellTypeOf(const schema::ObjectBase* pType) {
    CellType cell;
    const schema::DataTypeBase* pData = nullptr;
    for (;; ++cell.iLists, pType = pData->pElementGet()) {
        if (schema::pAsEntity(pType)) return {Type::Integer, cell.iLists, false};
        pData = schema::pDataTypeOf(pType);
        if (!pData) return cell;
        if (!schema::boIsAggregate(pData->kind)) break;
    }
    if (pData->kind != DataKind::Select) return {typeOfKind(pData->kind), cell.iLists, false};
    if (cell.iLists) return {Type::Json, 0, false};
    return {typeOfSelect(static_cast<const schema::DataTypeSelect&>(*pData)), 0, true};
}

// Adds a scalar to a column of its type; what is of another has no value there.
void vScalarAdd(const Context& context, const Scalar& scalar, const CellPlace& place, ColumnData& column) {
    if (scalar.eKind == Scalar::Kind::Null) return column.addNull();
    switch (column.type()) {
    case Type::Number: {
        const auto number = scalar.numberValue();
        return number ? column.addNumber(*number) : column.addNull();
    }
    case Type::Integer:
        if (scalar.eKind == Scalar::Kind::Reference) return column.addInteger(context.iNumber(*scalar.pEntity));
        return scalar.eKind == Scalar::Kind::Integer ? column.addInteger(scalar.iInteger) : column.addNull();
    case Type::Boolean: {
        const auto value = scalar.booleanValue();
        return value ? column.addBoolean(*value) : column.addNull();
    }
    case Type::Text:
    case Type::Json: break;
    }
    if (scalar.eKind != Scalar::Kind::Several) return column.addText(scalar.sText(context));
    std::string sJson;
    vJsonAdd(context, place, JsonTypes::Hidden, sJson);
    column.addText(sJson);
}

// The items of a list into a column of lists.
class ListVisitor {
public:
    ListVisitor(const Context& context, ColumnData& column) : m_context(context) {
        ColumnData* pLevel = &column;
        m_levels.push_back(pLevel);
        for (unsigned i = 0; i < column.lists(); ++i) m_levels.push_back(pLevel = &pLevel->items());
    }

    void operator()(double value) {
        vTell([&](ColumnData& items) { items.addNumber(value); });
    }
    void operator()(long long iValue) {
        vTell([&](ColumnData& items) {
            items.type() == Type::Number ? items.addNumber(static_cast<double>(iValue)) : items.addInteger(iValue);
        });
    }
    void operator()(bool boValue) {
        vTell([&](ColumnData& items) { items.addBoolean(boValue); });
    }
    void operator()(LogicalValue eValue) {
        vTell([&](ColumnData& items) {
            items.addText(eValue == LogicalValue::Unknown ? "unknown"
                          : eValue == LogicalValue::True  ? "true"
                                                          : "false");
        });
    }
    void operator()(const Guid& guid) {
        vTell([&](ColumnData& items) { items.addText(ifc::IfcGuid::toIfcGuid(guid)); });
    }
    void operator()(ifc::visit::Text text) { vText(text.pText); }
    void operator()(ifc::visit::Enumerator text) { vText(text.pText); }
    void operator()(ifc::visit::Binary binary) {
        vTell([&](ColumnData& items) {
            Scalar scalar;
            scalar.eKind = Scalar::Kind::Binary;
            scalar.binary = binary;
            items.addText(scalar.sText(m_context));
        });
    }
    void operator()(const Entity* pEntity) {
        if (!pEntity || !pEntity->pSchemaEntity()) return m_levels[m_iDepth]->addNull();
        vTell([&](ColumnData& items) { items.addInteger(m_context.iNumber(*pEntity)); });
    }
    void operator()(ifc::visit::Null) { m_levels[m_iDepth]->addNull(); }
    void operator()(ifc::visit::Nothing) { m_levels[m_iDepth]->addNull(); }
    void operator()(ifc::visit::ListBegin) {
        if (m_iDepth + 1 == m_levels.size())
            ++m_iTooDeep;   // than the schema says
        else
            ++m_iDepth;
    }
    void operator()(ifc::visit::ListEnd) {
        if (m_iTooDeep)
            --m_iTooDeep;
        else
            m_levels[--m_iDepth]->addList();
    }
    void operator()(const ifc::visit::TypeBegin&) {}
    void operator()(ifc::visit::TypeEnd) {}

private:
    template <class Add>
    void vTell(Add&& add) {
        if (m_iDepth + 1 == m_levels.size())
            add(*m_levels.back());
        else
            m_levels[m_iDepth]->addNull();   // a value where the schema has a list
    }
    void vText(const char* pText) {
        if (!pText) return m_levels[m_iDepth]->addNull();
        vTell([&](ColumnData& items) { items.addText(pText); });
    }

    const Context& m_context;
    std::vector<ColumnData*> m_levels;
    std::size_t m_iDepth = 0;
    std::size_t m_iTooDeep = 0;
};

class ClassRows final : public EntityRows {
public:
    ClassRows(Context& context, const schema::Entity& type) : EntityRows(context, context.all(&type)) {
        for (const schema::Attribute* pAttribute : type.allAttributes())
            m_cells.push_back(cellTypeOf(pAttribute->pType()));
    }

private:
    void vRows(Entity& entity, Batch& batch) override {
        RowWriter row(batch);
        row.vText(sFile());
        row.vNumberOf(context(), &entity);
        row.vText(entity.schemaEntity().sName);
        for (std::size_t i = 0; i < m_cells.size(); ++i) vCell(cellAt(entity, static_cast<int>(i)), m_cells[i], row);
    }

    void vCell(const CellPlace& place, const CellType& type, RowWriter& row) const {
        const bool boWanted = row.boWanted();
        ColumnData& column = row.next();
        if (type.boSelect) {
            const Scalar scalar = boWanted || row.boWanted() ? scalarOf(place) : Scalar();
            vScalarAdd(context(), scalar, place, column);
            const bool boType = scalar.eKind != Scalar::Kind::Null && scalar.pType;
            return row.vTextOrNull(boType ? std::string_view(scalar.pType->sName) : std::string_view());
        }
        if (!boWanted || !place || !place.pCell->boHasValue()) return column.addNull();
        if (type.eType == Type::Json) {
            std::string sJson;
            vJsonAdd(context(), place, JsonTypes::Shown, sJson);
            return column.addText(sJson);
        }
        if (!type.iLists) return vScalarAdd(context(), scalarOf(place), place, column);
        ListVisitor visitor(context(), column);
        ifc::visitValues(*place.pCell, place.pAttribute->pType(), visitor);
    }

    std::vector<CellType> m_cells;   // an attribute each
};

// SQL knows columns in any case of letters.
std::string sUnused(std::string sName, const std::vector<Column>& columns) {
    while (
        std::ranges::any_of(columns, [&](const Column& column) { return oxa::detail::boSameName(column.name, sName); }))
        sName += '_';
    return sName;
}

}   // namespace

std::unique_ptr<RowMaker> pClassRows(Context& context, const schema::Entity& type) {
    return std::make_unique<ClassRows>(context, type);
}

Definition definitionOfClass(const schema::Entity& type) {
    Definition result;
    result.pClass = &type;
    result.table = {type.sName, "An instance of " + type.sName + " or of a subtype"};
    std::vector<Column>& columns = result.table.columns;
    columns.push_back({"file", Type::Text, 0, false, g_fileColumn.pDescription});
    columns.push_back({"id", Type::Integer, 0, false, "the instance number"});
    columns.push_back({"type", Type::Text, 0, false, "the class, as in IfcWall"});
    result.lookups = {Lookup::None, Lookup::Step, Lookup::Text};
    for (const schema::Attribute* pAttribute : type.allAttributes()) {
        const CellType cell = cellTypeOf(pAttribute->pType());
        const std::string& sName = pAttribute->sName;
        columns.push_back(
            {sUnused(sName, columns), cell.eType, cell.iLists, true, schema::sTypeText(pAttribute->pType())});
        const bool boLookup = sName == "GlobalId" || sName == "Name";
        result.lookups.push_back(boLookup && cell.eType == Type::Text ? Lookup::Text : Lookup::None);
        if (!cell.boSelect) continue;
        columns.push_back({sUnused(sName + "_type", columns), Type::Text, 0, true,
                           "the type of " + sName + ", as in IfcLabel; of a reference the class"});
        result.lookups.push_back(Lookup::None);
    }
    return result;
}

}   // namespace oxa::tables::detail
