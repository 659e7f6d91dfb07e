# SPDX-License-Identifier: MIT
# Toolchain: builds for 32-bit x86 with Debian's cross compiler and i386 packages. A 64-bit x86 machine runs what is
# built by itself.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_CXX_COMPILER i686-linux-gnu-g++)
set(CMAKE_ASM_COMPILER i686-linux-gnu-g++)
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/i386-linux-gnu/pkgconfig:/usr/share/pkgconfig)
include(${CMAKE_CURRENT_LIST_DIR}/qt_host.cmake)
