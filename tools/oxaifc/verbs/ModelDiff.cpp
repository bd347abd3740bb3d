// SPDX-License-Identifier: Apache-2.0
#include "oxaifc/verbs/ModelDiff.h"

#include <algorithm>
#include <deque>
#include <functional>
#include <map>
#include <set>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include <fmt/format.h>

#include "Format/Ifc/IfcGuid.h"
#include "oxaifc/verbs/CellVisit.h"
#include "oxaifc/verbs/ContentText.h"
#include "oxaifc/verbs/ModelContent.h"
#include "platform/Localization.h"

namespace oxa::tool {

namespace schema = ifc::def::schema;

namespace {

using Index = ModelContent::Index;
using Indices = std::vector<Index>;

constexpr int g_iMostDepth = 64;   // references on the way to a value

const schema::ObjectBase* pTypeOf(const schema::Attribute& attribute) {
    return attribute.types.empty() ? nullptr : attribute.types.front();
}

// Entities with a GlobalId that could not be read: the read gives them one by chance.
std::unordered_set<const ifc::Entity*> withoutGuid(const Model& model) {
    std::unordered_set<const ifc::Entity*> entities;
    std::string sReport = localize("Ifc", "Error_ExpectedValidGuidValueFor");
    sReport.erase(std::min(sReport.find("%1"), sReport.size()));
    for (const ifc::ErrorRecord& record : model.errors())
        if (record.entity && record.category == ifc::Errors::Value && record.description.starts_with(sReport))
            entities.insert(record.entity);
    return entities;
}

struct Side {
    explicit Side(const Model& read) : model(read), content(read.data(), withoutGuid(read)) {}

    [[nodiscard]] std::size_t iNumber(Index i) const { return model.data().iIdFromEntity(content.entity(i)); }
    void vSort(Indices& indices) const {
        std::sort(indices.begin(), indices.end(), [this](Index a, Index b) { return iNumber(a) < iNumber(b); });
    }

    // How often each content occurs among these entities.
    [[nodiscard]] ContentCounts contents(const Indices& indices) const {
        ContentCounts counts;
        for (const Index i : indices) ++counts[content.content(i)];
        return counts;
    }
    // The same of all entities without GlobalId that entities with one lead to.
    [[nodiscard]] ContentCounts reached() const {
        ContentCounts counts;
        for (Index i = 0; i < content.iCount(); ++i)
            if (content.boReached(i) && !content.pGuid(i)) ++counts[content.content(i)];
        return counts;
    }

    const Model& model;
    ModelContent content;
};

// An attribute of one entity.
struct Value {
    const schema::Attribute* pAttribute = nullptr;   // null where the entity has none of that name
    const ifc::AttributeBase* pCell = nullptr;

    Value(const ifc::Entity& entity, std::string_view name) {
        const int iIndex = entity.indexFromName(schema::AttributeName(name));
        if (iIndex >= 0) std::tie(pAttribute, pCell) = entity.pAttributeFromIndex(static_cast<unsigned>(iIndex));
    }
};

// The references of a value, and whether it is nothing but a set of them.
struct References {
    std::vector<const ifc::Entity*> entities;
    bool boSet = false;
    bool boList = false;

    explicit References(const Value& value) {
        vVisitCell(*value.pCell, pTypeOf(*value.pAttribute), *this);
        boSet = m_boSetOutside && !m_boOthers;
    }

