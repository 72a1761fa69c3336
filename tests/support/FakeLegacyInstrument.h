// An older instrument as a bus sees it: EEPROM pages, presence bits, output lines and motors that arrive at once but
// stay busy for some polls. Writes down every move and every output.
#pragma once

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "camera/TI2CInterface.h"
#include "legacy/EECorvData.h"
#include "support/FakeTime.h"

class FakeLegacyInstrument final : public TI2CInterface {
 public:
  static constexpr int kAlways = 1'000'000'000;

  /// Its EEPROM holds a fresh record whose wave drive turns by asin(x / 2400), x = lines * nm / 1200.
  FakeLegacyInstrument() {
    EECorvData record(this, false);
    record.values.polynomial[3] = 1.0F / 2400.0F;
    record.values.numberOfTurrets = 2;
    for (auto& turret : record.values.turrets) {
      turret.gratings[0].lines = 1200.0F;
      turret.gratings[1].lines = 600.0F;
    }
    record.WriteToEEPROM();
    writes = 0;
  }

  std::array<std::array<std::uint8_t, 256>, 6> pages{};
  /// The EEPROM takes bytes, which the library switches on; bytes it took.
  bool writeMode = false;
  int writes = 0;
  /// Presence and sensor bits by selector; what is not named is fitted.
  std::map<std::uint8_t, std::uint8_t> status;
  std::uint8_t fpga = 25;
  /// Polls that find a motor busy after a move, the bits they find, and where.
  int busyPolls = 2;
  std::uint8_t busyBits = 0x1F;
  std::uint8_t busyRegister = 0xC3;
  /// What a transfer that is answered gives; 0 behind an adapter.
  unsigned int success = corvane::legacy::kBusSuccess;
  /// Transfers that are still answered; which of the next transfers and of the next moves fails, from 1.
  int answers = kAlways;
  int failingTransfer = 0;
  int failingMove = 0;
  std::array<int, 5> position{};
  /// Filter wheel: sensor pattern 4 for this many steps around 160 steps before filter 1.
  int sensorWidth = 300;
  std::vector<std::uint8_t> lastMove;
  FakeTime time;

  /// "motor+steps" or "motor-steps", with "h" or "e" for a stop at a hole or its edge, since the last call.
  std::vector<std::string> TakeMoves() { return std::exchange(mMoves, {}); }
  /// The bytes of the status device's transfers since the last call: "selector?" for a read, else what was written.
  std::vector<std::string> TakeStatus() { return std::exchange(mStatus, {}); }

  /// Numbers lie as on this machine: least significant byte first, IEEE 754.
  void Put(std::size_t page, std::size_t offset, const char* text) {
    std::memcpy(&pages.at(page).at(offset), text, std::strlen(text));
  }
  template <typename Value>
  void Put(std::size_t page, std::size_t offset, Value value) {
    std::memcpy(&pages.at(page).at(offset), &value, sizeof(value));
  }
  template <typename Value>
  Value Number(std::size_t page, std::size_t offset) const {
    Value value{};
    std::memcpy(&value, &pages.at(page).at(offset), sizeof(value));
    return value;
  }

  unsigned int Write(unsigned char device, unsigned char reg, unsigned char data) override {
    if (Fails()) {
      return kDead;
    }
    if (device == 0x11) {
      mStatus.push_back(std::to_string(reg) + "=" + std::to_string(data));
    } else if (device == 0x6F) {
      writeMode = reg == 0xFF && data == 2;
    } else if (writeMode) {
      pages.at(device - 0x68U)[reg] = data;
      ++writes;
    }
    return success;
  }

  unsigned int Read(unsigned char device, unsigned char reg, unsigned char* data) override {
    if (Fails()) {
      return kDead;
    }
    if (device == 0x10) {
      *data = fpga;
    } else if (device == 0x11 && reg >= 0xC3) {
      const bool selected = reg == busyRegister && (fpga >= 23 || reg == mSelected);
      *data = selected && mBusy > 0 ? busyBits : 0;
      mBusy -= mBusy > 0 ? 1 : 0;
    } else if (device == 0x11) {
      mStatus.push_back(std::to_string(reg) + "?");
      *data = static_cast<std::uint8_t>(status[reg] | (reg == 64 ? SensorPattern() : 0));
    } else {
      *data = pages.at(device - 0x68U)[reg];
    }
    return success;
  }

  unsigned int BurstWrite(unsigned char device, long count, const unsigned char* data) override {
    if (Fails()) {
      return kDead;
    }
    if (device == 0x10 && count == 14) {
      return Move(data);
    }
    mSelected = data[0];
    if (count == 2) {
      mStatus.push_back(std::to_string(data[0]) + "=" + std::to_string(data[1]));
    } else if (data[0] < 0xC3) {
      mStatus.push_back(">" + std::to_string(data[0]));
    }
    return success;
  }

  unsigned int BurstRead(unsigned char, long, unsigned char*) override { return kDead; }

 private:
  static constexpr unsigned int kDead = 20081;

  bool Fails() { return --answers < 0 || (failingTransfer > 0 && --failingTransfer == 0); }

  std::uint8_t SensorPattern() const {
    const int fromMiddle = ((position[2] + 160) % 4800 + 4800 + 2400) % 4800 - 2400;
    return std::abs(fromMiddle) * 2 <= sensorWidth ? 4 : 10;
  }

  unsigned int Move(const unsigned char* data) {
    lastMove.assign(data, data + 14);
    const int steps = data[2] | data[3] << 8 | data[4] << 16;
    const bool forward = (data[1] & 1) != 0;
    const int mode = data[1] >> 4;
    const char* const stops[] = {"", "h", "e"};
    mMoves.push_back(std::to_string(data[0]) + (forward ? "+" : "-") + std::to_string(steps) + stops[mode]);
    if (failingMove > 0 && --failingMove == 0) {
      return kDead;
    }
    int& at = position.at(data[0]);
    at = mode == 2 ? 0 : at + (forward ? steps : -steps);
    mBusy = busyPolls;
    return success;
  }

  int mBusy = 0;
  std::uint8_t mSelected = 0;
  std::vector<std::string> mMoves;
  std::vector<std::string> mStatus;
};
