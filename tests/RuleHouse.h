// SPDX-License-Identifier: Apache-2.0
// RuleHouse: one small house in IFC2X3, IFC4 and IFC4X3, of which the same questions have the same answers.
//
// For      the tests of the program and of the short way in.
// Numbers  EG is #22, OG #23, KG #29, the space #24; walls #30 to #34, doors #40 to #42, a table #43, an assembly #45, an
//          opening #50, the types #60 and #62, groups #140, #142, #144.
#pragma once

#include <cctype>
#include <string>
#include <string_view>

namespace oxa::test {

inline constexpr const char* g_ruleSchemas[] = {"IFC2X3", "IFC4", "IFC4X3"};

// The GlobalId of the instance with that number.
inline std::string sRuleGuid(int iNumber) {
    const std::string sNumber = std::to_string(iNumber);
    return "1House_of_rules$__" + std::string(4 - sNumber.size(), '0') + sNumber;
}

// "!30" is the GlobalId of 30; of "<A|B>" IFC2X3 takes A and the others B.
inline std::string sRuleText(std::string_view text, std::string_view schema) {
    const bool boOld = schema == "IFC2X3";
    std::string sResult;
    bool boTake = true;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '<') {
            boTake = boOld;
        } else if (c == '|') {
            boTake = !boOld;
        } else if (c == '>') {
            boTake = true;
        } else if (c == '!' && boTake) {
            int iNumber = 0;
            while (std::isdigit(static_cast<unsigned char>(text[i + 1]))) iNumber = iNumber * 10 + (text[++i] - '0');
            sResult += '\'' + sRuleGuid(iNumber) + "',#5";
        } else if (boTake) {
            sResult += c;
        }
    }
    return sResult;
}

