# Warnings on for every target of the project; the build stays clean of them.
add_compile_options(
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion
  -Wcast-align -Wformat=2 -Wimplicit-fallthrough
  "$<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor;-Wold-style-cast;-Woverloaded-virtual>"
)
