#pragma once

#include <string>

namespace numera::testing {

/// The message of the `Exception` that `act` throws.
template <class Exception, class Act>
std::string MessageThrown(Act act) {
  try {
    act();
  } catch (const Exception& exception) {
    return exception.what();
  }
  return "nothing was thrown";
}

}  // namespace numera::testing
