// The EEPROM record of SX models: numbered texts, one exchange each, numbers with "." whatever the locale. Wavelength,
// active turret and the gratings on it are the controller's own; only their offsets and starts are the record's.
// TMerakOrbis creates one when it opens such a model.
#pragma once

#include <string>
#include <string_view>

#include "eeprom/HaldenParameters.h"
#include "eeprom/TTivanMerakEeprom.h"

class TTivanMerakHaldenEeprom final : public TTivanMerakEeprom {
 public:
  /// What the controller calls its turret while it is none of the numbered ones; the record passes it on.
  static constexpr int kOtherTurret = 99;

  explicit TTivanMerakHaldenEeprom(corvane::IMerakEepromAccess& controller);

  /// A parameter that cannot be read, or that holds no number where one belongs, keeps the value held, which stays out
  /// of Write, as does a text that is cut.
  MerakResult Read() override;
  /// What Read reads, in the same order. The record counts as saved when every parameter sent arrived. A text with a
  /// line end in it cannot travel.
  MerakResult Write() override;
  /// Keeps and writes one value after the other, up to the first failure, whose code it answers.
  MerakResult WriteOpticalParamsToEEPROM(float focalLength, float angularDeviation, float focalTilt) override;
  /// 0: these models always position themselves.
  unsigned char GetWaveToStepsEnable() override { return 0; }
  MerakResult SetWaveToStepsEnable(unsigned char enable) override;
  /// Asks the controller; 0 when it does not answer.
  float GetCurrentWavelength() override;
  /// Nothing: the controller knows where it stands.
  MerakResult SetCurrentWavelength(float wavelength) override;
  /// Writes the offsets of all gratings and of the detectors, then has the controller approach its wavelength anew,
  /// unless it fell silent. The code of the first failure.
  MerakResult WriteOffsets() override;
  /// kIoError when the controller answers without a list.
  MerakResult LoadActiveTurretGratings() override;
  /// The lines of the controller's grating list; 0 when it cannot be had.
  int GetActiveTurretNoOfGratings() override;
  /// From the controller's grating list.
  std::string GetActiveTurretGratingBlaze(int grating) override;
  float GetActiveTurretGratingLines(int grating) override;
  /// Without an active turret (-1) those of the turret whose number the record keeps; 0 for kOtherTurret.
  int GetActiveTurretGratingStart(int grating) override;
  int GetActiveTurretGratingOffset(int grating) override;
  MerakResult SetActiveTurretGratingOffset(int grating, int offset) override;
  void GetAdjustedDetectorIndex(int* entrance) override;
  MerakResult StoreActiveTurret() override;
  /// Not with a line end in it: it could not travel.
  bool CanStore(std::string_view text) const override;
  int GetMaxNoGratings() const override { return corvane::MerakEepromRecord::kGratings; }
  int GetMaxNoInputs() const override { return 1; }

 private:
  /// The parameter's text without the line ends around it, and whether it came whole. kIoError when the controller
  /// answers without one.
  MerakResult GetString(int number, std::string& text, bool& whole);
  /// kInvalidParameter for a text with a line end, which would be two lines to the controller.
  MerakResult SetString(int number, const std::string& text);
  /// Until they arrive: a silence leaves the values behind it unread as well. With the active turret, which no
  /// parameter holds.
  void SetAllUnread();
  bool ReadParameter(const corvane::HaldenParameter& parameter);
  /// Leaves out what was not read whole.
  bool WriteParameter(const corvane::HaldenParameter& parameter);
  bool ReadNumberOfTurrets();
  void ReadActiveTurret();
  int TurretInUse();
};
