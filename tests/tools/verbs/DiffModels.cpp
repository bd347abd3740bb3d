// SPDX-License-Identifier: Apache-2.0
#include "tools/verbs/DiffModels.h"

#include "tools/WrittenFile.h"

namespace oxa::test {

Statements baseModel() {
    return {
        {1, "IFCPROJECT('0TdSR4dSbLuwdbL5HLUvM0',$,'Project',$,$,$,$,(#10,#11),#12)"},
        {10, "IFCGEOMETRICREPRESENTATIONCONTEXT($,'Model',3,1.E-05,#41,$)"},
        {11, "IFCGEOMETRICREPRESENTATIONCONTEXT($,'Plan',2,1.E-05,#41,$)"},
        {12, "IFCUNITASSIGNMENT((#13,#14))"},
        {13, "IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.)"},
        {14, "IFCSIUNIT(*,.AREAUNIT.,$,.SQUARE_METRE.)"},
        {20, "IFCWALL('1CCJ9i1$jSdgYVC2yzHPtC',$,'Wall A',$,$,#40,#50,'tag',$)"},
        {21, "IFCWALL('2cp60asVrO3R4Q9IgcHKIk',$,'Wall B',$,$,#45,$,$,.SOLIDWALL.)"},
        {22, "IFCWALL('3X5rmEjoXQ$f8Sn8KSdx0i',$,'Wall C',$,$,$,$,$,$)"},
        {30, "IFCRELDEFINESBYPROPERTIES('0e_8SiFPnIEh3pPRu4cB6E',$,$,$,(#20,#21),#31)"},
        {31, "IFCPROPERTYSET('1XxWclp6bOHAdQixVqmAPd',$,'Pset_WallCommon',$,(#32,#33))"},
        {32, "IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('F30'),$)"},
        {33, "IFCPROPERTYSINGLEVALUE('Width',$,IFCLENGTHMEASURE(115.),$)"},
        {40, "IFCLOCALPLACEMENT($,#41)"},
        {41, "IFCAXIS2PLACEMENT3D(#42,$,$)"},
        {42, "IFCCARTESIANPOINT((0.,0.,0.))"},
        {45, "IFCLOCALPLACEMENT(#40,#46)"},
        {46, "IFCAXIS2PLACEMENT3D(#47,$,$)"},
        {47, "IFCCARTESIANPOINT((5.,0.,0.))"},
        {50, "IFCPRODUCTDEFINITIONSHAPE($,$,(#51))"},
        {51, "IFCSHAPEREPRESENTATION(#10,'Body','SweptSolid',(#52))"},
        {52, "IFCEXTRUDEDAREASOLID(#53,$,#54,2500.)"},
        {53, "IFCRECTANGLEPROFILEDEF(.AREA.,'P',$,3000.,115.)"},
        {54, "IFCDIRECTION((0.,0.,1.))"},
        {60, "IFCSTYLEDITEM(#52,(#61),'style')"},
        {61, "IFCPRESENTATIONSTYLEASSIGNMENT((IFCNULLSTYLE(.NULL.)))"},
        {70, "IFCMATERIAL('Oak',$,$)"},
        {71, "IFCMATERIAL('Oak',$,$)"},
        {72, "IFCPOLYLINE((#73,#74))"},
        {73, "IFCCARTESIANPOINT((1.,1.))"},
        {74, "IFCCARTESIANPOINT((2.,1.))"},
    };
}

std::string sModelFile(const Statements& statements, std::string_view schema) {
    std::string sData;
    for (const auto& [iNumber, sText] : statements) sData += '#' + std::to_string(iNumber) + '=' + sText + ";\n";
    return sExchangeFile(schema, sData);
}

ProgramRun diffModels(const std::string& sOld, const std::string& sNew, const std::vector<std::string>& options) {
    const TestFolder folder;
    std::vector<std::string> words{"diff", folder.sFile("a.ifc", sOld), folder.sFile("b.ifc", sNew)};
    words.insert(words.end(), options.begin(), options.end());
    return runProgram(words);
}

}   // namespace oxa::test
