// SPDX-License-Identifier: Apache-2.0
#include "Check/Ids/TypedOccurrences.h"

namespace oxa::ids::detail {

namespace schema = ifc::def::schema;

namespace {

struct Row {
    std::string_view sOccurrence;
    std::string_view sName;   // of the type: the same with "Type"
};
// clang-format off
constexpr Row g_rows[] = {
    {"IfcFurnishingElement",          "IfcFurniture"},
    {"IfcFurnishingElement",          "IfcSystemFurnitureElement"},
    {"IfcDistributionControlElement", "IfcActuator"},
    {"IfcDistributionControlElement", "IfcAlarm"},
    {"IfcDistributionControlElement", "IfcController"},
    {"IfcDistributionControlElement", "IfcFlowInstrument"},
    {"IfcDistributionControlElement", "IfcSensor"},
    {"IfcEnergyConversionDevice",     "IfcAirToAirHeatRecovery"},
    {"IfcEnergyConversionDevice",     "IfcBoiler"},
    {"IfcEnergyConversionDevice",     "IfcChiller"},
    {"IfcEnergyConversionDevice",     "IfcCoil"},
    {"IfcEnergyConversionDevice",     "IfcCondenser"},
    {"IfcEnergyConversionDevice",     "IfcCooledBeam"},
    {"IfcEnergyConversionDevice",     "IfcCoolingTower"},
    {"IfcEnergyConversionDevice",     "IfcElectricGenerator"},
    {"IfcEnergyConversionDevice",     "IfcElectricMotor"},
    {"IfcEnergyConversionDevice",     "IfcEvaporativeCooler"},
    {"IfcEnergyConversionDevice",     "IfcEvaporator"},
    {"IfcEnergyConversionDevice",     "IfcHeatExchanger"},
    {"IfcEnergyConversionDevice",     "IfcHumidifier"},
    {"IfcEnergyConversionDevice",     "IfcMotorConnection"},
    {"IfcEnergyConversionDevice",     "IfcTransformer"},
    {"IfcEnergyConversionDevice",     "IfcTubeBundle"},
    {"IfcEnergyConversionDevice",     "IfcUnitaryEquipment"},
    {"IfcFlowController",             "IfcAirTerminalBox"},
    {"IfcFlowController",             "IfcDamper"},
    {"IfcFlowController",             "IfcElectricTimeControl"},
    {"IfcFlowController",             "IfcFlowMeter"},
    {"IfcFlowController",             "IfcProtectiveDevice"},
    {"IfcFlowController",             "IfcSwitchingDevice"},
    {"IfcFlowController",             "IfcValve"},
    {"IfcFlowFitting",                "IfcCableCarrierFitting"},
    {"IfcFlowFitting",                "IfcDuctFitting"},
    {"IfcFlowFitting",                "IfcJunctionBox"},
    {"IfcFlowFitting",                "IfcPipeFitting"},
    {"IfcFlowMovingDevice",           "IfcCompressor"},
    {"IfcFlowMovingDevice",           "IfcFan"},
    {"IfcFlowMovingDevice",           "IfcPump"},
    {"IfcFlowSegment",                "IfcCableCarrierSegment"},
    {"IfcFlowSegment",                "IfcCableSegment"},
    {"IfcFlowSegment",                "IfcDuctSegment"},
    {"IfcFlowSegment",                "IfcPipeSegment"},
    {"IfcFlowStorageDevice",          "IfcElectricFlowStorageDevice"},
    {"IfcFlowStorageDevice",          "IfcTank"},
    {"IfcFlowTerminal",               "IfcAirTerminal"},
    {"IfcFlowTerminal",               "IfcElectricAppliance"},
    {"IfcFlowTerminal",               "IfcFireSuppressionTerminal"},
    {"IfcFlowTerminal",               "IfcLamp"},
    {"IfcFlowTerminal",               "IfcLightFixture"},
    {"IfcFlowTerminal",               "IfcOutlet"},
    {"IfcFlowTerminal",               "IfcSanitaryTerminal"},
    {"IfcFlowTerminal",               "IfcSpaceHeater"},
    {"IfcFlowTerminal",               "IfcStackTerminal"},
    {"IfcFlowTerminal",               "IfcWasteTerminal"},
    {"IfcFlowTreatmentDevice",        "IfcDuctSilencer"},
    {"IfcFlowTreatmentDevice",        "IfcFilter"},
    {"IfcElementComponent",           "IfcVibrationIsolator"},
};
// clang-format on

}   // namespace

std::vector<TypedOccurrence> typedOccurrences(const schema::Schema& schema) {
    std::vector<TypedOccurrence> found;
    for (const Row& row : g_rows) {
        if (schema.pObjectFromName(row.sName)) continue;   // the schema has the class itself
        const std::string sType = std::string(row.sName) + "Type";
        const schema::Entity* pOccurrence = schema::pAsEntity(schema.pObjectFromName(row.sOccurrence));
        const schema::Entity* pType = schema::pAsEntity(schema.pObjectFromName(sType));
        if (pOccurrence && pType)
            found.push_back({std::string(row.sName), schema::sUpper(row.sName), pOccurrence, pType});
    }
    return found;
}

}   // namespace oxa::ids::detail
