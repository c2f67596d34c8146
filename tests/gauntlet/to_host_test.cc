/// \file
/// Arrow data of every type and shape, converted to the host directly and after intake, and
/// compared with a model that uses no code of the library.

#include <arrow/api.h>
#include <gtest/gtest.h>

#include <set>

#include "numera/core/arrow_types.h"
#include "numera/core/to_numera.h"
#include "numera/extras/intake/intake.h"
#include "numera/host/memory.h"
#include "tests/gauntlet/cases.h"
#include "tests/gauntlet/compact.h"
#include "tests/gauntlet/forms.h"
#include "tests/gauntlet/model.h"
#include "tests/support/array_nodes.h"
#include "tests/support/host_matchers.h"

namespace numera::gauntlet {
namespace {

using ::arrow::ChunkedArray;
using io::arrow::core::to_numera;
using testing::ArrayNodes;
using testing::SameHostValue;

/// The value of the model; null if the column must be refused.
hxArrayPtr expected_of(const Column& column) {
  try {
    return model_envelope(column);
  } catch (const Refused&) {
    return nullptr;
  }
}

/// Arrow counts nulls when it makes a chunked array and assumes that bitmaps are long enough. For a
/// short bitmap the count is set beforehand.
std::shared_ptr<ChunkedArray> chunked(const Column& column) {
  ::arrow::ArrayVector chunks;
  for (const auto& chunk : column.chunks) {
    const auto& bitmap = chunk->buffers[0];
    if (bitmap != nullptr && bitmap->size() * 8 < chunk->offset + chunk->length) {
      chunk->null_count = nulls_of(*chunk);
    }
    chunks.push_back(::arrow::MakeArray(chunk));
  }
  return std::make_shared<ChunkedArray>(std::move(chunks), column.type);
}

void expect_same(const ::arrow::Result<hxArrayPtr>& actual, const hxArrayPtr& expected,
                 const std::string& name) {
  if (expected == nullptr) {
    if (!actual.status().IsInvalid()) {
      ADD_FAILURE() << name << ": expected Invalid, got " << actual.status();
    }
  } else if (!actual.ok()) {
    ADD_FAILURE() << name << ": " << actual.status();
  } else if (const auto same = SameHostValue(actual->get(), expected.get()); !same) {
    ADD_FAILURE() << name << ": " << same.message();
  }
}

/// Expects that `convert` leaves the value unchanged, even if it fails.
template <class Value, class Convert>
auto read_only(const std::shared_ptr<Value>& value, const std::string& name,
               const Convert& convert) {
  const ArrayNodes before(*value);
  auto result = convert(value);
  if (const std::string changed = before.difference(); !changed.empty()) {
    ADD_FAILURE() << name << ": the input was changed, " << changed;
  }
  return result;
}

template <class Value>
void expect_to_host(const std::shared_ptr<Value>& value, const hxArrayPtr& expected,
                    const std::string& name) {
  expect_same(read_only(value, name, [](const auto& given) { return to_numera(given); }), expected,
              name);
}

void run_as_it_stands(const Case& one, Form form) {
  const std::string name = one.name() + " / " + name_of(form);
  const size_t live = host::memory::LiveArrays();
  {
    const Column column = in_form(one.column(), form, one.memory);
    const hxArrayPtr expected = expected_of(column);
    if (column.chunks.size() == 1) {
      expect_to_host(::arrow::MakeArray(column.chunks[0]), expected, name + ", one array");
    }
    expect_to_host(chunked(column), expected, name + ", chunked");
  }
  EXPECT_EQ(host::memory::LiveArrays(), live) << name;
}

bool is_valid(const ChunkedArray& column) { return column.ValidateFull().ok(); }

void run_taken_in(const Case& one, Form form) {
  const std::string name = one.name() + " / " + name_of(form) + ", taken in";
  const Column column = one.column();
  const auto given = chunked(in_form(column, form, one.memory));
  const auto taken =
      read_only(given, name, [](const auto& value) { return extras::take_in(value); });
  if (!is_valid(*given)) {
    EXPECT_FALSE(taken.ok()) << name << ": took in what is not valid";
    return;
  }
  ASSERT_TRUE(taken.ok()) << name << ": " << taken.status();
  Column compacted{column.type, {}};
  try {
    for (const auto& chunk : column.chunks) compacted.chunks.push_back(compact(*chunk));
    if (column.chunks.empty() && ::arrow::is_nested(column.type->id())) {
      compacted.chunks.push_back(::arrow::MakeArrayOfNull(column.type, 0).ValueOrDie()->data());
    }
  } catch (const Refused&) {
    FAIL() << name << ": took in what ends early";
  }
  expect_to_host(taken->value, expected_of(compacted), name);
}

struct Family {
  const char* name;
  std::vector<Subject> (*subjects)();
  std::uint64_t cases;  ///< the least number of cases in a full run
};

void PrintTo(const Family& family, std::ostream* out) { *out << family.name; }

class ToHost : public ::testing::TestWithParam<Family> {
 protected:
  void run(const std::function<void(const Case&, Form)>& each) {
    const auto subjects = GetParam().subjects();
    const auto run_forms = [&each](const Case& one) {
      for (const Form form : forms_of(one)) each(one, form);
    };
    EXPECT_GE(for_each_case(subjects, run_forms), GetParam().cases / stride());
  }
};

TEST(Subjects, AreOfEveryTypeThatReachesTheHost) {
  std::set<::arrow::Type::type> met;
  for (const Subject& subject : plain_subjects()) met.insert(subject.type->id());
  for (const Subject& subject : deep_subjects()) met.insert(subject.type->id());
  for (int id = 0; id < ::arrow::Type::MAX_ID; ++id) {
    const auto type = static_cast<::arrow::Type::type>(id);
    EXPECT_EQ(met.contains(type), io::arrow::core::arrow_type_row(type).writer != nullptr) << id;
  }
}

TEST_P(ToHost, GivesWhatTheModelGives) { run(run_as_it_stands); }

TEST_P(ToHost, GivesTheValueOfTheSliceOnceTakenIn) { run(run_taken_in); }

INSTANTIATE_TEST_SUITE_P(
    Gauntlet, ToHost,
    ::testing::Values(Family{"plain", plain_subjects, 400'000},
                      Family{"list", [] { return nested_subjects(Wrap::kList); }, 400'000},
                      Family{"large_list", [] { return nested_subjects(Wrap::kLargeList); },
                             400'000},
                      Family{"struct", [] { return nested_subjects(Wrap::kStruct); }, 400'000},
                      Family{"map", [] { return nested_subjects(Wrap::kMap); }, 400'000},
                      Family{"deep", deep_subjects, 300'000}),
    [](const auto& family) { return family.param.name; });

}  // namespace
}  // namespace numera::gauntlet
