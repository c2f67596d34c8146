#include "tests/gauntlet/making.h"

#include <array>

namespace numera::gauntlet {
namespace {

bool is_valid(std::int64_t i, Nulls nulls) {
  return nulls == Nulls::kAll ? false : nulls != Nulls::kEveryThird || i % 3 != 1;
}

std::vector<std::string> numbered(int first, int count) {
  std::vector<std::string> names;
  for (int i = first; i < first + count; ++i) names.push_back("é" + std::to_string(i));
  return names;
}

}  // namespace

const char* name_of(Nulls nulls) {
  switch (nulls) {
    case Nulls::kNoBitmap:
      return "no bitmap";
    case Nulls::kNone:
      return "no nulls";
    case Nulls::kEveryThird:
      return "nulls every 3rd";
    case Nulls::kAll:
      return "all null";
  }
  return "";
}

Making child_making(const Making& making, std::uint64_t number) {
  Making child = making;
  child.seed = mix(making.seed, 1000 + number);
  return child;
}

std::uint64_t mix(std::uint64_t seed, std::uint64_t i) {
  std::uint64_t x = seed + 0x9E3779B97F4A7C15U * (i + 1);
  x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9U;
  x = (x ^ (x >> 27)) * 0x94D049BB133111EBU;
  return x ^ (x >> 31);
}

Bytes validity_bits(std::int64_t length, const Making& making) {
  if (making.nulls == Nulls::kNoBitmap) return {};
  Bytes bytes(static_cast<size_t>((length + 7) / 8));
  for (std::int64_t i = 0; i < length; ++i) {
    if (is_valid(i, making.nulls)) {
      bytes[static_cast<size_t>(i / 8)] |= static_cast<std::uint8_t>(1 << (i % 8));
    }
  }
  return bytes;
}

Bytes random_bits(std::int64_t length, const Making& making) {
  Bytes bits;
  for (std::int64_t i = 0; i < (length + 7) / 8; ++i) {
    bits.push_back(static_cast<std::uint8_t>(mix(making.seed, static_cast<std::uint64_t>(i))));
  }
  return bits;
}

std::vector<std::string> random_texts(std::int64_t length, const Making& making) {
  static constexpr std::array<const char*, 8> kTexts = {"",   "a",        "é",   "漢字",
                                                        "😀", "é漢😀xyz", "ab ", "0123456789ab"};
  std::vector<std::string> texts;
  for (std::uint64_t i = 0; i < static_cast<std::uint64_t>(length); ++i) {
    texts.emplace_back(kTexts[mix(making.seed, i) % kTexts.size()]);
  }
  return texts;
}

std::vector<std::string> categories(const Making& making) {
  switch (making.dictionaries) {
    case Dictionaries::kEqual:
    case Dictionaries::kOutOfRange:
      return numbered(0, 5);
    case Dictionaries::kDiffering:
      return numbered(60 * making.chunk, 90);
    case Dictionaries::kUnused:
      return {"zero", "", "é0", "zero", "unused", "unused too"};
    case Dictionaries::kNoEntries:
      return {};
    case Dictionaries::kSliced:
      return numbered(making.chunk, 12);
  }
  return {};
}

std::uint64_t random_code(const Making& making, std::int64_t i, std::uint64_t entries) {
  const std::uint64_t random = mix(making.seed, static_cast<std::uint64_t>(i));
  const bool astray = making.dictionaries == Dictionaries::kOutOfRange;
  if (entries == 0 || (astray && !is_valid(i, making.nulls))) {
    return random % 2 == 0 ? entries + random % 20 : ~std::uint64_t{0};
  }
  const std::uint64_t used = making.dictionaries == Dictionaries::kUnused ? 4 : entries;
  return random % used;
}

std::vector<std::int64_t> random_starts(std::int64_t length, const Making& making) {
  std::vector<std::int64_t> starts = {2};
  for (std::uint64_t i = 0; i < static_cast<std::uint64_t>(length); ++i) {
    starts.push_back(starts.back() + static_cast<std::int64_t>(mix(making.seed, i) % 4));
  }
  return starts;
}

}  // namespace numera::gauntlet
