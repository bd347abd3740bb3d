// SPDX-License-Identifier: Apache-2.0
// SetWallProperty IN SET NAME VALUE OUT: sets one property of all walls, a text, and writes the file back with the
// instance numbers that it had.
#include <iostream>

#include "Model/Model.h"
#include "Model/SetProperty.h"

int main(int argc, char** argv) try {
    if (argc != 6) return std::cerr << "usage: SetWallProperty IN SET NAME VALUE OUT\n", 2;
    oxa::Model model = oxa::Model::open(argv[1]);
    for (const oxa::Element wall : model.all("IfcWall")) oxa::setProperty(model, wall, argv[2], argv[3], argv[4]);
    model.save(argv[5]);
    return 0;
} catch (const oxa::Error& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
