#pragma once

#include <arrow/record_batch.h>
#include <arrow/result.h>
#include <arrow/table.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "numera/extras/intake/intake.h"

namespace numera::tools {

/// The cost of one direction.
struct Leg {
  std::int64_t bytes = 0;  ///< converted Arrow memory
  double seconds = 0;
};

struct Legs {
  Leg to_host;
  Leg to_arrow;  ///< `make_readable`, then conversion to Arrow
};

/// One column of a batch, converted to the host and back.
struct Trip {
  std::string encoded_type;  ///< "Type" of the encoded column
  std::shared_ptr<::arrow::Array> taken;
  std::vector<extras::IntakeCast> casts;
  std::shared_ptr<::arrow::Array> back;
  std::string refusal;  ///< why the column was refused; empty if it was not
};

struct TripOptions {
  bool cast = false;   ///< cast types that have no host form
  size_t threads = 1;  ///< threads that convert columns; 0: one per processor
};

/// Converts the columns of a batch to the host as one table and back, through `take_in` and
/// `make_readable`. A column that any step refuses is left out of the table, and its `refusal` says
/// why. Host interrupts pass through as exceptions. Columns marked in `refused` are not tried.
std::vector<Trip> there_and_back(const ::arrow::RecordBatch& batch, const TripOptions& options,
                                 const std::vector<bool>& refused, Legs& legs);

}  // namespace numera::tools
