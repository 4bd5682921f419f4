# 32-bit Linux build of the library and the test suite with Debian's
# g++-multilib: proves the record layouts of a 32-bit build and that no
# result depends on the pointer size.
#
#   cmake -S . -B build-32 -G Ninja -DCMAKE_TOOLCHAIN_FILE=cmake/linux-i686.cmake \
#         -DCMAKE_BUILD_TYPE=Debug
#
# Debian's libgtest-dev is 64-bit only: a cross build compiles GoogleTest from
# /usr/src/googletest (INKDOT_GTEST_FROM_SOURCE is on by default then).
# scripts/test-32bit.sh installs what this needs and runs the suite.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)

set(CMAKE_C_COMPILER gcc)
set(CMAKE_CXX_COMPILER g++)
set(CMAKE_C_FLAGS_INIT "-m32")
set(CMAKE_CXX_FLAGS_INIT "-m32")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-m32")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-m32")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-m32")

# Libraries are looked for in the 32-bit multiarch directories.
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
