# The API reference: Doxygen's HTML from the public header's doc comments and the example programs,
# built by the target api-reference (part of `all` when the option is on) and installed as the
# component "doc". A warning, an undocumented name or parameter included, fails the build.
option(MXRK7_BUILD_DOCS "Build the API reference with Doxygen" OFF)
set(NVX_API_DOC_DIR "${CMAKE_INSTALL_DOCDIR}/html" CACHE STRING "Where the API reference's HTML is installed")

if(MXRK7_BUILD_DOCS)
  find_package(Doxygen 1.9 REQUIRED)
  set(NVX_API_DOC_OUT ${PROJECT_BINARY_DIR}/docs/api)
  configure_file(${PROJECT_SOURCE_DIR}/docs/Doxyfile.in ${NVX_API_DOC_OUT}/Doxyfile @ONLY)
  file(GLOB NVX_EXAMPLES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/examples/*.c)
  # Doxygen leaves files of an earlier run behind; start from an empty folder.
  add_custom_command(OUTPUT ${NVX_API_DOC_OUT}/html/index.html
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${NVX_API_DOC_OUT}/html
    COMMAND Doxygen::doxygen ${NVX_API_DOC_OUT}/Doxyfile
    DEPENDS ${PROJECT_SOURCE_DIR}/include/NorvaneMXRK7Setup.h ${NVX_EXAMPLES} ${NVX_API_DOC_OUT}/Doxyfile
    WORKING_DIRECTORY ${NVX_API_DOC_OUT}
    COMMENT "Generating the API reference (Doxygen)"
    VERBATIM)
  add_custom_target(api-reference ALL DEPENDS ${NVX_API_DOC_OUT}/html/index.html)
  install(DIRECTORY ${NVX_API_DOC_OUT}/html/ DESTINATION ${NVX_API_DOC_DIR} COMPONENT doc)
endif()
