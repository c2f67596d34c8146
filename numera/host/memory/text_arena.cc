#include "numera/host/memory/text_arena.h"

#include <algorithm>
#include <functional>

namespace numera::host::memory {

void TextArena::append(std::u16string_view text) {
  if (text.empty()) return;
  const std::less<> before;
  const bool own =
      block_ != nullptr && !before(text.data(), units()) && before(text.data(), units() + size_);
  const size_t position = own ? static_cast<size_t>(text.data() - units()) : 0;
  char16_t* const place = extend(text.size());
  std::copy_n(own ? units() + position : text.data(), text.size(), place);
}

void TextArena::resize_block(size_t capacity) {
  void* const moved = reallocate(block_.get(), checked_product(capacity, sizeof(char16_t)));
  static_cast<void>(block_.release());
  block_.reset(moved);
  capacity_ = capacity;
}

}  // namespace numera::host::memory
