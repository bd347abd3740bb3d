// SPDX-License-Identifier: Apache-2.0
// The write in two steps: first which entities, then their statements, in an order.
//
// Reach      the walk of a write without its text, over numbered entities; on several threads, since which entities it
//            meets does not depend on who comes first.
// Number     what has no number yet gets one, on one thread, in an order that the model alone decides.
// Compose    threads take shares of the list, and hand their text on in the order of the list.
#include <algorithm>
#include <array>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "Core/Utilities/Threads/Team.h"
#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcWriteFile.h"
#include "Format/Ifc/Write/EntityNamed.h"
#include "Format/Ifc/Write/FetchAhead.h"
#include "Format/Ifc/Write/ReachWalk.h"
#include "Format/Ifc/Write/WriteThreads.h"

namespace oxa::ifc {

namespace {

using Entities = std::vector<const Entity*>;

// The statements of a list of entities, composed share by share and handed on in the order of the list.
class OrderedStatements {
public:
    OrderedStatements(StepWriteInfoCommon& info, const Entities& entities, const WriteProgress& progress)
        : m_info(info),
          m_entities(entities),
          m_progress(progress) {}

    // One composing thread.
    void vCompose(bool boCaller) {
        StepWriteInfo statement(m_info, StepWriteInfo::Pass::Numbers);
        const bool boBlocks = m_info.m_iBlockSize > 0;
        for (;;) {
            const std::size_t iShare = m_iNext.fetch_add(1, std::memory_order_relaxed);
            const std::size_t iBegin = iShare * g_iShare;
            if (iBegin >= m_entities.size()) return vFoundQueue(statement);
            const std::size_t iEnd = std::min(iBegin + g_iShare, m_entities.size());
            if (!boBlocks && !boTurnWait(iShare)) return;   // the writer wants each statement by itself
            for (std::size_t i = iBegin; i < iEnd; ++i) {
                vFetchAhead<Entity::Wanted::Text>(m_entities, i);
                m_entities[i]->vWrite(statement);
            }
            if (boBlocks) {
                if (!boHandOver(iShare, statement)) return;
            } else {
                vTurnPass(iShare);
            }
            if (boCaller) vTell(iEnd);
        }
    }

    // So many are composed. By the caller's thread.
    void vTell(std::size_t iComposed) {
        if (!m_progress || iComposed <= m_iTold) return;
        m_iTold = iComposed;
        m_progress(static_cast<unsigned>(iComposed));
    }

    void vStop() {
        const std::lock_guard lock(m_mutex);
        m_boStopped = true;
        m_changed.notify_all();
    }

private:
    // What this thread has found after all.
    void vFoundQueue(const StepWriteInfo& statement) {
        if (statement.m_found.empty()) return;
        const std::lock_guard lock(m_info.m_mutex);
        m_info.m_queue.insert(m_info.m_queue.end(), statement.m_found.begin(), statement.m_found.end());
    }

    static constexpr std::size_t g_iShare = 256;   // some ten thousand bytes of text
    // Texts that may wait for one that is late, or for the stream, as long as they are not that large: on a busy machine
    // a thread may rest for long, and one share of long statements may be as large as many others.
    static constexpr std::size_t g_iAhead = 128;
    static constexpr std::size_t g_iAheadBytes = 16 * 1024 * 1024;
    static constexpr std::size_t g_iKeptCapacity = 128 * 1024;   // a larger text is not kept for reuse

    struct Text {
        std::string block;
        std::uint32_t iId = 0;   // of its last statement
        bool boReady = false;
    };

    // False: the write has ended for another thread's fault.
    bool boTurnWait(std::size_t iShare) {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return m_boStopped || m_iTurn == iShare; });
        return !m_boStopped;
    }
    void vTurnPass(std::size_t iShare) {
        const std::lock_guard lock(m_mutex);
        m_iTurn = iShare + 1;
        m_changed.notify_all();
    }

