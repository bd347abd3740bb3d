// SPDX-License-Identifier: Apache-2.0
// One model into another, in passes: which entities of the other stand for entities that are there; which of those have
// to be apart after all; what is needed; copies, relationships last.
#include "Convert/Merge.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "Convert/MergeKeys.h"
#include "Convert/MergeUnits.h"
#include "Convert/ModelGraph.h"
#include "Convert/References.h"
#include "Format/Ifc/IfcGuid.h"
#include "Format/Ifc/IfcTypeSelectBase.h"
#include "Model/Relations.h"

namespace oxa::convert {

namespace schema = ifc::def::schema;
using detail::Class;
using detail::Relation;
using detail::RelationTable;
using detail::Side;
using detail::Slot;
using ifc::Entity;
using Index = ModelGraph::Index;

MergeError::~MergeError() = default;

namespace {

// Whether an inverse list has room for one referrer.
bool boOne(const schema::AttributeInverse& inverse) { return !inverse.boAggregate || inverse.sBounds.ends_with(":1]"); }

// The entities that an attribute names, in its order.
std::vector<Entity*> named(const Entity& entity, unsigned iCell) {
    std::vector<Entity*> found;
    vForEachNamed(*entity.pAttributeFromIndex(iCell).second,
                  Entity::getDataSize(*entity.pSchemaEntity()).cells[iCell].eClass,
                  [&](Entity* pEntity) { found.push_back(pEntity); });
    return found;
}

// Makes a list name these entities, be its items references or selects of them.
void vNamedSet(Entity& entity, unsigned iCell, const std::vector<Entity*>& members, ifc::Data& data) {
    const auto [pAttribute, pCell] = entity.pAttributeFromIndex(iCell);
    const schema::AttributeName name(*pAttribute);
    const schema::DataTypeBase* pAggregate = schema::pDataTypeOf(pAttribute->pType());
    if (schema::pAsEntity(pAggregate->pElementGet())) {
        entity.boListValueSet(name, std::vector<const Entity*>(members.begin(), members.end()), data);
        return;
    }
    using ifc::types::IfcSelectBase;
    entity.boListValueSet(name, std::vector<IfcSelectBase>(members.size()), data);
    auto& list = static_cast<ifc::AttributeList&>(*pCell);
    std::vector<IfcSelectBase> values;
    for (Entity* pMember : members) values.emplace_back(pMember);
    if (list.m_eItemType.load() == ifc::AttributeType::Entity) {
        entity.boListValueSet(name, values, data);
        return;
    }
    auto& items = *list.pArray<ifc::AttributeSelect>();
    for (std::size_t i = 0; i < values.size(); ++i)
        if (items[i].boValueSet(values[i], nullptr, data.pool())) items[i].vDefined();
}

// Announces a new member to itself.
void vAnnounce(Entity& entity, unsigned iCell, Entity& member, ifc::Data& data) {
    for (const schema::AttributeInverse* pInverse : entity.pAttributeFromIndex(iCell).first->inverses)
        if (entity.boIsCompatible(pInverse->pForEntity) && member.boIsCompatible(pInverse->pOwner))
            member.vEntityInverseAdd(data, &entity, schema::AttributeName(*pInverse));
}

}   // namespace

struct Merger::State {
    explicit State(Model& given) : into(given), table(*data().pSchema()), units(given) {
        MergeKeys keys(data(), table);
        std::unordered_set<const Entity*> seen;
        for (Entity* pEntity : data().entities())
            if (pEntity->pSchemaEntity() && seen.insert(pEntity).second)
                vEnter(keys, *pEntity, *pEntity, data().iIdFromEntity(*pEntity));
    }

    [[nodiscard]] ifc::Data& data() const { return into.core().dataBase(); }

    // An entity of some model, and the one that stands for it.
    void vEnter(MergeKeys& keys, const Entity& source, Entity& here, std::uint64_t iNumber) {
        if (const Guid* pGuid = keys.pGuid(source))
            byGuid.try_emplace(*pGuid, Rooted{&here, keys.key(source)});
        else
            byKey[keys.key(source)].push_back({&here, iNumber});
    }

