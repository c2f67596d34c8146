#include "numera/core/util/text.h"

namespace numera::io::arrow::core::util {

std::string HxArrayToString(const hxArray* a) {
  if (a == nullptr || hxGetClassID(a) != hxClassID::Char) return {};
  return hxGetString(a);
}

}  // namespace numera::io::arrow::core::util
