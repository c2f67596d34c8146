#pragma once

#include <arrow/type.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "tools/distinct_values.h"
#include "tools/element_rows.h"

namespace numera::tools {

/// What a summary says of a column, in the order of its lines.
enum class Figure {
  kNulls,
  kDistinct,
  kNaN,
  kFalse,
  kTrue,
  kMin,
  k5,
  k25,
  k50,
  k75,
  k95,
  kMax,
  kMean,
  kShortest,
  kLongest,
  kHistogram
};

struct FigureValue {
  std::string text;  ///< in the table; empty where its line would say nothing
  std::string json;
  bool is_estimate = false;  ///< of a sample, or a number that the column exceeds
};

/// \name Makers of figures
/// @{
FigureValue count_figure(std::int64_t count);
/// "1,234", or "more than 10,000" beyond the bound.
FigureValue distinct_figure(const DistinctValues& values);
/// @}

/// The figures that a column has.
using Figures = std::map<Figure, FigureValue>;

/// What a summary of a column may hold.
struct SummaryBounds {
  size_t distinct_values = 10'000;
  size_t distinct_bytes = 1'000'000;
  size_t sample = 100'000;  ///< values from which quantiles are read
};

/// The figures of the values of a column, which are added part by part.
class ValueSummary {
 public:
  virtual ~ValueSummary() = default;
  ValueSummary(const ValueSummary&) = delete;
  ValueSummary& operator=(const ValueSummary&) = delete;

  /// `elements.values` has the type that the summary was made for.
  virtual void add(const ElementRows& elements) = 0;
  virtual void put_into(Figures& figures) const = 0;

 protected:
  ValueSummary() = default;
};

/// \name One maker per kind of type
/// A type is one that `resolved_type` returns.
/// @{
/// Numbers, dates and times; null for other types.
std::unique_ptr<ValueSummary> summary_of_numbers(const std::shared_ptr<::arrow::DataType>& type,
                                                 const SummaryBounds& bounds);
/// Truth values, texts, bytes, lists and maps; null for other types.
std::unique_ptr<ValueSummary> summary_of_others(const ::arrow::DataType& type,
                                                const SummaryBounds& bounds);
/// @}

}  // namespace numera::tools
