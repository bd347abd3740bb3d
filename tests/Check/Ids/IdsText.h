// SPDX-License-Identifier: Apache-2.0
// IdsText: files of requirements and models of a few lines, and what a check says of them as one line.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include "Check/Ids.h"
#include "Model/Model.h"

namespace oxa::test {

// A file with these specifications, which begin on line 4.
inline std::string idsFile(std::string_view specifications) {
    return "<ids xmlns=\"http://standards.buildingsmart.org/IDS\" xmlns:xs=\"http://www.w3.org/2001/XMLSchema\">\n"
           "<info><title>T</title></info>\n<specifications>\n" +
           std::string(specifications) + "</specifications></ids>\n";
}

inline std::string simple(std::string_view name, std::string_view value) {
    return "<" + std::string(name) + "><simpleValue>" + std::string(value) + "</simpleValue></" + std::string(name) +
           ">";
}
// restricted("value", "double", "minInclusive=2 maxInclusive=3")
inline std::string restricted(std::string_view name, std::string_view base, std::string_view facets) {
    std::string sAll = "<" + std::string(name) + "><xs:restriction base=\"xs:" + std::string(base) + "\">";
    while (!facets.empty()) {
        const std::size_t iEqual = facets.find('=');
        const std::size_t iEnd = std::min(facets.find(' '), facets.size());
        sAll += "<xs:" + std::string(facets.substr(0, iEqual)) + " value=\"" +
                std::string(facets.substr(iEqual + 1, iEnd - iEqual - 1)) + "\"/>";
        facets.remove_prefix(std::min(iEnd + 1, facets.size()));
    }
    return sAll + "</xs:restriction></" + std::string(name) + ">";
}
inline std::string entity(std::string_view name, std::string_view rest = {}) {
    return "<entity>" + simple("name", name) + std::string(rest) + "</entity>";
}
inline std::string property(std::string_view set, std::string_view name, std::string_view value = {},
                            std::string_view attributes = {}) {
    return "<property " + std::string(attributes) + ">" + simple("propertySet", set) + simple("baseName", name) +
           std::string(value) + "</property>";
}

struct SpecificationText {
    std::string applicability = entity("IFCWALL");
    std::string requirements{};
    std::string occurs = "maxOccurs=\"unbounded\"";
    std::string schemas = "IFC4";

    [[nodiscard]] std::string text() const {
        return "<specification name=\"S\" ifcVersion=\"" + schemas + "\">\n<applicability " + occurs + ">" +
               applicability + "</applicability>\n" +
               (requirements.empty() ? std::string() : "<requirements>" + requirements + "</requirements>") +
               "</specification>\n";
    }
};

// "4:7 Ids_UnknownClass 'IFCWAL'" for each fault, " | " between.
inline std::string sFaults(const ids::Requirements& requirements) {
    std::string sAll;
    for (const ids::Fault& fault : requirements.faults()) {
        if (!sAll.empty()) sAll += " | ";
        sAll += std::to_string(fault.line) + ":" + std::to_string(fault.column) + " " + fault.key +
                (fault.weight == ids::FaultWeight::Note ? " (note)" : "") + " '" + fault.found + "'";
    }
    return sAll;
}

// "failed 1/2: #12 value 0 FireRating is 'F 30'": status, passed of applicable, and each failure.
inline std::string sResult(const ids::SpecificationResult& result) {
    std::string sAll = std::string(statusName(result.status)) + " " + std::to_string(result.passed) + "/" +
                       std::to_string(result.applicable);
    for (const ids::Failure& failure : result.failures)
        sAll += (&failure == result.failures.data() ? ": #" : "; #") + std::to_string(failure.element.id()) + " " +
                std::string(failureKindName(failure.kind)) + ", " + failure.reason;
    return sAll;
}

}   // namespace oxa::test
