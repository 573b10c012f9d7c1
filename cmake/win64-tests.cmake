# 64-bit Windows for the tests: GoogleTest needs the posix thread model. Programs run under Wine.
include(${CMAKE_CURRENT_LIST_DIR}/win64.cmake)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../scripts/wine)
