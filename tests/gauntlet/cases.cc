#include "tests/gauntlet/cases.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "tests/gauntlet/element.h"

namespace numera::gauntlet {
namespace {

constexpr std::int64_t kLengths[] = {0, 1, 7, 8, 9, 63, 64, 65, 1000};

const std::vector<Slice>& slices() {
  static const std::vector<Slice> kSlices = {{"whole", {}},
                                             {"slice at 1", {1}},
                                             {"slice at 7", {7}},
                                             {"slice at 8", {8}},
                                             {"slice at 9", {9}},
                                             {"slice at 7 of slice at 9", {9, 7}},
                                             {"slice at 1 of slice at 8 of slice at 8", {8, 8, 1}}};
  return kSlices;
}

const std::vector<Chunks>& chunk_lists() {
  static const std::vector<Chunks> kChunks = {{"1 chunk", {0}},
                                              {"2 chunks", {0, 1}},
                                              {"3 chunks", {0, 7, 1}},
                                              {"an empty chunk between 2", {0, -1, 0}},
                                              {"empty chunks around 2", {-1, 0, -1, 8, -1}}};
  return kChunks;
}

const Chunks kNoChunks = {"0 chunks", {}};

/// The digits of a number, the lowest first. The size of a range is the base of its digit.
class Digits {
 public:
  explicit Digits(std::uint64_t number) : rest_(number) {}

  template <class Range>
  const auto& next(const Range& range) {
    const std::uint64_t digit = rest_ % std::size(range);
    rest_ /= std::size(range);
    return *(std::begin(range) + static_cast<std::ptrdiff_t>(digit));
  }

 private:
  std::uint64_t rest_;
};

std::uint64_t cases_a_subject() {
  return std::size(kMemories) * std::size(kNulls) * std::size(kLengths) * slices().size() *
         chunk_lists().size();
}

/// The last number of each subject stands for the column without chunks.
Case case_of(const Subject& subject, std::uint64_t number) {
  if (number == cases_a_subject()) {
    return {&subject, 0, Nulls::kNoBitmap, &slices()[0], &kNoChunks, Memory::kExact, number};
  }
  Digits digits(number);
  Case one{&subject, 0, Nulls::kNoBitmap, nullptr, nullptr, Memory::kExact, number};
  one.memory = digits.next(kMemories);
  one.nulls = digits.next(kNulls);
  one.length = digits.next(kLengths);
  one.slice = &digits.next(slices());
  one.chunks = &digits.next(chunk_lists());
  return one;
}

std::shared_ptr<::arrow::ArrayData> make_chunk(const Case& one, std::int64_t length,
                                               const Making& making) {
  // If buffers end early, a slice must reach to their end. Otherwise it would not need the lost
  // bytes.
  const std::int64_t tail = is_short(one.memory) ? 0 : 3;
  const std::vector<std::int64_t>& starts = one.slice->starts;
  std::int64_t whole = length;
  for (const std::int64_t start : starts) whole += start + tail;
  auto chunk = generate(one.subject->type, whole, making);
  for (const std::int64_t start : starts) {
    whole -= start + tail;
    chunk = chunk->Slice(start, whole);
  }
  return chunk;
}

}  // namespace

std::string Case::name() const {
  return subject->name + " / length " + std::to_string(length) + " / " + name_of(nulls) + " / " +
         slice->name + " / " + chunks->name + " / " + name_of(memory);
}

Column Case::column() const {
  Column column{subject->type, {}};
  for (const std::int64_t extra : chunks->extra) {
    const auto chunk_number = static_cast<int>(column.chunks.size());
    const Making making{nulls,
                        memory,
                        subject->dictionaries,
                        subject->sliced_children,
                        chunk_number,
                        31 * number + static_cast<std::uint64_t>(chunk_number)};
    column.chunks.push_back(make_chunk(*this, extra < 0 ? 0 : length + extra, making));
  }
  return column;
}

std::uint64_t stride() {
  const char* const wanted = std::getenv("NUMERA_GAUNTLET");
  const std::uint64_t number = wanted == nullptr ? 0 : std::strtoull(wanted, nullptr, 10);
  return number == 0 ? 433 : number;
}

std::uint64_t for_each_case(const std::vector<Subject>& subjects,
                            const std::function<void(const Case&)>& run) {
  const std::uint64_t each = cases_a_subject() + 1;
  std::uint64_t count = 0;
  for (std::uint64_t i = 0; i < each * subjects.size(); i += stride()) {
    run(case_of(subjects[i / each], i % each));
    ++count;
    if (const auto* result = ::testing::UnitTest::GetInstance()->current_test_info()->result();
        result->total_part_count() >= 5) {
      break;
    }
  }
  return count;
}

}  // namespace numera::gauntlet
