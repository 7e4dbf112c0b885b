# Cross build for the phones' 32-bit ARM (armhf) with Debian's cross compiler,
# against the sysroot that scripts/cross-armhf.sh extracts under build/.
# Tests run through qemu-arm (user-mode emulation) with the sysroot as the
# library root, so nothing has to be registered with the kernel.
#
#   cmake -S . -B build/armhf -G Ninja -DCMAKE_TOOLCHAIN_FILE=cmake/armhf-toolchain.cmake
#
# TGUI_ARMHF_SYSROOT (cache or environment) points elsewhere than build/armhf-sysroot.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)

if(NOT TGUI_ARMHF_SYSROOT)
  if(DEFINED ENV{TGUI_ARMHF_SYSROOT})
    set(TGUI_ARMHF_SYSROOT "$ENV{TGUI_ARMHF_SYSROOT}")
  else()
    get_filename_component(TGUI_ARMHF_SYSROOT "${CMAKE_CURRENT_LIST_DIR}/../build/armhf-sysroot"
                           ABSOLUTE)
  endif()
endif()
if(NOT EXISTS "${TGUI_ARMHF_SYSROOT}/usr/include/arm-linux-gnueabihf/qt5/QtCore")
  message(FATAL_ERROR "No armhf sysroot at ${TGUI_ARMHF_SYSROOT}: run scripts/cross-armhf.sh")
endif()
# try_compile projects read this file again and must find the same sysroot.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TGUI_ARMHF_SYSROOT)

set(CMAKE_SYSROOT "${TGUI_ARMHF_SYSROOT}")
set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)

# Headers, libraries and CMake packages from the sysroot only; programs
# (pkg-config, moc, rcc) from the host.
set(CMAKE_FIND_ROOT_PATH "${TGUI_ARMHF_SYSROOT}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# pkg-config (duktape) reads the sysroot's .pc files and prefixes their paths.
set(ENV{PKG_CONFIG_SYSROOT_DIR} "${TGUI_ARMHF_SYSROOT}")
set(ENV{PKG_CONFIG_LIBDIR}
    "${TGUI_ARMHF_SYSROOT}/usr/lib/arm-linux-gnueabihf/pkgconfig:${TGUI_ARMHF_SYSROOT}/usr/share/pkgconfig")
unset(ENV{PKG_CONFIG_PATH})

# qemu-arm runs under a small host program that keeps QtCore's child-process
# code on a path user-mode emulation supports (see cmake/armhf-emulator.c: without
# it QProcess fails and may signal every process). Built once per sysroot.
set(TGUI_ARMHF_EMULATOR "${TGUI_ARMHF_SYSROOT}/.tgui/armhf-emulator")
set(_tgui_emulator_source "${CMAKE_CURRENT_LIST_DIR}/armhf-emulator.c")
if(NOT EXISTS "${TGUI_ARMHF_EMULATOR}" OR "${_tgui_emulator_source}" IS_NEWER_THAN "${TGUI_ARMHF_EMULATOR}")
  find_program(TGUI_HOST_CC NAMES clang cc gcc NO_CMAKE_FIND_ROOT_PATH)
  file(MAKE_DIRECTORY "${TGUI_ARMHF_SYSROOT}/.tgui")
  execute_process(COMMAND "${TGUI_HOST_CC}" -O2 -Wall -o "${TGUI_ARMHF_EMULATOR}" "${_tgui_emulator_source}"
                  RESULT_VARIABLE _tgui_emulator_result)
  if(NOT _tgui_emulator_result EQUAL 0)
    message(FATAL_ERROR "cannot build ${TGUI_ARMHF_EMULATOR} with '${TGUI_HOST_CC}'")
  endif()
endif()
set(CMAKE_CROSSCOMPILING_EMULATOR "${TGUI_ARMHF_EMULATOR}" qemu-arm -L "${TGUI_ARMHF_SYSROOT}")

# The sysroot's Qt packages name ARM builds of moc and rcc; the host's tools of
# the same Qt version take their place before find_package(Qt5) runs.
set(CMAKE_PROJECT_INCLUDE "${CMAKE_CURRENT_LIST_DIR}/armhf-hosttools.cmake")
