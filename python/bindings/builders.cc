#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "numera/host/memory.h"
#include "numera/host/string_array.h"
#include "python/bindings/bindings.h"
#include "python/bindings/host_array_docs.h"
#include "python/bindings/host_value.h"

// The Python module numera.host checks and shapes its arguments. These functions make the arrays.

namespace numera::python {
namespace {

using Dimensions = std::vector<size_t>;

Dimensions dimensions(const nb::tuple& shape) {
  Dimensions dims;
  for (const nb::handle extent : shape) dims.push_back(nb::cast<size_t>(extent));
  if (dims.size() < 2)
    throw std::invalid_argument("Shape: found fewer than two dimensions, expected two or more.");
  return dims;
}

/// An array of zeros. It is writable until `_seal`.
HostValue new_numeric(std::int32_t class_id, bool complex, const nb::tuple& shape) {
  const Dimensions dims = dimensions(shape);
  HostValue value =
      adopt(hxCreateNumericArray(dims, static_cast<hxClassID>(class_id),
                                 complex ? hxComplexity::Complex : hxComplexity::Real));
  value.writable = true;
  return value;
}

std::u16string code_units(nb::handle text) {
  const auto bytes =
      nb::steal<nb::bytes>(PyUnicode_AsEncodedString(text.ptr(), "utf-16-le", "surrogatepass"));
  if (!bytes.is_valid()) throw nb::python_error();
  std::u16string units(bytes.size() / 2, u'\0');
  for (size_t i = 0; i < units.size(); ++i) {
    const auto byte = [&](size_t k) { return static_cast<unsigned char>(bytes.c_str()[k]); };
    units[i] = static_cast<char16_t>(byte(2 * i) | (byte(2 * i + 1) << 8));
  }
  return units;
}

/// A char array. `units` are the code units in storage order, one per element of the shape.
HostValue new_char(const nb::bytes& units, const nb::tuple& shape) {
  const Dimensions dims = dimensions(shape);
  size_t count = 1;
  for (const size_t extent : dims) {
    if (__builtin_mul_overflow(count, extent, &count)) throw std::bad_alloc();
  }
  if (units.size() % 2 != 0 || units.size() / 2 != count) {
    throw std::invalid_argument("Shape: found " + std::to_string(count) +
                                " elements, expected one for each code unit of the text.");
  }
  std::u16string text(count, u'\0');
  if (count > 0) std::memcpy(text.data(), units.c_str(), units.size());
  return adopt(host::memory::CreateCharArray(dims, text.data()));
}

void check_count(size_t found, size_t expected) {
  if (found == expected) return;
  throw std::invalid_argument("Shape: found " + std::to_string(expected) + " elements, expected " +
                              std::to_string(found) + ", one for each value.");
}

HostValue new_string(const nb::list& texts, const nb::tuple& shape) {
  std::unique_ptr<hxStringArray> strings = hxMakeStringArray(dimensions(shape));
  check_count(texts.size(), strings->size());
  for (size_t i = 0; i < texts.size(); ++i) {
    if (texts[i].is_none()) {
      strings->set_missing(i);
    } else {
      strings->set(i, code_units(texts[i]));
    }
  }
  return adopt(hxCreateStringArrayFrom(std::move(strings)));
}

/// A shared copy of the value; null, which is an empty slot, for None.
hxArrayPtr share(nb::handle value) {
  if (value.is_none()) return nullptr;
  return hxSharedCopy(nb::cast<const HostValue&>(value).get());
}

HostValue new_cell(const nb::list& values, const nb::tuple& shape) {
  hxArrayPtr cells = hxCreateCellArray(dimensions(shape));
  check_count(values.size(), hxGetNumberOfElements(cells.get()));
  for (size_t i = 0; i < values.size(); ++i) hxSetCell(cells.get(), i, share(values[i]));
  return adopt(std::move(cells));
}

std::vector<std::string> host_names(const nb::list& names) {
  std::vector<std::string> spelled;
  for (const nb::handle name : names) {
    const auto bytes =
        nb::steal<nb::bytes>(PyUnicode_AsEncodedString(name.ptr(), "utf-8", "surrogateescape"));
    if (!bytes.is_valid()) throw nb::python_error();
    spelled.emplace_back(bytes.c_str(), bytes.size());
    if (spelled.back().find('\0') != std::string::npos) {
      throw std::invalid_argument("Field name: found a zero byte, which no host allows.");
    }
  }
  return spelled;
}

/// `values` are ordered element by element: slot = index * number of fields + field number.
HostValue new_struct(const nb::list& names, const nb::list& values, const nb::tuple& shape) {
  const std::vector<std::string> spelled = host_names(names);
  std::vector<const char*> pointers;
  pointers.reserve(spelled.size());
  for (const std::string& name : spelled) pointers.push_back(name.c_str());
  hxArrayPtr structs = hxCreateStructArray(dimensions(shape), pointers);
  check_count(values.size(), hxGetNumberOfElements(structs.get()) * pointers.size());
  for (size_t i = 0; i < values.size(); ++i) {
    hxArrayPtr value = share(values[i]);
    if (value == nullptr) continue;
    hxSetField(structs.get(), i / pointers.size(), pointers[i % pointers.size()], std::move(value));
  }
  return adopt(std::move(structs));
}

}  // namespace

void bind_builders(nb::module_& module) {
  module.def("_new_numeric", &new_numeric, nb::arg("class_id"), nb::arg("complex"),
             nb::arg("shape"));
  module.def("_new_char", &new_char, nb::arg("units"), nb::arg("shape"));
  module.def("_new_string", &new_string, nb::arg("texts"), nb::arg("shape"));
  module.def("_new_cell", &new_cell, nb::arg("values"), nb::arg("shape"));
  module.def("_new_struct", &new_struct, nb::arg("names"), nb::arg("values"), nb::arg("shape"));
  module.def("live_bytes", &host::memory::LiveBytes, docs::kLiveBytes);
  module.def("live_arrays", &host::memory::LiveArrays, docs::kLiveArrays);
}

}  // namespace numera::python
