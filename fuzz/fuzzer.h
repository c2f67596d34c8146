#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace numera::fuzz {

/// Defined by each fuzzer of this folder. Tries one input and aborts the process if a claim does
/// not hold. An exception that leaves this function is a finding, too.
void try_input(std::span<const std::uint8_t> input);

}  // namespace numera::fuzz

/// Tries one input and claims that no host array is left over. Called by libFuzzer, and by
/// replay_main.cc with inputs from files.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size);
