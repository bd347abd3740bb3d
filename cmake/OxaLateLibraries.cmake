# SPDX-License-Identifier: Apache-2.0
# OxaLateLibraries: which libraries the program loads when it calls them, and not at its start (tools/late).

# The name that programs linked with a shared library note; empty for a static one, and where it can't be found out.
function(oxa_soname result library)
  set(${result} "" PARENT_SCOPE)
  if(CMAKE_READELF AND EXISTS "${library}")
    execute_process(COMMAND "${CMAKE_READELF}" -d "${library}" OUTPUT_VARIABLE text ERROR_QUIET)
    if(text MATCHES "\\(SONAME\\)[^[]*\\[([^]]+)\\]")
      set(${result} "${CMAKE_MATCH_1}" PARENT_SCOPE)
    endif()
  endif()
endfunction()

# oxa_late_libraries(<target>): gives the program functions of the names of these libraries'.
function(oxa_late_libraries target)
  if(NOT OXA_LATE_LIBRARIES OR BUILD_SHARED_LIBS OR WIN32 OR APPLE)
    return()
  endif()
  oxa_soname(zip "${pkgcfg_lib_libzip_zip}")
  oxa_soname(xlsx "${pkgcfg_lib_xlsxwriter_xlsxwriter}")
  if(NOT zip OR NOT xlsx)
    message(STATUS "libzip and libxlsxwriter are linked with the program: no shared libraries of both")
    return()
  endif()
  set(folder "${PROJECT_SOURCE_DIR}/tools/late")
  add_library(Late OBJECT ${folder}/LateXlsx.cpp ${folder}/LateZip.cpp ${folder}/SystemLateLibrary.cpp)
  set_target_properties(Late PROPERTIES CXX_EXTENSIONS OFF OXA_ZIP "${zip}")
  target_include_directories(Late PRIVATE ${PROJECT_SOURCE_DIR}/tools
    $<TARGET_PROPERTY:PkgConfig::libzip,INTERFACE_INCLUDE_DIRECTORIES>
    $<TARGET_PROPERTY:PkgConfig::xlsxwriter,INTERFACE_INCLUDE_DIRECTORIES>)
  target_compile_definitions(Late PRIVATE OXA_LATE_ZIP="${zip}" OXA_LATE_XLSX="${xlsx}")
  target_link_libraries(Late PRIVATE OxaOptions)
  target_sources(${target} PRIVATE $<TARGET_OBJECTS:Late>)
  target_link_options(${target} PRIVATE LINKER:--as-needed)
  target_link_libraries(${target} PRIVATE ${CMAKE_DL_LIBS})
endfunction()