    void vNull(bool) { m_boOthers = true; }
    void vReal(double) { m_boOthers = true; }
    void vInteger(long long) { m_boOthers = true; }
    void vBoolean(bool) { m_boOthers = true; }
    void vLogical(LogicalValue) { m_boOthers = true; }
    void vGuid(const Guid&) { m_boOthers = true; }
    void vText(const char*) { m_boOthers = true; }
    void vEnumerator(const char*) { m_boOthers = true; }
    void vBinary(const unsigned char*, std::size_t) { m_boOthers = true; }
    void vEntity(const ifc::Entity* pEntity) { entities.push_back(pEntity); }
    void vListBegin(bool boIsSet) {
        if (boList || !entities.empty()) m_boOthers = true;   // within another
        if (!boList) m_boSetOutside = boIsSet;
        boList = true;
    }
    void vListEnd() {}
    void vTypeBegin(const schema::Type&) { m_boOthers = true; }
    void vTypeEnd() {}
    void vNothing() { m_boOthers = true; }

private:
    bool m_boSetOutside = false;
    bool m_boOthers = false;
};

// Two texts of at most about iMost bytes, each around the first byte in which they differ.
void vCut(std::string& a, std::string& b, std::size_t iMost) {
    if (a.size() <= iMost && b.size() <= iMost) return;
    const auto itDifference = std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first;
    const auto iDifference = static_cast<std::size_t>(itDifference - a.begin());
    const auto cut = [&](std::string& text) {
        const auto boInside = [&text](std::size_t i) {   // of a character of several bytes
            return i < text.size() && (static_cast<unsigned char>(text[i]) & 0xC0U) == 0x80U;
        };
        std::size_t iFirst = iDifference > iMost / 2 ? iDifference - iMost / 2 : 0;
        while (iFirst > 0 && boInside(iFirst)) --iFirst;
        std::size_t iEnd = std::min(text.size(), iFirst + iMost);
        while (boInside(iEnd)) ++iEnd;
        text = (iFirst ? "..." : "") + text.substr(std::min(iFirst, text.size()), iEnd - std::min(iFirst, iEnd)) +
               (iEnd < text.size() ? "..." : "");
    };
    cut(a);
    cut(b);
}

// The differences of two entities, down to the values in which they lie.
class ValueDiff {
public:
    ValueDiff(const Side& before, const Side& after, std::size_t iMostText, std::vector<DiffValue>& values)
        : m_before(before),
          m_after(after),
          m_iMostText(iMostText),
          m_values(values) {}

    void vEntities(const ifc::Entity& a, const ifc::Entity& b) {
        const std::string& sOld = a.pSchemaEntity()->sNameUpper;
        const std::string& sNew = b.pSchemaEntity()->sNameUpper;
        if (sOld != sNew) m_values.push_back({"type", sOld, sNew});
        for (const std::string& sName : names(a, b)) {
            m_iFirst = m_values.size();
            m_told.clear();
            const Value old(a, sName);
            const Value now(b, sName);
            const bool boDifferent = boValues(sName, old, now, 0);
            // Where the ways down end in each other, the attribute's own text has to do.
            if (boDifferent && m_values.size() == m_iFirst) vTell(sName, sText(m_before, old), sText(m_after, now));
        }
    }

private:
    // The names of all attributes of both, those of the first in front.
    static std::vector<std::string> names(const ifc::Entity& a, const ifc::Entity& b) {
        std::vector<std::string> names;
        for (const schema::Attribute* pAttribute : a.pSchemaEntity()->allAttributes())
            names.push_back(pAttribute->sName);
        if (a.pSchemaEntity() != b.pSchemaEntity())
            for (const schema::Attribute* pAttribute : b.pSchemaEntity()->allAttributes())
                if (std::find(names.begin(), names.end(), pAttribute->sName) == names.end())
                    names.push_back(pAttribute->sName);
        return names;
    }
    static std::optional<std::string> sText(const Side& side, const Value& value) {
        if (!value.pAttribute) return std::nullopt;
        return sValueText(side.content, *value.pCell, *value.pAttribute);
    }

    void vTell(const std::string& sPath, std::optional<std::string> sOld, std::optional<std::string> sNew) {
        if (m_values.size() - m_iFirst >= g_iMostValues) {
            m_values.back().boMore = true;
            return;
        }
        if (sOld && sNew) vCut(*sOld, *sNew, m_iMostText);
        m_values.push_back({sPath, std::move(sOld), std::move(sNew)});
    }

