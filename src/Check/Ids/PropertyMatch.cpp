// SPDX-License-Identifier: Apache-2.0
// The facet of properties and quantities: of the instance, and of its type what the instance does not say otherwise.
#include <algorithm>
#include <optional>
#include <unordered_set>

#include "Check/Ids/FacetMatch.h"
#include "Check/Ids/Texts.h"
#include "Check/Ids/ValueMatch.h"
#include "Model/Names.h"

namespace oxa::ids::detail {

namespace {

// What a property that is meant has to say.
enum class Answer : std::uint8_t {
    Good,
    Empty,
    Unfit,   // a complex one or a reference, which has no value
    DataType,
    Value
};

struct Judged {
    FoundProperty property;
    std::string_view sName;
    Answer eAnswer = Answer::Good;
};

// A set that is meant, with the properties in it that are.
struct JudgedSet {
    std::string_view sName;
    std::vector<Judged> properties;
    std::optional<std::size_t> iGood;   // the first of them that is
    std::optional<std::size_t> iBad;

    [[nodiscard]] const Judged* pFirst(bool boGood) const noexcept {
        const auto iFirst = boGood ? iGood : iBad;
        return iFirst ? &properties[*iFirst] : nullptr;
    }
};

// Where the values of a kind of property stand, and their unit.
struct ValueRow {
    Class eClass;
    Slot eValues;
    Slot eUnit;
};
constexpr ValueRow g_values[] = {
    {Class::SingleValue, Slot::SingleValue, Slot::SingleUnit},
    {Class::BoundedValue, Slot::SetPoint, Slot::BoundedUnit},
    {Class::BoundedValue, Slot::LowerBound, Slot::BoundedUnit},
    {Class::BoundedValue, Slot::UpperBound, Slot::BoundedUnit},
    {Class::EnumeratedValue, Slot::EnumeratedValues, Slot::EnumerationUnit},
    {Class::ListValue, Slot::ListValues, Slot::ListUnit},
    {Class::TableValue, Slot::DefiningValues, Slot::DefiningUnit},
    {Class::TableValue, Slot::DefinedValues, Slot::DefinedUnit},
};

class PropertyMatch final : public FacetMatch {
public:
    PropertyMatch(const ModelView& view, const FacetProgram& facet)
        : m_view(view),
          m_facet(facet),
          m_sSet(shown(facet.pFacet->propertySet->text())),
          m_sName(shown(facet.pFacet->name->text())),
          m_values(view) {}

    [[nodiscard]] bool boMaySelect(const schema::Entity& type) const override {
        return m_view.table().boTells(type, Relation::Sets, Side::Part) ||
               schema::boIsSubtype(&type, m_view.table().pClass(Class::TypeObject)) ||
               ModelView::boHasType(m_view.extended(), type);
    }

    [[nodiscard]] bool boSelects(Entity& entity) override {
        vGather(entity);
        return std::ranges::any_of(m_found, [](const Found& one) { return one.pFirst(true) != nullptr; });
    }

    [[nodiscard]] bool boMeets(Entity& entity, Finding& finding) override {
        vGather(entity);
        switch (m_facet.pFacet->cardinality) {
        case Cardinality::Required: return boRequired(finding);
        case Cardinality::Optional:   // where anything will do there is nothing to find
            return (m_facet.value.boAny() && m_facet.pFacet->dataType.empty()) || boGood(finding);
        case Cardinality::Prohibited: return boProhibited(finding);
        }
        return false;
    }

private:
    // Sets of one name.
    struct Found {
        std::string_view sSet;
        std::vector<const JudgedSet*> sets;      // with all that is meant in them
        std::vector<const Judged*> properties;   // of a type, those that the instance does not say itself

        [[nodiscard]] bool boNone() const noexcept {
            return properties.empty() &&
                   std::ranges::all_of(sets, [](const JudgedSet* pSet) { return pSet->properties.empty(); });
        }
        // The first of them that is good, or the first that is not; null where there is none.
        [[nodiscard]] const Judged* pFirst(bool boGood) const noexcept {
            for (const JudgedSet* pSet : sets)
                if (const Judged* pOne = pSet->pFirst(boGood)) return pOne;
            for (const Judged* pOne : properties)
                if ((pOne->eAnswer == Answer::Good) == boGood) return pOne;
            return nullptr;
        }
        [[nodiscard]] const Judged* pAny() const noexcept {
            const Judged* pGood = pFirst(true);
            return pGood ? pGood : pFirst(false);
        }
    };

