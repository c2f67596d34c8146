#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/files/tables.h"

namespace numera::testing {

/// Files in folders that are read as one table.
class JoinedFiles : public ::testing::Test {
 protected:
  std::string write(const std::string& name, const std::string& text) {
    return folder_.write(name, text);
  }

  void write(const std::string& name, const ::arrow::Table& table) {
    write(name, "");
    write_ipc(folder_.path(name), table);
  }

  void expect(const std::vector<std::string>& names, const ::arrow::Table& expected,
              const files::ReadOptions& options = {}) {
    const auto source = files::open_source(paths(names), options);
    ASSERT_TRUE(source.ok()) << source.status();
    const auto table = (*source)->ToTable();
    ASSERT_TRUE(table.ok()) << table.status();
    EXPECT_TRUE((*table)->ValidateFull().ok());
    EXPECT_TRUE((*table)->Equals(expected))
        << "found " << (*table)->ToString() << "expected " << expected.ToString();
  }

  /// Folders in the message are written as "/".
  void expect_refused(const std::vector<std::string>& names, const std::string& expected,
                      const files::ReadOptions& options = {}) {
    const auto source = files::open_source(paths(names), options);
    std::string found =
        source.ok() ? (*source)->ToTable().status().ToString() : source.status().ToString();
    for (size_t at = 0; (at = found.find(folder_.path(""))) != std::string::npos;) {
      found.replace(at, folder_.path("").size(), "/");
    }
    EXPECT_EQ(found, expected);
  }

  std::vector<std::string> paths(const std::vector<std::string>& names) const {
    std::vector<std::string> paths;
    paths.reserve(names.size());
    for (const std::string& name : names) paths.push_back(folder_.path(name));
    return paths;
  }

  TemporaryFolder folder_;
};

}  // namespace numera::testing
