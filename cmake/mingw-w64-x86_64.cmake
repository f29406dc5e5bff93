# Cross-compiling vetra for 64-bit Windows with mingw-w64 (the posix thread
# variant, for std::thread and std::mutex), linked statically against its
# runtime so that the programs run without copying DLLs beside them. Wine
# runs them, so plain ctest works: tools/test-windows.sh uses this file, and
# sets WINEPREFIX and WINEDEBUG for the runs.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY BOTH)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE BOTH)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")
find_program(VETRA_WINE NAMES wine wine64 REQUIRED)
set(CMAKE_CROSSCOMPILING_EMULATOR ${VETRA_WINE})
# Test programs list their tests when ctest starts, not after each link: under
# Wine every run costs a second or so.
set(CMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE PRE_TEST)
