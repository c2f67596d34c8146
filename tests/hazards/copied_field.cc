#include <array>
#include <iostream>

#include "numera/numera.h"

// Right: a shared copy of the field is an array of its own.
int main() {
  const std::array<const char*, 1> names = {"ArrowType"};
  const std::array<size_t, 2> one = {1, 1};
  hxArrayPtr envelope = hxCreateStructArray(one, names);
  hxSetField(envelope.get(), 0, "ArrowType", hxCreateCharArray("buffer", 6));
  const hxArrayPtr kind = hxSharedCopy(hxGetField(envelope.get(), 0, "ArrowType"));
  envelope.reset();
  std::cout << hxGetString(kind.get()) << '\n';
}
