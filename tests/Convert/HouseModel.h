// SPDX-License-Identifier: Apache-2.0
// HouseModel: a small house of two storeys as a text, with relationships of every sort, for tests that take models apart
// and put them together.
#pragma once

#include <string>
#include <string_view>

#include "Model/Model.h"
#include "StatementModel.h"

namespace oxa::test {

// "IFC4" and "IFC4X3" alike. #1 to #9: project, units, contexts; #10 on: site, building, two storeys; #30 on: a wall
// with an opening and a door on the first; #50 on: a wall on the second; #60 on: what both have; #80 on: what nothing
// has.
inline constexpr const char* g_pHouse =
    "#1=IFCPROJECT('0AAAAAAAAAAAAAAAAAAA01',$,'House',$,$,$,$,(#3),#2);\n"
    "#2=IFCUNITASSIGNMENT((#5));\n"
    "#3=IFCGEOMETRICREPRESENTATIONCONTEXT($,'Model',3,$,#7,$);\n"
    "#4=IFCGEOMETRICREPRESENTATIONSUBCONTEXT('Body','Model',*,*,*,*,#3,$,.MODEL_VIEW.,$);\n"
    "#5=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);\n"
    "#6=IFCCARTESIANPOINT((0.,0.,0.));\n"
    "#7=IFCAXIS2PLACEMENT3D(#6,$,$);\n"
    "#10=IFCSITE('0AAAAAAAAAAAAAAAAAAA10',$,'Site',$,$,#20,$,$,$,$,$,$,$,$);\n"
    "#11=IFCBUILDING('0AAAAAAAAAAAAAAAAAAA11',$,'Building',$,$,#20,$,$,$,$,$,$);\n"
    "#12=IFCBUILDINGSTOREY('0AAAAAAAAAAAAAAAAAAA12',$,'EG',$,$,#21,$,$,$,0.);\n"
    "#13=IFCBUILDINGSTOREY('0AAAAAAAAAAAAAAAAAAA13',$,'OG',$,$,#20,$,$,$,3000.);\n"
    "#14=IFCRELAGGREGATES('0AAAAAAAAAAAAAAAAAAA14',$,$,$,#1,(#10));\n"
    "#15=IFCRELAGGREGATES('0AAAAAAAAAAAAAAAAAAA15',$,$,$,#10,(#11));\n"
    "#16=IFCRELAGGREGATES('0AAAAAAAAAAAAAAAAAAA16',$,$,$,#11,(#12,#13));\n"
    "#17=IFCRELCONTAINEDINSPATIALSTRUCTURE('0AAAAAAAAAAAAAAAAAAA17',$,$,$,(#30,#32),#12);\n"
    "#18=IFCRELCONTAINEDINSPATIALSTRUCTURE('0AAAAAAAAAAAAAAAAAAA18',$,$,$,(#50),#13);\n"
    "#20=IFCLOCALPLACEMENT($,#7);\n"
    "#21=IFCLOCALPLACEMENT(#20,#7);\n"
    "#30=IFCWALL('0AAAAAAAAAAAAAAAAAAA30',$,'W1',$,$,#36,#37,$,$);\n"
    "#31=IFCOPENINGELEMENT('0AAAAAAAAAAAAAAAAAAA31',$,'O1',$,$,#36,$,$,$);\n"
    "#32=IFCDOOR('0AAAAAAAAAAAAAAAAAAA32',$,'D1',$,$,#35,$,$,$,$,$,$,$);\n"
    "#33=IFCRELVOIDSELEMENT('0AAAAAAAAAAAAAAAAAAA33',$,$,$,#30,#31);\n"
    "#34=IFCRELFILLSELEMENT('0AAAAAAAAAAAAAAAAAAA34',$,$,$,#31,#32);\n"
    "#35=IFCLOCALPLACEMENT(#36,#7);\n"
    "#36=IFCLOCALPLACEMENT(#21,#7);\n"
    "#37=IFCPRODUCTDEFINITIONSHAPE($,$,(#38));\n"
    "#38=IFCSHAPEREPRESENTATION(#4,'Body','Brep',(#39));\n"
    "#39=IFCBLOCK(#7,1.,2.,3.);\n"
    "#40=IFCSTYLEDITEM(#39,(#41),$);\n"
    "#41=IFCSURFACESTYLE('red',.BOTH.,(#42));\n"
    "#42=IFCSURFACESTYLESHADING(#43,$);\n"
    "#43=IFCCOLOURRGB($,1.,0.,0.);\n"
    "#50=IFCWALL('0AAAAAAAAAAAAAAAAAAA50',$,'W2',$,$,#20,#51,$,$);\n"
    "#51=IFCPRODUCTDEFINITIONSHAPE($,$,(#52));\n"
    "#52=IFCSHAPEREPRESENTATION(#4,'Body','Brep',(#53));\n"
    "#53=IFCBLOCK(#7,1.,2.,4.);\n"
    "#60=IFCRELDEFINESBYPROPERTIES('0AAAAAAAAAAAAAAAAAAA60',$,$,$,(#30,#50),#61);\n"
    "#61=IFCPROPERTYSET('0AAAAAAAAAAAAAAAAAAA61',$,'Pset_WallCommon',$,(#62));\n"
    "#62=IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('F30'),$);\n"
    "#63=IFCRELDEFINESBYTYPE('0AAAAAAAAAAAAAAAAAAA63',$,$,$,(#50,#30),#64);\n"
    "#64=IFCWALLTYPE('0AAAAAAAAAAAAAAAAAAA64',$,'T',$,$,$,$,$,$,.STANDARD.);\n"
    "#65=IFCRELASSOCIATESMATERIAL('0AAAAAAAAAAAAAAAAAAA65',$,$,$,(#64),#66);\n"
    "#66=IFCMATERIAL('Brick',$,$);\n"
    "#67=IFCRELASSIGNSTOGROUP('0AAAAAAAAAAAAAAAAAAA67',$,$,$,(#50,#32),$,#68);\n"
    "#68=IFCGROUP('0AAAAAAAAAAAAAAAAAAA68',$,'G',$,$);\n"
    "#69=IFCRELCONNECTSELEMENTS('0AAAAAAAAAAAAAAAAAAA69',$,$,$,$,#30,#50);\n"
    "#70=IFCPRESENTATIONLAYERASSIGNMENT('L',$,(#38,#52),$);\n"
    "#80=IFCFURNITURE('0AAAAAAAAAAAAAAAAAAA80',$,'F',$,$,$,$,$,$);\n"
    "#81=IFCMATERIAL('Oak',$,$);\n";

inline std::string sExchange(const std::string& sStatements, const std::string& sSchema = "IFC4") {
    return "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\nFILE_NAME('','',(''),(''),'','','');\n"
           "FILE_SCHEMA(('" +
           sSchema + "'));\nENDSEC;\nDATA;\n" + sStatements + "ENDSEC;\nEND-ISO-10303-21;\n";
}

inline Model elementModel(const std::string& sStatements, const std::string& sSchema = "IFC4") {
    return Model::fromBuffer(sExchange(sStatements, sSchema), {.threads = 1});
}

}   // namespace oxa::test
