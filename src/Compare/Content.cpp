// SPDX-License-Identifier: Apache-2.0
// Contents as hashes, so that two models are compared in nearly linear time. An entity's content is that of its values
// and of all that it refers to, down to entities with a GlobalId, which count as that GlobalId alone: a change there is
// a change of that entity and of none that refers to it.
//
// References may go in circles. So the entities are taken by strongly connected component, each after those it leads
// to; within a component hashes are refined in rounds, until the members can be told apart no further or the rounds are
// used up.
#include "Compare/Content.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <utility>

#include "Format/Ifc/IfcValueVisit.h"
#include "Model/Error.h"

namespace oxa::compare {

namespace schema = ifc::def::schema;
namespace visit = ifc::visit;

namespace {

// What keeps values of different sorts apart.
enum class Mark : std::uint64_t {
    Undefined = 1,
    Derived,
    Real,
    Integer,
    Boolean,
    Logical,
    Guid,
    Text,
    NoText,
    Enumerator,
    Binary,
    List,
    Set,
    Type,
    Reference,
    NoReference,
    NotInFile,
    Nothing,
    Entity,
    Cycle,
};

ContentHash hashOf(Mark mark) noexcept {
    ContentHash hash;
    hash.vAdd(static_cast<std::uint64_t>(mark));
    return hash;
}

template <class Value>
ContentHash hashOf(Mark mark, const Value& value) noexcept {
    ContentHash hash = hashOf(mark);
    hash.vAdd(value);
    return hash;
}

ContentHash hashOf(const Guid& guid) noexcept {
    std::uint64_t words[2];
    std::memcpy(words, &guid, sizeof words);
    ContentHash hash = hashOf(Mark::Guid, words[0]);
    hash.vAdd(words[1]);
    return hash;
}

// Whatever a cell refers to.
struct TargetVisitor {
    std::vector<const ifc::Entity*>& targets;

    template <class Other>
    void operator()(const Other&) {}
    void operator()(const ifc::Entity* pEntity) { targets.push_back(pEntity); }
};

std::optional<Guid> guidOf(const ifc::Entity& entity) {
    std::optional<Guid> guid;
    entity.boForEachAttribute([&guid](const schema::Attribute& attribute, const ifc::AttributeBase& cell) {
        if (ifc::AttributeBase::cellClass(attribute.pType(), attribute) != ifc::CellClass::Guid) return false;
        if (cell.boHasValue()) guid = static_cast<const ifc::AttributeGuid&>(cell).m_value.load();
        return true;
    });
    return guid;
}

}   // namespace

void ContentHash::vAdd(std::uint64_t iValue) noexcept {
    // Two multiplications with odd numbers of many bits, and rotations that carry high bits down.
    iHigh = std::rotl((iHigh ^ iValue) * 0x9E3779B97F4A7C15U, 29) + iLow;
    iLow = (std::rotl(iLow + iValue, 37) ^ iHigh) * 0xC2B2AE3D27D4EB4FU;
}

void ContentHash::vAdd(std::string_view text) noexcept {
    vAdd(std::uint64_t{text.size()});
    for (; text.size() >= sizeof(std::uint64_t); text.remove_prefix(sizeof(std::uint64_t))) {
        std::uint64_t iWord;
        std::memcpy(&iWord, text.data(), sizeof iWord);
        vAdd(iWord);
    }
    if (text.empty()) return;
    std::uint64_t iRest = 0;
    std::memcpy(&iRest, text.data(), text.size());
    vAdd(iRest);
}

void ContentHash::vAdd(const ContentHash& hash) noexcept {
    vAdd(hash.iHigh);
    vAdd(hash.iLow);
}

// The order of values is their order in the text; those of a set come sorted.
class Content::HashVisitor {
public:
    // Without contents all references are alike.
    HashVisitor(const Content& model, const Contents* pContents) : m_model(model), m_pContents(pContents) {}
    [[nodiscard]] const ContentHash& hash() const noexcept { return m_hashes.back(); }

