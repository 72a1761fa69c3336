// Reads the section of an older instrument from a scenario file. Used by Scenario only.
#pragma once

#include "model/LegacyDescription.h"
#include "scenario/JsonSection.h"

namespace corvane::sim {

/// An instrument as an empty section describes it.
LegacyDescription DefaultLegacy(StructureVersion structure = {});

/// Throws ScenarioError.
LegacyDescription ReadLegacy(JsonSection section);

}  // namespace corvane::sim
