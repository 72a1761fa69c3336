// One motion controller: opens it, finds out the instrument's model, keeps the instrument's EEPROM record and offers
// one operation per command word (MerakWords.h). The components of controller instruments and the EEPROM record use
// it; none of them builds a command line. It takes no locks: callers serialise the calls of one controller.
//
// Results are controller codes (core/MerakResult.h). While the controller is not open every operation answers
// kDeviceNotOpen and sends nothing, except where its comment says otherwise. A reply whose value cannot be read leaves
// the output as it was, and so does a failed query.
#pragma once

#include <array>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "controller/MerakRecordOperations.h"
#include "controller/TMerakOrbisCache.h"
#include "core/MerakResult.h"
#include "eeprom/IMerakEepromAccess.h"

class TI2CInterface;
class TMerakOrbisCom;

/// The operations on the EEPROM record are those of MerakRecordOperations. The record in turn knows its controller as
/// IMerakEepromAccess alone.
class TMerakOrbis : public corvane::MerakRecordOperations, private corvane::IMerakEepromAccess {
 public:
  /// The five fields of the controller's system information, in the order of the reply.
  struct SystemInfo {
    std::string manufacturer;
    /// Holds the model code: "LX", "MX", "SX", ...
    std::string model;
    std::string serialNumber;
    /// Passed on; nothing in this library reads it.
    std::string fourth;
    /// "V" and a number.
    std::string firmware;
  };

  /// One listed peripheral: at most 8 characters, terminated only when shorter. Read it with PeripheralText.
  using PeripheralName = std::array<char, 8>;
  /// The text of a peripheral name, at most 8 characters.
  static std::string_view PeripheralText(const PeripheralName& name);
  /// Number of peripherals that a caller asks for.
  static constexpr int kMaxPeripherals = 16;

  /// Number of "EEPROMINFO" groups.
  static constexpr int kInfoGroups = 3;
  /// Longest slit mode text; what the controller sends beyond it is cut.
  static constexpr std::size_t kMaxSlitModeLength = 35;
  /// Longest field of the char* form of GetSystemInfoEx, whose buffers hold one character more.
  static constexpr std::size_t kMaxSystemInfoLength = 79;

  /// What a model code stands for: 0 until the controller has been identified, then one of the others.
  enum SystemType { kTypeUnknown = 0, kTypeLxMx = 1, kTypeSx = 2, kTypeOther = 3 };

  /// The bus is borrowed and may be null; it must outlive this object.
  explicit TMerakOrbis(TI2CInterface* i2c);
  /// Closes the controller. What Close could not release is dropped.
  ~TMerakOrbis() override;
  TMerakOrbis(const TMerakOrbis&) = delete;
  TMerakOrbis& operator=(const TMerakOrbis&) = delete;

  // Finding and opening. None of these asks for an open controller.

  /// Every USB bridge in the bridge's own list, whatever is behind it, plus 1 for a controller on the I2C bus. On
  /// failure count keeps its value.
  virtual MerakResult GetDeviceCount(int& count);
  /// True when a controller answers on the I2C bus; asks nobody else.
  virtual bool ProbeI2C();
  /// Opens the controller (index 0: the one on the I2C bus when there is one, else the first bridge; other indices: the
  /// bridge at that place of the bridge's list) and identifies its model. What was open before is dropped without a
  /// flush of the EEPROM record. The time-outs are the long ones (100 s read, 1 s write). kUnknownError: the controller
  /// answers but could not be identified; it stays open, without an EEPROM record. kSuccess does not promise an open
  /// controller: one that does not answer the greeting is closed again with it all the same; ask IsOpen.
  virtual MerakResult Open(int index);
  /// The same with the short time-outs (100 ms each), for probing: a silent device costs about two seconds, one
  /// that talks without end about ten.
  virtual MerakResult OpenShortTimeouts(int index);
  /// Ends the short time-outs of OpenShortTimeouts.
  MerakResult RestoreLongTimeouts();
  /// Writes the EEPROM record if it holds unsaved values, sends "GOODBYE" (type 2 only) and closes. A controller that
  /// is silent already gets the short time-outs for this, and costs about a second for each. On failure the connection
  /// is kept.
  MerakResult Close();
  bool IsOpen() const { return mCom != nullptr; }
  /// Trace lines of every exchange to OutputDebugString, for tools and tests; off unless asked for. Lasts over opens.
  void SetTrace(bool trace);
  /// True when the most recent exchange ended without a complete reply (silence, or text without end): each further
  /// one would cost another time-out. False again after the next reply. Usable while closed: false.
  bool IsSilent() const override;

