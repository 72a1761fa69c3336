// A failure on its way to the caller of an exported function, carrying the status that the function answers. Thrown by
// opening and listing, where half-built objects unwind; caught in ExportFrame.h only.
#pragma once

#include <exception>

#include "usbserial/ftd2xx.h"

namespace corvane {

class FtFailure : public std::exception {
 public:
  explicit FtFailure(FT_STATUS status) : mStatus(status) {}

  FT_STATUS Status() const { return mStatus; }
  const char* what() const noexcept override { return "USB serial bridge failure"; }

 private:
  FT_STATUS mStatus;
};

}  // namespace corvane
