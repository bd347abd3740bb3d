# SPDX-License-Identifier: Apache-2.0
# PkgConfig: compiles SOURCE with CXX and what PKG_CONFIG says of the MODULES in LIB, and runs the result, PROGRAM.
set(ENV{PKG_CONFIG_PATH} "${LIB}/pkgconfig")
separate_arguments(MODULES)
execute_process(COMMAND ${PKG_CONFIG} --cflags --libs ${MODULES}
  OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(flags UNIX_COMMAND "${flags}")
execute_process(COMMAND ${CXX} -std=c++20 ${SOURCE} -o ${PROGRAM} ${flags} -Wl,-rpath,${LIB}
  COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${PROGRAM} COMMAND_ERROR_IS_FATAL ANY)
