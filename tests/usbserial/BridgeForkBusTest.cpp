// What the child of a fork() may do with the FT_* functions while its parent has devices open, on the virtual USB bus.
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <future>

#include "FtBusFixture.h"
#include "LibusbSeam.h"

namespace {

class FtForkTest : public corvane::FtBusTest {
 protected:
  /// The child prints what it finds wrong.
  static void InChild(const std::function<void()>& body) {
    const pid_t child = fork();
    if (child == 0) {
      alarm(20);  // a call that does not come back
      body();
      _exit(HasFailure() ? 1 : 0);
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0) << "by its exit code or signal";
  }
};

TEST_F(FtForkTest, AChildHasNoneOfItsParentsDevicesAndOpensItsOwn) {
  constexpr std::size_t readsAndTheWrite = 5;
  auto& chip = PlugEcho();
  FT_HANDLE const handle = Open(0, 0, 0);
  PlugEcho({.serialNumber = "FREE"});
  auto read = std::async(std::launch::async, [&] { return Read(handle, 2); });
  chip.Hold(BridgeChip::OutEndpoint(0), true);
  auto write = std::async(std::launch::async, [&] { Write(handle, {1, 2}); });
  EXPECT_TRUE(Eventually([&] { return mBus.PendingTransfers() == readsAndTheWrite; }));
  InChild([&] {
    mBus.ForgetOperations();
    DWORD count = 0;
    EXPECT_EQ(FT_Read(handle, &count, 1, &count), FT_INVALID_HANDLE);
    EXPECT_EQ(FT_Purge(handle, FT_PURGE_RX), FT_INVALID_HANDLE);
    EXPECT_EQ(FT_Close(handle), FT_INVALID_HANDLE);
    EXPECT_EQ(mBus.Operations(), 0U);
    EXPECT_EQ(mBus.PendingTransfers(), readsAndTheWrite);
    EXPECT_EQ(FT_ListDevices(&count, nullptr, FT_LIST_NUMBER_ONLY), FT_OK);
    EXPECT_EQ(count, 2U);
    FT_HANDLE own = nullptr;
    std::string name = "FREE";
    EXPECT_EQ(FT_OpenEx(name.data(), FT_OPEN_BY_SERIAL_NUMBER, &own), FT_OK);
    EXPECT_NE(own, handle);
    EXPECT_EQ(FT_SetTimeouts(own, 2000, 2000), FT_OK);
    Write(own, {7});
    EXPECT_EQ(Read(own, 1), (Bytes{7}));
    EXPECT_EQ(FT_Close(own), FT_OK);
  });
  chip.Hold(BridgeChip::OutEndpoint(0), false);
  write.get();
  EXPECT_EQ(read.get(), (Bytes{1, 2}));
}

TEST_F(FtForkTest, ListingLooksAtItsArgumentsAfterLibusbHasStarted) {
  // A child begins anew, whatever was called before.
  InChild([] {
    corvane::gLibusb.refuseStart = true;
    EXPECT_EQ(FT_ListDevices(nullptr, nullptr, FT_LIST_NUMBER_ONLY), FT_OTHER_ERROR);
    EXPECT_EQ(FT_ListDevices(nullptr, nullptr, 0), FT_OTHER_ERROR);
    corvane::gLibusb.refuseStart = false;
    EXPECT_EQ(FT_ListDevices(nullptr, nullptr, 0), FT_INVALID_PARAMETER);
  });
}

}  // namespace