    struct Rooted {
        Entity* pEntity;
        MergeKeys::Hash key;
    };
    struct Known {
        Entity* pEntity;
        std::uint64_t iNumber;   // in the model that it came from
    };

    Model& into;
    RelationTable table;
    MergeUnits units;
    std::unordered_map<Guid, Rooted> byGuid;
    std::unordered_map<MergeKeys::Hash, std::vector<Known>, compare::ContentHashHash> byKey;
};

// One model on its way in.
class Merger::Adder {
public:
    Adder(State& state, Model& from, const MergeOptions& options)
        : m_state(state),
          m_options(options),
          m_graph(from),
          m_keys(m_graph.data(), m_graph.table),
          m_to(m_graph.entities.size()),
          m_states(m_graph.entities.size(), New),
          m_needed(m_graph.entities.size()) {}

    Merged run() {
        vRootedMatch();
        if (m_options.join == Join::Name) vNamesMatch();
        vOthersMatch();
        vPart();
        // From here on it is settled what stands for something that is there.
        if (!m_merged.conflicts.empty() && m_options.same == Same::Fail) return finished();
        vNeededGather();
        vWholesMatch();
        vCreate();
        vValuesCopy();
        vUnite();
        vProjectUnite();
        vEnter();
        m_merged.done = true;
        return finished();
    }

private:
    enum What : std::uint8_t {
        New,
        Shared,    // says the same as the one that is there
        Joined,    // a spatial element, or the project
        United,    // its lists go to the one that is there
        Dropped,   // gives way to the one that is there
    };

    [[nodiscard]] ifc::Data& data() const { return m_state.data(); }
    [[nodiscard]] const Entity& entity(Index i) const { return *m_graph.entities[i]; }
    [[nodiscard]] std::uint64_t iNumber(Index i) const { return m_graph.data().iIdFromEntity(entity(i)); }
    [[nodiscard]] bool boIs(Index i, Class eClass) const { return m_graph.table.boIs(entity(i), eClass); }
    [[nodiscard]] bool boTypeOf(Index i, const Entity& other) const {
        return entity(i).pSchemaEntity()->sNameUpper == other.pSchemaEntity()->sNameUpper;
    }
    void vMatch(Index i, What eWhat, Entity& there) {
        m_states[i] = eWhat;
        m_to[i] = &there;
    }
    Merged finished() {
        for (auto* pList : {&m_merged.conflicts, &m_merged.differing})
            std::ranges::sort(*pList, {}, &MergeConflict::second);
        return std::move(m_merged);
    }
    [[nodiscard]] MergeConflict conflict(Index i, const Entity& there) const {
        const Guid* pGuid = m_keys.pGuid(entity(i));
        return {pGuid ? ifc::IfcGuid::toIfcGuid(*pGuid) : std::string(), there.pSchemaEntity()->sName,
                data().iIdFromEntity(there), iNumber(i)};
    }

    void vJoin(Index i, Entity& there, bool boEqual) {
        vMatch(i, Joined, there);
        ++m_merged.joined;
        if (!boEqual) m_merged.differing.push_back(conflict(i, there));
    }

    void vRootedMatch() {
        const Entity* pProject = m_graph.data().pProject();
        Entity* pProjectHere = data().pProject();
        for (Index i = 0; i < m_states.size(); ++i) {
            const Guid* pGuid = m_keys.pGuid(entity(i));
            if (!pGuid) continue;
            const auto found = m_state.byGuid.find(*pGuid);
            const bool boThere = found != m_state.byGuid.end();
            if (&entity(i) == pProject && pProjectHere) {
                // What parts of one model say of contexts and units is united, so that it is no difference.
                vJoin(i, *pProjectHere, sTextOf(i) == sTextOf(*pProjectHere));
                continue;
            }
            if (!boThere) continue;
            Entity& there = *found->second.pEntity;
            const bool boEqual = boTypeOf(i, there) && found->second.key == m_keys.key(entity(i));
            if (boIs(i, Class::SpatialElement) && boTypeOf(i, there) && m_options.join != Join::None) {
                vJoin(i, there, boEqual);
            } else if (boEqual) {
                vMatch(i, m_keys.boUnites(entity(i)) ? United : Shared, there);
            } else {
                m_merged.conflicts.push_back(conflict(i, there));
                vMatch(i, Dropped, there);
            }
        }
    }
    [[nodiscard]] std::string sTextOf(const Entity& entity) const {
        const char* pText = m_state.table.pText(entity, Slot::RootName);
        return pText ? pText : "";
    }
    [[nodiscard]] std::string sTextOf(Index i) const {
        const char* pText = m_graph.table.pText(entity(i), Slot::RootName);
        return pText ? pText : "";
    }