    void operator()(visit::Null null) {
        m_hashes.push_back(compare::hashOf(null.boDerived ? Mark::Derived : Mark::Undefined));
    }
    void operator()(double value) {
        if (value == 0.0) value = 0.0;   // the one without a sign
        if (value != value) value = std::numeric_limits<double>::quiet_NaN();
        m_hashes.push_back(compare::hashOf(Mark::Real, std::bit_cast<std::uint64_t>(value)));
    }
    void operator()(long long iValue) {
        m_hashes.push_back(compare::hashOf(Mark::Integer, static_cast<std::uint64_t>(iValue)));
    }
    void operator()(bool boValue) { m_hashes.push_back(compare::hashOf(Mark::Boolean, std::uint64_t{boValue})); }
    void operator()(LogicalValue value) {
        m_hashes.push_back(compare::hashOf(Mark::Logical, static_cast<std::uint64_t>(value)));
    }
    void operator()(const Guid& guid) { m_hashes.push_back(compare::hashOf(guid)); }
    void operator()(visit::Text text) { vText(Mark::Text, text.pText); }
    void operator()(visit::Enumerator enumerator) { vText(Mark::Enumerator, enumerator.pText); }
    void operator()(visit::Binary binary) {
        m_hashes.push_back(compare::hashOf(Mark::Binary, std::string_view(reinterpret_cast<const char*>(binary.pBytes),
                                                                          binary.pBytes ? binary.iCount : 0)));
    }
    void operator()(const ifc::Entity* pEntity) {
        m_hashes.push_back(m_pContents ? m_model.hashOf(pEntity, *m_pContents) : compare::hashOf(Mark::Reference));
    }
    void operator()(visit::ListBegin begin) { m_lists.push_back({m_hashes.size(), begin.boSet}); }
    void operator()(visit::ListEnd) {
        const auto [iFirst, boSet] = m_lists.back();
        m_lists.pop_back();
        const auto itFirst = m_hashes.begin() + static_cast<std::ptrdiff_t>(iFirst);
        if (boSet) std::sort(itFirst, m_hashes.end());
        ContentHash hash = compare::hashOf(boSet ? Mark::Set : Mark::List, std::uint64_t{m_hashes.size() - iFirst});
        for (auto it = itFirst; it != m_hashes.end(); ++it) hash.vAdd(*it);
        m_hashes.erase(itFirst, m_hashes.end());
        m_hashes.push_back(hash);
    }
    void operator()(visit::TypeBegin begin) {
        m_hashes.push_back(compare::hashOf(Mark::Type, std::string_view(begin.type.sNameUpper)));
    }
    void operator()(visit::TypeEnd) {
        const ContentHash value = m_hashes.back();
        m_hashes.pop_back();
        m_hashes.back().vAdd(value);
    }
    void operator()(visit::Nothing) { m_hashes.push_back(compare::hashOf(Mark::Nothing)); }

private:
    void vText(Mark eMark, const char* pText) {
        m_hashes.push_back(pText ? compare::hashOf(eMark, std::string_view(pText)) : compare::hashOf(Mark::NoText));
    }

    struct List {
        std::size_t iFirst;   // of its items in m_hashes
        bool boSet;
    };
    const Content& m_model;
    const Contents* m_pContents;
    std::vector<ContentHash> m_hashes;   // of what is open
    std::vector<List> m_lists;
};

// The strongly connected components of the entities without GlobalId, each behind all that its members lead to
// (R. Tarjan, 1972), with a stack of its own.
class Content::Components {
public:
    explicit Components(const Content& model)
        : m_model(model),
          m_order(model.iCount()),
          m_low(model.iCount()),
          m_of(model.iCount(), g_iNone) {
        for (Index i = 0; i < model.iCount(); ++i)
            if (!model.pGuid(i) && !m_order[i]) vWalk(i);
    }

    [[nodiscard]] const std::vector<std::vector<Index>>& all() const noexcept { return m_all; }
    // The position in all(); g_iNone for an entity with a GlobalId.
    [[nodiscard]] Index of(Index i) const noexcept { return m_of[i]; }
    static constexpr Index g_iNone = std::numeric_limits<Index>::max();

private:
    struct Frame {
        Index i;
        std::size_t iTarget;
    };

    void vOpen(Index i) {
        m_order[i] = m_low[i] = ++m_iNext;
        m_open.push_back(i);
        m_frames.push_back({i, m_model.m_firstTarget[i]});
    }
    void vWalk(Index iStart) {
        vOpen(iStart);
        while (!m_frames.empty()) {
            Frame& frame = m_frames.back();
            if (frame.iTarget < m_model.m_firstTarget[frame.i + 1]) {
                const Index iTarget = m_model.m_targets[frame.iTarget++];
                if (m_model.pGuid(iTarget)) continue;
                if (!m_order[iTarget])
                    vOpen(iTarget);
                else if (m_of[iTarget] == g_iNone)
                    m_low[frame.i] = std::min(m_low[frame.i], m_order[iTarget]);
                continue;
            }
            const Index i = frame.i;
            m_frames.pop_back();
            if (!m_frames.empty()) m_low[m_frames.back().i] = std::min(m_low[m_frames.back().i], m_low[i]);
            if (m_low[i] == m_order[i]) vClose(i);
        }
    }
    void vClose(Index iFirst) {
        std::vector<Index>& members = m_all.emplace_back();
        do {
            members.push_back(m_open.back());
            m_of[m_open.back()] = static_cast<Index>(m_all.size() - 1);
            m_open.pop_back();
        } while (members.back() != iFirst);
    }

