#include "components/TMerakHardware.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "components/TCorvaneMerakSlit.h"
#include "components/TCorvaneMerakStepTurret.h"
#include "components/TMerakFactory.h"
#include "components/TMerakSpectrographDevice.h"
#include "support/ScriptedInstrument.h"

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

TEST(TMerakHardware, TakesItsSerialNumberFromTheControllerAndItsDevicesFromTheRecord) {
  Instrument instrument;
  instrument.values["SYSTEMINFO"] = "TIVAN,CV-LX," + std::string(300, 's') + ",x,V2.80";
  TMerakHardware hardware(instrument.Connect());
  EXPECT_EQ(SerialOf(hardware), std::string(TSpectrographHardware::kSerialLength - 1, 's')) << "cut";
  const char* serial = nullptr;
  hardware.GetSpectrographDevice()->GetSpectrographSerial(serial);
  EXPECT_STREQ(serial, "CV-0042");
}

TEST(TMerakHardware, HoldsAControllerThatIsNotOpen) {
  TMerakHardware hardware(std::make_unique<TMerakOrbis>(nullptr));
  EXPECT_EQ(SerialOf(hardware), "");
  EXPECT_EQ(ThrownBy([&] { hardware.GetWavelengthInterface()->SetWavelength(500.0F); }), merak::kDeviceNotOpen);
}

TEST(TMerakFactory, HasOneGratingWhichTheWavelengthsObserve) {
  Instrument instrument;
  TMerakFactory factory(instrument.Connect());
  std::unique_ptr<ISpectrographGrating> grating;  // outlives the wavelength
  const auto wavelength = factory.CreateWavelength();
  ISpectrographGrating* const named = factory.CreateGrating();
  grating = factory.TakeGrating();
  EXPECT_EQ(grating.get(), named);
  EXPECT_EQ(factory.CreateGrating(), named);
  BusyLog log(*wavelength);
  grating->SetGrating(0);
  EXPECT_EQ(log.Take().size(), 2U);
}

