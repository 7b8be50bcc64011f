# cmake --install BUILD [--prefix DIR]: the programs, the runtime libraries, and the package for find_package(oz).
include(CMakePackageConfigHelpers)

set(package ${CMAKE_INSTALL_LIBDIR}/cmake/oz)
install(TARGETS oz ozgen ozpeer oztm lumenmat alginter algelink EXPORT ozTargets
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
if(TARGET zentrica)
  install(TARGETS zentrica EXPORT ozTargets ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
  install(DIRECTORY ${CMAKE_BINARY_DIR}/runtime/fortran/modules/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/oz/fortran)
endif()
install(EXPORT ozTargets NAMESPACE oz:: DESTINATION ${package})
install(DIRECTORY runtime/lumenmat/ runtime/alginter/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/oz
        FILES_MATCHING PATTERN "*.h")
install(FILES link/algelink.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/oz)
configure_package_config_file(cmake/ozConfig.cmake.in ${CMAKE_BINARY_DIR}/cmake/ozConfig.cmake
                              INSTALL_DESTINATION ${package})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/cmake/ozConfigVersion.cmake VERSION 1.0
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/cmake/ozConfig.cmake ${CMAKE_BINARY_DIR}/cmake/ozConfigVersion.cmake
              cmake/OzGenerate.cmake DESTINATION ${package})
