# Cross-compiling for 64-bit ARM Linux on a Debian 12 x86-64 machine, with Debian's own cross
# compiler (g++-aarch64-linux-gnu) and its multiarch libraries (libicu-dev:arm64 and the like,
# after `dpkg --add-architecture arm64`):
#   cmake -S . -B build-arm --toolchain cmake/aarch64-linux-gnu.cmake
# The tests run under Debian's user-mode emulator (qemu-user): ctest prefixes every test program
# with it, and the tests that start fmsim go through a small wrapper script that does the same.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

# Multiarch: the target's libraries live in /usr/lib/aarch64-linux-gnu beside the machine's own,
# and headers that are not architecture-specific are shared in /usr/include.
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(ENV{PKG_CONFIG_LIBDIR} "/usr/lib/aarch64-linux-gnu/pkgconfig:/usr/share/pkgconfig")

# The emulator finds the target's loader and libraries in their multiarch places.
find_program(RAVELIN_QEMU_AARCH64 qemu-aarch64)
if(RAVELIN_QEMU_AARCH64)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${RAVELIN_QEMU_AARCH64})
endif()
