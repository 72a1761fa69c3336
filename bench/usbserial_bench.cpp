// What the bridge library costs against bare libusb calls on the same virtual chip: the round trip of a short request,
// a write, reading without end, processor time while a read waits, what an open device costs while nobody calls, and
// when a late reply is seen. Both sides of a ratio run in turns in one process, alone or beside busy loops. The limits
// are in limits.txt.
#include <libusb.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "InTurns.h"
#include "bridge/SerialPeers.h"
#include "bridge/UmockdevPreload.h"
#include "bridge/VirtualUsbBus.h"
#include "support/VirtualBusUsb.h"
#include "usbserial/ftd2xx.h"

namespace {

using corvane::Clock;
using corvane::InTurns;
using corvane::Median;
using corvane::Require;
using corvane::Seconds;
using namespace std::chrono_literals;

constexpr auto kMicroframe = 125us;
constexpr std::size_t kMessage = 16;
constexpr int kRoundTrips = 400;
constexpr int kRounds = 9;
constexpr int kWaitingRounds = 3;
constexpr int kWrites = 400;
constexpr int kLateReplies = 12;
constexpr auto kSilence = 300ms;
constexpr std::size_t kBulkBytes = 4'000'000;
constexpr std::size_t kInFlight = 4;
constexpr std::size_t kTransferBytes = 4096;
constexpr DWORD kWaitMilliseconds = 2000;
constexpr unsigned kTimeout = 5000;
constexpr std::uint8_t kIn = BridgeChip::InEndpoint(0);
constexpr std::uint8_t kOut = BridgeChip::OutEndpoint(0);

/// One side of a comparison: the chip through the library.
class FtSide {
 public:
  FtSide() {
    Require(FT_Open(0, &mHandle) == FT_OK, "FT_Open fails");
    FT_SetTimeouts(mHandle, kTimeout, kTimeout);
  }
  ~FtSide() { FT_Close(mHandle); }
  FtSide(const FtSide&) = delete;
  FtSide& operator=(const FtSide&) = delete;

  void RoundTrip(std::span<std::uint8_t, kMessage> message) {
    Write(message);
    Read(message);
  }

  void Write(std::span<std::uint8_t> bytes) {
    DWORD moved = 0;
    const auto count = static_cast<DWORD>(bytes.size());
    Require(FT_Write(mHandle, bytes.data(), count, &moved) == FT_OK && moved == count, "FT_Write fails");
  }

  void Read(std::span<std::uint8_t> bytes) {
    DWORD moved = 0;
    const auto count = static_cast<DWORD>(bytes.size());
    Require(FT_Read(mHandle, bytes.data(), count, &moved) == FT_OK && moved == count, "FT_Read fails");
  }

  /// Leaves the device alone.
  static void Idle() { std::this_thread::sleep_for(std::chrono::milliseconds(kWaitMilliseconds)); }

  /// Waits for a byte that does not come.
  void Wait() {
    FT_SetTimeouts(mHandle, kWaitMilliseconds, kTimeout);
    std::uint8_t byte = 0;
    DWORD moved = 0;
    Require(FT_Read(mHandle, &byte, 1, &moved) == FT_OK && moved == 0, "FT_Read does not wait");
  }

 private:
  FT_HANDLE mHandle = nullptr;
};

/// The other side: the chip through libusb as a simple program would use it.
class BareSide {
 public:
  BareSide(const corvane::UsbContext& context, const VirtualUsbBus& bus, const BridgeChip& chip)
      : mContext(context.get()), mHandle(corvane::OpenUsb(context, bus, chip)), mPacket(chip.PacketSize()) {
    Require(mHandle != nullptr && libusb_claim_interface(mHandle.get(), 0) == 0, "libusb does not open the chip");
    // The same start as the library's.
    libusb_control_transfer(mHandle.get(), 0x40, 0, 0, 0, nullptr, 0, kTimeout);
  }

  /// Synchronous calls; idle status packets are skipped.
  void RoundTrip(std::span<std::uint8_t, kMessage> message) {
    Write(message);
    int moved = 0;
    std::size_t got = 0;
    while (got < kMessage) {
      Require(libusb_bulk_transfer(mHandle.get(), kIn, mBuffer.data(), static_cast<int>(mBuffer.size()), &moved,
                                   kTimeout) == 0,
              "IN fails");
      got += Strip(std::span(mBuffer).first(static_cast<std::size_t>(moved)), message.subspan(got));
    }
  }

