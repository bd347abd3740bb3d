// SPDX-License-Identifier: Apache-2.0
// What belongs to an excerpt, by a walk over numbers: the model's references are noted once, as positions in one list of
// entities, apart from those by which relationships hang on their members. A walk then goes from each entity that is
// kept to all that it refers to, and asks the relationships that it is a member of whether they come along now. Each
// reference is looked at once.
#include "Convert/Excerpt.h"

#include <algorithm>
#include <cstring>
#include <unordered_set>
#include <utility>

#include "Convert/ModelGraph.h"
#include "Convert/References.h"
#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "Model/RelationTable.h"
#include "Model/Relations.h"

namespace oxa::convert {

namespace schema = ifc::def::schema;
using detail::Class;
using detail::Relation;
using detail::Side;
using ifc::Entity;
using Index = ModelGraph::Index;

struct Excerpts::State : ModelGraph {
    using ModelGraph::ModelGraph;

    [[nodiscard]] Index iOf(const Element& element) const {
        const Index i = ModelGraph::iOf(&element.core());
        if (i == g_iNone) throw HandleError("an element of another model");
        return i;
    }
    [[nodiscard]] Index iIfKnown(const Entity* pEntity) const { return ModelGraph::iOf(pEntity); }
};

// The walk for one excerpt.
class Excerpts::Gatherer {
public:
    explicit Gatherer(const State& state) : m_state(state), m_met(state.ends.size()), m_open(state.entities.size(), 0) {
        m_excerpt.m_kept.resize(state.entities.size());
        if (const Entity* pProject = state.data().pProject()) vKeep(state.iIfKnown(pProject));
    }

    // With its parts, and what is above it.
    void vChoose(const Element& element) {
        std::vector<Element> below{element};
        while (!below.empty()) {
            const Element one = below.back();
            below.pop_back();
            const Index i = m_state.iOf(one);
            if (!m_whole.insert(i).second) continue;
            vKeep(i);
            for (const Element part : parts(one)) below.push_back(part);
            for (const Element content : contents(one)) below.push_back(content);
            m_state.table.forEachRelationship(*m_state.entities[i], Relation::Group, Side::Whole, [&](Entity& group) {
                m_state.table.forEachOn(group, Relation::Group, Side::Part, [&](const Entity& member) {
                    below.push_back(m_state.model.byId(m_state.data().iIdFromEntity(member)));
                    vAbove(below.back());
                });
            });
        }
        vAbove(element);
    }

    // What it hangs under.
    void vAbove(const Element& element) {
        for (Element above = parent(element); above; above = parent(above)) {
            if (!m_above.insert(m_state.iOf(above)).second) return;
            vKeep(m_state.iOf(above));
            vShapeKeep(*m_state.entities[m_state.iOf(above)]);
        }
    }

    void vKeep(Index i) {
        if (i == State::g_iNone || m_excerpt.m_kept[i]) return;
        m_excerpt.m_kept[i] = true;
        ++m_excerpt.m_iCount;
        m_queue.push_back(i);
    }

    Excerpt finish() {
        while (!m_queue.empty()) {
            const Index i = m_queue.back();
            m_queue.pop_back();
            vNeededKeep(i);
            for (std::size_t k = m_state.firstUse[i]; k < m_state.firstUse[i + 1]; ++k) vEndMet(m_state.uses[k]);
        }
        vCut();
        return std::move(m_excerpt);
    }

private:
    // Openings and projections of an element that stays as it looks.
    void vShapeKeep(const Entity& entity) {
        for (const Relation eRelation : {Relation::Void, Relation::Projection})
            m_state.table.forEachRelationship(entity, eRelation, Side::Whole, [&](Entity& relationship) {
                m_state.table.forEachOn(relationship, eRelation, Side::Part,
                                        [&](const Entity& part) { vKeep(m_state.iIfKnown(&part)); });
            });
    }

    // What it refers to. The ends of what is kept are there already, apart from single ones of what was not asked.
    void vNeededKeep(Index i) {
        for (std::size_t k = m_state.firstTarget[i]; k < m_state.firstTarget[i + 1]; ++k) vKeep(m_state.targets[k]);
        for (std::size_t iEnd = m_state.firstEnd[i]; iEnd < m_state.firstEnd[i + 1]; ++iEnd) {
            const State::End& end = m_state.ends[iEnd];
            if (end.boList || end.eRole == Role::May) continue;
            for (std::size_t k = end.iFirst; k < end.iLast; ++k) vKeep(m_state.endTargets[k]);
        }
    }

