#pragma once

/// \file
/// Helpers of the claims: they make and read arrays, and return the texts of exceptions.

#include <gtest/gtest.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "numera/host/array.h"
#include "numera/host/string_array.h"
#include "tests/host_conformance/conformance.h"

namespace numera::host_conformance {

using Dims = std::vector<size_t>;
using Names = std::vector<const char*>;
/// The elements of a string array; nullopt means missing.
using Texts = std::vector<std::optional<std::u16string>>;

/// A claim about the host. Every claim also expects that no array is left.
class Claim : public ::testing::Test {
 protected:
  ~Claim() override { EXPECT_EQ(live_arrays(), before_) << "arrays are left"; }
  /// The number of arrays that exist now; 0 if the host does not report it.
  static size_t live_arrays() {
    const auto count = host_under_test().live_arrays;
    return count == nullptr ? 0 : count();
  }
  /// Expects this number of arrays if the host reports it.
  static void expect_live_arrays(size_t count) {
    if (host_under_test().live_arrays != nullptr) {
      EXPECT_EQ(live_arrays(), count);
    }
  }

 private:
  const size_t before_ = live_arrays();
};

inline hxArrayPtr zeros(const Dims& dims, hxClassID class_id = hxClassID::Double) {
  return hxCreateNumericArray(dims, class_id, hxComplexity::Real);
}

inline hxArrayPtr number(double value) {
  hxArrayPtr array = zeros({1, 1});
  *static_cast<double*>(hxGetData(array.get())) = value;
  return array;
}

/// Two elements with the fields "x" and "y", all empty.
inline hxArrayPtr two_points() { return hxCreateStructArray(Dims{2, 1}, Names{"x", "y"}); }

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

}  // namespace numera::host_conformance
