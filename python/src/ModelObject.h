// SPDX-License-Identifier: Apache-2.0
// ModelObject: what stands behind oxaifc.Model: the model, where it comes from, and who uses it; and behind oxaifc.Entity:
// a handle into a model that it keeps alive.
//
// Threads  with the interpreter's lock held, and Access asked.
#pragma once

#include <nanobind/nanobind.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/string_view.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "Access.h"
#include "Model/Model.h"
#include "Model/References.h"

namespace oxa::python {

// The types that values of properties have in a model, as first seen.
class PropertyTypes {
public:
    // Of the first value that a set of this name has for a property of this name; empty where no set has one.
    [[nodiscard]] const std::string& sType(const oxa::Model& model, std::string_view set, std::string_view name);

private:
    std::map<std::pair<std::string, std::string>, std::string> m_types;
};

// A file as it was at a time, to tell whether it is still the same.
struct Stamp {
    std::uint64_t uSize = 0;
    std::int64_t iTime = 0;   // of its last change, in ticks of the system

    friend bool operator==(const Stamp&, const Stamp&) = default;
};

class ModelObject {
public:
    explicit ModelObject(oxa::Model made) : m_model(std::move(made)) {}
    ModelObject(oxa::Model opened, std::string sFile, const Stamp& stamp)
        : m_model(std::move(opened)),
          m_sPath(std::move(sFile)),
          m_stamp(stamp) {}
    ModelObject(const ModelObject&) = delete;
    ModelObject& operator=(const ModelObject&) = delete;

    // To be looked at for a moment, with the interpreter's lock kept.
    [[nodiscard]] const oxa::Model& looked() {
        m_access.vLook();
        return m_model;
    }
    // To be changed; see vChanged().
    [[nodiscard]] oxa::Model& changing() {
        m_access.vChange();
        ++m_uChanges;
        return m_model;
    }
    // For long operations, behind a Reading or an Alone of access().
    [[nodiscard]] oxa::Model& unguarded() noexcept { return m_model; }
    [[nodiscard]] Access& access() noexcept { return m_access; }
    // Who refers to whom, as of that count of changes; see GraphBinding.cpp.
    struct Users {
        std::uint64_t uChanges = static_cast<std::uint64_t>(-1);
        std::shared_ptr<oxa::Referrers> pTable{};
    };
    [[nodiscard]] Users& users() noexcept { return m_users; }
    [[nodiscard]] PropertyTypes& typesInFile() noexcept { return m_types; }

    // The file that it was opened from, as an absolute path; empty for another source.
    [[nodiscard]] const std::string& sPath() const noexcept { return m_sPath; }
    // Of that file before it was read.
    [[nodiscard]] const Stamp& stamp() const noexcept { return m_stamp; }
    // Another one after each change; 0: it is as it was opened.
    [[nodiscard]] std::uint64_t uChanges() const noexcept { return m_uChanges; }

private:
    oxa::Model m_model;
    std::string m_sPath;
    Stamp m_stamp;
    std::uint64_t m_uChanges = 0;
    PropertyTypes m_types;
    Users m_users;
    Access m_access;
};

// A model as bindings hand it on: the object of Python, which entities keep alive, and what stands behind it.
struct Home {
    nb::handle object;
    ModelObject* pModel;

    [[nodiscard]] static Home of(nb::handle model) { return {model, nb::inst_ptr<ModelObject>(model)}; }
};

struct EntityObject {
    nb::object model;
    ModelObject* pModel;
    oxa::Element element;

    [[nodiscard]] Home home() const { return {model, pModel}; }
    // To be asked for a moment.
    [[nodiscard]] const oxa::Element& looked() const {
        pModel->access().vLook();
        return element;
    }
};

// oxaifc.Entity; None for a handle that names nothing.
[[nodiscard]] nb::object entityNew(const Home& home, const oxa::Element& element);
// A list of them.
[[nodiscard]] nb::object entityList(const Home& home, const oxa::Elements& elements);
// A tuple of them.
[[nodiscard]] nb::object entityTuple(const Home& home, const oxa::Elements& elements);
// What stands behind an oxaifc.Entity, null behind all else.
[[nodiscard]] EntityObject* pEntityOf(nb::handle object);

}   // namespace oxa::python
