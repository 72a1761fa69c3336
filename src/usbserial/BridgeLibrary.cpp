#include "usbserial/BridgeLibrary.h"

#include <atomic>
#include <utility>

#include "usbserial/FtFailure.h"
#include "usbserial/ProcessFork.h"
#include "usbserial/SignalShield.h"

namespace corvane {
namespace {

std::atomic<BridgeLibrary*> gLibrary{nullptr};
// What a fork's child got of its parent's: its locks may be taken for good, and its descriptors are the parent's too.
std::atomic<BridgeLibrary*> gOfParent{nullptr};

[[maybe_unused]] const bool gForks = [] {
  AtForkInChild([] { gOfParent = gLibrary.exchange(nullptr); });
  return true;
}();

}  // namespace

// Without a lock, which a fork might catch taken.
BridgeLibrary& BridgeLibrary::Instance() {
  BridgeLibrary* library = gLibrary;
  if (library == nullptr) {
    auto made = std::make_unique<BridgeLibrary>();
    if (gLibrary.compare_exchange_strong(library, made.get())) {
      library = made.release();
    }
  }
  return *library;
}

void BridgeLibrary::SetCustomId(UsbId id) {
  const std::lock_guard lock(mLock);
  mSupported.SetCustom(id);
}

UsbId BridgeLibrary::CustomId() {
  const std::lock_guard lock(mLock);
  return mSupported.Custom();
}

DWORD BridgeLibrary::CountDevices() {
  const std::lock_guard lock(mLock);
  return static_cast<DWORD>(Entries().size());
}

BridgeIdentity BridgeLibrary::Describe(std::uintptr_t index, bool withTexts) {
  const std::lock_guard lock(mLock);
  const auto entries = Entries();
  if (index >= entries.size()) {
    throw FtFailure(FT_DEVICE_NOT_FOUND);
  }
  return withTexts ? Identify(entries[index]) : IdentityOf(entries[index]);
}

std::vector<BridgeIdentity> BridgeLibrary::DescribeAll(bool withTexts) {
  const std::lock_guard lock(mLock);
  std::vector<BridgeIdentity> identities;
  for (const BridgeEntry& entry : Entries()) {
    try {
      identities.push_back(withTexts ? Identify(entry) : IdentityOf(entry));
    } catch (const FtFailure&) {
      identities.push_back(IdentityOf(entry));
    }
  }
  return identities;
}

void BridgeLibrary::Start() {
  const std::lock_guard lock(mLock);
  Context();
}

DWORD BridgeLibrary::CreateList() {
  const std::lock_guard lock(mLock);
  mList.clear();
  const auto entries = Entries();
  std::vector<FT_DEVICE_LIST_INFO_NODE> nodes;
  nodes.reserve(entries.size());
  for (const BridgeEntry& entry : entries) {
    nodes.push_back(NodeOf(entry));
  }
  mList = std::move(nodes);
  return static_cast<DWORD>(mList.size());
}

std::vector<FT_DEVICE_LIST_INFO_NODE> BridgeLibrary::StoredList() {
  const std::lock_guard lock(mLock);
  return mList;
}

FT_HANDLE BridgeLibrary::OpenByIndex(int index) {
  const std::lock_guard lock(mLock);
  int next = 0;
  return OpenFirst([&](const BridgeEntry&) { return next++ == index; });
}

FT_HANDLE BridgeLibrary::OpenByText(Name name, const std::string& text) {
  const std::lock_guard lock(mLock);
  return OpenFirst([&](const BridgeEntry& entry) {
    try {
      const BridgeIdentity identity = Identify(entry);
      return (name == Name::kSerial ? identity.serial : identity.description) == text;
    } catch (const FtFailure&) {
      return false;
    }
  });
}

FT_HANDLE BridgeLibrary::OpenByLocation(DWORD location) {
  const std::lock_guard lock(mLock);
  return OpenFirst([&](const BridgeEntry& entry) { return IdentityOf(entry).location == location; });
}

bool BridgeLibrary::Close(FT_HANDLE handle) {
  const auto device = mOpen.Remove(handle);
  if (device == nullptr) {
    return false;
  }
  device->Close();
  return true;
}

FT_STATUS BridgeLibrary::ResetPort(BridgeDevice& device) {
  const std::lock_guard lock(mLock);  // no other channel is opened meanwhile, and nobody else resets
  return device.ResetPort(mOpen.OnChip(device.Chip()));
}

libusb_context* BridgeLibrary::Context() {
  if (mContext == nullptr) {
    const SignalShield shield;
    const std::lock_guard apart(ForkMutex());
    libusb_context* context = nullptr;
    if (libusb_init(&context) != LIBUSB_SUCCESS) {
      throw FtFailure(FT_OTHER_ERROR);
    }
    mContext.reset(context);
  }
  return mContext.get();
}

std::vector<BridgeEntry> BridgeLibrary::Entries() {
  return EnumerateBridges(Context(), mSupported);
}

BridgeIdentity BridgeLibrary::Identify(const BridgeEntry& entry) {
  if (const auto held = mOpen.FindChannel(entry); held.device != nullptr) {
    return held.device->Identity();
  }
  const UsbDeviceHandle handle = OpenEntry(entry);
  return IdentityOf(entry, Context(), handle.get());
}

std::shared_ptr<BridgeDevice> BridgeLibrary::OpenFree(const BridgeEntry& entry) {
  if (mOpen.FindChannel(entry).device != nullptr) {
    throw FtFailure(FT_DEVICE_NOT_OPENED);
  }
  return std::make_shared<BridgeDevice>(Context(), entry);
}

FT_HANDLE BridgeLibrary::OpenFirst(const std::function<bool(const BridgeEntry&)>& matches) {
  for (const BridgeEntry& entry : Entries()) {
    if (matches(entry)) {
      return mOpen.Add(OpenFree(entry));
    }
  }
  throw FtFailure(FT_DEVICE_NOT_FOUND);
}

// A free device tells what it is by being opened and closed again.
FT_DEVICE_LIST_INFO_NODE BridgeLibrary::NodeOf(const BridgeEntry& entry) {
  if (const auto held = mOpen.FindChannel(entry); held.device != nullptr) {
    auto node = corvane::NodeOf(held.device->Identity(), FT_FLAGS_OPENED);
    node.ftHandle = held.handle;
    return node;
  }
  try {
    const auto device = OpenFree(entry);
    return corvane::NodeOf(device->Identity(), 0);
  } catch (const FtFailure&) {
    FT_DEVICE_LIST_INFO_NODE node{};
    node.Flags = FT_FLAGS_OPENED;
    node.Type = FT_DEVICE_UNKNOWN;
    return node;
  }
}

}  // namespace corvane
