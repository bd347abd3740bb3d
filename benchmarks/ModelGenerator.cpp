// SPDX-License-Identifier: Apache-2.0
#include "ModelGenerator.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <random>
#include <string_view>
#include <utility>

namespace oxa::bench {

namespace {

constexpr std::string_view g_head =
    "ISO-10303-21;\nHEADER;\n"
    "FILE_DESCRIPTION(('ViewDefinition [ReferenceView_V1.2]'),'2;1');\n"
    "FILE_NAME('generated.ifc','2026-01-01T00:00:00',(''),(''),'OxaIfc benchmarks','','');\n"
    "FILE_SCHEMA(('IFC4'));\nENDSEC;\nDATA;\n";
constexpr std::string_view g_foot = "ENDSEC;\nEND-ISO-10303-21;\n";

class Generator {
public:
    Generator(Mix mix, std::size_t iBytes) : m_mix(mix), m_iBytes(iBytes) { m_text.reserve(iBytes + 65536); }

    std::string sModel() {
        m_text = g_head;
        vSpatialTree();
        while (m_text.size() + g_foot.size() < m_iBytes) vElement();
        m_text += g_foot;
        return std::move(m_text);
    }

private:
    // Appends "#n=" and all parts, and answers n.
    template <class... Parts>
    std::size_t iStatement(const Parts&... parts) {
        const std::size_t iId = ++m_iLastId;
        vPut("#"), vPut(iId), vPut("= ");
        (vPut(parts), ...);
        vPut(";\n");
        return iId;
    }

    struct Reference {
        std::size_t iId;
    };
    struct NewGuid {};

    void vPut(std::string_view text) { m_text += text; }
    void vPut(std::size_t iNumber) {
        char digits[24];
        m_text.append(digits, std::to_chars(digits, digits + sizeof digits, iNumber).ptr);
    }
    void vPut(Reference reference) {
        m_text += '#';
        vPut(reference.iId);
    }
    void vPut(double value) {
        char digits[32];
        const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
        const std::string_view text(digits, static_cast<std::size_t>(end - digits));
        m_text += text;
        if (text.find_first_of(".e") == std::string_view::npos) m_text += '.';
    }
    void vPut(NewGuid) {
        constexpr std::string_view g_alphabet = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_$";
        m_text += '\'';
        m_text += g_alphabet[m_random() % 4];   // 22 characters hold 132 bits, a GUID has 128
        for (int i = 0; i < 21; ++i) m_text += g_alphabet[m_random() % 64];
        m_text += '\'';
    }

