// The data file of an older instrument: one table of its sections and keys, with how each value is read and written,
// since which structure version, and what a missing key stands for. Reading and writing walk it in its order. The
// callers have put the "C" rules for numbers in force (TivanLocale).
#pragma once

#include <functional>
#include <optional>

#include "legacy/CorvDataField.h"
#include "legacy/CorvDataValues.h"

namespace corvane {

/// Reads every key of the file, or its default. The file's own SVERNO decides which of the later keys are read; the
/// values of the others stay as they are. A list with too few numbers is rejected, and the previous numbers stay.
void ReadProfileKeys(const char* path, CorvDataValues& values);

/// Takes one key and the text of its value.
using ProfileSink = std::function<void(const char* section, const char* key, const char* text)>;

/// Hands out every key, whatever the structure version, or only the one whose text holds `only`. Filters and gratings
/// go as far as their current numbers.
void WriteProfileKeys(CorvDataValues& values, const ProfileSink& sink,
                      const std::optional<CorvValueId>& only = std::nullopt);

}  // namespace corvane