  /// Asks the controller for its system information and derives the type; kTypeUnknown when that fails. The type found
  /// at open stays what it was.
  int GetSystemType();
  /// The text of a result code; "Unknown Error" for a code without one. Usable while closed.
  static const char* GetErrorString(int code);

  // System information.

  /// "SYSTEMINFO": the whole value text.
  MerakResult GetSystemInfo(std::string& text);
  /// "SYSTEMINFO": the five fields. All fields and the firmware version are cleared first, also when the controller is
  /// not open; a field that the reply lacks stays empty. Fields are as long as the controller sent them.
  MerakResult GetSystemInfoEx(SystemInfo& info);
  /// The answer to the latest of these that was answered. Usable while closed.
  const SystemInfo& LatestSystemInfo() const { return mLatestInfo; }
  /// GetSystemInfoEx into buffers of kMaxSystemInfoLength + 1 bytes each, cut to fit.
  MerakResult GetSystemInfoEx(char* manufacturer, char* model, char* third, char* fourth, char* firmware);
  /// Number behind the "V" of the last system information read; 0 before and when there was none. Usable while closed.
  float GetFirmwareVersion() const { return mFirmwareVersion; }

  // Wavelength, gratings, turret.

  /// "POSITION": centre wavelength in nm.
  MerakResult Position(float& wavelength) override;
  /// "MOVETO" with four decimals, nm.
  MerakResult MoveTo(float wavelength);
  /// "GRATINGHOME".
  MerakResult GratingHome();
  /// "POSITION", then "MOVETO" the wavelength just read. A failed read is returned without a move, and a reply that
  /// holds no wavelength gives kIoError.
  MerakResult ResetPosition() override;
  /// "GRATING" query, 1-based; answered without an exchange while a grating is remembered. The memory outlives close.
  /// kIoError for a reply that names no grating; nothing is remembered then.
  MerakResult GetGrating(int& grating);
  /// "GRATING" command, 1-based; on success the grating is remembered.
  MerakResult Grating(int grating);
  /// "Step" query and "Step_abs" command: turret motor position in controller steps, 0 to total - 1.
  MerakResult GetStep(int& step);
  MerakResult StepAbs(int step);
  /// "TOTALSTEPS": motor steps of one turret revolution. A number above INT_MAX is taken as 0.
  MerakResult GetTotalSteps(unsigned long& steps);
  /// "GRATINGS": the list as the controller prints it; cached for 3 s where the cache is on (type 2), over a
  /// change of the turret as well.
  MerakResult GetRawGratings(std::string& text) override;
  /// The same list split up: lines per mm and blaze text for each grating the EEPROM record has room for
  /// (GetMaxNoGratings); 0 and "" where the list is short. kDeviceNotOpen without an EEPROM record.
  MerakResult GetGratings(std::vector<float>& lines, std::vector<std::string>& blazes) override;
  /// "TURRET", 1-based as the controller counts.
  MerakResult GetTurret(int& turret) override;
  MerakResult SetTurret(int turret) override;
  /// "EEPROMINFO": three groups of three values. kEepromError when the reply is short; what was read until then is
  /// stored.
  MerakResult GetEepromInfo(std::array<int, kInfoGroups>& first, std::array<float, kInfoGroups>& second,
                            std::array<int, kInfoGroups>& third);

  // Ports. 0 and 1 as the controller counts.

  /// "EXITPORT".
  MerakResult GetExitPort(int& port);
  MerakResult SetExitPort(int port);
  /// "ENTRANCEPORT".
  MerakResult GetEntrancePort(int& port);
  MerakResult SetEntrancePort(int port);

  // Peripherals.

  /// "PERIPHERAL": the fitted parts' tags. count is the room in names on entry and the number filled on return. Cached
  /// where the cache is on: from the opening of a type 2 until the next one, whatever is opened in between.
  MerakResult GetPeripherals(PeripheralName* names, int& count);
  /// "PERIPHERAL" command with the names joined by ",". The cache takes the new list before the controller accepts it.
  MerakResult SetPeripherals(const std::vector<std::string>& names);
  /// How many of the wanted tags are covered by the peripheral list: a tag counts once when any listed name occurs
  /// inside it, so a listed "SI" covers both "SI1" and "SI2". 0 when the list cannot be had.
  int CountPeripherals(std::initializer_list<std::string_view> wanted);
  /// The other way round: found when the text occurs inside any listed name.
  MerakResult FindInPeripheralNames(std::string_view text, bool& found);
  /// Motorised input slits ("SI1", "SI2") and output slits ("SO1", "SO2") in the peripheral list.
  int GetInputSlitCount();
  int GetOutputSlitCount();
  /// True for models of type 2. Usable while closed.
  bool InternalShutterAvailable() const { return mSystemType == kTypeSx; }

