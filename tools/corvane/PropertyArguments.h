// The words "PROPERTY [INDEX] [VALUE]" of get and set.
#pragma once

#include <string>
#include <vector>

#include "Properties.h"

class PropertyArguments {
 public:
  /// values: how many words follow property and index. Throws Failure for an unknown property or a wrong count.
  PropertyArguments(const std::vector<std::string>& words, std::size_t values);

  const Property& Which() const { return *mProperty; }
  /// From 1; 0 for properties without.
  int Index() const { return mIndex; }
  const std::string& Value() const { return mValue; }

  /// Throws Failure when the device has no such index.
  void CheckIndex(int device) const;

 private:
  const Property* mProperty;
  int mIndex = 0;
  std::string mValue;
};

/// The table for a help text, of the properties that `listed` wants.
std::string PropertyHelp(bool (*listed)(const Property&));
