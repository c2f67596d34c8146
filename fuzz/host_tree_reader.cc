#include <algorithm>
#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <utility>

#include "fuzz/host_tree.h"
#include "fuzz/host_tree_format.h"
#include "numera/host/memory.h"
#include "numera/host/string_array.h"

namespace numera::fuzz {
namespace {

// The weight of a value limits the length of its printed text. An element weighs 1. An array or a
// slot weighs kSlotWeight, because its name may be printed.
constexpr size_t kSlotWeight = 32;
constexpr size_t kMostWeight = 4000 * kSlotWeight;
constexpr int kMostLevels = 500;

using Dims = std::vector<size_t>;

/// The number of elements. Not exact above kMostElements.
size_t product(const Dims& dims) {
  if (std::ranges::find(dims, size_t{0}) != dims.end()) return 0;
  constexpr size_t kTooMany = kMostElements + 1;
  size_t elements = 1;
  for (const size_t dim : dims) elements = std::min(elements * std::min(dim, kTooMany), kTooMany);
  return elements;
}

class Reader {
 public:
  explicit Reader(ByteSource& source) : source_(source) {}

  HostTree read() {
    tree_.root = read_value(0);
    return std::move(tree_);
  }

 private:
  template <class Enum>
  Enum draw() {
    return static_cast<Enum>(source_.below(static_cast<size_t>(Enum::kCount)));
  }

  hxArrayPtr read_value(int level) {
    if (level >= kMostLevels || weight_ >= kMostWeight) return nullptr;
    const size_t before = weight_;
    weight_ += kSlotWeight;
    hxArrayPtr value = read_new_value(draw<Operation>(), level);
    if (value != nullptr) made_.push_back({value.get(), weight_ - before});
    return value;
  }

