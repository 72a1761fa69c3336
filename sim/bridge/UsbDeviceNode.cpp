#include "bridge/UsbDeviceNode.h"

#include <sys/ioctl.h>

#include <algorithm>
#include <cerrno>
#include <span>
#include <utility>

#include "bridge/UsbDeviceFile.h"

namespace {

constexpr const char* kUsbfs = "usbfs";
constexpr unsigned kCapabilities = USBDEVFS_CAP_ZERO_PACKET | USBDEVFS_CAP_NO_PACKET_SIZE_LIM |
                                   USBDEVFS_CAP_BULK_SCATTER_GATHER | USBDEVFS_CAP_REAP_AFTER_DISCONNECT;
constexpr std::size_t kSetupLength = 8;
constexpr std::uint8_t kInDirection = 0x80;
constexpr int kFullSpeed = 2;
constexpr int kHighSpeed = 3;

std::span<std::uint8_t> BufferOf(const usbdevfs_urb& urb) {
  return {static_cast<std::uint8_t*>(urb.buffer), static_cast<std::size_t>(urb.buffer_length)};
}

std::size_t DataLength(std::span<const std::uint8_t> setup) {
  return setup[6] | static_cast<std::size_t>(setup[7]) << 8;
}

unsigned KindOf(const usbdevfs_urb& urb) {
  if (urb.type == USBDEVFS_URB_TYPE_CONTROL) {
    return UsbFault::kControl;
  }
  return (urb.endpoint & kInDirection) != 0 ? UsbFault::kBulkIn : UsbFault::kBulkOut;
}

}  // namespace

UsbDeviceNode::UsbDeviceNode(std::unique_ptr<BridgeChip> chip, UsbFaultPlan& faults)
    : mChip(std::move(chip)), mFaults(faults), mInterfaces(static_cast<std::size_t>(mChip->GetOptions().interfaces)) {
}

void UsbDeviceNode::Connect(int port, int address) {
  mPort = port;
  mAddress = address;
  mPlugged = true;
  mChip->PowerOn();
}

void UsbDeviceNode::Disconnect() {
  mPlugged = false;
  End([](const Transfer&) { return true; }, -ESHUTDOWN);
  for (auto& interface : mInterfaces) {
    interface.claimedBy = nullptr;
  }
  for (UsbDeviceFile* const file : mFiles) {
    file->Disconnect();
  }
  mFiles.clear();
}

void UsbDeviceNode::BindDriver(int interface, const std::string& driver, bool detachable) {
  Interface& target = mInterfaces.at(static_cast<std::size_t>(interface));
  target.driver = driver;
  target.bound = !driver.empty();
  target.detachable = detachable;
}

std::string UsbDeviceNode::BoundDriver(int interface) const {
  const Interface& target = mInterfaces.at(static_cast<std::size_t>(interface));
  if (target.claimedBy != nullptr) {
    return kUsbfs;
  }
  return target.bound ? target.driver : std::string();
}

void UsbDeviceNode::Adopt(UsbDeviceFile& file) {
  mFiles.insert(&file);
}

void UsbDeviceNode::Forget(UsbDeviceFile& file) {
  End([&file](const Transfer& transfer) { return transfer.file == &file; }, std::nullopt);
  for (auto& interface : mInterfaces) {
    if (interface.claimedBy == &file) {
      interface.claimedBy = nullptr;
    }
  }
  mFiles.erase(&file);
}

