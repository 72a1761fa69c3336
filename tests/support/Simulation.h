// The extra entry points of the simulated camera SDK, which the library loads by itself under the same name. The
// simulation stays loaded, so that the instrument can be looked at after it was closed.
#pragma once

#include <dlfcn.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "camera/TivanSimulation.h"

class Simulation {
 public:
  decltype(&CorvaneSimLog) Log = Symbol<decltype(CorvaneSimLog)>("CorvaneSimLog");
  decltype(&CorvaneSimLines) Lines = Symbol<decltype(CorvaneSimLines)>("CorvaneSimLines");
  decltype(&CorvaneSimState) State = Symbol<decltype(CorvaneSimState)>("CorvaneSimState");
  decltype(&CorvaneSimPeek) Peek = Symbol<decltype(CorvaneSimPeek)>("CorvaneSimPeek");
  decltype(&CorvaneSimParameter) Parameter = Symbol<decltype(CorvaneSimParameter)>("CorvaneSimParameter");
  decltype(&CorvaneSimKeepPower) KeepPower = Symbol<decltype(CorvaneSimKeepPower)>("CorvaneSimKeepPower");
  decltype(&CorvaneSimTrueWavelength) TrueWavelength =
      Symbol<decltype(CorvaneSimTrueWavelength)>("CorvaneSimTrueWavelength");
  decltype(&CorvaneSimTrueCentre) TrueCentre = Symbol<decltype(CorvaneSimTrueCentre)>("CorvaneSimTrueCentre");
  decltype(&CorvaneSimOperations) Operations = Symbol<decltype(CorvaneSimOperations)>("CorvaneSimOperations");
  decltype(&CorvaneSimArmFault) ArmFault = Symbol<decltype(CorvaneSimArmFault)>("CorvaneSimArmFault");
  decltype(&CorvaneSimFaultHits) FaultHits = Symbol<decltype(CorvaneSimFaultHits)>("CorvaneSimFaultHits");
  decltype(&CorvaneSimArmReplyFault) ArmReplyFault =
      Symbol<decltype(CorvaneSimArmReplyFault)>("CorvaneSimArmReplyFault");
  decltype(&CorvaneSimClearReplyFaults) ClearReplyFaults =
      Symbol<decltype(CorvaneSimClearReplyFaults)>("CorvaneSimClearReplyFaults");
  /// The camera SDK's own "Initialize": puts new instruments in place.
  unsigned int (*Initialize)(char*) = Symbol<unsigned int(char*)>("Initialize");

  /// The text of a function that writes one into a buffer and answers its length.
  template <typename Ask>
  static std::string Text(const Ask& ask) {
    std::string text(ask(nullptr, 0) + 1, '\0');
    ask(text.data(), text.size());
    text.pop_back();
    return text;
  }

 private:
  template <typename Function>
  static Function* Symbol(const char* name) {
    static void* const library = dlopen("libtivan.so", RTLD_NOW);
    void* symbol = library != nullptr ? dlsym(library, name) : nullptr;
    if (symbol == nullptr) {
      throw std::runtime_error(std::string("no simulated camera SDK: ") + name);
    }
    return reinterpret_cast<Function*>(symbol);
  }
};
