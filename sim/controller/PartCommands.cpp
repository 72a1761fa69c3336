#include <array>
#include <charconv>
#include <vector>

#include "controller/CommandWords.h"

namespace corvane::sim {
namespace {

/// The first firmware that knows slit modes.
constexpr double kSlitModeFirmware = 2.7;

double FirmwareNumber(const ControllerInstrument& instrument) {
  const std::string& text = instrument.Description().firmware;
  double number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

/// How the controller numbers the slits.
std::optional<SlitIndex> SlitOf(const ControllerInstrument& instrument, std::optional<int> number) {
  constexpr std::array<SlitIndex, kSlits> kByNumber{kSlitSI1, kSlitSO2, kSlitSO1, kSlitSI2};
  if (!number || *number < 1 || *number > kSlits) {
    return std::nullopt;
  }
  const SlitIndex slit = kByNumber[static_cast<std::size_t>(*number) - 1];
  return PartsOf(instrument).slits[slit].fitted ? std::optional(slit) : std::nullopt;
}

// Without a flipper mirror the light goes straight: the query has an answer, the command has nothing to move.
Reply ReadEntrancePort(ControllerInstrument& instrument, const LineParameters&) {
  return Value(instrument.Stands().entrancePort);
}
Reply ReadExitPort(ControllerInstrument& instrument, const LineParameters&) {
  return Value(instrument.Stands().exitPort);
}

Reply SetEntrancePort(ControllerInstrument& instrument, const LineParameters& parameters) {
  if (!PartsOf(instrument).entranceFlipper) {
    return Error(kNotFitted);
  }
  const auto port = parameters.OnlyInt();
  return DoneOr(port && instrument.SetEntrancePort(*port), kBadParameter, Motion(instrument).flipper);
}

Reply SetExitPort(ControllerInstrument& instrument, const LineParameters& parameters) {
  if (!PartsOf(instrument).exitFlipper) {
    return Error(kNotFitted);
  }
  const auto port = parameters.OnlyInt();
  return DoneOr(port && instrument.SetExitPort(*port), kBadParameter, Motion(instrument).flipper);
}

Reply ListPeripherals(ControllerInstrument& instrument, const LineParameters&) {
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
Reply SetPeripherals(ControllerInstrument&, const LineParameters& parameters) {
  return DoneOr(parameters.Count() > 0, kBadParameter, 0);
}

Reply ReadFilter(ControllerInstrument& instrument, const LineParameters&) {
  return PartsOf(instrument).filterWheel ? Value(instrument.Stands().filter) : Error(kNoFilterWheel);
}

Reply SetFilter(ControllerInstrument& instrument, const LineParameters& parameters) {
  if (!PartsOf(instrument).filterWheel) {
    return Error(kNoFilterWheel);
  }
  const auto filter = parameters.OnlyInt();
  return DoneOr(filter && instrument.SetFilter(*filter), kBadParameter, Motion(instrument).filter);
}

Reply FilterHome(ControllerInstrument& instrument, const LineParameters&) {
  if (!PartsOf(instrument).filterWheel) {
    return Error(kNoFilterWheel);
  }
  return DoneOr(instrument.SetFilter(1), kBadParameter, Motion(instrument).home);
}

Reply ReadFilterMode(ControllerInstrument& instrument, const LineParameters&) {
  return PartsOf(instrument).filterWheel ? Value(instrument.Stands().filterMode) : Error(kNoFilterWheel);
}

Reply SetFilterMode(ControllerInstrument& instrument, const LineParameters& parameters) {
  if (!PartsOf(instrument).filterWheel) {
    return Error(kNoFilterWheel);
  }
  if (parameters.Text().empty()) {
    return Error(kBadParameter);
  }
  instrument.SetFilterMode(std::string(parameters.Text()));
  return Done();
}

Reply ReadFocus(ControllerInstrument& instrument, const LineParameters&) {
  return PartsOf(instrument).focusMirror ? Value(instrument.Stands().focus) : Error(kNotFitted);
}

Reply ReadFocusTotalSteps(ControllerInstrument& instrument, const LineParameters&) {
  const Parts& parts = PartsOf(instrument);
  return parts.focusMirror ? Value(parts.focusTotalSteps) : Error(kNotFitted);
}

/// Direction (1: toward zero, 0: away from it) and magnitude.
Reply MoveFocus(ControllerInstrument& instrument, const LineParameters& parameters) {
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

Reply FocusHome(ControllerInstrument& instrument, const LineParameters&) {
  if (!PartsOf(instrument).focusMirror) {
    return Error(kNotFitted);
  }
  instrument.FocusHome();
  return Done(Motion(instrument).home);
}

Reply ReadSlitMode(ControllerInstrument& instrument, const LineParameters& parameters) {
  if (FirmwareNumber(instrument) < kSlitModeFirmware) {
    return Error(kIllegalCommand);
  }
  const auto slit = SlitOf(instrument, parameters.OnlyInt());
  return slit ? Value(instrument.Stands().slitModes[*slit]) : Error(kNoSlit);
}

Reply SetSlitMode(ControllerInstrument& instrument, const LineParameters& parameters) {
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

Reply ReadSlitWidth(ControllerInstrument& instrument, const LineParameters& parameters) {
  const auto slit = SlitOf(instrument, parameters.OnlyInt());
  return slit ? Value(instrument.Stands().slitWidths[*slit]) : Error(kNoSlit);
}

Reply SetSlitWidth(ControllerInstrument& instrument, const LineParameters& parameters) {
  const auto slit = SlitOf(instrument, parameters.Int(0));
  if (!slit) {
    return Error(kNoSlit);
  }
  const auto width = parameters.Int(1);
  const bool done = parameters.Count() == 2 && width && instrument.SetSlitWidth(*slit, *width);
  return DoneOr(done, kBadParameter, Motion(instrument).slit);
}

Reply SlitHome(ControllerInstrument& instrument, const LineParameters& parameters) {
  const auto slit = SlitOf(instrument, parameters.OnlyInt());
  if (!slit) {
    return Error(kNoSlit);
  }
  instrument.SlitHome(*slit);
  return Done(Motion(instrument).home);
}

/// Output lines in the upper four bits, input lines in the lower.
Reply ReadPort(ControllerInstrument& instrument, const LineParameters&) {
  const Parts& parts = PartsOf(instrument);
  return parts.accessoryLines ? Value(instrument.Stands().portOutputs * 16 + parts.portInputs) : Error(kNotFitted);
}

Reply WritePort(ControllerInstrument& instrument, const LineParameters& parameters) {
  if (!PartsOf(instrument).accessoryLines) {
    return Error(kNotFitted);
  }
  const auto lines = parameters.OnlyInt();
  return DoneOr(lines && instrument.SetPortOutputs(*lines), kBadParameter, 0);
}

Reply ReadShutterMode(ControllerInstrument& instrument, const LineParameters&) {
  return Value(instrument.Stands().shutterMode);
}

Reply SetShutterMode(ControllerInstrument& instrument, const LineParameters& parameters) {
  const auto mode = parameters.OnlyInt();
  return DoneOr(mode && instrument.SetShutterMode(*mode), kBadParameter, 0);
}

constexpr CommandWord kWords[] = {
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
    {"SHUTTER_MODE", ReadShutterMode, SetShutterMode},
};

}  // namespace

std::span<const CommandWord> PartWords() {
  return kWords;
}

}  // namespace corvane::sim
