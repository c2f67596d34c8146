#pragma once

#include <cstddef>
#include <cstdint>

/// What each fuzzer of this folder defines: tries one input, and ends the process where a claim
/// does not hold. Called by libFuzzer, and by replay_main.cc with inputs from files.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size);