    // Something that an end names is kept now.
    void vEndMet(std::size_t iEnd) {
        const State::End& end = m_state.ends[iEnd];
        if (end.eRole == Role::May || m_met[iEnd]) return;
        m_met[iEnd] = true;
        ++m_open[end.iOwner];
        std::size_t iJoined = 0;
        for (std::size_t k = m_state.firstEnd[end.iOwner]; k < m_state.firstEnd[end.iOwner + 1]; ++k)
            if (m_state.ends[k].eRole == Role::Joins) ++iJoined;
        if (end.eRole == Role::Follows || m_open[end.iOwner] == iJoined) vKeep(end.iOwner);
    }

    void vCut() {
        for (Index i = 0; i < m_state.entities.size(); ++i) {
            if (!m_excerpt.m_kept[i]) continue;
            for (std::size_t iEnd = m_state.firstEnd[i]; iEnd < m_state.firstEnd[i + 1]; ++iEnd) {
                const State::End& end = m_state.ends[iEnd];
                Excerpt::Cut cut{iEnd, {}};
                for (std::size_t k = end.iFirst; k < end.iLast; ++k)
                    if (m_excerpt.m_kept[m_state.endTargets[k]]) cut.members.push_back(m_state.endTargets[k]);
                if (cut.members.size() < end.iLast - end.iFirst || !end.boWhole)
                    m_excerpt.m_cuts.push_back(std::move(cut));
            }
        }
    }

