// SPDX-License-Identifier: Apache-2.0
// From differences of entities to what users call a change of an element, in three steps: whom each difference
// concerns, what is another about these elements, and which differences are told by that. What is left is told as it is.
#include "Compare/Elements.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <set>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "Compare/ComparedModel.h"
#include "Compare/ElementRows.h"
#include "Compare/ValueDiff.h"
#include "Format/Ifc/IfcFile.h"
#include "Model/Relations.h"

namespace oxa::compare {

namespace {

// Attributes whose values nobody reads one by one.
struct LongAttribute {
    std::string_view name;
    About eAbout;
    std::string_view what;
};
constexpr LongAttribute g_longAttributes[] = {{"ObjectPlacement", About::Placement, "placement"},
                                              {"Representation", About::Geometry, "geometry"},
                                              {"RepresentationMaps", About::Geometry, "geometry"}};
constexpr std::string_view g_history = "OwnerHistory";   // of a relationship, no end of it

// "HasProperties" of "HasProperties[].NominalValue".
std::string_view headOf(std::string_view path) { return path.substr(0, path.find_first_of(".[")); }

// The first entity that a value refers to; none for other values.
oxa::Element firstNamed(const oxa::Value& value) {
    if (value.kind() == Kind::Element) return value.element();
    if (value.kind() != Kind::List) return {};
    const std::vector<oxa::Value> items = value.items();
    return !items.empty() && items.front().kind() == Kind::Element ? items.front().element() : oxa::Element();
}

// What a relationship of that role is told as.
struct RoleAbout {
    Role role;
    About eAbout;
    const char* pWhat;
};
constexpr RoleAbout g_roles[] = {
    {Role::TypeOf, About::Type, "type"},
    {Role::SetsOf, About::Property, "properties"},
    {Role::PlaceOf, About::Place, "place"},
    {Role::MaterialOf, About::Material, "material"},
    {Role::ClassificationOf, About::Classification, "classification"},
    {Role::GroupOf, About::Group, "group"},
};
const RoleAbout* pRoleAbout(Role role) {
    const auto found = std::ranges::find(g_roles, role, &RoleAbout::role);
    return found == std::end(g_roles) ? nullptr : &*found;
}

// The entities of one model that a result names.
class NamedElements {
public:
    NamedElements(const oxa::Model& model, const std::unordered_set<std::size_t>& numbers) {
        if (numbers.empty()) return;
        for (const oxa::Element element : model.all())
            if (numbers.contains(element.id())) m_elements.emplace(element.id(), element);
    }
    [[nodiscard]] oxa::Element element(std::size_t iNumber) const {
        const auto found = m_elements.find(iNumber);
        return found == m_elements.end() ? oxa::Element() : found->second;
    }

private:
    std::unordered_map<std::size_t, oxa::Element> m_elements;
};

// An element in both models, with what is told of it.
struct Pair {
    oxa::Element old;
    oxa::Element now;
    bool boRelations = false;   // something about its relations has changed
    std::vector<ElementDifference> differences{};
    std::set<About> told{};   // of its relations

    [[nodiscard]] bool boTells(About eAbout) const {
        if (eAbout == About::Property) return told.contains(About::Property) || told.contains(About::Quantity);
        return told.contains(eAbout);
    }
};

class ElementDiffer {
public:
    ElementDiffer(const ElementSide& before, const ElementSide& after, const ElementOptions& options)
        : m_sideBefore{before.model.core().dataBase(), before.sSchema, before.reported},
          m_sideAfter{after.model.core().dataBase(), after.sSchema, after.reported},
          m_modelBefore(before.model),
          m_modelAfter(after.model),
          m_before(m_sideBefore, options.stop),
          m_after(m_sideAfter, options.stop),
          m_options(options),
          m_entities(compare::differences(m_before, m_after, options)),
          m_old(before.model, numbers(m_entities.removed, &Change::before)),
          m_new(after.model, numbers(m_entities.added, &Change::after)) {}

