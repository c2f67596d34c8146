#include "benchmarks/arrow_data.h"

#include <arrow/builder.h>
#include <arrow/result.h>

#include <utility>

namespace numera::benchmarks {
namespace {

template <class Array, class Builder>
std::shared_ptr<Array> finish(Builder& builder) {
  return std::static_pointer_cast<Array>(builder.Finish().ValueOrDie());
}

template <class Array, class Builder>
std::shared_ptr<Array> repeated(std::int64_t length, const std::string& value) {
  Builder builder;
  for (std::int64_t i = 0; i < length; ++i) require(builder.Append(value));
  return finish<Array>(builder);
}

}  // namespace

void require(const ::arrow::Status& status) {
  if (!status.ok()) status.Abort();
}

std::shared_ptr<::arrow::DoubleArray> doubles(std::int64_t length, bool nulls) {
  ::arrow::DoubleBuilder builder;
  for (std::int64_t i = 0; i < length; ++i) {
    if (nulls && i % 10 == 9) {
      require(builder.AppendNull());
    } else {
      require(builder.Append(static_cast<double>(i) / 2));
    }
  }
  return finish<::arrow::DoubleArray>(builder);
}

std::shared_ptr<::arrow::BooleanArray> booleans(std::int64_t length) {
  ::arrow::BooleanBuilder builder;
  for (std::int64_t i = 0; i < length; ++i) require(builder.Append(i % 3 == 0 || i % 7 == 0));
  return finish<::arrow::BooleanArray>(builder);
}

std::shared_ptr<::arrow::StringArray> texts(std::int64_t length, const std::string& text) {
  return repeated<::arrow::StringArray, ::arrow::StringBuilder>(length, text);
}

std::shared_ptr<::arrow::BinaryArray> byte_strings(std::int64_t length, const std::string& bytes) {
  return repeated<::arrow::BinaryArray, ::arrow::BinaryBuilder>(length, bytes);
}

std::shared_ptr<::arrow::DictionaryArray> categories(std::int64_t length, std::int64_t first) {
  constexpr std::int64_t kCategories = 100;
  ::arrow::StringBuilder names;
  for (std::int64_t i = 0; i < kCategories; ++i) {
    require(names.Append("category " + std::to_string((first + i) % kCategories)));
  }
  ::arrow::Int32Builder codes;
  for (std::int64_t i = 0; i < length; ++i) {
    require(codes.Append(static_cast<std::int32_t>(i * 37 % kCategories)));
  }
  return std::make_shared<::arrow::DictionaryArray>(
      ::arrow::dictionary(::arrow::int32(), ::arrow::utf8()), finish<::arrow::Int32Array>(codes),
      finish<::arrow::StringArray>(names));
}

std::shared_ptr<::arrow::ListArray> lists(std::int64_t length, std::int32_t width) {
  ::arrow::Int32Builder offsets;
  for (std::int64_t i = 0; i <= length; ++i) {
    require(offsets.Append(static_cast<std::int32_t>(i) * width));
  }
  return std::static_pointer_cast<::arrow::ListArray>(
      ::arrow::ListArray::FromArrays(*finish<::arrow::Int32Array>(offsets),
                                     *doubles(length * width))
          .ValueOrDie());
}

ColumnPtr column_of(const ArrayPtr& array, std::int64_t chunks) {
  const std::int64_t length = array->length() / chunks;
  ::arrow::ArrayVector slices;
  for (std::int64_t i = 0; i < chunks; ++i) slices.push_back(array->Slice(i * length, length));
  return ::arrow::ChunkedArray::Make(std::move(slices), array->type()).ValueOrDie();
}

}  // namespace numera::benchmarks
