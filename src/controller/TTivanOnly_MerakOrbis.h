// A TMerakOrbis that counts and opens only controllers whose manufacturer field is the maker's. Discovery creates one
// for each instrument it lists; everything else is inherited.
#pragma once

#include <string>

#include "controller/TMerakOrbis.h"

class TTivanOnly_MerakOrbis final : public TMerakOrbis {
 public:
  /// Manufacturer of the maker's controllers, in capitals.
  static constexpr const char* TIVAN_STRING = "TIVAN";

  /// Puts the maker's VID/PID pair into the bridge's list of supported devices.
  explicit TTivanOnly_MerakOrbis(TI2CInterface* i2c);

  /// The controller on the I2C bus (unasked), plus every free candidate bridge behind which the maker's controller
  /// answers, plus 1 when this object is open itself. kUnknownError when the bridge list cannot be had; count is then
  /// what was found so far. Opens and closes the candidates: no other object may be using them.
  MerakResult GetDeviceCount(int& count) override;
  /// Opens the index-th of these controllers: the one on the I2C bus first when there is one, then the candidate
  /// bridges in list order. A candidate that this process holds open already counts as one of them. What was open
  /// before is dropped. kUnknownError when the bridge list cannot be had, kDeviceNotFound when there is no such
  /// controller.
  MerakResult Open(int index) override;

  /// True when the open device's manufacturer is the maker, whatever the case; a device that does not tell does not
  /// match.
  static bool IsTivanCamera(TMerakOrbis& device);
  static bool IsLXorMX(int vid, int pid);
  static bool IsSX(int vid, int pid);
  /// Upper case by the classic locale.
  static std::string ToUpper(const std::string& text);
  int getPointerToFunctions() const { return 1; }

 private:
  bool mReady = true;
};
