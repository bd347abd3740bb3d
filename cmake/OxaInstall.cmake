# SPDX-License-Identifier: Apache-2.0
# OxaInstall: what "cmake --install" puts where, and how find_package(OxaIfc CONFIG) and pkg-config find it.

include(CMakePackageConfigHelpers)
include(OxaPublicHeaders)

set(oxaLibraries Platform SchemaPset OxaIfc Model Compare Convert Check Tables)

# What a user of the libraries may have to find besides them, a row a target:
#   target | how CMake finds it | pkg-config module | link flags, where there is no such module
# A module that is missing is a reason for find_package to find nothing, not an end of the user's configuration.
set(oxaUserNeeds
  "Threads::Threads|find_dependency(Threads)||-pthread"
  "bcrypt|||-lbcrypt"
  "PkgConfig::libzip|oxaifc_find_module(libzip)|libzip|"
  "PkgConfig::pugixml|oxaifc_find_module(pugixml)|pugixml|"
  "PkgConfig::re2|oxaifc_find_module(re2)|re2|"
  "PkgConfig::sqlite3|oxaifc_find_module(sqlite3)|sqlite3|"
  "PkgConfig::xlsxwriter|oxaifc_find_module(xlsxwriter)|xlsxwriter|"
  "PkgConfig::zlib|oxaifc_find_module(zlib)|zlib|")

# oxa_is_header_only(<variable> <target>): whether linking the target adds nothing to a link line.
function(oxa_is_header_only variable target)
  set(${variable} FALSE PARENT_SCOPE)
  if(NOT TARGET ${target})
    return()
  endif()
  get_target_property(type ${target} TYPE)
  get_target_property(options ${target} INTERFACE_LINK_OPTIONS)
  get_target_property(libraries ${target} INTERFACE_LINK_LIBRARIES)
  if(NOT type STREQUAL "INTERFACE_LIBRARY" OR options)
    return()
  endif()
  if(libraries)
    foreach(library IN LISTS libraries)
      oxa_is_header_only(headerOnly "${library}")
      if(NOT headerOnly)
        return()
      endif()
    endforeach()
  endif()
  set(${variable} TRUE PARENT_SCOPE)
endfunction()

# oxa_take_external_links(<variable> <target>): appends the third-party targets that a user of <target> links.
# A header-only library that only the sources of <target> use is taken out of its interface: the user need
# not have it.
function(oxa_take_external_links variable target)
  set(external ${${variable}})
  set(kept)
  get_target_property(links ${target} INTERFACE_LINK_LIBRARIES)
  foreach(link IN LISTS links)
    string(REGEX REPLACE "^\\$<LINK_ONLY:(.*)>$" "\\1" library "${link}")
    if(NOT library STREQUAL link)
      oxa_is_header_only(headerOnly "${library}")
      if(headerOnly)
        continue()
      endif()
    endif()
    list(APPEND kept "${link}")
    string(REGEX REPLACE "^OxaIfc::" "" own "${library}")
    if(library AND NOT library MATCHES "^\\$<BUILD_INTERFACE:" AND NOT own IN_LIST oxaLibraries)
      list(APPEND external "${library}")
    endif()
  endforeach()
  set_target_properties(${target} PROPERTIES INTERFACE_LINK_LIBRARIES "${kept}")
  list(REMOVE_DUPLICATES external)
  set(${variable} ${external} PARENT_SCOPE)
endfunction()

set(oxaExternal)
foreach(library IN LISTS oxaLibraries)
  oxa_take_external_links(oxaExternal ${library})
endforeach()

set(OXA_FIND_DEPENDENCIES)
set(OXA_PC_REQUIRES)
set(OXA_PC_LIBS)
foreach(external IN LISTS oxaExternal)
  set(row ${oxaUserNeeds})
  list(FILTER row INCLUDE REGEX "^${external}\\|")
  if(NOT row)
    message(FATAL_ERROR "Users of the libraries have to link ${external}: give it a row in cmake/OxaInstall.cmake")
  endif()
  string(REPLACE "|" ";" row "${row}")
  list(GET row 1 find)
  list(GET row 2 module)
  list(GET row 3 flags)
  string(APPEND OXA_FIND_DEPENDENCIES "${find}\n")
  string(APPEND OXA_PC_REQUIRES " ${module}")
  string(APPEND OXA_PC_LIBS " ${flags}")
