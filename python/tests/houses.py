# SPDX-License-Identifier: Apache-2.0
"""Small houses as text, for tests that want many models which differ."""

from __future__ import annotations

import zipfile
from pathlib import Path

MAKERS = ("Plan Studio 2024 (DEU)", "Plan Studio 2025", "Bau v3.1", "")

_HOUSE = """ISO-10303-21;
HEADER;
FILE_DESCRIPTION((''),'2;1');
FILE_NAME('house {number}','2026-01-01T00:00:00',('me'),('us'),'','{maker}','');
FILE_SCHEMA(('{schema}'));
ENDSEC;
DATA;
{application}
#10=IFCPROJECT({guid},$,'House {number}',$,$,$,$,$,#12);
#12=IFCUNITASSIGNMENT((#13));
#13=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);
#14=IFCBUILDING({guid},$,'House',$,$,$,$,$,.ELEMENT.,$,$,$);
#15=IFCBUILDINGSTOREY({guid},$,'EG',$,$,$,$,$,.ELEMENT.,0.);
#16=IFCRELAGGREGATES({guid},$,$,$,#10,(#14));
#17=IFCRELAGGREGATES({guid},$,$,$,#14,(#15));
#20=IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('F {number}'),$);
#21=IFCPROPERTYSINGLEVALUE('IsExternal',$,IFCBOOLEAN(.T.),$);
#22=IFCPROPERTYSINGLEVALUE('ThermalTransmittance',$,IFCREAL(0.{number}),$);
#23=IFCPROPERTYSINGLEVALUE('AcousticRating',$,$,$);
#24=IFCPROPERTYSET({guid},$,'Pset_WallCommon',$,(#20,#21,#22,#23));
#25=IFCPROPERTYSINGLEVALUE('M\\X\\E4rk',$,IFCLABEL('\\X2\\5C0F\\X0\\'),$);
#26=IFCPROPERTYSET({guid},$,'Own',$,(#25));
#27=IFCQUANTITYVOLUME('NetVolume',$,$,2.5);
#28=IFCELEMENTQUANTITY({guid},$,'Qto_WallBaseQuantities',$,$,(#27));
{walls}
ENDSEC;
END-ISO-10303-21;
"""

_WALL = """#{0}=IFCWALL({{guid}},$,'Wall {1}',$,$,$,$,{2});
#{3}=IFCRELDEFINESBYPROPERTIES({{guid}},$,$,$,(#{0}),#24);
#{4}=IFCRELDEFINESBYPROPERTIES({{guid}},$,$,$,(#{0}),#{5});
#{6}=IFCRELCONTAINEDINSPATIALSTRUCTURE({{guid}},$,$,$,(#{0}),#15);
"""


def house(number: int = 0, walls: int = 2, schema: str = "IFC4", maker: str = "Plan Studio 2024 (DEU)") -> str:
    """One storey with some walls; every second wall has the set Own, the others a quantity."""
    last = "'T1'" if schema == "IFC2X3" else "'T1',$"
    text = "".join(
        _WALL.format(100 + i * 10, i, last, 101 + i * 10, 102 + i * 10, 26 if i % 2 else 28, 103 + i * 10)
        for i in range(walls)
    )
    application = f"#1=IFCORGANIZATION($,'us',$,$,$);\n#2=IFCAPPLICATION(#1,'1','{maker}','x');" if maker else ""
    text = _HOUSE.replace("{walls}", text).replace("{application}", application)
    text = text.replace("{number}", str(number)).replace("{maker}", maker).replace("{schema}", schema)
    parts = text.split("{guid}")
    return parts[0] + "".join(f"'{number:04}{i + 1:018}'" + part for i, part in enumerate(parts[1:]))


def portfolio(folder: Path, count: int = 40) -> Path:
    """So many models of three schemas and four makers, in folders, the last one packed."""
    schemas = ("IFC4", "IFC2X3", "IFC4X3_ADD2")
    for number in range(count):
        below = folder / f"project{number % 3}"
        below.mkdir(parents=True, exist_ok=True)
        text = house(number, 1 + number % 5, schemas[number % 3], MAKERS[number % 4])
        path = below / f"house{number:02}.ifc"
        if number < count - 1:
            path.write_text(text)
            continue
        with zipfile.ZipFile(path.with_suffix(".ifczip"), "w") as archive:
            archive.writestr("house.ifc", text)
    return folder
