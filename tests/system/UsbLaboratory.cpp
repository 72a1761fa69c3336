// The instrument behind a virtual bridge chip on a virtual USB bus, under the real libusb.
#include <mutex>
#include <stdexcept>

#include "Laboratory.h"
#include "bridge/BridgeChip.h"
#include "bridge/VirtualUsbBus.h"
#include "controller/MotionController.h"
#include "scenario/Scenario.h"
#include "support/LockedPeer.h"
#include "support/TemporaryDirectory.h"

namespace {

using corvane::sim::MotionController;
using corvane::sim::Scenario;

class UsbLaboratory final : public Laboratory {
 public:
  explicit UsbLaboratory(const std::string& scenario)
      : mScenario(corvane::sim::ParseScenario(scenario, "test", mFolder.Path())),
        mController(mScenario.usb.at(0).instrument),
        mPeer(mController) {
    BridgeChip::Options chip;
    chip.vendorId = static_cast<std::uint16_t>(mScenario.usb[0].vendorId);
    chip.productId = static_cast<std::uint16_t>(mScenario.usb[0].productId);
    chip.serialNumber = mScenario.usb[0].bridgeSerial;
    chip.repliesAtOnce = true;
    mBus.Plug(chip, {&mPeer});
  }

  std::string Directory() const override { return mFolder.Path().string(); }

  std::vector<std::string> Lines() const override {
    const std::lock_guard lock(mPeer.Mutex());
    return mController.Lines();
  }
  std::uint8_t Peek(int address) const override {
    const std::lock_guard lock(mPeer.Mutex());
    return mController.GetInstrument().Memory().Byte(address);
  }
  double TrueWavelength(double pixel) const override {
    const std::lock_guard lock(mPeer.Mutex());
    return mController.GetInstrument().TrueWavelength(pixel, mScenario.detector.value()).value();
  }
  double TrueCentre() const override {
    const std::lock_guard lock(mPeer.Mutex());
    return mController.GetInstrument().TrueCentre().value();
  }
  void ArmReplyFault(const nlohmann::json& fault) override {
    const std::lock_guard lock(mPeer.Mutex());
    mController.Arm(corvane::sim::ParseReplyFault(fault.dump()));
  }
  std::size_t OpeningLines() const override { return 4; }
  bool HasDetector() const override { return false; }

 private:
  TemporaryDirectory mFolder;
  Scenario mScenario;
  MotionController mController;
  LockedPeer mPeer;
  VirtualUsbBus mBus;
};

}  // namespace

std::unique_ptr<Laboratory> MakeLaboratory(nlohmann::json scenario) {
  scenario["usb"] = nlohmann::json::array({{{"instrument", scenario["instrument"]}}});
  scenario.erase("instrument");
  return std::make_unique<UsbLaboratory>(scenario.dump());
}
