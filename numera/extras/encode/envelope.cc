#include "numera/extras/encode/envelope.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>

#include "numera/core/limits.h"
#include "numera/extras/encode/leaf.h"
#include "numera/extras/encode/nested.h"
#include "numera/format/bitmap.h"
#include "numera/format/names.h"
#include "numera/format/values.h"

namespace numera::extras::encoding {
namespace {

using io::arrow::core::kMaxNestingLevels;

// The bitwise AND of two validity bitmaps. Null means that all elements are valid; other bitmaps
// have at least `length` bits.
hxArrayPtr both_valid(hxArrayPtr a, const hxArrayPtr& b, size_t length) {
  if (a == nullptr) return hxSharedCopy(b.get());
  if (b == nullptr) return a;
  hxArrayPtr both = format::make_column(hxClassID::UInt8, format::bitmap_bytes(length));
  const auto* const bits_a = format::elements<std::uint8_t>(static_cast<const hxArray*>(a.get()));
  const auto* const bits_b = format::elements<std::uint8_t>(static_cast<const hxArray*>(b.get()));
  auto* const target = format::elements<std::uint8_t>(both);
  for (size_t i = 0; i < format::bitmap_bytes(length); ++i) {
    target[i] = static_cast<std::uint8_t>(bits_a[i] & bits_b[i]);
  }
  return both;
}

::arrow::Result<ReadableValue> read_array(const Encoded& encoded, int /*level*/) {
  ARROW_ASSIGN_OR_RAISE(ReadableValue readable, read_data(encoded.data, encoded.type));
  // A column without chunks has an empty "Valid" and no elements.
  if (hxIsEmpty(encoded.valid.value)) return readable;
  ARROW_RETURN_NOT_OK(check_one_element(encoded.valid));
  ARROW_ASSIGN_OR_RAISE(const hxArrayPtr valid, read_validity(encoded.valid, 0, readable.length));
  if (valid != nullptr) {
    readable.valid = both_valid(std::move(readable.valid), valid, readable.length);
  }
  return readable;
}

struct KindReader {
  const char* kind;
  ::arrow::Result<ReadableValue> (*read)(const Encoded& encoded, int level);
};

constexpr KindReader kKinds[] = {
    {format::kArrayKind, read_array},
    {format::kListKind, read_lists},
    {format::kStructKind, read_structs},
    {format::kMapKind, read_maps},
};

// The recursive functions keep their stack frames small. Code that needs more stack is in separate
// functions, which return before the next level begins.

::arrow::Result<const KindReader*> find_kind(const Located& envelopes, size_t index) {
  ARROW_ASSIGN_OR_RAISE(const Located kind, field(envelopes, index, format::kArrowType));
  ARROW_ASSIGN_OR_RAISE(const std::string name, text_of(kind));
  const auto* const row = std::ranges::find(kKinds, name, &KindReader::kind);
  if (row != std::ranges::end(kKinds)) return row;
  return invalid(kind, "'" + name + "'", "'array', 'list_array', 'struct' or 'map'");
}

::arrow::Result<Encoded> read_fields(const Located& envelopes, size_t index) {
  ARROW_ASSIGN_OR_RAISE(const Located type, field(envelopes, index, format::kType));
  ARROW_ASSIGN_OR_RAISE(const Located valid, field(envelopes, index, format::kValid));
  ARROW_RETURN_NOT_OK(check_class(valid, hxClassID::Struct, "a struct array"));
  ARROW_ASSIGN_OR_RAISE(const Located data, field(envelopes, index, format::kData));
  return Encoded{type, valid, data};
}

::arrow::Status check_levels(const KindReader& row, int outer_levels) {
  // A map is read as a list of structs, which takes two levels.
  const int levels = row.read == read_array ? 0 : (row.read == read_maps ? 2 : 1);
  if (outer_levels + levels <= kMaxNestingLevels) return {};
  return ::arrow::Status::Invalid("Nested value: found more than ", kMaxNestingLevels,
                                  " levels, expected at most ", kMaxNestingLevels, ".");
}

::arrow::Status check_envelope(const Located& child) {
  if (!has_fields(child.value)) return wrong_class(child, "an encoded array");
  return check_one_element(child);
}

}  // namespace

::arrow::Result<Envelope> checked_envelope(ReadableValue readable, const Located& origin) {
  const bool is_valid = readable.is_valid;
  Envelope envelope = make_envelope(std::move(readable));
  if (is_valid) return envelope;
  ARROW_ASSIGN_OR_RAISE(const auto array, borrow(envelope, origin));
  const ::arrow::Status status = array->ValidateFull();
  if (!status.ok()) return at(origin, status);
  return envelope;
}

::arrow::Result<hxArrayPtr> read_validity(const Located& valid, size_t index, size_t length) {
  ARROW_ASSIGN_OR_RAISE(const Located kind, field(valid, index, format::kArrowType));
  ARROW_ASSIGN_OR_RAISE(const std::string name, text_of(kind));
  if (name != format::kBufferKind) return invalid(kind, "'" + name + "'", "'buffer'");
  ARROW_ASSIGN_OR_RAISE(const Located bits, field(valid, index, format::kValues));
  ARROW_RETURN_NOT_OK(check_numbers(bits, hxClassID::UInt8, "a uint8 array"));
  const size_t bytes = hxGetNumberOfElements(bits.value);
  if (bytes == 0) return nullptr;
  if (bytes < format::bitmap_bytes(length)) {
    return invalid(bits, std::to_string(bytes) + " bytes",
                   "at least " + std::to_string(format::bitmap_bytes(length)) +
                       ", one bit for each of " + std::to_string(length) + " elements");
  }
  return hxSharedCopy(bits.value);
}

::arrow::Result<ReadableValue> read_element(const Located& envelopes, size_t index,
                                            int outer_levels) {
  ARROW_ASSIGN_OR_RAISE(const KindReader* const row, find_kind(envelopes, index));
  ARROW_ASSIGN_OR_RAISE(const Encoded encoded, read_fields(envelopes, index));
  ARROW_RETURN_NOT_OK(check_levels(*row, outer_levels));
  return row->read(encoded, outer_levels + 1);
}

::arrow::Result<Envelope> read_child(const Located& child, int outer_levels) {
  ARROW_RETURN_NOT_OK(check_envelope(child));
  ARROW_ASSIGN_OR_RAISE(ReadableValue readable, read_element(child, 0, outer_levels));
  return checked_envelope(std::move(readable), child);
}

}  // namespace numera::extras::encoding
