#include "tools/value_text.h"

#include <arrow/array.h>
#include <arrow/scalar.h>
#include <arrow/type_traits.h>

#include <memory>
#include <string_view>
#include <utility>

#include "tools/characters.h"
#include "tools/element.h"
#include "tools/fixed_text.h"

namespace numera::tools {
namespace {

using ::arrow::Type;

/// The text of a value, and whether nothing of it was cut.
struct Piece {
  std::string text;
  bool whole;
};

Piece cut(std::string_view text, size_t width) {
  std::string shown = fitted(text, width);
  const bool whole = width == kUnlimited || shown == fitted(text, width + 1);
  return {std::move(shown), whole};
}

Piece hexadecimal(std::string_view bytes, size_t width) {
  std::string text = "0x";
  for (const char byte : bytes) {
    if (text.size() > width) break;
    for (const unsigned shift : {4U, 0U}) {
      text += "0123456789abcdef"[static_cast<unsigned char>(byte) >> shift & 15U];
    }
  }
  return cut(text, width);
}

/// Behind a backslash: quotation marks and backslashes.
Piece quoted(std::string_view text, size_t width) {
  if (width < 3) return {"…", false};
  const size_t room = width == kUnlimited ? width : width - 2;
  std::string inside;
  for (const char byte : fitted(text, width)) {
    if (byte == '"' || byte == '\\') inside += '\\';
    inside += byte;
  }
  Piece piece = cut(inside, room);
  piece.text = '"' + piece.text + '"';
  return piece;
}

Piece nested_text(Element element, size_t width);

/// Parts between brackets, up to the last one that fits; "…" stands for the others. `part` returns
/// a part that is at most as wide as it is told, or "…".
template <typename MakePart>
Piece listed(const char* brackets, std::int64_t count, size_t width, const MakePart& part) {
  std::string text(1, brackets[0]);
  size_t used = 2;  // the brackets
  for (std::int64_t i = 0; i < count; ++i) {
    const std::string comma = i == 0 ? "" : ", ";
    const size_t others = i + 1 < count ? 3 : 0;  // ", …"
    const size_t needed = used + comma.size() + others;
    const Piece next = part(i, width == kUnlimited ? width : width > needed ? width - needed : 0);
    used += comma.size() + width_of(next.text);
    const bool fits = used + others <= width;
    const bool shown = fits && (next.whole || (i == 0 && next.text != "…"));
    text += comma + (shown ? next.text : "…");
    if (shown && next.whole) continue;
    if (shown && i + 1 < count) text += ", …";
    return {text + brackets[1], false};
  }
  return {text + brackets[1], true};
}

/// `label` and a value behind it.
Piece labelled(const std::string& label, const Element& value, size_t width) {
  const size_t used = width_of(label);
  if (used >= width) return {"…", false};
  Piece piece = nested_text(value, width == kUnlimited ? width : width - used);
  piece.text.insert(0, label);
  return piece;
}

template <typename ListType>
Piece list_text(const Element& element, size_t width) {
  const auto& list = as<ListType>(element);
  return listed("[]", list.value_length(element.row), width, [&](std::int64_t i, size_t room) {
    return nested_text(element_of(list.values(), list.value_offset(element.row) + i), room);
  });
}

Piece struct_text(const Element& element, size_t width) {
  const auto& structs = as<::arrow::StructArray>(element);
  return listed("{}", structs.num_fields(), width, [&](std::int64_t i, size_t room) {
    const int field = static_cast<int>(i);
    const std::string& name = structs.struct_type()->field(field)->name();
    return labelled(one_line(name) + ": ", element_of(structs.field(field), element.row), room);
  });
}

Piece map_text(const Element& element, size_t width) {
  const auto& map = as<::arrow::MapArray>(element);
  const auto& entries = static_cast<const ::arrow::StructArray&>(*map.values());
  const auto keys = entries.field(0);
  const auto items = entries.field(1);
  return listed("{}", map.value_length(element.row), width, [&](std::int64_t i, size_t room) {
    const std::int64_t entry = map.value_offset(element.row) + i;
    const Piece key = nested_text(element_of(keys, entry), room);
    return key.whole ? labelled(key.text + ": ", element_of(items, entry), room)
                     : Piece{"…", false};
  });
}

/// The text that Arrow has for the value.
Piece arrows_text(const Element& element, size_t width) {
  const auto scalar = element.array->GetScalar(element.row);
  return cut(scalar.ok() ? (*scalar)->ToString() : scalar.status().message(), width);
}

/// A value that is not null. Texts stand in quotation marks.
Piece whole_text(const Element& element, size_t width) {
  if (auto text = fixed_text(*element.array, element.row)) return {std::move(*text), true};
  const Type::type type = element.array->type_id();
  if (const auto bytes = bytes_of(*element.array, element.row)) {
    return ::arrow::is_string_or_string_view(type) ? quoted(*bytes, width)
                                                   : hexadecimal(*bytes, width);
  }
  switch (type) {
    case Type::LIST:
      return list_text<::arrow::ListArray>(element, width);
    case Type::LARGE_LIST:
      return list_text<::arrow::LargeListArray>(element, width);
    case Type::LIST_VIEW:
      return list_text<::arrow::ListViewArray>(element, width);
    case Type::LARGE_LIST_VIEW:
      return list_text<::arrow::LargeListViewArray>(element, width);
    case Type::FIXED_SIZE_LIST:
      return list_text<::arrow::FixedSizeListArray>(element, width);
    case Type::STRUCT:
      return struct_text(element, width);
    case Type::MAP:
      return map_text(element, width);
    default:
      return arrows_text(element, width);
  }
}

Piece nested_text(Element element, size_t width) {
  element = resolved(std::move(element));
  if (element.array->IsNull(element.row)) return {"null", true};
  return whole_text(element, width);
}

}  // namespace

std::optional<std::string> value_text(const ::arrow::Array& array, std::int64_t row, size_t width) {
  const Element element = resolved({nullptr, &array, row});
  if (element.array->IsNull(element.row)) return std::nullopt;
  if (::arrow::is_string_or_string_view(element.array->type_id())) {
    const std::string_view text = bytes_of(*element.array, element.row).value_or("");
    if (text != "null" && !text.starts_with('"')) return fitted(text, width);
  }
  return whole_text(element, width).text;
}

std::optional<std::string_view> bytes_of(const ::arrow::Array& array, std::int64_t row) {
  switch (array.type_id()) {
    case Type::STRING:
    case Type::BINARY:
      return static_cast<const ::arrow::BinaryArray&>(array).GetView(row);
    case Type::LARGE_STRING:
    case Type::LARGE_BINARY:
      return static_cast<const ::arrow::LargeBinaryArray&>(array).GetView(row);
    case Type::STRING_VIEW:
    case Type::BINARY_VIEW:
      return static_cast<const ::arrow::BinaryViewArray&>(array).GetView(row);
    case Type::FIXED_SIZE_BINARY:
      return static_cast<const ::arrow::FixedSizeBinaryArray&>(array).GetView(row);
    default:
      return std::nullopt;
  }
}

bool is_aligned_right(const ::arrow::DataType& type) {
  switch (type.id()) {
    case Type::DICTIONARY:
      return is_aligned_right(*static_cast<const ::arrow::DictionaryType&>(type).value_type());
    case Type::RUN_END_ENCODED:
      return is_aligned_right(*static_cast<const ::arrow::RunEndEncodedType&>(type).value_type());
    case Type::EXTENSION:
      return is_aligned_right(*static_cast<const ::arrow::ExtensionType&>(type).storage_type());
    default:
      return ::arrow::is_numeric(type.id()) || ::arrow::is_decimal(type.id()) ||
             ::arrow::is_temporal(type.id()) || ::arrow::is_interval(type.id()) ||
             type.id() == Type::DURATION;
  }
}

}  // namespace numera::tools
