// SPDX-License-Identifier: Apache-2.0
// GraphBinding: who refers to an entity, and what it leads to.
#include <nanobind/stl/optional.h>

#include <deque>
#include <memory>
#include <optional>
#include <unordered_set>
#include <utility>
#include <vector>

#include "Bindings.h"
#include "Model/Error.h"
#include "Model/References.h"

namespace oxa::python {

namespace {

const oxa::Element& elementFrom(const Home& home, nb::handle object) {
    const EntityObject* const pEntity = pEntityOf(object);
    if (!pEntity)
        throw oxa::TypeError("an Entity is wanted, and no " + std::string(nb::type_name(object.type()).c_str()));
    if (pEntity->pModel != home.pModel) throw oxa::HandleError("the entity is of another model");
    return pEntity->element;
}

// Of the first question since a change only a look over the model: many a program changes it in between.
oxa::Elements usersOf(ModelObject& model, const oxa::Element& element) {
    ModelObject::Users& users = model.users();
    static_cast<void>(model.looked());
    const bool boFirst = users.uChanges != model.uChanges();
    if (boFirst) users = {model.uChanges(), nullptr};
    if (!boFirst && users.pTable) return users.pTable->of(element);
    oxa::Elements found;
    std::shared_ptr<oxa::Referrers> pTable;
    {
        const Reading reading(model.access());
        if (!boFirst) pTable = std::make_shared<oxa::Referrers>(model.unguarded());
        found = pTable ? pTable->of(element) : oxa::referrers(model.unguarded(), element);
    }
    if (users.uChanges == model.uChanges()) users.pTable = std::move(pTable);
    return found;
}

nb::object inverse(nb::handle self, nb::handle entity) {
    const Home home = Home::of(self);
    return entityList(home, usersOf(*home.pModel, elementFrom(home, entity)));
}

struct Step {
    oxa::Element element;
    std::size_t iLevel;
};

// Depth first as a recursion would meet them, without one.
std::vector<oxa::Element> metFrom(const oxa::Element& root, std::size_t iLevels, bool boBreadth) {
    std::vector<oxa::Element> met;
    std::unordered_set<oxa::Element> seen;
    std::deque<Step> open{{root, 0}};
    while (!open.empty()) {
        const Step step = boBreadth ? open.front() : open.back();
        boBreadth ? open.pop_front() : open.pop_back();
        if (!seen.insert(step.element).second) continue;
        met.push_back(step.element);
        if (step.iLevel == iLevels) continue;
        const oxa::Elements next = oxa::references(step.element);
        for (std::size_t i = 0; i < next.size(); ++i)
            open.push_back({next[boBreadth ? i : next.size() - 1 - i], step.iLevel + 1});
    }
    return met;
}

nb::object traverse(nb::handle self, nb::handle entity, std::optional<std::size_t> levels, bool boBreadth) {
    const Home home = Home::of(self);
    const oxa::Element& root = elementFrom(home, entity);
    static_cast<void>(root.type());   // refuses one that was removed
    std::vector<oxa::Element> met;
    {
        const Reading reading(home.pModel->access());
        met = metFrom(root, levels.value_or(static_cast<std::size_t>(-1)), boBreadth);
    }
    nb::list list;
    for (const oxa::Element& element : met) list.append(entityNew(home, element));
    return list;
}

}   // namespace

void vBindGraph(ModelClass& model) {
    model
        .def("get_inverse", &inverse, nb::arg("entity").none(),
             "A list of the entities that refer to this one by any attribute, by number.\n\n"
             "The first call after a change looks over the model; the next one makes a table, and those behind it are "
             "fast.")
        .def("traverse", &traverse, nb::arg("entity").none(), nb::arg("max_levels") = nb::none(),
             nb::arg("breadth_first") = false,
             "A list of the entity and of all that it leads to by its attributes, each once, depth first; max_levels: "
             "so\n"
             "many references away at the most.");
}

}   // namespace oxa::python
