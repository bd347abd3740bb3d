# SPDX-License-Identifier: Apache-2.0
"""What several tests use: small models, the folder of real ones, the program."""

from __future__ import annotations

import os
import signal
from pathlib import Path

import oxaifc
import pytest

# A shell has jobs of the background ignore Ctrl-C, which tests send.
signal.signal(signal.SIGINT, signal.default_int_handler)

ROOT = Path(__file__).resolve().parents[2]
MODELS = ROOT.parent / "shared" / "models"

HOUSE = """ISO-10303-21;
HEADER;
FILE_DESCRIPTION(('ViewDefinition [ReferenceView]'),'2;1');
FILE_NAME('house.ifc','2026-01-02T03:04:05',('A','B'),('O'),'P','S','Z');
FILE_SCHEMA(('IFC4'));
ENDSEC;
DATA;
#1=IFCPROJECT('0YvctVUKr0kugbFTf53O9L',$,'Project',$,$,$,$,$,$);
#2=IFCBUILDINGSTOREY('1YvctVUKr0kugbFTf53O9L',$,'EG',$,$,$,$,$,.ELEMENT.,0.);
#3=IFCWALL('2YvctVUKr0kugbFTf53O9L',$,'South',$,$,$,$,'T1',.SOLIDWALL.);
#4=IFCWALL('3YvctVUKr0kugbFTf53O9L',$,'N\\X2\\00F6\\X0\\rd',$,$,$,$,$,$);
#5=IFCDOOR('0ZvctVUKr0kugbFTf53O9L',$,'D1',$,$,$,$,$,2.1,0.9,$,$,$);
#6=IFCRELAGGREGATES('1ZvctVUKr0kugbFTf53O9L',$,$,$,#1,(#2));
#7=IFCRELCONTAINEDINSPATIALSTRUCTURE('2ZvctVUKr0kugbFTf53O9L',$,$,$,(#3,#4,#5),#2);
#8=IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('F 90'),$);
#9=IFCPROPERTYSINGLEVALUE('LoadBearing',$,IFCBOOLEAN(.T.),$);
#10=IFCPROPERTYENUMERATEDVALUE('Status',$,(IFCLABEL('NEW'),IFCLABEL('OLD')),$);
#11=IFCPROPERTYSET('3ZvctVUKr0kugbFTf53O9L',$,'Pset_WallCommon',$,(#8,#9,#10));
#12=IFCRELDEFINESBYPROPERTIES('0avctVUKr0kugbFTf53O9L',$,$,$,(#3),#11);
#13=IFCCARTESIANPOINT((1.,2.5,-0.));
#14=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);
#15=IFCMATERIAL('Brick',$,$);
#16=IFCRELASSOCIATESMATERIAL('1avctVUKr0kugbFTf53O9L',$,$,$,(#3,#4),#15);
#17=IFCWALLTYPE('2avctVUKr0kugbFTf53O9L',$,'WT',$,$,(#19),$,$,$,.PARTITIONING.);
#18=IFCRELDEFINESBYTYPE('3avctVUKr0kugbFTf53O9L',$,$,$,(#4),#17);
#19=IFCPROPERTYSET('0bvctVUKr0kugbFTf53O9L',$,'Pset_WallCommon',$,(#20));
#20=IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('F 30'),$);
#21=IFCELEMENTQUANTITY('1bvctVUKr0kugbFTf53O9L',$,'Qto_WallBaseQuantities',$,$,(#22));
#22=IFCQUANTITYLENGTH('Length',$,$,4.5,$);
#23=IFCRELDEFINESBYPROPERTIES('2bvctVUKr0kugbFTf53O9L',$,$,$,(#3),#21);
#24=IFCCARTESIANPOINTLIST2D(((0.,0.),(1.,0.)));
#25=IFCINDEXEDPOLYCURVE(#24,(IFCLINEINDEX((1,2))),.T.);
#26=IFCPRESENTATIONLAYERWITHSTYLE('L',$,(#25),$,.U.,.F.,.T.,());
ENDSEC;
END-ISO-10303-21;
"""


@pytest.fixture
def house() -> oxaifc.Model:
    """A small model of two walls and a door."""
    return oxaifc.open(HOUSE.encode())


@pytest.fixture
def house_path(tmp_path: Path) -> Path:
    """The same as a file."""
    path = tmp_path / "house.ifc"
    path.write_text(HOUSE)
    return path


@pytest.fixture
def program() -> str:
    """The program that the package holds."""
    return os.path.join(os.path.dirname(oxaifc.__file__), "bin", "oxaifc")


def small_models(most: int) -> list[Path]:
    """The real models of up to so many bytes; none where there are none."""
    return sorted(path for path in MODELS.glob("*.ifc") if path.stat().st_size <= most) if MODELS.is_dir() else []


def many_walls(count: int) -> bytes:
    """A file of so many walls."""
    alphabet = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_$"

    def guid(number: int) -> str:
        digits = ""
        for _ in range(22):
            digits = alphabet[number % 64] + digits
            number //= 64
        return digits

    lines = ["#%d=IFCWALL('%s',$,'Wall %d',$,$,$,$,$,$);" % (i, guid(i), i) for i in range(1, count + 1)]
    head, tail = HOUSE.split("DATA;\n")[0], "ENDSEC;\nEND-ISO-10303-21;\n"
    return (head + "DATA;\n" + "\n".join(lines) + "\n" + tail).encode()


