#include <arrow/array/array_binary.h>
#include <arrow/status.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <new>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "numera/core/to_numera.h"
#include "numera/core/types/string.h"
#include "numera/host/string_array.h"
#include "tests/core/types/string_columns.h"
#include "tests/support/arrow_values.h"
#include "tests/support/host_builder.h"
#include "tests/support/recording_host.h"
#include "tests/support/results.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using ::arrow::Status;

TEST(TextToHost, HandsEachChunkToTheHostInOneCall) {
  const auto column = ArrowChunks(::arrow::utf8(), {R"(["a", "é"])", "[]", R"(["c"])"});
  Reset();

  ValueOf(to_numera(column));

  EXPECT_EQ(Calls("hxStringArray::assign_utf8"), 2U);
  EXPECT_EQ(Calls("hxStringArray::set"), 0U);
  EXPECT_EQ(Calls("hxUTF8ToUTF16::convert"), 0U);
}

TEST(TextToHost, TurnsWhateverAnElementThrowsIntoItsRow) {
  const auto texts = ArrowArray(::arrow::utf8(), R"(["a", "b"])");
  const auto strings = hxMakeStringArray(Dims{2, 1});
  Reset();
  FailCall(0, std::make_exception_ptr(std::bad_alloc()));

  const Status status =
      FillHostStrings(static_cast<const ::arrow::StringArray&>(*texts), *strings, 0);

  EXPECT_EQ(status, RowFailure(0));
}

TEST(TextToHost, LeavesWhatIsThrownOutsideOfTheElementsToTheCaller) {
  const auto texts = ArrowArray(::arrow::utf8(), R"(["a", "b"])");
  Reset();
  FailCall(0);
  EXPECT_THROW(StringArrayToHost(static_cast<const ::arrow::StringArray&>(*texts)).ok(),
               std::bad_alloc);
  Reset();
  FailCall(2);
  EXPECT_THROW(StringArrayToHost(static_cast<const ::arrow::StringArray&>(*texts)).ok(),
               std::bad_alloc);
}

/// A host's string array that sets one element after another, and refuses one text.
class PlainStrings : public hxStringArray {
 public:
  explicit PlainStrings(size_t size) : dims_{size, 1}, texts_(size) {}

  std::span<const size_t> dimensions() const override { return dims_; }
  size_t size() const override { return texts_.size(); }
  std::optional<std::u16string_view> element(size_t i) const override { return texts_[i]; }
  void set(size_t i, std::u16string_view text) override {
    if (text == u"refused") throw std::runtime_error("refused");
    texts_.at(i) = text;
  }
  void set_missing(size_t i) override { texts_.at(i).clear(); }

  const std::vector<std::u16string>& texts() const { return texts_; }

 private:
  std::vector<size_t> dims_;
  std::vector<std::u16string> texts_;
};

TEST(FillHostStrings, FillsAHostWithoutABulkOperationFromTheStartGiven) {
  for (const auto& type : kTextTypes) {
    SCOPED_TRACE(type->ToString());
    const auto array = ArrowArray(type, R"(["é", "", "漢"])");
    PlainStrings strings(5);

    const Status status =
        type->id() == ::arrow::Type::STRING
            ? FillHostStrings(static_cast<const ::arrow::StringArray&>(*array), strings, 1)
            : FillHostStrings(static_cast<const ::arrow::LargeStringArray&>(*array), strings, 1);

    EXPECT_EQ(status, Status::OK());
    EXPECT_THAT(strings.texts(), ::testing::ElementsAre(u"", u"é", u"", u"漢", u""));
  }
}

TEST(FillHostStrings, CountsTheRowOfAHostWithoutABulkOperationFromTheStartGiven) {
  const auto array = Texts(::arrow::utf8(), "ab\xFF", {0, 1, 2, 3});
  PlainStrings strings(10);

  EXPECT_EQ(FillHostStrings(static_cast<const ::arrow::StringArray&>(*array), strings, 4),
            RowFailure(2));
}

TEST(FillHostStrings, NamesTheRowOfATextThatTheHostDoesNotTake) {
  const auto array = ArrowArray(::arrow::utf8(), R"(["a", "refused"])");
  PlainStrings strings(2);

  EXPECT_EQ(FillHostStrings(static_cast<const ::arrow::StringArray&>(*array), strings, 0),
            RowFailure(1));
}

TEST(FillHostStrings, NamesTheFirstRowWhereABulkOperationTellsNone) {
  class ThrowingStrings final : public PlainStrings {
   public:
    using PlainStrings::assign_utf8;
    using PlainStrings::PlainStrings;
    std::optional<size_t> assign_utf8(size_t, std::span<const std::int32_t>,
                                      const std::uint8_t*) override {
      throw std::bad_alloc();
    }
  };
  const auto array = ArrowArray(::arrow::utf8(), R"(["a", "b"])");
  ThrowingStrings strings(2);

  EXPECT_EQ(FillHostStrings(static_cast<const ::arrow::StringArray&>(*array), strings, 0),
            RowFailure(0));
}

}  // namespace
}  // namespace numera::io::arrow::core
