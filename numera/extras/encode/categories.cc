#include "numera/extras/encode/categories.h"

#include <utility>

#include "numera/extras/encode/text.h"
#include "numera/format/records.h"

namespace numera::extras::encoding {
namespace {

::arrow::Status check_codes(const Located& codes) {
  const hxClassID class_id = hxGetClassID(codes.value);
  if (!hxIsNumeric(codes.value) || class_id == hxClassID::Double || class_id == hxClassID::Single) {
    return wrong_class(codes, "codes of an integer class");
  }
  return check_numbers(codes);
}

::arrow::Result<hxArrayPtr> pack_categories(const Located& categories) {
  if (has_fields(categories.value)) {
    ARROW_ASSIGN_OR_RAISE(ReadableValue packed, packed_as_it_is(categories, format::kStringType));
    return std::move(packed.data);
  }
  ARROW_ASSIGN_OR_RAISE(ReadableValue packed, pack_texts(categories));
  if (packed.valid != nullptr) {
    return invalid(categories, "a missing text", "a text for each category");
  }
  return std::move(packed.data);
}

}  // namespace

::arrow::Result<ReadableValue> read_categorical(const Located& data) {
  ARROW_RETURN_NOT_OK(check_one_element(data));
  ARROW_ASSIGN_OR_RAISE(const Located codes, field(data, 0, format::kValues));
  ARROW_RETURN_NOT_OK(check_codes(codes));
  ARROW_ASSIGN_OR_RAISE(const Located ordinal, field(data, 0, format::kOrdinal));
  ARROW_RETURN_NOT_OK(check_class(ordinal, hxClassID::Logical, "a logical value"));
  ARROW_RETURN_NOT_OK(check_one_element(ordinal));
  ARROW_ASSIGN_OR_RAISE(const Located categories, field(data, 0, format::kCategories));
  ARROW_ASSIGN_OR_RAISE(hxArrayPtr packed, pack_categories(categories));
  return ReadableValue{
      .type = format::kCategoricalType,
      .data = format::make_record(format::kCategorical, std::move(packed),
                                  hxSharedCopy(codes.value), hxSharedCopy(ordinal.value)),
      .length = hxGetNumberOfElements(codes.value),
      .is_valid = false};
}

}  // namespace numera::extras::encoding
