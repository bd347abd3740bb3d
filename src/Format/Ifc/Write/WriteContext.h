// SPDX-License-Identifier: Apache-2.0
/// @file
/// WriteContext: what travels with a write: the queue of a walk over the model, and the statement in hand.
///
/// A write is a graph walk: each composed statement asks for the numbers of the entities that it names, and that
/// puts those on the queue. There is no other list of what to write.
///
/// Callers  Data, the cells, the writers, the ifcXML export, and seeds of library users.
/// Threads  StepWriteInfoCommon is shared by the composing threads of one run. StepWriteInfo belongs to one of them: it
///          keeps what it finds and composes until a share is done, so that the lock is taken once a share.
#pragma once

#include <array>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <span>
#include <string>
#include <unordered_set>
#include <vector>

#include "Format/Ifc/Store/EntityIdMap.h"
#include "Format/Ifc/Store/SeenNumbers.h"
#include "platform/Export.h"

namespace oxa::ifc {

class Entity;
namespace io {
class IfcLineWriterInterface;
class WriteError;
}   // namespace io

/// What a thread of a walk found last. What a statement names lies in a few chunks in turn, so each part of the memory as
/// large as a chunk has a place of its own, which others may share. A chunk of slots has the numbers of one page of marks.
struct WalkNear {
    static constexpr std::size_t g_iPlaces = 64;   ///< for parts of the memory

    ///@{
    /// For an instance at that address: in the map of numbers, and in the numbers met.
    [[nodiscard]] EntityIdMap::Near& number(const Entity* pEntity) noexcept { return numbers[iPlace(pEntity)]; }
    [[nodiscard]] SeenNumbers::Near& seen(const Entity* pEntity) noexcept { return seenKept[iPlace(pEntity)]; }
    ///@}

    std::array<EntityIdMap::Near, g_iPlaces> numbers;    ///< by address
    std::array<SeenNumbers::Near, g_iPlaces> seenKept;   ///< in the numbers met that came with a file, by address
    SeenNumbers::Near seenDealt;                         ///< in the dealt ones met

private:
    [[nodiscard]] static std::size_t iPlace(const Entity* pEntity) noexcept {
        return (reinterpret_cast<std::uintptr_t>(pEntity) >> 20) % g_iPlaces;
    }
};

/// The part of a walk that does not care where its statements go.
class OXA_IFC_API WriteInfoCommon {
public:
    /// A walk that has met nothing yet. The map is not owned, and gets the numbers that the walk deals.
    explicit WriteInfoCommon(EntityIdMap& entityIdMap) : m_pEntityIdMap(&entityIdMap) {}
    WriteInfoCommon(const WriteInfoCommon&) = delete;
    WriteInfoCommon& operator=(const WriteInfoCommon&) = delete;

    /// The number of an entity, which a walk of one thread queues when it meets it for the first time; 0 for null. For
    /// whoever names entities from outside of a statement: seeds, and the ifcXML export.
    std::size_t iEntityIdGet(const Entity* pEntity) { return iEntityIdQueue(pEntity); }
    /// As iEntityIdGet(), for a walk of one thread.
    std::size_t iEntityIdQueue(const Entity* pEntity) { return iEntityIdQueue(pEntity, m_near); }
    /// The same with what the caller has found last.
    std::size_t iEntityIdQueue(const Entity* pEntity, WalkNear& nearby) {
        const std::size_t iId = iEntityIdMet(pEntity, nearby);
        return iId == EntityIdMap::g_iNoneBeside ? iEntityIdQueueFar(pEntity, nearby) : iId;
    }
    /// The number of an entity that this run has met and that stands near the last ones; EntityIdMap::g_iNoneBeside for any
    /// other, and for null. From any thread that has a "nearby" of its own.
    [[nodiscard]] static std::size_t iEntityIdMet(const Entity* pEntity, WalkNear& nearby) noexcept {
        const std::size_t iId = EntityIdMap::iBeside(pEntity, nearby.number(pEntity));
        return SeenNumbers::boMarkedBeside(static_cast<std::uint32_t>(iId), nearby.seen(pEntity))
                   ? iId
                   : EntityIdMap::g_iNoneBeside;
    }
    /// As iEntityIdQueue() for each of a list, in its order, for a walk that has met nothing yet. The list must stay as it is
    /// until the walk has ended, which takes its entities from there. boAsRead: what they lead to are entities of a read.
    void vQueueAll(const std::vector<Entity*>& entities, bool boAsRead);
    /// Puts what still waits in that list into m_queue, in front of all others.
    void vListedQueue();
    /// Whether nothing waits to be composed.
    [[nodiscard]] bool boQueueEmpty() const noexcept { return m_listed.empty() && m_queue.empty(); }
    ///@{
    /// What the walk had met before it began: all that have numbers which came with a file, so that what stands beside the
    /// last ones is met; and all that anything of them leads to.
    [[nodiscard]] bool boSeededMet() const noexcept { return m_boSeededMet; }
    [[nodiscard]] bool boAllMet() const noexcept { return m_boAllMet; }
    ///@}
    /// As iEntityIdQueue() for an entity that has a number; false, and nothing done, for one that has none.
    bool boNumberedQueue(const Entity& entity) {
        return iEntityIdMet(&entity, m_near) != EntityIdMap::g_iNoneBeside || boNumberedQueueFar(entity);
    }
    /// The number of an entity that is composed right now: this run has met it, and need not queue it. One thread.
    std::size_t iEntityIdMark(const Entity& entity);
    /// Whether this run has met the entity. Once its threads have ended.
    [[nodiscard]] bool boMet(const Entity& entity) const;
    /// The numbers of those of the entities that this run has met, ascending. Once its threads have ended.
    [[nodiscard]] std::vector<std::size_t> metNumbers(const std::vector<Entity*>& entities) const;

