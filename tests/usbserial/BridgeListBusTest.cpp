// Listing and opening through the FT_* functions, on the virtual USB bus.
#include <array>
#include <cerrno>

#include "FtBusFixture.h"
#include "support/VirtualBusUsb.h"

using testing::ElementsAre;

namespace {

PVOID Index(std::uintptr_t index) {
  return reinterpret_cast<PVOID>(index);
}

class FtListTest : public corvane::FtBusTest {
 protected:
  static std::vector<FT_DEVICE_LIST_INFO_NODE> List() {
    DWORD count = 0;
    EXPECT_EQ(FT_CreateDeviceInfoList(&count), FT_OK);
    std::vector<FT_DEVICE_LIST_INFO_NODE> nodes(count);
    EXPECT_EQ(FT_GetDeviceInfoList(nodes.data(), &count), FT_OK);
    return nodes;
  }

  static std::string Hex(DWORD value) {
    std::ostringstream text;
    text << std::hex << std::uppercase << value;
    return text.str();
  }

  // The nodes of the list as "flags type id location serial/description", numbers in hexadecimal, with " open" for one
  // that has a handle.
  static std::vector<std::string> Nodes() {
    std::vector<std::string> texts;
    for (const auto& node : List()) {
      texts.push_back(Hex(node.Flags) + " " + Hex(node.Type) + " " + Hex(node.ID) + " " + Hex(node.LocId) + " " +
                      node.SerialNumber + "/" + node.Description + (node.ftHandle == nullptr ? "" : " open"));
    }
    return texts;
  }

