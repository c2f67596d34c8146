// An Apache Arrow of a major version that no release of numera is built with.
#define ARROW_VERSION_MAJOR 999
