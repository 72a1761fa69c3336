// Random calls of many threads on several chips and channels, while these are pulled, plugged in, stalled, held and
// disturbed, and while a host uses a libusb context of its own: every call ends in time with a status of its contract,
// and nothing is left behind. scripts/stress runs it for longer, with other seeds.
#include <libusb.h>
#include <pthread.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <random>

#include "FtBusFixture.h"
#include "support/VirtualBusUsb.h"

using namespace std::chrono_literals;

namespace {

using Random = std::mt19937;

std::uint32_t Setting(const char* variable, std::uint32_t otherwise) {
  const char* const text = std::getenv(variable);
  return text == nullptr ? otherwise : static_cast<std::uint32_t>(std::strtoul(text, nullptr, 10));
}

std::size_t Below(Random& random, std::size_t limit) {
  return random() % limit;
}

class FtStressTest : public corvane::FtBusTest {
 protected:
  static constexpr int kCallers = 5;
  static constexpr std::size_t kPlaces = 5;
  static constexpr auto kLongestCall = corvane::kSanitized ? 60s : 20s;

  /// Where a handle is shared, with the host's event that belongs to it.
  struct Place {
    std::atomic<FT_HANDLE> handle{nullptr};
    FT_EVENT event{PTHREAD_COND_INITIALIZER, PTHREAD_MUTEX_INITIALIZER, 0};
  };

  /// What one caller does next.
  struct Call {
    Place& place;
    FT_HANDLE handle;
    Random& random;
    Bytes& bytes;
    DWORD count = 0;  ///< for any answer

    DWORD Length() const { return static_cast<DWORD>(Below(random, bytes.size())); }
  };
  using Action = FT_STATUS (*)(Call&);

  static FT_STATUS OpenInto(Call& call) {
    FT_HANDLE handle = nullptr;
    const FT_STATUS status = FT_Open(static_cast<int>(Below(call.random, kPlaces)), &handle);
    if (status != FT_OK) {
      return status;
    }
    EXPECT_EQ(FT_SetTimeouts(handle, 5, 100), FT_OK);
    FT_HANDLE const before = call.place.handle.exchange(handle);
    return before == nullptr ? FT_OK : FT_Close(before);
  }

  static FT_STATUS ReadSome(Call& call) {
    const DWORD wanted = call.Length();
    const FT_STATUS status = FT_Read(call.handle, call.bytes.data(), wanted, &call.count);
    EXPECT_LE(call.count, wanted);
    return status;
  }

  static FT_STATUS WriteSome(Call& call) {
    const DWORD wanted = call.Length();
    const FT_STATUS status = FT_Write(call.handle, call.bytes.data(), wanted, &call.count);
    EXPECT_LE(call.count, wanted);
    EXPECT_TRUE(status != FT_OK || call.count == wanted);
    return status;
  }

  static FT_STATUS BuildList(Call& call) {
    const FT_STATUS status = FT_CreateDeviceInfoList(&call.count);
    EXPECT_LE(call.count, kPlaces);
    return status;
  }

  static FT_STATUS AwaitEvent(Call& call) {
    FT_SetWaitMask(call.handle, FT_EVENT_RXCHAR | FT_EVENT_MODEM_STATUS);
    return FT_WaitOnMask(call.handle, &call.count);
  }

  static constexpr std::size_t kFrequent = 3;  ///< of the actions, the first
  static constexpr std::array<Action, 16> kActions{
      OpenInto,
      ReadSome,
      WriteSome,
      BuildList,
      AwaitEvent,
      [](Call& call) { return FT_Close(call.place.handle.exchange(nullptr)); },
      [](Call& call) { return FT_GetStatus(call.handle, &call.count, &call.count, &call.count); },
      [](Call& call) { return FT_VendorRequest(5, 0, 0, call.bytes.data(), 2, 0xC0, call.handle); },
      [](Call& call) { return FT_Purge(call.handle, FT_PURGE_RX | FT_PURGE_TX); },
      [](Call& call) { return FT_SetUSBParameters(call.handle, 4096, 0); },
      [](Call& call) { return FT_SetFlowControl(call.handle, FT_FLOW_RTS_CTS, 0, 0); },
      [](Call& call) { return FT_SetLatencyTimer(call.handle, 2); },
      [](Call& call) { return FT_SetEventNotification(call.handle, 0xF, &call.place.event); },
      [](Call& call) { return FT_StopInTask(call.handle); },
      [](Call& call) { return FT_RestartInTask(call.handle); },
      [](Call& call) { return FT_ResetPort(call.handle); }};

