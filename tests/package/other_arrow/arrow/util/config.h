// An Apache Arrow whose major version no release of numera is built with.
#define ARROW_VERSION_MAJOR 999
