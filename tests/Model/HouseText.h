// SPDX-License-Identifier: Apache-2.0
// HouseText: a house of a few elements that has one of each relationship. The statements are the same in IFC2X3, IFC4
// and IFC4X3, which is why it leaves out what only some of them know.
#pragma once

#include <cctype>
#include <string>
#include <string_view>

#include "Model/ModelText.h"

namespace oxa::test {

inline constexpr const char* g_families[] = {"IFC2X3", "IFC4", "IFC4X3_ADD2"};

// clang-format off
inline constexpr char g_sHouse[] =
    "#1=IFCPROJECT(@,'P',$,$,$,$,$,#2);\n"
    "#2=IFCUNITASSIGNMENT((#7));\n"
    "#3=IFCBUILDING(@,'House',$,$,$,$,$,.ELEMENT.,$,$,$);\n"
    "#4=IFCBUILDINGSTOREY(@,'EG',$,$,$,$,$,.ELEMENT.,0.);\n"
    "#5=IFCBUILDINGSTOREY(@,'OG',$,$,$,$,$,.ELEMENT.,3.);\n"
    "#6=IFCSPACE(@,'Room',$,$,$,$,$,.ELEMENT.,$,$);\n"
    "#7=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);\n"
    "#10=IFCWALL(@,'South',$,'outer',$,$,'T10');\n"
    "#11=IFCWALLSTANDARDCASE?(@,'North',$,$,$,$,'12.50');\n"
    "#12=IFCOPENINGELEMENT(@,'Hole',$,$,$,$,$);\n"
    "#13=IFCDOOR(@,'D1',$,$,$,$,$,2010.,885.);\n"
    "#14=IFCELEMENTASSEMBLY(@,'Truss',$,$,$,$,$,$,.TRUSS.);\n"
    "#15=IFCMEMBER(@,'Bar',$,$,$,$,$);\n"
    "#16=IFCWALL(@,'Loose',$,$,$,$,$);\n"
    "#20=IFCWALLTYPE(@,'WT',$,$,(#50,#51,#52),$,$,$,.STANDARD.);\n"
    "#21=IFCRELDEFINESBYTYPE(@,$,$,(#10,#11),#20);\n"
    "#30=IFCRELAGGREGATES(@,$,$,#1,(#3));\n"
    "#31=IFCRELAGGREGATES(@,$,$,#3,(#4,#5));\n"
    "#32=IFCRELAGGREGATES(@,$,$,#4,(#6));\n"
    "#33=IFCRELCONTAINEDINSPATIALSTRUCTURE(@,$,$,(#10),#4);\n"
    "#34=IFCRELCONTAINEDINSPATIALSTRUCTURE(@,$,$,(#11,#14),#5);\n"
    "#35=IFCRELVOIDSELEMENT(@,$,$,#10,#12);\n"
    "#36=IFCRELFILLSELEMENT(@,$,$,#12,#13);\n"
    "#37=IFCRELAGGREGATES(@,$,$,#14,(#15));\n"
    "#40=IFCPROPERTYSET(@,'Pset_WallCommon',$,(#41,#42,#43));\n"
    "#41=IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('F 90'),$);\n"
    "#42=IFCPROPERTYSINGLEVALUE('IsExternal',$,IFCBOOLEAN(.T.),$);\n"
    "#43=IFCPROPERTYSINGLEVALUE('ThermalTransmittance',$,IFCREAL(0.24),$);\n"
    "#44=IFCRELDEFINESBYPROPERTIES(@,$,$,(#10),#40);\n"
    "#50=IFCPROPERTYSET(@,'Pset_WallCommon',$,(#53,#54));\n"
    "#51=IFCPROPERTYSET(@,'Kinds',$,(#55,#56,#57,#58,#59,#60,#67));\n"
    "#52=IFCDOORPANELPROPERTIES(@,'Panel',$,40.,.SWINGING.,$,.LEFT.,$);\n"
    "#53=IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('F 30'),$);\n"
    "#54=IFCPROPERTYSINGLEVALUE('LoadBearing',$,IFCBOOLEAN(.F.),$);\n"
    "#55=IFCPROPERTYENUMERATEDVALUE('Enumerated',$,(IFCLABEL('A'),IFCLABEL('B')),$);\n"
    "#56=IFCPROPERTYBOUNDEDVALUE('Bounded',$,IFCREAL(5.),IFCREAL(1.),#7);\n"
    "#57=IFCPROPERTYLISTVALUE('List',$,(IFCINTEGER(1),IFCINTEGER(2)),$);\n"
    "#58=IFCPROPERTYTABLEVALUE('Table',$,(IFCREAL(1.)),(IFCLABEL('one')),$,$,$);\n"
    "#59=IFCPROPERTYREFERENCEVALUE('Reference',$,$,#70);\n"
    "#60=IFCCOMPLEXPROPERTY('Complex',$,'use',(#61,#62));\n"
    "#61=IFCPROPERTYSINGLEVALUE('Inner',$,IFCINTEGER(7),$);\n"
    "#62=IFCCOMPLEXPROPERTY('Deep',$,'use',(#61,#60));\n"
    "#63=IFCELEMENTQUANTITY(@,'Qto_WallBaseQuantities',$,$,(#64,#65,#66));\n"
    "#64=IFCQUANTITYVOLUME('NetVolume',$,$,2.5);\n"
    "#65=IFCQUANTITYLENGTH('Length',$,#7,4000.);\n"
    "#66=IFCPHYSICALCOMPLEXQUANTITY('Layers',$,(#64),'layer',$,$);\n"
    "#67=IFCPROPERTYSINGLEVALUE('Empty',$,$,$);\n"
    "#68=IFCRELDEFINESBYPROPERTIES(@,$,$,(#10),#63);\n"
    "#70=IFCMATERIAL('Brick');\n"
    "#71=IFCMATERIAL('Wool');\n"
    "#72=IFCMATERIALLAYER(#70,240.,$);\n"
    "#73=IFCMATERIALLAYER(#71,120.,$);\n"
    "#74=IFCMATERIALLAYERSET((#72,#73),'W36');\n"
    "#75=IFCMATERIALLAYERSETUSAGE(#74,.AXIS2.,.POSITIVE.,0.);\n"
    "#76=IFCRELASSOCIATESMATERIAL(@,$,$,(#10),#75);\n"
    "#77=IFCMATERIALLIST((#71,#70));\n"
    "#78=IFCRELASSOCIATESMATERIAL(@,$,$,(#20),#77);\n"
    "#79=IFCRELASSOCIATESMATERIAL(@,$,$,(#13),#71);\n"
    "#80=IFCCLASSIFICATION('BSI','2015',$,'Uniclass');\n"
    "#81=IFCCLASSIFICATIONREFERENCE($,'Ss_25','Walls',#80);\n"
    "#82=IFCCLASSIFICATIONREFERENCE($,'Ss_25_10','Framed walls',$);\n"
    "#83=IFCRELASSOCIATESCLASSIFICATION(@,$,$,(#10),#81);\n"
    "#84=IFCRELASSOCIATESCLASSIFICATION(@,$,$,(#20),#82);\n"
    "#90=IFCGROUP(@,'Shell',$,$);\n"
    "#91=IFCRELASSIGNSTOGROUP(@,$,$,(#10,#11),$,#90);\n";
// clang-format on

// "@" becomes a GlobalId that ends in the number of the statement, and no owner; "STANDARDCASE?" stays where the schema
// has it.
inline std::string houseText(std::string_view schema, std::string_view statements = g_sHouse) {
    std::string sText;
    std::string sNumber;
    for (std::size_t i = 0; i < statements.size(); ++i) {
        const char c = statements[i];
        if (i == 0 || statements[i - 1] == '\n') {
            sNumber.clear();
            for (std::size_t j = i + 1; std::isdigit(static_cast<unsigned char>(statements[j])); ++j)
                sNumber += statements[j];
        }
        if (c == '@')
            sText += "'" + std::string(22 - sNumber.size(), '0') + sNumber + "',$";
        else if (c == '?') {
            if (schema.starts_with("IFC4X3")) sText.resize(sText.size() - std::string_view("STANDARDCASE").size());
        } else
            sText += c;
    }
    return fileText(schema, sText);
}

inline Model house(std::string_view schema) { return Model::fromBuffer(houseText(schema)); }

// "#10", or "-" for what names nothing.
inline std::string sId(const Element& element) { return element ? "#" + std::to_string(element.id()) : "-"; }

}   // namespace oxa::test
