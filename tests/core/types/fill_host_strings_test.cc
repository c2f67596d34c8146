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
#include "tests/support/host_matchers.h"
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

TEST(TextToHost, SetsOneElementAfterAnotherWhereTheCallForAllThrows) {
  const auto texts = ArrowArray(::arrow::utf8(), R"(["a", "é"])");
  const std::exception_ptr errors[] = {std::make_exception_ptr(std::bad_alloc()),
                                       std::make_exception_ptr(std::logic_error("no room")),
                                       std::make_exception_ptr(7)};
  for (const std::exception_ptr& error : errors) {
    auto strings = hxMakeStringArray(Dims{2, 1});
    Reset();
    FailCall(0, error);

    EXPECT_EQ(FillHostStrings(static_cast<const ::arrow::StringArray&>(*texts), *strings, 0),
              Status::OK());

    EXPECT_TRUE(HasFailed());
    EXPECT_TRUE(SameHostValue(hxCreateStringArrayFrom(std::move(strings)).get(),
                              Strings({u"a", u"é"}).get()));
  }
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

/// A string array of a host that sets one element after another and refuses one text.
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

/// A host whose bulk operation throws instead of telling which text it refuses.
class ThrowingStrings final : public PlainStrings {
 public:
  using PlainStrings::assign_utf8;
  using PlainStrings::PlainStrings;
  std::optional<size_t> assign_utf8(size_t, std::span<const std::int32_t>,
                                    const std::uint8_t*) override {
    throw std::bad_alloc();
  }
};

TEST(FillHostStrings, NamesTheRowThatAHostDidNotTell) {
  struct Case {
    const char* json;
    Status status;
  };
  const Case cases[] = {{R"(["a", "b", "refused", "refused"])", RowFailure(2)},
                        {R"(["refused"])", RowFailure(0)},
                        {R"(["a", "b"])", Status::OK()}};
  for (const auto& [json, status] : cases) {
    const auto array = ArrowArray(::arrow::utf8(), json);
    ThrowingStrings strings(8);
    EXPECT_EQ(FillHostStrings(static_cast<const ::arrow::StringArray&>(*array), strings, 4), status)
        << json;
  }
}

TEST(FillHostStrings, SetsElementsFromTheStartGivenWhereTheCallForAllThrows) {
  const auto array = ArrowArray(::arrow::utf8(), R"(["a", "b"])");
  ThrowingStrings strings(4);
  EXPECT_EQ(FillHostStrings(static_cast<const ::arrow::StringArray&>(*array), strings, 1),
            Status::OK());
  EXPECT_THAT(strings.texts(), ::testing::ElementsAre(u"", u"a", u"b", u""));
}

TEST(FillHostStrings, NamesTheRowThatIsNoTextWhereAHostDidNotTell) {
  const auto array = Texts(::arrow::utf8(), "ab\xFF", {0, 1, 2, 3});
  ThrowingStrings strings(3);
  EXPECT_EQ(FillHostStrings(static_cast<const ::arrow::StringArray&>(*array), strings, 0),
            RowFailure(2));
}

TEST(FillHostStrings, NamesTheRowWhereAHostWithoutABulkOperationThrowsALogicError) {
  const auto array = ArrowArray(::arrow::utf8(), R"(["a", "b", "c"])");
  PlainStrings strings(2);  // too short by one element
  EXPECT_EQ(FillHostStrings(static_cast<const ::arrow::StringArray&>(*array), strings, 0),
            RowFailure(2));
}

TEST(FillHostStrings, MakesOneCodecForAllHostsAndCalls) {
  const auto array = ArrowArray(::arrow::utf8(), R"(["a", "b"])");
  const auto structs =
      ArrowArray(::arrow::struct_({::arrow::field("f", ::arrow::int8())}), "[[1]]");
  Reset();
  for (int call = 0; call < 3; ++call) {
    PlainStrings plain(2);
    ThrowingStrings throwing(2);
    const auto& texts = static_cast<const ::arrow::StringArray&>(*array);
    ASSERT_EQ(FillHostStrings(texts, plain, 0), Status::OK());
    ASSERT_EQ(FillHostStrings(texts, throwing, 0), Status::OK());
    ASSERT_TRUE(to_numera(structs).ok());
  }
  EXPECT_LE(Calls("hxUTF8ToUTF16"), 1U) << "the first call of the process makes it";
}

}  // namespace
}  // namespace numera::io::arrow::core
