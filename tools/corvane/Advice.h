// What to tell a user beyond a status number: its text, and what to do about it.
#pragma once

#include <string>

class Simulation;

std::string StatusText(unsigned int status);
/// Whether it tells that the value, or another argument but the device, is out of range.
bool IsOutOfRange(unsigned int status);
std::string AdviceForStatus(unsigned int status);
/// Looks at what the machine has (camera SDK, USB bridges) while the library is still open. simulation may be null.
std::string AdviceForNothingFound(const Simulation* simulation);
