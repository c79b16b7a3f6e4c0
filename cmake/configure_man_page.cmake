# Writes a manual page from its template at build time, and its compressed copy for installing:
#   cmake -DIN=... -DOUT=... -DVERSION=... [-DREFERENCE=FILE] -P configure_man_page.cmake   (writes OUT and OUT.gz)
# REFERENCE, when given, is written by the tool: its settings section, a line ".\" examples", and the
# command lines of its examples; they fill @SETTINGS_REFERENCE@ and @EXAMPLES_REFERENCE@.
# The copy is compressed with gzip -9n: best compression, and neither name nor time stamp in its
# header, so the same page always gives the same bytes.
set(PROJECT_VERSION ${VERSION})
if(REFERENCE)
  file(READ ${REFERENCE} written)
  string(FIND "${written}" ".\\\" examples\n" split)
  string(SUBSTRING "${written}" 0 ${split} SETTINGS_REFERENCE)
  math(EXPR split "${split} + 13")
  string(SUBSTRING "${written}" ${split} -1 EXAMPLES_REFERENCE)
endif()
configure_file(${IN} ${OUT} @ONLY)
execute_process(COMMAND gzip -9 -n -c ${OUT} OUTPUT_FILE ${OUT}.gz RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "gzip failed on ${OUT}: ${result}")
endif()