    ElementResult run() {
        vGather();
        for (const Change& change : m_entities.changed) vOwnAdd(change);
        for (auto& [sGuid, pair] : m_pairs)
            if (pair.boRelations) vRelationsAdd(pair);
        vOthersFind();
        vTell();
        m_result.entities = std::move(m_entities);
        if (m_options.pOnly) vOnly();
        return std::move(m_result);
    }

private:
    [[nodiscard]] std::unordered_set<std::size_t> numbers(const std::vector<Element>& alone,
                                                          Element Change::*pSide) const {
        std::unordered_set<std::size_t> numbers;
        for (const Element& element : alone) numbers.insert(element.iNumber);
        for (const Change& change : m_entities.changed) numbers.insert((change.*pSide).iNumber);
        return numbers;
    }

    static bool boObject(const oxa::Element& element) { return element && role(element) == Role::Object; }

    // The pair of an element that both models have; null for another.
    Pair* pPair(const std::string& sGuid) {
        if (sGuid.empty()) return nullptr;
        const auto found = m_pairs.find(sGuid);
        if (found != m_pairs.end()) return &found->second;
        const oxa::Element old = m_modelBefore.byGuid(sGuid);
        const oxa::Element now = m_modelAfter.byGuid(sGuid);
        return old && now ? &m_pairs.emplace(sGuid, Pair{old, now}).first->second : nullptr;
    }

    // Whom an entity of either model concerns.
    std::vector<Pair*> pairsConcerned(const oxa::Element& old, const oxa::Element& now) {
        m_before.content.vStopCheck();
        std::vector<Pair*> pairs;
        for (const oxa::Element& entity : {old, now})
            if (entity)
                for (const oxa::Element one : concerned(entity))
                    if (Pair* pFound = pPair(one.guid())) pairs.push_back(pFound);
        std::ranges::sort(pairs);
        pairs.erase(std::unique(pairs.begin(), pairs.end()), pairs.end());
        return pairs;
    }

    void vGather() {
        const auto vConcerned = [this](const oxa::Element& old, const oxa::Element& now) {
            for (Pair* pFound : pairsConcerned(old, now)) pFound->boRelations = true;
        };
        for (const Element& entity : m_entities.removed) vConcerned(m_old.element(entity.iNumber), {});
        for (const Element& entity : m_entities.added) vConcerned({}, m_new.element(entity.iNumber));
        for (const Change& change : m_entities.changed) {
            const oxa::Element old = m_old.element(change.before.iNumber);
            const oxa::Element now = m_new.element(change.after.iNumber);
            vConcerned(old, now);
            if (!boObject(old)) continue;
            Pair& own = m_pairs.try_emplace(change.before.sGlobalId, Pair{old, now}).first->second;
            own.boRelations = own.boRelations || boHasSets(old) || boHasSets(now);
        }
    }

    // A type names its sets itself.
    static bool boHasSets(const oxa::Element& element) {
        return std::ranges::any_of(element.attributes(), [](const Attribute& attribute) {
            const oxa::Element named = firstNamed(attribute.value);
            return attribute.value.kind() == Kind::List && named && role(named) == Role::Set;
        });
    }

    // The differences of an element itself.
    void vOwnAdd(const Change& change) {
        const auto found = m_pairs.find(change.before.sGlobalId);
        if (found == m_pairs.end() || found->second.old != m_old.element(change.before.iNumber)) return;
        Pair& pair = found->second;
        for (const Difference& difference : change.differences) {
            const std::string_view head = headOf(difference.sAttribute);
            const auto* const pLong = std::ranges::find(g_longAttributes, head, &LongAttribute::name);
            if (pLong != std::end(g_longAttributes))
                vDetailAdd(pair, pLong->eAbout, pLong->what, difference);
            else if (difference.sAttribute == "type")
                pair.differences.push_back(
                    {About::Class, "class", std::string(pair.old.type()), std::string(pair.now.type()), {}});
            else
                pair.differences.push_back(attributeDifference(pair, difference));
        }
    }

    static void vDetailAdd(Pair& pair, About eAbout, std::string_view what, const Difference& difference) {
        auto found = std::ranges::find(pair.differences, what, &ElementDifference::sWhat);
        if (found == pair.differences.end())
            found = pair.differences.insert(found, {eAbout, std::string(what), {}, {}, {}});
        found->details.push_back(difference);
    }

