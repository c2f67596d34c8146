#include "python/bindings/host_value.h"

#include <array>
#include <stdexcept>
#include <vector>

#include "numera/host/string_array.h"

namespace numera::python {

bool has_fields(const hxArray* array) {
  const hxClassID class_id = hxGetClassID(array);
  return class_id == hxClassID::Struct ||
         (class_id == hxClassID::Object && !hxIsStringArray(array));
}

HostValue struct_element(const HostValue& value, size_t index) {
  const hxArray* array = value.get();
  if (index >= hxGetNumberOfElements(array))
    throw std::out_of_range("Struct index is out of range.");
  const int count = hxGetNumberOfFields(array);
  std::vector<const char*> names;
  names.reserve(static_cast<size_t>(count));
  for (int i = 0; i < count; ++i) names.push_back(hxGetFieldName(array, i));
  hxArrayPtr element = hxCreateStructArray(std::array<size_t, 2>{1, 1}, names);
  for (const char* name : names) {
    const hxArray* field = hxGetField(array, index, name);
    if (field != nullptr) hxSetField(element.get(), 0, name, hxSharedCopy(field));
  }
  return adopt(std::move(element));
}

}  // namespace numera::python
