#pragma once

/// \file
/// The actual or expected result of a conversion towards Arrow: a value, a status or an exception.

#include <arrow/array/array_base.h>
#include <arrow/buffer.h>
#include <arrow/result.h>
#include <arrow/status.h>
#include <arrow/table.h>
#include <arrow/type.h>

#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <typeinfo>
#include <variant>
#include <vector>

namespace numera::gauntlet::reading {

/// The bytes of a buffer, and whether the host owns them.
struct Region {
  const void* data = nullptr;
  std::int64_t size = 0;
  bool borrowed = true;

  bool operator==(const Region&) const = default;
};

/// An Arrow array, with null counts and buffers as stored.
struct ArrayTree {
  std::shared_ptr<::arrow::DataType> type = nullptr;
  std::int64_t length = 0;
  std::int64_t offset = 0;
  std::int64_t null_count = ::arrow::kUnknownNullCount;
  std::vector<std::optional<Region>> buffers = {};
  std::vector<ArrayTree> children = {};
  std::vector<ArrayTree> dictionary = {};  ///< empty or one array
  /// The class of the C++ object. Null for children: Arrow makes their objects on demand.
  const std::type_info* object = nullptr;
  /// Whether the type is the one that the parent array or the field of the table declares.
  bool has_declared_type = true;
};

struct TableTree {
  std::vector<std::string> names = {};
  std::vector<ArrayTree> columns = {};
  std::int64_t rows = 0;
  bool is_plain = true;  ///< nullable fields, no metadata, one chunk per column
};

struct Thrown {
  std::string type;
  std::string what;

  bool operator==(const Thrown&) const = default;
};

using Outcome = std::variant<ArrayTree, Region, TableTree, ::arrow::Status, Thrown>;

ArrayTree describe(const ::arrow::Array& array);
Region describe(const ::arrow::Buffer& buffer);
TableTree describe(const ::arrow::Table& table);

bool same(const ArrayTree& a, const ArrayTree& b);
bool same(const Outcome& a, const Outcome& b);

std::string to_string(const Outcome& outcome);

/// The result of `act`, or its exception.
template <class Act>
Outcome outcome_of(Act act) {
  try {
    return act();
  } catch (const std::exception& exception) {
    return Thrown{typeid(exception).name(), exception.what()};
  }
}

template <class T>
Outcome described(const ::arrow::Result<std::shared_ptr<T>>& result) {
  if (!result.ok()) return result.status();
  return describe(**result);
}

}  // namespace numera::gauntlet::reading
