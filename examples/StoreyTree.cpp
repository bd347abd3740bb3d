// SPDX-License-Identifier: Apache-2.0
// StoreyTree FILE: reads a model and prints its spatial tree, from the project down to what stands in a storey.
#include <fstream>
#include <iostream>
#include <string>

#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileError.h"

using namespace oxa::ifc;
using def::schema::AttributeName;

namespace {

std::string sNameOf(const Entity& entity) {
    std::string sName;
    entity.boValueGet(AttributeName("Name"), sName);
    return entity.schemaEntity().sName + " '" + sName + "'";
}

// What the relationships in an inverse attribute name on their other side.
std::vector<Entity*> related(Entity& entity, const char* sInverse, const char* sRelated) {
    std::vector<Entity*> found;
    const int iInverse = entity.inverseIndexFromName(AttributeName(sInverse));
    if (iInverse < 0) return found;
    for (const Entity* pRelation : entity.entitiesInverseFromIndex(static_cast<unsigned>(iInverse))) {
        std::vector<Entity*> members;
        pRelation->boListValueGet(AttributeName(sRelated), members);
        found.insert(found.end(), members.begin(), members.end());
    }
    return found;
}

void vPrint(Entity& entity, std::size_t iDepth) {
    std::cout << std::string(iDepth * 2, ' ') << sNameOf(entity) << '\n';
    for (Entity* pPart : related(entity, "IsDecomposedBy", "RelatedObjects")) vPrint(*pPart, iDepth + 1);
    for (const Entity* pElement : related(entity, "ContainsElements", "RelatedElements"))
        std::cout << std::string(iDepth * 2 + 2, ' ') << sNameOf(*pElement) << '\n';
}

}   // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: StoreyTree FILE\n";
        return 2;
    }
    std::ifstream stream(argv[1], std::ios::binary);
    File file;
    const auto pError = io::ReadError::pAllocate();
    const bool boRead = file.boRead(stream, {}, *pError, true, {}, false);
    pError->vErrorsWrite(std::cerr);
    if (Entity* pProject = file.data().pProject()) vPrint(*pProject, 0);
    return boRead ? 0 : 1;
}
