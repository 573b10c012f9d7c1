# Windows, for the processor that the including toolchain file names. The win32 thread model needs no thread library
# beside the DLL.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR ${KEST_PROCESSOR})
set(CMAKE_C_COMPILER ${KEST_PROCESSOR}-w64-mingw32-gcc-win32)
set(CMAKE_CXX_COMPILER ${KEST_PROCESSOR}-w64-mingw32-g++-win32)
set(CMAKE_RC_COMPILER ${KEST_PROCESSOR}-w64-mingw32-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${KEST_PROCESSOR}-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++ -Wl,--no-insert-timestamp")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++ -Wl,--no-insert-timestamp")
