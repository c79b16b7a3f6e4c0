# Writes the manual page from its template at build time: cmake -DIN=... -DOUT=... -DVERSION=... -P
set(PROJECT_VERSION ${VERSION})
configure_file(${IN} ${OUT} @ONLY)
