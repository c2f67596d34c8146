#include <arrow/array/util.h>

#include <utility>

#include "numera/core/to_arrow.h"
#include "numera/extras/own/own.h"
#include "numera/extras/own/owned_memory.h"

namespace numera::extras {

template <>
::arrow::Result<std::shared_ptr<::arrow::Array>> own_to_arrow(hxArrayPtr encoded) {
  const own::Owner owner = std::move(encoded);
  ARROW_ASSIGN_OR_RAISE(const auto array, io::arrow::core::to_arrow<::arrow::Array>(owner.get()));
  return ::arrow::MakeArray(own::owned(*array->data(), owner));
}

template <>
::arrow::Result<std::shared_ptr<::arrow::Buffer>> own_to_arrow(hxArrayPtr encoded) {
  const own::Owner owner = std::move(encoded);
  ARROW_ASSIGN_OR_RAISE(auto buffer, io::arrow::core::to_arrow<::arrow::Buffer>(owner.get()));
  return own::owned(std::move(buffer), owner);
}

}  // namespace numera::extras
