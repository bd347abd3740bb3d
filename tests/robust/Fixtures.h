// SPDX-License-Identifier: Apache-2.0
// Fixtures: the files that the tests of this folder break.
//
// For      every test that takes a good file and does harm to it.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace oxa::ifc {

inline std::string sFileBytes(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::string sBytes(std::istreambuf_iterator<char>(in), {});
    if (!in) throw std::runtime_error(path.string() + " can't be read");
    return sBytes;
}

// A small file of schema IFC4 with each kind of value, each escape, a comment, a string over two lines and a link.
inline const std::string g_sSmallFile =
    "ISO-10303-21;\nHEADER;/* head */\n"
    "FILE_DESCRIPTION(('a;b'),'2;1');\n"
    "FILE_NAME('n','2024-05-17T09:30:00',('J\\X\\F6rg'),('o'),'p','s','');\n"
    "FILE_SCHEMA(('IFC4'));\nENDSEC;\nDATA;\n"
    "#1=IFCPROJECT('2CND9gmL0OS2wPqFz8m2Fh',$,'it''s \\X2\\00E900FC\\X0\\ \\X\\E9 \\S\\i "
    "\\\\',$,$,$,$,(#8),$);\n"
    "#2 = IFCPROPERTYSINGLEVALUE ( 'a' , $ /* ; = # ' */ , IFCLABEL('\\X4\\0001F600\\X0\\;') , $ ) ;\r\n"
    "#3=IFCWALL('2CND9gmL0OS2wPqFz8m2Fi',$,$,$,$,#6,$,'line\nend',.MOVABLE.);\n"
    "#4=IFCRELAGGREGATES('2CND9gmL0OS2wPqFz8m2Fj',$,$,$,#1,(#3));\n"
    "#5=IFCCARTESIANPOINT((1.,-2.E-3,3.));#6=IFCLOCALPLACEMENT($,#7);\n"
    "#7=IFCAXIS2PLACEMENT3D(#5,$,$);\n"
    "#8=IFCGEOMETRICREPRESENTATIONCONTEXT($,'Model',3,1.E-5,#7,$);\n"
    "#9=IFCTRIANGULATEDFACESET(#10,$,.T.,((1,2,3),(3,2,1)),$);\n"
    "#10=IFCCARTESIANPOINTLIST3D(((0.,0.,0.),(1.,0.,0.)));\n"
    "#11=IFCINDEXEDPOLYCURVE(#10,(IFCLINEINDEX((1,2)),IFCARCINDEX((1,2,3))),.F.);\n"
    "#12=IFCPROPERTYLISTVALUE('l',$,(IFCINTEGER(5),IFCLOGICAL(.U.),IFCCOMPLEXNUMBER((1.,2.))),#13);\n"
    "#13=IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.);\n"
    "#14=IFCBLOBTEXTURE(.T.,.F.,$,$,$,'PNG',\"0FF00FF\");\n"
    "ENDSEC;\nEND-ISO-10303-21;\n";

struct Fixture {
    std::string sName;
    std::string sText;
};
inline void PrintTo(const Fixture& fixture, std::ostream* pOut) { *pOut << fixture.sName; }

// The small file, the examples, and the seeds of the fuzz targets that read files.
inline const std::vector<Fixture>& stepFixtures() {
    static const std::vector<Fixture> fixtures = [] {
        namespace fs = std::filesystem;
        std::vector<Fixture> found{{"small", g_sSmallFile}};
        for (const char* sFolder : {"examples", "fuzz/seeds/StepFile"})
            for (const fs::directory_entry& entry : fs::directory_iterator(fs::path(OXA_SOURCE_DIR) / sFolder))
                if (entry.path().extension() == ".ifc")
                    found.push_back({entry.path().stem().string(), sFileBytes(entry.path())});
        return found;
    }();
    return fixtures;
}

}   // namespace oxa::ifc
