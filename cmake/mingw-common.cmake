# The part of the mingw-w64 toolchain files that does not depend on the
# target: set INKDOT_MINGW_TRIPLE and CMAKE_SYSTEM_PROCESSOR, then include this.
set(CMAKE_SYSTEM_NAME Windows)

# The posix thread model, so that std::thread and std::mutex exist for the tests;
# its winpthread runtime is linked in statically like the rest (below).
set(CMAKE_C_COMPILER ${INKDOT_MINGW_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${INKDOT_MINGW_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${INKDOT_MINGW_TRIPLE}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${INKDOT_MINGW_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# A driver loads inkdot.dll on its own: the C++ runtime, libgcc and winpthread
# are linked in, so the DLL imports nothing but system libraries.
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")

# ctest runs the Windows test programs under Wine when it is installed.
find_program(INKDOT_WINE wine)
if(INKDOT_WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${INKDOT_WINE})
endif()
