/// \file
/// Random values, most of them defective, converted to Arrow through every entry function. The
/// value, the status or the exception must equal that of a model that uses no code of the library.
/// The input must not change, and no host array may be left.

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <set>
#include <string>

#include "numera/core/to_arrow.h"
#include "numera/core/to_arrow_table.h"
#include "numera/extras/inspect/inspect.h"
#include "numera/host/memory.h"
#include "tests/gauntlet/reading/fingerprint.h"
#include "tests/gauntlet/reading/model.h"
#include "tests/gauntlet/reading/request.h"
#include "tests/gauntlet/reading/texts.h"

namespace numera::gauntlet::reading {
namespace {

namespace core = io::arrow::core;

constexpr std::uint64_t kSeeds = 1'000'000;
constexpr std::uint64_t kSampledSeeds = 20'000;

/// A number from the environment; `otherwise` if there is none.
std::uint64_t from_environment(const char* name, std::uint64_t otherwise) {
  const char* const text = std::getenv(name);
  const std::uint64_t number = text == nullptr ? 0 : std::strtoull(text, nullptr, 10);
  return number == 0 ? otherwise : number;
}

/// The outcome, and the number of interrupt checks.
struct Observed {
  Outcome outcome;
  size_t interrupt_checks = 0;

  std::string text() const {
    return to_string(outcome) + "\n  after " + std::to_string(interrupt_checks) +
           " interrupt checks";
  }
};

template <class Act>
Observed observe(const Request& request, Act act) {
  Observed observed;
  host::memory::SetInterruptCheck([&] {
    if (request.interrupt == observed.interrupt_checks++) {
      throw host::memory::InterruptException();
    }
  });
  observed.outcome = act();
  host::memory::SetInterruptCheck({});
  return observed;
}

Outcome expected(const Request& request) {
  const hxArray* const input = request.input.get();
  if (request.door == Door::kBuffer) return expected_buffer(input);
  if (request.door == Door::kTable) return expected_table(input);
  return expected_array(input, request.door == Door::kElement ? request.index : 0);
}

Outcome converted(const Request& request) {
  return outcome_of([&]() -> Outcome {
    const hxArray* const input = request.input.get();
    switch (request.door) {
      case Door::kArray:
        return described(core::to_arrow<::arrow::Array>(input));
      case Door::kElement:
        return described(core::to_arrow(input, request.index));
      case Door::kBuffer:
        return described(core::to_arrow<::arrow::Buffer>(input));
      case Door::kTable:
        return described(core::to_arrow_table(input));
    }
    return {};
  });
}

/// The outcomes of a run, counted by kind, and all answers.
struct Tally {
  size_t values = 0;
  size_t statuses = 0;
  size_t exceptions = 0;
  std::set<std::string> answers;

  void add(const Outcome& outcome) {
    const bool refused = std::holds_alternative<::arrow::Status>(outcome);
    const bool thrown = std::holds_alternative<Thrown>(outcome);
    ++(refused ? statuses : thrown ? exceptions : values);
    answers.insert(answer_of(outcome));
  }
};

void run(std::uint64_t seed, Tally& tally) {
  const Request request = request_of(seed);
  const std::uint64_t before = fingerprint(request.input.get());
  const size_t live = host::memory::LiveArrays();
  const Observed model = observe(request, [&] { return expected(request); });
  const Observed library = observe(request, [&] { return converted(request); });
  tally.add(model.outcome);
  const bool is_same =
      same(library.outcome, model.outcome) && library.interrupt_checks == model.interrupt_checks;
  const bool is_unchanged = fingerprint(request.input.get()) == before;
  if (is_same && is_unchanged && host::memory::LiveArrays() == live) return;
  ADD_FAILURE() << "NUMERA_GAUNTLET_SEED=" << seed << " runs this alone: " << request.name()
                << ", where the value is\n"
                << extras::print(request.input.get()) << "\nexpected:\n"
                << model.text() << "\nfound:\n"
                << library.text() << (is_unchanged ? "" : "\nthe input has changed")
                << (host::memory::LiveArrays() == live ? "" : "\nhost arrays are left over");
}

TEST(Reading, GivesWhatTheModelGives) {
  const size_t live = host::memory::LiveArrays();
  Tally tally;
  if (const char* const seed = std::getenv("NUMERA_GAUNTLET_SEED"); seed != nullptr) {
    run(std::strtoull(seed, nullptr, 10), tally);
    return;
  }
  const std::uint64_t step = from_environment("NUMERA_GAUNTLET", kSeeds / kSampledSeeds);
  for (std::uint64_t seed = 0; seed < kSeeds && !HasFailure(); seed += step) run(seed, tally);
  std::cout << "seeds 0 to " << kSeeds - 1 << " in steps of " << step << ": " << tally.values
            << " values, " << tally.statuses << " statuses, " << tally.exceptions << " exceptions, "
            << tally.answers.size() << " answers\n";
  EXPECT_EQ(host::memory::LiveArrays(), live);
  if (step <= kSeeds / kSampledSeeds && !HasFailure()) {
    EXPECT_EQ(answers_missing(tally.answers), std::vector<std::string>());
  }
}

}  // namespace
}  // namespace numera::gauntlet::reading
