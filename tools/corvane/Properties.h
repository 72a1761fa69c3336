// What get and set know by name: one table, one entry a property.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "Output.h"

struct Property {
  const char* name = nullptr;
  const char* index = nullptr;  ///< what an index counts ("grating"); null: the property takes none
  int indices = 0;              ///< highest index, from 1; 0: as many as there are gratings
  const char* help = nullptr;   ///< with the unit
  /// Throws Failure. index is from 1, 0 for properties without.
  Json (*get)(int device, int index) = nullptr;
  /// Null: can only be read.
  void (*set)(int device, int index, const std::string& value) = nullptr;
  /// Whether the instrument has the part; null: always.
  bool (*present)(int device, int index) = nullptr;
  /// Sends the part to its reference; null: it has none.
  void (*home)(int device, int index) = nullptr;
};

std::span<const Property> Properties();
/// Null when there is none of that name.
const Property* FindProperty(const std::string& name);
/// Whether the device has the part that the property belongs to.
bool IsPresent(const Property& property, int device, int index);
/// Throws Failure unless IsPresent; tells which ones the instrument has.
void RequirePresent(const Property& property, int device, int index);
// The entries' own operations; failures name the property.
Json ReadProperty(const Property& property, int device, int index);
void WriteProperty(const Property& property, int device, int index, const std::string& value);
void HomeProperty(const Property& property, int device, int index);
/// The property's name with its index.
std::string Label(const Property& property, int index);
/// How many indices the property has on this device. Throws Failure.
int Indices(const Property& property, int device);
