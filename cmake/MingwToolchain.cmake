# SPDX-License-Identifier: Apache-2.0
# MingwToolchain: programs for 64-bit Windows from Debian's MinGW-w64, and Wine to run them.
#
# For      the preset "mingw", and the libraries that it links (mingw/CMakeLists.txt beside this file).
# Needs    scripts/setup --mingw; the libraries, which no cross package has, under build/mingw-libraries/root.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)   # "posix" has std::thread
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

get_filename_component(oxaSources "${CMAKE_CURRENT_LIST_DIR}/.." ABSOLUTE)
set(oxaRoot "${oxaSources}/build/mingw-libraries/root")
set(CMAKE_FIND_ROOT_PATH "${oxaRoot}" /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_LIBDIR} "${oxaRoot}/lib/pkgconfig")

# One file a program, which finds its runtime wherever it is put.
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)

set(CMAKE_CROSSCOMPILING_EMULATOR "${oxaSources}/scripts/wine")