    const State& m_state;
    Excerpt m_excerpt;
    std::vector<Index> m_queue;
    std::vector<bool> m_met;             // ends
    std::vector<std::uint8_t> m_open;    // ends of an owner that are met
    std::unordered_set<Index> m_whole;   // chosen, with all below
    std::unordered_set<Index> m_above;
};

Excerpts::Excerpts(Model& model) : m_pState(std::make_unique<State>(model)) {}
Excerpts::~Excerpts() = default;

Excerpt Excerpts::of(const Elements& chosen) const {
    const std::vector<Element> elements(chosen.begin(), chosen.end());
    return of(std::span<const Element>(elements));
}

Excerpt Excerpts::of(std::span<const Element> chosen) const {
    Gatherer gatherer(*m_pState);
    for (const Element element : chosen) gatherer.vChoose(element);
    return gatherer.finish();
}

Excerpt Excerpts::rest(std::span<const Excerpt> excerpts) const {
    const State& state = *m_pState;
    std::vector<bool> there(state.entities.size());
    std::vector<bool> whole(state.ends.size());                  // ends that are whole in one of them
    std::vector<std::vector<bool>> members(state.ends.size());   // of ends that are cut in all: who is in one of them
    for (const Excerpt& excerpt : excerpts) {
        std::vector<bool> cut(state.ends.size());
        for (const Excerpt::Cut& one : excerpt.m_cuts) cut[one.iEnd] = true;
        for (std::size_t iEnd = 0; iEnd < state.ends.size(); ++iEnd)
            if (excerpt.m_kept[state.ends[iEnd].iOwner] && !cut[iEnd]) whole[iEnd] = true;
        for (Index i = 0; i < there.size(); ++i)
            if (excerpt.m_kept[i]) there[i] = true;
    }
    for (const Excerpt& excerpt : excerpts)
        for (const Excerpt::Cut& cut : excerpt.m_cuts) {
            if (whole[cut.iEnd]) continue;
            const State::End& end = state.ends[cut.iEnd];
            members[cut.iEnd].resize(end.iLast - end.iFirst);
            for (std::size_t k = end.iFirst; k < end.iLast; ++k)
                if (excerpt.m_kept[state.endTargets[k]]) members[cut.iEnd][k - end.iFirst] = true;
        }
    Gatherer gatherer(state);
    bool boAny = false;
    const auto vAdd = [&](Index i) {
        boAny = true;
        gatherer.vKeep(i);
        if (state.table.boIs(*state.entities[i], Class::ObjectDefinition))
            gatherer.vAbove(state.model.byId(state.data().iIdFromEntity(*state.entities[i])));
    };
    for (Index i = 0; i < there.size(); ++i)
        if (!there[i]) vAdd(i);
    for (std::size_t iEnd = 0; iEnd < state.ends.size(); ++iEnd) {
        if (whole[iEnd]) continue;
        const State::End& end = state.ends[iEnd];
        for (std::size_t k = end.iFirst; k < end.iLast; ++k) {
            if (!members[iEnd].empty() && members[iEnd][k - end.iFirst]) continue;
            vAdd(end.iOwner);
            vAdd(state.endTargets[k]);
        }
    }
    return boAny ? gatherer.finish() : Excerpt();
}

// What a model had before.
struct ShownExcerpt::State {
    struct Hidden {
        Entity* pEntity;
        const schema::Entity* pType;
    };
    struct List {
        ifc::AttributeList* pList;
        void* pItems;
    };
    std::vector<Hidden> hidden;
    std::vector<List> lists;
    std::vector<ifc::AttributeBase*> undefined;
};

namespace {

// Some of the items of a list, in a new block of the pool.
void* pItemsOf(const ifc::AttributeList& list, const std::vector<const Entity*>& members, ifc::Pool& pool) {
    const auto boMember = [&](const Entity* pEntity) { return std::ranges::binary_search(members, pEntity); };
    if (list.m_eItemType.load() == ifc::AttributeType::Entity) {
        ifc::EntityList* pHead = nullptr;
        if (const ifc::EntityList* pAll = list.pEntities())
            for (Entity* pEntity : *pAll)
                if (boMember(pEntity))
                    vListAppend(pHead, pEntity, [&pool](std::size_t iBytes) { return pool.pAllocate(iBytes); });
        return pHead;
    }
    // Selects: the items share their values with those of the whole list.
    using Items = ifc::Array<ifc::AttributeSelect>;
    const auto* pAll = list.pArray<ifc::AttributeSelect>();
    Items* const pItems = Items::pFromBytes(pool.pAllocate(Items::iBlockSize(members.size())), members.size());
    std::size_t iCount = 0;
    for (const ifc::AttributeSelect& item : *pAll) {
        bool boKept = false;
        vForEachNamed(item, ifc::CellClass::Select, [&](const Entity* pEntity) { boKept = boMember(pEntity); });
        if (boKept && iCount < members.size())
            std::memcpy(static_cast<void*>(&(*pItems)[iCount++]), static_cast<const void*>(&item), sizeof item);
    }
    pItems->vCountSet(iCount);
    return pItems;
}

}   // namespace

// All memory is taken before the first change, so that a lack of it leaves the model as it was.
ShownExcerpt::ShownExcerpt(const Excerpts& excerpts, const Excerpt& excerpt) : m_pState(std::make_unique<State>()) {
    const Excerpts::State& state = *excerpts.m_pState;
    std::vector<void*> items;
    for (const Excerpt::Cut& cut : excerpt.m_cuts) {
        const Excerpts::State::End& end = state.ends[cut.iEnd];
        ifc::AttributeBase* pCell = state.entities[end.iOwner]->pAttributeFromIndex(end.iCell).second;
        if (!end.boList || (cut.members.empty() && end.eRole == Role::May)) {
            m_pState->undefined.push_back(pCell);
            continue;
        }
        std::vector<const Entity*> members;
        for (const Index i : cut.members) members.push_back(state.entities[i]);
        std::ranges::sort(members);
        auto* pList = static_cast<ifc::AttributeList*>(pCell);
        m_pState->lists.push_back({pList, pList->m_pItems});
        items.push_back(pItemsOf(*pList, members, state.data().pool()));
    }
    const std::size_t iKept = excerpt.m_kept.size();   // none of an empty excerpt
    for (Index i = 0; i < state.entities.size(); ++i)
        if (i >= iKept || !excerpt.m_kept[i])
            m_pState->hidden.push_back({state.entities[i], state.entities[i]->pSchemaEntity()});
    static_cast<void>(state.data().entities());   // sorted by type as long as all have one
    for (std::size_t i = 0; i < items.size(); ++i) m_pState->lists[i].pList->m_pItems = items[i];
    for (ifc::AttributeBase* pCell : m_pState->undefined) pCell->m_boUndefined = true;
    for (const State::Hidden& hidden : m_pState->hidden) hidden.pEntity->unsafeSetSchemaEntity(nullptr);
}

ShownExcerpt::~ShownExcerpt() {
    for (const State::Hidden& hidden : m_pState->hidden) hidden.pEntity->unsafeSetSchemaEntity(hidden.pType);
    for (ifc::AttributeBase* pCell : m_pState->undefined) pCell->m_boUndefined = false;
    for (const State::List& list : m_pState->lists) list.pList->m_pItems = list.pItems;
}

}   // namespace oxa::convert
