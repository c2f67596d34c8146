#include "tests/gauntlet/memory.h"

#include <cstring>
#include <utility>

namespace numera::gauntlet {
namespace {

class OwnBuffer : public ::arrow::Buffer {
 public:
  OwnBuffer(std::unique_ptr<std::uint8_t[]> block, size_t start, size_t size)
      : Buffer(block.get() + start, static_cast<std::int64_t>(size)), block_(std::move(block)) {}

 private:
  std::unique_ptr<std::uint8_t[]> block_;
};

bool ends_early(Part part, Memory memory) {
  switch (part) {
    case Part::kBitmap:
      return memory == Memory::kShortBitmap;
    case Part::kValues:
      return memory == Memory::kShortValues;
    case Part::kBytes:
      return memory == Memory::kShortBytes;
  }
  return false;
}

}  // namespace

const char* name_of(Memory memory) {
  switch (memory) {
    case Memory::kExact:
      return "exact buffers";
    case Memory::kLonger:
      return "longer buffers";
    case Memory::kUnaligned:
      return "unaligned buffers";
    case Memory::kShortBitmap:
      return "short bitmaps";
    case Memory::kShortValues:
      return "short values";
    case Memory::kShortBytes:
      return "short bytes";
    case Memory::kNoValues:
      return "no values";
  }
  return "";
}

std::shared_ptr<::arrow::Buffer> make_buffer(Bytes bytes, Part part, Memory memory, bool cut_half) {
  if (memory == Memory::kNoValues && part == Part::kValues) return nullptr;
  if (memory == Memory::kLonger) {
    for (size_t i = 0; i < 67; ++i) bytes.push_back(static_cast<std::uint8_t>(0xA5 ^ (37 * i)));
  }
  if (ends_early(part, memory) && !bytes.empty()) {
    bytes.resize(cut_half ? bytes.size() / 2 : bytes.size() - 1);
  }
  const size_t start = memory == Memory::kUnaligned ? 1 : 0;
  auto block = std::make_unique_for_overwrite<std::uint8_t[]>(start + bytes.size());
  if (!bytes.empty()) std::memcpy(block.get() + start, bytes.data(), bytes.size());
  return std::make_shared<OwnBuffer>(std::move(block), start, bytes.size());
}

}  // namespace numera::gauntlet
