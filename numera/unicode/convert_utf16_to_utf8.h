#pragma once

/// \file
/// Host text to UTF-8 bytes and offsets, the form in which texts go to Arrow. Any number of threads
/// may convert at a time, the same texts too, each into outputs of its own.

#include "numera/export.h"
#include "numera/host/array.h"
#include "numera/unicode/exceptions.h"

namespace numera::io::arrow::unicode {

/// Converts one host value in the form of a host's gateway functions: `inputs` holds `inputCount`
/// borrowed values, and `outputs` receives the first `outputCount` results.
///
/// inputs[0] is one of
/// - a string array of N-by-1 elements; a missing element gives no bytes, like an empty one,
/// - an N-by-1 cell array of char rows,
/// - an R-by-C char matrix: R texts of C code units each, trailing blanks kept.
/// Arrays of no columns have no elements.
///
/// outputs[0] becomes the bytes, a (T + 1)-by-1 uint8 array: the texts back to back and one zero
/// byte behind them. outputs[1] becomes the offsets, an (N + 1)-by-1 uint64 array: text i is bytes
/// [offsets[i], offsets[i + 1]). What the outputs held before is destroyed.
///
/// Errors are thrown, and the outputs are as before then:
/// - more than 2 outputs, other than 1 input: by `hxErrorMaxLhs`, `hxErrorMaxRhs`, `hxErrorMinRhs`
/// - any other input: `hxTaggedException` of a tag of exceptions.h. The cells are looked at one
///   after another, each before it is converted.
/// - what the host throws, a failed allocation say, unchanged
///
/// Cost: two passes over the texts, one to measure and one to convert them. Texts that lie back to
/// back in the host's memory are converted in pieces of many texts: ASCII straight into the result,
/// any other by the host's codec. Only where the codec refuses a piece are all texts converted one
/// by one, for the first to blame. The rows of a char matrix are gathered into a string array
/// first.
///
/// \code
///   hxArrayPtr outputs[2];
///   const hxArray* inputs[] = {strings.get()};
///   numera::io::arrow::unicode::convertUTF16ToUTF8(2, outputs, 1, inputs);
/// \endcode
NUMERA_EXPORT void convertUTF16ToUTF8(int outputCount, hxArrayPtr* outputs, int inputCount,
                                      const hxArray** inputs);

}  // namespace numera::io::arrow::unicode