  DWORD Location(const BridgeChip& chip) const {
    return static_cast<DWORD>(mBus.BusNumber() << 8 | mBus.Address(chip));
  }
};

TEST_F(FtListTest, NamesAndNodesOfOneAndTwoChannels) {
  const auto& single = Plug({.release = 0x0600, .description = "Single", .serialNumber = "CV1"});
  const auto& dual = Plug({.productId = usbid::kTwoChannels,
                           .release = 0x0700,
                           .description = "Dual",
                           .serialNumber = "0123456789ABCDEFGH",
                           .highSpeed = true,
                           .interfaces = 2});
  mBus.Plug({.vendorId = usbid::kInstrumentMaker, .productId = usbid::kController});  // not known yet
  const auto at = [&](int channel) { return Hex(Location(dual) << 4 | static_cast<DWORD>(channel)); };
  EXPECT_THAT(Nodes(), testing::UnorderedElementsAre("0 5 4036001 " + Hex(Location(single)) + " CV1/Single",
                                                     "2 6 4036010 " + at(1) + " 0123456789ABCDA/Dual A",
                                                     "2 6 4036010 " + at(2) + " 0123456789ABCDB/Dual B"));
  const auto nodes = List();
  std::array<char, 64> text{};
  for (DWORD i = 0; i < nodes.size(); ++i) {
    EXPECT_EQ(FT_ListDevices(Index(i), text.data(), FT_LIST_BY_INDEX), FT_OK);
    EXPECT_STREQ(text.data(), nodes[i].SerialNumber);
    EXPECT_EQ(FT_GetDeviceInfoDetail(i, nullptr, nullptr, nullptr, nullptr, nullptr, text.data(), nullptr), FT_OK);
    EXPECT_STREQ(text.data(), nodes[i].Description);
  }
  // The array ends at its null entry, the count does not.
  DWORD count = 0;
  std::array<char, 64> first{};
  std::array<char*, 3> buffers{first.data(), nullptr, text.data()};
  EXPECT_EQ(FT_ListDevices(buffers.data(), &count, FT_LIST_ALL | FT_OPEN_BY_DESCRIPTION), FT_OK);
  EXPECT_EQ(count, 3U);
  EXPECT_STREQ(first.data(), nodes[0].Description);
  EXPECT_STREQ(text.data(), nodes[2].Description);
  // Either half of the custom row can be set alone.
  DWORD vid = 0;
  DWORD pid = 0;
  EXPECT_EQ(FT_SetVIDPID(0, usbid::kController), FT_OK);
  EXPECT_EQ(FT_GetVIDPID(&vid, &pid), FT_OK);
  EXPECT_EQ(vid, usbid::kChipMaker);
  EXPECT_EQ(pid, usbid::kController);
  EXPECT_EQ(FT_SetVIDPID(usbid::kInstrumentMaker, 0), FT_OK);
  AwaitDevices(4);
  EXPECT_EQ(FT_SetVIDPID(usbid::kChipMaker, usbid::kCustomProduct), FT_OK);
}

TEST_F(FtListTest, ADeviceThatCannotBeOpenedIsListedAsTaken) {
  struct Case {
    BridgeChip::Options options;
    int claimError;
    const char* driver;  ///< which the system does not detach
    FT_STATUS status;
  };
  for (const Case& each :
       {Case{{.hasBulkIn = false}, 0, "", FT_IO_ERROR}, Case{{.packetSize = 0x0800}, 0, "", FT_IO_ERROR},
        Case{{}, EBUSY, "", FT_DEVICE_NOT_OPENED}, Case{{}, 0, "serial", FT_DEVICE_NOT_OPENED}}) {
    auto& chip = Plug(each.options);
    mBus.SetClaimError(chip, each.claimError);
    mBus.BindKernelDriver(chip, 0, each.driver, false);
    FT_HANDLE handle = nullptr;
    EXPECT_EQ(FT_Open(0, &handle), each.status);
    EXPECT_EQ(handle, nullptr);
    EXPECT_THAT(Nodes(), ElementsAre("1 3 0 0 /"));
    Unplug(chip);
  }
}

TEST_F(FtListTest, ADeviceWithoutAccessHasALocationButNoName) {
  auto& chip = Plug();
  mBus.SetOpenError(chip, EACCES);
  EXPECT_THAT(Nodes(), ElementsAre("1 3 0 0 /"));
  std::array<char, 16> text{"untouched"};
  EXPECT_EQ(FT_ListDevices(Index(0), text.data(), FT_LIST_BY_INDEX), FT_DEVICE_NOT_OPENED);
  EXPECT_STREQ(text.data(), "untouched");
  DWORD location = 0;
  EXPECT_EQ(FT_ListDevices(Index(0), &location, FT_LIST_BY_INDEX | FT_OPEN_BY_LOCATION), FT_OK);
  EXPECT_EQ(location, Location(chip));
  mBus.SetOpenError(chip, ENOENT);
  FT_HANDLE handle = nullptr;
  EXPECT_EQ(FT_Open(0, &handle), FT_DEVICE_NOT_FOUND);
  AwaitDevices(0);  // libusb forgets one whose node has vanished
}

TEST_F(FtListTest, OpenSetsTheLineAndCloseGivesTheKernelDriverItsInterfaceBack) {
  auto& chip = PlugEcho({.release = 0x0900, .description = "d", .serialNumber = "CV1", .highSpeed = true});
  mBus.BindKernelDriver(chip, 0, "serial");
  // One request that fails does not keep the others from being sent.
  mBus.SetFault({.effect = UsbFault::Effect::kCompletionFails, .operation = 5, .kinds = UsbFault::kControl});
  FT_HANDLE const handle = Open();
  EXPECT_EQ(mBus.FaultHits(), 1U);
  EXPECT_EQ(mBus.BoundDriver(chip, 0), "usbfs");
  EXPECT_EQ(Requests(chip), "baud 4E2@200, line 8@0, flow 0@0");
  // While it is open it is listed with its handle, and goes on working.
  const std::string name = " 8 4036001 " + Hex(Location(chip)) + " CV1/d";
  Write(handle, {1, 2, 3});
  EXPECT_THAT(Nodes(), ElementsAre("3" + name + " open"));
  EXPECT_EQ(List()[0].ftHandle, handle);
  EXPECT_EQ(Read(handle, 3), (Bytes{1, 2, 3}));
  FT_HANDLE second = nullptr;
  EXPECT_EQ(FT_Open(0, &second), FT_DEVICE_NOT_OPENED);
  EXPECT_EQ(FT_Close(handle), FT_OK);
  EXPECT_THAT(Nodes(), ElementsAre("2" + name));
  EXPECT_EQ(mBus.BoundDriver(chip, 0), "serial");
}

TEST_F(FtListTest, ALaterChannelIsPreparedWithoutTheFirst) {
  ScriptedPeer peer;
  auto& chip = Plug({.release = 0x0700, .interfaces = 2}, {nullptr, &peer});
  // The first is another program's.
  const auto context = corvane::MakeUsbContext();
  const auto other = corvane::OpenUsb(context, mBus, chip);
  ASSERT_EQ(libusb_claim_interface(other.get(), 0), LIBUSB_SUCCESS);
  EXPECT_THAT(Nodes(), testing::SizeIs(2));
  EXPECT_EQ(Requests(chip), "purge-rx@2, purge-tx@2, baud 4E2@202, line 8@2, flow 0@2");
  peer.Send("from before");
  FT_HANDLE const handle = Open(1, 100);
  EXPECT_TRUE(Read(handle, 1).empty());
  EXPECT_EQ(FT_Close(handle), FT_OK);
}

TEST_F(FtListTest, ADeviceIsOpenedByEachOfItsNames) {
  Plug({.description = "First", .serialNumber = "CV1"});
  const auto& chip = Plug({.description = "Second", .serialNumber = "CV2"});
  std::string serial = "CV2";
  std::string description = "Second";
  FT_HANDLE handle = nullptr;
  for (const auto& [arg, flags] : {std::pair<PVOID, DWORD>{serial.data(), FT_OPEN_BY_SERIAL_NUMBER},
                                   {description.data(), FT_OPEN_BY_DESCRIPTION},
                                   {Index(Location(chip)), FT_OPEN_BY_LOCATION}}) {
    ASSERT_EQ(FT_OpenEx(arg, flags, &handle), FT_OK);
    std::array<char, 16> opened{};
    EXPECT_EQ(FT_GetDeviceInfo(handle, nullptr, nullptr, opened.data(), nullptr, nullptr), FT_OK);
    EXPECT_STREQ(opened.data(), "CV2");
    EXPECT_EQ(FT_Close(handle), FT_OK);
  }
}

TEST_F(FtListTest, ArgumentsThatNameNoDeviceAnswerWhy) {
  Plug({.description = "First", .serialNumber = "CV1"});
  std::string name = "CV1";
  std::string other = "CV2";
  FT_HANDLE handle = nullptr;
  DWORD count = kUntouched;
  std::array<char, 64> text{};
  EXPECT_EQ(FT_OpenEx(name.data(), FT_OPEN_BY_SERIAL_NUMBER | FT_OPEN_BY_DESCRIPTION, &handle), FT_INVALID_PARAMETER);
  EXPECT_EQ(FT_OpenEx(name.data(), FT_OPEN_BY_SERIAL_NUMBER, nullptr), FT_INVALID_PARAMETER);
  EXPECT_EQ(FT_OpenEx(other.data(), FT_OPEN_BY_SERIAL_NUMBER, &handle), FT_DEVICE_NOT_FOUND);
  EXPECT_EQ(FT_OpenEx(Index(1), FT_OPEN_BY_LOCATION, &handle), FT_DEVICE_NOT_FOUND);
  EXPECT_EQ(FT_Open(1, &handle), FT_DEVICE_NOT_FOUND);
  EXPECT_EQ(FT_Open(-1, &handle), FT_DEVICE_NOT_FOUND);
  EXPECT_EQ(handle, nullptr);
  EXPECT_EQ(FT_ListDevices(Index(0), nullptr, FT_LIST_BY_INDEX), FT_INVALID_PARAMETER);
  EXPECT_EQ(FT_ListDevices(Index(1), text.data(), FT_LIST_BY_INDEX), FT_DEVICE_NOT_FOUND);
  EXPECT_EQ(FT_ListDevices(Index(0), text.data(), FT_LIST_BY_INDEX | FT_OPEN_BY_SERIAL_NUMBER | FT_OPEN_BY_LOCATION),
            FT_INVALID_PARAMETER);
  EXPECT_EQ(FT_ListDevices(nullptr, &count, FT_LIST_ALL), FT_INVALID_PARAMETER);
  EXPECT_EQ(FT_ListDevices(&text, nullptr, FT_LIST_ALL), FT_INVALID_PARAMETER);
  EXPECT_EQ(FT_ListDevices(&count, &text, FT_LIST_NUMBER_ONLY | FT_LIST_ALL), FT_INVALID_PARAMETER);
  EXPECT_EQ(FT_ListDevices(&count, &text, 0), FT_INVALID_PARAMETER);
  EXPECT_EQ(FT_GetDeviceInfoDetail(99, &count, &count, &count, &count, nullptr, nullptr, nullptr), FT_DEVICE_NOT_FOUND);
  EXPECT_EQ(count, kUntouched);
}

}  // namespace
