#pragma once

/// \file
/// What fuzzers start from: inputs made of real files and of values of every type.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "numera/host/array.h"

namespace arrow {
class Table;
}

namespace numera::fuzz {

using TablePtr = std::shared_ptr<::arrow::Table>;

/// Keeps one seed of the fuzzer of that name.
using KeepSeed =
    std::function<void(const std::string& fuzzer, std::span<const std::uint8_t> input)>;

/// Few rows of each column of the files in a folder, and of a value of every Arrow type.
std::vector<TablePtr> seed_tables(const std::filesystem::path& folder);

/// The table as a stream of two batches, behind decisions of each kind.
void keep_streams(const ::arrow::Table& table, const KeepSeed& keep);

/// The table on the host as it is written and as it is read, as values, as texts, and in parts.
void keep_host_values(const TablePtr& table, const KeepSeed& keep);

/// Ordinary host values, texts, and runs of bits.
void keep_plain_values(const KeepSeed& keep);

}  // namespace numera::fuzz
