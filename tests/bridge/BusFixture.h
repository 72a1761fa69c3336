// What the tests of the virtual bus share: a bus with a libusb context, short synchronous transfers, and transfers that
// are kept in flight.
#pragma once

#include <gtest/gtest.h>
#include <libusb.h>

#include <chrono>
#include <cstdint>
#include <deque>
#include <vector>

#include "bridge/SerialPeers.h"
#include "bridge/VirtualUsbBus.h"
#include "support/VirtualBusUsb.h"

class VirtualBusTest : public testing::Test {
 protected:
  using Bytes = std::vector<std::uint8_t>;
  using Clock = std::chrono::steady_clock;
  using UsbHandle = corvane::UsbHandle;

  static constexpr std::uint8_t kIn = BridgeChip::InEndpoint(0);
  static constexpr std::uint8_t kOut = BridgeChip::OutEndpoint(0);

  UsbHandle OpenClaimed(const BridgeChip& chip) {
    UsbHandle handle = corvane::OpenUsb(mContext, mBus, chip);
    EXPECT_EQ(libusb_claim_interface(handle.get(), 0), 0);
    return handle;
  }

  // The bytes moved, or a libusb error.
  static int Write(const UsbHandle& handle, Bytes bytes, std::uint8_t endpoint = kOut) {
    int moved = 0;
    const int status =
        libusb_bulk_transfer(handle.get(), endpoint, bytes.data(), static_cast<int>(bytes.size()), &moved, 2000);
    return status != 0 ? status : moved;
  }

  // One IN transfer with its status bytes; empty on an error.
  static Bytes Read(const UsbHandle& handle, std::uint8_t endpoint = kIn) {
    Bytes bytes(4096);
    int moved = 0;
    libusb_bulk_transfer(handle.get(), endpoint, bytes.data(), 4096, &moved, 2000);
    bytes.resize(static_cast<std::size_t>(moved));
    return bytes;
  }

  static Bytes ReadPayload(const UsbHandle& handle, std::size_t wanted, std::uint8_t endpoint = kIn) {
    Bytes all;
    for (Bytes transfer(2); all.size() < wanted && !transfer.empty();) {
      transfer = Read(handle, endpoint);
      const Bytes payload = corvane::Payload(transfer, 64);
      all.insert(all.end(), payload.begin(), payload.end());
    }
    return all;
  }

  static Bytes Pattern(std::size_t length, unsigned seed = 0) {
    Bytes bytes(length);
    for (std::size_t i = 0; i < length; ++i) {
      bytes[i] = static_cast<std::uint8_t>((i + seed) % CountingPeer::kPeriod);
    }
    return bytes;
  }

  VirtualUsbBus mBus;
  corvane::UsbContext mContext = corvane::MakeUsbContext();
};

// Bulk IN transfers on interface 0; every completion is noted.
class InFlight {
 public:
  InFlight(const corvane::UsbContext& context, const corvane::UsbHandle& handle, std::size_t count)
      : mPending(count), mContext(context.get()) {
    for (std::size_t i = 0; i < count; ++i) {
      auto& transfer = mTransfers.emplace_back(libusb_alloc_transfer(0));
      auto& buffer = mBuffers.emplace_back(4096);
      libusb_fill_bulk_transfer(transfer.get(), handle.get(), BridgeChip::InEndpoint(0), buffer.data(), 4096,
                                &InFlight::Completed, this, 0);
      EXPECT_EQ(libusb_submit_transfer(transfer.get()), 0);
    }
  }

  int Cancel(std::size_t index) { return libusb_cancel_transfer(mTransfers[index].get()); }

  // Handles events until so many transfers are pending; false when the time is up first.
  bool PumpUntilPending(std::size_t count) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (mPending != count && std::chrono::steady_clock::now() < end) {
      timeval slice{0, 20000};
      libusb_handle_events_timeout(mContext, &slice);
    }
    return mPending == count;
  }

  std::vector<int> mStatuses;

 private:
  static void LIBUSB_CALL Completed(libusb_transfer* transfer) {
    InFlight& self = *static_cast<InFlight*>(transfer->user_data);
    --self.mPending;
    self.mStatuses.push_back(transfer->status);
  }

  std::size_t mPending;
  libusb_context* mContext;
  std::deque<std::vector<std::uint8_t>> mBuffers;
  std::vector<corvane::UsbTransferPointer> mTransfers;
};
