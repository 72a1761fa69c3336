// One value of a record in memory, whatever its type. The layout tables of both families name their values by it, and
// what moves a value between the record and the instrument takes it from there.
#pragma once

#include <cstddef>
#include <string>
#include <variant>

#include "eeprom/MerakEepromRecord.h"

namespace corvane {

using RecordValue = std::variant<std::string*, float*, int*>;

/// The `element`-th value of a field of the record.
using RecordValueOf = RecordValue (*)(MerakEepromRecord& record, std::size_t element);

/// Tells a value from every other one of its record.
inline const void* IdentityOf(RecordValue value) {
  return std::visit([](auto* held) { return static_cast<const void*>(held); }, value);
}

/// Of a member that is one value.
template <auto Member>
RecordValue One(MerakEepromRecord& record, std::size_t /*element*/) {
  return &(record.*Member);
}

/// Of a member that is an array.
template <auto Member>
RecordValue Many(MerakEepromRecord& record, std::size_t element) {
  return &(record.*Member)[element];
}

}  // namespace corvane
