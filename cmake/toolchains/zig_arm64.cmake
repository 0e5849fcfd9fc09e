# The clang of a Zig toolchain, with the C++ library and the MinGW-w64 headers that it brings. ZELMAR_KOR_ZIG, a variable
# of CMake or of the environment, names the compiler; scripts/test arm64-windows fetches one.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR ARM64)
if(NOT ZELMAR_KOR_ZIG)
  set(ZELMAR_KOR_ZIG $ENV{ZELMAR_KOR_ZIG})
endif()
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ZELMAR_KOR_ZIG)
set(CMAKE_CXX_COMPILER ${ZELMAR_KOR_ZIG} c++)
set(CMAKE_CXX_FLAGS_INIT "-target aarch64-windows-gnu")
include(${CMAKE_CURRENT_LIST_DIR}/cross_windows.cmake)
