// SPDX-License-Identifier: Apache-2.0
// WallProperties IN: the walls of each storey with all their properties, those of their types too.
#include <iostream>

#include "Model/Model.h"
#include "Model/Relations.h"
#include "Model/Selector.h"

int main(int argc, char** argv) try {
    if (argc != 2) return std::cerr << "usage: WallProperties IN\n", 2;
    const oxa::Model model = oxa::Model::open(argv[1]);
    for (const oxa::Element storey : model.all("IfcBuildingStorey")) {
        std::cout << storey.text("Name").value_or("-") << '\n';
        for (const oxa::Element wall : oxa::Selector("IfcWall, storey=" + storey.guid()).select(model).elements) {
            std::cout << "  " << wall.text("Name").value_or("-") << '\n';
            for (const oxa::PropertySet& set : oxa::psets(wall))
                for (const oxa::Property& one : set.properties)
                    std::cout << "    " << set.name << '.' << one.name << " = " << one.value.toString() << '\n';
        }
    }
    return 0;
} catch (const oxa::Error& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
