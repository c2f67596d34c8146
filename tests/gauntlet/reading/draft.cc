#include "tests/gauntlet/reading/draft.h"

#include <algorithm>
#include <cstring>

#include "numera/host/memory.h"
#include "numera/host/string_array.h"

namespace numera::gauntlet::reading {
namespace {

hxArrayPtr build_numbers(const Draft& draft) {
  if (draft.sparse) return host::memory::CreateSparseArray(draft.dims, draft.class_id);
  const auto complexity = draft.complex ? hxComplexity::Complex : hxComplexity::Real;
  hxArrayPtr array = hxCreateNumericArray(draft.dims, draft.class_id, complexity);
  const size_t room = hxGetElementSize(array.get()) * draft.count();
  const size_t size = std::min(room, draft.bytes.size());
  if (size > 0) std::memcpy(hxGetData(array.get()), draft.bytes.data(), size);
  return array;
}

/// A string array in which every second text is missing.
hxArrayPtr build_strings(const Draft& draft) {
  auto strings = hxMakeStringArray(draft.dims);
  for (size_t i = 0; i < draft.count(); ++i) {
    if (i % 2 == 0) {
      strings->set(i, u"text");
    } else {
      strings->set_missing(i);
    }
  }
  return hxCreateStringArrayFrom(std::move(strings));
}

hxArrayPtr build_fields(const Draft& draft) {
  std::vector<const char*> names;
  for (const std::string& field : draft.fields) names.push_back(field.c_str());
  return draft.class_id == hxClassID::Struct
             ? hxCreateStructArray(draft.dims, names)
             : host::memory::CreateObjectArray(draft.object_name, draft.dims, names);
}

void fill(hxArray* container, const std::vector<DraftPtr>& slots) {
  for (size_t i = 0; i < slots.size(); ++i) {
    if (slots[i] != nullptr) hxSetCell(container, i, build(slots[i].get()));
  }
}

std::vector<DraftPtr> slots_of(const hxArray* value) {
  std::vector<DraftPtr> slots;
  for (size_t i = 0; i < hxGetNumberOfElements(value); ++i) {
    if (hxGetClassID(value) == hxClassID::Cell) slots.push_back(draft_of(hxGetCell(value, i)));
    for (int f = 0; f < hxGetNumberOfFields(value); ++f) {
      slots.push_back(draft_of(hxGetField(value, i, hxGetFieldName(value, f))));
    }
  }
  return slots;
}

}  // namespace

size_t Draft::count() const {
  size_t elements = 1;
  for (const size_t extent : dims) elements *= extent;
  return elements;
}

bool Draft::is_numeric() const {
  return class_id >= hxClassID::Double && class_id <= hxClassID::UInt64;
}

bool Draft::is_struct() const {
  return class_id == hxClassID::Struct ||
         (class_id == hxClassID::Object && object_name != "string");
}

DraftPtr draft_of(const hxArray* value) {
  if (value == nullptr) return nullptr;
  auto draft = std::make_unique<Draft>();
  draft->class_id = hxGetClassID(value);
  draft->dims.assign(hxGetDimensions(value).begin(), hxGetDimensions(value).end());
  const size_t count = hxGetNumberOfElements(value);
  if (draft->class_id == hxClassID::Char) {
    draft->text.assign(static_cast<const char16_t*>(hxGetData(value)), count);
  } else if (const auto* data = static_cast<const std::uint8_t*>(hxGetData(value))) {
    draft->bytes.assign(data, data + count * hxGetElementSize(value));
  }
  if (draft->class_id == hxClassID::Object) draft->object_name = hxGetClassName(value);
  for (int f = 0; f < hxGetNumberOfFields(value); ++f) {
    draft->fields.emplace_back(hxGetFieldName(value, f));
  }
  draft->slots = slots_of(value);
  return draft;
}

hxArrayPtr build(const Draft* draft) {
  if (draft == nullptr) return nullptr;
  if (draft->class_id == hxClassID::Char) {
    return host::memory::CreateCharArray(draft->dims, draft->text.data());
  }
  if (draft->is_numeric() || draft->class_id == hxClassID::Logical) return build_numbers(*draft);
  if (draft->class_id == hxClassID::Object && !draft->is_struct()) return build_strings(*draft);
  hxArrayPtr container =
      draft->class_id == hxClassID::Cell ? hxCreateCellArray(draft->dims) : build_fields(*draft);
  fill(container.get(), draft->slots);
  return container;
}

}  // namespace numera::gauntlet::reading
