#include "components/TMerakHardware.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "components/Instrument.h"
#include "components/TMerakFactory.h"
#include "components/TMerakSpectrographDevice.h"

namespace {

constexpr long kEndless = std::numeric_limits<long>::max();
/// Allocations that this thread is still granted; below 0 once one was refused.
thread_local long gGranted = kEndless;

}  // namespace

// For the whole test executable; inlined, the compiler would find malloc and delete mismatched.
[[gnu::noinline]] void* operator new(std::size_t size) {
  if (gGranted != kEndless && --gGranted < 0) {
    throw std::bad_alloc();
  }
  void* const memory = std::malloc(size != 0 ? size : 1);
  return memory != nullptr ? memory : throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}

namespace {

std::string SerialOf(const TSpectrographHardware& hardware) {
  char serial[TSpectrographHardware::kSerialLength + 1] = {};
  hardware.GetSerialNumber(serial, TSpectrographHardware::kSerialLength);
  return serial;
}

std::string ModelOf(TSpectrographDevice& device) {
  const char* model = nullptr;
  device.GetModelNumber(model);
  return model;
}

TEST(TMerakHardware, ReadsTheRecordAndTheSystemInformationOnce) {
  Instrument instrument;
  instrument.values["SYSTEMINFO"] = "TIVAN,CV-LX," + std::string(300, 's') + ",x,V2.80";
  auto controller = instrument.Connect();
  TMerakOrbis* const borrowed = controller.get();
  TMerakHardware hardware(std::move(controller));
  const Lines lines = instrument.Take();
  EXPECT_EQ(lines.size(), 355U);
  EXPECT_EQ(lines.back(), "SYSTEMINFO?");
  EXPECT_EQ(SerialOf(hardware), std::string(49, 's')) << "cut";
  EXPECT_EQ(hardware.GetSystemInfo().model, "CV-LX");
  EXPECT_EQ(hardware.GetSystemInfo().firmware, "V2.80");
  EXPECT_EQ(gblMerakOrbis, borrowed);
  hardware.Initialise();
  EXPECT_TRUE(instrument.Take().empty());
  BusyLog log(*hardware.GetWavelengthInterface());
  hardware.GetGratingInterface()->SetGrating(0);
  EXPECT_EQ(log.Take().size(), 2U) << "the wavelength observes the grating of the same instrument";
  EXPECT_FALSE(hardware.GetSpectrographDevice()->IsActive());
  const char* serial = nullptr;
  hardware.GetSpectrographDevice()->GetSpectrographSerial(serial);
  EXPECT_STREQ(serial, "CV-0042") << "the record's serial, not the controller's";
}

TEST(TMerakHardware, UnsavedValuesReachTheInstrumentAtTheEnd) {
  Instrument instrument;
  {
    TMerakHardware hardware(instrument.Connect());
    hardware.GetGratingInterface()->SetGratingOffset(1, 321);
    instrument.Take();
  }
  EXPECT_EQ(instrument.eeprom.IntAt(297), 321);
  EXPECT_EQ(instrument.Take().size(), 354U) << "the record once, and no farewell on this model";
  EXPECT_EQ(gblMerakOrbis, nullptr);
  {
    TMerakHardware hardware(instrument.Connect());
    instrument.Take();
  }
  EXPECT_TRUE(instrument.Take().empty()) << "nothing unsaved, nothing written";
}

TEST(TMerakHardware, ClosedAndSilentControllersAreHeldAllTheSame) {
  Instrument instrument;
  {
    TMerakHardware closed(std::make_unique<TMerakOrbis>(nullptr));
    EXPECT_EQ(SerialOf(closed), "");
    EXPECT_EQ(ThrownBy([&] { closed.GetWavelengthInterface()->SetWavelength(500.0F); }), 3);
  }
  EXPECT_TRUE(instrument.Take().empty());
  auto controller = instrument.Connect();
  instrument.answers = 0;
  {
    TMerakHardware silent(std::move(controller));
    EXPECT_EQ(instrument.Take().size(), 2U) << "the record ends with the first byte that stays out";
    EXPECT_EQ(ThrownBy([&] { silent.GetGratingInterface()->GetGrating(); }), 4);
  }
}

/// Destroys what `make` makes of a controller with unsaved values, memory running out ever later, until it suffices.
template <typename Make>
void ExpectTheEndWithoutMemory(Make make) {
  // One by one through the first exchanges, which the later ones repeat, then in growing steps.
  for (long granted = 0;; granted += 1 + granted / 50) {
    Instrument instrument;
    auto owner = make(instrument.Connect());
    gblMerakOrbis->SetGratingOffset(0, 1, 321);
    gGranted = granted;
    owner.reset();
    const bool refused = std::exchange(gGranted, kEndless) < 0;
    ASSERT_FALSE(instrument.IsConnected()) << granted;
    ASSERT_EQ(gblMerakOrbis, nullptr) << granted;
    if (!refused) {
      ASSERT_GT(granted, 354) << "every exchange needs some";
      EXPECT_EQ(instrument.eeprom.IntAt(297), 321);
      break;
    }
  }
}

TEST(TMerakHardware, EndsWithoutMemoryLikeItsDeviceAlone) {
  using Controller = std::unique_ptr<TMerakOrbis>;
  ExpectTheEndWithoutMemory([](Controller held) { return std::make_unique<TMerakHardware>(std::move(held)); });
  ExpectTheEndWithoutMemory(
      [](Controller held) { return std::make_unique<TMerakSpectrographDevice>(std::move(held)); });
}

TEST(TMerakFactory, SharesItsGratingAndItsDevice) {
  Instrument instrument;
  TMerakFactory factory(instrument.Connect());
  const std::unique_ptr<ISpectrographGrating> grating(factory.CreateGrating());
  const std::unique_ptr<ISpectrographWavelength> wavelength(factory.CreateWavelength());
  EXPECT_EQ(factory.CreateGrating(), grating.get());
  BusyLog log(*wavelength);
  grating->SetBusy(false);
  EXPECT_EQ(log.Take().size(), 1U);
  EXPECT_EQ(factory.CreateCorvane(), factory.GetSpectrograph());
}

TEST(TMerakSpectrographDevice, ModelIsTheFirstCodeFound) {
  Instrument instrument;
  TMerakSpectrographDevice device(instrument.Connect());
  const std::pair<const char*, const char*> models[] = {
      {"xxMXyy", "CV-MX"}, {"SX and LX", "CV-LX"}, {"A-SX-1", "CV-SX"}, {"QZ", "Unknown"}, {"", "Unknown"}};
  for (const auto& [designation, model] : models) {
    instrument.values["SYSTEMINFO"] = std::string("TIVAN,") + designation;
    EXPECT_EQ(ModelOf(device), model) << designation;
  }
  instrument.errors["SYSTEMINFO"] = "E04";
  EXPECT_EQ(ModelOf(device), "Unknown");
  EXPECT_TRUE(device.IsPresent());
}

TEST(TMerakSpectrographDevice, AnyDevicesEndForgetsTheLatestController) {
  auto first = std::make_unique<TMerakSpectrographDevice>(std::make_unique<TMerakOrbis>(nullptr));
  EXPECT_EQ(gblMerakOrbis, &first->GetMerakOrbis());
  const TMerakSpectrographDevice second(std::make_unique<TMerakOrbis>(nullptr));
  EXPECT_NE(gblMerakOrbis, &first->GetMerakOrbis());
  EXPECT_NE(gblMerakOrbis, nullptr);
  first.reset();
  EXPECT_EQ(gblMerakOrbis, nullptr) << "although the second one lives";
}

TEST(TMerakSpectrographDevice, ActivationOpensAndReadsOnce) {
  Instrument instrument;
  TMerakSpectrographDevice device(instrument.Connect());
  instrument.Take();
  device.SetActive(true);
  EXPECT_TRUE(instrument.Take().empty()) << "it is open already";
  device.SetActive(false);
  EXPECT_FALSE(device.GetMerakOrbis().IsOpen());
  device.SetActive(true);
  EXPECT_EQ(device.GetMerakOrbis().GetSerialNumber(), "CV-0042");
  const std::size_t opening = instrument.Take().size();
  EXPECT_GT(opening, 354U);
  device.SetActive(true);
  EXPECT_TRUE(instrument.Take().empty());
  device.SetActive(false);
  device.Load(false);
  EXPECT_EQ(instrument.Take().size(), opening);
  EXPECT_FALSE(device.IsActive()) << "loading does not activate";
  device.SetActive(false);
  instrument.answers = 0;
  device.SetActive(true);
  EXPECT_FALSE(device.GetMerakOrbis().IsOpen());
  EXPECT_TRUE(device.IsActive()) << "stored although nothing could be opened";
}

}  // namespace
