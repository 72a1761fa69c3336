#include "api/TSpectrographSDK.h"

TSpectrographSDK* TSpectrographSDK::mInstance = nullptr;

TSpectrographSDK* TSpectrographSDK::Instance() {
  if (mInstance == nullptr) {
    mInstance = std::unique_ptr<TSpectrographSDK>(new TSpectrographSDK).release();
  }
  return mInstance;
}

void TSpectrographSDK::Kill() {
  const std::unique_ptr<TSpectrographSDK> last(mInstance);
  mInstance = nullptr;
}

void TSpectrographSDK::CreateSpectrographList(char* directory) {
  mList.reset();
  mList = std::make_unique<TSpectrographList>(directory);
}
