#pragma once

/// \file
/// The ways in which one column comes to the library: the values are the same, what its nodes say
/// of their nulls is not.

#include <cstdint>
#include <vector>

#include "tests/gauntlet/cases.h"
#include "tests/gauntlet/column.h"

namespace numera::gauntlet {

enum class Form : std::uint8_t {
  kBuilt,      ///< as it is made
  kImported,   ///< through the C data interface, from someone who counts no nulls
  kAllBitmaps  ///< every node that had no bitmap has one without nulls; none has a count
};

const char* name_of(Form form);

/// All forms where every case is run, else one that is drawn by the number of the case.
std::vector<Form> forms_of(const Case& one);

/// Arrow takes imported buffers to be as long as their elements need. So buffers that end early are
/// not imported; their nodes only forget their counts.
Column in_form(const Column& column, Form form, Memory memory);

}  // namespace numera::gauntlet
