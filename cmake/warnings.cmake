# Every target of the project links zelmar_kor_warnings: the house's warnings, as errors.
option(ZELMAR_KOR_WERROR "Treat warnings as errors" ON)

add_library(zelmar_kor_warnings INTERFACE)
target_compile_options(
  zelmar_kor_warnings
  INTERFACE
    $<$<CXX_COMPILER_ID:GNU,Clang>:-Wall;-Wextra;-Wpedantic;-Wconversion;-Wshadow;-Wformat=2;-Wno-format-nonliteral>
    # g++ 12 warns falsely of joined std::strings.
    $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>
    $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>
    $<$<AND:$<CXX_COMPILER_ID:GNU,Clang>,$<BOOL:${ZELMAR_KOR_WERROR}>>:-Werror>)