  // Filter wheel, 1-based as the controller counts.

  /// "FILTER".
  MerakResult GetFilter(int& filter);
  MerakResult SetFilter(int filter);
  /// "FILTERHOME".
  MerakResult FilterHome();
  /// "FILTER_MODE".
  MerakResult GetFilterMode(std::string& mode);
  MerakResult SetFilterMode(const std::string& mode);

  // Focus mirror, motor steps.

  /// "FOCUS": position.
  MerakResult GetMirrorFocus(int& position);
  /// "FOCUS_TOTALSTEPS": largest position.
  MerakResult GetFocusMirrorMaxSteps(int& steps);
  /// "MOVE_FOCUS": a relative move; 0 sends nothing and succeeds.
  MerakResult SetMirrorFocus(int steps);
  /// "FOCUS_HOME".
  MerakResult FocusMirrorHome();

  // Slits, 1 to 4 as the controller counts, widths in micrometres.

  /// "SLIT_MODE"; kNotSupported without an exchange on firmware below 2.7. The mode read is the first word of the
  /// reply, at most kMaxSlitModeLength characters.
  MerakResult GetSlitMode(int slit, std::string& mode);
  MerakResult SetSlitMode(int slit, const std::string& mode);
  /// "SLIT_WIDTH".
  MerakResult GetSlitWidth(int slit, int& width);
  MerakResult SetSlitWidth(int slit, int width);
  /// "SLITHOME".
  MerakResult SlitHome(int slit);

  // Accessory lines and shutter.

  /// "PORT_OUTPUT" and "PORT_INPUT": bit masks.
  MerakResult SetPortState(int state);
  MerakResult GetPortState(int& state);
  /// "SHUTTER_MODE".
  MerakResult GetShutterMode(int& mode);
  MerakResult SetShutterMode(int mode);

  // Anything else.

  /// One raw line; the whole reply with a carriage return appended, also when the reply was an error.
  MerakResult RawCommand(const std::string& text, std::string& reply);
  /// "CONFIG_SYSTEM_DATA": one numbered text parameter (type 2).
  MerakResult GetConfigSystemData(int index, std::string& value) override;
  MerakResult SetConfigSystemData(int index, const std::string& value) override;

  // The byte-addressed EEPROM, addresses from 1, one "SAVEINFO" exchange a byte.

  MerakResult GetSaveInfo(int address, int& value);
  MerakResult SaveInfo(int address, int value);
  /// A reply without a number, or with one that no byte can be, is a failed read: kIoError.
  MerakResult ReadEepromByte(int address, unsigned char& value) override;
  MerakResult WriteEepromByte(int address, unsigned char value) override;
  /// Four bytes, least significant first, ending at the first failing byte. An int takes each byte as it arrives, the
  /// failing one as the previous one was; a float is stored only when all four arrived.
  MerakResult ReadEepromInt32(int address, int& value);
  MerakResult ReadEepromFloat(int address, float& value);
  MerakResult WriteEepromInt32(int address, int value);
  MerakResult WriteEepromFloat(int address, float value);
  /// Splits "major.minor"; a missing or empty part leaves its output as it was (start both at 0). Usable while closed.
  static void GetEepromStructureVersion(const std::string& text, int* major, int* minor);

 protected:
  /// Drops connection and record without a flush or farewell.
  void DropConnection();
  TI2CInterface* I2CInterface() const { return mI2C; }

 private:
  MerakResult DoOpen(int index, bool shortTimeouts);
  /// One exchange; results are translated, closed gives kDeviceNotOpen. A query stores a value only when it succeeds.
  MerakResult Command(const char* word, const std::string& params = {});
  MerakResult Query(const char* word, const std::string& params, std::string& value);
  MerakResult QueryInt(const char* word, const std::string& params, int& value);
  bool SlitModeSupported() const;
  MerakResult ReadPeripheralNames(std::vector<std::string>& names);

  int mSystemType = kTypeUnknown;
  bool mTrace = false;
  std::unique_ptr<TMerakOrbisCom> mCom;
  TMerakOrbisCache mCache;
  SystemInfo mLatestInfo;
  float mFirmwareVersion = 0.0F;
  int mGrating = kNoGrating;
  TI2CInterface* mI2C;

  static constexpr int kNoGrating = -1;
  static constexpr int kFirstGrating = 1;
};
