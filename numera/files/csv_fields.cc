#include "numera/files/csv_fields.h"

#include <arrow/csv/parser.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>

#include "numera/files/row_blocks.h"

namespace numera::files {
namespace {

namespace csv = ::arrow::csv;

/// The number of columns of the first rows; 1 if they differ.
std::int32_t columns_of(std::string_view text, char delimiter, std::int32_t rows) {
  auto parse = csv::ParseOptions::Defaults();
  parse.delimiter = delimiter;
  csv::BlockParser parser(parse, -1, -1, rows);
  std::uint32_t size = 0;
  return parser.Parse(text, &size).ok() && parser.num_rows() > 0 ? parser.num_cols() : 1;
}

void add_nulls(const ReadOptions& options, csv::ConvertOptions& fields) {
  fields.null_values.insert(fields.null_values.end(), options.csv_nulls.begin(),
                            options.csv_nulls.end());
}

constexpr int kPlacesPerKind = 10;
constexpr int kTextPlace = 100;
constexpr int kBytesPlace = 101;

/// The place of a type among those of its kind, each of which reads the fields of the ones before
/// it. Texts and bytes read all fields.
std::optional<int> place_of(const ::arrow::DataType& type) {
  switch (type.id()) {
    case ::arrow::Type::INT64:
      return 0;
    case ::arrow::Type::DOUBLE:
      return 1;
    case ::arrow::Type::DATE32:
      return 10;
    case ::arrow::Type::TIMESTAMP: {
      const auto& times = static_cast<const ::arrow::TimestampType&>(type);
      const int kind = times.timezone().empty() ? 10 : 20;
      return kind + (times.unit() == ::arrow::TimeUnit::SECOND ? 1 : 2);
    }
    case ::arrow::Type::STRING:
      return kTextPlace;
    case ::arrow::Type::BINARY:
      return kBytesPlace;
    default:
      return std::nullopt;
  }
}

}  // namespace

::arrow::Result<char> find_delimiter(std::string_view start) {
  constexpr std::string_view kDelimiters = ",\t;|";
  constexpr std::int32_t kRowsLookedAt = 10;
  if (start.starts_with(kByteOrderMark)) start.remove_prefix(kByteOrderMark.size());
  char best = kDelimiters.front();
  std::int32_t most = 1;
  for (const char delimiter : kDelimiters) {
    const std::int32_t columns = columns_of(start, delimiter, 1);
    if (columns > most) best = delimiter;
    most = std::max(most, columns);
  }
  if (most > 1) return best;
  const std::string_view rows = start.substr(std::min(start.find('\n'), start.size()));
  const std::int32_t columns = columns_of(rows, '\t', kRowsLookedAt);
  if (columns == 1) return best;
  return ::arrow::Status::Invalid("its first line has one column, and the next lines have ",
                                  columns, ", separated by tabs");
}

csv::ConvertOptions fields_of_texts(const ReadOptions& options) {
  auto fields = csv::ConvertOptions::Defaults();
  fields.null_values = {""};
  fields.strings_can_be_null = true;
  fields.quoted_strings_can_be_null = false;
  add_nulls(options, fields);
  return fields;
}

csv::ConvertOptions fields_of_others(const ReadOptions& options) {
  auto fields = csv::ConvertOptions::Defaults();
  add_nulls(options, fields);
  return fields;
}

std::shared_ptr<::arrow::DataType> common_type(const std::shared_ptr<::arrow::DataType>& one,
                                               const std::shared_ptr<::arrow::DataType>& other) {
  if (one->id() == ::arrow::Type::NA || one->Equals(*other)) return other;
  if (other->id() == ::arrow::Type::NA) return one;
  const auto low = std::min(place_of(*one), place_of(*other));
  const auto high = std::max(place_of(*one), place_of(*other));
  const bool is_one_kind = low && *low / kPlacesPerKind == *high / kPlacesPerKind;
  if (is_one_kind) return high == place_of(*one) ? one : other;
  return high == kBytesPlace ? ::arrow::binary() : ::arrow::utf8();
}

}  // namespace numera::files