    // True where they differ, told or not.
    bool boValues(const std::string& sPath, const Value& a, const Value& b, int iDepth) {
        if (!a.pAttribute || !b.pAttribute) {
            const Value& only = a.pAttribute ? a : b;
            if (!only.pAttribute || only.pCell->m_boUndefined) return false;
            vTell(sPath, sText(m_before, a), sText(m_after, b));
            return true;
        }
        const auto hash = [](const Side& side, const Value& value, bool boReferences) {
            return side.content.value(*value.pCell, *value.pAttribute, boReferences);
        };
        if (hash(m_before, a, true) == hash(m_after, b, true)) return false;
        const References old(a);
        const References now(b);
        if (old.boSet && now.boSet)
            vSets(sPath, old.entities, now.entities, iDepth);
        else if (hash(m_before, a, false) == hash(m_after, b, false) && old.entities.size() == now.entities.size())
            for (std::size_t i = 0; i < old.entities.size() && !boFull(); ++i)
                vReferences(old.boList ? fmt::format("{}[{}]", sPath, i + 1) : sPath, old.entities[i], now.entities[i],
                            iDepth);
        else
            vTell(sPath, sText(m_before, a), sText(m_after, b));
        return true;
    }

    [[nodiscard]] bool boFull() const noexcept { return m_values.size() > m_iFirst && m_values.back().boMore; }

    // What only one of the sets has. As many on both sides: one by one.
    void vSets(const std::string& sPath, const std::vector<const ifc::Entity*>& a,
               const std::vector<const ifc::Entity*>& b, int iDepth) {
        const auto only = [](const Side& side, const std::vector<const ifc::Entity*>& entities, const Side& otherSide,
                             const std::vector<const ifc::Entity*>& others) {
            ContentCounts counts;
            for (const ifc::Entity* pOther : others) ++counts[otherSide.content.content(pOther)];
            std::vector<const ifc::Entity*> rest;
            for (const ifc::Entity* pEntity : entities) {
                std::size_t& iCount = counts[side.content.content(pEntity)];
                if (iCount)
                    --iCount;
                else
                    rest.push_back(pEntity);
            }
            return rest;
        };
        const auto old = only(m_before, a, m_after, b);
        const auto now = only(m_after, b, m_before, a);
        if (old.size() == now.size()) {
            for (std::size_t i = 0; i < old.size() && !boFull(); ++i)
                vReferences(old.size() == 1 && a.size() == 1 ? sPath : sPath + "[]", old[i], now[i], iDepth);
            return;
        }
        const auto text = [](const Side& side, const std::vector<const ifc::Entity*>& entities) {
            std::string sTexts = "(";
            for (const ifc::Entity* pEntity : entities) {
                if (sTexts.size() > g_iMostText) break;
                sTexts.append(sTexts.size() > 1 ? "," : "").append(sReferenceText(side.content, pEntity));
            }
            return sTexts + ')';
        };
        vTell(sPath, text(m_before, old), text(m_after, now));
    }

    void vReferences(const std::string& sPath, const ifc::Entity* pOld, const ifc::Entity* pNew, int iDepth) {
        if (m_before.content.content(pOld) == m_after.content.content(pNew)) return;
        const auto boInside = [](const Side& side, const ifc::Entity* pEntity) {
            return pEntity && pEntity->pSchemaEntity() && !side.content.pGuid(*pEntity);
        };
        if (!boInside(m_before, pOld) || !boInside(m_after, pNew) || iDepth == g_iMostDepth ||
            pOld->pSchemaEntity()->sNameUpper != pNew->pSchemaEntity()->sNameUpper)
            return vTell(sPath, sReferenceText(m_before.content, pOld), sReferenceText(m_after.content, pNew));
        if (!m_told.emplace(pOld, pNew).second) return;
        for (const std::string& sName : names(*pOld, *pNew)) {
            if (boFull()) return;
            boValues(sPath + '.' + sName, Value(*pOld, sName), Value(*pNew, sName), iDepth + 1);
        }
    }

