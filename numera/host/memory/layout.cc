#include "numera/host/memory/layout.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <stdexcept>

namespace numera::host::memory {
namespace {

// Up to this many fields are searched linearly.
constexpr size_t kFewFields = 8;

size_t rounded_up(size_t size) {
  return (size + alignof(size_t) - 1) / alignof(size_t) * alignof(size_t);
}

size_t sorted_count(const Description& description) {
  const size_t fields = description.field_names.size();
  return fields > kFewFields ? fields : 0;
}

size_t text_bytes(const Description& description) {
  size_t bytes = description.class_name == nullptr ? description.object_name.size() + 1 : 0;
  for (const char* const name : description.field_names) bytes += std::strlen(name) + 1;
  return bytes;
}

const char* copy_text(char*& place, std::string_view text) {
  char* const copy = place;
  std::copy(text.begin(), text.end(), copy);
  copy[text.size()] = '\0';
  place += text.size() + 1;
  return copy;
}

}  // namespace

size_t count_elements(std::span<const size_t> dims) {
  if (dims.size() < 2) throw std::invalid_argument("Array has fewer than two dimensions.");
  if (std::find(dims.begin(), dims.end(), size_t{0}) != dims.end()) return 0;
  size_t count = 1;
  for (const size_t dim : dims) count = checked_product(count, dim);
  return count;
}

size_t layout_size(const Description& description) {
  const auto names = description.field_names;
  if (names.size() > INT_MAX) throw std::invalid_argument("Struct array has too many fields.");
  if (std::find(names.begin(), names.end(), nullptr) != names.end()) {
    throw std::invalid_argument("Field name is null.");
  }
  return rounded_up(sizeof(Layout) + names.size_bytes() + sorted_count(description) * sizeof(int) +
                    text_bytes(description)) +
         description.dims.size_bytes();
}

Layout* build_layout(void* place, const Description& description, size_t element_count,
                     size_t holders) {
  auto* const names =
      reinterpret_cast<const char**>(static_cast<std::byte*>(place) + sizeof(Layout));
  const size_t name_count = description.field_names.size();
  auto* const sorted = reinterpret_cast<int*>(names + name_count);
  const std::span<int> by_name(sorted, sorted_count(description));
  auto* text = reinterpret_cast<char*>(sorted + by_name.size());

  const char* const class_name = description.class_name != nullptr
                                     ? description.class_name
                                     : copy_text(text, description.object_name);
  for (size_t i = 0; i < name_count; ++i) names[i] = copy_text(text, description.field_names[i]);
  for (size_t i = 0; i < by_name.size(); ++i) by_name[i] = static_cast<int>(i);
  std::sort(by_name.begin(), by_name.end(), [names](int a, int b) {
    const int order = std::strcmp(names[a], names[b]);
    return order != 0 ? order < 0 : a < b;
  });

  auto* const dims = reinterpret_cast<size_t*>(
      static_cast<std::byte*>(place) + layout_size(description) - description.dims.size_bytes());
  std::copy(description.dims.begin(), description.dims.end(), dims);
  return ::new (place) Layout{
      .holders = holders,
      .block_bytes = layout_size(description),
      .class_id = description.class_id,
      .content = description.content,
      .complex = description.complex,
      .sparse = description.sparse,
      .class_name = class_name,
      .element_count = element_count,
      .element_bytes = description.element_bytes,
      .dims = {dims, description.dims.size()},
      .field_names = {names, name_count},
      .fields_by_name = by_name,
  };
}

int find_field(const Layout& layout, const char* name) noexcept {
  if (name == nullptr) return -1;
  const auto names = layout.field_names;
  if (layout.fields_by_name.empty()) {
    for (size_t i = 0; i < names.size(); ++i) {
      // Most names differ in their first letter: this comparison avoids the call.
      if (names[i][0] == name[0] && std::strcmp(names[i], name) == 0) return static_cast<int>(i);
    }
    return -1;
  }
  const auto less = [names](int field, const char* wanted) {
    return std::strcmp(names[static_cast<size_t>(field)], wanted) < 0;
  };
  const auto found =
      std::lower_bound(layout.fields_by_name.begin(), layout.fields_by_name.end(), name, less);
  const bool same = found != layout.fields_by_name.end() &&
                    std::strcmp(names[static_cast<size_t>(*found)], name) == 0;
  return same ? *found : -1;
}

}  // namespace numera::host::memory
