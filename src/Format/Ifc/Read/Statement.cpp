// SPDX-License-Identifier: Apache-2.0
// From entity statements to entities, and those into the list and the map of GlobalIds.
#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcFileError.h"
#include "Format/Ifc/Read/InstanceNumber.h"
#include "Format/Ifc/Read/ReadContext.h"
#include "Format/Ifc/Read/ReadThread.h"
#include "Format/Ifc/Text/Keyword.h"

namespace oxa::ifc {

using def::schema::ObjectName;

namespace {

void vReport(StepReadInfoData& info, ReportKey eKey) {
    info.m_pCommon->m_pError->add(nullptr, eKey, info.sourceText(), info.m_iLine);
}

// "#number=" at the begin of a statement: where the keyword begins. Null where there is none, which is reported, and fatal:
// what follows can't be trusted to be a statement.
const char* pKeyword(StepReadInfoData& info, std::int32_t& iId) {
    const std::string_view line = info.m_line;
    if (line.empty() || line[0] != '#') {
        vReport(info, ReportKey::ExpectedNumberSign);
        return nullptr;
    }
    const char* const pNumber = line.data() + 1;
    const char* const pLast = line.data() + line.size();
    if (const char* const pEqual = details::pHeadNumber(pNumber, pLast, iId)) return pEqual + 1;
    // A malformed number has no key of its own.
    vReport(info,
            details::pHeadEnd(pNumber, pLast) ? ReportKey::ExpectedLeftParenthesis : ReportKey::ExpectedEqualOperator);
    return nullptr;
}

// False for most that are none. The types of a tree have numbers without a gap.
bool boMayBeSubtype(const def::schema::Entity& type, const def::schema::Entity* pWanted) noexcept {
    return pWanted && type.iTypeOrdinal >= pWanted->iTypeOrdinal && type.iTypeOrdinal <= pWanted->iTypeOrdinalLast;
}

}   // namespace

// One statement to one result, null where it yields no entity: a batch relates results to lines by their position. Only
// a malformed head is fatal. An unknown type costs its statement, and so does a parameter list that is never closed.
bool Data::boReadLine(StepReadInfoData& info, std::vector<Entity*>& result) {
    const auto giveUp = [&result] {
        result.push_back(nullptr);
        return false;
    };
    const auto passOver = [&info] { info.m_pCommon->m_pError->vPassedOverAdd(info.m_iLine); };
    const std::string_view line = info.m_line;
    const char* const pLast = line.data() + line.size();
    std::int32_t iNumber = 0;
    const char* const pName = pKeyword(info, iNumber);
    if (!pName) return giveUp();
    const def::schema::Entity* pType =
        info.m_pThread && m_pSchema ? info.m_pThread->pEntityExpected(*m_pSchema, pName, pLast) : nullptr;
    const char* const pOpen = pType ? pName + pType->sNameUpper.size() : details::pFindOpening(pName, pLast);
    if (!pOpen) {
        vReport(info, ReportKey::InvalidEntity);
        return giveUp();
    }
    if (!m_pSchema) {
        passOver();
        return giveUp();
    }
    if (!pType) {
        const std::string_view keyword(pName, static_cast<std::size_t>(pOpen - pName));
        pType = info.m_pThread ? info.m_pThread->pEntityFromKeyword(*m_pSchema, keyword)
                               : m_pSchema->pEntityFromName(ObjectName(keyword));
        if (!pType) {
            vReport(info, ReportKey::UnknownEntityType);
            return giveUp();
        }
        if (info.m_pThread) info.m_pThread->vEntityMet(*pType);
    }
    const auto iId = static_cast<unsigned>(iNumber);   // a negative number lands far up in the table
    const auto iOpen = static_cast<std::size_t>(pOpen - line.data());
    std::size_t iClose = line.size() - 2;
    if (!line.ends_with(");")) {
        iClose = line.rfind(')');
        // A text that ends with ");" has lost nothing; a tab is the one blank that comes up to here.
        if (iClose + 2 != line.size() && line.find_first_not_of("\t;", iClose + 1) != std::string_view::npos)
            passOver();
        if (iClose == std::string_view::npos)
            return giveUp();   // one before the "(" would be part of number or keyword
    }
    return boEntityAdd(iId, *pType, info, iOpen, iClose - iOpen + 1, result) || giveUp();
}

// The type that an instance of an abstract type is kept as. Such a statement is a fault of the file, but the parameters
// of the nearest concrete supertype are the first ones of its own, so those values can be kept.
const def::schema::Entity* Data::pConcreteType(const def::schema::Entity& type, StepReadInfoData& info) const {
    vReport(info, ReportKey::EntityIsAbstract);
    for (const def::schema::Entity* pType = type.pParent; pType; pType = pType->pParent)
        if (!pType->boAbstract) return pType;
    // No concrete supertype: an abstract building element is kept as a proxy, with what its statement holds.
    const auto* pElement = def::schema::pAsEntity(m_pSchema->pObjectFromName("IfcBuildingElement"));
    if (!def::schema::boIsSubtype(&type, pElement)) return nullptr;
    return def::schema::pAsEntity(m_pSchema->pObjectFromName("IfcBuildingElementProxy"));
}

// The slot is fixed by the number. Two statements with one number are a fault of the file, but they may be parsed at
// the same time: the lock keeps the three pointers of the slot together, and the later statement simply starts anew,
// leaving the blocks of the earlier one behind in the pool. The GUID is read out here, under the lock, for who
// enters it: what that would find in the slot later might be the other statement's (boNumberReused makes it look again).
bool Data::boEntityAdd(unsigned iId, const def::schema::Entity& type, StepReadInfoData& info, std::size_t iOffset,
                       std::size_t iLength, std::vector<Entity*>& result) {
    const def::schema::Entity* pType = type.boAbstract ? pConcreteType(type, info) : &type;
    if (!pType) return false;
    EntitySlot& slot = info.m_pCommon->slotGet(*this, iId);
    slot.vReferencedSet(info.m_pCommon->m_boParallel);
    Entity& entity = slot.entity;

    std::optional<EntitySlotLock> lock;
    if (info.m_pCommon->m_boParallel) lock.emplace(slot);
    if (entity.m_pSchemaEntity) {
        info.m_pCommon->m_pError->add(nullptr, ReportKey::EntityIdReused, std::to_string(iId), info.sourceText(),
                                      info.m_iLine);
        if (info.m_pRooted) info.m_pRooted->boNumberReused = true;
        // The later statement wins; what the earlier one holds stays behind in the pool.
        entity.m_pSchemaEntity = nullptr;
        entity.m_pAttributes = nullptr;
        entity.m_ppAttributesInverse = nullptr;
    }
    entity.vAttributesRead(*this, *pType, info, iOffset, iLength);
    if (info.m_pRooted && boMayBeSubtype(*pType, info.m_pCommon->m_pRootSchema))
        if (const std::optional<Guid> guid = rootGuid(entity, *info.m_pCommon))
            info.m_pRooted->results.push_back({result.size(), *guid});
    result.push_back(&entity);
    if (!pProject()) vProjectOffer(&entity);
    return true;
}

// The first attribute of every rooted entity is its GUID, by position.
std::optional<Guid> Data::rootGuid(const Entity& entity, const StepReadInfoDataCommon& common) {
    if (!def::schema::boIsSubtype(&entity.schemaEntity(), common.m_pRootSchema)) return std::nullopt;
    const AttributeBase* pCell = entity.pAttributeFromIndex(0).second;
    if (!pCell || !pCell->m_boGuid) return std::nullopt;   // a foreign schema may have another attribute in front
    return static_cast<const AttributeGuid*>(pCell)->m_value.load();
}

// Memory first: an entity is entered in the list and in the map of GUIDs, or in none.
void Data::vEntityEnter(Entity* pEntity, bool boMayBeRooted) {
    if (boMayBeRooted) m_guidEntityMap.vReserveOne();
    if (m_entities.size() == m_entities.capacity()) vEntitiesGrow();
    m_entities.push_back(pEntity);
}

// As a vector grows, but with huge pages for what has become large, and by more: room that is not used is address space
// alone, where each step leaves the list before it behind for a while. With what the heap puts in front of it a large list
// is a multiple of a huge page, which systems then begin at such a multiple.
void Data::vEntitiesGrow() {
    constexpr std::size_t g_iPerHugePage = memory::g_iSegmentBytes / sizeof(Entity*);
    constexpr std::size_t g_iOfTheHeap = 64 / sizeof(Entity*);
    std::size_t iRoom = std::max<std::size_t>(8 * m_entities.capacity(), 64);
    if (iRoom >= g_iPerHugePage) {
        // Of each such list the first part, where the heap has written already, is of small pages: so they are few.
        const std::size_t iHugePages = std::max<std::size_t>(iRoom / 2 / g_iPerHugePage, 4);
        iRoom = iHugePages * g_iPerHugePage - g_iOfTheHeap;
    }
    std::vector<Entity*> larger;
    larger.reserve(iRoom);
    memory::vFillSoon(larger.data(), larger.capacity() * sizeof(Entity*));
    larger.assign(m_entities.begin(), m_entities.end());
    m_entities = std::move(larger);
}

// Two ways to the same end. This one looks at the instance, for a slot that was filled twice. vEntityEnterTold() was told
// the GUID by who parsed the statement: to another thread the instance is a cache miss, and with millions of instances
// those misses would be much of what only one thread can do at a time.
void Data::finalizeEntity(Entity* pEntity, StepReadInfoDataCommon& common, std::string_view line, unsigned iLine) {
    if (!pEntity) return;
    vEntityEnter(pEntity, common.m_pRootSchema);
    std::optional<EntitySlotLock> lock;
    if (common.m_boParallel) lock.emplace(EntitySlot::fromEntity(*pEntity));
    if (const std::optional<Guid> guid = rootGuid(*pEntity, common)) vGuidEnter(*guid, pEntity, common, line, iLine);
    vProjectOffer(pEntity);
}

void Data::vEntityEnterTold(Entity* pEntity, const Guid* pRootGuid, StepReadInfoDataCommon& common,
                            std::string_view line, unsigned iLine) {
    if (!pEntity) return;
    vEntityEnter(pEntity, pRootGuid);
    if (pRootGuid) vGuidEnter(*pRootGuid, pEntity, common, line, iLine);
}

// The map keeps the earlier of two.
void Data::vGuidEnter(const Guid& guid, Entity* pEntity, StepReadInfoDataCommon& common, std::string_view line,
                      unsigned iLine) {
    if (guid.boIsNull())
        common.m_pError->add(nullptr, ReportKey::UnexpectedNullGuid, std::string(line), iLine);
    else if (!m_guidEntityMap.boInsert(guid, pEntity))
        common.m_pError->add(nullptr, ReportKey::DuplicateGuids, std::string(line), iLine);
}

}   // namespace oxa::ifc