    // From the project down, a level a round.
    void vNamesMatch() {
        std::map<std::tuple<const Entity*, std::string, std::string>, Entity*> here;
        for (const Element element : spatial(m_state.into))
            if (const Element above = parent(element); above)
                here.try_emplace({&above.core(), std::string(element.type()), sTextOf(element.core())},
                                 &element.core());
        const Elements elements = spatial(m_graph.model);
        for (bool boAny = true; boAny;) {
            boAny = false;
            for (const Element element : elements) {
                const Index i = m_graph.iOf(&element.core());
                const Element above = m_states[i] == New ? parent(element) : Element();
                const Index iAbove = above ? m_graph.iOf(&above.core()) : ModelGraph::g_iNone;
                const std::string sName = sTextOf(i);
                if (iAbove == ModelGraph::g_iNone || !m_to[iAbove] || sName.empty()) continue;
                const auto found = here.find({m_to[iAbove], std::string(element.type()), sName});
                if (found == here.end()) continue;
                vJoin(i, *found->second, true);
                here.erase(found);
                boAny = true;
            }
        }
    }
    static Elements spatial(const Model& model) {
        return model.all(model.knows("IfcSpatialElement") ? "IfcSpatialElement" : "IfcSpatialStructureElement");
    }

    // Contexts, units and owner histories are the same whatever their numbers; all else is where that is one too.
    void vOthersMatch() {
        std::vector<bool> frame(m_states.size());
        std::vector<Index> open;
        const auto vFrame = [&](const Entity* pEntity) {
            const Index i = m_graph.iOf(pEntity);
            if (i == ModelGraph::g_iNone || frame[i] || m_keys.pGuid(entity(i))) return;
            frame[i] = true;
            open.push_back(i);
        };
        for (Index i = 0; i < m_states.size(); ++i) {
            if (boIs(i, Class::RepresentationContext)) vFrame(&entity(i));
            for (const Slot eSlot : {Slot::OwnerHistory, Slot::UnitsInContext})
                m_graph.table.forEachNamed(entity(i), eSlot, [&](const Entity& one) { vFrame(&one); });
        }
        while (!open.empty()) {
            const Index i = open.back();
            open.pop_back();
            for (std::size_t k = m_graph.firstTarget[i]; k < m_graph.firstTarget[i + 1]; ++k)
                vFrame(m_graph.entities[m_graph.targets[k]]);
        }
        for (Index i = 0; i < m_states.size(); ++i) {
            if (m_states[i] != New || m_keys.pGuid(entity(i))) continue;
            const auto found = m_state.byKey.find(m_keys.key(entity(i)));
            if (found == m_state.byKey.end()) continue;
            const auto known = std::ranges::find(found->second, iNumber(i), &State::Known::iNumber);
            if (known == found->second.end() && !frame[i]) continue;
            Entity& there = known == found->second.end() ? *found->second.front().pEntity : *known->pEntity;
            vMatch(i, m_keys.boUnites(entity(i)) ? United : Shared, there);
        }
    }

