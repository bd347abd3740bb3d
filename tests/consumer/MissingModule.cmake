# SPDX-License-Identifier: Apache-2.0
# MissingModule: configures the project in SOURCE in a new folder BUILD, where pkg-config finds nothing.
file(REMOVE_RECURSE "${BUILD}")
set(ENV{PKG_CONFIG_LIBDIR} "${BUILD}/none")
set(ENV{PKG_CONFIG_PATH} "")
execute_process(COMMAND ${CMAKE_COMMAND} -S ${SOURCE} -B ${BUILD} -G ${GENERATOR} -D CMAKE_PREFIX_PATH=${PREFIX}
    -D CMAKE_CXX_COMPILER=${CXX}
  OUTPUT_VARIABLE output ERROR_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
if(NOT output MATCHES "it goes on: OxaIfc needs [a-z]+, which pkg-config does not find")
  message(FATAL_ERROR "${output}")
endif()
