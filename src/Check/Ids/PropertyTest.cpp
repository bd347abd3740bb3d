// SPDX-License-Identifier: Apache-2.0
// The facet of properties and quantities: of the instance, and of its type what the instance does not say otherwise.
#include <algorithm>

#include "Check/Ids/FacetTest.h"
#include "Check/Ids/Texts.h"
#include "Check/Ids/ValueTest.h"
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

class PropertyTest final : public FacetTest {
public:
    PropertyTest(const ModelView& view, const FacetProgram& facet) : m_view(view), m_facet(facet), m_values(view) {}

    [[nodiscard]] bool boMaySelect(const schema::Entity& type) const override {
        return m_view.table().boTells(type, Relation::Sets, Side::Part) ||
               schema::boIsSubtype(&type, m_view.table().pClass(Class::TypeObject)) ||
               ModelView::boHasType(m_view.extended(), type);
    }

    [[nodiscard]] bool boSelects(Entity& entity) override {
        vGather(entity);
        return std::ranges::any_of(m_found, [](const Found& one) {
            return std::ranges::any_of(one.properties, [](const Judged* p) { return p->eAnswer == Answer::Good; });
        });
    }

    [[nodiscard]] bool boMeets(Entity& entity, Finding& finding) override {
        vGather(entity);
        switch (m_facet.pFacet->cardinality) {
        case Cardinality::Required: return boRequired(finding);
        case Cardinality::Optional: return boGood(finding);
        case Cardinality::Prohibited: return boProhibited(finding);
        }
        return false;
    }

private:
    // Sets of one name.
    struct Found {
        std::string_view sSet;
        std::vector<const Judged*> properties;
    };

    void vGather(Entity& entity) {
        m_found.clear();
        for (Entity* pSet : m_view.walk().ownSets(entity)) vSetAdd(*pSet, false);
        for (Entity* pSet : ModelView::of(m_view.extended(), entity)) vSetAdd(*pSet, false);
        if (const Entity* pType = m_view.walk().pType(entity))
            for (Entity* pSet : m_view.walk().ownSets(*pType)) vSetAdd(*pSet, true);
    }

    void vSetAdd(Entity& entity, bool boOfType) {
        const bool boExtended = m_view.table().boIs(entity, Class::ExtendedProperties);
        const char* pName = m_view.table().pText(entity, boExtended ? Slot::ExtendedName : Slot::RootName);
        if (!pName || !m_facet.propertySet.boText(pName)) return;
        const JudgedSet& set = judged(entity, pName, boExtended);
        auto found = std::ranges::find(m_found, set.sName, &Found::sSet);
        if (found == m_found.end()) found = m_found.insert(found, Found{set.sName, {}});
        const std::size_t iOwn = found->properties.size();
        for (const Judged& one : set.properties) {
            // What an element says of itself hides what its type says.
            const auto own = found->properties.begin();
            const bool boHidden = boOfType && std::any_of(own, own + static_cast<std::ptrdiff_t>(iOwn),
                                                          [&](const Judged* pOwn) { return pOwn->sName == one.sName; });
            if (!boHidden) found->properties.push_back(&one);
        }
    }

    const JudgedSet& judged(Entity& set, const char* pName, bool boExtended) {
        const auto [it, boNew] = m_judged.try_emplace(&set);
        JudgedSet& judgedSet = it->second;
        if (!boNew) return judgedSet;
        judgedSet.sName = pName;
        const auto vAdd = [&](std::string_view sName, const FoundProperty& property) {
            if (!m_facet.name.boText(sName)) return;
            if (!property.pProperty && ValueTest::boNull(m_view.properties().value(property))) return;   // no property
            judgedSet.properties.push_back({property, sName, judge(property)});
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
            if (eBest == Answer::Good || ValueTest::boNull(value)) return;
            if (!boOfType(value)) {
                if (eBest == Answer::Empty) eBest = Answer::DataType;
            } else if (ValueTest::boEmpty(value) && m_facet.value.boAny()) {
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
            finding = {
                FailureKind::Missing, "there is no property set " + shown(m_facet.pFacet->propertySet->text()), {}};
            return false;
        }
        for (const Found& one : m_found)
            if (one.properties.empty()) {
                finding = {FailureKind::Missing,
                           shown(one.sSet) + " has no property " + shown(m_facet.pFacet->name->text()),
                           {}};
                return false;
            }
        return boGood(finding);
    }

    bool boGood(Finding& finding) {
        for (const Found& one : m_found)
            for (const Judged* pProperty : one.properties)
                if (pProperty->eAnswer != Answer::Good) {
                    vTell(one.sSet, *pProperty, finding);
                    return false;
                }
        return true;
    }

    bool boProhibited(Finding& finding) {
        const bool boByValue = !m_facet.value.boAny();
        for (const Found& one : m_found)
            for (const Judged* pProperty : one.properties) {
                if (boByValue && pProperty->eAnswer != Answer::Good) continue;
                vTell(one.sSet, *pProperty, finding);
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
            if (ValueTest::boNull(value)) return;
            if (types.text().find(value.typeName()) == std::string::npos) types.vAdd(value.typeName());
            values.vAdd(m_values.text(value, pUnit));
            plain.vAdd(ValueTest::plain(value));
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
    ValueTest m_values;
    std::unordered_map<const Entity*, JudgedSet> m_judged;
    std::vector<Found> m_found;   // of the instance that is looked at
};

}   // namespace

std::unique_ptr<FacetTest> propertyTest(const ModelView& view, const FacetProgram& facet) {
    return std::make_unique<PropertyTest>(view, facet);
}

}   // namespace oxa::ids::detail
