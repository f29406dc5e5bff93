# What `cmake --install` puts where: the shared library with its SONAME
# links, the public headers, the vetra command, a CMake package (the target
# vetra::vetra for find_package(vetra CONFIG)) and a pkg-config file.
# Every path is relative to the prefix, so an installed tree can be moved.
include(CMakePackageConfigHelpers)

set(VETRA_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/vetra)

install(TARGETS vetra EXPORT vetraTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime
    NAMELINK_COMPONENT development
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/vetra
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
if(TARGET vetra_cli)
  install(TARGETS vetra_cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
endif()

install(EXPORT vetraTargets NAMESPACE vetra:: DESTINATION ${VETRA_CMAKE_DIR}
  COMPONENT development)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/vetraConfig.cmake.in
  ${PROJECT_BINARY_DIR}/vetraConfig.cmake INSTALL_DESTINATION ${VETRA_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vetraConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vetraConfig.cmake ${PROJECT_BINARY_DIR}/vetraConfigVersion.cmake
  DESTINATION ${VETRA_CMAKE_DIR} COMPONENT development)

# pkg-config finds the prefix from where the .pc file lies (${pcfiledir}).
file(RELATIVE_PATH VETRA_PC_TO_PREFIX
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" VETRA_PC_TO_PREFIX "${VETRA_PC_TO_PREFIX}")
configure_file(${CMAKE_CURRENT_LIST_DIR}/vetra.pc.in ${PROJECT_BINARY_DIR}/vetra.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/vetra.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
