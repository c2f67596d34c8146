#include "numera/host/memory/operations.h"
#include "numera/host/message_id_exception.h"

namespace numera::host::memory {

void error_max_lhs() { throw hxTaggedException<hxTooManyOutputs>(); }
void error_min_rhs() { throw hxTaggedException<hxTooFewInputs>(); }
void error_max_rhs() { throw hxTaggedException<hxTooManyInputs>(); }

}  // namespace numera::host::memory
