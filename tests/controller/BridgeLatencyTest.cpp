// What the transport makes of CORVANE_USB_LATENCY_MS, over a bridge without a latency timer.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "controller/TMerakControlUSB.h"
#include "support/ScriptedBridge.h"

namespace {

std::string RemarkFor(const char* text) {
  ScriptedBridge bridge;
  bridge.Add();
  TMerakControlUSB transport;
  setenv("CORVANE_USB_LATENCY_MS", text, 1);
  EXPECT_EQ(transport.Open(0), FT_OK);
  unsetenv("CORVANE_USB_LATENCY_MS");
  return transport.Remark();
}

TEST(BridgeLatency, AValueThatIsNoneIsIgnoredWithARemark) {
  for (const char* const text : {"", "0", "256", "-1", "1.5", "2ms", " 2", "fast"}) {
    EXPECT_EQ(RemarkFor(text), std::string("LAT- Ignored : ") + text);
  }
}

TEST(BridgeLatency, AChipThatRefusesItIsUsedAllTheSame) {
  for (const char* const text : {"1", "255"}) {
    EXPECT_EQ(RemarkFor(text), "LAT- Err : 17");
  }
}

}  // namespace
