# SPDX-License-Identifier: Apache-2.0
# OxaPublicHeaders: the headers that are installed, relative to src/: those that callers include, listed here, and
# all that these include in turn. Each compiles on its own (tests/consumer).

set(OXA_PUBLIC_HEADERS
  Compare/Compare.h
  Convert/EntityFromText.h Convert/Extract.h Convert/SchemaMove.h Convert/ValueFromText.h
  platform/Assert.h platform/DateTime.h platform/Export.h platform/Id.h platform/Localization.h
  platform/Stream.h platform/String.h platform/Utilities.h platform/Xml.h
  schema/Schema.h schema/SchemaName.h
  provider/SchemaLoader.h
  Format/Ifc/IfcArray.h Format/Ifc/IfcCellVisit.h Format/Ifc/IfcFile.h Format/Ifc/IfcFileAttribute.h
  Format/Ifc/IfcFileDataSimple.h
  Format/Ifc/IfcFileEntity.h Format/Ifc/IfcFileError.h Format/Ifc/IfcFileHeader.h Format/Ifc/IfcFileHeaderSimple.h
  Format/Ifc/IfcGuid.h Format/Ifc/IfcLineReadThreadPool.h Format/Ifc/IfcMissingType.h Format/Ifc/IfcNumbers.h
  Format/Ifc/IfcReadFile.h Format/Ifc/IfcReportKey.h Format/Ifc/IfcStepStrings.h Format/Ifc/IfcTypeSelectBase.h
  Format/Ifc/IfcValueVisit.h Format/Ifc/IfcWriteOptions.h
  Format/Ifc/Xml/IfcXmlExport.h Format/Ifc/Xml/IfcXmlImport.h)

set(oxaHeadersToScan ${OXA_PUBLIC_HEADERS})
while(oxaHeadersToScan)
  list(POP_FRONT oxaHeadersToScan header)
  file(STRINGS "${PROJECT_SOURCE_DIR}/src/${header}" includes REGEX "^#include \"")
  foreach(include IN LISTS includes)
    string(REGEX REPLACE "^#include \"([^\"]+)\".*" "\\1" include "${include}")
    if(NOT include IN_LIST OXA_PUBLIC_HEADERS AND EXISTS "${PROJECT_SOURCE_DIR}/src/${include}")
      list(APPEND OXA_PUBLIC_HEADERS "${include}")
      list(APPEND oxaHeadersToScan "${include}")
    endif()
  endforeach()
endwhile()
