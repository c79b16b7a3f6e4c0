# nvx_add_man_page(NAME TEMPLATE COMPONENT OUT_VAR [REFERENCE_FROM TOOL]): the manual page NAME(1),
# written at build time from TEMPLATE (the project version filled in) to <build>/share/man/man1/NAME.1,
# where the tests read it; installed compressed, as man1/NAME.1.gz, with the install component
# COMPONENT. OUT_VAR is set to the uncompressed page. With REFERENCE_FROM, the program TOOL (a target)
# writes the settings section (TOOL __reference man), which fills @SETTINGS_REFERENCE@.
function(nvx_add_man_page name template component out_var)
  cmake_parse_arguments(PARSE_ARGV 4 arg "" "REFERENCE_FROM" "")
  set(page ${PROJECT_BINARY_DIR}/share/man/man1/${name}.1)
  set(reference_commands)
  set(reference_option)
  if(arg_REFERENCE_FROM)
    set(reference ${CMAKE_CURRENT_BINARY_DIR}/${name}-settings.roff)
    # A sanitizer build's tool runs here too; what it leaks at exit is no concern of the page.
    set(reference_commands COMMAND ${CMAKE_COMMAND} -E env ASAN_OPTIONS=detect_leaks=0
                           $<TARGET_FILE:${arg_REFERENCE_FROM}> __reference man > ${reference})
    set(reference_option -DREFERENCE=${reference})
  endif()
  add_custom_command(
    OUTPUT ${page} ${page}.gz
    ${reference_commands}
    COMMAND ${CMAKE_COMMAND} -DIN=${template} -DOUT=${page} -DVERSION=${PROJECT_VERSION} ${reference_option}
            -P ${PROJECT_SOURCE_DIR}/cmake/configure_man_page.cmake
    DEPENDS ${template} ${PROJECT_SOURCE_DIR}/cmake/configure_man_page.cmake ${arg_REFERENCE_FROM}
    COMMENT "Writing the manual page ${name}(1)")
  add_custom_target(${name}_man_page ALL DEPENDS ${page} ${page}.gz)
  install(FILES ${page}.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT ${component})
  set(${out_var} ${page} PARENT_SCOPE)
endfunction()
