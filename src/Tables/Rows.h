// SPDX-License-Identifier: Apache-2.0
// Rows: the tables as rows of descriptors, each with what makes its rows.
//
// For      the sources of this folder. A further table is a TableRow in a source of its own kind, named in Tables.cpp;
//          no sink knows a table by its name.
// Steps    rows come step by step, a step mostly being one instance: whoever wants the rows of one instance, as a
//          look-up of SQL does, asks for its step.
// Threads  one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Tables/Batch.h"
#include "Tables/Context.h"

namespace oxa::tables::detail {

// By which columns rows are looked up.
enum class Lookup : std::uint8_t {
    None,
    Step,   // the number of the instance that the step is of: steps ascend by it
    Text    // by an index that is made when it is first asked for
};

struct ColumnRow {
    const char* pName;
    Type eType;
    bool boNullable;
    Lookup eLookup;
    const char* pDescription;
};

class RowMaker {
public:
    RowMaker() = default;
    virtual ~RowMaker() = default;
    RowMaker(const RowMaker&) = delete;
    RowMaker& operator=(const RowMaker&) = delete;

    [[nodiscard]] virtual std::size_t iSteps() const noexcept = 0;
    // Appends the rows of one step.
    virtual void vStep(std::size_t iStep, Batch& batch) = 0;
    // The instance that a step is of; null where steps are none of instances.
    [[nodiscard]] virtual const ifc::Entity* pEntity(std::size_t iStep) const noexcept = 0;
};

struct TableRow {
    const char* pName;
    const char* pDescription;
    std::span<const ColumnRow> columns;
    std::unique_ptr<RowMaker> (*pMake)(Context& context);
};

// In the order in which they are told.
[[nodiscard]] std::span<const TableRow* const> fixedTables();

// A table with what is known of it, fixed or of a class; and its rows for a model.
struct Definition {
    Table table;
    std::vector<Lookup> lookups;   // a column each
    const TableRow* pFixed = nullptr;
    const schema::Entity* pClass = nullptr;

    [[nodiscard]] std::unique_ptr<RowMaker> pMake(Context& context) const;
};
[[nodiscard]] Definition definition(const TableRow& row);
// NameError for a name that is neither a table nor a class of the schema.
[[nodiscard]] Definition definition(const schema::Schema& schema, std::string_view name);
// Of a class; ClassRows.cpp.
[[nodiscard]] Definition definitionOfClass(const schema::Entity& type);
[[nodiscard]] std::unique_ptr<RowMaker> pClassRows(Context& context, const schema::Entity& type);

// The cells of one row, one after the other. All of them must be told.
class RowWriter {
public:
    explicit RowWriter(Batch& batch) noexcept : m_pAt(batch.columns().data()) {}

    // Of a cell that is dear to make: whether it is asked for.
    [[nodiscard]] bool boWanted() const noexcept { return m_pAt->wanted(); }
    ColumnData& next() noexcept { return *m_pAt++; }

    void vNull() { next().addNull(); }
    void vText(std::string_view text) { next().addText(text); }
    void vTextOrNull(const char* pText) { pText ? vText(pText) : vNull(); }
    void vTextOrNull(std::string_view text) { text.empty() ? vNull() : vText(text); }
    void vInteger(std::int64_t iValue) { next().addInteger(iValue); }
    void vNumber(std::optional<double> value) { value ? next().addNumber(*value) : vNull(); }
    void vBoolean(std::optional<bool> value) { value ? next().addBoolean(*value) : vNull(); }
    void vNumberOf(const Context& context, const ifc::Entity* pEntity) {
        if (!pEntity || !boWanted()) return vNull();
        vInteger(context.iNumber(*pEntity));
    }

private:
    ColumnData* m_pAt;
};

// Rows of instances.
class EntityRows : public RowMaker {
public:
    EntityRows(Context& context, std::vector<ifc::Entity*> entities)
        : m_context(context),
          m_entities(std::move(entities)) {}

    [[nodiscard]] std::size_t iSteps() const noexcept override { return m_entities.size(); }
    void vStep(std::size_t iStep, Batch& batch) override { vRows(*m_entities[iStep], batch); }
    [[nodiscard]] const ifc::Entity* pEntity(std::size_t iStep) const noexcept override { return m_entities[iStep]; }

protected:
    virtual void vRows(ifc::Entity& entity, Batch& batch) = 0;
    [[nodiscard]] Context& context() const noexcept { return m_context; }
    [[nodiscard]] const std::string& sFile() const noexcept { return m_context.file().file; }

private:
    Context& m_context;
    std::vector<ifc::Entity*> m_entities;
};

// For pMake of a table of all objects, types and contexts.
template <class Rows>
std::unique_ptr<RowMaker> pOfObjects(Context& context) {
    return std::make_unique<Rows>(context, context.all(context.table().pClass(oxa::detail::Class::ObjectDefinition)));
}

// The column that all tables begin with.
inline constexpr ColumnRow g_fileColumn{"file", Type::Text, false, Lookup::None, "the file, as in the table file"};

}   // namespace oxa::tables::detail
