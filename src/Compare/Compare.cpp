// SPDX-License-Identifier: Apache-2.0
// Which entities of two models stand for each other, and what is left over. Entities with a GlobalId are paired by it;
// those that no such entity leads to, by content. All others are a part of the entities that lead to them, and show
// there.
#include "Compare/Compare.h"

#include <algorithm>
#include <deque>
#include <functional>
#include <map>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "Compare/ComparedModel.h"
#include "Compare/Content.h"
#include "Compare/ContentText.h"
#include "Compare/ValueDiff.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "Format/Ifc/IfcGuid.h"

namespace oxa::compare {

namespace {

using Index = Content::Index;
using Indices = std::vector<Index>;

// What an entity of one of the models stands for.
using Model = ComparedModel;

class Differ {
public:
    Differ(const Model& before, const Model& after, const Options& options)
        : m_before(before),
          m_after(after),
          m_options(options) {}

    Result run() {
        m_result.sSchemaOld = m_before.side.sSchema;
        m_result.sSchemaNew = m_after.side.sSchema;
        vRooted();
        vApart();
        const auto byNumber = [](const Element& a, const Element& b) { return a.iNumber < b.iNumber; };
        std::sort(m_result.removed.begin(), m_result.removed.end(), byNumber);
        std::sort(m_result.added.begin(), m_result.added.end(), byNumber);
        std::sort(m_result.changed.begin(), m_result.changed.end(),
                  [&](const Change& a, const Change& b) { return byNumber(a.before, b.before); });
        return std::move(m_result);
    }

private:
    // Entities that may stand for each other, by number.
    struct Group {
        Indices before;
        Indices after;
    };

    template <class Key, class Hash, class KeyOf>
    std::unordered_map<Key, Group, Hash> groups(KeyOf&& keyOf) const {
        std::unordered_map<Key, Group, Hash> groups;
        const auto vGather = [&](const Model& side, Indices Group::*pIndices) {
            for (Index i = 0; i < side.content.iCount(); ++i)
                if (const Key* pKey = keyOf(side.content, i)) (groups[*pKey].*pIndices).push_back(i);
        };
        vGather(m_before, &Group::before);
        vGather(m_after, &Group::after);
        for (auto& [key, group] : groups) {
            if (group.before.size() > 1) m_before.vSort(group.before);
            if (group.after.size() > 1) m_after.vSort(group.after);
        }
        return groups;
    }

    // A GlobalId that several entities share is a fault of the file, so pairs are taken in three rounds: equal
    // attributes first, then the same type, then whatever is left. With one on each side, the usual case, the last
    // round pairs them.
    void vRooted() {
        const auto all =
            groups<Guid, std::hash<Guid>>([](const Content& content, Index i) { return content.pGuid(i); });
        for (const auto& [guid, group] : all) {
            const auto boCompare = [this](Index iOld, Index iNew) {
                vCompare(iOld, iNew);
                return true;
            };
            Group rest = group;
            if (rest.before.size() > 1 || rest.after.size() > 1) {
                vPair(
                    rest, [](const Model& side, Index i) { return side.content.attributes(i); }, boCompare);
                vPair(
                    rest, [](const Model& side, Index i) { return side.content.entity(i).pSchemaEntity()->sNameUpper; },
                    boCompare);
            }
            vPair(
                rest, [](const Model&, Index) { return true; }, boCompare);
            vRest(rest);
        }
    }

    // Of each content, as many as both sides have are equal; the surplus is removed or added. There is no change
    // between entities that nothing identifies.
    void vApart() {
        const auto all = groups<ContentHash, ContentHashHash>(
            [](const Content& content, Index i) { return content.boApart(i) ? &content.content(i) : nullptr; });
        Group rest;
        for (const auto& [hash, group] : all) {
            const auto iBoth = static_cast<std::ptrdiff_t>(std::min(group.before.size(), group.after.size()));
            rest.before.insert(rest.before.end(), group.before.begin() + iBoth, group.before.end());
            rest.after.insert(rest.after.end(), group.after.begin() + iBoth, group.after.end());
        }
        m_before.vSort(rest.before);
        m_after.vSort(rest.after);
        vTakeOutTold(rest);
        vRest(rest);
    }

