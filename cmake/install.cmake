# The library, its contract headers, a CMake package and a pkg-config file.
include(CMakePackageConfigHelpers)

set(ZELMAR_KOR_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/ZelmarKorBackendExtensions)

install(
  TARGETS ZelmarKorBackendExtensions zelmar_kor_headers
  EXPORT ZelmarKorBackendExtensionsTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/zelmar_kor DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
install(FILES include/zelmar_kor/config_schema.json DESTINATION ${CMAKE_INSTALL_DATADIR}/zelmar-kor)
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DATADIR}/zelmar-kor)
install(
  EXPORT ZelmarKorBackendExtensionsTargets
  NAMESPACE ZelmarKor::
  DESTINATION ${ZELMAR_KOR_CMAKE_DIR})

configure_package_config_file(
  cmake/ZelmarKorBackendExtensionsConfig.cmake.in
  ${PROJECT_BINARY_DIR}/ZelmarKorBackendExtensionsConfig.cmake INSTALL_DESTINATION ${ZELMAR_KOR_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/ZelmarKorBackendExtensionsConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/ZelmarKorBackendExtensionsConfig.cmake
              ${PROJECT_BINARY_DIR}/ZelmarKorBackendExtensionsConfigVersion.cmake
        DESTINATION ${ZELMAR_KOR_CMAKE_DIR})

# Relative to itself, so that an installation may be moved.
file(RELATIVE_PATH ZELMAR_KOR_PC_TO_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/zelmar-kor-backend-extensions.pc.in ${PROJECT_BINARY_DIR}/zelmar-kor-backend-extensions.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zelmar-kor-backend-extensions.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
