include(${CMAKE_CURRENT_LIST_DIR}/host_headers.cmake)
zelmar_kor_host_headers(fmt::fmt fmt)
target_compile_definitions(fmt::fmt INTERFACE FMT_HEADER_ONLY)
set(fmt_FOUND TRUE)
