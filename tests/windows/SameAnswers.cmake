# SPDX-License-Identifier: Apache-2.0
# SameAnswers: calls the program for Windows under Wine and the one of this machine with the same words, and compares exit
# code, standard output, standard error and the files that both have written, byte for byte.
#
# Usage    cmake -D THERE=<oxaifc.exe> -D WINE=<its emulator> -D ROOT=<sources> -D FOLDER=<to work in> -P SameAnswers.cmake
# Aside    how long a call took, and how much memory; a backslash of a path is a slash; when a workbook was made, which is packed.
#          Line ends are not touched, both write "\n".
# Skipped  without Wine, or a program of this machine in one of the build folders, which is told.
cmake_minimum_required(VERSION 3.22)

set(here)
foreach(preset IN ITEMS ci-release release dev)
  if(EXISTS "${ROOT}/build/${preset}/bin/oxaifc" AND NOT here)
    set(here "${ROOT}/build/${preset}/bin/oxaifc")
  endif()
endforeach()
if(NOT here)
  message("Skipped: no program of this machine under build/ci-release, build/release or build/dev")
  return()
endif()
execute_process(COMMAND "${WINE}" "${THERE}" --version RESULT_VARIABLE result OUTPUT_VARIABLE version ERROR_QUIET)
if(result EQUAL 127)
  message("Skipped: there is no Wine")
  return()
endif()
execute_process(COMMAND "${here}" --version OUTPUT_VARIABLE versionHere)
if(NOT version STREQUAL versionHere)
  message("Skipped: ${here} is not of this version")
  return()
endif()

