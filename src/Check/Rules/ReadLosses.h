// SPDX-License-Identifier: Apache-2.0
// ReadLosses: what a model lacks of its file, as far as rules would look at it.
//
// For      RuleLevel. A value that the model can't hold, as an integer of 40 bits, leaves the rules open only where one of
//          them names its attribute or holds for its type.
// Threads  one.
#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <utility>

#include "Check/Rules/Code.h"
#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcFileError.h"

namespace oxa::check::rules {

class ReadLosses {
public:
    // What was told while "data" was read.
    ReadLosses(const Program& program, const ifc::Data& data, const ifc::Errors& errors);

    // Those that rules look at.
    [[nodiscard]] std::size_t iCount() const noexcept { return m_iCount; }
    // Whether the model has another value there than the file: a rule says nothing of it.
    [[nodiscard]] bool boLost(const ifc::Entity* pEntity, const schema::Attribute* pAttribute) const {
        return pEntity && pAttribute && m_lost.contains({pEntity, pAttribute->sName});
    }

private:
    std::size_t m_iCount = 0;
    std::set<std::pair<const ifc::Entity*, std::string>> m_lost;   // by instance and attribute
};

}   // namespace oxa::check::rules
