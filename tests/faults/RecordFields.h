// Where one stored value ends and the next begins: of records in bytes, by address from 1, and of older instruments.
#pragma once

#include <algorithm>
#include <functional>
#include <vector>

#include "SweptInstrument.h"
#include "controller/EepromImage.h"

/// Cuts bytes 1 to size into the fields that begin at the places given, and single bytes elsewhere.
inline StoredRecord CutIntoFields(int size, const std::map<int, int>& fields, const std::function<char(int)>& byteAt) {
  StoredRecord record;
  for (int address = 1; address <= size;) {
    const auto field = fields.find(address);
    const int end = address + (field == fields.end() ? 1 : field->second);
    for (const int begin = address; address < end; ++address) {
      record[begin].push_back(byteAt(address));
    }
  }
  return record;
}

/// Address and size of every value in the newest layout.
inline std::map<int, int> ControllerFields() {
  using corvane::sim::EepromImage;
  using corvane::sim::Field;
  std::map<int, int> fields;
  for (int i = 0; i < static_cast<int>(Field::kCount); ++i) {
    const auto field = static_cast<Field>(i);
    const int size = EepromImage::SizeOf(field, {3, 0});
    const bool isText = field <= Field::kModified;
    const int width = isText || size < 4 ? size : size == 18 ? 6 : field == Field::kFilterLabels ? 10 : 4;
    for (int at = 0; size % width == 0 && at < size; at += width) {
      fields[EepromImage::AddressOf(field, {3, 0}) + at] = width;
    }
  }
  return fields;
}

/// The record of an instrument that keeps numbered texts.
inline StoredRecord NumberedTexts(const std::function<std::string(int)>& textOf) {
  constexpr int kNumbers = 128;
  StoredRecord record;
  for (int number = 0; number < kNumbers; ++number) {
    record[number] = textOf(number);
  }
  return record;
}

/// The values of an older instrument that calls change and that take more than a byte.
inline std::map<int, int> LegacyFields() {
  constexpr int kPage = 256;
  std::map<int, int> fields;
  for (const int place : {75, 79, 83, 87, 99, kPage + 46, kPage + 50, kPage + 54, kPage + 70, kPage + 226,
                          2 * kPage + 20, 2 * kPage + 24, 2 * kPage + 28, 2 * kPage + 32}) {
    fields[1 + place] = 4;
  }
  return fields;
}
