// SPDX-License-Identifier: Apache-2.0
/// @file
/// IfcFileDataSimple: the container of one model: its entities, their order, their maps and their memory.
///
/// - For: every caller who looks for entities, makes or removes them.
/// - Not for files: FileData and DataSimple (IfcFile.h) tie a container to one.
/// - Memory: entities are never destroyed one by one; all of it goes with the Data.
/// - Threads: outside a read a Data belongs to one thread at a time, const operations included, since they sort and
///   update. During a read the line workers touch only the pool, the entity table, their own entities and the project
///   pointer; one thread at a time runs finalizeEntity.
#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Format/Ifc/IfcFileEntity.h"
#include "Format/Ifc/Memory/SimplePool.h"
#include "Format/Ifc/Store/EntityIdMap.h"
#include "Format/Ifc/Store/GuidMap.h"
#include "platform/Export.h"
#include "platform/Id.h"
#include "schema/Schema.h"

namespace oxa::ifc {

struct ReadInfoCommon;
struct StepReadInfoData;
struct StepReadInfoDataCommon;
class StepWriteInfoCommon;
class WriteInfoCommon;
struct WriteOptions;
namespace io {
class WriteError;
}   // namespace io

/// What a removal did; see Data::entitiesRemove.
struct EntityRemoval {
    std::vector<Entity*> removed;      ///< those asked for, in their order, then the relationships that went with them
    std::vector<Entity*> incomplete;   ///< that stay and now lack a mandatory value, or items of one
};

/// One model: its entities with their order, their numbers and their memory.
class OXA_IFC_API Data {
public:
    /// A place in entities(); good until the list changes or is sorted.
    using iterator = std::vector<Entity*>::const_iterator;

    /// @name Life
    ///@{

    /// Empty, without a schema.
    Data();
    /// The source keeps its schema pointers, but no entity and no pool: it can't allocate any more.
    Data(Data&& other) noexcept;
    /// The same; the target's old pool dies and with it everything that points there.
    Data& operator=(Data&& other) noexcept;
    /// Gives the memory of the model back, unless a move handed it on.
    virtual ~Data();
    ///@}

    /// @name Schema
    ///@{

    /// Not owned, must outlive the model. Null takes the schema away.
    void vSchemaSet(const def::SchemaPset* pSchema);
    /// The schema that was set; null without one.
    [[nodiscard]] const def::SchemaPset* pSchema() const noexcept { return m_pSchema; }
    /// Null without a schema, and for a name that is no entity type.
    [[nodiscard]] const def::schema::Entity* pEntitySchemaFromName(const def::schema::ObjectName& name) const;
    ///@}

    /// @name Looking for entities
    ///@{

    /// All entities, sorted by type: a type and its subtypes stand together. Sorts when needed.
    [[nodiscard]] const std::vector<Entity*>& entities() const;
    /// The entities of exactly that type, or of it and its subtypes: two binary searches. Empty for an unknown name.
    [[nodiscard]] std::pair<iterator, iterator> range(const def::schema::ObjectName& name, bool boWithSubtypes) const;
    /// The rooted entity with that GlobalId, or null. Entities that a caller made are found once their GlobalId is set.
    [[nodiscard]] Entity* pEntityFromGuid(const Guid& guid) const;
    /// The first IFCPROJECT, or null.
    [[nodiscard]] Entity* pProject() const noexcept { return m_pProject.load(std::memory_order_relaxed); }
    ///@}

    /// @name Making and removing entities
    ///@{

    /// A new entity, every attribute undefined; null without a schema or for a name that is no entity type.
    Entity* pEntityCreate(const def::schema::ObjectName& name);
    /// Null for null. Throws oxa::exception "Can't create abstract class" for an abstract type.
    Entity* pEntityCreate(const def::schema::Entity* pSchema);
    /// Takes a filled entity of this Data's pool into the list; null is ignored. Throws MissingType for one without
    /// a schema while there is no project.
    void entityAdd(Entity* pEntity);

