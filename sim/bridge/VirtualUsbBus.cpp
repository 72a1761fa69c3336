#include "bridge/VirtualUsbBus.h"

#include <pthread.h>
#include <sys/prctl.h>

#include <algorithm>
#include <ctime>
#include <mutex>
#include <stdexcept>
#include <utility>

#include "bridge/UsbDeviceNode.h"
#include "bridge/UsbFileTable.h"
#include "bridge/UsbTestBed.h"

namespace {

std::mutex& BusMutex() {
  return UsbFileTable::Instance().Mutex();
}

}  // namespace

VirtualUsbBus::VirtualUsbBus() {
  UsbTestBed::Instance();
  {
    const std::lock_guard lock(BusMutex());
    if (UsbFileTable::Instance().Bus() != nullptr) {
      throw std::runtime_error("there is a virtual USB bus already");
    }
    UsbFileTable::Instance().SetBus(this);
  }
  mEngine = std::thread([this] { RunEngine(); });
}

VirtualUsbBus::~VirtualUsbBus() {
  for (const auto& node : mNodes) {
    node->Chip().OnWake(nullptr);
  }
  {
    std::unique_lock lock(BusMutex());
    for (const auto& node : mNodes) {
      Disconnect(*node, lock);
    }
    mStopping = true;
    mCondition.notify_all();
  }
  mEngine.join();
  const std::lock_guard lock(BusMutex());
  UsbFileTable::Instance().SetBus(nullptr);
}

BridgeChip& VirtualUsbBus::Plug(const BridgeChip::Options& options, const std::vector<ISerialPeer*>& peers) {
  auto node = std::make_unique<UsbDeviceNode>(std::make_unique<BridgeChip>(options, peers), mFaults);
  UsbDeviceNode& added = *node;
  added.Chip().OnWake([this, &added] {
    const std::lock_guard lock(BusMutex());
    Advance(added);
  });
  {
    const std::lock_guard lock(BusMutex());
    mNodes.push_back(std::move(node));
  }
  Connect(added);
  return added.Chip();
}

void VirtualUsbBus::Unplug(BridgeChip& chip) {
  std::unique_lock lock(BusMutex());
  Disconnect(NodeOf(chip), lock);
}

void VirtualUsbBus::Replug(BridgeChip& chip) {
  std::unique_lock lock(BusMutex());
  UsbDeviceNode& node = NodeOf(chip);
  Disconnect(node, lock);
  lock.unlock();
  Connect(node);
}

bool VirtualUsbBus::IsPlugged(const BridgeChip& chip) const {
  const std::lock_guard lock(BusMutex());
  return NodeOf(chip).IsPlugged();
}

int VirtualUsbBus::BusNumber() const {
  return UsbTestBed::kBusNumber;
}

int VirtualUsbBus::Address(const BridgeChip& chip) const {
  const std::lock_guard lock(BusMutex());
  return NodeOf(chip).Address();
}

void VirtualUsbBus::SetCompletionDelay(std::chrono::microseconds delay) {
  const std::lock_guard lock(BusMutex());
  mDelay = delay;
}

void VirtualUsbBus::SetOpenError(BridgeChip& chip, int error) {
  const std::lock_guard lock(BusMutex());
  NodeOf(chip).SetOpenError(error);
}

void VirtualUsbBus::SetClaimError(BridgeChip& chip, int error) {
  const std::lock_guard lock(BusMutex());
  NodeOf(chip).SetClaimError(error);
}

void VirtualUsbBus::BindKernelDriver(BridgeChip& chip, int interface, const std::string& driver, bool detachable) {
  const std::lock_guard lock(BusMutex());
  NodeOf(chip).BindDriver(interface, driver, detachable);
}

std::string VirtualUsbBus::BoundDriver(const BridgeChip& chip, int interface) const {
  const std::lock_guard lock(BusMutex());
  return NodeOf(chip).BoundDriver(interface);
}

void VirtualUsbBus::SetFault(const UsbFault& fault) {
  const std::lock_guard lock(BusMutex());
  mFaults.Set(fault);
}

void VirtualUsbBus::ClearFault() {
  const std::lock_guard lock(BusMutex());
  mFaults.Clear();
}

std::uint64_t VirtualUsbBus::FaultHits() const {
  const std::lock_guard lock(BusMutex());
  return mFaults.Hits();
}

std::uint64_t VirtualUsbBus::Operations(unsigned kinds) const {
  const std::lock_guard lock(BusMutex());
  return mFaults.Operations(kinds);
}

void VirtualUsbBus::ForgetOperations() {
  const std::lock_guard lock(BusMutex());
  mFaults.ForgetOperations();
}

