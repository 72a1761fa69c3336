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
  /// Lines received, oldest first.
  std::vector<std::string>& Lines() { return mState->lines; }

  /// The framing of a query's answer.
  static std::string Reply(const std::string& line, const std::string& value);

 private:
  struct State {
    std::map<std::string, std::string> values;
    std::map<std::string, std::string> answers;
    std::vector<std::string> lines;
  };
  std::shared_ptr<State> mState;
};

class ScriptedBridge {
 public:
  /// Vendor and product identifier.
  using Product = std::pair<unsigned int, unsigned int>;
  static constexpr Product kSxProduct{0x136E, 0x0017};
  static constexpr Product kLxProduct{0x0403, 0xD491};
  static constexpr Product kSecondLxProduct{0x0403, 0xD493};
  static constexpr Product kPlainCable{0x0403, 0x6001};

  struct Device {
    Product product = kSxProduct;
    /// Bytes to answer a complete line with; none: only what Queue gave is read.
    std::function<std::string(const std::string& line)> responder;
    /// Time before the answer's first byte.
    unsigned int answerDelayMs = 0;
    /// Not FT_OK: the operation fails with it. open also fails while the device is open.
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
    int reads = 0;
    bool isOpen = false;

    /// Lets bytes wait for the next reads.
    void Queue(const std::string& bytes, unsigned int delayMs = 0, unsigned int perByteMs = 0);
    std::size_t Waiting() const { return pending.size(); }
    /// Bytes on the way, and the part of a line that has been written.
    struct Byte {
      char byte;
      std::uint64_t due;
    };
    std::deque<Byte> pending;
    std::string line;
  };

  ScriptedBridge();
  ~ScriptedBridge();
  ScriptedBridge(const ScriptedBridge&) = delete;
  ScriptedBridge& operator=(const ScriptedBridge&) = delete;

  /// The reference holds as long as the bridge.
  Device& Add();
  /// With a controller behind it.
  Device& Add(Product product, const ScriptedController& controller);
  Device& At(std::size_t index) { return *devices.at(index); }

  /// Not FT_OK: FT_CreateDeviceInfoList or FT_GetDeviceInfoList fails with it.
  FT_STATUS createStatus = FT_OK;
  FT_STATUS infoStatus = FT_OK;
  /// Calls of FT_SetVIDPID, oldest first.
  std::vector<Product> products;

  /// In the order of the list.
  std::vector<std::unique_ptr<Device>> devices;
};
