# SPDX-License-Identifier: Apache-2.0
# Arm64Toolchain: builds for Linux on 64-bit ARM with Debian's cross compiler; what is built runs here in an emulator.
# The libraries are those that scripts/arm64-libraries has unpacked.
#
# Usage    cmake --preset arm64
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)

get_filename_component(oxaRoot "${CMAKE_CURRENT_LIST_DIR}/../build/arm64-libraries" ABSOLUTE)
set(CMAKE_FIND_ROOT_PATH "${oxaRoot}" /usr/aarch64-linux-gnu)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# /usr/include is a folder that a compiler searches by itself: below another root it has to be said.
set(ENV{PKG_CONFIG_ALLOW_SYSTEM_CFLAGS} 1)
set(ENV{PKG_CONFIG_ALLOW_SYSTEM_LIBS} 1)
set(ENV{PKG_CONFIG_SYSROOT_DIR} "${oxaRoot}")
set(ENV{PKG_CONFIG_PATH} "")
set(ENV{PKG_CONFIG_LIBDIR} "${oxaRoot}/usr/lib/aarch64-linux-gnu/pkgconfig:${oxaRoot}/usr/share/pkgconfig")

# Libraries that a library needs: for the linker, and for the emulator.
set(oxaFolders "${oxaRoot}/usr/lib/aarch64-linux-gnu:${oxaRoot}/lib/aarch64-linux-gnu")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-Wl,-rpath-link,${oxaFolders}")
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L /usr/aarch64-linux-gnu -E "LD_LIBRARY_PATH=${oxaFolders}")
