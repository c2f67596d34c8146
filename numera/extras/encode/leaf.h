#pragma once

/// \file
/// Reads values that are not nested. "Valid" of their envelope is not applied here.

#include <arrow/result.h>

#include <string>

#include "numera/extras/encode/located.h"
#include "numera/extras/encode/readable.h"

namespace numera::extras::encoding {

/// A value without an envelope: numbers, logical values, text, cells of text or of bytes.
/// `type_name` is the "Type" of the enclosing envelope, or empty. If it names byte strings, a cell
/// array holds bytes. Otherwise its first cell decides; without cells it holds text.
::arrow::Result<ReadableValue> read_plain(const Located& value, const std::string& type_name = {});

/// Reads "Data" of an encoded array of the kind "array". If the type name is wrong, the error
/// message states the path of `type`.
::arrow::Result<ReadableValue> read_data(const Located& data, const Located& type);

}  // namespace numera::extras::encoding
