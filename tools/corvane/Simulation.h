// Puts the simulated camera SDK in the place of a real one, for this process only, and asks the simulated instrument
// for its truth. Used by Session and by the calibrate command.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

class Simulation {
 public:
  /// name: of a shipped scenario, or a directory with a scenario file. Loads the simulated SDK so that the library
  /// finds it already loaded. Throws Failure: no such scenario, no simulated SDK, or a ./libtivan.so in the way.
  explicit Simulation(const std::string& name);

  /// The directory to initialise the library with.
  const std::filesystem::path& Directory() const { return mDirectory; }

  /// To be called after the library was initialised. Throws Failure when the scenario was refused, or the library took
  /// another camera SDK than the simulated one.
  void CheckInUse() const;

  /// device: as the library lists it.
  bool KeepsState(int device) const;
  /// Instruments on the simulated I2C bus.
  int NumberOnBus() const;
  /// Instruments of the scenario that need a virtual USB bus, which this program has not.
  int NumberUsb() const;
  /// Wavelength in nm that truly falls on a pixel (from 1). Throws Failure when there is none.
  double TrueWavelength(int device, int pixel) const;

 private:
  struct CloseLibrary {
    void operator()(void* handle) const;
  };

  template <typename Function>
  Function Resolve(const char* symbol) const;

  std::filesystem::path mDirectory;
  std::unique_ptr<void, CloseLibrary> mLibrary;
  unsigned long long mOperationsBefore = 0;
};
