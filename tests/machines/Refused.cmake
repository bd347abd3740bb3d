# SPDX-License-Identifier: Apache-2.0
# Refused: machines that the libraries are not made for are refused when the build is configured, with a sentence that
# says why. clang++ tells the size of an address and the order of bytes of each; nothing is linked or run.
#
# Usage    cmake -DROOT=<checkout> -DWORK=<folder of its own> -DGENERATOR=<generator> -P Refused.cmake
cmake_minimum_required(VERSION 3.22)

find_program(clang clang++)
if(NOT clang)
  message(STATUS "left out: clang++, which compiles for other machines, is not there")
  return()
endif()

set(thirtyTwo "OxaIfc needs a 64-bit system: its table of instances sets addresses aside for all numbers that a file may\
 use, and 32 bits, which this compiler builds for, have too few of them.")
set(bigEndian "OxaIfc needs a little-endian machine: it reads digits eight bytes at once, the lowest first. This compiler\
 builds for a big-endian one.")
set(rows
  "i686-linux-gnu|${thirtyTwo}"
  "armv7-linux-gnueabihf|${thirtyTwo}"
  "x86_64-linux-gnux32|${thirtyTwo}"
  "powerpc-linux-gnu|${thirtyTwo}"
  "s390x-linux-gnu|${bigEndian}"
  "powerpc64-linux-gnu|${bigEndian}")

foreach(row IN LISTS rows)
  string(REPLACE "|" ";" row "${row}")
  list(GET row 0 machine)
  list(GET row 1 sentence)
  file(REMOVE_RECURSE "${WORK}/${machine}")
  file(WRITE "${WORK}/${machine}.cmake" "
    set(CMAKE_SYSTEM_NAME Linux)
    set(CMAKE_CXX_COMPILER \"${clang}\")
    set(CMAKE_CXX_COMPILER_TARGET ${machine})
    set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)\n")
  execute_process(
    COMMAND "${CMAKE_COMMAND}" -G "${GENERATOR}" -S "${ROOT}" -B "${WORK}/${machine}"
      "-DCMAKE_TOOLCHAIN_FILE=${WORK}/${machine}.cmake"
    OUTPUT_QUIET ERROR_VARIABLE told RESULT_VARIABLE failed)
  string(REGEX REPLACE "[ \n]+" " " told "${told}")   # CMake breaks lines
  string(FIND "${told}" "${sentence}" at)
  if(NOT failed OR at LESS 0)
    message(SEND_ERROR "${machine} shall be refused with\n  ${sentence}\nand is told\n  ${told}")
  endif()
endforeach()
