#include "tools/look.h"

#include <ostream>
#include <vector>

#include "numera/numera.h"
#include "tools/terminal.h"
#include "tools/text_table.h"

namespace numera::tools {
namespace {

namespace core = numera::io::arrow::core;

/// "Type" of an encoded column of this type; "-" if the type is refused.
std::string encoded_type(const std::shared_ptr<::arrow::DataType>& type) {
  const auto nothing = std::make_shared<::arrow::ChunkedArray>(::arrow::ArrayVector{}, type);
  const auto encoded = core::to_numera(nothing);
  return encoded.ok() ? core::util::HxArrayToString(hxGetField(encoded->get(), 0, "Type")) : "-";
}

}  // namespace

::arrow::Status print_types(const std::vector<std::string>& paths,
                            const files::ReadOptions& options, std::ostream& out) {
  ARROW_ASSIGN_OR_RAISE(const auto source, files::open_source(paths, options));
  std::vector<std::int64_t> nulls(static_cast<size_t>(source->schema()->num_fields()), 0);
  std::int64_t rows = 0;
  Progress progress(source->rows());
  while (true) {
    ARROW_ASSIGN_OR_RAISE(const auto batch, source->Next());
    if (batch == nullptr) break;
    for (size_t i = 0; i < nulls.size(); ++i) {
      nulls[i] += batch->column(static_cast<int>(i))->null_count();
    }
    rows += batch->num_rows();
    progress.show(rows);
    hxThrowIfInterruptPending();
  }
  progress.clear();
  TextTable table(
      {"column", "Arrow type", "encoded type", "host class", "rows", "chunks", "nulls"});
  for (size_t i = 0; i < nulls.size(); ++i) {
    const auto& field = source->schema()->field(static_cast<int>(i));
    table.add({field->name(), field->type()->ToString(), encoded_type(field->type()),
               core::to_numera_datatype(field->type()).value_or("-"), grouped(rows),
               grouped(source->chunks()), grouped(nulls[i])});
  }
  table.print(out, output_has_colour());
  return ::arrow::Status::OK();
}

}  // namespace numera::tools
