// What get and set know by name: one table, one entry a property.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "Output.h"

struct Property {
  const char* name;
  const char* index;  ///< what an index counts ("grating"); null: the property takes none
  int indices;        ///< highest index, from 1; 0: as many as there are gratings
  const char* help;   ///< with the unit
  /// Throws Failure. index is from 1, 0 for properties without.
  Json (*get)(int device, int index);
  /// Null: can only be read.
  void (*set)(int device, int index, const std::string& value);
  /// Whether the instrument has the part; null: always.
  bool (*present)(int device, int index);
};

std::span<const Property> Properties();
/// Null when there is none of that name.
const Property* FindProperty(const std::string& name);
/// Whether the device has the part that the property belongs to.
bool IsPresent(const Property& property, int device, int index);
// The entries' own operations; failures name the property.
Json ReadProperty(const Property& property, int device, int index);
void WriteProperty(const Property& property, int device, int index, const std::string& value);
/// The property's name with its index.
std::string Label(const Property& property, int index);
/// How many indices the property has on this device. Throws Failure.
int Indices(const Property& property, int device);