    // What is new may name nothing that is shared and has room for one such referrer, nor add something to it: a style
    // would be a second one, a property of a material one of all that is made of it. What leads to such a thing is not
    // shared either; two elements of one GlobalId that lead to two such things are a conflict.
    void vPart() {
        const Referrers referrers(m_graph);
        std::unordered_map<const schema::Entity*, std::vector<Claim>> ofType;
        for (Index i = 0; i < m_states.size(); ++i)
            if (m_states[i] == New) m_open.push_back(i);
        while (!m_open.empty()) {
            const Index i = m_open.back();
            m_open.pop_back();
            const schema::Entity& type = *entity(i).pSchemaEntity();
            auto found = ofType.find(&type);
            if (found == ofType.end()) found = ofType.emplace(&type, cellsThatClaim(type)).first;
            for (const Claim& claim : found->second)
                for (const Entity* pNamed : named(entity(i), claim.iCell)) {
                    const Index iNamed = m_graph.iOf(pNamed);
                    if (iNamed == ModelGraph::g_iNone || !m_to[iNamed]) continue;
                    if (claim.boAdds || boTaken(*type.allAttributes()[claim.iCell], *m_to[iNamed]))
                        vApart(iNamed, false);
                }
            if (m_keys.pGuid(entity(i))) continue;
            for (std::size_t k = referrers.first[i]; k < referrers.first[i + 1]; ++k) vApart(referrers.all[k], true);
        }
    }
    // What is shared is so no longer.
    void vApart(Index i, bool boRooted) {
        if (i == ModelGraph::g_iNone || (m_states[i] != Shared && m_states[i] != United)) return;
        if (!m_keys.pGuid(entity(i))) {
            m_states[i] = New;
            m_to[i] = nullptr;
            m_open.push_back(i);
        } else if (boRooted) {
            m_merged.conflicts.push_back(conflict(i, *m_to[i]));
            m_states[i] = Dropped;
        }
    }
    // Who needs what, as ModelGraph::targets has it the other way round.
    struct Referrers {
        explicit Referrers(const ModelGraph& graph) : first(graph.entities.size() + 1), all(graph.targets.size()) {
            for (const Index i : graph.targets) ++first[i + 1];
            for (std::size_t i = 1; i < first.size(); ++i) first[i] += first[i - 1];
            std::vector<std::size_t> next(first.begin(), first.end() - 1);
            for (Index i = 0; i < graph.entities.size(); ++i)
                for (std::size_t k = graph.firstTarget[i]; k < graph.firstTarget[i + 1]; ++k)
                    all[next[graph.targets[k]]++] = i;
        }
        std::vector<std::size_t> first;
        std::vector<Index> all;
    };
    // An attribute that wants what it names for its own instance.
    struct Claim {
        unsigned iCell;
        bool boAdds;   // something to it, whether or not there is room
    };
    [[nodiscard]] std::vector<Claim> cellsThatClaim(const schema::Entity& type) const {
        std::vector<Claim> claims;
        const std::vector<Role> roles = rolesOf(type, m_graph.table);
        const bool boRooted = schema::boIsSubtype(&type, m_graph.table.pClass(Class::Root));
        for (unsigned i = 0; i < roles.size(); ++i) {
            const bool boAdds = roles[i] == Role::Follows && !boRooted;
            const auto& inverses = type.allAttributes()[i]->inverses;
            if (boAdds || std::ranges::any_of(inverses, [](const auto* p) { return boOne(*p); }))
                claims.push_back({i, boAdds});
        }
        return claims;
    }