int UsbDeviceNode::Ioctl(UsbDeviceFile& file, unsigned long request, void* argument, Clock::time_point now) {
  const auto number = [argument] { return *static_cast<const unsigned*>(argument); };
  switch (request) {
    case USBDEVFS_SUBMITURB:
      return Submit(file, *static_cast<usbdevfs_urb*>(argument), now);
    case USBDEVFS_DISCARDURB:
      return Discard(file, static_cast<const usbdevfs_urb*>(argument), now);
    case USBDEVFS_GET_CAPABILITIES:
      *static_cast<unsigned*>(argument) = kCapabilities;
      return 0;
    case USBDEVFS_CLAIMINTERFACE:
      return Claim(file, number());
    case USBDEVFS_RELEASEINTERFACE:
      return Release(file, number());
    case USBDEVFS_DISCONNECT_CLAIM:
      return DisconnectAndClaim(file, *static_cast<const usbdevfs_disconnect_claim*>(argument));
    case USBDEVFS_IOCTL:
      return DriverIoctl(*static_cast<const usbdevfs_ioctl*>(argument));
    case USBDEVFS_GETDRIVER:
      return GetDriver(*static_cast<usbdevfs_getdriver*>(argument));
    case USBDEVFS_SETCONFIGURATION:
      return SetConfiguration(number());
    case USBDEVFS_SETINTERFACE: {
      const auto& wanted = *static_cast<const usbdevfs_setinterface*>(argument);
      const int status = Claim(file, wanted.interface);
      return status == 0 && wanted.altsetting != 0 ? -EINVAL : status;
    }
    case USBDEVFS_CLEAR_HALT:
    case USBDEVFS_RESETEP:
      return ClearHalt(number());
    case USBDEVFS_RESET:
      return Reset();
    case USBDEVFS_GET_SPEED:
      return mChip->GetOptions().highSpeed ? kHighSpeed : kFullSpeed;
    case USBDEVFS_CONNECTINFO:
      *static_cast<usbdevfs_connectinfo*>(argument) = {static_cast<unsigned>(mAddress), 0};
      return 0;
    default:
      return -ENOTTY;
  }
}

int UsbDeviceNode::Claim(UsbDeviceFile& file, unsigned interface) {
  if (interface >= mInterfaces.size()) {
    return -ENOENT;
  }
  Interface& target = mInterfaces[interface];
  if (target.claimedBy == &file) {
    return 0;
  }
  if (mClaimError != 0) {
    return -mClaimError;
  }
  if (target.bound || target.claimedBy != nullptr) {
    return -EBUSY;
  }
  target.claimedBy = &file;
  return 0;
}

int UsbDeviceNode::Release(UsbDeviceFile& file, unsigned interface) {
  if (interface >= mInterfaces.size() || mInterfaces[interface].claimedBy != &file) {
    return -EINVAL;
  }
  mInterfaces[interface].claimedBy = nullptr;
  End(
      [this, interface](const Transfer& transfer) {
        return mChip->InterfaceOf(transfer.urb->endpoint) == static_cast<int>(interface);
      },
      -ENOENT);
  return 0;
}

int UsbDeviceNode::DisconnectAndClaim(UsbDeviceFile& file, const usbdevfs_disconnect_claim& wanted) {
  if (wanted.interface >= mInterfaces.size()) {
    return -EINVAL;
  }
  Interface& target = mInterfaces[wanted.interface];
  const std::string bound = BoundDriver(static_cast<int>(wanted.interface));
  if (!bound.empty() && target.claimedBy != &file) {
    const std::string named(wanted.driver, std::find(std::begin(wanted.driver), std::end(wanted.driver), '\0'));
    if (((wanted.flags & USBDEVFS_DISCONNECT_CLAIM_IF_DRIVER) != 0 && named != bound) ||
        ((wanted.flags & USBDEVFS_DISCONNECT_CLAIM_EXCEPT_DRIVER) != 0 && named == bound) || !target.detachable) {
      return -EBUSY;
    }
    if (mClaimError == 0) {
      target.bound = false;
    }
  }
  return Claim(file, wanted.interface);
}

int UsbDeviceNode::DriverIoctl(const usbdevfs_ioctl& wanted) {
  if (wanted.ifno < 0 || static_cast<std::size_t>(wanted.ifno) >= mInterfaces.size()) {
    return -EINVAL;
  }
  Interface& target = mInterfaces[static_cast<std::size_t>(wanted.ifno)];
  switch (static_cast<unsigned>(wanted.ioctl_code)) {
    case USBDEVFS_DISCONNECT:
      if (!target.bound && target.claimedBy == nullptr) {
        return -ENODATA;
      }
      if (target.claimedBy != nullptr || !target.detachable) {
        return -EBUSY;
      }
      target.bound = false;
      return 0;
    case USBDEVFS_CONNECT:
      if (target.bound || target.claimedBy != nullptr) {
        return -EBUSY;
      }
      target.bound = !target.driver.empty();
      return target.bound ? 1 : 0;
    default:
      return -ENOTTY;
  }
}