# A folder each, and in it the samples, a faulty file, one with names that no code page has all of, and one of them packed.
file(REMOVE_RECURSE "${FOLDER}")
set(inputs "${FOLDER}/inputs")
file(MAKE_DIRECTORY "${inputs}")
file(COPY "${ROOT}/examples/house-ifc4.ifc" "${ROOT}/examples/house-ifc2x3.ifc" DESTINATION "${inputs}")
set(frame "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION(('d'),'2;1');\nFILE_NAME('n','2024-05-17T09:30:00',('a'),('o'),'p','s','z');\nFILE_SCHEMA(('IFC4'));\nENDSEC;\nDATA;\n")
file(WRITE "${inputs}/faulty.ifc" "${frame}#1=IFCTEAPOT()\;\n#2=IFCMATERIAL('\\X2\\00E9\\X0\\ \\X4\\0001F3E0\\X0\\',$,1.5)\;\n#2=IFCDIRECTION((1.E400,0.1,1.7976931348623157E308,4.9E-324))\;\nENDSEC;\nEND-ISO-10303-21;\n")
file(WRITE "${inputs}/Haus é 家.ifc" "${frame}#1=IFCMATERIAL('a',$,$)\;\n#2=IFCCARTESIANPOINT((0.1,123456789.25,-1.E-7))\;\nENDSEC;\nEND-ISO-10303-21;\n")
file(WRITE "${inputs}/wanted.ids" "<ids xmlns=\"http://standards.buildingsmart.org/IDS\" xmlns:xs=\"http://www.w3.org/2001/XMLSchema\">
<info><title>Brandschutz für Wände</title></info>
<specifications><specification name=\"Wände 壁\" ifcVersion=\"IFC2X3 IFC4\">
<applicability maxOccurs=\"unbounded\"><entity><name><xs:restriction base=\"xs:string\"><xs:pattern value=\"IFCWALL.*\"/></xs:restriction></name></entity></applicability>
<requirements><attribute><name><simpleValue>Name</simpleValue></name><value><xs:restriction base=\"xs:string\"><xs:pattern value=\".*[Ww]and .*\"/></xs:restriction></value></attribute>
<property dataType=\"IFCLABEL\"><propertySet><simpleValue>Pset_WallCommon</simpleValue></propertySet><baseName><simpleValue>FireRating</simpleValue></baseName></property></requirements>
</specification></specifications></ids>
")
file(WRITE "${inputs}/faulty.ids" "<ids xmlns=\"http://standards.buildingsmart.org/IDS\"><info><title/></info>\n<oddments/></ids>\n")
foreach(side IN ITEMS here there)
  file(COPY "${inputs}/" DESTINATION "${FOLDER}/${side}")
endforeach()

# What is asked, a row a call; OUT files have names of their own, so that all of them are compared at the end.
set(calls
  "help" "help list" "--version" "info" "nonsense" "info missing.ifc" "info /missing.ifc" "info /json" "convert house-ifc4.ifc missing/out.ifc" "info ."
  "schema IFC4 IfcWall" "schema IFC4 IfcDoor --json" "completion bash" "ids wanted.ids" "ids faulty.ids" "ids faulty.ids house-ifc4.ifc"
  "ids house-ifc4.ifc wanted.ids")
foreach(file IN ITEMS house-ifc4.ifc house-ifc2x3.ifc faulty.ifc "Haus é 家.ifc")
  string(MAKE_C_IDENTIFIER "${file}" name)
  foreach(verb IN ITEMS "info%" "info%--json" "check%" "check%--json" "check%--strict%--json" "header%" "tree%"
      "list%IfcElement" "list%IfcProduct, IfcMaterial%-f%csv" "show%#1,#2,#3" "table%-%-f%csv%-t%IfcMaterial"
      "sql%SELECT count(*) AS n, max(Name) AS m FROM IfcMaterial%-f%ndjson")
    string(REGEX REPLACE "^([a-z]+)%" "\\1%${file}%" call "${verb}")
    list(APPEND calls "${call}")
  endforeach()
  list(APPEND calls
    "convert%--all%${file}%${name}.out.ifc"
    "convert%--all%--renumber%${file}%${name}.numbered.ifc"
    "convert%--single-threaded%${file}%${name}.ifcxml"   # several threads put relations in any order
    "convert%--all%${file}%${name}.gz.ifc.gz"
    "convert%--all%${file}%${name}.ifczip"
    "info%${name}.ifczip%--json" "info%${name}.gz.ifc.gz%--json"
    "list%${name}.ifcxml%IfcElement"
    "convert%--all%${name}.ifcxml%${name}.back.ifc"
    "convert%--all%${file}%-"
    "check%${file}%--html%${name}.html"
    "list%${file}%IfcProduct%-o%${name}.csv"
    "header%${file}%${file}%--set%name=another"
    "convert%--all%${file}%${file}")
endforeach()
list(APPEND calls "diff%house-ifc4.ifc%house_ifc4_ifc.out.ifc" "check%house-ifc4.ifc%house-ifc2x3.ifc"
  "ids%wanted.ids%house-ifc4.ifc%house-ifc2x3.ifc" "diff%house-ifc4.ifc%house-ifc2x3.ifc"
  "sql%house-ifc4.ifc%house-ifc2x3.ifc%SELECT file, type, count(*) AS n FROM element GROUP BY file, type")
# What works on many elements, of the houses.
foreach(house IN ITEMS house-ifc4 house-ifc2x3)
  set(file "${house}.ifc")
  list(APPEND calls
    "check%${file}%--strict" "check%${file}%--strict%--sarif%${house}.sarif"
    "ids%wanted.ids%${file}" "ids%wanted.ids%${file}%--json%--all" "ids%wanted.ids%${file}%--html%${house}.ids.html"
    "table%${file}%${house}.sqlite%-t%element,property,quantity,material,storey"   # "file" has the whole path
    "table%${file}%${house}.tables/%-t%element,property,IfcDoor" "table%${file}%${house}.xlsx%-t%element,property"
    "table%${file}%-%-t%relation%-f%ndjson"
    "sql%${file}%SELECT e.name, p.value_text FROM element e JOIN property p ON p.element_id = e.id WHERE p.name = 'FireRating'"
    "sql%${file}%SELECT type, count(*) AS n FROM element GROUP BY type%-o%${house}.types.xlsx"
    "sql%${file}%SELECT nothing FROM element"
    "set%${file}%IfcWall, storey=Erdgeschoss 一階%Description=neu ü 新%${house}.set.ifc"
    "set%${file}%IfcDoor%Tag=T1%--order%number%${house}.ordered.ifc"
    "set%--dry-run%${file}%IfcWall%Pset_WallCommon.FireRating=F 30%${house}.not.ifc"
    "set%${file}%IfcLamp%Name=a%${house}.not.ifc"
    "diff%${file}%${house}.set.ifc" "diff%--all%${file}%${house}.set.ifc" "diff%--json%${file}%${house}.set.ifc"
    "diff%--csv%${file}%${house}.set.ifc" "diff%--entities%${file}%${house}.set.ifc"
    "diff%${file}%${house}.set.ifc%--html%${house}.diff.html"
    "extract%${file}%IfcDoor%${house}.doors.ifc" "extract%${file}%IfcWall%${house}.walls.ifc"
    "extract%${file}%--split-by%storey%${house}.storeys"
    "merge%${house}.doors.ifc%${house}.walls.ifc%${house}.merged.ifc"
    "props%${file}%#712" "list%${file}%-f%xlsx%-o%${house}.list.xlsx")
endforeach()

set(faults 0)
function(call side words)
  if(words MATCHES "%")
    string(REPLACE "%" ";" words "${words}")
  else()
    string(REPLACE " " ";" words "${words}")
  endif()
  list(REMOVE_ITEM words "")
  if(side STREQUAL "there")
    set(program "${WINE}" "${THERE}")
  else()
    set(program "${here}")
  endif()
  execute_process(COMMAND ${program} ${words} WORKING_DIRECTORY "${FOLDER}/${side}"
    RESULT_VARIABLE code OUTPUT_VARIABLE out ERROR_VARIABLE error)
  string(REPLACE "${THERE}" "oxaifc" out "${out}")
  # What no two runs have in common.
  string(REGEX REPLACE "time +[0-9.]+ m?s\n" "" out "${out}")
  string(REGEX REPLACE "memory +[^\n]* for the process\n" "" out "${out}")
  string(REGEX REPLACE "\"(seconds|process|model)\": [0-9.e-]+" "" out "${out}")
  # Wine's own word now and then, where a thread ends with its process.
  string(REGEX REPLACE "wine client error:[^\n]*" "" error "${error}")
  set(${side} "exit code ${code}\n${out}\nerrors: ${error}" PARENT_SCOPE)
endfunction()
# compare(<words> <words there>)
function(compare words wordsThere)
  call(here "${words}")
  call(there "${wordsThere}")
  if(NOT here STREQUAL there)
    string(REPLACE "\\" "/" slashes "${there}")
    string(REPLACE "\\" "/" slashesHere "${here}")
    if(NOT slashes STREQUAL slashesHere)
      string(MAKE_C_IDENTIFIER "${words}" name)
      file(WRITE "${FOLDER}/faults/${name}.here" "${here}")
      file(WRITE "${FOLDER}/faults/${name}.there" "${there}")
      message("differs: oxaifc ${words}   (${FOLDER}/faults/${name}.*)")
      math(EXPR faults "${faults} + 1")
      set(faults ${faults} PARENT_SCOPE)
    endif()
  endif()
endfunction()
foreach(words IN LISTS calls)
  compare("${words}" "${words}")
endforeach()
# No shell expands a word there: the program does.
compare("info%house-ifc2x3.ifc%house-ifc4.ifc" "info%house-ifc?x?.ifc%house-i*4.ifc")

# A workbook is compared by its parts, but for the one with the time at which it was made.
foreach(side IN ITEMS here there)
  file(GLOB workbooks "${FOLDER}/${side}/*.xlsx")
  foreach(workbook IN LISTS workbooks)
    file(ARCHIVE_EXTRACT INPUT "${workbook}" DESTINATION "${workbook}.parts")
    file(REMOVE "${workbook}" "${workbook}.parts/docProps/core.xml")
  endforeach()
endforeach()

file(GLOB_RECURSE written RELATIVE "${FOLDER}/here" "${FOLDER}/here/*")
file(GLOB_RECURSE writtenThere RELATIVE "${FOLDER}/there" "${FOLDER}/there/*")
if(NOT written STREQUAL writtenThere)
  message("other files: ${writtenThere}\ninstead of:  ${written}")
  math(EXPR faults "${faults} + 1")
endif()
foreach(file IN LISTS written)
  execute_process(COMMAND "${CMAKE_COMMAND}" -E compare_files "${FOLDER}/here/${file}" "${FOLDER}/there/${file}"
    RESULT_VARIABLE result ERROR_QUIET)
  if(NOT result EQUAL 0)
    message("other bytes: ${file}")
    math(EXPR faults "${faults} + 1")
  endif()
endforeach()
list(LENGTH calls count)
list(LENGTH written countWritten)
if(faults)
  message(FATAL_ERROR "${faults} of ${count} answers and ${countWritten} files differ")
endif()
message("${count} answers and ${countWritten} files are the same")
