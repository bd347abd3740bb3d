// SPDX-License-Identifier: Apache-2.0
// IfcXmlExportWalk: the state of one walk over a model.
//
// Nested instances are kept on stacks of our own: a chain of references may be as long as the model.
//
// For      IfcXmlExport.cpp and IfcXmlExportValues.cpp.
// Threads  one.
#pragma once

#include <deque>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "Format/Ifc/Memory/Fnv1a.h"
#include "Format/Ifc/Write/WriteContext.h"
#include "Format/Ifc/Xml/IfcXmlExport.h"
#include "platform/Xml.h"

namespace oxa::ifc::xml {

struct ExportCommon::Exported : std::unordered_set<const Entity*, memory::Fnv1a> {};

struct ExportCommon::Walk : WriteInfoCommon {
    using WriteInfoCommon::WriteInfoCommon;

    // One attribute or inverse attribute of a type.
    struct Step {
        unsigned iAttribute;   // without an inverse attribute: position among all attributes
        const def::schema::AttributeInverse* pInverse;
    };

    // An element that was appended and has to be filled.
    struct Pending {
        oxa::xml::Element element;
        const Entity* pEntity;
        const def::schema::Entity* pDeclared;
    };

    // An instance whose attributes are being written.
    struct Open {
        oxa::xml::Element element;
        const Entity* pEntity;
        const std::vector<Step>* pSteps;
        std::size_t iNext;      // step
        std::size_t iPending;   // what m_pending holds above this comes before the next step
    };

    // The steps of a type: supertypes first, inverse attributes behind the attributes of their level.
    const std::vector<Step>& stepsOf(const def::schema::Entity& type);

    std::vector<Pending> m_pending;   // the next one last
    std::vector<Open> m_open;         // the innermost one last

    bool m_boLeftOutNoted = false;         // what attributes name that the mapping leaves out is put into m_leftOut
    std::deque<const Entity*> m_leftOut;   // in the order of the walk; an instance may be there more than once

private:
    std::unordered_map<const def::schema::Entity*, std::vector<Step>, memory::Fnv1a> m_steps;
};

// The text of an instance number in a document.
[[nodiscard]] inline std::string sIdText(std::size_t iId) { return 'i' + std::to_string(iId); }

}   // namespace oxa::ifc::xml
