# An Apache Arrow whose major version no release of numera is built with.
set(Arrow_VERSION 999.0.0)
add_library(Arrow::arrow_shared INTERFACE IMPORTED)