    [[nodiscard]] ElementDifference attributeDifference(const Pair& pair, const Difference& difference) const {
        ElementDifference result{About::Attribute, difference.sAttribute, difference.sOld, difference.sNew, {}};
        if (difference.boMore) result.details.push_back(difference);
        const bool boPlain = headOf(difference.sAttribute) == difference.sAttribute;
        for (auto [pElement, pText] : {std::pair(&pair.old, &result.sOld), std::pair(&pair.now, &result.sNew)}) {
            if (!boPlain || !pElement->has(difference.sAttribute)) continue;
            const oxa::Value value = (*pElement)[difference.sAttribute];
            if (value.isNull())
                pText->reset();
            else if (value.kind() != Kind::Element && value.kind() != Kind::List)
                *pText = value.toString();
        }
        if (result.sOld && result.sNew) vCut(*result.sOld, *result.sNew, m_options.iMostText);
        return result;
    }

    void vRelationsAdd(Pair& pair) {
        m_before.content.vStopCheck();
        for (ElementDifference& difference : rowDifferences(m_before, pair.old, m_after, pair.now)) {
            pair.told.insert(difference.eAbout);
            std::string sNone;
            vCut(difference.sOld ? *difference.sOld : sNone, difference.sNew ? *difference.sNew : sNone,
                 m_options.iMostText);
            pair.differences.push_back(std::move(difference));
        }
    }

    // What no element tells.
    void vOthersFind() {
        m_result.others.sSchemaOld = m_entities.sSchemaOld;
        m_result.others.sSchemaNew = m_entities.sSchemaNew;
        const auto vAlone = [this](const std::vector<Element>& entities, const NamedElements& side, bool boOld,
                                   std::vector<ElementName>& elements, std::vector<Element>& others) {
            for (const Element& entity : entities) {
                const oxa::Element found = side.element(entity.iNumber);
                if (boObject(found))
                    elements.push_back(name(found));
                else if (!found || !boTold(boOld ? found : oxa::Element(), boOld ? oxa::Element() : found))
                    others.push_back(entity);
            }
        };
        vAlone(m_entities.removed, m_old, true, m_result.removed, m_result.others.removed);
        vAlone(m_entities.added, m_new, false, m_result.added, m_result.others.added);
        for (const Change& change : m_entities.changed) {
            const oxa::Element old = m_old.element(change.before.iNumber);
            const oxa::Element now = m_new.element(change.after.iNumber);
            const auto found = m_pairs.find(change.before.sGlobalId);
            if (boObject(old) && found != m_pairs.end() && found->second.old == old) continue;
            Change rest{change.before, change.after, {}};
            for (const Difference& difference : change.differences)
                if (!boTold(old, now, difference)) rest.differences.push_back(difference);
            if (!rest.differences.empty()) m_result.others.changed.push_back(std::move(rest));
        }
    }

    // A relationship or set that only one model has: by an element that it concerns, or that only this model has.
    bool boTold(const oxa::Element& old, const oxa::Element& now) {
        const oxa::Element& entity = old ? old : now;
        const RoleAbout* pAbout = pRoleAbout(role(entity));
        if (!pAbout && role(entity) != Role::Set) return false;
        const Elements all = concerned(entity);
        return std::ranges::any_of(all, [&](const oxa::Element& one) {
            const Pair* const pFound = pPair(one.guid());
            return !pFound || pFound->boTells(pAbout ? pAbout->eAbout : About::Property);
        });
    }

    bool boTold(const oxa::Element& old, const oxa::Element& now, const Difference& difference) {
        const RoleAbout* pAbout = old ? pRoleAbout(role(old)) : nullptr;
        const bool boSet = old && role(old) == Role::Set;
        const std::string_view head = headOf(difference.sAttribute);
        if ((!pAbout && !boSet) || head == g_history || !(boRefers(old, head) || boRefers(now, head) || boSet))
            return false;
        const std::vector<Pair*> pairs = pairsConcerned(old, now);
        const About eAbout = pAbout ? pAbout->eAbout : About::Property;
        const auto boTells = [eAbout](const Pair* pPair) { return pPair->boTells(eAbout); };
        if (boSet && !boRefers(old, head) && !boRefers(now, head))
            return std::ranges::any_of(pairs, [&](const Pair* pPair) { return boTellsValue(*pPair, now, head); });
        if (const auto moved = movedBetween(old, now); !moved.empty())
            return std::ranges::all_of(moved, [&](const std::string& sGuid) {
                const Pair* const pMoved = pPair(sGuid);
                return !pMoved || boTells(pMoved);   // else the element itself comes or goes
            });
        if (std::ranges::any_of(pairs, boTells)) return true;
        if (boSet || pairs.empty() || head == difference.sAttribute) return false;
        // Deep in what the elements have, where no text of theirs shows it.
        for (Pair* pPair : pairs) vDetailAdd(*pPair, eAbout, pAbout->pWhat, difference);
        return true;
    }

