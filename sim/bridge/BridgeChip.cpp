#include "bridge/BridgeChip.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <stdexcept>
#include <utility>

namespace {

// Standard requests and descriptor types of USB 2.0.
constexpr std::uint8_t kTypeMask = 0x60;
constexpr std::uint8_t kStandard = 0x00;
constexpr std::uint8_t kVendor = 0x40;
constexpr std::uint8_t kToHost = 0x80;
constexpr std::uint8_t kGetStatus = 0;
constexpr std::uint8_t kGetDescriptor = 6;
constexpr std::uint8_t kGetConfiguration = 8;
constexpr std::uint8_t kSetConfiguration = 9;
constexpr std::uint8_t kDeviceType = 1;
constexpr std::uint8_t kConfigurationType = 2;
constexpr std::uint8_t kStringType = 3;
constexpr std::uint8_t kInterfaceType = 4;
constexpr std::uint8_t kEndpointType = 5;
constexpr std::uint8_t kBulk = 2;
constexpr std::uint16_t kEnglish = 0x0409;
constexpr std::uint16_t kGerman = 0x0407;
constexpr std::size_t kLongestString = 126;

// Vendor requests, and words in them.
constexpr std::uint8_t kReset = 0;
constexpr std::uint8_t kModemControl = 1;
constexpr std::uint8_t kFlowControl = 2;
constexpr std::uint8_t kBaudRate = 3;
constexpr std::uint8_t kDataCharacteristics = 4;
constexpr std::uint8_t kModemStatus = 5;
constexpr std::uint8_t kEventCharacter = 6;
constexpr std::uint8_t kErrorCharacter = 7;
constexpr std::uint8_t kSetLatency = 9;
constexpr std::uint8_t kGetLatency = 10;
constexpr std::uint8_t kSetBitMode = 11;
constexpr std::uint8_t kGetBitMode = 12;
constexpr std::uint8_t kEepromRead = 0x90;
constexpr std::uint8_t kEepromWrite = 0x91;
constexpr std::uint8_t kEepromErase = 0x92;
constexpr std::uint16_t kPurgeTransmit = 2;  // 0 empties both buffers, 1 that of received bytes
constexpr std::uint16_t kErasedWord = 0xFFFF;
constexpr std::uint16_t kDtrMask = 0x0100;
constexpr std::uint16_t kDtrLevel = 0x0001;
constexpr std::uint16_t kRtsMask = 0x0200;
constexpr std::uint16_t kRtsLevel = 0x0002;

// Kinds of chip by the high byte of the release, and the clocks that they divide.
constexpr int kOldestRelease = 0x02;
constexpr int kFirstFastRelease = 0x07;
constexpr int kLastFastRelease = 0x09;
constexpr double kClock = 3e6;
constexpr double kFastClock = 12e6;
constexpr double kSecondFastRate = 8e6;

constexpr std::uint8_t Low(std::size_t value) {
  return static_cast<std::uint8_t>(value & 0xFF);
}
constexpr std::uint8_t High(std::size_t value) {
  return static_cast<std::uint8_t>((value >> 8) & 0xFF);
}

int Answer(std::span<std::uint8_t> data, std::span<const std::uint8_t> answer) {
  const std::size_t length = std::min(data.size(), answer.size());
  std::copy_n(answer.begin(), length, data.begin());
  return static_cast<int>(length);
}

/// What a vendor request tells the channel that its index word names.
struct ChannelWords {
  std::uint16_t value;
  std::uint8_t beside;  ///< the index word without the port
};

int ResetChannel(BridgeChannel& channel, const ChannelWords& words, std::span<std::uint8_t> data) {
  if (words.value > kPurgeTransmit) {
    return -EPIPE;
  }
  if (words.value != kPurgeTransmit) {
    channel.PurgeReceive();
  }
  return static_cast<int>(data.size());
}

int SwitchLines(BridgeChannel& channel, const ChannelWords& words, std::span<std::uint8_t> data) {
  auto& set = channel.Set();
  set.dtr = (words.value & kDtrMask) != 0 ? (words.value & kDtrLevel) != 0 : set.dtr;
  set.rts = (words.value & kRtsMask) != 0 ? (words.value & kRtsLevel) != 0 : set.rts;
  return static_cast<int>(data.size());
}

int SetFlow(BridgeChannel& channel, const ChannelWords& words, std::span<std::uint8_t> data) {
  channel.Set().flowMode = static_cast<std::uint16_t>(words.beside << 8);
  channel.Set().flowCharacters = words.value;
  return static_cast<int>(data.size());
}

int SetBaud(BridgeChannel& channel, const ChannelWords& words, std::span<std::uint8_t> data) {
  channel.Set().divisor = words.value;
  channel.Set().divisorIndex = words.beside;
  return static_cast<int>(data.size());
}

int SetLatency(BridgeChannel& channel, const ChannelWords& words, std::span<std::uint8_t> data) {
  channel.Set().latency = Low(words.value);
  return static_cast<int>(data.size());
}

template <auto Setting>
int SetWord(BridgeChannel& channel, const ChannelWords& words, std::span<std::uint8_t> data) {
  channel.Set().*Setting = words.value;
  return static_cast<int>(data.size());
}

int TellStatus(BridgeChannel& channel, const ChannelWords& /*words*/, std::span<std::uint8_t> data) {
  return Answer(data, channel.Status());
}

int TellLatency(BridgeChannel& channel, const ChannelWords& /*words*/, std::span<std::uint8_t> data) {
  return Answer(data, {&channel.Set().latency, 1});
}

int TellPins(BridgeChannel& channel, const ChannelWords& /*words*/, std::span<std::uint8_t> data) {
  return Answer(data, std::array{channel.Pins()});
}

struct ChannelRow {
  std::uint8_t request;
  bool asksForData;
  bool laterChipsOnly;  ///< the oldest chips stall it
  /// The length of the data stage, or -EPIPE for a stall.
  int (*serve)(BridgeChannel& channel, const ChannelWords& words, std::span<std::uint8_t> data);
};

constexpr bool kAsks = true;
constexpr bool kLater = true;
using Settings = BridgeChannel::Settings;
constexpr std::array<ChannelRow, 12> kChannelRequests{
    {{kReset, !kAsks, !kLater, &ResetChannel},
     {kModemControl, !kAsks, !kLater, &SwitchLines},
     {kFlowControl, !kAsks, !kLater, &SetFlow},
     {kBaudRate, !kAsks, !kLater, &SetBaud},
     {kDataCharacteristics, !kAsks, !kLater, &SetWord<&Settings::line>},
     {kModemStatus, kAsks, !kLater, &TellStatus},
     {kEventCharacter, !kAsks, !kLater, &SetWord<&Settings::eventCharacter>},
     {kErrorCharacter, !kAsks, !kLater, &SetWord<&Settings::errorCharacter>},
     {kSetLatency, !kAsks, kLater, &SetLatency},
     {kGetLatency, kAsks, kLater, &TellLatency},
     {kSetBitMode, !kAsks, kLater, &SetWord<&Settings::bitMode>},
     {kGetBitMode, kAsks, kLater, &TellPins}}};

std::vector<std::uint8_t> StringDescriptor(const std::string& text) {
  std::vector<std::uint8_t> descriptor{Low(2 + 2 * text.size()), kStringType};
  for (const char character : text) {
    descriptor.push_back(static_cast<std::uint8_t>(character));
    descriptor.push_back(0);
  }
  return descriptor;
}

std::uint16_t PacketSizeOf(const BridgeChip::Options& options) {
  if (options.packetSize != 0) {
    return options.packetSize;
  }
  return options.highSpeed ? 512 : 64;
}

}  // namespace

