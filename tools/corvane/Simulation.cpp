#include "Simulation.h"

#include <dlfcn.h>

#include <algorithm>
#include <vector>

#include "Failure.h"
#include "TivanSimulation.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* kLibraryName = "libtivan.so";
constexpr const char* kScenarioFile = "corvane-sim.json";

/// Where this program and its build or installation keep things, nearest first. Found from the program's own place, so
/// that neither a build tree nor an installation carries absolute paths.
std::vector<fs::path> Folders(const fs::path& inBuild, const fs::path& installed) {
  std::error_code error;
  const fs::path program = fs::read_symlink("/proc/self/exe", error);
  const fs::path folder = program.parent_path();
  return {folder / "../.." / inBuild, folder / ".." / installed};
}

fs::path SimulatedLibrary() {
  for (const fs::path& folder : Folders("sim/camera", fs::path(CORVANE_LIBDIR) / "corvane/simulation")) {
    if (fs::exists(folder / kLibraryName)) {
      return fs::canonical(folder / kLibraryName);
    }
  }
  throw Failure(ExitCode::kSimulation, "the simulated camera SDK (" + std::string(kLibraryName) + ") is not installed",
                "install the corvane tools completely, or run corvane from its build tree");
}

std::string ShippedNames(const std::vector<fs::path>& folders) {
  std::vector<std::string> names;
  for (const fs::path& folder : folders) {
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder, error)) {
      if (fs::exists(entry.path() / kScenarioFile)) {
        names.push_back(entry.path().filename().string());
      }
    }
  }
  std::sort(names.begin(), names.end());
  std::string text;
  for (const std::string& name : names) {
    text += (text.empty() ? "" : ", ") + name;
  }
  return text.empty() ? "none" : text;
}

fs::path ScenarioDirectory(const std::string& name) {
  const std::vector<fs::path> folders = Folders("sim/scenarios", fs::path(CORVANE_DATADIR) / "corvane/scenarios");
  // A plain word is a shipped scenario, whatever folders of that name lie about; a path says that it is one.
  const bool isPath = name.find('/') != std::string::npos || name == "." || name == "..";
  for (const fs::path& folder : isPath ? std::vector<fs::path>{} : folders) {
    if (fs::exists(folder / name / kScenarioFile)) {
      return fs::canonical(folder / name);
    }
  }
  if (fs::is_directory(name)) {
    return fs::canonical(name);
  }
  throw Failure(ExitCode::kSimulation, "there is no scenario \"" + name + "\"",
                "give the directory of a scenario file, or one of the shipped scenarios: " + ShippedNames(folders));
}

}  // namespace

void Simulation::CloseLibrary::operator()(void* handle) const {
  dlclose(handle);
}

template <typename Function>
Function Simulation::Resolve(const char* symbol) const {
  const auto function = reinterpret_cast<Function>(dlsym(mLibrary.get(), symbol));
  if (function == nullptr) {
    throw Failure(ExitCode::kSimulation, std::string("the simulated camera SDK lacks ") + symbol,
                  "corvane and its simulation must be of one version");
  }
  return function;
}

Simulation::Simulation(const std::string& name) : mDirectory(ScenarioDirectory(name)) {
  // The library would load this one first, by its path, and it may be a real camera SDK.
  if (fs::exists(fs::path(".") / kLibraryName)) {
    throw Failure(ExitCode::kSimulation,
                  "there is a libtivan.so in the working directory, which the library would load instead of the "
                  "simulated one",
                  "run corvane --simulate from another directory");
  }
  // Once loaded, the simulated SDK answers to its name: the library's own request for it ends here.
  mLibrary.reset(dlopen(SimulatedLibrary().c_str(), RTLD_NOW | RTLD_LOCAL));
  if (mLibrary == nullptr) {
    throw Failure(ExitCode::kSimulation, std::string("the simulated camera SDK does not load: ") + dlerror());
  }
  mOperationsBefore = Resolve<decltype(&CorvaneSimOperations)>("CorvaneSimOperations")();
}

void Simulation::CheckInUse() const {
  if (Resolve<decltype(&CorvaneSimIsInitialized)>("CorvaneSimIsInitialized")() == 0) {
    throw Failure(ExitCode::kSimulation, "the scenario in " + mDirectory.string() + " cannot be used",
                  "the line above names the mistake");
  }
  if (Resolve<decltype(&CorvaneSimOperations)>("CorvaneSimOperations")() == mOperationsBefore) {
    throw Failure(ExitCode::kSimulation, "the library did not use the simulated camera SDK");
  }
}

bool Simulation::KeepsState(int device) const {
  return Resolve<decltype(&CorvaneSimKeepsState)>("CorvaneSimKeepsState")(device) != 0;
}

int Simulation::NumberOnBus() const {
  const auto peek = Resolve<decltype(&CorvaneSimPeek)>("CorvaneSimPeek");
  unsigned char byte = 0;
  int number = 0;
  while (peek(number, 1, &byte) == CORVANE_SIM_DONE) {
    ++number;
  }
  return number;
}

int Simulation::NumberUsb() const {
  return Resolve<decltype(&CorvaneSimNumberUsb)>("CorvaneSimNumberUsb")();
}

double Simulation::TrueWavelength(int device, int pixel) const {
  double nanometres = 0;
  if (Resolve<decltype(&CorvaneSimTrueWavelength)>("CorvaneSimTrueWavelength")(device, pixel, &nanometres) !=
      CORVANE_SIM_DONE) {
    throw Failure(ExitCode::kSimulation, "the simulated instrument puts no light on pixel " + std::to_string(pixel));
  }
  return nanometres;
}