    // Whom the one concerns and the other does not.
    static std::vector<std::string> movedBetween(const oxa::Element& old, const oxa::Element& now) {
        std::set<std::string> guids[2];
        std::vector<std::string> moved;
        for (const oxa::Element one : concerned(old)) guids[0].insert(one.guid());
        for (const oxa::Element one : concerned(now)) guids[1].insert(one.guid());
        std::ranges::set_symmetric_difference(guids[0], guids[1], std::back_inserter(moved));
        return moved;
    }

    static bool boRefers(const oxa::Element& element, std::string_view attribute) {
        return element && element.has(attribute) && firstNamed(element[attribute]);
    }
    // Of a set whose attributes are properties.
    static bool boTellsValue(const Pair& pair, const oxa::Element& set, std::string_view attribute) {
        const std::string sEnd = '.' + std::string(attribute);
        return set && std::ranges::any_of(pair.differences, [&sEnd](const ElementDifference& difference) {
                   return difference.eAbout == About::Property && difference.sWhat.ends_with(sEnd);
               });
    }

    static ElementName name(const oxa::Element& element) {
        const oxa::Element above = storey(element);
        return {element.id(), std::string(element.type()), element.guid(), sElementName(element),
                above && above != element ? sElementName(above) : std::string()};
    }

    // Sets that a type names are told by their properties.
    static void vNamedSetsDrop(Pair& pair) {
        if (!pair.boTells(About::Property)) return;
        std::erase_if(pair.differences, [&pair](const ElementDifference& difference) {
            const std::string_view head = headOf(difference.sWhat);
            if (difference.eAbout != About::Attribute || !pair.now.has(head)) return false;
            for (const oxa::Element& side : {pair.old, pair.now})
                if (boRefers(side, head) && role(firstNamed(side[head])) == Role::Set) return true;
            return false;
        });
    }

    void vTell() {
        for (auto& [sGuid, pair] : m_pairs) {
            vNamedSetsDrop(pair);
            if (pair.differences.empty()) continue;
            std::ranges::stable_sort(pair.differences, {}, &ElementDifference::eAbout);
            m_result.changed.push_back({name(pair.old), name(pair.now), std::move(pair.differences)});
        }
        std::ranges::sort(m_result.changed, {}, [](const ElementChange& change) {
            return std::pair(change.before.iNumber, change.after.iNumber);
        });
        std::ranges::sort(m_result.removed, {}, &ElementName::iNumber);
        std::ranges::sort(m_result.added, {}, &ElementName::iNumber);
    }

    void vOnly() {
        std::unordered_set<std::string> wanted;
        for (const oxa::Model* pModel : {&m_modelBefore, &m_modelAfter})
            for (const oxa::Element element : m_options.pOnly->select(*pModel).elements) wanted.insert(element.guid());
        const auto boUnwanted = [&wanted](const ElementName& element) { return !wanted.contains(element.sGlobalId); };
        std::erase_if(m_result.removed, boUnwanted);
        std::erase_if(m_result.added, boUnwanted);
        std::erase_if(m_result.changed, [&](const ElementChange& change) { return boUnwanted(change.before); });
        m_result.others.removed.clear();
        m_result.others.added.clear();
        m_result.others.changed.clear();
    }

    Side m_sideBefore;
    Side m_sideAfter;
    const oxa::Model& m_modelBefore;
    const oxa::Model& m_modelAfter;
    ComparedModel m_before;
    ComparedModel m_after;
    const ElementOptions& m_options;
    Result m_entities;
    NamedElements m_old;
    NamedElements m_new;
    std::unordered_map<std::string, Pair> m_pairs;   // by GlobalId
    ElementResult m_result;
};

}   // namespace

ElementResult elementDifferences(const ElementSide& before, const ElementSide& after, const ElementOptions& options) {
    return ElementDiffer(before, after, options).run();
}

}   // namespace oxa::compare
