// What the library costs where no bridge is involved: its own time for each I2C transfer of a session against the same
// transfers made directly, and the evaluation of a calibration against a plain loop over the same cubic.
#include <dlfcn.h>

#include <cstdint>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

#include "FakeSpectrograph.h"
#include "InTurns.h"
#include "calibration/TCalibration.h"
#include "camera/TGlobalControl.h"
#include "components/TMerakHardware.h"
#include "controller/TTivanOnly_MerakOrbis.h"
#include "platform/TimeSource.h"
#include "support/TemporaryDirectory.h"

namespace {

using corvane::Clock;
using corvane::InTurns;
using corvane::Limit;
using corvane::Require;
using corvane::Seconds;

constexpr double kTransferLimit = 1.0;  // microseconds of the library's own per transfer
constexpr double kEvaluationLimit = 1.3;
constexpr int kManyPixels = 1'000'000;
constexpr int kDetectorPixels = 2048;
constexpr int kRounds = 9;

/// The pauses between reply lines are the protocol's, not the library's cost.
class NoPauses final : public corvane::TimeSource {
 public:
  std::uint64_t MonotonicMicroseconds() override {
    return static_cast<std::uint64_t>(
        std::chrono::duration_cast<std::chrono::microseconds>(Clock::now().time_since_epoch()).count());
  }
  timeval WallClock() override { return {1, 0}; }
  void SleepMicroseconds(std::uint64_t /*microseconds*/) override {}

 private:
  corvane::ScopedTimeSource mScope{*this};
};

struct Transfer {
  bool write;
  unsigned char address;
  std::vector<unsigned char> bytes;
};

/// Passes everything on and remembers it.
class RecordingBus final : public TI2CInterface {
 public:
  explicit RecordingBus(TI2CInterface& bus) : mBus(bus) {}

  unsigned int Write(unsigned char address, unsigned char reg, unsigned char data) override {
    return mBus.Write(address, reg, data);
  }
  unsigned int Read(unsigned char address, unsigned char reg, unsigned char* data) override {
    return mBus.Read(address, reg, data);
  }
  unsigned int BurstWrite(unsigned char address, long count, const unsigned char* data) override {
    transfers.push_back({true, address, {data, data + count}});
    return mBus.BurstWrite(address, count, data);
  }
  unsigned int BurstRead(unsigned char address, long count, unsigned char* data) override {
    transfers.push_back({false, address, std::vector<unsigned char>(static_cast<std::size_t>(count))});
    return mBus.BurstRead(address, count, data);
  }

  std::vector<Transfer> transfers;

 private:
  TI2CInterface& mBus;
};

/// Open, read the record, move, ask, close.
void Session(TI2CInterface& bus) {
  auto controller = std::make_unique<TTivanOnly_MerakOrbis>(&bus);
  Require(controller->Open(0) == 0, "the simulated controller does not open");
  TMerakHardware hardware(std::move(controller));
  hardware.GetWavelengthInterface()->SetWavelength(550.0F);
  hardware.GetWavelengthInterface()->GetWavelength();
}

double Replay(TI2CInterface& bus, std::vector<Transfer>& transfers) {
  const auto begin = Clock::now();
  for (Transfer& transfer : transfers) {
    const long count = static_cast<long>(transfer.bytes.size());
    if (transfer.write) {
      bus.BurstWrite(transfer.address, count, transfer.bytes.data());
    } else {
      bus.BurstRead(transfer.address, count, transfer.bytes.data());
    }
  }
  return Seconds(Clock::now() - begin);
}

/// Seconds of a session; own_us: microseconds of the library's own for each transfer.
void OwnTimePerTransfer(benchmark::State& state) {
  Require(dlopen(CORVANE_SIMULATED_SDK, RTLD_NOW) != nullptr, "no simulated camera SDK");
  const NoPauses noPauses;
  const TemporaryDirectory folder;
  folder.Write("corvane-sim.json", R"({"i2c": {"motion": 0}})");
  std::string directory = folder.Path().string();
  TGlobalControl camera(directory.data());
  TI2CInterface* bus = camera.GetSDKI2CInterface();
  Require(bus != nullptr, "no simulated camera");

  RecordingBus recording(*bus);
  Session(recording);
  std::vector<Transfer>& transfers = recording.transfers;
  const auto library = [&] {
    const auto begin = Clock::now();
    Session(*bus);
    return Seconds(Clock::now() - begin);
  };
  const auto figures = InTurns(state, library, [&] { return Replay(*bus, transfers); });
  const double own = (figures.library - figures.bare) / static_cast<double>(transfers.size()) * 1e6;
  state.counters["transfers"] = static_cast<double>(transfers.size());
  state.counters["own_us"] = own;
  Limit(state, own <= kTransferLimit, "own time at most 1 us a transfer");
}
BENCHMARK(OwnTimePerTransfer)->Iterations(kRounds)->Unit(benchmark::kMillisecond);

/// Seconds of a million evaluated pixels in detectors of the argument's size; the fit is part of the library's side.
void Evaluation(benchmark::State& state) {
  const auto pixels = static_cast<int>(state.range(0));
  FakeHardware hardware;
  TCalibration calibration(nullptr, &hardware);
  calibration.SetPixelWidth(13.5F * static_cast<float>(kDetectorPixels) / static_cast<float>(pixels));
  calibration.SetNumberPixels(pixels);
  float c0 = 0;
  float c1 = 0;
  float c2 = 0;
  float c3 = 0;
  Require(calibration.GetCalibrationConstants(&c0, &c1, &c2, &c3) == 0, "no calibration");
  std::vector<float> nm(static_cast<std::size_t>(pixels));
  const int repeats = kManyPixels / pixels;
  const auto library = [&] {
    const auto begin = Clock::now();
    for (int i = 0; i < repeats; ++i) {
      calibration.GetCalibration(nm.data(), pixels);
    }
    return Seconds(Clock::now() - begin);
  };
  volatile float sink = 0;
  const auto plain = [&] {
    const auto begin = Clock::now();
    for (int i = 0; i < repeats; ++i) {
      for (int p = 1; p <= pixels; ++p) {
        const auto x = static_cast<float>(p);
        nm[static_cast<std::size_t>(p) - 1] = x * (c3 * x * x) + (c0 + x * c1 + x * (c2 * x));
      }
      sink = nm[static_cast<std::size_t>(pixels) - 1];
    }
    return Seconds(Clock::now() - begin);
  };
  const auto figures = InTurns(state, library, plain);
  const double values = static_cast<double>(pixels) * repeats;
  state.counters["ns_per_pixel"] = figures.library / values * 1e9;
  // A fit costs as much as thousands of pixels, so the ratio says nothing for one detector.
  if (pixels == kManyPixels) {
    Limit(state, figures.ratio <= kEvaluationLimit, "ratio at most 1.3");
  }
}
BENCHMARK(Evaluation)->Arg(kDetectorPixels)->Arg(kManyPixels)->Iterations(kRounds)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  return corvane::RunBenchmarks(argc, argv);
}
