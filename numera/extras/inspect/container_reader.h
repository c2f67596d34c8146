#pragma once

/// \file
/// Cells, structs and objects: what a literal says of them, slot after slot.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "numera/extras/inspect/head_reader.h"
#include "numera/extras/inspect/listed_shape.h"
#include "numera/extras/inspect/scanner.h"
#include "numera/host/array.h"

namespace numera::extras::inspect {

/// Makes an object; null where a host has none.
using MakeObject = hxArrayPtr (*)(std::string class_name, std::span<const size_t> dims,
                                  std::span<const char* const> field_names);

/// A container whose slots are being read. Its values lie in the order in which they are listed;
/// the array is made when all were read, so that no size is believed that the text does not fill.
struct Container {
  enum class Form : std::uint8_t {
    kBraces,   ///< {value, value; value, value}, and for a struct {(name=value), (name=value)}
    kParens,   ///< (name=value, name=value), or (name, name) where there are no elements
    kLines,    ///< lines below, in storage order
    kNothing,  ///< neither fields nor cells
  };

  Head head;
  Form form;
  size_t stated = 1;      ///< elements by the size; a struct without one is one element
  size_t indent = 0;      ///< kLines: that of the lines below
  bool labelled = false;  ///< kLines: each element of a struct has a line of its own
  std::vector<std::string> names = {};
  std::vector<hxArrayPtr> values = {};
  Listed elements = {};     ///< begun so far
  bool in_element = false;  ///< within an element of a struct
  size_t field = 0;         ///< fields begun in this element

  bool has_cells() const { return head.content == Content::kCells; }
  bool in_brackets() const { return form == Form::kBraces || form == Form::kParens; }
};

/// Finds out which form follows the head. `in_brackets`: no lines can follow here.
Container open_container(Scanner& scanner, Head head, size_t line_indent, bool in_brackets);

/// Passes all that stands before the next value, or before the end of the container: then the
/// result is false and the end has been passed.
bool next_slot(Scanner& scanner, Container& container);

/// The array, of the values that were read. Empties the container.
hxArrayPtr close_container(const Scanner& scanner, Container& container, MakeObject make_object);

}  // namespace numera::extras::inspect
