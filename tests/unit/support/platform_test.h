// A test of the simulated desktop itself, which finds and leaves it as at its start.
#pragma once

#include <gtest/gtest.h>

#include "platform/process.h"

struct platform_test : testing::Test {
  void SetUp() override { platform::reset(); }
  void TearDown() override { platform::reset(); }
};
