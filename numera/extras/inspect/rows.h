#pragma once

/// \file
/// The order in which elements are listed.

#include <cstddef>
#include <span>

#include "numera/extras/inspect/value.h"

namespace numera::extras::inspect {

/// The order: row by row and page by page.
class Rows {
 public:
  explicit Rows(std::span<const size_t> dims)
      : height_(dims[0]), width_(dims[1]), separated_(!is_vector(dims)) {}

  /// Index in storage order of the element that is listed at `position`.
  size_t element_at(size_t position) const {
    const size_t page = height_ * width_;
    const size_t in_page = position % page;
    return position - in_page + in_page / width_ + in_page % width_ * height_;
  }

  /// Whether a row separator stands before the element at `position`.
  bool starts_row(size_t position) const { return separated_ && position % width_ == 0; }

 private:
  size_t height_;
  size_t width_;
  bool separated_;
};

}  // namespace numera::extras::inspect