    ///@{
    /// All that this run has met, empty instances included. By number, and of two with one number first the one that
    /// the file gave it to; in the order of a list of numbers, with the others behind it by number. Once its threads
    /// have ended.
    [[nodiscard]] std::vector<const Entity*> metByNumber() const;
    [[nodiscard]] std::vector<const Entity*> metByFile(std::span<const std::uint32_t> numbers) const;
    ///@}

    /// Those of them whose numbers came with no file, by number.
    [[nodiscard]] std::vector<const Entity*> metUnseeded() const;

    EntityIdMap* m_pEntityIdMap;         ///< the numbers of the Data; shared with later runs
    std::span<Entity* const> m_listed;   ///< waiting to be composed, in front of m_queue; see vQueueAll
    std::deque<const Entity*> m_queue;   ///< waiting to be composed
    std::uint32_t m_iDequeued = 0;       ///< taken from the queue so far

protected:
    /// True the first time.
    bool boMark(const Entity* pEntity, const EntityIdMap::Number& number, WalkNear& nearby) {
        if (number.boSeeded) return m_seenSeeded.boMark(static_cast<std::uint32_t>(number.iId), nearby.seen(pEntity));
        if (number.iDealt != EntityIdMap::g_iNotDealt) return m_seenDealt.boMark(number.iDealt, nearby.seenDealt);
        return m_seenFar.insert(pEntity).second;
    }
    /// Whether boMark takes it without the lock of the walk.
    [[nodiscard]] static bool boBit(const EntityIdMap::Number& number) noexcept {
        return number.boSeeded || number.iDealt != EntityIdMap::g_iNotDealt;
    }
    /// Whether this run has met the entity, whose number that is.
    [[nodiscard]] bool boMet(const Entity& entity, const EntityIdMap::Number& number) const {
        if (number.boSeeded) return m_seenSeeded.boMarked(static_cast<std::uint32_t>(number.iId));
        if (number.iDealt != EntityIdMap::g_iNotDealt) return m_seenDealt.boMarked(number.iDealt);
        return m_seenFar.contains(&entity);
    }

    /// iEntityIdQueue() of one that a short look does not tell as met.
    std::size_t iEntityIdQueueFar(const Entity* pEntity, WalkNear& nearby);
    /// As that, of boNumberedQueue().
    bool boNumberedQueueFar(const Entity& entity);
    /// The number of an entity that stands near the last ones, which is queued the first time; else
    /// EntityIdMap::g_iNoneBeside.
    std::size_t iEntityIdQueueBeside(const Entity* pEntity, WalkNear& nearby) {
        const std::size_t iId = EntityIdMap::iBeside(pEntity, nearby.number(pEntity));
        if (iId != EntityIdMap::g_iNoneBeside &&
            m_seenSeeded.boMark(static_cast<std::uint32_t>(iId), nearby.seen(pEntity)))
            m_queue.push_back(pEntity);
        return iId;
    }

    WalkNear m_near;              ///< of the one thread, or under the lock
    SeenNumbers m_seenSeeded;     ///< entities whose number came with a file
    SeenNumbers m_seenDealt;      ///< those whose number was dealt, by the place of that
    bool m_boSeededMet = false;   ///< m_seenSeeded has all there are
    bool m_boAllMet = false;      ///< and there are no others
    std::unordered_set<const Entity*>
        m_seenFar;   ///< those whose number came with a document and has more than 32 bits
};

/// A walk whose statements go to a writer of lines, with the lock that its threads share.
class OXA_IFC_API StepWriteInfoCommon : public WriteInfoCommon {
public:
    /// Nothing is owned; the map, the errors and the writer must outlive it.
    StepWriteInfoCommon(EntityIdMap& entityIdMap, io::WriteError& errors, io::IfcLineWriterInterface& writer,
                        bool boSingleThreaded)
        : WriteInfoCommon(entityIdMap),
          m_pErrors(&errors),
          m_pWriter(&writer),
          m_boSingleThreaded(boSingleThreaded) {}