    // A change of what an entity with a GlobalId leads to is told there, and not again of all others that refer to it,
    // as the style of a changed shape.
    void vTakeOutTold(Group& rest) const {
        if (rest.before.empty() || rest.after.empty()) return;
        const ContentCounts before = m_before.reached();
        const ContentCounts after = m_after.reached();
        vPair(
            rest, [](const Model& side, Index i) { return side.content.outside(i); },
            [&](Index iOld, Index iNew) {
                ContentCounts old = m_before.contents(m_before.content.borders(iOld));
                ContentCounts now = m_after.contents(m_after.content.borders(iNew));
                return boFewer(old, now, before, after) && boFewer(now, old, after, before);
            });
    }

    // Whether all that "old" has more often than "now" there is less often in the whole new model than in the old one.
    static bool boFewer(const ContentCounts& old, const ContentCounts& now, const ContentCounts& allOld,
                        const ContentCounts& allNow) {
        const auto iIn = [](const ContentCounts& counts, const ContentHash& hash) {
            const auto it = counts.find(hash);
            return it == counts.end() ? 0 : it->second;
        };
        return std::all_of(old.begin(), old.end(), [&](const auto& row) {
            return row.second <= iIn(now, row.first) || iIn(allOld, row.first) > iIn(allNow, row.first);
        });
    }

    // Takes those out of the group that agree in what "keyOf" says, pair by pair in their order, if "boTake" of the
    // pair says so.
    template <class KeyOf, class Take>
    void vPair(Group& group, KeyOf&& keyOf, Take&& boTake) const {
        std::map<decltype(keyOf(m_before, Index())), std::deque<Index>> waiting;
        for (const Index i : group.after) waiting[keyOf(m_after, i)].push_back(i);
        std::unordered_set<Index> taken;
        std::erase_if(group.before, [&](Index iOld) {
            const auto it = waiting.find(keyOf(m_before, iOld));
            if (it == waiting.end() || it->second.empty()) return false;
            const Index iNew = it->second.front();
            it->second.pop_front();
            if (!boTake(iOld, iNew)) return false;
            taken.insert(iNew);
            return true;
        });
        std::erase_if(group.after, [&](Index iNew) { return taken.contains(iNew); });
    }

    void vCompare(Index iOld, Index iNew) {
        if (m_before.content.attributes(iOld) == m_after.content.attributes(iNew)) return;
        Change change;
        change.differences = valueDifferences(m_before.content, m_before.content.entity(iOld), m_after.content,
                                              m_after.content.entity(iNew), m_options);
        if (change.differences.empty()) return;
        change.before = entity(m_before, iOld);
        change.after = entity(m_after, iNew);
        m_result.changed.push_back(std::move(change));
    }

    void vRest(const Group& group) {
        m_before.content.vStopCheck();
        for (const Index i : group.before) m_result.removed.push_back(entity(m_before, i));
        for (const Index i : group.after) m_result.added.push_back(entity(m_after, i));
    }

    Element entity(const Model& side, Index i) const {
        const ifc::Entity& entity = side.content.entity(i);
        Element result{side.iNumber(i), entity.pSchemaEntity()->sNameUpper, {}, {}};
        if (const Guid* pGuid = side.content.pGuid(i)) {
            result.sGlobalId = ifc::IfcGuid::toIfcGuid(*pGuid);
            const Value name(entity, "Name");
            if (name.pAttribute && name.pCell->boHasValue())
                result.sText = sValueText(side.content, *name.pCell, *name.pAttribute);
        } else {
            result.sText = sReferenceText(side.content, &entity);
        }
        std::string sNothing;
        vCut(result.sText, sNothing, m_options.iMostText);
        return result;
    }

    const Model& m_before;
    const Model& m_after;
    const Options& m_options;
    Result m_result;
};

}   // namespace

// Entities with a GlobalId that could not be read: the read gives them one by chance.
std::unordered_set<const ifc::Entity*> ComparedModel::withoutGuid(const Side& side) {
    std::unordered_set<const ifc::Entity*> entities;
    for (const ifc::ErrorRecord& record : side.reported)
        if (record.entity && record.reportKey == ifc::ReportKey::ExpectedValidGuidValueFor)
            entities.insert(record.entity);
    return entities;
}

Result differences(const ComparedModel& before, const ComparedModel& after, const Options& options) {
    return Differ(before, after, options).run();
}

Result differences(const Side& before, const Side& after, const Options& options) {
    return differences(ComparedModel(before, options.stop), ComparedModel(after, options.stop), options);
}

}   // namespace oxa::compare
