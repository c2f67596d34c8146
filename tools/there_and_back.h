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

/// What one leg of the way took.
struct Leg {
  std::int64_t bytes = 0;  ///< of Arrow memory that it led over
  double seconds = 0;
};

struct Legs {
  Leg to_host;
  Leg to_arrow;  ///< to a readable form, and from there to Arrow
};

/// One column of a batch, there and back.
struct Trip {
  std::string encoded_type;  ///< "Type" of the encoded column
  std::shared_ptr<::arrow::Array> taken;
  std::vector<extras::IntakeCast> casts;
  std::shared_ptr<::arrow::Array> back;
  std::string refusal;  ///< why it cannot go or return; empty where it did
};

struct TripOptions {
  bool cast = false;   ///< cast what has no host form
  size_t threads = 1;  ///< that convert to the host; 0: one a processor
};

/// Takes the columns of a batch to the host as one table and back, through intake and encode. A
/// column that is refused, in whatever step, is left out of the table and says why; host interrupts
/// pass through as exceptions. Columns marked in `refused` are not tried.
std::vector<Trip> there_and_back(const ::arrow::RecordBatch& batch, const TripOptions& options,
                                 const std::vector<bool>& refused, Legs& legs);

}  // namespace numera::tools
