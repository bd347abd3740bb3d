# SPDX-License-Identifier: Apache-2.0
# OxaMachine: machines that the libraries are not made for are refused here, before anything is looked for or compiled.
# docs/platforms.md says what is built and tested where.

if(CMAKE_SIZEOF_VOID_P AND CMAKE_SIZEOF_VOID_P LESS 8)
  math(EXPR oxaBits "${CMAKE_SIZEOF_VOID_P} * 8")
  message(FATAL_ERROR "OxaIfc needs a 64-bit system: its table of instances sets addresses aside for all numbers that a "
    "file may use, and ${oxaBits} bits, which this compiler builds for, have too few of them.")
endif()
if(CMAKE_CXX_BYTE_ORDER STREQUAL "BIG_ENDIAN")
  message(FATAL_ERROR "OxaIfc needs a little-endian machine: it reads digits eight bytes at once, the lowest first. "
    "This compiler builds for a big-endian one.")
endif()
