// A scenario: which simulated instruments are attached and how. Read from corvane-sim.json (docs/simulation.md has the
// format); used by the simulated camera SDK and by tests that put a controller behind a virtual USB bridge.
#pragma once

#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "model/InstrumentDescription.h"
#include "model/LegacyDescription.h"
#include "scenario/ScenarioError.h"

namespace corvane::sim {

inline constexpr const char* kScenarioFileName = "corvane-sim.json";

/// The identifiers of the maker's bridge.
inline constexpr unsigned int kBridgeVendorId = 0x136E;
inline constexpr unsigned int kBridgeProductId = 0x0017;

/// An instrument behind a USB serial bridge, and how the bridge introduces itself.
struct UsbAttachment {
  InstrumentDescription instrument;
  unsigned int vendorId = kBridgeVendorId;
  unsigned int productId = kBridgeProductId;
  std::string bridgeSerial;
  std::string bridgeDescription = "Corvane motion controller";
  std::vector<TransportFault> transportFaults;
};

struct Scenario {
  std::optional<InstrumentDescription> i2c;  ///< at address 0x58 of the camera's bus
  std::optional<LegacyDescription> legacy;   ///< an older instrument on the same bus
  std::vector<UsbAttachment> usb;
  std::optional<DetectorGeometry> detector;  ///< none: the camera does not tell its geometry
  std::vector<TransportFault> transportFaults;
  std::string logFile;  ///< absolute; empty: none
  bool logTransfers = false;
};

/// An LX of structure version 3.0 with three gratings on the I2C bus, and a detector of 2048 pixels.
Scenario DefaultScenario();

/// An instrument as a scenario's empty section describes it. model is "LX", "MX" or "SX".
InstrumentDescription DefaultInstrument(std::string_view model = "LX", StructureVersion structure = {});

/// The polynomial of a drive that turns with the grating, for an angular deviation in degrees.
std::array<float, 5> DefaultCoefficients(float angularDeviation);

/// Throws ScenarioError. Relative file names in the text are taken from directory; name is used in messages.
Scenario ParseScenario(std::string_view text, const std::string& name, const std::filesystem::path& directory);

/// The scenario file of a directory; the default scenario where the directory has none or is empty. Throws
/// ScenarioError, also for a directory that does not exist.
Scenario LoadScenario(const std::filesystem::path& directory);

/// One entry of an instrument's "faults". Throws ScenarioError.
ReplyFault ParseReplyFault(std::string_view text);

}  // namespace corvane::sim
