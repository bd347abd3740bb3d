// SPDX-License-Identifier: Apache-2.0
// ProjectParts: what a project and objects of IFC2X3 are not complete without: #90, an owner history, #95, a context, and
// #98, units. The same in IFC4 and IFC4X3.
#pragma once

namespace oxa::test {

inline constexpr char g_projectParts[] = "#90=IFCOWNERHISTORY(#91,#94,$,.NOCHANGE.,$,$,$,0);\n"
                                         "#91=IFCPERSONANDORGANIZATION(#92,#93,$);\n"
                                         "#92=IFCPERSON($,'A',$,$,$,$,$,$);\n"
                                         "#93=IFCORGANIZATION($,'B',$,$,$);\n"
                                         "#94=IFCAPPLICATION(#93,'1','C','D');\n"
                                         "#95=IFCGEOMETRICREPRESENTATIONCONTEXT($,'Model',3,$,#96,$);\n"
                                         "#96=IFCAXIS2PLACEMENT3D(#97,$,$);\n"
                                         "#97=IFCCARTESIANPOINT((0.,0.,0.));\n"
                                         "#98=IFCUNITASSIGNMENT((#99));\n"
                                         "#99=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);\n";

}   // namespace oxa::test