  void Write(std::span<std::uint8_t> bytes) {
    int moved = 0;
    const auto count = static_cast<int>(bytes.size());
    Require(libusb_bulk_transfer(mHandle.get(), kOut, bytes.data(), count, &moved, kTimeout) == 0, "OUT fails");
  }

  /// Reads this much with transfers kept in flight, in chunks as the other side gets them.
  void Stream(std::size_t wanted) {
    mWanted = wanted;
    mReceived = 0;
    SubmitAll();
    Drain();
    Require(mReceived >= wanted, "the stream ends early");
  }

  void Idle() { Wait(); }

  /// Keeps transfers in flight for the time that the other side waits.
  void Wait() {
    const auto end = Clock::now() + std::chrono::milliseconds(kWaitMilliseconds);
    mWanted = SIZE_MAX;
    mReceived = 0;
    SubmitAll();
    while (Clock::now() < end) {
      timeval slice{0, 100000};
      libusb_handle_events_timeout(mContext, &slice);
    }
    mWanted = 0;
    Drain();
  }

 private:
  struct Slot {
    BareSide* owner = nullptr;
    std::array<std::uint8_t, kTransferBytes> buffer{};
    corvane::UsbTransferPointer transfer;
  };

  std::size_t Strip(std::span<const std::uint8_t> bytes, std::span<std::uint8_t> target) const {
    std::size_t moved = 0;
    while (bytes.size() > BridgeChannel::kStatusBytes && moved < target.size()) {
      const auto packet = bytes.first(std::min(mPacket, bytes.size()));
      const auto data = packet.subspan(BridgeChannel::kStatusBytes);
      const std::size_t length = std::min(data.size(), target.size() - moved);
      std::copy_n(data.begin(), length, target.begin() + static_cast<std::ptrdiff_t>(moved));
      moved += length;
      bytes = bytes.subspan(packet.size());
    }
    return moved;
  }

  void SubmitAll() {
    for (Slot& slot : mSlots) {
      slot.owner = this;
      slot.transfer.reset(libusb_alloc_transfer(0));
      libusb_fill_bulk_transfer(slot.transfer.get(), mHandle.get(), kIn, slot.buffer.data(),
                                static_cast<int>(slot.buffer.size()), &BareSide::Completed, &slot, 0);
      Submit(slot);
    }
  }

  void Drain() {
    while (mPending > 0) {
      libusb_handle_events(mContext);
    }
  }

  void Submit(Slot& slot) {
    Require(libusb_submit_transfer(slot.transfer.get()) == 0, "a submission fails");
    ++mPending;
  }

  static void LIBUSB_CALL Completed(libusb_transfer* transfer) {
    Slot& slot = *static_cast<Slot*>(transfer->user_data);
    BareSide& self = *slot.owner;
    --self.mPending;
    if (transfer->status != LIBUSB_TRANSFER_COMPLETED) {
      return;
    }
    const auto bytes =
        std::span<const std::uint8_t>(slot.buffer).first(static_cast<std::size_t>(transfer->actual_length));
    self.mReceived += self.Strip(bytes, self.mTarget);
    if (self.mReceived < self.mWanted) {
      self.Submit(slot);
    }
  }

  libusb_context* mContext;
  corvane::UsbHandle mHandle;
  std::size_t mPacket;
  std::array<std::uint8_t, 512> mBuffer{};
  std::array<std::uint8_t, kTransferBytes> mTarget{};
  std::array<Slot, kInFlight> mSlots;
  std::size_t mPending = 0;
  std::size_t mWanted = 0;
  std::size_t mReceived = 0;
};

/// Threads that take what they can of the processor.
class BusyLoops {
 public:
  explicit BusyLoops(std::int64_t count) {
    for (std::int64_t i = 0; i < count; ++i) {
      mThreads.emplace_back([](const std::stop_token& stop) {
        while (!stop.stop_requested()) {
        }
      });
    }
  }

 private:
  std::vector<std::jthread> mThreads;
};

/// A bus with one high-speed chip, and both ways to it in turns.
class Bench {
 public:
  explicit Bench(ISerialPeer& peer)
      : mChip(mBus.Plug({.productId = usbid::kFastCable, .release = 0x0900, .highSpeed = true, .repliesAtOnce = true},
                        {&peer})),
        mContext(corvane::MakeUsbContext()) {
    mBus.SetCompletionDelay(kMicroframe);
  }

