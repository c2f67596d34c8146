#pragma once

/// \file
/// The initial inputs of the fuzzers, made from real files and from values of every type.

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

/// Stores one seed for the fuzzer of that name.
using KeepSeed =
    std::function<void(const std::string& fuzzer, std::span<const std::uint8_t> input)>;

/// Small tables: a few rows of each file in `folder` and of each of its columns, and values of
/// every Arrow type.
std::vector<TablePtr> seed_tables(const std::filesystem::path& folder);

/// The table as a stream of two batches, once per set of decision bytes, which precede it.
void keep_streams(const ::arrow::Table& table, const KeepSeed& keep);

/// The table and each column as host values, in written and in readable form.
void keep_host_values(const TablePtr& table, const KeepSeed& keep);

/// Plain host values, texts, random bytes for Arrow trees, and bitmaps.
void keep_plain_values(const KeepSeed& keep);

}  // namespace numera::fuzz
