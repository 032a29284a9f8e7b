# What the toolchain files beside this one have in common: GNU compilers named after the machine, and its own
# headers and libraries in PVR_SYSROOT. They set triplet and emulator.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_C_COMPILER ${triplet}-gcc)
set(CMAKE_CXX_COMPILER ${triplet}-g++)

set(PVR_SYSROOT "" CACHE PATH "The device's headers and libraries; the compiler's own if empty")
# What CMake tries to compile reads this file as well.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES PVR_SYSROOT)

if(PVR_SYSROOT)
    set(CMAKE_SYSROOT ${PVR_SYSROOT})
    # pkg-config is the building machine's, and must not find that machine's libraries.
    set(ENV{PKG_CONFIG_SYSROOT_DIR} ${PVR_SYSROOT})
    set(ENV{PKG_CONFIG_LIBDIR}
        ${PVR_SYSROOT}/usr/lib/${triplet}/pkgconfig:${PVR_SYSROOT}/usr/lib/pkgconfig:${PVR_SYSROOT}/usr/share/pkgconfig)
    set(ENV{PKG_CONFIG_PATH} "")
endif()

# Programs that run during the build are the building machine's: gdbus-codegen, msgfmt, Python.
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Tests run in the emulator, if there is one.
find_program(PVR_EMULATOR ${emulator})
if(PVR_EMULATOR)
    set(CMAKE_CROSSCOMPILING_EMULATOR ${PVR_EMULATOR})
    if(PVR_SYSROOT)
        list(APPEND CMAKE_CROSSCOMPILING_EMULATOR -L ${PVR_SYSROOT})
    endif()
endif()
