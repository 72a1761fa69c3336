// One open instrument, the first device of the library, attached as the test program's Laboratory attaches it.
#pragma once

#include <CorvaneCIF.h>
#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "Laboratory.h"

/// Printable and comparable: "PERIPHERAL?;FILTER 3".
inline std::string Joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) {
    text += (text.empty() ? "" : ";") + line;
  }
  return text;
}

class Instrument : public testing::Test {
 protected:
  /// instrument: as in a scenario, but moving in no time and keeping its state.
  void Open(nlohmann::json instrument, int pixels = 2048) {
    instrument["motion"] = 0;
    mLab.reset();
    mLab = MakeLaboratory({{"instrument", instrument}, {"detector", {{"pixels", pixels}}}});
    ASSERT_NO_FATAL_FAILURE(Initialize());
    if (!mLab->HasDetector()) {
      ASSERT_EQ(CorvaneSetNumberPixels(0, pixels), CORVANE_SUCCESS);
      ASSERT_EQ(CorvaneSetPixelWidth(0, 13.5F), CORVANE_SUCCESS);
    }
  }

  void Initialize() {
    ASSERT_EQ(CorvaneInitialize(mLab->Directory().data()), CORVANE_SUCCESS);
    int count = 0;
    ASSERT_EQ(CorvaneGetNumberDevices(&count), CORVANE_SUCCESS);
    ASSERT_EQ(count, 1);
  }

  void TearDown() override { CorvaneClose(); }

  Laboratory& Lab() { return *mLab; }

  /// Lines that the instrument got since the first `before`.
  std::vector<std::string> LinesSince(std::size_t before) {
    const std::vector<std::string> all = Lab().Lines();
    return {all.begin() + static_cast<std::ptrdiff_t>(before), all.end()};
  }

  /// Lines that a call sends.
  template <typename Call>
  std::string LinesOf(Call&& call) {
    const std::size_t before = Lab().Lines().size();
    EXPECT_EQ(call(), CORVANE_SUCCESS);
    return Joined(LinesSince(before));
  }

 private:
  std::unique_ptr<Laboratory> mLab;
};

/// The models, and what only some of them have.
struct Model {
  const char* name;
  bool keepsTexts;  ///< its record; then it also has one input port and no accessory lines
};

inline void PrintTo(const Model& model, std::ostream* out) {
  *out << model.name;
}

class EveryModel : public Instrument, public testing::WithParamInterface<Model> {
 protected:
  void OpenModel(nlohmann::json instrument = nlohmann::json::object(), int pixels = 2048) {
    instrument["model"] = GetParam().name;
    Open(instrument, pixels);
  }
};

#define INSTANTIATE_FOR_EVERY_MODEL(Suite)                                                                            \
  INSTANTIATE_TEST_SUITE_P(Models, Suite, testing::Values(Model{"LX", false}, Model{"MX", false}, Model{"SX", true}), \
                           [](const auto& instance) { return instance.param.name; })
