// Line settings, modem lines, latency, bit modes and EEPROM words: what each function sends to which kind of chip.
#include <array>
#include <cstring>
#include <functional>

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

TEST_F(FtLineTest, EveryFunctionSendsItsRequestsAndTellsWhatTheChipAnswers) {
  auto& chip = Plug({.eepromWords = 8});
  FT_HANDLE const handle = Open();
  chip.SetModemStatus(0, FT_MODEM_CTS | FT_MODEM_DCD, FT_LINE_BREAK >> 8);
  chip.SetPins(0, 0x3C);
  WORD word = 0;
  UCHAR latency = 0;
  UCHAR pins = 0;
  ULONG modem = 0;
  std::array<UCHAR, 3> bytes{};
  Check(
      handle, chip,
      {{FT_ResetDevice, "reset@0"},
       {FT_SetDtr, "modem 101@0"},
       {FT_ClrDtr, "modem 100@0"},
       {FT_SetRts, "modem 202@0"},
       {FT_ClrRts, "modem 200@0"},
       {[](auto h) { return FT_SetFlowControl(h, FT_FLOW_NONE, 0x11, 0x13); }, "flow 0@0"},
       {[](auto h) { return FT_SetFlowControl(h, FT_FLOW_XON_XOFF, 0x11, 0x13); }, "flow 1311@400"},
       {[](auto h) { return FT_SetFlowControl(h, FT_FLOW_RTS_CTS, 0x11, 0x13); }, "flow 0@100, modem 202@0"},
       {[](auto h) { return FT_SetFlowControl(h, FT_FLOW_DTR_DSR, 0x11, 0x13); }, "flow 0@200, modem 101@0"},
       {[](auto h) { return FT_SetFlowControl(h, 0x0300, 0, 0); }, "", FT_INVALID_PARAMETER},
       {[](auto h) { return FT_SetBaudRate(h, 490000); }, "baud C006@0"},
       {[](auto h) { return FT_SetBaudRate(h, 888888); }, "baud 3@1"},  // three eighths: the index bit
       {[](auto h) { return FT_SetBaudRate(h, 183); }, "", FT_INVALID_BAUD_RATE},
       {[](auto h) { return FT_SetBaudRate(h, 4'000'000); }, "", FT_INVALID_BAUD_RATE},
       {[](auto h) { return FT_SetDivisor(h, 0xC01A); }, "baud C01A@0"},
       {[](auto h) { return FT_SetDataCharacteristics(h, FT_BITS_7, FT_STOP_BITS_2, FT_PARITY_EVEN); }, "line 1207@0"},
       {FT_SetBreakOn, "line 5207@0"},
       {FT_SetBreakOff, "line 1207@0"},
       {[](auto h) { return FT_SetDataCharacteristics(h, 6, 0, 0); }, "", FT_INVALID_PARAMETER},
       {[](auto h) { return FT_SetDataCharacteristics(h, 8, 3, 0); }, "", FT_INVALID_PARAMETER},
       {[](auto h) { return FT_SetDataCharacteristics(h, 8, 0, 5); }, "", FT_INVALID_PARAMETER},
       {[](auto h) { return FT_SetChars(h, 'e', 1, 'x', 0); }, "event-char 165@0, error-char 78@0"},
       {[](auto h) { return FT_SetLatencyTimer(h, 40); }, "set-latency 28@0"},
       {[&](auto h) { return FT_GetLatencyTimer(h, &latency); }, "get-latency 0@0"},
       {[&](auto h) { return FT_GetModemStatus(h, &modem); }, "status 0@0"},
       {[&](auto h) { return FT_GetBitMode(h, &pins); }, "get-pins 0@0"},
       {[](auto h) { return FT_SetBitMode(h, 0xA5, 0x20); }, "set-pins 20A5@0"},
       {[](auto h) { return FT_WriteEE(h, 7, 0xABCD); }, "write-ee ABCD@7"},
       {[&](auto h) { return FT_ReadEE(h, 7, &word); }, "read-ee 0@7"},
       {[&](auto h) { return FT_ReadEE(h, 9, &word); }, "read-ee 0@9", FT_EEPROM_READ_FAILED},
       {[](auto h) { return FT_WriteEE(h, 8, 1); }, "write-ee 1@8", FT_EEPROM_WRITE_FAILED},
       {[](auto h) { return FT_WriteEE(h, 0x10000, 1); }, "", FT_INVALID_PARAMETER},
       {[](auto h) { return FT_VendorRequest(9, 3, 0, nullptr, 0, 0x40, h); }, "set-latency 3@0"},
       {[](auto h) { return FT_VendorRequest(9, 3, 0, nullptr, 1, 0x40, h); }, "", FT_INVALID_PARAMETER},
       // Sent, and a failure: bytes were transferred, or fewer came.
       {[&](auto h) { return FT_VendorRequest(4, 8, 0, bytes.data(), 2, 0x40, h); }, "line 8@0", FT_IO_ERROR},
       {[&](auto h) { return FT_VendorRequest(5, 0, 0, bytes.data(), 3, 0xC0, h); }, "status 0@0", FT_IO_ERROR}});
  EXPECT_EQ(modem, FT_MODEM_CTS | FT_MODEM_DCD | FT_LINE_BREAK);
  EXPECT_EQ(latency, 40);
  EXPECT_EQ(pins, 0x3C);
  EXPECT_EQ(word, 0xABCD);
  EXPECT_EQ(FT_EraseEE(handle), FT_OK);
  EXPECT_EQ(chip.Eeprom()[7], 0xFFFF);
}