int UsbDeviceNode::GetDriver(usbdevfs_getdriver& wanted) const {
  if (wanted.interface >= mInterfaces.size()) {
    return -EINVAL;
  }
  std::string bound = BoundDriver(static_cast<int>(wanted.interface));
  if (bound.empty()) {
    return -ENODATA;
  }
  bound.resize(std::min<std::size_t>(bound.size(), USBDEVFS_MAXDRIVERNAME));
  *std::copy(bound.begin(), bound.end(), wanted.driver) = '\0';
  return 0;
}

int UsbDeviceNode::SetConfiguration(unsigned value) const {
  const auto claimed = [](const Interface& interface) { return interface.claimedBy != nullptr || interface.bound; };
  if (std::any_of(mInterfaces.begin(), mInterfaces.end(), claimed)) {
    return -EBUSY;
  }
  return value == 1 ? 0 : -EINVAL;
}

int UsbDeviceNode::Check(UsbDeviceFile& file, const usbdevfs_urb& urb) {
  if (urb.buffer_length < 0 || (urb.buffer == nullptr && urb.buffer_length > 0)) {
    return -EINVAL;
  }
  if (urb.type == USBDEVFS_URB_TYPE_CONTROL) {
    const auto buffer = BufferOf(urb);
    const bool whole = buffer.size() >= kSetupLength && buffer.size() >= kSetupLength + DataLength(buffer);
    return whole && (urb.endpoint & ~kInDirection) == 0 ? 0 : -EINVAL;
  }
  const int interface = mChip->InterfaceOf(urb.endpoint);
  if (interface < 0) {
    return -ENOENT;
  }
  return urb.type == USBDEVFS_URB_TYPE_BULK ? Claim(file, static_cast<unsigned>(interface)) : -EINVAL;
}

int UsbDeviceNode::Submit(UsbDeviceFile& file, usbdevfs_urb& urb, Clock::time_point now) {
  if (const int status = Check(file, urb); status != 0) {
    return status;
  }
  Transfer transfer;
  transfer.file = &file;
  transfer.urb = &urb;
  transfer.start = now;
  if (const UsbFault* const fault = mFaults.Strikes(KindOf(urb)); fault != nullptr) {
    switch (fault->effect) {
      case UsbFault::Effect::kSubmitFails:
        return -fault->error;
      case UsbFault::Effect::kCompletionFails:
        transfer.status = -fault->error;
        break;
      case UsbFault::Effect::kUnplug:
        Disconnect();
        return -ENODEV;
    }
  }
  const std::uint8_t address = urb.type == USBDEVFS_URB_TYPE_CONTROL ? std::uint8_t{0} : urb.endpoint;
  mEndpoints[address].transfers.push_back(transfer);
  return 0;
}

int UsbDeviceNode::Discard(const UsbDeviceFile& file, const usbdevfs_urb* urb, Clock::time_point now) {
  for (auto& [address, endpoint] : mEndpoints) {
    auto& transfers = endpoint.transfers;
    const auto found = std::find_if(transfers.begin(), transfers.end(), [&](const Transfer& transfer) {
      return transfer.urb == urb && transfer.file == &file;
    });
    if (found != transfers.end()) {
      if (found == transfers.begin()) {
        endpoint.free = now;
      }
      Finish(*found, -ENOENT);
      transfers.erase(found);
      return 0;
    }
  }
  return -EINVAL;
}

int UsbDeviceNode::ClearHalt(unsigned endpoint) {
  const auto address = static_cast<std::uint8_t>(endpoint);
  if (endpoint != address || mChip->InterfaceOf(address) < 0) {
    return -ENOENT;
  }
  mHurriedClears += mEndpoints[address].transfers.empty() ? 0 : 1;
  mChip->ClearHalt(address);
  return 0;
}

