// The library's one exception type: thrown by components, caught at the exported functions. It carries a code and no
// text. It derives from std::exception so that a C++ program can catch the one case that leaves the library
// (CorvaneSetFocusMirror on an instrument without a focus mirror).
#pragma once

#include <cstdint>
#include <exception>

class TCorvaneException : public std::exception {
 public:
  /// The code of a failure that has none of its own.
  static constexpr std::int32_t kFailure = 1;

  explicit TCorvaneException(std::int32_t code) noexcept : mCode(code) {}

  /// kFailure almost everywhere; controller components carry the controller's result code.
  std::int32_t Code() const noexcept { return mCode; }
  const char* what() const noexcept override { return "TCorvaneException"; }

 private:
  std::int32_t mCode;
};
