// What modules are told whose host the library runs on, or does not. Each claim has a process of
// its own, because a process loads the library once.

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::Eq;
using ::testing::ExitedWithCode;
using ::testing::HasSubstr;
using ::testing::StartsWith;

/// Loads the modules in turn and prints what the last one is told. Ends the process.
[[noreturn]] void load_and_ask(const std::vector<const char*>& modules, int scope) {
  void* module = nullptr;
  for (const char* path : modules) {
    module = dlopen(path, RTLD_NOW | scope);
    if (module == nullptr) std::_Exit(EXIT_FAILURE);
  }
  const auto ask = reinterpret_cast<const char* (*)()>(dlsym(module, "numera_test_other_host"));
  std::fprintf(stderr, "told: %s", ask());
  std::_Exit(EXIT_SUCCESS);
}

struct TwoHosts : ::testing::TestWithParam<int> {};

TEST_P(TwoHosts, LeaveTheFirstOneInUse) {
  EXPECT_EXIT(load_and_ask({FIRST_MODULE}, GetParam()), ExitedWithCode(0), Eq("told: "));
  EXPECT_EXIT(load_and_ask({FIRST_MODULE, SECOND_MODULE, FIRST_MODULE}, GetParam()),
              ExitedWithCode(0), Eq("told: "));
}

TEST_P(TwoHosts, AreToldToTheSecondOne) {
  for (const std::string second : {SECOND_MODULE, SYMBOLIC_MODULE}) {
    const std::string told = "told: The library takes hxDestroyArray(hxArray*) from " FIRST_MODULE
                             ", not from " +
                             second + ". A process holds one host, and a host is whole.";
    EXPECT_EXIT(load_and_ask({FIRST_MODULE, second.c_str()}, GetParam()), ExitedWithCode(0),
                Eq(told));
  }
}

TEST_P(TwoHosts, AreFoundInAModuleWithHalfAHost) {
  EXPECT_EXIT(
      load_and_ask({HALF_MODULE}, GetParam()), ExitedWithCode(0),
      AllOf(StartsWith("told: The library takes hxGetString[abi:cxx11](hxArray const*) from "),
            HasSubstr(HOST_LIBRARY ", not from " HALF_MODULE),
            EndsWith(". A process holds one host, and a host is whole.")));
}

INSTANTIATE_TEST_SUITE_P(Modules, TwoHosts, ::testing::Values(RTLD_LOCAL, RTLD_GLOBAL),
                         [](const auto& scope) {
                           return scope.param == RTLD_LOCAL ? "Local" : "Global";
                         });

}  // namespace
