// main() of the tests that run on a virtual USB bus.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "bridge/UmockdevPreload.h"

int main(int argc, char** argv) {
  // The test framework takes its own arguments out of argv; a new start needs them.
  std::vector<char*> arguments(argv, argv + argc + 1);
  testing::InitGoogleMock(&argc, argv);
  if (!testing::GTEST_FLAG(list_tests)) {
    corvane::EnsureUmockdevPreload(arguments.data());
  }
  return RUN_ALL_TESTS();
}
