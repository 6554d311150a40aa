# Cross-build for the controller's 32-bit ARM (armhf) with Debian's cross compiler, against the
# sysroot that scripts/install-armhf-deps.sh unpacks, running test programs under qemu-arm-static.
#
# No -D_TIME_BITS=64: the armhf Boost libraries were built with the 32-bit time_t, and Boost's
# timed waits misbehave when the two disagree.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)

set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
# Silences the ARM notes that the passing of some types changed in GCC 7.1: everything here,
# libraries included, is built with one compiler.
set(CMAKE_CXX_FLAGS_INIT "-Wno-psabi")

if(DEFINED ENV{ARMHF_SYSROOT})
  set(TAV_ARMHF_SYSROOT $ENV{ARMHF_SYSROOT} CACHE PATH "armhf sysroot")
else()
  set(TAV_ARMHF_SYSROOT /opt/tav-armhf-sysroot CACHE PATH "armhf sysroot")
endif()
set(CMAKE_SYSROOT ${TAV_ARMHF_SYSROOT})
set(CMAKE_FIND_ROOT_PATH ${TAV_ARMHF_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# log4cplus is found through pkg-config: only the sysroot's .pc files, with paths inside it.
set(ENV{PKG_CONFIG_DIR} "")
set(ENV{PKG_CONFIG_LIBDIR}
  "${TAV_ARMHF_SYSROOT}/usr/lib/arm-linux-gnueabihf/pkgconfig:${TAV_ARMHF_SYSROOT}/usr/share/pkgconfig")
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${TAV_ARMHF_SYSROOT})

# The programs' loader and libraries come from the sysroot (QEMU_LD_PREFIX is qemu's -L).
# CTest and gtest_discover_tests run every test program through this.
set(CMAKE_CROSSCOMPILING_EMULATOR env QEMU_LD_PREFIX=${TAV_ARMHF_SYSROOT} qemu-arm-static)