    // New entities with a GlobalId, what nothing names, and all that these need. What only those name that give way is
    // not taken along.
    void vNeededGather() {
        std::vector<bool> isNamed(m_states.size());
        for (const Index i : m_graph.targets) isNamed[i] = true;
        for (const ModelGraph::End& end : m_graph.ends)
            for (std::size_t k = end.iFirst; k < end.iLast && end.eRole != Role::Follows; ++k)
                isNamed[m_graph.endTargets[k]] = true;
        for (Index i = 0; i < m_states.size(); ++i) {
            const bool boApart = !isNamed[i] && m_graph.firstEnd[i] == m_graph.firstEnd[i + 1];
            if (m_states[i] == New ? boApart || m_keys.pGuid(entity(i)) : m_states[i] != Dropped) vNeed(i);
        }
        const Index iProject = m_graph.data().pProject() ? m_graph.iOf(m_graph.data().pProject()) : ModelGraph::g_iNone;
        if (iProject != ModelGraph::g_iNone && m_states[iProject] == Joined) {
            m_graph.table.forEachNamed(entity(iProject), Slot::RepresentationContexts,
                                       [&](const Entity& context) { vNeed(m_graph.iOf(&context)); });
            for (const Element& unit : m_state.units.missing(m_graph.model)) vNeed(m_graph.iOf(&unit.core()));
        }
        while (!m_open.empty()) {
            const Index i = m_open.back();
            m_open.pop_back();
            if (m_states[i] == New) vNamedNeed(i);
            for (std::size_t k = m_graph.firstUse[i]; k < m_graph.firstUse[i + 1]; ++k) {
                const ModelGraph::End& end = m_graph.ends[m_graph.uses[k]];
                if (end.eRole == Role::Follows && m_states[end.iOwner] == New) vNeed(end.iOwner);
            }
        }
    }
    void vNeed(Index i) {
        if (m_needed[i]) return;
        m_needed[i] = true;
        m_open.push_back(i);
    }
    void vNamedNeed(Index i) {
        for (std::size_t k = m_graph.firstTarget[i]; k < m_graph.firstTarget[i + 1]; ++k)
            if (m_states[m_graph.targets[k]] == New) vNeed(m_graph.targets[k]);
        for (std::size_t iEnd = m_graph.firstEnd[i]; iEnd < m_graph.firstEnd[i + 1]; ++iEnd) {
            const ModelGraph::End& end = m_graph.ends[iEnd];
            for (std::size_t k = end.iFirst; k < end.iLast && !end.boList; ++k)
                if (m_states[m_graph.endTargets[k]] == New) vNeed(m_graph.endTargets[k]);
        }
    }

    // A whole that is there has its parts by one relationship, and what is a part already stays where it is.
    void vWholesMatch() {
        for (Index i = 0; i < m_states.size(); ++i) {
            if (m_states[i] != New || !m_needed[i] || !boIs(i, Class::Relationship)) continue;
            for (const Relation eRelation : {Relation::Aggregate, Relation::Nest, Relation::Content})
                m_graph.table.forEachOn(entity(i), eRelation, Side::Whole, [&](const Entity& whole) {
                    const Index iWhole = m_graph.iOf(&whole);
                    if (iWhole == ModelGraph::g_iNone || !m_to[iWhole]) return;
                    if (Entity* pThere = pFirstOf(*m_to[iWhole], eRelation); pThere && boTypeOf(i, *pThere))
                        vMatch(i, United, *pThere);
                });
            if (m_states[i] == New && boNothingLeft(i)) m_needed[i] = false;
        }
    }
    [[nodiscard]] Entity* pFirstOf(const Entity& whole, Relation eRelation) const {
        Entity* pFirst = nullptr;
        m_state.table.forEachRelationship(whole, eRelation, Side::Whole, [&](Entity& one) {
            if (!pFirst || data().iIdFromEntity(one) < data().iIdFromEntity(*pFirst)) pFirst = &one;
        });
        return pFirst;
    }
    // Whether an end of a new relationship has only members that have another one there.
    [[nodiscard]] bool boNothingLeft(Index i) const {
        for (std::size_t iEnd = m_graph.firstEnd[i]; iEnd < m_graph.firstEnd[i + 1]; ++iEnd) {
            const ModelGraph::End& end = m_graph.ends[iEnd];
            if (end.eRole != Role::May && members(end).empty()) return true;
        }
        return false;
    }
    // Who an end of a relationship names in the model that it goes to.
    [[nodiscard]] std::vector<Entity*> members(const ModelGraph::End& end) const {
        std::vector<Entity*> found;
        for (std::size_t k = end.iFirst; k < end.iLast; ++k) {
            const Index i = m_graph.endTargets[k];
            if (m_states[i] == New ? !m_needed[i] : boTaken(end, *m_to[i])) continue;
            found.push_back(m_to[i]);   // null before copies are made
        }
        return found;
    }
    // Whether what is there has somebody already who names it so, and room for one.
    [[nodiscard]] static bool boTaken(const schema::Attribute& attribute, const Entity& there) {
        for (const schema::AttributeInverse* pInverse : attribute.inverses) {
            if (!boOne(*pInverse) || !there.boIsCompatible(pInverse->pOwner)) continue;
            const int i = there.inverseIndexFromName(schema::AttributeName(*pInverse));
            if (i >= 0 && !there.entitiesInverseFromIndex(static_cast<unsigned>(i)).empty()) return true;
        }
        return false;
    }
    [[nodiscard]] bool boTaken(const ModelGraph::End& end, const Entity& there) const {
        return boTaken(*entity(end.iOwner).pAttributeFromIndex(end.iCell).first, there);
    }

