# SPDX-License-Identifier: Apache-2.0
# OxaPublicHeaders: the headers that are installed, relative to src/. A header that callers include stands in the first
# list; what these need of the library's inside, where a member or an argument shows it, in the second. Nothing else comes
# along: each is compiled from the installed tree alone, and so are the program, the examples and the fuzz targets
# (tests/consumer).

set(OXA_PUBLIC_HEADERS
  Check/Check.h
  Check/Ids.h
  Compare/Compare.h
  Compare/Elements.h
  Convert/Assignment.h
  Convert/EntityFromText.h
  Convert/Excerpt.h
  Convert/Extract.h
  Convert/Merge.h
  Convert/Patch.h
  Convert/SchemaMove.h
  Convert/Snapshot.h
  Convert/TextScan.h
  Convert/ValueFromText.h
  platform/Assert.h
  platform/DateTime.h
  platform/Export.h
  platform/Id.h
  platform/Localization.h
  platform/NearNames.h
  platform/Object.h
  platform/Path.h
  platform/ReplacedFile.h
  platform/SharedBytes.h
  platform/SharedMutex.h
  platform/Stream.h
  platform/String.h
  platform/Unfinished.h
  platform/Utilities.h
  platform/Xml.h
  schema/Schema.h
  schema/SchemaName.h
  provider/SchemaLoader.h
  provider/SchemaMessage.h
  Format/Ifc/IfcArray.h
  Format/Ifc/IfcCellVisit.h
  Format/Ifc/IfcCountFile.h
  Format/Ifc/IfcFile.h
  Format/Ifc/IfcFileAttribute.h
  Format/Ifc/IfcFileDataSimple.h
  Format/Ifc/IfcFileEntity.h
  Format/Ifc/IfcFileError.h
  Format/Ifc/IfcFileHeader.h
  Format/Ifc/IfcFileHeaderSimple.h
  Format/Ifc/IfcGuid.h
  Format/Ifc/IfcLineReadThreadPool.h
  Format/Ifc/IfcMissingType.h
  Format/Ifc/IfcNumbers.h
  Format/Ifc/IfcReadFile.h
  Format/Ifc/IfcReadOptions.h
  Format/Ifc/IfcReportKey.h
  Format/Ifc/IfcStepStrings.h
  Format/Ifc/IfcTypeSelectBase.h
  Format/Ifc/IfcValueVisit.h
  Format/Ifc/IfcWriteFile.h
  Format/Ifc/IfcWriteOptions.h
  Format/Ifc/Xml/IfcXmlExport.h
  Format/Ifc/Xml/IfcXmlImport.h
  Model/Archive.h
  Model/Columns.h
  Model/Element.h
  Model/Error.h
  Model/Model.h
  Model/NewValue.h
  Model/Options.h
  Model/References.h
  Model/Relations.h
  Model/Selector.h
  Model/SetProperty.h
  Model/Units.h
  Model/Value.h
  Tables/Arrow.h
  Tables/Batch.h
  Tables/Sql.h
  Tables/Sqlite.h
  Tables/Tables.h
  Tables/TextFiles.h
  Tables/Xlsx.h)

list(APPEND OXA_PUBLIC_HEADERS
  schema/SchemaCache.h              # what a schema object keeps for its users
  Format/Ifc/Header/FileHeaderBase.h
  Format/Ifc/Memory/List.h          # cells: lists and values at any address
  Format/Ifc/Memory/Unaligned.h
  Format/Ifc/Memory/SimplePool.h    # Data::pool
  Format/Ifc/Memory/ZeroedBytes.h
  Format/Ifc/Store/EntityIdMap.h    # Data::entityIdMap
  Format/Ifc/Store/GuidMap.h        # Data::guidEntityMap
  Format/Ifc/Store/SeenNumbers.h
  Format/Ifc/Store/EntityTable.h    # the contexts of a read and of a write
  Format/Ifc/Read/ReadContext.h
  Format/Ifc/Write/WriteContext.h)