TEST_F(FtLineTest, ARequestThatFailsLeavesItsOutputAndTheRememberedLineAsTheyWere) {
  auto& chip = Plug();
  FT_HANDLE const handle = Open();
  ASSERT_EQ(FT_SetDataCharacteristics(handle, FT_BITS_7, FT_STOP_BITS_2, FT_PARITY_EVEN), FT_OK);
  mBus.SetFault({.effect = UsbFault::Effect::kCompletionFails, .kinds = UsbFault::kControl, .fromThenOn = true});
  UCHAR latency = 77;
  EXPECT_EQ(FT_GetLatencyTimer(handle, &latency), FT_IO_ERROR);
  EXPECT_EQ(latency, 77);
  EXPECT_EQ(FT_EraseEE(handle), FT_EEPROM_ERASE_FAILED);
  EXPECT_EQ(FT_SetDataCharacteristics(handle, FT_BITS_8, FT_STOP_BITS_1, FT_PARITY_NONE), FT_IO_ERROR);
  mBus.ClearFault();
  Requests(chip);
  EXPECT_EQ(FT_SetBreakOn(handle), FT_OK);
  EXPECT_EQ(Requests(chip), "line 5207@0");
}

TEST_F(FtLineTest, TheIndexWordAndTheClockFollowTheKindOfChip) {
  struct Kind {
    BridgeChip::Options options;
    int channel;
    std::string port;
    std::string low;   ///< 9600 baud
    std::string high;  ///< 224,299 baud, three eighths in 3 MHz and a half in 12
    bool later;        ///< has a latency timer and bit modes
  };
  for (const Kind& kind : {
           Kind{{.release = 0x0200}, 0, "@0", "baud 4138@0", "baud 800D@0", false},
           Kind{{.release = 0x0200, .serialNumber = ""}, 0, "@0", "baud 4138@0", "baud D@1", true},
           Kind{{.release = 0x1000}, 0, "@0", "baud 4138@0", "baud D@1", true},
           Kind{{.release = 0x3000}, 0, "@0", "baud 4138@0", "baud 800D@0", false},
           Kind{{.release = 0x0500, .interfaces = 2}, 1, "@2", "baud 4138@2", "baud D@102", true},
           Kind{
               {.release = 0x0700, .highSpeed = true, .interfaces = 2}, 1, "@2", "baud 4E2@202", "baud 4035@202", true},
           Kind{{.release = 0x0800, .interfaces = 4}, 3, "@4", "baud 4E2@204", "baud 4035@204", true},
           Kind{{.release = 0x0900, .highSpeed = true}, 0, "@0", "baud 4E2@200", "baud 4035@200", true},
       }) {
    SCOPED_TRACE(kind.options.release);
    auto& chip = Plug(kind.options);
    FT_HANDLE const handle = Open(kind.channel);
    UCHAR latency = 0;
    const auto later = [&](const std::string& request) { return kind.later ? request + kind.port : ""; };
    const FT_STATUS status = kind.later ? FT_OK : FT_NOT_SUPPORTED;
    Check(handle, chip,
          {{[](auto h) { return FT_SetBaudRate(h, 9600); }, kind.low},
           {[](auto h) { return FT_SetBaudRate(h, 224'299); }, kind.high},
           {FT_SetDtr, "modem 101" + kind.port},
           {[](auto h) { return FT_SetBitMode(h, 0, 0); }, later("set-pins 0"), status},
           {[&](auto h) { return FT_GetLatencyTimer(h, &latency); }, later("get-latency 0"), status},
           {[](auto h) { return FT_SetLatencyTimer(h, 9); }, later("set-latency 9"), status}});
    EXPECT_EQ(latency, kind.later ? BridgeChannel::kDefaultLatency : 0);
    EXPECT_EQ(FT_Close(handle), FT_OK);
    Unplug(chip);
  }
}

TEST_F(FtLineTest, TheStateOfASerialPortIsSentAndToldAgain) {
  auto& chip = Plug({.serialNumber = "CV9"});
  FT_HANDLE const handle = FT_W32_CreateFile("CV9", 0, 0, nullptr, 0, 0x80 | FT_OPEN_BY_SERIAL_NUMBER, nullptr);
  Requests(chip);
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
  ASSERT_EQ(FT_W32_SetCommState(handle, &state), 1);
  EXPECT_EQ(Requests(chip),
            "baud C04E@0, line 1107@0, modem 101@0, flow 0@100, modem 202@0, event-char 10D@0, error-char 0@0");
  FTDCB again{};
  ASSERT_EQ(FT_W32_GetCommState(handle, &again), 1);
  EXPECT_EQ(std::memcmp(&again, &state, sizeof(state)), 0);
  EXPECT_EQ(FT_W32_CloseHandle(handle), 1);
}

TEST_F(FtLineTest, ASerialPortReadsAndWritesInItsTimeAndTellsItsStatus) {
  auto& chip = PlugEcho();
  FT_HANDLE const handle = Open(0, 0, 0);
  FTTIMEOUTS timeouts{0, 0, 20, 0, 2000};
  ASSERT_EQ(FT_W32_SetCommTimeouts(handle, &timeouts), 1);
  std::array<char, 5> text{"abcd"};
  DWORD count = 0;
  EXPECT_EQ(FT_W32_WriteFile(handle, text.data(), 4, &count, nullptr), 1);
  EXPECT_EQ(count, 4U);
  AwaitQueued(handle, 4);
  text = {};
  EXPECT_EQ(FT_W32_ReadFile(handle, text.data(), 5, &count, nullptr), 1);
  EXPECT_EQ(count, 4U);
  EXPECT_STREQ(text.data(), "abcd");
  EXPECT_EQ(FT_W32_ReadFile(handle, text.data(), 1, &count, reinterpret_cast<LPOVERLAPPED>(&timeouts)), 0);
  EXPECT_EQ(FT_W32_GetLastError(handle), FT_NOT_SUPPORTED);
  EXPECT_EQ(FT_W32_EscapeCommFunction(handle, 99), 0);
  EXPECT_EQ(FT_W32_GetLastError(handle), FT_INVALID_PARAMETER);
  // The packets that tell of an error of the line may come late on a machine that is busy: the wait has no time-out.
  ASSERT_EQ(FT_SetTimeouts(handle, 0, 0), FT_OK);
  ASSERT_EQ(FT_W32_SetCommMask(handle, FT_EVENT_LINE_STATUS), 1);
  chip.SetModemStatus(0, 0, FT_LINE_PARITY >> 8);
  EXPECT_EQ(FT_W32_WaitCommEvent(handle, &count, nullptr), 1);
  EXPECT_EQ(count, FT_EVENT_LINE_STATUS);
  EXPECT_EQ(FT_W32_ClearCommError(handle, &count, nullptr), 1);
  EXPECT_EQ(count, FT_LINE_PARITY >> 8);
}

}  // namespace