    void vCreate() {
        for (Index i = 0; i < m_states.size(); ++i)
            if (m_states[i] == New && m_needed[i]) m_created.push_back(i);
        std::ranges::sort(m_created, {}, [this](Index i) { return iNumber(i); });
        // Ends are settled while inverse lists tell what was there before.
        for (const Index i : m_created) vEndsNote(i);
        for (Index i = 0; i < m_states.size(); ++i)
            if (m_states[i] == United) vEndsNote(i);
        for (const Index i : m_created) m_to[i] = &m_state.into.create(entity(i).pSchemaEntity()->sName).core();
        m_merged.added = m_created.size();
    }
    void vEndsNote(Index i) {
        for (std::size_t iEnd = m_graph.firstEnd[i]; iEnd < m_graph.firstEnd[i + 1]; ++iEnd) {
            const ModelGraph::End& end = m_graph.ends[iEnd];
            if (!end.boList) continue;
            std::vector<Index>& left = m_members[iEnd];
            for (std::size_t k = end.iFirst; k < end.iLast; ++k) {
                const Index iMember = m_graph.endTargets[k];
                const bool boGone = m_states[iMember] == New ? !m_needed[iMember] : boTaken(end, *m_to[iMember]);
                if (!boGone) left.push_back(iMember);
            }
        }
    }

    [[nodiscard]] Entity* pMapped(const Entity* pEntity) const {
        const Index i = m_graph.iOf(pEntity);
        return i == ModelGraph::g_iNone ? nullptr : m_to[i];
    }

    void vValuesCopy() {
        const auto mapEntity = [this](Entity* pEntity) { return pEntity ? pMapped(pEntity) : nullptr; };
        for (const Index i : m_created) {
            Entity& copy = *m_to[i];
            const auto& cells = Entity::getDataSize(*entity(i).pSchemaEntity()).cells;
            for (unsigned iCell = 0; iCell < cells.size(); ++iCell) {
                const auto [pAttribute, pFrom] = entity(i).pAttributeFromIndex(iCell);
                if (!pAttribute || !pAttribute->pType()) continue;
                const Guid* pGuid = cells[iCell].eClass == ifc::CellClass::Guid ? m_keys.pGuid(entity(i)) : nullptr;
                if (pGuid && data().boGuidSet(copy, *pGuid)) continue;
                pFrom->copyTo(*copy.pAttributeFromIndex(iCell).second, *pAttribute, *pAttribute, data(), mapEntity, {});
            }
            for (std::size_t iEnd = m_graph.firstEnd[i]; iEnd < m_graph.firstEnd[i + 1]; ++iEnd)
                if (m_graph.ends[iEnd].boList) vNamedSet(copy, m_graph.ends[iEnd].iCell, mapped(iEnd), data());
        }
        for (const Index i : m_created) m_to[i]->vAttributeInverseInit(data());
    }
    [[nodiscard]] std::vector<Entity*> mapped(std::size_t iEnd) const {
        std::vector<Entity*> found;
        if (const auto place = m_members.find(iEnd); place != m_members.end())
            for (const Index i : place->second) found.push_back(m_to[i]);
        return found;
    }

