#include "numera/core/util/verify_struct.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/support/host_builder.h"

namespace numera::io::arrow::core::util {
namespace {

using namespace numera::testing;

}  // namespace
}  // namespace numera::io::arrow::core::util
