#include <arrow/api.h>
#include <arrow/json/from_string.h>

#include <exception>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "examples/encoding_examples.h"
#include "numera/numera.h"

namespace {

namespace core = numera::io::arrow::core;

struct TypeExample {
  std::shared_ptr<::arrow::DataType> type;
  const char* json;
};

std::vector<TypeExample> type_examples() {
  using namespace ::arrow;  // the factories of types
  return {{float64(), "[1]"},
          {float32(), "[1]"},
          {int8(), "[1]"},
          {uint8(), "[1]"},
          {int16(), "[1]"},
          {uint16(), "[1]"},
          {int32(), "[1]"},
          {uint32(), "[1]"},
          {int64(), "[1]"},
          {uint64(), "[1]"},
          {boolean(), "[true]"},
          {date32(), "[1]"},
          {date64(), "[86400000]"},
          {time32(TimeUnit::SECOND), "[1]"},
          {time64(TimeUnit::NANO), "[1]"},
          {timestamp(TimeUnit::MILLI, "UTC"), "[1]"},
          {duration(TimeUnit::SECOND), "[1]"},
          {utf8(), R"(["a"])"},
          {large_utf8(), R"(["a"])"},
          {binary(), R"(["a"])"},
          {large_binary(), R"(["a"])"},
          {fixed_size_binary(1), R"(["a"])"},
          {dictionary(int32(), utf8()), R"(["a"])"},
          {list(int32()), "[[1]]"},
          {large_list(int32()), "[[1]]"},
          {struct_({field("a", int32())}), "[[1]]"},
          {map(utf8(), int32()), R"([[["a", 1]]])"},
          {null(), "[null, null]"}};
}

std::string in_code(const std::string& text) { return "`" + text + "`"; }

/// "`double` column", or the fields of a struct.
std::string describe(const hxArray* data) {
  const hxClassID class_id = hxGetClassID(data);
  if (class_id != hxClassID::Struct) return in_code(hxGetClassName(data));
  std::string text = "struct:";
  for (int i = 0; i < hxGetNumberOfFields(data); ++i) {
    text += (i == 0 ? " " : ", ") + in_code(hxGetFieldName(data, i));
  }
  return text;
}

/// The type of the array that is read, or the error.
std::string read_back(const hxArray* written) {
  try {
    const auto array = core::to_arrow<::arrow::Array>(written);
    if (array.ok()) return in_code((*array)->type()->ToString());
    return array.status().CodeAsString() + ": " + array.status().message();
  } catch (const std::exception& error) {
    return std::string("the host throws: ") + error.what();
  }
}

::arrow::Result<std::string> row_of(const TypeExample& example) {
  ARROW_ASSIGN_OR_RAISE(auto array, ::arrow::json::ArrayFromJSONString(example.type, example.json));
  ARROW_ASSIGN_OR_RAISE(const hxArrayPtr written, core::to_numera(std::move(array)));
  const auto text_of = [&](const char* name) {
    return in_code(hxGetString(hxGetField(written.get(), 0, name)));
  };
  return "| " + in_code(example.type->ToString()) + " | " + text_of("ArrowType") + " | " +
         text_of("Type") + " | " + describe(hxGetField(written.get(), 0, "Data")) + " | " +
         in_code(core::to_numera_datatype(example.type).value_or("none")) + " | " +
         read_back(written.get()) + " |\n";
}

}  // namespace

::arrow::Result<Shown> encoding_types() {
  std::string table =
      "| Arrow type | \"ArrowType\" | \"Type\" | \"Data\" | host class | read back as written |\n"
      "|---|---|---|---|---|---|\n";
  for (const TypeExample& example : type_examples()) {
    ARROW_ASSIGN_OR_RAISE(const std::string row, row_of(example));
    table += row;
  }
  return Shown{"types", "\n" + table + "\n"};
}