    const Side& m_before;
    const Side& m_after;
    std::size_t m_iMostText;
    std::vector<DiffValue>& m_values;
    std::size_t m_iFirst = 0;   // value of the attribute in hand
    std::set<std::pair<const ifc::Entity*, const ifc::Entity*>>
        m_told;   // of entities without GlobalId, for the attribute in hand
};

class Differ {
public:
    Differ(const Model& before, const Model& after, std::size_t iMostText)
        : m_before(before),
          m_after(after),
          m_iMostText(iMostText) {}

    ModelDiff run() {
        m_result.sSchemaOld = m_before.model.sSchemaName();
        m_result.sSchemaNew = m_after.model.sSchemaName();
        vRooted();
        vApart();
        const auto byNumber = [](const DiffEntity& a, const DiffEntity& b) { return a.iNumber < b.iNumber; };
        std::sort(m_result.removed.begin(), m_result.removed.end(), byNumber);
        std::sort(m_result.added.begin(), m_result.added.end(), byNumber);
        std::sort(m_result.changed.begin(), m_result.changed.end(),
                  [&](const DiffChange& a, const DiffChange& b) { return byNumber(a.before, b.before); });
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
        const auto vGather = [&](const Side& side, Indices Group::*pIndices) {
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

    void vRooted() {
        const auto all =
            groups<Guid, std::hash<Guid>>([](const ModelContent& content, Index i) { return content.pGuid(i); });
        for (const auto& [guid, group] : all) {
            const auto boCompare = [this](Index iOld, Index iNew) {
                vCompare(iOld, iNew);
                return true;
            };
            Group rest = group;
            if (rest.before.size() > 1 || rest.after.size() > 1) {
                vPair(
                    rest, [](const Side& side, Index i) { return side.content.attributes(i); }, boCompare);
                vPair(
                    rest, [](const Side& side, Index i) { return side.content.entity(i).pSchemaEntity()->sNameUpper; },
                    boCompare);
            }
            vPair(
                rest, [](const Side&, Index) { return true; }, boCompare);
            vRest(rest);
        }
    }

    void vApart() {
        const auto all = groups<ContentHash, ContentHashHash>(
            [](const ModelContent& content, Index i) { return content.boApart(i) ? &content.content(i) : nullptr; });
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
            rest, [](const Side& side, Index i) { return side.content.outside(i); },
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
        DiffChange change;
        ValueDiff(m_before, m_after, m_iMostText, change.values)
            .vEntities(m_before.content.entity(iOld), m_after.content.entity(iNew));
        if (change.values.empty()) return;
        change.before = entity(m_before, iOld);
        change.after = entity(m_after, iNew);
        m_result.changed.push_back(std::move(change));
    }

    void vRest(const Group& group) {
        for (const Index i : group.before) m_result.removed.push_back(entity(m_before, i));
        for (const Index i : group.after) m_result.added.push_back(entity(m_after, i));
    }

    DiffEntity entity(const Side& side, Index i) const {
        const ifc::Entity& entity = side.content.entity(i);
        DiffEntity result{side.iNumber(i), entity.pSchemaEntity()->sNameUpper, {}, {}};
        if (const Guid* pGuid = side.content.pGuid(i)) {
            result.sGlobalId = ifc::IfcGuid::toIfcGuid(*pGuid);
            const Value name(entity, "Name");
            if (name.pAttribute && name.pCell->boHasValue())
                result.sText = sValueText(side.content, *name.pCell, *name.pAttribute);
        } else {
            result.sText = sReferenceText(side.content, &entity);
        }
        std::string sNothing;
        vCut(result.sText, sNothing, m_iMostText);
        return result;
    }

    Side m_before;
    Side m_after;
    std::size_t m_iMostText;
    ModelDiff m_result;
};

}   // namespace

ModelDiff modelDiff(const Model& before, const Model& after, std::size_t iMostText) {
    return Differ(before, after, iMostText).run();
}

}   // namespace oxa::tool
