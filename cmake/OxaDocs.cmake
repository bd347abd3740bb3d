# SPDX-License-Identifier: Apache-2.0
# OxaDocs: the target "docs", the reference documentation of the installed headers as HTML, with the documents of docs/
# around it. Beside a compiler it needs Doxygen; without it there is no such target.
#
# Output   <build>/docs/html/index.html, and what Doxygen warns of in <build>/docs/warnings.txt
# Rule     a public member without a comment is a warning, and a warning fails the target.

find_package(Doxygen 1.9.2 QUIET)
if(NOT DOXYGEN_FOUND)
  message(STATUS "No target \"docs\": Doxygen 1.9.2 or newer was not found")
  return()
endif()
include(OxaPublicHeaders)

set(oxaDocsFolder "${PROJECT_BINARY_DIR}/docs")
file(GLOB oxaPages CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/docs/*.md")
list(APPEND oxaPages "${PROJECT_SOURCE_DIR}/README.md" "${PROJECT_SOURCE_DIR}/CONTRIBUTING.md"
  "${PROJECT_SOURCE_DIR}/CHANGELOG.md" "${PROJECT_SOURCE_DIR}/tests/README.md")
set(oxaDocumented ${OXA_PUBLIC_HEADERS})
list(TRANSFORM oxaDocumented PREPEND "${PROJECT_SOURCE_DIR}/src/")

set(OXA_DOCS_INPUT)
foreach(file IN LISTS oxaPages oxaDocumented)
  string(APPEND OXA_DOCS_INPUT " \\\n  \"${file}\"")
endforeach()
configure_file("${PROJECT_SOURCE_DIR}/docs/Doxyfile.in" "${oxaDocsFolder}/Doxyfile" @ONLY)

add_custom_target(docs
  COMMAND ${CMAKE_COMMAND} -D DOXYGEN=$<TARGET_FILE:Doxygen::doxygen> -D FOLDER=${oxaDocsFolder}
    -P "${CMAKE_CURRENT_LIST_DIR}/RunDoxygen.cmake"
  WORKING_DIRECTORY "${PROJECT_SOURCE_DIR}"
  COMMENT "Reference documentation: ${oxaDocsFolder}/html/index.html"
  VERBATIM)
