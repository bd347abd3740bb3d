# SPDX-License-Identifier: Apache-2.0
# Dependencies: vcpkg.json and conanfile.py name what CMake looks for, each of it and nothing else, and Conan's oldest
# versions are those that CMake asks for.
#
# Usage    cmake -DROOT=<checkout> -P Dependencies.cmake
cmake_minimum_required(VERSION 3.22)

# What CMake looks for | its name in vcpkg.json | its name in conanfile.py
set(rows
  "CLI11|cli11|cli11"
  "date/date.h|date|date"
  "FastFloat|fast-float|fast_float"
  "fmt|fmt|fmt"
  "GTest|gtest|gtest"
  "inja/inja.hpp|inja|inja"
  "libzip|libzip|libzip"
  "nlohmann_json|nlohmann-json|nlohmann_json"
  "PkgConfig|pkgconf|pkgconf"
  "pugixml|pugixml|pugixml"
  "rapidcheck|rapidcheck|rapidcheck"
  "re2|re2|re2"
  "sqlite3|sqlite3|sqlite3"
  "utf8.h|utfcpp|utfcpp"
  "xlsxwriter|libxlsxwriter|libxlsxwriter"
  "zlib|zlib|zlib")
set(not_packages Threads Doxygen)   # a part of the system, and a program beside the build
set(expected_cmake)
set(expected_vcpkg)
set(expected_conan)
foreach(row IN LISTS rows)
  string(REPLACE "|" ";" row "${row}")
  list(GET row 0 name)
  list(APPEND expected_cmake "${name}")
  list(GET row 1 port)
  list(APPEND expected_vcpkg "${port}")
  list(GET row 2 recipe)
  list(APPEND expected_conan "${recipe}")
  set(recipe_${name} "${recipe}")
endforeach()

# CMake. The examples of use under tests/consumer look for the same again; the Python package has a list of its own.
set(patterns)
foreach(folder IN ITEMS src tools tests benchmarks fuzz examples)
  list(APPEND patterns "${ROOT}/${folder}/CMakeLists.txt")   # and those below
endforeach()
file(GLOB_RECURSE files ${patterns})
list(FILTER files EXCLUDE REGEX "/tests/consumer/")
file(GLOB own "${ROOT}/CMakeLists.txt" "${ROOT}/cmake/*.cmake")
list(APPEND files ${own})
list(LENGTH files count)
if(count LESS 40)
  message(FATAL_ERROR "only ${count} files under ${ROOT}: the patterns are wrong")
endif()
set(found_cmake)
foreach(file IN LISTS files)
  file(STRINGS "${file}" lines REGEX "^ *(find_package|find_path|pkg_check_modules)\\(")
  foreach(line IN LISTS lines)
    string(REGEX REPLACE "^ *([a-z_]+)\\(([^)]*)\\).*" "\\1 \\2" line "${line}")
    string(REPLACE " " ";" words "${line}")
    list(GET words 0 command)
    if(command STREQUAL "find_package")
      list(GET words 1 name)
      list(GET words 2 version)
    elseif(command STREQUAL "find_path")
      list(GET words 2 name)
      set(version)
    else()
      list(GET words -1 module)
      string(REGEX MATCH "^([^>]+)(>=)?(.*)$" matched "${module}")
      set(name "${CMAKE_MATCH_1}")
      set(version "${CMAKE_MATCH_3}")
    endif()
    if(name IN_LIST not_packages)
      continue()
    endif()
    list(APPEND found_cmake "${name}")
    if(version MATCHES "^[0-9]")
      set(version_${name} "${version}")
    endif()
  endforeach()
endforeach()

# vcpkg: names, or objects with a name.
file(READ "${ROOT}/vcpkg.json" manifest)
set(found_vcpkg)
foreach(path IN ITEMS "dependencies" "features;tests;dependencies")
  string(JSON count LENGTH "${manifest}" ${path})
  math(EXPR last "${count} - 1")
  foreach(index RANGE ${last})
    string(JSON kind TYPE "${manifest}" ${path} ${index})
    if(kind STREQUAL "OBJECT")
      string(JSON name GET "${manifest}" ${path} ${index} name)
    else()
      string(JSON name GET "${manifest}" ${path} ${index})
    endif()
    list(APPEND found_vcpkg "${name}")
  endforeach()
endforeach()

# Conan: self.requires("name/[>=oldest <next]").
set(found_conan)
file(READ "${ROOT}/conanfile.py" recipe)
string(REGEX MATCHALL "requires\\(\"[^\"]+\"" calls "${recipe}")
foreach(call IN LISTS calls)
  string(REGEX MATCH "\"([^/]+)/[^0-9*]*([0-9.]*)" matched "${call}")
  list(APPEND found_conan "${CMAKE_MATCH_1}")
  set(oldest_${CMAKE_MATCH_1} "${CMAKE_MATCH_2}")
endforeach()

foreach(kind IN ITEMS cmake vcpkg conan)
  list(REMOVE_DUPLICATES found_${kind})
  list(SORT found_${kind})
  list(SORT expected_${kind})
  if(NOT found_${kind} STREQUAL expected_${kind})
    message(SEND_ERROR "${kind} names\n  ${found_${kind}}\nwhere the table of ${CMAKE_CURRENT_LIST_FILE} has\n"
      "  ${expected_${kind}}")
  endif()
endforeach()
foreach(name IN LISTS found_cmake)
  if(version_${name} AND NOT oldest_${recipe_${name}} VERSION_EQUAL version_${name})
    message(SEND_ERROR "CMake asks for ${name} ${version_${name}}, conanfile.py for ${oldest_${recipe_${name}}}")
  endif()
endforeach()
