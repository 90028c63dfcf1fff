# The telephone's processor: 32-bit ARM with hardware floating point. Unit tests run under user-mode emulation.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)

# Libraries beyond the compiler's own come from a private folder, never from the building machine.
set(ORVANE_ARM_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/arm-sysroot CACHE PATH "32-bit ARM libraries")
get_filename_component(ORVANE_ARM_SYSROOT ${ORVANE_ARM_SYSROOT} ABSOLUTE)
set(CMAKE_FIND_ROOT_PATH ${ORVANE_ARM_SYSROOT})
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)
set(ENV{PKG_CONFIG_LIBDIR} ${ORVANE_ARM_SYSROOT}/usr/lib/arm-linux-gnueabihf/pkgconfig)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${ORVANE_ARM_SYSROOT})

# 64-bit file offsets and times: the library works beyond 2038, and so does a consumer of its headers. The ABI notes concern compilers before GCC 7.
set(CMAKE_CXX_FLAGS_INIT "-D_FILE_OFFSET_BITS=64 -D_TIME_BITS=64 -Wno-psabi -I${ORVANE_ARM_SYSROOT}/usr/include")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-L${ORVANE_ARM_SYSROOT}/usr/lib/arm-linux-gnueabihf")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-L${ORVANE_ARM_SYSROOT}/usr/lib/arm-linux-gnueabihf")

find_program(ORVANE_ARM_EMULATOR qemu-arm-static)
set(CMAKE_CROSSCOMPILING_EMULATOR
    ${ORVANE_ARM_EMULATOR};-L;/usr/arm-linux-gnueabihf;-E;LD_LIBRARY_PATH=${ORVANE_ARM_SYSROOT}/usr/lib/arm-linux-gnueabihf)
