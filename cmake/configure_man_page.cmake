# Writes a manual page from its template at build time, and its compressed copy for installing:
#   cmake -DIN=... -DOUT=... -DVERSION=... [-DREFERENCE=FILE] -P configure_man_page.cmake   (writes OUT and OUT.gz)
# REFERENCE, when given, is a section written by the tool (its settings); it fills @SETTINGS_REFERENCE@.
# The copy is compressed with gzip -9n: best compression, and neither name nor time stamp in its
# header, so the same page always gives the same bytes.
set(PROJECT_VERSION ${VERSION})
if(REFERENCE)
  file(READ ${REFERENCE} SETTINGS_REFERENCE)
endif()
configure_file(${IN} ${OUT} @ONLY)
execute_process(COMMAND gzip -9 -n -c ${OUT} OUTPUT_FILE ${OUT}.gz RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "gzip failed on ${OUT}: ${result}")
endif()