BridgeChip::BridgeChip(const Options& options, const std::vector<ISerialPeer*>& peers)
    : mOptions(options), mPacketSize(PacketSizeOf(options)), mEeprom(options.eepromWords, kErasedWord) {
  const auto tooLong = [](const std::string& text) { return text.size() > kLongestString; };
  if (options.interfaces < 1 || options.interfaces > kMaximumInterfaces || mPacketSize <= BridgeChannel::kStatusBytes ||
      tooLong(options.manufacturer) || tooLong(options.description) || tooLong(options.serialNumber)) {
    throw std::invalid_argument("no such bridge chip");
  }
  for (std::size_t i = 0; i < static_cast<std::size_t>(options.interfaces); ++i) {
    mChannels.emplace_back(i < peers.size() ? peers[i] : nullptr, mPacketSize, options.repliesAtOnce);
  }
}

std::vector<BridgeChip::Request> BridgeChip::Requests() const {
  const std::lock_guard lock(mMutex);
  return mRequests;
}

void BridgeChip::ForgetRequests() {
  const std::lock_guard lock(mMutex);
  mRequests.clear();
}

void BridgeChip::SetRepliesAtOnce(bool atOnce) {
  {
    const std::lock_guard lock(mMutex);
    for (auto& channel : mChannels) {
      channel.SetRepliesAtOnce(atOnce);
    }
  }
  Wake();
}