    void vUnite() {
        for (Index i = 0; i < m_states.size(); ++i) {
            if (m_states[i] != United) continue;
            Entity& there = *m_to[i];
            for (std::size_t iEnd = m_graph.firstEnd[i]; iEnd < m_graph.firstEnd[i + 1]; ++iEnd) {
                const ModelGraph::End& end = m_graph.ends[iEnd];
                if (end.boList)
                    vAppend(there, end.iCell, mapped(iEnd));
                else if (end.eRole == Role::May && !there.pAttributeFromIndex(end.iCell).second->boHasValue())
                    vReferenceSet(there, end);
            }
        }
    }
    void vReferenceSet(Entity& there, const ModelGraph::End& end) {
        const auto [pAttribute, pFrom] = entity(end.iOwner).pAttributeFromIndex(end.iCell);
        pFrom->copyTo(*there.pAttributeFromIndex(end.iCell).second, *pAttribute, *pAttribute, data(),
                      [this](Entity* pEntity) { return pMapped(pEntity); }, {});
        for (Entity* pNamed : named(there, end.iCell))
            if (pNamed) vAnnounce(there, end.iCell, *pNamed, data());
    }
    // Those that the list does not have yet.
    void vAppend(Entity& there, unsigned iCell, const std::vector<Entity*>& members) {
        std::vector<Entity*> all = named(there, iCell);
        std::unordered_set<const Entity*> seen(all.begin(), all.end());
        const std::size_t iBefore = all.size();
        for (Entity* pMember : members)
            if (pMember && seen.insert(pMember).second) all.push_back(pMember);
        if (all.size() == iBefore) return;
        vNamedSet(there, iCell, all, data());
        for (std::size_t k = iBefore; k < all.size(); ++k) vAnnounce(there, iCell, *all[k], data());
    }

    // Contexts that the first model has not, and units for measures for which it has none.
    void vProjectUnite() {
        const Entity* pProject = m_graph.data().pProject();
        Entity* pHere = data().pProject();
        if (!pProject || !pHere || pMapped(pProject) != pHere) return;
        const auto vTake = [&](Entity& whole, Slot eSlot, const std::vector<Entity*>& members) {
            const RelationTable::Place place = m_state.table.place(whole, eSlot);
            if (place.pCell && !members.empty()) vAppend(whole, place.iIndex, members);
        };
        std::vector<Entity*> contexts;
        m_graph.table.forEachNamed(*pProject, Slot::RepresentationContexts,
                                   [&](const Entity& context) { contexts.push_back(pMapped(&context)); });
        vTake(*pHere, Slot::RepresentationContexts, contexts);
        std::vector<Entity*> units;
        for (const Element& unit : m_state.units.missing(m_graph.model)) units.push_back(pMapped(&unit.core()));
        m_state.table.forEachNamed(*pHere, Slot::UnitsInContext,
                                   [&](Entity& assignment) { vTake(assignment, Slot::AssignedUnits, units); });
        if (!units.empty()) m_state.units = MergeUnits(m_state.into);
    }

    // For the models that follow.
    void vEnter() {
        for (const Index i : m_created) m_state.vEnter(m_keys, entity(i), *m_to[i], iNumber(i));
    }

    State& m_state;
    const MergeOptions& m_options;
    ModelGraph m_graph;
    MergeKeys m_keys;
    std::vector<Entity*> m_to;   // what stands for an entity; null for none, and of new ones before they are created
    std::vector<What> m_states;
    std::vector<bool> m_needed;
    std::vector<Index> m_open;
    std::vector<Index> m_created;                                    // by number
    std::unordered_map<std::size_t, std::vector<Index>> m_members;   // of list ends that are set
    Merged m_merged;
};

Merger::Merger(Model& into) : m_pState(std::make_unique<State>(into)) {}
Merger::~Merger() = default;

Merged Merger::add(Model& from, const MergeOptions& options) {
    if (m_pState->data().pSchema() != from.core().dataBase().pSchema())
        throw MergeError("the schema is " + std::string(m_pState->into.schema()) + " in the first and " +
                         std::string(from.schema()) + " in the other");
    if (const std::string sDifference = m_pState->units.sDifference(from); !sDifference.empty())
        throw MergeError(sDifference);
    return Adder(*m_pState, from, options).run();
}

}   // namespace oxa::convert
