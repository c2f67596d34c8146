#pragma once

/// \file
/// The forms in which one column reaches the library. The values are the same; what the nodes know
/// about their nulls differs.

#include <cstdint>
#include <vector>

#include "tests/gauntlet/cases.h"
#include "tests/gauntlet/column.h"

namespace numera::gauntlet {

enum class Form : std::uint8_t {
  kBuilt,      ///< as generated
  kImported,   ///< through the C data interface, with unknown null counts
  kAllBitmaps  ///< every node has a bitmap; all null counts are unknown
};

const char* name_of(Form form);

/// All forms if every case runs; otherwise one, chosen by the number of the case.
std::vector<Form> forms_of(const Case& one);

/// Arrow assumes that imported buffers are as long as their elements need. So short buffers are not
/// imported; the null counts of their nodes are only set to unknown.
Column in_form(const Column& column, Form form, Memory memory);

}  // namespace numera::gauntlet