void BridgeChip::SetModemStatus(int interface, std::uint8_t modem, std::uint8_t line) {
  const std::lock_guard lock(mMutex);
  mChannels.at(static_cast<std::size_t>(interface)).SetStatus(modem, line);
}

void BridgeChip::SetPins(int interface, std::uint8_t pins) {
  const std::lock_guard lock(mMutex);
  mChannels.at(static_cast<std::size_t>(interface)).SetPins(pins);
}

BridgeChannel::Settings BridgeChip::Settings(int interface) const {
  const std::lock_guard lock(mMutex);
  return mChannels.at(static_cast<std::size_t>(interface)).Set();
}

// The upper two bits of the divisor and the lowest of the index number the eighths out of order.
double BridgeChip::BaudRate(int interface) const {
  const auto set = Settings(interface);
  const std::size_t code = (set.divisorIndex & 1U) << 2 | set.divisor >> 14;
  const bool fast = (set.divisorIndex & 2U) != 0;
  const double divisor = (set.divisor & 0x3FFF) + std::array{0.0, 0.5, 0.25, 0.125, 0.375, 0.625, 0.75, 0.875}.at(code);
  const double clock = fast ? kFastClock : kClock;
  if (divisor < 1) {
    return clock;
  }
  return fast && divisor == 1 ? kSecondFastRate : clock / divisor;
}

void BridgeChip::Stall(std::uint8_t endpoint) {
  {
    const std::lock_guard lock(mMutex);
    mHalted.insert(endpoint);
  }
  Wake();
}

void BridgeChip::Hold(std::uint8_t endpoint, bool hold) {
  {
    const std::lock_guard lock(mMutex);
    if (hold) {
      mHeld.insert(endpoint);
    } else {
      mHeld.erase(endpoint);
    }
  }
  Wake();
}

void BridgeChip::QueueRawPacket(int interface, std::vector<std::uint8_t> packet) {
  {
    const std::lock_guard lock(mMutex);
    mChannels.at(static_cast<std::size_t>(interface)).QueueRawPacket(std::move(packet));
  }
  Wake();
}

void BridgeChip::LookAtPeers() {
  Wake();
}

std::vector<std::uint16_t> BridgeChip::Eeprom() const {
  const std::lock_guard lock(mMutex);
  return mEeprom;
}

void BridgeChip::SetEeprom(std::vector<std::uint16_t> words) {
  const std::lock_guard lock(mMutex);
  mEeprom = std::move(words);
}

