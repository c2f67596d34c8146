#pragma once

/// \file
/// Runs the command summary for the tests of it.

#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/support/arrow_values.h"
#include "tests/tools/program.h"

namespace numera::testing {

class Summary : public ::testing::Test {
 protected:
  void SetUp() override { ::unsetenv("COLUMNS"); }  // some shells export their width

  /// What the command prints for one column "c".
  std::string of(const std::shared_ptr<::arrow::Array>& values) const {
    write_ipc(file_, *::arrow::Table::Make(::arrow::schema({::arrow::field("c", values->type())}),
                                           {values}));
    return printed("summary", file_);
  }
  std::string of(const std::shared_ptr<::arrow::DataType>& type, const std::string& json) const {
    return of(ArrowArray(type, json));
  }

  TemporaryFolder folder_;
  std::string file_ = folder_.path("a_file");
};

}  // namespace numera::testing
