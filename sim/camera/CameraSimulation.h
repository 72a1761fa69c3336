// The simulated camera: one I2C bus with the scenario's motion controller at address 0x58 and its older instrument at
// the addresses of that, and a detector. Behind the entry points in TivanEntryPoints.cpp, which add nothing but the C
// face. Every operation locks: a bus carries one transfer at a time, and a transfer that waits for a motion keeps the
// bus.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "camera/TivanSimulation.h"
#include "controller/MotionController.h"
#include "legacy/LegacyInstrument.h"
#include "model/SimulationLog.h"
#include "scenario/Scenario.h"

namespace corvane::sim {

/// Statuses of the camera SDK.
enum TivanStatus : unsigned int {
  kTivanSuccess = 20002,
  kTivanBadParameter = 20066,
  kTivanNotInitialized = 20075,
  kTivanNoAnswer = 20080,  ///< no device at that I2C address, or it does not take such a transfer
  kTivanFailure = 20991
};

class CameraSimulation {
 public:
  static constexpr std::uint8_t kControllerAddress = 0x58;

  // The camera SDK's services.

  /// directory: of the scenario; empty for the default. A bad scenario is reported on stderr.
  unsigned int Initialize(std::string_view directory);
  unsigned int ShutDown();
  unsigned int BurstWrite(std::uint8_t address, std::span<const std::uint8_t> bytes);
  /// A controller answers 0xB1 and the next bytes of its output, filled up with zeros; with nothing to say, 0xB0 (or
  /// 0xB1 and zeros to a burst of sixteen or more, which is how hosts look for a controller). Waits for a reply that
  /// is on its way.
  unsigned int BurstRead(std::uint8_t address, std::span<std::uint8_t> bytes);
  /// Only an older instrument takes register transfers.
  unsigned int Write(std::uint8_t address, std::uint8_t reg, std::uint8_t value);
  unsigned int Read(std::uint8_t address, std::uint8_t reg, std::uint8_t& value);
  unsigned int GetDetector(int& xPixels, int& yPixels);
  unsigned int GetPixelSize(float& width, float& height);

  // What TivanSimulation.h offers beyond. Instruments are numbered as there.

  bool IsInitialized();
  bool KeepsState(int instrument);
  int NumberUsb();

  enum class Answer {
    kDone = CORVANE_SIM_DONE,
    kNoInstrument = CORVANE_SIM_NO_INSTRUMENT,
    kOutOfRange = CORVANE_SIM_OUT_OF_RANGE
  };
  Answer TrueWavelength(int instrument, double pixel, double& nanometres);
  Answer TrueCentre(int instrument, double& nanometres);
  Answer Peek(int instrument, int address, std::uint8_t& value);
  Answer ArmReplyFault(int instrument, std::string_view json);
  Answer ClearReplyFaults(int instrument);
  unsigned long long Lines(int instrument);
  /// Empty when there is no such instrument.
  std::string State(int instrument);
  std::string Parameter(int instrument, int number);
  void KeepPower(bool on);
  std::string Log();
  unsigned long long Operations();
  void ArmFault(const TransportFault& fault);
  unsigned long long FaultHits();

 private:
  struct ArmedFault {
    TransportFault fault;
    unsigned long long armedAt = 0;  ///< operations before the fault was armed
  };

  /// Counts the transfer; the status of a fault that hits it.
  std::optional<unsigned int> Begin();
  unsigned int End(std::string_view operation, std::uint8_t address, std::span<const std::uint8_t> bytes,
                   unsigned int status);
  bool Hits(const ArmedFault& armed) const;
  void AwaitOutput();
  MotionController* Controller(int instrument);
  const LegacyInstrument* Legacy(int instrument) const;
  template <typename Ask>
  Answer Truth(int instrument, double& nanometres, const Ask& ask);

  std::mutex mMutex;
  std::optional<Scenario> mScenario;
  std::unique_ptr<SimulationLog> mLog;
  std::unique_ptr<MotionController> mController;
  std::unique_ptr<LegacyInstrument> mLegacy;
  bool mInitialized = false;
  bool mKeepsPower = false;
  unsigned long long mOperations = 0;
  std::vector<ArmedFault> mScenarioFaults;
  std::optional<ArmedFault> mTestFault;
  unsigned long long mFaultHits = 0;
};

}  // namespace corvane::sim