    const Content& m_model;
    std::vector<Index> m_order;   // when an entity was met, from 1
    std::vector<Index> m_low;     // the earliest that it leads back to
    std::vector<Index> m_of;
    std::vector<Index> m_open;   // met, and of no component yet
    std::vector<Frame> m_frames;
    std::vector<std::vector<Index>> m_all;
    Index m_iNext = 0;
};

void Content::vStopCheck() const {
    if (m_stop.stop_requested()) throw Stopped("the comparison was stopped");
}

Content::Content(const ifc::Data& data, const std::unordered_set<const ifc::Entity*>& withoutGuid, std::stop_token stop)
    : m_stop(std::move(stop)) {
    for (const ifc::Entity* pEntity : data.entities()) {
        if (!pEntity->pSchemaEntity()) continue;
        m_indices.emplace(pEntity, static_cast<Index>(m_entities.size()));
        m_entities.push_back(pEntity);
        m_guids.push_back(withoutGuid.contains(pEntity) ? std::nullopt : guidOf(*pEntity));
        m_contents.push_back(m_guids.back() ? compare::hashOf(*m_guids.back()) : ContentHash());
    }
    vTargetsGather();
    vReachedSettle();
    const Components components(*this);
    vContentsSettle(components, m_contents, [](Index) { return true; });
    vApartSettle(components);
    m_outsides = m_contents;
    for (Index i = 0; i < iCount(); ++i)
        if (m_reached[i] && !m_guids[i])
            m_outsides[i] =
                compare::hashOf(Mark::Reference, std::string_view(m_entities[i]->pSchemaEntity()->sNameUpper));
    vContentsSettle(components, m_outsides, [this](Index i) { return !m_reached[i]; });
}

void Content::vTargetsGather() {
    std::vector<const ifc::Entity*> targets;
    TargetVisitor visitor{targets};
    for (const ifc::Entity* pEntity : m_entities) {
        vStopCheck();
        m_firstTarget.push_back(m_targets.size());
        targets.clear();
        pEntity->boForEachAttribute([&](const schema::Attribute& attribute, const ifc::AttributeBase& cell) {
            ifc::visitValues(cell, attribute.pType(), visitor);
            return false;
        });
        for (const ifc::Entity* pTarget : targets)
            if (const auto it = m_indices.find(pTarget); it != m_indices.end()) m_targets.push_back(it->second);
    }
    m_firstTarget.push_back(m_targets.size());
}

// In the order of the components every content that one refers to is settled already, unless it is of the same
// component.
template <class Wanted>
void Content::vContentsSettle(const Components& components, Contents& contents, Wanted&& boWanted) const {
    for (const std::vector<Index>& members : components.all()) {
        const Index i = members.front();
        if (!boWanted(i)) continue;
        const auto itFirst = m_targets.begin() + static_cast<std::ptrdiff_t>(m_firstTarget[i]);
        const auto itEnd = m_targets.begin() + static_cast<std::ptrdiff_t>(m_firstTarget[i + 1]);
        if (members.size() > 1 || std::find(itFirst, itEnd, i) != itEnd)
            vCycleSettle(members, contents);
        else
            contents[i] = attributes(i, contents);
    }
}

// From one round to the next each member sees one reference further, until no two differ that were alike before: the
// refinement of a partition, where the count of different hashes only grows, so an equal count is the end. At last each
// member takes the set of all hashes along: two components that differ in one place differ in all members.
void Content::vCycleSettle(const std::vector<Index>& members, Contents& contents) const {
    Contents views(members.size());
    Contents different;   // views, each once, ascending
    for (const Index i : members) contents[i] = compare::hashOf(Mark::Cycle);
    for (int iRound = 0; iRound < g_iRounds; ++iRound) {
        for (std::size_t k = 0; k < members.size(); ++k) views[k] = attributes(members[k], contents);
        for (std::size_t k = 0; k < members.size(); ++k) contents[members[k]] = views[k];
        std::sort(views.begin(), views.end());
        views.erase(std::unique(views.begin(), views.end()), views.end());
        const bool boSettled = views.size() == different.size();
        different = views;
        if (boSettled) break;
        views.resize(members.size());
    }
    ContentHash all;
    for (const ContentHash& hash : different) all.vAdd(hash);
    for (const Index i : members) contents[i].vAdd(all);
}

// What an entity with a GlobalId leads to, over any number of others.
void Content::vReachedSettle() {
    m_reached.resize(iCount());
    std::vector<Index> open;
    for (Index i = 0; i < iCount(); ++i)
        if (m_guids[i]) {
            m_reached[i] = true;
            open.push_back(i);
        }
    while (!open.empty()) {
        const Index i = open.back();
        open.pop_back();
        for (std::size_t k = m_firstTarget[i]; k < m_firstTarget[i + 1]; ++k) {
            if (m_reached[m_targets[k]]) continue;
            m_reached[m_targets[k]] = true;
            open.push_back(m_targets[k]);
        }
    }
}

// Entities that neither an entity with a GlobalId nor another component leads to: the tops of what stands apart, which
// stand for all below them.
void Content::vApartSettle(const Components& components) {
    std::vector<bool> named(components.all().size());   // components that others refer to
    for (Index i = 0; i < iCount(); ++i)
        for (std::size_t k = m_firstTarget[i]; k < m_firstTarget[i + 1]; ++k) {
            const Index iComponent = components.of(m_targets[k]);
            if (iComponent != Components::g_iNone && iComponent != components.of(i)) named[iComponent] = true;
        }
    m_apart.resize(iCount());
    for (Index i = 0; i < iCount(); ++i) m_apart[i] = !m_reached[i] && !named[components.of(i)];
}

// Where what stands apart, from iFirst on, meets what entities with a GlobalId lead to.
std::vector<Content::Index> Content::borders(Index iFirst) const {
    std::vector<Index> borders;
    std::vector<Index> open{iFirst};
    std::unordered_set<Index> seen{iFirst};
    while (!open.empty()) {
        const Index i = open.back();
        open.pop_back();
        for (std::size_t k = m_firstTarget[i]; k < m_firstTarget[i + 1]; ++k) {
            const Index iTarget = m_targets[k];
            if (m_guids[iTarget]) continue;
            if (m_reached[iTarget])
                borders.push_back(iTarget);
            else if (seen.insert(iTarget).second)
                open.push_back(iTarget);
        }
    }
    return borders;
}

const Guid* Content::pGuid(const ifc::Entity& entity) const noexcept {
    const auto it = m_indices.find(&entity);
    return it == m_indices.end() ? nullptr : pGuid(it->second);
}

ContentHash Content::hashOf(const ifc::Entity* pEntity, const Contents& contents) const noexcept {
    if (!pEntity) return compare::hashOf(Mark::NoReference);
    const auto it = m_indices.find(pEntity);
    return it == m_indices.end() ? compare::hashOf(Mark::NotInFile) : contents[it->second];
}

ContentHash Content::attributes(Index i, const Contents& contents) const {
    vStopCheck();
    const ifc::Entity& entity = *m_entities[i];
    ContentHash hash = compare::hashOf(Mark::Entity, std::string_view(entity.pSchemaEntity()->sNameUpper));
    entity.boForEachAttribute([&](const schema::Attribute& attribute, const ifc::AttributeBase& cell) {
        // Without a GlobalId that could be read the value there was generated, and differs from read to read.
        const bool boGuid = ifc::AttributeBase::cellClass(attribute.pType(), attribute) == ifc::CellClass::Guid;
        if (cell.m_boUndefined || (boGuid && !m_guids[i])) return false;
        hash.vAdd(std::string_view(attribute.sName));
        HashVisitor visitor(*this, &contents);
        ifc::visitValues(cell, attribute.pType(), visitor);
        hash.vAdd(visitor.hash());
        return false;
    });
    return hash;
}

ContentHash Content::value(const ifc::AttributeBase& cell, const schema::Attribute& attribute,
                           bool boReferences) const {
    HashVisitor visitor(*this, boReferences ? &m_contents : nullptr);
    ifc::visitValues(cell, attribute.pType(), visitor);
    return visitor.hash();
}

}   // namespace oxa::compare
