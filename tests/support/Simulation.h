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
  decltype(&CorvaneSimState) State = Symbol<decltype(CorvaneSimState)>("CorvaneSimState");
  decltype(&CorvaneSimPeek) Peek = Symbol<decltype(CorvaneSimPeek)>("CorvaneSimPeek");
  decltype(&CorvaneSimTrueWavelength) TrueWavelength =
      Symbol<decltype(CorvaneSimTrueWavelength)>("CorvaneSimTrueWavelength");
  decltype(&CorvaneSimTrueCentre) TrueCentre = Symbol<decltype(CorvaneSimTrueCentre)>("CorvaneSimTrueCentre");
  decltype(&CorvaneSimOperations) Operations = Symbol<decltype(CorvaneSimOperations)>("CorvaneSimOperations");
  decltype(&CorvaneSimArmFault) ArmFault = Symbol<decltype(CorvaneSimArmFault)>("CorvaneSimArmFault");
  decltype(&CorvaneSimFaultHits) FaultHits = Symbol<decltype(CorvaneSimFaultHits)>("CorvaneSimFaultHits");
  decltype(&CorvaneSimArmReplyFault) ArmReplyFault =
      Symbol<decltype(CorvaneSimArmReplyFault)>("CorvaneSimArmReplyFault");

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
