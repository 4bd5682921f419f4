# Cross build of the 32-bit Windows library, inkdot.dll, with Debian's mingw-w64
# toolchain (packages g++-mingw-w64-i686, binutils-mingw-w64-i686):
#
#   cmake -S . -B build/win32 -G Ninja -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-i686.cmake \
#         -DCMAKE_BUILD_TYPE=Release
#   cmake --build build/win32
#
# scripts/build-dll.sh does exactly this and checks the export table. The test
# suite is built too, with GoogleTest compiled from /usr/src/googletest by the
# same toolchain (INKDOT_GTEST_FROM_SOURCE is on by default in a cross build).
set(CMAKE_SYSTEM_PROCESSOR i686)
set(INKDOT_MINGW_TRIPLE i686-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-common.cmake)
