# An Apache Arrow of a major version that no release of numera is built with.
set(Arrow_VERSION 999.0.0)
add_library(Arrow::arrow_shared INTERFACE IMPORTED)
