// A camera's I2C bus with a controller at its address. The output stream is framed as the controller frames it: 0xB1
// and data while there is some. With nothing pending a two-byte burst gets 0xB0 and the availability probe gets 0xB1
// and zeros.
#pragma once

#include <algorithm>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "camera/TI2CInterface.h"

class ScriptedBus final : public TI2CInterface {
 public:
  std::function<std::string(const std::string& line)> responder;
  /// The controller's output that has not been read; when `endless` is set, it never ends and is made of that.
  std::string output;
  std::optional<char> endless;
  /// What the bursts wrote, and the lengths of those read.
  std::vector<std::string> bursts;
  std::vector<long> reads;
  /// No controller at the address: bursts bring the bus's idle level.
  bool absent = false;

  unsigned int Write(unsigned char, unsigned char, unsigned char) override { return 1; }
  unsigned int Read(unsigned char, unsigned char, unsigned char*) override { return 1; }

  unsigned int BurstWrite(unsigned char address, long count, const unsigned char* data) override {
    if (address != kAddress) {
      return 1;
    }
    bursts.emplace_back(reinterpret_cast<const char*>(data), static_cast<std::size_t>(count));
    for (const char c : bursts.back()) {
      if (c != '\r') {
        mLine += c;
      } else if (responder) {
        output += responder(std::exchange(mLine, {}));
      }
    }
    return kSuccess;
  }

  unsigned int BurstRead(unsigned char address, long count, unsigned char* data) override {
    reads.push_back(count);
    if (address != kAddress) {
      return 1;
    }
    const auto length = static_cast<std::size_t>(count);
    std::fill_n(data, length, static_cast<unsigned char>(absent ? 0xFF : 0));
    if (!absent) {
      output = endless ? std::string(length - 1, *endless) : output;
      data[0] = output.empty() && length == 2 ? 0xB0 : 0xB1;
      const std::size_t taken = std::min(output.size(), length - 1);
      std::copy_n(output.begin(), taken, data + 1);
      output.erase(0, taken);
    }
    return kSuccess;
  }

 private:
  static constexpr unsigned int kSuccess = 20002;  // the camera SDK's own; 0 is success as well
  static constexpr unsigned char kAddress = 0x58;
  std::string mLine;
};
