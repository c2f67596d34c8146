#include "numera/extras/intake/fixed_values.h"

#include <arrow/util/decimal.h>

#include <cstring>

#include "numera/extras/intake/memory.h"

namespace numera::extras::intake {
namespace {

using ::arrow::Type;

constexpr std::int64_t kSecondsOfDay = 86'400;

std::int64_t units_of_day(const ::arrow::DataType& type) {
  switch (static_cast<const ::arrow::TimeType&>(type).unit()) {
    case ::arrow::TimeUnit::SECOND:
      return kSecondsOfDay;
    case ::arrow::TimeUnit::MILLI:
      return kSecondsOfDay * 1'000;
    case ::arrow::TimeUnit::MICRO:
      return kSecondsOfDay * 1'000'000;
    default:
      return kSecondsOfDay * 1'000'000'000;
  }
}

bool is_time_of_day(const ::arrow::DataType& type, std::int64_t value) {
  return value >= 0 && value < units_of_day(type);
}

template <class Decimal>
bool is_within_precision(const ::arrow::DataType& type, const Decimal& value) {
  return value.FitsInPrecision(static_cast<const ::arrow::DecimalType&>(type).precision());
}

/// Whether element `place` is a valid value of the type, as Arrow's full validation sees it.
bool is_value(const ::arrow::DataType& type, const ::arrow::Buffer& values, std::int64_t place) {
  switch (type.id()) {
    case Type::DATE64:
      return load<std::int64_t>(values, place) % (kSecondsOfDay * 1'000) == 0;
    case Type::TIME32:
      return is_time_of_day(type, load<std::int32_t>(values, place));
    case Type::TIME64:
      return is_time_of_day(type, load<std::int64_t>(values, place));
    case Type::DECIMAL32:
      return is_within_precision(type, ::arrow::Decimal32(load<std::int32_t>(values, place)));
    case Type::DECIMAL64:
      return is_within_precision(type, ::arrow::Decimal64(load<std::int64_t>(values, place)));
    case Type::DECIMAL128:
      return is_within_precision(type, load<::arrow::Decimal128>(values, place));
    default:
      return is_within_precision(type, load<::arrow::Decimal256>(values, place));
  }
}

}  // namespace

bool has_bad_values(Type::type id) {
  return id == Type::DATE64 || ::arrow::is_time(id) || ::arrow::is_decimal(id);
}

DataResult with_zero_for_bad_values(const Work& work, const Data& array,
                                    const ::arrow::DataType& type, const std::vector<bool>& shown) {
  Data mended = array;
  if (!has_bad_values(type.id()) || array->buffers[1] == nullptr) return mended;
  for (size_t i = 0; i < shown.size(); ++i) {
    const std::int64_t place = array->offset + static_cast<std::int64_t>(i);
    if (shown[i] || is_value(type, *array->buffers[1], place)) continue;
    if (mended == array) {
      const auto& values = array->buffers[1];
      mended = array->Copy();
      ARROW_ASSIGN_OR_RAISE(mended->buffers[1], values->CopySlice(0, values->size(), work.pool));
    }
    const auto width =
        static_cast<size_t>(static_cast<const ::arrow::FixedWidthType&>(type).bit_width()) / 8;
    std::memset(mended->buffers[1]->mutable_data() + static_cast<size_t>(place) * width, 0, width);
  }
  return mended;
}

}  // namespace numera::extras::intake