    void vGather(Entity& entity) {
        m_found.clear();
        for (Entity* pSet : m_view.walk().ownSets(entity)) vOwnAdd(pMeant(*pSet));
        for (Entity* pSet : ModelView::of(m_view.extended(), entity)) vOwnAdd(pMeant(*pSet));
        const Entity* pType = m_view.walk().pType(entity);
        if (!pType) return;
        const auto [it, boNew] = m_ofTypes.try_emplace(pType);
        if (boNew)
            for (Entity* pSet : m_view.walk().ownSets(*pType))
                if (const JudgedSet* pOne = pMeant(*pSet)) it->second.push_back(pOne);
        const std::size_t iOwn = m_found.size();
        for (const JudgedSet* pSet : it->second) vOfTypeAdd(*pSet, iOwn);
    }

    [[nodiscard]] Found& foundOf(std::string_view sSet) {
        const auto found = std::ranges::find(m_found, sSet, &Found::sSet);
        return found == m_found.end() ? m_found.emplace_back(Found{sSet, {}, {}}) : *found;
    }
    void vOwnAdd(const JudgedSet* pSet) {
        if (pSet) foundOf(pSet->sName).sets.push_back(pSet);
    }
    // What an element says of itself hides what its type says.
    void vOfTypeAdd(const JudgedSet& set, std::size_t iOwn) {
        Found& found = foundOf(set.sName);
        if (static_cast<std::size_t>(&found - m_found.data()) >= iOwn) return found.sets.push_back(&set);
        std::unordered_set<std::string_view> own;
        for (const JudgedSet* pOwn : found.sets)
            for (const Judged& one : pOwn->properties) own.insert(one.sName);
        for (const Judged& one : set.properties)
            if (!own.contains(one.sName)) found.properties.push_back(&one);
    }

    // Null for a set that is not meant.
    [[nodiscard]] const JudgedSet* pMeant(Entity& set) {
        const bool boExtended = m_view.table().boIs(set, Class::ExtendedProperties);
        const char* pName = m_view.table().pText(set, boExtended ? Slot::ExtendedName : Slot::RootName);
        return pName && m_facet.propertySet.boText(pName) ? &judged(set, pName, boExtended) : nullptr;
    }

    const JudgedSet& judged(Entity& set, const char* pName, bool boExtended) {
        const auto [it, boNew] = m_judged.try_emplace(&set);
        JudgedSet& judgedSet = it->second;
        if (!boNew) return judgedSet;
        judgedSet.sName = pName;
        const auto vAdd = [&](std::string_view sName, const FoundProperty& property) {
            if (!m_facet.name.boText(sName)) return;
            if (!property.pProperty && ValueMatch::boNull(m_view.properties().value(property))) return;   // no property
            judgedSet.properties.push_back({property, sName, judge(property)});
            auto& iFirst = judgedSet.properties.back().eAnswer == Answer::Good ? judgedSet.iGood : judgedSet.iBad;
            if (!iFirst) iFirst = judgedSet.properties.size() - 1;
        };
        if (boExtended)
            m_view.table().forEachNamed(set, Slot::ExtendedProperties, [&](Entity& property) {
                vAdd(m_view.properties().propertyName(property), {&set, &property, 0, Source::Instance});
            });
        else
            m_view.properties().forEachIn(set, vAdd);
        return judgedSet;
    }

    // Calls visit(value, unit) for each value.
    template <class Visit>
    void forEachValue(const FoundProperty& found, Visit&& visit) const {
        if (!found.pProperty) return visit(m_view.properties().value(found), nullptr);
        Entity& property = *found.pProperty;
        if (m_view.table().boIs(property, Class::SimpleQuantity))
            return visit(m_view.properties().value(found), pNamed(property, Slot::QuantityUnit));
        for (const ValueRow& row : g_values) {
            if (!m_view.table().boIs(property, row.eClass)) continue;
            const Entity* pHolder =
                row.eUnit == Slot::EnumerationUnit ? pNamed(property, Slot::Enumeration) : &property;
            const Entity* pUnit = pHolder ? pNamed(*pHolder, row.eUnit) : nullptr;
            const Value value = m_view.valueAt(property, row.eValues);
            if (value.kind() != Kind::List)
                visit(value, pUnit);
            else
                for (const Value& item : value.items()) visit(item, pUnit);
        }
    }
    [[nodiscard]] const Entity* pNamed(const Entity& entity, Slot eSlot) const {
        const Entity* pFound = nullptr;
        m_view.table().forEachNamed(entity, eSlot, [&](const Entity& named) { pFound = &named; });
        return pFound;
    }

