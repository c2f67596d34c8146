#pragma once

#include <arrow/result.h>
#include <arrow/status.h>

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace numera::files {

/// The deepest nesting of a line, and the greatest number of fields at all depths of a file. Arrow
/// parses recursively: the deepest line takes between 1 and 1.5 MiB of stack.
inline constexpr std::size_t kDeepestJson = 1024;
inline constexpr std::size_t kMostJsonFields = 65536;

/// The fields at all depths of the lines that were scanned, and the number of values that some of
/// these lines have in Arrow's columns. A field has one value per row, whether the row has the
/// field or not. So lines of a few bytes, each with another field, can need any amount of memory.
class JsonFields {
 public:
  /// Returns whether the line holds an object; an empty line does not. Invalid unless the line is
  /// UTF-8 and holds one object with as many brackets opened as closed. Arrow's parser checks what
  /// is between the brackets. It must not see other lines: it ends the program for some.
  ::arrow::Result<bool> scan(std::string_view line);

  /// The number of values of the lines since `restart`, in columns for all fields seen so far.
  std::int64_t values() const { return values_; }
  void restart();

 private:
  /// Columns of one length: those of the rows, or those of the elements of a list.
  struct Group {
    std::int64_t length = 0;
    std::int64_t fields = 0;
  };

  struct Field {
    std::size_t group = 0;
    std::size_t elements = 0;  ///< the field of the elements, if it is a list
    std::map<std::string, std::size_t, std::less<>> children = {};
  };

  ::arrow::Status scan_object(std::string_view line);
  ::arrow::Status open(char bracket);
  ::arrow::Status name_field(std::string_view name);
  void next_value();
  void add_element(std::size_t group);
  ::arrow::Result<std::size_t> add_field(std::size_t group, std::size_t name_length);

  struct Bracket {
    std::size_t field;
    bool is_list;
  };

  std::vector<Field> fields_ = {{}};  ///< the first one stands for the row
  std::vector<Group> groups_ = {{}};
  std::size_t size_ = 0;
  std::int64_t values_ = 0;
  std::vector<Bracket> opened_;
  std::size_t current_ = 0;  ///< the field that the next value belongs to
};

}  // namespace numera::files
