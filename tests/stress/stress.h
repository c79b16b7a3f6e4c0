// The size of the stress, crash and fault campaigns.
#pragma once

#include <cstdlib>

namespace nvx::test {

// Bounded sizes by default (CI); MXRK7_TEST_SCALE=N makes a campaign N times larger.
inline int testScale() {
  const char *text = std::getenv("MXRK7_TEST_SCALE");
  const int value = text ? std::atoi(text) : 1;
  return value > 0 ? value : 1;
}

}  // namespace nvx::test
