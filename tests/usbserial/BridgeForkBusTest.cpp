// What the child of a fork() may do with the FT_* functions while its parent has devices open, on the virtual USB bus.
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <future>

#include "FtBusFixture.h"
#include "LibusbSeam.h"

using namespace std::chrono_literals;

namespace {

/// What a child found wrong first.
enum Finding : int {
  kNone,
  kHandleLives,
  kHandleComesAgain,
  kParentsDeviceTouched,
  kDevicesNotListed,
  kOwnDeviceFails,
  kArgumentsBeforeStart,
  kArgumentsNotChecked
};

class FtForkTest : public corvane::FtBusTest {
 protected:
  static int InChild(const std::function<Finding()>& body) {
    const pid_t child = fork();
    if (child == 0) {
      alarm(20);  // a call that does not come back
      _exit(body());
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status)) << "ended by signal " << WTERMSIG(status);
    return WEXITSTATUS(status);
  }
};

TEST_F(FtForkTest, AChildHasNoneOfItsParentsDevicesAndOpensItsOwn) {
  auto& chip = PlugEcho();
  FT_HANDLE const handle = Open(0, 0, 0);
  PlugEcho({.serialNumber = "FREE"});
  auto read = std::async(std::launch::async, [&] { return Read(handle, 2); });
  chip.Hold(BridgeChip::OutEndpoint(0), true);
  auto write = std::async(std::launch::async, [&] { Write(handle, {1, 2}); });
  constexpr std::size_t kReadsAndTheWrite = 5;
  EXPECT_TRUE(Eventually([&] { return mBus.PendingTransfers() == kReadsAndTheWrite; }));

  EXPECT_EQ(InChild([&] {
              std::uint8_t byte = 7;
              DWORD count = 0;
              mBus.ForgetOperations();
              if (FT_Read(handle, &byte, 1, &count) != FT_INVALID_HANDLE ||
                  FT_Purge(handle, FT_PURGE_RX) != FT_INVALID_HANDLE || FT_Close(handle) != FT_INVALID_HANDLE) {
                return kHandleLives;
              }
              if (mBus.Operations() != 0 || mBus.PendingTransfers() != kReadsAndTheWrite) {
                return kParentsDeviceTouched;
              }
              if (FT_ListDevices(&count, nullptr, FT_LIST_NUMBER_ONLY) != FT_OK || count != 2) {
                return kDevicesNotListed;
              }
              FT_HANDLE own = nullptr;
              std::string name = "FREE";
              if (FT_OpenEx(name.data(), FT_OPEN_BY_SERIAL_NUMBER, &own) != FT_OK || own == nullptr) {
                return kOwnDeviceFails;
              }
              if (own == handle) {
                return kHandleComesAgain;
              }
              FT_SetTimeouts(own, 2000, 2000);
              if (FT_Write(own, &byte, 1, &count) != FT_OK || FT_Read(own, &byte, 1, &count) != FT_OK || count != 1 ||
                  FT_Close(own) != FT_OK) {
                return kOwnDeviceFails;
              }
              return kNone;
            }),
            kNone);

  chip.Hold(BridgeChip::OutEndpoint(0), false);
  write.get();
  EXPECT_EQ(read.get(), (Bytes{1, 2}));
}

TEST_F(FtForkTest, ListingLooksAtItsArgumentsAfterLibusbHasStarted) {
  // A child begins anew, whatever was called before.
  EXPECT_EQ(InChild([] {
              corvane::gLibusb.refuseStart = true;
              if (FT_ListDevices(nullptr, nullptr, FT_LIST_NUMBER_ONLY) != FT_OTHER_ERROR ||
                  FT_ListDevices(nullptr, nullptr, 0) != FT_OTHER_ERROR) {
                return kArgumentsBeforeStart;
              }
              corvane::gLibusb.refuseStart = false;
              return FT_ListDevices(nullptr, nullptr, 0) == FT_INVALID_PARAMETER ? kNone : kArgumentsNotChecked;
            }),
            kNone);
}

}  // namespace
