#include "tests/gauntlet/forms.h"

#include <arrow/array/util.h>
#include <arrow/c/abi.h>
#include <arrow/c/bridge.h>
#include <arrow/result.h>

#include <iterator>
#include <stdexcept>

#include "tests/support/array_nodes.h"

namespace numera::gauntlet {
namespace {

using ::arrow::ArrayData;
using testing::Uncounted;
using ArrayDataPtr = std::shared_ptr<ArrayData>;

constexpr Form kForms[] = {Form::kBuilt, Form::kImported, Form::kAllBitmaps};

void forget_counts(::ArrowArray* array) {
  array->null_count = ::arrow::kUnknownNullCount;
  for (std::int64_t i = 0; i < array->n_children; ++i) forget_counts(array->children[i]);
  if (array->dictionary != nullptr) forget_counts(array->dictionary);
}

ArrayDataPtr imported(const ArrayDataPtr& chunk) {
  ::ArrowArray array;
  ::ArrowSchema schema;
  const auto status = ::arrow::ExportArray(*::arrow::MakeArray(chunk), &array, &schema);
  if (!status.ok()) throw std::runtime_error(status.ToString());
  forget_counts(&array);
  return ::arrow::ImportArray(&array, &schema).ValueOrDie()->data();
}

void add_bitmaps(ArrayData& array) {
  const ::arrow::DataTypeLayout layout = array.type->layout();
  const bool may_have_one = layout.buffers[0].kind == ::arrow::DataTypeLayout::BITMAP;
  if (may_have_one && array.buffers[0] == nullptr) {
    Bytes bits(static_cast<size_t>((array.offset + array.length + 7) / 8), 0xFF);
    array.buffers[0] = make_buffer(std::move(bits), Part::kBitmap, Memory::kExact, false);
  }
  for (const auto& child : array.child_data) add_bitmaps(*child);
  if (array.dictionary != nullptr) add_bitmaps(*array.dictionary);
}

ArrayDataPtr in_form(const ArrayDataPtr& chunk, Form form, Memory memory) {
  if (form == Form::kBuilt) return chunk;
  if (form == Form::kImported && !is_short(memory)) return imported(chunk);
  ArrayDataPtr copy = Uncounted(*chunk);
  if (form == Form::kAllBitmaps) add_bitmaps(*copy);
  return copy;
}

}  // namespace

const char* name_of(Form form) {
  switch (form) {
    case Form::kBuilt:
      return "as built";
    case Form::kImported:
      return "imported";
    case Form::kAllBitmaps:
      return "a bitmap on every node";
  }
  return "";
}

std::vector<Form> forms_of(const Case& one) {
  if (stride() == 1) return {std::begin(kForms), std::end(kForms)};
  return {kForms[mix(one.number, 0) % std::size(kForms)]};
}

Column in_form(const Column& column, Form form, Memory memory) {
  Column formed{column.type, {}};
  for (const auto& chunk : column.chunks) formed.chunks.push_back(in_form(chunk, form, memory));
  return formed;
}

}  // namespace numera::gauntlet
