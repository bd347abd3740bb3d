// SPDX-License-Identifier: Apache-2.0
// What differs in two entities, as paths to the values: an attribute whose references have other contents is followed
// into the entities, as long as both sides have entities of one type without a GlobalId there.
#include "Compare/ValueDiff.h"

#include <algorithm>
#include <set>
#include <tuple>
#include <utility>

#include "Compare/ContentText.h"
#include "Format/Ifc/IfcValueVisit.h"

namespace oxa::compare {

namespace schema = ifc::def::schema;
namespace visit = ifc::visit;

namespace {

constexpr int g_iMostDepth = 64;   // references on the way to a value

// The references of a value, and whether it is nothing but a set of them.
struct References {
    std::vector<const ifc::Entity*> entities;
    bool boSet = false;
    bool boList = false;

    explicit References(const Value& value) {
        ifc::visitValues(*value.pCell, value.pAttribute->pType(), *this);
        boSet = m_boSetOutside && !m_boOthers;
    }

    template <class Other>
    void operator()(const Other&) {
        m_boOthers = true;
    }
    void operator()(const ifc::Entity* pEntity) { entities.push_back(pEntity); }
    void operator()(visit::ListBegin begin) {
        if (boList || !entities.empty()) m_boOthers = true;   // within another
        if (!boList) m_boSetOutside = begin.boSet;
        boList = true;
    }
    void operator()(visit::ListEnd) {}
    void operator()(visit::TypeEnd) {}

private:
    bool m_boSetOutside = false;
    bool m_boOthers = false;
};

// The differences of two entities, down to the values in which they lie.
class ValueDiff {
public:
    ValueDiff(const Content& before, const Content& after, const Options& options)
        : m_before(before),
          m_after(after),
          m_options(options) {}

    std::vector<Difference> run(const ifc::Entity& a, const ifc::Entity& b) {
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
        return std::move(m_values);
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
    static std::optional<std::string> sText(const Content& side, const Value& value) {
        if (!value.pAttribute) return std::nullopt;
        return sValueText(side, *value.pCell, *value.pAttribute);
    }

    void vTell(const std::string& sPath, std::optional<std::string> sOld, std::optional<std::string> sNew) {
        if (m_values.size() - m_iFirst >= m_options.iMostDifferences) {
            m_values.back().boMore = true;
            return;
        }
        if (sOld && sNew) vCut(*sOld, *sNew, m_options.iMostText);
        m_values.push_back({sPath, std::move(sOld), std::move(sNew)});
    }

    // True where they differ, told or not. Three cases: sets of references are compared as sets; values that only
    // differ in what they refer to are followed pair by pair; everything else is told as text.
    bool boValues(const std::string& sPath, const Value& a, const Value& b, int iDepth) {
        if (!a.pAttribute || !b.pAttribute) {
            const Value& only = a.pAttribute ? a : b;
            if (!only.pAttribute || only.pCell->m_boUndefined) return false;
            vTell(sPath, sText(m_before, a), sText(m_after, b));
            return true;
        }
        const auto hash = [](const Content& side, const Value& value, bool boReferences) {
            return side.value(*value.pCell, *value.pAttribute, boReferences);
        };
        if (hash(m_before, a, true) == hash(m_after, b, true)) return false;
        const References old(a);
        const References now(b);
        if (old.boSet && now.boSet)
            vSets(sPath, old.entities, now.entities, iDepth);
        else if (hash(m_before, a, false) == hash(m_after, b, false) && old.entities.size() == now.entities.size())
            for (std::size_t i = 0; i < old.entities.size() && !boFull(); ++i)
                vReferences(old.boList ? sPath + '[' + std::to_string(i + 1) + ']' : sPath, old.entities[i],
                            now.entities[i], iDepth);
        else
            vTell(sPath, sText(m_before, a), sText(m_after, b));
        return true;
    }

    [[nodiscard]] bool boFull() const noexcept { return m_values.size() > m_iFirst && m_values.back().boMore; }

    // What only one of the sets has, by content. As many on both sides are taken for changed ones and followed one by
    // one.
    void vSets(const std::string& sPath, const std::vector<const ifc::Entity*>& a,
               const std::vector<const ifc::Entity*>& b, int iDepth) {
        const auto only = [](const Content& side, const std::vector<const ifc::Entity*>& entities,
                             const Content& otherSide, const std::vector<const ifc::Entity*>& others) {
            ContentCounts counts;
            for (const ifc::Entity* pOther : others) ++counts[otherSide.content(pOther)];
            std::vector<const ifc::Entity*> rest;
            for (const ifc::Entity* pEntity : entities) {
                std::size_t& iCount = counts[side.content(pEntity)];
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
        const auto text = [](const Content& side, const std::vector<const ifc::Entity*>& entities) {
            std::string sTexts = "(";
            for (const ifc::Entity* pEntity : entities) {
                if (sTexts.size() > g_iMostText) break;
                sTexts.append(sTexts.size() > 1 ? "," : "").append(sReferenceText(side, pEntity));
            }
            return sTexts + ')';
        };
        vTell(sPath, text(m_before, old), text(m_after, now));
    }

    // A pair is followed once an attribute (m_told): so circles end, and what several paths lead to is told on the
    // first.
    void vReferences(const std::string& sPath, const ifc::Entity* pOld, const ifc::Entity* pNew, int iDepth) {
        if (m_before.content(pOld) == m_after.content(pNew)) return;
        const auto boInside = [](const Content& side, const ifc::Entity* pEntity) {
            return pEntity && pEntity->pSchemaEntity() && !side.pGuid(*pEntity);
        };
        if (!boInside(m_before, pOld) || !boInside(m_after, pNew) || iDepth == g_iMostDepth ||
            pOld->pSchemaEntity()->sNameUpper != pNew->pSchemaEntity()->sNameUpper)
            return vTell(sPath, sReferenceText(m_before, pOld), sReferenceText(m_after, pNew));
        if (!m_told.emplace(pOld, pNew).second) return;
        for (const std::string& sName : names(*pOld, *pNew)) {
            if (boFull()) return;
            boValues(sPath + '.' + sName, Value(*pOld, sName), Value(*pNew, sName), iDepth + 1);
        }
    }

    const Content& m_before;
    const Content& m_after;
    const Options& m_options;
    std::vector<Difference> m_values;
    std::size_t m_iFirst = 0;   // value of the attribute in hand
    std::set<std::pair<const ifc::Entity*, const ifc::Entity*>>
        m_told;   // of entities without GlobalId, for the attribute in hand
};

}   // namespace

Value::Value(const ifc::Entity& entity, std::string_view name) {
    const int iIndex = entity.indexFromName(schema::AttributeName(name));
    if (iIndex >= 0) std::tie(pAttribute, pCell) = entity.pAttributeFromIndex(static_cast<unsigned>(iIndex));
}

// Cuts both texts to a window around their first difference, at the bounds of UTF-8 characters.
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

std::vector<Difference> valueDifferences(const Content& before, const ifc::Entity& a, const Content& after,
                                         const ifc::Entity& b, const Options& options) {
    return ValueDiff(before, after, options).run(a, b);
}

}   // namespace oxa::compare
