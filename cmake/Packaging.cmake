# Debian packages, one per install component, named as Debian names them:
#
#   component  package                    holds
#   library    libnorvanemxrk7setup1      the shared library (the name follows its SONAME)
#   data       mxrk7-data                 share/mxrk7: the bundle, the version files, the demo mixers
#   dev        libnorvanemxrk7setup-dev   the header, pkg-config file, CMake package, the .so link
#   doc        libnorvanemxrk7setup-doc   the API reference (when it is built)
#   tool       mxrk7                      the tool, udev rule, user unit, manual page, completion
#   app        mxrk7-setup                the desktop application
#
# The library, the tool and the application all read the data folder, and it must be of their own
# version: each depends on mxrk7-data at the exact version. The tool and the application carry the
# library's code themselves (linked statically), so nothing else makes them depend on it. The
# application depends on the tool for the udev rule that gives the user access to the mixer.
#
# Build them with `cmake --workflow --preset package` (docs/packaging.md); the packages land in
# build/package/. They are made only in a tree configured for the prefix /usr (the package preset
# does so), where GNUInstallDirs chooses the multiarch library folder.

set(NVX_DEB_SOURCE norvane-mxrk7-setup)
set(NVX_DEB_LIBRARY libnorvanemxrk7setup${PROJECT_VERSION_MAJOR})
set(NVX_DEB_DATA mxrk7-data)
set(NVX_DEB_DEV libnorvanemxrk7setup-dev)
set(NVX_DEB_DOC libnorvanemxrk7setup-doc)
set(NVX_DEB_TOOL mxrk7)
set(NVX_DEB_APP mxrk7-setup)
set(NVX_DEB_PACKAGE_DIR ${PROJECT_SOURCE_DIR}/cmake/package)

# Every package carries the licence and the changelog in /usr/share/doc/<package>/. The changelog's
# newest entry must name this version.
file(STRINGS ${NVX_DEB_PACKAGE_DIR}/changelog NVX_DEB_CHANGELOG_TOP LIMIT_COUNT 1)
if(NOT NVX_DEB_CHANGELOG_TOP MATCHES "^${NVX_DEB_SOURCE} \\(${PROJECT_VERSION}\\) ")
  message(FATAL_ERROR "cmake/package/changelog: the newest entry is \"${NVX_DEB_CHANGELOG_TOP}\", "
                      "not ${NVX_DEB_SOURCE} (${PROJECT_VERSION}): add an entry for this version")
endif()
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${NVX_DEB_PACKAGE_DIR}/changelog)
set(NVX_DEB_CHANGELOG_GZ ${PROJECT_BINARY_DIR}/package-docs/changelog.gz)
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/package-docs)
execute_process(COMMAND gzip -9 -n -c ${NVX_DEB_PACKAGE_DIR}/changelog OUTPUT_FILE ${NVX_DEB_CHANGELOG_GZ}
                RESULT_VARIABLE NVX_GZIP_RESULT)
if(NOT NVX_GZIP_RESULT EQUAL 0)
  message(FATAL_ERROR "gzip failed on cmake/package/changelog")
endif()

set(NVX_DEB_COMPONENTS library data dev tool)
if(TARGET mxrk7-setup)
  list(APPEND NVX_DEB_COMPONENTS app)
endif()
if(TARGET api-reference)
  list(APPEND NVX_DEB_COMPONENTS doc)
endif()
foreach(component ${NVX_DEB_COMPONENTS})
  string(TOUPPER ${component} upper)
  install(FILES ${NVX_DEB_PACKAGE_DIR}/copyright ${NVX_DEB_CHANGELOG_GZ}
          DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${NVX_DEB_${upper}} COMPONENT ${component})
endforeach()

if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  message(STATUS "Debian packages: not in this tree (its prefix is ${CMAKE_INSTALL_PREFIX}); "
                 "use cmake --workflow --preset package")
  return()
endif()

