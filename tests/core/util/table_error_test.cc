#include "numera/core/util/table_error.h"

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>
#include <utility>

namespace numera::io::arrow::core::util {
namespace {

TEST(TableErrorCode, HasTheNumbersThatCallersCompare) {
  EXPECT_EQ(static_cast<std::int32_t>(TableErrorCode::TypeError), 0);
  EXPECT_EQ(static_cast<std::int32_t>(TableErrorCode::Internal), 1);
  EXPECT_TRUE((std::is_same_v<std::underlying_type_t<TableErrorCode>, std::int32_t>));
}

TEST(TableErrorStatusDetail, KeepsWhatItIsMadeOf) {
  const TableErrorStatusDetail detail(TableErrorCode::TypeError,
                                      "Gr\xC3\xB6\xC3\x9F"
                                      "e",
                                      7);
  EXPECT_EQ(detail.error_code(), TableErrorCode::TypeError);
  EXPECT_EQ(detail.column_name(),
            "Gr\xC3\xB6\xC3\x9F"
            "e");
  EXPECT_EQ(detail.column_index(), 7);
}

TEST(TableErrorStatusDetail, IsNamedByItsCode) {
  const TableErrorStatusDetail type_error(TableErrorCode::TypeError, "a", 0);
  EXPECT_STREQ(type_error.type_id(), "TypeError");
  EXPECT_EQ(type_error.ToString(), "TypeError");
  const TableErrorStatusDetail internal(TableErrorCode::Internal, "a", 0);
  EXPECT_STREQ(internal.type_id(), "Internal");
  EXPECT_EQ(internal.ToString(), "Internal");
}

TEST(TableErrorStatusDetail, IsInternalForEveryCodeButZero) {
  const TableErrorStatusDetail detail(static_cast<TableErrorCode>(2), "a", 0);
  EXPECT_STREQ(detail.type_id(), "Internal");
}

TEST(TableErrorStatusDetail, CopiesAndMoves) {
  TableErrorStatusDetail original(TableErrorCode::Internal, "name", 3);
  const TableErrorStatusDetail copy(original);
  EXPECT_EQ(copy.column_name(), original.column_name());
  const TableErrorStatusDetail moved(std::move(original));
  EXPECT_EQ(moved.error_code(), TableErrorCode::Internal);
  EXPECT_EQ(moved.column_name(), "name");
  EXPECT_EQ(moved.column_index(), 3);
}

TEST(TableErrorStatusDetail, TravelsWithAStatus) {
  const auto status = ::arrow::Status::Invalid("broken").WithDetail(
      std::make_shared<TableErrorStatusDetail>(TableErrorCode::Internal, "name", 3));
  const auto* detail = dynamic_cast<const TableErrorStatusDetail*>(status.detail().get());
  ASSERT_NE(detail, nullptr);
  EXPECT_EQ(detail->column_name(), "name");
  EXPECT_EQ(status.ToString(), "Invalid: broken. Detail: Internal");
}

}  // namespace
}  // namespace numera::io::arrow::core::util