TEST(TMerakHardware, EndsWithoutMemoryAndStoresOnceItSuffices) {
  constexpr long kRecordBytes = 354;
  constexpr int kOffsetOfSecondGrating = 297;
  // One by one through the first exchanges, which the later ones repeat, then in growing steps.
  bool refused = true;
  for (long granted = 0; refused; granted += 1 + granted / 50) {
    Instrument instrument;
    auto hardware = std::make_unique<TMerakHardware>(instrument.Connect());
    gblMerakOrbis->SetGratingOffset(0, 1, 321);
    gGranted = granted;
    hardware.reset();
    refused = std::exchange(gGranted, kEndless) < 0;
    ASSERT_FALSE(instrument.IsConnected()) << granted;
    ASSERT_EQ(gblMerakOrbis, nullptr) << granted;
    if (!refused) {
      ASSERT_GE(granted, kRecordBytes) << "every exchange needs some";
      EXPECT_EQ(instrument.eeprom.IntAt(kOffsetOfSecondGrating), 321);
    }
  }
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

// ---- The parts that it builds ----

using Slit = ISpectrographSlit;
using Flipper = ISpectrographFlipper;

/// An error word, and the code that it stands for.
constexpr const char* kRefusal = "E08";
constexpr MerakResult kRefused = merak::kInvalidParameter;

class MerakParts : public testing::Test {
 protected:
  MerakParts() { mInstrument.Take(); }
  static std::unique_ptr<TMerakOrbis> ConnectFitted(Instrument& instrument) {
    instrument.values["PERIPHERAL"] = "SI1,SI2,SO1,SO2,IPD,IPS,EPD,EPS,6FILTER,XFOCUS";
    for (const char* word : {"SLIT_WIDTH", "FILTER", "FOCUS", "FOCUS_TOTALSTEPS", "PORT_INPUT"}) {
      instrument.values[word] = "5";
    }
    return instrument.Connect();
  }
  Slit& SlitAt(int position) { return *mHardware.GetSlitInterface(static_cast<Slit::TSlitPosition>(position)); }

  Instrument mInstrument;
  TMerakHardware mHardware{ConnectFitted(mInstrument)};
  TMerakSpectrographDevice& device = static_cast<TMerakSpectrographDevice&>(*mHardware.GetSpectrographDevice());
  ISpectrographWavelength& wavelength = *mHardware.GetWavelengthInterface();
  ISpectrographGrating& grating = *mHardware.GetGratingInterface();
  Flipper& entrance = *mHardware.GetFlipperInterface(Flipper::kFlipperPosition0);
  Flipper& exit = *mHardware.GetFlipperInterface(Flipper::kFlipperPosition1);
  ISpectrographFilter& filter = *mHardware.GetFilterInterface();
  ISpectrographFocusMirror& focus = *mHardware.GetFocusMirrorInterface();
  ISpectrographAccessory& accessory = *mHardware.GetAccessoryInterface();
};

TEST_F(MerakParts, AreBusyWhileTheyMoveAndThrowARefusalWhenTheyAreIdleAgain) {
  const struct {
    std::string line;  ///< the last that it sends
    TBusyDeviceServer& part;
    std::function<void()> move;
  } moves[] = {
      {"MOVETO 550.0000", wavelength, [&] { wavelength.SetWavelength(550.0F); }},
      {"GRATING 2", grating, [&] { grating.SetGrating(1); }},
      {"GRATINGHOME", grating, [&] { grating.Reset(); }},
      {"SLIT_WIDTH 4, 2147483647", SlitAt(1), [&] { SlitAt(1).SetSlit(1e30F); }},
      {"SLITHOME 2", SlitAt(3), [&] { SlitAt(3).UnsafeReset(); }},
      {"EXITPORT 0", exit, [&] { exit.SetFlipperPort(static_cast<Flipper::TPortPosition>(2)); }},
      {"FILTER 5", filter, [&] { filter.SetFilter(4); }},
      {"MOVE_FOCUS 1,2147483648", focus, [&] { focus.SetMirrorFocus(INT_MIN); }},
      {"FOCUS_HOME", focus, [&] { focus.Reset(); }},
  };
  for (const auto& [line, part, move] : moves) {
    BusyLog log(part);
    for (const bool refused : {false, true}) {
      SCOPED_TRACE(line + (refused ? " refused" : ""));
      mInstrument.errors.clear();
      if (refused) {
        mInstrument.errors[line] = kRefusal;
      }
      EXPECT_EQ(ThrownBy(move), refused ? kRefused : merak::kSuccess);
      EXPECT_EQ(mInstrument.Take().back(), line);
      EXPECT_EQ(log.Take(), (Lines{"busy", "idle"}));
    }
  }
}

TEST_F(MerakParts, ArePresentAsTheListSays) {
  const std::pair<std::string, TDeviceServer*> parts[] = {
      {"SI1 ", &SlitAt(0)},     {"SI2 ", &SlitAt(1)}, {"SO1 ", &SlitAt(2)}, {"SO2 ", &SlitAt(3)},
      {"entrance ", &entrance}, {"exit ", &exit},     {"filter ", &filter}, {"focus ", &focus}};
  const std::pair<const char*, const char*> lists[] = {
      {"SI,SO2,IPS,EPD,EPS", "SI1 SI2 SO2 exit "},
      {"AFILB,12FOC", "filter focus "},
      {"FI,OC,fil", ""},
      // A name counts with its first eight characters, and sixteen names are read.
      {"12345FOC,123456FIL", "focus "},
      {"a,b,c,d,e,f,g,h,i,j,k,l,m,n,o,SI1,SI2,FIL", "SI1 "}};
  for (const auto& [list, expected] : lists) {
    mInstrument.values["PERIPHERAL"] = list;
    std::string present;
    for (const auto& [name, part] : parts) {
      present += part->IsPresent() ? name : "";
    }
    EXPECT_EQ(present, expected) << list;
  }
}

TEST_F(MerakParts, APartThatIsNotFittedIsNotBusy) {
  mInstrument.values["PERIPHERAL"] = "";
  BusyLog log(filter);
  filter.SetFilter(1);
  EXPECT_EQ(log.Take(), Lines{});
}

TEST_F(MerakParts, NoFocusMoveIsLostWithTheMirrorFromTheList) {
  focus.GetMirrorFocus();
  mInstrument.values["PERIPHERAL"] = "";
  EXPECT_THROW(focus.SetMirrorFocus(1), TCorvaneException);
}

TEST_F(MerakParts, ASlitTakesItsModeWithoutBeingBusyAndThereIsNoFifth) {
  BusyLog log(SlitAt(2));
  SlitAt(2).SetSlitMode("FAST");
  EXPECT_EQ(mInstrument.Take(), Lines{"SLIT_MODE 3,FAST"});
  EXPECT_EQ(log.Take(), Lines{});
  EXPECT_THROW(TCorvaneMerakSlit(*gblMerakOrbis, static_cast<Slit::TSlitPosition>(4)), TCorvaneException);
}

TEST_F(MerakParts, MirrorsTellTheTurretOfTheirPortEvenOfARefusedOne) {
  mInstrument.errors["EXITPORT"] = kRefusal;
  EXPECT_EQ(ThrownBy([&] { exit.SetFlipperPort(Flipper::kPortPosition1); }), kRefused);
  entrance.SetFlipperPort(Flipper::kPortPosition1);
  // The step turret follows an offset of the ports in use only.
  EXPECT_EQ(device.GetStepTurret().SetDetectorOffset(1, 1, 8), merak::kSuccess);
  EXPECT_EQ(mInstrument.Take().back(), "Step_abs 158");
}

TEST_F(MerakParts, AccessoryLinesAreBitsOfThePort) {
  mInstrument.values["PORT_INPUT"] = std::to_string(0b0011'0101);
  // Outputs are lines 0 to 2, from bit 4 on; inputs the lines behind them, from bit 1 on.
  const std::pair<int, bool> lines[] = {{0, true},   {1, true},   {2, false},       {3, false},      {4, true},
                                        {5, false},  {6, true},   {7, true},        {8, false},      {33, false},
                                        {34, false}, {-1, false}, {INT_MAX, false}, {INT_MIN, false}};
  for (const auto& [line, state] : lines) {
    EXPECT_EQ(accessory.GetAccessoryState(line), state) << line;
  }
  mInstrument.Take();
  accessory.SetAccessory(3, true);
  EXPECT_EQ(mInstrument.Take(), Lines{}) << "not an output";
}

TEST_F(MerakParts, AccessoryOutputsAreNotWrittenUnreadButTheClientsAreTold) {
  struct Count final : TDeviceClient {
    void OnStateChanged(TDeviceServer* /*server*/) override { ++changes; }
    int changes = 0;
  } client;
  accessory.Connect(&client);
  mInstrument.values["PORT_INPUT"] = "no number";
  EXPECT_EQ(ThrownBy([&] { accessory.SetAccessory(2, true); }), merak::kIoError);
  EXPECT_EQ(mInstrument.Take(), Lines{"PORT_INPUT?"});
  EXPECT_EQ(client.changes, 1);
}

TEST_F(MerakParts, FilterLabelsAreTheRecordsWholeAndBounded) {
  std::array<char, 240> label{};
  BusyLog log(filter);
  filter.SetFilterInfo(5, std::string(300, 'x').c_str());
  EXPECT_EQ(log.Take(), Lines{"idle"});
  filter.GetFilterInfo(5, label.data(), 3);
  EXPECT_EQ(label.data(), std::string(239, 'x'));
  EXPECT_EQ(ThrownBy([&] { filter.SetFilterInfo(6, "x"); }), -1) << "there is no seventh";
  device.GetMerakOrbis().Close();
  EXPECT_EQ(ThrownBy([&] { filter.GetFilterInfo(5, label.data(), 3); }), merak::kDeviceNotOpen);
}

}  // namespace
