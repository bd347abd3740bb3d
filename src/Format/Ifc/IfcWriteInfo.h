// IfcWriteInfo: what travels with a write: the queue of a walk over the model, and the statement in hand.
//
// A write is a graph walk: each composed statement asks for the numbers of the entities that it names, and that
// puts those on the queue. There is no other list of what to write.
//
// Callers  Data, the cells, the writers, the ifcXML export, and seeds of library users.
// Threads  StepWriteInfoCommon: the composing threads of one run share it. StepWriteInfo belongs to one of them.
#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "Format/Ifc/IfcEntityIdMap.h"
#include "platform/Export.h"

namespace oxa::ifc {

class Entity;
namespace io {
class IfcLineWriterInterface;
class WriteError;
}   // namespace io

// The part of a walk that does not care where its statements go.
class OXA_IFC_API WriteInfoCommon {
public:
    explicit WriteInfoCommon(EntityIdMap& entityIdMap) noexcept : m_pEntityIdMap(&entityIdMap) {}
    WriteInfoCommon(const WriteInfoCommon&) = delete;
    WriteInfoCommon& operator=(const WriteInfoCommon&) = delete;

    // The number of an entity, which is queued when this run meets it for the first time; 0 for null. One thread.
    std::size_t iEntityIdGet(const Entity* pEntity);

    EntityIdMap* m_pEntityIdMap;              // the numbers of the Data; shared with later runs
    std::deque<const Entity*> m_queue;        // waiting to be composed
    std::uint32_t m_iDequeued = 0;            // taken from the queue so far

private:
    // True the first time. Entities whose number came with a file cost one bit.
    bool boMark(const Entity* pEntity, const EntityIdMap::Number& number);

    static constexpr std::size_t g_iSeenPage = 32768;
    std::unordered_map<std::size_t, std::unique_ptr<std::bitset<g_iSeenPage>>> m_seenSeeded;   // by page of numbers
    std::unordered_set<const Entity*> m_seen;                                                  // all others
};

class OXA_IFC_API StepWriteInfoCommon : public WriteInfoCommon {
public:
    StepWriteInfoCommon(EntityIdMap& entityIdMap, io::WriteError& errors, io::IfcLineWriterInterface& writer,
                        bool boSingleThreaded) noexcept
        : WriteInfoCommon(entityIdMap), m_pErrors(&errors), m_pWriter(&writer), m_boSingleThreaded(boSingleThreaded) {}

    // As the base, from any composing thread.
    std::size_t iEntityIdGet(const Entity* pEntity);

    io::WriteError* m_pErrors;                // where statements report
    io::IfcLineWriterInterface* m_pWriter;    // where statements go
    std::mutex m_mutex;                       // guards the base's members and the two below
    std::int32_t m_iActive = 0;               // threads that took an entity and have not seen the queue empty since
    bool m_boDone = false;                    // the walk has ended
    bool m_boSingleThreaded;
};

// One composing thread: its strings keep their capacity from statement to statement.
struct StepWriteInfo {
    explicit StepWriteInfo(StepWriteInfoCommon& common) noexcept : m_pCommon(&common) {}

    std::string m_line;                       // the statement
    std::string m_encoded;                    // scratch for encoded text
    std::array<char, 65> m_number;            // scratch for one number
    StepWriteInfoCommon* m_pCommon;
    std::uint32_t m_iId = 0;                  // of the statement
};

}   // namespace oxa::ifc
