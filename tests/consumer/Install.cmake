# SPDX-License-Identifier: Apache-2.0
# Install: installs the build in BUILD under PREFIX, and nothing left there from before.
file(REMOVE_RECURSE "${PREFIX}")
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --config ${CONFIG} --prefix ${PREFIX}
  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
foreach(file LICENSE README.md CHANGELOG.md)
  if(NOT EXISTS "${PREFIX}/share/doc/oxaifc/${file}")
    message(FATAL_ERROR "${file} is not installed")
  endif()
endforeach()