    /// Takes an entity out of the list and the GUID map, and does nothing else: its memory, its number and the
    /// references and inverse lists that name it stay, so a write that reaches it over one of them still writes it.
    /// Keeping those right is the caller's task; entitiesRemove does it. False for null and for an entity that is not
    /// here. Throws MissingType for one without a schema.
    bool boEntityDelete(Entity* pEntity);
    /// Takes entities out of the model and out of everything in it that names them. Null and what is not here is passed
    /// over, and so is what stands twice.
    ///
    /// - a reference in an attribute or a select becomes undefined
    /// - an item of a list is taken out; an optional list that is left empty becomes undefined
    /// - an inverse list loses its entries of them
    /// - a relationship goes as well where a mandatory end of it has nothing left, or fewer items than the schema asks
    ///   for; and so on from there
    ///
    /// A relationship is what the schema shows as one, whatever its name: a type with mandatory attributes that inverse
    /// attributes are declared FOR, while neither it nor a supertype has inverse attributes. Its ends are the
    /// attributes of that type and its subtypes, those of supertypes (an owner history) are not. Other entities never
    /// go: an opening stays without its door, and one that needs what is gone (a project its last context) is told as
    /// incomplete. What only the removed named stays as well: a placement, a property set, parts. Removed entities stay
    /// usable for whoever holds them, keep their numbers, and name what they named. One pass over the model, however
    /// many are removed.
    EntityRemoval entitiesRemove(const std::vector<Entity*>& entities);
    /// The same for one; false for null and for an entity that is not here.
    bool boEntityRemove(Entity* pEntity);
    /// Gives a rooted entity of this Data another GlobalId, by which it is found from then on. False, with nothing
    /// changed, for the null GUID, for one that another entity is found by, and for an entity without a GlobalId.
    bool boGuidSet(Entity& entity, const Guid& guid);
    /// Takes every entity without a schema out of the list.
    void deleteIncompleteEntities();
    ///@}

    /// @name Instance numbers
    ///@{

    /// From here on entities without a number get numbers above all that the model has: the highest and 1 first. To be
    /// called between a read that kept numbers and the first look at the number of a new entity, a write included;
    /// without it new numbers count entities, and a file has them already where its own have gaps. False, with nothing
    /// changed, where no number is left above (4,294,967,295 is the last).
    bool boNumbersAbove() const;
    /// The entity's number; a new one is dealt if it has none.
    [[nodiscard]] std::size_t iIdFromEntity(const Entity& entity) const;
    /// The entity of a kept number; null when no numbers were kept or the number is unknown.
    [[nodiscard]] Entity* pEntityFromId(std::size_t iId) const;
    /// The numbers of the entities; see EntityIdMap. With boRebuild an old map is dropped.
    [[nodiscard]] EntityIdMap& entityIdMap(bool boRebuild) const;
    ///@}

    /// @name Writing
    ///@{

    /// Data lines without any frame, of all entities. False when there is nothing to write. "out" failing goes
    /// unnoticed: look at its state.
    bool boWrite(std::ostream& out, io::WriteError& errors, bool boSingleThreaded) const;
    /// The same of one entity and what it reaches. False for a null entity too.
    bool boWrite(const Entity* pEntity, std::ostream& out, io::WriteError& errors, bool boSingleThreaded) const;
    ///@}

    /// @name Memory, and what the entities are found by
    ///@{

    /// The memory that entities and values are made in. There is none in a Data that was moved from.
    [[nodiscard]] Pool& pool() const noexcept { return *m_pPool; }
    /// Expires when the memory of the entities goes, which may be later than this object: a move hands it on.
    [[nodiscard]] std::weak_ptr<const Pool> poolLife() const noexcept { return m_pPool; }
    /// The entries of inverse lists that reads have made: how often entities are named by an attribute that an inverse
    /// attribute is declared FOR. Later changes don't count.
    [[nodiscard]] std::size_t iInverseEntries() const noexcept { return m_iInverseEntries; }
    /// Rooted entities by GlobalId, as far as they are known by now.
    [[nodiscard]] const GuidMap& guidEntityMap() const noexcept { return m_guidEntityMap; }
    /// Diagnostic hook: writes the text to the standard error stream and raises it as an assertion.
    static void vDebugMessage(Data* pData, const char* text);
    ///@}

    /// @name For readers and writers, not for callers
    /// What the line workers, the ifcXML import and the composing threads do to the model.
    ///@{