    // Leaves the text for the thread that comes to its turn, which may be this one. False as above.
    //
    // Texts are composed in any order and written in the order of their shares. A thread that has the text at its turn
    // writes it, if none is writing; any other leaves its text at its place in a ring, and who writes takes on all that
    // are ready from the turn on. A thread waits where its text would be too far ahead, in shares or in bytes, so that a
    // slow stream or one late share cannot pile up the whole model as text. No wait is for ever: the share at its turn is
    // never held back, whatever lies in the ring, and shares are given out in order, so that the share at its turn is
    // always with a thread that runs.
    bool boHandOver(std::size_t iShare, StepWriteInfo& statement) {
        statement.m_block.resize(std::exchange(statement.m_iBlock, 0));
        std::unique_lock lock(m_mutex);
        // The text at its turn never waits, whatever the others hold: they wait for it.
        m_changed.wait(lock, [&] {
            return m_boStopped || iShare == m_iTurn || (iShare < m_iTurn + g_iAhead && m_iBytes < g_iAheadBytes);
        });
        if (m_boStopped) return false;
        if (iShare == m_iTurn && !m_boWriting) {
            m_boWriting = true;
            vTextWrite(lock, statement.m_block, statement.m_iId);
            vReadyWrite(lock);
            return true;
        }
        Text& text = m_texts[iShare % g_iAhead];
        text.block.swap(statement.m_block);
        text.iId = statement.m_iId;
        text.boReady = true;
        m_iBytes += text.block.size();
        return true;
    }

    // Hands on the text at its turn, and lets go of the lock for that.
    void vTextWrite(std::unique_lock<std::mutex>& lock, std::string& block, std::uint32_t iId) {
        lock.unlock();
        if (!block.empty()) m_info.m_pWriter->iLineAdd(block, iId);
        if (block.capacity() > g_iKeptCapacity) std::string().swap(block);
        lock.lock();
        ++m_iTurn;
        m_changed.notify_all();
    }
    // Hands on what is ready, from the turn on, for the thread that is writing.
    void vReadyWrite(std::unique_lock<std::mutex>& lock) {
        for (Text* pText = &m_texts[m_iTurn % g_iAhead]; pText->boReady; pText = &m_texts[m_iTurn % g_iAhead]) {
            const std::size_t iBytes = pText->block.size();
            pText->boReady = false;   // its place is not given away before its turn is over
            vTextWrite(lock, pText->block, pText->iId);
            m_iBytes -= iBytes;
        }
        m_boWriting = false;
    }

    StepWriteInfoCommon& m_info;
    const Entities& m_entities;
    const WriteProgress& m_progress;
    std::size_t m_iTold = 0;               // the caller's
    std::atomic<std::size_t> m_iNext{0};   // share
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::array<Text, g_iAhead> m_texts;   // of the shares from m_iTurn on; guarded by m_mutex, but the one at its turn
    std::size_t m_iTurn = 0;              // the share whose text comes next; guarded by m_mutex
    std::size_t m_iBytes = 0;             // of the texts that are ready; guarded by m_mutex
    bool m_boWriting = false;             // a thread is handing texts on; guarded by m_mutex
    bool m_boStopped = false;             // guarded by m_mutex
};

}   // namespace

// Meets what the queue leads to over numbered entities. True when all that these name has a number. One thread.
bool Data::boReachNumbered(StepWriteInfoCommon& info) const {
    bool boAllNumbered = true;
    vForEachQueued<Entity::Wanted::Named>(info, [&](const Entity* pEntity) {
        if (!pEntity) return;
        pEntity->vForEachNamedEntity([&](const Entity& named) { boAllNumbered &= info.boNumberedQueue(named); });
    });
    return boAllNumbered;
}

// Meets the rest, dealing numbers. These must not depend on which thread came first. Numbered entities are met in any
// order, because their numbers are settled. New ones are dealt here, on one thread, by a walk whose order the model
// alone decides: from the entities that are met by now, the lowest number first, to what each of them names, in the
// order in which its statement names it.
void Data::vReachOthers(StepWriteInfoCommon& info) const {
    for (const Entity* pEntity : info.metByNumber())
        pEntity->vForEachNamedEntity([&info](const Entity& named) { info.iEntityIdQueue(&named); });
    vMeet(info);
}

void Data::vMeet(WriteInfoCommon& info) const {
    vForEachQueued<Entity::Wanted::Named>(info, [&info](const Entity* pEntity) {
        pEntity->vForEachNamedEntity([&info](const Entity& named) { info.iEntityIdQueue(&named); });
    });
}

