#include "core/TDeviceServer.h"

#include <algorithm>
#include <cstddef>

TDeviceServer::TDeviceServer(int maximumClients, int connectionCount)
    : mMaximumClients(maximumClients), mConnectionCount(connectionCount) {
}

void TDeviceServer::Connect(TDeviceClient* client) {
  if (mConnectionCount >= mMaximumClients) {
    return;
  }
  mClients.push_back(client);
  ++mConnectionCount;
}

void TDeviceServer::Disconnect(TDeviceClient* client) {
  const auto found = std::find(mClients.begin(), mClients.end(), client);
  if (found != mClients.end()) {
    mClients.erase(found);
  }
}

void TDeviceServer::StateChanged() {
  // By index: a client that breaks the rule and (dis)connects here must not leave a dangling iterator.
  for (std::size_t i = 0; i < mClients.size(); ++i) {  // NOLINT(modernize-loop-convert)
    if (mClients[i] != nullptr) {
      mClients[i]->OnStateChanged(this);
    }
  }
}

bool TDeviceServer::IsPresent() {
  return true;
}

bool TBusyDeviceServer::IsBusy() {
  return mBusy;
}

void TBusyDeviceServer::SetBusy(bool busy) {
  mBusy = busy;
  StateChanged();
}