  hxArrayPtr read_new_value(Operation operation, int level) {
    switch (operation) {
      case Operation::kForm:
        return read_form(level);
      case Operation::kWord:
        return ascii_row(kWords[source_.below(kWords.size())]);
      case Operation::kNumbers:
        return read_numbers(hxComplexity::Real);
      case Operation::kComplex:
        return read_numbers(hxComplexity::Complex);
      case Operation::kLogical:
        return read_logical();
      case Operation::kChars:
        return read_chars();
      case Operation::kAscii: {
        const auto bytes = source_.take(source_.byte());
        return ascii_row({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
      }
      case Operation::kStrings:
        return read_strings();
      case Operation::kCell: {
        hxArrayPtr cell = hxCreateCellArray(read_dims());
        fill_slots(cell.get(), hxGetNumberOfElements(cell.get()), level);
        return cell;
      }
      case Operation::kStruct:
        return read_struct(std::nullopt, level);
      case Operation::kObject:
        return read_struct(std::string(kWords[source_.below(kWords.size())]), level);
      case Operation::kShared:
        return read_shared();
      case Operation::kSparse:
        tree_.has_sparse = true;
        return host::memory::CreateSparseArray(read_dims(), read_class());
      case Operation::kEmpty:
      case Operation::kCount:
        return nullptr;
    }
    return nullptr;
  }

  Dims read_dims() {
    Dims dims = read_any_dims();
    if (product(dims) > kMostElements) return {1, 1};
    return dims;
  }

  Dims read_any_dims() {
    switch (draw<Shape>()) {
      case Shape::kColumn:
        return {source_.byte(), 1};
      case Shape::kRow:
        return {1, source_.byte()};
      case Shape::kNone:
        return {0, 0};
      case Shape::kLongColumn:
        return {source_.word(), 1};
      case Shape::kGeneral: {
        Dims dims(2 + source_.below(4));
        for (size_t& dim : dims) dim = source_.word();
        return dims;
      }
      case Shape::kHugeNone:
        return {std::numeric_limits<size_t>::max(), 0};
      case Shape::kOne:
      case Shape::kCount:
        return {1, 1};
    }
    return {1, 1};
  }

  hxClassID read_class() { return kNumberClasses[source_.below(kNumberClasses.size())]; }

  static hxArrayPtr ascii_row(std::string_view text) {
    return hxCreateCharArray(text.data(), text.size());
  }

  template <class T>
  void fill(T* elements, size_t count) {
    weight_ += count;
    const Filling filling = draw<Filling>();
    if (filling == Filling::kBytes) {
      const auto bytes = source_.take(count * sizeof(T));
      if (!bytes.empty()) std::memcpy(elements, bytes.data(), bytes.size());
      return;
    }
    for (size_t i = 0; i < count; ++i) {
      if (filling == Filling::kSmall) {
        elements[i] = static_cast<T>(static_cast<std::int8_t>(source_.byte()));
      } else {
        elements[i] = filling == Filling::kRamp ? static_cast<T>(i) : T{};
      }
    }
  }

  hxArrayPtr read_numbers(hxComplexity complexity) {
    const hxClassID class_id = read_class();
    hxArrayPtr array = hxCreateNumericArray(read_dims(), class_id, complexity);
    const size_t parts = complexity == hxComplexity::Complex ? 2 : 1;
    const size_t count = hxGetNumberOfElements(array.get()) * parts;
    void* const elements = hxGetData(array.get());
    if (class_id == hxClassID::Double) {
      fill(static_cast<double*>(elements), count);
    } else if (class_id == hxClassID::Single) {
      fill(static_cast<float*>(elements), count);
    } else {
      switch (hxGetElementSize(array.get()) / parts) {
        case 1:
          fill(static_cast<std::uint8_t*>(elements), count);
          break;
        case 2:
          fill(static_cast<std::uint16_t*>(elements), count);
          break;
        case 4:
          fill(static_cast<std::uint32_t*>(elements), count);
          break;
        default:
          fill(static_cast<std::uint64_t*>(elements), count);
          break;
      }
    }
    return array;
  }

  hxArrayPtr read_logical() {
    hxArrayPtr array = hxCreateNumericArray(read_dims(), hxClassID::Logical, hxComplexity::Real);
    auto* const elements = static_cast<std::uint8_t*>(hxGetData(array.get()));
    const size_t count = hxGetNumberOfElements(array.get());
    fill(elements, count);
    for (size_t i = 0; i < count; ++i) elements[i] &= 1;
    return array;
  }

  hxArrayPtr read_chars() {
    const Dims dims = read_dims();
    std::vector<char16_t> units(product(dims));
    fill(units.data(), units.size());
    return host::memory::CreateCharArray(dims, units.data());
  }

  hxArrayPtr read_strings() {
    const Dims dims = read_dims();
    auto strings = hxMakeStringArray(dims);
    weight_ += strings->size();
    for (size_t i = 0; i < strings->size() && !source_.rest().empty(); ++i) {
      const size_t length = source_.byte();
      if (length == kMissingText) {
        strings->set_missing(i);
        continue;
      }
      std::vector<char16_t> units(length);
      fill(units.data(), length);
      strings->set(i, {units.data(), length});
    }
    return hxCreateStringArrayFrom(std::move(strings));
  }

  void fill_slots(hxArray* array, size_t slots, int level) {
    weight_ += kSlotWeight * slots;  // an empty slot weighs as much as a filled one
    for (size_t i = 0; i < slots && !source_.rest().empty(); ++i) {
      hxSetCell(array, i, read_value(level + 1));
    }
  }

  hxArrayPtr read_form(int level) {
    const auto names = names_of_form(source_.below(kForms.size()));
    const size_t count = source_.byte();
    hxArrayPtr array = hxCreateStructArray(Dims{count, 1}, names);
    fill_slots(array.get(), count * names.size(), level);
    return array;
  }

  hxArrayPtr read_struct(const std::optional<std::string>& class_name, int level) {
    Dims dims = read_dims();
    std::vector<std::string> names(source_.below(16));
    for (std::string& name : names) {
      const auto bytes = source_.take(source_.below(32));
      name.assign(bytes.begin(), std::ranges::find(bytes, std::uint8_t{0}));
    }
    if (product(dims) * names.size() > kMostElements) dims = {1, 1};
    std::vector<const char*> pointers;
    for (const std::string& name : names) pointers.push_back(name.c_str());
    hxArrayPtr array = class_name ? host::memory::CreateObjectArray(*class_name, dims, pointers)
                                  : hxCreateStructArray(dims, pointers);
    fill_slots(array.get(), product(dims) * names.size(), level);
    return array;
  }

  hxArrayPtr read_shared() {
    if (made_.empty()) return nullptr;
    const auto [array, weight] = made_[source_.word() % made_.size()];
    if (weight_ + weight > kMostWeight) return nullptr;
    weight_ += weight;
    return hxSharedCopy(array);
  }

  struct Made {
    const hxArray* array;
    size_t weight;  ///< with its whole content
  };

  ByteSource& source_;
  HostTree tree_;
  std::vector<Made> made_;
  size_t weight_ = 0;
};

}  // namespace

HostTree read_host_tree(ByteSource& source) { return Reader(source).read(); }

}  // namespace numera::fuzz
