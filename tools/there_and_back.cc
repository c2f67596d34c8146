#include "tools/there_and_back.h"

#include <arrow/array/concatenate.h>
#include <arrow/util/byte_size.h>

#include <chrono>
#include <exception>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "numera/extras/column_status.h"
#include "numera/extras/convert.h"
#include "numera/extras/parallel/parallel.h"
#include "numera/numera.h"

namespace numera::tools {
namespace {

namespace core = numera::io::arrow::core;
using TablePtr = std::shared_ptr<::arrow::Table>;

/// Runs a conversion and adds its time. The library lets exceptions of the host pass. Here they
/// become a status, like every other refusal.
template <class Function>
auto timed(double& seconds, const Function& convert) -> decltype(convert()) {
  const auto start = std::chrono::steady_clock::now();
  try {
    auto result = convert();
    seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return result;
  } catch (const std::logic_error& refusal) {
    return ::arrow::Status::Invalid(refusal.what());
  } catch (const hxCodecError& refusal) {
    return ::arrow::Status::Invalid(refusal.what());
  }
}

/// The columns that no step has refused yet, as a table.
struct Group {
  std::vector<size_t> columns;
  TablePtr table;
};

Group group_of(const ::arrow::RecordBatch& batch, const std::vector<Trip>& trips,
               const std::vector<size_t>& columns) {
  Group group;
  ::arrow::FieldVector fields;
  ::arrow::ArrayVector arrays;
  for (const size_t i : columns) {
    if (!trips[i].refusal.empty()) continue;
    group.columns.push_back(i);
    fields.push_back(
        ::arrow::field(batch.schema()->field(static_cast<int>(i))->name(), trips[i].taken->type()));
    arrays.push_back(trips[i].taken);
  }
  group.table = ::arrow::Table::Make(::arrow::schema(std::move(fields)), arrays, batch.num_rows());
  return group;
}

::arrow::Status convert(const Group& group, size_t threads, std::vector<Trip>& trips, Legs& legs) {
  double seconds_to_host = 0;  // added only if all steps succeed
  double seconds_to_arrow = 0;
  ARROW_ASSIGN_OR_RAISE(const hxArrayPtr written, timed(seconds_to_host, [&] {
                          return extras::parallel_to_numera(group.table, threads);
                        }));
  ARROW_ASSIGN_OR_RAISE(const TablePtr back, timed(seconds_to_arrow, [&] {
                          return extras::convert_to_arrow_table(hxSharedCopy(written.get()),
                                                                nullptr, threads);
                        }));
  legs.to_host.seconds += seconds_to_host;
  legs.to_arrow.seconds += seconds_to_arrow;
  legs.to_host.bytes += ::arrow::util::ReferencedBufferSize(*group.table).ValueOr(0);
  legs.to_arrow.bytes += ::arrow::util::ReferencedBufferSize(*back).ValueOr(0);
  const hxArray* encoded = hxGetField(written.get(), 0, "Columns");
  for (size_t k = 0; k < group.columns.size(); ++k) {
    Trip& trip = trips[group.columns[k]];
    trip.encoded_type = core::util::HxArrayToString(hxGetField(encoded, k, "Type"));
    trip.back = back->column(static_cast<int>(k))->chunk(0);
  }
  return ::arrow::Status::OK();
}

/// Why a table of one column is refused, without the column, because the line of the column has its
/// name.
std::string reason_in_column(const ::arrow::Status& status, const std::string& name) {
  std::string_view reason = status.message();
  for (const std::string& prefix : {extras::column_text(name, 0), std::string(": ")}) {
    if (reason.starts_with(prefix)) reason.remove_prefix(prefix.size());
  }
  return std::string(reason);
}

/// Passes the column through the intake, as one array.
void take_in(const std::shared_ptr<::arrow::Array>& column, bool cast, Trip& trip) {
  auto taken = extras::take_in(column, {.cast = cast});
  if (!taken.ok()) {
    trip.refusal = taken.status().message();
    return;
  }
  trip.taken = std::move(taken->value);
  trip.casts = std::move(taken->casts);
}

}  // namespace

std::vector<Trip> there_and_back(const ::arrow::RecordBatch& batch, const TripOptions& options,
                                 const std::vector<bool>& refused, Legs& legs) {
  std::vector<Trip> trips(static_cast<size_t>(batch.num_columns()));
  std::vector<size_t> columns;
  for (size_t i = 0; i < trips.size(); ++i) {
    if (refused[i]) continue;
    columns.push_back(i);
    take_in(batch.column(static_cast<int>(i)), options.cast, trips[i]);
  }
  Group all = group_of(batch, trips, columns);
  if (convert(all, options.threads, trips, legs).ok()) return trips;
  // A column was refused. Convert each alone to find out which.
  for (const size_t i : all.columns) {
    const ::arrow::Status status = convert(group_of(batch, trips, {i}), 1, trips, legs);
    if (status.ok()) continue;
    trips[i].refusal = reason_in_column(status, batch.column_name(static_cast<int>(i)));
  }
  return trips;
}

}  // namespace numera::tools
