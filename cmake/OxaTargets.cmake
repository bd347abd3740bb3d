# SPDX-License-Identifier: Apache-2.0
# OxaTargets: the few helpers with which every folder declares its targets.

include(GNUInstallDirs)

add_library(OxaOptions INTERFACE)
target_compile_features(OxaOptions INTERFACE cxx_std_20)
if(MSVC)   # cl, and clang-cl, which takes the same words
  # The standard's rules, UTF-8 in sources and literals, and objects with more sections than templates leave it.
  target_compile_options(OxaOptions INTERFACE /W4 /permissive- /utf-8 /Zc:__cplusplus /bigobj
    # Members of the standard library in exported classes: the libraries and their users are built by one compiler.
    /wd4251 /wd4275
    # Room left on purpose in classes whose members threads write apart from each other.
    /wd4324
    $<$<BOOL:${OXA_WARNINGS_AS_ERRORS}>:/WX>)
  # fopen and getenv are standard C++; the functions named in their stead are not.
  target_compile_definitions(OxaOptions INTERFACE _CRT_SECURE_NO_WARNINGS)
else()
  target_compile_options(OxaOptions INTERFACE
    $<$<CXX_COMPILER_ID:GNU,Clang,AppleClang>:-Wall;-Wextra;-Wpedantic;-Wconversion;-Wshadow>
    # g++ 12 sees overlapping copies in std::string and unset members in JSON values that are none (fixed in 13).
    $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict;-Wno-maybe-uninitialized>
    $<$<AND:$<BOOL:${OXA_WARNINGS_AS_ERRORS}>,$<CXX_COMPILER_ID:GNU,Clang,AppleClang>>:-Werror>)
  if(NOT CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|amd64)$")
    # A product is rounded before it is added to, as on x86-64: a file gives the same numbers on every machine.
    target_compile_options(OxaOptions INTERFACE -ffp-contract=off)
  endif()
endif()

# A switch over an enumeration names each enumerator, with a default or without: who adds a class of cell, a kind of type
# or an item type is shown every place that has to know it. For the libraries and the program; a source that switches
# over another library's enumeration, or over one as long as a grammar, is left out by OXA_PARTIAL_SWITCHES.
add_library(OxaWholeSwitches INTERFACE)
target_compile_options(OxaWholeSwitches INTERFACE $<$<CXX_COMPILER_ID:GNU,Clang,AppleClang>:-Werror=switch-enum>)
set(OXA_PARTIAL_SWITCHES $<$<CXX_COMPILER_ID:GNU,Clang,AppleClang>:-Wno-switch-enum>)

# oxa_library(<target> <output name> <macro>): a library with hidden visibility and versioned name.
# <macro> is defined while the library itself is compiled. Sources are added with target_sources, listed.
function(oxa_library target output macro)
  add_library(${target})
  add_library(OxaIfc::${target} ALIAS ${target})
  set_target_properties(${target} PROPERTIES
    OUTPUT_NAME ${output} VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}
    CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON POSITION_INDEPENDENT_CODE ON
    CXX_EXTENSIONS OFF)
  target_compile_features(${target} PUBLIC cxx_std_20)
  target_compile_definitions(${target} PRIVATE ${macro})
  if(NOT BUILD_SHARED_LIBS)
    target_compile_definitions(${target} PUBLIC OXA_STATIC)
  endif()
  target_include_directories(${target} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/src> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/oxaifc>)
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:OxaOptions> $<BUILD_INTERFACE:OxaWholeSwitches>)
endfunction()

# All test programs with the label "threads".
add_custom_target(oxa_thread_tests)

# oxa_test(<name> SOURCES <file>... LIBS <target>... [LABELS <label>...]): one GoogleTest program; each test is a
# ctest entry. Two labels mean something to scripts/test: "threads" has the program run under ThreadSanitizer
# too, "slow" keeps it out of the AddressSanitizer run.
function(oxa_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS;LABELS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  set_target_properties(${name} PROPERTIES CXX_EXTENSIONS OFF)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(${name} PRIVATE OxaOptions TestSystem ${ARG_LIBS} GTest::gmock GTest::gtest_main)
  target_compile_definitions(${name} PRIVATE OXA_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
  # What is tested is optimised; the test itself runs once. With sanitizers it would take two to three times as long to
  # compile.
  if((CMAKE_BUILD_TYPE STREQUAL "Release" OR OXA_SANITIZE) AND CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    target_compile_options(${name} PRIVATE -O0)
  endif()
  if(OXA_UNITY_TESTS)
    set_target_properties(${name} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 16)
    # g++ takes the sources for headers then, where a fixture in an unnamed namespace would be wrong.
    target_compile_options(${name} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
  endif()
  if("threads" IN_LIST ARG_LABELS)
    add_dependencies(oxa_thread_tests ${name})
  endif()
  set(properties TIMEOUT 600)
  if(ARG_LABELS)
    list(APPEND properties LABELS "${ARG_LABELS}")
  endif()
  if(CMAKE_CROSSCOMPILING)   # each start of an emulator costs more than most tests: one entry for all of a program
    add_test(NAME ${name} COMMAND ${name} --gtest_brief=1)
    set_tests_properties(${name} PROPERTIES TIMEOUT 600 LABELS "${ARG_LABELS}")
  else()
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 PROPERTIES ${properties})
  endif()
endfunction()

# oxa_benchmark(<name> SOURCES <file>... LIBS <target>... TRIAL <argument>...): one program that prints a table. With
# the tests it runs briefly, with the trial's arguments, so that it does not rot; figures come from running it by hand.
function(oxa_benchmark name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS;TRIAL" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  set_target_properties(${name} PROPERTIES CXX_EXTENSIONS OFF)
  target_link_libraries(${name} PRIVATE OxaOptions ${ARG_LIBS})
  if(OXA_BUILD_TESTS)
    add_test(NAME Benchmark.${name} COMMAND ${name} ${ARG_TRIAL})
    set_tests_properties(Benchmark.${name} PROPERTIES TIMEOUT 300)
  endif()
endfunction()
