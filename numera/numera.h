#pragma once

/// \file
/// Includes the public headers of the host interface, the conversions and the text conversion.

#include "numera/core/encoded_table.h"
#include "numera/core/limits.h"
#include "numera/core/to_arrow.h"
#include "numera/core/to_arrow_table.h"
#include "numera/core/to_numera.h"
#include "numera/core/to_numera_datatype.h"
#include "numera/core/util/module.h"
#include "numera/core/util/table_error.h"
#include "numera/core/util/text.h"
#include "numera/core/util/verify_struct.h"
#include "numera/host/array.h"
#include "numera/host/message_id_exception.h"
#include "numera/host/string_array.h"
#include "numera/host/text_codec.h"
#include "numera/unicode/convert_utf16_to_utf8.h"
#include "numera/version.h"