std::size_t VirtualUsbBus::OpenNodes() const {
  const std::lock_guard lock(BusMutex());
  return UsbFileTable::Instance().Count();
}

std::size_t VirtualUsbBus::PendingTransfers() const {
  const std::lock_guard lock(BusMutex());
  std::size_t sum = 0;
  for (const auto& node : mNodes) {
    sum += node->PendingTransfers();
  }
  return sum;
}

std::uint64_t VirtualUsbBus::HurriedClears(const BridgeChip& chip) const {
  const std::lock_guard lock(BusMutex());
  return NodeOf(chip).HurriedClears();
}

std::chrono::nanoseconds VirtualUsbBus::EngineTime() {
  clockid_t clock{};
  timespec used{};
  if (pthread_getcpuclockid(mEngine.native_handle(), &clock) != 0 || clock_gettime(clock, &used) != 0) {
    return {};
  }
  return std::chrono::seconds(used.tv_sec) + std::chrono::nanoseconds(used.tv_nsec);
}

UsbDeviceNode* VirtualUsbBus::FindNode(int address) {
  for (const auto& node : mNodes) {
    if (node->IsPlugged() && node->Address() == address) {
      return node.get();
    }
  }
  return nullptr;
}

int VirtualUsbBus::Ioctl(UsbDeviceNode& node, UsbDeviceFile& file, unsigned long request, void* argument) {
  const int result = node.Ioctl(file, request, argument, Clock::now());
  if (!node.IsPlugged()) {
    Pull(node);
  } else {
    Advance(node);
  }
  return result;
}

UsbDeviceNode& VirtualUsbBus::NodeOf(const BridgeChip& chip) const {
  for (const auto& node : mNodes) {
    if (&node->Chip() == &chip) {
      return *node;
    }
  }
  throw std::invalid_argument("the chip is not on this bus");
}

void VirtualUsbBus::Connect(UsbDeviceNode& node) {
  int port = 0;
  int address = 0;
  {
    const std::lock_guard lock(BusMutex());
    port = FreePort();
    do {
      address = UsbTestBed::Instance().NextAddress();
    } while (FindNode(address) != nullptr);
    // First the node, then the event: a watcher opens the device at once.
    node.Connect(port, address);
  }
  UsbTestBed::Instance().Add(node.Chip(), port, address);
}

// Waits until the event has been sent, also that of a chip that a fault has just pulled out.
void VirtualUsbBus::Disconnect(UsbDeviceNode& node, std::unique_lock<std::mutex>& lock) {
  if (node.IsPlugged()) {
    node.Disconnect();
    Pull(node);
  }
  mCondition.wait(lock, [this, &node] { return std::ranges::find(mPulled, &node) == mPulled.end(); });
}

int VirtualUsbBus::FreePort() const {
  for (int port = 1;; ++port) {
    const auto holds = [this, port](const auto& node) {
      return node->Port() == port && (node->IsPlugged() || std::ranges::find(mPulled, node.get()) != mPulled.end());
    };
    if (std::ranges::none_of(mNodes, holds)) {
      return port;
    }
  }
}

// The engine sends the event, so that it never runs inside one of libusb's own calls.
void VirtualUsbBus::Pull(UsbDeviceNode& node) {
  mPulled.push_back(&node);
  Schedule(Clock::time_point::min());
}

void VirtualUsbBus::Schedule(Clock::time_point when) {
  if (when < mNext) {
    mNext = when;
    mCondition.notify_all();
  }
}

void VirtualUsbBus::Advance(UsbDeviceNode& node) {
  if (node.IsPlugged()) {
    Schedule(node.Advance(mDelay, Clock::now()));
  }
}

void VirtualUsbBus::RunEngine() {
  // A delay of a microframe must not become two.
  prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL);
  pthread_setname_np(pthread_self(), kEngineName);
  std::unique_lock lock(BusMutex());
  while (!mStopping) {
    while (!mPulled.empty()) {
      UsbDeviceNode* const node = mPulled.back();
      const int port = node->Port();
      lock.unlock();
      UsbTestBed::Instance().Remove(port);
      lock.lock();
      std::erase(mPulled, node);
      mCondition.notify_all();
    }
    const auto now = Clock::now();
    auto next = Clock::time_point::max();
    for (const auto& node : mNodes) {
      next = std::min(next, node->IsPlugged() ? node->Advance(mDelay, now) : Clock::time_point::max());
    }
    mNext = next;
    if (next == Clock::time_point::max()) {
      mCondition.wait(lock);
    } else {
      mCondition.wait_until(lock, next);
    }
  }
}
