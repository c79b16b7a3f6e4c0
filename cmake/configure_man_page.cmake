# Writes the manual page from its template at build time:
# cmake -DIN=... -DOUT=... -DVERSION=... -DREFERENCE=<settings section written by the tool> -P
set(PROJECT_VERSION ${VERSION})
file(READ ${REFERENCE} SETTINGS_REFERENCE)
configure_file(${IN} ${OUT} @ONLY)
