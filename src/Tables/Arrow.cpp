// SPDX-License-Identifier: Apache-2.0
// Columns as arrays of the C data interface. Each array owns its own buffers, since whoever takes a batch may move a column
// out of it and release the rest.
#include "Tables/Arrow.h"

#include <array>
#include <cerrno>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Model/Error.h"

namespace oxa::tables {

namespace {

const char* pFormatOf(Type eType) {
    switch (eType) {
    case Type::Boolean: return "b";
    case Type::Integer: return "l";
    case Type::Number: return "g";
    case Type::Text:
    case Type::Json: break;
    }
    return "u";
}

// Structs with children, and what they point to. Children may have been moved away: then they are released already.
template <class Struct>
struct Children {
    std::vector<Struct> all;
    std::vector<Struct*> pointers;

    explicit Children(std::size_t iCount) : all(iCount) {
        for (Struct& one : all) pointers.push_back(&one);
    }
    ~Children() {
        for (Struct& one : all)
            if (one.release) one.release(&one);
    }
    Children(const Children&) = delete;
    Children& operator=(const Children&) = delete;
};

template <class Struct, class Held>
void vRelease(Struct* pStruct) {
    delete static_cast<Held*>(pStruct->private_data);
    pStruct->private_data = nullptr;
    pStruct->release = nullptr;
}

// Schemas

struct HeldSchema {
    HeldSchema(std::string sFieldName, std::size_t iChildren) : sName(std::move(sFieldName)), children(iChildren) {}
    std::string sName;
    Children<ArrowSchema> children;
};

HeldSchema& schemaMake(ArrowSchema& out, const char* pFormat, const std::string& sName, bool boNullable,
                       std::size_t iChildren) {
    auto pHeld = std::make_unique<HeldSchema>(sName, iChildren);
    HeldSchema& held = *pHeld;
    out = {};
    out.format = pFormat;
    out.name = held.sName.c_str();
    out.flags = boNullable ? ARROW_FLAG_NULLABLE : 0;
    out.n_children = static_cast<std::int64_t>(iChildren);
    out.children = iChildren ? held.children.pointers.data() : nullptr;
    out.release = vRelease<ArrowSchema, HeldSchema>;
    out.private_data = pHeld.release();
    return held;
}

void vColumnSchemaMake(ArrowSchema& out, const Column& column, unsigned iLists, const std::string& sName,
                       bool boNullable) {
    HeldSchema& held = schemaMake(out, iLists ? "+l" : pFormatOf(column.type), sName, boNullable, iLists ? 1 : 0);
    if (iLists) vColumnSchemaMake(held.children.all.front(), column, iLists - 1, "item", true);
}

void vSchemaMake(ArrowSchema& out, const Table& table) {
    ArrowSchema made{};
    HeldSchema& held = schemaMake(made, "+s", table.name, false, table.columns.size());
    try {
        for (std::size_t i = 0; i < table.columns.size(); ++i) {
            const Column& column = table.columns[i];
            vColumnSchemaMake(held.children.all[i], column, column.lists, column.name, column.nullable);
        }
    } catch (...) {
        made.release(&made);
        throw;
    }
    out = made;
}

// Arrays

constexpr std::int32_t g_iNoOffset = 0;   // what an array without items begins at

struct HeldArray {
    HeldArray(ColumnData column, std::size_t iChildren) : data(std::move(column)), children(iChildren) {}
    ColumnData data;
    std::array<const void*, 3> buffers{};
    Children<ArrowArray> children;
};

HeldArray& arrayMake(ArrowArray& out, ColumnData column, std::size_t iChildren) {
    auto pHeld = std::make_unique<HeldArray>(std::move(column), iChildren);
    HeldArray& held = *pHeld;
    out = {};
    out.length = static_cast<std::int64_t>(held.data.size());
    out.null_count = static_cast<std::int64_t>(held.data.nulls());
    out.buffers = held.buffers.data();
    out.n_children = static_cast<std::int64_t>(iChildren);
    out.children = iChildren ? held.children.pointers.data() : nullptr;
    out.release = vRelease<ArrowArray, HeldArray>;
    out.private_data = pHeld.release();
    return held;
}

void vColumnMake(ArrowArray& out, ColumnData&& column) {
    const bool boList = column.lists() > 0;
    ColumnData items = boList ? std::move(column.items()) : ColumnData(Type::Boolean);
    HeldArray& held = arrayMake(out, std::move(column), boList ? 1 : 0);
    const ColumnData& data = held.data;
    held.buffers[0] = data.nulls() ? data.validBits().data() : nullptr;
    out.n_buffers = 2;
    const bool boText = data.type() == Type::Text || data.type() == Type::Json;
    if (boList || boText) {
        held.buffers[1] = data.offsets().empty() ? &g_iNoOffset : data.offsets().data();
        if (boList) return vColumnMake(held.children.all.front(), std::move(items));
        held.buffers[2] = data.bytes().data();
        out.n_buffers = 3;
    } else if (data.type() == Type::Boolean) {
        held.buffers[1] = data.booleanBits().data();
    } else if (data.type() == Type::Integer) {
        held.buffers[1] = data.integers().data();
    } else {
        held.buffers[1] = data.numbers().data();
    }
}

void vBatchMake(ArrowArray& out, Batch&& batch) {
    std::vector<ColumnData>& columns = batch.columns();
    ArrowArray made{};
    HeldArray& held = arrayMake(made, ColumnData(Type::Boolean), columns.size());
    made.length = static_cast<std::int64_t>(batch.rows());
    made.n_buffers = 1;   // a row is always there
    try {
        for (std::size_t i = 0; i < columns.size(); ++i) vColumnMake(held.children.all[i], std::move(columns[i]));
    } catch (...) {
        made.release(&made);
        throw;
    }
    out = made;
}

// Streams

struct HeldStream {
    HeldStream(std::shared_ptr<const Model> pHold, const Model& model, const FileInfo& file, std::string_view table,
               const StreamOptions& streamOptions)
        : pModel(std::move(pHold)),
          reader(model, file, table),
          options(streamOptions) {}
    std::shared_ptr<const Model> pModel;   // null where the caller holds it
    Reader reader;
    StreamOptions options;
    std::string sError;
};

HeldStream& heldOf(ArrowArrayStream* pStream) { return *static_cast<HeldStream*>(pStream->private_data); }

// What "make" does, as the interface answers.
template <class Make>
int iAnswer(ArrowArrayStream* pStream, Make&& make) noexcept {
    HeldStream& held = heldOf(pStream);
    try {
        held.sError.clear();
        make(held);
        return 0;
    } catch (const std::bad_alloc&) {
        return ENOMEM;
    } catch (const std::length_error& error) {
        held.sError = error.what();
        return EOVERFLOW;
    } catch (const std::exception& error) {
        held.sError = error.what();
        return EINVAL;
    }
}

void vStreamMake(std::unique_ptr<HeldStream> pHeld, ArrowArrayStream* out) {
    out->get_schema = [](ArrowArrayStream* pStream, ArrowSchema* pOut) {
        return iAnswer(pStream, [pOut](const HeldStream& held) { vSchemaMake(*pOut, held.reader.table()); });
    };
    out->get_next = [](ArrowArrayStream* pStream, ArrowArray* pOut) {
        return iAnswer(pStream, [pOut](HeldStream& held) {
            Batch batch(held.reader.table().columns);
            if (held.reader.next(batch, held.options.rows))
                vBatchMake(*pOut, std::move(batch));
            else
                *pOut = {};   // the end: nothing to release
        });
    };
    out->get_last_error = [](ArrowArrayStream* pStream) -> const char* {
        const HeldStream& held = heldOf(pStream);
        return held.sError.empty() ? nullptr : held.sError.c_str();
    };
    out->release = vRelease<ArrowArrayStream, HeldStream>;
    out->private_data = pHeld.release();
}

}   // namespace

void schema(const Table& table, ArrowSchema* out) { vSchemaMake(*out, table); }

void stream(const Model& model, const FileInfo& file, std::string_view table, ArrowArrayStream* out,
            const StreamOptions& options) {
    vStreamMake(std::make_unique<HeldStream>(nullptr, model, file, table, options), out);
}

void stream(std::shared_ptr<const Model> model, const FileInfo& file, std::string_view table, ArrowArrayStream* out,
            const StreamOptions& options) {
    const Model& held = *model;
    vStreamMake(std::make_unique<HeldStream>(std::move(model), held, file, table, options), out);
}

ArrowArrayStream stream(const Model& model, std::string_view table) {
    ArrowArrayStream made{};
    stream(model, {.file = "model", .path = {}}, table, &made);
    return made;
}

ArrowArrayStream stream(std::shared_ptr<const Model> model, std::string_view table) {
    ArrowArrayStream made{};
    stream(std::move(model), {.file = "model", .path = {}}, table, &made);
    return made;
}

}   // namespace oxa::tables
