#include "numera/extras/encode/join.h"

#include <arrow/array/concatenate.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace numera::extras::encoding {
namespace {

::arrow::Result<ReadableValue> join(const Encoded& encoded, ChunkReader read_chunk, int level) {
  const size_t chunks = hxGetNumberOfElements(encoded.data.value);
  // The Arrow arrays borrow the memory of the envelopes. The joined array may borrow it too,
  // because Arrow does not copy a dictionary that is the same in all chunks. So the envelopes must
  // stay alive until `write_readable` returns.
  std::vector<Envelope> envelopes;
  ::arrow::ArrayVector arrays;
  for (size_t c = 0; c < chunks; ++c) {
    ARROW_ASSIGN_OR_RAISE(ReadableValue readable, read_chunk(encoded, c, level));
    envelopes.push_back(make_envelope(std::move(readable)));
    const Located place{encoded.data.value, &encoded.data, nullptr, c};
    ARROW_ASSIGN_OR_RAISE(auto array, borrow(envelopes.back(), place));
    arrays.push_back(std::move(array));
  }
  const auto joined = ::arrow::Concatenate(arrays);
  if (!joined.ok()) return at(encoded.data, joined.status());
  return write_readable(**joined);
}

::arrow::Status check_chunks(const Encoded& encoded) {
  if (!has_fields(encoded.data.value)) return wrong_class(encoded.data, "a struct array");
  const size_t chunks = hxGetNumberOfElements(encoded.data.value);
  const size_t bitmaps = hxGetNumberOfElements(encoded.valid.value);
  if (chunks == 0) {
    return invalid(encoded.data, "no chunks",
                   "at least one: without a chunk the type is not known");
  }
  if (bitmaps != chunks) {
    return invalid(encoded.valid, std::to_string(bitmaps) + " elements",
                   std::to_string(chunks) + ", one for each chunk");
  }
  return {};
}

}  // namespace

::arrow::Result<ReadableValue> read_chunks(const Encoded& encoded, ChunkReader read_chunk,
                                           int level) {
  ARROW_RETURN_NOT_OK(check_chunks(encoded));
  if (hxGetNumberOfElements(encoded.data.value) == 1) return read_chunk(encoded, 0, level);
  return join(encoded, read_chunk, level);
}

}  // namespace numera::extras::encoding
