// Every control and bulk OUT transfer of a session over the virtual USB bus fails; the chip is pulled at any of them;
// bulk IN transfers fail now and then (they come with the clock, so a count of them means no particular
// place).
#include <gtest/gtest.h>

#include <memory>
#include <mutex>
#include <ostream>

#include "RecordFields.h"
#include "Sweep.h"
#include "bridge/VirtualUsbBus.h"
#include "controller/MotionController.h"
#include "scenario/Scenario.h"
#include "support/FakeTime.h"
#include "support/TemporaryDirectory.h"

namespace {

using corvane::sim::EepromImage;
using corvane::sim::InstrumentDescription;
using corvane::sim::MotionController;

constexpr unsigned kCounted = UsbFault::kControl | UsbFault::kBulkOut;

/// A controller that is replaced while the chip in front of it stays; the chip talks to it from its own thread.
class ReplacedController final : public ISerialPeer {
 public:
  void Replace(const InstrumentDescription& description) {
    const std::lock_guard lock(mMutex);
    mController = std::make_unique<MotionController>(description);
  }
  template <typename Ask>
  auto With(const Ask& ask) {
    const std::lock_guard lock(mMutex);
    return ask(*mController);
  }
  void FromHost(std::span<const std::uint8_t> bytes) override {
    With([&](MotionController& controller) { controller.FromHost(bytes); });
  }
  std::size_t ToHost(std::span<std::uint8_t> buffer) override {
    return With([&](MotionController& controller) { return controller.ToHost(buffer); });
  }

 private:
  std::mutex mMutex;
  std::unique_ptr<MotionController> mController;
};

struct UsbSweepCase {
  SweepPlan plan;
  std::string model;
  UsbFault::Effect effect = UsbFault::Effect::kSubmitFails;
  int error = EIO;
  unsigned kinds = kCounted;
};

void PrintTo(const UsbSweepCase& sweep, std::ostream* out) {
  *out << sweep.plan.name;
}

class UsbInstrument final : public SweptInstrument {
 public:
  explicit UsbInstrument(const UsbSweepCase& sweep)
      : mSweep(sweep), mDescription(corvane::sim::DefaultInstrument(sweep.model)) {
    mDescription.motion = {0, 0, 0, 0, 0, 0, 0};
    mDescription.wavelength = 480.0F;
    mDescription.record.currentWavelength = 480.0F;
    mController.Replace(mDescription);
    BridgeChip::Options options;
    options.vendorId = 0x136E;
    options.productId = 0x0017;
    options.repliesAtOnce = true;
    mChip = &mBus.Plug(options, {&mController});
  }

  std::string Directory() const override { return mFolder.Path().string(); }

  void Renew() override {
    Lift();
    mController.Replace(mDescription);
    mBus.ForgetOperations();
  }
  void Arm(const Fault& fault) override {
    if (fault.reply.is_null()) {
      mFault = fault;
      mBus.SetFault({mSweep.effect, fault.number, mSweep.kinds, fault.fromThenOn, mSweep.error});
    } else {
      mController.With([&](MotionController& found) { found.Arm(corvane::sim::ParseReplyFault(fault.reply.dump())); });
    }
  }
  void Lift() override {
    mFault = {};
    mBus.ClearFault();
    mController.With([](MotionController& found) { found.ClearFaults(); });
    if (mBus.OpenNodes() == 0) {
      EXPECT_EQ(mBus.PendingTransfers(), 0U);
      mBus.Replug(*mChip);
    }
  }

  nlohmann::json State() override {
    return nlohmann::json::parse(mController.With([](MotionController& found) { return found.State(); }));
  }
  StoredRecord Record() override {
    static const std::map<int, int> kPlaces = ControllerFields();
    return mController.With([this](MotionController& found) {
      const auto& instrument = found.GetInstrument();
      return mSweep.plan.kind == Oracle::Kind::kSx
                 ? NumberedTexts([&](int number) { return instrument.Parameters().Text(number); })
                 : CutIntoFields(EepromImage::kSize, kPlaces,
                                 [&](int address) { return static_cast<char>(instrument.Memory().Byte(address)); });
    });
  }
  std::vector<std::string> Lines() override {
    return mController.With([](MotionController& found) { return found.Lines(); });
  }
  std::uint64_t LineCount() override {
    return mController.With([](MotionController& found) { return found.LineCount(); });
  }
  std::uint64_t Transfers() override { return mBus.Operations(mSweep.kinds); }
  std::uint64_t TransferHits() override {
    const std::uint64_t count = Transfers();
    const bool isHit = mFault.number != 0 && count >= mFault.number;
    return !isHit ? 0 : mFault.fromThenOn ? count - mFault.number + 1 : 1;
  }

 private:
  const UsbSweepCase& mSweep;
  InstrumentDescription mDescription;
  TemporaryDirectory mFolder;
  ReplacedController mController;
  VirtualUsbBus mBus;
  BridgeChip* mChip = nullptr;
  Fault mFault;
};

class UsbSweep : public testing::TestWithParam<UsbSweepCase> {
  FakeTime mTime;
};

TEST_P(UsbSweep, LeavesNothingWrong) {
  UsbInstrument instrument(GetParam());
  Sweep(instrument, GetParam().plan);
}

using Kind = Oracle::Kind;
using Effect = UsbFault::Effect;
const UsbSweepCase kCases[] = {
    {{"UsbSubmit", Kind::kFirmwareMoves, kControllerFailures, 40, false}, "LX"},
    {{"UsbCompletion", Kind::kSx, kSxFailures, 40, false}, "SX", Effect::kCompletionFails, EPROTO},
    {{"UsbUnplug", Kind::kFirmwareMoves, kControllerFailures, 30, false, true, true}, "LX", Effect::kUnplug, ENODEV},
    {{"UsbUnplugSx", Kind::kSx, kSxFailures, 30, false, true, true}, "SX", Effect::kUnplug, ENODEV},
    // The first that fails ends the reading.
    {{"UsbBulkIn", Kind::kFirmwareMoves, kControllerFailures, 20, false, true, true},
     "MX",
     Effect::kCompletionFails,
     EPROTO,
     UsbFault::kBulkIn},
};
INSTANTIATE_TEST_SUITE_P(Faults, UsbSweep, testing::ValuesIn(kCases),
                         [](const auto& instance) { return instance.param.plan.name; });

}  // namespace
