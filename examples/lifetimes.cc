#include "examples/lifetimes.h"

#include <arrow/api.h>
#include <arrow/json/from_string.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "numera/extras/encode/encode.h"
#include "numera/numera.h"

namespace {

namespace core = numera::io::arrow::core;

struct TypeExample {
  std::shared_ptr<::arrow::DataType> type;
  const char* json;
};

constexpr const char* kNumbers = "[1, null, 2]";
constexpr const char* kTexts = R"(["ab", null, "c"])";

std::vector<TypeExample> type_examples() {
  using namespace ::arrow;  // the factories of types
  return {{float64(), kNumbers},
          {float32(), kNumbers},
          {int8(), kNumbers},
          {uint8(), kNumbers},
          {int16(), kNumbers},
          {uint16(), kNumbers},
          {int32(), kNumbers},
          {uint32(), kNumbers},
          {int64(), kNumbers},
          {uint64(), kNumbers},
          {boolean(), "[true, null, false]"},
          {null(), "[null, null, null]"},
          {date32(), kNumbers},
          {date64(), "[86400000, null, 172800000]"},
          {time32(TimeUnit::SECOND), kNumbers},
          {time32(TimeUnit::MILLI), kNumbers},
          {time64(TimeUnit::MICRO), kNumbers},
          {time64(TimeUnit::NANO), kNumbers},
          {timestamp(TimeUnit::NANO), kNumbers},
          {timestamp(TimeUnit::MILLI, "UTC"), kNumbers},
          {duration(TimeUnit::SECOND), kNumbers},
          {utf8(), kTexts},
          {large_utf8(), kTexts},
          {binary(), kTexts},
          {large_binary(), kTexts},
          {fixed_size_binary(2), R"(["ab", null, "cd"])"},
          {dictionary(int8(), utf8()), kTexts},
          {list(int32()), "[[1, 2], null, [3]]"},
          {large_list(float64()), "[[1, 2], null, [3]]"},
          {list(utf8()), R"([["a", "b"], null, ["c"]])"},
          {struct_({field("a", int32())}), "[[1], null, [2]]"},
          {map(utf8(), int32()), R"([[["ab", 1]], null, [["c", 2]]])"}};
}

struct Block {
  std::uintptr_t begin;
  std::uintptr_t end;
};
using Blocks = std::vector<Block>;

Block block_of(const void* data, size_t bytes) {
  const auto begin = reinterpret_cast<std::uintptr_t>(data);
  return {begin, begin + bytes};
}

bool touches(const Block& block, const Blocks& others) {
  for (const Block& other : others) {
    if (block.begin < other.end && other.begin < block.end) return true;
  }
  return false;
}

void add_blocks(const ::arrow::ArrayData& data, Blocks& blocks) {
  for (const auto& buffer : data.buffers) {
    if (buffer) blocks.push_back(block_of(buffer->data(), static_cast<size_t>(buffer->size())));
  }
  for (const auto& child : data.child_data) add_blocks(*child, blocks);
  if (data.dictionary) add_blocks(*data.dictionary, blocks);
}

void add_text_blocks(const hxStringArray& texts, Blocks& blocks) {
  for (size_t i = 0; i < texts.size(); ++i) {
    if (const auto text = texts.element(i)) {
      blocks.push_back(block_of(text->data(), text->size() * sizeof(char16_t)));
    }
  }
}

// Adds the memory of every leaf of a host value.
void add_blocks(const hxArray* value, Blocks& blocks) {
  if (value == nullptr) return;
  if (hxIsStringArray(value)) return add_text_blocks(hxGetStringArray(value), blocks);
  const hxClassID class_id = hxGetClassID(value);
  const size_t count = hxGetNumberOfElements(value);
  if (class_id == hxClassID::Cell) {
    for (size_t i = 0; i < count; ++i) add_blocks(hxGetCell(value, i), blocks);
  } else if (class_id == hxClassID::Struct) {
    for (size_t i = 0; i < count; ++i) {
      for (int field = 0; field < hxGetNumberOfFields(value); ++field) {
        add_blocks(hxGetField(value, i, hxGetFieldName(value, field)), blocks);
      }
    }
  } else {
    blocks.push_back(block_of(hxGetData(value), count * hxGetElementSize(value)));
  }
}

// Whether all, none or some of the blocks lie in the source.
const char* how(const Blocks& blocks, const Blocks& source) {
  size_t borrowed = 0;
  for (const Block& block : blocks) borrowed += touches(block, source) ? 1U : 0U;
  if (borrowed == 0) return "copied";
  return borrowed == blocks.size() ? "borrowed" : "in part borrowed";
}

// For example "values borrowed, offsets borrowed": one part per buffer of the array, one for all
// children, one for the dictionary.
std::string parts_of(const ::arrow::ArrayData& data, const Blocks& source) {
  const auto name_of = [&](size_t buffer) -> std::string {
    if (buffer == 0) return "validity";
    const bool first_of_two = buffer == 1 && data.buffers.size() == 3;
    const auto id = data.type->id();
    const bool nested = id == ::arrow::Type::LIST || id == ::arrow::Type::LARGE_LIST;
    if (first_of_two || nested) return "offsets";
    return data.type->id() == ::arrow::Type::DICTIONARY ? "codes" : "values";
  };
  std::string text;
  const auto add = [&](const std::string& name, const Blocks& blocks) {
    if (!text.empty()) text += ", ";
    text += name + " " + how(blocks, source);
  };
  for (size_t i = 0; i < data.buffers.size(); ++i) {
    const auto& buffer = data.buffers[i];
    if (!buffer) continue;
    add(name_of(i), {block_of(buffer->data(), static_cast<size_t>(buffer->size()))});
  }
  Blocks children;
  for (const auto& child : data.child_data) add_blocks(*child, children);
  if (!children.empty()) add("children", children);
  Blocks categories;
  if (data.dictionary) add_blocks(*data.dictionary, categories);
  if (!categories.empty()) add("categories", categories);
  return text;
}

::arrow::Result<std::string> row_of(const TypeExample& example) {
  ARROW_ASSIGN_OR_RAISE(const auto array,
                        ::arrow::json::ArrayFromJSONString(example.type, example.json));
  ARROW_ASSIGN_OR_RAISE(const hxArrayPtr written, core::to_numera(array));
  Blocks arrow_memory;
  add_blocks(*array->data(), arrow_memory);
  Blocks host_memory;
  add_blocks(written.get(), host_memory);

  ARROW_ASSIGN_OR_RAISE(const hxArrayPtr readable, numera::extras::make_readable(written.get()));
  ARROW_ASSIGN_OR_RAISE(const auto back, core::to_arrow<::arrow::Array>(readable.get()));
  Blocks readable_memory;
  add_blocks(readable.get(), readable_memory);
  return "| `" + example.type->ToString() + "` | " + how(host_memory, arrow_memory) + " | `" +
         back->type()->ToString() + "` | " + parts_of(*back->data(), readable_memory) + " |\n";
}

// The row of a buffer, which has no type.
::arrow::Result<std::string> row_of_buffer() {
  const auto buffer = ::arrow::Buffer::FromString("bytes");
  ARROW_ASSIGN_OR_RAISE(const hxArrayPtr written, core::to_numera(buffer));
  Blocks host_memory;
  add_blocks(hxGetField(written.get(), 0, "Values"), host_memory);
  ARROW_ASSIGN_OR_RAISE(const auto back, core::to_arrow<::arrow::Buffer>(written.get()));
  const auto block_of_buffer = [](const ::arrow::Buffer& bytes) {
    return block_of(bytes.data(), static_cast<size_t>(bytes.size()));
  };
  return std::string("| a buffer | ") + how(host_memory, {block_of_buffer(*buffer)}) +
         " | a buffer | bytes " + how({block_of_buffer(*back)}, host_memory) + " |\n";
}

}  // namespace

::arrow::Result<Shown> lifetimes_by_type() {
  std::string table =
      "| Arrow type | towards the host | read back as | towards Arrow |\n|---|---|---|---|\n";
  for (const TypeExample& example : type_examples()) {
    ARROW_ASSIGN_OR_RAISE(const std::string row, row_of(example));
    table += row;
  }
  ARROW_ASSIGN_OR_RAISE(const std::string row, row_of_buffer());
  table += row;
  return Shown{"lifetimes", "\n" + table + "\n"};
}
