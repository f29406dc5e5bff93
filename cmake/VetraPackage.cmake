# `cpack -G DEB` in a tree configured with -DCMAKE_INSTALL_PREFIX=/usr makes
# one Debian package holding the library, its headers, the CMake and
# pkg-config files and the vetra command. tools/test-install.sh does that.
set(CPACK_PACKAGE_NAME vetra)
set(CPACK_PACKAGE_VENDOR "the vetra developers")
set(CPACK_PACKAGE_CONTACT "vetra maintainers <maintainers@example.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_STRIP_FILES ON)
include(CPack)
