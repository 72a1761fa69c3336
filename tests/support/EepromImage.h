// A controller's byte-addressed EEPROM in memory, behind what a record sees of its controller. Fails on request and
// remembers the order of addresses.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "core/MerakResult.h"
#include "eeprom/IMerakEepromAccess.h"

class EepromImage final : public corvane::IMerakEepromAccess {
 public:
  static constexpr int kSize = 600;

  explicit EepromImage(unsigned char fill = 0) { bytes.fill(fill); }

  MerakResult ReadEepromByte(int address, unsigned char& value) override {
    reads.push_back(address);
    const MerakResult result = Result(address);
    value = result == merak::kSuccess ? At(address) : value;
    return result;
  }
  MerakResult WriteEepromByte(int address, unsigned char value) override {
    writes.push_back(address);
    const MerakResult result = Result(address);
    At(address) = result == merak::kSuccess ? value : At(address);
    return result;
  }
  // The rest is no business of this family of records.
  MerakResult GetConfigSystemData(int /*index*/, std::string& /*value*/) override { return Unexpected(); }
  MerakResult SetConfigSystemData(int /*index*/, const std::string& /*value*/) override { return Unexpected(); }
  MerakResult Position(float& /*wavelength*/) override { return Unexpected(); }
  MerakResult ResetPosition() override { return Unexpected(); }
  MerakResult GetTurret(int& /*turret*/) override { return Unexpected(); }
  MerakResult SetTurret(int /*turret*/) override { return Unexpected(); }
  MerakResult GetRawGratings(std::string& /*text*/) override { return Unexpected(); }
  MerakResult GetGratings(std::vector<float>& /*lines*/, std::vector<std::string>& /*blazes*/) override {
    return Unexpected();
  }
  bool IsSilent() const override { return mSilent; }

  unsigned char& At(int address) { return bytes.at(static_cast<std::size_t>(address)); }
  void Put(int address, const std::string& text) {
    for (const char c : text) {
      At(address++) = static_cast<unsigned char>(c);
    }
  }
  void Put(int address, int value) {
    for (int i = 0; i < 4; ++i) {
      At(address + i) = static_cast<unsigned char>(static_cast<unsigned int>(value) >> (8 * i));
    }
  }
  void Put(int address, float value) { Put(address, std::bit_cast<int>(value)); }
  int IntAt(int address) {
    std::uint32_t value = 0;
    for (int i = 3; i >= 0; --i) {
      value = value << 8U | At(address + i);
    }
    return static_cast<int>(value);
  }
  float FloatAt(int address) { return std::bit_cast<float>(IntAt(address)); }
  std::string TextAt(int address, int width) { return {bytes.begin() + address, bytes.begin() + address + width}; }

  /// Every exchange about one of these addresses fails from now on; `silent`: without any reply.
  void FailAt(std::set<int> addresses, bool silent = false, MerakResult code = merak::kIoError) {
    Reset();
    mFailing = std::move(addresses);
    mSilence = silent;
    mCode = code;
  }
  void Reset() {
    reads.clear();
    writes.clear();
    mFailing.clear();
    mSilent = false;
  }

  std::array<unsigned char, kSize> bytes{};
  /// Addresses since the last reset.
  std::vector<int> reads;
  std::vector<int> writes;
  int unexpectedCalls = 0;

 private:
  MerakResult Result(int address) {
    const bool fails = mFailing.count(address) != 0;
    mSilent = fails && mSilence;
    return fails ? mCode : merak::kSuccess;
  }
  MerakResult Unexpected() {
    ++unexpectedCalls;
    return merak::kUnknownError;
  }

  std::set<int> mFailing;
  bool mSilence = false;
  bool mSilent = false;
  MerakResult mCode = merak::kIoError;
};
