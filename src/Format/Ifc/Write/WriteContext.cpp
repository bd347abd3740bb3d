// SPDX-License-Identifier: Apache-2.0
// Which entities a walk has met, and their order; how several threads share one queue. Entities are marked as bits, without
// a lock: by the number of the file, or by the place of a dealt one. Only those that a document has given more than 32 bits
// are in a set under the lock.
#include "Format/Ifc/Write/WriteContext.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "Format/Ifc/IfcWriteFile.h"

namespace oxa::ifc {

std::size_t WriteInfoCommon::iEntityIdQueueFar(const Entity* pEntity, WalkNear& near) {
    if (!pEntity) return 0;
    const std::size_t iId = iEntityIdQueueBeside(pEntity, near);
    if (iId != EntityIdMap::g_iNoneBeside) return iId;
    const EntityIdMap::Number number = m_pEntityIdMap->settled(pEntity, near.number(pEntity));
    if (boMark(pEntity, number, near)) m_queue.push_back(pEntity);
    return number.iId;
}

bool WriteInfoCommon::boNumberedQueueFar(const Entity& entity) {
    if (iEntityIdQueueBeside(&entity, m_near) != EntityIdMap::g_iNoneBeside) return true;
    const std::optional<EntityIdMap::Number> known = m_pEntityIdMap->known(&entity, m_near.number(&entity));
    if (known && boMark(&entity, *known, m_near)) m_queue.push_back(&entity);
    return known.has_value();
}

// The first entities of the list wait where they are, up to one that stands there twice. No other thread walks yet.
void WriteInfoCommon::vQueueAll(const std::vector<Entity*>& entities, bool boAsRead) {
    std::size_t iListed = 0;
    std::size_t iSeeded = 0;
    const auto boMarkFirst = [&](const Entity* pEntity) {
        const EntityIdMap::Number number = m_pEntityIdMap->settled(pEntity, m_near.number(pEntity));
        if (!number.boSeeded) return boMark(pEntity, number, m_near);
        const bool boFirst = m_seenSeeded.boMarkAlone(static_cast<std::uint32_t>(number.iId), m_near.seen(pEntity));
        iSeeded += boFirst;
        return boFirst;
    };
    while (iListed < entities.size() && entities[iListed] && boMarkFirst(entities[iListed])) ++iListed;
    m_listed = std::span(entities).first(iListed);
    for (const Entity* pEntity : std::span(entities).subspan(iListed)) iEntityIdQueue(pEntity);
    m_boSeededMet = iSeeded == m_pEntityIdMap->iSeeded();
    m_boAllMet = boAsRead && m_boSeededMet && iSeeded == entities.size();
}

void WriteInfoCommon::vListedQueue() {
    m_queue.insert(m_queue.begin(), m_listed.begin(), m_listed.end());
    m_listed = {};
}

std::size_t WriteInfoCommon::iEntityIdMark(const Entity& entity) {
    const EntityIdMap::Number number = m_pEntityIdMap->settled(&entity, m_near.number(&entity));
    boMark(&entity, number, m_near);
    return number.iId;
}

bool WriteInfoCommon::boMet(const Entity& entity) const {
    EntityIdMap::Near near;
    const std::optional<EntityIdMap::Number> known = m_pEntityIdMap->known(&entity, near);
    return known && boMet(entity, *known);
}

// Kept numbers are many and are put in order by a bit each: those of the list, of which the ones that were met are taken.
// The rest is sorted.
std::vector<std::size_t> WriteInfoCommon::metNumbers(const std::vector<Entity*>& entities) const {
    SeenNumbers listed;
    WalkNear near;
    std::size_t iListed = 0;
    std::vector<std::size_t> others;
    const auto vListed = [&](const Entity* pEntity, std::size_t iId) {
        iListed += listed.boMark(static_cast<std::uint32_t>(iId), near.seen(pEntity));
    };
    for (const Entity* pEntity : entities) {
        const std::size_t iBeside = EntityIdMap::iBeside(pEntity, near.number(pEntity));
        if (iBeside != EntityIdMap::g_iNoneBeside) {
            vListed(pEntity, iBeside);
            continue;
        }
        const std::optional<EntityIdMap::Number> known = m_pEntityIdMap->known(pEntity, near.number(pEntity));
        if (!known) continue;
        if (known->boSeeded)
            vListed(pEntity, known->iId);
        else if (boMet(*pEntity, *known))
            others.push_back(known->iId);
    }
    std::ranges::sort(others);
    others.erase(std::unique(others.begin(), others.end()), others.end());   // an entity may be in the list twice
    std::vector<std::size_t> numbers;
    numbers.reserve(iListed + others.size());
    auto other = others.begin();
    m_seenSeeded.vForEach([&](std::uint32_t iId) {
        if (!listed.boMarked(iId)) return;
        for (; other != others.end() && *other <= iId; ++other) numbers.push_back(*other);
        numbers.push_back(iId);
    });
    numbers.insert(numbers.end(), other, others.end());
    return numbers;
}

std::vector<const Entity*> WriteInfoCommon::metUnseeded() const {
    std::vector<std::pair<std::size_t, const Entity*>> numbered = m_pEntityIdMap->dealtOf(m_seenDealt);
    for (const Entity* pEntity : m_seenFar) numbered.emplace_back(m_pEntityIdMap->get(pEntity).first, pEntity);
    if (!m_seenFar.empty()) std::ranges::sort(numbered);
    std::vector<const Entity*> entities;
    entities.reserve(numbered.size());
    for (const auto& [iId, pEntity] : numbered) entities.push_back(pEntity);
    return entities;
}

// Both parts are in order already, so they are merged. Of two with one number the seeded one comes first, as a merge
// takes equal ones of its first range first.
std::vector<const Entity*> WriteInfoCommon::metByNumber() const {
    std::vector<const Entity*> seeded = m_pEntityIdMap->seededOf(m_seenSeeded);
    std::vector<const Entity*> others = metUnseeded();
    if (others.empty()) return seeded;
    if (seeded.empty()) return others;
    std::vector<const Entity*> entities;
    entities.reserve(seeded.size() + others.size());
    std::ranges::merge(
        seeded, others, std::back_inserter(entities), {},
        [this](const Entity* pEntity) { return m_pEntityIdMap->get(pEntity).first; },
        [this](const Entity* pEntity) { return m_pEntityIdMap->get(pEntity).first; });
    return entities;
}

// The numbers in the order of the file first, each once; the rest by number. A bit for what was placed costs less than
// looking the entities up again.
std::vector<const Entity*> WriteInfoCommon::metByFile(std::span<const std::uint32_t> numbers) const {
    std::vector<const Entity*> entities;
    SeenNumbers placed;
    SeenNumbers::Near near;
    for (const std::uint32_t iNumber : numbers)
        if (m_seenSeeded.boMarked(iNumber) && placed.boMark(iNumber, near))
            entities.push_back(m_pEntityIdMap->pSeededFromId(iNumber));
    EntityIdMap::Near nearNumber;
    for (const Entity* pEntity : metByNumber()) {
        const EntityIdMap::Number number = m_pEntityIdMap->number(pEntity, nearNumber);
        if (!number.boSeeded || !placed.boMarked(static_cast<std::uint32_t>(number.iId))) entities.push_back(pEntity);
    }
    return entities;
}

std::size_t StepWriteInfoCommon::iEntityIdGet(const Entity* pEntity) {
    if (m_boSingleThreaded) return iEntityIdQueue(pEntity);
    if (!pEntity) return 0;
    const std::lock_guard lock(m_mutex);
    const EntityIdMap::Number number = m_pEntityIdMap->number(pEntity, m_near.number(pEntity));
    if (boMark(pEntity, number, m_near)) m_queue.push_back(pEntity);
    m_changed.notify_all();
    return number.iId;
}

std::size_t StepWriteInfoCommon::iEntityIdCollect(const Entity* pEntity, std::vector<const Entity*>& found,
                                                  WalkNear& near) {
    if (!pEntity) return 0;
    const EntityIdMap::Number number = m_pEntityIdMap->number(pEntity, near.number(pEntity));
    std::unique_lock lock(m_mutex, std::defer_lock);
    if (!boBit(number)) lock.lock();
    if (boMark(pEntity, number, near)) found.push_back(pEntity);
    return number.iId;
}

bool StepWriteInfoCommon::boNumberedCollectFar(const Entity& entity, std::vector<const Entity*>& found,
                                               WalkNear& near) {
    const std::optional<EntityIdMap::Number> known = m_pEntityIdMap->known(&entity, near.number(&entity));
    if (!known) return false;
    std::unique_lock lock(m_mutex, std::defer_lock);
    if (!boBit(*known)) lock.lock();
    if (boMark(&entity, *known, near)) found.push_back(&entity);
    return true;
}

// How a walk on several threads knows that it has ended. An empty queue is not enough: another thread may be composing
// a statement that names something new. m_iActive counts the threads that took a share and have not seen the queue
// empty since. A thread comes here, first queues what it has found, and only then looks: if the queue is empty, it has
// nothing left to add and leaves the count. When the last one leaves, the queue is empty and no thread is composing, so
// nothing can be queued any more: the walk is done, and all that wait are woken. A thread that gets work joins the
// count again. All of it happens under one lock, taken once a share and not once an instance; a share is an eighth of
// the queue, so that others get some, and at most 64, so that what is found in it does not keep others waiting.
bool StepWriteInfoCommon::boTake(std::vector<const Entity*>& found, std::vector<const Entity*>& share, bool& boActive,
                                 const std::function<void(unsigned)>& progress) {
    // Large enough that the lock is seldom taken, small enough that no thread runs dry beside a full queue.
    constexpr std::size_t g_iShareMax = 64;
    constexpr std::size_t g_iSharesOfQueue = 8;
    share.clear();
    std::unique_lock lock(m_mutex);
    if (!m_listed.empty()) vListedQueue();
    if (!found.empty()) {
        m_queue.insert(m_queue.end(), found.begin(), found.end());
        found.clear();
        m_changed.notify_all();
    }
    if (m_queue.empty()) {
        if (boActive && --m_iActive == 0) {
            m_boDone = true;
            m_changed.notify_all();
        }
        boActive = false;
        m_changed.wait(lock, [this] { return m_boDone || !m_queue.empty(); });
    }
    if (m_boDone) return false;
    m_iActive += !boActive;
    boActive = true;
    const std::size_t iShare = std::clamp(m_queue.size() / g_iSharesOfQueue, std::size_t{1}, g_iShareMax);
    for (std::size_t i = 0; i < iShare; ++i) {
        if (m_queue.front()) share.push_back(m_queue.front());
        m_queue.pop_front();
        ++m_iDequeued;
        if (progress) progress(m_iDequeued);
    }
    return true;
}

void StepWriteInfoCommon::vStop() {
    const std::lock_guard lock(m_mutex);
    m_boDone = true;
    m_changed.notify_all();
}

std::size_t StepWriteInfo::iEntityIdFar(const Entity* pEntity) {
    if (m_ePass == Pass::Numbers && !m_pCommon->boAllMet())
        return pEntity ? m_pCommon->m_pEntityIdMap->settled(pEntity, m_near.number(pEntity)).iId : 0;
    if (m_pCommon->m_boSingleThreaded) return m_pCommon->iEntityIdQueue(pEntity, m_near);
    if (m_ePass == Pass::AtOnce) return m_pCommon->iEntityIdGet(pEntity);
    return m_pCommon->iEntityIdCollect(pEntity, m_found, m_near);
}

void StepWriteInfo::vLineAdd() {
    if (!boInBlocks()) {
        m_pCommon->m_pWriter->iLineAdd(m_line, m_iId);
        return;
    }
    m_block.resize(m_iBlock);
    if (m_iBlock > 0) m_block.push_back('\n');
    m_block.append(m_line);
    vBlockGrown(m_block.size());
}

// Statements are gathered in a block where the writer takes blocks, so that its lock is taken once a block and not once
// a statement.
void StepWriteInfo::vBlockGrown(std::size_t iBlock) {
    m_iBlock = iBlock;
    if (m_iBlock >= m_pCommon->m_iBlockSize && m_ePass == Pass::InBatches) vBlockAdd();
}

// The block is empty before the writer gets it, which may fail: what it did not take is lost, and not handed on twice.
void StepWriteInfo::vBlockAdd() {
    if (m_iBlock == 0) return;
    m_block.resize(std::exchange(m_iBlock, 0));
    m_pCommon->m_pWriter->iLineAdd(m_block, m_iId);
}

}   // namespace oxa::ifc
