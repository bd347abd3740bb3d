# SPDX-License-Identifier: Apache-2.0
# RunDoxygen: runs Doxygen, and tells what it warned of: how much, and the first of it.
#
# Usage    cmake -D DOXYGEN=<program> -D FOLDER=<with the Doxyfile> -P RunDoxygen.cmake
# Skipped  without a program, which is told.
# Fails    with any warning, once the pages are written. The same of several classes that inherit it counts once.
cmake_minimum_required(VERSION 3.22)

if(NOT DOXYGEN)
  message("Skipped: Doxygen 1.9.2 or newer was not found")
  return()
endif()
set(shown 20)

file(REMOVE "${FOLDER}/warnings.txt")
execute_process(COMMAND "${DOXYGEN}" "${FOLDER}/Doxyfile" RESULT_VARIABLE result)
set(warnings)
if(EXISTS "${FOLDER}/warnings.txt")
  file(STRINGS "${FOLDER}/warnings.txt" warnings)
endif()
list(REMOVE_DUPLICATES warnings)
list(LENGTH warnings count)
if(count GREATER 0)
  list(SUBLIST warnings 0 ${shown} first)
  list(JOIN first "\n" first)
  message("${first}")
  message(FATAL_ERROR "${count} warnings, all of them in ${FOLDER}/warnings.txt")
elseif(NOT result EQUAL 0)
  message(FATAL_ERROR "${DOXYGEN} ended with ${result}")
endif()