endforeach()

# The libraries, the program and the headers.

set_target_properties(${oxaLibraries} PROPERTIES INSTALL_RPATH "$ORIGIN")
set(oxaInstalled ${oxaLibraries})
if(TARGET oxaifc)
  list(APPEND oxaInstalled oxaifc)
  # With static libraries there is nothing to look for, and in the build folder CMake would keep room for the path by
  # colons: empty places, which the loader takes for the current folder.
  if(BUILD_SHARED_LIBS)
    file(RELATIVE_PATH oxaLibrariesFromProgram "/${CMAKE_INSTALL_BINDIR}" "/${CMAKE_INSTALL_LIBDIR}")
    set_target_properties(oxaifc PROPERTIES INSTALL_RPATH "$ORIGIN/${oxaLibrariesFromProgram}")
  endif()
endif()

install(TARGETS ${oxaInstalled} EXPORT OxaIfcTargets
  RUNTIME COMPONENT OxaIfc_Runtime
  LIBRARY COMPONENT OxaIfc_Runtime NAMELINK_COMPONENT OxaIfc_Development
  ARCHIVE COMPONENT OxaIfc_Development)

foreach(header IN LISTS OXA_PUBLIC_HEADERS)
  get_filename_component(folder "${header}" DIRECTORY)
  install(FILES "${PROJECT_SOURCE_DIR}/src/${header}" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/oxaifc/${folder}"
    COMPONENT OxaIfc_Development)
endforeach()

install(FILES LICENSE README.md CHANGELOG.md DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/doc/oxaifc"
  COMPONENT OxaIfc_Runtime)

# The package for CMake.

set(oxaConfigFolder "${CMAKE_INSTALL_LIBDIR}/cmake/OxaIfc")
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/OxaIfcConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/OxaIfcConfig.cmake" INSTALL_DESTINATION "${oxaConfigFolder}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/OxaIfcConfigVersion.cmake"
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/OxaIfcConfig.cmake" "${PROJECT_BINARY_DIR}/OxaIfcConfigVersion.cmake"
  DESTINATION "${oxaConfigFolder}" COMPONENT OxaIfc_Development)
install(EXPORT OxaIfcTargets NAMESPACE OxaIfc:: DESTINATION "${oxaConfigFolder}" COMPONENT OxaIfc_Development)

# The package for pkg-config. It finds its prefix from its own place, so the tree may be moved.

if(BUILD_SHARED_LIBS)
  set(OXA_PC_DEFINES)
  set(OXA_PC_REQUIRES)
  set(OXA_PC_LIBS)
else()
  set(OXA_PC_DEFINES "-DOXA_STATIC")
endif()
file(RELATIVE_PATH OXA_PC_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
configure_file("${PROJECT_SOURCE_DIR}/cmake/OxaIfc.pc.in" "${PROJECT_BINARY_DIR}/OxaIfc.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/OxaIfc.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
  COMPONENT OxaIfc_Development)
# Each library on the core has a module of its own, which brings that one.
foreach(OXA_PC_PART IN ITEMS Model Compare Convert Check Tables)
  set(OXA_PC_PART_NEEDS)
  if(NOT OXA_PC_PART STREQUAL "Model")   # which the others stand on
    set(OXA_PC_PART_NEEDS "OxaIfcModel = ${PROJECT_VERSION} ")
  endif()
  if(OXA_PC_PART STREQUAL "Convert")   # a merge compares
    string(PREPEND OXA_PC_PART_NEEDS "OxaIfcCompare = ${PROJECT_VERSION} ")
  endif()
  configure_file("${PROJECT_SOURCE_DIR}/cmake/OxaIfcPart.pc.in" "${PROJECT_BINARY_DIR}/OxaIfc${OXA_PC_PART}.pc" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/OxaIfc${OXA_PC_PART}.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
    COMPONENT OxaIfc_Development)
endforeach()
