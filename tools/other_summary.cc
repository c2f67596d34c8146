// Summaries of truth values, texts, bytes and lists.

#include <arrow/array.h>
#include <arrow/array/util.h>
#include <arrow/buffer.h>
#include <arrow/type_traits.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "tools/json_value.h"
#include "tools/value_summary.h"
#include "tools/value_table.h"
#include "tools/value_text.h"

namespace numera::tools {
namespace {

using ::arrow::Type;

class TruthSummary : public ValueSummary {
 public:
  void add(const ElementRows& elements) override {
    const auto& values = static_cast<const ::arrow::BooleanArray&>(*elements.values);
    for (const std::int64_t row : elements.rows) ++(values.Value(row) ? true_ : false_);
  }

  void put_into(Figures& figures) const override {
    figures[Figure::kDistinct] = count_figure((true_ > 0 ? 1 : 0) + (false_ > 0 ? 1 : 0));
    figures[Figure::kFalse] = count_figure(false_);
    figures[Figure::kTrue] = count_figure(true_);
  }

 private:
  std::int64_t true_ = 0;
  std::int64_t false_ = 0;
};

/// The shortest and the longest of some lengths.
class Lengths {
 public:
  void add(std::int64_t length) {
    shortest_ = std::min(shortest_, length);
    longest_ = std::max(longest_, length);
  }

  void put_into(Figures& figures) const {
    if (longest_ < 0) return;
    figures[Figure::kShortest] = count_figure(shortest_);
    figures[Figure::kLongest] = count_figure(longest_);
  }

 private:
  std::int64_t shortest_ = std::numeric_limits<std::int64_t>::max();
  std::int64_t longest_ = -1;  ///< until there is one
};

/// A list of the array has so many elements. The array has passed `check_memory`.
std::int64_t length_of_list(const ::arrow::Array& array, std::int64_t row) {
  switch (array.type_id()) {
    case Type::LARGE_LIST:
      return static_cast<const ::arrow::LargeListArray&>(array).value_length(row);
    case Type::LIST_VIEW:
      return static_cast<const ::arrow::ListViewArray&>(array).value_length(row);
    case Type::LARGE_LIST_VIEW:
      return static_cast<const ::arrow::LargeListViewArray&>(array).value_length(row);
    case Type::FIXED_SIZE_LIST:
      return static_cast<const ::arrow::FixedSizeListArray&>(array).value_length(row);
    default:
      return static_cast<const ::arrow::ListArray&>(array).value_length(row);
  }
}

class ListSummary : public ValueSummary {
 public:
  void add(const ElementRows& elements) override {
    for (const std::int64_t row : elements.rows) {
      lengths_.add(length_of_list(*elements.values, row));
    }
  }

  void put_into(Figures& figures) const override { lengths_.put_into(figures); }

 private:
  Lengths lengths_;
};

/// The number of characters of a text in UTF-8.
std::int64_t characters_of(std::string_view text) {
  return std::ranges::count_if(
      text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; });
}

/// Texts and bytes, in the order of their bytes.
class BytesSummary : public ValueSummary {
 public:
  BytesSummary(bool is_text, const SummaryBounds& bounds)
      : is_text_(is_text), distinct_(bounds.distinct_values, bounds.distinct_bytes) {}

  void add(const ElementRows& elements) override {
    for (const std::int64_t row : elements.rows) {
      add(bytes_of(*elements.values, row).value_or(std::string_view()));
    }
  }

  void put_into(Figures& figures) const override {
    figures[Figure::kDistinct] = distinct_figure(distinct_);
    if (is_empty_) return;
    figures[Figure::kMin] = figure_of(least_);
    figures[Figure::kMax] = figure_of(most_);
    lengths_.put_into(figures);
  }

 private:
  void add(std::string_view value) {
    distinct_.add(value);
    lengths_.add(is_text_ ? characters_of(value) : static_cast<std::int64_t>(value.size()));
    if (is_empty_ || value < least_) least_ = value;
    if (is_empty_ || value > most_) most_ = value;
    is_empty_ = false;
  }

  /// As `show` prints it, but an empty text in quotation marks.
  FigureValue figure_of(const std::string& value) const {
    const auto length = static_cast<std::int64_t>(value.size());
    const auto offsets = ::arrow::Buffer::FromVector(std::vector<std::int64_t>{0, length});
    const auto type = is_text_ ? ::arrow::large_utf8() : ::arrow::large_binary();
    const auto array = ::arrow::MakeArray(::arrow::ArrayData::Make(
        type, 1, {nullptr, offsets, std::make_shared<::arrow::Buffer>(value)}));
    std::string text = value_text(*array, 0, kWidestCell).value_or("");
    if (value.empty() && is_text_) text = "\"\"";
    return {std::move(text), json_value(*array, 0)};
  }

  bool is_text_;
  DistinctValues distinct_;
  Lengths lengths_;
  bool is_empty_ = true;
  std::string least_;
  std::string most_;
};

}  // namespace

std::unique_ptr<ValueSummary> summary_of_others(const ::arrow::DataType& type,
                                                const SummaryBounds& bounds) {
  const Type::type id = type.id();
  if (id == Type::BOOL) return std::make_unique<TruthSummary>();
  if (::arrow::is_string_or_string_view(id)) return std::make_unique<BytesSummary>(true, bounds);
  if (::arrow::is_binary_or_binary_view(id) || id == Type::FIXED_SIZE_BINARY) {
    return std::make_unique<BytesSummary>(false, bounds);
  }
  if (::arrow::is_list_like(id) || ::arrow::is_list_view(id))
    return std::make_unique<ListSummary>();
  return nullptr;
}

}  // namespace numera::tools
