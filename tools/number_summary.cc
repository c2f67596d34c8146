// Summaries of numbers, dates and times. Integers, dates and times are held as integers, so that
// all of them are exact.

#include <arrow/array/array_primitive.h>
#include <arrow/array/util.h>
#include <arrow/buffer.h>
#include <arrow/type_traits.h>
#include <arrow/util/decimal.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <type_traits>
#include <utility>
#include <vector>

#include "tools/fixed_text.h"
#include "tools/histogram.h"
#include "tools/json.h"
#include "tools/json_value.h"
#include "tools/sample.h"
#include "tools/stored_numbers.h"
#include "tools/text_table.h"
#include "tools/value_summary.h"

namespace numera::tools {
namespace {

using ::arrow::Decimal256;
using ::arrow::Type;

/// -0 comes before 0.
template <typename Value>
bool comes_before(const Value& one, const Value& other) {
  if constexpr (std::is_same_v<Value, double>) {
    if (one == 0 && other == 0) return std::signbit(one) && !std::signbit(other);
  }
  return one < other;
}

/// Six digits, and all digits before the point.
std::string mean_text(double mean) {
  const double size = std::abs(mean);
  const bool is_plain = size == 0 || (size >= 1e-5 && size < 1e15);
  char text[64];
  if (!is_plain) {
    if (!std::isfinite(mean)) return std::isnan(mean) ? "NaN" : mean < 0 ? "-inf" : "inf";
    std::snprintf(text, sizeof text, "%.6g", mean);
    return text;
  }
  const int digits =
      size == 0 ? 0 : std::max(0, 5 - static_cast<int>(std::floor(std::log10(size))));
  std::snprintf(text, sizeof text, "%.*f", digits, mean);
  std::string shown = text;
  if (digits > 0) shown.erase(shown.find_last_not_of('0') + 1);
  if (shown.ends_with('.')) shown.pop_back();
  return shown;
}

bool is_time(const ::arrow::DataType& type) {
  return ::arrow::is_temporal(type.id()) || type.id() == Type::DURATION;
}

template <typename Value>
class NumberSummary : public ValueSummary {
 public:
  NumberSummary(std::shared_ptr<::arrow::DataType> type, const SummaryBounds& bounds)
      : type_(std::move(type)),
        distinct_(bounds.distinct_values, bounds.distinct_bytes),
        sample_(bounds.sample) {
    if (::arrow::is_decimal(type_->id())) {
      scale_ = static_cast<const ::arrow::DecimalType&>(*type_).scale();
    }
  }

  void add(const ElementRows& elements) override {
    each_number(elements, Value(),
                [this](const auto& value) { add_one(static_cast<Value>(value)); });
  }

  void put_into(Figures& figures) const override {
    figures[Figure::kDistinct] = distinct_figure(distinct_);
    if (std::is_same_v<Value, double>) {
      figures[Figure::kNaN] = {nans_ > 0 ? grouped(nans_) : "", json_number(nans_)};
    }
    if (count_ == 0) return;
    figures[Figure::kMin] = figure_of(least_);
    figures[Figure::kMax] = figure_of(most_);
    put_mean(figures);
    put_spread(figures);
  }

 private:
  void add_one(const Value& value) {
    if constexpr (std::is_same_v<Value, double>) {
      if (std::isnan(value)) {
        ++nans_;
        return distinct_.add("NaN");
      }
    }
    distinct_.add(std::string_view(reinterpret_cast<const char*>(&value), sizeof value));
    if (count_ == 0) least_ = most_ = value;
    if (comes_before(value, least_)) least_ = value;
    if (comes_before(most_, value)) most_ = value;
    if (count_ == 0 && !std::is_same_v<Value, double>) first_ = number(value);
    sum_ += number(value) - first_;
    ++count_;
    const auto size = static_cast<double>(number(value));
    if (std::isfinite(size)) {
      lower_end_ = std::min(lower_end_, size);
      upper_end_ = std::max(upper_end_, size);
    }
    sample_.add(value);
  }

  long double number(const Value& value) const {
    if constexpr (std::is_same_v<Value, Decimal256>) {
      return value.ToDouble(scale_);
    } else {
      return value;
    }
  }