int BridgeChip::Control(std::span<const std::uint8_t, 8> setup, std::span<std::uint8_t> data) {
  const auto word = [&setup](std::size_t at) { return static_cast<std::uint16_t>(setup[at] | setup[at + 1] << 8); };
  Request request{setup[0], setup[1], word(2), word(4), word(6), {}, false};
  const std::lock_guard lock(mMutex);
  switch (request.type & kTypeMask) {
    case kStandard:
      return StandardRequest(request, data);
    case kVendor:
      break;
    default:
      return -EPIPE;
  }
  const int result = VendorRequest(request, data);
  request.stalled = result < 0;
  if (result > 0) {
    request.data.assign(data.begin(), data.begin() + result);
  }
  mRequests.push_back(std::move(request));
  return result;
}

int BridgeChip::StandardRequest(const Request& request, std::span<std::uint8_t> data) {
  const std::uint8_t index = Low(request.value);
  switch (request.request) {
    case kGetStatus:
      return Answer(data, std::vector<std::uint8_t>{0, 0});
    case kGetConfiguration:
      return Answer(data, {&mConfiguration, 1});
    case kSetConfiguration:
      if (index > 1) {
        return -EPIPE;
      }
      mConfiguration = index;
      return 0;
    case kGetDescriptor:
      break;
    default:
      return -EPIPE;
  }
  const std::string* const texts[] = {&mOptions.manufacturer, &mOptions.description, &mOptions.serialNumber};
  switch (High(request.value)) {
    case kDeviceType:
      return Answer(data, DeviceDescriptor());
    case kConfigurationType:
      return index == 0 ? Answer(data, ConfigurationDescriptor()) : -EPIPE;
    case kStringType:
      if (index == 0) {
        // More languages than a host that wants one asks for.
        return Answer(data, std::vector<std::uint8_t>{6, kStringType, Low(kEnglish), High(kEnglish), Low(kGerman),
                                                      High(kGerman)});
      }
      return index <= std::size(texts) && !texts[index - 1]->empty() ? Answer(data, StringDescriptor(*texts[index - 1]))
                                                                     : -EPIPE;
    default:
      return -EPIPE;
  }
}

int BridgeChip::VendorRequest(const Request& request, std::span<std::uint8_t> data) {
  if (request.request >= kEepromRead) {
    return EepromRequest(request, data);
  }
  const auto row = std::ranges::find(kChannelRequests, request.request, &ChannelRow::request);
  if (row == kChannelRequests.end()) {
    return -EPIPE;
  }
  // The upper byte of the index carries a mode or divisor bits where there are any; for a baud rate on a plain chip the
  // lower one does.
  const bool plainBaud = request.request == kBaudRate && mChannels.size() == 1 && !HasFastClock();
  BridgeChannel* const channel = AtPort(plainBaud ? 0 : Low(request.index));
  const bool toHost = (request.type & kToHost) != 0;
  if (toHost != row->asksForData || (row->laterChipsOnly && IsOldest()) || channel == nullptr) {
    return -EPIPE;
  }
  return row->serve(*channel, {request.value, plainBaud ? Low(request.index) : High(request.index)}, data);
}

int BridgeChip::EepromRequest(const Request& request, std::span<std::uint8_t> data) {
  const bool toHost = (request.type & kToHost) != 0;
  if (request.request == kEepromErase && !toHost) {
    std::fill(mEeprom.begin(), mEeprom.end(), kErasedWord);
    return 0;
  }
  if (request.index >= mEeprom.size()) {
    return -EPIPE;
  }
  std::uint16_t& word = mEeprom[request.index];
  if (request.request == kEepromRead && toHost) {
    return Answer(data, std::vector<std::uint8_t>{Low(word), High(word)});
  }
  if (request.request == kEepromWrite && !toHost) {
    word = request.value;
    return 0;
  }
  return -EPIPE;
}

int BridgeChip::InterfaceOf(std::uint8_t endpoint) const {
  for (int i = 0; i < mOptions.interfaces; ++i) {
    if (endpoint == OutEndpoint(i) || (endpoint == InEndpoint(i) && mOptions.hasBulkIn)) {
      return i;
    }
  }
  return -1;
}