    /// As the base, from any thread: queues under the lock.
    std::size_t iEntityIdGet(const Entity* pEntity);
    /// The number, for a composing thread: what this run meets for the first time is put into "found", which the thread
    /// queues later (boTake).
    std::size_t iEntityIdCollect(const Entity* pEntity, std::vector<const Entity*>& found, WalkNear& nearby);
    /// The same for an entity that has a number; false, and nothing done, for one that has none.
    bool boNumberedCollect(const Entity& entity, std::vector<const Entity*>& found, WalkNear& nearby) {
        return iEntityIdMet(&entity, nearby) != EntityIdMap::g_iNoneBeside ||
               boNumberedCollectFar(entity, found, nearby);
    }

    /// For a composing thread beside others. Queues "found", which is emptied, then waits for work and takes a share
    /// of it. "boActive" is the thread's own, false at first. Calls "progress" for each entity taken, under the lock.
    /// False: the walk has ended.
    bool boTake(std::vector<const Entity*>& found, std::vector<const Entity*>& share, bool& boActive,
                const std::function<void(unsigned)>& progress);
    /// Ends the walk where it stands.
    void vStop();

    io::WriteError* m_pErrors;               ///< where statements report
    io::IfcLineWriterInterface* m_pWriter;   ///< where statements go
    std::mutex m_mutex;                      ///< guards m_queue, m_iDequeued, m_seenFar and the two below
    std::condition_variable m_changed;       ///< m_queue has grown, or the walk has ended
    std::int32_t m_iActive = 0;              ///< threads that took an entity and have not seen the queue empty since
    bool m_boDone = false;                   ///< the walk has ended
    bool m_boSingleThreaded;                 ///< all of the walk runs on the thread of the caller
    /// 0: the writer takes each statement by itself. Else it takes several as one text, LF between them, which a
    /// composing thread hands over once it has that many bytes.
    std::size_t m_iBlockSize = 0;

private:
    bool boNumberedCollectFar(const Entity& entity, std::vector<const Entity*>& found, WalkNear& nearby);
};

/// One composing thread: its strings keep their capacity from statement to statement.
struct StepWriteInfo {
    /// What becomes of the entities that a statement names, and of the statement.
    enum class Pass : std::uint8_t {
        AtOnce,      ///< the ones go to the queue, the other to the writer, at once: nothing is lost with this object
        InBatches,   ///< both wait here for a while; for a thread of a walk, which hands them on in the end
        Numbers,     ///< all are met: entities are asked for their numbers only, and what is new after all waits here
    };

    /// For one thread of that walk, which must outlive it.
    explicit StepWriteInfo(StepWriteInfoCommon& common, Pass ePass = Pass::AtOnce) noexcept
        : m_pCommon(&common),
          m_boInverses(ePass != Pass::Numbers),
          m_ePass(ePass),
          m_boBesideMet(ePass == Pass::Numbers || common.boSeededMet()) {}

    /// The number of an entity that the statement names; 0 for null. One that this run meets for the first time is
    /// queued or collected.
    std::size_t iEntityIdNamed(const Entity* pEntity) {
        const std::size_t iId = m_boBesideMet ? EntityIdMap::iBeside(pEntity, m_near.number(pEntity))
                                              : WriteInfoCommon::iEntityIdMet(pEntity, m_near);
        return iId == EntityIdMap::g_iNoneBeside ? iEntityIdFar(pEntity) : iId;
    }
    /// Whether statements are composed behind each other in m_block, for a writer that takes blocks; else each of them in
    /// m_line.
    [[nodiscard]] bool boInBlocks() const noexcept { return m_pCommon->m_iBlockSize > 0 && m_ePass != Pass::AtOnce; }
    /// Hands the statement in m_line on: to the writer, or to this thread's block where the writer takes blocks.
    void vLineAdd();
    /// One statement more is in the block, which ends there now: hands it on once it is large enough, unless the caller
    /// does that (Pass::Numbers).
    void vBlockGrown(std::size_t iBlock);
    /// Hands the rest of the block on.
    void vBlockAdd();

    std::string m_line;                   ///< the statement, where it is composed by itself
    std::string m_block;                  ///< statements on their way to a writer that takes blocks, then room for more
    std::size_t m_iBlock = 0;             ///< bytes of m_block that are statements
    std::vector<const Entity*> m_found;   ///< met for the first time, not queued yet; beside other threads only
    WalkNear m_near;                      ///< what this thread found last
    std::string m_encoded;                ///< scratch for encoded text
    StepWriteInfoCommon* m_pCommon;       ///< what the threads share
    std::uint32_t m_iId = 0;              ///< of the statement
    bool m_boInverses;                    ///< who refers to the instance is to be met, too
    Pass m_ePass;                         ///< fixed from the start
    bool m_boBesideMet;                   ///< what came with a file has been met; fixed from the start

private:
    std::size_t iEntityIdFar(const Entity* pEntity);
};

}   // namespace oxa::ifc