  double WithFt(const std::function<double(FtSide&)>& measure) {
    FtSide side;
    return measure(side);
  }
  /// Processor seconds of everything but the simulated bus's own thread.
  double ProcessorSeconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    const double all = static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
    return all - std::chrono::duration<double>(mBus.EngineTime()).count();
  }
  /// Voluntary switches, each of which a wake-up follows, of all threads but the simulated bus's own.
  static double WakeUps() {
    double sum = 0;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
      std::ifstream status(task.path() / "status");
      std::string name;
      for (std::string key, value; status >> key && std::getline(status >> std::ws, value);) {
        name = key == "Name:" ? value : name;
        sum += key == "voluntary_ctxt_switches:" && name != VirtualUsbBus::kEngineName ? std::stod(value) : 0;
      }
    }
    return sum;
  }
  BridgeChip& Chip() { return mChip; }
  double WithBare(const std::function<double(BareSide&)>& measure) {
    BareSide side(mContext, mBus, mChip);
    return measure(side);
  }

 private:
  VirtualUsbBus mBus;
  BridgeChip& mChip;
  corvane::UsbContext mContext;
};

/// Median seconds of one exchange.
template <class Side>
double RoundTripSeconds(Side& side) {
  std::array<std::uint8_t, kMessage> message{};
  std::vector<double> times;
  for (int i = 0; i < kRoundTrips; ++i) {
    message.fill(static_cast<std::uint8_t>(i));
    const auto begin = Clock::now();
    side.RoundTrip(message);
    times.push_back(Seconds(Clock::now() - begin));
    Require(std::ranges::count(message, static_cast<std::uint8_t>(i)) == static_cast<std::ptrdiff_t>(kMessage),
            "an exchange brings wrong bytes");
  }
  return Median(times);
}

void Keep(benchmark::State& state, const std::string& name, double figure) {
  corvane::LimitFromFile(state, CORVANE_BENCH_LIMITS, name, figure);
}

/// Seconds of an exchange.
void RoundTrip(benchmark::State& state) {
  const BusyLoops busy(state.range(0));
  LoopbackPeer peer;
  Bench bench(peer);
  const auto figures = InTurns(
      state, [&] { return bench.WithFt([](FtSide& side) { return RoundTripSeconds(side); }); },
      [&] { return bench.WithBare([](BareSide& side) { return RoundTripSeconds(side); }); });
  Keep(state, "RoundTrip/busy:" + std::to_string(state.range(0)), figures.ratio);
}
BENCHMARK(RoundTrip)->ArgName("busy")->Arg(0)->Arg(2)->Iterations(kRounds)->Unit(benchmark::kMillisecond);

/// Seconds of a write.
void Write(benchmark::State& state) {
  CountingPeer deaf(0);
  Bench bench(deaf);
  std::vector<std::uint8_t> bytes(static_cast<std::size_t>(state.range(0)));
  const auto seconds = [&bytes](auto& side) {
    std::vector<double> times;
    for (int i = 0; i < kWrites; ++i) {
      const auto begin = Clock::now();
      side.Write(bytes);
      times.push_back(Seconds(Clock::now() - begin));
    }
    return Median(times);
  };
  const auto figures = InTurns(
      state, [&] { return bench.WithFt(seconds); }, [&] { return bench.WithBare(seconds); });
  Keep(state, "Write/bytes:" + std::to_string(state.range(0)), figures.ratio);
}
BENCHMARK(Write)->ArgName("bytes")->Arg(16)->Arg(4096)->Iterations(kRounds)->Unit(benchmark::kMillisecond);

