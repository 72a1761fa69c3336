#include "camera/TSDKI2CInterface.h"

#include <new>
#include <vector>

#include "camera/TivanSdk.h"

namespace {

struct StatusCode {
  unsigned int sdk;
  unsigned int own;
};

constexpr StatusCode kStatusCodes[] = {
    {corvane::kTivanSuccess, TSDKI2CInterface::kSuccess},
    {20066, TSDKI2CInterface::kBusFailure},
    {20067, TSDKI2CInterface::kBusFailure},
    {20068, TSDKI2CInterface::kBusFailure},
    {20080, TSDKI2CInterface::kOtherFailure},
};

unsigned int Translate(unsigned int sdkStatus) {
  for (const StatusCode& code : kStatusCodes) {
    if (code.sdk == sdkStatus) {
      return code.own;
    }
  }
  return TSDKI2CInterface::kOtherFailure;
}

}  // namespace

TSDKI2CInterface::TSDKI2CInterface(const TEntryPoints& entryPoints) : mEntryPoints(entryPoints) {
}

unsigned int TSDKI2CInterface::Write(unsigned char address, unsigned char reg, unsigned char data) {
  return Translate(mEntryPoints.write(address, reg, data));
}

unsigned int TSDKI2CInterface::Read(unsigned char address, unsigned char reg, unsigned char* data) {
  return Translate(mEntryPoints.read(address, reg, data));
}

unsigned int TSDKI2CInterface::BurstWrite(unsigned char address, long count, const unsigned char* data) {
  if (data == nullptr || count <= 0 || count > kMaximumBurst) {
    return kOtherFailure;
  }
  try {
    // The entry point does not promise to leave the bytes alone.
    std::vector<unsigned char> copy(data, data + count);
    return Translate(mEntryPoints.burstWrite(address, count, copy.data()));
  } catch (const std::bad_alloc&) {
    return kOtherFailure;
  }
}

unsigned int TSDKI2CInterface::BurstRead(unsigned char address, long count, unsigned char* data) {
  return Translate(mEntryPoints.burstRead(address, count, data));
}
