// A controller instrument for tests of components: an EEPROM image and a turret motor behind a scripted bridge. Keeps
// every line it was sent. The record is of structure 3.0 unless the test writes another before the instrument is read.
#pragma once

#include <cstdio>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "controller/TMerakOrbis.h"
#include "support/BusyLog.h"
#include "support/EepromImage.h"
#include "support/FakeTime.h"
#include "support/ScriptedBridge.h"

class Instrument {
 public:
  Instrument() {
    mBridge.Add().responder = [this](const std::string& line) { return Answer(line); };
    eeprom.Put(1, std::string("Corvane LX"));
    eeprom.Put(21, std::string("3.0"));
    eeprom.Put(31, std::string("CV-0042"));
    eeprom.Put(63, 0.5F);
    eeprom.Put(71, -6.5F);
    eeprom.Put(256 + 12, 1.0F / 2400.0F);  // sin(angle) = x / 2400
    eeprom.Put(289, 600.0F);
    for (int g = 0; g < 3; ++g) {
      eeprom.Put(305 + 4 * g, 100 + 12000 * g);
      eeprom.Put(333 + 4 * g, 1200.0F / static_cast<float>(1 << g));
      eeprom.Put(345 + 6 * g, std::to_string(400 + g) + std::string("nm\0", 3));
    }
    eeprom.At(363) = 3;
    eeprom.At(364) = 1;
  }

  EepromImage eeprom;
  /// What an SX keeps instead.
  std::map<int, std::string> texts;
  /// Answers of queries by their word.
  std::map<std::string, std::string> values{{"SYSTEMINFO", "TIVAN,CV-LX,SN-77,x,V2.80"},
                                            {"POSITION", "546.1"},
                                            {"GRATING", "2"},
                                            {"TOTALSTEPS", "36000"},
                                            {"Step", "150"},
                                            {"EXITPORT", "0"},
                                            {"ENTRANCEPORT", "0"}};
  /// Error words by the word of the line or the whole line.
  std::map<std::string, std::string> errors;
  /// Whole replies, by the whole line.
  std::map<std::string, std::string> replies;
  /// Lines that it still answers.
  std::size_t answers = std::numeric_limits<std::size_t>::max();

  /// A controller object on this instrument, its record read, its lines so far forgotten.
  std::unique_ptr<TMerakOrbis> Connect() {
    auto controller = std::make_unique<TMerakOrbis>(nullptr);
    controller->Open(0);
    mLines.clear();
    return controller;
  }
  /// Switches the record to steps computed by the library.
  void UseSteps() { eeprom.At(288) = 1; }

  FakeTime& Time() { return mTime; }
  /// True while somebody holds the line to the controller.
  bool IsConnected() { return mBridge.At(0).isOpen; }

  /// Lines since the last call.
  Lines Take() { return std::exchange(mLines, {}); }

 private:
  std::string Answer(const std::string& line) {
    mLines.push_back(line);
    if (answers == 0) {
      return {};
    }
    --answers;
    if (const auto reply = replies.find(line); reply != replies.end()) {
      return reply->second;
    }
    const std::string word = line.substr(0, line.find_first_of("? "));
    for (const std::string& failing : {word, line}) {
      if (const auto error = errors.find(failing); error != errors.end()) {
        return error->second + "\r";
      }
    }
    int address = 0;
    int value = 0;
    if (std::sscanf(line.c_str(), "SAVEINFO? %d", &address) == 1) {
      return ScriptedController::Reply(line, std::to_string(eeprom.At(address)));
    }
    if (std::sscanf(line.c_str(), "SAVEINFO %d,%d", &address, &value) == 2) {
      eeprom.At(address) = static_cast<unsigned char>(value);
      return "OK\r";
    }
    if (std::sscanf(line.c_str(), "CONFIG_SYSTEM_DATA? %d", &address) == 1) {
      return ScriptedController::Reply(line, texts[address]);
    }
    if (std::sscanf(line.c_str(), "CONFIG_SYSTEM_DATA %d%n,", &address, &value) == 1) {
      texts[address] = line.substr(static_cast<std::size_t>(value) + 1);
      return "OK\r";
    }
    if (line.find('?') == std::string::npos) {
      return "OK\r";
    }
    const auto known = values.find(word);
    return known != values.end() ? ScriptedController::Reply(line, known->second) : "E01\r";
  }

  FakeTime mTime;
  ScriptedBridge mBridge;
  Lines mLines;
};
