# SPDX-License-Identifier: Apache-2.0
# OxaInstrumentation: compiler cache, sanitizers and coverage, for everything in this build alike. What is
# installed carries none of it in its interface.

option(OXA_CCACHE "Compile through ccache where there is one" ${PROJECT_IS_TOP_LEVEL})
set(OXA_SANITIZE "" CACHE STRING "Sanitizers to build with, as -fsanitize= takes them: address,undefined or thread")
option(OXA_COVERAGE "Count the lines and branches that the tests run, as scripts/coverage reads them (clang)" OFF)

if(OXA_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  find_program(OXA_CCACHE_PROGRAM ccache)
  mark_as_advanced(OXA_CCACHE_PROGRAM)
  if(OXA_CCACHE_PROGRAM)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${OXA_CCACHE_PROGRAM}")
  endif()
endif()

if(OXA_SANITIZE)
  # "undefined" includes alignment; nothing is recovered from, so that a finding fails its test.
  add_compile_options(-fsanitize=${OXA_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${OXA_SANITIZE})
endif()

if(OXA_COVERAGE)
  # What clang counts are the source's own conditions; those that exceptions and destructors add are not among them.
  # The counts are atomic, because some are told from the difference of two others.
  add_compile_options(-fprofile-instr-generate -fcoverage-mapping -fprofile-update=atomic)
  add_link_options(-fprofile-instr-generate)
endif()
