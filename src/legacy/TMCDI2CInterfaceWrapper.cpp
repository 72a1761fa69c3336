#include "legacy/TMCDI2CInterfaceWrapper.h"

namespace {

unsigned int Translate(unsigned int status) {
  return status == 0 ? TMCDI2CInterfaceWrapper::kSuccess : TMCDI2CInterfaceWrapper::kFailure;
}

}  // namespace

TMCDI2CInterfaceWrapper::TMCDI2CInterfaceWrapper(TI2CInterface* wrapped) : mWrapped(wrapped) {
}

unsigned int TMCDI2CInterfaceWrapper::Write(unsigned char address, unsigned char reg, unsigned char data) {
  return mWrapped != nullptr ? Translate(mWrapped->Write(address, reg, data)) : kFailure;
}

unsigned int TMCDI2CInterfaceWrapper::Read(unsigned char address, unsigned char reg, unsigned char* data) {
  return mWrapped != nullptr ? Translate(mWrapped->Read(address, reg, data)) : kFailure;
}

unsigned int TMCDI2CInterfaceWrapper::BurstWrite(unsigned char address, long count, const unsigned char* data) {
  return mWrapped != nullptr ? Translate(mWrapped->BurstWrite(address, count, data)) : kFailure;
}

unsigned int TMCDI2CInterfaceWrapper::BurstRead(unsigned char address, long count, unsigned char* data) {
  return mWrapped != nullptr ? Translate(mWrapped->BurstRead(address, count, data)) : kFailure;
}
