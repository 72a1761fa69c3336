#include "controller/CommandSet.h"

#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <vector>

namespace corvane::sim {
namespace {

constexpr const char* kIllegalCommand = "E01";
constexpr const char* kMemoryError = "E02";
constexpr const char* kBadParameter = "E03";
constexpr const char* kNoFilterWheel = "E05";
constexpr const char* kNoSlit = "E09";
constexpr const char* kPositionUnknown = "E10";
constexpr const char* kNotFitted = "E12";

/// The first firmware that knows slit modes.
constexpr double kSlitModeFirmware = 2.7;

Reply Done(double milliseconds = 0) {
  return {Reply::Kind::kDone, "", milliseconds};
}
Reply Value(std::string text) {
  return {Reply::Kind::kValue, std::move(text), 0};
}
Reply Value(int number) {
  return Value(std::to_string(number));
}
Reply Error(const char* word) {
  return {Reply::Kind::kError, word, 0};
}
Reply DoneOr(bool done, const char* word, double milliseconds) {
  return done ? Done(milliseconds) : Error(word);
}

std::string_view Trim(std::string_view text) {
  const auto first = text.find_first_not_of(' ');
  return first == std::string_view::npos ? "" : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

/// Parameters of a line: texts between commas, without surrounding blanks. None for an empty text.
class Parameters {
 public:
  explicit Parameters(std::string_view text) : mText(Trim(text)) {
    if (mText.empty()) {
      return;
    }
    for (std::size_t start = 0; start <= mText.size();) {
      const std::size_t comma = std::min(mText.find(',', start), mText.size());
      mParts.push_back(Trim(mText.substr(start, comma - start)));
      start = comma + 1;
    }
  }

  std::size_t Count() const { return mParts.size(); }
  std::string_view Text() const { return mText; }
  std::string_view Part(std::size_t index) const { return index < mParts.size() ? mParts[index] : ""; }

  template <typename Number>
  std::optional<Number> Get(std::size_t index) const {
    const std::string_view part = Part(index);
    Number number{};
    const auto [end, error] = std::from_chars(part.data(), part.data() + part.size(), number);
    const bool whole = error == std::errc{} && end == part.data() + part.size();
    return whole ? std::optional(number) : std::nullopt;
  }
  std::optional<int> Int(std::size_t index) const { return Get<int>(index); }
  /// The only parameter.
  std::optional<int> OnlyInt() const { return Count() == 1 ? Int(0) : std::nullopt; }

 private:
  std::string_view mText;
  std::vector<std::string_view> mParts;
};

/// Decimal digits as printf's %.Nf gives them, whatever the locale.
std::string Fixed(double value, int decimals) {
  std::array<char, 400> buffer{};
  const auto [end, error] =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, decimals);
  std::string text(buffer.data(), error == std::errc{} ? end : buffer.data());
  const bool isNegativeZero = text.starts_with('-') && text.find_first_not_of("-0.") == std::string::npos;
  return isNegativeZero ? text.substr(1) : text;
}

double FirmwareNumber(const Instrument& instrument) {
  const std::string& text = instrument.Description().firmware;
  double number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

const MotionTimes& Motion(const Instrument& instrument) {
  return instrument.Description().motion;
}
const Parts& PartsOf(const Instrument& instrument) {
  return instrument.Description().parts;
}

/// How the controller numbers the slits.
std::optional<SlitIndex> SlitOf(const Instrument& instrument, std::optional<int> number) {
  constexpr std::array<SlitIndex, kSlits> kByNumber{kSlitSI1, kSlitSO2, kSlitSO1, kSlitSI2};
  if (!number || *number < 1 || *number > kSlits) {
    return std::nullopt;
  }
  const SlitIndex slit = kByNumber[static_cast<std::size_t>(*number) - 1];
  return PartsOf(instrument).slits[slit].fitted ? std::optional(slit) : std::nullopt;
}

Reply Hello(Instrument&, const Parameters&) {
  return Done();
}

Reply SystemInfo(Instrument& instrument, const Parameters&) {
  const InstrumentDescription& is = instrument.Description();
  return Value(is.maker + "," + is.designation + "," + is.serial + "," + is.board + ",V" + is.firmware);
}

Reply ReadMemory(Instrument& instrument, const Parameters& parameters) {
  const auto address = parameters.OnlyInt();
  if (!address) {
    return Error(kBadParameter);
  }
  return EepromImage::IsValid(*address) ? Value(instrument.Memory().Byte(*address)) : Error(kMemoryError);
}

Reply WriteMemory(Instrument& instrument, const Parameters& parameters) {
  const auto address = parameters.Int(0);
  const auto value = parameters.Int(1);
  if (!address || !value || parameters.Count() != 2) {
    return Error(kBadParameter);
  }
  if (!EepromImage::IsValid(*address)) {
    return Error(kMemoryError);
  }
  return DoneOr(instrument.WriteMemory(*address, *value), kBadParameter, 0);
}

Reply ReadPosition(Instrument& instrument, const Parameters&) {
  const auto wavelength = instrument.Wavelength();
  return wavelength ? Value(Fixed(*wavelength, 4)) : Error(kPositionUnknown);
}

Reply MoveTo(Instrument& instrument, const Parameters& parameters) {
  const auto wavelength = parameters.Get<double>(0);
  const bool done = wavelength && parameters.Count() == 1 && instrument.MoveTo(*wavelength);
  return DoneOr(done, kBadParameter, Motion(instrument).wavelength);
}

Reply ReadGrating(Instrument& instrument, const Parameters&) {
  return Value(instrument.Stands().grating);
}

Reply SelectGrating(Instrument& instrument, const Parameters& parameters) {
  const auto grating = parameters.OnlyInt();
  return DoneOr(grating && instrument.SelectGrating(*grating), kBadParameter, Motion(instrument).grating);
}

Reply GratingHome(Instrument& instrument, const Parameters&) {
  return DoneOr(instrument.GratingHome(), kPositionUnknown, Motion(instrument).home);
}

const Turret* MountedTurret(const Record& record) {
  const auto index = static_cast<std::size_t>(record.activeTurret);
  return index < record.turrets.size() ? &record.turrets[index] : nullptr;
}

/// The count, then lines, blaze and start of each grating.
Reply ListGratings(Instrument& instrument, const Parameters&) {
  const Record record = instrument.FirmwareRecord();
  const Turret* const turret = MountedTurret(record);
  std::string text = std::to_string(turret == nullptr ? 0 : turret->gratings.size());
  for (const Grating& grating : turret == nullptr ? std::vector<Grating>{} : turret->gratings) {
    text += "," + Fixed(grating.lines, 2) + "," + grating.blaze + "," + std::to_string(grating.start);
  }
  return Value(text);
}

/// The number of the turret, then number, lines, start and offset of each of three gratings.
Reply MemoryInfo(Instrument& instrument, const Parameters&) {
  const Record record = instrument.FirmwareRecord();
  const Turret* const turret = MountedTurret(record);
  std::string text = std::to_string(record.activeTurret + 1);
  for (std::size_t g = 0; g < kMaxGratings; ++g) {
    const bool mounted = turret != nullptr && g < turret->gratings.size();
    const Grating grating = mounted ? turret->gratings[g] : Grating{0.0F, "", 0, 0};
    text += "," + std::to_string(g + 1) + "," + Fixed(grating.lines, 2) + "," + std::to_string(grating.start) + "," +
            std::to_string(grating.offset);
  }
  return Value(text);
}

Reply ReadStep(Instrument& instrument, const Parameters&) {
  return Value(instrument.Step());
}

Reply StepTo(Instrument& instrument, const Parameters& parameters) {
  const auto step = parameters.OnlyInt();
  return DoneOr(step && instrument.StepTo(*step), kBadParameter, Motion(instrument).wavelength);
}

Reply ReadTotalSteps(Instrument& instrument, const Parameters&) {
  return Value(instrument.TotalSteps());
}

// Without a flipper mirror the light goes straight: the query has an answer, the command has nothing to move.
Reply ReadEntrancePort(Instrument& instrument, const Parameters&) {
  return Value(instrument.Stands().entrancePort);
}
Reply ReadExitPort(Instrument& instrument, const Parameters&) {
  return Value(instrument.Stands().exitPort);
}

Reply SetEntrancePort(Instrument& instrument, const Parameters& parameters) {
  if (!PartsOf(instrument).entranceFlipper) {
    return Error(kNotFitted);
  }
  const auto port = parameters.OnlyInt();
  return DoneOr(port && instrument.SetEntrancePort(*port), kBadParameter, Motion(instrument).flipper);
}

Reply SetExitPort(Instrument& instrument, const Parameters& parameters) {
  if (!PartsOf(instrument).exitFlipper) {
    return Error(kNotFitted);
  }
  const auto port = parameters.OnlyInt();
  return DoneOr(port && instrument.SetExitPort(*port), kBadParameter, Motion(instrument).flipper);
}

Reply ListPeripherals(Instrument& instrument, const Parameters&) {
  constexpr std::array<const char*, kSlits> kSlitTags{"SI1", "SI2", "SO1", "SO2"};
  const Parts& parts = PartsOf(instrument);
  std::vector<std::string> names;
  for (std::size_t i = 0; i < kSlits; ++i) {
    if (parts.slits[i].fitted) {
      names.emplace_back(kSlitTags[i]);
    }
  }
  // The direct ports are always there; the side ports come with the mirrors.
  names.emplace_back("IPD");
  if (parts.entranceFlipper) {
    names.emplace_back("IPS");
  }
  names.emplace_back("EPD");
  if (parts.exitFlipper) {
    names.emplace_back("EPS");
  }
  if (parts.filterWheel) {
    names.emplace_back("FIL");
  }
  if (parts.focusMirror) {
    names.emplace_back("FOC");
  }
  names.insert(names.end(), parts.others.begin(), parts.others.end());
  std::string text;
  for (const std::string& name : names) {
    text += (text.empty() ? "" : ",") + name;
  }
  return Value(text);
}

/// What is fitted does not change by being told: the list is accepted and the parts stay.
Reply SetPeripherals(Instrument&, const Parameters& parameters) {
  return DoneOr(parameters.Count() > 0, kBadParameter, 0);
}

Reply ReadFilter(Instrument& instrument, const Parameters&) {
  return PartsOf(instrument).filterWheel ? Value(instrument.Stands().filter) : Error(kNoFilterWheel);
}

Reply SetFilter(Instrument& instrument, const Parameters& parameters) {
  if (!PartsOf(instrument).filterWheel) {
    return Error(kNoFilterWheel);
  }
  const auto filter = parameters.OnlyInt();
  return DoneOr(filter && instrument.SetFilter(*filter), kBadParameter, Motion(instrument).filter);
}

Reply FilterHome(Instrument& instrument, const Parameters&) {
  if (!PartsOf(instrument).filterWheel) {
    return Error(kNoFilterWheel);
  }
  return DoneOr(instrument.SetFilter(1), kBadParameter, Motion(instrument).home);
}

Reply ReadFilterMode(Instrument& instrument, const Parameters&) {
  return PartsOf(instrument).filterWheel ? Value(instrument.Stands().filterMode) : Error(kNoFilterWheel);
}

Reply SetFilterMode(Instrument& instrument, const Parameters& parameters) {
  if (!PartsOf(instrument).filterWheel) {
    return Error(kNoFilterWheel);
  }
  if (parameters.Text().empty()) {
    return Error(kBadParameter);
  }
  instrument.SetFilterMode(std::string(parameters.Text()));
  return Done();
}

Reply ReadFocus(Instrument& instrument, const Parameters&) {
  return PartsOf(instrument).focusMirror ? Value(instrument.Stands().focus) : Error(kNotFitted);
}

Reply ReadFocusTotalSteps(Instrument& instrument, const Parameters&) {
  const Parts& parts = PartsOf(instrument);
  return parts.focusMirror ? Value(parts.focusTotalSteps) : Error(kNotFitted);
}

/// Direction (1: toward zero, 0: away from it) and magnitude.
Reply MoveFocus(Instrument& instrument, const Parameters& parameters) {
  if (!PartsOf(instrument).focusMirror) {
    return Error(kNotFitted);
  }
  const auto direction = parameters.Int(0);
  const auto magnitude = parameters.Get<long long>(1);
  const bool valid = parameters.Count() == 2 && direction && (*direction == 0 || *direction == 1) && magnitude &&
                     *magnitude >= 0 && *magnitude <= PartsOf(instrument).focusTotalSteps;
  const bool done = valid && instrument.MoveFocus(*direction == 1 ? -*magnitude : *magnitude);
  return DoneOr(done, kBadParameter, Motion(instrument).focus);
}

Reply FocusHome(Instrument& instrument, const Parameters&) {
  if (!PartsOf(instrument).focusMirror) {
    return Error(kNotFitted);
  }
  instrument.FocusHome();
  return Done(Motion(instrument).home);
}

Reply ReadSlitMode(Instrument& instrument, const Parameters& parameters) {
  if (FirmwareNumber(instrument) < kSlitModeFirmware) {
    return Error(kIllegalCommand);
  }
  const auto slit = SlitOf(instrument, parameters.OnlyInt());
  return slit ? Value(instrument.Stands().slitModes[*slit]) : Error(kNoSlit);
}

Reply SetSlitMode(Instrument& instrument, const Parameters& parameters) {
  if (FirmwareNumber(instrument) < kSlitModeFirmware) {
    return Error(kIllegalCommand);
  }
  const auto slit = SlitOf(instrument, parameters.Int(0));
  if (!slit) {
    return Error(kNoSlit);
  }
  if (parameters.Count() != 2 || parameters.Part(1).empty()) {
    return Error(kBadParameter);
  }
  instrument.SetSlitMode(*slit, std::string(parameters.Part(1)));
  return Done();
}

Reply ReadSlitWidth(Instrument& instrument, const Parameters& parameters) {
  const auto slit = SlitOf(instrument, parameters.OnlyInt());
  return slit ? Value(instrument.Stands().slitWidths[*slit]) : Error(kNoSlit);
}

Reply SetSlitWidth(Instrument& instrument, const Parameters& parameters) {
  const auto slit = SlitOf(instrument, parameters.Int(0));
  if (!slit) {
    return Error(kNoSlit);
  }
  const auto width = parameters.Int(1);
  const bool done = parameters.Count() == 2 && width && instrument.SetSlitWidth(*slit, *width);
  return DoneOr(done, kBadParameter, Motion(instrument).slit);
}

Reply SlitHome(Instrument& instrument, const Parameters& parameters) {
  const auto slit = SlitOf(instrument, parameters.OnlyInt());
  if (!slit) {
    return Error(kNoSlit);
  }
  instrument.SlitHome(*slit);
  return Done(Motion(instrument).home);
}

/// Output lines in the upper four bits, input lines in the lower.
Reply ReadPort(Instrument& instrument, const Parameters&) {
  return Value(instrument.Stands().portOutputs * 16 + PartsOf(instrument).portInputs);
}

Reply WritePort(Instrument& instrument, const Parameters& parameters) {
  const auto lines = parameters.OnlyInt();
  return DoneOr(lines && instrument.SetPortOutputs(*lines), kBadParameter, 0);
}

Reply ReadTurret(Instrument& instrument, const Parameters&) {
  return Value(instrument.FirmwareRecord().activeTurret + 1);
}

Reply SetTurret(Instrument& instrument, const Parameters& parameters) {
  const auto turret = parameters.OnlyInt();
  return DoneOr(turret && instrument.SetActiveTurret(*turret), kBadParameter, 0);
}

Reply ReadShutterMode(Instrument& instrument, const Parameters&) {
  return Value(instrument.Stands().shutterMode);
}

Reply SetShutterMode(Instrument& instrument, const Parameters& parameters) {
  const auto mode = parameters.OnlyInt();
  return DoneOr(mode && instrument.SetShutterMode(*mode), kBadParameter, 0);
}

using Action = Reply (*)(Instrument&, const Parameters&);

struct CommandWord {
  std::string_view word;
  Action query;
  Action command;
};

// The words of the SX family ("CONFIG_SYSTEM_DATA") are not among them: to an LX or MX they are illegal.
constexpr CommandWord kWords[] = {
    {"Hello", nullptr, Hello},
    {"GOODBYE", nullptr, Hello},
    {"SYSTEMINFO", SystemInfo, nullptr},
    {"SAVEINFO", ReadMemory, WriteMemory},
    {"POSITION", ReadPosition, nullptr},
    {"MOVETO", nullptr, MoveTo},
    {"GRATING", ReadGrating, SelectGrating},
    {"GRATINGS", ListGratings, nullptr},
    {"GRATINGHOME", nullptr, GratingHome},
    {"Step", ReadStep, nullptr},
    {"Step_abs", nullptr, StepTo},
    {"TOTALSTEPS", ReadTotalSteps, nullptr},
    {"EEPROMINFO", MemoryInfo, nullptr},
    {"ENTRANCEPORT", ReadEntrancePort, SetEntrancePort},
    {"EXITPORT", ReadExitPort, SetExitPort},
    {"PERIPHERAL", ListPeripherals, SetPeripherals},
    {"FILTER", ReadFilter, SetFilter},
    {"FILTERHOME", nullptr, FilterHome},
    {"FILTER_MODE", ReadFilterMode, SetFilterMode},
    {"FOCUS", ReadFocus, nullptr},
    {"FOCUS_TOTALSTEPS", ReadFocusTotalSteps, nullptr},
    {"MOVE_FOCUS", nullptr, MoveFocus},
    {"FOCUS_HOME", nullptr, FocusHome},
    {"SLIT_MODE", ReadSlitMode, SetSlitMode},
    {"SLIT_WIDTH", ReadSlitWidth, SetSlitWidth},
    {"SLITHOME", nullptr, SlitHome},
    {"PORT_OUTPUT", nullptr, WritePort},
    {"PORT_INPUT", ReadPort, nullptr},
    {"TURRET", ReadTurret, SetTurret},
    {"SHUTTER_MODE", ReadShutterMode, SetShutterMode},
};

}  // namespace

std::string_view WordOf(std::string_view line) {
  return line.substr(0, line.find(' '));
}

Reply Execute(Instrument& instrument, std::string_view line) {
  std::string_view word = WordOf(line);
  const Parameters parameters(line.substr(word.size()));
  const bool isQuery = word.ends_with('?');
  if (isQuery) {
    word.remove_suffix(1);
  }
  for (const CommandWord& entry : kWords) {
    if (entry.word == word) {
      const Action action = isQuery ? entry.query : entry.command;
      return action == nullptr ? Error(kIllegalCommand) : action(instrument, parameters);
    }
  }
  return Error(kIllegalCommand);
}

}  // namespace corvane::sim