void BridgeChip::PowerOn() {
  const std::lock_guard lock(mMutex);
  for (auto& channel : mChannels) {
    channel.PowerOn();
  }
  mHalted.clear();
}

bool BridgeChip::Halted(std::uint8_t endpoint) const {
  const std::lock_guard lock(mMutex);
  return mHalted.contains(endpoint);
}

void BridgeChip::ClearHalt(std::uint8_t endpoint) {
  const std::lock_guard lock(mMutex);
  mHalted.erase(endpoint);
}

bool BridgeChip::Held(std::uint8_t endpoint) const {
  const std::lock_guard lock(mMutex);
  return mHeld.contains(endpoint);
}

void BridgeChip::Write(std::uint8_t endpoint, std::span<const std::uint8_t> bytes) {
  const std::lock_guard lock(mMutex);
  mChannels.at(static_cast<std::size_t>(InterfaceOf(endpoint))).Write(bytes);
}

BridgeChannel::Progress BridgeChip::Read(std::uint8_t endpoint, std::span<std::uint8_t> space, bool started,
                                         Clock::time_point now) {
  const std::lock_guard lock(mMutex);
  return mChannels.at(static_cast<std::size_t>(InterfaceOf(endpoint))).Read(space, started, now);
}

void BridgeChip::OnWake(std::function<void()> wake) {
  const std::lock_guard lock(mWakeMutex);
  mWake = std::move(wake);
}

std::vector<std::uint8_t> BridgeChip::DeviceDescriptor() const {
  const auto index = [](const std::string& text, std::uint8_t number) {
    return text.empty() ? std::uint8_t{0} : number;
  };
  return {18,
          kDeviceType,
          0x00,
          0x02,
          0,
          0,
          0,
          std::uint8_t{64},
          Low(mOptions.vendorId),
          High(mOptions.vendorId),
          Low(mOptions.productId),
          High(mOptions.productId),
          Low(mOptions.release),
          High(mOptions.release),
          index(mOptions.manufacturer, 1),
          index(mOptions.description, 2),
          index(mOptions.serialNumber, 3),
          1};
}

std::vector<std::uint8_t> BridgeChip::ConfigurationDescriptor() const {
  constexpr std::uint8_t kBusPowered = 0x80;
  constexpr std::uint8_t k90Milliamperes = 45;
  std::vector<std::uint8_t> all{9, kConfigurationType, 0, 0, Low(mChannels.size()), 1, 0, kBusPowered, k90Milliamperes};
  for (int i = 0; i < mOptions.interfaces; ++i) {
    const auto number = static_cast<std::uint8_t>(i);
    const std::uint8_t endpoints = mOptions.hasBulkIn ? 2 : 1;
    all.insert(all.end(), {9, kInterfaceType, number, 0, endpoints, 0xFF, 0xFF, 0xFF, 0});
    if (mOptions.hasBulkIn) {
      all.insert(all.end(), {7, kEndpointType, InEndpoint(i), kBulk, Low(mPacketSize), High(mPacketSize), 0});
    }
    all.insert(all.end(), {7, kEndpointType, OutEndpoint(i), kBulk, Low(mPacketSize), High(mPacketSize), 0});
  }
  all[2] = Low(all.size());
  all[3] = High(all.size());
  return all;
}

bool BridgeChip::IsOldest() const {
  return High(mOptions.release) == kOldestRelease && !mOptions.serialNumber.empty();
}

bool BridgeChip::HasFastClock() const {
  return mOptions.highSpeed ||
         (High(mOptions.release) >= kFirstFastRelease && High(mOptions.release) <= kLastFastRelease);
}

BridgeChannel* BridgeChip::AtPort(std::size_t port) {
  const std::size_t index = mChannels.size() == 1 || port == 0 ? port : port - 1;
  return index < mChannels.size() ? &mChannels[index] : nullptr;
}

void BridgeChip::Wake() {
  const std::lock_guard lock(mWakeMutex);
  if (mWake) {
    mWake();
  }
}
