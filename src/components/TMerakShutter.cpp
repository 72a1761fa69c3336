#include "components/TMerakShutter.h"

#include "core/TCorvaneException.h"

namespace {

[[noreturn]] void Refuse() {
  throw TCorvaneException(TCorvaneException::kFailure);
}

}  // namespace

void TMerakShutter::SetExternalShutter(int /*mode*/) {
  Refuse();
}

int TMerakShutter::GetExternalShutter() {
  Refuse();
}

bool TMerakShutter::IsExternalModePossible(int /*mode*/) {
  Refuse();
}

void TMerakShutter::SetInternalShutter(int /*mode*/) {
  Refuse();
}

int TMerakShutter::GetInternalShutter() {
  Refuse();
}

bool TMerakShutter::InternalShutterAvailable() {
  Refuse();
}

void TMerakShutter::LoadShutterValues() {
  Refuse();
}

void TMerakShutter::ExternalChange() {
  Refuse();
}