set(CPACK_GENERATOR "DEB")
set(CPACK_PACKAGE_NAME ${NVX_DEB_SOURCE})
set(CPACK_PACKAGE_VENDOR "Norvane")
set(CPACK_PACKAGE_CONTACT "Norvane <support@norvane.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
# Installed below a staging folder with DESTDIR, so that files written at install time (the user
# unit names the tool) see the real prefix.
set(CPACK_SET_DESTDIR ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL ${NVX_DEB_COMPONENTS})
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE ${NVX_DEB_SOURCE})
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(NVX_DEB_EXACT "(= ${PROJECT_VERSION})")

# Descriptions: the synopsis, then the extended description (lines of at most 80 characters).
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${NVX_DEB_LIBRARY})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_DEPENDS "${NVX_DEB_DATA} ${NVX_DEB_EXACT}")
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION "settings library of the MXR-K7 USB DJ mixer
NorvaneMXRK7Setup reads and changes the configuration of MXR-K7 mixers over
USB through a plain C interface, remembers every setting in a per-user file,
and tells programs about changes made by other processes.
.
This package holds the shared library.")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
# The symbols file lists every exported name with the version that brought it; the ldconfig trigger
# refreshes the loader's cache.
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA "${NVX_DEB_PACKAGE_DIR}/symbols;${NVX_DEB_PACKAGE_DIR}/triggers")

set(CPACK_DEBIAN_DATA_PACKAGE_NAME ${NVX_DEB_DATA})
set(CPACK_DEBIAN_DATA_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_DATA_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_DATA_DESCRIPTION "data of the MXR-K7 USB DJ mixer's settings library
The version files, the localized warning texts and the virtual demo mixers
that the NorvaneMXRK7Setup library, the mxrk7 tool and the mxrk7-setup
application read from /usr/share/mxrk7.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME ${NVX_DEB_DEV})
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "${NVX_DEB_LIBRARY} ${NVX_DEB_EXACT}")
set(CPACK_DEBIAN_DEV_DESCRIPTION "settings library of the MXR-K7 USB DJ mixer (development files)
NorvaneMXRK7Setup reads and changes the configuration of MXR-K7 mixers over
USB through a plain C interface.
.
This package holds the header, the pkg-config file and the CMake package
for building programs that use the library.")

set(CPACK_DEBIAN_DOC_PACKAGE_NAME ${NVX_DEB_DOC})
set(CPACK_DEBIAN_DOC_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_DOC_PACKAGE_SECTION doc)
set(CPACK_DEBIAN_DOC_DESCRIPTION "settings library of the MXR-K7 USB DJ mixer (API reference)
The reference of the NorvaneMXRK7Setup C interface, in HTML.")

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME ${NVX_DEB_TOOL})
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "${NVX_DEB_DATA} ${NVX_DEB_EXACT}")
set(CPACK_DEBIAN_TOOL_DESCRIPTION "command-line setup tool of the MXR-K7 USB DJ mixer
mxrk7 shows, changes, keeps and re-applies the settings of MXR-K7 mixers:
USB audio routing, output boost, FX banks and play settings. It says which
mixers are connected and whether you may open them, and its doctor verb
checks everything the mixer needs on this computer.
.
The package installs the udev rule that lets the user at the seat open the
mixer and a systemd user unit that sends the remembered settings again
whenever a mixer is plugged in.")
set(CPACK_DEBIAN_TOOL_PACKAGE_CONTROL_EXTRA "${NVX_DEB_PACKAGE_DIR}/postinst;${NVX_DEB_PACKAGE_DIR}/postrm")

set(CPACK_DEBIAN_APP_PACKAGE_NAME ${NVX_DEB_APP})
set(CPACK_DEBIAN_APP_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_APP_PACKAGE_DEPENDS "${NVX_DEB_TOOL} ${NVX_DEB_EXACT}, ${NVX_DEB_DATA} ${NVX_DEB_EXACT}")
set(CPACK_DEBIAN_APP_DESCRIPTION "desktop setup application of the MXR-K7 USB DJ mixer
Every setting of the MXR-K7 mixer in one window: USB audio routing, output
boost, the three FX banks and the play settings. Settings are remembered,
sent again when a mixer is plugged in, and can be exported and imported.")

include(CPack)
