// What holds for every exported function without an instrument: the order of checks, untouched outputs, opening and
// closing, the description texts.
#include <CorvaneCIF.h>
#include <gtest/gtest.h>

#include <array>
#include <map>
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
  EXPECT_EQ(EveryDeviceFunction().size() + 4, 82U) << "all but Initialize, Close, GetNumberDevices and the texts";
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
  for (const int device : {0, -1, 1, 2147483647, -2147483647 - 1}) {
    ExpectAllAnswer(CORVANE_P1_INVALID, device);
  }
}

TEST(DescriptionText, IsTheTableS) {
  const std::map<int, std::string> kTexts = {{20201, "COMMUNICATION ERROR"},     {20202, "SUCCESS"},
                                             {20266, "PARAMETER 1 INVALID"},     {20267, "PARAMETER 2 INVALID"},
                                             {20268, "PARAMETER 3 INVALID"},     {20269, "ERROR CODE NOT AVAILABLE"},
                                             {20275, "CORVANE NOT INITIALIZED"}, {20292, "ERROR CODE NOT AVAILABLE"}};
  for (const auto& [code, expected] : kTexts) {
    std::array<char, 64> text{};
    EXPECT_EQ(CorvaneGetFunctionReturnDescription(code, text.data(), 64), CORVANE_SUCCESS) << code;
    EXPECT_EQ(text.data(), expected) << code;
  }
}

TEST(DescriptionLength, BoundsTheCopy) {
  const auto describe = [](int length, std::string& buffer) {
    buffer.assign(100, '#');
    return CorvaneGetFunctionReturnDescription(20202, buffer.data(), length);
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
  EXPECT_EQ(CorvaneGetFunctionReturnDescription(20202, nullptr, 10), CORVANE_P2_INVALID);
}

}  // namespace
