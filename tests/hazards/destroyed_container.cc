#include <array>
#include <iostream>

#include "numera/numera.h"

// Wrong: a field is borrowed from its struct and dies with it.
int main() {
  const std::array<const char*, 1> names = {"ArrowType"};
  const std::array<size_t, 2> one = {1, 1};
  hxArrayPtr envelope = hxCreateStructArray(one, names);
  hxSetField(envelope.get(), 0, "ArrowType", hxCreateCharArray("buffer", 6));
  const hxArray* const kind = hxGetField(envelope.get(), 0, "ArrowType");
  envelope.reset();
  std::cout << hxGetString(kind) << '\n';
}
