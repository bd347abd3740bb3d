# SPDX-License-Identifier: Apache-2.0
# Toy: oxaifc-toy, the program with the format and the verb whose sources stand in docs/adding.md.
#
# Block    ```cpp and the path of a source: the source. ```cmake and the path of the list of the program: a line of it
#          with one word more, which is run in the place of that line.
# Objects  of the program itself; only its two tables and the new sources are compiled.

find_package(CLI11 REQUIRED)   # what the program links, for this folder
find_package(fmt REQUIRED)

set(document "${PROJECT_SOURCE_DIR}/docs/adding.md")
set(program "${PROJECT_SOURCE_DIR}/tools/oxaifc")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${document}" "${program}/CMakeLists.txt")

# A list in CMake ends an item at ";" and takes brackets together, so the text is cut by hand.
file(READ "${document}" rest)
file(READ "${program}/CMakeLists.txt" programList)
set(written)   # the sources of the document, below tools/oxaifc
set(tables)
while(rest MATCHES "\n```(cpp|cmake) tools/oxaifc/([^ \n]+)\n")
  set(opening "${CMAKE_MATCH_0}")
  set(path "${CMAKE_MATCH_2}")
  string(FIND "${rest}" "${opening}" at)
  string(LENGTH "${opening}" length)
  math(EXPR at "${at} + ${length}")
  string(SUBSTRING "${rest}" ${at} -1 rest)
  string(FIND "${rest}" "\n```\n" end)
  math(EXPR end "${end} + 1")   # with the line feed of the last line
  string(SUBSTRING "${rest}" 0 ${end} text)
  string(SUBSTRING "${rest}" ${end} -1 rest)
  if(path STREQUAL "CMakeLists.txt")
    # The line as it is now: without the last word.
    string(REGEX REPLACE " [A-Za-z]+\\)\n$" ")\n" present "${text}")
    string(FIND "${programList}" "\n${present}" at)
    if(at LESS 0 OR present STREQUAL text)
      message(FATAL_ERROR "docs/adding.md: ${program}/CMakeLists.txt has no line ${present}")
    endif()
    cmake_language(EVAL CODE "${text}")
    string(REGEX REPLACE "^oxa_table\\(([A-Za-z]+) .*" "\\1" kind "${text}")
    list(APPEND tables ${oxa${kind}Sources})
  elseif(EXISTS "${program}/${path}")
    message(FATAL_ERROR "docs/adding.md: ${program}/${path} is there already")
  else()
    file(CONFIGURE OUTPUT "${CMAKE_CURRENT_BINARY_DIR}/toy/${path}" CONTENT "${text}" @ONLY)
    list(APPEND written "${path}")
  endif()
endwhile()

# A source that a table names is one of the program, one of the document, or the table itself.
set(sources)
foreach(source IN LISTS tables)
  if(IS_ABSOLUTE "${source}")
    list(APPEND sources "${source}")
  elseif(source IN_LIST written)
    list(APPEND sources "${CMAKE_CURRENT_BINARY_DIR}/toy/${source}")
  elseif(NOT EXISTS "${program}/${source}")
    message(FATAL_ERROR "docs/adding.md has no block for tools/oxaifc/${source}")
  endif()
endforeach()

add_executable(oxaifc-toy ${sources} $<FILTER:$<TARGET_OBJECTS:oxaifc>,EXCLUDE,/All[A-Za-z]+\\.cpp>)
set_target_properties(oxaifc-toy PROPERTIES CXX_EXTENSIONS OFF)
target_include_directories(oxaifc-toy PRIVATE "${PROJECT_SOURCE_DIR}/tools")
get_target_property(libraries oxaifc LINK_LIBRARIES)
target_link_libraries(oxaifc-toy PRIVATE ${libraries})
