# 32-bit Windows.
set(KEST_PROCESSOR i686)
include(${CMAKE_CURRENT_LIST_DIR}/mingw.cmake)
