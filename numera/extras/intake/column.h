#pragma once

#include <arrow/array/array_base.h>
#include <arrow/result.h>
#include <arrow/type.h>

#include <memory>
#include <string>
#include <vector>

#include "numera/extras/intake/intake.h"
#include "numera/extras/intake/work.h"

namespace numera::extras::intake {

struct TakenColumn {
  std::shared_ptr<::arrow::DataType> type;
  ::arrow::ArrayVector chunks;
  std::vector<IntakeCast> casts;
};

/// Takes in chunks of `type`. Reads `cast`, `views`, `pool` and `narrow_limit` of `work`.
::arrow::Result<TakenColumn> take_in_column(const std::string& path,
                                            const std::shared_ptr<::arrow::DataType>& type,
                                            const ::arrow::ArrayVector& chunks, const Work& work);

}  // namespace numera::extras::intake
