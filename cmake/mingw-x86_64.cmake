# Cross build for 64-bit Windows with Debian's mingw-w64 toolchain (packages
# g++-mingw-w64-x86-64-posix, binutils-mingw-w64-x86-64). The library a driver
# loads is the 32-bit one (mingw-i686.cmake); this build runs the same suite
# with the Windows platform layer under a 64-bit Wine, which needs no 32-bit
# support from the machine:
#
#   cmake -S . -B build/win64 -G Ninja -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-x86_64.cmake \
#         -DCMAKE_BUILD_TYPE=Release
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(INKDOT_MINGW_TRIPLE x86_64-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-common.cmake)