  void Caller(Random random) {
    Bytes bytes(3000);
    while (!mStop) {
      Place& place = mPlaces.at(Below(random, kPlaces));
      const std::size_t number = Below(random, Below(random, 3) == 0 ? kFrequent : kActions.size());
      const auto begin = Clock::now();
      Call call{place, place.handle, random, bytes};
      const FT_STATUS status = kActions.at(number)(call);
      EXPECT_LT(Clock::now() - begin, kLongestCall) << "action " << number;
      EXPECT_LE(status, FT_IO_ERROR) << "action " << number;
    }
  }

  // Pulls, plugs in, stalls, holds and disturbs.
  void Disturber(Random random) {
    using Effect = UsbFault::Effect;
    while (!mStop) {
      BridgeChip& chip = *mChips.at(Below(random, mChips.size()));
      const auto endpoint = Below(random, 2) == 0 ? BridgeChip::InEndpoint(0) : BridgeChip::OutEndpoint(0);
      switch (Below(random, 6)) {
        case 0:
          mBus.Unplug(chip);
          std::this_thread::sleep_for(std::chrono::milliseconds(Below(random, 20)));
          mBus.Replug(chip);
          break;
        case 1:
          chip.Stall(endpoint);
          break;
        case 2:
          chip.Hold(endpoint, true);
          std::this_thread::sleep_for(std::chrono::milliseconds(Below(random, 150)));
          chip.Hold(endpoint, false);
          break;
        case 3:
          mBus.SetFault({.effect = Below(random, 2) == 0 ? Effect::kSubmitFails : Effect::kCompletionFails,
                         .operation = 1 + Below(random, 50),
                         .error = Below(random, 2) == 0 ? EIO : EPROTO});
          break;
        case 4:
          chip.SetModemStatus(0, static_cast<std::uint8_t>(random()), static_cast<std::uint8_t>(random()));
          break;
        default:
          mBus.SetCompletionDelay(std::chrono::microseconds(Below(random, 2) * 125));
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(Below(random, 10)));
    }
    mBus.ClearFault();
    mBus.SetCompletionDelay(0us);
  }

  // A host that looks at the same devices by libusb itself, and holds an interface for a while. It keeps its context:
  // libusb 1.0.26 loses a device that is unplugged while one ends.
  void Host(Random random) {
    const auto context = corvane::MakeUsbContext();
    while (!mStop) {
      timeval atOnce{};
      libusb_handle_events_timeout(context.get(), &atOnce);
      const auto handle = corvane::OpenUsb(context, mBus, *mChips.at(Below(random, mChips.size())));
      if (handle != nullptr && libusb_claim_interface(handle.get(), 0) == LIBUSB_SUCCESS) {
        std::this_thread::sleep_for(std::chrono::milliseconds(Below(random, 20)));
      }
    }
  }

  std::array<Place, kPlaces> mPlaces;
  std::vector<BridgeChip*> mChips;
  std::atomic<bool> mStop{false};
};

TEST_F(FtStressTest, ManyThreadsMayDoEverythingAtOnce) {
  const std::uint32_t seed = Setting("CORVANE_STRESS_SEED", 1);
  const std::chrono::seconds duration(Setting("CORVANE_STRESS_SECONDS", 3));
  RecordProperty("seed", static_cast<int>(seed));
  mChips = {&PlugEcho({.release = 0x0700, .highSpeed = true, .interfaces = 2}),
            &PlugEcho({.release = 0x0500, .interfaces = 2}), &PlugEcho()};
  const auto descriptors = Entries("/proc/self/fd");
  {
    std::vector<std::jthread> threads;
    const auto start = [&](auto body) {
      threads.emplace_back(body, Random(seed + static_cast<std::uint32_t>(threads.size())));
    };
    for (int i = 0; i < kCallers; ++i) {
      start([this](const Random& random) { Caller(random); });
    }
    start([this](const Random& random) { Disturber(random); });
    start([this](const Random& random) { Host(random); });
    const auto end = Clock::now() + duration;
    while (Clock::now() < end && !HasFailure()) {
      std::this_thread::sleep_for(50ms);
    }
    mStop = true;
  }
  for (Place& place : mPlaces) {
    FT_HANDLE const handle = place.handle;
    EXPECT_EQ(FT_Close(handle), handle == nullptr ? FT_INVALID_HANDLE : FT_OK);
  }
  EXPECT_EQ(Entries("/proc/self/fd"), descriptors);
}

}  // namespace