  FigureValue figure_of(const Value& value) const {
    const auto data = ::arrow::ArrayData::Make(
        type_, 1, {nullptr, ::arrow::Buffer::FromString(stored_bytes(value, *type_))});
    const auto array = ::arrow::MakeArray(data);
    return {fixed_text(*array, 0).value_or("?"), json_value(*array, 0)};
  }

  void put_mean(Figures& figures) const {
    const long double mean = first_ + sum_ / static_cast<long double>(count_);
    if constexpr (std::is_same_v<Value, std::int64_t>) {
      if (is_time(*type_)) {
        const bool is_most = mean >= number(most_);  // which rounding would leave
        figures[Figure::kMean] =
            figure_of(is_most ? most_ : static_cast<Value>(std::floor(mean + 0.5L)));
        return;
      }
    }
    const auto nearest = static_cast<double>(mean);
    const ::arrow::DoubleArray array(1, ::arrow::Buffer::FromVector(std::vector<double>{nearest}));
    figures[Figure::kMean] = {mean_text(nearest), json_value(array, 0)};
  }

  void put_spread(Figures& figures) const {
    const std::vector<Value> sorted = sample_.sorted(comes_before<Value>);
    const std::pair<Figure, size_t> quantiles[] = {{Figure::k5, 5},
                                                   {Figure::k25, 25},
                                                   {Figure::k50, 50},
                                                   {Figure::k75, 75},
                                                   {Figure::k95, 95}};
    for (const auto& [figure, percent] : quantiles) {
      FigureValue found = figure_of(quantile(sorted, percent));
      found.is_estimate = sample_.is_partial();
      if (found.is_estimate) found.text.insert(0, "~");
      figures[figure] = std::move(found);
    }
    std::vector<double> numbers;
    numbers.reserve(sorted.size());
    for (const Value& value : sorted) numbers.push_back(static_cast<double>(number(value)));
    put_histogram(histogram(numbers, lower_end_, upper_end_), figures);
  }

  void put_histogram(const Histogram& counts, Figures& figures) const {
    std::string drawn = bars(counts);
    if (drawn.empty()) return;
    Value least = least_;
    Value most = most_;
    if constexpr (std::is_same_v<Value, double>) {  // these may be infinite
      least = lower_end_;
      most = upper_end_;
    }
    std::vector<std::string> numbers;
    numbers.reserve(counts.size());
    for (const std::int64_t count : counts) numbers.push_back(json_number(count));
    figures[Figure::kHistogram] = {std::move(drawn),
                                   json_object({{"from", figure_of(least).json},
                                                {"to", figure_of(most).json},
                                                {"counts", json_array(numbers)}}),
                                   sample_.is_partial()};
  }

  std::shared_ptr<::arrow::DataType> type_;
  std::int32_t scale_ = 0;  ///< of a decimal type
  DistinctValues distinct_;
  Sample<Value> sample_;
  long long count_ = 0;  ///< without NaN
  long long nans_ = 0;
  Value least_ = Value();
  Value most_ = Value();
  double lower_end_ = std::numeric_limits<double>::infinity();  ///< of the finite values
  double upper_end_ = -std::numeric_limits<double>::infinity();
  /// Sums of differences from the first value keep the digits of large integers. 0 for floating
  /// point, where the first value may be infinite.
  long double first_ = 0;
  long double sum_ = 0;
};

}  // namespace

std::unique_ptr<ValueSummary> summary_of_numbers(const std::shared_ptr<::arrow::DataType>& type,
                                                 const SummaryBounds& bounds) {
  const Type::type id = type->id();
  if (id == Type::UINT64) return std::make_unique<NumberSummary<std::uint64_t>>(type, bounds);
  if (::arrow::is_integer(id) || is_time(*type)) {
    return std::make_unique<NumberSummary<std::int64_t>>(type, bounds);
  }
  if (::arrow::is_floating(id)) return std::make_unique<NumberSummary<double>>(type, bounds);
  if (::arrow::is_decimal(id)) return std::make_unique<NumberSummary<Decimal256>>(type, bounds);
  return nullptr;
}

}  // namespace numera::tools