/// Bytes a second.
void Throughput(benchmark::State& state) {
  const auto chunkLength = static_cast<std::size_t>(state.range(0));
  const BusyLoops busy(state.range(1));
  CountingPeer peer;
  Bench bench(peer);
  const auto rate = [](Clock::time_point begin) {
    return static_cast<double>(kBulkBytes) / Seconds(Clock::now() - begin);
  };
  const auto library = [&](FtSide& side) {
    std::vector<std::uint8_t> chunk(chunkLength);
    const auto begin = Clock::now();
    for (std::size_t left = kBulkBytes; left > 0;) {
      const std::size_t length = std::min(left, chunkLength);
      side.Read(std::span(chunk).first(length));
      left -= length;
    }
    return rate(begin);
  };
  const auto bare = [&](BareSide& side) {
    const auto begin = Clock::now();
    side.Stream(kBulkBytes);
    return rate(begin);
  };
  const auto figures = InTurns(
      state, [&] { return bench.WithFt(library); }, [&] { return bench.WithBare(bare); });
  Keep(state, "Throughput/bytes:" + std::to_string(state.range(0)) + "/busy:" + std::to_string(state.range(1)),
       figures.ratio);
}
BENCHMARK(Throughput)
    ->ArgNames({"bytes", "busy"})
    ->ArgsProduct({{4096, 510}, {0, 2}})
    ->Iterations(kRounds)
    ->Unit(benchmark::kMillisecond);

/// Percent of a core that nothing but sleeping for a millisecond again and again takes on this machine.
double SleepingPercent() {
  const auto used = [] {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
  };
  const double before = used();
  const auto begin = Clock::now();
  while (Clock::now() < begin + 1s) {
    std::this_thread::sleep_for(1ms);
  }
  return (used() - before) / Seconds(Clock::now() - begin) * 100;
}

/// Percent of a core while a read waits.
void Waiting(benchmark::State& state) {
  ScriptedPeer silent;
  Bench bench(silent);
  const auto percent = [&bench](auto& side) {
    const double before = bench.ProcessorSeconds();
    const auto begin = Clock::now();
    side.Wait();
    return (bench.ProcessorSeconds() - before) / Seconds(Clock::now() - begin) * 100;
  };
  const auto figures = InTurns(
      state, [&] { return bench.WithFt(percent); }, [&] { return bench.WithBare(percent); });
  state.counters["sleeping_1ms"] = SleepingPercent();
  Keep(state, "Waiting", figures.library);
}
BENCHMARK(Waiting)->Iterations(kWaitingRounds)->Unit(benchmark::kMillisecond);

/// Wake-ups a second of a device that is open and that nobody calls; an idle packet comes every 16 ms.
void IdleDevice(benchmark::State& state) {
  ScriptedPeer silent;
  Bench bench(silent);
  std::array<std::vector<double>, 2> processor;
  const auto wakeUps = [&](auto& side, std::vector<double>& milliseconds) {
    const double used = bench.ProcessorSeconds();
    const double before = Bench::WakeUps();
    const auto begin = Clock::now();
    side.Idle();
    const double seconds = Seconds(Clock::now() - begin);
    milliseconds.push_back((bench.ProcessorSeconds() - used) * 1000 / seconds);
    return (Bench::WakeUps() - before) / seconds;
  };
  const auto figures = InTurns(
      state, [&] { return bench.WithFt([&](FtSide& side) { return wakeUps(side, processor[0]); }); },
      [&] { return bench.WithBare([&](BareSide& side) { return wakeUps(side, processor[1]); }); });
  state.counters["library_ms"] = Median(processor[0]);
  state.counters["bare_ms"] = Median(processor[1]);
  Keep(state, "IdleDevice", figures.library);
}
BENCHMARK(IdleDevice)->Iterations(kWaitingRounds)->Unit(benchmark::kMillisecond);

/// Milliseconds from when the chip has a reply, after a long silence, until FT_Read has it; the latest counts.
void LateReply(benchmark::State& state) {
  ScriptedPeer peer;
  Bench bench(peer);
  std::vector<double> times;
  while (state.KeepRunning()) {
    times.push_back(bench.WithFt([&](FtSide& side) {
      Clock::time_point sent;
      std::jthread partner([&] {
        std::this_thread::sleep_for(kSilence);
        peer.Send("x");
        sent = Clock::now();
        bench.Chip().LookAtPeers();
      });
      std::array<std::uint8_t, 1> byte{};
      side.Read(byte);
      const auto seen = Clock::now();
      partner.join();
      return Seconds(seen - sent) * 1000;
    }));
  }
  state.counters["median"] = Median(times);
  state.counters["latest"] = *std::ranges::max_element(times);
  Keep(state, "LateReply", *std::ranges::max_element(times));
}
BENCHMARK(LateReply)->Iterations(kLateReplies)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  corvane::EnsureUmockdevPreload(argv);
  return corvane::RunBenchmarks(argc, argv);
}
