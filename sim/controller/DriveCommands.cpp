#include <vector>

#include "controller/CommandWords.h"
#include "model/FixedDecimals.h"

namespace corvane::sim {
namespace {

Reply Hello(ControllerInstrument&, const LineParameters&) {
  return Done();
}

Reply SystemInfo(ControllerInstrument& instrument, const LineParameters&) {
  const InstrumentDescription& is = instrument.Description();
  return Value(is.maker + "," + is.designation + "," + is.serial + "," + is.board + ",V" + is.firmware);
}

Reply ReadMemory(ControllerInstrument& instrument, const LineParameters& parameters) {
  const auto address = parameters.OnlyInt();
  if (!address) {
    return Error(kBadParameter);
  }
  return EepromImage::IsValid(*address) ? Value(instrument.Memory().Byte(*address)) : Error(kMemoryError);
}

Reply WriteMemory(ControllerInstrument& instrument, const LineParameters& parameters) {
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

Reply ReadParameter(ControllerInstrument& instrument, const LineParameters& parameters) {
  const auto number = parameters.OnlyInt();
  if (!number) {
    return Error(kBadParameter);
  }
  return ParameterMemory::IsValid(*number) ? Value(instrument.Parameters().Text(*number)) : Error(kMemoryError);
}

/// The text is everything behind the comma, further commas too; an empty one clears the parameter.
Reply WriteParameter(ControllerInstrument& instrument, const LineParameters& parameters) {
  const auto number = parameters.Int(0);
  const auto text = parameters.Rest();
  if (!number || !text) {
    return Error(kBadParameter);
  }
  if (!ParameterMemory::IsValid(*number)) {
    return Error(kMemoryError);
  }
  instrument.WriteParameter(*number, *text);
  return Done();
}

Reply ReadPosition(ControllerInstrument& instrument, const LineParameters&) {
  const auto wavelength = instrument.Wavelength();
  return wavelength ? Value(Fixed(*wavelength, 4)) : Error(kPositionUnknown);
}

Reply MoveTo(ControllerInstrument& instrument, const LineParameters& parameters) {
  const auto wavelength = parameters.Get<double>(0);
  const bool done = wavelength && parameters.Count() == 1 && instrument.MoveTo(*wavelength);
  return DoneOr(done, kBadParameter, Motion(instrument).wavelength);
}

Reply ReadGrating(ControllerInstrument& instrument, const LineParameters&) {
  return Value(instrument.Stands().grating);
}

Reply SelectGrating(ControllerInstrument& instrument, const LineParameters& parameters) {
  const auto grating = parameters.OnlyInt();
  return DoneOr(grating && instrument.SelectGrating(*grating), kBadParameter, Motion(instrument).grating);
}

Reply GratingHome(ControllerInstrument& instrument, const LineParameters&) {
  return DoneOr(instrument.GratingHome(), kPositionUnknown, Motion(instrument).home);
}

const Turret* MountedTurret(const Record& record) {
  const auto index = static_cast<std::size_t>(record.activeTurret);
  return index < record.turrets.size() ? &record.turrets[index] : nullptr;
}

/// A line for each grating: its number, lines and blaze.
Reply ListGratings(ControllerInstrument& instrument, const LineParameters&) {
  const Record record = instrument.FirmwareRecord();
  const Turret* const turret = MountedTurret(record);
  std::string text;
  int number = 0;
  for (const Grating& grating : turret == nullptr ? std::vector<Grating>{} : turret->gratings) {
    text += (text.empty() ? "" : "\n") + std::to_string(++number) + "," + Fixed(grating.lines, 2) + "," + grating.blaze;
  }
  return Value(text);
}

/// The number of the turret, then number, lines, start and offset of each of three gratings.
Reply MemoryInfo(ControllerInstrument& instrument, const LineParameters&) {
  const Record record = instrument.FirmwareRecord();
  const Turret* const turret = MountedTurret(record);
  constexpr std::size_t kGroups = 3;
  std::string text = std::to_string(instrument.MountedTurret());
  for (std::size_t g = 0; g < kGroups; ++g) {
    const bool mounted = turret != nullptr && g < turret->gratings.size();
    const Grating grating = mounted ? turret->gratings[g] : Grating{0.0F, "", 0, 0};
    text += "," + std::to_string(g + 1) + "," + Fixed(grating.lines, 2) + "," + std::to_string(grating.start) + "," +
            std::to_string(grating.offset);
  }
  return Value(text);
}

Reply ReadStep(ControllerInstrument& instrument, const LineParameters&) {
  return Value(instrument.Step());
}

Reply StepTo(ControllerInstrument& instrument, const LineParameters& parameters) {
  const auto step = parameters.OnlyInt();
  return DoneOr(step && instrument.StepTo(*step), kBadParameter, Motion(instrument).wavelength);
}

Reply ReadTotalSteps(ControllerInstrument& instrument, const LineParameters&) {
  return Value(instrument.TotalSteps());
}

Reply ReadTurret(ControllerInstrument& instrument, const LineParameters&) {
  return Value(instrument.MountedTurret());
}

Reply SetTurret(ControllerInstrument& instrument, const LineParameters& parameters) {
  const auto turret = parameters.OnlyInt();
  return DoneOr(turret && instrument.SetMountedTurret(*turret), kBadParameter, 0);
}

constexpr CommandWord kWords[] = {
    {"Hello", nullptr, Hello},
    {"GOODBYE", nullptr, Hello},
    {"SYSTEMINFO", SystemInfo, nullptr},
    {"SAVEINFO", ReadMemory, WriteMemory, Family::kBytes},
    {"CONFIG_SYSTEM_DATA", ReadParameter, WriteParameter, Family::kTexts},
    {"POSITION", ReadPosition, nullptr},
    {"MOVETO", nullptr, MoveTo},
    {"GRATING", ReadGrating, SelectGrating},
    {"GRATINGS", ListGratings, nullptr},
    {"GRATINGHOME", nullptr, GratingHome},
    {"Step", ReadStep, nullptr},
    {"Step_abs", nullptr, StepTo},
    {"TOTALSTEPS", ReadTotalSteps, nullptr},
    {"EEPROMINFO", MemoryInfo, nullptr},
    {"TURRET", ReadTurret, SetTurret},
};

}  // namespace

std::span<const CommandWord> DriveWords() {
  return kWords;
}

}  // namespace corvane::sim
