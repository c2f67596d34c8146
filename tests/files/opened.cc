#include "tests/files/opened.h"

#include <gtest/gtest.h>

namespace numera::testing {
namespace {

::arrow::Result<std::shared_ptr<::arrow::Table>> read(const std::string& path,
                                                      const files::ReadOptions& options) {
  ARROW_ASSIGN_OR_RAISE(const auto source, files::open_source(path, options));
  ARROW_ASSIGN_OR_RAISE(auto table, source->ToTable());
  ARROW_RETURN_NOT_OK(table->ValidateFull());
  return table;
}

}  // namespace

std::shared_ptr<::arrow::Table> opened(const std::string& path, const files::ReadOptions& options) {
  return read(path, options).ValueOrDie();
}

std::string refusal_of(const std::string& path, const files::ReadOptions& options) {
  const auto table = read(path, options);
  EXPECT_FALSE(table.ok()) << (*table)->ToString();
  return table.ok() ? "" : table.status().message();
}

void expect_equal(const ::arrow::Table& found, const ::arrow::Table& expected) {
  EXPECT_TRUE(found.Equals(expected)) << "found:\n"
                                      << found.ToString() << "expected:\n"
                                      << expected.ToString();
}

}  // namespace numera::testing
