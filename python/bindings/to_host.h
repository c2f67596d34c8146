#pragma once

#include <arrow/result.h>

#include "numera/host/array.h"
#include "python/bindings/host_value.h"

namespace numera::python {

/// The Python value of a conversion to the host, or the exception of its failure. If `cast` is
/// false and casts may help, the exception has a note that says so.
HostValue adopt_result(::arrow::Result<hxArrayPtr> result, bool cast);

}  // namespace numera::python