// One thread has nobody to wait for, and walks in the order of the queue. Where all are met, as in a write of a whole model
// as it was read, there is no walk.
void Data::vWriteInOrder(StepWriteInfoCommon& info, const WriteOptions& options) const {
    Entities entities;
    const auto list = [&](bool boAllNumbered) {
        if (!boAllNumbered) vReachOthers(info);
        entities = options.eOrder == WriteOrder::File ? info.metByFile(options.fileNumbers) : info.metByNumber();
    };
    OrderedStatements statements(info, entities, options.progress);
    const unsigned iThreads = info.m_boSingleThreaded ? 1 : 1 + iExtraOrderedThreads(m_entities.size());
    const bool boWalk = !info.boAllMet() || !info.m_queue.empty();
    if (boWalk)
        info.vListedQueue();
    else
        info.m_listed = {};
    if (iThreads == 1) {
        list(!boWalk || boReachNumbered(info));
        statements.vCompose(true);
    } else {
        ReachWalk reach(info);
        const auto work = [&](util::Team& team, unsigned iPart) {
            if (boWalk) reach.vWalk(team.iParts());
            if (!team.boMeet(iPart)) return;
            if (iPart == 0) list(reach.boAllNumbered());
            if (team.boMeet(iPart)) statements.vCompose(iPart == 0);
        };
        util::Team::vRun(iThreads, [&](util::Team& team, unsigned iPart) {
            try {
                work(team, iPart);
            } catch (...) {
                reach.vStop();
                statements.vStop();
                throw;
            }
        });
    }
    const std::size_t iLate = info.boQueueEmpty() ? 0 : iWriteLate(info);
    statements.vTell(entities.size() + iLate);   // others may have had the last share
    info.m_pWriter->vFinish();
}

// What a caller has put into a cell past the setters, an entity of another model for instance, is found when it is named. It
// comes behind all others. Returns how many there were.
std::size_t Data::iWriteLate(StepWriteInfoCommon& info) const {
    std::vector<std::pair<std::size_t, const Entity*>> numbered;
    vForEachQueued<Entity::Wanted::Named>(info, [&](const Entity* pEntity) {
        numbered.emplace_back(info.iEntityIdQueue(pEntity), pEntity);
        pEntity->vForEachNamedEntity([&info](const Entity& named) { info.iEntityIdQueue(&named); });
    });
    std::ranges::sort(numbered);
    Entities entities;
    for (const auto& [iId, pEntity] : numbered) entities.push_back(pEntity);
    const WriteProgress none;
    OrderedStatements(info, entities, none).vCompose(true);
    return entities.size();
}

// Only a dealt number can be another one's too, and only one that came with a file can be that.
void Data::vNumbersTwiceTell(StepWriteInfoCommon& info) const {
    for (const Entity* pEntity : info.metUnseeded()) {
        const std::size_t iId = iIdFromEntity(*pEntity);
        const Entity* pOther = info.m_pEntityIdMap->pSeededFromId(iId);
        if (pOther == pEntity) continue;   // the number of a document beyond those of statements
        if (pEntity->pSchemaEntity() && pOther && pOther->pSchemaEntity() && info.boMet(*pOther))
            info.m_pErrors->add(pEntity, ReportKey::NumberWrittenTwice, std::to_string(iId), pEntity->sWriteLine(*this),
                                static_cast<unsigned>(iId));
    }
}

// Threads that walk and compose in one wait for each other's finds, so several threads first meet all and then compose, in
// any order as in that of numbers; unless the writer wants each statement by itself, for whose turn they would wait.
void Data::vWriteWith(StepWriteInfoCommon& info, const WriteOptions& options) const {
    const bool boAny = options.eOrder == WriteOrder::Any;
    if (boAny && (info.m_boSingleThreaded || info.m_iBlockSize == 0)) {
        vWrite(info, options.progress);
    } else {
        if (boAny && iExtraWriteThreads() > 0) vSortEntities();   // as that does
        vWriteInOrder(info, options);
    }
    if (options.boTellNumbersTwice) vNumbersTwiceTell(info);
    if (options.pWritten) *options.pWritten = info.metNumbers(m_entities);
}

}   // namespace oxa::ifc
