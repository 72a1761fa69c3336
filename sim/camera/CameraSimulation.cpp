#include "camera/CameraSimulation.h"

#include <algorithm>
#include <array>
#include <exception>
#include <iostream>
#include <thread>
#include <utility>

namespace corvane::sim {
namespace {

constexpr std::uint8_t kDataFollows = 0xB1;
constexpr std::uint8_t kNoData = 0xB0;
constexpr std::size_t kAvailabilityBurst = 16;
constexpr const char* kControllerName = "i2c";

}  // namespace

unsigned int CameraSimulation::Initialize(std::string_view directory) {
  const std::scoped_lock lock(mMutex);
  if (mKeepsPower && mScenario) {
    mInitialized = true;
    return kTivanSuccess;
  }
  mInitialized = false;
  // The old instrument gives up its state file before a new one reads it.
  mController.reset();
  mLegacy.reset();
  mLog.reset();
  mScenario.reset();
  mScenarioFaults.clear();
  try {
    Scenario scenario = LoadScenario(std::string(directory));
    mLog = std::make_unique<SimulationLog>(scenario.logFile, scenario.logTransfers);
    if (scenario.i2c) {
      mController = std::make_unique<MotionController>(*scenario.i2c, mLog.get(), kControllerName);
    }
    if (scenario.legacy) {
      mLegacy = std::make_unique<LegacyInstrument>(*scenario.legacy);
    }
    for (const TransportFault& fault : scenario.transportFaults) {
      mScenarioFaults.push_back({fault, mOperations});
    }
    mScenario = std::move(scenario);
  } catch (const std::exception& problem) {
    std::cerr << "corvane simulation: " << problem.what() << '\n';
    return kTivanFailure;
  }
  mInitialized = true;
  return kTivanSuccess;
}

unsigned int CameraSimulation::ShutDown() {
  const std::scoped_lock lock(mMutex);
  if (!mInitialized) {
    return kTivanNotInitialized;
  }
  mInitialized = false;
  return kTivanSuccess;
}

bool CameraSimulation::Hits(const ArmedFault& armed) const {
  const unsigned long long since = mOperations - armed.armedAt;
  const unsigned long long wanted = armed.fault.operation;
  return wanted != 0 && (since == wanted || (armed.fault.fromThenOn && since > wanted));
}

std::optional<unsigned int> CameraSimulation::Begin() {
  ++mOperations;
  if (mTestFault && Hits(*mTestFault)) {
    ++mFaultHits;
    return mTestFault->fault.status;
  }
  const auto hit = std::find_if(mScenarioFaults.begin(), mScenarioFaults.end(),
                                [this](const ArmedFault& armed) { return Hits(armed); });
  if (hit != mScenarioFaults.end()) {
    return hit->fault.status;
  }
  return mInitialized ? std::nullopt : std::optional<unsigned int>(kTivanNotInitialized);
}

unsigned int CameraSimulation::End(std::string_view operation, std::uint8_t address,
                                   std::span<const std::uint8_t> bytes, unsigned int status) {
  if (mLog != nullptr) {
    std::vector<std::uint8_t> shown{address};
    shown.insert(shown.end(), bytes.begin(), bytes.end());
    mLog->Transfer(kControllerName, operation, shown, std::to_string(status));
  }
  return status;
}

unsigned int CameraSimulation::BurstWrite(std::uint8_t address, std::span<const std::uint8_t> bytes) {
  const std::scoped_lock lock(mMutex);
  unsigned int status = kTivanNoAnswer;
  if (const auto fault = Begin()) {
    status = *fault;
  } else if (address == kControllerAddress && mController != nullptr) {
    mController->FromHost(bytes);
    status = kTivanSuccess;
  } else if (mLegacy != nullptr && mLegacy->BurstWrite(address, bytes)) {
    status = kTivanSuccess;
  }
  return End("write", address, bytes, status);
}

void CameraSimulation::AwaitOutput() {
  for (auto wait = mController->UntilOutput(); wait && wait->count() > 0; wait = mController->UntilOutput()) {
    std::this_thread::sleep_for(*wait);
  }
}

unsigned int CameraSimulation::BurstRead(std::uint8_t address, std::span<std::uint8_t> bytes) {
  const std::scoped_lock lock(mMutex);
  if (const auto fault = Begin()) {
    return End("read", address, {}, *fault);
  }
  if (address != kControllerAddress || mController == nullptr) {
    return End("read", address, {}, kTivanNoAnswer);
  }
  AwaitOutput();
  std::fill(bytes.begin(), bytes.end(), std::uint8_t{0});
  const bool pending = mController->UntilOutput().has_value();
  bytes[0] = pending || bytes.size() >= kAvailabilityBurst ? kDataFollows : kNoData;
  mController->ToHost(bytes.subspan(1));
  return End("read", address, bytes, kTivanSuccess);
}

unsigned int CameraSimulation::Write(std::uint8_t address, std::uint8_t reg, std::uint8_t value) {
  const std::scoped_lock lock(mMutex);
  const std::array bytes{reg, value};
  if (const auto fault = Begin()) {
    return End("write-register", address, bytes, *fault);
  }
  const bool answered = mLegacy != nullptr && mLegacy->Write(address, reg, value);
  return End("write-register", address, bytes, answered ? kTivanSuccess : kTivanNoAnswer);
}

unsigned int CameraSimulation::Read(std::uint8_t address, std::uint8_t reg, std::uint8_t& value) {
  const std::scoped_lock lock(mMutex);
  const std::array asked{reg};
  if (const auto fault = Begin()) {
    return End("read-register", address, asked, *fault);
  }
  if (mLegacy == nullptr || !mLegacy->Read(address, reg, value)) {
    return End("read-register", address, asked, kTivanNoAnswer);
  }
  return End("read-register", address, std::array{reg, value}, kTivanSuccess);
}

unsigned int CameraSimulation::GetDetector(int& xPixels, int& yPixels) {
  const std::scoped_lock lock(mMutex);
  if (!mInitialized || !mScenario->detector) {
    return mInitialized ? kTivanNoAnswer : kTivanNotInitialized;
  }
  xPixels = mScenario->detector->pixels;
  yPixels = mScenario->detector->rows;
  return kTivanSuccess;
}

unsigned int CameraSimulation::GetPixelSize(float& width, float& height) {
  const std::scoped_lock lock(mMutex);
  if (!mInitialized || !mScenario->detector) {
    return mInitialized ? kTivanNoAnswer : kTivanNotInitialized;
  }
  width = mScenario->detector->pixelWidth;
  height = mScenario->detector->pixelHeight;
  return kTivanSuccess;
}

MotionController* CameraSimulation::Controller(int instrument) {
  return instrument == (mLegacy != nullptr ? 1 : 0) ? mController.get() : nullptr;
}

const LegacyInstrument* CameraSimulation::Legacy(int instrument) const {
  return instrument == 0 ? mLegacy.get() : nullptr;
}

bool CameraSimulation::IsInitialized() {
  const std::scoped_lock lock(mMutex);
  return mInitialized;
}

bool CameraSimulation::KeepsState(int instrument) {
  const std::scoped_lock lock(mMutex);
  const MotionController* const found = Controller(instrument);
  return found != nullptr && !found->GetInstrument().Description().stateFile.empty();
}

int CameraSimulation::NumberUsb() {
  const std::scoped_lock lock(mMutex);
  return mScenario ? static_cast<int>(mScenario->usb.size()) : 0;
}

template <typename Ask>
CameraSimulation::Answer CameraSimulation::Truth(int instrument, double& nanometres, const Ask& ask) {
  const std::scoped_lock lock(mMutex);
  std::optional<double> truth;
  if (const LegacyInstrument* const legacy = Legacy(instrument)) {
    truth = ask(*legacy);
  } else if (const MotionController* const found = Controller(instrument)) {
    truth = ask(found->GetInstrument());
  } else {
    return Answer::kNoInstrument;
  }
  nanometres = truth.value_or(nanometres);
  return truth ? Answer::kDone : Answer::kOutOfRange;
}

CameraSimulation::Answer CameraSimulation::TrueWavelength(int instrument, double pixel, double& nanometres) {
  return Truth(instrument, nanometres, [&](const auto& found) {
    return found.TrueWavelength(pixel, mScenario->detector.value_or(DetectorGeometry{}));
  });
}

CameraSimulation::Answer CameraSimulation::TrueCentre(int instrument, double& nanometres) {
  return Truth(instrument, nanometres, [](const auto& found) { return found.TrueCentre(); });
}

CameraSimulation::Answer CameraSimulation::Peek(int instrument, int address, std::uint8_t& value) {
  const std::scoped_lock lock(mMutex);
  if (const LegacyInstrument* const legacy = Legacy(instrument)) {
    if (address < 1 || address > kLegacyPages * kLegacyPageSize) {
      return Answer::kOutOfRange;
    }
    value = legacy->Memory().Byte((address - 1) / kLegacyPageSize, (address - 1) % kLegacyPageSize);
    return Answer::kDone;
  }
  const MotionController* const found = Controller(instrument);
  if (found == nullptr) {
    return Answer::kNoInstrument;
  }
  if (!EepromImage::IsValid(address)) {
    return Answer::kOutOfRange;
  }
  value = found->GetInstrument().Memory().Byte(address);
  return Answer::kDone;
}

std::string CameraSimulation::State(int instrument) {
  const std::scoped_lock lock(mMutex);
  if (const LegacyInstrument* const legacy = Legacy(instrument)) {
    return legacy->State();
  }
  const MotionController* const found = Controller(instrument);
  return found == nullptr ? "" : found->State();
}

std::string CameraSimulation::Parameter(int instrument, int number) {
  const std::scoped_lock lock(mMutex);
  const MotionController* const found = Controller(instrument);
  return found == nullptr || !ParameterMemory::IsValid(number) ? "" : found->GetInstrument().Parameters().Text(number);
}

void CameraSimulation::KeepPower(bool on) {
  const std::scoped_lock lock(mMutex);
  mKeepsPower = on;
}

CameraSimulation::Answer CameraSimulation::ArmReplyFault(int instrument, std::string_view json) {
  const std::scoped_lock lock(mMutex);
  MotionController* const found = Controller(instrument);
  if (found == nullptr) {
    return Answer::kNoInstrument;
  }
  try {
    found->Arm(ParseReplyFault(json));
    return Answer::kDone;
  } catch (const ScenarioError& problem) {
    std::cerr << "corvane simulation: " << problem.what() << '\n';
    return Answer::kOutOfRange;
  }
}

CameraSimulation::Answer CameraSimulation::ClearReplyFaults(int instrument) {
  const std::scoped_lock lock(mMutex);
  MotionController* const found = Controller(instrument);
  if (found == nullptr) {
    return Answer::kNoInstrument;
  }
  found->ClearFaults();
  return Answer::kDone;
}

unsigned long long CameraSimulation::Lines(int instrument) {
  const std::scoped_lock lock(mMutex);
  const MotionController* const found = Controller(instrument);
  return found == nullptr ? 0 : found->LineCount();
}

std::string CameraSimulation::Log() {
  const std::scoped_lock lock(mMutex);
  return mLog == nullptr ? "" : mLog->Text();
}

unsigned long long CameraSimulation::Operations() {
  const std::scoped_lock lock(mMutex);
  return mOperations;
}

void CameraSimulation::ArmFault(const TransportFault& fault) {
  const std::scoped_lock lock(mMutex);
  mTestFault = ArmedFault{fault, mOperations};
  mFaultHits = 0;
}

unsigned long long CameraSimulation::FaultHits() {
  const std::scoped_lock lock(mMutex);
  return mFaultHits;
}

}  // namespace corvane::sim