// The statements of the house; each rooted one begins with "!NUMBER": its GlobalId and its owner.
inline constexpr std::string_view g_ruleHouse = R"(#1=IFCPERSON($,'P',$,$,$,$,$,$);
#2=IFCORGANIZATION($,'O',$,$,$);
#3=IFCPERSONANDORGANIZATION(#1,#2,$);
#4=IFCAPPLICATION(#2,'1','A','A');
#5=IFCOWNERHISTORY(#3,#4,$,.NOCHANGE.,$,$,$,0);
#6=IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.);
#7=IFCSIUNIT(*,.VOLUMEUNIT.,$,.CUBIC_METRE.);
#8=IFCUNITASSIGNMENT((#6,#7));
#9=IFCPROJECT(!9,'Haus',$,$,$,$,(#10),#8);
#10=IFCGEOMETRICREPRESENTATIONCONTEXT($,'Model',3,1.E-05,#11,$);
#11=IFCAXIS2PLACEMENT3D(#12,$,$);
#12=IFCCARTESIANPOINT((0.,0.,-1.5));
#20=IFCSITE(!20,'Grund',$,$,$,$,$,.ELEMENT.,(49,47,33,120000),$,$,$,$);
#21=IFCBUILDING(!21,'Haus A',$,$,$,$,$,.ELEMENT.,$,$,$);
#22=IFCBUILDINGSTOREY(!22,'EG',$,$,$,$,$,.ELEMENT.,0.);
#23=IFCBUILDINGSTOREY(!23,'OG',$,$,$,$,$,.ELEMENT.,3.);
#24=IFCSPACE(!24,'K\X2\00FC\X0\che',$,$,$,$,$,.ELEMENT.,.INTERNAL.,$);
#25=IFCRELAGGREGATES(!25,$,$,#9,(#20));
#26=IFCRELAGGREGATES(!26,$,$,#20,(#21));
#27=IFCRELAGGREGATES(!27,$,$,#21,(#22,#23,#29));
#28=IFCRELAGGREGATES(!28,$,$,#22,(#24));
#29=IFCBUILDINGSTOREY(!29,'KG',$,$,$,$,$,.ELEMENT.,-2.6);
#30=IFCWALL(!30,'W1',$,$,$,$,'T-1'<|,$>);
#31=IFCWALLSTANDARDCASE(!31,'W2',$,$,$,$,'-2'<|,$>);
#32=IFCWALL(!32,'W3','one\X\0Atwo',$,$,$,'=3'<|,$>);
#33=IFCWALL(!33,'Wand+T\X2\00FC\X0\r "a,b"',$,$,$,$,'@4'<|,$>);
#34=IFCWALL(!34,$,$,$,$,$,'+5'<|,$>);
#40=IFCDOOR(!40,'D1',$,$,$,$,'d'' 1',2.1,0.9<|,.DOOR.,.SINGLE_SWING_LEFT.,$>);
#41=IFCDOOR(!41,'D2',$,$,$,$,'a\X\09b',$,$<|,$,$,$>);
#42=IFCDOOR(!42,'D3',$,$,$,$,$,2.01,1.01<|,$,$,$>);
#43=IFCFURNISHINGELEMENT(!43,'Tisch',$,$,$,$,$);
#45=IFCELEMENTASSEMBLY(!45,'Tor',$,$,$,$,$,$,.NOTDEFINED.);
#50=IFCOPENINGELEMENT(!50,'O1',$,$,$,$,$<|,$>);
#51=IFCRELVOIDSELEMENT(!51,$,$,#30,#50);
#52=IFCRELFILLSELEMENT(!52,$,$,#50,#40);
#53=IFCRELAGGREGATES(!53,$,$,#45,(#42));
#54=IFCRELCONTAINEDINSPATIALSTRUCTURE(!54,$,$,(#30,#31,#45),#22);
#55=IFCRELCONTAINEDINSPATIALSTRUCTURE(!55,$,$,(#32,#33,#41),#23);
#56=IFCRELCONTAINEDINSPATIALSTRUCTURE(!56,$,$,(#43),#24);
#60=IFCWALLTYPE(!60,'WT',$,$,(#74),$,'WT-1',$,.STANDARD.);
#61=IFCRELDEFINESBYTYPE(!61,$,$,(#33),#60);
#62=<IFCDOORSTYLE(!62,'DT',$,$,$,$,$,.SINGLE_SWING_LEFT.,.WOOD.,.F.,.F.)|IFCDOORTYPE(!62,'DT',$,$,$,$,$,$,.DOOR.,.SINGLE_SWING_LEFT.,.F.,$)>;
#63=IFCRELDEFINESBYTYPE(!63,$,$,(#40,#41),#62);
#70=IFCPROPERTYSET(!70,'Pset_WallCommon',$,(#80,#81,#82,#83));
#71=IFCRELDEFINESBYPROPERTIES(!71,$,$,(#30,#31),#70);
#72=IFCPROPERTYSET(!72,'Pset_WallCommon',$,(#84));
#73=IFCRELDEFINESBYPROPERTIES(!73,$,$,(#32),#72);
#74=IFCPROPERTYSET(!74,'Pset_WallCommon',$,(#85,#86));
#75=IFCPROPERTYSET(!75,'Pset_WallCommon',$,(#87));
#76=IFCRELDEFINESBYPROPERTIES(!76,$,$,(#33),#75);
#77=IFCPROPERTYSET(!77,'Pset_DoorCommon',$,(#88,#89));
#78=IFCRELDEFINESBYPROPERTIES(!78,$,$,(#40),#77);
#80=IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('F 90'),$);
#81=IFCPROPERTYSINGLEVALUE('IsExternal',$,IFCBOOLEAN(.T.),$);
#82=IFCPROPERTYSINGLEVALUE('LoadBearing',$,IFCBOOLEAN(.F.),$);
#83=IFCPROPERTYSINGLEVALUE('ThermalTransmittance',$,IFCTHERMALTRANSMITTANCEMEASURE(0.24),$);
#84=IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('F 30'),$);
#85=IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('F 60'),$);
#86=IFCPROPERTYSINGLEVALUE('Reference',$,IFCIDENTIFIER('R-60'),$);
#87=IFCPROPERTYSINGLEVALUE('LoadBearing',$,IFCBOOLEAN(.T.),$);
#88=IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('T 30'),$);
#89=IFCPROPERTYSINGLEVALUE('SecurityRating',$,$,$);
#90=IFCPROPERTYSET(!90,'My set',$,(#92,#93,#94,#95,#96,#97,#99));
#91=IFCRELDEFINESBYPROPERTIES(!91,$,$,(#32),#90);
#92=IFCPROPERTYSINGLEVALUE('a.b',$,IFCINTEGER(7),$);
#93=IFCPROPERTYENUMERATEDVALUE('Enum',$,(IFCLABEL('NEW'),IFCLABEL('OLD')),$);
#94=IFCPROPERTYLISTVALUE('List',$,(IFCREAL(1.5),IFCREAL(2.5)),$);
#95=IFCPROPERTYBOUNDEDVALUE('Bound',$,IFCREAL(297.15),IFCREAL(291.15),$<|,$>);
#96=IFCPROPERTYTABLEVALUE('Table',$,(IFCREAL(1.5),IFCREAL(2.5)),(IFCLABEL('x'),IFCLABEL('y')),$,$,$<|,$>);
#97=IFCCOMPLEXPROPERTY('Cx',$,'use',(#98));
#98=IFCPROPERTYSINGLEVALUE('Part',$,IFCLABEL('inner'),$);
#99=IFCPROPERTYSINGLEVALUE('Logic',$,IFCLOGICAL(.U.),$);
#100=IFCELEMENTQUANTITY(!100,'Qto_WallBaseQuantities',$,$,(#101,#102));
#101=IFCQUANTITYLENGTH('Length',$,$,4.5<|,$>);
#102=IFCQUANTITYVOLUME('NetVolume',$,$,2.5<|,$>);
#103=IFCRELDEFINESBYPROPERTIES(!103,$,$,(#30),#100);
#104=IFCELEMENTQUANTITY(!104,'Qto_WallBaseQuantities',$,$,(#105));
#105=IFCQUANTITYVOLUME('NetVolume',$,$,3.75<|,$>);
#106=IFCRELDEFINESBYPROPERTIES(!106,$,$,(#31),#104);
#107=IFCELEMENTQUANTITY(!107,'Qto_WallBaseQuantities',$,$,(#108));
#108=IFCQUANTITYVOLUME('NetVolume',$,$,1.25<|,$>);
#109=IFCRELDEFINESBYPROPERTIES(!109,$,$,(#32),#107);
#110=IFCMATERIAL('Ziegel'<|,$,$>);
#111=IFCMATERIAL('D\X2\00E4\X0\mmung'<|,$,$>);
#112=IFCMATERIAL('Beton'<|,$,$>);
#113=IFCMATERIAL('Holz'<|,$,$>);
#114=IFCMATERIAL('Glas'<|,$,$>);
#115=IFCMATERIALLAYER(#110,0.24,$<|,$,$,$,$>);
#116=IFCMATERIALLAYER(#111,0.125,$<|,$,$,$,$>);
#117=IFCMATERIALLAYERSET((#115,#116),'Au\X2\00DF\X0\enwand'<|,$>);
#118=IFCMATERIALLAYERSETUSAGE(#117,.AXIS2.,.POSITIVE.,0.<|,$>);
#119=IFCRELASSOCIATESMATERIAL(!119,$,$,(#30,#31),#118);
#120=IFCRELASSOCIATESMATERIAL(!120,$,$,(#32),#112);
#121=IFCRELASSOCIATESMATERIAL(!121,$,$,(#60),#113);
#122=IFCMATERIALLIST((#113,#114));
#123=IFCRELASSOCIATESMATERIAL(!123,$,$,(#40),#122);
#130=IFCCLASSIFICATION('DIN','2018',$,'DIN 276'<|,$,$,$>);
#131=IFCCLASSIFICATIONREFERENCE($,'331','Tragende Wand',#130<|,$,$>);
#132=IFCRELASSOCIATESCLASSIFICATION(!132,$,$,(#30,#31),#131);
#133=IFCCLASSIFICATIONREFERENCE($,'344','T\X2\00FC\X0\r',#130<|,$,$>);
#134=IFCRELASSOCIATESCLASSIFICATION(!134,$,$,(#40),#133);
#135=IFCCLASSIFICATIONREFERENCE($,'330','Wand',#130<|,$,$>);
#136=IFCRELASSOCIATESCLASSIFICATION(!136,$,$,(#60),#135);
#140=IFCGROUP(!140,'Brand 1',$,$);
#141=IFCRELASSIGNSTOGROUP(!141,$,$,(#30,#40),$,#140);
#142=IFCZONE(!142,'Zone',$,$<|,$>);
#143=IFCRELASSIGNSTOGROUP(!143,$,$,(#24),$,#142);
#144=IFCSYSTEM(!144,'Sys',$,$);
#145=IFCRELASSIGNSTOGROUP(!145,$,$,(#40),$,#144);
)";

// The house as an exchange structure of that schema.
inline std::string sRuleHouse(std::string_view schema) {
    return std::string("ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION(('d'),'2;1');\n"
                       "FILE_NAME('n','2024-05-17T09:30:00',('a'),('o'),'p','s','z');\nFILE_SCHEMA(('")
        .append(schema)
        .append("'));\nENDSEC;\nDATA;\n")
        .append(sRuleText(g_ruleHouse, schema))
        .append("ENDSEC;\nEND-ISO-10303-21;\n");
}

}   // namespace oxa::test