    // One value that is all that is wanted is enough.
    Answer judge(const FoundProperty& found) {
        if (found.pProperty && boUnfit(*found.pProperty)) return Answer::Unfit;
        Answer eBest = Answer::Empty;
        forEachValue(found, [&](const Value& value, const Entity* pUnit) {
            if (eBest == Answer::Good || ValueMatch::boNull(value)) return;
            if (!boOfType(value)) {
                if (eBest == Answer::Empty) eBest = Answer::DataType;
            } else if (ValueMatch::boEmpty(value) && m_facet.value.boAny()) {
                // an empty text is no value
            } else if (m_values.boMatches(value, m_facet.value, pUnit)) {
                eBest = Answer::Good;
            } else {
                eBest = Answer::Value;
            }
        });
        return eBest;
    }
    [[nodiscard]] bool boUnfit(const Entity& property) const {
        return m_view.table().boIs(property, Class::ComplexProperty) ||
               m_view.table().boIs(property, Class::ComplexQuantity) ||
               m_view.table().boIs(property, Class::ReferenceValue);
    }
    [[nodiscard]] bool boOfType(const Value& value) const {
        return m_facet.pFacet->dataType.empty() || oxa::detail::boSameName(value.typeName(), m_facet.pFacet->dataType);
    }

    // In each set that is meant there has to be a property, and all that are there have to be good.
    bool boRequired(Finding& finding) {
        if (m_found.empty()) {
            finding = {FailureKind::Missing, "there is no property set " + m_sSet, {}};
            return false;
        }
        for (const Found& one : m_found)
            if (one.boNone()) {
                finding = {FailureKind::Missing, shown(one.sSet) + " has no property " + m_sName, {}};
                return false;
            }
        return boGood(finding);
    }

    bool boGood(Finding& finding) {
        for (const Found& one : m_found)
            if (const Judged* pBad = one.pFirst(false)) {
                vTell(one.sSet, *pBad, finding);
                return false;
            }
        return true;
    }

    bool boProhibited(Finding& finding) {
        const bool boByValue = !m_facet.value.boAny();
        for (const Found& one : m_found)
            if (const Judged* pOne = boByValue ? one.pFirst(true) : one.pAny()) {
                vTell(one.sSet, *pOne, finding);
                finding.kind = FailureKind::Prohibited;
                return false;
            }
        return true;
    }

    void vTell(std::string_view sSet, const Judged& property, Finding& finding) {
        const std::string sName = shown(sSet) + "." + shown(property.sName);
        FoundList types;
        FoundList values;
        FoundList plain;
        forEachValue(property.property, [&](const Value& value, const Entity* pUnit) {
            if (ValueMatch::boNull(value)) return;
            if (types.text().find(value.typeName()) == std::string::npos) types.vAdd(value.typeName());
            values.vAdd(m_values.text(value, pUnit));
            plain.vAdd(ValueMatch::plain(value));
        });
        switch (property.eAnswer) {
        case Answer::Unfit:
            finding = {FailureKind::Missing,
                       sName + " is an " + property.property.pProperty->schemaEntity().sName + ", which has no value",
                       {}};
            return;
        case Answer::DataType:
            finding = {FailureKind::DataType, sName + " is of type " + types.text(), types.text()};
            return;
        case Answer::Empty: finding = {FailureKind::Missing, sName + " has no value", {}}; return;
        case Answer::Good:
        case Answer::Value: break;
        }
        finding = {FailureKind::Value, sName + (values.text().empty() ? " is there" : " is " + values.text()),
                   plain.text()};
    }

    const ModelView& m_view;
    const FacetProgram& m_facet;
    std::string m_sSet;   // what is meant, for people
    std::string m_sName;
    ValueMatch m_values;
    std::unordered_map<const Entity*, JudgedSet> m_judged;
    std::unordered_map<const Entity*, std::vector<const JudgedSet*>> m_ofTypes;   // what a type hands on
    std::vector<Found> m_found;                                                   // of the instance that is looked at
};

}   // namespace

std::unique_ptr<FacetMatch> propertyMatch(const ModelView& view, const FacetProgram& facet) {
    return std::make_unique<PropertyMatch>(view, facet);
}

}   // namespace oxa::ids::detail
