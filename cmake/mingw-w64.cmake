# Cross compilation for Windows with mingw-w64, with the packages of the cross compiler.
set(CMAKE_SYSTEM_NAME Windows)
set(SORRELIN_WINDOWS_PROCESSOR x86_64 CACHE STRING "x86_64 or i686")
set(SORRELIN_WINDOWS_PARTS "" CACHE PATH "Where scripts/windows_parts.sh put libraries for Windows")
# Test projects of a configuration read this file anew.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES SORRELIN_WINDOWS_PROCESSOR SORRELIN_WINDOWS_PARTS)
set(CMAKE_SYSTEM_PROCESSOR ${SORRELIN_WINDOWS_PROCESSOR})
set(triplet ${SORRELIN_WINDOWS_PROCESSOR}-w64-mingw32)
# The compilers whose library has threads.
set(CMAKE_C_COMPILER ${triplet}-gcc-posix)
set(CMAKE_CXX_COMPILER ${triplet}-g++-posix)
set(CMAKE_RC_COMPILER ${triplet}-windres)

set(CMAKE_FIND_ROOT_PATH ${SORRELIN_WINDOWS_PARTS} /usr/${triplet})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Everything is linked statically, so a library's own needs count.
set(ENV{PKG_CONFIG_LIBDIR}
  ${SORRELIN_WINDOWS_PARTS}/lib/pkgconfig:${SORRELIN_WINDOWS_PARTS}/share/pkgconfig:/usr/${triplet}/lib/pkgconfig)
set(PKG_CONFIG_ARGN --static)

find_program(SORRELIN_WINE wine)
if(SORRELIN_WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${SORRELIN_WINE})
endif()
