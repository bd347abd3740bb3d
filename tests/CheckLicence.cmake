# SPDX-License-Identifier: Apache-2.0
# CheckLicence: every source names its licence in its first lines, so that a file that is copied alone still tells it.
#
# Usage    cmake -DROOT=<checkout> -P CheckLicence.cmake
cmake_minimum_required(VERSION 3.22)

set(patterns)
foreach(folder IN ITEMS src tools tests benchmarks fuzz examples python)
  foreach(ending IN ITEMS h cpp cmake sh py pyi)
    list(APPEND patterns "${ROOT}/${folder}/*.${ending}")
  endforeach()
  list(APPEND patterns "${ROOT}/${folder}/CMakeLists.txt")
endforeach()
file(GLOB_RECURSE sources ${patterns} "${ROOT}/cmake/*" "${ROOT}/scripts/*")
list(LENGTH sources count)
if(count LESS 300)
  message(FATAL_ERROR "only ${count} sources under ${ROOT}: the patterns are wrong")
endif()

set(lacking)
foreach(source IN LISTS sources)
  file(STRINGS "${source}" lines LIMIT_COUNT 2)
  if(NOT lines MATCHES "SPDX-License-Identifier: Apache-2\\.0")
    list(APPEND lacking "${source}")
  endif()
endforeach()
if(lacking)
  list(JOIN lacking "\n  " lacking)
  message(FATAL_ERROR "without the line \"SPDX-License-Identifier: Apache-2.0\":\n  ${lacking}")
endif()
message(STATUS "${count} sources")
