// A USB serial bridge chip at transfer level: descriptors, vendor requests, and per interface a serial side with modem
// status bytes, latency timer and a peer behind the line. Tests and simulations make chips through VirtualUsbBus::Plug
// and steer them here; the bus carries the transfers. Knows nothing of libusb.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "bridge/BridgeChannel.h"
#include "bridge/UsbIdentifiers.h"
#include "model/ISerialPeer.h"

class BridgeChip {
 public:
  struct Options {
    std::uint16_t vendorId = usbid::kChipMaker;
    std::uint16_t productId = usbid::kSerialCable;
    /// bcdDevice; the high byte tells the kind of chip. One of the oldest (0x02 with a serial number) stalls requests
    /// of the latency timer and of bit modes; 0x07 to 0x09, and any of high speed, divide 12 MHz when the baud request
    /// says so.
    std::uint16_t release = 0x0600;
    /// Strings of at most 126 characters (Latin-1); an empty one has string index 0 in the device descriptor.
    std::string manufacturer = "Corvane";
    std::string description = "Virtual Serial Bridge";
    std::string serialNumber = "CVB00001";
    /// High speed has bulk packets of 512 bytes, full speed 64; packetSize overrides that when it is not 0.
    bool highSpeed = false;
    std::uint16_t packetSize = 0;
    /// Number of interfaces, 1 to 4. Interface i has the endpoints InEndpoint(i) and OutEndpoint(i).
    int interfaces = 1;
    /// False makes a foreign device: no bulk IN endpoint in the descriptors.
    bool hasBulkIn = true;
    /// Sends what it has as soon as the line falls silent instead of keeping it until the latency period ends.
    bool repliesAtOnce = false;
    /// Words of the EEPROM; all 0xFFFF at first.
    std::size_t eepromWords = 128;
  };

  /// One vendor request as it came over endpoint 0, with the data of its data stage (sent or answered).
  struct Request {
    std::uint8_t type = 0;
    std::uint8_t request = 0;
    std::uint16_t value = 0;
    std::uint16_t index = 0;
    std::uint16_t length = 0;
    std::vector<std::uint8_t> data;
    bool stalled = false;
  };

  static constexpr int kMaximumInterfaces = 4;
  static constexpr std::uint8_t InEndpoint(int interface) { return static_cast<std::uint8_t>(0x81 + 2 * interface); }
  static constexpr std::uint8_t OutEndpoint(int interface) { return static_cast<std::uint8_t>(0x02 + 2 * interface); }

  /// peers[i] is behind interface i; a missing or null one is a line on which nobody answers. Borrowed; called while a
  /// transfer runs and with the chip's lock held, so a peer never calls the chip, the bus or libusb.
  BridgeChip(const Options& options, const std::vector<ISerialPeer*>& peers);

  const Options& GetOptions() const { return mOptions; }
  std::uint16_t PacketSize() const { return mPacketSize; }

  // For tests; callable from any thread while the chip is in use.

  /// The vendor requests so far, in order.
  std::vector<Request> Requests() const;
  void ForgetRequests();
  void SetRepliesAtOnce(bool atOnce);
  /// The two status bytes at the start of every packet, which modem status requests answer too.
  void SetModemStatus(int interface, std::uint8_t modem, std::uint8_t line);
  /// Levels of the pins, which the bit mode request answers.
  void SetPins(int interface, std::uint8_t pins);
  /// What the requests left the interface at.
  BridgeChannel::Settings Settings(int interface) const;
  /// The baud rate that this is.
  double BaudRate(int interface) const;
  /// Transfers on the endpoint end with a stall until the host clears the halt.
  void Stall(std::uint8_t endpoint);
  /// While held, transfers on the endpoint stay pending (the chip refuses them): a full transmit buffer, a dead chip.
  void Hold(std::uint8_t endpoint, bool hold);
  /// The next IN packets are exactly these bytes, without status bytes of their own; cut to the packet size. For
  /// packets that no sound chip sends.
  void QueueRawPacket(int interface, std::vector<std::uint8_t> packet);
  /// Makes the chip look at its peers now. Otherwise it looks after each OUT transfer and when a latency period ends.
  void LookAtPeers();
  /// The EEPROM words.
  std::vector<std::uint16_t> Eeprom() const;
  void SetEeprom(std::vector<std::uint16_t> words);

  // The host's side, called by the bus only.

  using Clock = BridgeChannel::Clock;
  /// A control transfer. data is the data stage: what the host sends, or where the answer goes. Answers the length of
  /// the data stage, or -EPIPE for a stall.
  int Control(std::span<const std::uint8_t, 8> setup, std::span<std::uint8_t> data);
  /// The interface that has this bulk endpoint; -1 when there is none.
  int InterfaceOf(std::uint8_t endpoint) const;
  /// The state after power-on, which a port reset restores too.
  void PowerOn();
  bool Halted(std::uint8_t endpoint) const;
  void ClearHalt(std::uint8_t endpoint);
  bool Held(std::uint8_t endpoint) const;
  /// The endpoint must exist, here and in Read.
  void Write(std::uint8_t endpoint, std::span<const std::uint8_t> bytes);
  /// Moves packets into the free part of an IN transfer; see BridgeChannel::Read.
  BridgeChannel::Progress Read(std::uint8_t endpoint, std::span<std::uint8_t> space, bool started,
                               Clock::time_point now);
  /// Called, without the chip's lock, when something changed that a pending transfer may wait for.
  void OnWake(std::function<void()> wake);
  std::vector<std::uint8_t> DeviceDescriptor() const;
  std::vector<std::uint8_t> ConfigurationDescriptor() const;

 private:
  int StandardRequest(const Request& request, std::span<std::uint8_t> data);
  int VendorRequest(const Request& request, std::span<std::uint8_t> data);
  int EepromRequest(const Request& request, std::span<std::uint8_t> data);
  bool IsOldest() const;
  bool HasFastClock() const;
  /// The channel of a port: 0 for a chip of one interface; else counted from 1, and 0 is the first too. Null for none.
  BridgeChannel* AtPort(std::size_t port);
  void Wake();

  const Options mOptions;
  const std::uint16_t mPacketSize;
  mutable std::mutex mMutex;
  std::vector<BridgeChannel> mChannels;
  std::vector<std::uint16_t> mEeprom;
  std::vector<Request> mRequests;
  std::set<std::uint8_t> mHalted;
  std::set<std::uint8_t> mHeld;
  std::uint8_t mConfiguration = 1;
  std::mutex mWakeMutex;
  std::function<void()> mWake;
};
