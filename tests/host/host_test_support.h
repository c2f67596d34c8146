#pragma once

/// \file
/// Helpers that make arrays and return the texts of exceptions.

#include <gtest/gtest.h>

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "numera/host/array.h"
#include "numera/host/memory.h"
#include "numera/host/string_array.h"

namespace numera::host::memory {

using Dims = std::vector<size_t>;
using Names = std::vector<const char*>;

inline hxArrayPtr zeros(const Dims& dims, hxClassID class_id = hxClassID::Double) {
  return hxCreateNumericArray(dims, class_id, hxComplexity::Real);
}

inline hxArrayPtr number(double value) {
  hxArrayPtr array = zeros({1, 1});
  *static_cast<double*>(hxGetData(array.get())) = value;
  return array;
}

inline const void* read(const hxArrayPtr& array) {
  return hxGetData(static_cast<const hxArray*>(array.get()));
}

inline double number_in(const hxArray* array) {
  return *static_cast<const double*>(hxGetData(array));
}

inline Dims dims_of(const hxArrayPtr& array) {
  const auto dims = hxGetDimensions(array.get());
  return {dims.begin(), dims.end()};
}

/// The elements of a string array; nullopt means missing.
using Texts = std::vector<std::optional<std::u16string>>;

inline Texts texts_of(const hxStringArray& strings) {
  Texts texts;
  for (size_t i = 0; i < strings.size(); ++i) {
    const auto text = strings.element(i);
    texts.push_back(text ? std::optional(std::u16string(*text)) : std::nullopt);
  }
  return texts;
}

/// The text of the `Error` that the call throws. The test fails if the call throws none.
template <class Error, class Call>
std::string thrown(Call call) {
  try {
    call();
  } catch (const Error& error) {
    return error.what();
  }
  ADD_FAILURE() << "nothing thrown";
  return {};
}

}  // namespace numera::host::memory
