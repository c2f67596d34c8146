#include "tools/look.h"

#include <optional>
#include <ostream>
#include <vector>

#include "numera/numera.h"
#include "tools/json.h"
#include "tools/terminal.h"
#include "tools/text_table.h"

namespace numera::tools {
namespace {

namespace core = numera::io::arrow::core;

/// "Type" of an encoded column of this type; none if the type is refused.
std::optional<std::string> encoded_type(const std::shared_ptr<::arrow::DataType>& type) {
  const auto nothing = std::make_shared<::arrow::ChunkedArray>(::arrow::ArrayVector{}, type);
  const auto encoded = core::to_numera(nothing);
  if (!encoded.ok()) return std::nullopt;
  return core::util::HxArrayToString(hxGetField(encoded->get(), 0, "Type"));
}

/// Reads the file to its end.
::arrow::Result<files::StatedCounts> count(files::Source& source) {
  std::vector<std::int64_t> nulls(static_cast<size_t>(source.schema()->num_fields()), 0);
  std::int64_t rows = 0;
  Progress progress(source);
  while (true) {
    ARROW_ASSIGN_OR_RAISE(const auto batch, source.Next());
    if (batch == nullptr) break;
    for (size_t i = 0; i < nulls.size(); ++i) {
      nulls[i] += batch->column(static_cast<int>(i))->null_count();
    }
    rows += batch->num_rows();
    progress.show(rows);
    hxThrowIfInterruptPending();
  }
  return files::StatedCounts{rows, source.chunks(), {nulls.begin(), nulls.end()}};
}

/// The types of a column, and its numbers.
struct ColumnTypes {
  std::string name;
  std::string arrow_type;
  std::optional<std::string> encoded_type;
  std::optional<std::string> host_class;
  std::optional<std::int64_t> nulls;
};

std::vector<ColumnTypes> types_of(const ::arrow::Schema& schema,
                                  const files::StatedCounts& counts) {
  std::vector<ColumnTypes> columns;
  for (size_t i = 0; i < counts.nulls.size(); ++i) {
    const auto& field = schema.field(static_cast<int>(i));
    columns.push_back({field->name(), field->type()->ToString(), encoded_type(field->type()),
                       core::to_numera_datatype(field->type()), counts.nulls[i]});
  }
  return columns;
}

std::string number_or_dash(const std::optional<std::int64_t>& number) {
  return number ? grouped(*number) : "-";
}

void print_list(const std::vector<ColumnTypes>& columns, const files::StatedCounts& counts,
                std::ostream& out) {
  TextTable table(
      {"column", "Arrow type", "encoded type", "host class", "rows", "chunks", "nulls"});
  for (const ColumnTypes& column : columns) {
    table.add({column.name, column.arrow_type, column.encoded_type.value_or("-"),
               column.host_class.value_or("-"), number_or_dash(counts.rows),
               number_or_dash(counts.chunks), number_or_dash(column.nulls)});
  }
  table.print(out, output_has_colour());
}

void print_list_as_json(const std::vector<ColumnTypes>& columns, const files::StatedCounts& counts,
                        std::ostream& out) {
  for (const ColumnTypes& column : columns) {
    out << json_object({{"column", json_text(column.name)},
                        {"arrow_type", json_text(column.arrow_type)},
                        {"encoded_type", json_text_or_null(column.encoded_type)},
                        {"host_class", json_text_or_null(column.host_class)},
                        {"rows", json_number(counts.rows)},
                        {"chunks", json_number(counts.chunks)},
                        {"nulls", json_number(column.nulls)}})
        << '\n';
  }
}

}  // namespace

::arrow::Status print_types(const std::vector<std::string>& paths,
                            const files::ReadOptions& options, const TypesOptions& types,
                            std::ostream& out) {
  ARROW_ASSIGN_OR_RAISE(const auto source, files::open_source(paths, options));
  files::StatedCounts counts;
  if (types.count) {
    ARROW_ASSIGN_OR_RAISE(counts, count(*source));
  } else {
    counts = source->stated();
  }
  (types.json ? print_list_as_json : print_list)(types_of(*source->schema(), counts), counts, out);
  return ::arrow::Status::OK();
}

}  // namespace numera::tools
