#pragma once

/// \file
/// Tells a host whether the library runs on it. Unlike the other headers of this folder, it
/// declares what the library supplies.
///
/// A process holds one host. The library is loaded once, and its host functions are bound at that
/// time. If a second module with a host of its own is loaded later, the library still makes and
/// reads the arrays of the first one: values of the second host are then misread or end the
/// process.

#include <string>

#include "numera/export.h"

namespace numera::host {

/// Empty if every host function that libnumera_arrow uses lies in the program or shared library
/// that contains the address `here`. Otherwise a text for the user that names one that does not,
/// and where it lies. It finds a second host, and half a host whose missing functions come from
/// elsewhere. A host that is spread over several shared libraries on purpose must not ask.
///
/// A module asks in its entry, before it calls anything else of the library:
///
/// \code
///   static const char here = 0;
///   const std::string other = numera::host::other_host(&here);
///   if (!other.empty()) throw std::runtime_error(other);
/// \endcode
///
/// `here` is any address within the host, and is not read. Pass that of a `static` variable as
/// above: the address of a host function can be one that another module has put in its place.
///
/// libnumera_extras is not asked. It is bound like libnumera_arrow if both are loaded together.
///
/// The caller owns the text. Throws `std::bad_alloc`. Any thread may call it at any time. Cost:
/// some microseconds. No host function is called.
NUMERA_EXPORT std::string other_host(const void* here);

}  // namespace numera::host
