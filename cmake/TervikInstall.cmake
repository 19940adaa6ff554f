# Installs the library, its headers, a CMake package (find_package(tervik), then
# target_link_libraries(x tervik::tervik)) and a pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS tervik EXPORT tervikTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/tervik DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES ${PROJECT_BINARY_DIR}/include/tervik/version.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tervik)

set(TERVIK_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/tervik)
install(EXPORT tervikTargets NAMESPACE tervik:: DESTINATION ${TERVIK_CMAKE_DIR})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/tervikConfig.cmake.in
  ${PROJECT_BINARY_DIR}/tervikConfig.cmake INSTALL_DESTINATION ${TERVIK_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tervikConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tervikConfig.cmake ${PROJECT_BINARY_DIR}/tervikConfigVersion.cmake
  DESTINATION ${TERVIK_CMAKE_DIR})

configure_file(${PROJECT_SOURCE_DIR}/cmake/tervik.pc.in ${PROJECT_BINARY_DIR}/tervik.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tervik.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