int UsbDeviceNode::Reset() {
  End([](const Transfer&) { return true; }, -ENOENT);
  mChip->PowerOn();
  return 0;
}

UsbDeviceNode::Clock::time_point UsbDeviceNode::Advance(std::chrono::microseconds delay, Clock::time_point now) {
  auto next = Clock::time_point::max();
  // Endpoint addresses sort control and OUT before IN: what goes out may be answered in the same round.
  for (auto& [address, endpoint] : mEndpoints) {
    next = std::min(next, AdvanceEndpoint(address, endpoint, delay, now));
  }
  return next;
}

std::size_t UsbDeviceNode::PendingTransfers() const {
  std::size_t sum = 0;
  for (const auto& [address, endpoint] : mEndpoints) {
    sum += endpoint.transfers.size();
  }
  return sum;
}

UsbDeviceNode::Clock::time_point UsbDeviceNode::AdvanceEndpoint(std::uint8_t address, Endpoint& endpoint,
                                                                std::chrono::microseconds delay,
                                                                Clock::time_point now) {
  while (!endpoint.transfers.empty()) {
    Transfer& transfer = endpoint.transfers.front();
    if (!transfer.end) {
      if (!transfer.looked) {
        transfer.start = std::max(transfer.start, endpoint.free);
      }
      const auto next = Look(address, transfer, delay, now);
      transfer.looked = true;
      if (!transfer.end) {
        return next;
      }
    }
    if (*transfer.end > now) {
      return *transfer.end;
    }
    Execute(address, transfer);
    endpoint.free = *transfer.end;
    Finish(transfer, transfer.status);
    endpoint.transfers.pop_front();
  }
  return Clock::time_point::max();
}

// Tells when the transfer ends, if that is known yet. A transfer that could end at once when its turn came counts from
// that moment, however late the engine looks; one that had to wait counts from now.
UsbDeviceNode::Clock::time_point UsbDeviceNode::Look(std::uint8_t address, Transfer& transfer,
                                                     std::chrono::microseconds delay, Clock::time_point now) {
  const auto end = (transfer.looked ? now : transfer.start) + delay;
  if (transfer.status == 0 && address != 0) {
    if (mChip->Halted(address)) {
      transfer.status = -EPIPE;
    } else if (mChip->Held(address)) {
      return Clock::time_point::max();
    } else if ((address & kInDirection) != 0) {
      const auto space = BufferOf(*transfer.urb).subspan(transfer.moved);
      const auto progress = mChip->Read(address, space, transfer.moved > 0, now);
      transfer.moved += progress.filled;
      if (!progress.ended) {
        return progress.next;
      }
      transfer.status = progress.overflow ? -EOVERFLOW : 0;
    }
  }
  transfer.end = end;
  return end;
}

void UsbDeviceNode::Execute(std::uint8_t address, Transfer& transfer) {
  if (transfer.status != 0 || (address & kInDirection) != 0) {
    return;
  }
  if (address == 0) {
    Control(transfer);
    return;
  }
  const auto bytes = BufferOf(*transfer.urb);
  mChip->Write(address, bytes);
  transfer.moved = bytes.size();
}

void UsbDeviceNode::Control(Transfer& transfer) {
  const auto buffer = BufferOf(*transfer.urb);
  const int result = mChip->Control(buffer.first<kSetupLength>(), buffer.subspan(kSetupLength, DataLength(buffer)));
  transfer.status = std::min(result, 0);
  transfer.moved = static_cast<std::size_t>(std::max(result, 0));
}

void UsbDeviceNode::Finish(const Transfer& transfer, int status) {
  transfer.urb->status = status;
  transfer.urb->actual_length = static_cast<int>(transfer.moved);
  transfer.file->Complete(*transfer.urb);
}

template <class Predicate>
void UsbDeviceNode::End(Predicate predicate, std::optional<int> status) {
  for (auto& [address, endpoint] : mEndpoints) {
    std::erase_if(endpoint.transfers, [&](const Transfer& transfer) {
      const bool ends = predicate(transfer);
      if (ends && status) {
        Finish(transfer, *status);
      }
      return ends;
    });
    endpoint.free = {};
  }
}
