#include "tests/gauntlet/reading/request.h"

#include "tests/gauntlet/reading/defects.h"
#include "tests/gauntlet/reading/well_formed.h"

namespace numera::gauntlet::reading {
namespace {

constexpr Door kDoors[] = {Door::kArray, Door::kArray,  Door::kArray, Door::kElement,
                           Door::kTable, Door::kBuffer, Door::kTable};
constexpr int kDepth = 3;
/// Values nested to the limit of the conversions are slow: only one value in this many.
constexpr size_t kDeepOnceIn = 2000;

hxArrayPtr input_of(Random& random, Door door) {
  switch (door) {
    case Door::kElement:
      return any_envelopes(random, 1 + random.below(3), random.pick(kLengths), 1);
    case Door::kBuffer:
      return any_buffer(random, random.pick(kLengths));
    case Door::kTable:
      return any_table(random);
    case Door::kArray:
      break;
  }
  return any_envelope(random, random.pick(kLengths), kDepth);
}

}  // namespace

std::string Request::name() const {
  switch (door) {
    case Door::kArray:
      return "to_arrow<Array>(value)";
    case Door::kElement:
      return "to_arrow(value, " + std::to_string(index) + ")";
    case Door::kBuffer:
      return "to_arrow<Buffer>(value)";
    case Door::kTable:
      break;
  }
  const std::string stop = interrupt ? " stopped at column " + std::to_string(*interrupt) : "";
  return "to_arrow_table(value)" + stop;
}

Request request_of(std::uint64_t seed) {
  Random random(seed);
  if (random.once_in(kDeepOnceIn)) {
    return {.input = deep_envelope(random, 1023 + random.below(3))};
  }
  Request request{.door = random.pick(kDoors)};
  DraftPtr input = draft_of(input_of(random, request.door).get());
  damage(random, input);
  request.input = build(input.get());
  request.index = random.below(4);
  if (random.once_in(16)) request.interrupt = random.below(4);
  if (random.once_in(64)) request.door = random.pick(kDoors);
  return request;
}

}  // namespace numera::gauntlet::reading
