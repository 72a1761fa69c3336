// Where a value lives in a record in memory. The layout tables of both families name their values by it.
#pragma once

#include <cstddef>
#include <string>
#include <variant>

#include "eeprom/MerakEepromRecord.h"

namespace corvane {

using EepromPlace = std::variant<std::string*, float*, int*>;

/// A value's identity, whatever its type.
inline const void* AddressOf(EepromPlace place) {
  return std::visit([](auto* value) { return static_cast<const void*>(value); }, place);
}

/// A member that is one value.
template <auto Member>
EepromPlace One(MerakEepromRecord& record, std::size_t /*element*/) {
  return &(record.*Member);
}

/// An element of a member that is an array.
template <auto Member>
EepromPlace Many(MerakEepromRecord& record, std::size_t element) {
  return &(record.*Member)[element];
}

}  // namespace corvane
