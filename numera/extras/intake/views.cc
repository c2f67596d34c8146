#include <string_view>

#include "numera/extras/intake/plain_text.h"
#include "numera/extras/intake/takes.h"

namespace numera::extras::intake {
namespace {

/// The bytes of a view. A short value is stored in the view itself, a longer one in a data buffer.
/// The data buffers start at the third buffer.
std::string_view bytes_of(const ::arrow::ArrayData& array, std::int64_t index) {
  using View = ::arrow::BinaryViewType::c_type;
  const std::uint8_t* view = array.buffers[1]->data() + index * std::int64_t{sizeof(View)};
  View header;
  std::memcpy(&header, view, sizeof(View));
  const auto size = static_cast<size_t>(header.size());
  const std::uint8_t* bytes = view + sizeof(std::int32_t);
  if (!header.is_inline()) {
    const auto& buffer = array.buffers[2 + static_cast<size_t>(header.ref.buffer_index)];
    bytes = buffer->data() + header.ref.offset;
  }
  return {reinterpret_cast<const char*>(bytes), size};
}

}  // namespace

DataResult cast_view(Work& work, const std::string&, const ::arrow::ArrayData& array) {
  ARROW_ASSIGN_OR_RAISE(const Data slots, without_offset(work, array));
  const bool is_text = array.type->id() == ::arrow::Type::STRING_VIEW;
  return make_text(work, is_text ? ::arrow::utf8() : ::arrow::binary(),
                   is_text ? ::arrow::large_utf8() : ::arrow::large_binary(), *slots,
                   [&](std::int64_t i) { return bytes_of(array, array.offset + i); });
}

}  // namespace numera::extras::intake
