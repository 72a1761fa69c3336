#include "components/TMerakHardware.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstdlib>
#include <functional>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "components/TCorvaneMerakSlit.h"
#include "components/TCorvaneMerakStepTurret.h"
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

TEST(TMerakHardware, ReadsTheRecordAndTheSystemInformationOnce) {
  Instrument instrument;
  instrument.values["SYSTEMINFO"] = "TIVAN,CV-LX," + std::string(300, 's') + ",x,V2.80";
  TMerakHardware hardware(instrument.Connect());
  EXPECT_EQ(instrument.Take().size(), 355U);
  EXPECT_EQ(SerialOf(hardware), std::string(49, 's')) << "cut";
  hardware.Initialise();
  EXPECT_TRUE(instrument.Take().empty());
  BusyLog log(*hardware.GetWavelengthInterface());
  hardware.GetGratingInterface()->SetGrating(0);
  EXPECT_EQ(log.Take().size(), 2U) << "the wavelength observes the grating of the same instrument";
  const char* serial = nullptr;
  hardware.GetSpectrographDevice()->GetSpectrographSerial(serial);
  EXPECT_STREQ(serial, "CV-0042") << "the record's serial, not the controller's";
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

class MerakParts : public testing::Test {
 protected:
  MerakParts() {
    mInstrument.values["PERIPHERAL"] = "SI1,SI2,SO1,SO2,IPD,IPS,EPD,EPS,6FILTER,XFOCUS";
    for (const char* word : {"SLIT_WIDTH", "FILTER", "FOCUS", "FOCUS_TOTALSTEPS", "PORT_INPUT"}) {
      mInstrument.values[word] = "5";
    }
    Connect();
  }
  /// Builds the parts on the instrument as it is now.
  void Connect() {
    mHardware.reset();
    mHardware = std::make_unique<TMerakHardware>(mInstrument.Connect());
    mInstrument.Take();
    for (int i = 0; i < Slit::kPositions; ++i) {
      slit.at(static_cast<std::size_t>(i)) = mHardware->GetSlitInterface(static_cast<Slit::TSlitPosition>(i));
    }
    entrance = mHardware->GetFlipperInterface(Flipper::kFlipperPosition0);
    exit = mHardware->GetFlipperInterface(Flipper::kFlipperPosition1);
    filter = mHardware->GetFilterInterface();
    focus = mHardware->GetFocusMirrorInterface();
    shutter = mHardware->GetShutterInterface();
    accessory = mHardware->GetAccessoryInterface();
  }
  TMerakSpectrographDevice& Device() {
    return static_cast<TMerakSpectrographDevice&>(*mHardware->GetSpectrographDevice());
  }

  Instrument mInstrument;
  std::unique_ptr<TMerakHardware> mHardware;
  std::array<Slit*, Slit::kPositions> slit{};
  Flipper* entrance = nullptr;
  Flipper* exit = nullptr;
  ISpectrographFilter* filter = nullptr;
  ISpectrographFocusMirror* focus = nullptr;
  ISpectrographShutter* shutter = nullptr;
  ISpectrographAccessory* accessory = nullptr;
};

TEST_F(MerakParts, MovesAreBusyAndThrowWhatTheControllerAnswersWhenTheyAreIdleAgain) {
  struct Case {
    std::string line;  ///< the last that it sends
    TBusyDeviceServer* moves;
    std::function<void()> call;
  };
  const Case cases[] = {
      {"SLIT_WIDTH 4, 2147483647", slit[1], [&] { slit[1]->SetSlit(1e30F); }},
      {"SLITHOME 2", slit[3], [&] { slit[3]->UnsafeReset(); }},
      {"SLIT_MODE 3,FAST", nullptr, [&] { slit[2]->SetSlitMode("FAST"); }},
      {"EXITPORT 0", exit, [&] { exit->SetFlipperPort(static_cast<Flipper::TPortPosition>(2)); }},
      {"ENTRANCEPORT?", nullptr, [&] { entrance->GetPort(); }},
      {"FILTER 5", filter, [&] { filter->SetFilter(4); }},
      {"FILTER?", nullptr, [&] { filter->GetFilter(); }},
      {"MOVE_FOCUS 1,2147483648", focus, [&] { focus->SetMirrorFocus(INT_MIN); }},
      {"FOCUS_HOME", focus, [&] { focus->Reset(); }},
      {"FOCUS?", nullptr, [&] { focus->GetMirrorFocus(); }},
      {"PORT_OUTPUT 1", nullptr, [&] { accessory->SetAccessory(0, true); }},
      {"PORT_INPUT?", nullptr, [&] { accessory->GetAccessoryState(1); }},
  };
  for (const Case& operation : cases) {
    const std::string& line = operation.line;
    for (const bool refused : {false, true}) {
      SCOPED_TRACE(line + (refused ? " refused" : ""));
      mInstrument.errors.clear();
      mInstrument.errors[refused ? line : "none"] = "E08";
      BusyLog log(operation.moves != nullptr ? *operation.moves : *slit[0]);
      EXPECT_EQ(ThrownBy(operation.call), refused ? 6 : 0);
      EXPECT_EQ(mInstrument.Take().back(), line);
      EXPECT_EQ(log.Take(), operation.moves != nullptr ? (Lines{"busy", "idle"}) : Lines{});
    }
    const std::string word = line.substr(0, line.find('?'));
    if (word != line) {
      mInstrument.errors.clear();
      mInstrument.values[word] = "no number";
      EXPECT_EQ(ThrownBy(operation.call), 4) << line;
    }
  }
}

TEST_F(MerakParts, ArePresentAsTheListSays) {
  // Slits by position, entrance and exit mirror, wheel, focus mirror.
  TDeviceServer* const parts[] = {slit[0], slit[1], slit[2], slit[3], entrance, exit, filter, focus};
  const std::pair<const char*, const char*> lists[] = {
      {"SI,SO2,IPS,EPD,EPS", "11010100"},
      {"AFILB,12FOC", "00000011"},
      {"FI,OC,fil", "00000000"},
      // A name counts with its first eight characters, and sixteen names are read.
      {"12345FOC,123456FIL", "00000001"},
      {"a,b,c,d,e,f,g,h,i,j,k,l,m,n,o,SI1,SI2,FIL", "10000000"}};
  for (const auto& [list, expected] : lists) {
    mInstrument.values["PERIPHERAL"] = list;
    std::string present;
    for (TDeviceServer* part : parts) {
      present += part->IsPresent() ? '1' : '0';
    }
    EXPECT_EQ(present, expected) << list;
  }
  mInstrument.errors["PERIPHERAL"] = "E03";
  EXPECT_FALSE(filter->IsPresent());
  EXPECT_EQ(ThrownBy([&] { focus->GetMirrorFocus(); }), 6) << "not a position of 0";
}

TEST_F(MerakParts, PartsThatAreNotFittedDoNothingOrThrowWithoutBeingBusy) {
  mInstrument.values["PERIPHERAL"] = "";
  BusyLog logs[] = {BusyLog(*exit), BusyLog(*filter), BusyLog(*focus)};
  const std::function<void()> refused[] = {
      [&] { exit->SetFlipperPort(Flipper::kPortPosition0); }, [&] { shutter->SetInternalShutter(0); },
      [&] { shutter->GetInternalShutter(); }, [&] { shutter->InternalShutterAvailable(); }};
  for (const auto& call : refused) {
    EXPECT_EQ(ThrownBy(call), 1) << &call - refused;
  }
  filter->SetFilter(1);
  focus->SetMirrorFocus(9);
  for (BusyLog& log : logs) {
    EXPECT_TRUE(log.Take().empty());
  }
  EXPECT_THROW(TCorvaneMerakSlit(*gblMerakOrbis, static_cast<Slit::TSlitPosition>(4)), TCorvaneException);
}

TEST_F(MerakParts, MirrorsTellTheTurretOfTheirPortEvenOfARefusedOne) {
  float low = 0.0F;
  EXPECT_EQ(ThrownBy([&] { entrance->GetCCDLimits(Flipper::kPortPosition0, low, low); }), -1);
  mInstrument.errors["EXITPORT"] = "E08";
  EXPECT_EQ(ThrownBy([&] { exit->SetFlipperPort(Flipper::kPortPosition1); }), 6);
  entrance->SetFlipperPort(Flipper::kPortPosition1);
  // The step turret follows an offset of the ports in use only.
  EXPECT_EQ(Device().GetStepTurret().SetDetectorOffset(1, 1, 8), 0U);
  EXPECT_EQ(mInstrument.Take().back(), "Step_abs 158");
}

TEST_F(MerakParts, AccessoryBitsAreWhereTheyLieAndAreNotWrittenUnread) {
  mInstrument.values["PORT_INPUT"] = std::to_string(0x35);
  std::string bits;
  for (const int line : {0, 1, 2, 3, 4, 5, 6, 7, 33, 34, INT_MAX, -1, INT_MIN}) {
    bits += accessory->GetAccessoryState(line) ? '1' : '0';
  }
  EXPECT_EQ(bits, "1100101100000");
  struct Count final : TDeviceClient {
    void OnStateChanged(TDeviceServer* /*server*/) override { ++changes; }
    int changes = 0;
  } client;
  accessory->Connect(&client);
  mInstrument.Take();
  accessory->SetAccessory(3, true);
  EXPECT_TRUE(mInstrument.Take().empty()) << "no such line";
  for (const int thrown : {6, 4}) {
    mInstrument.errors[thrown == 6 ? "PORT_INPUT" : "none"] = "E08";
    EXPECT_EQ(ThrownBy([&] { accessory->SetAccessory(2, true); }), thrown);
    EXPECT_EQ(mInstrument.Take(), Lines{"PORT_INPUT?"});
    mInstrument.errors.clear();
    mInstrument.values["PORT_INPUT"] = "no number";
  }
  EXPECT_EQ(client.changes, 2) << "told all the same";
}

TEST_F(MerakParts, FilterLabelsAreTheRecordsWholeAndBounded) {
  std::array<char, 240> label{};
  BusyLog log(*filter);
  filter->SetFilterInfo(5, std::string(300, 'x').c_str());
  EXPECT_EQ(log.Take(), Lines{"idle"});
  filter->GetFilterInfo(5, label.data(), 3);
  EXPECT_EQ(label.data(), std::string(239, 'x'));
  EXPECT_EQ(ThrownBy([&] { filter->SetFilterInfo(6, "x"); }), -1);
  Device().GetMerakOrbis().Close();
  EXPECT_EQ(ThrownBy([&] { filter->GetFilterInfo(5, label.data(), 3); }), 3);
}

}  // namespace
