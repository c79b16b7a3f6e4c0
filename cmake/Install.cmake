# Installing the library: the shared library with its SONAME link (component "library"), and for
# developers (component "dev") the unversioned link, the header, a pkg-config file and a CMake
# package giving the imported target NorvaneMXRK7Setup::NorvaneMXRK7Setup. The components become
# the Debian packages (cmake/Packaging.cmake).
include(CMakePackageConfigHelpers)

install(TARGETS NorvaneMXRK7Setup EXPORT NorvaneMXRK7SetupTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT dev
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES ${PROJECT_SOURCE_DIR}/include/NorvaneMXRK7Setup.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev)

set(NVX_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/NorvaneMXRK7Setup)
install(EXPORT NorvaneMXRK7SetupTargets NAMESPACE NorvaneMXRK7Setup:: DESTINATION ${NVX_CMAKE_DIR} COMPONENT dev)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/package/NorvaneMXRK7SetupConfig.cmake.in
  ${PROJECT_BINARY_DIR}/NorvaneMXRK7SetupConfig.cmake INSTALL_DESTINATION ${NVX_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/NorvaneMXRK7SetupConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/NorvaneMXRK7SetupConfig.cmake
              ${PROJECT_BINARY_DIR}/NorvaneMXRK7SetupConfigVersion.cmake
        DESTINATION ${NVX_CMAKE_DIR} COMPONENT dev)

# Relocatable: the prefix is found from where the pkg-config file was installed.
file(RELATIVE_PATH NVX_PKGCONFIG_TO_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" NVX_PKGCONFIG_TO_PREFIX "${NVX_PKGCONFIG_TO_PREFIX}")
configure_file(${PROJECT_SOURCE_DIR}/cmake/package/NorvaneMXRK7Setup.pc.in
  ${PROJECT_BINARY_DIR}/NorvaneMXRK7Setup.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/NorvaneMXRK7Setup.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)