    std::size_t iBelow(std::size_t iEnd) { return static_cast<std::size_t>(m_random() % iEnd); }
    // Within +-50 m in millimetres: whole, with some decimals, and now and then all that a double has.
    double coordinate() {
        const double value = static_cast<double>(iBelow(100'000'000'000)) / 1e6 - 50'000.;
        switch (iBelow(10)) {
        case 0: return value / 3;
        case 1:
        case 2: return std::round(value);
        default: return std::round(value * 1000) / 1000;
        }
    }

    std::size_t iPoint() {
        const std::size_t iId = ++m_iLastId;
        vPut("#"), vPut(iId), vPut("= IFCCARTESIANPOINT(("), vPut(coordinate()), vPut(","), vPut(coordinate()),
            vPut(",");
        vPut(coordinate()), vPut("));\n");
        return iId;
    }

    void vSpatialTree() {
        const Reference unit{iStatement("IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.)")};
        const Reference units{iStatement("IFCUNITASSIGNMENT((", unit, "))")};
        const Reference origin{iStatement("IFCCARTESIANPOINT((0.,0.,0.))")};
        const Reference axes{iStatement("IFCAXIS2PLACEMENT3D(", origin, ",$,$)")};
        m_context = {iStatement("IFCGEOMETRICREPRESENTATIONCONTEXT($,'Model',3,1.E-05,", axes, ",$)")};
        const Reference project{
            iStatement("IFCPROJECT(", NewGuid(), ",$,'Generated',$,$,$,$,(", m_context, "),", units, ")")};
        m_placement = {iStatement("IFCLOCALPLACEMENT($,", axes, ")")};
        const Reference building{iStatement("IFCBUILDING(", NewGuid(), ",$,'Geb\\X2\\00E4\\X0\\ude',$,$,", m_placement,
                                            ",$,$,.ELEMENT.,$,$,$)")};
        m_storey = {
            iStatement("IFCBUILDINGSTOREY(", NewGuid(), ",$,'Level 1',$,$,", m_placement, ",$,$,.ELEMENT.,0.)")};
        iStatement("IFCRELAGGREGATES(", NewGuid(), ",$,$,$,", project, ",(", building, "))");
        iStatement("IFCRELAGGREGATES(", NewGuid(), ",$,$,$,", building, ",(", m_storey, "))");
    }

    // A faceted body: points, loops, faces.
    Reference brep(std::size_t iFaces) {
        std::string faces;
        for (std::size_t i = 0; i < iFaces; ++i) {
            std::string points;
            for (std::size_t iCorners = 3 + iBelow(2); iCorners; --iCorners)
                points += (points.empty() ? "#" : ",#") + std::to_string(iPoint());
            const Reference loop{iStatement("IFCPOLYLOOP((", points, "))")};
            const Reference bound{iStatement("IFCFACEOUTERBOUND(", loop, ",.T.)")};
            faces += (faces.empty() ? "#" : ",#") + std::to_string(iStatement("IFCFACE((", bound, "))"));
        }
        const Reference shell{iStatement("IFCCLOSEDSHELL((", faces, "))")};
        return {iStatement("IFCFACETEDBREP(", shell, ")")};
    }

    // A triangulated body: two long lists of lists.
    Reference triangles(std::size_t iPoints) {
        const std::size_t iList = ++m_iLastId;
        vPut("#"), vPut(iList), vPut("= IFCCARTESIANPOINTLIST3D((");
        for (std::size_t i = 0; i < iPoints; ++i) {
            vPut(i ? ",(" : "("), vPut(coordinate()), vPut(","), vPut(coordinate()), vPut(","), vPut(coordinate());
            vPut(")");
        }
        vPut("));\n");
        const std::size_t iFaces = ++m_iLastId;
        vPut("#"), vPut(iFaces), vPut("= IFCTRIANGULATEDFACESET("), vPut(Reference{iList}), vPut(",$,.T.,(");
        for (std::size_t i = 0; i < 2 * iPoints; ++i) {
            vPut(i ? ",(" : "("), vPut(1 + iBelow(iPoints)), vPut(","), vPut(1 + iBelow(iPoints)), vPut(",");
            vPut(1 + iBelow(iPoints)), vPut(")");
        }
        vPut("),$);\n");
        return {iFaces};
    }

    void vProperties(Reference element, std::size_t iProperties) {
        // clang-format off
        constexpr std::string_view g_values[] = {
            "IFCLABEL('Concrete C25/30')", "IFCBOOLEAN(.T.)", "IFCLENGTHMEASURE(2500.)", "IFCIDENTIFIER('A-1047')",
            "IFCTEXT('Oberfl\\X2\\00E4\\X0\\che gestrichen')", "IFCAREAMEASURE(12.375)", "IFCINTEGER(4)",
            "IFCVOLUMEMEASURE(3.0937500000000004)"};
        constexpr std::string_view g_names[] = {"Reference", "IsExternal", "Width", "LoadBearing",
                                                "Finish",    "NetArea",    "Phase", "ThermalTransmittance"};
        std::string properties;
        for (std::size_t i = 0; i < iProperties; ++i)
            properties += (properties.empty() ? "#" : ",#") +
                          std::to_string(iStatement("IFCPROPERTYSINGLEVALUE('", g_names[iBelow(std::size(g_names))],
                                                    "',$,", g_values[iBelow(std::size(g_values))], ",$)"));
        const Reference set{iStatement("IFCPROPERTYSET(", NewGuid(), ",$,'Pset_WallCommon',$,(", properties, "))")};
        iStatement("IFCRELDEFINESBYPROPERTIES(", NewGuid(), ",$,$,$,(", element, "),", set, ")");
    }

    void vElement() {
        const Reference point{iPoint()};
        const Reference axes{iStatement("IFCAXIS2PLACEMENT3D(", point, ",$,$)")};
        const Reference placement{iStatement("IFCLOCALPLACEMENT(", m_placement, ",", axes, ")")};
        std::string shape = "$";
        if (m_mix != Mix::Properties || iBelow(8) == 0) {
            const bool boBrep = iBelow(2) == 0;
            const Reference body = boBrep ? brep(6 + iBelow(24)) : triangles(8 + iBelow(64));
            const Reference representation{iStatement("IFCSHAPEREPRESENTATION(", m_context, ",'Body','",
                                                      boBrep ? "Brep" : "Tessellation", "',(", body, "))")};
            shape = '#' + std::to_string(iStatement("IFCPRODUCTDEFINITIONSHAPE($,$,(", representation, "))"));
        }
        // clang-format on
        const Reference element{iStatement("IFCWALL(", NewGuid(), ",$,'Basic Wall:200 mm:", m_iLastId, "',$,$,",
                                           placement, ",", shape, ",'", m_iLastId, "',.NOTDEFINED.)")};
        for (std::size_t iSets = m_mix == Mix::Geometry ? iBelow(4) / 3 : 1 + iBelow(4); iSets; --iSets)
            vProperties(element, 4 + iBelow(12));
        iStatement("IFCRELCONTAINEDINSPATIALSTRUCTURE(", NewGuid(), ",$,$,$,(", element, "),", m_storey, ")");
    }

    Mix m_mix;
    std::size_t m_iBytes;
    std::mt19937_64 m_random{20260101};
    std::string m_text;
    std::size_t m_iLastId = 0;
    Reference m_context{0};
    Reference m_placement{0};
    Reference m_storey{0};
};

}   // namespace

std::string sGeneratedModel(Mix mix, std::size_t iBytes) { return Generator(mix, iBytes).sModel(); }

}   // namespace oxa::bench
