// SPDX-License-Identifier: Apache-2.0
// The functions of the three published schemas with arguments made by hand. A row holds for each schema that has the function.
#include <algorithm>
#include <set>

#include "Check/Rules/ExpressRun.h"

namespace {

using oxa::test::ExpressRun;

const char* const g_sData =
    "#1=IFCDIRECTION((1.,0.,0.));#2=IFCDIRECTION((0.,1.,0.));#3=IFCDIRECTION((3.,4.));#4=IFCDIRECTION((0.,0.,2.));"
    "#5=IFCCARTESIANPOINT((0.,0.,0.));#6=IFCCARTESIANPOINT((1.,2.));#7=IFCVECTOR(#4,3.);#8=IFCAXIS2PLACEMENT3D(#5,$,$);"
    "#9=IFCAXIS2PLACEMENT3D(#5,#4,#1);#10=IFCPOLYLINE((#5,#5));#11=IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.);"
    "#12=IFCDERIVEDUNITELEMENT(#11,2);#13=IFCLOCALPLACEMENT($,#9);#14=IFCAXIS2PLACEMENT2D(#6,$);#15=IFCPOLYLINE((#6,#6)"
    ");"
    "#16=IFCPROPERTYSINGLEVALUE('p',$,IFCLABEL('v'),$);#17=IFCPROPERTYSINGLEVALUE('p',$,$,$);"
    "#18=IFCPROPERTYSINGLEVALUE('q',$,$,$);#19=IFCVERTEXPOINT(#5);#20=IFCVERTEXPOINT(#6);#21=IFCEDGE(#19,#20);"
    "#22=IFCEDGE(#20,#19);#23=IFCEDGELOOP((#21,#22));#24=IFCEDGELOOP((#21,#21));#25=IFCPATH((#21,#22));"
    "#26=IFCRECTANGLEPROFILEDEF(.AREA.,$,#14,1.,2.);#27=IFCCIRCLEPROFILEDEF(.AREA.,$,#14,1.);"
    "#28=IFCEXTRUDEDAREASOLID(#26,#8,#4,1.);#29=IFCSIUNIT(*,.MASSUNIT.,.KILO.,.GRAM.);#30=IFCPLANE(#8);"
    "#31=IFCCOLOURRGB($,1.,0.,0.);#32=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);#33=IFCCOLOURRGB($,0.,0.,0.);";
const char* const g_sParameters = "(x, y, d2, z, p3, p2, v, a, b, line3, meter, meter2, lp, a2, line2, p, pp, q, v1, "
                                  "v2, e12, e21, loop, broken, path, "
                                  "rectangle, circle, solid, gram, plane, colour, inch, other : GENERIC)";
constexpr std::size_t g_iInstances = 33;

struct Row {
    const char* sText;
    const char* sResult;
    const char* sSchema = "";   // only for schemas whose name begins so
};
// clang-format off
const Row g_rows[] = {
    {"IfcNormalise(d2)", "IfcDirection([0.6, 0.8])"},
    {"IfcNormalise(v)", "IfcVector(IfcDirection([0., 0., 1.]), 1.)"},
    {"IfcNormalise(?)", "?"},
    {"IfcDotProduct(x, y)", "0."},
    {"IfcDotProduct(z, z)", "1."},
    {"IfcDotProduct(x, d2)", "?"},
    {"IfcDotProduct(x, ?)", "?"},
    {"IfcCrossProduct(x, y)", "IfcVector(IfcDirection([0., 0., 1.]), 1.)"},
    {"IfcCrossProduct(x, x)", "IfcVector(#1=IfcDirection, 0.)"},
    {"IfcCrossProduct(x, d2)", "?"},
    {"IfcScalarTimesVector(2., z)", "IfcVector(IfcDirection([0., 0., 1.]), 2.)"},
    {"IfcScalarTimesVector(-2., v)", "IfcVector(IfcDirection([-0., -0., -1.]), 6.)"},
    {"IfcScalarTimesVector(?, v)", "?"},
    {"IfcVectorSum(x, y).Orientation", "IfcDirection([1., 1., 0.])"},
    {"IfcVectorSum(x, d2)", "?"},
    {"IfcVectorDifference(x, y).Orientation", "IfcDirection([1., -1., 0.])"},
    {"IfcVectorDifference(x, x).Magnitude", "0."},
    {"IfcOrthogonalComplement(d2)", "IfcDirection([-4., 3.])"},
    {"IfcOrthogonalComplement(x)", "?"},
    {"IfcFirstProjAxis(z, x)", "IfcDirection([1., 0., 0.])"},
    {"IfcFirstProjAxis(z, ?)", "IfcDirection([1., 0., 0.])"},
    {"IfcFirstProjAxis(x, ?)", "IfcDirection([0., 1., 0.])"},
    {"IfcFirstProjAxis(z, z)", "?"},
    {"IfcSecondProjAxis(z, x, ?)", "IfcDirection([0., 1., 0.])"},
    {"IfcBuildAxes(z, x)", "[IfcDirection([1., 0., 0.]), IfcDirection([0., 1., 0.]), IfcDirection([0., 0., 1.])]"},
    {"IfcBuildAxes(?, ?)", "[IfcDirection([1., 0., 0.]), IfcDirection([0., 1., 0.]), IfcDirection([0., 0., 1.])]"},
    {"IfcBuild2Axes(d2)", "[IfcDirection([0.6, 0.8]), IfcDirection([-0.8, 0.6])]"},
    {"IfcBuild2Axes(?)", "[IfcDirection([1., 0.]), IfcDirection([-0., 1.])]"},
    {"IfcBaseAxis(2, d2, ?, ?)", "[IfcDirection([0.6, 0.8]), IfcDirection([-0.8, 0.6])]"},
    {"IfcBaseAxis(2, ?, ?, ?)", "[IfcDirection([1., 0.]), IfcDirection([0., 1.])]"},
    {"IfcBaseAxis(3, ?, ?, ?)", "[IfcDirection([1., 0., 0.]), IfcDirection([0., 1., 0.]), IfcDirection([0., 0., 1.])]"},
    {"IfcBooleanChoose(TRUE, 1, 2)", "1"},
    {"IfcBooleanChoose(FALSE, 1, 2)", "2"},
    {"IfcSameValue(1.0, 1.0000001, ?)", "TRUE"},
    {"IfcSameValue(1.0, 1.1, ?)", "FALSE"},
    {"IfcSameValue(1.0, 1.1, 0.5)", "TRUE"},
    {"IfcSameValue(?, 1.1, 0.5)", "UNKNOWN"},
    {"IfcSameValidPrecision(?, 0.000001)", "TRUE"},
    {"IfcSameValidPrecision(0.1, 0.000001)", "FALSE"},
    {"IfcSameDirection(x, x, ?)", "TRUE"},
    {"IfcSameDirection(x, y, ?)", "FALSE"},
    {"IfcSameCartesianPoint(p3, p3, ?)", "TRUE"},
    {"IfcSameCartesianPoint(p3, p2, ?)", "FALSE"},
    {"IfcSameAxis2Placement(a, b, ?)", "TRUE"},
    {"IfcCorrectDimensions(LENGTHUNIT, IfcDimensionalExponents(1, 0, 0, 0, 0, 0, 0))", "TRUE"},
    {"IfcCorrectDimensions(MASSUNIT, IfcDimensionalExponents(1, 0, 0, 0, 0, 0, 0))", "FALSE"},
    {"IfcCorrectDimensions(IfcUnitEnum.USERDEFINED, IfcDimensionalExponents(1, 0, 0, 0, 0, 0, 0))", "UNKNOWN"},
    {"IfcCorrectDimensions(LENGTHUNIT, meter.Dimensions)", "TRUE"},
    {"IfcDimensionsForSiUnit(METRE)", "IfcDimensionalExponents(1, 0, 0, 0, 0, 0, 0)"},
    {"IfcDimensionsForSiUnit(NEWTON)", "IfcDimensionalExponents(1, 1, -2, 0, 0, 0, 0)"},
    {"IfcDimensionsForSiUnit(FARAD)", "IfcDimensionalExponents(-2, -1, 4, 1, 0, 0, 0)", "IFC2X3"},
    {"IfcDimensionsForSiUnit(FARAD)", "IfcDimensionalExponents(-2, -1, 4, 2, 0, 0, 0)", "IFC4"},
    {"IfcDimensionsForSiUnit(?)", "IfcDimensionalExponents(0, 0, 0, 0, 0, 0, 0)"},
    {"IfcDeriveDimensionalExponents([meter2])", "IfcDimensionalExponents(2, 0, 0, 0, 0, 0, 0)"},
    {"IfcListToArray([7, 8, 9], 0, 2)", "[7, 8, 9]"},
    {"LOINDEX(IfcListToArray([7, 8], 5, 6))", "5"},
    {"IfcListToArray([7, 8], 5, 6)[6]", "8"},
    {"IfcListToArray([7], 0, 2)", "?"},
    {"IfcMakeArrayOfArray([[1, 2], [3, 4]], 0, 1, 0, 1)[1][0]", "3"},
    {"IfcMakeArrayOfArray([[1, 2], [3]], 0, 1, 0, 1)", "?"},
    {"IfcCurveDim(line3)", "3"},
    {"IfcCurveDim(line2)", "2"},
    {"IfcCurveDim(?)", "?"},
    {"IfcPointDim(p3)", "3"},
    {"IfcPointListDim(?)", "?"},
    {"IfcCorrectLocalPlacement(b, ?)", "TRUE"},
    {"IfcCorrectLocalPlacement(b, lp)", "TRUE"},
    {"IfcCorrectLocalPlacement(a2, lp)", "TRUE"},
    {"IfcConstraintsParamBSpline(1, 2, 1, [2, 2], [0., 1.])", "TRUE"},
    {"IfcConstraintsParamBSpline(1, 2, 1, [2, 2], [1., 0.])", "FALSE"},
    {"IfcConstraintsParamBSpline(0, 2, 1, [2, 2], [0., 1.])", "FALSE"},
    {"IfcUniquePropertyName([p, q])", "TRUE"},
    {"IfcUniquePropertyName([p, pp])", "FALSE"},
    {"IfcLoopHeadToTail(loop)", "TRUE"},
    {"IfcLoopHeadToTail(broken)", "FALSE"},
    {"IfcPathHeadToTail(path)", "UNKNOWN"},
    {"IfcTaperedSweptAreaProfiles(rectangle, rectangle)", "TRUE"},
    {"IfcTaperedSweptAreaProfiles(rectangle, circle)", "FALSE"},
    {"IfcShapeRepresentationTypes('SweptSolid', [solid])", "TRUE"},
    {"IfcShapeRepresentationTypes('SweptSolid', [line3])", "FALSE"},
    {"IfcShapeRepresentationTypes('Curve2D', [line2])", "TRUE"},
    {"IfcShapeRepresentationTypes('Curve2D', [line3])", "FALSE"},
    {"IfcShapeRepresentationTypes('none of them', [line3])", "?"},
    {"IfcTopologyRepresentationTypes('Vertex', [v1, v2])", "TRUE"},
    {"IfcTopologyRepresentationTypes('Edge', [v1])", "FALSE"},
    {"IfcTopologyRepresentationTypes('Undefined', [v1])", "TRUE"},
    {"IfcTopologyRepresentationTypes('none of them', [v1])", "?"},
    {"IfcCorrectUnitAssignment([meter, gram])", "TRUE"},
    {"IfcCorrectUnitAssignment([meter, inch])", "FALSE"},
    {"IfcCorrectFillAreaStyle([colour])", "TRUE"},
    {"IfcCorrectFillAreaStyle([colour, other])", "FALSE"},
    {"IfcAssociatedSurface(?)", "?"},
    {"IfcGetBasisSurface(?)", "[]"},
    {"IfcConvertDirectionInto2D(x)", "IfcDirection([1., 0.])"},
    {"IfcConsecutiveSegments([[1, 2], [2, 3]])", "TRUE"},
    {"IfcConsecutiveSegments([[1, 2], [1, 3]])", "FALSE"},
    {"IfcUniqueDefinitionNames([])", "TRUE"},
    {"IfcUniquePropertySetNames([])", "TRUE"},
    {"IfcUniquePropertyTemplateNames([])", "TRUE"},
    {"IfcUniqueQuantityNames([])", "TRUE"},
    {"IfcAddToBeginOfList(1, [2, 3])", "[1, 2, 3]"},
    {"IfcAddToBeginOfList(?, [2, 3])", "[2, 3]"},
    {"IfcCorrectObjectAssignment(?, [])", "TRUE"},
    {"IfcCorrectObjectAssignment(IfcObjectTypeEnum.PRODUCT, [])", "TRUE"},
    {"IfcCorrectObjectAssignment(IfcObjectTypeEnum.PRODUCT, [x])", "FALSE"},
    {"IfcLeapYear(2000)", "TRUE"},
    {"IfcLeapYear(1900)", "FALSE"},
    {"IfcLeapYear(2004)", "TRUE"},
    {"IfcValidCalendarDate(IfcCalendarDate(29, 2, 2000))", "TRUE"},
    {"IfcValidCalendarDate(IfcCalendarDate(29, 2, 2001))", "FALSE"},
    {"IfcValidCalendarDate(IfcCalendarDate(31, 4, 2001))", "FALSE"},
    {"IfcValidTime(IfcLocalTime(12, 30, 1., ?, ?))", "TRUE"},
    {"IfcValidTime(IfcLocalTime(12, ?, 1., ?, ?))", "FALSE"},
    {"IfcMlsTotalThickness(IfcMaterialLayerSet([IfcMaterialLayer(?, 1.5, ?), IfcMaterialLayer(?, 2., ?)], ?))", "3.5", "IFC2X3"},
    {"IfcMlsTotalThickness(IfcMaterialLayerSet([IfcMaterialLayer(?, 1.5, ?, ?, ?, ?, ?), "
     "IfcMaterialLayer(?, 2., ?, ?, ?, ?, ?)], ?, ?))", "3.5", "IFC4"},
    {"IfcCurveWeightsPositive(IfcBSplineCurve(1, [p3, p3], ?, ?, ?) || IfcBezierCurve() || IfcRationalBezierCurve([1., 2.]))", "TRUE", "IFC2X3"},
    {"IfcCurveWeightsPositive(IfcBSplineCurve(1, [p3, p3], ?, ?, ?) || IfcBezierCurve() || IfcRationalBezierCurve([1., 0.]))", "FALSE", "IFC2X3"},
    {"IfcCurveWeightsPositive(IfcBSplineCurve(1, [p3, p3], ?, ?, ?) || IfcBSplineCurveWithKnots(?, ?, ?) || "
     "IfcRationalBSplineCurveWithKnots([1., 2.]))", "TRUE", "IFC4"},
    {"IfcCurveWeightsPositive(IfcBSplineCurve(1, [p3, p3], ?, ?, ?) || IfcBSplineCurveWithKnots(?, ?, ?) || "
     "IfcRationalBSplineCurveWithKnots([-1., 2.]))", "FALSE", "IFC4"},
    {"IfcSurfaceWeightsPositive(IfcBSplineSurface(1, 1, [[p3, p3], [p3, p3]], ?, ?, ?, ?) || "
     "IfcBSplineSurfaceWithKnots(?, ?, ?, ?, ?) || IfcRationalBSplineSurfaceWithKnots([[1., 2.], [3., 4.]]))", "TRUE"},
    {"IfcSurfaceWeightsPositive(IfcBSplineSurface(1, 1, [[p3, p3], [p3, p3]], ?, ?, ?, ?) || "
     "IfcBSplineSurfaceWithKnots(?, ?, ?, ?, ?) || IfcRationalBSplineSurfaceWithKnots([[1., 2.], [3., 0.]]))", "FALSE"},
    {"IfcSegmentDim(?)", "?"},
};
// clang-format on

std::string sNameOf(const char* sText) {
    std::string_view text(sText);
    if (const std::size_t iAt = text.find("Ifc"); iAt != std::string_view::npos) text.remove_prefix(iAt);
    return oxa::ifc::def::schema::sUpper(text.substr(0, text.find('(')));
}

class SchemaFunctionTest : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        const auto& schema = *oxa::ifc::SchemaLoader::pBuiltIn(GetParam());
        const std::string sTable = oxa::test::sRuleTable(GetParam());
        std::vector<oxa::ifc::SchemaMessage> messages;
        oxa::check::express::SchemaRules rules;
        ASSERT_TRUE(oxa::check::express::Parser(sTable, messages).boReadSchema(rules));
        std::string sTests;
        for (const auto& block : rules.outer.blocks) {
            if (block.kind != oxa::check::express::BlockKind::Function) continue;
            functions.insert(oxa::ifc::def::schema::sUpper(block.sName));
            std::size_t iArguments = 0;
            for (const auto& parameter : block.parameters) iArguments += parameter.names.size();
            std::string sUnknown;
            for (std::size_t i = 0; i < iArguments; ++i) sUnknown += i ? ", ?" : "?";
            unknown.push_back(block.sName);
            sTests += "FUNCTION u" + std::to_string(unknown.size() - 1) + " : GENERIC; RETURN (" + block.sName + '(' +
                      sUnknown + ")); END_FUNCTION; ";
        }
        for (const Row& row : g_rows)
            if (functions.contains(sNameOf(row.sText)) && std::string_view(GetParam()).starts_with(row.sSchema)) {
                sTests += "FUNCTION t" + std::to_string(rows.size()) + g_sParameters + " : GENERIC; RETURN (" +
                          row.sText + "); END_FUNCTION; ";
                rows.push_back(&row);
            }
        pRun = std::make_unique<ExpressRun>(schema, sTable, sTests, g_sData);
    }

    std::set<std::string> functions;
    std::vector<std::string> unknown;
    std::vector<const Row*> rows;
    std::unique_ptr<ExpressRun> pRun;
};

TEST_P(SchemaFunctionTest, GivesWhatIsExpected) {
    std::vector<std::size_t> instances;
    for (std::size_t i = 1; i <= g_iInstances; ++i) instances.push_back(i);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        SCOPED_TRACE(rows[i]->sText);
        EXPECT_EQ(pRun->sCalled("t" + std::to_string(i), instances), rows[i]->sResult);
    }
}

TEST_P(SchemaFunctionTest, TakesWhatHasNoValue) {
    for (std::size_t i = 0; i < unknown.size(); ++i) {
        const std::string sResult = pRun->sCalled("u" + std::to_string(i));
        EXPECT_FALSE(sResult.starts_with("fault")) << unknown[i] << ": " << sResult;
    }
}

TEST_P(SchemaFunctionTest, EachIsCalled) {
    std::set<std::string> missing = functions;
    for (const Row* pRow : rows) missing.erase(sNameOf(pRow->sText));
    std::string sMissing;
    for (const std::string& sName : missing) sMissing += ' ' + sName;
    EXPECT_EQ(sMissing, "");
}

INSTANTIATE_TEST_SUITE_P(Schemas, SchemaFunctionTest, testing::Values("IFC2X3", "IFC4", "IFC4X3_ADD2"));

}   // namespace
