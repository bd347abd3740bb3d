# SPDX-License-Identifier: Apache-2.0
# OxaDocs: the target "docs", the reference documentation of the installed headers as HTML, with the documents of docs/
# around it. Beside a compiler it needs Doxygen; without it there is no such target, and the test is skipped.
#
# Output   <build>/docs/html/index.html, and what Doxygen warns of in <build>/docs/warnings.txt
# Rule     a public member without a comment is a warning, and a warning fails the target.
# Test     Docs.EveryPublicMemberIsDescribed does what the target does.

find_package(Doxygen 1.9.2 QUIET)
include(OxaPublicHeaders)

set(oxaDocsFolder "${PROJECT_BINARY_DIR}/docs")
set(oxaDocsCommand ${CMAKE_COMMAND} -D "DOXYGEN=$<$<BOOL:${DOXYGEN_FOUND}>:${DOXYGEN_EXECUTABLE}>"
  -D "FOLDER=${oxaDocsFolder}" -P "${CMAKE_CURRENT_LIST_DIR}/RunDoxygen.cmake")
if(OXA_BUILD_TESTS)
  add_test(NAME Docs.EveryPublicMemberIsDescribed COMMAND ${oxaDocsCommand} WORKING_DIRECTORY "${PROJECT_SOURCE_DIR}")
  set_tests_properties(Docs.EveryPublicMemberIsDescribed PROPERTIES
    LABELS slow TIMEOUT 600 SKIP_REGULAR_EXPRESSION "Skipped: Doxygen")
endif()
if(NOT DOXYGEN_FOUND)
  message(STATUS "No target \"docs\": Doxygen 1.9.2 or newer was not found")
  return()
endif()
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
  COMMAND ${oxaDocsCommand}
  WORKING_DIRECTORY "${PROJECT_SOURCE_DIR}"
  COMMENT "Reference documentation: ${oxaDocsFolder}/html/index.html"
  VERBATIM)
