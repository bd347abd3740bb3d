// SPDX-License-Identifier: Apache-2.0
// CreateWall OUT: a model from nothing: a building with one wall, which has an extruded solid and a property set.
#include <iostream>

#include "Model/Model.h"
#include "Model/SetProperty.h"

namespace {

oxa::Element axes(oxa::Model& model) {
    const oxa::Element origin = model.create("IfcCartesianPoint", {{"Coordinates", {0.0, 0.0, 0.0}}});
    return model.create("IfcAxis2Placement3D", {{"Location", origin}});
}

oxa::Element box(oxa::Model& model, const oxa::Element& context, double length, double width, double height) {
    const oxa::Element profile =
        model.create("IfcRectangleProfileDef", {{"ProfileType", "AREA"}, {"XDim", length}, {"YDim", width}});
    const oxa::Element up = model.create("IfcDirection", {{"DirectionRatios", {0.0, 0.0, 1.0}}});
    const oxa::Element solid =
        model.create("IfcExtrudedAreaSolid", {{"SweptArea", profile}, {"ExtrudedDirection", up}, {"Depth", height}});
    const oxa::Element shape = model.create("IfcShapeRepresentation", {{"ContextOfItems", context},
                                                                       {"RepresentationIdentifier", "Body"},
                                                                       {"RepresentationType", "SweptSolid"},
                                                                       {"Items", {solid}}});
    return model.create("IfcProductDefinitionShape", {{"Representations", {shape}}});
}

oxa::Element project(oxa::Model& model, const oxa::Element& context) {
    const oxa::Element metre = model.create("IfcSIUnit", {{"UnitType", "LENGTHUNIT"}, {"Name", "METRE"}});
    const oxa::Element units = model.create("IfcUnitAssignment", {{"Units", {metre}}});
    return model.create("IfcProject",
                        {{"Name", "P"}, {"RepresentationContexts", {context}}, {"UnitsInContext", units}});
}

}   // namespace

int main(int argc, char** argv) try {
    if (argc != 2) return std::cerr << "usage: CreateWall OUT\n", 2;
    oxa::Model model("IFC4");
    const oxa::Element context = model.create(
        "IfcGeometricRepresentationContext",
        {{"ContextType", "Model"}, {"CoordinateSpaceDimension", 3}, {"WorldCoordinateSystem", axes(model)}});
    const oxa::Element building = model.create("IfcBuilding", {{"Name", "House"}});
    const oxa::Element place = model.create("IfcLocalPlacement", {{"RelativePlacement", axes(model)}});
    const oxa::Element body = box(model, context, 5, 0.3, 2.5);
    const oxa::Element wall = model.create("IfcWall", {{"ObjectPlacement", place}, {"Representation", body}});
    model.create("IfcRelAggregates", {{"RelatingObject", project(model, context)}, {"RelatedObjects", {building}}});
    model.create("IfcRelContainedInSpatialStructure", {{"RelatingStructure", building}, {"RelatedElements", {wall}}});
    oxa::setProperty(model, wall, "Pset_WallCommon", "FireRating", "F 90");
    model.save(argv[1]);
    return 0;
} catch (const oxa::Error& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
