# SPDX-License-Identifier: Apache-2.0
# DoxygenFilter: gives Doxygen a header, with the rows of its comments as a list: "For      callers of Model" in the
# header is "- **For** callers of Model" to Doxygen, which would run the rows together. No line comes or goes.
#
# Usage    cmake -DFOLDER=<for a file in between> -P DoxygenFilter.cmake <header>; Doxygen reads what it writes.

file(READ "${CMAKE_ARGV4}" text)
string(REGEX REPLACE "(///) ([A-Z][a-z]+( for)?)  +([^ ])" "\\1 - **\\2** \\4" text "${text}")
file(WRITE "${FOLDER}/filtered.h" "${text}")
execute_process(COMMAND "${CMAKE_COMMAND}" -E cat "${FOLDER}/filtered.h")
