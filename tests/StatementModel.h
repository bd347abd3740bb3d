// SPDX-License-Identifier: Apache-2.0
// StatementModel: a model read from the statements of a test, with kept numbers.
//
// For      the tests of the libraries on the core.
// Threads  one.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "Format/Ifc/IfcFileError.h"

namespace oxa::test {

struct StatementModel {
    // "#1=IFCWALL(...);" and so on, of a built-in schema.
    explicit StatementModel(const std::string& sStatements, const std::string& sSchema = "IFC4") {
        std::istringstream stream("ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\n"
                                  "FILE_NAME('','',(''),(''),'','','');\nFILE_SCHEMA(('" +
                                  sSchema + "'));\nENDSEC;\nDATA;\n" + sStatements + "ENDSEC;\nEND-ISO-10303-21;\n");
        (void)file.boRead(stream, {}, *pErrors, true, {}, true);
    }

    [[nodiscard]] ifc::Data& data() { return file.data(); }
    [[nodiscard]] ifc::Entity& entity(std::size_t iNumber) {
        ifc::Entity* const pEntity = data().pEntityFromId(iNumber);
        EXPECT_NE(pEntity, nullptr) << '#' << iNumber;
        return *pEntity;
    }
    // "#1=IFCWALL(...);", as a write has it.
    [[nodiscard]] std::string sStatement(std::size_t iNumber) { return entity(iNumber).sWriteLine(data()); }

    ifc::File file;
    std::unique_ptr<ifc::io::ReadError> pErrors = ifc::io::ReadError::pAllocate();
};

// Every statement of a model, a line each, by number.
inline std::string sStatements(ifc::Data& data) {
    std::map<std::size_t, std::string> lines;
    for (const ifc::Entity* pEntity : data.entities())
        if (pEntity->pSchemaEntity()) lines[data.iIdFromEntity(*pEntity)] = pEntity->sWriteLine(data);
    std::string sText;
    for (const auto& [iNumber, sLine] : lines) sText += sLine + '\n';
    return sText;
}

}   // namespace oxa::test
