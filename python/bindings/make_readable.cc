#include <arrow/result.h>

#include <array>
#include <string>
#include <utility>

#include "numera/extras/encode/encode.h"
#include "numera/unicode/convert_utf16_to_utf8.h"
#include "python/bindings/bindings.h"
#include "python/bindings/conversion_docs.h"
#include "python/bindings/encoded_fields.h"
#include "python/bindings/errors.h"
#include "python/bindings/host_value.h"
#include "python/bindings/unlocked.h"

namespace numera::python {
namespace {

HostValue make_readable(const HostValue& value) {
  ::arrow::Result<hxArrayPtr> result = [&] {
    const Unlocked unlocked;
    return extras::make_readable(value.get());
  }();
  const std::string note = refused_column_note(value, result.status());
  return adopt(value_or_raise(std::move(result), note));
}

nb::tuple utf16_to_utf8(const HostValue& text) {
  std::array<hxArrayPtr, 2> outputs;
  {
    const Unlocked unlocked;
    const hxArray* input = text.get();
    io::arrow::unicode::convertUTF16ToUTF8(2, outputs.data(), 1, &input);
  }
  return nb::make_tuple(adopt(std::move(outputs[0])), adopt(std::move(outputs[1])));
}

}  // namespace

void bind_make_readable(nb::module_& module) {
  module.def("make_readable", &make_readable, nb::arg("value"), docs::kMakeReadable);
  module.def("utf16_to_utf8", &utf16_to_utf8, nb::arg("text"),
             nb::sig("def utf16_to_utf8(text: HostArray) -> tuple[HostArray, HostArray]"),
             docs::kUtf16ToUtf8);
}

}  // namespace numera::python
