// SPDX-License-Identifier: Apache-2.0
// Program: requirements as they were read, with their conditions made ready.
//
// Life     shared by all copies of a Requirements, and never changed. Matchers point into the specifications beside them.
// Threads  any number at once.
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "Check/Ids.h"
#include "Check/Ids/Matcher.h"

namespace oxa::ids::detail {

struct FacetProgram {
    FacetProgram(const Facet& theFacet, Patterns& patterns);

    const Facet* pFacet;
    Matcher entity;
    Matcher predefinedType;
    Matcher name;
    Matcher propertySet;
    Matcher system;
    Matcher value;
};

struct SpecificationProgram {
    std::vector<FacetProgram> applicability;
    std::vector<FacetProgram> requirements;
};

struct Program {
    std::vector<Fault> faults;
    bool boValid = false;
    Info info;
    std::vector<Specification> specifications;
    std::vector<SpecificationProgram> programs;   // one each

    [[nodiscard]] static const Program& of(const Requirements& requirements) noexcept {
        return *requirements.m_pProgram;
    }
};

/// From the bytes of a file.
[[nodiscard]] std::shared_ptr<const Program> programRead(const std::string& sBytes);

}   // namespace oxa::ids::detail
