/// \file
/// Encoded arrays of every type and shape, converted to Arrow and compared with a model that uses
/// no code of the library: types, lengths, buffers (which are the host's own memory) and bits.

#include <arrow/api.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "numera/core/to_arrow.h"
#include "numera/core/to_numera.h"
#include "numera/host/memory.h"
#include "tests/gauntlet/cases.h"
#include "tests/gauntlet/host_values.h"
#include "tests/gauntlet/model.h"
#include "tests/gauntlet/reading/model.h"
#include "tests/support/host_matchers.h"

namespace numera::gauntlet {
namespace {

using ::arrow::ArrayData;
using io::arrow::core::to_arrow;

constexpr size_t kHostLengths[] = {0, 1, 7, 8, 9, 63, 64, 65, 1000};
constexpr Memory kHostMemories[] = {Memory::kExact, Memory::kLonger, Memory::kShortBitmap,
                                    Memory::kShortBytes};
constexpr Shape kShapes[] = {Shape::kColumn, Shape::kRow, Shape::kPages};

struct HostCase {
  const HostType* type;
  size_t length;
  HostMaking making;

  std::string name() const {
    static constexpr const char* kShapeNames[] = {"column", "row", "pages"};
    return type->name + " / length " + std::to_string(length) + " / " + name_of(making.nulls) +
           " / " + kShapeNames[static_cast<int>(making.shape)] + " / " + name_of(making.memory);
  }
};

hxArrayPtr expected_back(const std::shared_ptr<ArrayData>& array) {
  try {
    return model_envelope({array->type, {array}});
  } catch (const Refused&) {
    return nullptr;
  }
}

/// Expects that `to_numera` converts the array back, or refuses it if its buffers end early.
void expect_way_back(const std::shared_ptr<::arrow::Array>& array, const std::string& name) {
  const auto back = io::arrow::core::to_numera(array);
  const hxArrayPtr expected = expected_back(array->data());
  if (expected == nullptr) {
    EXPECT_TRUE(back.status().IsInvalid()) << name << ": " << back.status();
  } else if (!back.ok()) {
    ADD_FAILURE() << name << ": " << back.status();
  } else {
    EXPECT_TRUE(testing::SameHostValue(back->get(), expected.get())) << name;
  }
}

void expect_bits(const ::arrow::Array& array, const hxArray* envelope, const std::string& name) {
  const hxArray* bits = hxGetField(hxGetField(envelope, 0, "Valid"), 0, "Values");
  const auto* const bytes = static_cast<const std::uint8_t*>(hxGetData(bits));
  std::int64_t nulls = 0;
  for (std::int64_t i = 0; i < array.length(); ++i) {
    const bool valid = hxIsEmpty(bits) || (bytes[i / 8] >> (i % 8) & 1) != 0;
    nulls += valid ? 0 : 1;
    if (array.IsValid(i) != valid) ADD_FAILURE() << name << ": validity of element " << i;
  }
  EXPECT_EQ(array.null_count(), nulls) << name;
}

/// Whether codes may stand beside an empty dictionary.
bool may_hold_wrong_codes(const HostType& type) {
  return type.dictionaries == Dictionaries::kNoEntries ||
         std::ranges::any_of(type.children, may_hold_wrong_codes);
}

void run(const HostCase& one) {
  const hxArrayPtr envelope = make_host_value(*one.type, one.length, one.making);
  const auto result = to_arrow<::arrow::Array>(envelope.get());
  ASSERT_TRUE(result.ok()) << one.name() << ": " << result.status();
  const reading::Outcome found = reading::describe(**result);
  const reading::Outcome expected = reading::expected_array(envelope.get(), 0);
  EXPECT_TRUE(reading::same(found, expected)) << one.name() << "\nexpected:\n"
                                              << reading::to_string(expected) << "\nfound:\n"
                                              << reading::to_string(found);
  expect_way_back(*result, one.name());
  if (is_short(one.making.memory)) return;
  expect_bits(**result, envelope.get(), one.name());
  if (may_hold_wrong_codes(*one.type) && one.making.nulls != Nulls::kAll) return;
  EXPECT_TRUE((*result)->ValidateFull().ok()) << one.name() << ": " << (*result)->ValidateFull();
}

std::vector<HostCase> all_cases(const std::vector<HostType>& types) {
  std::vector<HostCase> cases;
  for (const HostType& type : types) {
    for (const size_t length : kHostLengths) {
      for (const Nulls nulls : kNulls) {
        for (const Shape shape : kShapes) {
          for (const Memory memory : kHostMemories) {
            const Making making{.nulls = nulls, .memory = memory, .seed = cases.size()};
            cases.push_back({&type, length, {making, shape}});
          }
        }
      }
    }
  }
  return cases;
}

/// In November 2026, 118 types of 432 cases each made 50,976.
constexpr size_t kLeastCases = 50'000;

TEST(ToArrow, GivesWhatTheModelGives) {
  const auto types = host_types();
  const auto cases = all_cases(types);
  ASSERT_GE(cases.size(), kLeastCases);
  const size_t live = host::memory::LiveArrays();
  const size_t step = stride() == 1 ? 1 : 17;
  for (size_t i = 0; i < cases.size() && !HasFailure(); i += step) run(cases[i]);
  EXPECT_EQ(host::memory::LiveArrays(), live);
}

}  // namespace
}  // namespace numera::gauntlet
