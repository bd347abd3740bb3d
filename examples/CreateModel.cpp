// SPDX-License-Identifier: Apache-2.0
// CreateModel OUT: makes a small model from nothing, a project with one site and one building, and writes it.
#include <fstream>
#include <iostream>

#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileError.h"
#include "provider/SchemaLoader.h"

using namespace oxa::ifc;
using def::schema::AttributeName;
using def::schema::ObjectName;

namespace {

Entity& create(Data& data, const char* sKeyword) { return *data.pEntityCreate(ObjectName(sKeyword)); }

Entity& createRooted(Data& data, const char* sKeyword, const char* sName) {
    Entity& entity = create(data, sKeyword);
    entity.boValueSet(AttributeName("GlobalId"), oxa::Guid::generate(), data);
    if (sName) entity.boValueSet<const char*>(AttributeName("Name"), sName, data);
    return entity;
}

// The part knows nothing of its whole: a relationship ties them, and its two ends are told of it.
void vAggregate(Data& data, Entity& whole, Entity& part) {
    Entity& relation = createRooted(data, "IFCRELAGGREGATES", nullptr);
    relation.boValueSet<const Entity*>(AttributeName("RelatingObject"), &whole, data);
    relation.boListValueSet<const Entity*>(AttributeName("RelatedObjects"), {&part}, data);
    relation.vAttributeInverseInit(data);
}

Entity& createUnit(Data& data, const char* sType, const char* sName) {
    Entity& unit = create(data, "IFCSIUNIT");
    unit.boDerivedSet(AttributeName("Dimensions"), true);
    unit.boValueSet<const char*>(AttributeName("UnitType"), sType, data);
    unit.boValueSet<const char*>(AttributeName("Name"), sName, data);
    return unit;
}

}   // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: CreateModel OUT\n";
        return 2;
    }
    File file;
    file.vSchemaSet(*SchemaLoader::pBuiltIn("IFC4"));
    file.header().name.vInit("model.ifc", "An author", "An organization", "CreateModel");
    file.header().description.setViewDefinitionName("ReferenceView_V1.2");

    Data& data = file.data();
    Entity& project = createRooted(data, "IFCPROJECT", "A project");
    Entity& units = create(data, "IFCUNITASSIGNMENT");
    units.boListValueSet<const Entity*>(
        AttributeName("Units"),
        {&createUnit(data, "LENGTHUNIT", "METRE"), &createUnit(data, "PLANEANGLEUNIT", "RADIAN")}, data);
    project.boValueSet<const Entity*>(AttributeName("UnitsInContext"), &units, data);
    Entity& site = createRooted(data, "IFCSITE", "A site");
    Entity& building = createRooted(data, "IFCBUILDING", "A building");
    vAggregate(data, project, site);
    vAggregate(data, site, building);

    std::ofstream out(argv[1], std::ios::binary);
    const auto pError = io::WriteError::pAllocate();
    const bool boWritten = file.boWrite(out, *pError, {}, true) && out.flush().good();
    pError->vErrorsWrite(std::cerr);
    return boWritten && pError->records().empty() ? 0 : 1;
}
