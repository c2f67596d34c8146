#pragma once

/// \file
/// Values that are not nested, still without their "Valid".

#include <arrow/result.h>

#include <string>

#include "numera/extras/encode/located.h"
#include "numera/extras/encode/readable.h"

namespace numera::extras::encoding {

/// A value without an envelope: numbers, logical values, text, cells of text or of bytes.
/// `type_name` is the "Type" of the envelope around it, if there is one: it decides what a cell
/// array without cells holds.
::arrow::Result<ReadableValue> read_plain(const Located& value, const std::string& type_name = {});

/// The "Data" of an encoded array of the kind "array". A failure about the name names `type`.
::arrow::Result<ReadableValue> read_data(const Located& data, const Located& type);

}  // namespace numera::extras::encoding
