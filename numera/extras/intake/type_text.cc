#include "numera/extras/intake/type_text.h"

#include "numera/format/whole_type.h"

namespace numera::extras::intake {

std::string type_text(const ::arrow::DataType& type) {
  constexpr int kPrintedLevels = 64;
  return format::is_whole(type, kPrintedLevels) ? type.ToString() : type.name();
}

}  // namespace numera::extras::intake
