#pragma once

// A second host, as small as possible: every array consists of standard containers. It shows what a
// host must supply, and passes the tests of tests/host_conformance.

#include <atomic>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "numera/host/array.h"
#include "numera/host/string_array.h"

namespace own_host {

// Never changes while the array lives, so that dimensions and names handed out stay valid.
struct Shape {
  hxClassID class_id = hxClassID::Unknown;
  hxComplexity complexity = hxComplexity::Real;
  std::vector<size_t> dims = {};
  size_t elements = 0;
  size_t element_size = 0;               // of numbers, logicals and chars
  std::vector<std::string> fields = {};  // of structs
};

// Shared by copies until one of them is written. Only one of the three members is filled, depending
// on the class. Texts in an array are never written, so they stay shared.
struct Content {
  std::unique_ptr<std::byte[]> data = {};
  std::vector<hxArrayPtr> slots = {};
  std::shared_ptr<const hxStringArray> strings = {};
};

enum class Fill { Zero, None };

// Both throw std::bad_alloc if the size in bytes overflows.
size_t count_elements(std::span<const size_t> dims);
hxArrayPtr make_array(Shape shape, Fill fill);

// Gives the array its own content if the content is shared.
void unshare(hxArray* array);

// The number of arrays that exist now.
size_t live_arrays();
inline std::atomic<size_t> live = 0;

}  // namespace own_host

class hxArray {
 public:
  hxArray(std::shared_ptr<const own_host::Shape> of, std::shared_ptr<own_host::Content> with)
      : shape(std::move(of)), content(std::move(with)) {
    ++own_host::live;
  }
  ~hxArray() { --own_host::live; }
  hxArray(const hxArray&) = delete;
  hxArray& operator=(const hxArray&) = delete;

  std::shared_ptr<const own_host::Shape> shape;
  std::shared_ptr<own_host::Content> content;
  hxArray* next_to_destroy = nullptr;
};
