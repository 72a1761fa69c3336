// What holds for every exported function without an instrument: the order of checks, untouched outputs, opening and
// closing, the description texts.
#include <CorvaneCIF.h>
#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <string>

#include "support/EveryFunction.h"

namespace {

class Frame : public testing::Test {
 protected:
  void TearDown() override { CorvaneClose(); }
};

void ExpectAllAnswer(unsigned int status, int device) {
  for (const ExportedFunction& function : EveryDeviceFunction()) {
    Outputs out;
    EXPECT_EQ(function.call.run(device, out), status) << function.call.text;
    if (function.clearsFirst) {
      EXPECT_EQ(out.ints[0], 0) << function.call.text;
      out.ints[0] = Outputs::kInt;
    }
    EXPECT_TRUE(out.Untouched()) << function.call.text;
  }
}

TEST_F(Frame, ListsEveryDeviceFunction) {
  constexpr std::size_t kExported = 82;
  constexpr std::size_t kWithoutDevice = 4;  // Initialize, Close, GetNumberDevices, GetFunctionReturnDescription
  EXPECT_EQ(EveryDeviceFunction().size(), kExported - kWithoutDevice);
}

TEST_F(Frame, BeforeInitializeAndAfterCloseNothingIsTouched) {
  EXPECT_EQ(CorvaneClose(), CORVANE_SUCCESS);
  int count = 77;
  EXPECT_EQ(CorvaneGetNumberDevices(&count), CORVANE_NOT_INITIALIZED);
  EXPECT_EQ(count, 77);
  ExpectAllAnswer(CORVANE_NOT_INITIALIZED, 0);
  ASSERT_EQ(CorvaneInitialize(nullptr), CORVANE_SUCCESS);
  ASSERT_EQ(CorvaneInitialize(nullptr), CORVANE_SUCCESS) << "without a close between";
  EXPECT_EQ(CorvaneClose(), CORVANE_SUCCESS);
  EXPECT_EQ(CorvaneClose(), CORVANE_SUCCESS);
  ExpectAllAnswer(CORVANE_NOT_INITIALIZED, 0);
}

TEST_F(Frame, WithoutInstrumentsTheListIsEmptyAndEveryIndexUnknown) {
  ASSERT_EQ(CorvaneInitialize(nullptr), CORVANE_SUCCESS);
  int count = 77;
  EXPECT_EQ(CorvaneGetNumberDevices(&count), CORVANE_SUCCESS);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(CorvaneGetNumberDevices(nullptr), CORVANE_P1_INVALID);
  for (const int device : {0, -1, 1, INT_MAX, INT_MIN}) {
    ExpectAllAnswer(CORVANE_P1_INVALID, device);
  }
}

TEST(Description, NamesTheStatusesThatItKnows) {
  const struct {
    int code;
    unsigned int status;
    const char* text;
  } texts[] = {
      {20201, CORVANE_COMMUNICATION_ERROR, "COMMUNICATION ERROR"},
      {20202, CORVANE_SUCCESS, "SUCCESS"},
      {20266, CORVANE_P1_INVALID, "PARAMETER 1 INVALID"},
      {20267, CORVANE_P2_INVALID, "PARAMETER 2 INVALID"},
      {20268, CORVANE_P3_INVALID, "PARAMETER 3 INVALID"},
      {20269, CORVANE_P4_INVALID, "ERROR CODE NOT AVAILABLE"},
      {20270, CORVANE_P5_INVALID, "ERROR CODE NOT AVAILABLE"},
      {20275, CORVANE_NOT_INITIALIZED, "CORVANE NOT INITIALIZED"},
      {20292, CORVANE_NO_LEGACY_DRIVER, "ERROR CODE NOT AVAILABLE"},
  };
  for (const auto& [code, status, expected] : texts) {
    EXPECT_EQ(static_cast<unsigned int>(code), status);
    std::array<char, 64> text{};
    EXPECT_EQ(CorvaneGetFunctionReturnDescription(code, text.data(), 64), CORVANE_SUCCESS) << code;
    EXPECT_STREQ(text.data(), expected) << code;
  }
}

TEST(Description, IsCutToTheLengthGiven) {
  const auto describe = [](int length, std::string& buffer) {
    buffer.assign(100, '#');
    return CorvaneGetFunctionReturnDescription(CORVANE_SUCCESS, buffer.data(), length);
  };
  std::string buffer;
  EXPECT_EQ(describe(8, buffer), CORVANE_SUCCESS);
  EXPECT_EQ(buffer.substr(0, 9), std::string("SUCCESS\0#", 9));
  EXPECT_EQ(describe(7, buffer), CORVANE_P3_INVALID);
  EXPECT_EQ(buffer.substr(0, 8), std::string("SUCCES\0#", 8));
  EXPECT_EQ(describe(0, buffer), CORVANE_P3_INVALID);
  EXPECT_EQ(buffer, std::string(100, '#'));
  EXPECT_EQ(describe(1000, buffer), CORVANE_SUCCESS) << "behaves like 64";
  EXPECT_EQ(buffer, "SUCCESS" + std::string(57, '\0') + std::string(36, '#'));
  EXPECT_EQ(CorvaneGetFunctionReturnDescription(CORVANE_SUCCESS, nullptr, 10), CORVANE_P2_INVALID);
}

}  // namespace
