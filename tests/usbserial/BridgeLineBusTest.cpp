// Line settings, modem lines, latency, bit modes and EEPROM words: what each function sends to which kind of chip.
#include <array>
#include <cstring>
#include <functional>
#include <tuple>

#include "FtBusFixture.h"

namespace {

/// A call, the requests that it sends, and its status.
struct Row {
  std::function<FT_STATUS(FT_HANDLE)> call;
  std::string requests;
  FT_STATUS status = FT_OK;
};

class FtLineTest : public corvane::FtBusTest {
 protected:
  static void Check(FT_HANDLE handle, BridgeChip& chip, const std::vector<Row>& rows) {
    Requests(chip);
    for (std::size_t i = 0; i < rows.size(); ++i) {
      EXPECT_EQ(rows[i].call(handle), rows[i].status) << i;
      EXPECT_EQ(Requests(chip), rows[i].requests) << i;
    }
  }
};

TEST_F(FtLineTest, EveryFunctionSendsItsRequests) {
  auto& chip = Plug({.eepromWords = 8});
  FT_HANDLE const handle = Open();
  std::array<UCHAR, 3> bytes{};
  Check(handle, chip,
        {{FT_ResetDevice, "0:0@0"},
         {FT_SetDtr, "1:257@0"},
         {FT_ClrDtr, "1:256@0"},
         {FT_SetRts, "1:514@0"},
         {FT_ClrRts, "1:512@0"},
         {[](auto h) { return FT_SetFlowControl(h, FT_FLOW_NONE, 0x11, 0x13); }, "2:0@0"},
         {[](auto h) { return FT_SetFlowControl(h, FT_FLOW_XON_XOFF, 0x11, 0x13); }, "2:4881@1024"},
         {[](auto h) { return FT_SetFlowControl(h, FT_FLOW_RTS_CTS, 0x11, 0x13); }, "2:0@256 1:514@0"},
         {[](auto h) { return FT_SetFlowControl(h, FT_FLOW_DTR_DSR, 0x11, 0x13); }, "2:0@512 1:257@0"},
         {[](auto h) { return FT_SetFlowControl(h, 0x0300, 0, 0); }, "", FT_INVALID_PARAMETER},
         {[](auto h) { return FT_SetBaudRate(h, 490000); }, "3:49158@0"},
         {[](auto h) { return FT_SetBaudRate(h, 888888); }, "3:3@1"},  // three eighths: the index bit
         {[](auto h) { return FT_SetBaudRate(h, 183); }, "", FT_INVALID_BAUD_RATE},
         {[](auto h) { return FT_SetBaudRate(h, 4'000'000); }, "", FT_INVALID_BAUD_RATE},
         {[](auto h) { return FT_SetDivisor(h, 0xC01A); }, "3:49178@0"},
         {[](auto h) { return FT_SetDataCharacteristics(h, 7, FT_STOP_BITS_2, FT_PARITY_EVEN); }, "4:4615@0"},
         {FT_SetBreakOn, "4:20999@0"},
         {FT_SetBreakOff, "4:4615@0"},
         {[](auto h) { return FT_SetDataCharacteristics(h, 6, 0, 0); }, "", FT_INVALID_PARAMETER},
         {[](auto h) { return FT_SetDataCharacteristics(h, 8, 3, 0); }, "", FT_INVALID_PARAMETER},
         {[](auto h) { return FT_SetDataCharacteristics(h, 8, 0, 5); }, "", FT_INVALID_PARAMETER},
         {[](auto h) { return FT_SetChars(h, 'e', 1, 'x', 0); }, "6:357@0 7:120@0"},
         {[](auto h) { return FT_SetLatencyTimer(h, 40); }, "9:40@0"},
         {[](auto h) { return FT_SetBitMode(h, 0xA5, 0x20); }, "11:8357@0"},
         {[](auto h) { return FT_WriteEE(h, 7, 0xABCD); }, "145:43981@7"},
         {[](auto h) { return FT_WriteEE(h, 8, 1); }, "145:1@8", FT_EEPROM_WRITE_FAILED},
         {[](auto h) { return FT_WriteEE(h, 0x10000, 1); }, "", FT_INVALID_PARAMETER},
         {[](auto h) { return FT_VendorRequest(9, 3, 0, nullptr, 0, 0x40, h); }, "9:3@0"},
         {[](auto h) { return FT_VendorRequest(9, 3, 0, nullptr, 1, 0x40, h); }, "", FT_INVALID_PARAMETER},
         // Sent, and a failure: bytes were transferred.
         {[&](auto h) { return FT_VendorRequest(4, 8, 0, bytes.data(), 2, 0x40, h); }, "4:8@0", FT_IO_ERROR}});

  WORD word = 0;
  std::array<UCHAR, 2> answers{};
  ULONG modem = 0;
  chip.SetModemStatus(0, FT_MODEM_CTS | FT_MODEM_DCD, FT_LINE_BREAK >> 8);
  chip.SetPins(0, 0x3C);
  Check(handle, chip,
        {{[&](auto h) { return FT_GetModemStatus(h, &modem); }, "5:0@0"},
         {[&](auto h) { return FT_GetLatencyTimer(h, &answers[0]); }, "10:0@0"},
         {[&](auto h) { return FT_GetBitMode(h, &answers[1]); }, "12:0@0"},
         {[&](auto h) { return FT_ReadEE(h, 7, &word); }, "144:0@7"},
         {[&](auto h) { return FT_ReadEE(h, 9, &word); }, "144:0@9", FT_EEPROM_READ_FAILED},
         // Two bytes come.
         {[&](auto h) { return FT_VendorRequest(5, 0, 0, bytes.data(), 3, 0xC0, h); }, "5:0@0", FT_IO_ERROR}});
  EXPECT_EQ(std::tuple(modem, answers, word),
            std::tuple(FT_MODEM_CTS | FT_MODEM_DCD | FT_LINE_BREAK, std::array<UCHAR, 2>{3, 0x3C}, 0xABCD));
  EXPECT_EQ(FT_EraseEE(handle), FT_OK);
  EXPECT_EQ(chip.Eeprom()[7], 0xFFFF);

  // A failing request leaves its output, and the format that a break keeps, as they were.
  mBus.SetFault({.effect = UsbFault::Effect::kCompletionFails, .kinds = UsbFault::kControl, .fromThenOn = true});
  EXPECT_EQ(FT_SetDataCharacteristics(handle, 8, 0, 0), FT_IO_ERROR);
  EXPECT_EQ(FT_GetLatencyTimer(handle, &answers[1]), FT_IO_ERROR);
  EXPECT_EQ(answers[1], 0x3C);
  EXPECT_EQ(FT_EraseEE(handle), FT_EEPROM_ERASE_FAILED);
  mBus.ClearFault();
  Requests(chip);
  EXPECT_EQ(FT_SetBreakOn(handle), FT_OK);
  EXPECT_EQ(Requests(chip), "4:20999@0");
}

TEST_F(FtLineTest, TheIndexWordAndTheClockFollowTheKindOfChip) {
  struct Kind {
    BridgeChip::Options options;
    int channel;
    std::string low;   ///< 9600 baud
    std::string high;  ///< 224,299 baud, three eighths in 3 MHz and a half in 12
    std::string dtr;
    FT_STATUS gate;
  };
  for (const Kind& kind :
       {Kind{{.release = 0x0200}, 0, "3:16696@0", "3:32781@0", "1:257@0", FT_NOT_SUPPORTED},
        {{.release = 0x0200, .serialNumber = ""}, 0, "3:16696@0", "3:13@1", "1:257@0", FT_OK},
        {{.release = 0x1000}, 0, "3:16696@0", "3:13@1", "1:257@0", FT_OK},
        {{.release = 0x3000}, 0, "3:16696@0", "3:32781@0", "1:257@0", FT_NOT_SUPPORTED},
        {{.release = 0x0500, .interfaces = 2}, 1, "3:16696@2", "3:13@258", "1:257@2", FT_OK},
        {{.release = 0x0700, .highSpeed = true, .interfaces = 2}, 1, "3:1250@514", "3:16437@514", "1:257@2", FT_OK},
        {{.release = 0x0800, .interfaces = 4}, 3, "3:1250@516", "3:16437@516", "1:257@4", FT_OK},
        {{.release = 0x0900, .highSpeed = true}, 0, "3:1250@512", "3:16437@512", "1:257@0", FT_OK}}) {
    SCOPED_TRACE(kind.options.release);
    auto& chip = Plug(kind.options);
    FT_HANDLE const handle = Open(kind.channel);
    UCHAR latency = 0;
    const auto gated = [&](const std::string& request) {
      return kind.gate == FT_OK ? request + kind.dtr.substr(5) : std::string();
    };
    Check(handle, chip,
          {{[](auto h) { return FT_SetBaudRate(h, 9600); }, kind.low},
           {[](auto h) { return FT_SetBaudRate(h, 224'299); }, kind.high},
           {FT_SetDtr, kind.dtr},
           {[](auto h) { return FT_SetBitMode(h, 0, 0); }, gated("11:0"), kind.gate},
           {[&](auto h) { return FT_GetLatencyTimer(h, &latency); }, gated("10:0"), kind.gate},
           {[](auto h) { return FT_SetLatencyTimer(h, 9); }, gated("9:9"), kind.gate}});
    EXPECT_EQ(latency, kind.gate == FT_OK ? 16 : 0);
    EXPECT_EQ(FT_Close(handle), FT_OK);
    Unplug(chip);
  }
}

TEST_F(FtLineTest, AReplyWaitsForTheEndOfALatencyPeriodOrComesWithTheEventCharacter) {
  ScriptedPeer peer;
  peer.OnRequest("?", "value\r");
  Plug({}, {&peer});
  FT_HANDLE const handle = Open();
  ASSERT_EQ(FT_SetLatencyTimer(handle, 250), FT_OK);
  for (const bool atOnce : {false, true}) {
    ASSERT_EQ(FT_SetChars(handle, '\r', atOnce ? 1 : 0, 0, 0), FT_OK);
    const auto begin = Clock::now();
    for (int i = 0; i < 4; ++i) {
      Write(handle, {'?'});
      EXPECT_EQ(Read(handle, 6).size(), 6U);
    }
    EXPECT_EQ(Clock::now() - begin < std::chrono::milliseconds(740), atOnce);
  }
  EXPECT_EQ(FT_Close(handle), FT_OK);
}

TEST_F(FtLineTest, SerialPortCallsSetAndTellTheLine) {
  auto& chip = PlugEcho({.serialNumber = "CV9"});
  FT_HANDLE const handle = FT_W32_CreateFile("CV9", 0, 0, nullptr, 0, 0x80 | FT_OPEN_BY_SERIAL_NUMBER, nullptr);
  ASSERT_NE(handle, nullptr);
  FTDCB state{};
  ASSERT_EQ(FT_W32_GetCommState(handle, &state), 1);
  EXPECT_EQ(state.BaudRate, 9600U);
  state.BaudRate = 38400;
  state.ByteSize = FT_BITS_7;
  state.Parity = FT_PARITY_ODD;
  state.fParity = 1;
  state.StopBits = FT_STOP_BITS_2;
  state.fOutxCtsFlow = 1;
  state.fRtsControl = FT_CONTROL_HANDSHAKE;
  state.fDtrControl = FT_CONTROL_ENABLE;
  state.EvtChar = '\r';
  Requests(chip);
  ASSERT_EQ(FT_W32_SetCommState(handle, &state), 1);
  EXPECT_EQ(Requests(chip), "3:49230@0 4:4359@0 1:257@0 2:0@256 1:514@0 6:269@0 7:0@0");
  FTDCB again{};
  ASSERT_EQ(FT_W32_GetCommState(handle, &again), 1);
  EXPECT_EQ(std::memcmp(&again, &state, sizeof(state)), 0);
  FTTIMEOUTS timeouts{0, 0, 20, 0, 800};
  EXPECT_EQ(FT_W32_SetCommTimeouts(handle, &timeouts), 1);
  DWORD count = 0;
  std::array<char, 5> text{};
  EXPECT_EQ(FT_W32_WriteFile(handle, text.data(), 4, &count, nullptr), 1);
  AwaitQueued(handle, 4);
  chip.SetModemStatus(0, 0, FT_LINE_PARITY >> 8);
  EXPECT_EQ(FT_W32_SetCommMask(handle, FT_EVENT_LINE_STATUS), 1);
  EXPECT_EQ(FT_W32_WaitCommEvent(handle, &count, nullptr), 1);
  EXPECT_EQ(count, FT_EVENT_LINE_STATUS);
  EXPECT_EQ(FT_W32_ClearCommError(handle, &count, nullptr), 1);
  EXPECT_EQ(count, FT_LINE_PARITY >> 8);
  EXPECT_EQ(FT_W32_ReadFile(handle, text.data(), 5, &count, nullptr), 1);  // what there is, at the time-out
  EXPECT_EQ(count, 4U);
  int overlapped = 0;
  EXPECT_EQ(FT_W32_ReadFile(handle, text.data(), 4, &count, reinterpret_cast<LPOVERLAPPED>(&overlapped)), 0);
  EXPECT_EQ(FT_W32_GetLastError(handle), FT_NOT_SUPPORTED);
  EXPECT_EQ(FT_W32_EscapeCommFunction(handle, 99), 0);
  EXPECT_EQ(FT_W32_GetLastError(handle), FT_INVALID_PARAMETER);
  EXPECT_EQ(FT_W32_CloseHandle(handle), 1);
}

}  // namespace