    /// Ends a read: reports numbers that were named and never defined, settles the instance numbers (boKeepIds),
    /// builds the inverse lists and sorts. True when no reference is left dangling. Caller's thread, after all
    /// workers have ended.
    virtual bool boFinished(ReadInfoCommon& info, bool boKeepIds);
    /// The same for a read that did not get to its end, without the reports.
    void vPartSettle(ReadInfoCommon& info, bool boKeepIds);
    /// One entity statement (ISO 10303-21, 11.2), blanks and comments removed, ending in ";". Appends exactly one
    /// element to "result": the entity, or null when the statement made none. True when it made one. Any number of
    /// threads, each with a statement of its own.
    bool boReadLine(StepReadInfoData& info, std::vector<Entity*>& result);
    /// Enters what boReadLine made in the list and, when rooted, in the GUID map. One thread at a time.
    void finalizeEntity(Entity* pEntity, StepReadInfoDataCommon& common, std::string_view line, unsigned iLine);
    /// The same where the one who made the entity has told its GUID, null for one that is not rooted: the entity
    /// itself, which another processor has just written, is not looked at.
    void vEntityEnterTold(Entity* pEntity, const Guid* pRootGuid, StepReadInfoDataCommon& common, std::string_view line,
                          unsigned iLine);
    /// Queues all entities, in the order of the list, for a walk that has met nothing yet. The list must not change until the
    /// walk has ended.
    void vQueueAll(WriteInfoCommon& info) const;
    /// Runs a walk whose queue holds its seeds to the end, then tells the line writer so. "progress" gets the running
    /// count on the caller's thread, under the walk's lock: it must not call back into it.
    void vWrite(StepWriteInfoCommon& info, std::function<void(unsigned)> progress) const;
    /// The same without text: meets what such a walk would meet, and deals the numbers that it would deal. One thread.
    void vMeet(WriteInfoCommon& info) const;
    /// The same as vWrite in an order, or with a check; whether on several threads is what "info" says.
    void vWriteWith(StepWriteInfoCommon& info, const WriteOptions& options) const;
    /// The loop of one composing thread of such a walk.
    void operator()(StepWriteInfoCommon& info, std::function<void(unsigned)> progress) const;
    ///@}

protected:
    /// Puts the list in the order of types, unless it is; entities of one type keep theirs.
    void vSortEntities() const;
    /// Moves pending entities whose GlobalId can be read by now to the GUID map; a GUID that is there already raises
    /// an assertion, and the map keeps the earlier entity.
    void vGuidUpdate() const;

private:
    friend class Entity;

    class Remover;   // the work of entitiesRemove

    bool boEntityAdd(unsigned iId, const def::schema::Entity& type, StepReadInfoData& info, std::size_t iOffset,
                     std::size_t iLength, std::vector<Entity*>& result);
    void vEntityEnter(Entity* pEntity, bool boMayBeRooted);
    void vEntitiesGrow();
    void vGuidEnter(const Guid& guid, Entity* pEntity, StepReadInfoDataCommon& common, std::string_view line,
                    unsigned iLine);
    // The GUID of a rooted entity, as far as its type has one in front. Under the lock of its slot.
    [[nodiscard]] static std::optional<Guid> rootGuid(const Entity& entity, const StepReadInfoDataCommon& common);
    // The concrete type that an abstract one is read as, after the report; null when there is none.
    const def::schema::Entity* pConcreteType(const def::schema::Entity& type, StepReadInfoData& info) const;
    bool boReachNumbered(StepWriteInfoCommon& info) const;
    void vReachOthers(StepWriteInfoCommon& info) const;
    void vWriteInOrder(StepWriteInfoCommon& info, const WriteOptions& options) const;
    std::size_t iWriteLate(StepWriteInfoCommon& info) const;
    void vNumbersTwiceTell(StepWriteInfoCommon& info) const;
    bool boSettle(ReadInfoCommon& info, bool boKeepIds, bool boTell);
    void vMemoryTrim(ReadInfoCommon& info) noexcept;
    [[nodiscard]] bool boInOrder() const;
    [[nodiscard]] bool boAsRead() const;
    // Its references are no longer those that a read has left.
    void vChange() noexcept {
        if (m_readTo) m_readTo.reset();
    }
    void vProjectOffer(Entity* pEntity);

    // What all line workers look at for each statement.
    const def::SchemaPset* m_pSchema = nullptr;
    const def::schema::Entity* m_pRootSchema = nullptr;   // IFCROOT, or null
    std::shared_ptr<Pool> m_pPool;                        // nobody else owns it; see poolLife
    std::atomic<Entity*> m_pProject{nullptr};             // line workers may set it at the same time

    // What is entered for each statement, by one thread at a time.
    alignas(memory::g_iApart) mutable std::vector<Entity*> m_entities;   // insertion order until sorted
    mutable bool m_boSorted = false;
    mutable GuidMap m_guidEntityMap;
    mutable std::unique_ptr<EntityIdMap> m_pEntityIdMap;   // null until needed
    mutable std::vector<Entity*> m_pendingGuid;            // rooted, from entityAdd, not yet in m_guidEntityMap
    std::size_t m_iInverseEntries = 0;                     // made by reads
    // The end of a read all of whose references lead to entities of the list.
    struct ReadEnd {
        Pool::Position position;
        std::uint64_t iInverses;   // a moment of InverseChanges
    };
    std::optional<ReadEnd> m_readTo;
};

}   // namespace oxa::ifc
