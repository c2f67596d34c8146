#pragma once

#include <arrow/array/array_dict.h>

#include <memory>
#include <string>

#include "tests/support/arrow_values.h"

namespace numera::testing {

/// A dictionary array of the given type, with codes and categories from JSON text.
inline std::shared_ptr<::arrow::Array> Dictionary(const std::shared_ptr<::arrow::DataType>& type,
                                                  const std::string& codes,
                                                  const std::string& values) {
  const auto& parts = static_cast<const ::arrow::DictionaryType&>(*type);
  return std::make_shared<::arrow::DictionaryArray>(type, ArrowArray(parts.index_type(), codes),
                                                    ArrowArray(parts.value_type(), values));
}

}  // namespace numera::testing
