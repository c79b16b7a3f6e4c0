# nvx_add_man_page(NAME TEMPLATE COMPONENT OUT_VAR): the manual page NAME(1), written at build time
# from TEMPLATE (the project version filled in) to <build>/share/man/man1/NAME.1, where the tests
# read it; installed compressed, as man1/NAME.1.gz, with the install component COMPONENT. OUT_VAR is
# set to the uncompressed page.
function(nvx_add_man_page name template component out_var)
  set(page ${PROJECT_BINARY_DIR}/share/man/man1/${name}.1)
  add_custom_command(
    OUTPUT ${page} ${page}.gz
    COMMAND ${CMAKE_COMMAND} -DIN=${template} -DOUT=${page} -DVERSION=${PROJECT_VERSION}
            -P ${PROJECT_SOURCE_DIR}/cmake/configure_man_page.cmake
    DEPENDS ${template} ${PROJECT_SOURCE_DIR}/cmake/configure_man_page.cmake
    COMMENT "Writing the manual page ${name}(1)")
  add_custom_target(${name}_man_page ALL DEPENDS ${page} ${page}.gz)
  install(FILES ${page}.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT ${component})
  set(${out_var} ${page} PARENT_SCOPE)
endfunction()
