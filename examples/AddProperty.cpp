// SPDX-License-Identifier: Apache-2.0
// AddProperty IN SET NAME VALUE OUT: gives all walls a new property set with one property, a text, and writes the file
// back with the instance numbers that it had.
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileError.h"
#include "Format/Ifc/IfcTypeSelectBase.h"

using namespace oxa::ifc;
using def::schema::AttributeName;
using def::schema::ObjectName;

namespace {

// A new rooted entity, with the history that the project has: until IFC4 each must have one.
Entity& createRooted(Data& data, const char* sKeyword) {
    Entity& entity = *data.pEntityCreate(ObjectName(sKeyword));
    entity.boValueSet(AttributeName("GlobalId"), oxa::Guid::generate(), data);
    Entity* pHistory = nullptr;
    if (data.pProject()->boValueGet(AttributeName("OwnerHistory"), pHistory))
        entity.boValueSet<const Entity*>(AttributeName("OwnerHistory"), pHistory, data);
    return entity;
}

void vPropertyAdd(Data& data, const std::vector<const Entity*>& walls, char** words) {
    Entity& property = *data.pEntityCreate(ObjectName("IFCPROPERTYSINGLEVALUE"));
    const def::schema::Type* pLabel = data.pSchema()->pTypeFromName(ObjectName("IFCLABEL"));
    property.boValueSet(AttributeName("Name"), std::string(words[1]), data);
    property.boValueSet(AttributeName("NominalValue"), types::IfcSelectBase(pLabel, std::string(words[2])), data);

    Entity& set = createRooted(data, "IFCPROPERTYSET");
    set.boValueSet(AttributeName("Name"), std::string(words[0]), data);
    set.boListValueSet<const Entity*>(AttributeName("HasProperties"), {&property}, data);

    // The walls know nothing of their sets: a relationship ties them, and both ends are told of it.
    Entity& relation = createRooted(data, "IFCRELDEFINESBYPROPERTIES");
    relation.boListValueSet<const Entity*>(AttributeName("RelatedObjects"), walls, data);
    const AttributeName definition("RelatingPropertyDefinition");   // a select from IFC4 on
    if (!relation.boValueSet<const Entity*>(definition, &set, data))
        relation.boValueSet(definition, types::IfcSelectBase(&set), data);
    set.vAttributeInverseInit(data);
    relation.vAttributeInverseInit(data);
}

}   // namespace

int main(int argc, char** argv) {
    if (argc != 6) {
        std::cerr << "usage: AddProperty IN SET NAME VALUE OUT\n";
        return 2;
    }
    std::ifstream stream(argv[1], std::ios::binary);
    File file;
    const auto pReadError = io::ReadError::pAllocate();
    if (!file.boRead(stream, {}, *pReadError, true, {}, false) || !file.data().pProject()) {
        pReadError->vErrorsWrite(std::cerr);
        return 1;
    }
    Data& data = file.data();
    // The numbers of the file stay, so those of new entities have to be above them: else some would be used twice.
    if (!data.boNumbersAbove()) return 1;

    const auto [first, last] = data.range(ObjectName("IFCWALL"), true);
    const std::vector<const Entity*> walls(first, last);
    if (!walls.empty()) vPropertyAdd(data, walls, argv + 2);
    std::cout << walls.size() << " walls\n";

    std::ofstream out(argv[5], std::ios::binary);
    const auto pWriteError = io::WriteError::pAllocate();
    const WriteOptions options{.eOrder = WriteOrder::Number, .boTellNumbersTwice = true};
    const bool boWritten = file.boWrite(out, *pWriteError, options) && out.flush().good();
    pWriteError->vErrorsWrite(std::cerr);
    return boWritten && pWriteError->records().empty() ? 0 : 1;
}
