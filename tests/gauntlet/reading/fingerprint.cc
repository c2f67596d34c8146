#include "tests/gauntlet/reading/fingerprint.h"

#include <string_view>

#include "tests/gauntlet/making.h"

namespace numera::gauntlet::reading {
namespace {

class Hash {
 public:
  void add(std::uint64_t number) { sum_ = mix(sum_, number); }
  void add(std::string_view bytes) {
    add(bytes.size());
    for (const char byte : bytes) add(static_cast<std::uint8_t>(byte));
  }

  void add(const hxArray* value) {
    add(reinterpret_cast<std::uintptr_t>(value));
    if (value == nullptr) return;
    add(std::string_view(hxGetClassName(value)));
    for (const size_t extent : hxGetDimensions(value)) add(extent);
    add(hxIsComplex(value) ? 1U : 0U);
    add(hxIsSparse(value) ? 1U : 0U);
    const size_t count = hxGetNumberOfElements(value);
    if (const void* data = hxGetData(value); data != nullptr) {
      add(reinterpret_cast<std::uintptr_t>(data));
      add(std::string_view(static_cast<const char*>(data), count * hxGetElementSize(value)));
    }
    if (hxGetClassID(value) == hxClassID::Cell) {
      for (size_t i = 0; i < count; ++i) add(hxGetCell(value, i));
    }
    add_fields(value, count);
  }

  std::uint64_t sum() const { return sum_; }

 private:
  void add_fields(const hxArray* value, size_t count) {
    for (int number = 0; number < hxGetNumberOfFields(value); ++number) {
      const char* const name = hxGetFieldName(value, number);
      add(std::string_view(name));
      for (size_t i = 0; i < count; ++i) add(hxGetField(value, i, name));
    }
  }

  std::uint64_t sum_ = 0;
};

}  // namespace

std::uint64_t fingerprint(const hxArray* value) {
  Hash hash;
  hash.add(value);
  return hash.sum();
}

}  // namespace numera::gauntlet::reading
