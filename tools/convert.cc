#include "tools/convert.h"

#include <arrow/compare.h>
#include <arrow/util/byte_size.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ostream>
#include <stdexcept>
#include <utility>
#include <vector>

#include "numera/extras/inspect/inspect.h"
#include "numera/numera.h"
#include "tools/file_input.h"
#include "tools/text_table.h"

namespace numera::tools {
namespace {

namespace core = numera::io::arrow::core;

/// Bytes of Arrow memory taken one way, and the time that it took.
struct Way {
  std::int64_t bytes = 0;
  double seconds = 0;
};

struct Column {
  Column(std::string column_name, std::shared_ptr<::arrow::ChunkedArray> column_values)
      : name(std::move(column_name)), values(std::move(column_values)) {}

  std::string name;
  std::shared_ptr<::arrow::ChunkedArray> values;
  std::string encoded_type = "-";
  std::string way_back;
  std::string tree;

  bool returned() const { return way_back == "equal"; }
};

std::string first_line(const std::string& text) { return text.substr(0, text.find('\n')); }

/// Runs a conversion and adds the time of one that succeeds. What the host refuses by an exception,
/// which the library lets pass, becomes a status like every other refusal.
template <class Function>
auto timed(double& seconds, Function&& convert) -> decltype(convert()) {
  const auto start = std::chrono::steady_clock::now();
  try {
    auto result = convert();
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    if (result.ok()) seconds += taken.count();
    return result;
  } catch (const std::logic_error& refusal) {
    return ::arrow::Status::Invalid(refusal.what());
  } catch (const hxCodecError& refusal) {
    return ::arrow::Status::Invalid(refusal.what());
  }
}

/// NaN equals NaN, but -0 is not 0: what comes back is what went.
::arrow::EqualOptions same_values() {
  return ::arrow::EqualOptions::Defaults().nans_equal(true).signed_zeros_equal(false);
}

std::int64_t bytes_of(const ::arrow::ChunkedArray& values) {
  return ::arrow::util::ReferencedBufferSize(values).ValueOr(0);
}

/// "equal", or in what the values that came back differ from those that went. Chunking is set
/// aside.
std::string compare(const ::arrow::ChunkedArray& went,
                    const std::shared_ptr<::arrow::Array>& came) {
  if (!came->type()->Equals(went.type())) return "returns as " + came->type()->ToString();
  if (came->length() != went.length()) {
    return "returns " + grouped(came->length()) + " of " + grouped(went.length()) + " rows";
  }
  return ::arrow::ChunkedArray(came).Equals(went, same_values()) ? "equal" : "differs";
}

/// Takes one column there and back.
void convert_column(Column& column, bool show, Way& to_host, Way& to_arrow) {
  auto host = timed(to_host.seconds, [&] { return core::to_numera(column.values); });
  if (!host.ok()) {
    column.way_back = first_line(host.status().message());
    return;
  }
  to_host.bytes += bytes_of(*column.values);
  column.encoded_type = hxGetString(hxGetField(host->get(), 0, "Type"));
  if (show) column.tree = extras::print(host->get(), {.max_elements = 5});
  auto back = timed(to_arrow.seconds, [&] { return core::to_arrow<::arrow::Array>(host->get()); });
  if (!back.ok()) {
    column.way_back = first_line(back.status().message());
    return;
  }
  to_arrow.bytes += bytes_of(::arrow::ChunkedArray(*back));
  column.way_back = compare(*column.values, *back);
}

/// The columns that come back, as one table there and back.
::arrow::Result<bool> whole_table_returns(const std::vector<Column>& columns) {
  ::arrow::FieldVector fields;
  ::arrow::ChunkedArrayVector values;
  for (const Column& column : columns) {
    if (!column.returned()) continue;
    fields.push_back(::arrow::field(column.name, column.values->type()));
    values.push_back(column.values);
  }
  const auto table = ::arrow::Table::Make(::arrow::schema(fields), values);
  ARROW_ASSIGN_OR_RAISE(const hxArrayPtr host, core::to_numera(table));
  ARROW_ASSIGN_OR_RAISE(const auto back, core::to_arrow_table(host.get()));
  return back->Equals(*table, same_values());
}

void print_way(std::ostream& out, const char* label, const Way& way) {
  char seconds[32];
  std::snprintf(seconds, sizeof seconds, "%.6f", way.seconds);
  out << label << grouped(way.bytes) << " bytes in " << seconds << " s\n";
}

void print_columns(std::ostream& out, const std::vector<Column>& columns) {
  TextTable table({"column", "Arrow type", "encoded type", "host class", "rows", "chunks", "nulls",
                   "way back"});
  for (const Column& column : columns) {
    const auto& type = column.values->type();
    table.add({column.name, type->ToString(), column.encoded_type,
               core::to_numera_datatype(type).value_or("-"), grouped(column.values->length()),
               grouped(column.values->num_chunks()), grouped(column.values->null_count()),
               column.way_back});
  }
  table.print(out);
}

::arrow::Status convert_file(const ConvertOptions& options, std::ostream& out) {
  ARROW_ASSIGN_OR_RAISE(const auto table, read_table(options.file));
  std::vector<Column> columns;
  Way to_host;
  Way to_arrow;
  for (int i = 0; i < table->num_columns(); ++i) {
    Column& column = columns.emplace_back(table->field(i)->name(), table->column(i));
    convert_column(column, options.show, to_host, to_arrow);
  }
  print_columns(out, columns);
  const auto returned = std::ranges::count_if(columns, &Column::returned);
  ARROW_ASSIGN_OR_RAISE(const bool whole, whole_table_returns(columns));
  out << '\n';
  print_way(out, "to the host:  ", to_host);
  print_way(out, "to Arrow:     ", to_arrow);
  out << "as one table: " << returned << " of " << columns.size() << " columns there and back, "
      << (whole ? "equal" : "differs") << '\n';
  for (const Column& column : columns) {
    if (!column.tree.empty()) out << '\n' << column.name << ": " << column.tree << '\n';
  }
  if (!out.flush()) return ::arrow::Status::IOError("the result cannot be written");
  return ::arrow::Status::OK();
}

}  // namespace

int convert(const ConvertOptions& options, std::ostream& out, std::ostream& errors) {
  std::string reason;
  try {
    const ::arrow::Status status = convert_file(options, out);
    if (status.ok()) return 0;
    reason = status.message();
    if (status.detail() != nullptr) reason += ": " + status.detail()->ToString();
  } catch (const std::exception& error) {
    reason = error.what();
  }
  errors << "numera-arrow: " << options.file << ": " << first_line(reason) << '\n';
  return 1;
}

}  // namespace numera::tools
