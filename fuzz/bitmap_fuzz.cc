/// \file
/// Compares bitmap copies with a model that copies one bit at a time, in every byte of the target.

#include <algorithm>
#include <string>
#include <utility>

#include "fuzz/byte_source.h"
#include "fuzz/claims.h"
#include "fuzz/fuzzer.h"
#include "numera/format/bitmap.h"
#include "tests/support/bitmap_model.h"

namespace numera::fuzz {
namespace {

using testing::Bytes;

struct Case {
  Bytes source;
  size_t length = 0;
  Bytes target;
  size_t position = 0;
  size_t total = 0;
};

std::string bytes_text(const Bytes& bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes) text += " " + std::to_string(byte);
  return text;
}

Case draw(ByteSource& source) {
  Case drawn;
  drawn.length = source.word() % 1200;
  drawn.position = source.word() % 300;
  drawn.total = drawn.position + drawn.length + source.below(80);
  const auto bits = source.take(source.byte());
  drawn.source.assign(bits.begin(), bits.end());
  drawn.target.assign(drawn.total / 8 + (drawn.total % 8 != 0), source.byte());
  for (std::uint8_t& byte : drawn.target) byte ^= source.byte();
  return drawn;
}

void check_one_copy(const Case& drawn) {
  Bytes copied = drawn.target;
  const std::int64_t bits = format::copy_bitmap(
      drawn.source, static_cast<std::int64_t>(drawn.length),
      {copied, static_cast<std::int64_t>(drawn.position), static_cast<std::int64_t>(drawn.total)});
  const size_t there = drawn.target.empty() ? 0 : std::min(drawn.length, 8 * drawn.source.size());
  claim(std::cmp_equal(bits, there), "as many bits are copied as there are");
  const Bytes expected = testing::CopyBitmapModel(drawn.source, drawn.length, drawn.target,
                                                  drawn.position, drawn.total);
  claim(copied == expected, "a copy of bits is that of the model", [&] {
    return "source" + bytes_text(drawn.source) + "\nlength " + std::to_string(drawn.length) +
           "\nposition " + std::to_string(drawn.position) + "\ntotal " +
           std::to_string(drawn.total) + "\ntarget" + bytes_text(drawn.target) + "\ncopied" +
           bytes_text(copied) + "\nexpected" + bytes_text(expected);
  });
}

/// Writes chunks of random length, each from its own source, into memory with arbitrary content.
/// Every bit that no source reaches must have the value of the fill.
void check_chunks(const Case& drawn, ByteSource& source) {
  const std::uint8_t fill = source.below(2) == 0 ? 0x00 : 0xFF;
  Bytes written(drawn.total / 8 + (drawn.total % 8 != 0), source.byte());
  Bytes expected(written.size(), fill);
  format::BitmapWriter writer(written, static_cast<std::int64_t>(drawn.total), fill);
  for (size_t start = 0; start < drawn.total;) {
    const size_t length = std::min(drawn.total - start, size_t{source.byte()} + 1);
    const size_t size = std::min(drawn.source.size(), source.below(40));
    const Bytes chunk(drawn.source.begin(),
                      drawn.source.begin() + static_cast<std::ptrdiff_t>(size));
    writer.append(chunk, static_cast<std::int64_t>(length));
    expected = testing::CopyBitmapModel(chunk, length, std::move(expected), start, drawn.total);
    start += length;
  }
  claim(written == expected, "chunks of bits are written as by the model", [&] {
    return "source" + bytes_text(drawn.source) + "\ntotal " + std::to_string(drawn.total) +
           "\nwritten" + bytes_text(written) + "\nexpected" + bytes_text(expected);
  });
}

}  // namespace

void try_input(std::span<const std::uint8_t> input) {
  ByteSource source(input);
  const Case drawn = draw(source);
  check_one_copy(drawn);
  check_chunks(drawn, source);
}

}  // namespace numera::fuzz
