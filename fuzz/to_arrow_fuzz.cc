/// \file
/// Passes any host value to every conversion to Arrow. Each one refuses it, with a status or an
/// exception of the host, or returns what it promises. The value stays unchanged and no array is
/// left.

#include <arrow/array/array_base.h>
#include <arrow/buffer.h>
#include <arrow/chunked_array.h>
#include <arrow/compare.h>
#include <arrow/table.h>

#include <array>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "fuzz/byte_source.h"
#include "fuzz/claims.h"
#include "fuzz/fuzzer.h"
#include "fuzz/host_tree.h"
#include "fuzz/round_trip.h"
#include "numera/core/to_arrow.h"
#include "numera/core/to_arrow_table.h"
#include "numera/extras/encode/encode.h"
#include "numera/extras/inspect/inspect.h"
#include "numera/extras/intake/intake.h"
#include "numera/extras/own/own.h"
#include "numera/host/memory.h"
#include "numera/host/message_id_exception.h"
#include "numera/host/text_codec.h"
#include "numera/unicode/convert_utf16_to_utf8.h"

namespace numera::fuzz {
namespace {

using io::arrow::core::to_arrow;
using io::arrow::core::to_arrow_table;
using ArrayPtr = std::shared_ptr<::arrow::Array>;

/// The number of the host allocation that fails in each call; 0: none.
size_t failing_allocation = 0;

/// The result of a call, or none if it was refused. Only exceptions of the host may be thrown.
template <class Call>
auto attempt(const Call& call) -> std::optional<decltype(call().ValueUnsafe())> {
  if (failing_allocation > 0) host::memory::FailAllocationAfter(failing_allocation - 1);
  std::optional<decltype(call().ValueUnsafe())> value;
  try {
    auto result = call();
    if (result.ok()) value = std::move(result).ValueUnsafe();
  } catch (const std::invalid_argument&) {
  } catch (const std::out_of_range&) {
  } catch (const hxCodecError&) {
  } catch (const std::bad_alloc&) {
  }
  host::memory::ClearAllocationFailure();
  return value;
}

/// The core takes codes and offsets unchecked, so only an array that Arrow finds valid is read
/// further. The intake then prepares it for the way back.
void check_array(const ArrayPtr& array) {
  claim(array != nullptr, "success gives an array");
  claim(array->offset() == 0, "arrays begin at offset 0");
  if (!array->Validate().ok() || !array->ValidateFull().ok()) return;
  const auto taken = extras::take_in(array);
  claim(taken.ok(), "what is valid is taken in",
        [&] { return taken.status().ToString() + "\n" + array->ToString(); });
  claim(taken->value->Equals(array, ::arrow::EqualOptions::Defaults().nans_equal(true)),
        "the values stay");
  check_round_trip(std::make_shared<::arrow::ChunkedArray>(taken->value));
}

/// Reads every byte.
void check_buffer(const ::arrow::Buffer& buffer) {
  claim(buffer.ToString().size() == static_cast<size_t>(buffer.size()), "buffers have their bytes");
}

void check_table(const ::arrow::Table& table) {
  for (const auto& column : table.columns()) {
    for (const auto& chunk : column->chunks()) check_array(chunk);
  }
}

hxArrayPtr shared(const hxArray* value) { return value == nullptr ? nullptr : hxSharedCopy(value); }

void check_borrowed(const hxArray* value) {
  const auto array = attempt([&] { return to_arrow<::arrow::Array>(value); });
  if (array) check_array(*array);
  const auto buffer = attempt([&] { return to_arrow<::arrow::Buffer>(value); });
  if (buffer) check_buffer(**buffer);
  const auto table = attempt([&] { return to_arrow_table(value); });
  if (table) check_table(**table);
  for (const size_t index : {size_t{1}, size_t{2}, std::numeric_limits<size_t>::max()}) {
    const auto element = attempt([&] { return to_arrow(value, index); });
    if (element) check_array(*element);
  }
  const auto first = attempt([&] { return to_arrow(value, 0); });
  claim(first.has_value() == array.has_value(), "element 0 is what is read without an index");
}

/// Reads Arrow values that own their host value, after the host value was given away.
void check_owned(const hxArray* value) {
  const auto array = attempt([&] { return extras::own_to_arrow<::arrow::Array>(shared(value)); });
  if (array) check_array(*array);
  const auto buffer = attempt([&] { return extras::own_to_arrow<::arrow::Buffer>(shared(value)); });
  if (buffer) check_buffer(**buffer);
  const auto table = attempt([&] { return extras::own_to_arrow_table(shared(value)); });
  if (table) check_table(**table);
}

void check_encoded(const hxArray* value) {
  const auto readable = attempt([&] { return extras::make_readable(value); });
  if (!readable) return;
  const hxArray* const first = readable->get();
  const auto again = extras::make_readable(first);
  claim(again.ok(), "a readable form has a readable form",
        [&] { return again.status().ToString() + "\n" + extras::print(first); });
  const auto difference = extras::first_difference(again->get(), first);
  // A time zone whose characters, taken as bytes, form UTF-8 looks like a written one, which has
  // one character per byte. It is decoded again.
  const bool same = !difference || difference->find(".TimeZone") != std::string::npos;
  claim(same, "a readable form is its own",
        [&] { return *difference + "\n" + extras::print(first); });
  if (hxGetFieldNumber(first, "Columns") >= 0) {
    const auto table = to_arrow_table(first);
    claim(table.ok(), "a readable table is read", [&] { return table.status().ToString(); });
    for (const auto& column : (*table)->columns()) {
      claim(column->ValidateFull().ok(), "a readable table has valid columns");
    }
    check_table(**table);
  } else if (hxGetFieldNumber(first, "Values") >= 0) {
    check_buffer(**to_arrow<::arrow::Buffer>(first));
  } else {
    check_array(read_valid(first));
  }
}

void check_gateway(const hxArray* value) {
  const hxArray* inputs[] = {value};
  std::array<hxArrayPtr, 2> outputs;
  if (failing_allocation > 0) host::memory::FailAllocationAfter(failing_allocation - 1);
  try {
    io::arrow::unicode::convertUTF16ToUTF8(2, outputs.data(), 1, inputs);
  } catch (const MessageIdException&) {
  } catch (const std::bad_alloc&) {
  }
  host::memory::ClearAllocationFailure();
}

}  // namespace

void try_input(std::span<const std::uint8_t> input) {
  ByteSource source(input);
  failing_allocation = source.byte();
  const ByteSource start = source;
  const HostTree tree = read_host_tree(source);
  check_borrowed(tree.root.get());
  check_owned(tree.root.get());
  check_encoded(tree.root.get());
  check_gateway(tree.root.get());
  if (tree.has_sparse) return;
  ByteSource again = start;
  const auto difference =
      extras::first_difference(tree.root.get(), read_host_tree(again).root.get());
  claim(!difference, "the value stays as it is", [&] { return *difference; });
}

}  // namespace numera::fuzz
