// A bridge without USB: the FT_* functions that the controller layer calls, served from a script. Linked into a test in
// the place of usbserial (corvane_add_unit_test ... SCRIPTED_BRIDGE). A test makes one ScriptedBridge, adds devices,
// and reads afterwards what was asked of them. Waiting goes through corvane::Time(), so FakeTime moves it.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "usbserial/ftd2xx.h"

/// Answers the lines of a controller as a table of words says. Copies share the table.
class ScriptedController {
 public:
  ScriptedController();
  /// Bytes of the answer to a line (given without its carriage return). A query whose word is in the table is echoed
  /// and its value printed; a line that is in the table as a whole ("SLIT_WIDTH? 2") goes before its word. A command
  /// and the greeting get "OK". A query without a value gets "E01".
  std::string operator()(const std::string& line);

  /// Value of a query by its word or its whole line.
  void SetValue(const std::string& query, const std::string& value) { mState->values[query] = value; }
  /// The bytes to answer a line with, whatever it is; "" for silence.
  void SetAnswer(const std::string& line, const std::string& bytes) { mState->answers[line] = bytes; }
  /// Answers nothing at all from now on.
  void FallSilent() { mState->silent = true; }
  /// Lines received, oldest first.
  std::vector<std::string>& Lines() { return mState->lines; }

  /// The framing of a query's answer.
  static std::string Reply(const std::string& line, const std::string& value);

 private:
  struct State {
    std::map<std::string, std::string> values;
    std::map<std::string, std::string> answers;
    std::vector<std::string> lines;
    bool silent = false;
  };
  std::shared_ptr<State> mState;
};

class ScriptedBridge {
 public:
  struct Device {
    unsigned int vid = 0x136E;
    unsigned int pid = 0x0017;
    std::string serial = "SCRIPTED";
    std::string description = "Scripted bridge";
    /// Bytes to answer a complete line with; none: only what Queue gave is read.
    std::function<std::string(const std::string& line)> responder;
    /// Time before the answer's first byte, and between its bytes.
    unsigned int answerDelayMs = 0;
    unsigned int byteDelayMs = 0;
    /// Not 0: the operation fails with it. open also fails while the device is open.
    FT_STATUS openStatus = FT_OK;
    FT_STATUS readStatus = FT_OK;
    FT_STATUS writeStatus = FT_OK;
    /// Reads come back at once, without bytes, as from a line that died unnoticed.
    bool readsReturnAtOnce = false;

    /// What was asked of it.
    std::string written;
    std::vector<std::pair<DWORD, DWORD>> timeouts;
    std::vector<DWORD> purges;
    int opens = 0;
    int closes = 0;
    int reads = 0;
    bool isOpen = false;

    /// Lets bytes wait for the next reads.
    void Queue(const std::string& bytes, unsigned int delayMs = 0, unsigned int perByteMs = 0);
    std::size_t Waiting() const { return mPending.size(); }

   private:
    friend class ScriptedBridge;
    struct Pending {
      char byte;
      std::uint64_t due;
    };
    std::deque<Pending> mPending;
    std::string mLine;
  };

  ScriptedBridge();
  ~ScriptedBridge();
  ScriptedBridge(const ScriptedBridge&) = delete;
  ScriptedBridge& operator=(const ScriptedBridge&) = delete;

  /// The reference holds as long as the bridge.
  Device& Add();
  /// With a controller behind it.
  Device& Add(unsigned int vid, unsigned int pid, const ScriptedController& controller);
  Device& At(std::size_t index) { return *mDevices.at(index); }

  /// Not 0: FT_ListDevices, FT_CreateDeviceInfoList or FT_GetDeviceInfoList fails with it.
  FT_STATUS numberStatus = FT_OK;
  FT_STATUS createStatus = FT_OK;
  FT_STATUS infoStatus = FT_OK;
  /// Calls of FT_SetVIDPID, oldest first.
  std::vector<std::pair<DWORD, DWORD>> products;

  // The functions themselves.
  FT_STATUS Number(DWORD& count) const;
  FT_STATUS CreateList(DWORD& count);
  FT_STATUS GetList(FT_DEVICE_LIST_INFO_NODE* nodes, DWORD& count) const;
  FT_STATUS Open(int index, FT_HANDLE& handle);
  FT_STATUS Close(FT_HANDLE handle);
  FT_STATUS Read(FT_HANDLE handle, char* buffer, DWORD count, DWORD& received);
  FT_STATUS Write(FT_HANDLE handle, const char* buffer, DWORD count, DWORD& written);
  FT_STATUS SetTimeouts(FT_HANDLE handle, DWORD readMs, DWORD writeMs);
  FT_STATUS Purge(FT_HANDLE handle, DWORD mask);

 private:
  Device* Find(FT_HANDLE handle);

  std::vector<std::unique_ptr<Device>> mDevices;
  std::vector<FT_DEVICE_LIST_INFO_NODE> mList;
};
