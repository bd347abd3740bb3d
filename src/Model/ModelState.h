// SPDX-License-Identifier: Apache-2.0
// ModelState: what stands behind a Model, and behind the handles that point into it.
//
// Life     handles hold no reference to it, so that copying one costs nothing. They name a place that is never freed, in
//          which the serial number of the model stands as long as that lives; a later model at the same place has
//          another one.
// Removed  an entity that is removed keeps its memory, which is the pool's, and loses its schema entity: by that any
//          handle to it is told from others in one look.
// Numbers  every entity has one from the start: that of its file, or one above all that the file has.
#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileError.h"
#include "Model/Element.h"
#include "Model/NewValue.h"
#include "Model/Options.h"
#include "Model/PropertyUses.h"
#include "schema/Schema.h"

namespace oxa {
class Model;
}   // namespace oxa

namespace oxa::detail {

class ModelState;
class RelationTable;

struct Life {
    std::atomic<std::uint64_t> uSerial{0};   // 0: of nobody
    ModelState* pState = nullptr;
};

// The place of one model, as long as this lives.
class LifeHolder {
public:
    explicit LifeHolder(ModelState& state);
    ~LifeHolder();
    LifeHolder(const LifeHolder&) = delete;
    LifeHolder& operator=(const LifeHolder&) = delete;
    [[nodiscard]] ModelRef ref() const noexcept { return {m_pLife, m_pLife->uSerial.load(std::memory_order_relaxed)}; }

private:
    Life* m_pLife;
};

// As a caller sees it.
[[nodiscard]] OXA_MODEL_API Record recordOf(const ifc::ErrorRecord& error);

// How a read went.
struct ReadResult {
    std::unique_ptr<ifc::FileBase> pFile;
    std::unique_ptr<ifc::io::ReadError> pErrors;
    bool boWhole = false;
    bool boMayBeTwice = false;      // entities may be in the list twice, and no record tells
    std::filesystem::path path{};   // the file it was read from; empty for another source
};

class OXA_MODEL_API ModelState {
public:
    ModelState(ReadResult read, bool boKeepNumbers);
    ~ModelState() = default;
    ModelState(const ModelState&) = delete;
    ModelState& operator=(const ModelState&) = delete;

    // The model of a handle; throws HandleError unless the handle's element is there.
    [[nodiscard]] static ModelState& of(const Element& element);
    [[nodiscard]] static ModelState& of(const Model& model);
    // The same, and its instance.
    [[nodiscard]] static ifc::Entity& entityOf(const Element& element);
    [[nodiscard]] static bool boThere(const Element& element) noexcept;
    // The instance of a handle into this model.
    [[nodiscard]] ifc::Entity& entityHere(const Element& element);

    [[nodiscard]] ifc::FileBase& file() noexcept { return *m_read.pFile; }
    [[nodiscard]] ifc::Data& data() noexcept { return m_read.pFile->dataBase(); }
    [[nodiscard]] const ifc::def::SchemaPset& schema() noexcept { return *data().pSchema(); }
    [[nodiscard]] bool boWhole() const noexcept { return m_read.boWhole; }
    // Whether this is the file that the model was read from, by whatever name.
    [[nodiscard]] bool boIsFrom(const std::filesystem::path& path) const;
    [[nodiscard]] const std::vector<Record>& records();
    // A keyword becomes the name that the schema has for it.
    void vTypeSpell(Record& record);

    [[nodiscard]] Element elementOf(ifc::Entity* pEntity) const noexcept {
        return pEntity ? Element(m_ref, pEntity) : Element();
    }
    [[nodiscard]] Elements elementsOf(std::vector<ifc::Entity*> entities) const { return {m_ref, std::move(entities)}; }
    [[nodiscard]] std::uint64_t iNumberOf(const ifc::Entity& entity) { return data().iIdFromEntity(entity); }
    [[nodiscard]] Value valueOf(ifc::Entity& entity, std::size_t iAttribute) const;
    // Which classes and attributes of the schema mean what; made on first use.
    [[nodiscard]] const RelationTable& relations();
    // Null where there is none.
    [[nodiscard]] ifc::Entity* pFromNumber(std::uint64_t iId);
    [[nodiscard]] ifc::Entity* pFromGuid(const Guid& guid);

    [[nodiscard]] std::size_t iSize();

    // By number.
    [[nodiscard]] std::vector<ifc::Entity*> all();
    [[nodiscard]] std::vector<ifc::Entity*> all(const ifc::def::schema::Entity& type, bool boWithSubtypes);
    void vSortByNumber(std::vector<ifc::Entity*>& entities);

    // Changes; ModelEdit.cpp. Inverse lists and GlobalIds are right when they return, and nothing is changed when they
    // throw.
    ifc::Entity& create(const ifc::def::schema::Entity& type, std::span<const Field> fields);
    void vSet(ifc::Entity& entity, std::string_view name, const NewValue& value);
    void vAppend(ifc::Entity& entity, std::string_view name, const NewValue& item);
    ifc::EntityRemoval remove(const std::vector<ifc::Entity*>& entities);

    // Another one after each change.
    [[nodiscard]] std::uint64_t uChanges() const noexcept { return m_uChanges; }
    [[nodiscard]] PropertyUses& propertyUses() noexcept { return m_propertyUses; }

    // "IfcWall #12"
    [[nodiscard]] std::string sNameOf(const ifc::Entity& entity);

private:
    [[noreturn]] static void vRefuse(const Element& element);
    void vRenumber();
    [[nodiscard]] std::vector<ifc::Entity*> ordered(std::vector<ifc::Entity*> entities);
    // What an attribute of references refers to, in its order.
    [[nodiscard]] std::vector<ifc::Entity*> namedBy(ifc::Entity& entity, std::size_t iAttribute) const;
    void vGuidDeal(ifc::Entity& entity);
    void vAdd(ifc::Entity& entity);

    ReadResult m_read;
    LifeHolder m_life;
    ModelRef m_ref;
    // Beside those that the core knows, ascending: of created entities, and after a change of all numbers.
    std::vector<std::pair<std::uint64_t, ifc::Entity*>> m_numbered;
    bool m_boTwice = false;   // the core's list has who was defined twice twice
    bool m_boRoom = true;     // for numbers above those of the file
    struct Name {
        const ifc::def::schema::Entity* pType;
        std::uint64_t iId;
    };
    std::unordered_map<const ifc::Entity*, Name> m_removed;
    std::uint64_t m_uChanges = 0;
    PropertyUses m_propertyUses;
    std::mutex m_mutex;   // const operations of the core sort its list
    std::once_flag m_relationsOnce;
    std::shared_ptr<const RelationTable> m_pRelations;
    std::once_flag m_recordsOnce;
    std::vector<Record> m_records;
};

}   // namespace oxa::detail
